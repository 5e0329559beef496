// SPDX-License-Identifier: Apache-2.0
//
// How much memory bytes can make ipc_open() ask for, whether they are opened or refused.
#include <algorithm>
#include <array>
#include <numeric>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mdm/guarded.h"
#include "support/allocation_trace.hpp"
#include "support/fault.hpp"
#include "support/handlers.hpp"
#include "support/log_recorder.hpp"
#include "support/messages.hpp"
#include "support/no_memory.hpp"
#include "support/wire.hpp"
#include "wire/arena.hpp"

namespace mdm::test::guarded_memory_test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// The bound that mdm/guarded.h promises.
constexpr size_t times_length = sizeof(void *) == 8 ? 10 : 6;
constexpr size_t constant = 4096;

constexpr std::array<size_t, 6> sizes = {100, 270, 1000, 5000, 65536, 1048576};

// The sum of all blocks that opening asks for. All of them are back when the message is closed.
size_t memory_of(const Bytes &bytes, bool is_good)
{
    const LogRecorder log(MDM_LOG_NONE);
    AllocationTrace trace;
    mdm_msg_t *msg = ipc_open(bytes.data(), static_cast<uint32_t>(bytes.size()), nullptr);
    ipc_close(msg);
    trace.stop();
    EXPECT_EQ(msg != nullptr, is_good);
    EXPECT_THAT(trace.kept(), IsEmpty());
    const std::vector<size_t> blocks = trace.allocated_sizes();
    return std::accumulate(blocks.begin(), blocks.end(), size_t{0});
}

void expect_little(const Bytes &bytes, bool is_good)
{
    EXPECT_LE(memory_of(bytes, is_good), times_length * bytes.size() + constant) << bytes.size();
}

void expect_little_opened(const Bytes &bytes)
{
    expect_little(bytes, true);
}

void expect_little_refused(const Bytes &bytes)
{
    expect_little(bytes, false);
}

// A list whose elements are as small as can be: zeros, from which any count and number is made.
struct List {
    const CategoryFormat *category;
    const Form *form;

    // The bytes that an element takes at least.
    size_t smallest() const
    {
        return form->payload == Payload::strings ? 4 : smallest_size(form->fields);
    }

    // From the count of its last text to its end; 0 for a list of numbers.
    size_t last_text() const
    {
        size_t size = form->payload == Payload::strings ? 4 : 0;
        for (const Field &field : form->fields) {
            const bool has_count = field.type == Type::text || field.type == Type::strings;
            size = has_count ? 4 : size + (size == 0 ? 0 : smallest_size(field));
        }
        return size;
    }

    Bytes message(uint32_t count, size_t size) const
    {
        const uint32_t type = discriminators_of(*category, *form).front();
        return framed(category->first_type(),
                      zeroed_head(*category, type, 1) + word(count) + Bytes(size));
    }

    // As many elements as a message of this size holds.
    uint32_t fitting(size_t size) const
    {
        return static_cast<uint32_t>((size - message(0, 0).size()) / smallest());
    }
    Bytes fitted(size_t size) const
    {
        const uint32_t count = fitting(size);
        return message(count, count * smallest());
    }
};

std::ostream &operator<<(std::ostream &out, const List &list)
{
    return out << list.category->name << '_' << list.form->name;
}

std::vector<List> lists()
{
    std::vector<List> all;
    for (const CategoryFormat &category : category_formats()) {
        for (const Form &form : category.forms) {
            if (form.payload == Payload::strings || form.payload == Payload::records) {
                all.push_back({&category, &form});
            }
        }
    }
    return all;
}

class WorstList : public ::testing::TestWithParam<List> {};

TEST_P(WorstList, IsWithinTheBound)
{
    for (const size_t size : sizes) {
        expect_little_opened(GetParam().fitted(size));
    }
}

// Refused for the last text, with all in front of it read.
TEST_P(WorstList, IsWithinTheBoundIfItFailsLate)
{
    for (const size_t size : sizes) {
        if (GetParam().last_text() != 0 && GetParam().fitting(size) > 0) {
            Bytes bytes = GetParam().fitted(size);
            bytes[bytes.size() - GetParam().last_text()] = 5;
            expect_little_refused(bytes);
        }
    }
}

TEST_P(WorstList, AsksForNothingBecauseOfACountThatCannotBe)
{
    for (const uint32_t count : {0x7FFFFFFFU, 0x10000000U, 1000U}) {
        EXPECT_LE(memory_of(GetParam().message(count, 16), false), constant);
    }
    // Every message gets room for records and for texts at the beginning.
    for (const size_t size : sizes) {
        const Bytes bytes = GetParam().message(GetParam().fitting(size) + 2, size - 64);
        EXPECT_LE(memory_of(bytes, false), 2 * bytes.size() + constant) << bytes.size();
    }
}

INSTANTIATE_TEST_SUITE_P(Of, WorstList, ::testing::ValuesIn(lists()), [](const auto &test) {
    std::string name = std::string(test.param.category->name) + "_" + test.param.form->name;
    std::ranges::replace(name, '-', '_');
    return name;
});

// An array's count is its size.

Bytes misc_array(uint32_t count, size_t size)
{
    return framed(17, head_bytes(122, static_cast<int32_t>(count)) + Bytes(size));
}

TEST(Memory, OfAnArrayOfEmptyStringsIsWithinTheBound)
{
    for (const size_t size : sizes) {
        const auto count = static_cast<uint32_t>((size - 52) / 4);
        expect_little_opened(misc_array(count, size_t{count} * 4));
        Bytes late = misc_array(count, size_t{count} * 4);
        late[late.size() - 4] = 1;
        expect_little_refused(late);
    }
}

TEST(Memory, OfAnArrayThatCannotBeIsNone)
{
    for (const uint32_t count : {0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU, 0x20000000U, 1000U}) {
        EXPECT_LE(memory_of(misc_array(count, 16), false), constant);
    }
}

// Texts.

TEST(Memory, OfOneLongTextIsWithinTheBound)
{
    for (const size_t size : sizes) {
        const std::string text(size - 60, 'x');
        expect_little_opened(framed(19, {}, text));
        expect_little_opened(framed(7, head_bytes(305, 1) + str(text) + str("")));
        expect_little_opened(framed(45, head_bytes(612, 1) + str(text)));
        Bytes cut = framed(7, head_bytes(305, 1) + str(text) + str("a"));
        cut[cut.size() - 5] = 2;
        expect_little_refused(cut);
    }
}

TEST(Memory, OfRawBytesIsWithinTheBound)
{
    for (const size_t size : sizes) {
        const auto count = static_cast<int32_t>(size - 52);
        const Bytes payload(size - 52);
        expect_little_opened(framed(33, head_bytes(1, count) + payload));
        expect_little_opened(framed(17, head_bytes(1, count) + payload));
        expect_little_refused(framed(33, head_bytes(1, count + 1) + payload));
    }
}

TEST(Memory, OfATextThatCannotBeIsNone)
{
    for (const uint32_t length : {0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU, 1000U}) {
        const Bytes text = word(length) + Bytes(16);
        EXPECT_LE(memory_of(framed(7, head_bytes(305, 1) + text), false), constant);
        EXPECT_LE(memory_of(framed(53, word(439) + text), false), constant);
        EXPECT_LE(memory_of(framed(33, head_bytes(1, INT32_MAX) + text), false), constant);
        Bytes header = framed(19, Bytes(16));
        std::ranges::copy(word(length), header.begin() + 16);
        EXPECT_LE(memory_of(header, false), constant);
    }
}

// Lists of texts of different sizes: the rest of a block is too small again and again.

Bytes named(const std::vector<size_t> &text_sizes, uint8_t message_type = 9, uint32_t type = 223)
{
    Bytes body = head_bytes(type, 1) + word(static_cast<uint32_t>(text_sizes.size()));
    for (const size_t size : text_sizes) {
        const Bytes text = str(std::string(size, 'n'));
        body.insert(body.end(), text.begin(), text.end());
    }
    return framed(message_type, body);
}

TEST(Memory, OfTextsThatAreEachTooLargeForTheRestOfABlockIsWithinTheBound)
{
    for (const size_t size : {1U, 2U, 7U, 8U, 17U, 31U, 100U, 1000U, 5000U}) {
        for (const size_t total : {300U, 5000U, 60000U}) {
            expect_little_opened(named(std::vector<size_t>(total / (size + 4) + 1, size)));
        }
    }
}

TEST(Memory, OfALongTextBehindManyEmptyOnesIsWithinTheBound)
{
    for (const size_t empty : {10U, 100U, 1000U, 5000U}) {
        for (size_t eighths = 1; eighths <= 64; eighths += 3) {
            std::vector<size_t> text_sizes(empty, 0);
            text_sizes.push_back(empty * eighths / 2);
            expect_little_opened(named(text_sizes));
            text_sizes.insert(text_sizes.end(), empty, 0);
            expect_little_opened(named(text_sizes));
        }
    }
}

TEST(Memory, OfTextsThatGrowAndShrinkIsWithinTheBound)
{
    std::vector<size_t> growing;
    for (size_t size = 1; size < 20000; size = size * 5 / 4 + 1) {
        growing.insert(growing.end(), 3, 0);
        growing.push_back(size);
    }
    expect_little_opened(named(growing));
    std::ranges::reverse(growing);
    expect_little_opened(named(growing));
}

// No more than the same strings in a category that has one copy on either path. They are as long as
// to need new memory if there were two.
// Q-GUARDED-1
TEST(Open, ASecurityStringIsThereOnce)
{
    const std::vector<size_t> text_sizes(1000, 32);
    EXPECT_EQ(memory_of(named(text_sizes, 5, 68), true), memory_of(named(text_sizes), true));
}

TEST(Memory, OfARefusedHeaderIsNone)
{
    Bytes bytes(1000);
    EXPECT_EQ(memory_of(bytes, false), 0U);
    bytes = framed(0, Bytes(1000));
    EXPECT_EQ(memory_of(bytes, false), 0U);
    EXPECT_EQ(memory_of({}, false), 0U);
}

// Every good message is short: the constant and a little more.
TEST(Memory, OfEveryFormIsWithinTheBound)
{
    for (const GoodMessage &good : good_messages()) {
        expect_little_opened(good.bytes);
    }
}

// Without memory.

struct Refusal {
    ipc_fault_t fault{};
    std::vector<LogLine> lines;
};

// Opens with so many allocations that succeed. No refusal if they are enough.
std::optional<Refusal> refusal_of_opening(const Bytes &bytes, size_t allocations)
{
    Refusal refusal;
    LogRecorder log(MDM_LOG_CRITICAL);
    AllocationTrace trace;
    mdm_msg_t *msg = nullptr;
    {
        const NoMemory no_memory(allocations);
        msg = ipc_open(bytes.data(), static_cast<uint32_t>(bytes.size()), &refusal.fault);
    }
    ipc_close(msg);
    trace.stop();
    EXPECT_THAT(trace.kept(), IsEmpty());
    refusal.lines = log.take();
    return msg == nullptr ? std::optional(refusal) : std::nullopt;
}

// Takes one allocation after the other away. Returns how many it takes to open the bytes.
size_t expect_refusals_without_memory(const Bytes &bytes)
{
    for (size_t allocations = 0;; ++allocations) {
        const auto refusal = refusal_of_opening(bytes, allocations);
        if (!refusal) {
            return allocations;
        }
        EXPECT_STREQ(refusal->fault.path, "memory");
        EXPECT_LE(refusal->fault.offset, bytes.size());
        EXPECT_GT(refusal->fault.needed, 0U);
        EXPECT_LE(refusal->fault.needed, times_length * bytes.size() + constant);
        EXPECT_EQ(refusal->fault.left, 0U);
        EXPECT_THAT(refusal->lines,
                    ElementsAre(critical(from::ipc_open, refusal_line(refusal->fault))));
    }
}

TEST(NoMemoryToOpen, IsAFaultForEveryForm)
{
    for (const GoodMessage &good : good_messages()) {
        SCOPED_TRACE(good.name);
        EXPECT_GE(expect_refusals_without_memory(good.bytes), 1U);
    }
}

TEST_P(WorstList, IsRefusedWithoutMemory)
{
    // Empty strings of one category do not arrive: they need no cells.
    const size_t least = GetParam().form->elements == Elements::lose_empty ? 1 : 2;
    EXPECT_GE(expect_refusals_without_memory(GetParam().fitted(5000)), least);
}

TEST(NoMemoryToOpen, IsAFaultForAnArray)
{
    // Where pointers have 32 bits, the first block has room for it.
    EXPECT_EQ(expect_refusals_without_memory(misc_array(1000, 4000)),
              sizeof(void *) == 8 ? 2U : 1U);
}

TEST(NoMemoryToOpen, IsAFaultForARecordThatIsLargerThanItsBytes)
{
    const Bytes network = framed(7, head_bytes(345, 1) + str("") + word(1) + word(7));
    EXPECT_GE(expect_refusals_without_memory(network), sizeof(void *) == 8 ? 2U : 1U);
}

// The arena by itself: a smaller block than a pointer takes the place of a pointer.
TEST(Arena, HasRoomForWhatItHasGrownFor)
{
    Arena arena(0);
    mdm_msg_t *msg = arena.message();
    ASSERT_NE(msg, nullptr);
    EXPECT_EQ(arena.take(1), nullptr);
    EXPECT_TRUE(arena.grow(1, 0));
    EXPECT_NE(arena.take(1), nullptr);
    EXPECT_EQ(arena.take(1), nullptr);
    Arena::release(msg);
}

// The fault of the first block.
TEST(NoMemoryToOpen, SaysWhatWasAskedFor)
{
    const Bytes bytes = framed(19, {}, "text");
    const auto refusal = refusal_of_opening(bytes, 0);
    ASSERT_TRUE(refusal.has_value());
    EXPECT_EQ(refusal->fault.offset, 8U);
    EXPECT_EQ(refusal->fault.needed, sizeof(void *) + sizeof(mdm_msg_t) + 2 * bytes.size());
}

TEST(NoMemoryToSeal, IsAFaultThatLeavesTheMessageAsItWas)
{
    mdm_apn_account_t profile{};
    mdm_msg_t msg = message(21);
    msg.body.apn.type = 387;
    msg.body.apn.data_size = 1;
    msg.body.apn.data = &profile;
    LogRecorder log(MDM_LOG_CRITICAL);
    uint32_t length = untouched_length;
    ipc_fault_t fault{};
    uint8_t *buffer = nullptr;
    {
        const NoMemory no_memory;
        buffer = ipc_seal(&msg, &length, &fault);
    }
    EXPECT_EQ(buffer, nullptr);
    EXPECT_EQ(length, untouched_length);
    EXPECT_STREQ(fault.path, "memory");
    EXPECT_EQ(fault.offset, 0U);
    EXPECT_EQ(fault.needed, 113U + 5);
    EXPECT_EQ(fault.left, 0U);
    EXPECT_EQ(msg.body.apn.data_size, 1);
    EXPECT_THAT(log.take(),
                ElementsAre(critical(from::ipc_seal, "Refused: there is no memory for 118 bytes")));

    buffer = ipc_seal(&msg, &length, &fault);
    EXPECT_EQ(length, 113U);
    g_free(buffer);
}

// 60 bytes that ask for 2 GiB of zeros.
TEST(NoMemoryToSeal, IsNotAskedForZerosThatNoSenderMeans)
{
    const std::vector<std::pair<uint8_t, uint32_t>> forms = {{7, 305},  {8, 88},   {7, 319},
                                                             {21, 387}, {22, 393}, {11, 104}};
    for (const auto &[message_type, type] : forms) {
        SCOPED_TRACE(type);
        const Bytes bytes = framed(message_type, head_bytes(type, 0x7FFFFF00) + Bytes(60));
        const Opened msg = opened(bytes);
        ASSERT_NE(msg, nullptr);
        uint32_t length = 0;
        ipc_fault_t fault{};
        AllocationTrace trace;
        uint8_t *buffer = ipc_seal(msg.get(), &length, &fault);
        trace.stop();
        g_free(buffer);
        ASSERT_EQ(buffer, nullptr);
        EXPECT_THAT(trace.allocated_sizes(), ::testing::Each(::testing::Lt(constant)));
        EXPECT_TRUE(std::string_view(fault.path).ends_with(".data_size")) << fault.path;
    }
}

}  // namespace
}  // namespace mdm::test::guarded_memory_test
