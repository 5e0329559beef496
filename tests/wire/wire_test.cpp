// SPDX-License-Identifier: Apache-2.0
#include "wire/cursor.hpp"

#include <array>
#include <cstring>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/allocation_trace.hpp"
#include "support/wire.hpp"

namespace mdm::test::wire_test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// The cursors of a category.
constexpr Log silence(MDM_NAMES("some_file.cpp", "some"), Log::Function::silent);

Writer writer(uint8_t *position)
{
    return {position, 0, 0, silence};
}

Reader reader(const uint8_t *position)
{
    return {position, 0, silence};
}

Bytes written_str(const char *text)
{
    Bytes buffer(64, 0xEE);
    Writer out = writer(buffer.data());
    out.str(text, "");
    buffer.resize(static_cast<size_t>(out.position() - buffer.data()));
    return buffer;
}

const uint8_t *read_str(const uint8_t *position, char **text)
{
    Reader in = reader(position);
    *text = in.str("");
    return in.position();
}

TEST(WireWords, AreLittleEndianAtAnyAlignment)
{
    alignas(8) std::array<uint8_t, 16> buffer{};
    for (size_t offset = 0; offset < 8; ++offset) {
        EXPECT_EQ(store_u32(buffer.data() + offset, 0x12345678), buffer.data() + offset + 4);
        EXPECT_EQ(buffer[offset], 0x78);
        EXPECT_EQ(buffer[offset + 1], 0x56);
        EXPECT_EQ(buffer[offset + 2], 0x34);
        EXPECT_EQ(buffer[offset + 3], 0x12);
        EXPECT_EQ(load_u32(buffer.data() + offset), 0x12345678U);
    }
}

TEST(WireWords, KeepEveryPowerOfTwoAndItsNeighbours)
{
    std::array<uint8_t, 4> buffer{};
    for (unsigned shift = 0; shift < 32; ++shift) {
        for (const uint32_t value : {(1U << shift) - 1, 1U << shift, (1U << shift) + 1}) {
            store_u32(buffer.data(), value);
            EXPECT_EQ(load_u32(buffer.data()), value);
        }
    }
}

// Q-WIRE-1
TEST(WireStr, NullAndEmptyAreBothCountZeroAndComeBackAsNull)
{
    EXPECT_EQ(written_str(nullptr), hex("00 00 00 00"));
    EXPECT_EQ(written_str(""), hex("00 00 00 00"));

    const Bytes bytes = hex("00 00 00 00");
    char *text = static_cast<char *>(sentinel());
    EXPECT_EQ(read_str(bytes.data(), &text), bytes.data() + 4);
    EXPECT_EQ(text, nullptr);
}

TEST(WireStr, CarriesTextWithoutTerminator)
{
    EXPECT_EQ(written_str("abc"), hex("03 00 00 00 61 62 63"));
}

TEST(WireStr, ComesBackAsANewBufferWithTerminator)
{
    const Bytes bytes = hex("03 00 00 00 61 62 63");
    char *text = static_cast<char *>(sentinel());
    AllocationTrace trace;
    const uint8_t *end = read_str(bytes.data(), &text);
    trace.stop();
    EXPECT_EQ(end, bytes.data() + 7);
    EXPECT_STREQ(text, "abc");
    EXPECT_THAT(trace.allocated(), ElementsAre(Block{text, 4}));
    EXPECT_THAT(trace.released(), IsEmpty());
    g_free(text);
}

// Q-WIRE-2
TEST(WireStr, ZeroByteEndsTheTextButNotTheBuffer)
{
    const Bytes bytes = hex("05 00 00 00 61 62 00 63 64");
    char *text = nullptr;
    AllocationTrace trace;
    const uint8_t *end = read_str(bytes.data(), &text);
    trace.stop();
    EXPECT_EQ(end, bytes.data() + 9);
    EXPECT_THAT(trace.allocated(), ElementsAre(Block{text, 6}));
    EXPECT_EQ(std::string(text, 6), std::string("ab\0\0\0\0", 6));
    g_free(text);
}

TEST(WireStr, OneByteAndNonAsciiTextSurvive)
{
    for (const char *text : {"x", "\xC3\xA4\xF0\x9F\x99\x82", "\x01\xFF"}) {
        const Bytes bytes = written_str(text);
        char *back = nullptr;
        read_str(bytes.data(), &back);
        EXPECT_STREQ(back, text);
        g_free(back);
    }
}

TEST(WireStr, LongTextSurvives)
{
    const std::string text(70000, 'x');
    Bytes buffer(4 + text.size());
    Writer out = writer(buffer.data());
    out.str(text.c_str(), "");
    EXPECT_EQ(out.position(), buffer.data() + buffer.size());
    EXPECT_EQ(load_u32(buffer.data()), 70000U);
    char *back = nullptr;
    EXPECT_EQ(read_str(buffer.data(), &back), buffer.data() + buffer.size());
    EXPECT_EQ(back, text);
    g_free(back);
}

TEST(WireStr, WritingAllocatesNothing)
{
    std::array<uint8_t, 16> buffer{};
    AllocationTrace trace;
    writer(buffer.data()).str("abc", "");
    trace.stop();
    EXPECT_THAT(trace.allocated(), IsEmpty());
}

TEST(WireBodyHead, CarriesTypeParamAndDataSize)
{
    mdm_pwd_info_t body{};
    body.type = 0x01020304;
    body.aux = 0xAAAAAAAA;
    body.param = 0x11121314;
    body.data_size = -2;
    body.data = sentinel();
    Bytes buffer(12);
    Writer out = writer(buffer.data());
    out.body_head(body);
    EXPECT_EQ(out.position(), buffer.data() + 12);
    EXPECT_EQ(buffer, hex("04 03 02 01 14 13 12 11 FE FF FF FF"));
}

// Q-HEAD-1
TEST(WireBodyHead, LeavesAuxAndDataAlone)
{
    mdm_pwd_info_t body{};
    body.aux = 0xAAAAAAAA;
    body.data = sentinel();
    const Bytes buffer = hex("04 03 02 01 14 13 12 11 FE FF FF FF");
    Reader in = reader(buffer.data());
    in.body_head(body);
    EXPECT_EQ(in.position(), buffer.data() + 12);
    EXPECT_EQ(body.type, 0x01020304U);
    EXPECT_EQ(body.aux, 0xAAAAAAAAU);
    EXPECT_EQ(body.param, 0x11121314U);
    EXPECT_EQ(body.data_size, -2);
    EXPECT_EQ(body.data, sentinel());
}

// A misc body's type is signed, and its `param` shares its place with a list.
TEST(WireBodyHead, ServesEveryBodyWithTheseFields)
{
    mdm_misc_info_t body{};
    body.aux = 0xAAAAAAAA;
    body.data = sentinel();
    const Bytes buffer = hex("FF FF FF FF 14 13 12 11 02 00 00 00");
    reader(buffer.data()).body_head(body);
    EXPECT_LT(body.type, 0);
    EXPECT_EQ(body.aux, 0xAAAAAAAAU);
    EXPECT_EQ(body.param, 0x11121314U);
    EXPECT_EQ(body.data_size, 2);
    EXPECT_EQ(body.data, sentinel());
    Bytes back(12);
    writer(back.data()).body_head(body);
    EXPECT_EQ(back, buffer);
}

// A record of each kind of field.
struct Sample {
    char *last;
    uint32_t unlisted;
    uint32_t number;
    uint8_t byte;
    int32_t amount;
    char *first;
};
constexpr auto sample_fields = MDM_FIELDS(Sample, "sample", first, number, byte, amount, last);

Sample sample(char *first, char *last)
{
    return {last, 0xDEADBEEF, 5, 0x7F, -1, first};
}

const Bytes sample_bytes = hex("02 00 00 00 68 69 05 00 00 00 7F FF FF FF FF 00 00 00 00");

TEST(WireFields, SizeCountsEachFieldInItsWireForm)
{
    char text[] = "hi";
    const Sample empty = sample(nullptr, nullptr);
    EXPECT_EQ(size_of_fields(&empty, sample_fields), 4U + 4 + 1 + 4 + 4);
    const Sample filled = sample(text, nullptr);
    EXPECT_EQ(size_of_fields(&filled, sample_fields), sample_bytes.size());
}

TEST(WireFields, AreWrittenInListOrder)
{
    char text[] = "hi";
    Bytes buffer(sample_bytes.size());
    Writer out = writer(buffer.data());
    const Sample record = sample(text, nullptr);
    out.fields(&record, sample_fields);
    EXPECT_EQ(out.position(), buffer.data() + buffer.size());
    EXPECT_EQ(buffer, sample_bytes);
}

TEST(WireFields, AreReadIntoANewZeroedRecord)
{
    Reader in = reader(sample_bytes.data());
    AllocationTrace trace;
    auto *record = in.record(sample_fields);
    trace.stop();
    EXPECT_EQ(in.position(), sample_bytes.data() + sample_bytes.size());
    EXPECT_STREQ(record->first, "hi");
    EXPECT_EQ(record->number, 5U);
    EXPECT_EQ(record->byte, 0x7F);
    EXPECT_EQ(record->amount, -1);
    EXPECT_EQ(record->last, nullptr);
    EXPECT_EQ(record->unlisted, 0U);
    EXPECT_THAT(trace.allocated(),
                ElementsAre(Block{record, sizeof(Sample)}, Block{record->first, 3}));
    g_free(record->first);
    g_free(record);
}

TEST(WireFields, StringsAreReleasedInListOrderAndSetToNull)
{
    char *first = heap_text("1");
    char *last = heap_text("2");
    Sample record = sample(first, last);
    AllocationTrace trace;
    release_strings(&record, sample_fields);
    trace.stop();
    EXPECT_THAT(trace.released(), ElementsAre(first, last));
    EXPECT_EQ(record.first, nullptr);
    EXPECT_EQ(record.last, nullptr);
    EXPECT_EQ(record.number, 5U);
}

TEST(WireFields, CarryTheirPaths)
{
    const char *path = mdm::Fields(sample_fields).paths();  // not those of support/format.hpp
    for (const char *expected :
         {"sample.first", "sample.number", "sample.byte", "sample.amount", "sample.last"}) {
        EXPECT_STREQ(path, expected);
        path += std::strlen(path) + 1;
    }
}

TEST(WireFields, AreRunsOfNeighboursOfOneKind)
{
    constexpr auto pair_fields = MDM_FIELDS(mdm_wifi_pair_t, "pair", ssid, value);
    std::vector<int> counts;
    for (const mdm::Run run : mdm::Fields(pair_fields)) {
        counts.push_back(run.count);
    }
    EXPECT_THAT(counts, ElementsAre(2));
    counts.clear();
    for (const mdm::Run run : mdm::Fields(sample_fields)) {  // in another order than in the record
        counts.push_back(run.count);
    }
    EXPECT_THAT(counts, ElementsAre(1, 1, 1, 1, 1));
}

TEST(WireFields, TellTheSmallestSizeOfARecord)
{
    static_assert(smallest_size(sample_fields) == 4 + 4 + 1 + 4 + 4);
}

TEST(WireFields, AListMayBeAsLongAsTheLongestRecord)
{
    constexpr auto account_fields =
        MDM_FIELDS(mdm_security_account_t, "account", num0, num1, num2, num3, str4, str5, str6,
                   str7, str8, str9, str10, str11, str12, str13, str14, str15, str16, str17, str18,
                   str19, str20, str21, str22, str23, str24, str25);
    const mdm_security_account_t account{};
    EXPECT_EQ(size_of_fields(&account, account_fields), 4U * 26);
}

TEST(WireReader, RawBytesComeBackAsAString)
{
    const Bytes bytes = hex("61 62 00 63 64");
    Reader in = reader(bytes.data());
    AllocationTrace trace;
    char *text = in.raw_bytes(5);
    trace.stop();
    EXPECT_EQ(in.position(), bytes.data() + 5);
    EXPECT_THAT(trace.allocated(), ElementsAre(Block{text, 6}));
    EXPECT_EQ(std::string(text, 6), std::string("ab\0\0\0\0", 6));
    g_free(text);
}

TEST(WireReader, RecordsStartZeroed)
{
    Reader in = reader(nullptr);
    auto *record = in.make<mdm_pwd_policy_t>();
    EXPECT_EQ(record->num8, 0U);
    EXPECT_EQ(record->str10, nullptr);
    g_free(record);
}

// Q-WIRE-6
TEST(WireReader, StringsKeepWireOrderAndNullElements)
{
    const Bytes bytes = hex("01 00 00 00 61 00 00 00 00 01 00 00 00 62");
    Reader in = reader(bytes.data());
    GList *list = in.strings(3, "");
    EXPECT_EQ(in.position(), bytes.data() + bytes.size());
    ASSERT_EQ(g_list_length(list), 3U);
    EXPECT_STREQ(static_cast<char *>(list->data), "a");
    EXPECT_EQ(list->next->data, nullptr);
    EXPECT_STREQ(static_cast<char *>(list->next->next->data), "b");
    EXPECT_EQ(list->next->prev, list);
    EXPECT_EQ(list->next->next->prev, list->next);
    g_list_free_full(list, g_free);
}

TEST(WireReader, RecordsComeBackInWireOrder)
{
    const Bytes bytes = hex("02 00 00 00") + sample_bytes +
                        hex("00 00 00 00 06 00 00 00 00 00 00 00 00 00 00 00 00");
    Reader in = reader(bytes.data());
    GList *list = in.records("", sample_fields);
    EXPECT_EQ(in.position(), bytes.data() + bytes.size());
    ASSERT_EQ(g_list_length(list), 2U);
    EXPECT_STREQ(static_cast<Sample *>(list->data)->first, "hi");
    EXPECT_EQ(static_cast<Sample *>(list->next->data)->number, 6U);
    release_records(list, sample_fields);
}

// Q-WIRE-5
TEST(WireReader, ListsAndArraysOfCountBelow1AreNull)
{
    for (const int32_t count : {0, -1, INT32_MIN}) {
        const Bytes bytes = word(static_cast<uint32_t>(count)) + hex("01 00 00 00 61");
        Reader in = reader(bytes.data());
        EXPECT_EQ(in.strings(count, ""), nullptr);
        EXPECT_TRUE(in.make_array(count, "").empty());
        EXPECT_EQ(in.make_array(count, "").data(), nullptr);
        EXPECT_EQ(in.position(), bytes.data());
        EXPECT_EQ(in.records("", sample_fields), nullptr);
        EXPECT_EQ(in.position(), bytes.data() + 4);
    }
}

TEST(WireReader, ArraysStartZeroed)
{
    Reader in = reader(nullptr);
    AllocationTrace trace;
    const auto array = in.make_array(3, "");
    trace.stop();
    EXPECT_THAT(trace.allocated(), ElementsAre(Block{array.data(), 3 * sizeof(char *)}));
    EXPECT_THAT(array, ElementsAre(nullptr, nullptr, nullptr));
    g_free(array.data());
}

// A list whose strings are "a", null, "b".
class WireLists : public ::testing::Test {
protected:
    void SetUp() override
    {
        list_ = g_list_append(list_, heap_text("a"));
        list_ = g_list_append(list_, nullptr);
        list_ = g_list_append(list_, heap_text("b"));
    }
    void TearDown() override { g_list_free_full(list_, g_free); }

    GList *list_ = nullptr;
};

TEST_F(WireLists, AreReadFromTheirFirstElement)
{
    std::vector<const char *> texts;
    for (const char *text : elements<char>(list_->next)) {
        texts.push_back(text);
    }
    EXPECT_THAT(texts, ElementsAre(::testing::StrEq("a"), nullptr, ::testing::StrEq("b")));
}

// A count begins at the given cell, and a loop over the elements at the first one.
// Q-WIRE-4
TEST_F(WireLists, AreCountedFromWhereTheyAreGiven)
{
    EXPECT_EQ(length_of(list_), 3U);
    EXPECT_EQ(length_of(list_->next), 2U);
}

// Q-WIRE-4
TEST_F(WireLists, AreWrittenWholeUnderTheCountOfALaterCell)
{
    Bytes buffer(14);
    Writer out = writer(buffer.data());
    out.strings_with_gaps(list_->next, 0, "");
    EXPECT_EQ(buffer, hex("02 00 00 00 01 00 00 00 61 01 00 00 00 62"));
}

TEST_F(WireLists, MayEndAtTheFirstNullElement)
{
    EXPECT_EQ(Lengths().measure(list_, silence), 5U);
    Bytes buffer(5);
    Writer out = writer(buffer.data());
    out.strings_before_null(list_, "");
    EXPECT_EQ(buffer, hex("01 00 00 00 61"));
    EXPECT_EQ(out.position(), buffer.data() + 5);
}

TEST_F(WireLists, MayLeaveAGapForANullElement)
{
    Bytes buffer(16, 0xEE);
    Writer out = writer(buffer.data());
    out.strings_with_gaps(list_, 2, "");
    EXPECT_EQ(buffer, hex("03 00 00 00 01 00 00 00 61 EE EE 01 00 00 00 62"));
    EXPECT_EQ(out.position(), buffer.data() + 16);
}

// A gap may be larger than the message, which ends where the writer was told.
// Q-WIRE-7
TEST_F(WireLists, ClearAGapUpToTheEndOfTheMessageAlone)
{
    Bytes buffer(18, 0xEE);
    Writer out(buffer.data(), 0, 11, silence);
    out.strings_with_gaps(list_, 4, "");
    out.clear_rest();
    EXPECT_EQ(buffer, hex("03 00 00 00 01 00 00 00 61 00 00 EE EE 01 00 00 00 62"));
    EXPECT_EQ(out.position(), buffer.data() + 18);
}

// Q-WIRE-3
TEST(WireListsOfRecords, SkipNullElementsButCountThem)
{
    char text[] = "hi";
    Sample record = sample(text, nullptr);
    GList *list = g_list_append(g_list_append(nullptr, nullptr), &record);
    Bytes buffer(4 + sample_bytes.size());
    Writer out = writer(buffer.data());
    out.records(list, "", sample_fields);
    EXPECT_EQ(buffer, hex("02 00 00 00") + sample_bytes);
    EXPECT_TRUE(has_null_element(list));
    EXPECT_TRUE(has_null_element(list->next));
    EXPECT_EQ(size_of_records_before_null(list, sample_fields), 0U);
    g_list_free(list);
}

TEST(WireListsOfRecords, AreReleasedRecordByRecordFromTheFirst)
{
    auto *record = static_cast<Sample *>(g_malloc0(sizeof(Sample)));
    record->first = heap_text("1");
    record->last = heap_text("2");
    const void *first = record->first;
    const void *last = record->last;
    GList *list = g_list_append(g_list_append(nullptr, nullptr), record);
    const void *cells[] = {list, list->next};
    AllocationTrace trace;
    release_records(list->next, sample_fields);
    trace.stop();
    EXPECT_THAT(trace.released(), ElementsAre(first, last, record, cells[0], cells[1]));
}

TEST(WireEmptyLists, EmptyOnesAreNull)
{
    EXPECT_EQ(length_of(nullptr), 0U);
    EXPECT_EQ(Lengths().measure(nullptr, silence), 0U);
    EXPECT_EQ(size_of_records_before_null(nullptr, sample_fields), 0U);
    release_records(nullptr, sample_fields);
    release_elements(nullptr);
}

TEST(WireCursors, TellWhetherTheyHaveAPosition)
{
    uint8_t byte = 0;
    EXPECT_FALSE(writer(nullptr));
    EXPECT_TRUE(writer(&byte));
    EXPECT_FALSE(reader(nullptr));
    EXPECT_TRUE(reader(&byte));
}

}  // namespace
}  // namespace mdm::test::wire_test
