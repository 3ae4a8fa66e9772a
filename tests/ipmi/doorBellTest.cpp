// Doorbell polls: one transfer per kind, the answer read by kind, a failure as "nothing to report".
#include "ipmiTestRig.h"

TEST_F(IpmiTest, DoorBellResultDependsOnKindAndAnswer) {
    const std::string full = std::string(240, 'x') + "WriteInventory";  // 254 bytes, no terminator
    const std::string failed =
        "ERROR   Request ioctl failure with error code : -1\nERROR IPMI exec failed std::exception\n"
        "ERROR An error occurred in checking RMC request via IPMI";
    const std::string unsupported = "WARNING Received Unsupported telemetry doorbell string ";
    const struct {
        int kind, code, fail, result;
        std::string answer, main, debug;  // lines of the main log, and debug lines that must be there
    } cases[] = {
        {1, 0, 0, 1, "WriteInventory", "", "DEBUG Received doorbell string (WriteInventory)"},
        {1, 0xC1, 0, 1, "cmd=WriteInventory;now", "", ""},
        {1, 0, 0, 0, "WriteInventor", "", ""},
        {1, 0, 0, 1, full, "", "DEBUG Received doorbell string (" + full + ")"},
        {2, 0, 0, 1, std::string("\1\0\0\0\7", 5), "",
         "DEBUG Received Telemetry doorbell string (\1) cmd (1), cmd_level(7)"},
        {2, 0, 0, 2, "", "", ""},
        {2, 0, 0, 2, std::string("\2\0\0\0\7", 5), unsupported + "(\2) cmd (2), cmd_level(7)", ""},
        {2, 0, 0, 2, std::string("\1\1\0\0\0", 5), unsupported + "(\1\1) cmd (257), cmd_level(0)", ""},
        {3, 0, 0, 1, std::string("\1\0", 2), "", "DEBUG IOFWU doorbell string (1) (0) "},
        {3, 0, 0, 255, "\377\11", "", "DEBUG IOFWU doorbell string (255) (9) "},
        {3, 0, 0, 0, "", "", "DEBUG Received doorbell string ()"},
        {0, 0, 0, 0, "", "WARNING Invalid Doorbell request [0]", "DEBUG Received doorbell string ()"},
        {4, 0, 0, 0, "", "WARNING Invalid Doorbell request [4]", ""},
        {2, 0, 1, 0, std::string("\1\0\0\0\0", 5), failed, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE("row " + std::to_string(&c - cases));
        reset();
        const bool known = c.kind >= 1 && c.kind <= 3;
        rmc->pushResponse(0x3A, uint8_t(0x80 + c.kind), {uint8_t(c.code), Bytes(c.answer.begin(), c.answer.end())});
        if (c.fail) device->failNext(Step::Send);
        EXPECT_EQ(service->checkDoorBell(c.kind), c.result);
        std::string log = c.main + (c.main.empty() ? "" : "\n") + "DEBUG Checking IPMI door bell request";
        if (known) log += "\nDEBUG Transfer data through IPMI: rq [0 3a 8" + std::to_string(c.kind) + " 00]; rp [254]";
        if (!c.debug.empty()) log += "\n" + c.debug;
        EXPECT_EQ(std::make_tuple(logged(log), device->sent().size()), std::make_tuple(log, size_t{known}));
    }
}
