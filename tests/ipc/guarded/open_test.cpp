// SPDX-License-Identifier: Apache-2.0
//
// For any bytes, ipc_open() reads no byte behind them and leaks no memory. It makes the message of
// ipc_deserialize(), or refuses the bytes with a true fault. The tests start from whole messages of
// every form and corrupt them.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <iomanip>
#include <map>
#include <span>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mdm/guarded.h"
#include "support/allocation_trace.hpp"
#include "support/dump.hpp"
#include "support/fault.hpp"
#include "support/format.hpp"
#include "support/guard_page.hpp"
#include "support/handlers.hpp"
#include "support/log_recorder.hpp"
#include "support/messages.hpp"
#include "support/wire.hpp"

namespace mdm::test::guarded_open_test {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

uint32_t size_of(const Bytes &bytes)
{
    return static_cast<uint32_t>(bytes.size());
}

// Corruption.

Bytes extended(const Bytes &bytes, size_t count)
{
    Bytes longer = bytes + Bytes(count);
    correct_length(longer);
    return longer;
}

// Cut at every length, once with the length field that this makes true and once as it was.
std::vector<Bytes> cuts_of(const Bytes &bytes)
{
    std::vector<Bytes> all;
    for (size_t size = 0; size < bytes.size(); ++size) {
        all.push_back(first_bytes(bytes, size));
        all.push_back(cut(bytes, size));
    }
    return all;
}

// The word at an offset replaced by values that no count, length or size should have.
std::vector<Bytes> with_other_word(const Bytes &bytes, size_t offset)
{
    const auto left = static_cast<uint32_t>(bytes.size() - offset - 4);
    std::vector<Bytes> all;
    for (const uint32_t value :
         {0xFFFFFFFFU, 0x80000000U, 0x7FFFFFFFU, left, left + 1, left - 1, 0U, 1U}) {
        Bytes corrupted = bytes;
        put_word(corrupted, offset, value);
        if (corrupted != bytes) {
            all.push_back(corrupted);
        }
    }
    return all;
}

std::vector<Bytes> with_other_words(const Bytes &bytes)
{
    std::vector<Bytes> all;
    for (size_t offset = 0; offset + 4 <= bytes.size(); ++offset) {
        std::ranges::move(with_other_word(bytes, offset), std::back_inserter(all));
    }
    return all;
}

// The 256 values of a byte.
std::vector<Bytes> with_other_byte(const Bytes &bytes, size_t offset)
{
    std::vector<Bytes> all(256, bytes);
    for (size_t value = 0; value < all.size(); ++value) {
        all[value][offset] = static_cast<uint8_t>(value);
    }
    return all;
}

// The outcome of opening.

struct Outcome {
    bool is_open = false;
    std::string fields;  // of the message, if it is open
    ipc_fault_t fault = untouched_fault;
    std::vector<LogLine> log;  // the critical lines
};

void note(Outcome &outcome, const mdm_msg_t *msg, LogRecorder &log)
{
    const AllocationTrace::Pause pause;
    outcome.is_open = msg != nullptr;
    if (msg != nullptr) {
        outcome.fields = dump(*msg);
    }
    outcome.log = log.take();
}

// A trace holds the blocks of so many messages.
constexpr size_t batch_size = 16;
using Batch = std::span<const Bytes>;

// Mapped once, because so many buffers need one. Holds the largest of them.
GuardedBytes &shared_buffer()
{
    static GuardedBytes buffer(Bytes(8192));
    return buffer;
}

// Opens, reads and closes each, with an unreadable page behind it.
std::vector<Outcome> outcomes_of(Batch batch)
{
    std::vector<Outcome> outcomes(batch.size());
    GuardedBytes &buffer = shared_buffer();
    LogRecorder log(MDM_LOG_CRITICAL);
    AllocationTrace trace;
    for (size_t i = 0; i < batch.size(); ++i) {
        buffer.assign(batch[i]);
        mdm_msg_t *msg = ipc_open(buffer.data(), size_of(batch[i]), &outcomes[i].fault);
        note(outcomes[i], msg, log);
        ipc_close(msg);
    }
    trace.stop();
    EXPECT_THAT(trace.kept(), IsEmpty());
    return outcomes;
}

// The fields that deserialising makes of each, if it was opened.
std::vector<std::string> deserialised(Batch batch, std::span<const Outcome> outcomes)
{
    std::vector<std::string> all(batch.size());
    const LogRecorder log(MDM_LOG_NONE);
    AllocationTrace trace;
    for (size_t i = 0; i < batch.size(); ++i) {
        if (outcomes[i].is_open) {
            mdm_msg_t msg;
            std::memset(&msg, 0, sizeof msg);  // also the bytes of a union that {} may leave
            EXPECT_EQ(ipc_deserialize(&msg, batch[i].data(), size_of(batch[i])), 0);
            const AllocationTrace::Pause pause;
            all[i] = dump(msg);
        }
    }
    trace.stop();
    release_blocks(trace.kept());
    return all;
}

void expect_refused(const Outcome &outcome, const Bytes &bytes)
{
    EXPECT_TRUE(is_true(outcome.fault, bytes.size())) << text_of(outcome.fault);
    EXPECT_EQ(outcome.log, std::vector{critical(from::ipc_open, refusal_line(outcome.fault))});
}

void expect_opened(const Outcome &outcome, const std::string &fields)
{
    EXPECT_EQ(outcome.fields, fields);
    EXPECT_THAT(outcome.fields, ::testing::Not(HasSubstr("broken link")));
    EXPECT_TRUE(is_untouched(outcome.fault));
    EXPECT_THAT(outcome.log, IsEmpty());
}

std::string printed(const Bytes &bytes)
{
    std::ostringstream out;
    for (const uint8_t byte : bytes) {
        out << std::hex << std::setw(2) << std::setfill('0') << unsigned{byte} << ' ';
    }
    return out.str();
}

void expect_sound(Batch batch)
{
    const std::vector<Outcome> outcomes = outcomes_of(batch);
    const std::vector<std::string> fields = deserialised(batch, outcomes);
    for (size_t i = 0; i < batch.size(); ++i) {
        outcomes[i].is_open ? expect_opened(outcomes[i], fields[i])
                            : expect_refused(outcomes[i], batch[i]);
        ASSERT_FALSE(::testing::Test::HasFailure()) << printed(batch[i]);
    }
}

// Checks for each of these bytes all rules that hold for any bytes.
void expect_sound(const std::string &name, const std::vector<Bytes> &all)
{
    const Batch batch(all);
    for (size_t begin = 0; begin < all.size(); begin += batch_size) {
        expect_sound(batch.subspan(begin, std::min(batch_size, all.size() - begin)));
        ASSERT_FALSE(::testing::Test::HasFailure()) << "one of " << name;
    }
}

Outcome outcome_of(const Bytes &bytes)
{
    return outcomes_of(std::array{bytes})[0];
}

// The fields of a message that is opened by itself, and outlives its bytes.
std::string fields_of(const Bytes &bytes)
{
    Opened msg;
    {
        const GuardedBytes buffer(bytes);
        msg.reset(ipc_open(buffer.data(), size_of(bytes), nullptr));
    }
    return msg == nullptr ? "not opened" : dump(*msg);
}

std::string deserialised_fields_of(const Bytes &bytes)
{
    Outcome any;
    any.is_open = true;
    return deserialised(std::array{bytes}, std::array{any})[0];
}

// Good messages.

TEST(Open, EveryFormHoldsWhatDeserialisingMakesOfIt)
{
    for (const GoodMessage &good : good_messages()) {
        EXPECT_EQ(fields_of(good.bytes), deserialised_fields_of(good.bytes)) << good.name;
    }
}

TEST(Open, TheBytesMayStandAtAnyAddress)
{
    for (const GoodMessage &good : good_messages()) {
        for (uint32_t count = 1; count < 8; ++count) {
            Bytes bytes = good.bytes;
            lengthen_text(bytes, count);
            correct_length(bytes);
            ASSERT_EQ(fields_of(bytes), deserialised_fields_of(bytes)) << good.name;
        }
    }
}

// Fills blocks of these sizes with a pattern and releases them, so that the next allocations reuse
// them.
void soil(const std::vector<size_t> &block_sizes)
{
    std::vector<void *> blocks;
    for (const size_t size : block_sizes) {
        void *block = std::malloc(size);
        std::memset(block, 0xA5, size);
        __asm__ volatile("" : : "r"(block) : "memory");  // or it is no use filling it
        blocks.push_back(block);
    }
    std::ranges::for_each(blocks.rbegin(), blocks.rend(), std::free);
}

// The blocks have a size that the C library keeps no list for: it would clear a part of them.
TEST(Open, FieldsThatDidNotTravelAreZeroInMemoryThatWasUsedBefore)
{
    for (const GoodMessage &good : good_messages()) {
        const Bytes bytes = extended(good.bytes, 1000);
        AllocationTrace trace;
        ipc_close(ipc_open(bytes.data(), size_of(bytes), nullptr));
        trace.stop();
        soil(trace.allocated_sizes());
        mdm_msg_t *msg = ipc_open(bytes.data(), size_of(bytes), nullptr);
        ASSERT_NE(msg, nullptr) << good.name;
        EXPECT_EQ(dump(*msg), deserialised_fields_of(bytes)) << good.name;
        ipc_close(msg);
    }
}

TEST(Open, NeitherFaultNorMessageIsNeeded)
{
    const Bytes bytes = framed(16, head_bytes(1, 0));
    ipc_close(nullptr);
    ipc_close(ipc_open(bytes.data(), size_of(bytes), nullptr));
    EXPECT_EQ(ipc_open(bytes.data(), size_of(bytes) - 1, nullptr), nullptr);
    EXPECT_EQ(ipc_open(nullptr, 0, nullptr), nullptr);
}

// The log holds no text of a message.
TEST(Open, LogsItsEntryAndItsExit)
{
    for (const GoodMessage &good : good_messages()) {
        LogRecorder log;
        ipc_close(ipc_open(good.bytes.data(), size_of(good.bytes), nullptr));
        EXPECT_EQ(log.take(), enter_and_leave(from::ipc_open)) << good.name;
    }
}

// Every message cut anywhere: the header, a head, a count, a record, a list.
TEST(Open, LogsOneLineForARefusal)
{
    for (const GoodMessage &good : good_messages()) {
        for (size_t size = 0; size < good.bytes.size(); size += 3) {
            const bool has_header = size >= header_size;
            const Bytes bytes = has_header ? cut(good.bytes, size) : first_bytes(good.bytes, size);
            LogRecorder log;
            ipc_fault_t fault = untouched_fault;
            const Opened msg = opened(bytes, &fault);
            ASSERT_EQ(msg == nullptr, !is_untouched(fault));
            ASSERT_EQ(log.take(), lines_of(from::ipc_open, fault)) << good.name << ' ' << size;
        }
    }
}

TEST(Open, LogsNothingButTheRefusalInFrontOfTheExit)
{
    const Bytes bytes = framed(19, {});
    LogRecorder log;
    EXPECT_EQ(ipc_open(bytes.data(), 39, nullptr), nullptr);
    EXPECT_THAT(
        log.take(),
        ElementsAre(
            enter(from::ipc_open),
            critical(from::ipc_open,
                     "Refused: header.length: a message has 40 bytes or more, 39 are there"),
            leave(from::ipc_open)));
}

TEST(Open, ManyThreadsMayOpenAtOnce)
{
    const auto open_all = [] {
        std::vector<std::string> fields;
        for (const GoodMessage &good : good_messages()) {
            fields.push_back(fields_of(good.bytes));
        }
        return fields;
    };
    EXPECT_THAT(in_four_threads(open_all), Each(open_all()));
}

// Particular forms.

// Q-GUARDED-6
TEST(Open, ATypeWithoutCategoryHasTheHeaderOnly)
{
    for (const uint8_t type : types_without_category()) {
        const std::string fields =
            fields_of(framed(static_cast<uint8_t>(type), hex("FF FF FF FF")));
        EXPECT_THAT(fields, StartsWith("header 0 " + std::to_string(type) + " 90 "));
        EXPECT_THAT(fields, HasSubstr("\nno body\n"));
    }
}

TEST(Open, RawBytesOfPhoneResItemsAreHarmless)
{
    for (const uint32_t type : {439U, 440U}) {
        const Bytes pointers(24, uint8_t{0x41});
        const Bytes bytes = framed(35, head_bytes(type, 24) + pointers);
        const Opened msg = opened(bytes);
        ASSERT_NE(msg, nullptr);
        EXPECT_EQ(msg->body.phone_res.data_size, 24);
        EXPECT_STREQ(static_cast<const char *>(msg->body.phone_res.data),
                     std::string(24, 'A').c_str());
    }
}

TEST(Open, RawBytesEndAtTheirFirstZeroAndAreZeroBehindIt)
{
    const Bytes bytes = framed(33, head_bytes(1, 5) + hex("61 62 00 63 64"));
    const Opened msg = opened(bytes);
    ASSERT_NE(msg, nullptr);
    const auto *data = static_cast<const uint8_t *>(msg->body.res.data);
    EXPECT_EQ(Bytes(data, data + 6), hex("61 62 00 00 00 00"));
}

template <class Record>
void expect_aligned(const void *list, size_t length)
{
    EXPECT_EQ(elements_of(list).size(), length);
    for (const void *cell : cells_of(list)) {
        EXPECT_EQ(reinterpret_cast<uintptr_t>(cell) % alignof(GList), 0U);
    }
    for (const void *element : elements_of(list)) {
        EXPECT_EQ(reinterpret_cast<uintptr_t>(element) % alignof(Record), 0U);
    }
}

TEST(Open, RecordsAndCellsAreAligned)
{
    const Bytes keys = framed(45, head_bytes(618, 1) + word(3) + Bytes(12), "odd");
    const Opened msg = opened(keys);
    ASSERT_NE(msg, nullptr);
    expect_aligned<uint32_t>(msg->body.kiosk.data, 3);

    const Bytes items = framed(14, word(140) + word(0) + str("odd") + word(1) + word(3) + str("a") +
                                       word(1) + str("bcd") + word(2) + str("e") + word(3));
    const Opened other = opened(items);
    ASSERT_NE(other, nullptr);
    expect_aligned<mdm_app_res_item_t>(other->body.app_res.data, 3);
}

// As many as need further memory: few of them have a text, and each needs a pointer at least.
TEST(Open, ManyElementsAndTheirTextsStandBesideEachOther)
{
    constexpr uint32_t count = 1000;
    Bytes texts;
    Bytes items;
    for (uint32_t i = 0; i < count; ++i) {
        const Bytes text = str(i % 50 == 0 ? "element " + std::to_string(i) : "");
        texts.insert(texts.end(), text.begin(), text.end());
        const Bytes item = text + word(i);
        items.insert(items.end(), item.begin(), item.end());
    }
    for (const Bytes &bytes :
         {framed(17, head_bytes(122, count) + texts, "text of the header"),
          framed(9, head_bytes(223, 1) + word(count) + texts),
          framed(14, word(140) + word(0) + str("") + word(1) + word(count) + items)}) {
        EXPECT_EQ(fields_of(bytes), deserialised_fields_of(bytes));
    }
}

TEST(Open, TheNumberInTheParamOfAMiscListIsDiscarded)
{
    for (const uint32_t type : {127U, 128U}) {
        const Bytes bytes = framed(17, word(type) + hex("DE AD BE EF") + word(0) + word(0));
        const Opened msg = opened(bytes);
        ASSERT_NE(msg, nullptr);
        EXPECT_EQ(msg->body.misc.param_list, nullptr);
        EXPECT_EQ(msg->body.misc.data, nullptr);
    }
}

TEST(Open, ACountBelowOneIsAnEmptyList)
{
    for (const uint32_t count : {0U, 0xFFFFFFFFU, 0x80000000U}) {
        const Bytes bytes = framed(7, head_bytes(290, 1) + word(count));
        const Opened msg = opened(bytes);
        ASSERT_NE(msg, nullptr);
        EXPECT_EQ(msg->body.wifi.data, nullptr);
    }
}

// Q-ENVELOPE-17
TEST(Open, BytesBehindABodyAreIgnored)
{
    for (const GoodMessage &good : good_messages()) {
        Bytes longer = good.bytes + Bytes(9, uint8_t{0xFF});
        correct_length(longer);
        EXPECT_EQ(fields_of(longer), fields_of(good.bytes)) << good.name;
    }
}

// Corrupted messages.

TEST(Open, AnyCutIsOpenedOrRefused)
{
    for (const GoodMessage &good : good_messages()) {
        ASSERT_NO_FATAL_FAILURE(expect_sound(good.name, cuts_of(good.bytes)));
    }
}

TEST(Open, AnyWordMayStandAnywhere)
{
    for (const GoodMessage &good : good_messages()) {
        ASSERT_NO_FATAL_FAILURE(expect_sound(good.name, with_other_words(good.bytes)));
    }
}

TEST(Open, AnyTypeMayHaveAnyBody)
{
    for (const GoodMessage &good : good_messages()) {
        ASSERT_NO_FATAL_FAILURE(expect_sound(good.name, with_other_byte(good.bytes, type_offset)));
    }
}

// The shortest body of each form.
std::vector<GoodMessage> short_bodies()
{
    std::map<const Form *, GoodMessage> shortest;
    for (const GoodMessage &good : good_messages()) {
        if (!good.has_payload) {
            continue;
        }
        const auto [entry, is_first] = shortest.emplace(good.form, good);
        if (!is_first && good.bytes.size() < entry->second.bytes.size()) {
            entry->second = good;
        }
    }
    constexpr size_t short_body = 28;
    std::vector<GoodMessage> all;
    for (const auto &[form, good] : shortest) {
        if (good.bytes.size() <= header_size + short_body) {
            all.push_back(good);
        }
    }
    return all;
}

TEST(Open, AnyByteMayStandInABody)
{
    const std::vector<GoodMessage> bodies = short_bodies();
    EXPECT_GT(bodies.size(), category_formats().size());
    for (const GoodMessage &good : bodies) {
        for (size_t offset = header_size; offset < good.bytes.size(); ++offset) {
            ASSERT_NO_FATAL_FAILURE(expect_sound(good.name, with_other_byte(good.bytes, offset)));
        }
    }
}

TEST(Open, AnyByteMayStandInTheHeader)
{
    const Bytes bytes = framed(33, head_bytes(1, 2) + hex("6F 6B"), "text");
    for (size_t offset = 0; offset < header_size + 4; ++offset) {
        ASSERT_NO_FATAL_FAILURE(expect_sound("res", with_other_byte(bytes, offset)));
    }
}

// The discriminators of a category, and all around them.
TEST(Open, AnyDiscriminatorIsReadAsDeserialisingReadsIt)
{
    for (const CategoryFormat &category : category_formats()) {
        std::vector<Bytes> all;
        for (uint32_t discriminator = 0; discriminator < 1001; ++discriminator) {
            all.push_back(framed(category.first_type(),
                                 zeroed_head(category, discriminator, 4) + word(1) + Bytes(120)));
        }
        ASSERT_NO_FATAL_FAILURE(expect_sound(category.name, all));
    }
}

// A fault needs exactly the bytes that it says: with one byte fewer the fault is the same, and with
// all of them the reading goes on.
void expect_enough_when_given(const Bytes &bytes)
{
    const Outcome before = outcome_of(bytes);
    const uint32_t missing = before.fault.needed - before.fault.left;
    if (before.is_open || missing > 4096) {
        return;
    }
    const Outcome one_fewer = outcome_of(extended(bytes, missing - 1));
    ASSERT_FALSE(one_fewer.is_open);
    EXPECT_STREQ(one_fewer.fault.path, before.fault.path);
    EXPECT_EQ(one_fewer.fault.offset, before.fault.offset);
    EXPECT_EQ(one_fewer.fault.needed, before.fault.needed);

    const Outcome enough = outcome_of(extended(bytes, missing));
    EXPECT_TRUE(enough.is_open || enough.fault.offset > before.fault.offset);
}

TEST(Open, NeedsNoMoreThanItSays)
{
    for (const GoodMessage &good : good_messages()) {
        for (size_t size = header_size; size < good.bytes.size(); ++size) {
            expect_enough_when_given(cut(good.bytes, size));
            ASSERT_FALSE(HasFailure()) << good.name << " cut at " << size;
        }
    }
}

TEST(Open, NeedsNoMoreThanAFalseWordAsksFor)
{
    for (const GoodMessage &good : good_messages()) {
        for (size_t offset = header_size; offset + 4 <= good.bytes.size(); ++offset) {
            Bytes corrupted = good.bytes;
            put_word(corrupted, offset, static_cast<uint32_t>(good.bytes.size() - offset - 3));
            expect_enough_when_given(corrupted);
            ASSERT_FALSE(HasFailure()) << good.name << " at " << offset;
        }
    }
}

}  // namespace
}  // namespace mdm::test::guarded_open_test
