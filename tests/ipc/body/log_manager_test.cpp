// SPDX-License-Identifier: Apache-2.0
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/allocation_trace.hpp"
#include "support/bodies.hpp"
#include "support/handlers.hpp"
#include "support/log_recorder.hpp"
#include "support/wire.hpp"

namespace mdm::test::log_manager_test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr Handlers log_manager(51);
constexpr uint32_t text_type = 638;

mdm_body_t text_body(const char *text)
{
    return {.log_manager = {text_type, 0xAAAAAAAA, {.text = borrowed(text)}}};
}

mdm_body_t word_body(uint32_t type, uintptr_t word)
{
    return {.log_manager = {type, 0xAAAAAAAA, {.word = word}}};
}

// A receiver's body with every bit of its value set.
mdm_body_t used_body()
{
    return word_body(99, UINTPTR_MAX);
}

void expect_head(const mdm_body_t &body, uint32_t type)
{
    EXPECT_EQ(body.log_manager.type, type);
    EXPECT_EQ(body.log_manager.aux, 0xAAAAAAAAU);
}

TEST(LogManager, TextIsSentAsAString)
{
    mdm_body_t sent = text_body("abc");
    EXPECT_EQ(log_manager.size(&sent), 11U);
    EXPECT_EQ(log_manager.write(&sent), hex("7E 02 00 00 03 00 00 00 61 62 63"));
    expect_head(sent, text_type);
    EXPECT_STREQ(sent.log_manager.value.text, "abc");
}

TEST(LogManager, TextArrivesAsANewString)
{
    mdm_body_t back = used_body();
    AllocationTrace trace;
    EXPECT_EQ(log_manager.read(&back, hex("7E 02 00 00 03 00 00 00 61 62 63 FF")), 11U);
    trace.stop();
    expect_head(back, text_type);
    EXPECT_STREQ(back.log_manager.value.text, "abc");
    EXPECT_THAT(trace.kept(), ElementsAre(Block{back.log_manager.value.text, 4}));
    log_manager.free(&back);
}

TEST(LogManager, MissingAndEmptyTextsArriveAsNull)
{
    for (const char *text : {static_cast<const char *>(nullptr), ""}) {
        mdm_body_t sent = text_body(text);
        EXPECT_EQ(log_manager.size(&sent), 8U);
        const Bytes bytes = log_manager.write(&sent);
        EXPECT_EQ(bytes, hex("7E 02 00 00 00 00 00 00"));
        mdm_body_t back = used_body();
        EXPECT_EQ(log_manager.read(&back, bytes), 8U);
        expect_head(back, text_type);
        EXPECT_EQ(back.log_manager.value.text, nullptr);
    }
}

TEST(LogManager, LongAndNonAsciiTextsTravel)
{
    for (const std::string &text : {std::string(1, 'x'), std::string(400, '\xE9')}) {
        mdm_body_t sent = text_body(text.c_str());
        EXPECT_EQ(log_manager.size(&sent), 8 + text.size());
        mdm_body_t back{};
        EXPECT_EQ(log_manager.read(&back, log_manager.write(&sent)), 8 + text.size());
        EXPECT_EQ(back.log_manager.value.text, text);
        log_manager.free(&back);
    }
}

// Q-LOG_MANAGER-3
TEST(LogManager, LowByteOfTheValueTravelsForOtherTypes)
{
    mdm_body_t sent = word_body(1, GSIZE_TO_LE(0x1234));
    EXPECT_EQ(log_manager.size(&sent), 5U);
    EXPECT_EQ(log_manager.write(&sent), hex("01 00 00 00 34"));
    EXPECT_EQ(sent.log_manager.value.word, GSIZE_TO_LE(0x1234U));

    for (const char *byte : {"00", "34", "FF"}) {
        mdm_body_t back = used_body();
        AllocationTrace trace;
        EXPECT_EQ(log_manager.read(&back, hex("01 00 00 00") + hex(byte)), 5U);
        trace.stop();
        expect_head(back, 1);
        EXPECT_EQ(back.log_manager.value.word, GSIZE_TO_LE(uintptr_t{hex(byte)[0]}));
        EXPECT_THAT(trace.kept(), IsEmpty());
    }
}

TEST(LogManager, EveryTypeBut638CarriesAByteThatIsNotReleased)
{
    for (const uint32_t type : swept_types({638})) {
        SCOPED_TRACE(type);
        char *text = heap_text("abcd");
        mdm_body_t sent = text_body(text);
        sent.log_manager.type = type;
        const bool is_text = type == 638;
        EXPECT_EQ(log_manager.size(&sent), is_text ? 12U : 5U);
        const Bytes bytes = log_manager.write(&sent);
        EXPECT_EQ(bytes.size(), is_text ? 12U : 5U);
        mdm_body_t back = used_body();
        EXPECT_EQ(log_manager.read(&back, bytes), bytes.size());
        expect_head(back, type);
        EXPECT_EQ(log_manager.release(&back).size(), is_text ? 1U : 0U);
        EXPECT_EQ(log_manager.release(&sent).size(), is_text ? 1U : 0U);
        if (!is_text) {
            g_free(text);
        }
    }
}

// Q-BODY-7
TEST(LogManager, FreeReleasesTheTextAndKeepsThePointer)
{
    char *text = heap_text("abc");
    mdm_body_t kept = text_body(text);
    EXPECT_THAT(log_manager.release(&kept), ElementsAre(text));
    EXPECT_EQ(kept.log_manager.value.text, text);
    expect_head(kept, text_type);
}

TEST(LogManager, FreeOfAMissingTextOrBodyDoesNothing)
{
    mdm_body_t kept = text_body(nullptr);
    EXPECT_THAT(log_manager.release(&kept), IsEmpty());
    AllocationTrace trace;
    log_manager.free(nullptr);
    trace.stop();
    EXPECT_THAT(trace.released(), IsEmpty());
}

TEST(LogManager, WholeMessagesOfBothTypesReleaseTheTextAlone)
{
    for (const uint8_t message_type : {log_manager.type, uint8_t{52}}) {
        for (mdm_body_t sent : {text_body("abc"), text_body(nullptr), word_body(1, 7)}) {
            LogRecorder log(MDM_LOG_CRITICAL);
            uintptr_t value = 0;
            const Journey journey = travel(
                message_type, sent,
                [&](const mdm_body_t &received) { value = received.log_manager.value.word; },
                used_body());
            EXPECT_EQ(journey.bytes, log_manager.write(&sent));
            expect_head(journey.received.body, sent.log_manager.type);
            const bool is_text = sent.log_manager.type == text_type && value != 0;
            EXPECT_EQ(journey.allocated.size(), is_text ? 1U : 0U);
            EXPECT_THAT(journey.kept, IsEmpty());
            EXPECT_EQ(journey.received.body.log_manager.value.word, value);
            EXPECT_THAT(log.take(), IsEmpty());
        }
    }
}

TEST(LogManager, SizeOfNothingIs0)
{
    LogRecorder log;
    EXPECT_EQ(log_manager.size(nullptr), 0U);
    EXPECT_THAT(log.take(),
                ElementsAre(enter(log_manager.size), critical(log_manager.size, "info is NULL!"),
                            leave(log_manager.size)));
}

// Q-LOG_MANAGER-1, Q-LOG_MANAGER-2
TEST(LogManager, WriterChecksItsPositionFirstAndWritesNothingForNoBody)
{
    mdm_body_t some = text_body("abc");
    Bytes buffer(16);
    LogRecorder log;
    for (mdm_body_t *body : {&some, static_cast<mdm_body_t *>(nullptr)}) {
        EXPECT_EQ(log_manager.set(nullptr, body), nullptr);
        EXPECT_THAT(log.take(), ElementsAre(enter(log_manager.set),
                                            critical(log_manager.set, "buffer is NULL!"),
                                            leave(log_manager.set)));
    }
    EXPECT_EQ(log_manager.set(buffer.data(), nullptr), buffer.data());
    EXPECT_EQ(buffer, Bytes(16));
    EXPECT_THAT(log.take(),
                ElementsAre(enter(log_manager.set), critical(log_manager.set, "info is NULL!"),
                            leave(log_manager.set)));
}

// Q-LOG_MANAGER-1, Q-LOG_MANAGER-2
TEST(LogManager, ReaderChecksItsBodyFirstAndReadsNothingWithoutOne)
{
    mdm_body_t some = used_body();
    const Bytes bytes(16);
    LogRecorder log;
    for (const uint8_t *position : {bytes.data(), static_cast<const uint8_t *>(nullptr)}) {
        EXPECT_EQ(log_manager.get(nullptr, position), position);
        EXPECT_THAT(log.take(),
                    ElementsAre(enter(log_manager.get), critical(log_manager.get, "info is NULL!"),
                                leave(log_manager.get)));
    }
    EXPECT_EQ(log_manager.get(&some, nullptr), nullptr);
    EXPECT_THAT(log.take(),
                ElementsAre(enter(log_manager.get), critical(log_manager.get, "buffer is NULL!"),
                            leave(log_manager.get)));
    expect_head(some, 99);
    EXPECT_EQ(some.log_manager.value.word, UINTPTR_MAX);
}

TEST(LogManager, FailuresAreTheSameWithTheLoggerOff)
{
    mdm_body_t some = used_body();
    Bytes buffer(16);
    LogRecorder log(MDM_LOG_NONE);
    EXPECT_EQ(log_manager.size(nullptr), 0U);
    EXPECT_EQ(log_manager.set(nullptr, &some), nullptr);
    EXPECT_EQ(log_manager.set(buffer.data(), nullptr), buffer.data());
    EXPECT_EQ(log_manager.get(nullptr, buffer.data()), buffer.data());
    EXPECT_EQ(log_manager.get(&some, nullptr), nullptr);
    log_manager.free(nullptr);
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST(LogManager, LogsEnterAndExit)
{
    for (const mdm_body_t &sent : {text_body("abc"), text_body(nullptr), word_body(1, 7)}) {
        expect_entry_and_exit(log_manager, sent);
    }
    LogRecorder log;
    log_manager.free(nullptr);
    EXPECT_EQ(log.take(), enter_and_leave(log_manager.free));
}

}  // namespace
}  // namespace mdm::test::log_manager_test
