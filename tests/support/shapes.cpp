// SPDX-License-Identifier: Apache-2.0
#include "support/shapes.hpp"

#include <initializer_list>
#include <string_view>
#include <utility>

namespace mdm::test {
namespace {

using Bytes = std::vector<uint8_t>;

Bytes joined(std::initializer_list<Bytes> parts)
{
    Bytes all;
    for (const Bytes &part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

Bytes repeated(int count, const Bytes &part)
{
    Bytes all;
    for (int i = 0; i < count; ++i) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

Bytes byte(uint8_t value)
{
    return {value};
}

Bytes word(uint32_t value)
{
    return {static_cast<uint8_t>(value), static_cast<uint8_t>(value >> 8),
            static_cast<uint8_t>(value >> 16), static_cast<uint8_t>(value >> 24)};
}

// Numbers that are told from each other.
Bytes numbers(uint32_t count)
{
    Bytes all;
    for (uint32_t i = 0; i < count; ++i) {
        const Bytes one = word(0xC0010000 + i);
        all.insert(all.end(), one.begin(), one.end());
    }
    return all;
}

Bytes raw(std::string_view bytes)
{
    return {bytes.begin(), bytes.end()};
}

Bytes text(std::string_view bytes)
{
    return joined({word(static_cast<uint32_t>(bytes.size())), raw(bytes)});
}

Bytes texts(std::initializer_list<std::string_view> all)
{
    Bytes bytes;
    for (const std::string_view one : all) {
        const Bytes part = text(one);
        bytes.insert(bytes.end(), part.begin(), part.end());
    }
    return bytes;
}

// Texts of one letter: a, b, c and so on.
Bytes letters(int count)
{
    Bytes bytes;
    for (int i = 0; i < count; ++i) {
        const auto letter = static_cast<char>('a' + i);
        const Bytes part = text({&letter, 1});
        bytes.insert(bytes.end(), part.begin(), part.end());
    }
    return bytes;
}

Bytes empty_texts(int count)
{
    return repeated(count, word(0));
}

// A count and what follows it.
Bytes list(uint32_t count, const Bytes &elements)
{
    return joined({word(count), elements});
}

Bytes head(uint32_t type, int32_t data_size)
{
    return joined({word(type), word(0x0A0B0C0D), word(static_cast<uint32_t>(data_size))});
}

// A body with a head whose `data_size` is the payload's size, as most senders send it.
Bytes headed(uint32_t type, const Bytes &payload)
{
    return joined({head(type, static_cast<int32_t>(payload.size())), payload});
}

Bytes app_head(uint32_t type, std::string_view pkg, int32_t data_size)
{
    return joined(
        {word(type), word(0x0A0B0C0D), text(pkg), word(static_cast<uint32_t>(data_size))});
}

Bytes app_headed(uint32_t type, std::string_view pkg, const Bytes &payload)
{
    return joined({app_head(type, pkg, static_cast<int32_t>(payload.size())), payload});
}

Bytes callback(uint32_t type, const Bytes &payload)
{
    return joined({word(type), word(static_cast<uint32_t>(16 + payload.size())), word(0x0A0B0C0D),
                   word(0x0E0F1011), payload});
}

// Bytes behind a body, as some categories send them.
Bytes padded(const Bytes &body, int count)
{
    return joined({body, repeated(count, byte(0))});
}

Bytes four_raw()
{
    return raw("1234");
}

Bytes raw_with_zero()
{
    return raw({"ab\0cd", 5});
}

class Messages {
public:
    void add(std::string name, uint8_t type, const Bytes &body, const std::string &hdr_text = "")
    {
        all_.push_back({std::move(name), framed(type, body, hdr_text)});
    }
    std::vector<GoodMessage> take() { return std::move(all_); }

private:
    std::vector<GoodMessage> all_;
};

void add_envelopes(Messages &out)
{
    out.add("none-19", 19, {});
    out.add("none-41-trailing", 41, four_raw());
    out.add("none-75-text", 75, {}, "header");
    out.add("none-80-text-with-zero", 80, {}, std::string("a\0b", 3));
}

void add_admin(Messages &out)
{
    out.add("admin-query", 1, joined({word(0), text("org.example"), word(1)}));
    out.add("admin-query-empty", 2, joined({word(0), text(""), word(0xFFFFFFFF)}));
    out.add("admin-general", 2, joined({word(5), word(6), text("org.example"), text("client")}));
    out.add("admin-general-empty", 1, joined({word(0xFFFFFFFF), word(0), empty_texts(2)}));
}

void add_pwd(Messages &out)
{
    out.add("pwd-head", 3, head(40, 0));
    out.add("pwd-negative", 4, head(7, -1));
    out.add("pwd-policy", 4, headed(40, joined({numbers(9), texts({"old", "new"})})));
    out.add("pwd-policy-empty", 3, joined({head(40, 1), numbers(9), empty_texts(2)}));
    out.add("pwd-raw", 3, headed(7, four_raw()));
    out.add("pwd-raw-zero", 4, headed(41, raw_with_zero()));
}

void add_security(Messages &out)
{
    const Bytes account = joined({numbers(4), letters(22)});
    const Bytes empty_account = joined({numbers(4), empty_texts(22)});
    out.add("security-head", 5, head(56, 0));
    out.add("security-list-negative", 6, head(70, -1));
    out.add("security-item", 5, headed(56, joined({word(7), texts({"one", "four", "three"})})));
    out.add("security-item-empty", 6, headed(76, joined({word(7), empty_texts(3)})));
    out.add("security-strings", 6, headed(68, list(3, texts({"a", "", "bc"}))));
    out.add("security-strings-all-empty", 5, headed(69, list(2, empty_texts(2))));
    out.add("security-strings-none", 5, headed(68, word(0)));
    out.add("security-accounts", 6, headed(70, list(1, account)));
    out.add("security-accounts-empty", 5, headed(71, list(2, repeated(2, empty_account))));
    out.add("security-accounts-none", 5, headed(71, word(0)));
    out.add("security-raw", 6, headed(57, four_raw()));
    out.add("security-raw-zero", 5, headed(77, raw_with_zero()));
}

void add_wifi_networks(Messages &out)
{
    const auto network = [](uint32_t kind, const Bytes &detail) {
        return headed(345, joined({text("home"), word(kind), detail}));
    };
    out.add("wifi-network-none", 7, network(0, {}));
    out.add("wifi-network-beyond", 8, network(10, {}));
    out.add("wifi-network-number", 7, network(1, word(77)));
    out.add("wifi-network-number-8", 8, network(8, word(78)));
    out.add("wifi-network-number-9", 8, network(9, word(79)));
    out.add("wifi-network-text", 8, network(2, text("key")));
    out.add("wifi-network-text-empty", 7, network(4, text("")));
    const Bytes mixed = joined({letters(3), word(33), letters(2)});
    out.add("wifi-network-mixed", 7, network(5, mixed));
    out.add("wifi-network-mixed-7", 8, network(7, mixed));
    out.add("wifi-network-mixed-empty", 8,
            network(7, joined({empty_texts(3), word(33), empty_texts(2)})));
    out.add("wifi-network-texts", 7, network(6, letters(7)));
    out.add("wifi-network-texts-empty", 8,
            headed(345, joined({text(""), word(6), empty_texts(7)})));
}

void add_wifi(Messages &out)
{
    out.add("wifi-head", 7, head(305, 0));
    out.add("wifi-negative", 8, head(88, -1));
    out.add("wifi-pair", 7, padded(headed(305, texts({"home", "on"})), 5));
    out.add("wifi-pair-empty", 8, joined({head(339, 1), empty_texts(2)}));
    out.add("wifi-ssids", 8, headed(290, list(3, texts({"a", "", "bcd"}))));
    out.add("wifi-ssids-none", 7, headed(352, word(0)));
    out.add("wifi-dhcp", 7, headed(88, letters(5)));
    out.add("wifi-dhcp-empty", 8, headed(88, empty_texts(5)));
    out.add("wifi-triple", 8, headed(319, letters(3)));
    out.add("wifi-triple-empty", 7, headed(319, empty_texts(3)));
    out.add("wifi-raw", 7, headed(300, four_raw()));
    out.add("wifi-raw-zero", 8, headed(306, raw_with_zero()));
    add_wifi_networks(out);
}

void add_bluetooth(Messages &out)
{
    out.add("bluetooth-head", 9, head(91, 0));
    out.add("bluetooth-negative", 10, head(232, -1));
    out.add("bluetooth-names", 10, headed(223, list(3, texts({"mic", "", "ear"}))));
    out.add("bluetooth-names-kept", 9, headed(220, list(2, texts({"a", "b"}))));
    out.add("bluetooth-names-none", 9, headed(237, word(0)));
    out.add("bluetooth-raw", 9, headed(232, four_raw()));
    out.add("bluetooth-raw-zero", 10, headed(0, raw_with_zero()));
}

void add_eas(Messages &out)
{
    const Bytes account = joined({numbers(6), letters(9)});
    const Bytes empty_account = joined({numbers(6), empty_texts(9)});
    out.add("eas-head", 11, head(98, 0));
    out.add("eas-account", 12, headed(98, account));
    out.add("eas-account-empty", 11, joined({head(98, -1), empty_account}));
    out.add("eas-settings", 11, headed(104, letters(3)));
    out.add("eas-settings-empty", 12, padded(headed(104, empty_texts(3)), 1));
    out.add("eas-accounts", 12, headed(106, list(2, joined({account, empty_account}))));
    out.add("eas-accounts-none", 11, headed(106, word(0)));
    out.add("eas-value", 11, headed(7, joined({word(3), text("mail")})));
    out.add("eas-value-empty", 12, headed(0xFFFFFFFF, joined({word(3), text("")})));
}

void add_email(Messages &out)
{
    const Bytes element = joined({numbers(9), letters(13)});
    const Bytes empty_element = joined({numbers(9), empty_texts(13)});
    out.add("email-head", 39, head(359, 0));
    out.add("email-account", 40, headed(359, joined({numbers(7), letters(9)})));
    out.add("email-account-empty", 39, joined({head(359, -1), numbers(7), empty_texts(9)}));
    out.add("email-settings", 39, headed(362, letters(3)));
    out.add("email-settings-empty", 40, headed(362, empty_texts(3)));
    out.add("email-accounts", 40, headed(363, list(2, joined({element, empty_element}))));
    out.add("email-accounts-none", 39, headed(363, word(0)));
    out.add("email-value", 39, headed(5, joined({word(3), text("box")})));
    out.add("email-value-empty", 40, headed(361, joined({word(3), text("")})));
}

void add_apn(Messages &out)
{
    const Bytes profile = joined({numbers(2), letters(13)});
    const Bytes empty_profile = joined({numbers(2), empty_texts(13)});
    out.add("apn-head", 21, head(387, 0));
    out.add("apn-profile", 22, headed(387, profile));
    out.add("apn-profile-empty", 21, padded(headed(393, empty_profile), 1));
    out.add("apn-profiles", 21, headed(389, list(2, joined({profile, empty_profile}))));
    out.add("apn-profiles-one", 22, headed(391, list(1, profile)));
    out.add("apn-profiles-none", 22, headed(390, word(0)));
    out.add("apn-raw", 21, headed(388, four_raw()));
    out.add("apn-raw-zero", 22, headed(392, raw_with_zero()));
}

void add_app(Messages &out)
{
    out.add("app-head", 13, app_head(4, "org.example", 0));
    out.add("app-negative", 13, app_head(1, "", -1));
    out.add("app-packages", 13, app_headed(4, "pkg", list(3, texts({"a.b", "", "c"}))));
    out.add("app-packages-none", 13, app_headed(15, "", word(0)));
    out.add("app-num-pair", 13, app_headed(140, "pkg", numbers(2)));
    out.add("app-num-pair-no-pkg", 13, app_headed(141, "", numbers(2)));
    out.add("app-pair", 13, app_headed(184, "pkg", texts({"first", "second"})));
    out.add("app-pair-empty", 13, app_headed(185, "", empty_texts(2)));
    out.add("app-raw", 13, app_headed(1, "pkg", four_raw()));
    out.add("app-raw-zero", 13, app_headed(5, "", raw_with_zero()));
}

void add_app_res(Messages &out)
{
    const Bytes items = joined({text("one"), word(1), text(""), word(2), text("two"), word(3)});
    const Bytes controls =
        joined({word(0xFFFFFFFE), list(2, texts({"a.b", ""})), word(9), word(0)});
    out.add("app-res-head", 14, app_head(3, "org.example", 0));
    out.add("app-res-negative", 14, app_head(172, "", -1));
    out.add("app-res-packages", 14, app_headed(162, "pkg", list(3, texts({"a.b", "", "c"}))));
    out.add("app-res-packages-none", 14, app_headed(3, "", word(0)));
    out.add("app-res-items", 14, app_headed(140, "pkg", list(3, items)));
    out.add("app-res-items-142", 14, app_headed(142, "", list(3, items)));
    out.add("app-res-items-none", 14, app_headed(141, "", word(0)));
    out.add("app-res-controls", 14, app_headed(172, "pkg", list(2, controls)));
    out.add("app-res-controls-none", 14, app_headed(175, "", word(0)));
    out.add("app-res-raw", 14, app_headed(143, "pkg", four_raw()));
    out.add("app-res-raw-zero", 14, app_headed(178, "", raw_with_zero()));
}

void add_roaming(Messages &out)
{
    out.add("roaming", 15, joined({head(1, 4), text("abroad")}));
    out.add("roaming-empty", 15, joined({head(1, 0), text("")}));
    out.add("roaming-res", 16, head(2, 7));
    out.add("roaming-res-zero", 16, head(2, 0));
}

void add_misc(Messages &out)
{
    out.add("misc-head", 17, head(122, 0));
    out.add("misc-array", 18, joined({head(122, 3), texts({"a", "", "bc"})}));
    out.add("misc-nothing", 17, head(123, 40));
    out.add("misc-nothing-negative", 18, head(123, -1));
    out.add("misc-text", 17, headed(124, text("text")));
    out.add("misc-text-empty", 18, headed(126, text("")));
    out.add("misc-list", 18, padded(joined({head(127, 0), list(3, texts({"a", "", "bc"}))}), 4));
    out.add("misc-list-none", 17, joined({head(128, -1), word(0)}));
    out.add("misc-book", 17, headed(281, texts({"http://a", "title"})));
    out.add("misc-book-empty", 18, headed(283, empty_texts(2)));
    out.add("misc-pair", 18, headed(288, texts({"first", "second"})));
    out.add("misc-pair-empty", 17, headed(289, empty_texts(2)));
    out.add("misc-raw", 17, headed(1, four_raw()));
    out.add("misc-raw-zero", 18, headed(282, raw_with_zero()));
}

void add_phone_res(Messages &out)
{
    out.add("phone-res-head", 35, head(394, 0));
    out.add("phone-res-negative", 36, head(422, -1));
    out.add("phone-res-item", 35, headed(394, texts({"zero", "two"})));
    out.add("phone-res-item-empty", 36, headed(455, empty_texts(2)));
    out.add("phone-res-ext", 36, headed(422, joined({text("zero"), numbers(2), text("two")})));
    out.add("phone-res-ext-empty", 35, headed(422, joined({text(""), numbers(2), text("")})));
    out.add("phone-res-raw", 35, headed(450, four_raw()));
    out.add("phone-res-raw-zero", 36, headed(393, raw_with_zero()));
    // Sized and released as items, sent and read as raw bytes: what a pointer would be follows.
    out.add("phone-res-raw-439", 35, headed(439, raw("AAAAAAAABBBBBBBBCCCCCCCC")));
    out.add("phone-res-raw-440", 36, headed(440, four_raw()));
}

void add_kiosk(Messages &out)
{
    out.add("kiosk-head", 45, head(618, 0));
    out.add("kiosk-text", 46, headed(612, text("launcher")));
    out.add("kiosk-text-empty", 45, headed(614, text("")));
    out.add("kiosk-keys", 45, joined({head(618, 12), list(3, numbers(3))}));
    out.add("kiosk-keys-none", 46, joined({head(621, -1), word(0)}));
    out.add("kiosk-pairs", 46, joined({head(619, 16), list(2, numbers(4))}));
    out.add("kiosk-pairs-none", 45, joined({head(619, 1), word(0)}));
    out.add("kiosk-raw", 45, headed(613, four_raw()));
    out.add("kiosk-raw-zero", 46, headed(622, raw_with_zero()));
}

void add_container(Messages &out)
{
    out.add("container-head", 47, head(628, 0));
    out.add("container-item", 48, headed(628, joined({word(1), texts({"ab", "cd"})})));
    out.add("container-item-empty", 47, joined({head(628, -1), word(1), empty_texts(2)}));
    out.add("container-short-item", 47, headed(629, joined({word(1), text("ab")})));
    out.add("container-short-item-empty", 48, headed(629, joined({word(1), text("")})));
    out.add("container-raw", 48, headed(630, four_raw()));
    out.add("container-raw-zero", 47, headed(632, raw_with_zero()));
    out.add("container-nothing", 47, head(640, 9));
    out.add("container-nothing-negative", 48, head(627, -1));
}

void add_single_list(Messages &out, const std::string &name, uint8_t type)
{
    const auto other = static_cast<uint8_t>(type + 1);
    out.add(name + "-head", type, head(100, 0));
    out.add(name + "-negative", other, head(100, -1));
    out.add(name + "-raw", type, headed(100, four_raw()));
    out.add(name + "-raw-zero", other, headed(0, raw_with_zero()));
}

void add_single_lists(Messages &out)
{
    add_single_list(out, "browser", 23);
    add_single_list(out, "date-time", 25);
    add_single_list(out, "remote", 27);
    add_single_list(out, "vpn", 29);
    add_single_list(out, "firewall", 31);
    add_single_list(out, "res", 33);
    add_single_list(out, "enterprise", 37);
    // The payload of these two is not read: it need not be there.
    out.add("browser-unread", 24, head(1, 1000));
    out.add("enterprise-unread", 38, head(1, 1000));
}

void add_fixed(Messages &out)
{
    out.add("location", 49, head(1, 7));
    out.add("location-negative", 50, head(1, -1));
    out.add("log-manager-text", 51, joined({word(638), text("file")}));
    out.add("log-manager-text-empty", 52, joined({word(638), text("")}));
    out.add("log-manager-byte", 51, joined({word(1), byte(0x34)}));
    out.add("log-manager-byte-high", 52, joined({word(637), byte(0xFF)}));
    out.add("platform-439", 53, joined({word(439), text("abc"), word(7), byte(1)}));
    out.add("platform-439-empty", 54, joined({word(439), text(""), word(7), byte(0xFF)}));
    out.add("platform-440", 54, joined({word(440), text("abc"), word(7)}));
    out.add("platform-440-empty", 53, joined({word(440), text(""), word(7)}));
    out.add("platform-text", 53, joined({word(438), text("abc")}));
    out.add("platform-text-empty", 54, joined({word(0), text("")}));
}

void add_callbacks(Messages &out)
{
    const Bytes app = joined({word(6), texts({"eight", "seven"})});
    const Bytes misc = joined({byte(6), word(7), text("eight")});
    out.add("app-cb", 61, callback(0, app));
    out.add("app-cb-empty", 61, callback(1, joined({word(6), empty_texts(2)})));
    out.add("app-cb-size-zero", 61, joined({word(0), word(0), word(3), word(4)}));
    out.add("app-cb-unknown", 61, callback(2, {}));
    out.add("misc-cb", 63, callback(1, misc));
    out.add("misc-cb-empty", 63, callback(0, joined({byte(6), word(7), text("")})));
    out.add("misc-cb-size-zero", 63, joined({word(1), word(0), word(3), word(4)}));
    out.add("misc-cb-unknown", 63, callback(5, {}));
}

}  // namespace

std::vector<uint8_t> framed(uint8_t type, const std::vector<uint8_t> &body,
                            const std::string &hdr_text)
{
    const Bytes header_text = text(hdr_text);
    return joined({word(static_cast<uint32_t>(28 + header_text.size() + body.size())), byte(type),
                   byte(0x5A), byte(0), byte(0), word(0x11111111), word(0x22222222), header_text,
                   word(0x33333333), word(0x66666666), word(0x77777777), word(0x44444444),
                   word(0x55555555), body});
}

std::vector<GoodMessage> good_messages()
{
    Messages out;
    add_envelopes(out);
    add_admin(out);
    add_pwd(out);
    add_security(out);
    add_wifi(out);
    add_bluetooth(out);
    add_eas(out);
    add_email(out);
    add_apn(out);
    add_app(out);
    add_app_res(out);
    add_roaming(out);
    add_misc(out);
    add_phone_res(out);
    add_kiosk(out);
    add_container(out);
    add_single_lists(out);
    add_fixed(out);
    add_callbacks(out);
    return out.take();
}

}  // namespace mdm::test
