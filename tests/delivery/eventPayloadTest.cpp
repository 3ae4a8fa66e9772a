// The event JSON: exact text, the members that are left out, and that every text with an
// address passes the client's check of an event JSON (re-stated below).
#include <gtest/gtest.h>

#include <random>
#include <sstream>

#include "delivery/zuvEventPayload.h"
#include "deliveryTestLog.h"

namespace {

zuvMsgHeader exampleHeader() {
    zuvMsgHeader header;
    header.hostName = "esx01";
    header.osVersion = "7.0.3";
    header.osType = 104;
    header.ipAddress = "192.0.2.10";
    return header;
}

zuvEvent exampleEvent() {
    zuvEvent event;
    event.id = 708;
    event.eventTime = "2026-11-18T10:36:45Z";
    event.physicalLocation = "Slot 3 Port 1";
    event.source = "NVMe";
    event.variableData["Code"] = 1;
    return event;
}

std::string render(const zuvEvent& event, const zuvMsgHeader& header) {
    Json::Value root;
    zuvPopulateEventPayload(event, header, root);
    return zuvEventToString(root);
}

// The client's check of an event text: it parses with the default reader, is not empty,
// and has the seven required members.
bool passesClientCheck(const std::string& text, Json::Value* parsed) {
    Json::CharReaderBuilder builder;
    std::string errors;
    std::istringstream in(text);
    Json::Value root;
    if (!Json::parseFromStream(builder, in, &root, &errors) || root.size() == 0) return false;
    for (const char* member : {"EventTime", "HostName", "ID", "IPv4Addresses", "OSType", "OSVersion", "Source"}) {
        if (!root.isMember(member)) return false;
    }
    *parsed = root;
    return true;
}

class EventPayloadTest : public ::testing::Test {
protected:
    void SetUp() override {
        deliverytest::startLogging();
        deliverytest::clearLogs();
    }
};

}  // namespace

TEST_F(EventPayloadTest, ExampleEventIsWrittenByteForByte) {
    EXPECT_EQ(render(exampleEvent(), exampleHeader()),
              "{\"EventTime\":\"2026-11-18T10:36:45Z\",\"HostName\":\"esx01\",\"ID\":708,"
              "\"IPv4Addresses\":[{\"Address\":\"192.0.2.10\"}],\"OSType\":104,\"OSVersion\":\"7.0.3\","
              "\"PhysicalLocation\":\"Slot 3 Port 1\",\"Source\":\"NVMe\",\"VariableData\":{\"Code\":1}}");
    EXPECT_EQ(
        deliverytest::messages(deliverytest::kDebugLog, "ZUV_COM_MANAGER"),
        (std::vector<std::string>{
            "Populate Event Payload - Start", "zuvInBandComManager: initialize Msg header [IP Address = 192.0.2.10]",
            "zuvInBandComManager: initialize Msg [phyloc = Slot 3 Port 1]", "zuvInBandComManager: Set variable data",
            "Populate Event Payload - Finished", "Transform Event obj to String"}));
}

TEST_F(EventPayloadTest, OnlyRealLocationsAreWritten) {
    struct Case {
        std::string location;
        bool written;
    } cases[] = {
        {"Not Applicable", false},
        {"Not Available", false},
        {"NotApplicable", false},
        {"NotAvailable", false},
        {"", false},
        {"not available", true},
        {"NotAvailable ", true},
        {" Not Applicable", true},
        {"N/A", true},
        {"Slot 1", true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.location);
        zuvEvent event = exampleEvent();
        event.physicalLocation = c.location;
        Json::Value root;
        zuvPopulateEventPayload(event, exampleHeader(), root);
        EXPECT_EQ(root.isMember("PhysicalLocation"), c.written);
        if (c.written) {
            EXPECT_EQ(root["PhysicalLocation"].asString(), c.location);
        }
        EXPECT_EQ(zuvIsNoLocation(c.location), !c.written);
    }
}

TEST_F(EventPayloadTest, VariableDataIsCopiedUnlessNull) {
    Json::Value array(Json::arrayValue);
    array.append("a");
    array.append(2);
    struct Case {
        Json::Value value;
        std::string tail;
    } cases[] = {
        {Json::Value(), "\"Source\":\"NVMe\"}"},
        {Json::Value(Json::objectValue), "\"Source\":\"NVMe\",\"VariableData\":{}}"},
        {array, "\"Source\":\"NVMe\",\"VariableData\":[\"a\",2]}"},
        {Json::Value("text"), "\"Source\":\"NVMe\",\"VariableData\":\"text\"}"},
        {Json::Value(0), "\"Source\":\"NVMe\",\"VariableData\":0}"},
        {Json::Value(false), "\"Source\":\"NVMe\",\"VariableData\":false}"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.tail);
        zuvEvent event = exampleEvent();
        event.variableData = c.value;
        std::string text = render(event, exampleHeader());
        ASSERT_GE(text.size(), c.tail.size());
        EXPECT_EQ(text.substr(text.size() - c.tail.size()), c.tail);
    }
}

TEST_F(EventPayloadTest, HeaderAndEventFieldsAsGiven) {
    zuvEvent empty;
    zuvMsgHeader noHeader;
    EXPECT_EQ(render(empty, noHeader),
              "{\"EventTime\":\"\",\"HostName\":\"\",\"ID\":0,\"OSType\":0,"
              "\"OSVersion\":\"\",\"Source\":\"\"}");
    Json::Value parsed;
    EXPECT_FALSE(passesClientCheck(render(empty, noHeader), &parsed)) << "no address, no IPv4Addresses";

    zuvEvent negative = exampleEvent();
    negative.id = -5;
    negative.firstText = "not sent";
    negative.secondText = "not sent either";
    negative.flag = 7;
    std::string text = render(negative, exampleHeader());
    EXPECT_NE(text.find("\"ID\":-5,"), std::string::npos);
    EXPECT_EQ(text.find("not sent"), std::string::npos);
}

TEST_F(EventPayloadTest, AnyEventWithAnAddressPassesTheClientCheckAndRoundTrips) {
    std::mt19937 random(42);
    auto randomText = [&random](size_t maxLength) {
        // Whole characters only: the JSON writer takes strings as UTF-8.
        static const std::vector<std::string> pool = {"a", "Z", "0", " ",  "_",  ":",  "/",    "\"",   "\\",      "{",
                                                      "}", "[", ",", "\n", "\t", "\r", "\x01", "\x7f", "\xc3\xa9"};
        std::string text;
        size_t length = random() % (maxLength + 1);
        for (size_t i = 0; i < length; ++i) text += pool[random() % pool.size()];
        return text;
    };
    for (int round = 0; round < 300; ++round) {
        zuvEvent event;
        event.id = int32_t(random());
        event.eventTime = randomText(30);
        event.physicalLocation = randomText(20);
        event.source = randomText(20);
        if (random() % 2) event.variableData["Detail"] = randomText(40);
        zuvMsgHeader header;
        header.hostName = randomText(20);
        header.osVersion = randomText(10);
        header.osType = int(random() % 300) - 10;
        header.ipAddress = "10.0.0." + std::to_string(1 + random() % 254);

        std::string text = render(event, header);
        SCOPED_TRACE(text);
        EXPECT_EQ(text.find('\n'), std::string::npos);
        Json::Value parsed;
        ASSERT_TRUE(passesClientCheck(text, &parsed));
        EXPECT_EQ(parsed["ID"].asInt(), event.id);
        EXPECT_EQ(parsed["EventTime"].asString(), event.eventTime);
        EXPECT_EQ(parsed["Source"].asString(), event.source);
        EXPECT_EQ(parsed["HostName"].asString(), header.hostName);
        EXPECT_EQ(parsed["OSVersion"].asString(), header.osVersion);
        EXPECT_EQ(parsed["OSType"].asInt(), header.osType);
        ASSERT_EQ(parsed["IPv4Addresses"].size(), 1u);
        EXPECT_EQ(parsed["IPv4Addresses"][0]["Address"].asString(), header.ipAddress);
        EXPECT_EQ(parsed.isMember("PhysicalLocation"), !event.physicalLocation.empty());
        EXPECT_EQ(parsed["VariableData"], event.variableData);
    }
}
