// zuvInBandComManager end to end over the simulated RMC: what the RMC receives, in which order,
// the completion values, failures on the way, cleanup, doorbells and the message header.
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

#include "delivery/zuvEventPayload.h"
#include "delivery/zuvInBandComManager.h"
#include "deliveryTestRig.h"
#include "platform/SMBIOSVMware.h"

using namespace deliverytest;
using Strings = std::vector<std::string>;

namespace {

const zuvMsgHeader kHeader{"esx01", "7.0.3", 104, "192.0.2.10"};

zuvEvent sampleEvent(int id) {
    zuvEvent event;
    event.id = id;
    event.eventTime = "2026-11-18T10:36:45Z";
    event.physicalLocation = "Slot 3 Port 1";
    event.source = "NVMe";
    return event;
}

std::string eventText(const zuvEvent& event) {
    Json::Value root;
    zuvPopulateEventPayload(event, kHeader, root);
    return zuvEventToString(root);
}

// A completion whose copies fail once armed, so that the event fails before it is queued.
struct FailsWhenCopied {
    std::shared_ptr<bool> armed = std::make_shared<bool>(false);
    FailsWhenCopied() = default;
    FailsWhenCopied(const FailsWhenCopied& other) : armed(other.armed) {
        if (*armed) throw std::runtime_error("copy");
    }
    void operator()(int) const { ADD_FAILURE() << "called"; }
};

class ManagerTest : public ::testing::Test {
protected:
    void SetUp() override {
        installSmbios("PLATFAMILY00001");
        smbios = std::make_unique<SMBIOSVMware>();
        manager = std::make_unique<zuvInBandComManager>(smbios.get());
        manager->initializeMsgHeader(kHeader);
        before = rig().rmc.commands().size();
        zuvtest::clearLogs();
    }

    // Keeps the worker inside an event's completion until the gate opens.
    void holdWorker() {
        manager->sendEvent(sampleEvent(1), [this](int result) {
            held.record(result);
            gate.wait();
        });
        held.waitFor(1);
    }

    // "command text" of what the RMC received since the test began.
    Strings received() {
        Strings texts;
        const auto all = rig().rmc.commands();
        for (size_t i = before; i < all.size(); ++i) texts.push_back(all[i].name + " " + all[i].text());
        return texts;
    }

    static Strings managerLog(const char* file) { return zuvtest::logMessages(file, "ZUV_COM_MANAGER"); }

    // Declared before the manager, so that they outlive its worker.
    Gate gate;
    Recorder held, results;
    std::unique_ptr<SMBIOSVMware> smbios;
    std::unique_ptr<zuvInBandComManager> manager;
    size_t before = 0;
};

}  // namespace

TEST_F(ManagerTest, QueuedWorkRunsEventInventoryUtilizationThenAppTelemetry) {
    holdWorker();
    zuvtest::clearLogs();
    std::string app = "{\"app\":1}";
    const std::string inventory(500, 'I');  // several blocks
    manager->sendAppTelemetry(app, recordInto(results, 4));
    manager->sendUtilization("{\"cpu\":42}", recordInto(results, 3));
    manager->sendInventory(inventory);
    zuvEvent event = sampleEvent(835);
    event.variableData["Code"] = 1;
    manager->sendEvent(event, recordInto(results, 1));
    app = "changed by the caller";  // the tasks hold copies
    gate.open();

    EXPECT_EQ(results.waitFor(3), (std::vector<int>{10, 30, 40}));
    const Strings debug = managerLog(kDebugLog);  // before eventText() logs more
    EXPECT_EQ(received(),
              (Strings{"MPEventGen " + eventText(sampleEvent(1)), "MPEventGen " + eventText(event),
                       "WriteInventory " + inventory, "WriteTelemetry {\"cpu\":42}", "WriteAppTelemetry {\"app\":1}"}));
    EXPECT_TRUE(zuvtest::logHolds(kMainLog, "EventId [835]\n" + eventText(event) + "\n"));
    EXPECT_EQ(managerLog(kMainLog),
              (Strings{"Sending event through selected protocol - EventId [835]", "Sent - Successful"}));
    EXPECT_EQ(Strings(debug.begin(), debug.begin() + 3),
              (Strings{"Submit the Application Telemetry to Dispatcher",
                       "Submit the Utilization Payload to the Dispatcher", "Submit the Inventory to Dispatcher"}));
    EXPECT_EQ(debug.back(), "Submit the Event to Dispatcher");
}

TEST_F(ManagerTest, FailuresReachOnlyTheCallbackAndTheWorkerGoesOn) {
    using Step = zuvsim::SimulatedRmcDevice::Step;
    // A dead channel: sendEvent returns as usual, and the completion gets -1 later.
    rig().device.failNext(Step::Send, 1);
    manager->sendEvent(sampleEvent(708), recordInto(results, 1));
    EXPECT_EQ(results.waitFor(1), std::vector<int>{9});
    EXPECT_TRUE(zuvtest::logHolds(kMainLog, "Sent - Successful"));
    // A failed inventory transfer ends its task quietly.
    rig().device.failNext(Step::Receive, 1);
    manager->sendInventory("{\"inventory\":true}");
    // A completion that raises, against its contract, is called again with -1 by the transport.
    manager->sendUtilization("{}", [this](int result) {
        results.record(50 + result);
        throw std::runtime_error("callback failed");
    });
    manager->sendUtilization("{}", nullptr);  // an empty completion is allowed
    manager->sendAppTelemetry("{\"last\":1}", recordInto(results, 6));
    EXPECT_EQ(results.waitFor(4), (std::vector<int>{9, 50, 49, 60}));

    // A failure before the event is queued: the caller learns it at once, and only from the throw.
    FailsWhenCopied completion;
    std::function<void(int)> armedCompletion = completion;
    *completion.armed = true;
    try {
        manager->sendEvent(sampleEvent(709), std::move(armedCompletion));
        ADD_FAILURE() << "no exception";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "Event NOT Delivered to RMC");
    }
    EXPECT_EQ(zuvtest::logMessages(kMainLog, "ZUV_COM_MANAGER", "ERROR"),
              Strings{"Failed to send the Event to RMC = [709]"});
    EXPECT_EQ(zuvtest::countMessage(managerLog(kMainLog), "Sent - Successful"), 1u);
    EXPECT_EQ(received(), (Strings{"WriteInventory {\"inventory\":true}", "WriteTelemetry {}", "WriteTelemetry {}",
                                   "WriteAppTelemetry {\"last\":1}"}));
}

TEST_F(ManagerTest, CleanupDropsQueuedWorkWithoutCallingBack) {
    holdWorker();
    manager->sendEvent(sampleEvent(2), recordInto(results, 2));
    manager->sendInventory("dropped");
    manager->sendUtilization("dropped", recordInto(results, 3));
    manager->cleanup();
    EXPECT_TRUE(zuvtest::logHolds(kMainLog, "Cleanup_Received: QSize [3]"));
    gate.open();
    manager->sendAppTelemetry("after", recordInto(results, 4));
    EXPECT_EQ(results.waitFor(1), std::vector<int>{40});
    EXPECT_EQ(received(), (Strings{"MPEventGen " + eventText(sampleEvent(1)), "WriteAppTelemetry after"}));
}

TEST_F(ManagerTest, DoorbellQuestionsBypassTheBusyQueueAndOnlyOneMeansYes) {
    holdWorker();
    const std::tuple<uint8_t, std::vector<uint8_t>, bool> cases[] = {
        {0x82, {1, 0, 0, 0, 7}, true}, {0x82, {2, 0, 0, 0, 0}, false}, {0x83, {1, 0}, true}, {0x83, {2, 0}, false}};
    for (const auto& [cmd, body, expected] : cases) {
        rig().rmc.setDoorBell(cmd, body);
        EXPECT_EQ(cmd == 0x82 ? manager->isTelemetryRequested() : manager->isIOFWURequested(), expected) << int(cmd);
    }
    gate.open();
}

TEST_F(ManagerTest, HeaderProtocolAndDestruction) {
    manager->initializeMsgHeader(zuvMsgHeader{"esx02", "8.0.1", 105, ""});
    manager->sendEvent(sampleEvent(356), recordInto(results, 1));
    results.waitFor(1);
    EXPECT_EQ(received(), Strings{"MPEventGen "
                                  R"({"EventTime":"2026-11-18T10:36:45Z","HostName":"esx02","ID":356,"OSType":105,)"
                                  R"("OSVersion":"8.0.1","PhysicalLocation":"Slot 3 Port 1","Source":"NVMe"})"});
    for (int protocol : {1, -1}) {
        try {
            manager->initialize(protocol);
            ADD_FAILURE() << "no exception";
        } catch (const std::runtime_error& e) {
            EXPECT_STREQ(e.what(), "NOT Initialized - Protocol Not supported");
        }
    }
    manager.reset();
    EXPECT_EQ(managerLog(kDebugLog).front(),
              "zuvInBandComManager: initialize Msg header [HostName = esx02], [OSVersion = 8.0.1], [OSType = 105]");
    EXPECT_TRUE(zuvtest::hasMessage(managerLog(kDebugLog), "Initialize zuvInBandComManager: protocol [-1]"));
    EXPECT_EQ(managerLog(kDebugLog).back(), "NO Supporting Protocol - existing");
    EXPECT_EQ(managerLog(kMainLog).back(), "Destructor: zuvInBandComManager");
}
