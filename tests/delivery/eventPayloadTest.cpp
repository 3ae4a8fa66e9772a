// The event JSON: which members are left out and how the others are written.
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

TEST(EventPayload, LocationAndVariableDataOnlyWhenThereAreAny) {
    deliverytest::rig();
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
        const zuvEvent event{-5, "t", 7, "not sent", "not sent", location, "s", data};
        EXPECT_EQ(render(event, {"h", "v", 1, "a"}), head + tail) << location << " " << data;
    }
    EXPECT_EQ(render(zuvEvent(), zuvMsgHeader()),
              R"({"EventTime":"","HostName":"","ID":0,"OSType":0,"OSVersion":"","Source":""})");
}
