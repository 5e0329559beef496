// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/allocation_trace.hpp"
#include "support/bodies.hpp"
#include "support/handlers.hpp"
#include "support/log_recorder.hpp"
#include "support/wire.hpp"

namespace mdm::test::bluetooth_test {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

constexpr Handlers bluetooth(9);
constexpr uint32_t list_type = 223;
constexpr uint32_t raw_type = 232;

const std::vector<uint32_t> released_types{91, 223, 227, 233, 237};
const std::vector<uint32_t> kept_types{220, 221, 222, 224, 225, 230, 231, 234, 235};

bool is_released(uint32_t type)
{
    return std::ranges::count(released_types, type) != 0;
}

std::vector<uint32_t> list_types()
{
    std::vector<uint32_t> types = released_types;
    types.insert(types.end(), kept_types.begin(), kept_types.end());
    return types;
}

std::vector<uint32_t> raw_types()
{
    const std::vector<uint32_t> lists = list_types();
    std::vector<uint32_t> types = swept_types(lists);
    std::erase_if(types, [&](uint32_t type) { return std::ranges::count(lists, type) != 0; });
    return types;
}

mdm_body_t body(uint32_t type, int32_t data_size, void *data)
{
    return headed_body<&mdm_body_t::bluetooth>(type, data_size, data);
}

// A sender's list, which ends with its scope.
struct Names {
    Names(std::initializer_list<const char *> names) : list(heap_list(names)) {}
    ~Names() { g_list_free_full(list, g_free); }
    Names(const Names &) = delete;
    Names &operator=(const Names &) = delete;

    GList *list;
};

// The received body. The reader consumes the bytes to the last.
mdm_body_t received_from(const Bytes &bytes)
{
    const mdm_body_t received = receive(bluetooth, bytes).body;
    expect_headed<&mdm_body_t::bluetooth>(received, received.bluetooth.type,
                                          received.bluetooth.data_size);
    return received;
}

void release_list(const mdm_body_t &received)
{
    g_list_free_full(static_cast<GList *>(received.bluetooth.data), g_free);
}

// A body's bytes behind its type.
Bytes written(mdm_body_t &sent)
{
    const Bytes bytes = bluetooth.write(&sent);
    return {bytes.begin() + 4, bytes.end()};
}

// The lines that a handler logs: information between entry and exit.
auto lines(const Origin &function, const std::vector<std::string> &texts = {})
{
    std::vector<LogLine> lines{enter(function)};
    for (const std::string &text : texts) {
        lines.push_back(info(function, text));
    }
    lines.push_back(leave(function));
    return ElementsAreArray(lines);
}

TEST(Bluetooth, ListIsItsCountAndNames)
{
    const Names names{"abc", "hello"};
    for (const uint32_t type : list_types()) {
        SCOPED_TRACE(type);
        mdm_body_t sent = body(type, 1, names.list);
        expect_size(bluetooth, sent, 32, 1);
        EXPECT_EQ(written(sent), hex("04 03 02 01 01 00 00 00 02 00 00 00 "
                                     "03 00 00 00 61 62 63 05 00 00 00 68 65 6C 6C 6F"));

        const auto [received, blocks] = receive(bluetooth, bluetooth.write(&sent));
        expect_headed<&mdm_body_t::bluetooth>(received, type, 1);
        EXPECT_THAT(texts_of(received.bluetooth.data), ElementsAre("abc", "hello"));
        const auto cells = cells_of(received.bluetooth.data);
        const auto texts = elements_of(received.bluetooth.data);
        EXPECT_THAT(blocks, ElementsAre(Block{texts[0], 4}, Block{cells[0], sizeof(GList)},
                                        Block{texts[1], 6}, Block{cells[1], sizeof(GList)}));
        release_blocks(blocks);
    }
}

TEST(Bluetooth, EveryOtherTypeIsRaw)
{
    for (const uint32_t type : raw_types()) {
        SCOPED_TRACE(type);
        expect_raw_bytes_to_travel(bluetooth, type);
    }
}

TEST(Bluetooth, NamesOfEveryLengthTravel)
{
    for (const size_t length : {size_t{1}, size_t{3000}}) {
        const std::string name(length, '\xFE');
        const Names names{name.c_str()};
        mdm_body_t sent = body(list_type, 1, names.list);
        EXPECT_EQ(bluetooth.size(&sent), 16 + 4 + length);
        const mdm_body_t received = received_from(bluetooth.write(&sent));
        EXPECT_THAT(texts_of(received.bluetooth.data), ElementsAre(name));
        release_list(received);
    }
}

TEST(Bluetooth, ManyNamesTravelInOrder)
{
    std::vector<std::optional<std::string>> texts;
    Names names{};
    for (int i = 0; i < 300; ++i) {
        texts.emplace_back(std::to_string(1000 + i));
        names.list = g_list_append(names.list, heap_text(texts.back()->c_str()));
    }
    mdm_body_t sent = body(list_type, 1, names.list);
    EXPECT_EQ(bluetooth.size(&sent), 16U + 300 * 8);
    const mdm_body_t received = received_from(bluetooth.write(&sent));
    EXPECT_EQ(texts_of(received.bluetooth.data), texts);
    auto *list = static_cast<GList *>(received.bluetooth.data);
    EXPECT_EQ(g_list_first(g_list_last(list)), list);
    release_list(received);
}

TEST(Bluetooth, SizeOfARawPayloadIsUnsigned)
{
    mdm_body_t sent = body(raw_type, INT32_MAX, nullptr);
    EXPECT_EQ(bluetooth.size(&sent), 0x8000000BU);
}

TEST(Bluetooth, SizeOfAListDoesNotCountDataSize)
{
    const Names names{"a"};
    mdm_body_t sent = body(list_type, INT32_MAX, names.list);
    EXPECT_EQ(bluetooth.size(&sent), 21U);
    EXPECT_EQ(sent.bluetooth.data_size, INT32_MAX);
}

// Q-BODY-6
TEST(Bluetooth, DataSizeBelow1SendsTheHeadAloneAndLeavesTheReceiversData)
{
    const Names names{"abc"};
    for (const uint32_t type : {list_type, raw_type}) {
        for (const int32_t data_size : {0, -1, INT32_MIN}) {
            const mdm_body_t sent = body(type, data_size, names.list);
            expect_head_alone(bluetooth, sent);
            expect_head_received(bluetooth, type, data_size, sentinel());
            const HandlerLines logged = logged_lines(bluetooth, sent);
            EXPECT_THAT(logged.size,
                        lines(bluetooth.size, {"data_size : " + std::to_string(data_size)}));
            EXPECT_THAT(logged.set, lines(bluetooth.set));
            EXPECT_THAT(logged.get, lines(bluetooth.get));
        }
    }
}

TEST(Bluetooth, EmptyListIsItsCountAlone)
{
    mdm_body_t sent = body(list_type, 1, nullptr);
    LogRecorder log;
    EXPECT_EQ(bluetooth.size(&sent), 16U);
    EXPECT_THAT(log.take(), lines(bluetooth.size, {"data_size : 1", "len : 0"}));
    const Bytes bytes = bluetooth.write(&sent);
    EXPECT_EQ(bytes, hex("DF 00 00 00 04 03 02 01 01 00 00 00 00 00 00 00"));
    EXPECT_THAT(log.take(), lines(bluetooth.set, {"length : 0"}));
    EXPECT_EQ(received_from(bytes).bluetooth.data, nullptr);
    EXPECT_THAT(log.take(), lines(bluetooth.get, {"length : 0"}));
}

TEST(Bluetooth, NegativeCountIsReceivedAsANullList)
{
    LogRecorder log;
    expect_counts_below_1_as_null(bluetooth, list_type);
    std::vector<LogLine> expected;
    for (const char *text : {"length : 0", "length : -1", "length : -2147483648"}) {
        expected.insert(expected.end(),
                        {enter(bluetooth.get), info(bluetooth.get, text), leave(bluetooth.get)});
    }
    EXPECT_EQ(log.take(), expected);
}

// Q-BODY-14
TEST(Bluetooth, NamesAreLoggedAndEmptyOnesAreReceivedAsNullElements)
{
    const Names names{"", "\xC3\xA4\xFF", ""};
    mdm_body_t sent = body(list_type, 7, names.list);
    LogRecorder log;
    EXPECT_EQ(bluetooth.size(&sent), 16U + 4 + 7 + 4);
    EXPECT_THAT(log.take(), lines(bluetooth.size, {"data_size : 7", "len : 3",
                                                   "device_name : ", "device_name : \xC3\xA4\xFF",
                                                   "device_name : "}));
    const Bytes bytes = bluetooth.write(&sent);
    EXPECT_EQ(bytes, hex("DF 00 00 00 04 03 02 01 07 00 00 00 03 00 00 00 "
                         "00 00 00 00 03 00 00 00 C3 A4 FF 00 00 00 00"));
    EXPECT_THAT(log.take(), lines(bluetooth.set, {"length : 3"}));
    mdm_body_t received = received_from(bytes);
    EXPECT_THAT(texts_of(received.bluetooth.data),
                ElementsAre(std::nullopt, "\xC3\xA4\xFF", std::nullopt));
    EXPECT_THAT(log.take(),
                lines(bluetooth.get, {"length : 3", "device_name : (null)",
                                      "device_name : \xC3\xA4\xFF", "device_name : (null)"}));
    bluetooth.free(&received);
    EXPECT_EQ(received.bluetooth.data, nullptr);
    EXPECT_THAT(log.take(), lines(bluetooth.free));
}

TEST(Bluetooth, RawPayloadLogsItsSizeOnly)
{
    const HandlerLines logged = logged_lines(bluetooth, body(raw_type, 4, borrowed("1234")));
    EXPECT_THAT(logged.size, lines(bluetooth.size, {"data_size : 4"}));
    EXPECT_THAT(logged.set, lines(bluetooth.set));
    EXPECT_THAT(logged.get, lines(bluetooth.get));
}

// Q-BODY-10
TEST(Bluetooth, NullNameCannotBeSized)
{
    for (const bool is_first : {true, false}) {
        GList *list = is_first ? list_of({nullptr, borrowed("b")})
                               : list_of({borrowed("a"), borrowed("b"), nullptr, borrowed("c")});
        mdm_body_t sent = body(list_type, 1, list);
        LogRecorder log;
        EXPECT_EQ(bluetooth.size(&sent), 0U);
        const Origin function = bluetooth.size;
        std::vector<LogLine> expected{enter(function), info(function, "data_size : 1"),
                                      info(function, is_first ? "len : 2" : "len : 4")};
        if (!is_first) {
            expected.push_back(info(function, "device_name : a"));
            expected.push_back(info(function, "device_name : b"));
        }
        expected.push_back(critical(function, "device_name is NULL"));
        expected.push_back(leave(function));
        EXPECT_THAT(log.take(), ElementsAreArray(expected));
        g_list_free(list);
    }
}

// Q-BODY-11
TEST(Bluetooth, NullNameLeavesDataSizeBytesUnwritten)
{
    GList *list = list_of({nullptr, borrowed("a"), nullptr, borrowed("b"), nullptr});
    mdm_body_t sent = body(list_type, 2, list);
    Bytes buffer(33, 0xEE);
    const uint8_t *end = bluetooth.set(buffer.data(), &sent);
    EXPECT_EQ(end - buffer.data(), 32);
    EXPECT_EQ(buffer, hex("DF 00 00 00 04 03 02 01 02 00 00 00 05 00 00 00 "
                          "EE EE 01 00 00 00 61 EE EE 01 00 00 00 62 EE EE EE"));
    g_list_free(list);
}

// Q-BLUETOOTH-1
TEST(Bluetooth, FreeReleasesTheListsOfFiveTypes)
{
    for (const uint32_t type : released_types) {
        for (const int32_t data_size : {3, 0, -1}) {
            mdm_body_t received = body(type, data_size, heap_list({"abc", nullptr, "hi"}));
            const auto texts = elements_of(received.bluetooth.data);
            const auto cells = cells_of(received.bluetooth.data);
            LogRecorder log;
            EXPECT_THAT(bluetooth.release(&received),
                        ElementsAre(texts[0], texts[2], cells[0], cells[1], cells[2]));
            EXPECT_THAT(log.take(), lines(bluetooth.free));
            EXPECT_EQ(received.bluetooth.data, nullptr);
            EXPECT_EQ(received.bluetooth.data_size, 0);
            EXPECT_EQ(received.bluetooth.type, type);
            EXPECT_THAT(bluetooth.release(&received), IsEmpty());
        }
    }
}

// Q-BLUETOOTH-2
TEST(Bluetooth, FreeOfANullListLeavesDataSize)
{
    for (const uint32_t type : released_types) {
        expect_no_release(bluetooth, body(type, 3, nullptr), enter_and_leave(bluetooth.free));
    }
}

// Q-BLUETOOTH-1
TEST(Bluetooth, FreeOfEveryOtherTypeResetsDataSizeAndReleasesNothing)
{
    std::vector<uint32_t> types = raw_types();
    types.insert(types.end(), kept_types.begin(), kept_types.end());
    for (const uint32_t type : types) {
        for (void *data : {sentinel(), static_cast<void *>(nullptr)}) {
            SCOPED_TRACE(type);
            mdm_body_t received = body(type, 3, data);
            LogRecorder log;
            EXPECT_THAT(bluetooth.release(&received), IsEmpty());
            EXPECT_THAT(log.take(), lines(bluetooth.free));
            EXPECT_EQ(received.bluetooth.data, data);
            EXPECT_EQ(received.bluetooth.data_size, 0);
        }
    }
}

TEST(Bluetooth, BothTypesOfTheMessageTravelAndKeepWhatIsNotReleased)
{
    const Names names{"abc", "hello"};
    for (const uint8_t message_type : {uint8_t{9}, uint8_t{10}}) {
        for (const uint32_t type : list_types()) {
            SCOPED_TRACE(type);
            const Journey list = travel(message_type, body(type, 1, names.list));
            EXPECT_EQ(list.bytes.size(), 32U);
            EXPECT_EQ(list.kept.size(), is_released(type) ? 0U : 4U);
            release_blocks(list.kept);
        }
        const Journey raw = travel(message_type, body(raw_type, 4, borrowed("1234")));
        EXPECT_EQ(raw.bytes.size(), 16U);
        EXPECT_THAT(raw.kept, ElementsAre(Block{raw.received.body.bluetooth.data, 5}));
        release_blocks(raw.kept);
    }
}

}  // namespace
}  // namespace mdm::test::bluetooth_test
