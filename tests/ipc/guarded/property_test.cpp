// SPDX-License-Identifier: Apache-2.0
//
// Properties of the guarded path, over messages that are generated: as a sender may pass them, with
// a sender's mistakes, and as bytes that were corrupted on their way.
//
// A failure prints how to repeat it, with RC_PARAMS in the environment.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include "mdm/guarded.h"
#include "support/allocation_trace.hpp"
#include "support/dump.hpp"
#include "support/fault.hpp"
#include "support/log_recorder.hpp"
#include "support/messages.hpp"
#include "support/senders.hpp"
#include "support/wire.hpp"

namespace mdm::test::guarded_property_test {
namespace {

bool are_same(const mdm_msg_t &left, const mdm_msg_t &right)
{
    return std::memcmp(&left, &right, sizeof left) == 0;
}

// Takes over the buffer, which holds a message and its trailer.
Bytes with_trailer(uint8_t *buffer, uint32_t length)
{
    Bytes bytes(buffer, buffer + length + trailer_size);
    g_free(buffer);
    return bytes;
}

Bytes serialized_with_trailer(mdm_msg_t &msg)
{
    uint32_t length = 0;
    uint8_t *buffer = ::ipc_serialize(&msg, &length);
    RC_ASSERT(static_cast<bool>(buffer));
    return with_trailer(buffer, length);
}

// The sealed bytes and their trailer. A refusal leaves no trace but its fault, and a success leaves
// none in the fault.
std::optional<Bytes> sealed_with_trailer(mdm_msg_t &msg)
{
    const mdm_msg_t before = msg;
    uint32_t length = untouched_length;
    ipc_fault_t fault = untouched_fault;
    AllocationTrace trace;
    uint8_t *buffer = ipc_seal(&msg, &length, &fault);
    trace.stop();
    if (buffer == nullptr) {
        RC_ASSERT(are_same(msg, before));
        RC_ASSERT(length == untouched_length);
        RC_ASSERT(!is_untouched(fault));
        RC_ASSERT(trace.kept().empty());
        return std::nullopt;
    }
    RC_ASSERT(is_untouched(fault));
    RC_ASSERT(trace.kept() == (std::vector<Block>{{buffer, length + trailer_size}}));
    return with_trailer(buffer, length);
}

Bytes without_trailer(const Bytes &bytes)
{
    return first_bytes(bytes, bytes.size() - trailer_size);
}

std::string description_of_deserialized(const Bytes &bytes)
{
    mdm_msg_t msg{};
    AllocationTrace trace;
    const int32_t result = deserialize(msg, bytes);
    trace.stop();
    RC_ASSERT(result == 0);
    std::string description = dump(msg);
    release_blocks(trace.kept());
    return description;
}

// Messages that a sender may pass.

void expect_to_be_sent_on(mdm_msg_t &received, const SentMessage &sent)
{
    const auto bytes = sealed_with_trailer(received);
    RC_ASSERT(bytes.has_value() == (sent.may_be_sent_on && sent.is_whole_again));
    if (!bytes) {
        return;
    }
    const Bytes again = without_trailer(*bytes);
    const Bytes expected = message_bytes(received, sent.again);
    if (sent.sends_pointer_as_param) {
        const size_t body_size = sent.again.size();
        RC_ASSERT(again.size() == expected.size());
        RC_ASSERT(without_param(again, body_size) == without_param(expected, body_size));
    } else {
        RC_ASSERT(again == expected);
    }
}

void expect_to_travel(const CategoryFormat &category)
{
    const LogRecorder log(any_bool() ? MDM_LOG_DEBUG : MDM_LOG_NONE);
    SentMessage sent = any_message(category);
    mdm_msg_t other = sent.msg;
    const auto bytes = sealed_with_trailer(sent.msg);
    RC_ASSERT(bytes.has_value() == sent.is_whole);
    if (!bytes) {
        return;
    }
    RC_ASSERT(*bytes == serialized_with_trailer(other));
    RC_ASSERT(are_same(sent.msg, other));

    const Opened received = opened(without_trailer(*bytes));
    RC_ASSERT(static_cast<bool>(received));
    RC_ASSERT(dump(*received) == description_of_deserialized(without_trailer(*bytes)));
    expect_to_be_sent_on(*received, sent);
}

// A sender's mistakes.

using Random = std::minstd_rand;

size_t below(size_t count, Random &random)
{
    return std::uniform_int_distribution<size_t>(0, count - 1)(random);
}

bool one_in(size_t count, Random &random)
{
    return below(count, random) == 0;
}

template <class Value, size_t count>
Value one_of(const std::array<Value, count> &values, Random &random)
{
    return values[below(count, random)];
}

void lose_data(mdm_msg_t &msg, const CategoryFormat &category)
{
    member_at<void *>(&msg.body, category.data) = nullptr;
}

// A positive size is never larger than the payload's.
void corrupt_data_size(mdm_msg_t &msg, const CategoryFormat &category, Random &random)
{
    constexpr int32_t lowest = std::numeric_limits<int32_t>::min();
    constexpr int32_t highest = std::numeric_limits<int32_t>::max();
    constexpr std::array<int32_t, 12> sizes = {0,   1,   -1,  -4,     -11,        -12,
                                               -13, -40, -60, lowest, lowest + 1, highest};
    auto &data_size = member_at<int32_t>(&msg.body, category.data_size);
    const bool has_data = value_at<void *>(&msg.body, category.data) != nullptr;
    data_size = std::min(one_of(sizes, random), has_data ? std::max(data_size, 1) : highest);
}

void put_list(void *place, GList *list)
{
    std::memcpy(place, &list, sizeof list);
}

// A list that begins with its second cell, as far as its owner knows.
void lose_first_cell(const SentMessage &sent, void *place)
{
    auto *list = value_at<GList *>(place, 0);
    if (list != nullptr && std::ranges::find(sent.lists, list) != sent.lists.end() &&
        list->next != nullptr) {
        put_list(place, list->next);
    }
}

void lose_first_cell_of_data(const SentMessage &sent, mdm_msg_t &msg,
                             const CategoryFormat &category)
{
    lose_first_cell(sent, &member_at<GList *>(&msg.body, category.data));
    if (sent.sends_pointer_as_param) {
        lose_first_cell(sent, &msg.body.misc.param_list);
    }
}

// Mistakes in the body's own pointers and its size.
void make_mistakes(const SentMessage &sent, mdm_msg_t &msg, const CategoryFormat &category,
                   Random &random)
{
    if (category.data == no_offset) {  // no payload could be missing
        return;
    }
    if (one_in(4, random)) {
        lose_first_cell_of_data(sent, msg, category);
    }
    if (one_in(4, random)) {
        lose_data(msg, category);
    }
    if (one_in(2, random)) {
        corrupt_data_size(msg, category, random);
    }
}

// Mistakes in the records and lists of a message, as long as this lives.
class Mistakes {
public:
    explicit Mistakes(const SentMessage &sent) : sent_(sent)
    {
        for (const void *place : sent.pointers) {
            right_.push_back(value_at<GList *>(place, 0));
        }
    }
    ~Mistakes()
    {
        for (size_t i = 0; i < right_.size(); ++i) {
            put_list(sent_.pointers[i], right_[i]);
        }
    }
    Mistakes(const Mistakes &) = delete;
    Mistakes &operator=(const Mistakes &) = delete;

    void make_one(Random &random)
    {
        if (sent_.pointers.empty()) {
            return;
        }
        void *place = sent_.pointers[below(sent_.pointers.size(), random)];
        one_in(3, random) ? lose_first_cell(sent_, place) : put_list(place, nullptr);
    }

private:
    const SentMessage &sent_;
    std::vector<GList *> right_;
};

void expect_no_harm(mdm_msg_t msg)
{
    mdm_msg_t other = msg;
    const auto bytes = sealed_with_trailer(msg);
    if (bytes) {
        RC_ASSERT(static_cast<bool>(opened(without_trailer(*bytes))));
        RC_ASSERT(*bytes == serialized_with_trailer(other));
        RC_ASSERT(are_same(msg, other));
    }
}

void expect_mistakes_to_do_no_harm(const CategoryFormat &category)
{
    const LogRecorder log(any_bool() ? MDM_LOG_DEBUG : MDM_LOG_NONE);
    const SentMessage sent = any_message(category);
    Random random(any_word());
    for (int i = 0; i < 8; ++i) {
        mdm_msg_t msg = sent.msg;
        Mistakes mistakes(sent);
        while (one_in(2, random)) {
            mistakes.make_one(random);
        }
        make_mistakes(sent, msg, category, random);
        expect_no_harm(msg);
    }
}

// Corrupted bytes.

void replace_word(Bytes &bytes, Random &random)
{
    if (bytes.size() < type_offset + 4) {
        return;
    }
    const size_t offset = type_offset + below(bytes.size() - type_offset - 3, random);
    const auto left = static_cast<uint32_t>(bytes.size() - offset - 4);
    const std::array<uint32_t, 8> values = {0xFFFFFFFF, 0x80000000, 0x7FFFFFFF, left,
                                            left + 1,   left - 1,   0,          1};
    put_word(bytes, offset, one_of(values, random));
}

void change_byte(Bytes &bytes, Random &random)
{
    bytes[below(bytes.size(), random)] ^= static_cast<uint8_t>(1U << below(8, random));
}

void cut(Bytes &bytes, Random &random)
{
    bytes.resize(below(bytes.size(), random) + 1);
}

// Goes on with the end of another message.
void splice(Bytes &bytes, const Bytes &other, Random &random)
{
    cut(bytes, random);
    bytes.insert(bytes.end(),
                 other.begin() + static_cast<std::ptrdiff_t>(below(other.size(), random)),
                 other.end());
}

Bytes corrupted(Bytes bytes, const Bytes &other, Random &random)
{
    do {
        switch (below(8, random)) {
        case 0:
            cut(bytes, random);
            break;
        case 1:
            splice(bytes, other, random);
            break;
        case 2:
        case 3:
            change_byte(bytes, random);
            break;
        default:
            replace_word(bytes, random);
        }
    } while (one_in(3, random));
    if (!one_in(8, random)) {
        correct_length(bytes);
    }
    return bytes;
}

// No description if the bytes are refused. All memory is released.
std::optional<std::string> description_of_opened(const Bytes &bytes, ipc_fault_t &fault)
{
    std::optional<std::string> description;
    AllocationTrace trace;
    {
        const Opened received = opened(bytes, &fault);
        const AllocationTrace::Pause pause;
        if (received != nullptr) {
            description = dump(*received);
        }
    }
    trace.stop();
    RC_ASSERT(trace.kept().empty());
    return description;
}

void expect_sending_on_to_do_no_harm(const Bytes &bytes)
{
    const Opened received = opened(bytes);
    expect_no_harm(*received);
}

void expect_same_fields_or_true_fault(const Bytes &bytes)
{
    ipc_fault_t fault = untouched_fault;
    const auto description = description_of_opened(bytes, fault);
    if (!description) {
        RC_ASSERT(is_true(fault, bytes.size()));
        return;
    }
    RC_ASSERT(is_untouched(fault));
    RC_ASSERT(*description == description_of_deserialized(bytes));
    expect_sending_on_to_do_no_harm(bytes);
}

void expect_corrupted_bytes_to_do_no_harm(const CategoryFormat &category)
{
    const LogRecorder log(any_bool() ? MDM_LOG_DEBUG : MDM_LOG_NONE);
    const SentMessage sent = any_message(category);
    const SentMessage other = any_message(category);
    const Bytes bytes = message_bytes(sent.msg, sent.first);
    const Bytes other_bytes = message_bytes(other.msg, other.first);
    expect_same_fields_or_true_fault(bytes);
    Random random(any_word());
    for (int i = 0; i < 8; ++i) {
        expect_same_fields_or_true_fault(corrupted(bytes, other_bytes, random));
    }
}

class GuardedProperty : public ::testing::TestWithParam<CategoryFormat> {
protected:
    static void expect_always(void (*property)(const CategoryFormat &))
    {
        EXPECT_TRUE(rc::check(GetParam().name, [property] { property(GetParam()); }));
    }
};

TEST_P(GuardedProperty, WhatASenderMayPassIsSealedAsSerialisedAndOpenedAsDeserialised)
{
    expect_always(expect_to_travel);
}

TEST_P(GuardedProperty, ASendersMistakesAreRefusedOrTheBytesCanBeOpened)
{
    expect_always(expect_mistakes_to_do_no_harm);
}

TEST_P(GuardedProperty, CorruptedBytesAreRefusedWithATrueFaultOrOpenedAsDeserialised)
{
    expect_always(expect_corrupted_bytes_to_do_no_harm);
}

INSTANTIATE_TEST_SUITE_P(Of, GuardedProperty, ::testing::ValuesIn(category_formats()),
                         [](const auto &test) { return std::string(test.param.name); });

}  // namespace
}  // namespace mdm::test::guarded_property_test
