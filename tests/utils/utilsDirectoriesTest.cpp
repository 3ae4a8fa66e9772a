#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "utils/zuvUtils.h"
#include "zuvSandbox.h"

using Names = std::vector<std::string>;

class UtilsDirectories : public ::testing::Test {
protected:
    void SetUp() override {
        zuvtest::makeDirectories(dir);
        for (const char* name : {"b", "a", "c"}) zuvtest::writeFile(dir + "/" + name, "");
        zuvtest::makeDirectories("/tmp/mixed");
        for (const char* name : {"ib0", "fibre", "Ib1", "000a", "0", "00", "0a0", "eth0"})
            zuvtest::writeFile(std::string("/tmp/mixed/") + name, "");
        zuvtest::makeDirectories("/tmp/empty");
        unlink("/tmp/link");
        ASSERT_EQ(symlink(dir.c_str(), "/tmp/link"), 0);
    }
    const std::string dir = "/tmp/listing";
    zuvUtils utils;
};

TEST_F(UtilsDirectories, OrderAndPlacementOfEachOperation) {
    Names names = {"old"};
    EXPECT_EQ(utils.listDirectory(dir, names), 5);
    EXPECT_EQ(names, (Names{"a", "b", "c", "old"}));
    EXPECT_EQ(utils.listDirectory(dir, names), 5);
    EXPECT_EQ(names, (Names{"a", "b", "c", "a", "b", "c", "old"}));

    names = {"old"};
    EXPECT_EQ(utils.listEntriesWithPrefix(dir, "", names), 5);
    EXPECT_EQ(names, (Names{"old", "c", "b", "a"}));
    EXPECT_EQ(utils.listEntriesWithPrefix("/tmp/mixed", "0", names), 10);
    EXPECT_EQ(names, (Names{"old", "c", "b", "a", "0a0", "000a", "00", "0"}));
}

TEST_F(UtilsDirectories, FiltersSelectTheirNames) {
    Names ib, zeros, prefixed;
    EXPECT_EQ(utils.listEntriesContainingIb("/tmp/mixed", ib), 10);
    EXPECT_EQ(ib, (Names{"fibre", "ib0"}));  // case-sensitive, anywhere in the name
    EXPECT_EQ(utils.listEntriesStartingWithZeros("/tmp/mixed", zeros), 10);
    EXPECT_EQ(zeros, (Names{"00", "000a"}));
    EXPECT_EQ(utils.listEntriesWithPrefix("/tmp/mixed", "eth0x", prefixed), 10);
    EXPECT_TRUE(prefixed.empty());  // a name shorter than the prefix doesn't match
}

TEST_F(UtilsDirectories, EmptyMissingAndVanishedDirectories) {
    Names names = {"kept"};
    EXPECT_EQ(utils.listDirectory("/tmp/empty", names), 2);
    EXPECT_EQ(utils.listDirectory("/tmp/missing", names), -1);
    EXPECT_EQ(utils.listEntriesContainingIb("/tmp/missing", names), -1);
    EXPECT_EQ(utils.listEntriesStartingWithZeros("/tmp/missing", names), -1);
    EXPECT_EQ(utils.listEntriesWithPrefix("/tmp/missing", "", names), -1);
    ASSERT_EQ(rmdir("/tmp/empty"), 0);
    EXPECT_EQ(utils.listDirectory("/tmp/empty", names), -1);
    EXPECT_EQ(names, Names{"kept"});
}

TEST_F(UtilsDirectories, SymbolicLinksAreRefusedExceptByThePrefixListing) {
    Names names;
    EXPECT_EQ(utils.listDirectory("/tmp/link", names), 0);
    EXPECT_EQ(utils.listEntriesContainingIb("/tmp/link", names), 0);
    EXPECT_EQ(utils.listEntriesStartingWithZeros("/tmp/link", names), 0);
    EXPECT_TRUE(names.empty());
    EXPECT_EQ(utils.listEntriesWithPrefix("/tmp/link", "", names), 5);
    EXPECT_EQ(names, (Names{"c", "b", "a"}));
    names.clear();
    EXPECT_EQ(utils.listDirectory("/tmp/link/", names), 5);  // the trailing "/" reaches the target
    EXPECT_EQ(names, (Names{"a", "b", "c"}));
}

TEST_F(UtilsDirectories, RelativePathsAreReadFromTheRoot) {
    ASSERT_EQ(chdir(dir.c_str()), 0);  // the working directory plays no part
    Names relative, absolute;
    EXPECT_EQ(utils.listDirectory("tmp/listing", relative), 5);
    EXPECT_EQ(relative, (Names{"a", "b", "c"}));
    EXPECT_EQ(utils.listDirectory("", relative), utils.listDirectory("/", absolute));
    ASSERT_EQ(chdir("/"), 0);
}
