// SPDX-License-Identifier: Apache-2.0
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/allocation_trace.hpp"
#include "support/bodies.hpp"
#include "support/handlers.hpp"
#include "support/log_recorder.hpp"
#include "support/wire.hpp"

namespace mdm::test::roaming_test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr Handlers roaming(15);
constexpr Handlers roaming_res(16);

// Neither body reads anything from these.
constexpr int32_t data_sizes[] = {0, 1, 7, -1, INT32_MIN, INT32_MAX};

mdm_body_t body(int32_t data_size, void *data)
{
    return headed_body<&mdm_body_t::roaming>(0xF1F2F3F4, data_size, data);
}

Bytes wire(int32_t data_size, const Bytes &name)
{
    return head_bytes(0xF1F2F3F4, data_size) + name;
}

mdm_roaming_data_t named(const char *name)
{
    return {borrowed(name)};
}

mdm_roaming_data_t &data_of(const mdm_body_t &body)
{
    return *static_cast<mdm_roaming_data_t *>(body.roaming.data);
}

// The body head of roaming_res is the same.
void expect_head(const mdm_body_t &body, int32_t data_size)
{
    expect_headed<&mdm_body_t::roaming>(body, 0xF1F2F3F4, data_size);
}

// Q-ROAMING-1
TEST(Roaming, CarriesTheHeadAndAName)
{
    mdm_roaming_data_t record = named("abc");
    mdm_body_t sent = body(0x7FFFFFFF, &record);
    EXPECT_EQ(roaming.size(&sent), 19U);
    EXPECT_EQ(roaming.write(&sent),
              hex("F4 F3 F2 F1 04 03 02 01 FF FF FF 7F 03 00 00 00 61 62 63"));
    for (const int32_t data_size : data_sizes) {
        sent = body(data_size, &record);
        EXPECT_EQ(roaming.size(&sent), 19U);
        EXPECT_EQ(roaming.write(&sent), wire(data_size, hex("03 00 00 00 61 62 63")));
        expect_head(sent, data_size);
    }
}

// Q-ROAMING-1
TEST(Roaming, ReceivesANewRecordWhateverDataSizeSays)
{
    for (const int32_t data_size : data_sizes) {
        const auto [back, blocks] =
            receive(roaming, wire(data_size, hex("03 00 00 00 61 62 63")), hex("FF"));
        expect_head(back, data_size);
        EXPECT_STREQ(data_of(back).name, "abc");
        EXPECT_THAT(blocks, ElementsAre(Block{&data_of(back), sizeof(mdm_roaming_data_t)},
                                        Block{data_of(back).name, 4}));
        release_blocks(blocks);
    }
}

TEST(Roaming, MissingAndEmptyNamesArriveAsNull)
{
    for (const char *name : {static_cast<const char *>(nullptr), ""}) {
        mdm_roaming_data_t record = named(name);
        mdm_body_t sent = body(0, &record);
        EXPECT_EQ(roaming.size(&sent), 16U);
        const Bytes bytes = roaming.write(&sent);
        EXPECT_EQ(bytes, wire(0, Bytes(4)));

        const auto [back, blocks] = receive(roaming, bytes);
        EXPECT_EQ(data_of(back).name, nullptr);
        EXPECT_THAT(blocks, ElementsAre(Block{back.roaming.data, sizeof(mdm_roaming_data_t)}));
        release_blocks(blocks);
    }
}

TEST(Roaming, LongAndNonAsciiNamesTravel)
{
    for (const std::string &name : {std::string(1, 'x'), std::string(400, '\xE9')}) {
        mdm_roaming_data_t record = named(name.c_str());
        mdm_body_t sent = body(1, &record);
        EXPECT_EQ(roaming.size(&sent), 16 + name.size());
        mdm_body_t back{};
        EXPECT_EQ(roaming.read(&back, roaming.write(&sent)), 16 + name.size());
        EXPECT_EQ(data_of(back).name, name);
        roaming.free(&back);
        g_free(back.roaming.data);
    }
}

// Q-BODY-1, Q-ROAMING-2
TEST(Roaming, NullDataIsSizedAs0ThoughTheHeadIsWritten)
{
    mdm_body_t sent = body(4, nullptr);
    LogRecorder log;
    EXPECT_EQ(roaming.size(&sent), 0U);
    EXPECT_THAT(log.take(), ElementsAre(enter(roaming.size), assert_fails(roaming.size)));
    EXPECT_EQ(roaming.write(&sent), wire(4, {}));
    EXPECT_EQ(log.take(), enter_and_leave(roaming.set));
    expect_head(sent, 4);
}

// Q-ROAMING-3
TEST(Roaming, FreeReleasesTheNameAloneAndMayRunTwice)
{
    for (const Handlers &handlers : {roaming, roaming_res}) {
        mdm_roaming_data_t record = {heap_text("abc")};
        const void *name = record.name;
        mdm_body_t kept = body(3, &record);
        LogRecorder log;
        EXPECT_THAT(handlers.release(&kept), ElementsAre(name));
        EXPECT_EQ(record.name, nullptr);
        EXPECT_EQ(kept.roaming.data, &record);
        expect_head(kept, 3);
        EXPECT_THAT(handlers.release(&kept), IsEmpty());
        EXPECT_EQ(kept.roaming.data, &record);
        EXPECT_THAT(log.take(), IsEmpty());
    }
}

TEST(Roaming, FreeDoesNotLookAtDataSize)
{
    for (const int32_t data_size : data_sizes) {
        mdm_roaming_data_t record = {heap_text("abc")};
        mdm_body_t kept = body(data_size, &record);
        EXPECT_EQ(roaming.release(&kept).size(), 1U);
        expect_head(kept, data_size);
    }
}

TEST(Roaming, FreeOfNullDataDoesNothing)
{
    for (const Handlers &handlers : {roaming, roaming_res}) {
        expect_no_release(handlers, body(3, nullptr), {});
    }
}

// Q-ROAMING-3
TEST(Roaming, WholeMessageLeavesItsRecordAllocated)
{
    mdm_roaming_data_t record = named("abc");
    mdm_msg_t msg = message(roaming.type);
    msg.body = body(0, &record);
    const Bytes bytes = serialize(msg);
    EXPECT_EQ(Bytes(bytes.begin() + 40, bytes.end()), wire(0, hex("03 00 00 00 61 62 63")));
    mdm_msg_t back{};
    AllocationTrace trace;
    EXPECT_EQ(deserialize(back, bytes), 0);
    EXPECT_EQ(ipc_free(&back), 0);
    EXPECT_EQ(ipc_free(&back), 0);
    trace.stop();
    EXPECT_THAT(trace.kept(), ElementsAre(Block{&data_of(back.body), sizeof record}));
    EXPECT_EQ(data_of(back.body).name, nullptr);
    g_free(back.body.roaming.data);
}

TEST(Roaming, LogsEnterAndExit)
{
    for (const char *name : {static_cast<const char *>(nullptr), "abc"}) {
        mdm_roaming_data_t record = named(name);
        const HandlerLines lines = logged_lines(roaming, body(0, &record));
        EXPECT_EQ(lines.size, enter_and_leave(roaming.size));
        EXPECT_EQ(lines.set, enter_and_leave(roaming.set));
        EXPECT_EQ(lines.get, enter_and_leave(roaming.get));
        EXPECT_THAT(lines.free, IsEmpty());
    }
}

// Q-ROAMING-5
TEST(RoamingRes, CarriesTheHeadAndLeavesDataAsItWas)
{
    for (const int32_t data_size : data_sizes) {
        expect_head_alone(roaming_res, body(data_size, sentinel()));
        expect_head_alone(roaming_res, body(data_size, nullptr));
        expect_head_received(roaming_res, 0xF1F2F3F4, data_size, sentinel());
    }
}

TEST(RoamingRes, WholeMessageLeaksNothing)
{
    const Journey journey = travel(roaming_res.type, body(7, sentinel()));
    EXPECT_EQ(journey.bytes, hex("F4 F3 F2 F1 04 03 02 01 07 00 00 00"));
    EXPECT_EQ(journey.received.body.roaming_res.data_size, 7);
    EXPECT_EQ(journey.received.body.roaming_res.data, nullptr);
    EXPECT_THAT(journey.kept, IsEmpty());
}

// Q-ROAMING-4
TEST(RoamingRes, FreeFollowsWhatTheReceiversRecordHeld)
{
    mdm_roaming_data_t record = {heap_text("abc")};
    mdm_msg_t msg = message(roaming_res.type);
    mdm_msg_t back{};
    back.body = body(0, &record);
    EXPECT_EQ(deserialize(back, serialize(msg)), 0);
    EXPECT_EQ(ipc_free(&back), 0);
    EXPECT_EQ(record.name, nullptr);
    EXPECT_EQ(back.body.roaming_res.data, &record);
}

TEST(RoamingRes, LogsEnterAndExit)
{
    const HandlerLines lines = logged_lines(roaming_res, body(7, nullptr));
    EXPECT_EQ(lines.size, enter_and_leave(roaming_res.size));
    EXPECT_EQ(lines.set, enter_and_leave(roaming_res.set));
    EXPECT_EQ(lines.get, enter_and_leave(roaming_res.get));
}

}  // namespace
}  // namespace mdm::test::roaming_test
