// The device channel: opening /dev/ipmi0, with the driver load, and transfer over the kernel records.
#include "ipmiTestRig.h"

#include <fcntl.h>

TEST_F(IpmiTest, TransferFillsTheKernelRecordsAndTakesTheAnswerUpToTheCapacity) {
    // answerLength -1: not even a completion code; code 0x77: as the caller left it.
    const std::tuple<std::string, std::string, int, int, int, int, int, int, int> cases[] = {
        {"[6 0a 23 03]; rp [8]", "size 9, rs 8, dl 21", 0x0A, 0x23, 3, 6, 20, 8, 0},
        {"[0 06 01 00]; rp [8]", "size 0, rs 8, dl 0", 0x06, 0x01, 0, 0, -1, 8, 0x77},
    };
    for (const auto& [rq, ack, netFn, cmd, lun, requestSize, answerLength, size, code] : cases) {
        SCOPED_TRACE(ack);
        reset();
        rmc->pushResponse(netFn, cmd, {0, counting(answerLength), answerLength < 0});
        // A pointer with size 0 must not reach the driver; a guard zone shows writes beyond the capacity.
        Bytes request = counting(std::max(requestSize, 1)), response(8 + 16, 0xEE);
        Bytes expected = counting(std::min(answerLength, 8));
        expected.resize(response.size(), 0xEE);
        uint16_t sentSize = requestSize, responseSize = 8;
        uint8_t answerCode = 0x77;
        service->transfer(netFn, cmd, lun, request.data(), sentSize, response.data(), responseSize, &answerCode);
        EXPECT_EQ(std::make_tuple(response, int(responseSize), int(answerCode)), std::make_tuple(expected, size, code));
        const zuvsim::SentRequest s = device->sent().at(0);
        EXPECT_EQ(std::make_tuple(s.addrType, s.channel, s.lun, s.addrLen, s.netFn, s.cmd, s.dataPointerNull, s.data,
                                  device->faults(), device->receives()),
                  std::make_tuple(0x0C, 0x0F, 0, 8u, netFn, cmd, requestSize == 0, counting(requestSize), Lines{},
                                  std::vector<std::pair<unsigned, unsigned>>{{40, 272}}));
        const std::string log = "DEBUG Transfer data through IPMI: rq " + rq + "\nDEBUG   Sending data through IPMI\n" +
                                "DEBUG   Waiting for IPMI channel\nDEBUG   Read IPMI Ack: " + ack;
        EXPECT_EQ(logged(log), log);
    }
}

TEST_F(IpmiTest, OpeningLoadsTheDriversOnlyWhenTheDeviceIsMissingAndTheInstanceIsBuiltUntilItOpens) {
    Lines drivers;
    for (const char* module : {"msghandler", "si", "devintf", "watchdog", "ssif"})
        drivers.push_back(std::string("modprobe ipmi_") + module + " > /dev/null 2>&1");
    drivers.push_back(
        "mknod -m 0600 /dev/ipmi0 c `cat /proc/devices | grep ipmidev |cut -d \" \" -f 1` 0 > /dev/null 2>&1");
    const std::string refused = "std::invalid_argument: IPMI message size out of range|ERROR IPMI message size ";
    // Message size, device present, made by mknod, opens, and what was thrown | the main log.
    const std::tuple<int, bool, bool, int, std::string> cases[] = {
        {64, false, true, 2, "|"},
        {64, false, false, 2,
         "std::runtime_error: IPMI - Connection - Failed|ERROR Unable to Open IPMI channel - Bailing out"},
        {8, true, false, 1, "|"},
        {7, true, false, 0, refused + "7 is outside 8 to 64"},
        {65, true, false, 0, refused + "65 is outside 8 to 64"},
    };
    for (const auto& [messageSize, present, madeByMknod, opens, outcome] : cases) {
        SCOPED_TRACE(outcome);
        reset();
        device->setDevicePresent(present, madeByMknod);
        std::string result = thrown([&] { zuvIPMIService opened(messageSize); }) + "|";
        result += logged("");
        const bool loads = !present, built = result == "|";
        EXPECT_EQ(
            std::make_tuple(result, device->shellCommands(), device->sleeps(), device->openedPaths(),
                            device->openFlags(), device->closed()),
            std::make_tuple(outcome, loads ? drivers : Lines{}, std::vector<uint64_t>(loads, 3000000),
                            Lines(opens, "/dev/ipmi0"), std::vector<int>(opens, O_RDWR), std::vector<int>(built, 5)));
    }
    // The instance: a failed construction is tried again on the next call, then it stays.
    const zuvtest::ChildResult child = zuvtest::inChild([&] {
        device->setDevicePresent(false);
        const std::string first = thrown([] { zuvIPMIService::getInstance(); });
        device->setDevicePresent(true);
        auto* transport = dynamic_cast<zuvIPMIService*>(zuvIPMIService::getInstance());
        transport->execCommand("MPEventGen", std::string(100, 'e'));  // in blocks of 33, 57 and 11, then a pause
        const bool same = transport == dynamic_cast<zuvIPMIService*>(zuvIPMIService::getIPMIServiceInstance());
        return first + " " + std::to_string(same) + " " + std::to_string(device->openedPaths().size()) + " " +
               std::to_string(rmc->commands().at(0).faults.size()) + " " + std::to_string(device->sleeps().back());
    });
    EXPECT_EQ(child.text, "std::runtime_error: IPMI - Connection - Failed 1 3 0 500000");
}
