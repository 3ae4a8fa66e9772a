#pragma once
// The calls through which the VMware host layer learns about the machine it runs on:
// uname(), sysinfo(), getifaddrs() and the fixed sleeps. The base class is the real system;
// a test derives from it to vary an answer and installs its object with zuvSetHostSystem.

struct ifaddrs;
struct sysinfo;
struct utsname;

class zuvHostSystem {
public:
    virtual ~zuvHostSystem() = default;
    virtual int uname(struct utsname* name);
    virtual int sysinfo(struct sysinfo* info);
    // A list from getifaddrs() goes back through freeifaddrs() of the same object.
    virtual int getifaddrs(struct ifaddrs** list);
    virtual void freeifaddrs(struct ifaddrs* list);
    virtual void sleepSeconds(unsigned seconds);
};

// The object in use: the real system unless a test installed another.
zuvHostSystem& zuvCurrentHostSystem();
// Installs system (not owned; it must outlive its use); nullptr restores the real system.
void zuvSetHostSystem(zuvHostSystem* system);
