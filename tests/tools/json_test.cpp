// SPDX-License-Identifier: Apache-2.0
#include "json_message.hpp"

#include <cstring>

#include <gtest/gtest.h>
#include <json-glib/json-glib.h>

#include "parts.hpp"
#include "support/messages.hpp"

namespace mdm::msg::json_test {
namespace {

using test::framed;
using Message = std::vector<uint8_t>;

// json-glib says so if it is called wrongly.
const GLogLevelFlags end_at_criticals =
    g_log_set_always_fatal(static_cast<GLogLevelFlags>(G_LOG_FATAL_MASK | G_LOG_LEVEL_CRITICAL));

Message body_of(std::initializer_list<uint32_t> words)
{
    Message body;
    for (const uint32_t word : words) {
        for (int shift = 0; shift < 32; shift += 8) {
            body.push_back(static_cast<uint8_t>(word >> shift));
        }
    }
    return body;
}

void add_text(Message &body, std::string_view text)
{
    const Message count = body_of({static_cast<uint32_t>(text.size())});
    body.insert(body.end(), count.begin(), count.end());
    body.insert(body.end(), text.begin(), text.end());
}

std::string line_of(const Message &message)
{
    return to_json(message, false).text;
}

// What stands behind the header.
std::string behind_header(const Message &message)
{
    const std::string json = line_of(message);
    return json.substr(json.find("},\"category\"") + 2);
}

TEST(Json, ShowsAMessageInTheOrderOfTheBytes)
{
    Message body = body_of({345, 0, 1});
    add_text(body, "abc");
    body.insert(body.end(), {5, 0, 0, 0});
    for (const auto *text : {"a", "", "c"}) {
        add_text(body, text);
    }
    body.insert(body.end(), {7, 0, 0, 0});
    add_text(body, "e");
    add_text(body, "f");
    body.push_back(0);
    const Message message = framed(7, body, "hi");
    const std::string json = to_json(message, true).text;
    EXPECT_EQ(json, R"({
  "header" : {
    "length" : 86,
    "type" : 7,
    "hdr_byte" : 90,
    "reserved" : {
      "hex" : "0000"
    },
    "hdr_word1" : 286331153,
    "hdr_word2" : 572662306,
    "hdr_text" : "hi",
    "hdr_word3" : 858993459,
    "hdr_word6" : 1717986918,
    "hdr_word7" : 2004318071,
    "hdr_word4" : 1145324612,
    "hdr_word5" : 1431655765
  },
  "category" : "wifi",
  "form" : "wifi.network",
  "body" : {
    "type" : 345,
    "param" : 0,
    "data_size" : 1,
    "network" : {
      "ssid" : "abc",
      "detail_kind" : 5,
      "detail" : {
        "w0" : "a",
        "w1" : "",
        "w2" : "c",
        "w3" : 7,
        "w4" : "e",
        "w5" : "f"
      }
    }
  },
  "padding" : {
    "hex" : "00"
  }
})");
}

TEST(Json, ShowsListsAsArrays)
{
    Message body = body_of({344, 0, 1, 3});
    add_text(body, "a");
    add_text(body, "");
    add_text(body, "\xff");
    EXPECT_EQ(behind_header(framed(7, body)),
              R"("category":"wifi","form":"wifi.ssids","body":{"type":344,"param":0,)"
              R"("data_size":1,"ssids":["a","",{"hex":"ff"}]}})");

    body = body_of({172, 0, 0, 1, 2, 0xfffffffe, 2});
    add_text(body, "p");
    add_text(body, "q");
    const Message second = body_of({8, 0});
    body.insert(body.end(), second.begin(), second.end());
    EXPECT_EQ(behind_header(framed(14, body)),
              R"("category":"app_res","form":"app_res.controls","body":{"type":172,"param":0,)"
              R"("pkg":"","data_size":1,"controls":[{"client_id":-2,"pkg_list":["p","q"]},)"
              R"({"client_id":8,"pkg_list":[]}]}})");

    body = body_of({619, 0, 20, 2, 1, 10, 2, 11});
    EXPECT_EQ(behind_header(framed(45, body)),
              R"("category":"kiosk","form":"kiosk.key_pairs","body":{"type":619,"param":0,)"
              R"("data_size":20,"key_pairs":[{"key":1,"value":10},{"key":2,"value":11}]}})");
}

TEST(Json, ShowsNegativeCounts)
{
    EXPECT_EQ(behind_header(framed(7, body_of({344, 0, 1, 0xfffffffb}))),
              R"("category":"wifi","form":"wifi.ssids","body":{"type":344,"param":0,)"
              R"("data_size":1,"ssids":{"count":-5}}})");
    EXPECT_EQ(behind_header(framed(14, body_of({172, 0, 0, 1, 1, 4, 0x80000000}))),
              R"("category":"app_res","form":"app_res.controls","body":{"type":172,"param":0,)"
              R"("pkg":"","data_size":1,"controls":[{"client_id":4,)"
              R"("pkg_list":{"count":-2147483648}}]}})");
}

TEST(Json, ShowsAMessageWithoutABody)
{
    EXPECT_EQ(behind_header(framed(70, {})), R"("category":"none","form":"none"})");
    EXPECT_EQ(behind_header(framed(70, {1, 2})),
              R"("category":"none","form":"none","padding":{"hex":"0102"}})");
}

TEST(Json, ShowsBytesAsTextIfTheyAreText)
{
    const auto data_of = [](std::string_view bytes) {
        Message body = body_of({1, 0, static_cast<uint32_t>(bytes.size())});
        body.insert(body.end(), bytes.begin(), bytes.end());
        const std::string json = behind_header(framed(31, body));
        const std::string name = "\"data\":";
        const size_t begin = json.find(name) + name.size();
        return json.substr(begin, json.size() - 2 - begin);
    };
    using namespace std::string_view_literals;
    EXPECT_EQ(data_of("B\u00fcro \U0001f600"), "\"B\u00fcro \U0001f600\"");
    EXPECT_EQ(data_of("a\0b"sv), R"({"hex":"610062"})");
    EXPECT_EQ(data_of("a\xff"), R"({"hex":"61ff"})");
    EXPECT_EQ(data_of("\xed\xa0\x80"), R"({"hex":"eda080"})");
    EXPECT_EQ(data_of("\"\\/\b\f\n\r\t\x1b[2J\x7f"), R"("\"\\/\b\f\n\r\t\u001b[2J\u007f")");
    for (char letter = 1; letter < ' '; ++letter) {
        const std::string json = data_of({&letter, 1});
        EXPECT_EQ(json.substr(0, 2), "\"\\");
        EXPECT_EQ(json.find(letter), std::string::npos);
    }
    EXPECT_EQ(data_of("\u009b\u202e\u202c\u2066\u2069\u200b\ufeff"),
              R"("\u009b\u202e\u202c\u2066\u2069\u200b\ufeff")");
    EXPECT_EQ(data_of("\u0085\u2028\u2029"), R"("\u0085\u2028\u2029")");
    EXPECT_EQ(data_of("\U000e0041\U000110bd"), R"("\udb40\udc41\ud804\udcbd")");
    EXPECT_EQ(data_of("\uffff\U0010ffff"), R"("\uffff\udbff\udfff")");
}

std::string broken(const Message &message)
{
    const MessageJson json = to_json(message, false);
    EXPECT_TRUE(json.fault.has_value());
    const std::string begin = R"({"header":{"length":)";
    EXPECT_EQ(json.text.substr(0, begin.size()), begin);
    const size_t end = json.text.find("},\"category\"");
    return end == std::string::npos ? json.text : json.text.substr(end + 2);
}

TEST(JsonOfABrokenMessage, ShowsWhatStandsInFrontOfTheFault)
{
    Message body = body_of({345, 0, 1});
    add_text(body, "abc");
    body.insert(body.end(), {5, 0, 0});
    EXPECT_EQ(broken(framed(7, body)),
              R"("category":"wifi","form":"wifi.network","body":{"type":345,"param":0,)"
              R"("data_size":1,"network":{"ssid":"abc"}},"rest":{"hex":"050000"},)"
              R"("fault":{"path":"wifi.network.detail_kind","offset":59,"needed":4,"left":3,)"
              R"("reason":"wifi.network.detail_kind at offset 59 needs 4 bytes, 3 are left"}})");
    EXPECT_EQ(broken(framed(7, {1, 0})),
              R"("category":"wifi","rest":{"hex":"0100"},"fault":{"path":"wifi.type",)"
              R"("offset":40,"needed":4,"left":2,)"
              R"("reason":"wifi.type at offset 40 needs 4 bytes, 2 are left"}})");
    EXPECT_EQ(broken(framed(7, {})),
              R"("category":"wifi","fault":{"path":"wifi.type","offset":40,"needed":4,"left":0,)"
              R"("reason":"wifi.type at offset 40 needs 4 bytes, 0 are left"}})");
}

TEST(JsonOfABrokenMessage, ShowsTheCountOfATextThatIsNotAllThere)
{
    const auto body_json = [](const Message &message) {
        const std::string json = broken(message);
        const size_t begin = json.find("\"body\"");
        return json.substr(begin, json.find(",\"fault\"") - begin);
    };
    EXPECT_EQ(body_json(framed(7, body_of({345, 0, 1, 9, 0x61616161}))),
              R"("body":{"type":345,"param":0,"data_size":1,"network":{"ssid":{"count":9}}},)"
              R"("rest":{"hex":"61616161"})");
    // It is no negative count.
    EXPECT_EQ(body_json(framed(7, body_of({345, 0, 1, 0xffffffff}))),
              R"("body":{"type":345,"param":0,"data_size":1,)"
              R"("network":{"ssid":{"count":4294967295}}})");
    EXPECT_EQ(body_json(framed(7, body_of({344, 0, 1, 2, 0, 0xffffffff}))),
              R"("body":{"type":344,"param":0,"data_size":1,"ssids":["",{"count":4294967295}]})");
    EXPECT_EQ(body_json(framed(14, body_of({172, 0, 0, 1, 1, 4, 1, 9}))),
              R"("body":{"type":172,"param":0,"pkg":"","data_size":1,)"
              R"("controls":[{"client_id":4,"pkg_list":[{"count":9}]}]})");
}

TEST(JsonOfABrokenMessage, ShowsTheCountOfAListThatIsNotAllThere)
{
    const auto body_json = [](const Message &message) {
        const std::string json = broken(message);
        const size_t begin = json.find("\"body\"");
        return json.substr(begin, json.find(",\"fault\"") - begin);
    };
    EXPECT_EQ(body_json(framed(7, body_of({344, 0, 1, 3, 0}))),
              R"("body":{"type":344,"param":0,"data_size":1,"ssids":{"count":3}},)"
              R"("rest":{"hex":"00000000"})");
    EXPECT_EQ(body_json(framed(7, body_of({344, 0, 1, 2, 4, 0x61616161}))),
              R"("body":{"type":344,"param":0,"data_size":1,)"
              R"("ssids":{"count":2,"elements":["aaaa"]}})");
    EXPECT_EQ(body_json(framed(14, body_of({172, 0, 0, 1, 2, 4, 2, 0, 9}))),
              R"("body":{"type":172,"param":0,"pkg":"","data_size":1,"controls":{"count":2,)"
              R"("elements":[{"client_id":4,"pkg_list":["",{"count":9}]}]}})");
    // A negative count in front of the fault stays negative.
    EXPECT_EQ(body_json(framed(14, body_of({172, 0, 0, 1, 2, 4, 0xffffffff, 8, 5}))),
              R"("body":{"type":172,"param":0,"pkg":"","data_size":1,)"
              R"("controls":[{"client_id":4,"pkg_list":{"count":-1}},)"
              R"({"client_id":8,"pkg_list":{"count":5}}]})");
    EXPECT_EQ(body_json(framed(14, body_of({172, 0, 0, 1, 1, 4, 3, 0, 9, 0x61616161}))),
              R"("body":{"type":172,"param":0,"pkg":"","data_size":1,"controls":[{"client_id":4,)"
              R"("pkg_list":{"count":3,"elements":["",{"count":9}]}}]},"rest":{"hex":"61616161"})");
    EXPECT_EQ(body_json(framed(17, body_of({127, 0, 1, 0xffffffff}))),
              R"("body":{"type":127,"param":0,"data_size":1,"param_list":{"count":4294967295}})");
}

TEST(JsonOfABrokenMessage, HasNoMoreThanTheRestIfTheEnvelopeIsWrong)
{
    EXPECT_EQ(line_of({}), R"({"fault":{"path":"header.length","offset":0,"needed":4,"left":0,)"
                           R"("reason":"header.length at offset 0 needs 4 bytes, 0 are left"}})");
    EXPECT_EQ(line_of({1, 2}),
              R"({"rest":{"hex":"0102"},"fault":{"path":"header.length","offset":0,"needed":4,)"
              R"("left":2,"reason":"header.length at offset 0 needs 4 bytes, 2 are left"}})");
    const Message message = framed(99, {});
    EXPECT_EQ(line_of(message).substr(0, 46), R"({"header":{"length":32},"rest":{"hex":"635a000)");
}

// The bytes of every part are there: texts and raw bytes once, and numbers as numbers.
TEST(JsonOfABrokenMessage, IsJsonWhereverTheMessageEnds)
{
    for (const test::GoodMessage &good : test::good_messages()) {
        for (size_t size = 0; size < good.bytes.size(); ++size) {
            const MessageJson json = to_json(test::cut(good.bytes, size), false);
            JsonReader reader(json.text);
            JsonValue *value = reader.next();
            ASSERT_NE(value, nullptr) << reader.error() << '\n' << json.text;
            EXPECT_FALSE(reader.has_more());
            EXPECT_EQ(value->member("fault") != nullptr, json.fault.has_value());
            if (json.fault) {
                EXPECT_EQ(from_json(json.text).error,
                          "$.fault: the message is malformed, so it cannot be made");
                JsonValue *rest = value->member("rest");
                EXPECT_EQ(rest == nullptr ? 0 : rest->member("hex")->text.size() / 2,
                          test::cut(good.bytes, size).size() - json.fault->offset)
                    << json.text;
            }
        }
    }
}

TEST(Json, IsJsonForJsonGlib)
{
    for (const test::GoodMessage &good : test::good_messages()) {
        const std::string json = line_of(good.bytes);
        GError *error = nullptr;
        JsonNode *node = json_from_string(json.c_str(), &error);
        ASSERT_NE(node, nullptr) << error->message << '\n' << json;
        gchar *again = json_to_string(node, TRUE);
        EXPECT_EQ(from_json(again).messages, std::vector<Message>(1, good.bytes)) << good.name;
        g_free(again);
        json_node_unref(node);
    }
}

}  // namespace
}  // namespace mdm::msg::json_test
