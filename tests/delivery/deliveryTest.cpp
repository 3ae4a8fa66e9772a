// The dispatcher queue on its own, then zuvInBandComManager over the simulated RMC: the manager suite's
// set-up builds the singleton after failed attempts (no other test here uses IPMI); its tests then use it.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "delivery/zuvInBandComManager.h"
#include "deliveryTestRig.h"
#include "platform/SMBIOSVMware.h"

using namespace deliverytest;
using zuvtest::kDebugLog;
using zuvtest::kMainLog;

TEST(DispatcherQueue, TasksRunByPriorityEqualOnesInHeapOrderAndAFailedWorkerStartThrows) {
    rig();
    const std::pair<std::vector<int>, std::vector<int>> cases[] = {
        {{5, 5, 5, 5, 5, 5, 5, 5, 5}, {0, 1, 3, 7, 9, 6, 8, 5, 2, 4}},
        {{-1, 0, -7, 2}, {0, 4, 2, 1, 3}},
        {{2, 0, 2, 1, 0, 2, 1, 1, 0, 2}, {0, 1, 3, 6, 10, 7, 4, 8, 5, 9, 2}}};
    for (const auto& [priorities, expected] : cases) {
        zuvtest::clearLogs();
        Recorder ran;
        zuvPriorityDispatcherQueue queue("order", 1);
        queue.dispatch([&] { ran.hold(0); }, 9);  // holds the worker until all are queued behind it
        ran.waitFor(1);
        for (size_t i = 0; i < priorities.size(); ++i)
            queue.dispatch([&, i] { ran.record(int(i) + 1); }, priorities[i]);
        ran.open();
        EXPECT_EQ(ran.waitFor(expected.size()), expected) << ::testing::PrintToString(priorities);
    }
    // The last run's debug lines: 11 tasks added, popped and completed; sizes count down after the first pop.
    const Strings log = zuvtest::logMessages(kDebugLog, "P_DISPATCH_Q");
    ASSERT_EQ(log.size(), 33u);
    EXPECT_EQ(log[0] + ", " + log[1] + ", " + log[12] + ", " + log[13],
              "Added to queue and notified, Popped a task from queue. Size: 0, "
              "Task execution completed. Size: 10, Popped a task from queue. Size: 9");
    // In a child whose user may run two tasks, the first worker starts and the second can't.
    const zuvtest::ChildResult child = zuvtest::inChild([] {
        const uid_t user = 100000 + getpid();
        const rlimit two{2, 2};
        if (setresuid(user, user, user) != 0 || setrlimit(RLIMIT_NPROC, &two) != 0) return std::string("no setup");
        return thrown([] { zuvPriorityDispatcherQueue("half started", 3); });
    });
    EXPECT_EQ(child.text + ", exit " + std::to_string(child.exitStatus),
              "std::system_error: Resource temporarily unavailable, exit 0");
}

namespace {

Strings managerLog(const char* file, const std::string& level = "") {
    return zuvtest::logMessages(file, "ZUV_COM_MANAGER", level);
}

// The host's SMBIOS access, but its platform look-up fails with something other than a runtime error.
struct BrokenSmbios : SMBIOSVMware {
    int32_t getPlatform() override { throw std::logic_error("broken"); }
};

// A completion that can be moved but not copied into a task: the event fails before it is queued.
struct ThrowsWhenCopied {
    ThrowsWhenCopied() = default;
    ThrowsWhenCopied(ThrowsWhenCopied&&) = default;
    ThrowsWhenCopied(const ThrowsWhenCopied&) { throw std::runtime_error("copy"); }
    void operator()(int) const { ADD_FAILURE() << "called"; }
};

class ManagerTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        zuvtest::clearLogs();
        // IPMI device present, SMBIOS family, a broken platform look-up, failure; all tried anew.
        const std::tuple<bool, const char*, bool, const char*> cases[] = {
            {false, "PLATFAMILY00001", false, "std::runtime_error: IPMI - Connection - Failed"},
            {true, "", false, "std::runtime_error: Couldnot Fetch the Platform details"},
            {true, "PLATFAMILY00001", true, "std::logic_error: broken"},
            {true, "PLATFAMILY00001", false, ""},
        };
        for (const auto& [device, family, broken, failure] : cases) {
            rig().device.setDevicePresent(device);
            installSmbios(family);
            auto host = broken ? std::make_unique<BrokenSmbios>() : std::make_unique<SMBIOSVMware>();
            EXPECT_EQ(thrown([&] { manager = zuvInBandComManager::getInstance(host.get()); }), failure);
        }
        EXPECT_EQ(managerLog(kMainLog),
                  (Strings{"Creating zuvInBandComManager: platformId [PLATFAMILY00001]",
                           "FAILURE in Initializing the Communication Channel [IPMI - Connection - Failed]",
                           "Creating zuvInBandComManager: platformId []",
                           "FAILURE in Initializing the Communication Channel [Couldnot Fetch the Platform details]",
                           "Creating zuvInBandComManager: platformId [PLATFAMILY00001]",
                           "FAILURE in Initializing the Communication Channel & Dispatcher Queue",
                           "Creating zuvInBandComManager: platformId [PLATFAMILY00001]"}));
        EXPECT_EQ(zuvtest::logMessages(kMainLog, "P_DISPATCH_Q"),
                  (Strings{"Creating dispatch queue: ZUV - IPMI Dispatch Queue", "Dispatch threads: 1"}));
        EXPECT_EQ(zuvInBandComManager::getInstance(nullptr), manager) << "the first argument that works counts";
    }
    void SetUp() override {
        zuvtest::clearLogs();
        manager->initializeMsgHeader({"esx01", "7.0.3", 104, "192.0.2.10"});
        rig().rmc.clearRecord();  // received() lists "command text" of what came since the test began
    }
    static Strings received() {
        Strings texts;
        for (const auto& command : rig().rmc.commands()) texts.push_back(command.name + " " + command.text());
        return texts;
    }
    static inline zuvInBandComManager* manager = nullptr;
    Recorder held, results;  // the tasks that use them end within the test
};

}  // namespace

TEST_F(ManagerTest, WhileTheWorkerIsBusyWorkWaitsByPriorityCleanupDropsItAndDoorbellsPassIt) {
    manager->sendUtilization("hold", [this](int) { held.hold(1); });  // the queue's lock stays free meanwhile
    held.waitFor(1);
    manager->sendEvent(zuvEvent{}, results.into(2));
    manager->sendInventory("dropped");
    manager->cleanup();  // the completions of dropped tasks are never called
    EXPECT_EQ(zuvtest::logMessages(kMainLog, "P_DISPATCH_Q"),
              (Strings{"Cleanup_Received: QSize [2]", "Q Cleaned_up: QSize [0]"}));
    zuvtest::clearLogs();
    std::string app = "{\"app\":1}";
    manager->sendAppTelemetry(app, results.into(4));
    manager->sendInventory("[\"inventory\"]");  // before a task of lower priority: a tie would reorder them
    manager->sendUtilization("{\"cpu\":42}", results.into(3));
    zuvEvent event{708, "2026-11-18T10:36:45Z", 0, "", "", "Slot 3 Port 1", "NVMe", {}};
    event.variableData["Code"] = 1;
    manager->sendEvent(event, results.into(1));
    app = "changed by the caller";      // the tasks hold copies
    for (uint8_t telemetry : {1, 2}) {  // only 1 means yes
        rig().rmc.setDoorBell(0x82, {telemetry, 0, 0, 0, 7});
        rig().rmc.setDoorBell(0x83, {uint8_t(3 - telemetry), 0});
        EXPECT_EQ(manager->isTelemetryRequested() * 10 + manager->isIOFWURequested(), telemetry == 1 ? 10 : 1);
    }
    held.open();

    const std::string json =
        R"({"EventTime":"2026-11-18T10:36:45Z","HostName":"esx01","ID":708,"IPv4Addresses":[{"Address":"192.0.2.10"}],)"
        R"("OSType":104,"OSVersion":"7.0.3","PhysicalLocation":"Slot 3 Port 1","Source":"NVMe","VariableData":{"Code":1}})";
    EXPECT_EQ(results.waitFor(3), (std::vector<int>{10, 30, 40}));
    EXPECT_EQ(received(), (Strings{"WriteTelemetry hold", "MPEventGen " + json, R"(WriteInventory ["inventory"])",
                                   "WriteTelemetry {\"cpu\":42}", "WriteAppTelemetry {\"app\":1}"}));
    EXPECT_TRUE(zuvtest::logHolds(kMainLog, "Sending event through selected protocol - EventId [708]\n" + json + "\n"));
    EXPECT_EQ(managerLog(kMainLog),
              (Strings{"Sending event through selected protocol - EventId [708]", "Sent - Successful"}));
    EXPECT_EQ(managerLog(kDebugLog),
              (Strings{"Submit the Application Telemetry to Dispatcher", "Submit the Inventory to Dispatcher",
                       "Submit the Utilization Payload to the Dispatcher", "Populate Event Payload - Start",
                       "zuvInBandComManager: initialize Msg header [IP Address = 192.0.2.10]",
                       "zuvInBandComManager: initialize Msg [phyloc = Slot 3 Port 1]",
                       "zuvInBandComManager: Set variable data", "Populate Event Payload - Finished",
                       "Transform Event obj to String", "Submit the Event to Dispatcher"}));
}

TEST_F(ManagerTest, FailuresReachOnlyTheCallbackOrTheCallerAndTheWorkerGoesOn) {
    rig().device.failNext(zuvsim::SimulatedRmcDevice::Step::Receive, 1);  // the failed inventory ends quietly
    manager->sendInventory("{\"inventory\":true}");
    manager->sendUtilization("{}", nullptr);  // an empty completion is allowed
    manager->sendAppTelemetry("last", results.into(7));
    EXPECT_EQ(results.waitFor(1), std::vector<int>{70});
    const zuvEvent event{709, "", 0, "", "", "", "", {}};
    EXPECT_EQ(thrown([&] { manager->sendEvent(event, std::function<void(int)>(ThrowsWhenCopied())); }),
              "std::runtime_error: Event NOT Delivered to RMC");
    EXPECT_EQ(managerLog(kMainLog, "ERROR"), Strings{"Failed to send the Event to RMC = [709]"});
    EXPECT_FALSE(zuvtest::hasMessage(managerLog(kMainLog), "Sent - Successful"));
    EXPECT_EQ(received(),
              (Strings{"WriteInventory {\"inventory\":true}", "WriteTelemetry {}", "WriteAppTelemetry last"}));
    EXPECT_EQ(thrown([&] { manager->initialize(1); }), "std::runtime_error: NOT Initialized - Protocol Not supported");
    const Strings debug = managerLog(kDebugLog);
    EXPECT_TRUE(zuvtest::hasMessage(
        debug, "zuvInBandComManager: initialize Msg header [HostName = esx01], [OSVersion = 7.0.3], [OSType = 104]"));
    EXPECT_EQ(Strings(debug.end() - 2, debug.end()),
              (Strings{"Initialize zuvInBandComManager: protocol [1]", "NO Supporting Protocol - existing"}));
    SMBIOSVMware smbios;
    auto own = std::make_unique<zuvInBandComManager>(&smbios);
    zuvtest::clearLogs();
    own.reset();
    EXPECT_EQ(managerLog(kMainLog), Strings{"Destructor: zuvInBandComManager"});
    EXPECT_EQ(zuvtest::logMessages(kMainLog, "P_DISPATCH_Q"),
              (Strings{"Destructor: Destroying dispatch threads...", "Destructor: Joining thread 0 until completion"}));
}

TEST_F(ManagerTest, EventJsonHasLocationAndVariableDataOnlyWhenThereAreAny) {
    auto render = [](const zuvEvent& event) {
        Json::Value root;
        manager->populateEventPayload(event, root);
        return manager->eventToString(root);
    };
    manager->initializeMsgHeader({});  // no address, no IPv4Addresses
    const std::string head = R"({"EventTime":"t","HostName":"","ID":-5,"OSType":0,"OSVersion":"",)";
    const std::tuple<const char*, Json::Value, const char*> cases[] = {
        {"Not Applicable", {}, R"("Source":"s"})"},
        {"Not Available", {}, R"("Source":"s"})"},
        {"NotApplicable", {}, R"("Source":"s"})"},
        {"NotAvailable", {}, R"("Source":"s"})"},
        {"", {}, R"("Source":"s"})"},
        {"not available", {}, R"("PhysicalLocation":"not available","Source":"s"})"},
        {"NotAvailable ", {}, R"("PhysicalLocation":"NotAvailable ","Source":"s"})"},
        {"", Json::objectValue, R"("Source":"s","VariableData":{}})"},
    };
    for (const auto& [location, data, tail] : cases)
        EXPECT_EQ(render({-5, "t", 7, "not sent", "not sent", location, "s", data}), head + tail) << location << data;
    EXPECT_EQ(render({}), R"({"EventTime":"","HostName":"","ID":0,"OSType":0,"OSVersion":"","Source":""})");
}
