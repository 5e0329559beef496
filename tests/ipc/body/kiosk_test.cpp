// SPDX-License-Identifier: Apache-2.0
#include <new>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/allocation_trace.hpp"
#include "support/bodies.hpp"
#include "support/handlers.hpp"
#include "support/log_recorder.hpp"
#include "support/wire.hpp"

namespace mdm::test::kiosk_test {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

using Pairs = std::vector<std::pair<uint32_t, uint32_t>>;

constexpr Handlers kiosk(45);
constexpr uint32_t text_types[] = {612, 614};
constexpr uint32_t key_types[] = {618, 621};
constexpr uint32_t pair_type = 619;
constexpr uint32_t raw_type = 613;

const LogLine keys_line = info(kiosk.set, "MDM_POLICY_GET_ALL_BLOCKED_HARDWARE_KEYS");
const LogLine pairs_line = info(kiosk.set, "MDM_POLICY_SET_ALLOW_HARDWARE_KEYS");

mdm_body_t body(uint32_t type, int32_t data_size, void *data)
{
    return headed_body<&mdm_body_t::kiosk>(type, data_size, data);
}

Bytes wire(uint32_t type, int32_t data_size, const Bytes &payload)
{
    return head_bytes(type, data_size) + payload;
}

template <class Element>
void *heap(const Element &element)
{
    return new (g_malloc(sizeof element)) Element(element);
}

std::vector<uint32_t> keys_of(const mdm_body_t &body)
{
    std::vector<uint32_t> keys;
    for (const void *key : elements_of(body.kiosk.data)) {
        keys.push_back(*static_cast<const uint32_t *>(key));
    }
    return keys;
}

Pairs pairs_of(const mdm_body_t &body)
{
    Pairs pairs;
    for (const void *element : elements_of(body.kiosk.data)) {
        const auto *pair = static_cast<const mdm_kiosk_key_pair_t *>(element);
        pairs.emplace_back(pair->key, pair->value);
    }
    return pairs;
}

// The blocks of a received list: each element, of this size, and its cell.
auto elements_and_cells(const mdm_body_t &body, size_t element_size)
{
    std::vector<Block> blocks;
    for (const void *cell : cells_of(body.kiosk.data)) {
        blocks.push_back({static_cast<const GList *>(cell)->data, element_size});
        blocks.push_back({cell, sizeof(GList)});
    }
    return ElementsAreArray(blocks);
}

// The size handler gives the size and stores the data_size, however often it is called and
// whatever data_size the body had.
void expect_size_stored(mdm_body_t &sent, uint32_t size, int32_t data_size)
{
    for (const int32_t before : {data_size, 1, -1}) {
        sent.kiosk.data_size = before;
        expect_size(kiosk, sent, size, data_size);
        expect_headed<&mdm_body_t::kiosk>(sent, sent.kiosk.type, data_size);
    }
}

TEST(Kiosk, TextIsSizedSentAndReceived)
{
    for (const uint32_t type : text_types) {
        mdm_body_t sent = body(type, 1, borrowed("launcher"));
        expect_size_stored(sent, 24, 12);
        const Bytes bytes = kiosk.write(&sent);
        EXPECT_EQ(bytes, wire(type, 12, hex("08 00 00 00 6C 61 75 6E 63 68 65 72")));

        auto [back, blocks] = receive(kiosk, bytes);
        expect_headed<&mdm_body_t::kiosk>(back, type, 12);
        EXPECT_STREQ(static_cast<char *>(back.kiosk.data), "launcher");
        EXPECT_THAT(blocks, ElementsAre(Block{back.kiosk.data, 9}));
        kiosk.free(&back);
    }
}

// Q-KIOSK-4
TEST(Kiosk, EmptyTextArrivesAsNull)
{
    for (const uint32_t type : text_types) {
        mdm_body_t sent = body(type, 1, borrowed(""));
        expect_size_stored(sent, 16, 4);
        const Bytes bytes = kiosk.write(&sent);
        EXPECT_EQ(bytes, wire(type, 4, Bytes(4)));
        const mdm_body_t back = receive(kiosk, bytes).body;
        expect_headed<&mdm_body_t::kiosk>(back, type, 4);
        EXPECT_EQ(back.kiosk.data, nullptr);
    }
}

TEST(Kiosk, LongAndNonAsciiTextsTravel)
{
    for (const std::string &text : {std::string(1, 'x'), std::string(400, '\xE9')}) {
        mdm_body_t sent = body(612, 1, borrowed(text.c_str()));
        const auto length = static_cast<uint32_t>(text.size());
        expect_size_stored(sent, 16 + length, static_cast<int32_t>(4 + length));
        mdm_body_t back{};
        EXPECT_EQ(kiosk.read(&back, kiosk.write(&sent)), 16 + length);
        EXPECT_EQ(static_cast<char *>(back.kiosk.data), text);
        kiosk.free(&back);
    }
}

// Q-KIOSK-2
TEST(Kiosk, KeysTravelAsACountAndNumbers)
{
    uint32_t keys[] = {0x01020304, 0, 0xFFFFFFFE};
    const Cells list = cells({&keys[0], &keys[1], &keys[2]});
    for (const uint32_t type : key_types) {
        mdm_body_t sent = body(type, 1, list.get());
        expect_size_stored(sent, 28, 12);
        const Bytes bytes = kiosk.write(&sent);
        EXPECT_EQ(bytes, wire(type, 12, hex("03 00 00 00 04 03 02 01 00 00 00 00 FE FF FF FF")));

        auto [back, blocks] = receive(kiosk, bytes, hex("FF"));
        expect_headed<&mdm_body_t::kiosk>(back, type, 12);
        EXPECT_THAT(keys_of(back), ElementsAreArray(keys));
        EXPECT_THAT(blocks, elements_and_cells(back, 4));
        kiosk.free(&back);
    }
}

TEST(Kiosk, KeyPairsTravelAsACountAndPairs)
{
    mdm_kiosk_key_pair_t pairs[] = {{0x01020304, 0}, {5, 0xFFFFFFFE}};
    const Cells list = cells({&pairs[0], &pairs[1]});
    mdm_body_t sent = body(pair_type, 1, list.get());
    expect_size_stored(sent, 32, 16);
    const Bytes bytes = kiosk.write(&sent);
    EXPECT_EQ(bytes, hex("6B 02 00 00 04 03 02 01 10 00 00 00 02 00 00 00 "
                         "04 03 02 01 00 00 00 00 05 00 00 00 FE FF FF FF"));

    auto [back, blocks] = receive(kiosk, bytes, hex("FF"));
    expect_headed<&mdm_body_t::kiosk>(back, pair_type, 16);
    EXPECT_EQ(pairs_of(back), (Pairs{{0x01020304, 0}, {5, 0xFFFFFFFE}}));
    EXPECT_THAT(blocks, elements_and_cells(back, sizeof(mdm_kiosk_key_pair_t)));
    kiosk.free(&back);
}

TEST(Kiosk, ManyKeysKeepTheirOrder)
{
    std::vector<uint32_t> keys(500);
    std::iota(keys.begin(), keys.end(), 7);
    Cells list;
    for (uint32_t &key : keys) {
        list.reset(g_list_append(list.release(), &key));
    }
    mdm_body_t sent = body(618, 1, list.get());
    expect_size_stored(sent, 2016, 2000);
    mdm_body_t back{};
    EXPECT_EQ(kiosk.read(&back, kiosk.write(&sent)), 2016U);
    EXPECT_EQ(keys_of(back), keys);
    kiosk.free(&back);
}

// Q-KIOSK-1
TEST(Kiosk, NullElementsAreCountedAndSizedButNotSent)
{
    uint32_t keys[] = {7, 9};
    const Cells key_list = cells({&keys[0], nullptr, &keys[1]});
    mdm_kiosk_key_pair_t pairs[] = {{7, 8}, {9, 10}};
    const Cells pair_list = cells({&pairs[0], nullptr, &pairs[1]});
    for (const uint32_t type : key_types) {
        mdm_body_t sent = body(type, 1, key_list.get());
        expect_size_stored(sent, 28, 12);
        EXPECT_EQ(kiosk.write(&sent), wire(type, 12, hex("03 00 00 00 07 00 00 00 09 00 00 00")));
    }
    mdm_body_t sent = body(pair_type, 1, pair_list.get());
    expect_size_stored(sent, 40, 24);
    EXPECT_EQ(kiosk.write(&sent), wire(pair_type, 24,
                                       hex("03 00 00 00 07 00 00 00 08 00 00 00 "
                                           "09 00 00 00 0A 00 00 00")));
    const Cells nothing = cells({nullptr});
    sent = body(621, 1, nothing.get());
    expect_size_stored(sent, 20, 4);
    EXPECT_EQ(kiosk.write(&sent), wire(621, 4, hex("01 00 00 00")));
}

// Q-KIOSK-5
TEST(Kiosk, ListGivenByALaterCellIsSizedFromThereAndWrittenWhole)
{
    uint32_t keys[] = {7, 9, 11};
    const Cells key_list = cells({&keys[0], &keys[1], &keys[2]});
    for (const uint32_t type : key_types) {
        mdm_body_t sent = body(type, 1, key_list->next);
        expect_size_stored(sent, 24, 8);
        EXPECT_EQ(kiosk.write(&sent),
                  wire(type, 8, hex("02 00 00 00 07 00 00 00 09 00 00 00 0B 00 00 00")));
    }
    mdm_kiosk_key_pair_t pairs[] = {{7, 8}, {9, 10}};
    const Cells pair_list = cells({&pairs[0], &pairs[1]});
    mdm_body_t sent = body(pair_type, 1, pair_list->next);
    expect_size_stored(sent, 24, 8);
    EXPECT_EQ(kiosk.write(&sent), wire(pair_type, 8,
                                       hex("01 00 00 00 07 00 00 00 08 00 00 00 "
                                           "09 00 00 00 0A 00 00 00")));
}

// Q-KIOSK-1
TEST(Kiosk, NullElementsArriveAsZerosAtTheEnd)
{
    uint32_t keys[] = {7, 9};
    const Cells key_list = cells({&keys[0], nullptr, &keys[1]});
    mdm_msg_t msg = message(kiosk.type);
    msg.body = body(618, 1, key_list.get());
    mdm_msg_t back{};
    EXPECT_EQ(deserialize(back, serialize(msg)), 0);
    EXPECT_THAT(keys_of(back.body), ElementsAre(7U, 9U, 0U));
    ipc_free(&back);

    mdm_kiosk_key_pair_t pairs[] = {{7, 8}, {9, 10}};
    const Cells pair_list = cells({nullptr, &pairs[0], &pairs[1]});
    msg.body = body(pair_type, 1, pair_list.get());
    EXPECT_EQ(deserialize(back, serialize(msg)), 0);
    EXPECT_EQ(pairs_of(back.body), (Pairs{{7, 8}, {9, 10}, {0, 0}}));
    ipc_free(&back);
}

TEST(Kiosk, RawBytesArriveAsAStringUpToTheirFirstZeroByte)
{
    expect_raw_bytes_to_travel(kiosk, raw_type);
}

// The marks of a form.
struct BodyForm {
    uint32_t size;         // of a body of one element, or of 2 raw bytes
    int32_t data_size;     // that the size handler stores in the place of 2
    size_t payload_size;   // read from bytes that suit every form
    size_t blocks;         // of a received body
    bool data_is_dropped;  // by the free handler
};

BodyForm form_of(uint32_t type)
{
    switch (type) {
    case 612:
    case 614:
        return {17, 5, 5, 1, false};
    case 618:
    case 621:
        return {20, 4, 8, 2, false};
    case 619:
        return {24, 8, 12, 2, false};
    default:
        return {14, 2, 2, 1, true};
    }
}

TEST(Kiosk, EveryTypeHasItsForm)
{
    mdm_kiosk_key_pair_t pair = {7, 8};
    const Cells list = cells({&pair});
    for (const uint32_t type : swept_types({612, 614, 618, 619, 621})) {
        SCOPED_TRACE(type);
        const BodyForm form = form_of(type);
        mdm_body_t sent =
            body(type, 2, form.size == 17 ? borrowed("x") : static_cast<void *>(list.get()));
        EXPECT_EQ(kiosk.size(&sent), form.size);
        EXPECT_EQ(sent.kiosk.data_size, form.data_size);
        EXPECT_EQ(kiosk.write(&sent).size(), form.size);

        const Bytes bytes = wire(type, 2, hex("01 00 00 00 41 00 00 00 42 00 00 00"));
        mdm_body_t back{};
        EXPECT_EQ(kiosk.read(&back, bytes), 12 + form.payload_size);
        EXPECT_EQ(back.kiosk.data_size, 2);
        EXPECT_EQ(kiosk.release(&back).size(), form.blocks);
        EXPECT_EQ(back.kiosk.data == nullptr, form.data_is_dropped);
        EXPECT_EQ(back.kiosk.data_size, form.data_is_dropped ? 0 : 2);
    }
}

constexpr uint32_t a_type_of_each_form[] = {612, 613, 614, 618, 619, 621};

// Q-BODY-3
TEST(Kiosk, NullDataSendsTheHeadAloneWithItsDataSize)
{
    for (const uint32_t type : a_type_of_each_form) {
        for (const int32_t data_size : {8, 0, -1}) {
            expect_head_alone(kiosk, body(type, data_size, nullptr));
        }
    }
}

TEST(Kiosk, AnnouncedListIsReadFromBeyondItsBody)
{
    mdm_body_t sent = body(618, 8, nullptr);
    const Bytes beyond = hex("01 00 00 00 07 00 00 00");
    mdm_body_t back{};
    EXPECT_EQ(kiosk.read(&back, kiosk.write(&sent) + beyond), 20U);
    EXPECT_THAT(keys_of(back), ElementsAre(7U));
    kiosk.free(&back);
}

TEST(Kiosk, DataSize0SendsTheHeadAloneAndIsReceivedAsNull)
{
    for (const uint32_t type : a_type_of_each_form) {
        expect_head_alone(kiosk, body(type, 0, sentinel()));
        expect_head_received(kiosk, type, 0, nullptr);
    }
}

// Q-BODY-2, Q-BODY-4
TEST(Kiosk, NegativeDataSizeAnnouncesAPayload)
{
    expect_raw_size_with_sign(kiosk, raw_type, sentinel());

    uint32_t key = 7;
    const Cells list = cells({&key});
    mdm_body_t sent = body(618, INT32_MIN, list.get());
    const Bytes bytes = kiosk.write(&sent);
    EXPECT_EQ(bytes, wire(618, INT32_MIN, hex("01 00 00 00 07 00 00 00")));
    mdm_body_t back = receive(kiosk, bytes).body;
    EXPECT_THAT(keys_of(back), ElementsAre(7U));
    EXPECT_EQ(kiosk.release(&back).size(), 2U);

    back = receive(kiosk, wire(612, -1, hex("01 00 00 00 61"))).body;
    EXPECT_STREQ(static_cast<char *>(back.kiosk.data), "a");
    EXPECT_EQ(back.kiosk.data_size, -1);
    EXPECT_EQ(kiosk.release(&back).size(), 1U);
}

TEST(Kiosk, CountBelow1IsReceivedAsNull)
{
    for (const uint32_t type : {618U, 619U, 621U}) {
        expect_counts_below_1_as_null(kiosk, type);
    }
}

// Q-BODY-7
TEST(Kiosk, FreeReleasesATextAndKeepsThePointer)
{
    for (const uint32_t type : text_types) {
        for (const int32_t data_size : {7, -1}) {
            mdm_body_t kept = body(type, data_size, heap_text("abc"));
            const void *data = kept.kiosk.data;
            EXPECT_THAT(kiosk.release(&kept), ElementsAre(data));
            EXPECT_EQ(kept.kiosk.data, data);
            expect_headed<&mdm_body_t::kiosk>(kept, type, data_size);
        }
    }
}

// Q-BODY-7
TEST(Kiosk, FreeReleasesElementsThenCellsAndKeepsThePointer)
{
    for (const uint32_t type : {618U, 619U, 621U}) {
        void *first = heap(mdm_kiosk_key_pair_t{7, 8});
        void *last = heap(mdm_kiosk_key_pair_t{9, 10});
        GList *list = list_of({first, nullptr, last});
        const auto cells = cells_of(list);
        mdm_body_t kept = body(type, -8, list);
        EXPECT_THAT(kiosk.release(&kept), ElementsAre(first, last, cells[0], cells[1], cells[2]));
        EXPECT_EQ(kept.kiosk.data, list);
        expect_headed<&mdm_body_t::kiosk>(kept, type, -8);
    }
}

TEST(Kiosk, FreeResetsARawBodyAndMayThenRunAgain)
{
    for (const uint32_t type : {613U, 615U, 616U, 617U, 620U, 611U, 622U}) {
        expect_raw_bytes_released(kiosk, type, 3, 0, {});
    }
}

// Q-BODY-5
TEST(Kiosk, FreeWithoutDataOrDataSizeDoesNothing)
{
    for (const uint32_t type : a_type_of_each_form) {
        expect_no_release(kiosk, body(type, 0, sentinel()), {});
        expect_no_release(kiosk, body(type, 8, nullptr), {});
    }
}

TEST(Kiosk, WholeMessagesOfBothTypesLeakNothing)
{
    mdm_kiosk_key_pair_t pair = {7, 8};
    const Cells list = cells({&pair});
    const struct {
        mdm_body_t body;
        uint32_t size;
        std::vector<size_t> blocks;
    } cases[] = {{body(612, 1, borrowed("launcher")), 24, {9}},
                 {body(raw_type, 2, &pair), 14, {3}},
                 {body(621, 1, list.get()), 20, {4, sizeof(GList)}},
                 {body(pair_type, 1, list.get()), 24, {sizeof pair, sizeof(GList)}},
                 {body(pair_type, 0, list.get()), 12, {}}};
    LogRecorder log(MDM_LOG_CRITICAL);
    for (const uint8_t message_type : {kiosk.type, uint8_t{46}}) {
        for (const auto &[sent, size, blocks] : cases) {
            const Journey journey = travel(message_type, sent);
            EXPECT_EQ(journey.bytes.size(), size);
            EXPECT_EQ(journey.allocated, blocks);
            EXPECT_THAT(journey.kept, IsEmpty());
        }
    }
    EXPECT_THAT(log.take(), IsEmpty());
}

// Q-BODY-13, Q-KIOSK-3
TEST(Kiosk, OnlyTheWriterOfKeysLogsAndNamesTheirPolicy)
{
    mdm_kiosk_key_pair_t pair = {7, 8};
    const Cells list = cells({&pair});
    const struct {
        mdm_body_t body;
        std::vector<LogLine> written;
    } cases[] = {{body(612, 1, borrowed("x")), {}},
                 {body(raw_type, 1, borrowed("x")), {}},
                 {body(618, 1, list.get()), {keys_line}},
                 {body(621, 1, list.get()), {keys_line}},
                 {body(619, 1, list.get()), {pairs_line}},
                 {body(618, 0, list.get()), {}},
                 {body(619, 8, nullptr), {}}};
    for (const auto &[sent, written] : cases) {
        const HandlerLines lines = logged_lines(kiosk, sent, Bytes(4));
        EXPECT_THAT(lines.size, IsEmpty());
        EXPECT_EQ(lines.set, written);
        EXPECT_THAT(lines.get, IsEmpty());
        EXPECT_THAT(lines.free, IsEmpty());
    }
}

}  // namespace
}  // namespace mdm::test::kiosk_test
