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

namespace mdm::test::eas_test {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsNull;
using ::testing::StrEq;

constexpr Handlers eas(11);
constexpr uint32_t account_type = 98;
constexpr uint32_t settings_type = 104;
constexpr uint32_t list_type = 106;
constexpr uint32_t value_type = 7;
constexpr std::array every_type = {account_type, settings_type, list_type, value_type};

mdm_body_t body(uint32_t type, int32_t data_size, void *data)
{
    return headed_body<&mdm_body_t::eas>(type, data_size, data);
}

// No two of its fields are alike.
mdm_eas_account_t full_account()
{
    return {0x10,           0x11,          0x12,          0x13,
            0x14,           0xFFFFFF15,    borrowed("6"), borrowed("7"),
            borrowed("8"),  borrowed("9"), borrowed("A"), borrowed("eleven"),
            borrowed("12"), borrowed("D"), borrowed("14")};
}

const Bytes account_bytes = hex("10 00 00 00 11 00 00 00 12 00 00 00 13 00 00 00 14 00 00 00 "
                                "15 FF FF FF 01 00 00 00 36 01 00 00 00 37 01 00 00 00 38 "
                                "01 00 00 00 39 01 00 00 00 41 06 00 00 00 65 6C 65 76 65 6E "
                                "02 00 00 00 31 32 01 00 00 00 44 02 00 00 00 31 34");
const Bytes settings_bytes = hex("01 00 00 00 38 01 00 00 00 41 01 00 00 00 44");
const Bytes list_bytes =
    hex("02 00 00 00") + account_bytes + hex("20 00 00 00") + Bytes(20) + Bytes(36);
const Bytes value_bytes = hex("78 56 34 F2 05 00 00 00 68 65 6C 6C 6F");

const Bytes &payload_bytes(uint32_t type)
{
    switch (type) {
    case account_type:
        return account_bytes;
    case settings_type:
        return settings_bytes;
    case list_type:
        return list_bytes;
    default:
        return value_bytes;
    }
}

// The body that arrives with a payload of the type, and its blocks.
Arrival arrival(uint32_t type, int32_t data_size = 1)
{
    return receive(eas, head_bytes(type, data_size) + payload_bytes(type));
}

const mdm_eas_account_t &account_at(const void *record)
{
    return *static_cast<const mdm_eas_account_t *>(record);
}

const mdm_eas_value_t &value_at(const void *record)
{
    return *static_cast<const mdm_eas_value_t *>(record);
}

std::array<uint32_t, 6> numbers_of(const mdm_eas_account_t &account)
{
    return {account.num0, account.num1, account.num2, account.num3, account.num4, account.num5};
}

std::array<char *, 9> strings_of(const mdm_eas_account_t &account)
{
    return {account.str6,  account.str7,  account.str8,  account.str9, account.str10,
            account.str11, account.str12, account.str13, account.str14};
}

void expect_full(const mdm_eas_account_t &account)
{
    EXPECT_THAT(numbers_of(account), ElementsAre(0x10, 0x11, 0x12, 0x13, 0x14, 0xFFFFFF15));
    EXPECT_THAT(strings_of(account),
                ElementsAre(StrEq("6"), StrEq("7"), StrEq("8"), StrEq("9"), StrEq("A"),
                            StrEq("eleven"), StrEq("12"), StrEq("D"), StrEq("14")));
}

void expect_sizes(mdm_body_t &sent, uint32_t size, int32_t data_size)
{
    EXPECT_EQ(eas.size(&sent), size);
    EXPECT_EQ(sent.eas.data_size, data_size);
}

TEST(Eas, AccountCarriesSixNumbersAndNineStrings)
{
    mdm_eas_account_t record = full_account();
    mdm_body_t sent = body(account_type, 1, &record);
    expect_sizes(sent, 12 + 76, 76);
    expect_sizes(sent, 12 + 76, 76);
    EXPECT_EQ(eas.write(&sent), hex("62 00 00 00 04 03 02 01 4C 00 00 00") + account_bytes);
    EXPECT_EQ(sent.eas.data, &record);
}

TEST(Eas, AccountWithNullStringsIs72Bytes)
{
    mdm_eas_account_t record{};
    mdm_body_t sent = body(account_type, -1, &record);
    expect_sizes(sent, 72, 60);
    const Bytes bytes = eas.write(&sent);
    EXPECT_EQ(bytes, head_bytes(account_type, 60) + Bytes(60));

    mdm_body_t received{};
    EXPECT_EQ(eas.read(&received, bytes), 72U);
    EXPECT_THAT(strings_of(account_at(received.eas.data)), Each(IsNull()));
    eas.free(&received);
}

TEST(Eas, AccountComesBackFieldByField)
{
    auto [back, blocks] = arrival(account_type, 76);
    expect_headed<&mdm_body_t::eas>(back, account_type, 76);
    const mdm_eas_account_t &account = account_at(back.eas.data);
    expect_full(account);
    EXPECT_THAT(blocks, ElementsAre(Block{&account, sizeof account}, Block{account.str6, 2},
                                    Block{account.str7, 2}, Block{account.str8, 2},
                                    Block{account.str9, 2}, Block{account.str10, 2},
                                    Block{account.str11, 7}, Block{account.str12, 3},
                                    Block{account.str13, 2}, Block{account.str14, 3}));
    eas.free(&back);
}

TEST(Eas, SettingsCarryThreeStringsOfAnAccount)
{
    mdm_eas_account_t record = full_account();
    mdm_body_t sent = body(settings_type, 5, &record);
    expect_sizes(sent, 12 + 5 + 15, 5 + 15);
    EXPECT_EQ(eas.write(&sent), head_bytes(settings_type, 20) + settings_bytes);

    auto [back, blocks] = arrival(settings_type);
    const mdm_eas_account_t &account = account_at(back.eas.data);
    EXPECT_THAT(numbers_of(account), Each(0U));
    EXPECT_THAT(strings_of(account),
                ElementsAre(IsNull(), IsNull(), StrEq("8"), IsNull(), StrEq("A"), IsNull(),
                            IsNull(), StrEq("D"), IsNull()));
    EXPECT_THAT(blocks, ElementsAre(Block{&account, sizeof account}, Block{account.str8, 2},
                                    Block{account.str10, 2}, Block{account.str13, 2}));
    eas.free(&back);
}

// Q-EAS-1
TEST(Eas, SettingsSizeAddsToDataSizeWithEveryCall)
{
    mdm_eas_account_t record{};
    mdm_body_t sent = body(settings_type, 1, &record);
    expect_sizes(sent, 25, 13);
    EXPECT_EQ(eas.write(&sent), head_bytes(settings_type, 13) + Bytes(12));
    expect_sizes(sent, 37, 25);
    EXPECT_EQ(eas.write(&sent), head_bytes(settings_type, 25) + Bytes(12));

    sent.eas.data_size = -1;
    expect_sizes(sent, 23, 11);
    sent.eas.data_size = INT32_MIN;
    expect_sizes(sent, 0x80000000U + 24, INT32_MIN + 12);
}

// Q-EAS-2
TEST(Eas, SettingsWhoseSumIsZeroAreSentAsTheHeadAlone)
{
    mdm_eas_account_t record{};
    mdm_body_t sent = body(settings_type, -12, &record);
    expect_sizes(sent, 12, 0);
    EXPECT_EQ(eas.write(&sent), head_bytes(settings_type, 0));
    expect_sizes(sent, 12, 0);
}

// Q-EAS-1
TEST(Eas, SettingsMessageEndsWithAsManyZeroBytesAsDataSizeHeld)
{
    mdm_eas_account_t record = full_account();
    mdm_msg_t msg = message(eas.type);
    msg.body = body(settings_type, 5, &record);
    const Bytes bytes = serialize(msg);
    EXPECT_EQ(Bytes(bytes.begin() + 40, bytes.end()),
              head_bytes(settings_type, 20) + settings_bytes + Bytes(5));

    mdm_msg_t received{};
    EXPECT_EQ(deserialize(received, bytes), 0);
    EXPECT_EQ(received.body.eas.data_size, 20);
    EXPECT_STREQ(account_at(received.body.eas.data).str13, "D");
    ipc_free(&received);
}

// Q-BODY-8
TEST(Eas, ListCarriesACountAndAccountsAndCountsTheWholeBody)
{
    mdm_eas_account_t first = full_account();
    mdm_eas_account_t second{};
    second.num0 = 0x20;
    GList *list = list_of({&first, &second});
    mdm_body_t sent = body(list_type, -1, list);
    expect_sizes(sent, 16 + 76 + 60, 16 + 76 + 60);
    expect_sizes(sent, 16 + 76 + 60, 16 + 76 + 60);
    EXPECT_EQ(eas.write(&sent), head_bytes(list_type, 152) + list_bytes);
    g_list_free(list);
}

TEST(Eas, ListOfTwoEmptyAccountsIs136Bytes)
{
    mdm_eas_account_t record{};
    GList *list = list_of({&record, &record});
    mdm_body_t sent = body(list_type, 1, list);
    expect_sizes(sent, 136, 136);
    EXPECT_EQ(eas.write(&sent), head_bytes(list_type, 136) + hex("02 00 00 00") + Bytes(120));
    g_list_free(list);
}

TEST(Eas, ListComesBackInWireOrder)
{
    auto [back, blocks] = arrival(list_type);
    const std::vector<const void *> accounts = elements_of(back.eas.data);
    ASSERT_EQ(accounts.size(), 2U);
    expect_full(account_at(accounts[0]));
    EXPECT_THAT(numbers_of(account_at(accounts[1])), ElementsAre(0x20, 0, 0, 0, 0, 0));
    EXPECT_THAT(strings_of(account_at(accounts[1])), Each(IsNull()));
    EXPECT_EQ(blocks.size(), 2U + 9 + 2);
    eas.free(&back);
}

TEST(Eas, ListsOfManyAccountsTravel)
{
    expect_many_records_to_travel(eas, list_type, &mdm_eas_account_t::num5, 300, 16 + 300 * 60);
}

TEST(Eas, ListCountBelow1IsReceivedAsNull)
{
    expect_counts_below_1_as_null(eas, list_type);
}

// Q-BODY-9
TEST(Eas, ListWithANullElementHasNoSize)
{
    mdm_eas_account_t record{};
    expect_no_size_with_null_element(eas, list_type, &record, "acconts is NULL");
}

// Q-BODY-9
TEST(Eas, NullElementIsCountedButNotWritten)
{
    mdm_eas_account_t record = full_account();
    GList *list = list_of({nullptr, &record, nullptr, &record});
    mdm_body_t sent = body(list_type, 4, list);
    LogRecorder log;
    EXPECT_EQ(eas.write(&sent), hex("6A 00 00 00 04 03 02 01 04 00 00 00 04 00 00 00") +
                                    account_bytes + account_bytes);
    EXPECT_EQ(log.take(), enter_and_leave(eas.set));
    g_list_free(list);
}

TEST(Eas, ValueCarriesANumberAndAText)
{
    mdm_eas_value_t record{0xF2345678, borrowed("hello")};
    mdm_body_t sent = body(value_type, 1, &record);
    expect_sizes(sent, 25, 13);
    expect_sizes(sent, 25, 13);
    EXPECT_EQ(eas.write(&sent), hex("07 00 00 00 04 03 02 01 0D 00 00 00") + value_bytes);

    auto [back, blocks] = arrival(value_type, 13);
    EXPECT_EQ(value_at(back.eas.data).num0, 0xF2345678U);
    EXPECT_STREQ(value_at(back.eas.data).str1, "hello");
    EXPECT_THAT(blocks, ElementsAre(Block{back.eas.data, sizeof record},
                                    Block{value_at(back.eas.data).str1, 6}));
    eas.free(&back);
}

TEST(Eas, ValueWithoutATextIs20Bytes)
{
    for (char *text : {static_cast<char *>(nullptr), borrowed("")}) {
        mdm_eas_value_t record{1, text};
        mdm_body_t sent = body(value_type, INT32_MIN, &record);
        expect_sizes(sent, 20, 8);
        mdm_body_t received{};
        EXPECT_EQ(eas.read(&received, eas.write(&sent)), 20U);
        EXPECT_EQ(value_at(received.eas.data).num0, 1U);
        EXPECT_EQ(value_at(received.eas.data).str1, nullptr);
        eas.free(&received);
    }
}

TEST(Eas, StringsOfEveryKindTravel)
{
    std::string text(300, 'y');
    mdm_eas_account_t record{};
    record.str6 = borrowed("");
    record.str8 = text.data();
    record.str9 = borrowed("\xC3\xA4\xFF\x01");
    record.str14 = borrowed("x");
    mdm_body_t sent = body(account_type, 1, &record);
    expect_sizes(sent, 72 + 305, 60 + 305);
    const Bytes bytes = eas.write(&sent);
    mdm_body_t received{};
    EXPECT_EQ(eas.read(&received, bytes), 72U + 305);
    EXPECT_THAT(strings_of(account_at(received.eas.data)),
                ElementsAre(IsNull(), IsNull(), StrEq(text), StrEq("\xC3\xA4\xFF\x01"), IsNull(),
                            IsNull(), IsNull(), IsNull(), StrEq("x")));
    eas.free(&received);
}

// Q-BODY-3
TEST(Eas, NoPayloadIsTheHeadAlone)
{
    for (const uint32_t type : every_type) {
        expect_head_alone(eas, body(type, 0, sentinel()));
        expect_head_received(eas, type, 0, nullptr);
        for (const int32_t data_size : {1, -1, INT32_MIN}) {
            expect_head_alone(eas, body(type, data_size, nullptr));
        }
    }
}

// Q-BODY-2
TEST(Eas, EveryDataSizeButZeroIsAPayload)
{
    for (const uint32_t type : every_type) {
        for (const int32_t data_size : {1, -1, INT32_MIN, INT32_MAX}) {
            mdm_body_t back = arrival(type, data_size).body;
            EXPECT_EQ(back.eas.data_size, data_size);
            EXPECT_EQ(eas.write(&back), head_bytes(type, data_size) + payload_bytes(type));
            EXPECT_THAT(eas.release(&back), ::testing::Not(IsEmpty()));
        }
    }
}

TEST(Eas, EveryTypeButThreeIsAValue)
{
    struct Traits {
        uint32_t size;
        size_t written;
        size_t released;
    };
    const auto traits_of = [](uint32_t type) -> Traits {
        switch (type) {
        case account_type:
            return {72, 72, 1};
        case settings_type:
            return {25, 24, 2};
        case list_type:
            return {76, 76, 2};
        default:
            return {20, 20, 1};
        }
    };
    for (const uint32_t type : swept_types({98, 104, 106})) {
        SCOPED_TRACE(type);
        const Traits traits = traits_of(type);
        mdm_body_t received{};
        EXPECT_EQ(eas.read(&received, head_bytes(type, 1) + hex("01 00 00 00") + Bytes(60)),
                  traits.size);
        EXPECT_EQ(eas.size(&received), traits.size);
        EXPECT_EQ(eas.write(&received).size(), traits.written);
        EXPECT_EQ(eas.release(&received).size(), traits.released);
    }
}

std::vector<const void *> records_of(const mdm_body_t &body)
{
    return body.eas.type == list_type ? elements_of(body.eas.data)
                                      : std::vector<const void *>{body.eas.data};
}

std::vector<char *> strings_of(uint32_t type, const void *record)
{
    if (type == value_type) {
        return {value_at(record).str1};
    }
    const auto strings = strings_of(account_at(record));
    return {strings.begin(), strings.end()};
}

// The blocks to be released: the strings of each record before the record, then the list's cells.
std::vector<const void *> blocks_of(const mdm_body_t &body)
{
    std::vector<const void *> blocks;
    for (const void *record : records_of(body)) {
        const auto strings = strings_of(body.eas.type, record);
        std::ranges::copy_if(strings, std::back_inserter(blocks),
                             [](const char *text) { return text != nullptr; });
        blocks.push_back(record);
    }
    if (body.eas.type == list_type) {
        std::ranges::copy(cells_of(body.eas.data), std::back_inserter(blocks));
    }
    return blocks;
}

// Q-BODY-7, Q-EAS-3
TEST(Eas, FreeReleasesEverythingInSilenceAndLeavesTheBody)
{
    for (const uint32_t type : every_type) {
        mdm_body_t back = arrival(type, -1).body;
        const void *data = back.eas.data;
        const auto records = records_of(back);
        const auto blocks = blocks_of(back);
        LogRecorder log;
        AllocationTrace trace;
        trace.during_release([&](const void *block) {
            if (std::ranges::find(records, block) != records.end()) {
                EXPECT_THAT(strings_of(type, block), Each(IsNull()));
            }
        });
        eas.free(&back);
        trace.stop();
        EXPECT_EQ(trace.released(), blocks);
        EXPECT_EQ(back.eas.data, data);
        EXPECT_EQ(back.eas.data_size, -1);
        EXPECT_EQ(back.eas.type, type);
        EXPECT_THAT(log.take(), IsEmpty());
    }
}

// Q-EAS-4
TEST(Eas, FreeOfSettingsReleasesNoOtherString)
{
    mdm_body_t back = arrival(settings_type).body;
    auto &account = *static_cast<mdm_eas_account_t *>(back.eas.data);
    const std::vector<const void *> blocks = blocks_of(back);
    const std::array others = {account.str6 = heap_text("6"),   account.str7 = heap_text("7"),
                               account.str9 = heap_text("9"),   account.str11 = heap_text("11"),
                               account.str12 = heap_text("12"), account.str14 = heap_text("14")};
    EXPECT_EQ(eas.release(&back), blocks);
    std::ranges::for_each(others, g_free);
}

TEST(Eas, FreeOfAListSkipsNullElements)
{
    auto *account = static_cast<mdm_eas_account_t *>(g_malloc0(sizeof(mdm_eas_account_t)));
    GList *list = list_of({nullptr, account, nullptr});
    const auto cells = cells_of(list);
    mdm_body_t received = body(list_type, 1, list);
    EXPECT_THAT(eas.release(&received), ElementsAre(account, cells[0], cells[1], cells[2]));
}

// Q-BODY-5
TEST(Eas, FreeWithoutAPayloadReleasesNothing)
{
    for (const uint32_t type : every_type) {
        expect_no_release(eas, body(type, 3, nullptr), {});
        expect_no_release(eas, body(type, 0, sentinel()), {});
    }
}

TEST(Eas, BothMessageTypesCarryEveryFormAndLeakNothing)
{
    for (const uint8_t message_type : {eas.type, uint8_t{12}}) {
        for (const uint32_t type : every_type) {
            mdm_body_t body = arrival(type).body;
            const auto [journey, again] = travel_and_write_again(message_type, body);
            EXPECT_EQ(again, head_bytes(type, journey.sent.eas.data_size) + payload_bytes(type));
            EXPECT_THAT(journey.kept, IsEmpty());
            eas.free(&body);
        }
    }
}

TEST(Eas, LogsEnterAndExitOnly)
{
    for (const uint32_t type : every_type) {
        for (const int32_t data_size : {0, 1}) {
            mdm_body_t some = arrival(type).body;
            some.eas.data_size = data_size;
            const HandlerLines lines = logged_lines(eas, some);
            EXPECT_EQ(lines.size, enter_and_leave(eas.size));
            EXPECT_EQ(lines.set, enter_and_leave(eas.set));
            EXPECT_EQ(lines.get, enter_and_leave(eas.get));
            EXPECT_THAT(lines.free, IsEmpty());
            some.eas.data_size = 1;
            eas.free(&some);
        }
    }
}

}  // namespace
}  // namespace mdm::test::eas_test
