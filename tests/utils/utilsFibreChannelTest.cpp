// Fibre Channel names: the topology and name scans of the localcli listings, their look-ups and
// print-outs, and the PCI text of a storage adapter.
#include "hostTestFixture.h"

TEST_F(HostTest, ScansPairTheirLabelledLinesAndKeepWhatTheyFound) {
    const auto maps = [] {
        std::string text;
        for (const auto& [name, entry] : zuvUtils::fcTopologyMap)
            text += name + "=" + entry.pciAddress + "/" + entry.location + " ";
        for (const auto& [node, adapter] : zuvUtils::fcNameMap) text += node + "=" + adapter + " ";
        return text + ".";
    };
    // scan | localcli's output (grep keeps the labelled lines) | both maps afterwards | lines logged
    for (const Lines& row : table(R"(
topology
    | 0000:03:00.0\n   Address: 0000:03:00.0\n   VMkernel Name: vmhba1\nAddress: 0000:04:00.0\nVMkernel Name: \n
    Address: 0000:05:00.0\nVMkernel Name: vmhba2\nAddress: 0000:06:00.0\nVMkernel Name: hba3\n
    | vmhba1=0000:03:00.0/vmhba1 vmhba2=0000:05:00.0/vmhba2 .
    | DEBUG ZUV_UTILS: -----Printing FcGEoID PCIe location map-----
    | DEBUG ZUV_UTILS: vmhba1       0000:03:00.0        vmhba1
topology | Address: 0000:0a:00.0\nVMkernel Name: vmhba2\n | vmhba1=0000:03:00.0/vmhba1 vmhba2=0000:0a:00.0/vmhba2 .
topology | VMkernel Name: vmhba7\nAddress: 0000:07:00.0\n | vmhba1=0000:03:00.0/vmhba1 vmhba2=0000:0a:00.0/vmhba2 .
    | DEBUG ZUV_UTILS: Unable to find FC topology information.
topology | Segment: 0x0000\n | vmhba1=0000:03:00.0/vmhba1 vmhba2=0000:0a:00.0/vmhba2 .
    | ERROR ZUV_UTILS: Error occurred in gathering FC topology information.
names
    | Adapter: vmhba2\nNode Name: 20:02\nPort Name: 1\nAdapter: vmhba7\nNode Name: 20:07\nNode Name:\nAdapter: vmhba1\n
    Node Name: 20:01\n
    | vmhba1=0000:03:00.0/vmhba1 vmhba2=0000:0a:00.0/vmhba2 20:01=vmhba1 20:02=vmhba2 .
    | DEBUG ZUV_UTILS: -----Printing FcNameMap----- | DEBUG ZUV_UTILS: 20:02       vmhba2
names | Adapter: vmhba7\nNode Name: 20:07\nAdapter: vmhba1\n
    | vmhba1=0000:03:00.0/vmhba1 vmhba2=0000:0a:00.0/vmhba2 20:01=vmhba1 20:02=vmhba2 20:07=vmhba1 .
names | Node Name: 20:09\nAdapter: vmhba2\n
    | vmhba1=0000:03:00.0/vmhba1 vmhba2=0000:0a:00.0/vmhba2 20:01=vmhba1 20:02=vmhba2 20:07=vmhba1 .
    | DEBUG ZUV_UTILS: Unable to find localcli storage SAN information.
names | "" | vmhba1=0000:03:00.0/vmhba1 vmhba2=0000:0a:00.0/vmhba2 20:01=vmhba1 20:02=vmhba2 20:07=vmhba1 .
    | ERROR ZUV_UTILS: Error occurred in gathering localcli storage SAN information
)")) {
        tools.answer("localcli", row[0] == "topology" ? "hardware pci list" : "storage san fc list", row[1]);
        zuvtest::clearLogs(), row[0] == "topology" ? utils.collectFcTopology() : utils.collectFcNames();
        check(row, maps(), 2);
    }
    EXPECT_EQ(utils.getFcPciAddress("a") + utils.getFcTopologyEntry("a").location + utils.getFcAdapterForNodeName("a"),
              "NotAvailableNotAvailableNotAvailable");
    EXPECT_TRUE(utils.isFcTopologyName("vmhba1") && !utils.isFcTopologyName("a") &&
                utils.getFcLocationFields("a").empty());
    zuvUtils::fcTopologyMap["geo"] = {"0000:03:00.0", "r001i02s03"};
    EXPECT_EQ(utils.getFcLocationFields("geo"), (Lines{"001", "02", "03"}));
    EXPECT_EQ(utils.getFcLocationFields("vmhba1"), (Lines{"vmhba1", "vmhba1", "vmhba1"}));
}

TEST_F(HostTest, AdapterPciStringIsTheFirstParenthesisedTextOfTheAdapterLines) {
    tools.answer("localcli", "storage core adapter list",
                 "HBA Name  Description\nvmhba0    (0000:00:17.0) SATA\nvmhba10   (0000:0a:00.0) FC\nvmhba1    "
                 "(0000:03:00.0) FC\n"
                 "vmhba2    no parentheses\nvmhba3    ) before (0000:0b:00.0\n");
    // adapter | the result, PCI text (kept before): vmhba10 comes before vmhba1
    for (const Lines& row : table(R"(
vmhba0 | 1,0000:00:17.0
vmhba1 | 1,0000:0a:00.0
vmhba2 | 1,kept
vmhba3 | 1,0000:0b:00.0\n
)"))
        check(row, run("adapter:" + row[0]));
}
