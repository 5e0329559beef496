// SPDX-License-Identifier: Apache-2.0
//
// The examples of docs/wire-format.md are what the library sends.
#include <fstream>
#include <functional>
#include <initializer_list>
#include <map>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/wire.hpp"

namespace mdm::test {
namespace {

using ::testing::SizeIs;

// The hex blocks of the document by their labels, without what stands behind a '#'.
std::map<std::string, Bytes> documented_examples()
{
    const std::string opening = "```hex ";
    std::map<std::string, Bytes> examples;
    std::ifstream document(MDM_DOCS_DIR "/wire-format.md");
    Bytes *example = nullptr;
    for (std::string line; std::getline(document, line);) {
        if (line.starts_with(opening)) {
            const auto [place, is_new] = examples.try_emplace(line.substr(opening.size()));
            EXPECT_TRUE(is_new) << "two examples: " << line;
            example = &place->second;
        } else if (line.starts_with("```")) {
            example = nullptr;
        } else if (example != nullptr) {
            const std::string text = line.substr(0, line.find('#'));
            const size_t length = text.find_last_not_of(' ') + 1;
            *example = *example + hex(text.substr(0, length));
        }
    }
    return examples;
}

using Fill = std::function<void(mdm_msg_t &)>;

Bytes whole_message(uint8_t type, const Fill &fill)
{
    mdm_msg_t msg = message(type);
    fill(msg);
    return serialize(msg);
}

// What stands behind the 40 bytes of a header without a text.
Bytes body_of(uint8_t type, const Fill &fill)
{
    const Bytes bytes = whole_message(type, fill);
    return {bytes.begin() + 40, bytes.end()};
}

template <class Info>
void set_head(Info &info, uint32_t type, int32_t data_size, void *data)
{
    info.type = static_cast<decltype(info.type)>(type);
    info.data_size = data_size;
    info.data = data;
}

void fill_example_message(mdm_msg_t &msg)
{
    msg.hdr_word1 = 1;
    msg.hdr_word2 = 2;
    msg.hdr_word3 = 3;
    msg.hdr_word4 = 4;
    msg.hdr_word5 = 5;
    msg.hdr_word6 = 6;
    msg.hdr_word7 = 7;
    set_head(msg.body.res, 100, 2, borrowed("ok"));
}

void fill_message_with_a_text(mdm_msg_t &msg)
{
    msg.hdr_byte = 7;
    msg.hdr_text = borrowed("hi");
}

Bytes admin_query()
{
    return body_of(1, [](mdm_msg_t &msg) {
        msg.body.admin.pkg = borrowed("abc");
        msg.body.admin.status = 1;
    });
}

Bytes pwd_policy()
{
    mdm_pwd_policy_t policy = {8, 2, 1, 1, 30, 5, 10, 0, 1, borrowed("hi"), nullptr};
    return body_of(3, [&](mdm_msg_t &msg) { set_head(msg.body.pwd, 40, 1, &policy); });
}

Bytes security_item()
{
    mdm_security_item_t item = {7, borrowed("a"), 0, nullptr, borrowed("d")};
    return body_of(5, [&](mdm_msg_t &msg) { set_head(msg.body.security, 56, 0, &item); });
}

Bytes security_strings()
{
    const Cells list = cells({borrowed("a"), borrowed(""), borrowed("b")});
    return body_of(5, [&](mdm_msg_t &msg) { set_head(msg.body.security, 68, 0, list.get()); });
}

Bytes security_empty_list()
{
    return body_of(5, [](mdm_msg_t &msg) { set_head(msg.body.security, 68, 0, nullptr); });
}

Bytes wifi_pair()
{
    mdm_wifi_pair_t pair = {borrowed("a"), nullptr};
    return body_of(7, [&](mdm_msg_t &msg) { set_head(msg.body.wifi, 309, 1, &pair); });
}

Bytes wifi_network()
{
    mdm_wifi_detail_t detail{};
    detail.w0.number = 42;
    mdm_wifi_network_t network = {borrowed("home"), 8, &detail};
    return body_of(7, [&](mdm_msg_t &msg) { set_head(msg.body.wifi, 345, 1, &network); });
}

Bytes bluetooth_names()
{
    const Cells list = cells({borrowed("key"), borrowed("mouse")});
    return body_of(9, [&](mdm_msg_t &msg) { set_head(msg.body.bluetooth, 223, 1, list.get()); });
}

Bytes eas_settings()
{
    mdm_eas_account_t account{};
    return body_of(11, [&](mdm_msg_t &msg) { set_head(msg.body.eas, 104, 1, &account); });
}

Bytes eas_value()
{
    mdm_eas_value_t value = {9, borrowed("hello")};
    return body_of(11, [&](mdm_msg_t &msg) { set_head(msg.body.eas, 7, 1, &value); });
}

Bytes app_packages()
{
    const Cells list = cells({borrowed("a"), borrowed("bc")});
    return body_of(13, [&](mdm_msg_t &msg) {
        set_head(msg.body.app, 4, 1, list.get());
        msg.body.app.pkg = borrowed("me");
    });
}

Bytes app_numbers()
{
    mdm_app_num_pair_t pair = {5, 6};
    return body_of(13, [&](mdm_msg_t &msg) { set_head(msg.body.app, 140, 8, &pair); });
}

Bytes app_res_items()
{
    mdm_app_res_item_t a = {borrowed("a"), 5};
    mdm_app_res_item_t nameless = {nullptr, 7};
    mdm_app_res_item_t b = {borrowed("b"), 6};
    const Cells list = cells({&a, &nameless, &b});
    return body_of(14, [&](mdm_msg_t &msg) { set_head(msg.body.app_res, 140, 1, list.get()); });
}

Bytes app_res_controls()
{
    const Cells packages = cells({borrowed("a")});
    mdm_app_control_info_t first = {7, packages.get()};
    mdm_app_control_info_t second = {8, nullptr};
    const Cells list = cells({&first, &second});
    return body_of(14, [&](mdm_msg_t &msg) { set_head(msg.body.app_res, 172, 1, list.get()); });
}

Bytes roaming()
{
    mdm_roaming_data_t data = {borrowed("ab")};
    return body_of(15, [&](mdm_msg_t &msg) { set_head(msg.body.roaming, 5, 0, &data); });
}

Bytes roaming_res()
{
    return body_of(16, [](mdm_msg_t &msg) { set_head(msg.body.roaming_res, 5, 7, nullptr); });
}

Bytes misc_array()
{
    char *texts[] = {borrowed("a"), nullptr, borrowed("b")};
    return body_of(17, [&](mdm_msg_t &msg) { set_head(msg.body.misc, 122, 3, texts); });
}

Bytes misc_empty_list()
{
    return body_of(17, [](mdm_msg_t &msg) { set_head(msg.body.misc, 127, 0, nullptr); });
}

Bytes misc_book()
{
    mdm_book_info_t book = {borrowed("a:b"), borrowed("hi")};
    return body_of(17, [&](mdm_msg_t &msg) { set_head(msg.body.misc, 283, 1, &book); });
}

Bytes apn_profile()
{
    mdm_apn_account_t account{};
    account.num0 = 1;
    account.num1 = 2;
    return body_of(21, [&](mdm_msg_t &msg) { set_head(msg.body.apn, 387, 1, &account); });
}

Bytes firewall()
{
    return body_of(31, [](mdm_msg_t &msg) { set_head(msg.body.firewall, 1, 3, borrowed("abc")); });
}

Bytes phone_res_item()
{
    mdm_phone_res_item_t item = {borrowed("a"), 0, nullptr};
    return body_of(35, [&](mdm_msg_t &msg) { set_head(msg.body.phone_res, 400, 1, &item); });
}

Bytes phone_res_ext()
{
    mdm_phone_res_detail_t detail = {5, 7, nullptr};
    mdm_phone_res_ext_t ext = {nullptr, 0, &detail};
    return body_of(35, [&](mdm_msg_t &msg) { set_head(msg.body.phone_res, 422, 1, &ext); });
}

Bytes email_settings()
{
    mdm_email_account_t account{};
    account.str14 = borrowed("4");
    account.str15 = borrowed("5");
    account.str16 = borrowed("6");
    return body_of(39, [&](mdm_msg_t &msg) { set_head(msg.body.email, 362, 1, &account); });
}

Bytes email_account()
{
    mdm_email_account_t account{};
    account.num1 = 1;
    account.num2 = 2;
    account.num3 = 3;
    account.num4 = 4;
    account.num5 = 5;
    account.num6 = 6;
    account.num7 = 7;
    return body_of(39, [&](mdm_msg_t &msg) { set_head(msg.body.email, 359, 1, &account); });
}

Bytes kiosk_text()
{
    return body_of(45,
                   [](mdm_msg_t &msg) { set_head(msg.body.kiosk, 612, 1, borrowed("launcher")); });
}

Bytes kiosk_pairs()
{
    mdm_kiosk_key_pair_t first = {1, 10};
    mdm_kiosk_key_pair_t third = {2, 11};
    const Cells list = cells({&first, nullptr, &third});
    return body_of(45, [&](mdm_msg_t &msg) { set_head(msg.body.kiosk, 619, 1, list.get()); });
}

Bytes container_item()
{
    mdm_container_item_t item = {1, borrowed("ab"), nullptr};
    return body_of(47, [&](mdm_msg_t &msg) { set_head(msg.body.container, 628, 1, &item); });
}

Bytes location()
{
    return body_of(49, [](mdm_msg_t &msg) { set_head(msg.body.location, 1, 7, nullptr); });
}

Bytes log_manager_byte()
{
    return body_of(51, [](mdm_msg_t &msg) {
        msg.body.log_manager.type = 1;
        msg.body.log_manager.value.word = 0x1234;
    });
}

Bytes platform()
{
    return body_of(53, [](mdm_msg_t &msg) {
        msg.body.platform.type = 439;
        msg.body.platform.text = borrowed("abc");
        msg.body.platform.number = 7;
        msg.body.platform.flag = 1;
    });
}

Bytes app_cb()
{
    return body_of(61, [](mdm_msg_t &msg) {
        msg.body.app_cb.num6 = 9;
        msg.body.app_cb.str7 = borrowed("77");
        msg.body.app_cb.str8 = borrowed("8");
    });
}

Bytes misc_cb()
{
    return body_of(63, [](mdm_msg_t &msg) {
        msg.body.misc_cb.type = 1;
        msg.body.misc_cb.flag6 = 7;
        msg.body.misc_cb.num7 = 9;
    });
}

std::map<std::string, Bytes> library_examples()
{
    return {
        {"message", whole_message(33, fill_example_message)},
        {"message with a text", whole_message(49, fill_message_with_a_text)},
        {"admin query", admin_query()},
        {"pwd policy", pwd_policy()},
        {"security item", security_item()},
        {"security strings", security_strings()},
        {"security empty list", security_empty_list()},
        {"wifi pair", wifi_pair()},
        {"wifi network", wifi_network()},
        {"bluetooth names", bluetooth_names()},
        {"eas settings", eas_settings()},
        {"eas value", eas_value()},
        {"app packages", app_packages()},
        {"app numbers", app_numbers()},
        {"app_res items", app_res_items()},
        {"app_res controls", app_res_controls()},
        {"roaming", roaming()},
        {"roaming_res", roaming_res()},
        {"misc array", misc_array()},
        {"misc empty list", misc_empty_list()},
        {"misc book", misc_book()},
        {"apn profile", apn_profile()},
        {"firewall", firewall()},
        {"phone_res item", phone_res_item()},
        {"phone_res ext", phone_res_ext()},
        {"email settings", email_settings()},
        {"email account", email_account()},
        {"kiosk text", kiosk_text()},
        {"kiosk pairs", kiosk_pairs()},
        {"container item", container_item()},
        {"location", location()},
        {"log_manager byte", log_manager_byte()},
        {"platform", platform()},
        {"app_cb", app_cb()},
        {"misc_cb", misc_cb()},
    };
}

TEST(WireFormat, DocumentedExamplesAreWhatTheLibrarySends)
{
    const auto documented = documented_examples();
    const auto sent = library_examples();
    EXPECT_THAT(documented, SizeIs(sent.size()));
    for (const auto &[label, bytes] : documented) {
        const auto place = sent.find(label);
        ASSERT_NE(place, sent.end()) << "an example that nobody makes: " << label;
        EXPECT_EQ(bytes, place->second) << label;
    }
}

}  // namespace
}  // namespace mdm::test
