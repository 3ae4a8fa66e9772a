// zuvInBandComManager end to end over the simulated RMC: what the RMC receives, in which
// order, the completion values, failures on the way, cleanup, doorbells and destruction.
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <thread>

#include "delivery/zuvEventPayload.h"
#include "delivery/zuvInBandComManager.h"
#include "managerTestRig.h"
#include "platform/SMBIOSVMware.h"

using deliverytest::Gate;
using deliverytest::kDebugLog;
using deliverytest::kMainLog;
using deliverytest::Recorder;
using deliverytest::recordInto;
using deliverytest::sampleEvent;

namespace {

const zuvMsgHeader kHeader{"esx01", "7.0.3", 104, "192.0.2.10"};

class ManagerTest : public ::testing::Test {
protected:
    void SetUp() override {
        deliverytest::ManagerRig& rig = deliverytest::managerRig();
        rmc = &rig.rmc;
        device = &rig.device;
        deliverytest::installSmbios("PLATFAMILY00001");
        smbios = std::make_unique<SMBIOSVMware>();
        manager = std::make_unique<zuvInBandComManager>(smbios.get());
        manager->initializeMsgHeader(kHeader);
        done = rmc->commands().size();
        deliverytest::clearLogs();
    }

    // Occupies the worker: an event whose completion waits at the gate. Returns once the
    // worker is inside it.
    void holdWorker() {
        manager->sendEvent(sampleEvent(1, "hold"), [this](int result) {
            started.record(result);
            gate.wait();
        });
        started.waitFor(1);
    }

    // Commands the RMC received since the test began.
    std::vector<deliverytest::ReceivedCommand> received() {
        std::vector<deliverytest::ReceivedCommand> all = rmc->commands();
        return std::vector<deliverytest::ReceivedCommand>(all.begin() + long(done), all.end());
    }

    static std::string eventText(const zuvEvent& event) {
        Json::Value root;
        zuvPopulateEventPayload(event, kHeader, root);
        return zuvEventToString(root);
    }

    zuvsim::SimulatedRmc* rmc = nullptr;
    zuvsim::SimulatedRmcDevice* device = nullptr;
    // Declared before the manager, so that they outlive its worker.
    Gate gate;
    Recorder started;
    std::unique_ptr<SMBIOSVMware> smbios;
    std::unique_ptr<zuvInBandComManager> manager;
    size_t done = 0;
};

}  // namespace

TEST_F(ManagerTest, QueuedWorkRunsEventInventoryUtilizationThenAppTelemetry) {
    Recorder results;
    holdWorker();
    deliverytest::clearLogs();
    std::string app = "{\"app\":1}";
    std::string utilization = "{\"cpu\":42}";
    std::string inventory = std::string(500, 'I');  // several blocks
    manager->sendAppTelemetry(app, recordInto(results, 4));
    manager->sendUtilization(utilization, recordInto(results, 3));
    manager->sendInventory(inventory);
    zuvEvent event = sampleEvent(835, "NVMe");
    event.variableData["Code"] = 1;
    manager->sendEvent(event, recordInto(results, 1));
    app.assign("changed by the caller");  // the tasks hold copies
    gate.open();

    EXPECT_EQ(results.waitFor(3), (std::vector<int>{10, 30, 40}));
    const std::vector<std::string> debugLines = deliverytest::messages(kDebugLog, "ZUV_COM_MANAGER");
    const std::vector<std::string> infoLines = deliverytest::messages(kMainLog, "ZUV_COM_MANAGER");
    const std::string eventJson = eventText(event);
    EXPECT_TRUE(deliverytest::logHolds(kMainLog, "EventId [835]\n" + eventJson + "\n"));

    std::vector<deliverytest::ReceivedCommand> commands = received();
    ASSERT_EQ(commands.size(), 5u);
    const std::pair<const char*, std::string> expected[] = {
        {"MPEventGen", eventText(sampleEvent(1, "hold"))},
        {"MPEventGen", eventJson},
        {"WriteInventory", inventory},
        {"WriteTelemetry", utilization},
        {"WriteAppTelemetry", "{\"app\":1}"},
    };
    for (size_t i = 0; i < commands.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(commands[i].name, expected[i].first);
        EXPECT_EQ(commands[i].text(), expected[i].second);
        EXPECT_TRUE(commands[i].complete);
        EXPECT_TRUE(commands[i].faults.empty()) << ::testing::PrintToString(commands[i].faults);
    }
    EXPECT_EQ(
        debugLines,
        (std::vector<std::string>{
            "Submit the Application Telemetry to Dispatcher", "Submit the Utilization Payload to the Dispatcher",
            "Submit the Inventory to Dispatcher", "Populate Event Payload - Start",
            "zuvInBandComManager: initialize Msg header [IP Address = 192.0.2.10]",
            "zuvInBandComManager: initialize Msg [phyloc = Slot 3 Port 1]", "zuvInBandComManager: Set variable data",
            "Populate Event Payload - Finished", "Transform Event obj to String", "Submit the Event to Dispatcher"}));
    EXPECT_EQ(infoLines, (std::vector<std::string>{"Sending event through selected protocol - EventId [835]",
                                                   "Sent - Successful"}));
}

TEST_F(ManagerTest, FailedTransfersAndFaultyCallbacksLeaveTheWorkerServing) {
    using Step = zuvsim::SimulatedRmcDevice::Step;
    Recorder results;

    // A dead channel: sendEvent returns as usual, and the completion gets -1 later.
    device->failNext(Step::Send, 1);
    manager->sendEvent(sampleEvent(708, "Test"), recordInto(results, 1));
    EXPECT_EQ(results.waitFor(1), std::vector<int>{9});
    EXPECT_TRUE(deliverytest::logHolds(kMainLog, "Sent - Successful"));
    manager->sendUtilization("{\"after\":\"dead\"}", recordInto(results, 2));
    EXPECT_EQ(results.waitFor(2), (std::vector<int>{9, 20}));

    // A failed inventory transfer ends its task quietly.
    device->failNext(Step::Receive, 1);
    manager->sendInventory("{\"inventory\":true}");
    manager->sendAppTelemetry("{\"after\":\"inventory\"}", recordInto(results, 3));
    EXPECT_EQ(results.waitFor(3).back(), 30);

    // A completion that raises, against its contract, is called again with -1 by the
    // transport, and the worker goes on.
    manager->sendUtilization("{}", [&results](int result) {
        results.record(50 + result);
        throw std::runtime_error("callback failed");
    });
    manager->sendUtilization("{}", nullptr);  // an empty completion is allowed
    manager->sendAppTelemetry("{\"last\":1}", recordInto(results, 6));
    std::vector<int> values = results.waitFor(6);
    EXPECT_EQ(std::vector<int>(values.begin() + 3, values.end()), (std::vector<int>{50, 49, 60}));

    std::vector<std::string> texts;
    for (const deliverytest::ReceivedCommand& command : received())
        texts.push_back(command.name + " " + command.text());
    EXPECT_EQ(texts,
              (std::vector<std::string>{"WriteTelemetry {\"after\":\"dead\"}", "WriteInventory {\"inventory\":true}",
                                        "WriteAppTelemetry {\"after\":\"inventory\"}", "WriteTelemetry {}",
                                        "WriteTelemetry {}", "WriteAppTelemetry {\"last\":1}"}));
}

TEST_F(ManagerTest, CleanupDropsQueuedWorkWithoutCallingBack) {
    Recorder results;
    holdWorker();
    manager->sendEvent(sampleEvent(2, "dropped"), recordInto(results, 2));
    manager->sendInventory("dropped");
    manager->sendUtilization("dropped", recordInto(results, 3));
    manager->cleanup();
    EXPECT_TRUE(deliverytest::logHolds(kMainLog, "Cleanup_Received: QSize [3]"));
    gate.open();
    manager->sendAppTelemetry("after", recordInto(results, 4));
    EXPECT_EQ(results.waitFor(1), std::vector<int>{40});
    std::vector<deliverytest::ReceivedCommand> commands = received();
    ASSERT_EQ(commands.size(), 2u);
    EXPECT_EQ(commands[0].name, "MPEventGen");
    EXPECT_EQ(commands[1].text(), "after");
}

TEST_F(ManagerTest, DoorbellQuestionsBypassTheBusyQueue) {
    holdWorker();
    struct Case {
        uint8_t cmd;
        std::vector<uint8_t> body;
        bool failPoll;
        bool expected;
    } cases[] = {
        {0x82, {1, 0, 0, 0, 7}, false, true},
        {0x82, {2, 0, 0, 0, 0}, false, false},
        {0x82, {0, 0, 0, 0, 0}, false, false},
        {0x82, {1, 0, 0, 0, 0}, true, false},
        {0x83, {1, 0}, false, true},
        {0x83, {2, 0}, false, false},
        {0x83, {}, false, false},
        {0x83, {1, 0}, true, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::PrintToString(c.body));
        rmc->setDoorBell(c.cmd, c.body);
        if (c.failPoll) device->failNext(zuvsim::SimulatedRmcDevice::Step::Send, 1);
        bool answer = c.cmd == 0x82 ? manager->isTelemetryRequested() : manager->isIOFWURequested();
        EXPECT_EQ(answer, c.expected);
    }
    gate.open();
}

TEST_F(ManagerTest, OnlyProtocolZeroIsKnown) {
    for (int protocol : {1, -1, 2}) {
        SCOPED_TRACE(protocol);
        try {
            manager->initialize(protocol);
            ADD_FAILURE() << "no exception";
        } catch (const std::runtime_error& e) {
            EXPECT_STREQ(e.what(), "NOT Initialized - Protocol Not supported");
        }
    }
    EXPECT_TRUE(deliverytest::logHolds(kDebugLog, "ZUV_COM_MANAGER: Initialize zuvInBandComManager: protocol [2]"));
    EXPECT_TRUE(deliverytest::logHolds(kDebugLog, "ZUV_COM_MANAGER: NO Supporting Protocol - existing"));
    Recorder results;
    manager->sendUtilization("still works", recordInto(results, 3));
    EXPECT_EQ(results.waitFor(1), std::vector<int>{30});
}

TEST_F(ManagerTest, DestructionFinishesTheTransferInProgressAndDropsTheRest) {
    Recorder results;
    holdWorker();
    manager->sendEvent(sampleEvent(3, "queued"), recordInto(results, 3));
    manager->sendUtilization("queued", recordInto(results, 4));
    std::thread destroyer([this] { manager.reset(); });
    deliverytest::waitUntil([] { return deliverytest::logHolds(kMainLog, "Joining thread 0 until completion"); });
    gate.open();
    destroyer.join();
    EXPECT_TRUE(results.snapshot().empty());
    EXPECT_EQ(received().size(), 1u);
    EXPECT_TRUE(deliverytest::logHolds(kMainLog, "ZUV_COM_MANAGER: Destructor: zuvInBandComManager"));
}

TEST_F(ManagerTest, HeaderChangesReachLaterEvents) {
    Recorder results;
    manager->initializeMsgHeader(zuvMsgHeader{"esx02", "8.0.1", 105, ""});
    EXPECT_TRUE(deliverytest::logHolds(
        kDebugLog,
        "zuvInBandComManager: initialize Msg header [HostName = esx02], [OSVersion = 8.0.1], [OSType = 105]"));
    manager->sendEvent(sampleEvent(356, "HostOS"), recordInto(results, 1));
    results.waitFor(1);
    std::vector<deliverytest::ReceivedCommand> commands = received();
    ASSERT_EQ(commands.size(), 1u);
    EXPECT_EQ(commands[0].text(),
              "{\"EventTime\":\"2026-11-18T10:36:45Z\",\"HostName\":\"esx02\",\"ID\":356,\"OSType\":105,"
              "\"OSVersion\":\"8.0.1\",\"PhysicalLocation\":\"Slot 3 Port 1\",\"Source\":\"HostOS\"}");
}
