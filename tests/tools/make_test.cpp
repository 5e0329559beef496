// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include <gtest/gtest.h>

#include "json_message.hpp"
#include "mdm/log.h"
#include "support/messages.hpp"

namespace mdm::msg::make_test {
namespace {

using Message = std::vector<uint8_t>;

// Whether the message is whole. If it is, its JSON makes it again.
bool comes_back(const Message &message)
{
    const MessageJson json = to_json(message, message.size() % 2 == 0);
    EXPECT_EQ(json.fault.has_value(), test::opened(message) == nullptr);
    if (json.fault) {
        return false;
    }
    const MadeMessages made = from_json(json.text);
    EXPECT_EQ(made.error, "") << json.text;
    EXPECT_EQ(made.messages, std::vector<Message>(1, message)) << json.text;
    return true;
}

// Changes some bytes. Small numbers and bytes that are no text occur often.
void corrupt(Message &message, std::mt19937 &random)
{
    constexpr std::array<uint8_t, 8> values = {0, 1, 2, 4, 0x7f, 0x80, 0xff, 0xed};
    const auto below = [&random](size_t limit) { return random() % limit; };
    for (size_t changes = 1 + below(4); changes != 0 && !message.empty(); --changes) {
        const size_t at = below(message.size());
        const auto position = message.begin() + static_cast<ptrdiff_t>(at);
        switch (below(5)) {
        case 0:
            *position = static_cast<uint8_t>(random());
            break;
        case 1:
            *position = values.at(below(values.size()));
            break;
        case 2:
            message.insert(position, static_cast<uint8_t>(below(4)));
            break;
        case 3:
            if (at + 4 <= message.size()) {  // a negative number
                test::put_word(message, at, 0U - static_cast<uint32_t>(1 + below(3)));
            }
            break;
        default:
            message.resize(message.size() + below(4), 'p');
            break;
        }
    }
    test::correct_length(message);
}

class MadeFromItsJson : public testing::Test {
protected:
    void SetUp() override { mdm_log_set_enabled(0); }
    void TearDown() override { mdm_log_set_enabled(1); }
};

TEST_F(MadeFromItsJson, AGoodMessageIsTheSame)
{
    for (const test::GoodMessage &good : test::good_messages()) {
        SCOPED_TRACE(good.name);
        EXPECT_TRUE(comes_back(good.bytes));
    }
}

TEST_F(MadeFromItsJson, ACorruptedMessageIsTheSameIfItIsWhole)
{
    std::mt19937 random(8);
    size_t whole = 0;
    for (const test::GoodMessage &good : test::good_messages()) {
        SCOPED_TRACE(good.name);
        for (int round = 0; round < 40 && !HasFailure(); ++round) {
            Message message = good.bytes;
            corrupt(message, random);
            whole += comes_back(message) ? 1 : 0;
        }
    }
    EXPECT_GT(whole, 2000);
}

TEST_F(MadeFromItsJson, AFuzzedMessageIsTheSame)
{
    size_t whole = 0;
    for (const auto &entry :
         std::filesystem::directory_iterator(MDM_SOURCE_DIR "/fuzz/corpus/open")) {
        std::ifstream in(entry.path(), std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(in), {}};
        SCOPED_TRACE(entry.path());
        whole += comes_back({bytes.begin(), bytes.end()}) ? 1 : 0;
    }
    EXPECT_GT(whole, 100);
}

TEST_F(MadeFromItsJson, AStreamIsTheSame)
{
    std::string json;
    std::vector<Message> messages;
    for (const test::GoodMessage &good : test::good_messages()) {
        json += to_json(good.bytes, messages.size() % 2 == 0).text + "\n";
        messages.push_back(good.bytes);
    }
    const MadeMessages made = from_json(json);
    EXPECT_EQ(made.error, "");
    EXPECT_EQ(made.messages, messages);
}

// The bytes behind the header.
Message body_of(const Message &message)
{
    return {message.begin() + static_cast<ptrdiff_t>(std::min(test::header_size, message.size())),
            message.end()};
}

Message made_of(std::string_view json)
{
    const MadeMessages made = from_json(json);
    EXPECT_EQ(made.error, "") << json;
    EXPECT_EQ(made.messages.size(), 1);
    return made.messages.empty() ? Message{} : made.messages.front();
}

TEST(MadeByHand, AHeaderNeedsNoMoreThanItsType)
{
    Message expected(52);
    expected[0] = 44;
    expected[4] = 49;
    expected[40] = 1;
    EXPECT_EQ(made_of(R"({"header":{"type":49},"body":{"type":1,"param":0,"data_size":0}})"),
              expected);
    expected.resize(40);
    expected[0] = 32;
    expected[4] = 70;
    EXPECT_EQ(made_of(R"({"header":{"type":70}})"), expected);
    EXPECT_EQ(made_of(R"({"header":{"type":70},"body":{},"category":"none","form":"none"})"),
              expected);
}

TEST(MadeByHand, TheLengthIsComputedAndTheOrderIsFree)
{
    const Message expected = made_of(R"({"header":{"type":70,"hdr_word5":5,"hdr_text":"ab"},)"
                                     R"("padding":"xyz"})");
    EXPECT_EQ(expected.size(), 45);
    EXPECT_EQ(expected[0], 37);
    EXPECT_EQ(made_of(R"({"padding":{"hex":"78 79 7A"},)"
                      R"("header":{"hdr_text":{"hex":"6162"},"length":4294967295,)"
                      R"("hdr_word5":5,"type":70}})"),
              expected);
}

TEST(MadeByHand, TextsAndBytesAreTextOrHex)
{
    const Message expected = {1, 0, 0, 0, 0, 0, 0, 0, 3, 0, 0, 0, 'a', 0, 'b'};
    for (const auto *data : {R"("a\u0000b")", R"({"hex":"610062"})", R"({"hex":" 61 00 62 "})"}) {
        EXPECT_EQ(body_of(made_of(std::string(R"({"header":{"type":31},"body":{"type":1,"param":0,)"
                                              R"("data_size":3,"data":)") +
                                  data + "}}")),
                  expected);
    }
    EXPECT_EQ(made_of(R"({"header":{"type":70,"reserved":"\u0001\u0002"}})").at(7), 2);
}

constexpr std::string_view wifi = R"({"header":{"type":7},"body":)";

std::string error_of(std::string_view json)
{
    const MadeMessages made = from_json(json);
    EXPECT_NE(made.error, "") << json;
    return made.error;
}

std::string error_of_wifi(const std::string &body)
{
    return error_of(std::string(wifi) + body + "}");
}

std::string error_of_network(const std::string &network)
{
    return error_of_wifi(R"({"type":345,"param":0,"data_size":1,"network":)" + network + "}");
}

TEST(MakeRefuses, WhatIsNoJson)
{
    EXPECT_EQ(error_of(""), "line 1, column 1: expected a value, found the end");
    EXPECT_EQ(error_of("{\"header\":\n"), "line 2, column 1: expected a value, found the end");
    EXPECT_EQ(error_of("{\"header\":{\"type\":70}}\n{,}"),
              "line 2, column 2: expected the name of a member, found ','");
}

TEST(MakeRefuses, ValuesThatAreNoMessage)
{
    EXPECT_EQ(error_of("7"), "$: expected an object, found 7");
    EXPECT_EQ(error_of("[]"), "$: expected an object, found an array");
    EXPECT_EQ(error_of("{}"),
              "$.header.type: expected a whole number from 0 to 255, found nothing");
    EXPECT_EQ(error_of(R"({"header":7})"), "$.header: expected an object, found 7");
    EXPECT_EQ(error_of(R"({"header":{"type":70},"body":null})"),
              "$.body: expected an object, found null");
    EXPECT_EQ(error_of(R"({"header":{"length":32},"rest":{"hex":""},"fault":{}})"),
              "$.fault: the message is malformed, so it cannot be made");
}

TEST(MakeRefuses, NumbersThatAreOutOfRange)
{
    const auto type_error = [](const std::string &type) {
        return error_of(R"({"header":{"type":)" + type + "}}");
    };
    const std::string expected = "$.header.type: expected a whole number from 0 to 255, found ";
    for (const auto *type : {"256", "-1", "1.0", "1e1", "true", "null", "18446744073709551617",
                             "99999999999999999999999", "\"7\"", "-9223372036854775809"}) {
        EXPECT_EQ(type_error(type), expected + type);
    }
    EXPECT_EQ(type_error("{}"), expected + "an object");
    EXPECT_EQ(type_error("0"), "$.header.type: header.type at offset 4 is no message type");
    EXPECT_EQ(type_error("81"), "$.header.type: header.type at offset 4 is no message type");
    EXPECT_EQ(type_error("1" + std::string(50, '0')),
              expected + "1" + std::string(39, '0') + "...");
    EXPECT_EQ(error_of_wifi(R"({"type":4294967296})"),
              "$.body.type: expected a whole number from 0 to 4294967295, found 4294967296");
    EXPECT_EQ(error_of_wifi(R"({"type":-1})"),
              "$.body.type: expected a whole number from 0 to 4294967295, found -1");
    EXPECT_EQ(error_of_wifi(R"({"type":1,"param":0,"data_size":2147483648})"),
              "$.body.data_size: expected a whole number from -2147483648 to 2147483647, "
              "found 2147483648");
    EXPECT_EQ(error_of(R"({"header":{"type":70,"length":-1}})"),
              "$.header.length: expected a whole number from 0 to 4294967295, found -1");
}

TEST(MakeRefuses, MissingFields)
{
    EXPECT_EQ(error_of(R"({"header":{"type":7}})"),
              "$.body.type: expected a whole number from 0 to 4294967295, found nothing");
    EXPECT_EQ(error_of_wifi(R"({"type":345,"param":0,"data_size":1})"),
              R"($.body.network.ssid: expected a text or {"hex": "..."}, found nothing)");
    EXPECT_EQ(error_of_network(R"({"ssid":"a"})"),
              "$.body.network.detail_kind: expected a whole number from -2147483648 to 2147483647,"
              " found nothing");
    EXPECT_EQ(error_of_wifi(R"({"type":344,"param":0,"data_size":1})"),
              R"($.body.ssids: expected an array or {"count": -1}, found nothing)");
}

TEST(MakeRefuses, WrongTypes)
{
    EXPECT_EQ(error_of_network("5"), "$.body.network: expected an object, found 5");
    EXPECT_EQ(error_of_network(R"({"ssid":5})"),
              R"($.body.network.ssid: expected a text or {"hex": "..."}, found 5)");
    EXPECT_EQ(error_of_network(R"({"ssid":["a"]})"),
              R"($.body.network.ssid: expected a text or {"hex": "..."}, found an array)");
    EXPECT_EQ(error_of_network(R"({"ssid":{}})"),
              R"($.body.network.ssid: expected a text or {"hex": "..."}, found an object)");
    const std::string ssids = R"({"type":344,"param":0,"data_size":1,"ssids":)";
    EXPECT_EQ(error_of_wifi(ssids + R"("a"})"),
              R"($.body.ssids: expected an array or {"count": -1}, found "a")");
    EXPECT_EQ(error_of_wifi(ssids + R"(["a",7]})"),
              R"($.body.ssids[1]: expected a text or {"hex": "..."}, found 7)");
    EXPECT_EQ(error_of_wifi(ssids + R"({"counts":-1}})"),
              R"($.body.ssids: expected an array or {"count": -1}, found an object)");
    EXPECT_EQ(error_of_wifi(ssids + R"({"count":0}})"),
              "$.body.ssids.count: expected a whole number from -2147483648 to -1, found 0");
    EXPECT_EQ(error_of(R"({"header":{"type":45},"body":{"type":618,"param":0,"data_size":4,)"
                       R"("keys":[{"number":1},2]}})"),
              "$.body.keys[1]: expected an object, found 2");
    EXPECT_EQ(error_of(R"({"header":{"type":17},"body":{"type":127,"param":0,"data_size":0,)"
                       R"("param_list":{"count":-1}}})"),
              "$.body.param_list: expected an array, found an object");
    EXPECT_EQ(error_of_wifi(ssids + R"([{"hex":"0g"}]})"),
              R"($.body.ssids[0].hex: expected pairs of hex digits, found "0g")");
    EXPECT_EQ(error_of_wifi(ssids + R"([{"hex":"0"}]})"),
              R"($.body.ssids[0].hex: expected pairs of hex digits, found "0")");
    EXPECT_EQ(error_of_wifi(ssids + R"([{"hex":"0 0"}]})"),
              R"($.body.ssids[0].hex: expected pairs of hex digits, found "0 0")");
    EXPECT_EQ(error_of_wifi(ssids + R"([{"hex":10}]})"),
              "$.body.ssids[0].hex: expected pairs of hex digits, found 10");
    // What was found is neither long nor harmful, and no character is cut.
    EXPECT_EQ(error_of_wifi(ssids + R"("\u001b[2J)" + std::string(35, 'x') + "\u00fc\"}"),
              R"($.body.ssids: expected an array or {"count": -1}, found "\x1b[2J)" +
                  std::string(35, 'x') + "\"...");
}

TEST(MakeRefuses, BytesOfAnotherLength)
{
    const auto data_error = [](const std::string &size, const std::string &data) {
        return error_of(R"({"header":{"type":31},"body":{"type":1,"param":0,"data_size":)" + size +
                        R"(,"data":)" + data + "}}");
    };
    EXPECT_EQ(data_error("3", R"("ab")"),
              "$.body.data: expected 3 bytes, as data_size says, found 2 bytes");
    EXPECT_EQ(data_error("1", R"({"hex":"6162"})"),
              "$.body.data: expected 1 byte, as data_size says, found 2 bytes");
    EXPECT_EQ(data_error("2147483647", R"("a")"),
              "$.body.data: expected 2147483647 bytes, as data_size says, found 1 byte");
    EXPECT_EQ(error_of(R"({"header":{"type":70,"reserved":"abc"}})"),
              "$.header.reserved: expected 2 bytes, found 3 bytes");
    EXPECT_EQ(error_of(R"({"header":{"type":17},"body":{"type":1,"param":0,"data_size":-1,)"
                       R"("data":""}})"),
              "$.body.data: misc.data at offset 52 has a negative size");
}

TEST(MakeRefuses, ArraysOfAnotherLength)
{
    const auto array_error = [](const std::string &size, const std::string &array) {
        return error_of(R"({"header":{"type":17},"body":{"type":122,"param":0,"data_size":)" +
                        size + R"(,"array":)" + array + "}}");
    };
    EXPECT_EQ(array_error("2", R"(["a"])"),
              R"($.body.array[1]: expected a text or {"hex": "..."}, found nothing)");
    EXPECT_EQ(array_error("1", R"(["a","b"])"),
              "$.body.array[1]: there is no such field in misc.array");
    EXPECT_EQ(array_error("1", R"({})"), "$.body.array: expected an array, found an object");
}

TEST(MakeRefuses, FieldsThatTheMessageDoesNotHave)
{
    const std::string ssids = R"({"type":344,"param":0,"data_size":1,"ssids":)";
    EXPECT_EQ(error_of(R"({"header":{"type":70},"extra":1})"), "$.extra: there is no such field");
    EXPECT_EQ(error_of(R"({"header":{"type":70,"hdr_word8":1}})"),
              "$.header.hdr_word8: there is no such field");
    EXPECT_EQ(error_of(R"({"header":{"type":70},"body":{"type":1}})"),
              "$.body.type: a message of this type has no body");
    EXPECT_EQ(error_of_wifi(ssids + R"([],"network":{"ssid":"a"}})"),
              "$.body.network: there is no such field in wifi.ssids");
    EXPECT_EQ(error_of_wifi(ssids + R"(["a",{"hex":"00","more":1}]})"),
              "$.body.ssids[1].more: there is no such field in wifi.ssids");
    EXPECT_EQ(error_of_wifi(ssids + R"({"count":-1,"elements":[]}})"),
              "$.body.ssids.elements: there is no such field in wifi.ssids");
    EXPECT_EQ(error_of_network(R"({"ssid":"a","detail_kind":0,"detail":{}})"),
              "$.body.network.detail: there is no such field in wifi.network");
    EXPECT_EQ(error_of(R"({"header":{"type":70},"a b'\\c":1})"),
              R"($['a b\'\\c']: there is no such field)");
    EXPECT_EQ(error_of(R"({"header":{"type":70},"\u202e\u0000":1})"),
              R"($['\u{202e}\x00']: there is no such field)");
    EXPECT_EQ(error_of(R"({"header":{"type":70},"":1})"), "$['']: there is no such field");
    EXPECT_EQ(error_of(R"({"header":{"type":70},"rest":{"hex":""}})"),
              "$.rest: there is no such field");
}

TEST(MakeRefuses, NamesThatStandThereTwice)
{
    EXPECT_EQ(error_of(R"({"header":{"type":70,"type":70}})"),
              "$.header.type: this name stands there twice");
    EXPECT_EQ(error_of(R"({"header":{"type":70},"\u0068eader":{}})"),
              "$.header: this name stands there twice");
    EXPECT_EQ(error_of_wifi(R"({"type":344,"param":0,"data_size":1,)"
                            R"("ssids":["a",{"hex":"","hex":""}]})"),
              "$.body.ssids[1].hex: this name stands there twice");
}

TEST(MakeRefuses, AnotherCategoryOrForm)
{
    EXPECT_EQ(error_of(R"({"header":{"type":7},"category":"pwd"})"),
              R"($.category: expected "wifi", found "pwd")");
    EXPECT_EQ(error_of(R"({"header":{"type":70},"category":7})"),
              R"($.category: expected "none", found 7)");
    EXPECT_EQ(error_of(R"({"header":{"type":7},"form":"wifi.pair","body":{"type":344}})"),
              R"($.form: expected "wifi.ssids", found "wifi.pair")");
    EXPECT_EQ(error_of(R"({"header":{"type":70},"form":"wifi.pair"})"),
              R"($.form: expected "none", found "wifi.pair")");
}

TEST(MakeRefuses, OneOfSeveralMessages)
{
    const std::string good = "{\"header\":{\"type\":70}}\n";
    const std::string bad = "\n{\"header\":\n{\"type\":0}}\n";
    constexpr auto reason = "$.header.type: header.type at offset 4 is no message type";
    EXPECT_EQ(error_of(bad), reason);
    EXPECT_EQ(error_of(bad + good), std::string("message 1 at line 2: ") + reason);
    EXPECT_EQ(error_of(good + good + bad), std::string("message 3 at line 4: ") + reason);
}

// Neither the time for a large object with unknown names nor the stack may grow out of bounds.
TEST(MakeRefuses, AHugeObjectQuickly)
{
    std::string body = R"({"header":{"type":45},"body":{)";
    for (int name = 0; name < 200000; ++name) {
        body += "\"x" + std::to_string(name) + "\":0,";
    }
    body += R"("type":618,"param":0,"data_size":4,"keys":[{"number":0})";
    for (int element = 0; element < 200000; ++element) {
        body += R"(,{"number":1})";
    }
    EXPECT_EQ(error_of(body + "]}}"), "$.body.x0: there is no such field in kiosk.keys");
}

}  // namespace
}  // namespace mdm::msg::make_test
