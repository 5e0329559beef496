// SPDX-License-Identifier: Apache-2.0
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/allocation_trace.hpp"
#include "support/bodies.hpp"
#include "support/handlers.hpp"
#include "support/log_recorder.hpp"
#include "support/wire.hpp"

namespace mdm::test::platform_test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr Handlers platform(53);
constexpr uint32_t number_and_flag_type = 439;
constexpr uint32_t number_type = 440;
constexpr uint32_t text_type = 1;

mdm_body_t body(uint32_t type, const char *text)
{
    return {.platform = {type, 0xAAAAAAAA, borrowed(text), 0xBBBBBBBB, 0x11121314, 0xF5}};
}

// A receiver's body before it reads: the fields that do not travel must keep these values.
mdm_body_t used_body()
{
    mdm_body_t body{};
    body.platform = {99, 0xAAAAAAAA, static_cast<char *>(sentinel()), 0xBBBBBBBB, 0x55555555, 0x66};
    return body;
}

// The fields that a body carries beside its text.
struct Numbers {
    uint32_t number;
    uint8_t flag;
};

Numbers numbers_after_receiving(uint32_t type)
{
    switch (type) {
    case number_and_flag_type:
        return {0x11121314, 0xF5};
    case number_type:
        return {0x11121314, 0x66};
    default:
        return {0x55555555, 0x66};
    }
}

Bytes numbers_on_the_wire(uint32_t type)
{
    switch (type) {
    case number_and_flag_type:
        return hex("14 13 12 11 F5");
    case number_type:
        return hex("14 13 12 11");
    default:
        return {};
    }
}

void expect_fields(const mdm_body_t &body, uint32_t type, Numbers numbers)
{
    EXPECT_EQ(body.platform.type, type);
    EXPECT_EQ(body.platform.aux, 0xAAAAAAAAU);
    EXPECT_EQ(body.platform.aux2, 0xBBBBBBBBU);
    EXPECT_EQ(body.platform.number, numbers.number);
    EXPECT_EQ(body.platform.flag, numbers.flag);
}

TEST(Platform, TextThenNumberThenFlagTravel)
{
    mdm_body_t sent = body(number_and_flag_type, "abc");
    sent.platform.number = 7;
    sent.platform.flag = 1;
    EXPECT_EQ(platform.size(&sent), 16U);
    EXPECT_EQ(platform.write(&sent), hex("B7 01 00 00 03 00 00 00 61 62 63 07 00 00 00 01"));
    expect_fields(sent, number_and_flag_type, {7, 1});
}

// Q-PLATFORM-2
TEST(Platform, NumberWithoutTextIs12BytesAndLeavesTheFlag)
{
    mdm_body_t sent = body(number_type, nullptr);
    EXPECT_EQ(platform.size(&sent), 12U);
    const Bytes bytes = platform.write(&sent);
    EXPECT_EQ(bytes, hex("B8 01 00 00 00 00 00 00 14 13 12 11"));
    mdm_body_t back = used_body();
    EXPECT_EQ(platform.read(&back, bytes), 12U);
    EXPECT_EQ(back.platform.text, nullptr);
    expect_fields(back, number_type, {0x11121314, 0x66});
}

// Q-BODY-7
TEST(Platform, OnlyTwoTypesCarryNumbers)
{
    for (const uint32_t type : swept_types({439, 440})) {
        SCOPED_TRACE(type);
        mdm_body_t sent = body(type, "ab");
        const Bytes text = hex("02 00 00 00 61 62");
        const Bytes payload = text + numbers_on_the_wire(type);
        EXPECT_EQ(platform.size(&sent), 4 + payload.size());
        const Bytes bytes = platform.write(&sent);
        EXPECT_EQ(Bytes(bytes.begin() + 4, bytes.end()), payload);

        mdm_body_t back = used_body();
        AllocationTrace trace;
        EXPECT_EQ(platform.read(&back, bytes), bytes.size());
        trace.stop();
        expect_fields(back, type, numbers_after_receiving(type));
        EXPECT_STREQ(back.platform.text, "ab");
        EXPECT_THAT(trace.kept(), ElementsAre(Block{back.platform.text, 3}));

        const void *released = back.platform.text;
        EXPECT_THAT(platform.release(&back), ElementsAre(released));
        EXPECT_EQ(back.platform.text, released);
        expect_fields(back, type, numbers_after_receiving(type));
    }
}

TEST(Platform, MissingAndEmptyTextsArriveAsNull)
{
    for (const uint32_t type : {text_type, number_type, number_and_flag_type}) {
        for (const char *text : {static_cast<const char *>(nullptr), ""}) {
            mdm_body_t sent = body(type, text);
            const Bytes payload = Bytes(4) + numbers_on_the_wire(type);
            EXPECT_EQ(platform.size(&sent), 4 + payload.size());
            const Bytes bytes = platform.write(&sent);
            EXPECT_EQ(Bytes(bytes.begin() + 4, bytes.end()), payload);
            mdm_body_t back = used_body();
            EXPECT_EQ(platform.read(&back, bytes), bytes.size());
            EXPECT_EQ(back.platform.text, nullptr);
            expect_fields(back, type, numbers_after_receiving(type));
            EXPECT_THAT(platform.release(&back), IsEmpty());
        }
    }
}

TEST(Platform, LongAndNonAsciiTextsTravel)
{
    for (const std::string &text : {std::string(1, 'x'), std::string(400, '\xE9')}) {
        mdm_body_t sent = body(number_type, text.c_str());
        EXPECT_EQ(platform.size(&sent), 12 + text.size());
        mdm_body_t back{};
        EXPECT_EQ(platform.read(&back, platform.write(&sent)), 12 + text.size());
        EXPECT_EQ(back.platform.text, text);
        platform.free(&back);
    }
}

TEST(Platform, WholeMessagesOfBothTypesLeakNothing)
{
    for (const uint8_t message_type : {platform.type, uint8_t{54}}) {
        for (const uint32_t type : {text_type, number_type, number_and_flag_type}) {
            mdm_body_t sent = body(type, "abc");
            const Journey journey = travel(message_type, sent, nullptr, used_body());
            EXPECT_EQ(journey.bytes, platform.write(&sent));
            expect_fields(journey.received.body, type, numbers_after_receiving(type));
            EXPECT_THAT(journey.kept, IsEmpty());
        }
    }
}

// Q-PLATFORM-1
TEST(Platform, OnlyTheWriterLogs)
{
    for (const uint32_t type : {text_type, number_type, number_and_flag_type}) {
        const HandlerLines lines = logged_lines(platform, body(type, "abc"));
        EXPECT_THAT(lines.size, IsEmpty());
        EXPECT_EQ(lines.set, enter_and_leave(platform.set));
        EXPECT_THAT(lines.get, IsEmpty());
        EXPECT_THAT(lines.free, IsEmpty());
    }
}

}  // namespace
}  // namespace mdm::test::platform_test
