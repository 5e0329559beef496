// SPDX-License-Identifier: Apache-2.0
//
// The cleanup macros over real messages, in C++; cleanup.c has the same in C.
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mdm/guarded.h"
#include "support/allocation_trace.hpp"
#include "support/messages.hpp"
#include "support/wire.hpp"

namespace mdm::test::guarded_cleanup_test {
namespace {

using ::testing::IsEmpty;
using ::testing::Not;

// A text in the header and a payload: three blocks, if each is one.
const Bytes some_message = framed(33, head_bytes(100, 2) + hex("6F 6B"), "abc");

mdm_msg_t *open_some_message()
{
    return ipc_open(some_message.data(), static_cast<uint32_t>(some_message.size()), nullptr);
}

int32_t deserialize_some_message(mdm_msg_t &msg)
{
    return ipc_deserialize(&msg, some_message.data(), static_cast<uint32_t>(some_message.size()));
}

// The action allocates memory, and releases all of it.
void expect_nothing_kept(void (*action)())
{
    AllocationTrace trace;
    action();
    trace.stop();
    EXPECT_THAT(trace.allocated(), Not(IsEmpty()));
    EXPECT_THAT(trace.kept(), IsEmpty());
}

void expect_no_events(void (*action)())
{
    AllocationTrace trace;
    action();
    trace.stop();
    EXPECT_THAT(trace.events(), IsEmpty());
}

bool open_and_return_early(bool early)
{
    MDM_AUTO_CLOSE mdm_msg_t *msg = open_some_message();
    if (early) {
        return true;
    }
    return msg == nullptr;
}

bool deserialize_and_return_early(bool early)
{
    g_auto(mdm_msg_t) msg = {};
    deserialize_some_message(msg);
    if (early) {
        return true;
    }
    return msg.type == 0;
}

TEST(AutoClose, ClosesAtTheEndOfTheScope)
{
    expect_nothing_kept([] {
        MDM_AUTO_CLOSE mdm_msg_t *msg = open_some_message();
        ASSERT_NE(msg, nullptr);
        EXPECT_STREQ(msg->hdr_text, "abc");
    });
}

TEST(AutoClose, ClosesOnEveryWayOut)
{
    expect_nothing_kept([] { EXPECT_TRUE(open_and_return_early(true)); });
    expect_nothing_kept([] { EXPECT_FALSE(open_and_return_early(false)); });
    expect_nothing_kept([] {
        try {
            MDM_AUTO_CLOSE mdm_msg_t *msg = open_some_message();
            throw std::runtime_error(msg->hdr_text);
        } catch (const std::runtime_error &thrown) {
            EXPECT_STREQ(thrown.what(), "abc");
        }
    });
}

TEST(AutoClose, ClosesWhatTheVariableHoldsInTheEnd)
{
    expect_nothing_kept([] {
        MDM_AUTO_CLOSE mdm_msg_t *msg = nullptr;
        msg = open_some_message();
        EXPECT_NE(msg, nullptr);
    });
}

TEST(AutoClose, LeavesANullPointerAlone)
{
    expect_no_events([] {
        MDM_AUTO_CLOSE mdm_msg_t *msg = nullptr;
        EXPECT_EQ(msg, nullptr);
    });
}

TEST(AutoFree, FreesARecordAtTheEndOfTheScope)
{
    expect_nothing_kept([] {
        g_auto(mdm_msg_t) msg = {};
        EXPECT_EQ(deserialize_some_message(msg), 0);
        EXPECT_STREQ(msg.hdr_text, "abc");
    });
}

TEST(AutoFree, FreesARecordOnEveryWayOut)
{
    expect_nothing_kept([] { EXPECT_TRUE(deserialize_and_return_early(true)); });
    expect_nothing_kept([] { EXPECT_FALSE(deserialize_and_return_early(false)); });
}

TEST(AutoFree, LeavesAZeroedRecordAlone)
{
    expect_no_events([] {
        g_auto(mdm_msg_t) msg = {};
        EXPECT_EQ(msg.type, 0);
    });
}

// Both kinds in one scope go each its own way.
TEST(AutoFree, StandsBesideAutoClose)
{
    expect_nothing_kept([] {
        g_auto(mdm_msg_t) record = {};
        EXPECT_EQ(deserialize_some_message(record), 0);
        MDM_AUTO_CLOSE mdm_msg_t *msg = open_some_message();
        ASSERT_NE(msg, nullptr);
        EXPECT_STREQ(record.hdr_text, msg->hdr_text);
    });
}

}  // namespace
}  // namespace mdm::test::guarded_cleanup_test
