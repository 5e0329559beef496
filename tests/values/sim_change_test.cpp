// SPDX-License-Identifier: Apache-2.0
#include <cstdint>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mdm/device_policy_manager.hpp"
#include "support/value_class.hpp"
#include "values/comparison.hpp"

namespace mdm::test {

using SimDetails = DevicePolicyManager::MiscSimChangeInfoCommonDetailsCommon;
using SimChange = DevicePolicyManager::MiscSimChangeInfoCommon;

template <>
struct Listed<SimDetails> {
    using Value = SimDetails;
    using Text = Nullable<std::string>;
    static constexpr Members<Value, Text, Text, Text, Text, Text, Text, Nullable<int64_t>> members{
        &Value::str0, &Value::str1, &Value::str2, &Value::str3,
        &Value::str4, &Value::str5, &Value::wide6};
    static void bind(Value &object)
    {
        [[maybe_unused]] auto &[str0, str1, str2, str3, str4, str5, wide6] = object;
    }
};

template <>
struct Listed<SimChange> {
    using Value = SimChange;
    static constexpr Members<Value, Nullable<int32_t>, Nullable<int64_t>, Nullable<SimDetails>,
                             Nullable<SimDetails>>
        members{&Value::num0, &Value::wide1, &Value::details2, &Value::details3};
    static void bind(Value &object)
    {
        [[maybe_unused]] auto &[num0, wide1, details2, details3] = object;
    }
};

static_assert(ValueType<SimDetails> && HasConstantRvalueConstructor<SimDetails>);
static_assert(ValueType<SimChange> && HasConstantRvalueConstructor<SimChange>);

namespace {

using SimChangeClasses = ::testing::Types<SimDetails, SimChange>;
INSTANTIATE_TYPED_TEST_SUITE_P(SimChange, ValueClass, SimChangeClasses);
INSTANTIATE_TYPED_TEST_SUITE_P(SimChange, ExportedClass, SimChangeClasses);
INSTANTIATE_TYPED_TEST_SUITE_P(SimChange, Comparison, SimChangeClasses);

using SimChangeNullables = ::testing::Types<Nullable<SimDetails>>;
INSTANTIATE_TYPED_TEST_SUITE_P(SimChangeNullables, ValueClass, SimChangeNullables);
INSTANTIATE_TYPED_TEST_SUITE_P(SimChangeNullables, Comparison, SimChangeNullables);

SimDetails details_named(const std::string &name)
{
    SimDetails details;
    details.str0.value = name;
    details.str0.is_set = true;
    return details;
}

TEST(SimChange, DefaultReportHoldsTwoDefaultDetails)
{
    const Contents details = {"''", "not set", "''", "not set", "''", "not set", "''", "not set",
                              "''", "not set", "''", "not set", "0",  "not set"};
    const SimChange change;
    EXPECT_EQ(contents_of(change.details2.value), details);
    EXPECT_EQ(contents_of(change.details3.value), details);
    EXPECT_FALSE(change.details2.is_set);
    EXPECT_FALSE(change.details3.is_set);
}

TEST(SimChange, AssignsBothDetailsAndTheirFlagsIndependently)
{
    for (const bool first_is_set : {false, true}) {
        SimChange source;
        source.details2.value = details_named("first");
        source.details2.is_set = first_is_set;
        source.details3.value = details_named("second");
        source.details3.is_set = !first_is_set;
        SimChange target;
        target.details2.is_set = !first_is_set;
        target.details3.is_set = first_is_set;

        target = source;
        EXPECT_EQ(contents_of(target.details2.value), contents_of(details_named("first")));
        EXPECT_EQ(target.details2.is_set, first_is_set);
        EXPECT_EQ(contents_of(target.details3.value), contents_of(details_named("second")));
        EXPECT_EQ(target.details3.is_set, !first_is_set);

        target.details2.value.str0.value = "changed";
        EXPECT_EQ(target.details3.value.str0.value, "second");
        EXPECT_EQ(source.details2.value.str0.value, "first");
    }
}

TEST(SimChange, DetailsMayBeAssignedToTheOtherOnes)
{
    SimChange change;
    change.details2.value = details_named("old");
    change.details2.is_set = true;
    change.details3 = change.details2;
    change.details2.value = details_named("new");
    EXPECT_EQ(change.details3.value.str0.value, "old");
    EXPECT_TRUE(change.details3.is_set);
}

}  // namespace
}  // namespace mdm::test
