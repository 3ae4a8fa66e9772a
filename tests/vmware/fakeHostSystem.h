#pragma once
// A host whose uname(), sysinfo(), getifaddrs() and sleeps a test decides. Installed for
// the life of the object.

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <netinet/in.h>
#include <sys/sysinfo.h>
#include <sys/utsname.h>

#include <cerrno>
#include <cstring>
#include <deque>
#include <string>
#include <vector>

#include "vmware/zuvHostSystem.h"

namespace vmwaretest {

struct FakeInterface {
    std::string name;
    int family;           // AF_INET, AF_INET6, or 0 for an entry without an address
    std::string address;  // dotted IPv4 text, or IPv6 text
};

class FakeHostSystem : public zuvHostSystem {
public:
    FakeHostSystem() { zuvSetHostSystem(this); }
    ~FakeHostSystem() override { zuvSetHostSystem(nullptr); }

    int uname(struct utsname* name) override {
        if (unameError != 0) {
            errno = unameError;
            return -1;
        }
        copy(name->sysname, sysname);
        copy(name->nodename, nodename);
        copy(name->release, release);
        copy(name->version, version);
        copy(name->machine, machine);
        return 0;
    }
    int sysinfo(struct sysinfo* info) override {
        if (sysinfoError != 0) {
            errno = sysinfoError;
            return -1;
        }
        info->uptime = uptime;
        return 0;
    }
    int getifaddrs(struct ifaddrs** list) override {
        if (getifaddrsError != 0) {
            errno = getifaddrsError;
            return -1;
        }
        nodes.clear();
        nodes.resize(interfaces.size());
        struct ifaddrs* next = nullptr;
        for (size_t i = interfaces.size(); i-- > 0;) {
            Node& node = nodes[i];
            node.name = interfaces[i].name;
            node.entry.ifa_name = &node.name[0];
            node.entry.ifa_next = next;
            if (interfaces[i].family == AF_INET) {
                node.v4.sin_family = AF_INET;
                inet_pton(AF_INET, interfaces[i].address.c_str(), &node.v4.sin_addr);
                node.entry.ifa_addr = reinterpret_cast<struct sockaddr*>(&node.v4);
            } else if (interfaces[i].family == AF_INET6) {
                node.v6.sin6_family = AF_INET6;
                inet_pton(AF_INET6, interfaces[i].address.c_str(), &node.v6.sin6_addr);
                node.entry.ifa_addr = reinterpret_cast<struct sockaddr*>(&node.v6);
            }
            next = &node.entry;
        }
        *list = next;
        ++listsHandedOut;
        return 0;
    }
    void freeifaddrs(struct ifaddrs*) override { ++listsFreed; }
    void sleepSeconds(unsigned seconds) override { sleeps.push_back(seconds); }

    std::string sysname = "VMkernel", nodename = "esx01", release = "8.0.2";
    std::string version = "#1 SMP Release build-22380479", machine = "x86_64";
    int unameError = 0;
    long uptime = 100;
    int sysinfoError = 0;
    std::vector<FakeInterface> interfaces;
    int getifaddrsError = 0;
    int listsHandedOut = 0;
    int listsFreed = 0;
    std::vector<unsigned> sleeps;

private:
    struct Node {
        struct ifaddrs entry {};
        struct sockaddr_in v4 {};
        struct sockaddr_in6 v6 {};
        std::string name;
    };
    template <size_t N>
    static void copy(char (&field)[N], const std::string& text) {
        std::strncpy(field, text.c_str(), N - 1);
        field[N - 1] = '\0';
    }
    std::deque<Node> nodes;
};

}  // namespace vmwaretest
