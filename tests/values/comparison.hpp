// SPDX-License-Identifier: Apache-2.0
//
// What mdm::equal() promises for every value class and every instance of Nullable.
#pragma once

#include <cstddef>
#include <tuple>

#include <gtest/gtest.h>

#include "mdm/device_policy_manager.hpp"
#include "support/value_class.hpp"

namespace mdm::test {

template <class Value>
class Comparison : public ::testing::Test {
};
TYPED_TEST_SUITE_P(Comparison);

TYPED_TEST_P(Comparison, CopyIsEqual)
{
    for (const TypeParam &source : sources<TypeParam>()) {
        const TypeParam copy = source;
        EXPECT_TRUE(mdm::equal(source, copy));
    }
}

// Of a text only the last character, which stands behind a null character.
template <class Leaf>
void change(Leaf &leaf)
{
    if constexpr (is_text<Leaf>) {
        leaf.back() = '!';
    } else {
        leaf = {};
    }
}

TYPED_TEST_P(Comparison, NoticesEachChange)
{
    TypeParam object;
    fill(object, text_lengths.back());
    const size_t leaves = contents_of(object).size();
    for (size_t changed = 0; changed < leaves; ++changed) {
        TypeParam other = object;
        size_t position = 0;
        each_leaf(other, [&](auto &leaf) {
            if (position++ == changed) {
                change(leaf);
            }
        });
        EXPECT_FALSE(mdm::equal(object, other)) << contents_of(object)[changed];
        EXPECT_FALSE(mdm::equal(other, object)) << contents_of(object)[changed];
    }
}

// A Nullable is no longer set; a plain value is the default again.
template <class Member>
void forget(Member &member)
{
    if constexpr (requires { member.is_set; }) {
        member.is_set = false;
    } else {
        member = {};
    }
}

TYPED_TEST_P(Comparison, IgnoresValuesThatWereNotSet)
{
    TypeParam object;
    fill(object, text_lengths.back());
    if constexpr (requires { object.is_set; }) {
        forget(object);
    } else {
        std::apply([&](auto... member) { (forget(object.*member), ...); },
                   Listed<TypeParam>::members);
    }
    EXPECT_TRUE(mdm::equal(object, TypeParam()));
    EXPECT_TRUE(mdm::equal(TypeParam(), object));
}

REGISTER_TYPED_TEST_SUITE_P(Comparison, CopyIsEqual, NoticesEachChange,
                            IgnoresValuesThatWereNotSet);

}  // namespace mdm::test
