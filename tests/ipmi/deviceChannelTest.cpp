// The device channel: opening /dev/ipmi0 (with the driver load) and transfer over the kernel records.
#include "ipmiTestRig.h"

#include "ipmi/ipmi_exceptions.h"

#include <fcntl.h>

#include <typeinfo>

using ipmitest::IpmiTest;
using Step = zuvsim::SimulatedRmcDevice::Step;

namespace {

const std::vector<std::string> kDriverCommands = {
    "modprobe ipmi_msghandler > /dev/null 2>&1",
    "modprobe ipmi_si > /dev/null 2>&1",
    "modprobe ipmi_devintf > /dev/null 2>&1",
    "modprobe ipmi_watchdog > /dev/null 2>&1",
    "modprobe ipmi_ssif > /dev/null 2>&1",
    "mknod -m 0600 /dev/ipmi0 c `cat /proc/devices | grep ipmidev |cut -d \" \" -f 1` 0 > /dev/null 2>&1",
};

// A service whose device handle is lost, as after a failed open.
class HandlelessService : public zuvIPMIService {
public:
    HandlelessService() : zuvIPMIService(64) { fd = -1; }
};

}  // namespace

TEST_F(IpmiTest, TransferFillsTheKernelRecordsForEveryRequestShape) {
    struct Case {
        uint8_t netFn, cmd, lun;
        std::vector<uint8_t> request;
        uint16_t capacity;
        const char* debugLine;
    };
    const std::vector<Case> cases = {
        {0x06, 0x01, 0, {}, 15, "Transfer data through IPMI: rq [0 06 01 00]; rp [15]"},
        {0x0A,
         0x23,
         3,
         {0x34, 0x12, 0x78, 0x56, 0x05, 0x10},
         257,
         "Transfer data through IPMI: rq [6 0a 23 03]; rp [257]"},
        {0x3A, 0x80, 0, std::vector<uint8_t>(60, 0xA5), 4, "Transfer data through IPMI: rq [60 3a 80 00]; rp [4]"},
    };
    auto service = makeService();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.debugLine);
        device.clearRecord();
        log.mark();
        std::vector<uint8_t> response(c.capacity);
        uint16_t requestSize = static_cast<uint16_t>(c.request.size());
        uint16_t responseSize = c.capacity;
        // A caller's pointer with size 0 must not reach the driver: no data means no pointer.
        const uint8_t unused[1] = {0xAB};
        service->transfer(c.netFn, c.cmd, c.lun, c.request.empty() ? unused : c.request.data(), requestSize,
                          response.data(), responseSize, nullptr);
        const auto sent = device.sent();
        ASSERT_EQ(sent.size(), 1u);
        EXPECT_EQ(sent[0].ioctlNumber, 0x8028690DUL);
        EXPECT_EQ(sent[0].addrType, 0x0C);
        EXPECT_EQ(sent[0].channel, 0x0F);
        EXPECT_EQ(sent[0].lun, 0) << "the address always carries LUN 0";
        EXPECT_EQ(sent[0].addrLen, 8u);
        EXPECT_EQ(sent[0].netFn, c.netFn);
        EXPECT_EQ(sent[0].cmd, c.cmd);
        EXPECT_EQ(sent[0].dataLen, c.request.size());
        EXPECT_EQ(sent[0].dataPointerNull, c.request.empty());
        EXPECT_EQ(sent[0].data, c.request);
        EXPECT_TRUE(device.faults().empty()) << device.faults().front();
        EXPECT_TRUE(log.has("DEBUG", c.debugLine));
        EXPECT_TRUE(log.has("DEBUG", "  Sending data through IPMI"));
        EXPECT_TRUE(log.has("DEBUG", "  Waiting for IPMI channel"));
    }
}

TEST_F(IpmiTest, ResponseIsCutToCapacityAndShortOrEmptyAnswersKeepWhatTheCallerSet) {
    struct Case {
        const char* name;
        uint16_t capacity;
        zuvsim::Response answer;
        uint16_t expectedSize;
        uint8_t expectedCode;
        const char* ackLine;
    };
    auto body = [](size_t n) {
        std::vector<uint8_t> bytes(n);
        for (size_t i = 0; i < n; ++i) bytes[i] = static_cast<uint8_t>(i + 1);
        return bytes;
    };
    const std::vector<Case> cases = {
        {"exactly the capacity", 8, {0x00, body(8)}, 8, 0x00, "  Read IPMI Ack: size 9, rs 8, dl 9"},
        {"longer than the capacity", 8, {0x00, body(20)}, 8, 0x00, "  Read IPMI Ack: size 9, rs 8, dl 21"},
        {"shorter", 8, {0xC1, body(3)}, 3, 0xC1, "  Read IPMI Ack: size 4, rs 8, dl 4"},
        {"completion code alone", 8, {0xD5, {}}, 0, 0xD5, "  Read IPMI Ack: size 1, rs 8, dl 1"},
        {"nothing at all", 8, {0x00, {}, true}, 8, 0x77, "  Read IPMI Ack: size 0, rs 8, dl 0"},
        {"the largest answer the buffer takes",
         300,
         {0x00, body(271)},
         271,
         0x00,
         "  Read IPMI Ack: size 272, rs 300, dl 272"},
    };
    auto service = makeService();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        log.mark();
        rmc.pushResponse(0x06, 0x01, c.answer);
        // A guard zone behind the capacity shows any write outside the caller's buffer.
        std::vector<uint8_t> response(c.capacity + 16u, 0xEE);
        uint16_t requestSize = 0;
        uint16_t responseSize = c.capacity;
        uint8_t code = 0x77;
        service->transfer(0x06, 0x01, 0, nullptr, requestSize, response.data(), responseSize, &code);
        EXPECT_EQ(responseSize, c.expectedSize);
        EXPECT_EQ(code, c.expectedCode);
        const size_t delivered = c.answer.noData ? 0 : std::min<size_t>(c.answer.body.size(), c.capacity);
        for (size_t i = 0; i < response.size(); ++i) {
            const uint8_t expected = i < delivered ? c.answer.body[i] : 0xEE;
            ASSERT_EQ(response[i], expected) << "byte " << i;
        }
        EXPECT_TRUE(log.has("DEBUG", c.ackLine));
    }
}

TEST_F(IpmiTest, EveryFailedStepRaisesAPlainExceptionAndFreesTheChannel) {
    struct Case {
        const char* name;
        Step step;
        zuvsim::Response answer;
        std::vector<std::string> errors;
    };
    const std::vector<Case> cases = {
        {"send", Step::Send, {}, {"  Request ioctl failure with error code : -1", "IPMI exec failed std::exception"}},
        {"wait", Step::Select, {}, {"IPMI exec failed std::exception"}},
        {"not readable", Step::SelectNotReady, {}, {"IPMI exec failed std::exception"}},
        {"receive", Step::Receive, {}, {"  Unable to read acknowlegement : 1", "IPMI exec failed std::exception"}},
        // An answer longer than the kernel's 272-byte buffer makes the truncating receive fail.
        {"answer beyond the kernel buffer",
         Step::Open,
         {0x00, std::vector<uint8_t>(300, 1)},
         {"  Unable to read acknowlegement : 1", "IPMI exec failed std::exception"}},
    };
    auto service = makeService();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        log.mark();
        if (c.step != Step::Open) device.failNext(c.step);
        if (!c.answer.body.empty()) rmc.pushResponse(0x06, 0x01, c.answer);
        std::vector<uint8_t> response(300);
        uint16_t requestSize = 0;
        uint16_t responseSize = 300;
        try {
            service->transfer(0x06, 0x01, 0, nullptr, requestSize, response.data(), responseSize, nullptr);
            ADD_FAILURE() << "no exception";
        } catch (const std::exception& e) {
            EXPECT_EQ(typeid(e), typeid(std::exception)) << "the detail stays in the log";
        }
        EXPECT_EQ(responseSize, 300) << "a failed transfer leaves the size alone";
        EXPECT_EQ(log.messages("ERROR"), c.errors);
        // The channel is free again and the same handle is used: the next transfer goes through.
        responseSize = 15;
        service->transfer(0x06, 0x01, 0, nullptr, requestSize, response.data(), responseSize, nullptr);
        EXPECT_EQ(responseSize, 15);
    }
}

TEST_F(IpmiTest, LostHandleRaisesInvalidHandleWithoutTraffic) {
    HandlelessService service;
    device.clearRecord();
    uint8_t response[4];
    uint16_t requestSize = 0;
    uint16_t responseSize = sizeof response;
    EXPECT_THROW(service.transfer(0x06, 0x01, 0, nullptr, requestSize, response, responseSize, nullptr),
                 ipmi_exceptions::invalid_handle);
    EXPECT_THROW(service.execCommand("MPEventGen", "{}"), std::exception);
    EXPECT_EQ(service.checkDoorBell(DoorBellTelemetry), 0);
    EXPECT_TRUE(device.sent().empty());
    EXPECT_TRUE(device.closed().empty()) << "no handle, nothing to close";
}

TEST_F(IpmiTest, OpeningLoadsTheDriversOnlyWhenTheDeviceIsMissing) {
    struct Case {
        const char* name;
        bool present;
        bool mknodCreates;
        bool opens;
        std::vector<std::string> shell;
        std::vector<uint64_t> sleeps;
        size_t openAttempts;
    };
    const std::vector<Case> cases = {
        {"device there", true, false, true, {}, {}, 1},
        {"created by the driver load", false, true, true, kDriverCommands, {3000000}, 2},
        {"never appears", false, false, false, kDriverCommands, {3000000}, 2},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        device.clearRecord();
        device.setDevicePresent(c.present, c.mknodCreates);
        log.mark();
        if (c.opens) {
            zuvIPMIService service(64);
            EXPECT_TRUE(log.messages("ERROR").empty());
        } else {
            try {
                zuvIPMIService service(64);
                ADD_FAILURE() << "construction succeeded";
            } catch (const std::runtime_error& e) {
                EXPECT_STREQ(e.what(), "IPMI - Connection - Failed");
            }
            EXPECT_EQ(log.messages("ERROR"), std::vector<std::string>{"Unable to Open IPMI channel - Bailing out"});
        }
        EXPECT_EQ(device.shellCommands(), c.shell);
        EXPECT_EQ(device.sleeps(), c.sleeps);
        EXPECT_EQ(device.openedPaths(), std::vector<std::string>(c.openAttempts, "/dev/ipmi0"));
        EXPECT_EQ(device.openFlags(), std::vector<int>(c.openAttempts, O_RDWR));
        EXPECT_EQ(device.closed(), c.opens ? std::vector<int>{5} : std::vector<int>{}) << "closed once when destroyed";
    }
}

TEST_F(IpmiTest, SingletonIsTriedAgainAfterAFailedConstructionAndThenStays) {
    device.setDevicePresent(false);
    EXPECT_THROW(zuvIPMIService::getInstance(), std::runtime_error);
    EXPECT_EQ(device.shellCommands().size(), kDriverCommands.size());

    device.setDevicePresent(true);
    zuvInbandComInterface* transport = zuvIPMIService::getInstance();
    ASSERT_NE(transport, nullptr);
    EXPECT_EQ(device.shellCommands().size(), kDriverCommands.size()) << "the device was there: no driver load";
    zuvIPMI::IPMIServiceInterface* standard = zuvIPMIService::getIPMIServiceInstance();
    EXPECT_EQ(dynamic_cast<zuvIPMIService*>(transport), dynamic_cast<zuvIPMIService*>(standard));
    EXPECT_EQ(device.openedPaths().size(), 3u) << "two failed opens, one good, none after that";

    zuvIPMI::DEVICE_ID_INFO info{};
    standard->getDeviceID(info);
    EXPECT_EQ(info.deviceId, 0x20);
}
