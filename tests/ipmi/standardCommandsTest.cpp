// Get Device ID, Get SDR Repository Info, Reserve SDR Repository and Get SDR over the simulated RMC.
#include "ipmiTestRig.h"

#include "ipmi/zuvIPMIExceptions.h"

TEST_F(IpmiTest, StandardCommandsTestTheCompletionCodeBeforeTheSize) {
    const std::string failed = "zuvIPMI::IPMICommandFailureException: IPMI command failed with: [";
    const std::string size = "zuvIPMI::InvalidResponseDataSizeException: Incorrect response data size for ";
    const struct {
        int netFn, cmd, code, length;  // length -1: not even a completion code
        std::string thrown, line;
    } cases[] = {
        {6, 1, 0, 15, "", "Get Device ID Response Data: [01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f]"},
        {6, 1, 0, 14, size + "Get Device ID!", "Insufficient Get Device ID response data size [14]. Expected [15]."},
        {6, 1, 0xC5, 15, failed + "197]", "Get Device ID finished with CC: [0xc5]"},
        {10, 0x20, 0, 20, "", "Get SDR Repository Info - Response Data: [01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e]"},
        {10, 0x20, 0, 13, size + "Get SDR Repository Info!",
         "Insufficient Get SDR Repository Info response data size [13]. Expected [14]."},
        {10, 0x20, 0, 0, size + "Get SDR Repository Info!",
         "Insufficient Get SDR Repository Info response data size [0]. Expected [14]."},
        {10, 0x20, 0xC1, 14, failed + "193]", "Get SDR Repository Info finished with CC: [0xc1]"},
        {10, 0x20, 0xD5, 13, failed + "213]", "Get SDR Repository Info finished with CC: [0xd5]"},
        {10, 0x20, 0xFF, -1, failed + "255]", "Get SDR Repository Info finished with CC: [0xff]"},
        {10, 0x22, 0, 2, "", "Reserve SDR Repository - Response Data: [01 02]"},
        {10, 0x22, 0, 1, size + "Reserve SDR Repository!",
         "Insufficient Reserve SDR Repository response data size [1]. Expected [2]."},
        {10, 0x22, 0xC5, 2, failed + "197]", "Reserve SDR Repository finished with CC: [0xc5]"},
        // Get SDR, capacity 3: no minimum size, and 0xC5 raises the derived class.
        {10, 0x23, 0, 40, "", "Get SDR - Response Data: [01 02 03]"},
        {10, 0x23, 0, 0, "", "Get SDR - Response Data: []"},
        {10, 0x23, 0xC5, 7, "zuvIPMI::SDRRepositoryReservationNotValidException: IPMI command failed with: [197]",
         "Get SDR failed due to invalid reservation!"},
        {10, 0x23, 0xCB, 0, failed + "203]", "Get SDR finished with CC: [0xcb]"},
        {10, 0x23, 0xFF, -1, failed + "255]", "Get SDR finished with CC: [0xff]"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        reset();
        rmc->pushResponse(c.netFn, c.cmd, {uint8_t(c.code), counting(c.length), c.length < 0});
        // Get SDR zeroes its buffer up to the capacity, then holds what arrived; nothing behind it changes.
        Bytes buffer(8, 0xEE), expected = counting(std::min(c.length, 3));
        expected.resize(3, 0);
        expected.resize(8, 0xEE);
        if (c.cmd != 0x23) expected.assign(8, 0xEE);
        uint16_t sdrSize = 0xBEEF, reservation = 0;
        zuvIPMI::DEVICE_ID_INFO id;
        zuvIPMI::SDR_REPOSITORY_INFO info;
        EXPECT_EQ(thrown([&] {
                      if (c.cmd == 0x01) service->getDeviceID(id);
                      if (c.cmd == 0x20) service->getSDRRepositoryInfo(info);
                      if (c.cmd == 0x22) service->reserveSDRRepository(reservation);
                      if (c.cmd == 0x23) service->getSDR({0x1234, 0x5678, 5, 16}, buffer.data(), 3, sdrSize);
                  }),
                  c.thrown);
        const std::string log = (c.cmd == 0x23 ? "DEBUG Get SDR - Request Data: [34 12 78 56 05 10]\n" : "") +
                                std::string("DEBUG ") + c.line;
        EXPECT_EQ(logged(log), log);
        EXPECT_EQ(std::make_tuple(device->sent().at(0).netFn, device->sent()[0].cmd, device->sent()[0].data),
                  std::make_tuple(c.netFn, c.cmd, c.cmd == 0x23 ? Bytes{0x34, 0x12, 0x78, 0x56, 5, 16} : Bytes{}));
        const int size = c.cmd != 0x23 ? 0xBEEF : c.thrown.empty() ? std::min(c.length, 3) : 0;
        EXPECT_EQ(std::make_tuple(buffer, int(sdrSize)), std::make_tuple(expected, size));
    }
}
