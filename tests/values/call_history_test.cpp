// SPDX-License-Identifier: Apache-2.0
#include <cstdint>
#include <stdexcept>
#include <string>
#include <type_traits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mdm/device_policy_manager.hpp"
#include "support/value_class.hpp"
#include "values/comparison.hpp"

namespace mdm::test {

using Number = Nullable<int32_t>;
using UnsignedNumber = Nullable<uint32_t>;
using Wide = Nullable<int64_t>;
using UnsignedWide = Nullable<uint64_t>;
using Text = Nullable<std::string>;
using Details = DevicePolicyManager::DeviceInventoryCallHistoryCallDetails;
using Event = DevicePolicyManager::DeviceInventoryCallHistoryEvent;
using QueryParameter = DevicePolicyManager::DeviceInventoryCallHistoryQueryParameter;
using PurgeStatus = DevicePolicyManager::DeviceInventoryPurgeStatus;

template <>
struct Listed<Details> {
    static constexpr Members<Details, int32_t, std::string> members{&Details::num0, &Details::str1};
    static void bind(Details &object) { [[maybe_unused]] auto &[num0, str1] = object; }
};

template <>
struct Listed<Event> {
    static constexpr Members<Event, Number, Wide, Number, UnsignedNumber, Number, Text, Text, Text,
                             Text, Text, Text, Text, Nullable<Details>>
        members{&Event::num0,  &Event::wide1, &Event::num2,     &Event::num3, &Event::num4,
                &Event::str5,  &Event::str6,  &Event::str7,     &Event::str8, &Event::str9,
                &Event::str10, &Event::str11, &Event::details12};
    static void bind(Event &object)
    {
        [[maybe_unused]] auto &[num0, wide1, num2, num3, num4, str5, str6, str7, str8, str9, str10,
                                str11, details12] = object;
    }
};

template <>
struct Listed<QueryParameter> {
    using Value = QueryParameter;
    static constexpr Members<Value, Number, UnsignedWide, UnsignedWide, Number, Text, Text, Number,
                             Number>
        members{&Value::num0, &Value::wide1, &Value::wide2, &Value::num3,
                &Value::str4, &Value::str5,  &Value::num6,  &Value::num7};
    static void bind(Value &object)
    {
        [[maybe_unused]] auto &[num0, wide1, wide2, num3, str4, str5, num6, num7] = object;
    }
};

template <>
struct Listed<PurgeStatus> {
    using Value = PurgeStatus;
    static constexpr Members<Value, Wide, Wide, Wide, Wide, Wide, Wide> members{
        &Value::wide0, &Value::wide1, &Value::wide2, &Value::wide3, &Value::wide4, &Value::wide5};
    static void bind(Value &object)
    {
        [[maybe_unused]] auto &[wide0, wide1, wide2, wide3, wide4, wide5] = object;
    }
};

static_assert(ValueType<Details> && !HasConstantRvalueConstructor<Details>);
static_assert(ValueType<Event> && HasConstantRvalueConstructor<Event>);
static_assert(ValueType<QueryParameter> && HasConstantRvalueConstructor<QueryParameter>);
static_assert(ValueType<PurgeStatus> && HasConstantRvalueConstructor<PurgeStatus>);

static_assert(sizeof(Number::is_set) == 1);
static_assert(std::is_polymorphic_v<Number> && std::has_virtual_destructor_v<Number>);
static_assert(CopyAssigns<Number> && !MoveAssigns<Number>);

namespace {

using CallHistoryClasses = ::testing::Types<Details, Event, QueryParameter, PurgeStatus>;
INSTANTIATE_TYPED_TEST_SUITE_P(CallHistory, ValueClass, CallHistoryClasses);
INSTANTIATE_TYPED_TEST_SUITE_P(CallHistory, ExportedClass, CallHistoryClasses);
INSTANTIATE_TYPED_TEST_SUITE_P(CallHistory, Comparison, CallHistoryClasses);

using CallHistoryNullables =
    ::testing::Types<Number, UnsignedNumber, Wide, UnsignedWide, Text, Nullable<Details>>;
INSTANTIATE_TYPED_TEST_SUITE_P(CallHistoryNullables, ValueClass, CallHistoryNullables);
INSTANTIATE_TYPED_TEST_SUITE_P(CallHistoryNullables, Comparison, CallHistoryNullables);

TEST(CallHistory, DefaultEventHoldsNothing)
{
    const Event event;
    EXPECT_THAT(contents_of(event),
                ::testing::ElementsAre("0", "not set", "0", "not set", "0", "not set", "0",
                                       "not set", "0", "not set", "''", "not set", "''", "not set",
                                       "''", "not set", "''", "not set", "''", "not set", "''",
                                       "not set", "''", "not set", "0", "''", "not set"));
    EXPECT_EQ(event.details12.value.num0, 0);
    EXPECT_EQ(event.details12.value.str1, "");
    EXPECT_FALSE(event.details12.is_set);
}

TEST(CallHistory, ValueIsIndependentOfItsFlag)
{
    Event event;
    event.str5.value = "there, but not set";
    event.num3.is_set = true;
    const Event copy = event;
    EXPECT_EQ(copy.str5.value, "there, but not set");
    EXPECT_FALSE(copy.str5.is_set);
    EXPECT_EQ(copy.num3.value, 0U);
    EXPECT_TRUE(copy.num3.is_set);
}

TEST(CallHistory, NumbersKeepTheirRange)
{
    Event event;
    event.num0.value = INT32_MIN;
    event.num3.value = UINT32_MAX;
    event.wide1.value = INT64_MIN;
    const Event copy = event;
    EXPECT_EQ(copy.num0.value, INT32_MIN);
    EXPECT_EQ(copy.num3.value, UINT32_MAX);
    EXPECT_EQ(copy.wide1.value, INT64_MIN);

    QueryParameter parameter;
    parameter.wide2.value = UINT64_MAX;
    EXPECT_EQ(QueryParameter(parameter).wide2.value, UINT64_MAX);
}

// Q-VALUES-2
TEST(CallHistory, CallDetailsHaveNeitherFlagsNorAConstantRvalueConstructor)
{
    EXPECT_TRUE((std::is_same_v<decltype(Details::num0), int32_t>));
    EXPECT_TRUE((std::is_same_v<decltype(Details::str1), std::string>));
    EXPECT_FALSE(HasConstantRvalueConstructor<Details>);
    EXPECT_TRUE(HasConstantRvalueConstructor<Event>);
}

// An element that cannot be assigned.
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

TEST(Nullable, FlagIsAssignedAfterTheValue)
{
    const Nullable<Unassignable> empty;
    Nullable<Unassignable> object;
    object.is_set = true;
    EXPECT_THROW(object = empty, std::length_error);
    EXPECT_TRUE(object.is_set);
}

}  // namespace
}  // namespace mdm::test
