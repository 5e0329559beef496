// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstring>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/allocation_trace.hpp"
#include "support/handlers.hpp"
#include "support/log_recorder.hpp"
#include "support/wire.hpp"

namespace mdm::test {
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
        mdm_body_t body{};
        body.res.type = 0x64;
        body.res.aux = 0xAAAAAAAA;
        body.res.param = 0x01020304;
        body.res.data_size = data_size;
        body.res.data = data;
        return body;
    }

    static Handlers row() { return GetParam().handlers; }

    static auto only_asserts(const Origin &handler)
    {
        return ElementsAre(enter(handler), assert_fails(handler));
    }
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
    const Bytes bytes = hex("64 00 00 00 04 03 02 01 03 00 00 00 61 62 63");
    mdm_body_t received{};
    received.res.aux = 0xBBBBBBBB;
    received.res.data = sentinel();
    AllocationTrace trace;
    const size_t consumed = row().read(&received, bytes);
    trace.stop();
    EXPECT_EQ(received.res.type, 0x64U);
    EXPECT_EQ(received.res.aux, 0xBBBBBBBBU);
    EXPECT_EQ(received.res.param, 0x01020304U);
    EXPECT_EQ(received.res.data_size, 3);
    if (!GetParam().takes_payload_back) {
        EXPECT_EQ(consumed, 12U);
        EXPECT_EQ(received.res.data, sentinel());
        EXPECT_THAT(trace.kept(), IsEmpty());
        return;
    }
    EXPECT_EQ(consumed, 15U);
    EXPECT_STREQ(static_cast<char *>(received.res.data), "abc");
    EXPECT_THAT(trace.kept(), ElementsAre(Block{received.res.data, 4}));
    g_free(received.res.data);
}

TEST_P(SingleList, BothTypesOfTheMessageTravel)
{
    char payload[] = "abc";
    for (const int offset : {0, 1}) {
        mdm_msg_t msg = message(static_cast<uint8_t>(row().type + offset));
        msg.body = body(3, payload);
        const Bytes bytes = serialize(msg);
        EXPECT_EQ(bytes.size(), 55U);
        mdm_msg_t received{};
        EXPECT_EQ(deserialize(received, bytes), 0);
        EXPECT_EQ(received.body.res.data_size, 3);
        EXPECT_EQ(received.body.res.data != nullptr, GetParam().takes_payload_back);
        ipc_free(&received);
    }
}

// Q-SINGLE_LIST-1
TEST_P(SingleList, NoPayloadMakesTheReceiversDataNull)
{
    char payload[] = "abc";
    mdm_body_t sent = body(0, payload);
    EXPECT_EQ(row().size(&sent), 12U);
    const Bytes bytes = row().write(&sent);
    EXPECT_EQ(bytes, hex("64 00 00 00 04 03 02 01 00 00 00 00"));
    mdm_body_t received{};
    received.res.data = sentinel();
    EXPECT_EQ(row().read(&received, bytes), 12U);
    EXPECT_EQ(received.res.data, nullptr);
}

TEST_P(SingleList, PayloadTextEndsAtItsFirstZeroByte)
{
    char payload[] = "ab\0cd";
    mdm_body_t sent = body(5, payload);
    EXPECT_EQ(row().size(&sent), 17U);
    const Bytes bytes = row().write(&sent);
    EXPECT_EQ(Bytes(bytes.begin() + 12, bytes.end()), hex("61 62 00 63 64"));
    if (!GetParam().takes_payload_back) {
        return;
    }
    mdm_body_t received{};
    AllocationTrace trace;
    EXPECT_EQ(row().read(&received, bytes), 17U);
    trace.stop();
    EXPECT_THAT(trace.kept(), ElementsAre(Block{received.res.data, 6}));
    EXPECT_EQ(std::string(static_cast<char *>(received.res.data), 6), std::string("ab\0\0\0\0", 6));
    row().free(&received);
}

TEST_P(SingleList, OneByteAndLongPayloadsTravel)
{
    for (const size_t length : {size_t{1}, size_t{3000}}) {
        std::string payload(length, '\xFE');
        mdm_body_t sent = body(static_cast<int32_t>(length), payload.data());
        EXPECT_EQ(row().size(&sent), 12 + length);
        const Bytes bytes = row().write(&sent);
        EXPECT_EQ(bytes.size(), 12 + length);
        mdm_body_t received{};
        row().read(&received, bytes);
        if (GetParam().takes_payload_back) {
            EXPECT_EQ(static_cast<char *>(received.res.data), payload);
        }
        row().free(&received);
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
    mdm_body_t sent = body(-13, nullptr);
    EXPECT_EQ(row().size(&sent), 0xFFFFFFFFU);
    sent.res.data_size = INT32_MAX;
    EXPECT_EQ(row().size(&sent), 0x8000000BU);
}

TEST_P(SingleList, NegativeDataSizeIsReceivedAsNoPayload)
{
    const Bytes bytes = hex("64 00 00 00 04 03 02 01 FF FF FF FF");
    mdm_body_t received{};
    received.res.data = sentinel();
    EXPECT_EQ(row().read(&received, bytes), 12U);
    EXPECT_EQ(received.res.data_size, -1);
    EXPECT_EQ(received.res.data, nullptr);
}

TEST_P(SingleList, FreeReleasesThePayloadInSilenceAndMayRunTwice)
{
    mdm_body_t received = body(3, heap_text("abc"));
    const void *payload = received.res.data;
    LogRecorder log;
    AllocationTrace trace;
    row().free(&received);
    row().free(&received);
    trace.stop();
    EXPECT_THAT(trace.released(), ElementsAre(payload));
    EXPECT_EQ(received.res.data, nullptr);
    EXPECT_EQ(received.res.data_size, 0);
    EXPECT_EQ(received.res.type, 0x64U);
    EXPECT_EQ(received.res.param, 0x01020304U);
    EXPECT_THAT(log.take(), IsEmpty());
}

// Q-BODY-13
TEST_P(SingleList, FreeOfNullBodyLogsItsExitLineOnly)
{
    LogRecorder log;
    row().free(nullptr);
    EXPECT_THAT(log.take(), ElementsAre(leave(row().free)));
}

TEST_P(SingleList, NullArgumentsFailAnAssert)
{
    mdm_body_t some = body(0, nullptr);
    Bytes buffer(12);
    LogRecorder log;
    EXPECT_EQ(row().size(nullptr), 0U);
    EXPECT_THAT(log.take(), only_asserts(row().size));
    EXPECT_EQ(row().set(nullptr, &some), nullptr);
    EXPECT_THAT(log.take(), only_asserts(row().set));
    EXPECT_EQ(row().set(buffer.data(), nullptr), nullptr);
    EXPECT_THAT(log.take(), only_asserts(row().set));
    EXPECT_EQ(row().get(nullptr, buffer.data()), nullptr);
    EXPECT_THAT(log.take(), only_asserts(row().get));
    EXPECT_EQ(row().get(&some, nullptr), nullptr);
    EXPECT_THAT(log.take(), only_asserts(row().get));
}

TEST_P(SingleList, FailuresAreTheSameWithTheLoggerOff)
{
    mdm_body_t some = body(0, nullptr);
    LogRecorder log(MDM_LOG_NONE);
    EXPECT_EQ(row().size(nullptr), 0U);
    EXPECT_EQ(row().set(nullptr, &some), nullptr);
    EXPECT_EQ(row().get(&some, nullptr), nullptr);
    row().free(nullptr);
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_P(SingleList, LogsUnderItsOwnName)
{
    char payload[] = "abc";
    for (const int32_t data_size : {0, 3}) {
        mdm_body_t sent = body(data_size, payload);
        LogRecorder log;
        row().size(&sent);
        EXPECT_EQ(log.take(), enter_and_leave(row().size));
        const Bytes bytes = row().write(&sent);
        EXPECT_EQ(log.take(), enter_and_leave(row().set));
        mdm_body_t received{};
        row().read(&received, bytes);
        EXPECT_EQ(log.take(), enter_and_leave(row().get));
        row().free(&received);
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
}  // namespace mdm::test
