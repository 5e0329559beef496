// SPDX-License-Identifier: Apache-2.0
//
// ipc_seal() returns the bytes of ipc_serialize(), or refuses the message, says why and leaves
// nothing behind. For each category, messages that are refused stand beside similar ones that are
// sealed.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <iterator>
#include <string>
#include <string_view>
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

namespace mdm::test::guarded_seal_test {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Faults. A path that begins with a dot follows the category's name. Without a header text the body
// begins at 40.
constexpr ipc_fault_t in_body(const char *path)
{
    return {header_size, 0, 0, path};
}
constexpr ipc_fault_t missing_data = in_body(".data");
constexpr ipc_fault_t unfit_size = in_body(".data_size");
constexpr ipc_fault_t no_message_size = {0, 40, 0, "header.length"};

bool operator==(const mdm_msg_t &left, const mdm_msg_t &right)
{
    return std::memcmp(&left, &right, sizeof left) == 0;
}

// Every word of the body differs from the others, and there is no text.
mdm_msg_t message_of(const CategoryFormat &category, uint8_t message_type, uint32_t type,
                     int32_t data_size, void *data)
{
    mdm_msg_t msg = message(message_type);
    msg.hdr_aux = 0xBBBBBBBB;
    for (const Field &field : category.members) {
        if (field.type == Type::word) {
            member_at<uint32_t>(&msg.body, field.offset) =
                0xC0010000 + static_cast<uint32_t>(field.offset);
        }
    }
    if (form_of(category, type).is_in_param) {
        msg.body.misc.param_list = nullptr;
    }
    member_at<uint32_t>(&msg.body, 0) = type;
    member_at<int32_t>(&msg.body, category.data_size) = data_size;
    member_at<void *>(&msg.body, category.data) = data;
    return msg;
}

mdm_msg_t message_of(uint8_t message_type, uint32_t type, int32_t data_size, void *data)
{
    return message_of(*format_of(message_type), message_type, type, data_size, data);
}

// Refusals.

// Checks the trailer in each buffer that is released.
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

void expect_refusal(mdm_msg_t &msg, const ipc_fault_t &expected)
{
    const mdm_msg_t before = msg;
    uint32_t length = untouched_length;
    ipc_fault_t fault = untouched_fault;
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
    EXPECT_THAT(log.take(), ElementsAre(critical(from::ipc_seal, refusal_line(expected))));
}

// Untouched if the message is sealed.
ipc_fault_t fault_of_sealing(mdm_msg_t msg)
{
    ipc_fault_t fault = untouched_fault;
    uint32_t length = 0;
    g_free(ipc_seal(&msg, &length, &fault));
    return fault;
}

// Sealed messages.

Bytes taken(uint8_t *buffer, uint32_t length)
{
    if (buffer == nullptr) {
        return {};
    }
    Bytes bytes(buffer, buffer + length + trailer_size);
    g_free(buffer);
    return bytes;
}

// Sealing makes the bytes and the trailer of ipc_serialize(), and stores the same body.
void expect_sealed(mdm_msg_t msg)
{
    mdm_msg_t serialized = msg;
    uint32_t length = 0;
    ipc_fault_t fault = untouched_fault;
    AllocationTrace trace;
    uint8_t *buffer = ipc_seal(&msg, &length, &fault);
    trace.stop();
    ASSERT_NE(buffer, nullptr) << text_of(fault);
    EXPECT_TRUE(is_untouched(fault));
    EXPECT_THAT(trace.kept(), ElementsAre(Block{buffer, length + trailer_size}));

    const Bytes bytes = taken(buffer, length);
    EXPECT_NE(opened(first_bytes(bytes, length)), nullptr);
    uint8_t *expected = ipc_serialize(&serialized, &length);
    EXPECT_EQ(bytes, taken(expected, length));
    EXPECT_TRUE(msg == serialized);
}

// Bodies of some forms of a category, with every message type and every discriminator of each.
class Sender {
public:
    // Without names it has all forms.
    explicit Sender(std::string_view category, const std::vector<std::string_view> &forms = {})
        : category_(*std::ranges::find(category_formats(), category, &CategoryFormat::name))
    {
        size_t count = 0;
        for (const Form &form : category_.forms) {
            if (forms.empty() || std::ranges::find(forms, form.name) != forms.end()) {
                std::ranges::copy(discriminators_of(category_, form), std::back_inserter(types_));
                form_ = &form;
                ++count;
            }
        }
        EXPECT_TRUE(forms.empty() || count == forms.size()) << "no such form of " << category;
    }

    void is_refused(const std::vector<int32_t> &sizes, void *data, const ipc_fault_t &fault) const
    {
        const bool is_in_category = *fault.path == '.';
        const std::string path = (is_in_category ? category_.name : "") + std::string(fault.path);
        const ipc_fault_t expected = {fault.offset, fault.needed, fault.left, path.c_str()};
        for_each(sizes, data, [&](mdm_msg_t &msg) { expect_refusal(msg, expected); });
    }

    void is_sealed(const std::vector<int32_t> &sizes, void *data) const
    {
        for_each(sizes, data, expect_sealed);
    }

    // A payload is sealed with any size that announces it, and refused with another size. A message
    // without the payload is sealed if no size announces one, or if the payload is a list.
    void is_sealed_if_announced(void *payload) const
    {
        if (category_.announced == Announced::nonzero) {
            is_refused({1, -1, INT32_MIN}, nullptr, missing_data);
            is_refused({0}, payload, unfit_size);
            is_sealed({1, -1, INT32_MIN, INT32_MAX}, payload);
            return is_sealed({0}, nullptr);
        }
        const bool is_list =
            form_->payload == Payload::strings || form_->payload == Payload::records;
        is_list ? is_sealed({1, INT32_MAX}, nullptr)
                : is_refused({1, INT32_MAX}, nullptr, missing_data);
        is_refused({0, -1, -12, INT32_MIN}, payload, unfit_size);
        is_sealed({1, form_->data_size == DataSize::padded ? 65536 : INT32_MAX}, payload);
        is_sealed({0, -1, INT32_MIN}, nullptr);
    }

    // The same for a payload of `data_size` bytes or texts. Categories that count a negative size
    // refuse it.
    void is_sealed_if_counted(void *payload, int32_t count) const
    {
        const bool counts_negative =
            form_->trusts_sign || category_.announced == Announced::nonzero;
        is_refused({1, INT32_MAX}, nullptr, missing_data);
        is_refused({0, -1, -12, INT32_MIN}, payload, unfit_size);
        counts_negative ? is_refused({-1, INT32_MIN}, nullptr, unfit_size)
                        : is_sealed({-1, INT32_MIN}, nullptr);
        is_sealed({0}, nullptr);
        is_sealed({count}, payload);
    }

private:
    template <class Expect>
    void for_each(const std::vector<int32_t> &sizes, void *data, Expect expect) const
    {
        for (const uint32_t message_type : category_.types) {
            for (const uint32_t type : types_) {
                for (const int32_t data_size : sizes) {
                    SCOPED_TRACE(std::to_string(message_type) + ", " + std::to_string(type) +
                                 ", data_size " + std::to_string(data_size));
                    mdm_msg_t msg = message_of(category_, static_cast<uint8_t>(message_type), type,
                                               data_size, data);
                    expect(msg);
                }
            }
        }
    }

    const CategoryFormat &category_;
    const Form *form_ = nullptr;  // the last one
    std::vector<uint32_t> types_;
};

char a[] = "a";
char bc[] = "bc";
char some_bytes[] = "some bytes";

void expect_raw_bytes(const Sender &raw)
{
    raw.is_sealed_if_counted(some_bytes, 10);
    raw.is_refused({INT32_MAX}, some_bytes, no_message_size);
}

// A list, and lists of its first and its last element with null elements.
struct Lists {
    Lists(std::initializer_list<void *> elements)
        : whole(cells(elements)), null_first(cells({nullptr, *elements.begin()})),
          null_between(cells({*elements.begin(), nullptr, *(elements.end() - 1)})),
          null_last(cells({*elements.begin(), nullptr})), null_alone(cells({nullptr}))
    {
    }

    Cells whole;
    Cells null_first;
    Cells null_between;
    Cells null_last;
    Cells null_alone;
};

const Lists names({a, borrowed(""), bc});

const std::vector<int32_t> any_size = {0, 1, -1, INT32_MAX, INT32_MIN};

// The envelope.

TEST(Seal, ANullMessageIsRefused)
{
    ipc_fault_t fault = untouched_fault;
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
    mdm_msg_t msg = message_of(3, 40, 1, nullptr);
    msg.hdr_text = borrowed("abc");
    expect_refusal(msg, {43, 0, 0, "pwd.data"});

    const Cells null_alone = cells({nullptr});
    msg = message_of(45, 618, 1, null_alone.get());
    msg.hdr_text = borrowed("abc");
    expect_refusal(msg, {55, 0, 8, "kiosk.keys"});
}

TEST(Seal, NobodyNeedsToAskForTheFault)
{
    mdm_msg_t msg = message_of(33, 1, 2, nullptr);
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
        const Opened msg = opened(good.bytes);
        ASSERT_NE(msg, nullptr);
        LogRecorder log;
        const ipc_fault_t fault = fault_of_sealing(*msg);
        EXPECT_EQ(log.take(), lines_of(from::ipc_seal, fault)) << good.name;
    }
}

TEST(Seal, WhatWasReceivedIsSealedAsSerialisedIfItIsWhole)
{
    for (const GoodMessage &good : good_messages()) {
        SCOPED_TRACE(good.name);
        const Opened msg = opened(good.bytes);
        ASSERT_NE(msg, nullptr);
        const bool is_sealed = is_untouched(fault_of_sealing(*msg));
        EXPECT_EQ(is_sealed, good.may_be_sent_on)
            << "tests/support/messages.cpp says whether it may be sent on";
        if (is_sealed) {
            expect_sealed(*msg);
        }
    }
}

TEST(Seal, ManyThreadsMaySealAtOnce)
{
    const auto seal_all = [] {
        std::vector<Bytes> sealed;
        for (const GoodMessage &good : good_messages()) {
            const Opened msg = opened(good.bytes);
            uint32_t length = 0;
            uint8_t *buffer = ipc_seal(msg.get(), &length, nullptr);
            // The lists of one category send an address.
            const bool is_list = good.form != nullptr && good.form->is_in_param;
            sealed.push_back(taken(buffer, is_list ? 0 : length));
        }
        return sealed;
    };
    EXPECT_THAT(in_four_threads(seal_all), Each(seal_all()));
}

// Categories without a payload that could be missing.

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
    for (const char *category : {"location", "roaming_res"}) {
        Sender(category).is_sealed(any_size, nullptr);
        Sender(category).is_refused(any_size, some_bytes, unfit_size);
    }
}

// Raw bytes.

TEST(SealSingleList, RefusesANegativeSizeAndMissingBytes)
{
    for (const char *category :
         {"browser", "date_time", "remote", "vpn", "firewall", "res", "enterprise"}) {
        const Sender raw(category);
        expect_raw_bytes(raw);
        raw.is_sealed({1}, some_bytes);
        raw.is_refused({-4, -13, -44, -45, -52, -53}, some_bytes, unfit_size);
        raw.is_refused({-4, -12, -13, -44, -45, -52, -53}, nullptr, unfit_size);
    }
}

// Records, strings and lists.

TEST(SealPwd, RefusesWhatIsMissing)
{
    mdm_pwd_policy_t empty{};
    mdm_pwd_policy_t policy{1, 2, 3, 4, 5, 6, 7, 8, 9, a, bc};
    Sender("pwd", {"policy"}).is_sealed_if_announced(&policy);
    Sender("pwd", {"policy"}).is_sealed({1}, &empty);
    expect_raw_bytes(Sender("pwd", {"data"}));
}

TEST(SealSecurity, RefusesMissingStringsAndNullElements)
{
    const Sender strings("security", {"strings"});
    strings.is_refused({1, INT32_MAX}, nullptr, missing_data);
    strings.is_refused({0}, names.null_first.get(), {52, 0, 4, ".strings"});
    strings.is_refused({0}, names.null_between.get(), {52, 0, 9, ".strings"});
    strings.is_refused({-1}, names.null_last.get(), {52, 0, 9, ".strings"});
    strings.is_refused({1}, names.null_alone.get(), {52, 0, 4, ".strings"});
    strings.is_sealed({0, -1}, nullptr);
    strings.is_sealed({0, -1}, names.whole.get());
}

TEST(SealSecurity, RefusesMissingAccountsAndNullElements)
{
    const Sender lists("security", {"accounts"});
    mdm_security_account_t account{};
    const Lists accounts({&account, &account});
    lists.is_refused({1}, nullptr, missing_data);
    lists.is_refused({0}, accounts.null_between.get(), in_body(".accounts"));
    lists.is_refused({1}, accounts.null_alone.get(), in_body(".accounts"));
    lists.is_sealed({0}, nullptr);
    lists.is_sealed({0, INT32_MIN}, accounts.whole.get());
}

// Q-GUARDED-4
TEST(SealSecurity, RefusesANegativeSizeAndMissingBytes)
{
    expect_raw_bytes(Sender("security", {"data"}));
    mdm_security_item_t item{1, a, 2, nullptr, bc};
    Sender("security", {"item"}).is_sealed({0, -1}, &item);
    Sender("security", {"item"}).is_sealed({1, INT32_MIN}, nullptr);
}

TEST(SealWifi, RefusesMissingRecordsAndBytes)
{
    mdm_wifi_dhcp_t texts{a, a, a, a, a};  // a pair and a triple, too
    mdm_wifi_network_t network{a, 0, nullptr};
    Sender("wifi", {"pair", "dhcp", "triple"}).is_sealed_if_announced(&texts);
    Sender("wifi", {"network"}).is_sealed_if_announced(&network);
}

TEST(SealWifi, RefusesNullElements)
{
    const Sender lists("wifi", {"ssids"});
    lists.is_sealed_if_announced(names.whole.get());
    lists.is_refused({1}, names.null_first.get(), in_body(".ssids"));
    lists.is_refused({50}, names.null_last.get(), in_body(".ssids"));
    lists.is_refused({0}, names.null_last.get(), unfit_size);
}

// Q-GUARDED-3
TEST(SealWifi, RefusesMoreZerosThanASenderMeans)
{
    const Sender padded("wifi", {"pair", "dhcp", "triple"});
    mdm_wifi_dhcp_t texts{a, a, a, a, a};  // a pair and a triple, too
    padded.is_refused({65537, INT32_MAX}, &texts, unfit_size);
    padded.is_sealed({1, 4000, 65536}, &texts);
}

TEST(SealWifi, RefusesRawBytesThatNoMessageHasRoomFor)
{
    expect_raw_bytes(Sender("wifi", {"data"}));
}

TEST(SealWifi, RefusesANetworkWithoutTheTextsOfItsDetail)
{
    const Sender networks("wifi", {"network"});
    mdm_wifi_detail_t detail{};
    for (int32_t kind = -1; kind < 12; ++kind) {
        mdm_wifi_network_t network{a, kind, nullptr};
        if (kind >= 2 && kind <= 7) {
            networks.is_refused({1}, &network, in_body(".network.detail"));
        } else {  // a number that is not there arrives as 0
            networks.is_sealed({1}, &network);
        }
        networks.is_refused({0, -1}, &network, unfit_size);
        network.detail = &detail;
        networks.is_sealed({1, INT32_MAX}, &network);
    }
}

TEST(SealBluetooth, RefusesNullElements)
{
    const Sender lists("bluetooth", {"names"});
    lists.is_sealed_if_announced(names.whole.get());
    lists.is_refused({1}, names.null_first.get(), in_body(".names"));
    lists.is_refused({50}, names.null_last.get(), in_body(".names"));
    lists.is_refused({-1}, names.null_last.get(), unfit_size);
}

TEST(SealBluetooth, RefusesMissingBytes)
{
    expect_raw_bytes(Sender("bluetooth", {"data"}));
}

TEST(SealEas, RefusesMissingRecordsAndNullElements)
{
    mdm_eas_account_t account{};
    mdm_eas_value_t value{1, a};
    Sender("eas", {"account"}).is_sealed_if_announced(&account);
    Sender("eas", {"value"}).is_sealed_if_announced(&value);

    const Sender lists("eas", {"accounts"});
    const Lists accounts({&account, &account});
    lists.is_sealed_if_announced(accounts.whole.get());
    lists.is_refused({1}, accounts.null_first.get(), in_body(".accounts"));
    lists.is_refused({-1}, accounts.null_last.get(), in_body(".accounts"));
}

// The size of a record is added to the given one. Only small sizes are sealed.
void expect_added_size(const Sender &sender, const std::vector<int32_t> &unfit, void *record)
{
    sender.is_refused(unfit, record, unfit_size);
    sender.is_refused(unfit, nullptr, unfit_size);
    sender.is_refused({1}, nullptr, missing_data);
    sender.is_refused({0}, record, unfit_size);
    sender.is_sealed({0}, nullptr);
    sender.is_sealed({1, 4000, 65536}, record);
}

// Three empty texts take 12 bytes, which are added to the given size. A sum of 0 would drop them.
TEST(SealEas, RefusesSettingsWhoseSizeDoesNotHoldThem)
{
    const Sender settings("eas", {"settings"});
    mdm_eas_account_t account{};
    expect_added_size(settings, {-1, -8, -11, -12, -13, -24, INT32_MIN, 65537, INT32_MAX},
                      &account);
    account.str8 = account.str10 = account.str13 = a;
    settings.is_refused({-15}, &account, unfit_size);
}

TEST(SealEmail, RefusesMissingRecordsAndNullElements)
{
    mdm_email_account_t account{};
    mdm_email_value_t value{1, a};
    Sender("email", {"account", "settings"}).is_sealed_if_announced(&account);
    Sender("email", {"value"}).is_sealed_if_announced(&value);

    const Sender lists("email", {"accounts"});
    const Lists accounts({&account, &account});
    lists.is_sealed_if_announced(accounts.whole.get());
    lists.is_refused({1}, accounts.null_first.get(), {52, 0, 4, ".accounts"});
    lists.is_refused({1}, accounts.null_last.get(), {52, 0, 92, ".accounts"});
    lists.is_refused({-1}, accounts.null_alone.get(), {52, 0, 4, ".accounts"});
}

TEST(SealApn, RefusesMissingRecordsAndNullElements)
{
    const Sender lists("apn", {"profiles"});
    mdm_apn_account_t profile{};
    const Lists profiles({&profile, &profile});
    lists.is_sealed_if_announced(profiles.whole.get());
    lists.is_refused({1}, profiles.null_first.get(), in_body(".profiles"));
    lists.is_refused({-1}, profiles.null_last.get(), in_body(".profiles"));
}

// An empty profile takes 60 bytes, which are added to the given size. A sum of 0 would drop it.
TEST(SealApn, RefusesAProfileWhoseSizeDoesNotHoldIt)
{
    mdm_apn_account_t profile{};
    expect_added_size(Sender("apn", {"profile"}),
                      {-1, -59, -60, -61, -72, INT32_MIN, 65537, INT32_MAX}, &profile);
}

TEST(SealApn, RefusesRawBytesOfANegativeSize)
{
    expect_raw_bytes(Sender("apn", {"data"}));
}

TEST(SealApp, RefusesNullElements)
{
    const Sender lists("app", {"packages"});
    lists.is_sealed_if_announced(names.whole.get());
    lists.is_refused({1}, names.null_between.get(), {56, 0, 9, ".packages"});
    lists.is_refused({INT32_MAX}, names.null_alone.get(), {56, 0, 4, ".packages"});
    lists.is_refused({0}, names.null_alone.get(), unfit_size);
}

// The receiver has two numbers to send on, for any received size.
TEST(SealApp, RefusesTwoNumbersThatAreNotThereOrOfAnotherSize)
{
    const Sender sender("app", {"num-pair"});
    mdm_app_num_pair_t numbers{1, 2};
    sender.is_refused({1, 7, 9, 4000, INT32_MAX, 0, -1}, &numbers, unfit_size);
    sender.is_refused({1, 7, 8, 9, 4000, INT32_MAX}, nullptr, missing_data);
    sender.is_sealed({8}, &numbers);
    sender.is_sealed({0, -1}, nullptr);
}

TEST(SealApp, RefusesAMissingPairAndMissingBytes)
{
    mdm_app_pair_t pair{a, nullptr};
    Sender("app", {"pair"}).is_sealed_if_announced(&pair);
    expect_raw_bytes(Sender("app", {"data"}));
}

TEST(SealAppRes, RefusesNullElementsAndMissingBytes)
{
    const Sender lists("app_res", {"packages"});
    lists.is_sealed_if_announced(names.whole.get());
    lists.is_refused({1}, names.null_between.get(), {56, 0, 9, ".packages"});
    lists.is_refused({-1}, names.null_between.get(), unfit_size);
    expect_raw_bytes(Sender("app_res", {"data"}));
}

TEST(SealAppRes, RefusesNullItemsAndItemsWithoutAName)
{
    const Sender lists("app_res", {"items"});
    mdm_app_res_item_t item{a, 7};
    mdm_app_res_item_t nameless{nullptr, 7};
    mdm_app_res_item_t empty{borrowed(""), 7};
    const Lists items({&item, &empty});
    const Cells nameless_first = cells({&nameless, &item});
    const Cells nameless_last = cells({&item, &nameless});
    lists.is_sealed_if_announced(items.whole.get());
    lists.is_refused({1}, items.null_last.get(), {56, 0, 13, ".items"});
    lists.is_refused({1}, nameless_first.get(), {60, 0, 17, ".item.name"});
    lists.is_refused({1}, nameless_last.get(), {69, 0, 8, ".item.name"});
}

TEST(SealAppRes, RefusesNullElementsOfEitherListOfControls)
{
    const Sender lists("app_res", {"controls"});
    const Cells null_name = cells({nullptr});
    const Cells packages = cells({a, bc});
    mdm_app_control_info_t empty{7, nullptr};
    mdm_app_control_info_t corrupted{8, null_name.get()};
    mdm_app_control_info_t whole{9, packages.get()};
    const Cells null_between = cells({&empty, nullptr, &empty});
    const Cells corrupted_alone = cells({&corrupted});
    const Cells corrupted_last = cells({&whole, &corrupted});
    const Cells controls = cells({&whole, &empty, &whole});
    lists.is_sealed_if_announced(controls.get());
    lists.is_refused({1}, null_between.get(), {56, 0, 12, ".controls"});
    lists.is_refused({1}, corrupted_alone.get(), {64, 0, 4, ".control.pkg_list"});
    lists.is_refused({1}, corrupted_last.get(), {83, 0, 4, ".control.pkg_list"});
}

TEST(SealApp, FaultsCountThePackageName)
{
    const Cells null_alone = cells({nullptr});
    mdm_msg_t msg = message_of(13, 4, 2, null_alone.get());
    msg.body.app.pkg = bc;
    expect_refusal(msg, {58, 0, 4, "app.packages"});
    msg = message_of(14, 3, 2, null_alone.get());
    msg.body.app_res.pkg = bc;
    expect_refusal(msg, {58, 0, 4, "app_res.packages"});
}

TEST(SealRoaming, RefusesAMissingRecordWhateverTheSize)
{
    const Sender roaming("roaming");
    mdm_roaming_data_t empty{};
    mdm_roaming_data_t named{a};
    roaming.is_refused(any_size, nullptr, missing_data);
    roaming.is_sealed(any_size, &empty);
    roaming.is_sealed(any_size, &named);
}

TEST(SealMisc, RefusesAMissingArrayAndOneOfANegativeLength)
{
    std::array<char *, 3> texts = {a, nullptr, bc};
    Sender("misc", {"array"}).is_sealed_if_counted(texts.data(), 3);
}

TEST(SealMisc, RefusesMissingRecordsAndBytes)
{
    mdm_book_info_t texts{a, nullptr};  // a text and a pair, too
    Sender("misc", {"text", "book", "pair"}).is_sealed_if_announced(&texts);
    expect_raw_bytes(Sender("misc", {"data"}));
    Sender("misc", {"head"}).is_sealed({0, 40, -1, INT32_MAX}, nullptr);
    Sender("misc", {"head", "strings"}).is_refused({0, 40, -1}, some_bytes, unfit_size);
}

TEST(SealMisc, RefusesNullElementsOfTheListInParam)
{
    for (const uint32_t type : {127U, 128U}) {
        for (const int32_t data_size : {0, 1, -1, INT32_MIN}) {
            mdm_msg_t msg = message_of(17, type, data_size, nullptr);
            expect_sealed(msg);
            msg.body.misc.param_list = names.null_between.get();
            expect_refusal(msg, {52, 0, 19, "misc.param_list"});
            msg.body.misc.param_list = names.whole.get();
            expect_sealed(msg);
        }
    }
}

TEST(SealPhoneRes, RefusesMissingRecordsAndBytes)
{
    mdm_phone_res_item_t item{a, 7, nullptr};
    Sender("phone_res", {"item"}).is_sealed_if_announced(&item);
    expect_raw_bytes(Sender("phone_res", {"data", "data-between"}));
}

TEST(SealPhoneRes, RefusesAMissingDetail)
{
    const Sender sender("phone_res", {"ext"});
    mdm_phone_res_detail_t detail{1, 2, bc};
    mdm_phone_res_ext_t whole{a, 7, &detail};
    mdm_phone_res_ext_t broken{a, 7, nullptr};
    sender.is_sealed_if_announced(&whole);
    sender.is_refused({1, INT32_MAX}, &broken, in_body(".ext.detail"));
}

// A receiver of these records holds raw bytes, in which any pointer may stand.
TEST(SealPhoneRes, RefusesBytesThatWouldBeSizedAsARecord)
{
    const Sender raw("phone_res", {"raw-item"});
    raw.is_refused({1, 10, INT32_MAX}, some_bytes, in_body(".type"));
    raw.is_refused({1, INT32_MAX}, nullptr, missing_data);
    raw.is_refused({0, -1, -12, INT32_MIN}, some_bytes, unfit_size);
    raw.is_sealed({0, -1, INT32_MIN}, nullptr);
}

TEST(SealKiosk, RefusesWhatIsMissingAndNegativeSizes)
{
    const Sender texts("kiosk", {"text"});
    texts.is_sealed_if_announced(a);
    texts.is_sealed({1}, borrowed(""));
    expect_raw_bytes(Sender("kiosk", {"data"}));
}

TEST(SealKiosk, RefusesNullElements)
{
    const Sender key_lists("kiosk", {"keys"});
    uint32_t key = 7;
    const Lists keys({&key, &key});
    key_lists.is_sealed_if_announced(keys.whole.get());
    key_lists.is_refused({1}, keys.null_alone.get(), {52, 0, 8, ".keys"});
    key_lists.is_refused({-1}, keys.null_between.get(), {52, 0, 16, ".keys"});

    const Sender pair_lists("kiosk", {"key-pairs"});
    mdm_kiosk_key_pair_t pair{1, 2};
    const Lists pairs({&pair, &pair});
    pair_lists.is_sealed_if_announced(pairs.whole.get());
    pair_lists.is_refused({1}, pairs.null_alone.get(), {52, 0, 12, ".key_pairs"});
    pair_lists.is_refused({-1}, pairs.null_first.get(), {52, 0, 20, ".key_pairs"});
}

TEST(SealContainer, RefusesWhatIsMissingAndNegativeSizes)
{
    mdm_container_item_t item{1, a, nullptr};
    Sender("container", {"item", "short-item"}).is_sealed_if_announced(&item);
    expect_raw_bytes(Sender("container", {"data"}));
    Sender("container", {"head"}).is_sealed({5, -1, INT32_MAX}, nullptr);
    Sender("container", {"head"}).is_refused({0, 9}, some_bytes, unfit_size);
}

// The stored size.

int32_t stored_size(uint8_t message_type, uint32_t type, int32_t data_size, void *data)
{
    mdm_msg_t msg = message_of(message_type, type, data_size, data);
    uint32_t length = 0;
    g_free(ipc_seal(&msg, &length, nullptr));
    return value_at<int32_t>(&msg.body, format_of(message_type)->data_size);
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
    EXPECT_EQ(stored_size(5, 56, 99, &item), 19);
    EXPECT_EQ(stored_size(5, 56, 99, nullptr), 0);
    EXPECT_EQ(stored_size(5, 68, 99, strings.get()), 27);
    EXPECT_EQ(stored_size(11, 104, 1, &eas), 13);
    EXPECT_EQ(stored_size(11, 104, -12, &eas), -12);  // refused
    EXPECT_EQ(stored_size(39, 359, 1, &email), 64);
    EXPECT_EQ(stored_size(21, 387, 1, &apn), 61);
    EXPECT_EQ(stored_size(17, 281, 1, &book), 11);
    EXPECT_EQ(stored_size(45, 618, 1, keys.get()), 12);
    EXPECT_EQ(stored_size(47, 628, 1, &container), 15);
}

TEST(Seal, AddsToASizeEachTimeAsSerialisingDoes)
{
    mdm_apn_account_t profile{};
    mdm_msg_t msg = message_of(21, 387, 1, &profile);
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
    EXPECT_EQ(stored_size(45, 618, 77, null_alone.get()), 77);
    EXPECT_FALSE(is_untouched(fault_of_sealing(message_of(45, 618, 77, null_alone.get()))));
}

// Lists with other elements written than counted: one with a null element, and one that its owner
// enters at the second cell.

mdm_msg_t message_of(const CategoryFormat &category, const Form &form, GList *list)
{
    mdm_msg_t msg = message_of(category, category.first_type(), *form.types.begin(), 1, nullptr);
    if (form.is_in_param) {
        msg.body.misc.param_list = list;
    } else {
        member_at<GList *>(&msg.body, category.data) = list;
    }
    return msg;
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

TEST(SealNullElement, IsRefusedInEveryList)
{
    for_each_list([](const CategoryFormat &category, const Form &form, void *element) {
        for (const Cells &list : {cells({nullptr, element}), cells({element, nullptr})}) {
            const ipc_fault_t fault = fault_of_sealing(message_of(category, form, list.get()));
            EXPECT_STREQ(fault.path, form.path);
        }
    });
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
        EXPECT_EQ(fault.offset, header_size + 4 * category.head.size());
        EXPECT_EQ(fault.needed, 0U);
    });
    EXPECT_GE(lists, 14U);
}

TEST(SealHalvedList, IsRefusedWhereTheFirstElementIsNull)
{
    for_each_list([](const CategoryFormat &category, const Form &form, void *element) {
        const Cells list = cells({nullptr, element});
        const ipc_fault_t fault = fault_of_sealing(message_of(category, form, list->next));
        EXPECT_STREQ(fault.path, form.path);
    });
}

TEST(SealHalvedList, IsRefusedWhereItIsAClients)
{
    const Cells packages = cells({a, bc});
    const Cells broken = cells({nullptr, bc});
    mdm_app_control_info_t control{7, nullptr};
    const Cells controls = cells({&control, &control});
    for (GList *list : {packages->next, broken->next}) {
        control.pkg_list = list;
        const mdm_msg_t msg = message_of(14, 172, 1, controls.get());
        EXPECT_STREQ(fault_of_sealing(msg).path, "app_res.control.pkg_list");
    }
}

}  // namespace
}  // namespace mdm::test::guarded_seal_test
