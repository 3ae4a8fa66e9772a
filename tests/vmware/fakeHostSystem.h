#pragma once
// A host whose uname(), sysinfo(), getifaddrs() and sleeps a test decides, installed for the
// life of the object.
#include <arpa/inet.h>
#include <ifaddrs.h>
#include <sys/sysinfo.h>
#include <sys/utsname.h>

#include <cerrno>
#include <cstdio>
#include <deque>
#include <string>
#include <vector>

#include "vmware/zuvHostSystem.h"

namespace vmwaretest {

struct FakeInterface {
    std::string name;
    int family;  // AF_INET, another family, or 0 for an entry without an address
    std::string address;
};

class FakeHostSystem : public zuvHostSystem {
public:
    FakeHostSystem() { zuvSetHostSystem(this); }
    ~FakeHostSystem() override { zuvSetHostSystem(nullptr); }
    int uname(struct utsname* n) override {
        if (unameError != 0) return errno = unameError, -1;
        for (auto [field, text] : {std::pair{n->sysname, &sysname},
                                   {n->nodename, &nodename},
                                   {n->release, &release},
                                   {n->version, &version},
                                   {n->machine, &machine}})
            snprintf(field, sizeof n->sysname, "%s", text->c_str());
        return 0;
    }
    int sysinfo(struct sysinfo* info) override {
        info->uptime = uptime;
        return sysinfoError != 0 ? (errno = sysinfoError, -1) : 0;
    }
    int getifaddrs(struct ifaddrs** list) override {
        if (getifaddrsError != 0) return errno = getifaddrsError, -1;
        nodes.assign(interfaces.size(), Node{});
        *list = nullptr;
        for (size_t i = interfaces.size(); i-- > 0; *list = &nodes[i].entry) {
            nodes[i].entry.ifa_name = const_cast<char*>(interfaces[i].name.c_str());
            nodes[i].entry.ifa_next = *list;
            nodes[i].address.sin_family = static_cast<sa_family_t>(interfaces[i].family);
            inet_pton(AF_INET, interfaces[i].address.c_str(), &nodes[i].address.sin_addr);
            if (interfaces[i].family != 0) nodes[i].entry.ifa_addr = reinterpret_cast<sockaddr*>(&nodes[i].address);
        }
        return ++listsHandedOut, 0;
    }
    void freeifaddrs(struct ifaddrs*) override { ++listsFreed; }
    void sleepSeconds(unsigned seconds) override { sleeps.push_back(seconds); }

    std::string sysname = "VMkernel", nodename = "esx01", release = "8.0.2";
    std::string version = "#1 SMP Release build-22380479", machine = "x86_64";
    int unameError = 0, sysinfoError = 0, getifaddrsError = 0, listsHandedOut = 0, listsFreed = 0;
    long uptime = 100;
    std::vector<FakeInterface> interfaces;
    std::vector<unsigned> sleeps;

private:
    struct Node {
        struct ifaddrs entry {};
        struct sockaddr_in address {};
    };
    std::deque<Node> nodes;
};

}  // namespace vmwaretest
