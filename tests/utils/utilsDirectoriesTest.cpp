// The four scandir listings: order and placement of the names, filters, links and failures.
#include "hostTestFixture.h"

TEST_F(HostTest, ListingsAddFilteredNamesInTheirOrderAndCountEveryEntry) {
    for (const char* name : {"listing/b", "listing/a", "listing/c", "mixed/ib0", "mixed/fibre", "mixed/Ib1",
                             "mixed/000a", "mixed/0", "mixed/00", "mixed/0a0", "mixed/eth0"})
        zuvtest::writeFile(std::string("/tmp/") + name, "");
    unlink("/tmp/link"), symlink("/tmp/listing", "/tmp/link");
    ASSERT_EQ(chdir("/tmp/listing"), 0);  // the working directory plays no part
    // listing ("prefix<p>": with prefix p) | path | result, then the names, "old" being there before
    for (const Lines& row : table(R"(
all | /tmp/listing | 5 a b c old
all | tmp/listing | 5 a b c old
prefix0 | /tmp/mixed | 10 old 0a0 000a 00 0
ib | /tmp/mixed | 10 fibre ib0 old
zeros | /tmp/mixed | 10 00 000a old
all | /tmp/link | 0 old
ib | /tmp/link | 0 old
zeros | /tmp/link | 0 old
prefix | /tmp/link | 5 old c b a
all | /tmp/link/ | 5 a b c old
all | /tmp/missing | -1 old
)")) {
        Lines names = {"old"};
        int32_t result = row[0] == "all"     ? utils.listDirectory(row[1], names)
                         : row[0] == "ib"    ? utils.listEntriesContainingIb(row[1], names)
                         : row[0] == "zeros" ? utils.listEntriesStartingWithZeros(row[1], names)
                                             : utils.listEntriesWithPrefix(row[1], row[0].substr(6), names);
        check({row[0] + " " + row[1], join({std::to_string(result), join(names, " ")}, " ")}, row[2]);
    }
    ASSERT_EQ(chdir("/"), 0);
}
