// The checks of what zuvCli sends: test event ids, event JSON packets and files.
#include "cliFixture.h"

namespace {

using Args = std::vector<std::string>;

std::string eventJson(const std::string& id, const std::string& extra = "") {
    return R"({"EventTime":"2026-11-18T10:36:45Z","HostName":"esx1","ID":)" + id +
           R"(,"IPv4Addresses":["10.0.0.5"],"OSType":"VMware ESXi","OSVersion":"8.0.2","Source":"HostOS")" + extra +
           "}";
}

struct Case {
    Args args;
    std::string err;  // empty: accepted and sent
};

class CliChecks : public CliFixture {
protected:
    // Each case either passes every check and is sent (status 0), or fails with its text.
    void expectCases(const std::vector<Case>& cases) {
        for (const Case& c : cases) {
            const auto result = cli(c.args);
            std::string shown;
            for (const auto& a : c.args) shown += a.substr(0, 60) + " ";
            if (c.err.empty()) {
                EXPECT_EQ(result.exitStatus, 0) << shown << result.err;
                EXPECT_EQ(result.err, "") << shown;
            } else {
                EXPECT_EQ(result.exitStatus, 1) << shown;
                EXPECT_EQ(result.err, "zuvCli Error: " + c.err + "\n") << shown;
            }
        }
    }
};

TEST_F(CliChecks, TestEventIdsByModeAndEnabledManagers) {
    startService();
    const std::string provide = "Please provide valid EVENTID to zuvCli.";
    expectCases({
        {{"-t", "708"}, ""},
        {{"-t", "708abc"}, ""},
        {{"-t", "abc"}, provide},
        {{"-t", "99999999999"}, provide},
        {{"-t", "356"}, ""},  // HostOSInfo is enabled
        {{"-t", "383"}, ""},  // FibreChannelDevices is enabled
        {{"-t", "678"}, "The resource manager for given EVENTID is not enabled."},
        {{"-t", "1150"}, "Please enter a valid EVENTID to zuvCli."},
        {{"-t", "-5"}, "Please enter a valid EVENTID to zuvCli."},
    });
    EXPECT_EQ(payloads(), (std::vector<std::string>{"708", "708abc", "356", "383"}));

    zuvtest::writeConfig(kTestModeConfig);
    expectCases({{{"-t", "356"}, provide},
                 {{"-t", "708"}, ""},
                 {{"-p", eventJson("708")}, "Invalid option"},
                 {{"-f", "/tmp/x.json"}, "Invalid option"}});
}

TEST_F(CliChecks, EventJsonPacketsAndFiles) {
    startService();
    // Padding inside a member, so that the trim of a -p argument leaves the size as it is.
    const std::string frame = eventJson("708", R"(,"Pad":"")");
    const std::string exact = eventJson("708", R"(,"Pad":")" + std::string(4096 - frame.size(), 'a') + "\"");
    ASSERT_EQ(exact.size(), 4096u);
    zuvtest::writeFile("/tmp/exact.json", exact);
    const std::string over = eventJson("708", R"(,"Pad":")" + std::string(4097 - frame.size(), 'a') + "\"");
    zuvtest::writeFile("/tmp/over.json", over);
    zuvtest::writeFile("/tmp/empty.json", "");
    zuvtest::writeFile("/tmp/fc.json", eventJson("383", R"(,"PhysicalLocation":"x")"));
    const std::string notRunning = "Failed to send zuvCli event as the corresponding resource manager is not running";
    const std::string badFormat = "Unable to send TEST EVENT due to invalid format of json string. Error: ";
    expectCases({
        {{"-p", eventJson("708")}, ""},
        {{"-p", eventJson("4294968004")}, ""},  // 2^32 + 708: the low 32 bits are the id
        {{"-p", "{}"}, badFormat},
        {{"-p", "5"}, badFormat},
        {{"-p", R"({"ID":708})"}, "Unable to send TEST EVENT as json string is incomplete"},
        {{"-p", eventJson("383")},
         "Failed to send TEST EVENT as json string is incomplete. PhysicalLocation is missing"},
        {{"-p", eventJson("678", R"(,"PhysicalLocation":"x")")}, notRunning},
        {{"-p", eventJson("1150")}, notRunning},
        {{"-p", exact}, ""},
        {{"-p", over}, "Failed to process JSON payload! Error = (Too large)"},
        {{"-f", "/tmp/exact.json"}, ""},
        {{"-f", "/tmp/fc.json"}, ""},
        {{"-f", "/tmp/over.json"}, "Failed to process JSON file! Error = (Too large), filename = /tmp/over.json"},
        {{"-f", "/tmp/none.json"}, "Failed to open JSON file!, filename = /tmp/none.json"},
    });
    const auto all = packets();
    ASSERT_EQ(all.size(), 5u);
    EXPECT_EQ(messageTypeOf(all[0]), 0x0100);
    EXPECT_EQ(messageTypeOf(all[3]), 0x0101);
    EXPECT_EQ(std::string(all[2].begin() + 17, all[2].end()), exact);
    EXPECT_EQ(std::string(all[3].begin() + 17, all[3].end()), exact);  // the file, sent as read

    // An empty file reaches the parser, whose error text follows "Error: ".
    const auto empty = cli({"-f", "/tmp/empty.json"});
    EXPECT_EQ(empty.exitStatus, 1);
    EXPECT_EQ(empty.err.rfind("zuvCli Error: " + badFormat, 0), 0u) << empty.err;
    EXPECT_GT(empty.err.size(), ("zuvCli Error: " + badFormat + "\n").size());
}

TEST_F(CliChecks, JsonThatTheLibraryCannotReadEndsInOrder) {
    startService();
    for (const std::string& text :
         {std::string(R"([1,2,3])"), eventJson(R"("708")"), eventJson("-708"), eventJson(R"({"a":1})")}) {
        const auto result = cli({"-p", text});
        EXPECT_EQ(result.exitStatus, 1) << text;
        EXPECT_EQ(result.err.rfind("zuvCli Error: Unable to send TEST EVENT as json string has members of the "
                                   "wrong type. Error: ",
                                   0),
                  0u)
            << result.err;
    }
    EXPECT_TRUE(packets().empty());
    EXPECT_TRUE(replyPipesLeft().empty());
}

}  // namespace
