// What both classes ask the host (they share the uname, getifaddrs, vim-cmd and pipe code), the
// exact command line of every operation, and what a shell that can't start gives.
#include <sys/wait.h>

#include <csignal>
#include <filesystem>

#include "hostTestFixture.h"

// The replacement operator delete frees what the replacement operator new took from malloc.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
#endif
static size_t failFrom = 0;  // the next allocation of at least this many bytes fails (0: none does)
void* operator new(size_t size) {
    if (failFrom != 0 && size >= failFrom) {
        failFrom = 0;
        throw std::bad_alloc();
    }
    if (void* memory = std::malloc(size != 0 ? size : 1)) return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, size_t) noexcept { std::free(memory); }

TEST_F(HostTest, EveryOperationGivesTheShellItsCommandLineByteForByte) {
    tools.installIn("/bin", "vim-cmd");
    for (const Lines& row : table(R"(
version => localcli system version get | grep -i Version: => localcli system version get | grep -i Product
vmVersion => localcli system version get | grep -i Version: => localcli system version get | grep -i Product:
topology => localcli hardware pci list | grep -e 'Address: ' -e 'VMkernel Name:'>> /opt/kelzuv/tmp/fc_topology.txt
names => localcli storage san fc list | grep -e 'Adapter: ' -e 'Node Name:'>> /opt/kelzuv/tmp/fc_name.txt
adapter => localcli storage core adapter list | grep -i 'vmhba1'
boot => grep "Host has booted" /var/log/vmksummary.log | tail -2 | awk '{print $1}' >> /tmp/zuvboot.log
shutdown => grep "Host is rebooting" /var/log/vmksummary.log | tail -1 | awk '{print $1}' >> /tmp/zuvboot.log
ids => cat /opt/kelzuv/tmp/zuv_hwlist.txt | awk '/0000:3b:00.0/,/^$/' | grep -w 'Vendor ID:\|Device ID:'
    => cat /opt/kelzuv/tmp/zuv_hwlist.txt | awk '/0000:3b:00.0/,/^$/' | grep -w 'SubVendor ID:\|SubDevice ID:'
memory => esxtop -c /opt/kelzuv/data/esxtopconf -b -n 1 >> /opt/kelzuv/tmp/zuv-mem.txt
sync => /bin/vim-cmd hostsvc/firmware/sync_config => /bin/vim-cmd hostsvc/firmware/sync_config
)",
                                  " => ")) {
        unlink("/tmp/shell.log"), run(row[0]);
        EXPECT_EQ(linesOf("/tmp/shell.log"), Lines(row.begin() + 1, row.end())) << row[0];
    }
}

TEST_F(HostTest, RunnersGiveTheFgetsPiecesOfTheOutputWhateverTheExitStatus) {
    zuvtest::writeFile("/tmp/long.txt", std::string(5000, 'a') + "\nshort\nlast");
    const Lines pieces = {std::string(2047, 'a'), std::string(2047, 'a'), std::string(906, 'a') + "\n", "short\n",
                          "last"};
    for (const auto& [command, output] :
         {std::pair<std::string, Lines>{"cat /tmp/long.txt", pieces}, {"echo partial; exit 3", {"partial\n"}}}) {
        EXPECT_EQ(utils.runCommand(command), output) << command;
        EXPECT_EQ(os.runCommand(command), output) << command;
        EXPECT_EQ(os.runCommandOrThrow(command), output) << command;
    }
    os.commandLineSize = 4;
    EXPECT_EQ(os.runCommand("printf abcdefg"), (Lines{"abc", "def", "g"}));
    EXPECT_TRUE(saw("DEBUG ZUV_UTILS: The command is echo partial; exit 3"));
    EXPECT_TRUE(saw("DEBUG VMWARE_OS_UTILS: Command to be executed : [printf abcdefg]"));
}

TEST_F(HostTest, WithoutAShellEveryCommandFailsWithItsMessage) {
    unlink("/bin/sh");  // popen() can't start the shell: glibc then tells ENOMEM
    for (const Lines& row : table(R"(
runners | , | DEBUG ZUV_UTILS: popen() failed! : Cannot allocate memory
    | DEBUG VMWARE_OS_UTILS: popen() failed! : Cannot allocate memory
runOrThrow | !Cannot allocate memory | DEBUG VMWARE_OS_UTILS: popen() failed! : [12 - Cannot allocate memory]
version | , | ERROR ZUV_UTILS: Error occurred in identifying OS version.
    | ERROR ZUV_UTILS: Error occurred in identifying OS Name.
adapter | -1,kept | ERROR ZUV_UTILS: Error occurred in identifying PCI string.
)"))
        check(row, orThrown([&] { return run(row[0]); }));
}

TEST_F(HostTest, AnExceptionWhileReadingStillClosesThePipeAndFreesTheInterfaceList) {
    host.interfaces.assign(80, {"vmk0", AF_INET, "10.0.0.1"});  // their list outgrows the allocation limit
    const auto descriptors = [] { return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}); };
    const auto before = descriptors();
    for (const std::function<void()>& call : std::vector<std::function<void()>>{
             [&] { utils.runCommand("printf %03000d 0"); }, [&] { os.runCommand("printf %03000d 0"); },
             [&] { os.runCommandOrThrow("printf %03000d 0"); }, [&] { utils.getIPv4Addresses(); },
             [&] { os.getIPv4Addresses(); }}) {
        failFrom = 2000;
        EXPECT_THROW(call(), std::bad_alloc);
        failFrom = 0;
    }
    EXPECT_EQ(descriptors(), before);              // every stream was closed
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);  // and its shell waited for
    EXPECT_EQ(host.listsFreed, 2);
}

TEST_F(HostTest, UnameAndIPv4ScansOfBothClasses) {
    const std::string kernel = "VMkernel esx01 8.0.2 #1 SMP Release build-22380479 x86_64";
    EXPECT_EQ(join({utils.getKernelInfo(), os.getKernelInfo(), utils.getHostName(), os.getHostName()}, "|"),
              kernel + "|" + kernel + "|esx01|esx01");
    host.unameError = EFAULT;  // the failure code is shared: one call of each class tells its tag
    EXPECT_EQ(join({utils.getHostName(), os.getKernelInfo()}, "|"), " | ");
    EXPECT_EQ(logged(), (Lines{"ERROR ZUV_UTILS: uname failed with error = 14",
                               "ERROR VMWARE_OS_UTILS: uname failed with error = 14"}));
    host.interfaces = {{"lo", AF_INET, "127.0.0.1"},   {"vmk0", AF_INET, "10.0.0.1"},
                       {"vmk0", AF_INET6, ""},         {"vmk1", 0, ""},
                       {"vmk2", AF_INET, "127.0.0.1"}, {"lo", AF_INET, "10.9.9.9"},
                       {"vmk3", AF_INET, "10.0.0.2"},  {"vmk4", AF_INET, "10.0.0.1"}};
    EXPECT_EQ(utils.getIPv4Addresses(), (Lines{"10.0.0.1", "10.0.0.2", "10.0.0.1"}));  // not lo, not 127.0.0.1
    EXPECT_EQ(os.getIPv4Addresses(), (Lines{"10.0.0.1", "127.0.0.1", "10.0.0.2", "10.0.0.1"}));  // not lo
    EXPECT_TRUE(saw("DEBUG ZUV_UTILS: I/F Name: [lo] - IP Address: [127.0.0.1]"));
    host.getifaddrsError = ENOMEM;
    EXPECT_TRUE(utils.getIPv4Addresses().empty() && os.getIPv4Addresses().empty());
    EXPECT_EQ(host.listsFreed, 2);
    int type = 0;
    EXPECT_TRUE(utils.getOSType(type) && type == 104);
}

TEST_F(HostTest, OSVersionAndProductOfBothClasses) {
    // localcli's answer | zuvUtils: version, name | zuvVMwareOSUtils: version, product
    for (const Lines& row : table(R"(
   Product: VMware ESXi\n   Version: 8.0 U2\n   Build: 1\n | 8.0U2,VMwareESXi | 8.0 U2,VMware ESXi
Product: A B\nProduct Line: e\nVersion: 7\nOther Version: x\n | 7OtherVersion:x,ABProductLine:e | 7,A B
  PRODUCT  of vendor \nVERSION: 9.0.0:1\n | 9.0.0:1,PRODUCTofvendor | 9.0.0:1,
Version:\nProduct:   \n | , | ,
)")) {
        tools.answer("localcli", "system version get", row[0], 3);  // the exit status is not looked at
        zuvUtils::osVersion.clear(), zuvUtils::osName.clear();
        EXPECT_EQ(run("version") + " | " + run("vmVersion"), row[1] + " | " + row[2]) << row[0];
    }
    tools.answer("localcli", "system version get", "Version: " + std::string(100, '9') + "\n");  // 40-byte reads
    tools.clearCalls();
    EXPECT_EQ(utils.getOSVersion() + os.getOSVersion(), std::string(100, '9') + std::string(100, '9'));
    tools.answer("localcli", "system version get", "Version: 7\n");
    EXPECT_EQ(utils.getOSVersion() + os.getOSVersion() + utils.getOSName() + utils.getOSName(),
              std::string(100, '9') + "7");
    EXPECT_EQ(tools.calls().size(), 5u);  // zuvUtils asks until it has an answer, zuvVMwareOSUtils every time
}

TEST_F(HostTest, SyncRunsVimCmdAndWarnsWithTheRawStatusOrTheErrno) {
    tools.installIn("/bin", "vim-cmd");
    // vim-cmd's exit status | SIGCHLD | the warning of each class
    for (const Lines& row : table(R"(
0 | default | ""
10 | default | Failed to synchronize persistent storage. (0xA00)
0 | ignored | Failed to synchronize persistent storage: [10] - [No child processes]
)")) {
        tools.answer("vim-cmd", "hostsvc/firmware/sync_config", "", std::stoi(row[0]));
        zuvtest::clearLogs();
        signal(SIGCHLD, row[1] == "ignored" ? SIG_IGN : SIG_DFL);  // system() then finds no child
        run("sync"), signal(SIGCHLD, SIG_DFL);
        const Lines none, both = {"WARNING ZUV_UTILS: " + row[2], "WARNING VMWARE_OS_UTILS: " + row[2]};
        EXPECT_EQ(logged(), row[2].empty() ? none : both) << row[2];
    }
}
