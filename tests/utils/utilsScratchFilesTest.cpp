// The scratch files that the shell fills with ">>": made afresh, never written through a link
// planted at their name, removed on every way out; a name that can't be cleared is a failure.
#include "hostTestFixture.h"

TEST_F(HostTest, ScratchFilesAreMadeAfreshNeverFollowedAndAlwaysRemoved) {
    zuvtest::writeFile("/var/log/vmksummary.log",
                       "2020-03-04T05:06:07Z Host has booted\n2020-03-05T00:00:00Z Host is rebooting\n");
    tools.answer("localcli", "hardware pci list", "Address: 0000:03:00.0\nVMkernel Name: vmhba1\n");
    tools.answer("localcli", "storage san fc list", "Adapter: vmhba1\nNode Name: 20:01\n");
    tools.answer("esxtop", "-c /opt/kelzuv/data/esxtopconf -b -n 1",
                 "\"T\",\"Machine MBytes\",\"\\Memory\\Free MBytes\",\n\"t\",\"8192\",\"4096\",\n");
    // operation | scratch file | what a killed run left there | result | result when the name can't be cleared, and its
    // message
    for (const Lines& row : table(R"(
boot | /tmp/zuvboot.log | 2019-01-01T00:00:00Z\n | 0,1583298367 | -1,0
    | WARNING ZUV_UTILS: Error occurred in gathering system boot time information.
shutdown | /tmp/zuvboot.log | 2019-01-01T00:00:00Z\n | 0,1583366400 | -1,7
    | WARNING ZUV_UTILS: Error occurred in gathering system last shutdown time information.
topology | /opt/kelzuv/tmp/fc_topology.txt | 2019\n | 0000:03:00.0 | NotAvailable
    | ERROR ZUV_UTILS: Error occurred in gathering FC topology information.
names | /opt/kelzuv/tmp/fc_name.txt | 2019\n | vmhba1 | NotAvailable
    | ERROR ZUV_UTILS: Error occurred in gathering localcli storage SAN information
memory | /opt/kelzuv/tmp/zuv-mem.txt | "T","Machine MBytes","\Memory\Free MBytes",\n"t","2048","1024",\n | 8,4 | none
    | ERROR VMWARE_OS_UTILS: Unable to fetch physical memory information.
)")) {
        const std::string& path = row[1];
        const auto fresh = [&] {  // the maps as the operation needs them
            zuvUtils::fcTopologyMap = {{"vmhba1", {}}}, zuvUtils::fcNameMap.clear();
            if (row[0] == "topology") zuvUtils::fcTopologyMap.clear();
            return run(row[0]);
        };
        zuvtest::writeFile(path, row[2]);  // a left-over is replaced, not added to
        EXPECT_EQ(join({fresh(), zuvtest::fileExists(path) ? "left" : ""}, " "), row[3] + " ") << path;
        zuvtest::writeFile("/tmp/victim", "precious\n"), symlink("/tmp/victim", path.c_str());  // never followed
        EXPECT_EQ(join({fresh(), zuvtest::fileExists(path) ? "left" : "", zuvtest::readFile("/tmp/victim")}, " "),
                  row[3] + "  precious\n");
        zuvtest::writeFile(path + "/keep", ""), unlink("/tmp/shell.log");  // a directory: the command isn't run
        EXPECT_EQ(join({fresh(), std::to_string(linesOf("/tmp/shell.log").size())}, " "), row[4] + " 0") << path;
        check({path, "", row[5]}, ""), unlink((path + "/keep").c_str()), rmdir(path.c_str());
    }
}
