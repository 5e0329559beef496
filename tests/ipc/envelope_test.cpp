// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ipc/envelope.hpp"
#include "mdm/ipc.h"
#include "support/allocation_trace.hpp"
#include "support/handlers.hpp"
#include "support/log_recorder.hpp"
#include "support/wire.hpp"

namespace mdm::test::envelope_test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr Handlers admin(1);
constexpr Handlers res(33);
constexpr uint8_t type_without_category = 19;

// Type 33, header words 1 to 7, no text, the two payload bytes "ok".
const Bytes res_message = hex("2E 00 00 00 21 00 00 00 01 00 00 00 02 00 00 00 00 00 00 00 "
                              "03 00 00 00 06 00 00 00 07 00 00 00 04 00 00 00 05 00 00 00 "
                              "64 00 00 00 00 00 00 00 02 00 00 00 6F 6B");

mdm_msg_t message_with_header(uint8_t type)
{
    mdm_msg_t msg = message(type);
    msg.hdr_aux = 0xAAAAAAAA;
    msg.hdr_word1 = 1;
    msg.hdr_word2 = 2;
    msg.hdr_word3 = 3;
    msg.hdr_word4 = 4;
    msg.hdr_word5 = 5;
    msg.hdr_word6 = 6;
    msg.hdr_word7 = 7;
    return msg;
}

mdm_msg_t res_example(char *payload)
{
    mdm_msg_t msg = message_with_header(res.type);
    msg.body.res.type = 100;
    msg.body.res.data_size = 2;
    msg.body.res.data = payload;
    return msg;
}

// A 40-byte message of a type, header words zero.
Bytes header_only(uint8_t type)
{
    Bytes bytes(40);
    bytes[0] = 32;
    bytes[4] = type;
    return bytes;
}

// A record of which every byte that deserialising may leave alone is recognisable.
mdm_msg_t prefilled()
{
    mdm_msg_t msg;
    std::memset(&msg, 0x5A, sizeof msg);
    msg.hdr_text = nullptr;
    return msg;
}

std::array<uint32_t, 7> words_of(const mdm_msg_t &msg)
{
    return {msg.hdr_word1, msg.hdr_word2, msg.hdr_word3, msg.hdr_word4,
            msg.hdr_word5, msg.hdr_word6, msg.hdr_word7};
}

void expect_header_words(const mdm_msg_t &msg)
{
    EXPECT_THAT(words_of(msg), ElementsAre(1, 2, 3, 4, 5, 6, 7));
}

// Q-ENVELOPE-1, Q-ENVELOPE-3
TEST(Envelope, EndToEndExampleSerialises)
{
    char payload[] = "ok";
    mdm_msg_t msg = res_example(payload);
    EXPECT_EQ(res.size(&msg.body), 14U);

    uint32_t length = 0;
    AllocationTrace trace;
    uint8_t *buffer = ipc_serialize(&msg, &length);
    trace.stop();
    EXPECT_EQ(length, 54U);
    EXPECT_THAT(trace.allocated(), ElementsAre(Block{buffer, 59}));
    EXPECT_EQ(Bytes(buffer, buffer + 54), res_message);
    EXPECT_EQ(Bytes(buffer + 54, buffer + 59), hex("00 F4 F4 F4 F4"));
    g_free(buffer);
}

TEST(Envelope, EndToEndExampleDeserialises)
{
    mdm_msg_t msg{};
    msg.hdr_aux = 0xBBBBBBBB;
    AllocationTrace trace;
    EXPECT_EQ(ipc_deserialize(&msg, res_message.data(), 54), 0);
    trace.stop();

    EXPECT_EQ(msg.hdr_aux, 0xBBBBBBBBU);
    EXPECT_EQ(msg.type, res.type);
    EXPECT_EQ(msg.hdr_byte, 0);
    EXPECT_EQ(msg.hdr_text, nullptr);
    expect_header_words(msg);
    EXPECT_EQ(msg.body.res.type, 100U);
    EXPECT_EQ(msg.body.res.param, 0U);
    EXPECT_EQ(msg.body.res.data_size, 2);
    EXPECT_STREQ(static_cast<char *>(msg.body.res.data), "ok");
    EXPECT_THAT(trace.allocated(), ElementsAre(Block{msg.body.res.data, 3}));

    const void *payload = msg.body.res.data;
    AllocationTrace freeing;
    EXPECT_EQ(ipc_free(&msg), 0);
    freeing.stop();
    EXPECT_THAT(freeing.released(), ElementsAre(payload));
}

TEST(Envelope, HeaderTextShiftsWhatFollows)
{
    char text[] = "abc";
    mdm_msg_t msg = message_with_header(res.type);
    msg.hdr_byte = 0x99;
    msg.hdr_text = text;
    const Bytes bytes = serialize(msg);
    EXPECT_EQ(bytes, hex("2F 00 00 00 21 99 00 00 01 00 00 00 02 00 00 00 03 00 00 00 61 62 63 "
                         "03 00 00 00 06 00 00 00 07 00 00 00 04 00 00 00 05 00 00 00 "
                         "00 00 00 00 00 00 00 00 00 00 00 00"));

    mdm_msg_t back{};
    EXPECT_EQ(deserialize(back, bytes), 0);
    EXPECT_EQ(back.hdr_byte, 0x99);
    EXPECT_STREQ(back.hdr_text, "abc");
    expect_header_words(back);
    const void *received = back.hdr_text;
    AllocationTrace trace;
    EXPECT_EQ(ipc_free(&back), 0);
    trace.stop();
    EXPECT_THAT(trace.released(), ElementsAre(received));
    EXPECT_EQ(back.hdr_text, nullptr);
    EXPECT_EQ(back.type, res.type);
}

TEST(Envelope, EmptyHeaderTextComesBackAsNull)
{
    char text[] = "";
    mdm_msg_t msg = message(res.type);
    msg.hdr_text = text;
    const Bytes bytes = serialize(msg);
    EXPECT_EQ(bytes.size(), 52U);
    mdm_msg_t back{};
    EXPECT_EQ(deserialize(back, bytes), 0);
    EXPECT_EQ(back.hdr_text, nullptr);
}

TEST(Envelope, EveryHeaderBitTravels)
{
    mdm_msg_t msg = message(res.type);
    msg.hdr_byte = 0xFF;
    msg.hdr_word1 = 0xFFFFFFFF;
    msg.hdr_word2 = 0x80000000;
    msg.hdr_word3 = 0x01020304;
    msg.hdr_word4 = 0x7FFFFFFF;
    msg.hdr_word5 = 0xDEADBEEF;
    msg.hdr_word6 = 0x00010000;
    msg.hdr_word7 = 0xA5A5A5A5;
    mdm_msg_t back{};
    EXPECT_EQ(deserialize(back, serialize(msg)), 0);
    EXPECT_EQ(back.hdr_byte, 0xFF);
    EXPECT_THAT(words_of(back), ElementsAre(0xFFFFFFFF, 0x80000000, 0x01020304, 0x7FFFFFFF,
                                            0xDEADBEEF, 0x00010000, 0xA5A5A5A5));
}

TEST(Envelope, SerialisingLeavesTheSendersMessageAlone)
{
    char payload[] = "ok";
    mdm_msg_t msg = res_example(payload);
    mdm_msg_t before;
    std::memcpy(&before, &msg, sizeof msg);
    serialize(msg);
    EXPECT_EQ(std::memcmp(&before, &msg, sizeof msg), 0);
}

// Q-ENVELOPE-2
TEST(Envelope, ReservedBytesAreIgnoredOnReading)
{
    Bytes bytes = res_message;
    bytes[6] = 0xFF;
    bytes[7] = 0xFF;
    mdm_msg_t msg{};
    EXPECT_EQ(deserialize(msg, bytes), 0);
    EXPECT_EQ(msg.type, res.type);
    EXPECT_EQ(msg.hdr_byte, 0);
    ipc_free(&msg);
}

TEST(Envelope, BufferMayLieAtAnyAlignment)
{
    for (size_t offset = 0; offset < 8; ++offset) {
        Bytes bytes(offset);
        bytes = bytes + res_message;
        mdm_msg_t msg{};
        EXPECT_EQ(ipc_deserialize(&msg, bytes.data() + offset, 54), 0);
        expect_header_words(msg);
        EXPECT_STREQ(static_cast<char *>(msg.body.res.data), "ok");
        ipc_free(&msg);
    }
}

// Q-ENVELOPE-16
TEST(Envelope, OldHeaderTextIsReleasedBeforeTheNewOneIsRead)
{
    using Kind = AllocationTrace::Kind;
    using Event = AllocationTrace::Event;
    char text[] = "new text";
    mdm_msg_t sent = message(res.type);
    sent.hdr_text = text;
    const Bytes bytes = serialize(sent);
    mdm_msg_t msg{};
    msg.hdr_text = heap_text("old");
    const void *old = msg.hdr_text;
    AllocationTrace trace;
    EXPECT_EQ(ipc_deserialize(&msg, bytes.data(), static_cast<uint32_t>(bytes.size())), 0);
    trace.stop();
    EXPECT_TRUE(
        (trace.events() == std::vector<Event>{{Kind::released, {old, 0}},
                                              {Kind::allocated, {msg.hdr_text, sizeof text}}}));
    ipc_free(&msg);
}

TEST(Envelope, OldHeaderTextIsReleasedWhenThereIsNoNewOne)
{
    mdm_msg_t msg{};
    msg.hdr_text = heap_text("old");
    const void *old = msg.hdr_text;
    const Bytes bytes = header_only(type_without_category);
    AllocationTrace trace;
    EXPECT_EQ(ipc_deserialize(&msg, bytes.data(), 40), 0);
    trace.stop();
    EXPECT_THAT(trace.released(), ElementsAre(old));
    EXPECT_EQ(msg.hdr_text, nullptr);
}

// The dispatch by message type: the types that have a category, and that both types of a pair share
// their handlers. The tests of a category's body show that its handlers are the right ones.

TEST(Dispatch, TypesWithACategoryHaveHandlersAndNoOthers)
{
    for (uint8_t type = 0; type <= 80; ++type) {
        const ipc_handler_row &row = category_of(type).row;
        const bool expected = format_of(type) != nullptr;
        EXPECT_EQ(row.set != nullptr, expected) << int{type};
        EXPECT_EQ(row.get != nullptr, expected) << int{type};
        EXPECT_EQ(row.size != nullptr, expected) << int{type};
        EXPECT_EQ(row.free != nullptr, expected) << int{type};
    }
}

TEST(Dispatch, BothTypesOfAPairShareTheirHandlers)
{
    for (const CategoryFormat &format : category_formats()) {
        const Category first = category_of(format.first_type());
        const Category last = category_of(format.last_type());
        EXPECT_EQ(&first.row, &last.row) << format.name;
        EXPECT_EQ(first.names.origin(), last.names.origin()) << format.name;
    }
}

// Serialising: every way it fails.

TEST(Serialise, NullMessageFailsAnAssert)
{
    LogRecorder log;
    uint32_t length = 77;
    EXPECT_EQ(::ipc_serialize(nullptr, &length), nullptr);
    EXPECT_EQ(length, 77U);
    EXPECT_THAT(log.take(),
                ElementsAre(enter(from::ipc_serialize), assert_fails(from::ipc_serialize)));
}

TEST(Serialise, TypeOutside1To80FailsAnAssert)
{
    for (const uint8_t type : std::to_array<uint8_t>({0, 81, 128, 255})) {
        mdm_msg_t msg = message(type);
        LogRecorder log;
        uint32_t length = 77;
        EXPECT_EQ(::ipc_serialize(&msg, &length), nullptr);
        EXPECT_EQ(length, 77U);
        EXPECT_THAT(log.take(),
                    ElementsAre(enter(from::ipc_serialize), assert_fails(from::ipc_serialize)));
    }
}

// Q-ENVELOPE-12
TEST(Serialise, TypeWithoutCategoryReturnsNullInSilence)
{
    for (const uint8_t type : types_without_category()) {
        mdm_msg_t msg = message(type);
        uint32_t length = 77;
        LogRecorder log;
        EXPECT_EQ(::ipc_serialize(&msg, &length), nullptr);
        EXPECT_EQ(length, 77U);
        EXPECT_THAT(log.take(), ElementsAre(enter(from::ipc_serialize)));
    }
}

TEST(Serialise, LogsEnterAndExitAroundTheCategorysLines)
{
    mdm_msg_t msg = message(res.type);
    LogRecorder log;
    serialize(msg);
    EXPECT_THAT(log.take(),
                ElementsAre(enter(from::ipc_serialize), enter(res.size), leave(res.size),
                            enter(res.set), leave(res.set), leave(from::ipc_serialize)));
}

// Handlers of a made-up category, for behaviour that no real category has.
constexpr Names no_names("");
int32_t made_up_size = 0;
uint32_t size_made_up(Lengths & /*lengths*/, const Log & /*log*/, mdm_body_t * /*body*/)
{
    return static_cast<uint32_t>(made_up_size);
}
void write_bytes(Writer &out, int32_t count)
{
    const Bytes bytes(static_cast<size_t>(count), 0x11);
    out.raw_bytes(bytes.data(), count);
}
bool set_three_bytes(Writer &out, const Log & /*log*/, mdm_body_t * /*body*/)
{
    write_bytes(out, 3);
    return true;
}
bool set_nothing_and_fail(Writer & /*out*/, const Log & /*log*/, mdm_body_t * /*body*/)
{
    return false;
}
bool set_over_the_guard_and_fail(Writer &out, const Log & /*log*/, mdm_body_t * /*body*/)
{
    write_bytes(out, 5);
    return false;
}
bool get_and_fail(Reader & /*in*/, const Log & /*log*/, mdm_body_t * /*body*/)
{
    return false;
}

struct Serialised {
    Bytes bytes;
    Bytes trailer;
};

Serialised serialize_made_up(const ipc_handler_row &row, int32_t body_size)
{
    made_up_size = body_size;
    mdm_msg_t msg = message(res.type);
    uint32_t length = 0;
    uint8_t *buffer = ipc_serialize({row, no_names}, &msg, &length);
    EXPECT_NE(buffer, nullptr);
    Serialised result = {{buffer, buffer + length}, {buffer + length, buffer + length + 5}};
    g_free(buffer);
    return result;
}

TEST(Serialise, TotalBelow8FailsAnAssertTwice)
{
    // The total is 40 bytes of header plus the body's size, as a signed number.
    for (const int32_t body_size :
         {-33, -39, -40, -41, -999, INT32_MIN, INT32_MAX, INT32_MAX - 39}) {
        made_up_size = body_size;
        mdm_msg_t msg = message(res.type);
        uint32_t length = 77;
        LogRecorder log;
        const ipc_handler_row row = {set_three_bytes, nullptr, size_made_up, nullptr};
        EXPECT_EQ(ipc_serialize({row, no_names}, &msg, &length), nullptr) << body_size;
        EXPECT_EQ(length, 77U);
        EXPECT_THAT(log.take(),
                    ElementsAre(assert_fails(from::alloc_msg), assert_fails(from::ipc_serialize)));
    }
}

// Q-ENVELOPE-6
TEST(Serialise, TotalFrom8UpGetsABufferWithItsTrailer)
{
    for (const int32_t total : {8, 9, 39, 40}) {
        mdm_msg_t msg = message(res.type);
        msg.hdr_byte = 0x99;
        LogRecorder log;
        AllocationTrace trace;
        uint8_t *buffer = _alloc_msg(msg, total);
        trace.stop();
        const auto size = static_cast<size_t>(total);
        EXPECT_THAT(trace.allocated(), ElementsAre(Block{buffer, size + 5}));
        EXPECT_EQ(load_u32(buffer), size - 8);
        EXPECT_EQ(buffer[4], res.type);
        EXPECT_EQ(buffer[5], 0x99);
        EXPECT_EQ(Bytes(buffer + 6, buffer + 8), hex("00 00"));
        EXPECT_EQ(Bytes(buffer + size, buffer + size + 5), hex("00 F4 F4 F4 F4"));
        EXPECT_THAT(log.take(), IsEmpty());
        g_free(buffer);
    }
}

// Q-ENVELOPE-5
TEST(Serialise, TotalsBelow1AndBelow8FailDifferentChecks)
{
    const mdm_msg_t msg = message(res.type);
    LogRecorder log;
    EXPECT_EQ(_alloc_msg(msg, 0), nullptr);
    EXPECT_EQ(_alloc_msg(msg, INT32_MIN), nullptr);
    EXPECT_EQ(_alloc_msg(msg, 1), nullptr);
    EXPECT_EQ(_alloc_msg(msg, 7), nullptr);
    const auto lines = log.take();
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[0].source_line, lines[1].source_line);
    EXPECT_LT(lines[1].source_line, lines[2].source_line);
    EXPECT_EQ(lines[2].source_line, lines[3].source_line);
}

// Q-ENVELOPE-11
TEST(Serialise, RowWithoutSetHandlerLeavesTheBodyZeroAndIsNotChecked)
{
    LogRecorder log;
    const auto result = serialize_made_up({nullptr, nullptr, size_made_up, nullptr}, 3);
    EXPECT_EQ(result.bytes.size(), 43U);
    EXPECT_EQ(Bytes(result.bytes.end() - 3, result.bytes.end()), hex("00 00 00"));
    EXPECT_EQ(result.trailer, hex("00 F4 F4 F4 F4"));
    EXPECT_THAT(log.take(), ElementsAre(leave(from::ipc_serialize)));
}

// Q-ENVELOPE-7
TEST(Serialise, FailedSetHandlerIsOnlyLogged)
{
    LogRecorder log;
    const auto result =
        serialize_made_up({set_nothing_and_fail, nullptr, size_made_up, nullptr}, 3);
    EXPECT_EQ(result.bytes.size(), 43U);
    EXPECT_EQ(Bytes(result.bytes.end() - 3, result.bytes.end()), hex("00 00 00"));
    EXPECT_THAT(log.take(), ElementsAre(critical(from::ipc_serialize, "lp_body is NULL"),
                                        leave(from::ipc_serialize)));
}

// Q-ENVELOPE-9
TEST(Serialise, FailedSetHandlerSkipsTheGuardCheck)
{
    LogRecorder log;
    const auto result =
        serialize_made_up({set_over_the_guard_and_fail, nullptr, size_made_up, nullptr}, 3);
    EXPECT_EQ(result.trailer, hex("11 11 F4 F4 F4"));
    EXPECT_THAT(log.take(), ElementsAre(critical(from::ipc_serialize, "lp_body is NULL"),
                                        leave(from::ipc_serialize)));
}

// Q-ENVELOPE-8
TEST(Serialise, TheUncheckedByteBehindTheMessageMayBeOverwritten)
{
    LogRecorder log;
    const auto result = serialize_made_up({set_three_bytes, nullptr, size_made_up, nullptr}, 2);
    EXPECT_EQ(result.bytes.size(), 42U);
    EXPECT_EQ(result.trailer, hex("11 F4 F4 F4 F4"));
    EXPECT_THAT(log.take(), ElementsAre(leave(from::ipc_serialize)));
}

size_t overwritten_guard_byte = 0;
bool set_one_guard_byte(Writer &out, const Log & /*log*/, mdm_body_t * /*body*/)
{
    out.position()[3 + 1 + overwritten_guard_byte] = 0xF5;
    return true;
}

TEST(Serialise, EachOverwrittenGuardByteIsLoggedOnceWithTypeAndLengthField)
{
    LogRecorder log;
    for (overwritten_guard_byte = 0; overwritten_guard_byte < 4; ++overwritten_guard_byte) {
        const auto result =
            serialize_made_up({set_one_guard_byte, nullptr, size_made_up, nullptr}, 3);
        EXPECT_EQ(result.bytes.size(), 43U);
        EXPECT_THAT(log.take(),
                    ElementsAre(critical(from::check_footer, "Serialization has corrupted "
                                                             "memory!!!!! (msg type=33, len=35)"),
                                leave(from::ipc_serialize)));
    }
}

TEST(Serialise, AllFourOverwrittenGuardBytesAreLoggedOnce)
{
    LogRecorder log;
    const auto set_all = [](Writer &out, const Log & /*log*/, mdm_body_t * /*body*/) {
        write_bytes(out, 8);
        return true;
    };
    const auto result = serialize_made_up({set_all, nullptr, size_made_up, nullptr}, 3);
    EXPECT_EQ(result.bytes.size(), 43U);
    EXPECT_THAT(log.take(), ElementsAre(critical(from::check_footer,
                                                 "Serialization has corrupted memory!!!!! (msg "
                                                 "type=33, len=35)"),
                                        leave(from::ipc_serialize)));
}

bool set_another_length_field(Writer &out, const Log & /*log*/, mdm_body_t * /*body*/)
{
    store_u32(out.position() - 40, 30);
    return true;
}

// Q-ENVELOPE-10
TEST(Serialise, TheGuardIsLookedForBehindTheLengthThatTheBufferHolds)
{
    LogRecorder log;
    serialize_made_up({set_another_length_field, nullptr, size_made_up, nullptr}, 3);
    EXPECT_THAT(log.take(),
                ElementsAre(critical(from::check_footer, "Serialization has corrupted memory!!!!! "
                                                         "(msg type=33, len=30)"),
                            leave(from::ipc_serialize)));
}

// Deserialising: every way it fails.

// The source line of the check that rejects a buffer.
int failed_check(mdm_msg_t *msg, const uint8_t *buffer, uint32_t length)
{
    LogRecorder log(MDM_LOG_CRITICAL);
    EXPECT_EQ(::ipc_deserialize(msg, buffer, length), -999);
    const auto lines = log.take();
    return lines.size() == 1 ? lines.front().source_line : 0;
}

TEST(Deserialise, ChecksStandInTheirOrderAndEachLogsItsOwnLine)
{
    mdm_msg_t msg{};
    Bytes wrong = header_only(0);  // and its type is wrong, too
    wrong[0] = 31;
    Bytes short_one = header_only(0);  // likewise
    short_one[0] = 31;
    const Bytes untyped = header_only(0);
    const std::vector<int> checks = {
        failed_check(nullptr, untyped.data(), 40), failed_check(&msg, nullptr, 40),
        failed_check(&msg, wrong.data(), 40),      failed_check(&msg, short_one.data(), 39),
        failed_check(&msg, untyped.data(), 40),
    };
    EXPECT_GT(checks[0], 0);
    EXPECT_THAT(checks, ::testing::WhenSorted(::testing::ElementsAreArray(checks)));
    EXPECT_EQ(std::set(checks.begin(), checks.end()).size(), checks.size());
    EXPECT_EQ(failed_check(nullptr, nullptr, 0), checks[0]);
    EXPECT_EQ(failed_check(&msg, nullptr, 0), checks[1]);
}

void expect_rejected(mdm_msg_t *msg, const uint8_t *buffer, uint32_t length)
{
    LogRecorder log;
    EXPECT_EQ(::ipc_deserialize(msg, buffer, length), -999);
    EXPECT_THAT(log.take(),
                ElementsAre(enter(from::ipc_deserialize), assert_fails(from::ipc_deserialize)));
}

// A rejected buffer changes nothing in the record.
void expect_rejected(const Bytes &bytes, uint32_t length)
{
    mdm_msg_t msg = prefilled();
    mdm_msg_t before;
    std::memcpy(&before, &msg, sizeof msg);
    expect_rejected(&msg, bytes.data(), length);
    EXPECT_EQ(std::memcmp(&before, &msg, sizeof msg), 0);
}

// Q-ENVELOPE-14
TEST(Deserialise, NullMessageOrBufferIsRejected)
{
    mdm_msg_t msg{};
    expect_rejected(nullptr, res_message.data(), 54);
    expect_rejected(&msg, nullptr, 54);
    expect_rejected(&msg, nullptr, 0);
    expect_rejected(nullptr, nullptr, 0);
}

// Q-ENVELOPE-1
TEST(Deserialise, LengthFieldMustBeExactlyLengthMinus8)
{
    const Bytes longer = res_message + hex("00");
    expect_rejected(longer, 55);
    expect_rejected(res_message, 53);
    expect_rejected(res_message, 46);
    expect_rejected(res_message, 0xFFFFFFFF);
}

TEST(Deserialise, AFalseLengthFieldIsRejected)
{
    for (const uint32_t field : {0U, 31U, 45U, 47U, 54U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        Bytes bytes = res_message;
        store_u32(bytes.data(), field);
        expect_rejected(bytes, 54);
    }
}

// Q-ENVELOPE-4
TEST(Deserialise, FewerBytesThanALengthFieldAreRejectedUnread)
{
    const auto nothing = std::make_unique<uint8_t[]>(0);
    mdm_msg_t msg{};
    expect_rejected(&msg, nothing.get(), 0);
    for (uint32_t length = 1; length < 4; ++length) {
        const auto few = std::make_unique<uint8_t[]>(length);
        expect_rejected(&msg, few.get(), length);
    }
    for (uint32_t length = 0; length < 4; ++length) {
        Bytes matching = header_only(res.type);
        store_u32(matching.data(), length - 8);
        expect_rejected(matching, length);
    }
}

TEST(Deserialise, LengthsFrom4To39AreRejected)
{
    for (uint32_t length = 4; length < 40; ++length) {
        Bytes bytes(length);
        store_u32(bytes.data(), length >= 8 ? length - 8 : 0);
        if (length > 4) {
            bytes[4] = res.type;
        }
        expect_rejected(bytes, length);
    }
}

// The comparison is made in unsigned 32-bit arithmetic, so a length below 8 wraps.
// Q-ENVELOPE-4
TEST(Deserialise, LengthMinus8Wraps)
{
    Bytes bytes = header_only(type_without_category);
    store_u32(bytes.data(), 0xFFFFFFFF);
    mdm_msg_t msg{};
    EXPECT_EQ(ipc_deserialize(&msg, bytes.data(), 7), 0);
    EXPECT_EQ(msg.type, type_without_category);
}

TEST(Deserialise, TypeOutside1To80IsRejected)
{
    for (const uint8_t type : std::to_array<uint8_t>({0, 81, 128, 255})) {
        expect_rejected(header_only(type), 40);
    }
}

// Q-ENVELOPE-12
TEST(Deserialise, EveryTypeWithoutCategoryFillsTheHeaderOnly)
{
    for (uint8_t type = 1; type <= 80; ++type) {
        if (format_of(type) != nullptr) {
            continue;
        }
        mdm_msg_t msg = prefilled();
        const mdm_body_t body = msg.body;
        const Bytes bytes = header_only(type);
        LogRecorder log;
        EXPECT_EQ(deserialize(msg, bytes), 0) << int{type};
        EXPECT_EQ(msg.type, type);
        EXPECT_EQ(msg.hdr_word1, 0U);
        EXPECT_EQ(msg.hdr_word5, 0U);
        EXPECT_EQ(msg.hdr_aux, 0x5A5A5A5AU);
        EXPECT_EQ(std::memcmp(&msg.body, &body, sizeof body), 0);
        EXPECT_THAT(log.take(),
                    ElementsAre(enter(from::ipc_deserialize), leave(from::ipc_deserialize)));
    }
}

// Q-ENVELOPE-17
TEST(Deserialise, BytesBehindABodyAreIgnored)
{
    Bytes bytes = res_message + hex("FF FF FF");
    bytes[0] += 3;
    mdm_msg_t msg{};
    LogRecorder log(MDM_LOG_CRITICAL);
    EXPECT_EQ(deserialize(msg, bytes), 0);
    EXPECT_EQ(msg.body.res.data_size, 2);
    EXPECT_STREQ(static_cast<char *>(msg.body.res.data), "ok");
    EXPECT_THAT(log.take(), IsEmpty());
    ipc_free(&msg);
}

// Q-ENVELOPE-7
TEST(Deserialise, FailedGetHandlerIsOnlyLogged)
{
    const ipc_handler_row row = {nullptr, get_and_fail, nullptr, nullptr};
    mdm_msg_t msg{};
    LogRecorder log;
    EXPECT_EQ(ipc_deserialize({row, no_names}, &msg, res_message.data()), 0);
    expect_header_words(msg);
    EXPECT_THAT(log.take(), ElementsAre(critical(from::ipc_deserialize, "lp_body is NULL"),
                                        leave(from::ipc_deserialize)));
}

TEST(Deserialise, LogsEnterAndExitAroundTheCategorysLines)
{
    mdm_msg_t msg{};
    LogRecorder log;
    EXPECT_EQ(deserialize(msg, res_message), 0);
    EXPECT_THAT(log.take(), ElementsAre(enter(from::ipc_deserialize), enter(res.get),
                                        leave(res.get), leave(from::ipc_deserialize)));
    ipc_free(&msg);
}

TEST(Envelope, FailuresAreTheSameWithTheLoggerOff)
{
    LogRecorder log(MDM_LOG_NONE);
    uint32_t length = 77;
    mdm_msg_t untyped = message(0);
    EXPECT_EQ(::ipc_serialize(nullptr, &length), nullptr);
    EXPECT_EQ(::ipc_serialize(&untyped, &length), nullptr);
    EXPECT_EQ(length, 77U);

    mdm_msg_t msg = message(res.type);
    made_up_size = -999;
    const ipc_handler_row row = {nullptr, nullptr, size_made_up, nullptr};
    EXPECT_EQ(ipc_serialize({row, no_names}, &msg, &length), nullptr);
    EXPECT_EQ(length, 77U);
    serialize_made_up({set_nothing_and_fail, nullptr, size_made_up, nullptr}, 3);
    overwritten_guard_byte = 0;
    serialize_made_up({set_one_guard_byte, nullptr, size_made_up, nullptr}, 3);

    EXPECT_EQ(::ipc_deserialize(nullptr, res_message.data(), 54), -999);
    EXPECT_EQ(::ipc_deserialize(&msg, nullptr, 54), -999);
    EXPECT_EQ(deserialize(msg, {}), -999);
    EXPECT_EQ(deserialize(msg, hex("00 00 00 00")), -999);
    EXPECT_EQ(deserialize(msg, Bytes(8)), -999);
    EXPECT_EQ(deserialize(msg, header_only(0)), -999);
    const ipc_handler_row failing = {nullptr, get_and_fail, nullptr, nullptr};
    EXPECT_EQ(ipc_deserialize({failing, no_names}, &msg, res_message.data()), 0);
    EXPECT_THAT(log.take(), IsEmpty());
}

// Releasing.

// Q-ENVELOPE-14
TEST(Free, NullMessageIsAnInvalidArgument)
{
    LogRecorder log;
    EXPECT_EQ(ipc_free(nullptr), -195);
    EXPECT_THAT(log.take(), IsEmpty());
}

// Q-ENVELOPE-13
TEST(Free, TypeAbove80IsRefusedAndNothingIsReleased)
{
    for (const uint8_t type : std::to_array<uint8_t>({81, 128, 255})) {
        mdm_msg_t msg = message(type);
        msg.hdr_text = heap_text("text");
        char *text = msg.hdr_text;
        LogRecorder log;
        AllocationTrace trace;
        EXPECT_EQ(ipc_free(&msg), -999);
        trace.stop();
        EXPECT_THAT(trace.released(), IsEmpty());
        EXPECT_EQ(msg.hdr_text, text);
        EXPECT_THAT(log.take(), IsEmpty());
        g_free(text);
    }
}

// Q-ENVELOPE-13
TEST(Free, TypesWithoutCategoryReleaseTheTextOnly)
{
    for (const uint8_t type : std::to_array<uint8_t>({0, 19, 75, 80})) {
        mdm_msg_t msg = prefilled();
        msg.type = type;
        msg.hdr_text = heap_text("text");
        const void *text = msg.hdr_text;
        LogRecorder log;
        AllocationTrace trace;
        EXPECT_EQ(ipc_free(&msg), 0);
        trace.stop();
        EXPECT_THAT(trace.released(), ElementsAre(text));
        EXPECT_EQ(msg.hdr_text, nullptr);
        EXPECT_EQ(msg.type, type);
        EXPECT_THAT(log.take(), IsEmpty());
    }
}

TEST(Free, ReleasesTheTextBeforeTheBody)
{
    mdm_msg_t msg = message(res.type);
    msg.hdr_text = heap_text("text");
    msg.body.res.data = heap_text("payload");
    const void *text = msg.hdr_text;
    const void *payload = msg.body.res.data;
    AllocationTrace trace;
    EXPECT_EQ(ipc_free(&msg), 0);
    trace.stop();
    EXPECT_THAT(trace.released(), ElementsAre(text, payload));
}

// Q-ENVELOPE-15
TEST(Free, LogsNothingOfItsOwn)
{
    mdm_msg_t msg = message(admin.type);
    LogRecorder log;
    EXPECT_EQ(ipc_free(&msg), 0);
    EXPECT_EQ(log.take(), enter_and_leave(admin.free));
}

TEST(Free, ASecondCallCallsTheCategoryAgain)
{
    mdm_msg_t msg = message(admin.type);
    EXPECT_EQ(ipc_free(&msg), 0);
    LogRecorder log;
    EXPECT_EQ(ipc_free(&msg), 0);
    EXPECT_EQ(log.take(), enter_and_leave(admin.free));
}

TEST(Envelope, ThreadsWorkOnDifferentMessagesAtOnce)
{
    std::vector<std::thread> threads;
    for (int worker = 0; worker < 8; ++worker) {
        threads.emplace_back([worker] {
            for (int round = 0; round < 200; ++round) {
                const std::string text = "worker " + std::to_string(worker);
                mdm_msg_t msg = message(res.type);
                msg.hdr_word1 = static_cast<uint32_t>(round);
                msg.body.res.data_size = static_cast<int32_t>(text.size());
                msg.body.res.data = const_cast<char *>(text.data());
                mdm_msg_t back{};
                EXPECT_EQ(deserialize(back, serialize(msg)), 0);
                EXPECT_EQ(back.hdr_word1, static_cast<uint32_t>(round));
                EXPECT_EQ(static_cast<char *>(back.body.res.data), text);
                ipc_free(&back);
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
}

}  // namespace
}  // namespace mdm::test::envelope_test
