// SPDX-License-Identifier: Apache-2.0
#include "json_reader.hpp"

#include <gtest/gtest.h>

namespace mdm::msg::json_reader_test {
namespace {

using namespace std::string_view_literals;
using Kind = JsonValue::Kind;

std::string error_of(std::string_view text)
{
    JsonReader reader(text);
    EXPECT_EQ(reader.next(), nullptr) << text;
    return reader.error();
}

// The text that a JSON string means.
std::string text_of(std::string_view json)
{
    JsonReader reader(json);
    const JsonValue *value = reader.next();
    EXPECT_NE(value, nullptr) << reader.error();
    return value == nullptr ? "" : std::string(value->text);
}

TEST(JsonReader, ReadsEveryKindOfValue)
{
    JsonReader reader(R"( {"a": [1, -2.5e+3, "x"], "b": {}, "c": [], "d": true, "e": null } )");
    JsonValue *value = reader.next();
    ASSERT_NE(value, nullptr) << reader.error();
    EXPECT_EQ(value->kind, Kind::object);
    ASSERT_EQ(value->values.size(), 5);
    JsonValue *list = value->member("a");
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->kind, Kind::array);
    ASSERT_EQ(list->values.size(), 3);
    EXPECT_EQ(list->values[0].kind, Kind::number);
    EXPECT_EQ(list->values[0].text, "1");
    EXPECT_EQ(list->values[1].text, "-2.5e+3");
    EXPECT_EQ(list->values[2].kind, Kind::text);
    EXPECT_EQ(value->member("b")->kind, Kind::object);
    EXPECT_EQ(value->member("c")->kind, Kind::array);
    EXPECT_EQ(value->member("d")->text, "true");
    EXPECT_EQ(value->member("e")->text, "null");
    EXPECT_EQ(value->member("f"), nullptr);
    EXPECT_FALSE(reader.has_more());
}

TEST(JsonReader, FindsMembersInAnyOrder)
{
    JsonReader reader(R"({"a":1,"b":2,"c":3})");
    JsonValue *value = reader.next();
    ASSERT_NE(value, nullptr);
    for (const auto &[name, text] :
         {std::pair{"c", "3"}, {"a", "1"}, {"a", "1"}, {"c", "3"}, {"b", "2"}, {"a", "1"}}) {
        ASSERT_NE(value->member(name), nullptr);
        EXPECT_EQ(value->member(name)->text, text);
    }
}

TEST(JsonReader, ReadsEscapes)
{
    EXPECT_EQ(text_of(R"("\"\\\/\b\f\n\r\t")"), "\"\\/\b\f\n\r\t");
    EXPECT_EQ(text_of(R"("a\u0041\u00e9\u202E\u202c\ud83d\ude00z")"),
              "aA\u00e9\u202e\u202c\U0001f600z");
    EXPECT_EQ(text_of("\"B\u00fcro \x7f\""), "B\u00fcro \x7f");
    EXPECT_EQ(text_of(R"("a\u0000b")"), "a\0b"sv);  // no byte is lost
    EXPECT_EQ(text_of(R"("\uffff")"), "\uffff");
}

TEST(JsonReader, ReadsOneValueAfterTheOther)
{
    JsonReader reader("\xef\xbb\xbf 1\n\"t\\u0077o\"{\"three\":3}\r\n[4]\n");
    EXPECT_TRUE(reader.has_more());
    EXPECT_EQ(reader.next()->text, "1");
    EXPECT_TRUE(reader.has_more());
    EXPECT_EQ(reader.line(), 2);
    EXPECT_EQ(reader.next()->text, "two");
    EXPECT_EQ(reader.next()->values.at(0).name, "three");
    EXPECT_TRUE(reader.has_more());
    EXPECT_EQ(reader.line(), 3);
    EXPECT_EQ(reader.next()->values.at(0).text, "4");
    EXPECT_FALSE(reader.has_more());
    EXPECT_EQ(reader.line(), 4);
}

TEST(JsonReader, RefusesWhatIsNoJson)
{
    EXPECT_EQ(error_of(""), "line 1, column 1: expected a value, found the end");
    EXPECT_EQ(error_of("{\"a\": 1,\n  }"),
              "line 2, column 3: expected the name of a member, found '}'");
    EXPECT_EQ(error_of("[1,]"), "line 1, column 4: expected a value, found ']'");
    EXPECT_EQ(error_of("[1 2]"), "line 1, column 4: expected ',' or ']', found '2'");
    EXPECT_EQ(error_of("[1"), "line 1, column 3: expected ',' or ']', found the end");
    EXPECT_EQ(error_of("{\"a\" 1}"), "line 1, column 6: expected ':', found '1'");
    EXPECT_EQ(error_of("{\"a\":1;"), "line 1, column 7: expected ',' or '}', found ';'");
    EXPECT_EQ(error_of("{a:1}"), "line 1, column 2: expected the name of a member, found 'a'");
    EXPECT_EQ(error_of("/* x */ 1"), "line 1, column 1: expected a value, found '/'");
    EXPECT_EQ(error_of("# x"), "line 1, column 1: expected a value, found '#'");
    EXPECT_EQ(error_of("['a']"), "line 1, column 2: expected a value, found '''");
    EXPECT_EQ(error_of("[TRUE]"), "line 1, column 2: expected a value, found 'T'");
    EXPECT_EQ(error_of("var x = 1;"), "line 1, column 1: expected a value, found 'v'");
    EXPECT_EQ(error_of("[\"\u00fc\u00fc\", \u00fc]"),
              "line 1, column 8: expected a value, found '\u00fc'");
    EXPECT_EQ(error_of("[\"\", \x9b]"), "line 1, column 6: expected a value, found '\\x9b'");
    EXPECT_EQ(error_of("\0"sv), "line 1, column 1: expected a value, found '\\x00'");
}

TEST(JsonReader, RefusesNumbersInOtherNotations)
{
    EXPECT_EQ(error_of("010"), "line 1, column 2: a number begins with 0");
    EXPECT_EQ(error_of("-01"), "line 1, column 3: a number begins with 0");
    EXPECT_EQ(error_of("+1"), "line 1, column 1: expected a value, found '+'");
    EXPECT_EQ(error_of(".5"), "line 1, column 1: expected a value, found '.'");
    EXPECT_EQ(error_of("1."), "line 1, column 3: expected a digit, found the end");
    EXPECT_EQ(error_of("1e"), "line 1, column 3: expected a digit, found the end");
    EXPECT_EQ(error_of("1e+x"), "line 1, column 4: expected a digit, found 'x'");
    EXPECT_EQ(error_of("-"), "line 1, column 2: expected a digit, found the end");
    EXPECT_EQ(error_of("[0x10]"), "line 1, column 3: expected ',' or ']', found 'x'");
}

TEST(JsonReader, RefusesTextsThatAreNoUnicode)
{
    constexpr auto alone = ": a surrogate stands alone";
    EXPECT_EQ(error_of(R"("\ud800")"), std::string("line 1, column 8") + alone);
    EXPECT_EQ(error_of(R"("\ud800\n")"), std::string("line 1, column 9") + alone);
    EXPECT_EQ(error_of(R"("\ud800\u0041")"), std::string("line 1, column 14") + alone);
    EXPECT_EQ(error_of(R"("\ud800\ud800")"), std::string("line 1, column 14") + alone);
    EXPECT_EQ(error_of(R"("\udc00")"), std::string("line 1, column 8") + alone);
    EXPECT_EQ(error_of(R"("\u12g4")"), "line 1, column 6: expected four hex digits behind \\u");
    EXPECT_EQ(error_of(R"("\u12)"), "line 1, column 6: expected four hex digits behind \\u");
    EXPECT_EQ(error_of(R"("\ud800\u12")"),
              "line 1, column 12: expected four hex digits behind \\u");
    EXPECT_EQ(error_of(R"("\x41")"), "line 1, column 3: there is no such escape");
    EXPECT_EQ(error_of(R"("\)"), "line 1, column 3: there is no such escape");
    EXPECT_EQ(error_of("\"a\xff\""),
              "line 1, column 3: the text is no UTF-8; write {\"hex\": \"...\"} for such bytes");
    EXPECT_EQ(error_of("\"\xed\xa0\x80\""),
              "line 1, column 2: the text is no UTF-8; write {\"hex\": \"...\"} for such bytes");
    EXPECT_EQ(error_of("\"a\nb\""),
              "line 1, column 3: expected an escape instead of a control character in a text");
    EXPECT_EQ(error_of("\"a\0b\""sv),
              "line 1, column 3: expected an escape instead of a control character in a text");
    EXPECT_EQ(error_of("\"abc"), "line 1, column 5: the text has no end");
    EXPECT_EQ(error_of("\"a\\nbc"), "line 1, column 7: the text has no end");
}

TEST(JsonReader, RefusesDeepNesting)
{
    const std::string open(32, '[');
    const std::string close(32, ']');
    const std::string kept = open + close;
    JsonReader deep_enough(kept);
    EXPECT_NE(deep_enough.next(), nullptr) << deep_enough.error();
    EXPECT_EQ(error_of(open + "[]" + close), "line 1, column 33: nested deeper than 32 levels");
    EXPECT_EQ(error_of(std::string(1000000, '[')),
              "line 1, column 33: nested deeper than 32 levels");
    std::string objects;
    for (int level = 0; level < 100000; ++level) {
        objects += "{\"a\":";
    }
    EXPECT_EQ(error_of(objects), "line 1, column 161: nested deeper than 32 levels");
}

}  // namespace
}  // namespace mdm::msg::json_reader_test
