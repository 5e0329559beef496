// SPDX-License-Identifier: Apache-2.0
#include <array>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/allocation_trace.hpp"
#include "support/bodies.hpp"
#include "support/handlers.hpp"
#include "support/log_recorder.hpp"
#include "support/wire.hpp"

namespace mdm::test::pwd_test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr Handlers pwd(3);
constexpr uint32_t policy_type = 40;

char abc[] = "abc";
char hi[] = "hi";

mdm_body_t body(uint32_t type, int32_t data_size, void *data)
{
    return headed_body<&mdm_body_t::pwd>(type, data_size, data);
}

mdm_pwd_policy_t policy(char *str9, char *str10)
{
    return {0x10, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0xFFFFFF18, str9, str10};
}

const Bytes policy_numbers = hex("10 00 00 00 11 00 00 00 12 00 00 00 13 00 00 00 14 00 00 00 "
                                 "15 00 00 00 16 00 00 00 17 00 00 00 18 FF FF FF");
const Bytes policy_head = hex("28 00 00 00 04 03 02 01 01 00 00 00");

void expect_numbers_of_policy(const mdm_pwd_policy_t &record)
{
    EXPECT_THAT((std::array{record.num0, record.num1, record.num2, record.num3, record.num4,
                            record.num5, record.num6, record.num7, record.num8}),
                ElementsAre(0x10, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0xFFFFFF18));
}

const mdm_pwd_policy_t &received_policy(const mdm_body_t &body)
{
    return *static_cast<mdm_pwd_policy_t *>(body.pwd.data);
}

TEST(Pwd, PolicyCarriesNineNumbersAndTwoStrings)
{
    mdm_pwd_policy_t record = policy(abc, hi);
    mdm_body_t sent = body(policy_type, 1, &record);
    EXPECT_EQ(pwd.size(&sent), 56U + 3 + 2);
    EXPECT_EQ(sent.pwd.data_size, 1);
    EXPECT_EQ(pwd.write(&sent),
              policy_head + policy_numbers + hex("03 00 00 00 61 62 63 02 00 00 00 68 69"));
}

TEST(Pwd, PolicyWithNullStringsIs56Bytes)
{
    mdm_pwd_policy_t record = policy(nullptr, nullptr);
    mdm_body_t sent = body(policy_type, 1, &record);
    EXPECT_EQ(pwd.size(&sent), 56U);
    const Bytes bytes = pwd.write(&sent);
    EXPECT_EQ(bytes, policy_head + policy_numbers + Bytes(8));

    const auto [received, blocks] = receive(pwd, bytes);
    expect_headed<&mdm_body_t::pwd>(received, policy_type, 1);
    expect_numbers_of_policy(received_policy(received));
    EXPECT_EQ(received_policy(received).str9, nullptr);
    EXPECT_EQ(received_policy(received).str10, nullptr);
    EXPECT_THAT(blocks, ElementsAre(Block{received.pwd.data, sizeof record}));
    release_blocks(blocks);
}

TEST(Pwd, PolicyComesBackFieldByField)
{
    mdm_pwd_policy_t record = policy(abc, hi);
    mdm_body_t sent = body(policy_type, 0x7FFFFFFF, &record);
    mdm_body_t received{};
    pwd.read(&received, pwd.write(&sent));
    EXPECT_EQ(received.pwd.data_size, 0x7FFFFFFF);
    const mdm_pwd_policy_t &back = received_policy(received);
    expect_numbers_of_policy(back);
    EXPECT_STREQ(back.str9, "abc");
    EXPECT_STREQ(back.str10, "hi");
    pwd.free(&received);
}

// Q-BODY-6
TEST(Pwd, DataSizeBelow1SendsTheHeadAloneAndLeavesTheReceiversData)
{
    mdm_pwd_policy_t record = policy(abc, hi);
    for (const uint32_t type : {policy_type, 7U}) {
        for (const int32_t data_size : {0, -1, INT32_MIN}) {
            expect_head_alone(pwd, body(type, data_size, &record));
            expect_head_received(pwd, type, data_size, sentinel());
        }
    }
}

// Q-BODY-3
TEST(Pwd, NullDataSendsTheHeadAloneWithItsDataSize)
{
    for (const uint32_t type : {policy_type, 7U}) {
        expect_head_alone(pwd, body(type, 4, nullptr));
    }
}

TEST(Pwd, EveryOtherTypeIsRaw)
{
    for (const uint32_t type : {0U, 7U, 39U, 41U, 296U, 0x80000028U, 0xFFFFFFFFU}) {
        expect_raw_bytes_to_travel(pwd, type);
    }
}

// Q-PWD-1
TEST(Pwd, SizeNeverStoresDataSize)
{
    mdm_pwd_policy_t record = policy(abc, hi);
    mdm_body_t sent = body(policy_type, 5, &record);
    EXPECT_EQ(pwd.size(&sent), 61U);
    EXPECT_EQ(pwd.size(&sent), 61U);
    EXPECT_EQ(sent.pwd.data_size, 5);
}

// Q-BODY-7
TEST(Pwd, FreeReleasesAPolicysStringsThenItsRecordAndKeepsThePointer)
{
    auto *record = static_cast<mdm_pwd_policy_t *>(g_malloc0(sizeof(mdm_pwd_policy_t)));
    *record = policy(heap_text("9"), heap_text("10"));
    const void *str9 = record->str9;
    const void *str10 = record->str10;
    mdm_body_t received = body(policy_type, 1, record);
    LogRecorder log;
    AllocationTrace trace;
    pwd.free(&received);
    trace.stop();
    EXPECT_THAT(trace.released(), ElementsAre(str9, str10, record));
    EXPECT_EQ(received.pwd.data, record);
    EXPECT_EQ(received.pwd.data_size, 1);
    EXPECT_EQ(log.take(), enter_and_leave(pwd.free));
}

// Q-BODY-5
TEST(Pwd, FreeLooksAtDataAndNotAtDataSize)
{
    expect_raw_bytes_released(pwd, 7, 0, 0, enter_and_leave(pwd.free));
}

TEST(Pwd, FreeReleasesARawPayloadAndResetsThePointer)
{
    for (const uint32_t type : {39U, 41U}) {
        expect_raw_bytes_released(pwd, type, 3, 3, enter_and_leave(pwd.free));
    }
}

TEST(Pwd, FreeOfNullDataDoesNothing)
{
    for (const uint32_t type : {policy_type, 7U}) {
        expect_no_release(pwd, body(type, 1, nullptr), enter_and_leave(pwd.free));
    }
}

TEST(Pwd, WholeMessageLeaksNothing)
{
    mdm_pwd_policy_t record = policy(abc, hi);
    const Journey journey = travel(4, body(policy_type, 1, &record));
    EXPECT_THAT(journey.allocated, ElementsAre(sizeof record, 4, 3));
    EXPECT_THAT(journey.kept, IsEmpty());
}

TEST(Pwd, LogsEnterAndExitOnly)
{
    mdm_pwd_policy_t record = policy(nullptr, nullptr);
    for (const uint32_t type : {policy_type, 7U}) {
        for (const int32_t data_size : {0, 2}) {
            expect_entry_and_exit(pwd, body(type, data_size, &record));
        }
    }
}

}  // namespace
}  // namespace mdm::test::pwd_test
