// Get Device ID, Get SDR Repository Info, Reserve SDR Repository and Get SDR over the simulated RMC.
#include "ipmiTestRig.h"

#include "ipmi/zuvIPMIExceptions.h"

#include <cstring>
#include <functional>

using ipmitest::IpmiTest;

namespace {

std::vector<uint8_t> counting(size_t n, uint8_t from = 1) {
    std::vector<uint8_t> bytes(n);
    for (size_t i = 0; i < n; ++i) bytes[i] = static_cast<uint8_t>(from + i);
    return bytes;
}

enum class Outcome { Ok, SizeFailure, CodeFailure };

}  // namespace

TEST_F(IpmiTest, SimpleCommandsTestTheCompletionCodeBeforeTheSize) {
    struct Command {
        const char* name;
        uint8_t netFn, cmd;
        size_t expected;
        const char* dataLine;  // prefix of the data line
        std::function<void(zuvIPMIService&, std::vector<uint8_t>&)> run;
    };
    const std::vector<Command> commands = {
        {"Get Device ID", 0x06, 0x01, 15, "Get Device ID Response Data: [",
         [](zuvIPMIService& s, std::vector<uint8_t>& out) {
             zuvIPMI::DEVICE_ID_INFO info;
             std::memset(&info, 0xEE, sizeof info);
             s.getDeviceID(info);
             out.assign(reinterpret_cast<uint8_t*>(&info), reinterpret_cast<uint8_t*>(&info) + sizeof info);
         }},
        {"Get SDR Repository Info", 0x0A, 0x20, 14, "Get SDR Repository Info - Response Data: [",
         [](zuvIPMIService& s, std::vector<uint8_t>& out) {
             zuvIPMI::SDR_REPOSITORY_INFO info;
             std::memset(&info, 0xEE, sizeof info);
             s.getSDRRepositoryInfo(info);
             out.assign(reinterpret_cast<uint8_t*>(&info), reinterpret_cast<uint8_t*>(&info) + sizeof info);
         }},
        {"Reserve SDR Repository", 0x0A, 0x22, 2, "Reserve SDR Repository - Response Data: [",
         [](zuvIPMIService& s, std::vector<uint8_t>& out) {
             uint16_t id = 0xEEEE;
             s.reserveSDRRepository(id);
             out = {static_cast<uint8_t>(id & 0xFF), static_cast<uint8_t>(id >> 8)};
         }},
    };
    struct Answer {
        const char* name;
        zuvsim::Response (*make)(size_t expected);
        Outcome outcome;
        int code;          // for CodeFailure
        int sizeReceived;  // for SizeFailure
    };
    const std::vector<Answer> answers = {
        {"exact",
         [](size_t n) {
             return zuvsim::Response{0, counting(n)};
         },
         Outcome::Ok, 0, 0},
        {"longer, cut",
         [](size_t n) {
             return zuvsim::Response{0, counting(n + 5)};
         },
         Outcome::Ok, 0, 0},
        {"one short",
         [](size_t n) {
             return zuvsim::Response{0, counting(n - 1)};
         },
         Outcome::SizeFailure, 0, -1},
        {"code alone",
         [](size_t) {
             return zuvsim::Response{0, {}};
         },
         Outcome::SizeFailure, 0, 0},
        {"0xC1",
         [](size_t n) {
             return zuvsim::Response{0xC1, counting(n)};
         },
         Outcome::CodeFailure, 0xC1, 0},
        {"0xC5 is no reservation failure here",
         [](size_t n) {
             return zuvsim::Response{0xC5, counting(n)};
         },
         Outcome::CodeFailure, 0xC5, 0},
        {"bad code and short",
         [](size_t) {
             return zuvsim::Response{0xD5, counting(1)};
         },
         Outcome::CodeFailure, 0xD5, 0},
        {"no data at all",
         [](size_t) {
             return zuvsim::Response{0, {}, true};
         },
         Outcome::CodeFailure, 0xFF, 0},
    };
    auto service = makeService();
    for (const Command& command : commands) {
        for (const Answer& answer : answers) {
            SCOPED_TRACE(std::string(command.name) + ": " + answer.name);
            device.clearRecord();
            log.mark();
            const zuvsim::Response response = answer.make(command.expected);
            rmc.pushResponse(command.netFn, command.cmd, response);
            std::vector<uint8_t> out;
            std::string what;
            int caughtCode = -1;
            bool derived = false;
            try {
                command.run(*service, out);
            } catch (const zuvIPMI::IPMICommandFailureException& e) {
                what = e.what();
                caughtCode = e.getCompletionCode();
                derived = dynamic_cast<const zuvIPMI::SDRRepositoryReservationNotValidException*>(&e) != nullptr;
            } catch (const zuvIPMI::InvalidResponseDataSizeException& e) {
                what = e.what();
            }
            const auto sent = device.sent();
            ASSERT_EQ(sent.size(), 1u);
            EXPECT_EQ(sent[0].netFn, command.netFn);
            EXPECT_EQ(sent[0].cmd, command.cmd);
            EXPECT_TRUE(sent[0].dataPointerNull);
            const auto debug = log.messages("DEBUG");
            switch (answer.outcome) {
                case Outcome::Ok: {
                    EXPECT_EQ(what, "");
                    const std::vector<uint8_t> expected(response.body.begin(),
                                                        response.body.begin() + static_cast<long>(command.expected));
                    EXPECT_EQ(out, expected);
                    std::string hex;
                    char two[4];
                    for (uint8_t b : expected) {
                        std::snprintf(two, sizeof two, "%02x", b);
                        hex += (hex.empty() ? "" : " ") + std::string(two);
                    }
                    EXPECT_TRUE(log.has("DEBUG", command.dataLine + hex + "]"));
                    break;
                }
                case Outcome::SizeFailure: {
                    EXPECT_EQ(what, std::string("Incorrect response data size for ") + command.name + "!");
                    const size_t received = answer.sizeReceived < 0 ? command.expected - 1 : 0;
                    EXPECT_TRUE(log.has("DEBUG", std::string("Insufficient ") + command.name + " response data size [" +
                                                     std::to_string(received) + "]. Expected [" +
                                                     std::to_string(command.expected) + "]."));
                    break;
                }
                case Outcome::CodeFailure: {
                    EXPECT_EQ(what, "IPMI command failed with: [" + std::to_string(answer.code) + "]");
                    EXPECT_EQ(caughtCode, answer.code);
                    EXPECT_FALSE(derived);
                    char line[96];
                    std::snprintf(line, sizeof line, "%s finished with CC: [0x%02x]", command.name, answer.code);
                    EXPECT_TRUE(log.has("DEBUG", line)) << line;
                    break;
                }
            }
            EXPECT_TRUE(log.messages("ERROR").empty()) << "all lines of these commands are debug lines";
        }
    }
}

TEST_F(IpmiTest, GetSdrPassesTheRequestAndReportsByCompletionCode) {
    struct Case {
        const char* name;
        zuvsim::Response answer;
        uint16_t capacity;
        int code;      // -1: no exception
        bool derived;  // SDRRepositoryReservationNotValidException
        const char* line;
        uint16_t size;
    };
    const std::vector<Case> cases = {
        {"record piece",
         {0, {0x17, 0x00, 1, 2, 3, 4, 5}},
         257,
         -1,
         false,
         "Get SDR - Response Data: [17 00 01 02 03 04 05]",
         7},
        {"cut to capacity", {0, counting(40)}, 10, -1, false, nullptr, 10},
        {"nothing but the code", {0, {}}, 257, -1, false, "Get SDR - Response Data: []", 0},
        {"reservation lost", {0xC5, counting(7)}, 257, 0xC5, true, "Get SDR failed due to invalid reservation!", 0},
        {"record not present", {0xCB, {}}, 257, 0xCB, false, "Get SDR finished with CC: [0xcb]", 0},
        {"no data at all", {0, {}, true}, 257, 0xFF, false, "Get SDR finished with CC: [0xff]", 0},
    };
    auto service = makeService();
    const zuvIPMI::GET_SDR_REQUEST request{0x1234, 0x5678, 0x05, 0x10};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        device.clearRecord();
        log.mark();
        rmc.pushResponse(0x0A, 0x23, c.answer);
        std::vector<uint8_t> buffer(c.capacity + 8u, 0xEE);
        uint16_t size = 0xBEEF;
        int code = -1;
        bool derived = false;
        try {
            service->getSDR(request, buffer.data(), c.capacity, size);
        } catch (const zuvIPMI::IPMICommandFailureException& e) {
            code = e.getCompletionCode();
            derived = dynamic_cast<const zuvIPMI::SDRRepositoryReservationNotValidException*>(&e) != nullptr;
            if (derived) {
                EXPECT_STREQ(e.what(), "IPMI command failed with: [197]");
            }
        }
        EXPECT_EQ(code, c.code);
        EXPECT_EQ(derived, c.derived);
        EXPECT_EQ(size, c.size);
        const auto sent = device.sent();
        ASSERT_EQ(sent.size(), 1u);
        EXPECT_EQ(sent[0].data, (std::vector<uint8_t>{0x34, 0x12, 0x78, 0x56, 0x05, 0x10}));
        EXPECT_TRUE(log.has("DEBUG", "Get SDR - Request Data: [34 12 78 56 05 10]"));
        if (c.line != nullptr) {
            EXPECT_TRUE(log.has("DEBUG", c.line)) << c.line;
        }
        // The buffer is zeroed up to its capacity, then holds what arrived; nothing behind it changes.
        const size_t delivered = c.answer.noData ? 0 : std::min<size_t>(c.answer.body.size(), c.capacity);
        for (size_t i = 0; i < buffer.size(); ++i) {
            const uint8_t expected = i >= c.capacity ? 0xEE : i < delivered ? c.answer.body[i] : 0;
            ASSERT_EQ(buffer[i], expected) << "byte " << i;
        }
    }
}
