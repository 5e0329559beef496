// SPDX-License-Identifier: Apache-2.0
//
// The writer of the guarded path by itself: it writes nothing beyond its buffer. A category never
// makes it refuse, because it counts its bytes first.
#include <array>
#include <cstdint>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mdm/guarded.h"
#include "support/fault.hpp"
#include "support/wire.hpp"
#include "wire/cursor.hpp"

namespace mdm::test::guarded_writer_test {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;

char some_bytes[] = "some bytes";

using Write = void (*)(Writer &out);

// The file, the category's name, and the paths of its fields.
constexpr Log it_log("file\0it\0type\0param\0data_size\0it", Log::Function::silent);

// Writes more than fits into zeros, from `begin` on. Returns the buffer after the refusal.
Bytes written_before_refusal(uint32_t begin, uint32_t size, Write write,
                             const ipc_fault_t &expected)
{
    Bytes buffer(size);
    ipc_fault_t fault = untouched_fault;
    Writer out(buffer.data(), begin, size, it_log, fault);
    EXPECT_TRUE(out);
    write(out);
    EXPECT_FALSE(out);
    EXPECT_EQ(text_of(fault), text_of(expected));

    Bytes written = buffer;
    out.raw_bytes(some_bytes, 0);
    out.str(borrowed("a"), "too late");
    EXPECT_EQ(text_of(fault), text_of(expected));
    EXPECT_EQ(buffer, written);
    return written;
}

void expect_too_long(Write write, const ipc_fault_t &expected)
{
    EXPECT_THAT(written_before_refusal(5, 8, write, expected), Each(0));
}

TEST(GuardedWriter, WritesNothingThatDoesNotFit)
{
    expect_too_long([](Writer &out) { out.raw_bytes(some_bytes, 4); }, {5, 4, 3, "it"});
    expect_too_long([](Writer &out) { out.raw_bytes(some_bytes, INT32_MAX); },
                    {5, INT32_MAX, 3, "it"});
    expect_too_long([](Writer &out) { out.raw_bytes(some_bytes, -1); }, {5, UINT32_MAX, 3, "it"});
    expect_too_long([](Writer &out) { out.u32(7, "it"); }, {5, 4, 3, "it"});
    expect_too_long([](Writer &out) { out.str(nullptr, "it"); }, {5, 4, 3, "it"});
    expect_too_long([](Writer &out) { out.str(borrowed("bc"), "it"); }, {5, 4, 3, "it"});
    expect_too_long([](Writer &out) { out.gap(1, "it"); }, {5, 0, 3, "it"});
}

TEST(GuardedWriter, WritesNoHeadThatDoesNotFit)
{
    expect_too_long([](Writer &out) { out.message_head(mdm_msg_t{}); },
                    {5, 4, 3, "header.hdr_word1"});
    expect_too_long([](Writer &out) { out.body_head(mdm_pwd_info_t{}); }, {5, 4, 3, "type"});
}

TEST(GuardedWriter, NamesTheFirstWordOfAHeadThatDoesNotFit)
{
    const Write write = [](Writer &out) { out.body_head(mdm_pwd_info_t{}); };
    written_before_refusal(6, 16, write, {14, 4, 2, "data_size"});
}

TEST(GuardedWriter, WritesWhatJustFits)
{
    std::array<uint8_t, 8> buffer{};
    ipc_fault_t fault = untouched_fault;
    Writer out(buffer.data(), 0, buffer.size(), it_log, fault);
    out.str(borrowed("bc"), "it");
    const std::array<uint8_t, 2> bytes = {6, 7};
    out.raw_bytes(bytes.data(), 2);
    EXPECT_TRUE(out);
    EXPECT_THAT(buffer, ElementsAre(2, 0, 0, 0, 'b', 'c', 6, 7));
    out.raw_bytes(bytes.data(), 1);
    EXPECT_FALSE(out);
    EXPECT_EQ(text_of(fault), text_of({8, 1, 0, "it"}));
}

TEST(GuardedWriter, NeedsTheBytesOfATextBehindItsCount)
{
    const Write write = [](Writer &out) { out.str(borrowed("bc"), "it"); };
    EXPECT_EQ(written_before_refusal(3, 8, write, {7, 2, 1, "it"})[7], 0);
}

constexpr auto pair_fields = MDM_FIELDS(mdm_misc_str_pair_t, "it", first, second);

TEST(GuardedWriter, WritesNoRecordForWhoseWordsThereIsNoRoom)
{
    const Write write = [](Writer &out) {
        const mdm_misc_str_pair_t pair = {nullptr, nullptr};
        out.fields(&pair, pair_fields);
    };
    written_before_refusal(1, 8, write, {5, 4, 3, "it.second"});
}

TEST(GuardedWriter, WritesNoRecordForWhoseTextsThereIsNoRoom)
{
    const Write write = [](Writer &out) {
        const mdm_misc_str_pair_t pair = {borrowed("bc"), some_bytes};
        out.fields(&pair, pair_fields);
    };
    written_before_refusal(0, 16, write, {10, 10, 6, "it.second"});
}

}  // namespace
}  // namespace mdm::test::guarded_writer_test
