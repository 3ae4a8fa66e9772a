// Memory figures from an esxtop batch sample.
#include <gtest/gtest.h>
#include <unistd.h>

#include "sim/hosttools/zuvFakeHostTools.h"
#include "vmware/zuvVMwareOSUtils.h"
#include "vmwareTestLog.h"
#include "zuvSandbox.h"

namespace {

constexpr const char* kScratch = "/opt/kelzuv/tmp/zuv-mem.txt";
constexpr const char* kEsxtopArguments = "-c /opt/kelzuv/data/esxtopconf -b -n 1";

// One header row and one value row, each ending in a comma, as the batch output has them.
std::string sample(const std::string& machine, const std::string& free) {
    return "\"(PDH-CSV 4.0) (UTC)(0)\",\"\\\\esx01\\Memory\\Machine MBytes\",\"\\\\esx01\\Memory\\Kernel MBytes\","
           "\"\\\\esx01\\Memory\\Free MBytes\",\n"
           "\"11/23/2026 08:00:00\",\"" +
           machine + "\",\"1200\",\"" + free + "\",\n";
}

class MemoryTest : public ::testing::Test {
protected:
    void SetUp() override {
        vmwaretest::startLogging();
        vmwaretest::clearLogs();
        zuvtest::makeDirectories("/opt/kelzuv/tmp");
        zuvtest::writeFile("/opt/kelzuv/data/esxtopconf", "mMfF\n");
        unlink(kScratch);
    }
    zuvsim::FakeHostTools tools{ZUV_SOURCE_DIR};
    zuvVMwareOSUtils os;
};

using Figures = std::vector<double>;

TEST_F(MemoryTest, FiguresAreWholeGigabytesTruncated) {
    struct Case {
        std::string output;
        Figures expected;
    };
    const Case cases[] = {
        {sample("262041", "130000"), {255, 126}},
        {sample("1023", "1024"), {0, 1}},
        {sample("4096.75", "2047.99"), {4, 1}},
        {sample("0", "0"), {0, 0}},
        {sample("abc", "5120"), {0, 5}},  // no digits behind the quote: 0
        {sample("-2048", "3072"), {-2, 3}},
        // Column names in another order, matched as substrings.
        {"\"Time\",\"\\Memory\\Free MBytes\",\"x\",\"Machine MBytes (total)\",\n\"t\",\"10240\",\"1\",\"20480\",\n",
         {20, 10}},
        // Several names match: the last column counts.
        {"\"Time\",\"Machine MBytes\",\"Machine MBytes\",\n\"t\",\"1024\",\"4096\",\n", {4, 0}},
        // A missing column gives 0 for its figure.
        {"\"Time\",\"Machine MBytes\",\n\"t\",\"8192\",\n", {8, 0}},
        // Values without their quote aren't read.
        {"\"Time\",\"Machine MBytes\",\"\\Memory\\Free MBytes\",\n\"t\",8192,\"2048\",\n", {0, 2}},
        // Rows that don't end in a comma never reach a value row.
        {"\"Time\",\"Machine MBytes\",\"\\Memory\\Free MBytes\"\n\"t\",\"8192\",\"2048\"\n", {0, 0}},
        {"", {0, 0}},
    };
    for (const Case& c : cases) {
        tools.answer("esxtop", kEsxtopArguments, c.output);
        EXPECT_EQ(os.getMemoryFigures(), c.expected) << c.output;
        EXPECT_FALSE(zuvtest::fileExists(kScratch));
    }
    EXPECT_EQ(tools.calls().back(), std::string("esxtop ") + kEsxtopArguments);
    EXPECT_TRUE(vmwaretest::mainMessages().empty());
}

TEST_F(MemoryTest, LeftOverScratchFileOrPlantedLinkIsReplacedNotFollowed) {
    // A stale sample left by a killed run is not read.
    zuvtest::writeFile(kScratch, sample("2048", "1024"));
    tools.answer("esxtop", kEsxtopArguments, sample("8192", "4096"));
    EXPECT_EQ(os.getMemoryFigures(), (Figures{8, 4}));
    EXPECT_FALSE(zuvtest::fileExists(kScratch));
    // A link planted at the name can't make the shell write through it.
    zuvtest::writeFile("/opt/kelzuv/victim.txt", "keep");
    ASSERT_EQ(symlink("/opt/kelzuv/victim.txt", kScratch), 0);
    EXPECT_EQ(os.getMemoryFigures(), (Figures{8, 4}));
    EXPECT_EQ(zuvtest::readFile("/opt/kelzuv/victim.txt"), "keep");
    EXPECT_FALSE(zuvtest::fileExists(kScratch));
}

TEST_F(MemoryTest, FailingEsxtopLogsOnceAndAlwaysRemovesTheScratchFile) {
    tools.answer("esxtop", kEsxtopArguments, sample("8192", "4096"), 1);
    EXPECT_TRUE(os.getMemoryFigures().empty());
    EXPECT_FALSE(zuvtest::fileExists(kScratch));
    auto lines = vmwaretest::mainMessages();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].rfind("Error occurred in fetching physical memory information : ", 0), 0u) << lines[0];
    EXPECT_TRUE(os.memoryErrorLogged);

    EXPECT_TRUE(os.getMemoryFigures().empty());
    EXPECT_FALSE(zuvtest::fileExists(kScratch));
    EXPECT_EQ(vmwaretest::mainMessages().size(), 1u);

    // Success in between doesn't reset the flag.
    tools.answer("esxtop", kEsxtopArguments, sample("8192", "4096"));
    EXPECT_EQ(os.getMemoryFigures(), (Figures{8, 4}));
    tools.forget("esxtop", kEsxtopArguments);
    EXPECT_TRUE(os.getMemoryFigures().empty());
    EXPECT_EQ(vmwaretest::mainMessages().size(), 1u);

    // The flag belongs to the object: a fresh one logs again.
    zuvVMwareOSUtils other;
    EXPECT_TRUE(other.getMemoryFigures().empty());
    EXPECT_EQ(vmwaretest::mainMessages().size(), 2u);
    EXPECT_FALSE(zuvtest::fileExists(kScratch));
}

TEST_F(MemoryTest, UnreadableScratchFileIsLoggedEachTime) {
    // An esxtop that succeeds but takes the scratch file away before it is read.
    const std::string bin = tools.directory() + "/vanishing";
    zuvtest::writeFile(bin + "/esxtop", std::string("#!/bin/sh\nrm -f ") + kScratch + "\nexit 0\n");
    chmod((bin + "/esxtop").c_str(), 0755);
    const std::string path = getenv("PATH");
    setenv("PATH", (bin + ":" + path).c_str(), 1);
    for (int i = 0; i < 2; ++i) EXPECT_TRUE(os.getMemoryFigures().empty());
    setenv("PATH", path.c_str(), 1);
    EXPECT_EQ(vmwaretest::mainMessages(), (std::vector<std::string>{"Unable to fetch physical memory information.",
                                                                    "Unable to fetch physical memory information."}));
    EXPECT_FALSE(os.memoryErrorLogged);
}

}  // namespace
