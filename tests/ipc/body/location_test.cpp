// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/allocation_trace.hpp"
#include "support/bodies.hpp"
#include "support/handlers.hpp"
#include "support/log_recorder.hpp"
#include "support/wire.hpp"

namespace mdm::test::location_test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr Handlers location(49);

mdm_body_t body(uint32_t type, int32_t data_size)
{
    return headed_body<&mdm_body_t::location>(type, data_size, sentinel());
}

void expect_body(const mdm_body_t &body, uint32_t type, int32_t data_size)
{
    expect_headed<&mdm_body_t::location>(body, type, data_size);
    EXPECT_EQ(body.location.data, sentinel());
}

// Q-LOCATION-1
TEST(Location, CarriesTheHeadAloneWhateverItSays)
{
    const struct {
        uint32_t type;
        int32_t data_size;
        const char *bytes;
    } cases[] = {{0, 7, "00 00 00 00 04 03 02 01 07 00 00 00"},
                 {1, 0, "01 00 00 00 04 03 02 01 00 00 00 00"},
                 {638, -1, "7E 02 00 00 04 03 02 01 FF FF FF FF"},
                 {0xF1F2F3F4, INT32_MIN, "F4 F3 F2 F1 04 03 02 01 00 00 00 80"}};
    for (const auto &[type, data_size, bytes] : cases) {
        mdm_body_t sent = body(type, data_size);
        EXPECT_EQ(location.size(&sent), 12U);
        EXPECT_EQ(location.write(&sent), hex(bytes));
        expect_body(sent, type, data_size);

        mdm_body_t back = body(99, 99);
        back.location.param = 99;
        AllocationTrace trace;
        EXPECT_EQ(location.read(&back, hex(bytes)), 12U);
        trace.stop();
        expect_body(back, type, data_size);
        EXPECT_THAT(trace.kept(), IsEmpty());
    }
}

TEST(Location, BothTypesOfTheMessageTravel)
{
    for (const uint8_t message_type : {location.type, uint8_t{50}}) {
        const Journey journey = travel(message_type, body(1, 7), nullptr, body(0, 0));
        EXPECT_EQ(journey.bytes, hex("01 00 00 00 04 03 02 01 07 00 00 00"));
        expect_body(journey.received.body, 1, 7);
        EXPECT_THAT(journey.kept, IsEmpty());
    }
}

// Q-LOCATION-2
TEST(Location, SizeAndFreeDoNotLookAtTheBody)
{
    LogRecorder log;
    EXPECT_EQ(location.size(nullptr), 12U);
    location.free(nullptr);
    mdm_body_t kept = body(1, 7);
    EXPECT_THAT(location.release(&kept), IsEmpty());
    expect_body(kept, 1, 7);
    EXPECT_THAT(log.take(), IsEmpty());
}

// Q-LOCATION-2
TEST(Location, WriterChecksItsPositionAndReaderItsBody)
{
    mdm_body_t some = body(1, 7);
    const Bytes bytes(12);
    LogRecorder log;
    EXPECT_EQ(location.set(nullptr, &some), nullptr);
    EXPECT_EQ(location.set(nullptr, nullptr), nullptr);
    EXPECT_THAT(log.take(), ElementsAre(enter(location.set), assert_fails(location.set),
                                        enter(location.set), assert_fails(location.set)));
    EXPECT_EQ(location.get(nullptr, bytes.data()), nullptr);
    EXPECT_EQ(location.get(nullptr, nullptr), nullptr);
    EXPECT_THAT(log.take(), ElementsAre(enter(location.get), assert_fails(location.get),
                                        enter(location.get), assert_fails(location.get)));
    expect_body(some, 1, 7);
}

TEST(Location, FailuresAreTheSameWithTheLoggerOff)
{
    mdm_body_t some = body(1, 7);
    const Bytes bytes(12);
    LogRecorder log(MDM_LOG_NONE);
    EXPECT_EQ(location.size(nullptr), 12U);
    EXPECT_EQ(location.set(nullptr, &some), nullptr);
    EXPECT_EQ(location.get(nullptr, bytes.data()), nullptr);
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST(Location, WriterAndReaderLogEnterAndExit)
{
    mdm_body_t sent = body(1, 7);
    LogRecorder log;
    const Bytes bytes = location.write(&sent);
    EXPECT_EQ(log.take(), enter_and_leave(location.set));
    location.read(&sent, bytes);
    EXPECT_EQ(log.take(), enter_and_leave(location.get));
    location.size(&sent);
    EXPECT_THAT(log.take(), IsEmpty());
}

}  // namespace
}  // namespace mdm::test::location_test
