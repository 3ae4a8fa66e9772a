// The event JSON: the exact text, and the members that are left out.
#include <gtest/gtest.h>

#include "delivery/zuvEventPayload.h"
#include "deliveryTestRig.h"

namespace {

std::string render(const zuvEvent& event, const zuvMsgHeader& header) {
    Json::Value root;
    zuvPopulateEventPayload(event, header, root);
    return zuvEventToString(root);
}

}  // namespace

TEST(EventPayload, ExampleEventIsWrittenByteForByteWithItsLogLines) {
    deliverytest::rig();
    zuvtest::clearLogs();
    zuvEvent event;
    event.id = 708;
    event.eventTime = "2026-11-18T10:36:45Z";
    event.physicalLocation = "Slot 3 Port 1";
    event.source = "NVMe";
    event.variableData["Code"] = 1;
    EXPECT_EQ(render(event, {"esx01", "7.0.3", 104, "192.0.2.10"}),
              R"({"EventTime":"2026-11-18T10:36:45Z","HostName":"esx01","ID":708,)"
              R"("IPv4Addresses":[{"Address":"192.0.2.10"}],"OSType":104,"OSVersion":"7.0.3",)"
              R"("PhysicalLocation":"Slot 3 Port 1","Source":"NVMe","VariableData":{"Code":1}})");
    EXPECT_EQ(
        zuvtest::logMessages(zuvtest::kDebugLog, "ZUV_COM_MANAGER"),
        (std::vector<std::string>{
            "Populate Event Payload - Start", "zuvInBandComManager: initialize Msg header [IP Address = 192.0.2.10]",
            "zuvInBandComManager: initialize Msg [phyloc = Slot 3 Port 1]", "zuvInBandComManager: Set variable data",
            "Populate Event Payload - Finished", "Transform Event obj to String"}));
}

TEST(EventPayload, LocationAndVariableDataOnlyWhenThereAreAny) {
    const std::string head = R"({"EventTime":"t","HostName":"h","ID":-5,"IPv4Addresses":[{"Address":"a"}],)"
                             R"("OSType":1,"OSVersion":"v",)";
    const std::tuple<const char*, Json::Value, const char*> cases[] = {
        {"Not Applicable", {}, R"("Source":"s"})"},
        {"Not Available", {}, R"("Source":"s"})"},
        {"NotApplicable", {}, R"("Source":"s"})"},
        {"NotAvailable", {}, R"("Source":"s"})"},
        {"", {}, R"("Source":"s"})"},
        {"not available", {}, R"("PhysicalLocation":"not available","Source":"s"})"},
        {"NotAvailable ", {}, R"("PhysicalLocation":"NotAvailable ","Source":"s"})"},
        {" Not Applicable", {}, R"("PhysicalLocation":" Not Applicable","Source":"s"})"},
        {"", Json::objectValue, R"("Source":"s","VariableData":{}})"},
        {"", 0, R"("Source":"s","VariableData":0})"},
        {"", false, R"("Source":"s","VariableData":false})"},
    };
    for (const auto& [location, data, tail] : cases) {
        zuvEvent event;
        event.id = -5;
        event.eventTime = "t";
        event.physicalLocation = location;
        event.source = "s";
        event.variableData = data;
        event.flag = 7;
        event.firstText = event.secondText = "not sent";
        EXPECT_EQ(render(event, {"h", "v", 1, "a"}), head + tail) << location << " " << data;
    }
    EXPECT_EQ(render(zuvEvent(), zuvMsgHeader()),
              R"({"EventTime":"","HostName":"","ID":0,"OSType":0,"OSVersion":"","Source":""})");
}
