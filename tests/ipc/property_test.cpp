// SPDX-License-Identifier: Apache-2.0
//
// Properties of every category, over bodies that are generated.
//
// A failure prints how to repeat it, with RC_PARAMS in the environment.
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include "support/allocation_trace.hpp"
#include "support/handlers.hpp"
#include "support/log_recorder.hpp"
#include "support/senders.hpp"
#include "support/wire.hpp"

namespace mdm::test::property_test {
namespace {

// Sends a message, compares its bytes and its trailer, and returns the bytes.
Bytes expect_bytes(mdm_msg_t &msg, const Bytes &body, bool sends_pointer_as_param)
{
    uint32_t length = 0;
    uint8_t *buffer = ::ipc_serialize(&msg, &length);
    RC_ASSERT(buffer != nullptr);
    Bytes bytes(buffer, buffer + length);
    const Bytes trailer(buffer + length, buffer + length + 5);
    g_free(buffer);
    RC_ASSERT(trailer == hex("00 F4 F4 F4 F4"));

    const Bytes expected = message_bytes(msg, body);
    RC_ASSERT(bytes.size() == expected.size());
    if (sends_pointer_as_param) {
        RC_ASSERT(without_param(bytes, body.size()) == without_param(expected, body.size()));
    } else {
        RC_ASSERT(bytes == expected);
    }
    return bytes;
}

// The set handler writes no more than the size handler has counted; the get handler reads all that
// was written, and no more than was counted.
void expect_bounds(mdm_msg_t &msg, const Bytes &body, bool is_received)
{
    const Handlers row(msg.type);
    Bytes space(body.size() + 65536);
    const uint8_t *end = row.set(space.data(), &msg.body);
    RC_ASSERT(end != nullptr);
    const auto written = static_cast<size_t>(end - space.data());
    RC_ASSERT(written <= body.size());

    mdm_body_t received{};
    AllocationTrace trace;
    const size_t consumed = row.read(&received, body);
    trace.stop();
    release_blocks(trace.kept());
    RC_ASSERT(consumed <= body.size());
    RC_ASSERT(!is_received || consumed >= written);
}

void expect_to_travel(const CategoryFormat &category)
{
    const LogRecorder log(any_bool() ? MDM_LOG_DEBUG : MDM_LOG_NONE);
    SentMessage sent = any_message(category);
    mdm_msg_t &msg = sent.msg;
    const Bytes bytes = expect_bytes(msg, sent.first, sent.sends_pointer_as_param);
    expect_bounds(msg, {bytes.end() - static_cast<std::ptrdiff_t>(sent.first.size()), bytes.end()},
                  sent.is_received);

    mdm_msg_t received{};
    AllocationTrace trace;
    RC_ASSERT(deserialize(received, bytes) == 0);
    if (sent.may_be_sent_on) {
        expect_bytes(received, sent.again, sent.sends_pointer_as_param);
    }
    ipc_free(&received);
    trace.stop();
    const std::vector<Block> left = trace.kept();
    release_blocks(left);
    RC_ASSERT(left.empty() || !sent.is_all_released);
}

class Property : public ::testing::TestWithParam<CategoryFormat> {};

TEST_P(Property, WhatASenderMayPassTravelsAsTheRulesSay)
{
    EXPECT_TRUE(rc::check(GetParam().name, [] { expect_to_travel(GetParam()); }));
}

INSTANTIATE_TEST_SUITE_P(Of, Property, ::testing::ValuesIn(category_formats()),
                         [](const auto &test) { return std::string(test.param.name); });

}  // namespace
}  // namespace mdm::test::property_test
