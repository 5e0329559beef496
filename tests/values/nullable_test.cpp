// SPDX-License-Identifier: Apache-2.0
//
// The functions that fill and read a Nullable.
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mdm/device_policy_manager.hpp"
#include "support/allocation_trace.hpp"

namespace mdm::test {
namespace {

using DevicePolicyManager::Nullable;
using Number = Nullable<int32_t>;
using UnsignedNumber = Nullable<uint32_t>;
using Wide = Nullable<int64_t>;
using UnsignedWide = Nullable<uint64_t>;
using Text = Nullable<std::string>;
using Details = DevicePolicyManager::DeviceInventoryCallHistoryCallDetails;

template <class Member, class From>
concept Sets = requires(Member &member, From &&from)
{
    mdm::set(member, std::forward<From>(from));
};

template <class Member, class From>
concept FallsBackTo = requires(const Member &member, From &&from)
{
    mdm::value_or(member, std::forward<From>(from));
};

template <class Member, class From>
inline constexpr bool takes = Sets<Member, From> &&FallsBackTo<Member, From>;
template <class Member, class From>
inline constexpr bool refuses = !Sets<Member, From> && !FallsBackTo<Member, From>;

// A literal 0 is a null pointer constant, other than any variable.
template <class Member>
concept TakesZero = requires(Member &member)
{
    mdm::set(member, 0);
}
|| requires(Member &member)
{
    mdm::value_or(member, 0);
};

enum SmallEnum : uint16_t { small_constant = 3 };
enum UnsignedEnum : uint32_t { unsigned_constant };
enum WideEnum : int64_t { wide_constant };

static_assert(takes<Number, int> && takes<Number, const int &> && takes<Number, uint32_t>);
static_assert(takes<Number, int8_t> && takes<Number, bool> && takes<Number, SmallEnum>);
static_assert(takes<Number, UnsignedEnum>);
static_assert(takes<UnsignedNumber, int> && takes<UnsignedNumber, uint32_t &>);
static_assert(takes<Wide, int> && takes<Wide, uint32_t> && takes<Wide, WideEnum>);
static_assert(takes<UnsignedWide, int> && takes<UnsignedWide, int64_t>);

static_assert(refuses<Number, int64_t> && refuses<Number, uint64_t &> && refuses<Number, WideEnum>);
static_assert(refuses<UnsignedNumber, int64_t> && refuses<UnsignedNumber, const uint64_t &>);
static_assert(refuses<Number, float> && refuses<Number, double>);
static_assert(refuses<Wide, float> && refuses<UnsignedWide, double>);
static_assert(refuses<Number, std::string> && refuses<Number, const char *>);
static_assert(refuses<Number, std::nullptr_t> && refuses<Number, Number>);

static_assert(takes<Text, const char (&)[3]> && takes<Text, const char *> && takes<Text, char *>);
static_assert(takes<Text, std::string> && takes<Text, std::string &>);
static_assert(takes<Text, const std::string &> && Sets<Text, std::string_view>);

static_assert(refuses<Text, int> && refuses<Text, char> && refuses<Text, double>);
static_assert(refuses<Text, SmallEnum> && refuses<Text, std::nullptr_t> && refuses<Text, Text>);
static_assert(TakesZero<Number> && TakesZero<UnsignedWide> && !TakesZero<Text>);

static_assert(takes<Nullable<Details>, Details> && takes<Nullable<Details>, const Details &>);
static_assert(refuses<Nullable<Details>, int> && refuses<Nullable<Details>, std::string>);
static_assert(takes<Nullable<bool>, bool> && refuses<Nullable<bool>, int8_t>);

const std::string long_text(100, 'x');

template <class T>
Nullable<T> filled_with(const T &value)
{
    Nullable<T> member;
    mdm::set(member, value);
    return member;
}

TEST(Set, SetsNumbersOfTheWholeRange)
{
    for (const int32_t value : {INT32_MIN, -1, 0, INT32_MAX}) {
        const Number member = filled_with(value);
        EXPECT_EQ(member.value, value);
        EXPECT_TRUE(member.is_set);
    }
    EXPECT_EQ(filled_with(UINT32_MAX).value, UINT32_MAX);
    EXPECT_EQ(filled_with(INT64_MIN).value, INT64_MIN);
    EXPECT_EQ(filled_with(UINT64_MAX).value, UINT64_MAX);
}

TEST(Set, TakesLiteralsAndConstants)
{
    UnsignedNumber number;
    mdm::set(number, 5);
    EXPECT_EQ(number.value, 5U);
    mdm::set(number, small_constant);
    EXPECT_EQ(number.value, 3U);
    UnsignedWide wide;
    mdm::set(wide, 7);
    EXPECT_EQ(wide.value, 7U);
    Text text;
    mdm::set(text, "literal");
    EXPECT_EQ(text.value, "literal");
    EXPECT_TRUE(text.is_set);
    mdm::set(text, {});
    EXPECT_EQ(text.value, "");
    EXPECT_TRUE(text.is_set);
}

TEST(Set, KeepsNullCharactersOfATextWithALength)
{
    const std::string_view view("a\0b", 3);
    Text text;
    mdm::set(text, view);
    EXPECT_EQ(text.value, view);
    mdm::set(text, std::string(view));
    EXPECT_EQ(text.value, view);
}

TEST(Set, MovesAnRvalueText)
{
    std::string source = long_text;
    const void *characters = source.data();
    Text text;
    mdm::set(text, std::move(source));
    EXPECT_EQ(text.value.data(), characters);
    EXPECT_EQ(text.value, long_text);
}

TEST(Set, CopiesAnLvalueText)
{
    std::string source = long_text;
    Text text;
    mdm::set(text, source);
    EXPECT_EQ(source, long_text);
    source.front() = '!';
    EXPECT_EQ(text.value, long_text);
}

TEST(Set, TakesTheMembersOwnValue)
{
    Text text;
    text.value = long_text;
    mdm::set(text, text.value);
    EXPECT_EQ(text.value, long_text);
    EXPECT_TRUE(text.is_set);
}

TEST(Set, CopiesAnObject)
{
    Details details;
    details.num0 = 4;
    details.str1 = "number";
    const Nullable<Details> member = filled_with(details);
    EXPECT_TRUE(mdm::equal(member.value, details));
    EXPECT_TRUE(member.is_set);
}

// An element that no value can be assigned to.
struct Unassignable {
    Unassignable() = default;
    Unassignable(const Unassignable &) = default;
    Unassignable &operator=(const Unassignable &other)
    {
        if (&other != this) {
            throw std::length_error("no");
        }
        return *this;
    }
    ~Unassignable() = default;
};

TEST(Set, LeavesTheFlagIfTheAssignmentThrows)
{
    Nullable<Unassignable> member;
    EXPECT_THROW(mdm::set(member, Unassignable()), std::length_error);
    EXPECT_FALSE(member.is_set);
}

TEST(Unset, PutsTheDefaultBack)
{
    Number number = filled_with(7);
    mdm::unset(number);
    EXPECT_EQ(number.value, 0);
    EXPECT_FALSE(number.is_set);

    Text text = filled_with(long_text);
    mdm::unset(text);
    EXPECT_EQ(text.value, "");
    EXPECT_FALSE(text.is_set);
}

TEST(Unset, ForgetsAValueThatWasNotSet)
{
    Text text;
    text.value = long_text;
    mdm::unset(text);
    EXPECT_EQ(text.value, "");
}

TEST(Unset, AllocatesNothing)
{
    Details details;
    details.num0 = 4;
    details.str1 = long_text;
    Nullable<Details> member = filled_with(details);
    AllocationTrace trace;
    mdm::unset(member);
    trace.stop();
    EXPECT_THAT(trace.allocated(), ::testing::IsEmpty());
    EXPECT_TRUE(mdm::equal(member.value, Details()));
    EXPECT_FALSE(member.is_set);
}

TEST(ValueOr, ReturnsTheValueThatWasSet)
{
    EXPECT_EQ(mdm::value_or(filled_with(0), 7), 0);
    EXPECT_EQ(mdm::value_or(filled_with(UINT32_MAX), 7), UINT32_MAX);
    EXPECT_EQ(mdm::value_or(filled_with(std::string()), "fallback"), "");
}

TEST(ValueOr, CopiesTheValue)
{
    const Text text = filled_with(long_text);
    std::string copy = mdm::value_or(text, "fallback");
    copy.front() = '!';
    EXPECT_EQ(text.value, long_text);
}

TEST(ValueOr, ReturnsTheFallbackForAValueThatWasNotSet)
{
    Number number;
    number.value = 7;
    EXPECT_EQ(mdm::value_or(number, -1), -1);
    Text text;
    text.value = "value";
    EXPECT_EQ(mdm::value_or(text, "fallback"), "fallback");
    EXPECT_EQ(mdm::value_or(text, {}), "");
    Details fallback;
    fallback.num0 = 4;
    EXPECT_EQ(mdm::value_or(Nullable<Details>(), fallback).num0, 4);
}

TEST(ValueOr, MovesAnRvalueFallback)
{
    std::string fallback = long_text;
    const void *characters = fallback.data();
    const std::string result = mdm::value_or(Text(), std::move(fallback));
    EXPECT_EQ(result.data(), characters);
}

}  // namespace
}  // namespace mdm::test
