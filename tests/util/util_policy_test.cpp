// SPDX-License-Identifier: Apache-2.0
#include "mdm/util_policy.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <glib.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck.h>

#include "support/allocation_trace.hpp"
#include "support/log_recorder.hpp"
#include "support/no_memory.hpp"

namespace mdm::test::util_policy_test {
namespace {

using ::testing::AllOf;
using ::testing::Each;
using ::testing::Field;
using ::testing::IsEmpty;
using ::testing::Optional;
using ::testing::SizeIs;
using ::testing::StartsWith;

constexpr LoggingFunction serializer{"mdm_phone_res_limit_serialize", "mdm_util_policy.cpp"};
constexpr LoggingFunction deserializer{"mdm_phone_res_limit_deserialize", "mdm_util_policy.cpp"};
constexpr LoggingFunction parser{"mdm_phone_res_limit_of_data_calls_parse_parameters",
                                 "mdm_util_policy.cpp"};

// All that can be seen of a call.
template <class Outputs>
struct Call {
    int32_t result;
    Outputs outputs;
    std::vector<LogLine> lines;

    friend bool operator==(const Call &, const Call &) = default;
    friend std::ostream &operator<<(std::ostream &out, const Call &call)
    {
        return out << call.result << ", " << ::testing::PrintToString(call.outputs) << ", "
                   << ::testing::PrintToString(call.lines);
    }
};

std::vector<LogLine> entered_and_left(const Origin &function, std::vector<LogLine> inside)
{
    inside.insert(inside.begin(), enter(function));
    inside.push_back(leave(function));
    return inside;
}

// The lines of a call that fails.
std::vector<LogLine> complaint(const Origin &function, const std::string &text)
{
    return entered_and_left(function, {critical(function, text)});
}

// As the C library prints it.
std::string pointer_text(const void *pointer)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%p", pointer);
    return text.data();
}

// Limits to text.

using Values = std::array<int32_t, MDM_PHONE_RES_LIMIT_VALUES>;

struct Text {
    std::string text;
    uint32_t size;

    friend bool operator==(const Text &, const Text &) = default;
    friend std::ostream &operator<<(std::ostream &out, const Text &all)
    {
        return out << '"' << all.text << "\" of " << all.size;
    }
};

Call<Text> serialize(int32_t type, const Values &values)
{
    LogRecorder log;
    char *text = nullptr;
    uint32_t size = 0;
    AllocationTrace trace;
    const int32_t result = mdm_phone_res_limit_serialize(type, values.data(), &text, &size);
    trace.stop();
    if (text == nullptr) {
        ADD_FAILURE() << "no text";
        return {result, {}, log.take()};
    }
    EXPECT_THAT(trace.kept(), SizeIs(1));
    Call<Text> call{result, {text, size}, log.take()};
    g_free(text);
    return call;
}

Call<Text> text_of_size(const std::string &text, uint32_t size)
{
    return {0, {text, size}, enter_and_leave(serializer)};
}

TEST(PhoneResLimitSerialize, JoinsTheTypeAndTheSixValues)
{
    EXPECT_EQ(serialize(1, {10, 0, -3, 4, 5, 6}), text_of_size("1,10,0,-3,4,5,6", 16));
    EXPECT_EQ(serialize(0, {1, 2, 3, 4, 5, 6}), text_of_size("0,1,2,3,4,5,6", 14));
    EXPECT_EQ(serialize(1, {}), text_of_size("1,0,0,0,0,0,0", 14));
}

TEST(PhoneResLimitSerialize, WritesTheWholeRange)
{
    EXPECT_EQ(serialize(0, {INT32_MIN, INT32_MAX, -1, 1000000, INT32_MAX, INT32_MIN}),
              text_of_size("0,-2147483648,2147483647,-1,1000000,2147483647,-2147483648", 59));
    EXPECT_EQ(serialize(1, {INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN}),
              text_of_size(
                  "1,-2147483648,-2147483648,-2147483648,-2147483648,-2147483648,-2147483648", 74));
}

// Arguments for a call, and checks that the call has left its outputs alone.
class PhoneResLimitSerializeArguments : public ::testing::Test {
protected:
    void expect_untouched_text() { EXPECT_EQ(text_, untouched_text_.data()); }
    void expect_untouched_size() const { EXPECT_EQ(size_, 0xABCDEF01); }
    void expect_complaint(const std::string &text)
    {
        EXPECT_EQ(log_.take(), complaint(serializer, text));
    }

    const Values values_{1, 2, 3, 4, 5, 6};
    std::array<char, 1> untouched_text_{};
    char *text_ = untouched_text_.data();
    uint32_t size_ = 0xABCDEF01;
    LogRecorder log_;
};

TEST_F(PhoneResLimitSerializeArguments, RefusesAnyOtherType)
{
    for (const int32_t type : {2, -1, 3, 0x100, 0x10001, INT32_MAX, INT32_MIN, INT32_MIN + 1}) {
        EXPECT_EQ(mdm_phone_res_limit_serialize(type, values_.data(), &text_, &size_), -195);
        expect_complaint("Incorrect limit_type: " + std::to_string(type) + "!");
        expect_untouched_text();
        expect_untouched_size();
    }
}

TEST_F(PhoneResLimitSerializeArguments, RefusesANullText)
{
    EXPECT_EQ(mdm_phone_res_limit_serialize(1, values_.data(), nullptr, &size_), -195);
    expect_complaint("serialized_data == NULL");
    expect_untouched_size();
}

TEST_F(PhoneResLimitSerializeArguments, RefusesANullSize)
{
    EXPECT_EQ(mdm_phone_res_limit_serialize(0, values_.data(), &text_, nullptr), -195);
    expect_complaint("serialized_data_size == NULL");
    expect_untouched_text();
}

TEST_F(PhoneResLimitSerializeArguments, ReportsTheFirstOfSeveralFaults)
{
    EXPECT_EQ(mdm_phone_res_limit_serialize(2, nullptr, nullptr, nullptr), -195);
    expect_complaint("Incorrect limit_type: 2!");
    EXPECT_EQ(mdm_phone_res_limit_serialize(1, nullptr, nullptr, nullptr), -195);
    expect_complaint("serialized_data == NULL");
}

// A null pointer to the values is not a fault of its own.
TEST_F(PhoneResLimitSerializeArguments, LeavesTheValuesAloneUntilTheArgumentsHavePassed)
{
    EXPECT_EQ(mdm_phone_res_limit_serialize(-1, nullptr, &text_, &size_), -195);
    expect_complaint("Incorrect limit_type: -1!");
    EXPECT_EQ(mdm_phone_res_limit_serialize(0, nullptr, nullptr, &size_), -195);
    expect_complaint("serialized_data == NULL");
    EXPECT_EQ(mdm_phone_res_limit_serialize(0, nullptr, &text_, nullptr), -195);
    expect_complaint("serialized_data_size == NULL");
}

TEST_F(PhoneResLimitSerializeArguments, WithoutMemoryStoresANullTextAndNoSize)
{
    const NoMemory no_memory;
    EXPECT_EQ(mdm_phone_res_limit_serialize(1, values_.data(), &text_, &size_), -294);
    expect_complaint("*serialized_data == NULL");
    EXPECT_EQ(text_, nullptr);
    expect_untouched_size();
}

TEST_F(PhoneResLimitSerializeArguments, StoresTheSizeAfterTheValuesAreRead)
{
    Values values{10, 0, -3, 4, 5, 6};
    auto *size = reinterpret_cast<uint32_t *>(values.data());
    EXPECT_EQ(mdm_phone_res_limit_serialize(1, values.data(), &text_, size), 0);
    EXPECT_STREQ(text_, "1,10,0,-3,4,5,6");
    EXPECT_EQ(values, (Values{16, 0, -3, 4, 5, 6}));
    g_free(text_);
}

// Text to limits.

// The type and the six values.
using Numbers = std::array<int32_t, 7>;

constexpr Numbers untouched_numbers{-101, -102, -103, -104, -105, -106, -107};

// Keeps the first ones and leaves the others untouched.
Numbers first_of(size_t count, const Numbers &numbers)
{
    Numbers stored = untouched_numbers;
    std::copy_n(numbers.begin(), count, stored.begin());
    return stored;
}

int32_t deserialize_into(Numbers &numbers, const char *text)
{
    return mdm_phone_res_limit_deserialize(text, numbers.data(), numbers.data() + 1);
}

Call<Numbers> deserialize(const std::string &text)
{
    LogRecorder log;
    Numbers numbers = untouched_numbers;
    AllocationTrace trace;
    const int32_t result = deserialize_into(numbers, text.c_str());
    trace.stop();
    EXPECT_THAT(trace.allocated(), IsEmpty());
    return {result, numbers, log.take()};
}

Call<Numbers> limit(const Numbers &numbers)
{
    return {0, numbers, enter_and_leave(deserializer)};
}

Call<Numbers> wrong_type(const Numbers &numbers)
{
    return {-195, numbers,
            complaint(deserializer, "Incorrect limit type " + std::to_string(numbers[0]) + "!")};
}

Call<Numbers> mismatch(const std::string &text, int count,
                       const Numbers &numbers = {1, 2, 3, 4, 5, 6, 7})
{
    return {-195, first_of(static_cast<size_t>(std::max(0, count)), numbers),
            complaint(deserializer, "Error parsing input parameters: \"" + text + "\", " +
                                        std::to_string(count) + " != 7")};
}

// "1" to "7", joined; at one position something else.
std::string one_to_seven_but(size_t position, const std::string &field)
{
    std::string text;
    for (size_t i = 0; i < 7; ++i) {
        text += i == 0 ? "" : ",";
        text += i == position ? field : std::to_string(i + 1);
    }
    return text;
}

Numbers one_to_seven_but(size_t position, int32_t number)
{
    Numbers numbers{1, 2, 3, 4, 5, 6, 7};
    numbers[position] = number;
    return numbers;
}

TEST(PhoneResLimitDeserialize, ReadsTheTypeAndTheSixValues)
{
    EXPECT_EQ(deserialize("1,2,3,4,5,6,7"), limit({1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(deserialize("1,10,0,-3,4,5,6"), limit({1, 10, 0, -3, 4, 5, 6}));
    EXPECT_EQ(deserialize("0,0,0,0,0,0,0"), limit({0, 0, 0, 0, 0, 0, 0}));
}

TEST(PhoneResLimitDeserialize, ReadsSignedDecimals)
{
    EXPECT_EQ(deserialize("+1,+5,-0,-7,010,0009,+0"), limit({1, 5, 0, -7, 10, 9, 0}));
    EXPECT_EQ(deserialize("-0,1,2,3,4,5,6"), limit({0, 1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(deserialize("001,2,3,4,5,6,7"), limit({1, 2, 3, 4, 5, 6, 7}));
    for (size_t i = 1; i < 7; ++i) {
        EXPECT_EQ(deserialize(one_to_seven_but(i, "010")), limit(one_to_seven_but(i, 10)));
    }
}

// Q-LIMIT-2
TEST(PhoneResLimitDeserialize, SkipsWhiteSpaceBeforeANumber)
{
    EXPECT_EQ(deserialize("1, 2,3,4,5,6,7"), limit({1, 2, 3, 4, 5, 6, 7}));
    for (const char *space : {" ", "\t", "\n", "\v", "\f", "\r", " \t\n  "}) {
        for (size_t i = 0; i < 7; ++i) {
            EXPECT_EQ(deserialize(one_to_seven_but(i, space + std::to_string(i + 1))),
                      limit({1, 2, 3, 4, 5, 6, 7}));
        }
    }
}

// Q-LIMIT-2
TEST(PhoneResLimitDeserialize, IgnoresWhatFollowsTheSeventhNumber)
{
    for (const char *rest : {",8", ",", " ", "\n", " ,8", "abc", ".5", "x10", "-", ",8,9,x"}) {
        EXPECT_EQ(deserialize("1,2,3,4,5,6,7" + std::string(rest)), limit({1, 2, 3, 4, 5, 6, 7}));
    }
}

TEST(PhoneResLimitDeserialize, ReadsTheWholeRange)
{
    EXPECT_EQ(deserialize("1,-2147483648,2147483647,-2147483647,2147483646,1000000000,-1"),
              limit({1, INT32_MIN, INT32_MAX, -2147483647, 2147483646, 1000000000, -1}));
}

// Q-LIMIT-3
TEST(PhoneResLimitDeserialize, NumbersOutside32BitsBecomeTheNearestInside)
{
    EXPECT_EQ(deserialize("1,2147483648,-2147483649,3000000000,-3000000000,4294967296,-4294967296"),
              limit({1, INT32_MAX, INT32_MIN, INT32_MAX, INT32_MIN, INT32_MAX, INT32_MIN}));
    EXPECT_EQ(deserialize("0,4294967297,-4294967295,9223372036854775807,-9223372036854775808,"
                          "9223372036854775808,-9223372036854775809"),
              limit({0, INT32_MAX, INT32_MIN, INT32_MAX, INT32_MIN, INT32_MAX, INT32_MIN}));
    EXPECT_EQ(deserialize("0,18446744073709551616,-18446744073709551617,"
                          "99999999999999999999999999999999999999999,"
                          "-99999999999999999999999999999999999999999,2,3"),
              limit({0, INT32_MAX, INT32_MIN, INT32_MAX, INT32_MIN, 2, 3}));
}

// Q-LIMIT-1
TEST(PhoneResLimitDeserialize, RefusesAnyOtherTypeAndKeepsAllSevenNumbers)
{
    EXPECT_EQ(deserialize("2,0,0,0,0,0,0"), wrong_type({2, 0, 0, 0, 0, 0, 0}));
    for (const int32_t type : {-1, 3, 0x100, 0x10001, INT32_MAX, INT32_MIN}) {
        EXPECT_EQ(deserialize(one_to_seven_but(0, std::to_string(type))),
                  wrong_type({type, 2, 3, 4, 5, 6, 7}));
    }
}

TEST(PhoneResLimitDeserialize, ATypeOutside32BitsIsRefusedAsTheNearestInside)
{
    for (const char *type : {"2147483648", "4294967296", "4294967297", "18446744073709551617"}) {
        EXPECT_EQ(deserialize(one_to_seven_but(0, type)),
                  wrong_type({INT32_MAX, 2, 3, 4, 5, 6, 7}));
    }
    for (const char *type :
         {"-2147483649", "-4294967295", "-4294967296", "-18446744073709551615"}) {
        EXPECT_EQ(deserialize(one_to_seven_but(0, type)),
                  wrong_type({INT32_MIN, 2, 3, 4, 5, 6, 7}));
    }
}

// Q-LIMIT-4
TEST(PhoneResLimitDeserialize, ATextWithoutAnythingToReadCountsMinusOne)
{
    for (const char *text : {"", " ", " \t\n\v\f\r "}) {
        EXPECT_EQ(deserialize(text), mismatch(text, -1));
    }
}

// Q-LIMIT-1
TEST(PhoneResLimitDeserialize, StopsWhereANumberIsMissing)
{
    for (int count = 0; count < 7; ++count) {
        const auto position = static_cast<size_t>(count);
        for (const char *field : {"", "x", "-", "+", "--1", "+-1", "- 1", ".1", "%d", "empty"}) {
            const std::string text = one_to_seven_but(position, field);
            EXPECT_EQ(deserialize(text), mismatch(text, count));
        }
    }
}

// Q-LIMIT-2
TEST(PhoneResLimitDeserialize, StopsWhereACommaDoesNotFollowDirectly)
{
    EXPECT_EQ(deserialize("1 ,2,3,4,5,6,7"), mismatch("1 ,2,3,4,5,6,7", 1));
    for (int count = 1; count < 7; ++count) {
        for (const char *after : {" ", "\t", "\n", " 8", ";", "x", ".5", "-1", "%"}) {
            const std::string text =
                one_to_seven_but(static_cast<size_t>(count) - 1, std::to_string(count) + after);
            EXPECT_EQ(deserialize(text), mismatch(text, count));
        }
    }
}

TEST(PhoneResLimitDeserialize, StopsWhereTheTextEnds)
{
    std::string text;
    for (int count = 1; count < 7; ++count) {
        text += std::to_string(count);
        EXPECT_EQ(deserialize(text), mismatch(text, count));
        text += ",";
        EXPECT_EQ(deserialize(text), mismatch(text, count));
        EXPECT_EQ(deserialize(text + " "), mismatch(text + " ", count));
    }
}

TEST(PhoneResLimitDeserialize, AHexadecimalNumberEndsBehindItsZero)
{
    for (int count = 1; count < 7; ++count) {
        const auto position = static_cast<size_t>(count) - 1;
        const std::string text = one_to_seven_but(position, "0x10");
        EXPECT_EQ(deserialize(text), mismatch(text, count, one_to_seven_but(position, 0)));
    }
    EXPECT_EQ(deserialize("1,2,3,4,5,6,0x10"), limit({1, 2, 3, 4, 5, 6, 0}));
}

TEST(PhoneResLimitDeserialize, NumbersOutside32BitsAreStoredBeforeAMismatchToo)
{
    EXPECT_EQ(deserialize("4294967297,-4294967297,x"),
              mismatch("4294967297,-4294967297,x", 2, {INT32_MAX, INT32_MIN}));
}

TEST(PhoneResLimitDeserialize, ReportsTheMismatchBeforeTheType)
{
    EXPECT_EQ(deserialize("2,3,x"), mismatch("2,3,x", 2, {2, 3}));
}

TEST(PhoneResLimitDeserialize, RefusesNullArgumentsInTheirOrder)
{
    LogRecorder log;
    Numbers numbers = untouched_numbers;
    const auto expect_refused = [&](const char *given, int32_t *p_type, int32_t *p_values,
                                    const char *complaint_text) {
        EXPECT_EQ(mdm_phone_res_limit_deserialize(given, p_type, p_values), -195);
        EXPECT_EQ(log.take(), complaint(deserializer, complaint_text));
        EXPECT_EQ(numbers, untouched_numbers);
    };
    const char *text = "1,2,3,4,5,6,7";
    int32_t *type = numbers.data();
    int32_t *values = numbers.data() + 1;
    expect_refused(nullptr, type, values, "serialized_data == NULL");
    expect_refused(nullptr, nullptr, nullptr, "serialized_data == NULL");
    expect_refused(text, nullptr, values, "limit_type == NULL");
    expect_refused(text, nullptr, nullptr, "limit_type == NULL");
    expect_refused(text, type, nullptr, "limit_data == NULL");
    expect_refused("", type, nullptr, "limit_data == NULL");
}

TEST(PhoneResLimitDeserialize, AValueStoredOverTheTypeIsTheTypeThatIsChecked)
{
    LogRecorder log;
    Values values{};
    EXPECT_EQ(mdm_phone_res_limit_deserialize("7,2,3,4,1,6,8", &values[3], values.data()), 0);
    EXPECT_EQ(values, (Values{2, 3, 4, 1, 6, 8}));
    EXPECT_EQ(log.take(), enter_and_leave(deserializer));

    EXPECT_EQ(mdm_phone_res_limit_deserialize("1,2,3,4,7,6,8", &values[3], values.data()), -195);
    EXPECT_EQ(values, (Values{2, 3, 4, 7, 6, 8}));
    EXPECT_EQ(log.take(), complaint(deserializer, "Incorrect limit type 7!"));
}

// Parameters of a data limit.

struct Parameters {
    int32_t date_set;
    int32_t period;
    uint32_t send_limit;
    uint32_t recv_limit;

    friend bool operator==(const Parameters &, const Parameters &) = default;
    friend std::ostream &operator<<(std::ostream &out, const Parameters &all)
    {
        return out << "date set: " << all.date_set << ", period: " << all.period
                   << ", send limit: " << all.send_limit << ", recv limit: " << all.recv_limit;
    }
};

constexpr Parameters untouched_parameters{-11, INT32_MIN, 3000000000, UINT32_MAX};

// In place of the split text's address, which is another one each time.
constexpr const char *the_vector = "the vector";

std::string clean_up(const std::string &vector)
{
    return "Cleaning up (token_vector == " + vector + ")";
}

Call<Parameters> parse(const char *text, Parameters outputs = untouched_parameters)
{
    LogRecorder log;
    AllocationTrace trace;
    const int32_t result = mdm_phone_res_limit_of_data_calls_parse_parameters(
        text, &outputs.date_set, &outputs.period, &outputs.send_limit, &outputs.recv_limit);
    trace.stop();
    EXPECT_THAT(trace.kept(), IsEmpty());

    std::vector<LogLine> lines = log.take();
    const std::vector<const void *> released = trace.released();
    if (!released.empty()) {  // of the vector and its pieces, the vector comes last
        const std::string vector = pointer_text(released.back());
        for (LogLine &line : lines) {
            line.text = line.text == clean_up(vector) ? clean_up(the_vector) : line.text;
        }
    }
    return {result, outputs, lines};
}

Call<Parameters> parse(const std::string &text)
{
    return parse(text.c_str());
}

// All that is logged around the part that depends on the text.
Call<Parameters> parsed(int32_t result, const Parameters &outputs, const std::string &text,
                        std::vector<LogLine> between, const std::string &vector)
{
    between.insert(between.begin(),
                   info(parser, "Checking: \"" + text +
                                    R"(" == MDM_UTIL_POLICY_DEFAULT_EMPTY_STRING ("empty").)"));
    between.push_back(info(parser, clean_up(vector)));
    between.push_back(
        info(parser, "ret: " + std::to_string(result) + ", " + ::testing::PrintToString(outputs)));
    return {result, outputs, entered_and_left(parser, between)};
}

constexpr const char *splitting = "Splitting string against MDM_UTIL_POLICY_DELIM (\",\")";

Call<Parameters> four_fields(const std::string &text, const Parameters &outputs)
{
    return parsed(0, outputs, text, infos(parser, {splitting, "number_of_tokens == 4"}),
                  the_vector);
}

Call<Parameters> too_few(const std::string &text, size_t count)
{
    std::vector<LogLine> lines =
        infos(parser, {splitting, "number_of_tokens == " + std::to_string(count)});
    lines.push_back(critical(parser, "Incorrect length of token vector from string \"" + text +
                                         R"(", delimiter: ","! Expected: 4, got: )" +
                                         std::to_string(count) + "."));
    return parsed(-999, untouched_parameters, text, lines, the_vector);
}

Call<Parameters> no_data(const Parameters &outputs = untouched_parameters)
{
    return parsed(0, outputs, "empty", {info(parser, "we have empty data \n")},
                  pointer_text(nullptr));
}

void expect_four_fields(const std::string &text, const Parameters &outputs)
{
    EXPECT_EQ(parse(text), four_fields(text, outputs));
}

std::string four_times(const std::string &field)
{
    std::string text = field;
    for (int i = 1; i < 4; ++i) {
        text += "," + field;
    }
    return text;
}

TEST(PhoneResLimitParameters, HaveTheseWords)
{
    EXPECT_STREQ(MDM_UTIL_POLICY_DELIM, ",");
    EXPECT_STREQ(MDM_UTIL_POLICY_DEFAULT_EMPTY_STRING, "empty");
}

TEST(PhoneResLimitParameters, AreDateSetPeriodSendLimitAndReceiveLimit)
{
    expect_four_fields("1,2,3,4", {1, 2, 3, 4});
    expect_four_fields("5,-7,abc,9,10", {5, 0, 0, 9});
    expect_four_fields(",,,", {0, 0, 0, 0});
}

// Q-LIMIT-7, Q-LIMIT-8
TEST(PhoneResLimitParameters, TheWordEmptyLeavesTheOutputsUntouched)
{
    EXPECT_EQ(parse("empty"), no_data());
    EXPECT_EQ(parse("empty", {1, 2, 3, 4}), no_data({1, 2, 3, 4}));
}

TEST(PhoneResLimitParameters, AnythingLikeTheWordEmptyIsAnOrdinaryText)
{
    for (const char *text : {"Empty", "EMPTY", "empty ", " empty", "empt", "emptyy", "empty\n"}) {
        EXPECT_EQ(parse(text), too_few(text, 1));
    }
    EXPECT_EQ(parse("empty,"), too_few("empty,", 2));
    expect_four_fields("empty,empty,empty,empty", {0, 0, 0, 0});
}

// Q-LIMIT-9
TEST(PhoneResLimitParameters, FewerThanFourFieldsFail)
{
    EXPECT_EQ(parse(""), too_few("", 0));
    for (const char *text : {"5", " ", "1 2 3 4", "1;2;3;4", "%s%n"}) {
        EXPECT_EQ(parse(text), too_few(text, 1));
    }
    for (const char *text : {",", "1,2", "1,"}) {
        EXPECT_EQ(parse(text), too_few(text, 2));
    }
    for (const char *text : {"1,2,3", ",,", "1,2,"}) {
        EXPECT_EQ(parse(text), too_few(text, 3));
    }
}

// Q-LIMIT-6
TEST(PhoneResLimitParameters, TheFourthFieldTakesTheRest)
{
    expect_four_fields("1,2,3,4,5,6,7,8", {1, 2, 3, 4});
    expect_four_fields("1,2,3,,5", {1, 2, 3, 0});
    expect_four_fields("1,2,3,4,", {1, 2, 3, 4});
}

// Q-LIMIT-5
TEST(PhoneResLimitParameters, WhatIsNoNumberIsZero)
{
    expect_four_fields("abc,-,+,.5", {0, 0, 0, 0});
    expect_four_fields("- 1,--1,+-1,%d", {0, 0, 0, 0});
    expect_four_fields(" ,\t,x1,empty", {0, 0, 0, 0});
}

TEST(PhoneResLimitParameters, ANumberEndsAtTheFirstOtherCharacter)
{
    expect_four_fields("12abc,7 8,0x10,1.5", {12, 7, 0, 1});
    expect_four_fields("3-4,5+6,7 ,8e2", {3, 5, 7, 8});
}

TEST(PhoneResLimitParameters, ANumberMayFollowWhiteSpaceAndASign)
{
    expect_four_fields(" 1,\t2,\n3, \v\f\r4", {1, 2, 3, 4});
    expect_four_fields("+5, +6,+0,-0", {5, 6, 0, 0});
}

TEST(PhoneResLimitParameters, NumbersAreDecimal)
{
    expect_four_fields("010,0009,08,1000", {10, 9, 8, 1000});
}

// Q-LIMIT-5
TEST(PhoneResLimitParameters, NegativeNumbersBecomeZero)
{
    expect_four_fields("-1,-1,-1,-1", {0, 0, 0, 0});
    expect_four_fields("-2147483648,-2147483647,-2147483648, -7x", {0, 0, 0, 0});
}

TEST(PhoneResLimitParameters, NumbersAbove31BitsBecomeTheLargestThatFits)
{
    expect_four_fields("3000000000,1,1,1", {INT32_MAX, 1, 1, 1});
    expect_four_fields("2147483646,2147483646,2147483646,2147483646",
                       {2147483646, 2147483646, 2147483646, 2147483646});
    for (const char *number :
         {"2147483647", "2147483648", "3000000000", "4294967295", "4294967296", "4294967297",
          "9223372036854775807", "9223372036854775808", "18446744073709551615",
          "18446744073709551617", "99999999999999999999999999999999999999999"}) {
        expect_four_fields(four_times(number), {INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX});
    }
}

TEST(PhoneResLimitParameters, NumbersFarBelowZeroBecomeZero)
{
    expect_four_fields("-3000000000,1,1,1", {0, 1, 1, 1});
    for (const char *number : {"-2147483649", "-3000000000", "-4294967295", "-9223372036854775808",
                               "-9223372036854775809", "-18446744073709551615",
                               "-99999999999999999999999999999999999999999"}) {
        expect_four_fields(four_times(number), {0, 0, 0, 0});
    }
}

TEST(PhoneResLimitParameters, ATextThatCannotBeSplitFails)
{
    const NoMemory no_memory;
    for (const std::string text : {"1,2,3,4", "1,2", ""}) {
        EXPECT_EQ(parse(text), parsed(-999, untouched_parameters, text,
                                      {info(parser, splitting),
                                       critical(parser, "Unable to split string \"" + text +
                                                            "\", delimiter: \",\"!")},
                                      pointer_text(nullptr)));
    }
}

TEST(PhoneResLimitParameters, TheWordEmptyIsNotSplit)
{
    const NoMemory no_memory;
    EXPECT_EQ(parse("empty"), no_data());
}

// Q-LIMIT-9
TEST(PhoneResLimitParameters, TheVectorIsFreedBetweenTheLastTwoInformationLines)
{
    for (const char *text : {"1,2,3,4", "1,2,3"}) {
        LogRecorder log;
        Parameters outputs = untouched_parameters;
        size_t lines_so_far = 0;
        AllocationTrace trace;
        trace.during_release([&](const void *) { lines_so_far = log.platform_lines().size(); });
        mdm_phone_res_limit_of_data_calls_parse_parameters(
            text, &outputs.date_set, &outputs.period, &outputs.send_limit, &outputs.recv_limit);
        trace.stop();
        EXPECT_EQ(lines_so_far, log.take().size() - 2);
    }
}

// Passes null in place of one argument, or of all five, for 5.
void expect_null_refused(const char *given, int missing)
{
    LogRecorder log;
    Parameters outputs = untouched_parameters;
    const auto unless_missing = [&](int position, auto *argument) {
        return missing == position || missing == 5 ? nullptr : argument;
    };
    const char *text = unless_missing(0, given);
    int32_t *date_set = unless_missing(1, &outputs.date_set);
    int32_t *period = unless_missing(2, &outputs.period);
    uint32_t *send_limit = unless_missing(3, &outputs.send_limit);
    uint32_t *recv_limit = unless_missing(4, &outputs.recv_limit);
    EXPECT_EQ(mdm_phone_res_limit_of_data_calls_parse_parameters(text, date_set, period, send_limit,
                                                                 recv_limit),
              -195);
    EXPECT_EQ(log.take(),
              complaint(parser, "Invalid parameter, at least one is NULL: p_date_set: " +
                                    pointer_text(date_set) + ", p_period: " + pointer_text(period) +
                                    ", p_send_limit: " + pointer_text(send_limit) +
                                    ", p_recv_limit: " + pointer_text(recv_limit)));
    EXPECT_EQ(outputs, untouched_parameters);
}

// Q-LIMIT-10
TEST(PhoneResLimitParameters, NullArgumentsAreRefused)
{
    for (const char *text : {"1,2,3,4", "empty", "1"}) {
        for (int missing = 0; missing <= 5; ++missing) {
            SCOPED_TRACE(missing);
            expect_null_refused(text, missing);
        }
    }
}

// Two outputs in one place: the value stored later stays, and the log shows it for both.
void expect_later_wins(size_t earlier, size_t later)
{
    LogRecorder log;
    std::array<int32_t, 4> stored{-11, -12, -13, -14};
    auto &[date_set, period, send_limit, recv_limit] = stored;
    std::array<int32_t *, 4> outputs{&date_set, &period, &send_limit, &recv_limit};
    outputs[earlier] = outputs[later];
    EXPECT_EQ(mdm_phone_res_limit_of_data_calls_parse_parameters(
                  "1,2,3,4", outputs[0], outputs[1], reinterpret_cast<uint32_t *>(outputs[2]),
                  reinterpret_cast<uint32_t *>(outputs[3])),
              0);
    std::array<int, 4> shown{1, 2, 3, 4};
    shown[earlier] = shown[later];
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(*outputs[i], shown[i]);
    }
    const std::string text =
        "ret: 0, date set: " + std::to_string(shown[0]) + ", period: " + std::to_string(shown[1]) +
        ", send limit: " + std::to_string(shown[2]) + ", recv limit: " + std::to_string(shown[3]);
    EXPECT_THAT(log.take(), ::testing::Contains(info(parser, text)));
}

TEST(PhoneResLimitParameters, OfOutputsInOnePlaceTheLaterStays)
{
    for (size_t later = 1; later < 4; ++later) {
        for (size_t earlier = 0; earlier < later; ++earlier) {
            SCOPED_TRACE(::testing::Message() << earlier << " and " << later);
            expect_later_wins(earlier, later);
        }
    }
}

// All three.

void expect_answers()
{
    const Values values{10, 0, -3, 4, 5, 6};
    char *text = nullptr;
    uint32_t size = 0;
    EXPECT_EQ(mdm_phone_res_limit_serialize(1, values.data(), &text, &size), 0);

    Numbers numbers{};
    EXPECT_EQ(deserialize_into(numbers, text), 0);
    EXPECT_EQ(numbers, (Numbers{1, 10, 0, -3, 4, 5, 6}));

    Parameters outputs{};
    EXPECT_EQ(
        mdm_phone_res_limit_of_data_calls_parse_parameters(
            text, &outputs.date_set, &outputs.period, &outputs.send_limit, &outputs.recv_limit),
        0);
    EXPECT_EQ(outputs, (Parameters{1, 10, 0, 0}));
    g_free(text);
}

TEST(PhoneResLimit, LinesCarryTheTagAndTheSourceFile)
{
    const LogRecorder log;
    expect_answers();
    EXPECT_THAT(
        log.platform_lines(),
        AllOf(SizeIs(11), Each(Field(&PlatformLine::tag, Optional(std::string("MDM_COMMON")))),
              Each(Field(&PlatformLine::text, StartsWith("mdm_util_policy.cpp: mdm_phone_res_")))));
}

class SilentPhoneResLimit : public ::testing::Test {
protected:
    ~SilentPhoneResLimit() override { EXPECT_THAT(log_.take(), IsEmpty()); }

    int32_t serialized(int32_t type)
    {
        const Values values{};
        const int32_t result =
            mdm_phone_res_limit_serialize(type, values.data(), &text_, unsigned_.data());
        g_clear_pointer(&text_, g_free);
        return result;
    }

    int32_t deserialized(const char *text)
    {
        return mdm_phone_res_limit_deserialize(text, signed_.data(), &signed_[1]);
    }

    int32_t parsed(const char *text)
    {
        return mdm_phone_res_limit_of_data_calls_parse_parameters(text, signed_.data(), &signed_[1],
                                                                  unsigned_.data(), &unsigned_[1]);
    }

    char *text_ = nullptr;
    std::array<int32_t, 7> signed_{};
    std::array<uint32_t, 2> unsigned_{};
    LogRecorder log_{MDM_LOG_NONE};
};

TEST_F(SilentPhoneResLimit, IsSerializedOrRefusedAsEver)
{
    EXPECT_EQ(serialized(1), 0);
    EXPECT_EQ(serialized(2), -195);
    EXPECT_EQ(mdm_phone_res_limit_serialize(1, nullptr, nullptr, unsigned_.data()), -195);
    EXPECT_EQ(mdm_phone_res_limit_serialize(1, nullptr, &text_, nullptr), -195);
    const NoMemory no_memory;
    EXPECT_EQ(serialized(1), -294);
}

TEST_F(SilentPhoneResLimit, IsDeserializedOrRefusedAsEver)
{
    EXPECT_EQ(deserialized("1,2,3,4,5,6,7"), 0);
    EXPECT_EQ(deserialized("2,0,0,0,0,0,0"), -195);
    EXPECT_EQ(deserialized(""), -195);
    EXPECT_EQ(deserialized(nullptr), -195);
    EXPECT_EQ(mdm_phone_res_limit_deserialize("", nullptr, signed_.data()), -195);
    EXPECT_EQ(mdm_phone_res_limit_deserialize("", signed_.data(), nullptr), -195);
}

TEST_F(SilentPhoneResLimit, HasItsParametersParsedOrRefusedAsEver)
{
    EXPECT_EQ(parsed("1,2,3,4"), 0);
    EXPECT_EQ(parsed("empty"), 0);
    EXPECT_EQ(parsed("1,2,3"), -999);
    EXPECT_EQ(parsed(nullptr), -195);
    const NoMemory no_memory;
    EXPECT_EQ(parsed("1,2,3,4"), -999);
}

TEST(PhoneResLimit, ThreadsDoNotDisturbEachOther)
{
    const LogRecorder log;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            for (int round = 0; round < 100; ++round) {
                expect_answers();
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
}

// Properties, over texts that are generated. A failure prints how to repeat it, with RC_PARAMS in
// the environment.

std::string any_of(const std::vector<std::string> &texts)
{
    return *rc::gen::elementOf(texts);
}

std::string any_run(std::string_view characters)
{
    return *rc::gen::container<std::string>(rc::gen::elementOf(std::string(characters)));
}

std::string any_space()
{
    return any_of({"", "", " ", "\t", "\n", " \v\f\r "});
}

std::string any_number()
{
    const std::string number = std::to_string(*rc::gen::arbitrary<int32_t>());
    return any_of({"0", "1", "2", number, number, "+" + number, "00" + number});
}

std::string any_wide_number()
{
    return any_of({"", "", "+", "-"}) + any_run("0123456789");
}

// Most often the usual number of fields, with at most one thing wrong.
std::string any_fields(int usual_count, const std::function<std::string()> &any_field)
{
    const int count = *rc::gen::inRange(0, 4) != 0 ? usual_count : *rc::gen::inRange(0, 10);
    const int damaged = *rc::gen::inRange(-count, count + 1);
    std::string text;
    for (int i = 0; i < count; ++i) {
        text += i == 0 ? "" : ",";
        text += any_space();
        text += i == damaged ? any_of({"", "x", "-", ","}) : "";
        text += any_field();
        text += i == damaged ? any_of({"", " ", " ", "x", "-", ","}) : "";
    }
    return text;
}

std::string any_text(int usual_count, const std::function<std::string()> &any_field)
{
    return *rc::gen::inRange(0, 4) != 0 ? any_fields(usual_count, any_field)
                                        : any_run("0123456789+- \t\n,,,,ax");
}

// Outside 32 bits the C library promises nothing for "%d".
bool scanner_defines(const std::string &text)
{
    constexpr const char *digits = "0123456789";
    size_t begin = text.find_first_of(digits);
    while (begin != std::string::npos) {
        const bool is_negative = begin != 0 && text[begin - 1] == '-';
        const long long number = std::strtoll(text.c_str() + begin, nullptr, 10);
        if (number > (is_negative ? 2147483648LL : 2147483647LL)) {
            return false;
        }
        begin = text.find_first_of(digits, text.find_first_not_of(digits, begin));
    }
    return true;
}

// By the scanner itself.
Call<Numbers> scanned(const std::string &text)
{
    Numbers numbers = untouched_numbers;
    auto &[type, v1, v2, v3, v4, v5, v6] = numbers;
    const int count =
        // NOLINTNEXTLINE(cert-err34-c): the numbers fit
        std::sscanf(text.c_str(), "%d,%d,%d,%d,%d,%d,%d", &type, &v1, &v2, &v3, &v4, &v5, &v6);
    if (count != 7) {
        return mismatch(text, count, numbers);
    }
    return type == 0 || type == 1 ? limit(numbers) : wrong_type(numbers);
}

TEST(PhoneResLimitProperty, TextIsReadAsTheScannerReadsIt)
{
    EXPECT_TRUE(rc::check("deserialize is sscanf", [] {
        const std::string text = any_text(7, any_number);
        RC_PRE(scanner_defines(text));
        RC_ASSERT(deserialize(text) == scanned(text));
    }));
}

TEST(PhoneResLimitProperty, EveryLimitComesBackFromItsText)
{
    EXPECT_TRUE(rc::check("deserialize undoes serialize", [](const Values &values) {
        const int32_t type = *rc::gen::inRange(0, 2);
        Numbers expected{type};
        std::ranges::copy(values, expected.begin() + 1);
        const Call<Text> written = serialize(type, values);
        RC_ASSERT(written.result == 0);
        RC_ASSERT(written.outputs.size == written.outputs.text.size() + 1);
        RC_ASSERT(deserialize(written.outputs.text) == limit(expected));
    }));
}

// At most four, the fourth with all commas that are left in it.
std::vector<std::string> split(std::string text)
{
    std::vector<std::string> pieces;
    if (text.empty()) {
        return pieces;
    }
    for (size_t comma = text.find(','); comma != std::string::npos && pieces.size() < 3;
         comma = text.find(',')) {
        pieces.push_back(text.substr(0, comma));
        text.erase(0, comma + 1);
    }
    pieces.push_back(text);
    return pieces;
}

// std::strtoll() takes numbers beyond 32 bits, which are then cut off.
int32_t parameter(const std::string &field)
{
    const long long number = std::strtoll(field.c_str(), nullptr, 10);
    return static_cast<int32_t>(std::clamp<long long>(number, 0, INT32_MAX));
}

Call<Parameters> modelled(const std::string &text)
{
    if (text == "empty") {
        return no_data();
    }
    const std::vector<std::string> pieces = split(text);
    if (pieces.size() < 4) {
        return too_few(text, pieces.size());
    }
    return four_fields(text, {parameter(pieces[0]), parameter(pieces[1]),
                              static_cast<uint32_t>(parameter(pieces[2])),
                              static_cast<uint32_t>(parameter(pieces[3]))});
}

TEST(PhoneResLimitProperty, ParametersAreSplitAndClampedAsByHand)
{
    EXPECT_TRUE(rc::check("parse is split and clamp", [] {
        const std::string fields = any_text(4, [] {
            return any_of({any_number(), any_wide_number(), "empty"});
        });
        const std::string text = any_of({fields, fields, fields, "empty"});
        RC_ASSERT(parse(text) == modelled(text));
    }));
}

}  // namespace
}  // namespace mdm::test::util_policy_test
