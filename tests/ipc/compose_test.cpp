// SPDX-License-Identifier: Apache-2.0
//
// What ipc_compose() asks for, makes and refuses. That it makes the bytes of any message of its own
// parts stands in inspect_test.cpp.
#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mdm/inspect.h"
#include "support/allocation_trace.hpp"
#include "support/log_recorder.hpp"
#include "support/messages.hpp"
#include "support/no_memory.hpp"
#include "support/parts.hpp"
#include "support/wire.hpp"

namespace mdm::test::compose_test {
namespace {

using ::testing::IsEmpty;

constexpr LoggingFunction ipc_compose_function{"ipc_compose", "mdm_ipc_inspect.cpp"};

// An answerer that knows few values: numbers by their path, and for every text and all bytes the
// same one. Other numbers are 0.
struct Values {
    std::map<std::string, uint32_t> numbers;
    Bytes text;
    Bytes padding;
    size_t answers_left = SIZE_MAX;

    bool operator()(ipc_part_t &part)
    {
        if (answers_left-- == 0) {
            return false;
        }
        const auto found = numbers.find(part.path);
        part.number = found != numbers.end() ? found->second : 0;
        const Bytes &bytes = part.kind == IPC_PART_PADDING ? padding : text;
        part.bytes = bytes.data();
        if (part.kind == IPC_PART_STR || part.kind == IPC_PART_PADDING) {
            part.length = static_cast<uint32_t>(bytes.size());
        } else if (part.length > bytes.size()) {
            static const Bytes zeros(1000);
            part.bytes = zeros.data();
        }
        return true;
    }
};

void expect_refused(const Composition &made, const std::vector<LogLine> &lines)
{
    EXPECT_EQ(made.bytes, std::nullopt);
    EXPECT_EQ(made.length, untouched_length);
    EXPECT_FALSE(is_untouched(made.fault));
    EXPECT_EQ(made.fault.left, 0U);
    EXPECT_EQ(lines, std::vector{critical(ipc_compose_function, refusal_line(made.fault))});
}

// Refuses an answer, and returns the fault.
ipc_fault_t refusal_of(const Answer &answer)
{
    LogRecorder log(MDM_LOG_DEBUG);
    const Composition made = composed(answer);
    expect_refused(made, log.take());
    return made.fault;
}

void expect_fault(const ipc_fault_t &fault, const Part &question)
{
    EXPECT_EQ(fault.path, question.path);
    EXPECT_EQ(fault.offset, question.offset);
}

TEST(Compose, LogsNothingButARefusal)
{
    for (const GoodMessage &good : good_messages()) {
        const std::vector<Part> parts = inspected(good.bytes).parts;
        LogRecorder log(MDM_LOG_DEBUG);
        EXPECT_EQ(composed(parts).bytes, good.bytes) << good.name;
        EXPECT_THAT(log.take(), IsEmpty()) << good.name;
    }
}

TEST(Compose, LogsTheSentenceOfTheFault)
{
    LogRecorder log(MDM_LOG_DEBUG);
    composed([](ipc_part_t & /*part*/) { return false; });
    const std::vector<LogLine> lines = log.take();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].level, 3U);
    EXPECT_EQ(lines[0], critical(ipc_compose_function,
                                 "Refused: header.length at offset 0 needs 4 bytes, 0 are left"));
}

TEST(Compose, RefusesWhereAnAnswerIsMissing)
{
    for (const GoodMessage &good : good_messages()) {
        SCOPED_TRACE(good.name);
        const std::vector<Part> parts = inspected(good.bytes).parts;
        const std::vector<Part> questions = questions_for(parts);
        for (size_t count = 0; count < questions.size(); ++count) {
            size_t next = 0;
            LogRecorder log(MDM_LOG_DEBUG);
            const Composition made = composed([&](ipc_part_t &part) {
                if (next == count) {
                    return false;
                }
                const Part &answer = parts[next++];
                part.number = answer.number;
                part.length = static_cast<uint32_t>(answer.bytes.size());
                part.bytes = answer.bytes.data();
                return true;
            });
            expect_refused(made, log.take());
            expect_fault(made.fault, questions[count]);
            ASSERT_EQ(made.questions.size(), count + 1);  // and no further one
            ASSERT_FALSE(HasFailure());
        }
    }
}

// Raw bytes and the reserved ones.
TEST(Compose, RefusesBytesOfAnotherLength)
{
    for (const GoodMessage &good : good_messages()) {
        SCOPED_TRACE(good.name);
        const std::vector<Part> parts = inspected(good.bytes).parts;
        for (size_t i = 0; i < parts.size(); ++i) {
            if (parts[i].kind != IPC_PART_BYTES && parts[i].kind != IPC_PART_RESERVED) {
                continue;
            }
            for (const size_t length : {parts[i].bytes.size() - 1, parts[i].bytes.size() + 1}) {
                std::vector<Part> changed = parts;
                changed[i].bytes.resize(length);
                LogRecorder log(MDM_LOG_DEBUG);
                const Composition made = composed(changed);
                expect_refused(made, log.take());
                expect_fault(made.fault, parts[i]);
                EXPECT_EQ(made.fault.needed, parts[i].size);
            }
        }
    }
}

TEST(Compose, NeitherAnswerNorFaultIsWrittenToAfterSuccess)
{
    const Composition made = composed(Values{{{"header.type", 19}}, {}, {}});
    EXPECT_EQ(made.bytes, cut(made.bytes.value_or(Bytes()), 40));
    EXPECT_TRUE(is_untouched(made.fault));
    uint32_t length = untouched_length;
    const LogRecorder log(MDM_LOG_NONE);
    const auto refuse = [](ipc_part_t * /*part*/, void * /*user_data*/) { return false; };
    EXPECT_EQ(ipc_compose(refuse, nullptr, &length, nullptr), nullptr);
    EXPECT_EQ(length, untouched_length);
}

// Whatever the answer to "header.length" is.
TEST(Compose, ComputesTheLength)
{
    const Values values{{{"header.length", 0xDEADBEEF}, {"header.type", 19}}, {}, Bytes(3)};
    EXPECT_EQ(composed(values).bytes, hex("23 00 00 00 13") + Bytes(38));
}

TEST(Compose, RefusesATypeThatNoMessageHas)
{
    for (const uint32_t type : {0U, 81U, 255U}) {
        const ipc_fault_t fault = refusal_of(Values{{{"header.type", type}}, {}, {}});
        EXPECT_STREQ(fault.path, "header.type");
        EXPECT_EQ(fault.offset, 4U);
    }
}

TEST(Compose, RefusesANegativeSizeOfBytes)
{
    for (const uint32_t size : {0xFFFFFFFFU, 0x80000000U}) {
        const ipc_fault_t fault = refusal_of(
            Values{{{"header.type", 17}, {"misc.type", 1}, {"misc.data_size", size}}, {}, {}});
        EXPECT_STREQ(fault.path, "misc.data");
        EXPECT_EQ(fault.offset, 52U);
        const ipc_fault_t array = refusal_of(
            Values{{{"header.type", 17}, {"misc.type", 122}, {"misc.data_size", size}}, {}, {}});
        EXPECT_STREQ(array.path, "misc.array");
        EXPECT_EQ(array.offset, 52U);
    }
}

// Such a size announces nothing.
TEST(Compose, MakesAHeadWithANegativeSize)
{
    const Composition made = composed(
        Values{{{"header.type", 33}, {"res.type", 1}, {"res.data_size", 0xFFFFFFFF}}, {}, {}});
    ASSERT_TRUE(made.bytes.has_value());
    EXPECT_EQ(made.bytes->size(), 52U);
    EXPECT_NE(opened(*made.bytes), nullptr);
}

Values ssids(uint32_t count)
{
    return {{{"header.type", 7}, {"wifi.type", 290}, {"wifi.data_size", 1}, {"wifi.ssids", count}},
            hex("61"),
            {}};
}

TEST(Compose, ANegativeCountAnnouncesNoElement)
{
    for (const uint32_t count : {0U, 0xFFFFFFFFU, 0x80000000U}) {
        const Composition made = composed(ssids(count));
        ASSERT_TRUE(made.bytes.has_value());
        EXPECT_EQ(made.bytes->size(), header_size + 1 + 12 + 4);  // the header has a text, too
        EXPECT_EQ(word_at(*made.bytes, made.bytes->size() - 4), count);
        EXPECT_NE(opened(*made.bytes), nullptr);
    }
}

TEST(Compose, AsksForAsManyElementsAsTheCountAnnounces)
{
    const Composition made = composed(ssids(1000));
    EXPECT_EQ(std::ranges::count_if(made.questions,
                                    [](const Part &part) { return part.kind == IPC_PART_STR; }),
              1001);
    EXPECT_EQ(made.length, header_size + 1 + 12 + 4 + 5000);
}

// The answers end before the elements do.
TEST(Compose, RefusesWhereElementsAreMissing)
{
    for (const uint32_t count : {6U, 1000U, 0x1FFFFFFFU}) {
        Values values = ssids(count);
        values.answers_left = 12 + 4 + 5;
        const ipc_fault_t fault = refusal_of(values);
        EXPECT_STREQ(fault.path, "wifi.ssids");
        EXPECT_EQ(fault.offset, header_size + 1 + 12 + 4 + 25);
    }
}

// More elements than a message of 4 GiB can have.
TEST(Compose, RefusesACountThatCannotBe)
{
    const ipc_fault_t fault = refusal_of(ssids(0x7FFFFFFF));
    EXPECT_STREQ(fault.path, "wifi.ssids");
    EXPECT_EQ(fault.offset, header_size + 1 + 12 + 4);
    EXPECT_EQ(fault.needed, 0xFFFFFFFF);
}

TEST(Compose, TextsMayHaveAnyLength)
{
    for (const size_t size : {0U, 1U, 215U, 216U, 217U, 255U, 256U, 257U, 5000U, 3000000U}) {
        const Bytes text(size, uint8_t{'x'});
        const Composition made = composed(Values{{{"header.type", 19}}, text, {}});
        ASSERT_TRUE(made.bytes.has_value());
        EXPECT_EQ(made.bytes->size(), header_size + size);
        EXPECT_EQ(inspected(*made.bytes).parts[6].bytes, text);
    }
}

TEST(Compose, PaddingMayHaveAnyLength)
{
    for (const size_t size : {0U, 1U, 216U, 217U, 100000U}) {
        const Bytes padding(size, uint8_t{0xFF});
        const Composition made = composed(Values{{{"header.type", 19}}, {}, padding});
        ASSERT_TRUE(made.bytes.has_value());
        EXPECT_EQ(made.bytes->size(), header_size + size);
        EXPECT_EQ(Bytes(made.bytes->begin() + header_size, made.bytes->end()), padding);
    }
}

// Memory.

TEST(Compose, KeepsNoMemory)
{
    const auto from_parts = [](ipc_part_t *part, void *values) {
        return (*static_cast<Values *>(values))(*part);
    };
    const LogRecorder log(MDM_LOG_NONE);
    for (size_t answers = 0; answers < 40; ++answers) {
        Values values = ssids(10);
        values.answers_left = answers;
        uint32_t length = 0;
        AllocationTrace trace;
        uint8_t *bytes = ipc_compose(from_parts, &values, &length, nullptr);
        trace.stop();
        EXPECT_EQ(trace.kept().size(), bytes != nullptr ? 1U : 0U);
        g_free(bytes);
    }
}

// An answerer may hand over a part that ipc_inspect() has shown of another message.
TEST(Compose, DoesNotReadTheOtherMembersOfAnAnswer)
{
    const Bytes bytes = framed(33, head_bytes(100, 2) + Bytes{'o', 'k'}, "hello");
    const std::vector<Part> parts = inspected(bytes).parts;
    size_t next = 0;
    const Composition made = composed([&](ipc_part_t &part) {
        static const Part no_padding;
        const Part &one = next < parts.size() ? parts[next++] : no_padding;
        part = {nullptr,         IPC_PART_REST, 7,          7,
                0x10000000,      0x10000000,    one.number, static_cast<uint32_t>(one.bytes.size()),
                one.bytes.data()};
        return true;
    });
    EXPECT_EQ(made.bytes, bytes);
}

TEST(Compose, RefusesBytesThatAreNull)
{
    for (const char *path : {"header.reserved", "header.hdr_text", "res.data", "padding"}) {
        SCOPED_TRACE(path);
        const Composition made = composed([path](ipc_part_t &part) {
            static const Bytes zeros(8);
            part.bytes = std::string_view(part.path) == path ? nullptr : zeros.data();
            part.number = std::string_view(part.path) == "header.type" ? 33 : 2;
            part.length = 2;
            return true;
        });
        EXPECT_EQ(made.bytes, std::nullopt);
        EXPECT_STREQ(made.fault.path, path);
        EXPECT_EQ(made.fault.left, 0U);
    }
}

// `data_size` is no number of bytes there, and nothing else bounds it.
TEST(Compose, TakesNoMemoryForTextsThatAreNotAnswered)
{
    const LogRecorder log(MDM_LOG_NONE);
    Values values{
        {{"header.type", 17}, {"misc.type", 122}, {"misc.data_size", 0x3FFFFFFF}}, {}, {}};
    values.answers_left = 12 + 3;
    const auto from_values = [](ipc_part_t *part, void *all) {
        return (*static_cast<Values *>(all))(*part);
    };
    uint32_t length = 0;
    AllocationTrace trace;
    EXPECT_EQ(ipc_compose(from_values, &values, &length, nullptr), nullptr);
    trace.stop();
    EXPECT_THAT(trace.allocated_sizes(), ::testing::Each(::testing::Le(65536U)));
}

TEST(Compose, RefusesAByteAbove255)
{
    Values values{{{"header.type", 33}, {"header.hdr_byte", 256}}, {}, {}};
    const ipc_fault_t fault = refusal_of(values);
    EXPECT_STREQ(fault.path, "header.hdr_byte");
    EXPECT_EQ(fault.offset, 5U);
}

// Takes one allocation after the other away. Returns how many it takes.
size_t expect_refusals_without_memory(const Bytes &bytes)
{
    const std::vector<Part> parts = inspected(bytes).parts;
    for (size_t allocations = 0;; ++allocations) {
        LogRecorder log(MDM_LOG_DEBUG);
        Composition made;
        {
            const NoMemory no_memory(allocations);
            made = composed(parts);
        }
        if (made.bytes.has_value()) {
            EXPECT_EQ(made.bytes, bytes);
            return allocations;
        }
        expect_refused(made, log.take());
        EXPECT_STREQ(made.fault.path, "memory");
        EXPECT_LE(made.fault.offset, bytes.size());
        EXPECT_GT(made.fault.needed, 0U);
        if (::testing::Test::HasFailure()) {
            return allocations;
        }
    }
}

TEST(NoMemoryToCompose, IsAFault)
{
    for (const GoodMessage &good : good_messages()) {
        SCOPED_TRACE(good.name);
        ASSERT_GE(expect_refusals_without_memory(good.bytes), 2U);
        ASSERT_FALSE(HasFailure());
    }
}

// Growing for a text, for raw bytes, for the padding.
TEST(NoMemoryToCompose, IsAFaultWhereTheBytesGrow)
{
    const std::string text(1000, 'x');
    for (const Bytes &bytes :
         {framed(19, {}, text), framed(33, head_bytes(1, 1000) + Bytes(1000)),
          framed(19, Bytes(1000)), framed(45, head_bytes(612, 1) + str(text))}) {
        EXPECT_EQ(expect_refusals_without_memory(bytes), 3U);
    }
}

}  // namespace
}  // namespace mdm::test::compose_test
