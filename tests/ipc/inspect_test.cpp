// SPDX-License-Identifier: Apache-2.0
//
// For any bytes, ipc_inspect() shows parts that cover them one after the other, and comes to the
// verdict of ipc_open(). The parts are those of a second reader, which knows the format from the
// tests' own description, and their values are those of the opened message. ipc_compose() makes the
// same bytes of them. The tests start from whole messages of every form and corrupt them.
#include <algorithm>
#include <atomic>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mdm/guarded.h"
#include "mdm/inspect.h"
#include "mdm/result.h"
#include "support/allocation_trace.hpp"
#include "support/fault.hpp"
#include "support/format.hpp"
#include "support/guard_page.hpp"
#include "support/log_recorder.hpp"
#include "support/messages.hpp"
#include "support/no_memory.hpp"
#include "support/parts.hpp"
#include "support/wire.hpp"

namespace mdm::test::inspect_test {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Le;

constexpr LoggingFunction ipc_inspect_function{"ipc_inspect", "mdm_ipc_inspect.cpp"};

uint32_t size_of(const Bytes &bytes)
{
    return static_cast<uint32_t>(bytes.size());
}

// A visitor.
bool ignore(const ipc_part_t * /*part*/, void * /*user_data*/)
{
    return true;
}

// Rules that hold for any bytes.

void expect_whole(const Bytes &bytes, const std::vector<Part> &parts, const mdm_msg_t &msg)
{
    EXPECT_EQ(values_of(parts), values_of(msg));
    const Composition again = composed(parts);
    EXPECT_EQ(again.bytes, bytes);
    EXPECT_EQ(again.length, bytes.size());
    EXPECT_TRUE(is_untouched(again.fault)) << text_of(again.fault);
    EXPECT_EQ(again.questions, questions_for(parts));
}

// Where the fault is, the rest begins; behind a false length field, at the first byte.
void expect_rest(const Bytes &bytes, const std::vector<Part> &parts, const ipc_fault_t &fault)
{
    EXPECT_TRUE(is_true(fault, bytes.size())) << text_of(fault);
    const bool has_rest = !parts.empty() && parts.back().kind == IPC_PART_REST;
    EXPECT_EQ(has_rest ? parts.back().offset : bytes.size(), fault.offset);
    EXPECT_EQ(has_rest, fault.offset < bytes.size());
}

void expect_sound(const Bytes &bytes)
{
    const LogRecorder log(MDM_LOG_NONE);
    const Inspection found = inspected(bytes);
    EXPECT_EQ(gaps_between(found.parts, bytes.size()), "");

    ipc_fault_t fault = untouched_fault;
    const Opened msg = opened(bytes, &fault);
    EXPECT_EQ(found.result, msg != nullptr ? MDM_RESULT_SUCCESS : MDM_RESULT_FAILED);
    EXPECT_EQ(text_of(found.fault), text_of(fault));
    msg != nullptr ? expect_whole(bytes, found.parts, *msg)
                   : expect_rest(bytes, found.parts, found.fault);

    const Inspection expected = described(bytes);
    EXPECT_EQ(found.result, expected.result);
    EXPECT_EQ(text_of(found.fault), text_of(expected.fault));
    EXPECT_EQ(found.parts, expected.parts);
    ASSERT_FALSE(::testing::Test::HasFailure()) << text_of(expected.parts);
}

TEST(Inspect, ShowsTheFieldsOfEveryForm)
{
    for (const GoodMessage &good : good_messages()) {
        SCOPED_TRACE(good.name);
        ASSERT_EQ(inspected(good.bytes).result, MDM_RESULT_SUCCESS);
        ASSERT_NO_FATAL_FAILURE(expect_sound(good.bytes));
    }
}

// The steps are written down while the message is made, and no reader takes part.
TEST(Inspect, ShowsEachStepOfReadingABody)
{
    for (const GoodMessage &good : good_messages()) {
        const std::vector<Part> parts = inspected(good.bytes).parts;
        for (const Step &step : good.steps) {
            const bool is_shown = std::ranges::any_of(parts, [&](const Part &part) {
                const size_t behind_count = part.offset + size_t{4};
                return part.path == step.path &&
                       (part.offset == step.offset || behind_count == step.offset);
            });
            EXPECT_TRUE(is_shown) << good.name << ' ' << step.path;
        }
    }
}

TEST(Inspect, AnyCutIsShown)
{
    for (const GoodMessage &good : good_messages()) {
        SCOPED_TRACE(good.name);
        for (size_t size = 0; size < good.bytes.size(); ++size) {
            ASSERT_NO_FATAL_FAILURE(expect_sound(first_bytes(good.bytes, size)));
            ASSERT_NO_FATAL_FAILURE(expect_sound(cut(good.bytes, size)));
        }
    }
}

TEST(Inspect, AnyCountMayBeFalse)
{
    for (const GoodMessage &good : good_messages()) {
        SCOPED_TRACE(good.name);
        for (const CountField &count : good.counts) {
            const auto left = static_cast<uint32_t>(good.bytes.size() - count.behind);
            const uint32_t fitting = left / count.smallest;
            for (const uint32_t number :
                 {0U, 1U, 2U, left - 1, left, left + 1, fitting, fitting + 1, 0x10000000U,
                  0x40000000U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
                Bytes corrupted = good.bytes;
                put_word(corrupted, count.at, number);
                ASSERT_NO_FATAL_FAILURE(expect_sound(corrupted));
            }
        }
    }
}

TEST(Inspect, AnyTypeMayHaveAnyBody)
{
    std::vector<uint8_t> types = {0, 19, 80, 81, 255};
    for (const CategoryFormat &category : category_formats()) {
        types.push_back(category.first_type());
    }
    for (const GoodMessage &good : good_messages()) {
        SCOPED_TRACE(good.name);
        for (const uint8_t type : types) {
            Bytes corrupted = good.bytes;
            corrupted[type_offset] = type;
            ASSERT_NO_FATAL_FAILURE(expect_sound(corrupted));
        }
    }
}

// The listed discriminators, and those beside them.
TEST(Inspect, AnyDiscriminatorSelectsWhatTheFormatSays)
{
    for (const CategoryFormat &category : category_formats()) {
        for (const Form &form : category.forms) {
            for (const uint32_t discriminator : form.types) {
                const Bytes head = zeroed_head(category, discriminator, 4);
                ASSERT_NO_FATAL_FAILURE(
                    expect_sound(framed(category.first_type(), head + word(1) + Bytes(120))));
            }
        }
    }
}

// A few bytes of each message, replaced, removed or doubled. The numbers are the same in every run.
TEST(Inspect, AnyBytesAreShown)
{
    std::minstd_rand random(1);
    const auto below = [&random](size_t end) { return random() % end; };
    for (const GoodMessage &good : good_messages()) {
        SCOPED_TRACE(good.name);
        for (int i = 0; i < 50; ++i) {
            Bytes corrupted = good.bytes;
            for (size_t changes = 1 + below(3); changes > 0; --changes) {
                const auto at =
                    corrupted.begin() + static_cast<std::ptrdiff_t>(below(corrupted.size() - 8));
                switch (below(4)) {
                case 0:
                    *at = static_cast<uint8_t>(random());
                    break;
                case 1:
                    *at = static_cast<uint8_t>(below(4));
                    break;
                case 2:
                    corrupted.erase(at, at + 1 + static_cast<std::ptrdiff_t>(below(8)));
                    break;
                default:
                    corrupted.insert(at, 1 + below(8), static_cast<uint8_t>(below(3)));
                    break;
                }
            }
            if (below(8) != 0) {
                correct_length(corrupted);
            }
            ASSERT_NO_FATAL_FAILURE(expect_sound(corrupted));
        }
    }
}

TEST(Inspect, BytesWithoutAMessageAreShown)
{
    for (size_t size = 0; size < header_size; ++size) {
        for (const uint8_t byte : {uint8_t{0}, uint8_t{0x20}, uint8_t{0xFF}}) {
            ASSERT_NO_FATAL_FAILURE(expect_sound(Bytes(size, byte)));
            ASSERT_NO_FATAL_FAILURE(expect_sound(cut(Bytes(size, byte), size)));
        }
    }
}

// At the end of readable memory, at any address.
TEST(Inspect, ReadsNoByteBehindTheMessage)
{
    const LogRecorder log(MDM_LOG_NONE);
    GuardedBytes buffer(Bytes(4096));
    for (const GoodMessage &good : good_messages()) {
        for (size_t size = 0; size <= good.bytes.size(); ++size) {
            const Bytes bytes = cut(good.bytes, size);
            buffer.assign(bytes);
            const int32_t result =
                ipc_inspect(buffer.data(), size_of(bytes), ignore, nullptr, nullptr);
            ASSERT_EQ(result, inspected(bytes).result) << good.name << ' ' << size;
        }
    }
}

// A buffer that is not there has no bytes, whatever its length.
TEST(Inspect, ANullBufferIsRefusedWithoutAPart)
{
    const LogRecorder log(MDM_LOG_NONE);
    for (const uint32_t length : {0U, 4U, 40U, 0xFFFFFFFFU}) {
        ipc_fault_t fault = untouched_fault;
        ipc_fault_t expected = untouched_fault;
        int calls = 0;
        const auto count = [](const ipc_part_t * /*part*/, void *user_data) {
            ++*static_cast<int *>(user_data);
            return true;
        };
        EXPECT_EQ(ipc_inspect(nullptr, length, count, &calls, &fault), MDM_RESULT_FAILED);
        EXPECT_EQ(ipc_open(nullptr, length, &expected), nullptr);
        EXPECT_EQ(text_of(fault), text_of(expected));
        EXPECT_EQ(calls, 0);
    }
}

// What is logged.

TEST(Inspect, LogsNothingButARefusal)
{
    for (const GoodMessage &good : good_messages()) {
        for (size_t size = 0; size <= good.bytes.size(); size += 3) {
            const Bytes bytes = size + 3 > good.bytes.size() ? good.bytes : cut(good.bytes, size);
            LogRecorder log(MDM_LOG_DEBUG);
            const Inspection found = inspected(bytes);
            if (found.result == MDM_RESULT_SUCCESS) {
                ASSERT_THAT(log.take(), IsEmpty()) << good.name << ' ' << size;
            } else {
                ASSERT_THAT(log.take(),
                            ElementsAre(critical(ipc_inspect_function, refusal_line(found.fault))))
                    << good.name << ' ' << size;
            }
        }
    }
}

TEST(Inspect, LogsTheSentenceOfTheFault)
{
    LogRecorder log(MDM_LOG_DEBUG);
    EXPECT_EQ(inspected(Bytes(3)).result, MDM_RESULT_FAILED);
    const std::vector<LogLine> lines = log.take();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].level, 3U);
    EXPECT_EQ(lines[0], critical(ipc_inspect_function,
                                 "Refused: header.length at offset 0 needs 4 bytes, 3 are left"));
}

// A visitor that stops.

struct Stop {
    size_t after;
    size_t calls = 0;

    static bool visit(const ipc_part_t * /*part*/, void *user_data)
    {
        auto *self = static_cast<Stop *>(user_data);
        return ++self->calls < self->after;
    }
};

// Stops at each part. Only at the rest it is too late: there is a fault in front of it.
void expect_to_stop(const Bytes &bytes)
{
    LogRecorder log(MDM_LOG_DEBUG);
    const std::vector<Part> parts = inspected(bytes).parts;
    log.take();
    for (size_t after = 1; after <= parts.size(); ++after) {
        const bool is_rest = parts[after - 1].kind == IPC_PART_REST;
        Stop stop{after};
        ipc_fault_t fault = untouched_fault;
        const int32_t result =
            ipc_inspect(bytes.data(), size_of(bytes), Stop::visit, &stop, &fault);
        ASSERT_EQ(stop.calls, after);
        ASSERT_EQ(result, is_rest ? MDM_RESULT_FAILED : MDM_RESULT_SUCCESS) << parts[after - 1];
        ASSERT_EQ(is_untouched(fault), !is_rest) << parts[after - 1];
        ASSERT_EQ(log.take().size(), is_rest ? 1U : 0U);
    }
}

TEST(Inspect, StopsWhereTheVisitorStops)
{
    for (const GoodMessage &good : good_messages()) {
        SCOPED_TRACE(good.name);
        ASSERT_NO_FATAL_FAILURE(expect_to_stop(good.bytes));
        for (size_t size = 0; size < good.bytes.size(); size += 5) {
            ASSERT_NO_FATAL_FAILURE(expect_to_stop(cut(good.bytes, size)));
        }
    }
}

TEST(Inspect, StopsInFrontOfAFalseMessageType)
{
    ASSERT_NO_FATAL_FAILURE(expect_to_stop(framed(81, {})));
}

// Memory.

// Nothing is kept.
std::vector<size_t> allocations_of(const Bytes &bytes)
{
    const LogRecorder log(MDM_LOG_NONE);
    AllocationTrace trace;
    ipc_inspect(bytes.data(), size_of(bytes), ignore, nullptr, nullptr);
    trace.stop();
    EXPECT_THAT(trace.kept(), IsEmpty());
    return trace.allocated_sizes();
}

Bytes many(uint32_t count, const Bytes &element)
{
    Bytes bytes;
    for (uint32_t i = 0; i < count; ++i) {
        bytes.insert(bytes.end(), element.begin(), element.end());
    }
    return bytes;
}

// Lists of texts, of records, of records with lists; an array.
std::vector<Bytes> with_elements(uint32_t count)
{
    const Bytes texts = many(count, str("text"));
    const Bytes head = word(count);
    return {framed(9, head_bytes(223, 1) + head + texts),
            framed(14, word(140) + word(0) + str("") + word(1) + head +
                           many(count, str("name") + word(1))),
            framed(14, word(172) + word(0) + str("") + word(1) + head +
                           many(count, word(1) + word(1) + str("name"))),
            framed(5, head_bytes(68, 1) + head + texts),
            framed(17, head_bytes(127, 1) + head + texts),
            framed(17, head_bytes(122, static_cast<int32_t>(count)) + texts)};
}

// Ten times the elements double the memory three or four times.
TEST(Inspect, AllocatesNothingForEachPart)
{
    const std::vector<Bytes> few = with_elements(1000);
    const std::vector<Bytes> more = with_elements(10000);
    for (size_t i = 0; i < few.size(); ++i) {
        SCOPED_TRACE(i);
        const size_t count = allocations_of(few[i]).size();
        EXPECT_LE(count, 12U);
        EXPECT_LE(allocations_of(more[i]).size(), count + 4);
    }
}

// One long text needs no more memory than a short one.
TEST(Inspect, AllocatesNothingForTexts)
{
    const std::string text(100000, 'x');
    const std::vector<size_t> least = allocations_of(framed(19, {}));
    EXPECT_EQ(allocations_of(framed(19, {}, text)), least);
    EXPECT_EQ(allocations_of(framed(45, head_bytes(612, 1) + str(text))), least);
    EXPECT_EQ(allocations_of(framed(33, head_bytes(1, 100000) + Bytes(100000))), least);
}

TEST(Inspect, AllocatesNothingForACountThatCannotBe)
{
    const std::vector<size_t> least = allocations_of(framed(19, {}));
    for (const uint32_t count : {0x7FFFFFFFU, 0x10000000U, 100U}) {
        const Bytes elements = word(count) + Bytes(90);
        EXPECT_EQ(allocations_of(framed(9, head_bytes(223, 1) + elements)), least);
        EXPECT_EQ(allocations_of(framed(17, head_bytes(127, 1) + elements)), least);
        EXPECT_EQ(allocations_of(framed(17, head_bytes(122, INT32_MAX) + elements)), least);
    }
}

TEST(Inspect, KeepsNoMemoryOfBytesThatItRefuses)
{
    for (const GoodMessage &good : good_messages()) {
        for (size_t size = 0; size < good.bytes.size(); size += 7) {
            EXPECT_THAT(allocations_of(cut(good.bytes, size)), Each(Le(65536U)));
        }
    }
}

// The parts in front of the fault, then the rest.
void expect_cut_short(const std::vector<Part> &parts, std::vector<Part> shown, size_t length,
                      const ipc_fault_t &fault)
{
    ASSERT_EQ(gaps_between(shown, length), "");
    EXPECT_STREQ(fault.path, "memory");
    EXPECT_GT(fault.needed, 0U);
    EXPECT_EQ(fault.left, 0U);
    if (shown.back().kind == IPC_PART_REST) {
        EXPECT_LE(shown.back().offset, fault.offset);
        shown.pop_back();
    }
    ASSERT_LE(shown.size(), parts.size());
    EXPECT_TRUE(std::equal(shown.begin(), shown.end(), parts.begin()));
}

// Takes one allocation after the other away. Returns how many it takes to show the bytes.
size_t expect_refusals_without_memory(const Bytes &bytes)
{
    const std::vector<Part> parts = inspected(bytes).parts;
    for (size_t allocations = 0;; ++allocations) {
        LogRecorder log(MDM_LOG_DEBUG);
        Inspection found;
        {
            const NoMemory no_memory(allocations);
            found = inspected(bytes);
        }
        if (found.result == MDM_RESULT_SUCCESS) {
            EXPECT_EQ(found.parts, parts);
            EXPECT_THAT(log.take(), IsEmpty());
            return allocations;
        }
        expect_cut_short(parts, found.parts, bytes.size(), found.fault);
        EXPECT_THAT(log.take(),
                    ElementsAre(critical(ipc_inspect_function, refusal_line(found.fault))));
        if (::testing::Test::HasFailure()) {
            return allocations;
        }
    }
}

size_t kept_without_memory(const Bytes &bytes, size_t allocations)
{
    const LogRecorder log(MDM_LOG_NONE);
    AllocationTrace trace;
    {
        const NoMemory no_memory(allocations);
        ipc_inspect(bytes.data(), size_of(bytes), ignore, nullptr, nullptr);
    }
    trace.stop();
    return trace.kept().size();
}

TEST(NoMemoryToInspect, IsAFaultBehindTheParts)
{
    for (const GoodMessage &good : good_messages()) {
        SCOPED_TRACE(good.name);
        ASSERT_GE(expect_refusals_without_memory(good.bytes), 1U);
        ASSERT_FALSE(HasFailure());
    }
    for (const Bytes &bytes : with_elements(1000)) {
        const size_t needed = expect_refusals_without_memory(bytes);
        // No text is kept, so security strings need no cells, and a misc array is not made.
        const bool keeps_nothing = bytes[type_offset] == 5 ||
                                   (bytes[type_offset] == 17 && word_at(bytes, header_size) == 122);
        ASSERT_GE(needed, keeps_nothing ? 1U : 2U);
        ASSERT_FALSE(HasFailure());
        for (size_t allocations = 0; allocations < needed; ++allocations) {
            EXPECT_EQ(kept_without_memory(bytes, allocations), 0U);
        }
    }
}

// Threads.

// Each thread begins with another message.
TEST(Inspect, ManyThreadsMayInspectAtOnce)
{
    const std::vector<GoodMessage> messages = good_messages();
    std::vector<std::vector<Part>> expected;
    for (const GoodMessage &good : messages) {
        expected.push_back(inspected(good.bytes).parts);
    }
    std::atomic<size_t> threads = 0;
    const auto count_others = [&] {
        const size_t first = 50 * threads++;
        size_t others = 0;
        for (size_t i = 0; i < 4 * messages.size(); ++i) {
            const size_t index = (first + i) % messages.size();
            others += inspected(messages[index].bytes).parts == expected[index] ? 0 : 1;
        }
        return others;
    };
    EXPECT_THAT(in_four_threads(count_others), Each(0U));
}

// Names.

TEST(InspectNames, AreThoseOfTheCategoryAndTheForm)
{
    for (const CategoryFormat &category : category_formats()) {
        for (const uint32_t type : category.types) {
            const auto message_type = static_cast<uint8_t>(type);
            EXPECT_STREQ(ipc_category_name(message_type), category.name);
            for (const Form &form : category.forms) {
                std::string name = std::string(category.name) + '.' + form.name;
                std::ranges::replace(name, '-', '_');
                name = name == "phone_res.data_between" ? "phone_res.data" : name;
                for (const uint32_t discriminator : discriminators_of(category, form)) {
                    EXPECT_EQ(ipc_form_name(message_type, discriminator), name) << discriminator;
                }
            }
        }
    }
}

TEST(InspectNames, AreNoneWithoutACategory)
{
    std::vector<uint8_t> types = types_without_category();
    types.insert(types.end(), {0, 81, 128, 255});
    for (const uint8_t type : types) {
        for (const uint32_t discriminator : {0U, 345U, 0x80000000U, 0xFFFFFFFFU}) {
            EXPECT_STREQ(ipc_category_name(type), "none") << unsigned{type};
            EXPECT_STREQ(ipc_form_name(type, discriminator), "none") << unsigned{type};
        }
    }
}

TEST(InspectNames, OfDiscriminatorsWithASign)
{
    EXPECT_STREQ(ipc_form_name(7, 345), "wifi.network");
    for (const int32_t discriminator : {-1, -122, INT32_MIN}) {
        const auto bits = static_cast<uint32_t>(discriminator);
        EXPECT_STREQ(ipc_form_name(17, bits), "misc.data");
        EXPECT_STREQ(ipc_form_name(13, bits), "app.data");
        EXPECT_STREQ(ipc_form_name(14, bits), "app_res.data");
        EXPECT_STREQ(ipc_form_name(35, bits), "phone_res.data");
        EXPECT_STREQ(ipc_form_name(61, bits), "app_cb.head");
    }
}

}  // namespace
}  // namespace mdm::test::inspect_test
