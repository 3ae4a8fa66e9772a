#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "sim/hosttools/zuvFakeHostTools.h"
#include "utils/zuvUtils.h"
#include "utilsTestLog.h"
#include "zuvSandbox.h"

using utilstest::debugMessages;
using utilstest::hasMessage;
using utilstest::mainMessagesAt;
using Fields = std::vector<std::string>;

namespace {
const char* const kTopologyScratch = "/opt/kelzuv/tmp/fc_topology.txt";
const char* const kNameScratch = "/opt/kelzuv/tmp/fc_name.txt";

bool pathExists(const char* path) {
    struct stat status {};
    return lstat(path, &status) == 0;
}

const char* const kPciListing =
    "0000:03:00.0\n"
    "   Address: 0000:03:00.0\n"
    "   Segment: 0x0000\n"
    "   VMkernel Name: vmhba1\n"
    "0000:04:00.0\n"
    "   Address: 0000:04:00.0\n"
    "   VMkernel Name: \n"
    "0000:05:00.0\n"
    "   Address: 0000:05:00.0\n"
    "   VMkernel Name: vmhba2\n"
    "0000:06:00.0\n"
    "   Address: 0000:06:00.0\n"
    "   VMkernel Name: hba3\n";  // no " v": not seen
}  // namespace

class UtilsFibreChannel : public ::testing::Test {
protected:
    void SetUp() override {
        utilstest::startLogging();
        utilstest::clearLogs();
        zuvtest::makeDirectories("/opt/kelzuv/tmp");
        zuvUtils::fcTopologyMap.clear();
        zuvUtils::fcNameMap.clear();
    }
    void TearDown() override {
        zuvUtils::fcTopologyMap.clear();
        zuvUtils::fcNameMap.clear();
    }
    std::string pci(const std::string& name) { return utils.getFcPciAddress(name); }
    zuvsim::FakeHostTools tools{ZUV_SOURCE_DIR};
    zuvUtils utils;
};

TEST_F(UtilsFibreChannel, TopologyPairsTheLastAddressWithTheNextName) {
    tools.answer("localcli", "hardware pci list", kPciListing);
    utils.collectFcTopology();
    ASSERT_EQ(zuvUtils::fcTopologyMap.size(), 2u);
    EXPECT_EQ(pci("vmhba1"), "0000:03:00.0");
    EXPECT_EQ(pci("vmhba2"), "0000:05:00.0");  // the address of the device with an empty name is replaced
    EXPECT_EQ(utils.getFcTopologyEntry("vmhba2").location, "vmhba2");
    EXPECT_EQ(pci("hba3"), "NotAvailable");
    EXPECT_FALSE(pathExists(kTopologyScratch));
    const std::vector<std::string> expected = {"-----Printing FcGEoID PCIe location map-----",
                                               "vmhba1       0000:03:00.0        vmhba1",
                                               "vmhba2       0000:05:00.0        vmhba2"};
    EXPECT_EQ(debugMessages(), expected);
}

TEST_F(UtilsFibreChannel, RepeatedTopologyScanReplacesValuesAndKeepsGoneDevices) {
    tools.answer("localcli", "hardware pci list", kPciListing);
    utils.collectFcTopology();
    tools.answer("localcli", "hardware pci list", "   Address: 0000:0a:00.0\n   VMkernel Name: vmhba2\n");
    utils.collectFcTopology();
    EXPECT_EQ(pci("vmhba1"), "0000:03:00.0");
    EXPECT_EQ(pci("vmhba2"), "0000:0a:00.0");
}

TEST_F(UtilsFibreChannel, TopologyReadsLinesLongerThanAnyBufferAndAFileWithoutFinalFeed) {
    const std::string longAddress(5000, 'f');
    tools.answer("localcli", "hardware pci list", "   Address: " + longAddress + "\n   VMkernel Name: vmhba4");
    utils.collectFcTopology();
    EXPECT_EQ(pci("vmhba4"), longAddress);
}

TEST_F(UtilsFibreChannel, TopologyFailuresLeaveTheMapAndTheirMessages) {
    zuvUtils::fcTopologyMap["vmhba9"] = {"0000:09:00.0", "vmhba9"};
    // First kept line isn't an address line: nothing is read.
    tools.answer("localcli", "hardware pci list", "   VMkernel Name: vmhba1\n   Address: 0000:03:00.0\n");
    utils.collectFcTopology();
    EXPECT_TRUE(hasMessage(debugMessages(), "Unable to find FC topology information."));
    EXPECT_TRUE(hasMessage(debugMessages(), "-----Printing FcGEoID PCIe location map-----"));
    // Nothing for grep to keep, and a failing tool.
    tools.answer("localcli", "hardware pci list", "0000:03:00.0\n   Segment: 0x0000\n");
    utils.collectFcTopology();
    tools.fail("localcli", "hardware pci list", 1);
    utils.collectFcTopology();
    EXPECT_EQ(utilstest::countMessage(mainMessagesAt("ERROR"), "Error occurred in gathering FC topology information."),
              2u);
    EXPECT_EQ(zuvUtils::fcTopologyMap.size(), 1u);
    EXPECT_FALSE(pathExists(kTopologyScratch));
}

TEST_F(UtilsFibreChannel, ScratchFilesNeverWriteThroughAPlantedLinkOrAddToALeftOver) {
    zuvtest::writeFile("/opt/kelzuv/victim", "precious\n");
    ASSERT_EQ(symlink("/opt/kelzuv/victim", kTopologyScratch), 0);
    zuvtest::writeFile(kNameScratch, "   Adapter: vmhba1\n   Node Name: 10:00:00:00:00:00:00:99\n");
    tools.answer("localcli", "hardware pci list", kPciListing);
    tools.answer("localcli", "storage san fc list", "   Adapter: vmhba2\n   Node Name: 20:00:00:00:c9:00:00:02\n");
    utils.collectFcTopology();
    utils.collectFcNames();
    EXPECT_EQ(zuvtest::readFile("/opt/kelzuv/victim"), "precious\n");
    EXPECT_EQ(pci("vmhba1"), "0000:03:00.0");
    EXPECT_EQ(utils.getFcAdapterForNodeName("10:00:00:00:00:00:00:99"), "NotAvailable");
    EXPECT_EQ(utils.getFcAdapterForNodeName("20:00:00:00:c9:00:00:02"), "vmhba2");
    EXPECT_FALSE(pathExists(kTopologyScratch));
    EXPECT_FALSE(pathExists(kNameScratch));
}

TEST_F(UtilsFibreChannel, NamesKeepOnlyAdaptersOfTheTopology) {
    tools.answer("localcli", "hardware pci list", kPciListing);
    utils.collectFcTopology();
    utilstest::clearLogs();
    tools.answer("localcli", "storage san fc list",
                 "vmhba2\n"
                 "   Adapter: vmhba2\n"
                 "   Node Name: 20:00:00:00:c9:00:00:02\n"
                 "   Port Name: 10:00:00:00:c9:00:00:02\n"
                 "   Adapter: vmhba7\n"  // unknown to the topology
                 "   Node Name: 20:00:00:00:c9:00:00:07\n"
                 "   Node Name:\n"  // ends at its colon: empty
                 "   Adapter: vmhba1\n"
                 "   Node Name: 20:00:00:00:c9:00:00:01\n");
    utils.collectFcNames();
    EXPECT_EQ(zuvUtils::fcNameMap, (std::map<std::string, std::string>{{"20:00:00:00:c9:00:00:01", "vmhba1"},
                                                                       {"20:00:00:00:c9:00:00:02", "vmhba2"}}));
    EXPECT_EQ(utils.getFcAdapterForNodeName("20:00:00:00:c9:00:00:07"), "NotAvailable");
    EXPECT_FALSE(pathExists(kNameScratch));
    const std::vector<std::string> expected = {"-----Printing FcNameMap-----", "20:00:00:00:c9:00:00:01       vmhba1",
                                               "20:00:00:00:c9:00:00:02       vmhba2"};
    EXPECT_EQ(debugMessages(), expected);
}

TEST_F(UtilsFibreChannel, UnknownAdapterIsTestedAgainWithTheNextNodeName) {
    zuvUtils::fcTopologyMap["vmhba1"] = {"0000:03:00.0", "vmhba1"};
    tools.answer("localcli", "storage san fc list",
                 "   Adapter: vmhba7\n"
                 "   Node Name: 20:00:00:00:c9:00:00:07\n"
                 "   Adapter: vmhba1\n");  // still holds the node name of vmhba7
    utils.collectFcNames();
    EXPECT_EQ(utils.getFcAdapterForNodeName("20:00:00:00:c9:00:00:07"), "vmhba1");
}

TEST_F(UtilsFibreChannel, NameScanFailures) {
    tools.answer("localcli", "storage san fc list", "   Adapter: vmhba2\n   Node Name: 20:00:00:00:c9:00:00:02\n");
    utils.collectFcNames();  // empty topology: nothing stored
    EXPECT_TRUE(zuvUtils::fcNameMap.empty());
    zuvUtils::fcTopologyMap["vmhba2"] = {"0000:05:00.0", "vmhba2"};
    tools.answer("localcli", "storage san fc list", "   Node Name: 20:00:00:00:c9:00:00:02\n   Adapter: vmhba2\n");
    utils.collectFcNames();
    EXPECT_TRUE(hasMessage(debugMessages(), "Unable to find localcli storage SAN information."));
    EXPECT_TRUE(zuvUtils::fcNameMap.empty());
    tools.answer("localcli", "storage san fc list", "");
    utils.collectFcNames();
    EXPECT_TRUE(hasMessage(mainMessagesAt("ERROR"), "Error occurred in gathering localcli storage SAN information"));
    EXPECT_FALSE(pathExists(kNameScratch));
}

TEST_F(UtilsFibreChannel, LookUpsOfUnknownNamesAndLocationFields) {
    EXPECT_FALSE(utils.isFcTopologyName("vmhba1"));
    EXPECT_EQ(pci("vmhba1"), "NotAvailable");
    EXPECT_EQ(utils.getFcTopologyEntry("vmhba1").location, "NotAvailable");
    EXPECT_TRUE(utils.getFcLocationFields("vmhba1").empty());
    EXPECT_EQ(utils.getFcAdapterForNodeName("x"), "NotAvailable");
    zuvUtils::fcTopologyMap["geo"] = {"0000:03:00.0", "r001i02s03"};
    zuvUtils::fcTopologyMap["vmhba1"] = {"0000:04:00.0", "vmhba1"};
    EXPECT_TRUE(utils.isFcTopologyName("geo"));
    EXPECT_FALSE(utils.isFcTopologyName("vmhba2"));
    EXPECT_EQ(utils.getFcLocationFields("geo"), (Fields{"001", "02", "03"}));
    EXPECT_EQ(utils.getFcLocationFields("vmhba1"), (Fields{"vmhba1", "vmhba1", "vmhba1"}));
    EXPECT_TRUE(utils.getFcLocationFields("vmhba2").empty());
}

TEST_F(UtilsFibreChannel, AdapterPciStringIsTheFirstParenthesisedText) {
    tools.answer("localcli", "storage core adapter list",
                 "HBA Name  Driver    Link State  UID          Capabilities  Description\n"
                 "vmhba0    vmw_ahci  link-n/a    sata.vmhba0                (0000:00:17.0) Intel SATA\n"
                 "vmhba10   lpfc      link-up     fc.2000      Second Level  (0000:0a:00.0) Emulex\n"
                 "vmhba1    lpfc      link-up     fc.2001      Second Level  (0000:03:00.0) Emulex\n"
                 "vmhba2    lpfc      link-up     fc.2002      no parentheses\n");
    struct Case {
        const char* adapter;
        const char* expected;
    } cases[] = {
        {"vmhba0", "0000:00:17.0"}, {"VMHBA0", "0000:00:17.0"},  // case-insensitive
        {"vmhba1", "0000:0a:00.0"},                              // vmhba10 comes first
        {"vmhba2", "unchanged"},    {"vmhba5", "unchanged"},
    };
    for (const Case& c : cases) {
        std::string pciString = "unchanged";
        EXPECT_EQ(utils.getAdapterPciString(c.adapter, pciString), 1);
        EXPECT_EQ(pciString, c.expected) << c.adapter;
    }
}
