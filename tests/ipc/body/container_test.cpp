// SPDX-License-Identifier: Apache-2.0
#include <cstddef>
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

namespace mdm::test::container_test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using Item = mdm_container_item_t;

// The record of type 629: the beginning of an item.
struct ShortItem {
    uint32_t num0;
    char *str1;
};
static_assert(sizeof(ShortItem) == offsetof(Item, str2));

constexpr Handlers container(47);
constexpr uint32_t item_type = 628;
constexpr uint32_t short_item_type = 629;
constexpr uint32_t raw_types[] = {630, 631, 632};
constexpr uint32_t one_type_of_each_form[] = {628, 629, 631, 640};
constexpr int32_t any_payload[] = {1, 9, INT32_MAX, -1, INT32_MIN};

mdm_body_t body(uint32_t type, int32_t data_size, void *data)
{
    return headed_body<&mdm_body_t::container>(type, data_size, data);
}

template <class Record>
const Record &received_record(const mdm_body_t &received)
{
    return *static_cast<const Record *>(received.container.data);
}

// The marks of a form: how the handlers size, store and send a body with a data_size of 4 whose
// payload is zero.
struct Form {
    const char *name;
    size_t block;  // of `data`
    uint32_t size;
    int32_t stored;
    size_t payload;
};

constexpr Form item_form{"item", sizeof(Item), 24, 12, 12};
constexpr Form short_item_form{"short item", sizeof(ShortItem), 20, 8, 8};
constexpr Form raw_form{"raw", 4, 16, 4, 4};
constexpr Form nothing_form{"nothing", 1, 12, 4, 0};

const Form &form_of(uint32_t type)
{
    switch (type) {
    case 628:
        return item_form;
    case 629:
        return short_item_form;
    case 630:
    case 631:
    case 632:
        return raw_form;
    default:
        return nothing_form;
    }
}

TEST(Container, TypeDecidesTheFormInEveryHandler)
{
    for (const uint32_t type : swept_types({628, 629, 630, 631, 632})) {
        const Form &form = form_of(type);
        SCOPED_TRACE(std::to_string(type) + " as " + form.name);
        const bool is_raw = &form == &raw_form;
        const bool is_nothing = &form == &nothing_form;
        void *data = g_malloc0(form.block);
        mdm_body_t some = body(type, 4, data);
        EXPECT_EQ(container.size(&some), form.size);
        EXPECT_EQ(some.container.data_size, form.stored);
        some.container.data_size = 4;
        EXPECT_EQ(container.write(&some), head_bytes(type, 4) + Bytes(form.payload));
        EXPECT_THAT(container.release(&some), SizeIs(is_nothing ? 0 : 1));
        EXPECT_EQ(some.container.data, is_raw ? nullptr : data);
        expect_headed<&mdm_body_t::container>(some, type, 4);
        if (is_nothing) {
            g_free(data);
        }

        mdm_body_t received =
            receive(container, head_bytes(type, 4) + Bytes(form.payload), Bytes(12 - form.payload))
                .body;
        expect_headed<&mdm_body_t::container>(received, type, 4);
        EXPECT_EQ(received.container.data == sentinel(), is_nothing);
        container.free(&received);
    }
}

// Q-BODY-3
TEST(Container, NullDataIsTheHeadAloneWithItsDataSize)
{
    for (const uint32_t type : one_type_of_each_form) {
        for (const int32_t data_size : {0, 1, 9, -1, INT32_MIN}) {
            expect_head_alone(container, body(type, data_size, nullptr));
        }
    }
}

TEST(Container, DataSize0IsTheHeadAloneAndMakesTheReceiversDataNull)
{
    for (const uint32_t type : one_type_of_each_form) {
        expect_head_alone(container, body(type, 0, sentinel()));
        expect_head_received(container, type, 0, nullptr);
    }
}

// Q-BODY-2
TEST(Container, RecordsAreWrittenForAnyDataSizeOtherThan0)
{
    Item record{1, nullptr, borrowed("c")};
    ShortItem short_record{2, borrowed("de")};
    for (const int32_t data_size : any_payload) {
        mdm_body_t sent = body(item_type, data_size, &record);
        EXPECT_EQ(container.write(&sent),
                  head_bytes(item_type, data_size) + hex("01 00 00 00 00 00 00 00 01 00 00 00 63"));
        sent = body(short_item_type, data_size, &short_record);
        EXPECT_EQ(container.write(&sent),
                  head_bytes(short_item_type, data_size) + hex("02 00 00 00 02 00 00 00 64 65"));
    }
}

// Q-BODY-5
TEST(Container, FreeDoesNothingWithoutDataOrDataSize)
{
    for (const uint32_t type : one_type_of_each_form) {
        for (const auto &[data_size, data] :
             {std::pair{0, sentinel()}, {9, nullptr}, {0, nullptr}}) {
            expect_no_release(container, body(type, data_size, data),
                              enter_and_leave(container.free));
        }
    }
}

TEST(Container, HandlersLogEnterAndExitOnly)
{
    const std::vector<char> zeros(sizeof(Item));
    for (const uint32_t type : one_type_of_each_form) {
        for (const int32_t data_size : {0, 4}) {
            for (const void *data : {zeros.data(), static_cast<const char *>(nullptr)}) {
                expect_entry_and_exit(container, body(type, data_size, const_cast<void *>(data)),
                                      Bytes(12));
            }
        }
    }
}

TEST(ContainerItem, SendsANumberAndTwoStringsAndStoresTheirSize)
{
    Item record{0x01020304, borrowed("ab"), borrowed("\xC3\xA9!")};
    for (const int32_t data_size : any_payload) {
        mdm_body_t sent = body(item_type, data_size, &record);
        expect_size(container, sent, 29, 12 + 2 + 3);
        EXPECT_EQ(container.write(&sent),
                  hex("74 02 00 00 04 03 02 01 11 00 00 00 "
                      "04 03 02 01 02 00 00 00 61 62 03 00 00 00 C3 A9 21"));
    }
}

TEST(ContainerItem, WithoutASecondStringComesBackWithANullOne)
{
    for (char *str2 : {static_cast<char *>(nullptr), borrowed("")}) {
        Item record{1, borrowed("ab"), str2};
        mdm_body_t sent = body(item_type, 1, &record);
        expect_size(container, sent, 26, 14);
        const Bytes bytes = container.write(&sent);
        EXPECT_EQ(bytes,
                  head_bytes(item_type, 14) + hex("01 00 00 00 02 00 00 00 61 62 00 00 00 00"));

        auto [received, blocks] = receive(container, bytes);
        expect_headed<&mdm_body_t::container>(received, item_type, 14);
        const auto &back = received_record<Item>(received);
        EXPECT_EQ(back.num0, 1U);
        EXPECT_STREQ(back.str1, "ab");
        EXPECT_EQ(back.str2, nullptr);
        EXPECT_THAT(blocks, ElementsAre(Block{&back, sizeof(Item)}, Block{back.str1, 3}));
        container.free(&received);
    }
}

TEST(ContainerItem, IsReadForAnyDataSizeOtherThan0)
{
    for (const int32_t data_size : any_payload) {
        auto [received, blocks] =
            receive(container, head_bytes(item_type, data_size) +
                                   hex("F1 FF FF FF 00 00 00 00 01 00 00 00 62"));
        expect_headed<&mdm_body_t::container>(received, item_type, data_size);
        const auto &record = received_record<Item>(received);
        EXPECT_EQ(record.num0, 0xFFFFFFF1U);
        EXPECT_EQ(record.str1, nullptr);
        EXPECT_STREQ(record.str2, "b");
        EXPECT_THAT(blocks, ElementsAre(Block{&record, sizeof(Item)}, Block{record.str2, 2}));
        container.free(&received);
    }
}

TEST(ContainerItem, LongStringsTravel)
{
    std::string first(300, 'x');
    std::string second(3000, '\xFE');
    Item record{1, first.data(), second.data()};
    mdm_body_t sent = body(item_type, 1, &record);
    expect_size(container, sent, 3324, 3312);
    mdm_body_t received{};
    EXPECT_EQ(container.read(&received, container.write(&sent)), 3324U);
    EXPECT_EQ(received_record<Item>(received).str1, first);
    EXPECT_EQ(received_record<Item>(received).str2, second);
    container.free(&received);
}

// Q-BODY-7
TEST(ContainerItem, FreeReleasesBothStringsThenTheRecordAndKeepsThePointer)
{
    for (const int32_t data_size : any_payload) {
        Item *record = on_heap(Item{7, heap_text("1"), heap_text("2")});
        const Item before = *record;
        mdm_body_t received = body(item_type, data_size, record);
        AllocationTrace trace;
        trace.during_release([&](const void *block) {
            if (block == record) {
                EXPECT_EQ(record->num0, 7U);
                EXPECT_EQ(record->str1, nullptr);
                EXPECT_EQ(record->str2, nullptr);
            }
        });
        container.free(&received);
        trace.stop();
        EXPECT_THAT(trace.released(), ElementsAre(before.str1, before.str2, record));
        expect_headed<&mdm_body_t::container>(received, item_type, data_size);
        EXPECT_EQ(received.container.data, record);
    }
}

TEST(ContainerShortItem, SendsANumberAndOneStringAndStoresTheirSize)
{
    ShortItem record{0x01020304, borrowed("ab")};
    for (const int32_t data_size : any_payload) {
        mdm_body_t sent = body(short_item_type, data_size, &record);
        expect_size(container, sent, 22, 8 + 2);
        EXPECT_EQ(container.write(&sent),
                  hex("75 02 00 00 04 03 02 01 0A 00 00 00 04 03 02 01 02 00 00 00 61 62"));
    }
}

TEST(ContainerShortItem, OfANullOrEmptyStringIs20Bytes)
{
    for (char *str1 : {static_cast<char *>(nullptr), borrowed("")}) {
        ShortItem record{1, str1};
        mdm_body_t sent = body(short_item_type, 1, &record);
        expect_size(container, sent, 20, 8);
        const Bytes bytes = container.write(&sent);
        EXPECT_EQ(bytes, head_bytes(short_item_type, 8) + hex("01 00 00 00 00 00 00 00"));
        mdm_body_t received = receive(container, bytes).body;
        EXPECT_EQ(received_record<ShortItem>(received).str1, nullptr);
        container.free(&received);
    }
}

// Q-CONTAINER-1
TEST(ContainerShortItem, ComesBackInARecordThatEndsBeforeStr2)
{
    for (const int32_t data_size : any_payload) {
        auto [received, blocks] =
            receive(container,
                    head_bytes(short_item_type, data_size) + hex("F1 FF FF FF 02 00 00 00 61 62"),
                    hex("01 00 00 00 63"));
        expect_headed<&mdm_body_t::container>(received, short_item_type, data_size);
        const auto &record = received_record<ShortItem>(received);
        EXPECT_EQ(record.num0, 0xFFFFFFF1U);
        EXPECT_STREQ(record.str1, "ab");
        EXPECT_THAT(blocks,
                    ElementsAre(Block{&record, offsetof(Item, str2)}, Block{record.str1, 3}));
        container.free(&received);
    }
}

TEST(ContainerShortItem, FreeReleasesItsStringThenTheRecordAndKeepsThePointer)
{
    for (const int32_t data_size : any_payload) {
        ShortItem *record = on_heap(ShortItem{7, heap_text("1")});
        const ShortItem before = *record;
        mdm_body_t received = body(short_item_type, data_size, record);
        AllocationTrace trace;
        trace.during_release([&](const void *block) {
            if (block == record) {
                EXPECT_EQ(record->num0, 7U);
                EXPECT_EQ(record->str1, nullptr);
            }
        });
        container.free(&received);
        trace.stop();
        EXPECT_THAT(trace.released(), ElementsAre(before.str1, record));
        expect_headed<&mdm_body_t::container>(received, short_item_type, data_size);
        EXPECT_EQ(received.container.data, record);
    }
}

TEST(ContainerRaw, TravelsAsItIsAndArrivesTerminatedAtItsFirstZeroByte)
{
    for (const uint32_t type : raw_types) {
        expect_raw_bytes_to_travel(container, type);
    }
}

// Q-BODY-4
TEST(ContainerRaw, CountsANegativeDataSizeToo)
{
    expect_raw_size_with_sign(container, 632, borrowed("raw"));
}

TEST(ContainerRaw, FreeReleasesItAndResetsThePointerOnly)
{
    for (const uint32_t type : raw_types) {
        for (const int32_t data_size : any_payload) {
            expect_raw_bytes_released(container, type, data_size, data_size,
                                      enter_and_leave(container.free));
        }
    }
}

// Q-CONTAINER-2
TEST(ContainerNothing, SendsTheHeadAloneAndLeavesTheReceiversData)
{
    for (const uint32_t type : {0U, 627U, 633U, 640U}) {
        for (const int32_t data_size : any_payload) {
            expect_head_alone(container, body(type, data_size, sentinel()));
            expect_head_received(container, type, data_size, sentinel());
            expect_no_release(container, body(type, data_size, sentinel()),
                              enter_and_leave(container.free));
        }
    }
}

TEST(ContainerMessage, CarriesEveryFormAndLeaksNothing)
{
    Item record{1, borrowed("ab"), borrowed("c")};
    ShortItem short_record{2, borrowed("de")};
    struct Case {
        mdm_body_t sent;
        size_t size;                   // of the body
        std::vector<size_t> received;  // the blocks
    };
    const std::vector<Case> cases = {
        {body(item_type, 1, &record), 27, {sizeof record, 3, 2}},
        {body(short_item_type, -1, &short_record), 22, {sizeof short_record, 3}},
        {body(short_item_type, 0, nullptr), 12, {}},
        {body(630, 3, borrowed("raw")), 15, {4}},
        {body(632, 2, borrowed("raw")), 14, {3}},
        {body(640, 9, borrowed("nothing")), 12, {}}};
    for (const uint8_t message_type : {container.type, uint8_t{48}}) {
        for (const auto &[sent, size, blocks] : cases) {
            LogRecorder log(MDM_LOG_INFO);
            const Journey journey = travel(message_type, sent);
            EXPECT_THAT(journey.bytes, SizeIs(size));
            EXPECT_EQ(journey.allocated, blocks);
            EXPECT_THAT(journey.kept, IsEmpty());
            EXPECT_THAT(log.take(), IsEmpty());
        }
    }
}

}  // namespace
}  // namespace mdm::test::container_test
