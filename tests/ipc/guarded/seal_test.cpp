// SPDX-License-Identifier: Apache-2.0
//
// What ipc_seal() promises a sender: the bytes of ipc_serialize(), or a refusal that says why and
// leaves nothing behind. Each category's refusals stand beside what is nearly refused.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mdm/guarded.h"
#include "support/allocation_trace.hpp"
#include "support/fault.hpp"
#include "support/format.hpp"
#include "support/handlers.hpp"
#include "support/log_recorder.hpp"
#include "support/messages.hpp"
#include "support/wire.hpp"
#include "wire/cursor.hpp"

namespace mdm::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr size_t trailer_size = 5;
constexpr uint32_t untouched_length = 0xC0C1C2C3;
constexpr ipc_fault_t untouched = {0xA1A2A3A4, 0xB1B2B3B4, 0xD1D2D3D4, "untouched"};

// Sizes that a message cannot have. Without a header text its body begins at 40.
constexpr uint32_t body_offset = 40;
constexpr ipc_fault_t no_size = {0, 40, 0, "header.length"};

bool operator==(const mdm_msg_t &left, const mdm_msg_t &right)
{
    return std::memcmp(&left, &right, sizeof left) == 0;
}

std::string text_of(const ipc_fault_t &fault)
{
    return std::string(fault.path) + ": offset " + std::to_string(fault.offset) + ", needed " +
           std::to_string(fault.needed) + ", left " + std::to_string(fault.left);
}

template <auto category>
mdm_msg_t message_of(uint8_t message_type, uint32_t type, int32_t data_size, void *data)
{
    mdm_msg_t msg = message(message_type);
    msg.hdr_aux = 0xBBBBBBBB;
    msg.body = headed_body<category>(type, data_size, data);
    return msg;
}

// Refusals.

// What stands behind a message in each buffer that is released.
void expect_trailers(AllocationTrace &trace)
{
    trace.during_release([&trace](const void *released) {
        for (const Block &block : trace.allocated()) {
            if (block.address == released) {
                const auto *end = static_cast<const uint8_t *>(released) + block.size;
                EXPECT_EQ(Bytes(end - trailer_size, end), hex("00 F4 F4 F4 F4"));
            }
        }
    });
}

std::vector<LogLine> lines_of_sealing(LogRecorder &log)
{
    std::vector<LogLine> lines = log.take();
    std::erase_if(lines, [](const LogLine &line) { return line.function != "ipc_seal"; });
    return lines;
}

void expect_refusal(mdm_msg_t &msg, const ipc_fault_t &expected)
{
    const mdm_msg_t before = msg;
    uint32_t length = untouched_length;
    ipc_fault_t fault = untouched;
    LogRecorder log(MDM_LOG_CRITICAL);
    AllocationTrace trace;
    expect_trailers(trace);
    uint8_t *buffer = ipc_seal(&msg, &length, &fault);
    trace.stop();

    ASSERT_EQ(buffer, nullptr);
    EXPECT_EQ(text_of(fault), text_of(expected));
    EXPECT_TRUE(msg == before);
    EXPECT_EQ(length, untouched_length);
    EXPECT_THAT(trace.kept(), IsEmpty());
    EXPECT_THAT(lines_of_sealing(log),
                ElementsAre(critical(from::ipc_seal, refusal_line(expected))));
}

// A part that is missing, where the body is not even begun.
constexpr ipc_fault_t missing(const char *path)
{
    return {body_offset, 0, 0, path};
}

// A part that is there, and that its size or its type keeps from being sent.
constexpr ipc_fault_t unfit(const char *path)
{
    return missing(path);
}

// What has to be refused, whatever the fault.
bool is_refused(mdm_msg_t msg)
{
    uint32_t length = 0;
    uint8_t *buffer = ipc_seal(&msg, &length, nullptr);
    g_free(buffer);
    return buffer == nullptr;
}

// What is sealed.

Bytes taken(uint8_t *buffer, uint32_t length)
{
    if (buffer == nullptr) {
        return {};
    }
    Bytes bytes(buffer, buffer + length + trailer_size);
    g_free(buffer);
    return bytes;
}

bool can_be_opened(const Bytes &bytes)
{
    MDM_AUTO_CLOSE mdm_msg_t *msg =
        ipc_open(bytes.data(), static_cast<uint32_t>(bytes.size()), nullptr);
    return msg != nullptr;
}

bool can_be_opened_without_trailer(const Bytes &bytes)
{
    return bytes.size() >= trailer_size &&
           can_be_opened({bytes.begin(), bytes.end() - static_cast<std::ptrdiff_t>(trailer_size)});
}

// The same bytes, the same bytes behind them, and the same body afterwards.
void expect_sealed(mdm_msg_t msg)
{
    mdm_msg_t serialized = msg;
    uint32_t length = 0;
    ipc_fault_t fault = untouched;
    AllocationTrace trace;
    uint8_t *buffer = ipc_seal(&msg, &length, &fault);
    trace.stop();
    ASSERT_NE(buffer, nullptr) << text_of(fault);
    EXPECT_EQ(text_of(fault), text_of(untouched));
    EXPECT_THAT(trace.kept(), ElementsAre(Block{buffer, length + trailer_size}));

    const Bytes bytes = taken(buffer, length);
    uint8_t *expected = ipc_serialize(&serialized, &length);
    EXPECT_EQ(bytes, taken(expected, length));
    EXPECT_TRUE(msg == serialized);
    EXPECT_TRUE(can_be_opened_without_trailer(bytes));
}

// A category: each of its message types with each of some discriminators and each of some bodies.

struct Refused {
    int32_t data_size;
    void *data;
    ipc_fault_t fault;
};

struct Sealed {
    int32_t data_size;
    void *data;
};

template <auto category>
class Sender {
public:
    Sender(std::initializer_list<uint8_t> message_types) : message_types_(message_types) {}

    void is_refused(const std::vector<uint32_t> &types, std::initializer_list<Refused> bodies) const
    {
        for_each(types, bodies,
                 [](mdm_msg_t msg, const Refused &it) { expect_refusal(msg, it.fault); });
    }

    void is_sealed(const std::vector<uint32_t> &types, std::initializer_list<Sealed> bodies) const
    {
        for_each(types, bodies,
                 [](const mdm_msg_t &msg, const Sealed & /*it*/) { expect_sealed(msg); });
    }

private:
    template <class Body, class Expect>
    void for_each(const std::vector<uint32_t> &types, std::initializer_list<Body> bodies,
                  Expect expect) const
    {
        for (const uint8_t message_type : message_types_) {
            for (const uint32_t type : types) {
                for (const Body &it : bodies) {
                    SCOPED_TRACE(std::to_string(message_type) + ", " + std::to_string(type) +
                                 ", data_size " + std::to_string(it.data_size));
                    expect(message_of<category>(message_type, type, it.data_size, it.data), it);
                }
            }
        }
    }

    std::vector<uint8_t> message_types_;
};

char a[] = "a";
char bc[] = "bc";
char some_bytes[] = "some bytes";

// The envelope.

TEST(Seal, ANullMessageIsRefused)
{
    ipc_fault_t fault = untouched;
    uint32_t length = untouched_length;
    LogRecorder log;
    EXPECT_EQ(ipc_seal(nullptr, &length, &fault), nullptr);
    EXPECT_EQ(text_of(fault), "message: offset 0, needed 0, left 0");
    EXPECT_EQ(length, untouched_length);
    EXPECT_THAT(log.take(), ElementsAre(enter(from::ipc_seal),
                                        critical(from::ipc_seal, "Refused: message is missing"),
                                        leave(from::ipc_seal)));
}

// Q-GUARDED-6
TEST(Seal, TypesWithoutACategoryAreRefused)
{
    for (int type = 0; type < 256; ++type) {
        SCOPED_TRACE(type);
        mdm_msg_t msg = message(static_cast<uint8_t>(type));
        mdm_roaming_data_t data = {a};
        msg.body.roaming.data = type == 15 ? &data : nullptr;
        if (format_of(static_cast<uint8_t>(type)) == nullptr) {
            expect_refusal(msg, {4, 0, 0, "header.type"});
        } else {
            expect_sealed(msg);
        }
    }
}

TEST(Seal, FaultsCountTheHeaderText)
{
    mdm_msg_t msg = message_of<&mdm_body_t::pwd>(3, 40, 1, nullptr);
    msg.hdr_text = borrowed("abc");
    expect_refusal(msg, {body_offset + 3, 0, 0, "pwd.data"});

    const Cells null_alone = cells({nullptr});
    msg = message_of<&mdm_body_t::kiosk>(45, 618, 1, null_alone.get());
    msg.hdr_text = borrowed("abc");
    expect_refusal(msg, {body_offset + 3 + 12, 0, 8, "kiosk.keys"});
}

TEST(Seal, NobodyNeedsToAskForTheFault)
{
    mdm_msg_t msg = message_of<&mdm_body_t::res>(33, 1, 2, nullptr);
    const mdm_msg_t before = msg;
    uint32_t length = untouched_length;
    EXPECT_EQ(ipc_seal(&msg, &length, nullptr), nullptr);
    EXPECT_EQ(length, untouched_length);
    EXPECT_TRUE(msg == before);

    msg.body.res.data = some_bytes;
    uint8_t *buffer = ipc_seal(&msg, &length, nullptr);
    EXPECT_NE(buffer, nullptr);
    EXPECT_EQ(length, 54U);
    g_free(buffer);
}

// The log holds no text of a message. A refusal logs one line.
TEST(Seal, LogsItsEntryAndItsExit)
{
    for (const GoodMessage &good : good_messages()) {
        MDM_AUTO_CLOSE mdm_msg_t *msg =
            ipc_open(good.bytes.data(), static_cast<uint32_t>(good.bytes.size()), nullptr);
        ASSERT_NE(msg, nullptr);
        LogRecorder log;
        uint32_t length = 0;
        uint8_t *sealed = ipc_seal(msg, &length, nullptr);
        const std::vector<LogLine> lines = log.take();
        ASSERT_EQ(lines.size(), sealed == nullptr ? 3U : 2U) << good.name;
        EXPECT_EQ(lines.front(), enter(from::ipc_seal));
        EXPECT_EQ(lines.back(), leave(from::ipc_seal));
        if (sealed == nullptr) {
            EXPECT_EQ(lines[1].level, MDM_LOG_CRITICAL);
            EXPECT_THAT(lines[1].text, HasSubstr("Refused: "));
        }
        g_free(sealed);
    }
}

TEST(Seal, WhatWasReceivedIsSealedAsSerialisedIfItIsWhole)
{
    for (const GoodMessage &good : good_messages()) {
        SCOPED_TRACE(good.name);
        MDM_AUTO_CLOSE mdm_msg_t *msg =
            ipc_open(good.bytes.data(), static_cast<uint32_t>(good.bytes.size()), nullptr);
        ASSERT_NE(msg, nullptr);
        const bool was_refused = is_refused(*msg);
        EXPECT_EQ(was_refused, !good.may_be_sent_on)
            << "tests/support/messages.cpp says whether it may be sent on";
        if (!was_refused) {
            expect_sealed(*msg);
        }
    }
}

TEST(Seal, ManyThreadsMaySealAtOnce)
{
    const auto seal_all = [](std::vector<Bytes> &sealed) {
        for (const GoodMessage &good : good_messages()) {
            MDM_AUTO_CLOSE mdm_msg_t *msg =
                ipc_open(good.bytes.data(), static_cast<uint32_t>(good.bytes.size()), nullptr);
            uint32_t length = 0;
            uint8_t *buffer = ipc_seal(msg, &length, nullptr);
            // The lists of one category send an address.
            const bool is_list = good.form != nullptr && good.form->is_in_param;
            sealed.push_back(is_list ? taken(buffer, 0) : taken(buffer, length));
        }
    };
    std::vector<Bytes> expected;
    seal_all(expected);
    std::array<std::vector<Bytes>, 4> seen;
    {
        std::vector<std::jthread> threads;
        for (std::vector<Bytes> &sealed : seen) {
            threads.emplace_back([&] { seal_all(sealed); });
        }
    }
    for (const std::vector<Bytes> &sealed : seen) {
        EXPECT_EQ(sealed, expected);
    }
}

// Categories whose bodies hold nothing that could be missing.

TEST(SealAdmin, IsNeverRefused)
{
    for (const uint32_t type : {0U, 1U, UINT32_MAX}) {
        mdm_msg_t msg = message(1);
        msg.body.admin = {type, some_aux, 7, a, nullptr, -1};
        expect_sealed(msg);
        msg.body.admin = {type, some_aux, 7, nullptr, bc, -1};
        expect_sealed(msg);
    }
}

TEST(SealLogManager, IsNeverRefused)
{
    for (const uint32_t type : {0U, 638U, UINT32_MAX}) {
        mdm_msg_t msg = message(51);
        msg.body.log_manager.type = type;
        expect_sealed(msg);
        msg.body.log_manager.value.text = a;
        expect_sealed(msg);
    }
}

TEST(SealPlatform, IsNeverRefused)
{
    for (const uint32_t type : {0U, 439U, 440U, UINT32_MAX}) {
        mdm_msg_t msg = message(53);
        msg.body.platform = {type, some_aux, nullptr, some_aux, 7, 1};
        expect_sealed(msg);
        msg.body.platform.text = a;
        expect_sealed(msg);
    }
}

TEST(SealCallbacks, AreNeverRefused)
{
    for (const uint32_t type : {0U, 1U, 2U, UINT32_MAX}) {
        mdm_msg_t app = message(61);
        app.body.app_cb = {type, some_aux, 1, 2, 0, some_aux, 6, a, nullptr};
        expect_sealed(app);
        mdm_msg_t misc = message(63);
        misc.body.misc_cb = {type, some_aux, 1, 2, UINT32_MAX, some_aux, 6, 7, bc};
        expect_sealed(misc);
    }
}

TEST(SealHeadAlone, RefusesWhatCannotTravel)
{
    const Sender<&mdm_body_t::location> location{49, 50};
    const Sender<&mdm_body_t::roaming_res> roaming_res{16};
    for (const int32_t data_size : {0, 1, -1, INT32_MAX, INT32_MIN}) {
        location.is_sealed({1}, {{data_size, nullptr}});
        location.is_refused({1}, {{data_size, some_bytes, unfit("location.data_size")}});
        roaming_res.is_sealed({1}, {{data_size, nullptr}});
        roaming_res.is_refused({1}, {{data_size, some_bytes, unfit("roaming_res.data_size")}});
    }
}

// Raw bytes.

template <auto category>
void expect_single_list(uint8_t message_type, const std::string &name)
{
    const std::string data_size = name + ".data_size";
    const std::string data = name + ".data";
    const Sender<category> sender{message_type, static_cast<uint8_t>(message_type + 1)};
    sender.is_refused({0, 1}, {{1, nullptr, missing(data.c_str())},
                               {INT32_MAX, nullptr, missing(data.c_str())},
                               {INT32_MAX, some_bytes, no_size}});
    for (const int32_t negative : {-1, -4, -12, -13, -44, -45, -52, -53, INT32_MIN}) {
        sender.is_refused({0, 1}, {{negative, some_bytes, unfit(data_size.c_str())},
                                   {negative, nullptr, unfit(data_size.c_str())}});
    }
    sender.is_refused({0, 1}, {{0, some_bytes, unfit(data_size.c_str())}});
    sender.is_sealed({0, 1}, {{0, nullptr}, {1, some_bytes}, {10, some_bytes}});
}

TEST(SealSingleList, RefusesASizeThatIsNotThatOfTheBytes)
{
    expect_single_list<&mdm_body_t::browser>(23, "browser");
    expect_single_list<&mdm_body_t::date_time>(25, "date_time");
    expect_single_list<&mdm_body_t::remote>(27, "remote");
    expect_single_list<&mdm_body_t::vpn>(29, "vpn");
    expect_single_list<&mdm_body_t::firewall>(31, "firewall");
    expect_single_list<&mdm_body_t::res>(33, "res");
    expect_single_list<&mdm_body_t::enterprise>(37, "enterprise");
}

// Records, strings and lists.

TEST(SealPwd, RefusesWhatIsMissing)
{
    const Sender<&mdm_body_t::pwd> pwd{3, 4};
    mdm_pwd_policy_t empty{};
    mdm_pwd_policy_t policy{1, 2, 3, 4, 5, 6, 7, 8, 9, a, bc};
    pwd.is_refused({0, 40},
                   {{1, nullptr, missing("pwd.data")}, {INT32_MAX, nullptr, missing("pwd.data")}});
    pwd.is_refused({0}, {{INT32_MAX, some_bytes, no_size}});
    pwd.is_sealed({40}, {{1, &policy}, {INT32_MAX, &policy}, {1, &empty}});
    pwd.is_sealed({0}, {{10, some_bytes}});
    pwd.is_sealed({0, 40}, {{0, nullptr}, {-1, nullptr}, {INT32_MIN, nullptr}});
    pwd.is_refused({0}, {{0, some_bytes, unfit("pwd.data_size")},
                         {-1, some_bytes, unfit("pwd.data_size")},
                         {INT32_MIN, some_bytes, unfit("pwd.data_size")}});
    pwd.is_refused({40},
                   {{0, &policy, unfit("pwd.data_size")}, {-1, &policy, unfit("pwd.data_size")}});
}

TEST(SealSecurity, RefusesMissingStringsAndNullElements)
{
    const Sender<&mdm_body_t::security> security{5, 6};
    const Cells null_first = cells({nullptr, a});
    const Cells null_between = cells({a, nullptr, bc});
    const Cells null_last = cells({a, nullptr});
    const Cells null_alone = cells({nullptr});
    const Cells strings = cells({a, borrowed(""), bc});
    security.is_refused({68, 69}, {{1, nullptr, missing("security.data")},
                                   {INT32_MAX, nullptr, missing("security.data")},
                                   {0, null_first.get(), {52, 0, 4, "security.strings"}},
                                   {0, null_between.get(), {52, 0, 9, "security.strings"}},
                                   {-1, null_last.get(), {52, 0, 9, "security.strings"}},
                                   {1, null_alone.get(), {52, 0, 4, "security.strings"}}});
    security.is_sealed({68, 69},
                       {{0, nullptr}, {-1, nullptr}, {0, strings.get()}, {-1, strings.get()}});
}

TEST(SealSecurity, RefusesMissingAccountsAndNullElements)
{
    const Sender<&mdm_body_t::security> security{5, 6};
    mdm_security_account_t account{};
    const Cells null_between = cells({&account, nullptr, &account});
    const Cells null_alone = cells({nullptr});
    const Cells accounts = cells({&account, &account});
    security.is_refused({70, 71}, {{1, nullptr, missing("security.data")},
                                   {0, null_between.get(), missing("security.accounts")},
                                   {1, null_alone.get(), missing("security.accounts")}});
    security.is_sealed({70, 71}, {{0, nullptr}, {0, accounts.get()}, {INT32_MIN, accounts.get()}});
}

// Q-GUARDED-4
TEST(SealSecurity, RefusesANegativeSizeAndMissingBytes)
{
    const Sender<&mdm_body_t::security> security{5, 6};
    mdm_security_item_t item{1, a, 2, nullptr, bc};
    security.is_refused({0, 57, 77}, {{4, nullptr, missing("security.data")},
                                      {-1, some_bytes, unfit("security.data_size")},
                                      {-1, nullptr, unfit("security.data_size")},
                                      {-12, some_bytes, unfit("security.data_size")},
                                      {INT32_MIN, some_bytes, unfit("security.data_size")},
                                      {0, some_bytes, unfit("security.data_size")},
                                      {INT32_MAX, some_bytes, no_size}});
    security.is_sealed({0, 57, 77}, {{0, nullptr}, {10, some_bytes}});
    security.is_sealed({56, 76}, {{0, &item}, {-1, &item}, {1, nullptr}, {INT32_MIN, nullptr}});
}

const std::vector<uint32_t> wifi_pairs = {305, 307, 309, 311, 313, 315, 317,
                                          324, 326, 328, 330, 332, 339};
const std::vector<uint32_t> wifi_lists = {290, 344, 346, 348, 349, 350, 352};

TEST(SealWifi, RefusesMissingRecordsAndBytes)
{
    const Sender<&mdm_body_t::wifi> wifi{7, 8};
    const std::initializer_list<Refused> refused = {{1, nullptr, missing("wifi.data")},
                                                    {INT32_MAX, nullptr, missing("wifi.data")}};
    wifi.is_refused(wifi_pairs, refused);
    wifi.is_refused({88, 319, 345, 0, 87}, refused);
    wifi.is_sealed(wifi_pairs, {{0, nullptr}, {-1, nullptr}});
    wifi.is_sealed({88, 319, 345, 0, 87}, {{0, nullptr}, {-1, nullptr}, {INT32_MIN, nullptr}});
    mdm_wifi_dhcp_t texts{a, a, a, a, a};  // any other payload, too
    const std::initializer_list<Refused> dropped = {{0, &texts, unfit("wifi.data_size")},
                                                    {-1, &texts, unfit("wifi.data_size")},
                                                    {INT32_MIN, &texts, unfit("wifi.data_size")}};
    wifi.is_refused(wifi_pairs, dropped);
    wifi.is_refused({88, 319, 345, 0, 87}, dropped);
}

TEST(SealWifi, RefusesNullElements)
{
    const Sender<&mdm_body_t::wifi> wifi{7, 8};
    const Cells null_first = cells({nullptr, a});
    const Cells null_last = cells({a, nullptr});
    const Cells ssids = cells({a, borrowed(""), bc});
    wifi.is_refused(wifi_lists, {{1, null_first.get(), missing("wifi.ssids")},
                                 {50, null_last.get(), missing("wifi.ssids")}});
    wifi.is_refused(wifi_lists, {{0, ssids.get(), unfit("wifi.data_size")},
                                 {-1, ssids.get(), unfit("wifi.data_size")},
                                 {0, null_last.get(), unfit("wifi.data_size")}});
    wifi.is_sealed(wifi_lists, {{1, nullptr}, {0, nullptr}, {-1, nullptr}});
    wifi.is_sealed(wifi_lists, {{INT32_MAX, ssids.get()}});
}

// Q-GUARDED-3
TEST(SealWifi, RefusesMoreZerosThanASenderMeans)
{
    const Sender<&mdm_body_t::wifi> wifi{7, 8};
    mdm_wifi_dhcp_t texts{a, a, a, a, a};  // a pair and a triple, too
    const std::initializer_list<Refused> refused = {{65537, &texts, unfit("wifi.data_size")},
                                                    {INT32_MAX, &texts, unfit("wifi.data_size")}};
    const std::initializer_list<Sealed> sealed = {{1, &texts}, {4000, &texts}, {65536, &texts}};
    wifi.is_refused(wifi_pairs, refused);
    wifi.is_refused({88, 319}, refused);
    wifi.is_sealed(wifi_pairs, sealed);
    wifi.is_sealed({88, 319}, sealed);
}

TEST(SealWifi, RefusesRawBytesThatNoMessageHasRoomFor)
{
    const Sender<&mdm_body_t::wifi> wifi{7, 8};
    wifi.is_refused({87}, {{INT32_MAX, some_bytes, no_size}});
    wifi.is_sealed({87}, {{10, some_bytes}});
}

TEST(SealWifi, RefusesANetworkWithoutTheTextsOfItsDetail)
{
    const Sender<&mdm_body_t::wifi> wifi{7, 8};
    mdm_wifi_detail_t detail{};
    for (int32_t kind = -1; kind < 12; ++kind) {
        mdm_wifi_network_t network{a, kind, nullptr};
        if (kind >= 2 && kind <= 7) {
            wifi.is_refused({345}, {{1, &network, missing("wifi.network.detail")}});
        } else {  // a number that is not there arrives as 0
            wifi.is_sealed({345}, {{1, &network}});
        }
        wifi.is_refused({345}, {{0, &network, unfit("wifi.data_size")},
                                {-1, &network, unfit("wifi.data_size")}});
        network.detail = &detail;
        wifi.is_sealed({345}, {{1, &network}, {INT32_MAX, &network}});
    }
}

TEST(SealBluetooth, RefusesNullElements)
{
    const Sender<&mdm_body_t::bluetooth> bluetooth{9, 10};
    const std::vector<uint32_t> lists = {91,  220, 221, 222, 223, 224, 225,
                                         227, 230, 231, 233, 234, 235, 237};
    const Cells null_first = cells({nullptr, a});
    const Cells null_last = cells({a, nullptr});
    const Cells names = cells({a, borrowed(""), bc});
    bluetooth.is_refused(lists, {{1, null_first.get(), missing("bluetooth.names")},
                                 {50, null_last.get(), missing("bluetooth.names")}});
    bluetooth.is_sealed(lists, {{1, nullptr}, {1, names.get()}, {INT32_MAX, names.get()}});
    bluetooth.is_sealed(lists, {{0, nullptr}, {-1, nullptr}});
    bluetooth.is_refused(lists, {{0, names.get(), unfit("bluetooth.data_size")},
                                 {-1, null_last.get(), unfit("bluetooth.data_size")}});
}

TEST(SealBluetooth, RefusesMissingBytes)
{
    const Sender<&mdm_body_t::bluetooth> bluetooth{9, 10};
    bluetooth.is_refused({0, 90, 238}, {{3, nullptr, missing("bluetooth.data")},
                                        {INT32_MAX, nullptr, missing("bluetooth.data")},
                                        {INT32_MAX, some_bytes, no_size}});
    bluetooth.is_refused({0, 90, 238}, {{0, some_bytes, unfit("bluetooth.data_size")},
                                        {-1, some_bytes, unfit("bluetooth.data_size")}});
    bluetooth.is_sealed({0, 90, 238}, {{0, nullptr}, {-1, nullptr}, {10, some_bytes}});
}

TEST(SealEas, RefusesMissingRecordsAndNullElements)
{
    const Sender<&mdm_body_t::eas> eas{11, 12};
    mdm_eas_account_t account{};
    mdm_eas_value_t value{1, a};
    const Cells null_first = cells({nullptr, &account});
    const Cells null_last = cells({&account, nullptr});
    const Cells accounts = cells({&account, &account});
    eas.is_refused({98, 104, 106, 0},
                   {{1, nullptr, missing("eas.data")}, {0, some_bytes, unfit("eas.data_size")}});
    eas.is_refused({98, 106, 0},
                   {{-1, nullptr, missing("eas.data")}, {INT32_MIN, nullptr, missing("eas.data")}});
    eas.is_refused({106}, {{1, null_first.get(), missing("eas.accounts")},
                           {-1, null_last.get(), missing("eas.accounts")}});
    eas.is_sealed({98, 104, 106, 0}, {{0, nullptr}});
    eas.is_sealed({98}, {{1, &account}, {-1, &account}});
    eas.is_sealed({106}, {{1, accounts.get()}, {-1, accounts.get()}});
    eas.is_sealed({0, 97}, {{1, &value}, {INT32_MIN, &value}});
}

// Three empty texts take 12 bytes, which are added to the size that is there; a sum of 0 would drop
// them.
TEST(SealEas, RefusesSettingsWhoseSizeDoesNotHoldThem)
{
    const Sender<&mdm_body_t::eas> eas{11, 12};
    mdm_eas_account_t account{};
    for (const int32_t data_size : {-1, -8, -11, -12, -13, -24, INT32_MIN, 65537, INT32_MAX}) {
        eas.is_refused({104}, {{data_size, &account, unfit("eas.data_size")},
                               {data_size, nullptr, unfit("eas.data_size")}});
    }
    eas.is_sealed({104}, {{1, &account}, {4000, &account}, {65536, &account}});
    account.str8 = account.str10 = account.str13 = a;
    eas.is_refused({104}, {{-15, &account, unfit("eas.data_size")}});
}

TEST(SealEmail, RefusesMissingRecordsAndNullElements)
{
    const Sender<&mdm_body_t::email> email{39, 40};
    mdm_email_account_t account{};
    mdm_email_value_t value{1, a};
    const Cells null_first = cells({nullptr, &account});
    const Cells null_last = cells({&account, nullptr});
    const Cells null_alone = cells({nullptr});
    const Cells accounts = cells({&account, &account});
    email.is_refused({359, 362, 363, 0},
                     {{1, nullptr, missing("email.data")}, {-1, nullptr, missing("email.data")}});
    email.is_refused({363}, {{1, null_first.get(), {52, 0, 4, "email.accounts"}},
                             {1, null_last.get(), {52, 0, 92, "email.accounts"}},
                             {-1, null_alone.get(), {52, 0, 4, "email.accounts"}}});
    email.is_sealed({359, 362, 363, 0}, {{0, nullptr}});
    email.is_refused({359, 362, 363, 0}, {{0, some_bytes, unfit("email.data_size")}});
    email.is_sealed({359, 362}, {{1, &account}, {-1, &account}, {INT32_MIN, &account}});
    email.is_sealed({363}, {{1, accounts.get()}, {-1, accounts.get()}});
    email.is_sealed({0, 358}, {{1, &value}, {INT32_MAX, &value}});
}

TEST(SealApn, RefusesMissingRecordsAndNullElements)
{
    const Sender<&mdm_body_t::apn> apn{21, 22};
    mdm_apn_account_t profile{};
    const Cells null_first = cells({nullptr, &profile});
    const Cells null_last = cells({&profile, nullptr});
    const Cells profiles = cells({&profile, &profile});
    apn.is_refused({387, 393, 389, 390, 391, 0, 388},
                   {{1, nullptr, missing("apn.data")}, {0, some_bytes, unfit("apn.data_size")}});
    apn.is_refused({389, 390, 391}, {{-1, nullptr, missing("apn.data")}});
    apn.is_refused({389, 390, 391}, {{1, null_first.get(), missing("apn.profiles")},
                                     {-1, null_last.get(), missing("apn.profiles")}});
    apn.is_sealed({387, 393, 389, 390, 391, 0, 388}, {{0, nullptr}});
    apn.is_sealed({389, 390, 391}, {{1, profiles.get()}, {-1, profiles.get()}});
}

// An empty profile takes 60 bytes, which are added to the size that is there; a sum of 0 would drop
// it.
TEST(SealApn, RefusesAProfileWhoseSizeDoesNotHoldIt)
{
    const Sender<&mdm_body_t::apn> apn{21, 22};
    mdm_apn_account_t profile{};
    for (const int32_t data_size : {-1, -59, -60, -61, -72, INT32_MIN, 65537, INT32_MAX}) {
        apn.is_refused({387, 393}, {{data_size, &profile, unfit("apn.data_size")},
                                    {data_size, nullptr, unfit("apn.data_size")}});
    }
    apn.is_sealed({387, 393}, {{1, &profile}, {4000, &profile}, {65536, &profile}});
}

TEST(SealApn, RefusesRawBytesOfANegativeSize)
{
    const Sender<&mdm_body_t::apn> apn{21, 22};
    apn.is_refused({0, 388}, {{-1, some_bytes, unfit("apn.data_size")},
                              {-12, some_bytes, unfit("apn.data_size")},
                              {INT32_MIN, nullptr, unfit("apn.data_size")},
                              {INT32_MAX, some_bytes, no_size}});
    apn.is_sealed({0, 388}, {{10, some_bytes}});
}

TEST(SealApp, RefusesNullElements)
{
    const Sender<&mdm_body_t::app> app{13};
    const Cells null_between = cells({a, nullptr, bc});
    const Cells null_alone = cells({nullptr});
    const Cells names = cells({a, borrowed(""), bc});
    app.is_refused({4, 15}, {{1, null_between.get(), {56, 0, 9, "app.packages"}},
                             {INT32_MAX, null_alone.get(), {56, 0, 4, "app.packages"}}});
    app.is_sealed({4, 15}, {{1, nullptr}, {1, names.get()}, {INT32_MAX, names.get()}});
    app.is_sealed({4, 15}, {{0, nullptr}, {-1, nullptr}});
    app.is_refused({4, 15}, {{0, null_alone.get(), unfit("app.data_size")},
                             {-1, names.get(), unfit("app.data_size")}});
}

// Their receiver has two numbers to send on, whatever size it was told.
TEST(SealApp, RefusesTwoNumbersThatAreNotThereOrOfAnotherSize)
{
    const Sender<&mdm_body_t::app> app{13};
    mdm_app_num_pair_t numbers{1, 2};
    for (const int32_t data_size : {1, 7, 9, 4000, INT32_MAX}) {
        app.is_refused({140, 141}, {{data_size, &numbers, unfit("app.data_size")},
                                    {data_size, nullptr, missing("app.data")}});
    }
    app.is_refused({140, 141}, {{8, nullptr, missing("app.data")}});
    app.is_refused({140, 141},
                   {{0, &numbers, unfit("app.data_size")}, {-1, &numbers, unfit("app.data_size")}});
    app.is_sealed({140, 141}, {{8, &numbers}, {0, nullptr}, {-1, nullptr}});
}

TEST(SealApp, RefusesAMissingPairAndMissingBytes)
{
    const Sender<&mdm_body_t::app> app{13};
    mdm_app_pair_t pair{a, nullptr};
    app.is_refused({184, 185, 0, 3, 186},
                   {{1, nullptr, missing("app.data")}, {INT32_MAX, nullptr, missing("app.data")}});
    app.is_refused({0, 3, 186}, {{INT32_MAX, some_bytes, no_size}});
    app.is_sealed({184, 185}, {{1, &pair}, {INT32_MAX, &pair}, {0, nullptr}, {-1, nullptr}});
    app.is_sealed({0, 3, 186}, {{10, some_bytes}, {0, nullptr}, {INT32_MIN, nullptr}});
    app.is_refused({184, 185, 0, 3, 186}, {{0, &pair, unfit("app.data_size")},
                                           {INT32_MIN, &pair, unfit("app.data_size")}});
}

TEST(SealAppRes, RefusesNullElementsAndMissingBytes)
{
    const Sender<&mdm_body_t::app_res> app_res{14};
    const std::vector<uint32_t> lists = {3, 155, 159, 162, 168, 169, 170, 171, 176, 177};
    const Cells null_between = cells({a, nullptr, bc});
    const Cells names = cells({a, borrowed(""), bc});
    app_res.is_refused(lists, {{1, null_between.get(), {56, 0, 9, "app_res.packages"}}});
    app_res.is_refused({0, 2, 178}, {{5, nullptr, missing("app_res.data")},
                                     {INT32_MAX, nullptr, missing("app_res.data")},
                                     {INT32_MAX, some_bytes, no_size}});
    app_res.is_sealed(lists, {{1, nullptr}, {1, names.get()}, {0, nullptr}, {-1, nullptr}});
    app_res.is_sealed({0, 2, 178}, {{10, some_bytes}, {0, nullptr}, {-1, nullptr}});
    app_res.is_refused(lists, {{0, names.get(), unfit("app_res.data_size")},
                               {-1, null_between.get(), unfit("app_res.data_size")}});
    app_res.is_refused({0, 2, 178}, {{0, some_bytes, unfit("app_res.data_size")},
                                     {-1, some_bytes, unfit("app_res.data_size")}});
}

TEST(SealAppRes, RefusesNullItemsAndItemsWithoutAName)
{
    const Sender<&mdm_body_t::app_res> app_res{14};
    mdm_app_res_item_t item{a, 7};
    mdm_app_res_item_t nameless{nullptr, 7};
    mdm_app_res_item_t empty{borrowed(""), 7};
    const Cells null_last = cells({&item, nullptr});
    const Cells nameless_first = cells({&nameless, &item});
    const Cells nameless_last = cells({&item, &nameless});
    const Cells items = cells({&item, &empty});
    app_res.is_refused({140, 141, 142},
                       {{1, null_last.get(), {56, 0, 13, "app_res.items"}},
                        {1, nameless_first.get(), {60, 0, 17, "app_res.item.name"}},
                        {1, nameless_last.get(), {69, 0, 8, "app_res.item.name"}}});
    app_res.is_sealed({140, 141, 142}, {{1, nullptr}, {1, items.get()}, {0, nullptr}});
    app_res.is_refused({140, 141, 142}, {{0, items.get(), unfit("app_res.data_size")}});
}

TEST(SealAppRes, RefusesNullElementsOfEitherListOfControls)
{
    const Sender<&mdm_body_t::app_res> app_res{14};
    const Cells null_name = cells({nullptr});
    const Cells names = cells({a, bc});
    mdm_app_control_info_t empty{7, nullptr};
    mdm_app_control_info_t corrupted{8, null_name.get()};
    mdm_app_control_info_t whole{9, names.get()};
    const Cells null_between = cells({&empty, nullptr, &empty});
    const Cells corrupted_alone = cells({&corrupted});
    const Cells corrupted_last = cells({&whole, &corrupted});
    const Cells controls = cells({&whole, &empty, &whole});
    app_res.is_refused({172, 173, 174, 175},
                       {{1, null_between.get(), {56, 0, 12, "app_res.controls"}},
                        {1, corrupted_alone.get(), {64, 0, 4, "app_res.control.pkg_list"}},
                        {1, corrupted_last.get(), {83, 0, 4, "app_res.control.pkg_list"}}});
    app_res.is_sealed({172, 173, 174, 175}, {{1, nullptr}, {1, controls.get()}, {0, nullptr}});
    app_res.is_refused({172, 173, 174, 175}, {{0, controls.get(), unfit("app_res.data_size")}});
}

TEST(SealApp, FaultsCountThePackageName)
{
    const Cells null_alone = cells({nullptr});
    mdm_msg_t msg = message_of<&mdm_body_t::app>(13, 4, 2, null_alone.get());
    msg.body.app.pkg = bc;
    expect_refusal(msg, {58, 0, 4, "app.packages"});
    msg = message_of<&mdm_body_t::app_res>(14, 3, 2, null_alone.get());
    msg.body.app_res.pkg = bc;
    expect_refusal(msg, {58, 0, 4, "app_res.packages"});
}

TEST(SealRoaming, RefusesAMissingRecordWhateverTheSize)
{
    const Sender<&mdm_body_t::roaming> roaming{15};
    mdm_roaming_data_t empty{};
    mdm_roaming_data_t named{a};
    for (const int32_t data_size : {0, 1, -1, INT32_MAX, INT32_MIN}) {
        roaming.is_refused({1}, {{data_size, nullptr, missing("roaming.data")}});
        roaming.is_sealed({1}, {{data_size, &empty}, {data_size, &named}});
    }
}

TEST(SealMisc, RefusesAMissingArrayAndOneOfANegativeLength)
{
    const Sender<&mdm_body_t::misc> misc{17, 18};
    std::array<char *, 3> texts = {a, nullptr, bc};
    misc.is_refused({122}, {{1, nullptr, missing("misc.data")},
                            {-1, nullptr, unfit("misc.data_size")},
                            {-1, texts.data(), unfit("misc.data_size")},
                            {INT32_MIN, texts.data(), unfit("misc.data_size")},
                            {0, texts.data(), unfit("misc.data_size")}});
    misc.is_sealed({122}, {{0, nullptr}, {3, texts.data()}});
}

TEST(SealMisc, RefusesMissingRecordsAndBytes)
{
    const Sender<&mdm_body_t::misc> misc{17, 18};
    mdm_book_info_t texts{a, nullptr};  // a text and a pair, too
    misc.is_refused({124, 125, 126, 281, 283, 288, 289}, {{1, nullptr, missing("misc.data")},
                                                          {-1, nullptr, missing("misc.data")},
                                                          {0, &texts, unfit("misc.data_size")}});
    misc.is_refused({0, 121}, {{1, nullptr, missing("misc.data")},
                               {-1, some_bytes, unfit("misc.data_size")},
                               {-12, some_bytes, unfit("misc.data_size")},
                               {INT32_MIN, nullptr, unfit("misc.data_size")},
                               {0, some_bytes, unfit("misc.data_size")},
                               {INT32_MAX, some_bytes, no_size}});
    misc.is_sealed({124, 125, 126, 281, 283, 288, 289},
                   {{1, &texts}, {-1, &texts}, {INT32_MAX, &texts}, {0, nullptr}});
    misc.is_sealed({123}, {{0, nullptr}, {40, nullptr}, {-1, nullptr}, {INT32_MAX, nullptr}});
    misc.is_refused({123, 127, 128}, {{0, some_bytes, unfit("misc.data_size")},
                                      {40, some_bytes, unfit("misc.data_size")},
                                      {-1, some_bytes, unfit("misc.data_size")}});
    misc.is_sealed({0, 121}, {{10, some_bytes}, {0, nullptr}});
}

TEST(SealMisc, RefusesNullElementsOfTheListInParam)
{
    const Cells null_between = cells({a, nullptr, bc});
    const Cells names = cells({a, borrowed(""), bc});
    for (const uint32_t type : {127U, 128U}) {
        for (const int32_t data_size : {0, 1, -1, INT32_MIN}) {
            mdm_msg_t msg = message_of<&mdm_body_t::misc>(17, type, data_size, nullptr);
            msg.body.misc.param_list = null_between.get();
            expect_refusal(msg, {52, 0, 19, "misc.param_list"});
            msg.body.misc.param_list = names.get();
            expect_sealed(msg);
            msg.body.misc.param_list = nullptr;
            expect_sealed(msg);
        }
    }
}

TEST(SealPhoneRes, RefusesMissingRecordsAndBytes)
{
    const Sender<&mdm_body_t::phone_res> phone_res{35, 36};
    const std::vector<uint32_t> all = {394, 421, 422, 423, 438, 439, 440, 441,
                                       449, 452, 455, 393, 450, 451, 456};
    phone_res.is_refused(all, {{1, nullptr, missing("phone_res.data")},
                               {INT32_MAX, nullptr, missing("phone_res.data")}});
    phone_res.is_refused({393, 450, 451, 456}, {{INT32_MAX, some_bytes, no_size}});
    phone_res.is_refused(all, {{0, some_bytes, unfit("phone_res.data_size")},
                               {-1, some_bytes, unfit("phone_res.data_size")},
                               {-12, some_bytes, unfit("phone_res.data_size")},
                               {INT32_MIN, some_bytes, unfit("phone_res.data_size")}});
    phone_res.is_sealed(all, {{0, nullptr}, {-1, nullptr}, {INT32_MIN, nullptr}});
    phone_res.is_sealed({393, 450, 451, 456}, {{10, some_bytes}});
}

TEST(SealPhoneRes, RefusesAMissingDetail)
{
    const Sender<&mdm_body_t::phone_res> phone_res{35, 36};
    mdm_phone_res_item_t item{a, 7, nullptr};
    mdm_phone_res_detail_t detail{1, 2, bc};
    mdm_phone_res_ext_t whole{a, 7, &detail};
    mdm_phone_res_ext_t broken{a, 7, nullptr};
    for (const int32_t data_size : {1, INT32_MAX}) {
        phone_res.is_refused({422}, {{data_size, &broken, missing("phone_res.ext.detail")}});
        phone_res.is_sealed({422}, {{data_size, &whole}});
        phone_res.is_sealed({394, 421, 423, 438, 441, 449, 452, 455}, {{data_size, &item}});
    }
}

// What was received of them are bytes, and may hold any pointer.
TEST(SealPhoneRes, RefusesBytesThatWouldBeSizedAsARecord)
{
    const Sender<&mdm_body_t::phone_res> phone_res{35, 36};
    for (const int32_t data_size : {1, 10, INT32_MAX}) {
        phone_res.is_refused({439, 440}, {{data_size, some_bytes, unfit("phone_res.type")}});
    }
}

TEST(SealKiosk, RefusesWhatIsMissingAndNegativeSizes)
{
    const Sender<&mdm_body_t::kiosk> kiosk{45, 46};
    kiosk.is_refused(
        {612, 614, 618, 619, 621, 0, 620},
        {{1, nullptr, missing("kiosk.data")}, {0, some_bytes, unfit("kiosk.data_size")}});
    kiosk.is_refused({612, 614, 618, 619, 621}, {{-1, nullptr, missing("kiosk.data")}});
    kiosk.is_refused({0, 611, 620, 622}, {{-1, some_bytes, unfit("kiosk.data_size")},
                                          {-12, some_bytes, unfit("kiosk.data_size")},
                                          {INT32_MIN, nullptr, unfit("kiosk.data_size")},
                                          {INT32_MAX, some_bytes, no_size}});
    kiosk.is_sealed({612, 614, 618, 619, 621, 0, 620}, {{0, nullptr}});
    kiosk.is_sealed({612, 614}, {{1, a}, {-1, a}, {1, borrowed("")}});
    kiosk.is_sealed({0, 611, 620, 622}, {{10, some_bytes}});
}

TEST(SealKiosk, RefusesNullElements)
{
    const Sender<&mdm_body_t::kiosk> kiosk{45, 46};
    uint32_t key = 7;
    mdm_kiosk_key_pair_t pair{1, 2};
    const Cells null_alone = cells({nullptr});
    const Cells null_key = cells({&key, nullptr, &key});
    const Cells null_pair = cells({nullptr, &pair});
    const Cells keys = cells({&key, &key});
    const Cells pairs = cells({&pair, &pair});
    kiosk.is_refused({618, 621}, {{1, null_alone.get(), {52, 0, 8, "kiosk.keys"}},
                                  {-1, null_key.get(), {52, 0, 16, "kiosk.keys"}}});
    kiosk.is_refused({619}, {{1, null_alone.get(), {52, 0, 12, "kiosk.key_pairs"}},
                             {-1, null_pair.get(), {52, 0, 20, "kiosk.key_pairs"}}});
    kiosk.is_sealed({618, 621}, {{1, keys.get()}, {-1, keys.get()}});
    kiosk.is_sealed({619}, {{1, pairs.get()}, {-1, pairs.get()}});
}

TEST(SealContainer, RefusesWhatIsMissingAndNegativeSizes)
{
    const Sender<&mdm_body_t::container> container{47, 48};
    mdm_container_item_t item{1, a, nullptr};
    container.is_refused(
        {628, 629, 630, 631, 632},
        {{1, nullptr, missing("container.data")}, {0, some_bytes, unfit("container.data_size")}});
    container.is_refused({628, 629}, {{-1, nullptr, missing("container.data")}});
    container.is_refused({630, 631, 632}, {{-1, some_bytes, unfit("container.data_size")},
                                           {-12, some_bytes, unfit("container.data_size")},
                                           {INT32_MIN, nullptr, unfit("container.data_size")},
                                           {INT32_MAX, some_bytes, no_size}});
    container.is_sealed({628, 629, 630, 631, 632}, {{0, nullptr}});
    container.is_sealed({628, 629}, {{1, &item}, {-1, &item}, {INT32_MIN, &item}});
    container.is_sealed({630, 631, 632}, {{10, some_bytes}});
    container.is_sealed({0, 627, 633, 640}, {{5, nullptr}, {-1, nullptr}, {INT32_MAX, nullptr}});
    container.is_refused({0, 627, 633, 640}, {{0, some_bytes, unfit("container.data_size")},
                                              {9, some_bytes, unfit("container.data_size")}});
}

// The writer by itself: what no category asks of it, because each counts its bytes first.

using Write = void (*)(Writer &out);

// The file, the category's name, and the paths of its fields.
constexpr Log it_log("file\0it\0type\0param\0data_size\0it", Log::Function::silent);

void expect_too_long(Write write, const ipc_fault_t &expected)
{
    std::array<uint8_t, 8> buffer{};
    ipc_fault_t fault = untouched;
    Writer out(buffer.data(), 5, buffer.size(), it_log, fault);
    EXPECT_TRUE(out);
    write(out);
    EXPECT_FALSE(out);
    EXPECT_EQ(text_of(fault), text_of(expected));
    out.raw_bytes(some_bytes, 0);
    out.str(a, "too late");
    EXPECT_EQ(text_of(fault), text_of(expected));
    EXPECT_THAT(buffer, ::testing::Each(0));
}

TEST(SealWriter, WritesNothingThatDoesNotFit)
{
    expect_too_long([](Writer &out) { out.raw_bytes(some_bytes, 4); }, {5, 4, 3, "it"});
    expect_too_long([](Writer &out) { out.raw_bytes(some_bytes, INT32_MAX); },
                    {5, INT32_MAX, 3, "it"});
    expect_too_long([](Writer &out) { out.raw_bytes(some_bytes, -1); }, {5, UINT32_MAX, 3, "it"});
    expect_too_long([](Writer &out) { out.u32(7, "it"); }, {5, 4, 3, "it"});
    expect_too_long([](Writer &out) { out.str(nullptr, "it"); }, {5, 4, 3, "it"});
    expect_too_long([](Writer &out) { out.str(bc, "it"); }, {5, 4, 3, "it"});
    expect_too_long([](Writer &out) { out.gap(1, "it"); }, {5, 0, 3, "it"});
}

TEST(SealWriter, WritesNoHeadThatDoesNotFit)
{
    expect_too_long([](Writer &out) { out.message_head(mdm_msg_t{}); },
                    {5, 4, 3, "header.hdr_word1"});
    expect_too_long([](Writer &out) { out.body_head(mdm_pwd_info_t{}); }, {5, 4, 3, "type"});
}

TEST(SealWriter, NamesTheFirstWordOfAHeadThatDoesNotFit)
{
    std::array<uint8_t, 16> buffer{};
    ipc_fault_t fault = untouched;
    Writer out(buffer.data(), 6, buffer.size(), it_log, fault);
    out.body_head(mdm_pwd_info_t{});
    EXPECT_FALSE(out);
    EXPECT_EQ(text_of(fault), text_of({14, 4, 2, "data_size"}));
}

TEST(SealWriter, WritesWhatJustFits)
{
    std::array<uint8_t, 8> buffer{};
    ipc_fault_t fault = untouched;
    Writer out(buffer.data(), 0, buffer.size(), it_log, fault);
    out.str(bc, "it");
    const std::array<uint8_t, 2> bytes = {6, 7};
    out.raw_bytes(bytes.data(), 2);
    EXPECT_TRUE(out);
    EXPECT_THAT(buffer, ElementsAre(2, 0, 0, 0, 'b', 'c', 6, 7));
    out.raw_bytes(bytes.data(), 1);
    EXPECT_FALSE(out);
    EXPECT_EQ(text_of(fault), text_of({8, 1, 0, "it"}));
}

TEST(SealWriter, NeedsTheBytesOfATextBehindItsCount)
{
    std::array<uint8_t, 8> buffer{};
    ipc_fault_t fault = untouched;
    Writer out(buffer.data(), 3, buffer.size(), it_log, fault);
    out.str(bc, "it");
    EXPECT_FALSE(out);
    EXPECT_EQ(text_of(fault), text_of({7, 2, 1, "it"}));
    EXPECT_EQ(buffer[7], 0);
}

constexpr auto pair_fields = MDM_FIELDS(mdm_misc_str_pair_t, "it", first, second);

TEST(SealWriter, WritesNoRecordForWhoseWordsThereIsNoRoom)
{
    std::array<uint8_t, 8> buffer{};
    ipc_fault_t fault = untouched;
    Writer out(buffer.data(), 1, buffer.size(), it_log, fault);
    const mdm_misc_str_pair_t pair = {nullptr, nullptr};
    out.fields(&pair, pair_fields);
    EXPECT_FALSE(out);
    EXPECT_EQ(text_of(fault), text_of({5, 4, 3, "it.second"}));
}

TEST(SealWriter, WritesNoRecordForWhoseTextsThereIsNoRoom)
{
    std::array<uint8_t, 16> buffer{};
    ipc_fault_t fault = untouched;
    Writer out(buffer.data(), 0, buffer.size(), it_log, fault);
    const mdm_misc_str_pair_t pair = {bc, some_bytes};
    out.fields(&pair, pair_fields);
    EXPECT_FALSE(out);
    EXPECT_EQ(text_of(fault), text_of({10, 10, 6, "it.second"}));
}

// The stored size.

template <auto category>
int32_t stored_size(uint8_t message_type, uint32_t type, int32_t data_size, void *data)
{
    mdm_msg_t msg = message_of<category>(message_type, type, data_size, data);
    uint32_t length = 0;
    g_free(ipc_seal(&msg, &length, nullptr));
    return (msg.body.*category).data_size;
}

TEST(Seal, StoresTheSizesThatSerialisingStores)
{
    mdm_security_item_t item{1, a, 2, nullptr, bc};
    mdm_eas_account_t eas{};
    mdm_email_account_t email{};
    mdm_apn_account_t apn{};
    mdm_book_info_t book{a, bc};
    mdm_container_item_t container{1, a, bc};
    uint32_t key = 7;
    const Cells strings = cells({a, bc});
    const Cells keys = cells({&key, &key, &key});
    EXPECT_EQ(stored_size<&mdm_body_t::security>(5, 56, 99, &item), 19);
    EXPECT_EQ(stored_size<&mdm_body_t::security>(5, 56, 99, nullptr), 0);
    EXPECT_EQ(stored_size<&mdm_body_t::security>(5, 68, 99, strings.get()), 27);
    EXPECT_EQ(stored_size<&mdm_body_t::eas>(11, 104, 1, &eas), 13);
    EXPECT_EQ(stored_size<&mdm_body_t::eas>(11, 104, -12, &eas), -12);  // refused
    EXPECT_EQ(stored_size<&mdm_body_t::email>(39, 359, 1, &email), 64);
    EXPECT_EQ(stored_size<&mdm_body_t::apn>(21, 387, 1, &apn), 61);
    EXPECT_EQ(stored_size<&mdm_body_t::misc>(17, 281, 1, &book), 11);
    EXPECT_EQ(stored_size<&mdm_body_t::kiosk>(45, 618, 1, keys.get()), 12);
    EXPECT_EQ(stored_size<&mdm_body_t::container>(47, 628, 1, &container), 15);
}

TEST(Seal, AddsToASizeEachTimeAsSerialisingDoes)
{
    mdm_apn_account_t profile{};
    mdm_msg_t msg = message_of<&mdm_body_t::apn>(21, 387, 1, &profile);
    uint32_t length = 0;
    g_free(ipc_seal(&msg, &length, nullptr));
    EXPECT_EQ(length, 113U);
    g_free(ipc_seal(&msg, &length, nullptr));
    EXPECT_EQ(length, 173U);
    EXPECT_EQ(msg.body.apn.data_size, 121);
}

// Q-GUARDED-5
TEST(Seal, ARefusedSizeIsTakenBack)
{
    const Cells null_alone = cells({nullptr});
    mdm_msg_t msg = message_of<&mdm_body_t::kiosk>(45, 618, 77, null_alone.get());
    uint32_t length = 0;
    EXPECT_EQ(ipc_seal(&msg, &length, nullptr), nullptr);
    EXPECT_EQ(msg.body.kiosk.data_size, 77);
}

// A list whose owner knows its second cell only: what is written begins with the first, but is not
// counted from there.

mdm_msg_t message_of(const CategoryFormat &category, const Form &form, GList *list)
{
    mdm_msg_t msg = message(category.first_type());
    member_at<uint32_t>(&msg.body, 0) = *form.types.begin();
    member_at<int32_t>(&msg.body, category.data_size) = 1;
    if (form.is_in_param) {
        msg.body.misc.param_list = list;
    } else {
        member_at<GList *>(&msg.body, category.data) = list;
    }
    return msg;
}

ipc_fault_t fault_of_sealing(mdm_msg_t msg)
{
    ipc_fault_t fault = untouched;
    uint32_t length = 0;
    g_free(ipc_seal(&msg, &length, &fault));
    return fault;
}

// Calls `check` with each category and form that has a list, and an element that is sent.
template <class Check>
void for_each_list(Check check)
{
    for (const CategoryFormat &category : category_formats()) {
        for (const Form &form : category.forms) {
            if (form.payload == Payload::strings) {
                check(category, form, a);
            } else if (form.payload == Payload::records) {
                Bytes record(form.size);
                if (form.elements == Elements::nameless) {
                    member_at<char *>(record.data(), form.fields.front().offset) = a;
                }
                check(category, form, record.data());
            }
        }
    }
}

// Q-GUARDED-7
TEST(SealHalvedList, IsRefused)
{
    size_t lists = 0;
    for_each_list([&lists](const CategoryFormat &category, const Form &form, void *element) {
        ++lists;
        const Cells list = cells({element, element});
        expect_sealed(message_of(category, form, list.get()));
        const ipc_fault_t fault = fault_of_sealing(message_of(category, form, list->next));
        EXPECT_STREQ(fault.path, form.path);
        EXPECT_EQ(fault.offset, body_offset + 4 * category.head.size());
        EXPECT_EQ(fault.needed, 0U);
    });
    EXPECT_GE(lists, 14U);
}

TEST(SealHalvedList, IsRefusedWhereTheFirstElementIsNull)
{
    for_each_list([](const CategoryFormat &category, const Form &form, void *element) {
        const Cells list = cells({nullptr, element});
        EXPECT_TRUE(is_refused(message_of(category, form, list->next))) << form.path;
    });
}

TEST(SealHalvedList, IsRefusedWhereItIsAClients)
{
    const Cells names = cells({a, bc});
    const Cells broken_names = cells({nullptr, bc});
    mdm_app_control_info_t control{7, nullptr};
    const Cells controls = cells({&control, &control});
    for (GList *list : {names->next, broken_names->next}) {
        control.pkg_list = list;
        mdm_msg_t msg = message_of<&mdm_body_t::app_res>(14, 172, 1, controls.get());
        EXPECT_STREQ(fault_of_sealing(msg).path, "app_res.control.pkg_list");
    }
}

}  // namespace
}  // namespace mdm::test
