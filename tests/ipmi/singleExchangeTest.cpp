// Requests of one exchange: doorbells (a failure means nothing to report) and the standard commands. A failed
// step of the exchange raises a plain std::exception, once (a failed wait is not tried again), and frees the channel.
#include "ipmiTestRig.h"

#include "ipmi/zuvIPMIExceptions.h"

TEST_F(IpmiTest, OneExchangeAnswersAreReadByKindAndTheCompletionCodeIsTestedBeforeTheSize) {
    const std::string failed = "zuvIPMI::IPMICommandFailureException: IPMI command failed with: [";
    const std::string plain = "std::exception: std::exception", execFailed = "ERROR IPMI exec failed std::exception";
    const std::string size = "zuvIPMI::InvalidResponseDataSizeException: Incorrect response data size for ";
    const std::string unsupported = "WARNING Received Unsupported telemetry doorbell string ";
    auto bytes = [](const std::string& text) { return Bytes(text.begin(), text.end()); };
    const std::string full = std::string(240, 'x') + "WriteInventory";  // 254 bytes, no terminator, a 255th cut
    // Call: a doorbell kind, or network function << 8 | command. Code -1: not even a completion code; -2 to -5: a
    // failed send, wait, readiness or receive. Outcome: the doorbell's result, or what was raised.
    const std::tuple<int, int, Bytes, std::string, std::string> cases[] = {
        {1, 0, bytes("WriteInventory"), "1",
         "DEBUG Checking IPMI door bell request\nDEBUG Transfer data through IPMI: rq [0 3a 81 00]; rp [254]\n"
         "DEBUG Received doorbell string (WriteInventory)"},
        {1, 0, bytes("WriteInventor"), "0", ""},
        {1, 0xC1, bytes(full + "y"), "1", "DEBUG Received doorbell string (" + full + ")"},
        {2, 0, {1, 0, 0, 0, 7}, "1", "DEBUG Received Telemetry doorbell string (\1) cmd (1), cmd_level(7)"},
        {2, 0, {}, "2", ""},
        {2, 0, {1, 1, 0, 0, 0}, "2", unsupported + "(\1\1) cmd (257), cmd_level(0)"},
        {3, 0, {255, 9}, "255", "DEBUG IOFWU doorbell string (255) (9) "},
        {0, 0, {}, "0", "WARNING Invalid Doorbell request [0]\nDEBUG Received doorbell string ()"},
        {4, 0, {}, "0", "WARNING Invalid Doorbell request [4]"},
        {2, -2, {1, 0, 0, 0, 0}, "0", kSendFailed + "ERROR An error occurred in checking RMC request via IPMI"},
        {0x0601, 0, counting(15), "",
         "DEBUG Get Device ID Response Data: [01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f]"},
        {0x0601, 0, counting(14), size + "Get Device ID!",
         "DEBUG Insufficient Get Device ID response data size [14]. Expected [15]."},
        {0x0601, 0xC5, counting(15), failed + "197]", "DEBUG Get Device ID finished with CC: [0xc5]"},
        {0x0A20, 0, counting(20), "",
         "DEBUG Get SDR Repository Info - Response Data: [01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e]"},
        {0x0A20, 0, counting(13), size + "Get SDR Repository Info!",
         "DEBUG Insufficient Get SDR Repository Info response data size [13]. Expected [14]."},
        {0x0A20, 0x0D, counting(13), failed + "13]", "DEBUG Get SDR Repository Info finished with CC: [0x0d]"},
        {0x0A20, -1, {}, failed + "255]", "DEBUG Get SDR Repository Info finished with CC: [0xff]"},
        {0x0A22, 0, counting(2), "", "DEBUG Reserve SDR Repository - Response Data: [01 02]"},
        {0x0A22, 0, counting(1), size + "Reserve SDR Repository!",
         "DEBUG Insufficient Reserve SDR Repository response data size [1]. Expected [2]."},
        {0x0A22, 0xC5, counting(2), failed + "197]", "DEBUG Reserve SDR Repository finished with CC: [0xc5]"},
        // Get SDR, capacity 3: no minimum size, and 0xC5 raises the derived class.
        {0x0A23, 0, counting(40), "",
         "DEBUG Get SDR - Request Data: [34 12 78 56 05 10]\nDEBUG Get SDR - Response Data: [01 02 03]"},
        {0x0A23, 0, {}, "", "DEBUG Get SDR - Response Data: []"},
        {0x0A23, 0xC5, counting(7),
         "zuvIPMI::SDRRepositoryReservationNotValidException: IPMI command failed with: [197]",
         "DEBUG Get SDR failed due to invalid reservation!"},
        {0x0A23, 0xCB, {}, failed + "203]", "DEBUG Get SDR finished with CC: [0xcb]"},
        {0x0A23, -1, {}, failed + "255]", "DEBUG Get SDR finished with CC: [0xff]"},
        {0x0A23, -3, {}, plain, execFailed},
        {0x0A23, -4, {}, plain, execFailed + "\nDEBUG   Sending data through IPMI\nDEBUG   Waiting for IPMI channel"},
        {0x0A23, -5, {}, plain, "ERROR   Unable to read acknowlegement : 1\n" + execFailed},
    };
    for (const auto& [call, code, answer, outcome, log] : cases) {
        SCOPED_TRACE(std::to_string(call) + " " + std::to_string(code) + " " + outcome + " " + log);
        reset();
        const bool bell = call < 0x100, getSdr = call == 0x0A23;
        const int netFn = bell ? 0x3A : call >> 8, cmd = bell ? 0x80 + call : call & 0xFF;
        rmc->pushResponse(netFn, cmd, {uint8_t(code), answer, code == -1});
        if (code < -1) device->failNext(Step(-code - 1));
        Bytes buffer(8, 0xEE);
        uint16_t sdrSize = 0xBEEF, reservation = 0;
        zuvIPMI::DEVICE_ID_INFO id;
        zuvIPMI::SDR_REPOSITORY_INFO info;
        const std::string result = bell ? std::to_string(service->checkDoorBell(call)) : thrown([&] {
            if (cmd == 0x01) service->getDeviceID(id);
            if (cmd == 0x20) service->getSDRRepositoryInfo(info);
            if (cmd == 0x22) service->reserveSDRRepository(reservation);
            if (getSdr) service->getSDR({0x1234, 0x5678, 5, 16}, buffer.data(), 3, sdrSize);
        });
        // A wrong command would meet an answer of the RMC's own; a doorbell of no known kind asks nothing.
        const size_t asks = !bell || (call >= 1 && call <= 3);
        EXPECT_EQ(std::make_tuple(result, logged(log), device->sent().size(), device->selects()),
                  std::make_tuple(outcome, log, asks, size_t{asks && code != -2}));
        // Get SDR zeroes its buffer up to the capacity, then holds what arrived; nothing behind it changes.
        Bytes held(8, 0xEE);
        for (size_t i = 0; getSdr && i < 3; ++i) held[i] = i < answer.size() ? answer[i] : 0;
        const int heldSize = !getSdr ? 0xBEEF : outcome.empty() ? std::min(int(answer.size()), 3) : 0;
        EXPECT_EQ(std::make_tuple(buffer, int(sdrSize)), std::make_tuple(held, heldSize));
        EXPECT_EQ(service->checkDoorBell(DoorBellIOFWU), 0) << "the channel is free again";
    }
}
