// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/allocation_trace.hpp"
#include "support/bodies.hpp"
#include "support/handlers.hpp"
#include "support/log_recorder.hpp"
#include "support/wire.hpp"

namespace mdm::test::wifi_test {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

constexpr Handlers wifi(7);

const std::vector<uint32_t> pair_types{305, 307, 309, 311, 313, 315, 317,
                                       324, 326, 328, 330, 332, 339};
const std::vector<uint32_t> list_types{290, 344, 346, 348, 349, 350, 352};
constexpr uint32_t pair_type = 309;
constexpr uint32_t list_type = 290;
constexpr uint32_t dhcp_type = 88;
constexpr uint32_t triple_type = 319;
constexpr uint32_t network_type = 345;
constexpr uint32_t raw_type = 300;

template <class Values>
bool contains(const Values &values, uint32_t value)
{
    return std::ranges::find(values, value) != std::end(values);
}

std::vector<uint32_t> listed_types()
{
    std::vector<uint32_t> types{dhcp_type, triple_type, network_type};
    types.insert(types.end(), pair_types.begin(), pair_types.end());
    types.insert(types.end(), list_types.begin(), list_types.end());
    return types;
}

bool is_raw(uint32_t type)
{
    return !contains(listed_types(), type);
}

mdm_body_t body(uint32_t type, int32_t data_size, void *data)
{
    return headed_body<&mdm_body_t::wifi>(type, data_size, data);
}

mdm_body_t received_from(const Bytes &bytes)
{
    return receive(wifi, bytes).body;
}

const mdm_wifi_network_t &network_of(const mdm_body_t &received)
{
    return *static_cast<mdm_wifi_network_t *>(received.wifi.data);
}

// A payload: its bytes, and the blocks that it takes and releases.
struct Sample {
    std::shared_ptr<void> data = nullptr;
    Bytes payload = {};                 // on the wire
    bool adds_data_size = false;        // `data_size` is counted on top of the payload
    std::vector<size_t> blocks = {};    // the sizes of a receiver's blocks, in order
    std::vector<size_t> released = {};  // the indices of the released blocks, in order
    bool resets_data = true;
    bool resets_data_size = true;
};

using Texts = std::vector<const char *>;

// An empty text is received as null, without a block.
void add_text(Sample &sample, const char *text)
{
    sample.payload = sample.payload + str(text);
    if (text != nullptr && *text != '\0') {
        sample.released.push_back(sample.blocks.size());
        sample.blocks.push_back(std::strlen(text) + 1);
    }
}

// A record of strings only: the first of the texts.
template <class Record, class... Strings>
Sample sample_of(const Texts &texts, Strings Record::*...strings)
{
    auto record = std::make_shared<Record>();
    Sample sample{.data = record, .adds_data_size = true, .blocks = {sizeof(Record)}};
    auto text = texts.begin();
    for (char *Record::*string : {strings...}) {
        (*record).*string = borrowed(*text);
        add_text(sample, *text++);
    }
    sample.released.push_back(0);
    return sample;
}

Sample pair(const char *ssid, const char *value)
{
    return sample_of({ssid, value}, &mdm_wifi_pair_t::ssid, &mdm_wifi_pair_t::value);
}

Sample dhcp(const Texts &texts)
{
    return sample_of(texts, &mdm_wifi_dhcp_t::str0, &mdm_wifi_dhcp_t::str1, &mdm_wifi_dhcp_t::str2,
                     &mdm_wifi_dhcp_t::str3, &mdm_wifi_dhcp_t::str4);
}

Sample triple(const Texts &texts)
{
    return sample_of(texts, &mdm_wifi_triple_t::str0, &mdm_wifi_triple_t::str1,
                     &mdm_wifi_triple_t::str2);
}

Sample ssids(const Texts &texts)
{
    GList *list = nullptr;
    Sample sample{.payload = word(static_cast<uint32_t>(texts.size())),
                  .resets_data_size = !texts.empty()};
    std::vector<size_t> cells;
    for (const char *text : texts) {
        list = g_list_append(list, borrowed(text));
        add_text(sample, text);
        cells.push_back(sample.blocks.size());
        sample.blocks.push_back(sizeof(GList));
    }
    sample.released.insert(sample.released.end(), cells.begin(), cells.end());
    sample.data = {list, [](void *cell) { g_list_free(static_cast<GList *>(cell)); }};
    return sample;
}

Sample raw()
{
    return {.data = std::make_shared<std::array<char, 4>>(std::to_array({'1', '2', '3', '4'})),
            .payload = hex("31 32 33 34"),
            .blocks = {5},
            .released = {0},
            .resets_data_size = false};
}

// A form of a detail: its words that travel, n for a number, s for a string.
struct DetailForm {
    int32_t detail_kind;
    std::string_view words;
};
constexpr DetailForm detail_forms[] = {{1, "n"},      {2, "s"},      {3, "s"},
                                       {4, "s"},      {5, "sssnss"}, {6, "sssssss"},
                                       {7, "sssnss"}, {8, "n"},      {9, "n"}};

constexpr std::array words{&mdm_wifi_detail_t::w0, &mdm_wifi_detail_t::w1, &mdm_wifi_detail_t::w2,
                           &mdm_wifi_detail_t::w3, &mdm_wifi_detail_t::w4, &mdm_wifi_detail_t::w5,
                           &mdm_wifi_detail_t::w6};

struct Profile {
    mdm_wifi_network_t network;
    mdm_wifi_detail_t detail;
};

// Every word of the detail is set, also where it does not travel.
Sample network(const char *ssid, const DetailForm &form, const Texts &texts)
{
    auto profile = std::make_shared<Profile>();
    profile->network = {borrowed(ssid), form.detail_kind, &profile->detail};
    Sample sample{.data = profile,
                  .blocks = {sizeof(mdm_wifi_network_t)},
                  .resets_data = false,
                  .resets_data_size = false};
    add_text(sample, ssid);
    sample.payload = sample.payload + word(static_cast<uint32_t>(form.detail_kind));
    const size_t detail = sample.blocks.size();
    if (!form.words.empty()) {
        sample.blocks.push_back(sizeof(mdm_wifi_detail_t));
    }
    for (size_t i = 0; i < words.size(); ++i) {
        mdm_wifi_word_t &word_i = profile->detail.*words[i];
        word_i.text = borrowed(texts[i]);
        if (i < form.words.size() && form.words[i] == 's') {
            add_text(sample, texts[i]);
        } else if (i < form.words.size()) {
            word_i.number = 0x87654300 + static_cast<uint32_t>(i);
            sample.payload = sample.payload + word(word_i.number);
        }
    }
    if (form.words.starts_with('s')) {
        sample.released.push_back(detail);
    }
    return sample;
}

const Texts seven{"a", "bc", "def", "ghij", "klmno", "pqrstu", "vwxyz01"};

// One of each form and of each form of a detail, with the type that it travels under.
struct Typed {
    uint32_t type;
    Sample sample;
};

std::vector<Typed> one_of_each()
{
    std::vector<Typed> samples{{pair_type, pair("abc", "hi")},
                               {dhcp_type, dhcp(seven)},
                               {triple_type, triple(seven)},
                               {list_type, ssids({"abc", "hi"})},
                               {raw_type, raw()}};
    for (const DetailForm &form : detail_forms) {
        samples.push_back({network_type, network("home", form, seven)});
    }
    return samples;
}

// Releases a received body. The blocks that the sample names must go, in its order.
void expect_release(const Sample &sample, mdm_body_t &received, const std::vector<Block> &blocks)
{
    const mdm_wifi_info_t before = received.wifi;
    std::vector<const void *> expected;
    for (const size_t index : sample.released) {
        expected.push_back(blocks.at(index).address);
    }
    EXPECT_THAT(wifi.release(&received), ElementsAreArray(expected));
    EXPECT_EQ(received.wifi.data, sample.resets_data ? nullptr : before.data);
    EXPECT_EQ(received.wifi.data_size, sample.resets_data_size ? 0 : before.data_size);
    EXPECT_EQ(received.wifi.type, before.type);
    release_blocks(without(blocks, expected));
}

// Sizes, writes, reads and releases.
void expect_travels(uint32_t type, const Sample &sample)
{
    SCOPED_TRACE(type);
    mdm_body_t sent = body(type, 4, sample.data.get());
    const size_t size = 12 + sample.payload.size() + (sample.adds_data_size ? 4 : 0);
    expect_size(wifi, sent, static_cast<uint32_t>(size), 4);
    const Bytes bytes = wifi.write(&sent);
    ASSERT_EQ(bytes, head_bytes(type, 4) + sample.payload);

    auto [received, blocks] = receive(wifi, bytes);
    expect_headed<&mdm_body_t::wifi>(received, type, 4);
    EXPECT_EQ(wifi.write(&received), bytes);  // so every field is where it was
    ASSERT_THAT(sizes_of(blocks), ElementsAreArray(sample.blocks));
    expect_release(sample, received, blocks);
}

// A handler's entry, information with the texts, and its exit.
std::vector<LogLine> lines(const Origin &function, const std::vector<std::string> &texts)
{
    std::vector<LogLine> lines = infos(function, texts);
    lines.insert(lines.begin(), enter(function));
    lines.push_back(leave(function));
    return lines;
}

LogLine freeing_line(const mdm_body_t &received)
{
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "Freeing %p", received.wifi.data);
    return critical(wifi.free, text.data());
}

TEST(Wifi, TypeSelectsTheForm)
{
    for (const uint32_t type : swept_types(listed_types())) {
        if (type == triple_type || type == network_type) {
            continue;  // their records must not be missing
        }
        mdm_body_t sent = body(type, 7, nullptr);
        uint32_t size = 0;  // of a pair or DHCP settings
        if (contains(list_types, type)) {
            size = 16;
        } else if (is_raw(type)) {
            size = 19;
        }
        EXPECT_EQ(wifi.size(&sent), size) << type;
        EXPECT_EQ(sent.wifi.data_size, 7);
    }
}

TEST(Wifi, ListedTypesTravelInTheirForm)
{
    for (const uint32_t type : pair_types) {
        expect_travels(type, pair("abc", "hi"));
    }
    for (const uint32_t type : list_types) {
        expect_travels(type, ssids({"abc", "hi"}));
    }
    for (const auto &[type, sample] : one_of_each()) {
        expect_travels(type, sample);
    }
}

TEST(Wifi, EveryOtherTypeIsRaw)
{
    for (const uint32_t type : swept_types(listed_types())) {
        if (is_raw(type)) {
            expect_travels(type, raw());
        }
    }
}

TEST(Wifi, StringsOfEveryLengthTravel)
{
    const std::string long_text(311, '\xC3');
    for (const char *text : Texts{nullptr, "", "x", "\xC3\xA4\xFF\x01", long_text.c_str()}) {
        const Texts texts(7, text);
        expect_travels(pair_type, pair(text, "value"));
        expect_travels(pair_type, pair("ssid", text));
        expect_travels(pair_type, pair(text, text));
        expect_travels(dhcp_type, dhcp({text, text, text, text, text}));
        expect_travels(dhcp_type, dhcp({"a", text, "bc", text, "def"}));
        expect_travels(triple_type, triple({text, text, text}));
        expect_travels(triple_type, triple({"a", text, "bc"}));
        for (const DetailForm &form : detail_forms) {
            expect_travels(network_type, network(text, form, seven));
            expect_travels(network_type, network("home", form, texts));
            expect_travels(network_type, network(text, form, texts));
        }
    }
}

TEST(Wifi, ListsOfEveryLengthTravel)
{
    const std::string long_text(311, 'y');
    expect_travels(list_type, ssids({}));
    expect_travels(list_type, ssids({"x"}));
    expect_travels(list_type, ssids({long_text.c_str(), "\xC3\xA4\xFF", "x"}));
    expect_travels(list_type, ssids(Texts(500, "z")));
}

// Q-WIFI-1
TEST(Wifi, PairIsItsTwoStringsAndDataSizeCountsOnTop)
{
    const Sample sample = pair("a", nullptr);
    mdm_body_t sent = body(pair_type, 1, sample.data.get());
    EXPECT_EQ(wifi.size(&sent), 22U);
    const Bytes bytes = wifi.write(&sent);
    EXPECT_EQ(bytes, hex("35 01 00 00 04 03 02 01 01 00 00 00 01 00 00 00 61 00 00 00 00"));

    mdm_body_t received = received_from(bytes);
    const auto &back = *static_cast<mdm_wifi_pair_t *>(received.wifi.data);
    EXPECT_STREQ(back.ssid, "a");
    EXPECT_EQ(back.value, nullptr);
    EXPECT_EQ(received.wifi.type, pair_type);
    EXPECT_EQ(received.wifi.param, 0x01020304U);
    EXPECT_EQ(received.wifi.data_size, 1);
    wifi.free(&received);
}

TEST(Wifi, SizesWrapAroundWithDataSize)
{
    for (const auto &[type, sample] : one_of_each()) {
        mdm_body_t sent = body(type, INT32_MAX, sample.data.get());
        const bool counts_data_size = sample.adds_data_size || type == raw_type;
        const size_t strings = type == raw_type ? 0 : sample.payload.size();
        EXPECT_EQ(wifi.size(&sent), 12 + strings + (counts_data_size ? 0x7FFFFFFF : 0));
    }
}

TEST(Wifi, DataSizeBelow1SendsTheHeadAloneAndMakesTheReceiversDataNull)
{
    for (const auto &[type, sample] : one_of_each()) {
        for (const int32_t data_size : {0, -1, INT32_MIN}) {
            const mdm_body_t sent = body(type, data_size, sample.data.get());
            expect_head_alone(wifi, sent);
            expect_head_received(wifi, type, data_size, nullptr);
            expect_entry_and_exit(wifi, sent);
        }
    }
}

// Q-WIFI-3
TEST(Wifi, MissingPairAndMissingDhcpSettingsCannotBeSized)
{
    std::vector<uint32_t> types(std::begin(pair_types), std::end(pair_types));
    types.push_back(dhcp_type);
    for (const uint32_t type : types) {
        mdm_body_t sent = body(type, 1, nullptr);
        LogRecorder log;
        EXPECT_EQ(wifi.size(&sent), 0U);
        const char *text = type == dhcp_type ? "dhcp_info is NULL" : "wifi_info is NULL";
        EXPECT_THAT(log.take(),
                    ElementsAre(enter(wifi.size), critical(wifi.size, text), leave(wifi.size)));
        EXPECT_EQ(sent.wifi.data_size, 1);
    }
}

// Q-WIFI-3
TEST(Wifi, MissingRecordFailsAnAssertBehindTheHead)
{
    std::vector<uint32_t> types(std::begin(pair_types), std::end(pair_types));
    types.insert(types.end(), {dhcp_type, triple_type, network_type});
    for (const uint32_t type : types) {
        mdm_body_t sent = body(type, 1, nullptr);
        Bytes buffer(32);
        LogRecorder log;
        EXPECT_EQ(wifi.set(buffer.data(), &sent), nullptr);
        EXPECT_THAT(log.take(), ElementsAre(enter(wifi.set), assert_fails(wifi.set)));
        EXPECT_EQ(buffer, head_bytes(type, 1) + Bytes(20));
    }
}

TEST(Wifi, ListIsItsCountAndStrings)
{
    const Sample sample = ssids({"a", "bc", "def"});
    mdm_body_t sent = body(350, 1, sample.data.get());
    EXPECT_EQ(wifi.size(&sent), 16U + 5 + 6 + 7);
    const Bytes bytes = wifi.write(&sent);
    EXPECT_EQ(bytes, hex("5E 01 00 00 04 03 02 01 01 00 00 00 03 00 00 00 01 00 00 00 61 "
                         "02 00 00 00 62 63 03 00 00 00 64 65 66"));

    mdm_body_t received = received_from(bytes);
    EXPECT_THAT(texts_of(received.wifi.data), ElementsAre("a", "bc", "def"));
    EXPECT_EQ(received.wifi.data_size, 1);
    wifi.free(&received);
}

TEST(Wifi, CountBelow1IsReceivedAsANullList)
{
    LogRecorder log;
    expect_counts_below_1_as_null(wifi, list_type);
    std::vector<LogLine> expected;
    for (const char *text : {"length : 0", "length : -1", "length : -2147483648"}) {
        expected.insert(expected.end(), {enter(wifi.get), info(wifi.get, text), leave(wifi.get)});
    }
    EXPECT_EQ(log.take(), expected);
}

TEST(Wifi, EmptySsidsAreReceivedAsNullElements)
{
    const Sample sample = ssids({"", "a", ""});
    mdm_body_t sent = body(list_type, 1, sample.data.get());
    EXPECT_EQ(wifi.size(&sent), 16U + 4 + 5 + 4);
    LogRecorder log;
    mdm_body_t received = received_from(wifi.write(&sent));
    EXPECT_THAT(texts_of(received.wifi.data), ElementsAre(std::nullopt, "a", std::nullopt));
    EXPECT_THAT(log.take(),
                ElementsAre(enter(wifi.set), info(wifi.set, "length : 3"), leave(wifi.set),
                            enter(wifi.get), info(wifi.get, "length : 3"),
                            info(wifi.get, "ssid : (null)"), info(wifi.get, "ssid : a"),
                            info(wifi.get, "ssid : (null)"), leave(wifi.get)));
    EXPECT_EQ(wifi.release(&received).size(), 4U);
    EXPECT_EQ(received.wifi.data, nullptr);
}

// Q-BODY-10
TEST(Wifi, NullSsidCannotBeSized)
{
    for (const bool is_first : {true, false}) {
        GList *list = is_first ? list_of({nullptr, borrowed("b")})
                               : list_of({borrowed("a"), borrowed("b"), nullptr, borrowed("c")});
        mdm_body_t sent = body(list_type, 1, list);
        LogRecorder log;
        EXPECT_EQ(wifi.size(&sent), 0U);
        std::vector<LogLine> lines{enter(wifi.size),
                                   info(wifi.size, is_first ? "len : 2" : "len : 4")};
        if (!is_first) {
            lines.insert(lines.end(), {info(wifi.size, "ssid : a"), info(wifi.size, "ssid : b")});
        }
        lines.insert(lines.end(), {critical(wifi.size, "ssid is NULL"), leave(wifi.size)});
        EXPECT_THAT(log.take(), ElementsAreArray(lines));
        g_list_free(list);
    }
}

// Q-BODY-11
TEST(Wifi, NullSsidLeavesDataSizeBytesUnwritten)
{
    GList *list = list_of({nullptr, borrowed("a"), nullptr, borrowed("b"), nullptr});
    mdm_body_t sent = body(list_type, 3, list);
    Bytes buffer(64, 0xEE);
    const uint8_t *end = wifi.set(buffer.data(), &sent);
    EXPECT_EQ(end - buffer.data(), 12 + 4 + 3 + 5 + 3 + 5 + 3);
    buffer.resize(35);
    EXPECT_EQ(buffer, head_bytes(list_type, 3) + hex("05 00 00 00 EE EE EE 01 00 00 00 61 EE EE EE "
                                                     "01 00 00 00 62 EE EE EE"));
    g_list_free(list);
}

TEST(Wifi, NetworkIsItsSsidItsKindAndItsDetail)
{
    Sample sample = network("ab", {7, "sssnss"}, {"s0", nullptr, "s2", "", "s4", "s5", "s6"});
    mdm_body_t sent = body(network_type, 100, sample.data.get());
    EXPECT_EQ(wifi.size(&sent), 12U + 6 + 4 + 6 + 4 + 6 + 4 + 6 + 6);
    const Bytes bytes = wifi.write(&sent);
    EXPECT_EQ(bytes, hex("59 01 00 00 04 03 02 01 64 00 00 00 02 00 00 00 61 62 07 00 00 00 "
                         "02 00 00 00 73 30 00 00 00 00 02 00 00 00 73 32 03 43 65 87 "
                         "02 00 00 00 73 34 02 00 00 00 73 35"));

    const auto [received, blocks] = receive(wifi, bytes);
    const mdm_wifi_network_t &back = network_of(received);
    EXPECT_STREQ(back.ssid, "ab");
    EXPECT_EQ(back.detail_kind, 7);
    EXPECT_STREQ(back.detail->w0.text, "s0");
    EXPECT_EQ(back.detail->w1.text, nullptr);
    EXPECT_STREQ(back.detail->w2.text, "s2");
    EXPECT_EQ(back.detail->w3.number, 0x87654303U);
    EXPECT_STREQ(back.detail->w4.text, "s4");
    EXPECT_STREQ(back.detail->w5.text, "s5");
    EXPECT_EQ(back.detail->w6.text, nullptr);
    release_blocks(blocks);
}

TEST(Wifi, WordsOfADetailThatDoNotTravelAreReceivedAsNull)
{
    for (const DetailForm &form : detail_forms) {
        SCOPED_TRACE(form.detail_kind);
        const Sample sample = network("home", form, seven);
        const auto [received, blocks] = receive(wifi, head_bytes(network_type, 1) + sample.payload);
        const mdm_wifi_detail_t &detail = *network_of(received).detail;
        for (size_t i = form.words.size(); i < words.size(); ++i) {
            EXPECT_EQ((detail.*words[i]).text, nullptr) << i;
        }
        release_blocks(blocks);
    }
}

TEST(Wifi, NetworkOfAnyOtherKindHasNoDetail)
{
    std::vector<int32_t> others{INT32_MIN, INT32_MAX, 0x10001, INT32_MIN + 6};
    for (int32_t detail_kind = -300; detail_kind <= 300; ++detail_kind) {
        if (detail_kind < 1 || detail_kind > 9) {
            others.push_back(detail_kind);
        }
    }
    for (const int32_t detail_kind : others) {
        SCOPED_TRACE(detail_kind);
        const Sample sample = network("home", {detail_kind, ""}, seven);
        expect_travels(network_type, sample);
        const auto [received, blocks] = receive(wifi, head_bytes(network_type, 1) + sample.payload);
        EXPECT_EQ(network_of(received).detail_kind, detail_kind);
        EXPECT_EQ(network_of(received).detail, nullptr);
        release_blocks(blocks);
    }
}

// Q-WIFI-2
TEST(Wifi, MissingDetailIsNotWritten)
{
    for (int32_t detail_kind = 0; detail_kind <= 10; ++detail_kind) {
        mdm_wifi_network_t record{borrowed("ab"), detail_kind, nullptr};
        mdm_body_t sent = body(network_type, 1, &record);
        EXPECT_EQ(wifi.write(&sent), head_bytes(network_type, 1) + hex("02 00 00 00 61 62") +
                                         word(static_cast<uint32_t>(detail_kind)));
    }
}

// Q-WIFI-2
TEST(Wifi, MissingNumberIsCountedAndArrivesAsZero)
{
    for (const int32_t detail_kind : {1, 8, 9}) {
        mdm_wifi_network_t record{borrowed("ab"), detail_kind, nullptr};
        mdm_msg_t msg = message(wifi.type);
        msg.body = body(network_type, 1, &record);
        EXPECT_EQ(wifi.size(&msg.body), 12U + 6 + 4 + 4);
        const Bytes bytes = serialize(msg);
        EXPECT_EQ(Bytes(bytes.begin() + 58, bytes.end()),
                  word(static_cast<uint32_t>(detail_kind)) + word(0));

        mdm_msg_t received{};
        AllocationTrace trace;
        EXPECT_EQ(deserialize(received, bytes), 0);
        trace.stop();
        ASSERT_NE(network_of(received.body).detail, nullptr);
        EXPECT_EQ(network_of(received.body).detail->w0.number, 0U);
        release_blocks(trace.kept());
    }
}

TEST(Wifi, MissingDetailOfNoKindIsNotCounted)
{
    for (const int32_t detail_kind : {0, 10, -1}) {
        mdm_wifi_network_t record{nullptr, detail_kind, nullptr};
        mdm_body_t sent = body(network_type, 1, &record);
        EXPECT_EQ(wifi.size(&sent), 12U + 4 + 4);
    }
}

TEST(Wifi, RawPayloadEndsAtItsFirstZeroByte)
{
    expect_raw_bytes_to_travel(wifi, raw_type);
}

TEST(Wifi, FreeNullsTheStringsOfARecordBeforeItReleasesIt)
{
    for (const auto &[type, sample] : one_of_each()) {
        if (!sample.adds_data_size) {
            continue;
        }
        mdm_body_t received = received_from(head_bytes(type, 1) + sample.payload);
        const void *record = received.wifi.data;
        Bytes last(sample.blocks[0], 0xEE);
        AllocationTrace trace;
        trace.during_release([&](const void *block) {
            if (block == record) {
                std::memcpy(last.data(), block, last.size());
            }
        });
        wifi.free(&received);
        trace.stop();
        EXPECT_EQ(last, Bytes(last.size())) << type;
    }
}

// Q-WIFI-4
TEST(Wifi, FreeLeavesTheNetworkRecordAsItWas)
{
    for (const DetailForm &form : detail_forms) {
        SCOPED_TRACE(form.detail_kind);
        auto [received, blocks] =
            receive(wifi, head_bytes(network_type, 1) + network("home", form, seven).payload);
        const mdm_wifi_network_t before = network_of(received);
        const auto released = wifi.release(&received);
        EXPECT_EQ(network_of(received).ssid, before.ssid);
        EXPECT_EQ(network_of(received).detail_kind, form.detail_kind);
        EXPECT_EQ(network_of(received).detail, before.detail);
        EXPECT_EQ(received.wifi.data_size, 1);
        const std::vector<Block> kept = without(blocks, released);
        EXPECT_EQ(kept.size(), form.words == "n" ? 2U : 1U);
        release_blocks(kept);
    }
}

// Q-BODY-5
TEST(Wifi, FreeLooksAtDataAndNotAtDataSize)
{
    for (const auto &[type, sample] : one_of_each()) {
        for (const int32_t data_size : {0, -1}) {
            auto [received, blocks] = receive(wifi, head_bytes(type, 4) + sample.payload);
            received.wifi.data_size = data_size;
            expect_release(sample, received, blocks);
        }
    }
}

// Q-WIFI-6
TEST(Wifi, FreeOfNullDataDoesNothing)
{
    for (const auto &[type, sample] : one_of_each()) {
        expect_no_release(wifi, body(type, 3, nullptr), enter_and_leave(wifi.free));
    }
}

TEST(Wifi, FreeMayRunTwiceExceptOnANetwork)
{
    for (const auto &[type, sample] : one_of_each()) {
        if (type == network_type) {
            continue;
        }
        mdm_body_t received = received_from(head_bytes(type, 4) + sample.payload);
        wifi.free(&received);
        EXPECT_THAT(wifi.release(&received), IsEmpty());
    }
}

TEST(Wifi, PairIsLoggedByEveryHandler)
{
    for (const char *value : {static_cast<const char *>(nullptr), "hi"}) {
        const std::string text =
            std::string("ssid : abc, value : ") + (value == nullptr ? "(null)" : value);
        const Sample sample = pair("abc", value);
        const HandlerLines logged = logged_lines(wifi, body(pair_type, 1, sample.data.get()));
        EXPECT_EQ(logged.size, lines(wifi.size, {text}));
        EXPECT_EQ(logged.set, lines(wifi.set, {text}));
        EXPECT_EQ(logged.get, lines(wifi.get, {text}));
        EXPECT_EQ(logged.free, lines(wifi.free, {text}));
    }
}

// Q-BODY-14
TEST(Wifi, NamesAreLoggedWhenSizedAndRead)
{
    const Sample sample = ssids({"abc", "", "hi"});
    const HandlerLines logged = logged_lines(wifi, body(list_type, 1, sample.data.get()));
    EXPECT_EQ(logged.size, lines(wifi.size, {"len : 3", "ssid : abc", "ssid : ", "ssid : hi"}));
    EXPECT_EQ(logged.set, lines(wifi.set, {"length : 3"}));
    EXPECT_EQ(logged.get,
              lines(wifi.get, {"length : 3", "ssid : abc", "ssid : (null)", "ssid : hi"}));
    EXPECT_EQ(logged.free, lines(wifi.free, {}));
}

TEST(Wifi, EmptyListLogsItsLength)
{
    mdm_body_t sent = body(list_type, 1, nullptr);
    LogRecorder log;
    EXPECT_EQ(wifi.size(&sent), 16U);
    EXPECT_EQ(log.take(), lines(wifi.size, {"len : 0"}));
    EXPECT_EQ(wifi.write(&sent), head_bytes(list_type, 1) + word(0));
    EXPECT_EQ(log.take(), lines(wifi.set, {"length : 0"}));
}

TEST(Wifi, OtherFormsLogEnterAndExitAndARawPayloadItsRelease)
{
    for (const auto &[type, sample] : one_of_each()) {
        if (type == pair_type || type == list_type) {
            continue;
        }
        SCOPED_TRACE(type);
        mdm_body_t sent = body(type, 4, sample.data.get());
        const HandlerLines logged = logged_lines(wifi, sent);
        EXPECT_EQ(logged.size, lines(wifi.size, {}));
        EXPECT_EQ(logged.set, lines(wifi.set, {}));
        EXPECT_EQ(logged.get, lines(wifi.get, {}));

        auto [received, blocks] = receive(wifi, wifi.write(&sent));
        std::vector<LogLine> freeing = lines(wifi.free, {});
        if (type == raw_type) {
            freeing.insert(freeing.begin() + 1, freeing_line(received));
        }
        LogRecorder log;
        expect_release(sample, received, blocks);
        EXPECT_EQ(log.take(), freeing);
    }
}

// Q-WIFI-5, Q-WIFI-6
TEST(Wifi, ReleaseOfRawBytesIsLoggedAsAFailureAndKeepsDataSize)
{
    mdm_body_t received = body(raw_type, 3, heap_text("abc"));
    const LogLine line = freeing_line(received);
    LogRecorder log(MDM_LOG_CRITICAL);
    wifi.free(&received);
    EXPECT_THAT(log.take(), ElementsAre(line));
    EXPECT_EQ(received.wifi.data, nullptr);
    EXPECT_EQ(received.wifi.data_size, 3);
}

TEST(Wifi, BothTypesOfTheMessageTravelAndLeaveANetworkBehind)
{
    for (const uint8_t message_type : {uint8_t{7}, uint8_t{8}}) {
        for (const auto &[type, sample] : one_of_each()) {
            const Journey journey = travel(message_type, body(type, 4, sample.data.get()));
            const Bytes padding(sample.adds_data_size ? 4 : 0);
            EXPECT_EQ(journey.bytes, head_bytes(type, 4) + sample.payload + padding);
            std::vector<size_t> kept;
            for (size_t i = 0; i < sample.blocks.size(); ++i) {
                if (std::ranges::count(sample.released, i) == 0) {
                    kept.push_back(sample.blocks[i]);
                }
            }
            EXPECT_THAT(sizes_of(journey.kept), ElementsAreArray(kept));
            release_blocks(journey.kept);
        }
    }
}

}  // namespace
}  // namespace mdm::test::wifi_test
