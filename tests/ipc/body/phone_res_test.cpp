// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstring>
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

namespace mdm::test::phone_res_test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Ranges = std::vector<std::pair<uint32_t, uint32_t>>;

constexpr Handlers phone_res(35);
constexpr uint32_t item_type = 400;
constexpr uint32_t ext_type = 422;
constexpr uint32_t raw_type = 450;

mdm_body_t body(uint32_t type, int32_t data_size, void *data)
{
    return headed_body<&mdm_body_t::phone_res>(type, data_size, data);
}

Bytes wire(uint32_t type, int32_t data_size, const Bytes &payload)
{
    return head_bytes(type, data_size) + payload;
}

mdm_phone_res_item_t item(const char *str0, const char *str2)
{
    return {borrowed(str0), 0x77777777, borrowed(str2)};
}

mdm_phone_res_detail_t detail(uint32_t num0, uint32_t num1, const char *str2)
{
    return {num0, num1, borrowed(str2)};
}

mdm_phone_res_ext_t ext(const char *str0, mdm_phone_res_detail_t *detail)
{
    return {borrowed(str0), 0x77777777, detail};
}

mdm_phone_res_item_t *heap_item()
{
    return on_heap<mdm_phone_res_item_t>({heap_text("abc"), 0x77777777, heap_text("hi")});
}

template <class Record>
const Record &received(const mdm_body_t &body)
{
    return *static_cast<const Record *>(body.phone_res.data);
}

// The bytes of the record that a body's raw payload is taken from.
template <class Record>
Bytes image(const Record &record, size_t count)
{
    Bytes bytes(count);
    std::memcpy(bytes.data(), &record, count);
    return bytes;
}

bool is_in(const Ranges &ranges, uint32_t type)
{
    return std::ranges::any_of(
        ranges, [type](auto range) { return range.first <= type && type <= range.second; });
}

// Every type near the listed ones but that of the extended record, and some far from them.
std::vector<uint32_t> swept_types()
{
    std::vector<uint32_t> types = test::swept_types({400, 439, 440, 450});
    std::erase(types, ext_type);
    return types;
}

const Ranges travels_as_item = {{394, 421}, {423, 438}, {441, 449}, {452, 455}};
const Ranges kept_as_item = {{394, 421}, {423, 449}, {452, 455}};

TEST(PhoneRes, ItemCarriesTwoStrings)
{
    mdm_phone_res_item_t record = item("abc", "hi");
    mdm_body_t sent = body(item_type, 1, &record);
    EXPECT_EQ(phone_res.size(&sent), 20U + 3 + 2);
    EXPECT_EQ(phone_res.size(&sent), 20U + 3 + 2);
    EXPECT_EQ(phone_res.write(&sent), hex("90 01 00 00 04 03 02 01 01 00 00 00 "
                                          "03 00 00 00 61 62 63 02 00 00 00 68 69"));
    expect_headed<&mdm_body_t::phone_res>(sent, item_type, 1);
    EXPECT_EQ(record.word1, 0x77777777U);
}

// Q-PHONE_RES-1
TEST(PhoneRes, ItemArrivesAsANewRecordOfDataSize12)
{
    auto [back, blocks] =
        receive(phone_res, wire(item_type, 1, hex("03 00 00 00 61 62 63 02 00 00 00 68 69")));
    expect_headed<&mdm_body_t::phone_res>(back, item_type, 12);
    const auto &record = received<mdm_phone_res_item_t>(back);
    EXPECT_STREQ(record.str0, "abc");
    EXPECT_EQ(record.word1, 0U);
    EXPECT_STREQ(record.str2, "hi");
    EXPECT_THAT(blocks, ElementsAre(Block{&record, sizeof record}, Block{record.str0, 4},
                                    Block{record.str2, 3}));
    phone_res.free(&back);
}

TEST(PhoneRes, ItemsMissingAndEmptyStringsArriveAsNull)
{
    for (const char *absent : {static_cast<const char *>(nullptr), ""}) {
        mdm_phone_res_item_t record = item("a", absent);
        mdm_body_t sent = body(item_type, 1, &record);
        EXPECT_EQ(phone_res.size(&sent), 21U);
        Bytes bytes = phone_res.write(&sent);
        EXPECT_EQ(bytes, wire(item_type, 1, hex("01 00 00 00 61 00 00 00 00")));
        mdm_body_t back{};
        EXPECT_EQ(phone_res.read(&back, bytes), 21U);
        EXPECT_EQ(back.phone_res.data_size, 12);
        EXPECT_STREQ(received<mdm_phone_res_item_t>(back).str0, "a");
        EXPECT_EQ(received<mdm_phone_res_item_t>(back).str2, nullptr);
        phone_res.free(&back);

        record = item(absent, absent);
        EXPECT_EQ(phone_res.size(&sent), 20U);
        bytes = phone_res.write(&sent);
        EXPECT_EQ(bytes, wire(item_type, 1, Bytes(8)));
        EXPECT_EQ(phone_res.read(&back, bytes), 20U);
        EXPECT_EQ(received<mdm_phone_res_item_t>(back).str0, nullptr);
        EXPECT_EQ(received<mdm_phone_res_item_t>(back).str2, nullptr);
        phone_res.free(&back);
    }
}

TEST(PhoneRes, LongAndNonAsciiStringsTravel)
{
    const std::string text(400, '\xC3');
    mdm_phone_res_item_t record = item(text.c_str(), "\xE2\x82\xAC");
    mdm_body_t sent = body(item_type, 1, &record);
    EXPECT_EQ(phone_res.size(&sent), 20U + 400 + 3);
    mdm_body_t back{};
    EXPECT_EQ(phone_res.read(&back, phone_res.write(&sent)), 423U);
    EXPECT_EQ(received<mdm_phone_res_item_t>(back).str0, text);
    EXPECT_STREQ(received<mdm_phone_res_item_t>(back).str2, "\xE2\x82\xAC");
    phone_res.free(&back);
}

TEST(PhoneRes, ExtendedRecordCarriesAStringAndItsDetail)
{
    mdm_phone_res_detail_t numbers = detail(0x11121314, 0xF1F2F3F4, "hi");
    mdm_phone_res_ext_t record = ext("abc", &numbers);
    mdm_body_t sent = body(ext_type, 1, &record);
    EXPECT_EQ(phone_res.size(&sent), 28U + 3 + 2);
    EXPECT_EQ(phone_res.write(&sent),
              hex("A6 01 00 00 04 03 02 01 01 00 00 00 03 00 00 00 61 62 63 "
                  "14 13 12 11 F4 F3 F2 F1 02 00 00 00 68 69"));
    expect_headed<&mdm_body_t::phone_res>(sent, ext_type, 1);
    EXPECT_EQ(record.word1, 0x77777777U);
}

TEST(PhoneRes, ExtendedRecordArrivesWithItsDetail)
{
    auto [back, blocks] = receive(
        phone_res,
        wire(ext_type, 1, hex("03 00 00 00 61 62 63 14 13 12 11 F4 F3 F2 F1 02 00 00 00 68 69")),
        hex("FF"));
    expect_headed<&mdm_body_t::phone_res>(back, ext_type, 12);
    const auto &record = received<mdm_phone_res_ext_t>(back);
    EXPECT_STREQ(record.str0, "abc");
    EXPECT_EQ(record.word1, 0U);
    EXPECT_EQ(record.detail->num0, 0x11121314U);
    EXPECT_EQ(record.detail->num1, 0xF1F2F3F4U);
    EXPECT_STREQ(record.detail->str2, "hi");
    EXPECT_THAT(blocks, ElementsAre(Block{&record, sizeof record},
                                    Block{record.detail, sizeof(mdm_phone_res_detail_t)},
                                    Block{record.str0, 4}, Block{record.detail->str2, 3}));
    phone_res.free(&back);
}

TEST(PhoneRes, ExtendedRecordWithoutStringsIs28Bytes)
{
    mdm_phone_res_detail_t numbers = detail(5, 7, nullptr);
    mdm_phone_res_ext_t record = ext(nullptr, &numbers);
    mdm_body_t sent = body(ext_type, 12, &record);
    EXPECT_EQ(phone_res.size(&sent), 28U);
    const Bytes bytes = phone_res.write(&sent);
    EXPECT_EQ(bytes, wire(ext_type, 12, hex("00 00 00 00 05 00 00 00 07 00 00 00 00 00 00 00")));
    mdm_body_t back{};
    EXPECT_EQ(phone_res.read(&back, bytes), 28U);
    EXPECT_EQ(received<mdm_phone_res_ext_t>(back).str0, nullptr);
    EXPECT_EQ(received<mdm_phone_res_ext_t>(back).detail->num0, 5U);
    EXPECT_EQ(received<mdm_phone_res_ext_t>(back).detail->num1, 7U);
    EXPECT_EQ(received<mdm_phone_res_ext_t>(back).detail->str2, nullptr);
    phone_res.free(&back);
}

TEST(PhoneRes, RawBytesArriveAsAStringUpToTheirFirstZeroByte)
{
    expect_raw_bytes_to_travel(phone_res, raw_type);
}

TEST(PhoneRes, EveryTypeTravelsAsAnItemOrAsRawBytes)
{
    mdm_phone_res_item_t record = item("abcd", "hi");
    for (const uint32_t type : swept_types()) {
        SCOPED_TRACE(type);
        const bool as_item = is_in(travels_as_item, type);
        mdm_body_t sent = body(type, 3, &record);
        EXPECT_EQ(
            phone_res.write(&sent),
            wire(type, 3,
                 as_item ? hex("04 00 00 00 61 62 63 64 02 00 00 00 68 69") : image(record, 3)));

        mdm_body_t back{};
        const Bytes bytes = wire(type, 3, hex("01 00 00 00 61 00 00 00 00"));
        AllocationTrace trace;
        EXPECT_EQ(phone_res.read(&back, bytes), as_item ? 21U : 15U);
        trace.stop();
        EXPECT_EQ(back.phone_res.data_size, as_item ? 12 : 3);
        EXPECT_EQ(trace.kept().size(), as_item ? 2U : 1U);
        if (as_item) {
            phone_res.free(&back);
        } else {
            g_free(back.phone_res.data);  // of some types no item, but released as one
        }
    }
}

// Q-PHONE_RES-2
TEST(PhoneRes, EveryTypeIsSizedAndReleasedAsAnItemOrAsRawBytes)
{
    for (const uint32_t type : swept_types()) {
        SCOPED_TRACE(type);
        const bool as_item = is_in(kept_as_item, type);
        mdm_phone_res_item_t *record = heap_item();
        char *const strings[] = {record->str0, record->str2};
        mdm_body_t kept = body(type, 3, record);
        EXPECT_EQ(phone_res.size(&kept), as_item ? 25U : 15U);
        const auto released = phone_res.release(&kept);
        EXPECT_EQ(kept.phone_res.data_size, as_item ? 3 : 0);
        if (as_item) {
            EXPECT_THAT(released, ElementsAre(strings[0], strings[1], record));
            EXPECT_EQ(kept.phone_res.data, record);
        } else {
            EXPECT_THAT(released, ElementsAre(record));
            EXPECT_EQ(kept.phone_res.data, nullptr);
            g_free(strings[0]);
            g_free(strings[1]);
        }
    }
}

// Q-PHONE_RES-2
TEST(PhoneRes, TwoTypesAreSizedAsAnItemAndSentAsItsMemory)
{
    for (const uint32_t type : {439U, 440U}) {
        mdm_phone_res_item_t record = item("abc", "hi");
        mdm_msg_t msg = message(phone_res.type);
        msg.body = body(type, 12, &record);
        EXPECT_EQ(phone_res.size(&msg.body), 25U);
        const Bytes bytes = serialize(msg);
        ASSERT_EQ(bytes.size(), 40U + 25);
        const Bytes sent(bytes.begin() + 40, bytes.end());
        EXPECT_EQ(sent, wire(type, 12, image(record, 12)) + hex("00"));

        mdm_msg_t back{};
        AllocationTrace trace;
        EXPECT_EQ(ipc_deserialize(&back, bytes.data(), static_cast<uint32_t>(bytes.size())), 0);
        trace.stop();
        EXPECT_EQ(back.body.phone_res.data_size, 12);
        EXPECT_THAT(trace.kept(), ElementsAre(Block{back.body.phone_res.data, 13}));
        g_free(back.body.phone_res.data);  // an owner of such a message must not call ipc_free()
    }
}

// Q-PHONE_RES-3
TEST(PhoneRes, DataSizeBelow1SendsTheHeadAloneAndIsReceivedAsNull)
{
    mdm_phone_res_detail_t numbers = detail(5, 7, "hi");
    mdm_phone_res_ext_t extended = ext("abc", &numbers);
    mdm_phone_res_item_t record = item("abc", "hi");
    for (const uint32_t type : {394U, ext_type, 439U, raw_type, 455U}) {
        void *data = type == ext_type ? static_cast<void *>(&extended) : &record;
        for (const int32_t data_size : {0, -1, INT32_MIN}) {
            for (void *maybe : {data, static_cast<void *>(nullptr)}) {
                mdm_body_t sent = body(type, data_size, maybe);
                EXPECT_EQ(phone_res.write(&sent), wire(type, data_size, {}));
            }
            expect_head_received(phone_res, type, data_size, nullptr);
        }
    }
}

// Q-PHONE_RES-3
TEST(PhoneRes, SizeLooksForDataAndForADataSizeOf0Only)
{
    mdm_phone_res_detail_t numbers = detail(5, 7, "hi");
    mdm_phone_res_ext_t extended = ext("abc", &numbers);
    mdm_phone_res_item_t record = item("abc", "hi");
    const struct {
        void *data;
        uint32_t type;
        uint32_t size_at_minus_4;
    } cases[] = {{&record, item_type, 25},
                 {&record, 439, 25},
                 {&extended, ext_type, 33},
                 {&record, raw_type, 8}};
    for (const auto &[data, type, size_at_minus_4] : cases) {
        mdm_body_t sent = body(type, -4, data);
        EXPECT_EQ(phone_res.size(&sent), size_at_minus_4);
        EXPECT_EQ(sent.phone_res.data_size, -4);
        sent = body(type, 0, data);
        EXPECT_EQ(phone_res.size(&sent), 12U);
        for (const int32_t data_size : {-4, 1, 9}) {
            sent = body(type, data_size, nullptr);
            EXPECT_EQ(phone_res.size(&sent), 12U);
            EXPECT_EQ(sent.phone_res.data_size, data_size);
        }
    }
}

// The handler fails once it has written the head.
void expect_failure_after_head(mdm_body_t sent)
{
    Bytes buffer(64);
    LogRecorder log;
    EXPECT_EQ(phone_res.set(buffer.data(), &sent), nullptr);
    EXPECT_THAT(log.take(), ElementsAre(assert_fails(phone_res.set)));
    EXPECT_EQ(buffer, wire(static_cast<uint32_t>(sent.phone_res.type), 1, Bytes(52)));
}

// Q-PHONE_RES-4
TEST(PhoneRes, MissingRecordsCannotBeWritten)
{
    for (const uint32_t type : {394U, 421U, ext_type, 423U, 438U, 441U, 449U, 452U, 455U}) {
        expect_failure_after_head(body(type, 1, nullptr));
    }
    mdm_phone_res_ext_t record = ext("abc", nullptr);
    expect_failure_after_head(body(ext_type, 1, &record));
}

// Q-PHONE_RES-4
TEST(PhoneRes, MessageWithoutItsRecordIsAHeadAndALineInTheLog)
{
    mdm_msg_t msg = message(phone_res.type);
    msg.body = body(item_type, 1, nullptr);
    LogRecorder log(MDM_LOG_CRITICAL);
    const Bytes bytes = serialize(msg);
    EXPECT_EQ(Bytes(bytes.begin() + 40, bytes.end()), wire(item_type, 1, {}));
    EXPECT_THAT(log.take(), ElementsAre(assert_fails(phone_res.set),
                                        critical(from::ipc_serialize, "lp_body is NULL")));
}

// Q-BODY-7, Q-PHONE_RES-5
TEST(PhoneRes, FreeEmptiesAnItemBeforeItReleasesIt)
{
    for (const uint32_t type : {item_type, 439U, 440U}) {
        for (const int32_t data_size : {12, 1, -1}) {
            mdm_phone_res_item_t *record = heap_item();
            const void *strings[] = {record->str0, record->str2};
            mdm_phone_res_item_t last{};
            mdm_body_t kept = body(type, data_size, record);
            LogRecorder log;
            AllocationTrace trace;
            trace.during_release([&](const void *) { last = *record; });
            phone_res.free(&kept);
            trace.stop();
            EXPECT_THAT(trace.released(), ElementsAre(strings[0], strings[1], record));
            EXPECT_EQ(last.str0, nullptr);
            EXPECT_EQ(last.word1, 0U);
            EXPECT_EQ(last.str2, nullptr);
            EXPECT_EQ(kept.phone_res.data, record);
            expect_headed<&mdm_body_t::phone_res>(kept, type, data_size);
            EXPECT_THAT(log.take(), IsEmpty());
        }
    }
}

// Q-PHONE_RES-5
TEST(PhoneRes, FreeEmptiesAnExtendedRecordAndItsDetailBeforeItReleasesThem)
{
    auto *numbers = on_heap<mdm_phone_res_detail_t>({5, 7, heap_text("hi")});
    auto *record = on_heap<mdm_phone_res_ext_t>({heap_text("abc"), 0x77777777, numbers});
    const void *strings[] = {record->str0, numbers->str2};
    mdm_phone_res_detail_t last_numbers{};
    mdm_phone_res_ext_t last{};
    mdm_body_t kept = body(ext_type, 12, record);
    LogRecorder log;
    AllocationTrace trace;
    trace.during_release([&](const void *block) {
        if (block == numbers) {
            last_numbers = *numbers;
        }
        last = *record;
    });
    phone_res.free(&kept);
    trace.stop();
    EXPECT_THAT(trace.released(), ElementsAre(strings[0], strings[1], numbers, record));
    EXPECT_EQ(last_numbers.str2, nullptr);
    EXPECT_EQ(last.str0, nullptr);
    EXPECT_EQ(last.word1, 0U);
    EXPECT_EQ(last.detail, nullptr);
    EXPECT_EQ(kept.phone_res.data, record);
    expect_headed<&mdm_body_t::phone_res>(kept, ext_type, 12);
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST(PhoneRes, FreeResetsARawBodyAndMayThenRunAgain)
{
    expect_raw_bytes_released(phone_res, raw_type, 3, 0, {});
    expect_raw_bytes_released(phone_res, raw_type, -1, 0, {});
}

// Q-BODY-5
TEST(PhoneRes, FreeWithoutDataOrDataSizeDoesNothing)
{
    for (const uint32_t type : {item_type, ext_type, 439U, raw_type}) {
        expect_no_release(phone_res, body(type, 12, nullptr), {});
        expect_no_release(phone_res, body(type, 0, sentinel()), {});
    }
}

TEST(PhoneRes, WholeMessagesOfBothTypesLeakNothing)
{
    mdm_phone_res_detail_t numbers = detail(5, 7, "hi");
    mdm_phone_res_ext_t extended = ext("abc", &numbers);
    mdm_phone_res_item_t record = item("abc", "hi");
    const struct {
        mdm_body_t body;
        size_t size;
        size_t blocks;
    } cases[] = {{body(item_type, 1, &record), 25, 3},
                 {body(ext_type, 1, &extended), 33, 4},
                 {body(raw_type, 3, borrowed("raw")), 15, 1},
                 {body(394, 0, &record), 12, 0}};
    LogRecorder log(MDM_LOG_CRITICAL);
    for (const uint8_t message_type : {phone_res.type, uint8_t{36}}) {
        for (const auto &[sent, size, blocks] : cases) {
            const Journey journey = travel(message_type, sent);
            EXPECT_EQ(journey.bytes.size(), size);
            EXPECT_EQ(journey.allocated.size(), blocks);
            EXPECT_THAT(journey.kept, IsEmpty());
        }
    }
    EXPECT_THAT(log.take(), IsEmpty());
}

// Q-BODY-13
TEST(PhoneRes, HandlersLogNothing)
{
    mdm_phone_res_detail_t numbers = detail(5, 7, "hi");
    mdm_phone_res_ext_t extended = ext("abc", &numbers);
    mdm_phone_res_item_t record = item("abc", "hi");
    for (const int32_t data_size : {0, 3}) {
        for (const mdm_body_t &sent :
             {body(item_type, data_size, &record), body(ext_type, data_size, &extended),
              body(raw_type, data_size, &record)}) {
            const auto [size, set, get, free] = logged_lines(phone_res, sent);
            EXPECT_THAT(size, IsEmpty());
            EXPECT_THAT(set, IsEmpty());
            EXPECT_THAT(get, IsEmpty());
            EXPECT_THAT(free, IsEmpty());
        }
    }
}

}  // namespace
}  // namespace mdm::test::phone_res_test
