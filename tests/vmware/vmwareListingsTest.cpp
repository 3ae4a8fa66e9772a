// What the VMware layer cuts out of listings: PCI ids from the hardware listing (keys and adapter
// names that can't start a second command), and memory figures from an esxtop sample.
#include "hostTestFixture.h"

TEST_F(HostTest, PciIdsComeFromTheBlocksOfTheKeyDeviceIdFirst) {
    std::string listing;  // a block a row, parted by empty lines
    for (const Lines& block : table(R"(
0000:00:00.0\n   Vendor ID: 0x8086\n   Device ID: 0x2020\n   SubVendor ID: 0x15d9\n   SubDevice ID: 0x095d
0000:3b:00.0 Mellanox\n   Vendor ID: 0x15b3\n   Device ID: 0x1017\n   SubVendor ID: 0x15b3\n   SubDevice ID: 0x0007
0000:3b:00.1 Mellanox\n   VMkernel Name: vmnic5\n   Vendor ID: 0x15b4\n   Device ID: 0x1018
0000:5e:00.0 I/O Hub\n   Vendor ID: 0xZZ12\n   Device ID: 0x12\n   SubVendor ID: 0x1234567
0000:af:00.0 Lonely\n   Vendor ID: 0xabcd
)"))
        listing += block[0] + "\n\n";
    zuvtest::writeFile("/opt/kelzuv/tmp/zuv_hwlist.txt", listing);
    // key | device id, vendor id, subsystem device id, subsystem vendor id | lines logged
    for (const Lines& row : table(R"(
0000:00:00.0 | 0x2020,0x8086,0x095d,0x15d9 | DEBUG VMWARE_OS_UTILS: vendorId = 0x8086, deviceId = 0x2020
    | DEBUG VMWARE_OS_UTILS: subVendorId = 0x15d9, subDeviceId = 0x095d
vmnic5 | 0x1018,0x15b4,,
Mellanox | 0x1017,0x15b3,0x0007,0x15b3
I/O Hub | ,0xZZ12,,0x1234
0000:3b:00\.1 | 0x1018,0x15b4,,
Lonely | ,0xabcd,, | DEBUG VMWARE_OS_UTILS: Cound not fetch deviceId for Lonely
    | !DEBUG VMWARE_OS_UTILS: Cound not fetch vendorId for Lonely
    | DEBUG VMWARE_OS_UTILS: Cound not fetch subVendorId for Lonely
    | DEBUG VMWARE_OS_UTILS: Cound not fetch subDeviceId for Lonely
0000:ff:00.0 | ,,, | DEBUG VMWARE_OS_UTILS: Cound not fetch vendorId for 0000:ff:00.0
)"))
        zuvtest::clearLogs(), check(row, run("ids:" + row[0]));
}

TEST_F(HostTest, NamesPlacedIntoCommandLinesCannotRunASecondCommand) {
    // name | adapter PCI text (-1: refused), PCI ids | warnings
    for (const Lines& row : table(R"(
x'; touch /tmp/pwned; echo ' | -1,kept ,,, safe
    | WARNING ZUV_UTILS: Refusing adapter name with a quote, a control character or a leading '-': [x'; touch
     /tmp/pwned; echo ']
    | WARNING VMWARE_OS_UTILS: Refusing PCI look-up key with a quote or control character: [x'; touch /tmp/pwned; echo
     ']
x\ntouch /tmp/pwned | -1,kept ,,, safe
-e x | -1,kept ,,, safe
    | WARNING ZUV_UTILS: Refusing adapter name with a quote, a control character or a leading '-': [-e x]
    | !WARNING VMWARE_OS_UTILS: Refusing PCI look-up key with a quote or control character: [-e x]
$(touch /tmp/pwned) | 1,kept ,,, safe
x/ { system("touch /tmp/pwned") } /y | 1,kept ,,, safe
    | !WARNING VMWARE_OS_UTILS: Refusing PCI look-up key with a quote or control character: [x/ { system("touch
     /tmp/pwned") } /y]
x\/ { system("touch /tmp/pwned") } /y | 1,kept ,,, safe
x\\/ { system("touch /tmp/pwned") } /y | 1,kept ,,, safe
trailing\ | 1,kept ,,, safe
    | WARNING VMWARE_OS_UTILS: Refusing PCI look-up key with a quote or control character: [trailing\]
)")) {
        zuvtest::clearLogs();
        check(row, join({run("adapter:" + row[0]), run("ids:" + row[0]),
                         zuvtest::fileExists("/tmp/pwned") ? "pwned" : "safe"},
                        " "));
        unlink("/tmp/pwned");
    }
}

TEST_F(HostTest, FieldLinesAreJoinedWithCommasAndValuesTakenBehindColonAndBlank) {
    EXPECT_EQ(
        os.joinFieldLines({"   Vendor ID: 0x8086\n", "  no colon  \n", "Key:   two  blanks  \n", "a:b:c", "Key:"}),
        " ,Vendor ID: 0x8086 , no colon ,Key: two  blanks ,a: b:c ,Key: ");
    const std::string text = " ,Vendor ID: 0x8086 ,Device ID: 0x20201 ,Name: a:b";
    // expression | value | lines logged
    for (const Lines& row : table(R"(
,Device ID: 0x[A-Za-z0-9]{4} | 0x2020
,Name: [a-z:]+ | a:b
,SubVendor ID: 0x[A-Za-z0-9]{4} | "" | DEBUG VMWARE_OS_UTILS: Error detecting valueType : No match
(unclosed | "" | WARNING VMWARE_OS_UTILS: Error Compiling Regex, Return Value: 8, Error Info: Unmatched ( or \(
Name | ""
    | WARNING VMWARE_OS_UTILS: Issue in identifying details from localcli output :  ,Vendor ID: 0x8086 ,Device ID:
     0x20201 ,Name: a:b
)"))
        zuvtest::clearLogs(), check(row, os.extractFieldValue(text, row[0]));
}

TEST_F(HostTest, MemoryFiguresAreWholeGigabytesOfTheFirstValueRowAndFailuresAreLoggedOncePerObject) {
    const std::string esxtop = "-c /opt/kelzuv/data/esxtopconf -b -n 1";
    const std::string header =
        R"#("(PDH-CSV 4.0)","\\esx\Memory\Machine MBytes","Kernel","\\esx\Memory\Free MBytes",)#";
    // esxtop's output, behind the header when it begins with a line feed | machine and free memory
    for (const Lines& row : table(R"#(
\n"t","262041","1200","130000",\n | 255,126
\n"t","abc","1200","-2048",\n | 0,-2
\n"t",819200,"1200","2048",\n | 0,2
\n"t","2048","1200","1024",\n"t","8192","1","8192",\n | 2,1
"T","Machine MBytes","\Memory\Free MBytes"\n"t","8192","2048"\n | 0,0
"T","\Memory\Free MBytes","x","Machine MBytes (total)",\n"t","10240","1","20480",\n | 20,10
"T","Machine MBytes","Machine MBytes",\n"t","1024","4096",\n | 4,0
)#")) {
        tools.answer("esxtop", esxtop, row[0][0] == '\n' ? header + row[0] : row[0]);
        check(row, run("memory"));
    }
    EXPECT_EQ(logged(), Lines{});
    tools.fail("esxtop", esxtop, 1);
    std::string results = run("memory") + run("memory");
    tools.answer("esxtop", esxtop, "\"T\",\"Machine MBytes\",\n\"t\",\"8192\",\n");
    results += run("memory");  // a success doesn't reset the flag
    tools.fail("esxtop", esxtop, 1);
    results += run("memory") + (zuvVMwareOSUtils().getMemoryFigures().empty() ? "none" : "");  // a new object logs
    replaceTool("esxtop", "rm -f /opt/kelzuv/tmp/zuv-mem.txt");  // succeeds, but leaves nothing to read
    EXPECT_EQ(results + run("memory") + run("memory"), "nonenone8,0nonenonenonenone");
    Lines failures = logged();
    for (std::string& line : failures) line = line.substr(0, line.find(" : "));
    const std::string fetching = "ERROR VMWARE_OS_UTILS: Error occurred in fetching physical memory information";
    const std::string unable = "ERROR VMWARE_OS_UTILS: Unable to fetch physical memory information.";
    EXPECT_EQ(failures, (Lines{fetching, fetching, unable, unable}));
}
