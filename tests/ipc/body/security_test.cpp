// SPDX-License-Identifier: Apache-2.0
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/allocation_trace.hpp"
#include "support/bodies.hpp"
#include "support/handlers.hpp"
#include "support/log_recorder.hpp"
#include "support/wire.hpp"

namespace mdm::test::security_test {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using ::testing::IsNull;
using ::testing::SizeIs;

using Item = mdm_security_item_t;
using Account = mdm_security_account_t;

constexpr Handlers security(5);
constexpr uint32_t item_types[] = {56, 76};
constexpr uint32_t string_types[] = {68, 69};
constexpr uint32_t account_types[] = {70, 71};
constexpr uint32_t list_types[] = {68, 69, 70, 71};
constexpr uint32_t one_type_of_each_form[] = {56, 68, 70, 57};
constexpr int32_t no_payload[] = {0, -1, INT32_MIN};

// Bodies.

mdm_body_t body(uint32_t type, int32_t data_size, void *data)
{
    return headed_body<&mdm_body_t::security>(type, data_size, data);
}

// The bytes that the writer adds to the head.
Bytes written_payload(mdm_body_t &sent)
{
    const Bytes bytes = security.write(&sent);
    return {bytes.begin() + 12, bytes.end()};
}

// The three strings that the sender's lists share: the middle one is empty.
Cells three_strings()
{
    return cells({borrowed("a"), borrowed(""), borrowed("b")});
}

void *nth_cell(const Cells &list, guint index)
{
    return g_list_nth(list.get(), index);
}

// Items.

constexpr uint32_t item_word2 = 0xEEEEEEEE;

Item item(char *str1, char *str3, char *str4)
{
    return {0xFFFFFF10, str1, item_word2, str3, str4};
}

Item abc_item()
{
    return item(borrowed("one"), borrowed("\xC3\xA9!"), borrowed("4"));
}

const Bytes abc_item_bytes =
    hex("10 FF FF FF 03 00 00 00 6F 6E 65 01 00 00 00 34 03 00 00 00 C3 A9 21");

// Accounts.

struct AccountString {
    char *Account::*member;
    const char *text;
};

constexpr AccountString account_strings[] = {
    {&Account::str4, "4"},   {&Account::str5, "5"},   {&Account::str6, "6"},
    {&Account::str7, "7"},   {&Account::str8, "8"},   {&Account::str9, "9"},
    {&Account::str10, "10"}, {&Account::str11, "11"}, {&Account::str12, "12"},
    {&Account::str13, "13"}, {&Account::str14, "14"}, {&Account::str15, "15"},
    {&Account::str16, "16"}, {&Account::str17, "17"}, {&Account::str18, "18"},
    {&Account::str19, "19"}, {&Account::str20, "20"}, {&Account::str21, "21"},
    {&Account::str22, "22"}, {&Account::str23, "23"}, {&Account::str24, "24"},
    {&Account::str25, "25"},
};

Account blank_account()
{
    Account account{};
    account.num0 = 0x10;
    account.num1 = 0x11;
    account.num2 = 0x12;
    account.num3 = 0xFFFFFF13;
    return account;
}

// Each string holds its own number; `string` makes it, borrowed() or heap_text().
Account account(char *(*string)(const char *))
{
    Account account = blank_account();
    for (const auto &[member, text] : account_strings) {
        account.*member = string(text);
    }
    return account;
}

Account *heap_account()
{
    auto *record = static_cast<Account *>(g_malloc0(sizeof(Account)));
    *record = account(heap_text);
    return record;
}

std::vector<const void *> strings_of(const Account &account)
{
    std::vector<const void *> strings;
    for (const auto &string : account_strings) {
        strings.push_back(account.*string.member);
    }
    return strings;
}

const Bytes account_numbers = hex("10 00 00 00 11 00 00 00 12 00 00 00 13 FF FF FF");
const Bytes account_bytes =
    account_numbers +
    hex("01 00 00 00 34 01 00 00 00 35 01 00 00 00 36 01 00 00 00 37 01 00 00 00 38 "
        "01 00 00 00 39 02 00 00 00 31 30 02 00 00 00 31 31 02 00 00 00 31 32 02 00 00 00 31 33 "
        "02 00 00 00 31 34 02 00 00 00 31 35 02 00 00 00 31 36 02 00 00 00 31 37 "
        "02 00 00 00 31 38 02 00 00 00 31 39 02 00 00 00 32 30 02 00 00 00 32 31 "
        "02 00 00 00 32 32 02 00 00 00 32 33 02 00 00 00 32 34 02 00 00 00 32 35");
const Bytes blank_account_bytes = account_numbers + Bytes(88);

void expect_numbers_of_account(const Account &account)
{
    EXPECT_EQ(account.num0, 0x10U);
    EXPECT_EQ(account.num1, 0x11U);
    EXPECT_EQ(account.num2, 0x12U);
    EXPECT_EQ(account.num3, 0xFFFFFF13U);
}

void expect_full_account(const Account &account)
{
    expect_numbers_of_account(account);
    for (const auto &[member, text] : account_strings) {
        EXPECT_STREQ(account.*member, text);
    }
}

const Account &received_account(const void *element)
{
    return *static_cast<const Account *>(element);
}

// String lists.

struct ReceivedStrings {
    mdm_body_t body;
    std::vector<std::optional<std::string>> texts;
    std::vector<std::string> kept;  // that the free handler left allocated
};

// The texts of the blocks, which are released on the way.
std::vector<std::string> release_texts(const std::vector<Block> &blocks)
{
    std::vector<std::string> texts;
    for (const Block &block : blocks) {
        texts.emplace_back(static_cast<const char *>(block.address));
    }
    release_blocks(blocks);
    return texts;
}

// Reads a string list, looks at it, and releases it.
ReceivedStrings receive_strings(const Bytes &bytes)
{
    auto [received, blocks] = receive(security, bytes);
    const auto texts = texts_of(received.security.data);
    const auto released = security.release(&received);
    return {received, texts, release_texts(without(blocks, released))};
}

// The form of each type.

// The marks of a form: how the handlers treat a body with a data_size of 4 whose payload is as good
// as empty: a zeroed item, a list of one null element, four zero bytes.
struct Form {
    const char *name;
    uint32_t size;
    int32_t stored;
    Bytes written;
    size_t consumed;  // of a count of 1 and zeros
    bool keeps_pointer;
};

const Form item_form{"item", 28, 16, Bytes(16), 16, false};
const Form strings_form{"strings", 16, 16, hex("01 00 00 00"), 8, true};
const Form accounts_form{"accounts", 0, 4, hex("01 00 00 00"), 4 + 16 + 22 * 4, true};
const Form raw_form{"raw", 16, 4, Bytes(4), 4, false};

const Form &form_of(uint32_t type)
{
    switch (type) {
    case 56:
    case 76:
        return item_form;
    case 68:
    case 69:
        return strings_form;
    case 70:
    case 71:
        return accounts_form;
    default:
        return raw_form;
    }
}

void *empty_payload(const Form &form)
{
    return form.keeps_pointer ? list_of({nullptr}) : g_malloc0(sizeof(Item));
}

TEST(Security, TypeDecidesTheFormInEveryHandler)
{
    for (const uint32_t type : swept_types({56, 68, 69, 70, 71, 76})) {
        const Form &form = form_of(type);
        SCOPED_TRACE(std::to_string(type) + " as " + form.name);
        mdm_body_t some = body(type, 4, empty_payload(form));
        EXPECT_EQ(security.size(&some), form.size);
        EXPECT_EQ(some.security.data_size, form.stored);
        some.security.data_size = 4;
        EXPECT_EQ(security.write(&some), head_bytes(type, 4) + form.written);
        security.free(&some);
        EXPECT_EQ(some.security.data != nullptr, form.keeps_pointer);
        EXPECT_EQ(some.security.data_size, form.keeps_pointer ? 4 : 0);

        mdm_body_t received =
            receive(security, head_bytes(type, 4) + hex("01 00 00 00") + Bytes(form.consumed - 4),
                    Bytes(108 - form.consumed))
                .body;
        expect_headed<&mdm_body_t::security>(received, type, 4);
        security.free(&received);
    }
}

// Q-BODY-6
TEST(Security, DataSizeBelow1SendsTheHeadAloneAndLeavesTheReceiversData)
{
    for (const uint32_t type : one_type_of_each_form) {
        for (const int32_t data_size : no_payload) {
            mdm_body_t sent = body(type, data_size, sentinel());
            EXPECT_EQ(security.write(&sent), head_bytes(type, data_size));
            expect_head_received(security, type, data_size, sentinel());
        }
    }
}

// Q-SECURITY-10
TEST(Security, FreeOfNullDataChangesNothingForItemsAndLists)
{
    for (const uint32_t type : {56U, 68U, 69U, 70U, 71U, 76U}) {
        expect_no_release(security, body(type, 5, nullptr), enter_and_leave(security.free));
    }
}

TEST(Security, SizeAndSetLogEnterAndExitOnly)
{
    Item record = abc_item();
    Account full = account(borrowed);
    const Cells strings = cells({borrowed("a"), nullptr, borrowed("b")});
    const Cells accounts = cells({&full});
    const mdm_body_t bodies[] = {body(56, 1, &record),         body(56, 0, nullptr),
                                 body(76, 5, nullptr),         body(68, 1, strings.get()),
                                 body(69, 0, nullptr),         body(70, 1, accounts.get()),
                                 body(71, 0, nullptr),         body(57, 3, borrowed("raw")),
                                 body(75, 0, borrowed("raw")), body(0, -1, nullptr)};
    for (mdm_body_t sent : bodies) {
        LogRecorder log;
        security.size(&sent);
        EXPECT_EQ(log.take(), enter_and_leave(security.size));
        security.write(&sent);
        EXPECT_EQ(log.take(), enter_and_leave(security.set));
    }
}

TEST(Security, GetAndFreeLogEnterAndExitOnly)
{
    for (const uint32_t type : one_type_of_each_form) {
        for (const int32_t data_size : {0, 1}) {
            for (const uint32_t count : {0U, 1U}) {
                mdm_body_t received{};
                LogRecorder log;
                security.read(&received, head_bytes(type, data_size) + word(count) + Bytes(104));
                EXPECT_EQ(log.take(), enter_and_leave(security.get));
                security.free(&received);
                EXPECT_EQ(log.take(), enter_and_leave(security.free));
            }
        }
    }
}

// Items.

// Q-SECURITY-1, Q-SECURITY-2
TEST(SecurityItem, SendsItsFifthFieldBeforeItsFourth)
{
    Item record = abc_item();
    for (const uint32_t type : item_types) {
        for (const int32_t data_size : {0, 1, -1, 99, INT32_MIN}) {
            mdm_body_t sent = body(type, data_size, &record);
            expect_size(security, sent, 12 + 4 + (4 + 3) + (4 + 1) + (4 + 3), 23);
            EXPECT_EQ(security.write(&sent), head_bytes(type, 23) + abc_item_bytes);
        }
    }
}

TEST(SecurityItem, OfNullOrEmptyStringsIs28Bytes)
{
    for (char *string : {static_cast<char *>(nullptr), borrowed("")}) {
        Item record = item(string, string, string);
        mdm_body_t sent = body(56, 1, &record);
        expect_size(security, sent, 28, 16);
        EXPECT_EQ(security.write(&sent), hex("38 00 00 00 04 03 02 01 10 00 00 00 10 FF FF FF "
                                             "00 00 00 00 00 00 00 00 00 00 00 00"));
    }
}

TEST(SecurityItem, ComesBackFieldByField)
{
    for (const uint32_t type : item_types) {
        auto [received, blocks] = receive(security, head_bytes(type, 23) + abc_item_bytes);
        expect_headed<&mdm_body_t::security>(received, type, 23);
        const auto &record = *static_cast<const Item *>(received.security.data);
        EXPECT_EQ(record.num0, 0xFFFFFF10U);
        EXPECT_STREQ(record.str1, "one");
        EXPECT_EQ(record.word2, 0U);
        EXPECT_STREQ(record.str3, "\xC3\xA9!");
        EXPECT_STREQ(record.str4, "4");
        EXPECT_THAT(blocks, ElementsAre(Block{&record, sizeof record}, Block{record.str1, 4},
                                        Block{record.str4, 2}, Block{record.str3, 4}));
        security.free(&received);
    }
}

TEST(SecurityItem, IsReadForAnyDataSizeAbove0)
{
    for (const int32_t data_size : {1, INT32_MAX}) {
        auto [received, blocks] = receive(security, head_bytes(56, data_size) + Bytes(16));
        const auto &record = *static_cast<const Item *>(received.security.data);
        EXPECT_EQ(record.str1, nullptr);
        EXPECT_EQ(record.str3, nullptr);
        EXPECT_EQ(record.str4, nullptr);
        EXPECT_THAT(blocks, ElementsAre(Block{&record, sizeof record}));
        security.free(&received);
    }
}

TEST(SecurityItem, LongStringsTravel)
{
    std::string text(1000, 'x');
    Item record = item(nullptr, nullptr, text.data());
    mdm_body_t sent = body(76, 1, &record);
    expect_size(security, sent, 1028, 1016);
    mdm_body_t received{};
    EXPECT_EQ(security.read(&received, security.write(&sent)), 1028U);
    EXPECT_EQ(static_cast<const Item *>(received.security.data)->str4, text);
    security.free(&received);
}

// Q-SECURITY-5
TEST(SecurityItem, ThatIsNullIsTheHeadAlone)
{
    for (const uint32_t type : item_types) {
        for (const int32_t data_size : {0, 1, 7, -1, INT32_MIN}) {
            mdm_body_t sent = body(type, data_size, nullptr);
            expect_size(security, sent, 12, 0);
            EXPECT_EQ(security.write(&sent), head_bytes(type, 0));
        }
    }
}

// Q-SECURITY-6
TEST(SecurityItem, ThatIsNullAndNotSizedSkipsDataSizeBytes)
{
    for (const uint32_t type : item_types) {
        mdm_body_t sent = body(type, 7, nullptr);
        Bytes buffer(24, 0xCC);
        EXPECT_EQ(security.set(buffer.data(), &sent), buffer.data() + 19);
        EXPECT_EQ(buffer, head_bytes(type, 7) + Bytes(12, 0xCC));
    }
}

TEST(SecurityItem, FreeReleasesItsStringsInWireOrderThenTheRecord)
{
    for (const uint32_t type : item_types) {
        auto *record = static_cast<Item *>(g_malloc0(sizeof(Item)));
        *record = item(heap_text("1"), heap_text("3"), heap_text("4"));
        const Item before = *record;
        mdm_body_t received = body(type, 0, record);
        AllocationTrace trace;
        trace.during_release([&](const void *block) {
            if (block == record) {
                EXPECT_EQ(record->num0, before.num0);
                EXPECT_EQ(record->str1, nullptr);
                EXPECT_EQ(record->word2, item_word2);
                EXPECT_EQ(record->str3, nullptr);
                EXPECT_EQ(record->str4, nullptr);
            }
        });
        security.free(&received);
        security.free(&received);
        trace.stop();
        EXPECT_THAT(trace.released(), ElementsAre(before.str1, before.str4, before.str3, record));
        expect_headed<&mdm_body_t::security>(received, type, 0);
        EXPECT_EQ(received.security.data, nullptr);
    }
}

TEST(SecurityItem, FreeResetsDataSize)
{
    mdm_body_t received = body(56, 23, g_malloc0(sizeof(Item)));
    security.free(&received);
    EXPECT_EQ(received.security.data, nullptr);
    EXPECT_EQ(received.security.data_size, 0);
}

// String lists.

// Q-BODY-8, Q-SECURITY-2
TEST(SecurityStrings, CountTheWholeBodyInDataSize)
{
    const Cells strings = three_strings();
    for (const uint32_t type : string_types) {
        for (const int32_t data_size : {0, 1, -1, 99, INT32_MIN}) {
            mdm_body_t sent = body(type, data_size, strings.get());
            expect_size(security, sent, 16 + 5 + 4 + 5, 30);
            EXPECT_EQ(security.write(&sent),
                      head_bytes(type, 30) +
                          hex("03 00 00 00 01 00 00 00 61 00 00 00 00 01 00 00 00 62"));
        }
    }
}

// Q-BODY-12
TEST(SecurityStrings, EndAtTheFirstNullElementButCountAll)
{
    const Cells second = cells({borrowed("a"), nullptr, borrowed("b")});
    mdm_body_t sent = body(68, 0, second.get());
    expect_size(security, sent, 21, 21);
    EXPECT_EQ(security.write(&sent), hex("44 00 00 00 04 03 02 01 15 00 00 00 "
                                         "03 00 00 00 01 00 00 00 61"));

    const Cells first = cells({nullptr, borrowed("b")});
    sent = body(69, 0, first.get());
    expect_size(security, sent, 16, 16);
    EXPECT_EQ(written_payload(sent), hex("02 00 00 00"));
}

// Q-SECURITY-7
TEST(SecurityStrings, ComeBackWithoutTheEmptyOnes)
{
    for (const uint32_t type : string_types) {
        const ReceivedStrings received = receive_strings(
            head_bytes(type, 30) + hex("03 00 00 00 01 00 00 00 61 00 00 00 00 01 00 00 00 62"));
        expect_headed<&mdm_body_t::security>(received.body, type, 30);
        EXPECT_THAT(received.texts, ElementsAre("a", "b"));
        EXPECT_THAT(received.kept, ElementsAre("a", "b"));
    }
}

// Q-SECURITY-8
TEST(SecurityStrings, AreSecondCopiesAndTheFirstOnesStayAllocated)
{
    auto [received, blocks] =
        receive(security, head_bytes(68, 1) + hex("01 00 00 00 05 00 00 00 61 62 00 63 64"));
    ASSERT_THAT(blocks, SizeIs(3));
    EXPECT_EQ(blocks[0].size, 6U);  // the copy that is left alone
    EXPECT_STREQ(static_cast<const char *>(blocks[0].address), "ab");
    EXPECT_EQ(blocks[1].size, 3U);
    EXPECT_EQ(blocks[2], (Block{received.security.data, sizeof(GList)}));
    EXPECT_THAT(elements_of(received.security.data), ElementsAre(blocks[1].address));
    EXPECT_THAT(texts_of(received.security.data), ElementsAre("ab"));
    EXPECT_THAT(security.release(&received), ElementsAre(blocks[1].address, blocks[2].address));
    g_free(const_cast<void *>(blocks[0].address));
}

TEST(SecurityStrings, ThatBeginWithAZeroByteAreNotEmpty)
{
    const ReceivedStrings received =
        receive_strings(head_bytes(69, 1) + hex("02 00 00 00 02 00 00 00 00 61 01 00 00 00 62"));
    EXPECT_THAT(received.texts, ElementsAre("", "b"));
    EXPECT_THAT(received.kept, ElementsAre("", "b"));
}

TEST(SecurityStrings, ManyAndLongOnesTravelInOrder)
{
    std::vector<std::string> texts{std::string(300, 'x'), "\xC3\xA9\xE2\x82\xAC"};
    for (int i = 0; i < 100; ++i) {
        texts.push_back(std::to_string(i));
    }
    GQueue queue = G_QUEUE_INIT;
    for (std::string &text : texts) {
        g_queue_push_tail(&queue, text.data());
    }
    const Cells strings(queue.head);
    mdm_body_t sent = body(68, 0, strings.get());
    const uint32_t size = 16 + 102 * 4 + 300 + 5 + 10 + 90 * 2;
    expect_size(security, sent, size, static_cast<int32_t>(size));
    const ReceivedStrings received = receive_strings(security.write(&sent));
    EXPECT_THAT(received.texts, ElementsAreArray(texts));
    EXPECT_THAT(received.kept, ElementsAreArray(texts));
}

// Q-BODY-7
TEST(SecurityStrings, FreeReleasesTheElementsThenTheCellsAndKeepsThePointer)
{
    for (const uint32_t type : string_types) {
        GList *strings = heap_list({"a", nullptr, "b"});
        const auto texts = elements_of(strings);
        const auto cells = cells_of(strings);
        mdm_body_t received = body(type, 0, strings);
        received.security.data_size = 30;
        EXPECT_THAT(security.release(&received),
                    ElementsAre(texts[0], texts[2], cells[0], cells[1], cells[2]));
        expect_headed<&mdm_body_t::security>(received, type, 30);
        EXPECT_EQ(received.security.data, strings);
    }
}

// Account lists.

// Q-BODY-8
TEST(SecurityAccounts, CountTheWholeBodyInDataSize)
{
    Account full = account(borrowed);
    Account blank = blank_account();
    const Cells accounts = cells({&full, &blank});
    for (const uint32_t type : account_types) {
        for (const int32_t data_size : {0, 1, -1, 99, INT32_MIN}) {
            mdm_body_t sent = body(type, data_size, accounts.get());
            expect_size(security, sent, 16 + (16 + 22 * 4 + 38) + (16 + 22 * 4), 262);
            EXPECT_EQ(security.write(&sent), head_bytes(type, 262) + hex("02 00 00 00") +
                                                 account_bytes + blank_account_bytes);
        }
    }
}

TEST(SecurityAccounts, ComeBackFieldByField)
{
    const Bytes payload = hex("03 00 00 00") + account_bytes + blank_account_bytes + account_bytes;
    for (const uint32_t type : account_types) {
        auto [received, blocks] = receive(security, head_bytes(type, 1) + payload);
        expect_headed<&mdm_body_t::security>(received, type, 1);
        const auto accounts = elements_of(received.security.data);
        ASSERT_THAT(accounts, SizeIs(3));
        expect_full_account(received_account(accounts[0]));
        expect_numbers_of_account(received_account(accounts[1]));
        EXPECT_THAT(strings_of(received_account(accounts[1])), Each(IsNull()));
        expect_full_account(received_account(accounts[2]));
        ASSERT_THAT(blocks, SizeIs((1 + 22 + 1) + (1 + 1) + (1 + 22 + 1)));
        EXPECT_EQ(blocks[0], (Block{accounts[0], sizeof(Account)}));
        EXPECT_EQ(blocks[1], (Block{received_account(accounts[0]).str4, 2}));
        security.free(&received);
    }
}

TEST(SecurityAccounts, LongAndEmptyStringsTravel)
{
    std::string text(300, '\xFE');
    Account record = blank_account();
    record.str5 = borrowed("");
    record.str25 = text.data();
    const Cells accounts = cells({&record});
    mdm_body_t sent = body(71, 0, accounts.get());
    expect_size(security, sent, 420, 420);
    mdm_body_t received{};
    EXPECT_EQ(security.read(&received, security.write(&sent)), 420U);
    const Account &back = received_account(elements_of(received.security.data).at(0));
    EXPECT_EQ(back.str5, nullptr);
    EXPECT_EQ(back.str25, text);
    security.free(&received);
}

// Q-BODY-9
TEST(SecurityAccounts, WithANullElementCannotBeSized)
{
    Account full = account(borrowed);
    for (const uint32_t type : account_types) {
        expect_no_size_with_null_element(security, type, &full, "acconts is NULL");
    }
}

// Q-BODY-9
TEST(SecurityAccounts, NullElementsAreCountedButNotWritten)
{
    Account full = account(borrowed);
    Account blank = blank_account();
    const Cells accounts = cells({&full, nullptr, &blank});
    for (const uint32_t type : account_types) {
        mdm_body_t sent = body(type, 1, accounts.get());
        EXPECT_EQ(security.write(&sent),
                  head_bytes(type, 1) + hex("03 00 00 00") + account_bytes + blank_account_bytes);
    }
}

// Q-BODY-7, Q-SECURITY-11
TEST(SecurityAccounts, FreeReleasesAllStringsThenTheRecordsThenTheCells)
{
    for (const uint32_t type : account_types) {
        Account *first = heap_account();
        Account *last = heap_account();
        g_free(last->str7);
        last->str7 = nullptr;
        GList *accounts = list_of({first, nullptr, last});
        std::vector<const void *> expected = strings_of(*first);
        for (const void *string : strings_of(*last)) {
            if (string != nullptr) {
                expected.push_back(string);
            }
        }
        expected.insert(expected.end(), {first, last});
        for (const void *cell : cells_of(accounts)) {
            expected.push_back(cell);
        }

        mdm_body_t received = body(type, 262, accounts);
        AllocationTrace trace;
        trace.during_release([&](const void *block) {
            if (block == first || block == last) {
                expect_numbers_of_account(received_account(block));
                EXPECT_THAT(strings_of(received_account(block)), Each(IsNull()));
            }
        });
        security.free(&received);
        trace.stop();
        EXPECT_THAT(trace.released(), ElementsAreArray(expected));
        expect_headed<&mdm_body_t::security>(received, type, 262);
        EXPECT_EQ(received.security.data, accounts);
    }
}

// Both lists.

// Q-SECURITY-3, Q-SECURITY-4
TEST(SecurityLists, ThatAreEmptyCount16BytesAndLeaveDataSize)
{
    for (const uint32_t type : list_types) {
        for (const int32_t data_size : {0, 1, 5, -1, INT32_MIN}) {
            mdm_body_t sent = body(type, data_size, nullptr);
            expect_size(security, sent, 16, data_size);
        }
        mdm_msg_t msg = message(security.type);
        msg.body = body(type, 0, nullptr);
        const Bytes bytes = serialize(msg);
        EXPECT_EQ(Bytes(bytes.begin() + 40, bytes.end()), head_bytes(type, 0) + Bytes(4));
    }
}

// Q-SECURITY-4
TEST(SecurityLists, ThatAreEmptyCannotBeWrittenWithADataSize)
{
    for (const uint32_t type : list_types) {
        mdm_body_t sent = body(type, 1, nullptr);
        Bytes buffer(16, 0xCC);
        LogRecorder log;
        EXPECT_EQ(security.set(buffer.data(), &sent), nullptr);
        EXPECT_THAT(log.take(), ElementsAre(enter(security.set), assert_fails(security.set)));
        EXPECT_EQ(buffer, head_bytes(type, 1) + hex("CC CC CC CC"));
    }
}

TEST(SecurityLists, ThatCannotBeWrittenAreReportedByTheEnvelope)
{
    for (const uint32_t type : list_types) {
        mdm_msg_t msg = message(security.type);
        msg.body = body(type, 9, nullptr);
        LogRecorder log(MDM_LOG_CRITICAL);
        const Bytes bytes = serialize(msg);
        EXPECT_THAT(log.take(), ElementsAre(assert_fails(security.set),
                                            critical(from::ipc_serialize, "lp_body is NULL")));
        EXPECT_EQ(Bytes(bytes.begin() + 40, bytes.end()), head_bytes(type, 9) + Bytes(4));
    }
}

TEST(SecurityLists, WithoutAPositiveCountComeBackNull)
{
    for (const uint32_t type : list_types) {
        expect_counts_below_1_as_null(security, type);
    }
}

// A body may point into the middle of its list. The written count begins at that cell.
// Q-WIRE-4
TEST(SecurityLists, AreSizedAndWrittenFromTheirFirstElement)
{
    const Cells strings = cells({borrowed("a"), borrowed("b"), borrowed("c")});
    mdm_body_t sent = body(68, 0, nth_cell(strings, 2));
    expect_size(security, sent, 31, 31);
    const Bytes strings_written = written_payload(sent);
    EXPECT_EQ(Bytes(strings_written.begin() + 4, strings_written.end()),
              hex("01 00 00 00 61 01 00 00 00 62 01 00 00 00 63"));

    Account full = account(borrowed);
    Account blank = blank_account();
    const Cells accounts = cells({&full, &blank});
    sent = body(70, 0, nth_cell(accounts, 1));
    expect_size(security, sent, 262, 262);
    const Bytes accounts_written = written_payload(sent);
    EXPECT_EQ(Bytes(accounts_written.begin() + 4, accounts_written.end()),
              account_bytes + blank_account_bytes);
}

// Q-WIRE-4
TEST(SecurityLists, AreReleasedFromTheirFirstElement)
{
    for (const uint32_t type : list_types) {
        GList *list = list_of({g_malloc0(sizeof(Account)), g_malloc0(sizeof(Account))});
        auto expected = elements_of(list);
        for (const void *cell : cells_of(list)) {
            expected.push_back(cell);
        }
        mdm_body_t received = body(type, 1, list->next);
        EXPECT_THAT(security.release(&received), ElementsAreArray(expected));
    }
}

// Raw bytes.

// Q-SECURITY-9
TEST(SecurityRaw, CountsItsBytesAndLeavesDataSize)
{
    expect_raw_size_with_sign(security, 57, nullptr);
    mdm_body_t empty = body(57, 0, nullptr);
    expect_size(security, empty, 12, 0);
}

TEST(SecurityRaw, TravelsAsItIsAndArrivesTerminatedAtItsFirstZeroByte)
{
    expect_raw_bytes_to_travel(security, 57);
    expect_raw_bytes_to_travel(security, 72);
}

TEST(SecurityRaw, FreeReleasesItAndResetsTheBody)
{
    for (const int32_t data_size : {3, 0, -1}) {
        expect_raw_bytes_released(security, 57, data_size, 0, enter_and_leave(security.free));
    }
}

// Q-SECURITY-10
TEST(SecurityRaw, FreeOfNullDataResetsDataSizeToo)
{
    mdm_body_t received = body(57, 3, nullptr);
    EXPECT_THAT(security.release(&received), IsEmpty());
    expect_headed<&mdm_body_t::security>(received, 57, 0);
    EXPECT_EQ(received.security.data, nullptr);
}

// Messages.

TEST(SecurityMessage, CarriesEveryFormAndLeaksFirstCopiesOfListedStringsOnly)
{
    Item record = abc_item();
    Account full = account(borrowed);
    const Cells strings = three_strings();
    const Cells accounts = cells({&full, &full});
    struct Case {
        mdm_body_t sent;
        size_t size;  // of the body
        std::vector<std::string> leaked;
    };
    const std::vector<Case> cases = {{body(56, 1, &record), 35, {}},
                                     {body(76, 1, nullptr), 12, {}},
                                     {body(69, 1, strings.get()), 30, {"a", "b"}},
                                     {body(70, 1, accounts.get()), 16 + 2 * 142, {}},
                                     {body(57, 3, borrowed("raw")), 15, {}}};
    for (const uint8_t message_type : {security.type, uint8_t{6}}) {
        for (const auto &[sent, size, leaked] : cases) {
            const bool has_data = sent.security.data != nullptr;
            LogRecorder log(MDM_LOG_INFO);
            const Journey journey = travel(message_type, sent, [&](const mdm_body_t &received) {
                EXPECT_EQ(received.security.data != nullptr, has_data);
            });
            EXPECT_THAT(journey.bytes, SizeIs(size));
            EXPECT_EQ(release_texts(journey.kept), leaked);
            EXPECT_THAT(log.take(), IsEmpty());
        }
    }
}

}  // namespace
}  // namespace mdm::test::security_test
