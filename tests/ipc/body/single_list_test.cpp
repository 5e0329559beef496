// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/allocation_trace.hpp"
#include "support/bodies.hpp"
#include "support/handlers.hpp"
#include "support/log_recorder.hpp"
#include "support/wire.hpp"

namespace mdm::test::single_list_test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct Category {
    Handlers handlers;  // of the first of its two message types
    bool takes_payload_back;
};

std::ostream &operator<<(std::ostream &out, const Category &category)
{
    return out << format_of(category.handlers.type)->name;
}

// The seven bodies are the body head and nothing else, so any of them serves for all.
class SingleList : public ::testing::TestWithParam<Category> {
protected:
    static mdm_body_t body(int32_t data_size, void *data)
    {
        return headed_body<&mdm_body_t::res>(0x64, data_size, data);
    }

    static Handlers row() { return GetParam().handlers; }
};

TEST_P(SingleList, CarriesTheHeadAndThePayload)
{
    char payload[] = "abc";
    mdm_body_t sent = body(3, payload);
    EXPECT_EQ(row().size(&sent), 15U);
    EXPECT_EQ(row().write(&sent), hex("64 00 00 00 04 03 02 01 03 00 00 00 61 62 63"));
    EXPECT_EQ(sent.res.data_size, 3);
}

// Q-SINGLE_LIST-1
TEST_P(SingleList, ReceivesThePayloadOrLeavesDataAsItWas)
{
    const Bytes head = hex("64 00 00 00 04 03 02 01 03 00 00 00");
    const Bytes payload = hex("61 62 63");
    if (!GetParam().takes_payload_back) {
        const auto [received, blocks] = receive(row(), head, payload);
        expect_headed<&mdm_body_t::res>(received, 0x64, 3);
        EXPECT_EQ(received.res.data, sentinel());
        EXPECT_THAT(blocks, IsEmpty());
        return;
    }
    const auto [received, blocks] = receive(row(), head + payload);
    expect_headed<&mdm_body_t::res>(received, 0x64, 3);
    EXPECT_STREQ(static_cast<char *>(received.res.data), "abc");
    EXPECT_THAT(blocks, ElementsAre(Block{received.res.data, 4}));
    release_blocks(blocks);
}

TEST_P(SingleList, BothTypesOfTheMessageTravel)
{
    for (const int offset : {0, 1}) {
        const auto message_type = static_cast<uint8_t>(row().type + offset);
        const Journey journey =
            travel(message_type, body(3, borrowed("abc")), [](const mdm_body_t &received) {
                EXPECT_EQ(received.res.data_size, 3);
                EXPECT_EQ(received.res.data != nullptr, GetParam().takes_payload_back);
            });
        EXPECT_EQ(journey.bytes.size(), 15U);
        EXPECT_THAT(journey.kept, IsEmpty());
    }
}

// Q-SINGLE_LIST-1
TEST_P(SingleList, NoPayloadMakesTheReceiversDataNull)
{
    expect_head_alone(row(), body(0, sentinel()));
    expect_head_received(row(), 0x64, 0, nullptr);
}

TEST_P(SingleList, PayloadTextEndsAtItsFirstZeroByte)
{
    char payload[] = "ab\0cd";
    mdm_body_t sent = body(5, payload);
    EXPECT_EQ(row().size(&sent), 17U);
    EXPECT_EQ(row().write(&sent), head_bytes(0x64, 5) + hex("61 62 00 63 64"));
    if (GetParam().takes_payload_back) {
        expect_raw_bytes_to_travel(row(), 0x64);
    }
}

TEST_P(SingleList, PayloadsBeyond64KiBTravel)
{
    std::string payload(70000, 'x');
    mdm_msg_t msg = message(row().type);
    msg.body = body(70000, payload.data());
    const Bytes bytes = serialize(msg);
    ASSERT_EQ(bytes.size(), 40U + 12 + 70000);
    EXPECT_TRUE(std::equal(payload.begin(), payload.end(), bytes.begin() + 52));
    mdm_msg_t received{};
    EXPECT_EQ(deserialize(received, bytes), 0);
    if (GetParam().takes_payload_back) {
        EXPECT_TRUE(static_cast<char *>(received.body.res.data) == payload);  // too long to print
    }
    ipc_free(&received);
}

// Q-SINGLE_LIST-2
TEST_P(SingleList, NegativeDataSizeCountsFewerBytesThanAreWritten)
{
    mdm_body_t sent = body(-4, nullptr);
    EXPECT_EQ(row().size(&sent), 8U);
    EXPECT_EQ(row().write(&sent), hex("64 00 00 00 04 03 02 01 FC FF FF FF"));

    mdm_msg_t msg = message(row().type);
    msg.body = sent;
    LogRecorder log(MDM_LOG_CRITICAL);
    const Bytes bytes = serialize(msg);
    EXPECT_EQ(bytes.size(), 48U);
    EXPECT_THAT(log.take(),
                ElementsAre(critical(from::check_footer,
                                     "Serialization has corrupted memory!!!!! (msg type=" +
                                         std::to_string(row().type) + ", len=40)")));

    // A receiver reads the head's last word from behind the message.
    mdm_msg_t received{};
    received.body.res.data = sentinel();
    const Bytes longer = bytes + hex("FC FF FF FF");
    EXPECT_EQ(ipc_deserialize(&received, longer.data(), 48), 0);
    EXPECT_EQ(received.body.res.data_size, -4);
    EXPECT_EQ(received.body.res.data, nullptr);
}

// Q-SINGLE_LIST-2
TEST_P(SingleList, SizeTrustsTheSignOfDataSize)
{
    expect_raw_size_with_sign(row(), 0x64, nullptr);
}

TEST_P(SingleList, NegativeDataSizeIsReceivedAsNoPayload)
{
    expect_head_received(row(), 0x64, -1, nullptr);
}

TEST_P(SingleList, FreeReleasesThePayloadInSilenceAndMayRunTwice)
{
    expect_raw_bytes_released(row(), 0x64, 3, 0, {});
}

// Q-BODY-13
TEST_P(SingleList, FreeOfNullBodyLogsItsExitLineOnly)
{
    LogRecorder log;
    row().free(nullptr);
    EXPECT_THAT(log.take(), ElementsAre(leave(row().free)));
}

TEST_P(SingleList, LogsUnderItsOwnName)
{
    for (const int32_t data_size : {0, 3}) {
        const HandlerLines lines = logged_lines(row(), body(data_size, borrowed("abc")));
        EXPECT_EQ(lines.size, enter_and_leave(row().size));
        EXPECT_EQ(lines.set, enter_and_leave(row().set));
        EXPECT_EQ(lines.get, enter_and_leave(row().get));
    }
}

INSTANTIATE_TEST_SUITE_P(AllSeven, SingleList,
                         ::testing::Values(Category{handlers_of("browser"), false},
                                           Category{handlers_of("date_time"), true},
                                           Category{handlers_of("remote"), true},
                                           Category{handlers_of("vpn"), true},
                                           Category{handlers_of("firewall"), true},
                                           Category{handlers_of("res"), true},
                                           Category{handlers_of("enterprise"), false}),
                         ::testing::PrintToStringParamName());

}  // namespace
}  // namespace mdm::test::single_list_test
