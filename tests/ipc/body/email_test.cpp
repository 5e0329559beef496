// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/allocation_trace.hpp"
#include "support/bodies.hpp"
#include "support/handlers.hpp"
#include "support/log_recorder.hpp"
#include "support/wire.hpp"

namespace mdm::test::email_test {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsNull;
using ::testing::StrEq;

constexpr Handlers email(39);

mdm_body_t body(uint32_t type, int32_t data_size, void *data)
{
    return headed_body<&mdm_body_t::email>(type, data_size, data);
}

// No two of its fields are alike.
mdm_email_account_t full_account()
{
    return {0x10,           0x11,
            0x12,           0x13,
            0x14,           0x15,
            0x16,           0x17,
            0xFFFFFF18,     borrowed("9"),
            borrowed("10"), borrowed("11"),
            borrowed("12"), borrowed("13"),
            borrowed("14"), borrowed("15"),
            borrowed("16"), borrowed("17"),
            borrowed("18"), borrowed("19"),
            borrowed("20"), borrowed("last")};
}

const Bytes last_nine_strings = hex("02 00 00 00 31 33 02 00 00 00 31 34 02 00 00 00 31 35 "
                                    "02 00 00 00 31 36 02 00 00 00 31 37 02 00 00 00 31 38 "
                                    "02 00 00 00 31 39 02 00 00 00 32 30 04 00 00 00 6C 61 73 74");
const Bytes account_bytes = hex("10 00 00 00 11 00 00 00 12 00 00 00 14 00 00 00 16 00 00 00 "
                                "13 00 00 00 15 00 00 00") +
                            last_nine_strings;
const Bytes element_bytes = hex("10 00 00 00 11 00 00 00 12 00 00 00 13 00 00 00 14 00 00 00 "
                                "15 00 00 00 16 00 00 00 17 00 00 00 18 FF FF FF 01 00 00 00 39 "
                                "02 00 00 00 31 30 02 00 00 00 31 31 02 00 00 00 31 32") +
                            last_nine_strings;
const Bytes settings_bytes = hex("02 00 00 00 31 36 02 00 00 00 31 35 02 00 00 00 31 34");
const Bytes value_bytes = hex("FE 00 00 80 03 00 00 00 61 62 63");

// One payload of each form, as it travels.
struct Payload {
    uint32_t type;
    Bytes bytes;
    int32_t data_size;  // as the sender computes it
    uint32_t size;
};
const std::vector<Payload> payloads = {
    {359, account_bytes, 28 + 36 + 20, 12 + 28 + 36 + 20},
    {362, settings_bytes, 12 + 6, 12 + 12 + 6},
    {363, hex("02 00 00 00") + element_bytes + Bytes(88), 16 + 115 + 88, 16 + 115 + 88},
    {5, value_bytes, 11, 23},
};

Arrival arrival(uint32_t type, int32_t data_size, const Bytes &payload)
{
    return receive(email, head_bytes(type, data_size) + payload);
}

const mdm_email_account_t &account_at(const void *record)
{
    return *static_cast<const mdm_email_account_t *>(record);
}

const mdm_email_value_t &value_of(const mdm_body_t &body)
{
    return *static_cast<const mdm_email_value_t *>(body.email.data);
}

std::array<uint32_t, 9> numbers_of(const mdm_email_account_t &account)
{
    return {account.num0, account.num1, account.num2, account.num3, account.num4,
            account.num5, account.num6, account.num7, account.num8};
}

std::array<char *, 13> strings_of(const mdm_email_account_t &account)
{
    return {account.str9,  account.str10, account.str11, account.str12, account.str13,
            account.str14, account.str15, account.str16, account.str17, account.str18,
            account.str19, account.str20, account.str21};
}

// Gives every string that is null a text of its own.
void fill_strings(mdm_email_account_t &account)
{
    for (char **text :
         {&account.str9, &account.str10, &account.str11, &account.str12, &account.str13,
          &account.str14, &account.str15, &account.str16, &account.str17, &account.str18,
          &account.str19, &account.str20, &account.str21}) {
        *text = *text == nullptr ? heap_text("more") : *text;
    }
}

void release_strings_of(const mdm_email_account_t &account)
{
    std::ranges::for_each(strings_of(account), g_free);
}

// The free handler leaves the record of settings to the test.
void free_whole(mdm_body_t &body)
{
    email.free(&body);
    if (body.email.type == 362) {
        g_free(body.email.data);
    }
}

// The blocks that the free handler releases. By the time a record goes, so many of its strings,
// counted from the end, are null.
std::vector<const void *> release(mdm_body_t &body, const std::vector<const void *> &records,
                                  std::ptrdiff_t released_strings)
{
    AllocationTrace trace;
    trace.during_release([&](const void *block) {
        if (std::ranges::find(records, block) != records.end()) {
            const auto strings = strings_of(account_at(block));
            EXPECT_TRUE(std::all_of(strings.end() - released_strings, strings.end(),
                                    [](const char *text) { return text == nullptr; }));
        }
    });
    email.free(&body);
    trace.stop();
    return trace.released();
}

TEST(Email, EveryFormHasItsSizeWhicheverDataSizeItBeginsWith)
{
    for (const Payload &payload : payloads) {
        for (const int32_t data_size : {1, -1, INT32_MIN, INT32_MAX}) {
            mdm_body_t sent = arrival(payload.type, data_size, payload.bytes).body;
            EXPECT_EQ(sent.email.data_size, data_size);
            expect_size(email, sent, payload.size, payload.data_size);
            free_whole(sent);
        }
    }
}

// Q-EMAIL-1
TEST(Email, AccountCarriesSevenNumbersOutOfOrderAndNineStrings)
{
    mdm_email_account_t record = full_account();
    mdm_body_t sent = body(359, -7, &record);
    EXPECT_EQ(email.size(&sent), 96U);
    const Bytes bytes = email.write(&sent);
    EXPECT_EQ(bytes, hex("67 01 00 00 04 03 02 01 54 00 00 00") + account_bytes);
    EXPECT_EQ(sent.email.data, &record);
}

TEST(Email, AccountWithNullStringsIs76Bytes)
{
    mdm_email_account_t record{};
    mdm_body_t sent = body(359, 1, &record);
    EXPECT_EQ(email.size(&sent), 76U);
    EXPECT_EQ(sent.email.data_size, 64);
    EXPECT_EQ(email.write(&sent), head_bytes(359, 64) + Bytes(64));
}

TEST(Email, AccountArrivesWithTheFieldsThatDoNotTravelZero)
{
    auto [back, blocks] = arrival(359, 84, account_bytes);
    expect_headed<&mdm_body_t::email>(back, 359, 84);
    const mdm_email_account_t &account = account_at(back.email.data);
    EXPECT_THAT(numbers_of(account), ElementsAre(0x10, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0, 0));
    EXPECT_THAT(strings_of(account),
                ElementsAre(IsNull(), IsNull(), IsNull(), IsNull(), StrEq("13"), StrEq("14"),
                            StrEq("15"), StrEq("16"), StrEq("17"), StrEq("18"), StrEq("19"),
                            StrEq("20"), StrEq("last")));
    ASSERT_EQ(blocks.size(), 1U + 9);
    EXPECT_EQ(blocks.front(), (Block{&account, sizeof account}));
    EXPECT_EQ(blocks.back(), (Block{account.str21, 5}));
    email.free(&back);
}

// Q-EMAIL-2
TEST(Email, SettingsCarryThreeStringsInDescendingOrder)
{
    mdm_email_account_t record = full_account();
    mdm_body_t sent = body(362, 1, &record);
    EXPECT_EQ(email.size(&sent), 30U);
    EXPECT_EQ(email.write(&sent), hex("6A 01 00 00 04 03 02 01 12 00 00 00") + settings_bytes);

    const auto [back, blocks] = arrival(362, 18, settings_bytes);
    const mdm_email_account_t &account = account_at(back.email.data);
    EXPECT_THAT(numbers_of(account), Each(0U));
    EXPECT_THAT(strings_of(account), ElementsAre(IsNull(), IsNull(), IsNull(), IsNull(), IsNull(),
                                                 StrEq("14"), StrEq("15"), StrEq("16"), IsNull(),
                                                 IsNull(), IsNull(), IsNull(), IsNull()));
    EXPECT_THAT(blocks, ElementsAre(Block{&account, sizeof account}, Block{account.str16, 3},
                                    Block{account.str15, 3}, Block{account.str14, 3}));
    release_blocks(blocks);
}

TEST(Email, SettingsWithNullStringsAre24BytesWithEveryCall)
{
    mdm_email_account_t record{};
    mdm_body_t sent = body(362, 1, &record);
    for (int call = 0; call < 2; ++call) {
        EXPECT_EQ(email.size(&sent), 24U);
        EXPECT_EQ(sent.email.data_size, 12);
        EXPECT_EQ(email.write(&sent), head_bytes(362, 12) + Bytes(12));
    }
}

// Q-BODY-8
TEST(Email, ListElementCarriesEveryFieldInOrder)
{
    mdm_email_account_t first = full_account();
    mdm_email_account_t second{};
    const Cells list = cells({&first, &second});
    mdm_body_t sent = body(363, 1, list.get());
    EXPECT_EQ(email.size(&sent), 219U);
    const Bytes bytes = email.write(&sent);
    EXPECT_EQ(bytes, hex("6B 01 00 00 04 03 02 01 DB 00 00 00 02 00 00 00") + element_bytes +
                         Bytes(36 + 52));

    auto [back, blocks] = arrival(363, 219, payloads[2].bytes);
    const auto accounts = elements_of(back.email.data);
    ASSERT_EQ(accounts.size(), 2U);
    EXPECT_THAT(numbers_of(account_at(accounts[0])),
                ElementsAre(0x10, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0xFFFFFF18));
    EXPECT_THAT(strings_of(account_at(accounts[0])),
                ElementsAre(StrEq("9"), StrEq("10"), StrEq("11"), StrEq("12"), StrEq("13"),
                            StrEq("14"), StrEq("15"), StrEq("16"), StrEq("17"), StrEq("18"),
                            StrEq("19"), StrEq("20"), StrEq("last")));
    EXPECT_THAT(numbers_of(account_at(accounts[1])), Each(0U));
    EXPECT_THAT(strings_of(account_at(accounts[1])), Each(IsNull()));
    EXPECT_EQ(blocks.size(), 2U + 13 + 2);
    email.free(&back);
}

TEST(Email, ListOfOneEmptyAccountIs104Bytes)
{
    mdm_email_account_t record{};
    GList *list = list_of({&record});
    mdm_body_t sent = body(363, 1, list);
    EXPECT_EQ(email.size(&sent), 104U);
    EXPECT_EQ(sent.email.data_size, 104);
    EXPECT_EQ(email.write(&sent), head_bytes(363, 104) + hex("01 00 00 00") + Bytes(88));
    g_list_free(list);
}

// Q-EMAIL-3
TEST(Email, SizeOfAListEndsAtItsFirstNullElementAndTheWriterGoesOn)
{
    mdm_email_account_t empty{};
    mdm_email_account_t full = full_account();
    struct Case {
        GList *list;
        int32_t size;
        Bytes payload;
    };
    const Case cases[] = {
        {list_of({nullptr}), 16, hex("01 00 00 00")},
        {list_of({nullptr, &full}), 16, hex("02 00 00 00") + element_bytes},
        {list_of({&empty, nullptr}), 104, hex("02 00 00 00") + Bytes(88)},
        {list_of({&empty, nullptr, &full, nullptr, &full}), 104,
         hex("05 00 00 00") + Bytes(88) + element_bytes + element_bytes},
    };
    for (const auto &[list, size, payload] : cases) {
        mdm_body_t sent = body(363, 1, list);
        const Bytes expected = head_bytes(363, size) + payload;
        LogRecorder log;
        EXPECT_EQ(email.size(&sent), static_cast<uint32_t>(size));
        EXPECT_EQ(log.take(), enter_and_leave(email.size));
        EXPECT_EQ(sent.email.data_size, size);
        EXPECT_EQ(email.write(&sent), expected);
        EXPECT_EQ(log.take(), enter_and_leave(email.set));
        g_list_free(list);
    }
}

TEST(Email, ListsOfManyAccountsTravel)
{
    expect_many_records_to_travel(email, 363, &mdm_email_account_t::num8, 250, 16 + 250 * 88);
}

TEST(Email, ListCountBelow1IsReceivedAsNull)
{
    expect_counts_below_1_as_null(email, 363);
}

TEST(Email, ValueCarriesANumberAndAText)
{
    mdm_email_value_t record{0x800000FE, borrowed("abc")};
    mdm_body_t sent = body(5, 1, &record);
    EXPECT_EQ(email.size(&sent), 23U);
    EXPECT_EQ(sent.email.data_size, 11);
    const Bytes bytes = email.write(&sent);
    EXPECT_EQ(bytes, hex("05 00 00 00 04 03 02 01 0B 00 00 00") + value_bytes);

    auto [back, blocks] = arrival(5, 11, value_bytes);
    EXPECT_EQ(value_of(back).num0, 0x800000FEU);
    EXPECT_STREQ(value_of(back).str1, "abc");
    EXPECT_THAT(blocks, ElementsAre(Block{back.email.data, sizeof(mdm_email_value_t)},
                                    Block{value_of(back).str1, 4}));
    email.free(&back);
}

TEST(Email, TextsOfEveryKindTravel)
{
    const std::string long_text(400, '\xE9');
    for (const char *text :
         {static_cast<const char *>(nullptr), "", "x", "\xC3\xBC\xFF\x01", long_text.c_str()}) {
        const size_t length = text == nullptr ? 0 : std::string(text).size();
        mdm_email_value_t record{1, borrowed(text)};
        mdm_body_t sent = body(0xFFFFFFFF, 1, &record);
        EXPECT_EQ(email.size(&sent), 20 + length);
        const Bytes bytes = email.write(&sent);
        mdm_body_t back{};
        EXPECT_EQ(email.read(&back, bytes), 20 + length);
        EXPECT_STREQ(value_of(back).str1, length == 0 ? nullptr : text);
        email.free(&back);

        mdm_email_account_t account{};
        account.str9 = account.str15 = account.str21 = borrowed(text);
        GList *list = list_of({&account});
        for (const auto &[type, data, size] :
             {std::tuple<uint32_t, void *, size_t>{359, &account, 76 + 2 * length},
              {362, &account, 24 + length},
              {363, list, 104 + 3 * length}}) {
            mdm_body_t with_account = body(type, 1, data);
            EXPECT_EQ(email.size(&with_account), size);
            EXPECT_EQ(email.write(&with_account).size(), size);
        }
        g_list_free(list);
    }
}

// Q-BODY-3
TEST(Email, NoPayloadIsTheHeadAlone)
{
    for (const Payload &payload : payloads) {
        expect_head_alone(email, body(payload.type, 0, sentinel()));
        expect_head_received(email, payload.type, 0, nullptr);
        for (const int32_t data_size : {1, -1, INT32_MIN}) {
            expect_head_alone(email, body(payload.type, data_size, nullptr));
        }
    }
}

TEST(Email, EveryTypeButThreeIsAValue)
{
    const Bytes payload = hex("01 00 00 00") + Bytes(88);
    for (const uint32_t type : swept_types({359, 362, 363})) {
        const size_t size = type == 359 ? 76 : type == 362 ? 25 : type == 363 ? 104 : 20;
        mdm_body_t back{};
        EXPECT_EQ(email.read(&back, head_bytes(type, 1) + payload), size) << type;
        // The first string of settings is empty, but not null, which no byte tells.
        const size_t sent_size = type == 362 ? 24 : size;
        EXPECT_EQ(email.size(&back), sent_size) << type;
        EXPECT_EQ(email.write(&back).size(), sent_size) << type;
        EXPECT_EQ(email.release(&back).size(), type == 363 ? 2U : 1U) << type;
        if (type == 362) {
            g_free(back.email.data);
        }
    }
}

// Q-BODY-7, Q-EMAIL-5
TEST(Email, FreeReleasesAnAccountsLastNineStringsThenItsRecord)
{
    mdm_body_t back = arrival(359, -1, account_bytes).body;
    auto &account = *static_cast<mdm_email_account_t *>(back.email.data);
    fill_strings(account);
    const auto strings = strings_of(account);
    std::vector<const void *> expected(strings.begin() + 4, strings.end());
    expected.push_back(&account);
    LogRecorder log;
    EXPECT_EQ(release(back, {&account}, 9), expected);
    EXPECT_EQ(log.take(), enter_and_leave(email.free));
    EXPECT_EQ(back.email.data, &account);
    EXPECT_EQ(back.email.data_size, -1);
    std::for_each(strings.begin(), strings.begin() + 4, g_free);
}

// Q-EMAIL-4
TEST(Email, FreeReleasesThreeStringsOfSettingsAndKeepsTheRecord)
{
    mdm_body_t back = arrival(362, 18, settings_bytes).body;
    auto &account = *static_cast<mdm_email_account_t *>(back.email.data);
    fill_strings(account);
    const std::vector<const void *> expected = {account.str16, account.str15, account.str14};
    LogRecorder log;
    EXPECT_EQ(release(back, {}, 0), expected);
    EXPECT_EQ(log.take(), enter_and_leave(email.free));
    EXPECT_EQ(release(back, {}, 0), std::vector<const void *>{});
    EXPECT_EQ(back.email.data, &account);
    EXPECT_EQ(back.email.data_size, 18);
    const auto left = strings_of(account);
    EXPECT_EQ(std::ranges::count(left, nullptr), 3);
    EXPECT_THAT(std::vector(left.begin() + 5, left.begin() + 8), Each(IsNull()));
    release_strings_of(account);
    g_free(back.email.data);
}

TEST(Email, FreeReleasesEveryAccountOfAListThenTheCells)
{
    mdm_body_t back = arrival(363, 219, payloads[2].bytes).body;
    auto *list = static_cast<GList *>(back.email.data);
    back.email.data = list = g_list_insert(list, nullptr, 1);
    const auto cells = cells_of(list);
    const auto accounts = elements_of(list);
    std::vector<const void *> expected;
    std::ranges::copy(strings_of(account_at(accounts[0])), std::back_inserter(expected));
    expected.insert(expected.end(), {accounts[0], accounts[2], cells[0], cells[1], cells[2]});
    LogRecorder log;
    EXPECT_EQ(release(back, {accounts[0], accounts[2]}, 13), expected);
    EXPECT_EQ(log.take(), enter_and_leave(email.free));
    EXPECT_EQ(back.email.data, list);
    EXPECT_EQ(back.email.data_size, 219);
}

TEST(Email, FreeReleasesAValuesTextThenItsRecord)
{
    mdm_body_t back = arrival(5, 11, value_bytes).body;
    const void *data = back.email.data;
    const void *text = value_of(back).str1;
    LogRecorder log;
    AllocationTrace trace;
    trace.during_release([&](const void *block) {
        if (block == data) {
            EXPECT_EQ(value_of(back).str1, nullptr);
        }
    });
    email.free(&back);
    trace.stop();
    EXPECT_THAT(trace.released(), ElementsAre(text, data));
    EXPECT_EQ(log.take(), enter_and_leave(email.free));
    EXPECT_EQ(back.email.data, data);
    EXPECT_EQ(back.email.data_size, 11);
}

// Q-BODY-5
TEST(Email, FreeWithoutAPayloadReleasesNothing)
{
    for (const Payload &payload : payloads) {
        expect_no_release(email, body(payload.type, 3, nullptr), enter_and_leave(email.free));
        expect_no_release(email, body(payload.type, 0, sentinel()), enter_and_leave(email.free));
    }
}

TEST(Email, BothMessageTypesCarryEveryFormAndLeakTheRecordOfSettingsOnly)
{
    for (const uint8_t message_type : {email.type, uint8_t{40}}) {
        for (const Payload &payload : payloads) {
            mdm_body_t body = arrival(payload.type, 1, payload.bytes).body;
            const auto [journey, again] = travel_and_write_again(message_type, body);
            EXPECT_EQ(journey.bytes, head_bytes(payload.type, payload.data_size) + payload.bytes);
            EXPECT_EQ(again, journey.bytes);
            free_whole(body);
            std::vector<Block> settings;
            if (payload.type == 362) {
                settings = {{journey.received.body.email.data, sizeof(mdm_email_account_t)}};
            }
            EXPECT_EQ(journey.kept, settings);
            release_blocks(journey.kept);
        }
    }
}

TEST(Email, LogsEnterAndExitOnly)
{
    for (const Payload &payload : payloads) {
        mdm_body_t some = arrival(payload.type, 1, payload.bytes).body;
        expect_entry_and_exit(email, some);
        expect_entry_and_exit(email, body(payload.type, 0, some.email.data));
        free_whole(some);
    }
}

}  // namespace
}  // namespace mdm::test::email_test
