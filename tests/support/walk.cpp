// SPDX-License-Identifier: Apache-2.0
#include "support/walk.hpp"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include <glib.h>

namespace mdm::test {
namespace {

// Lines of a name and values. A text stands behind its length, so that no two read alike. It grows
// in GLib's own string, which is fast in a program without optimisation, too.
class Description {
public:
    Description() : text_(g_string_sized_new(512)) {}
    ~Description() { g_string_free(text_, TRUE); }
    Description(const Description &) = delete;
    Description &operator=(const Description &) = delete;

    template <class... Values>
    void line(const char *name, const Values &...values)
    {
        put_bytes(name, std::strlen(name));
        (put(values), ...);
        put_bytes("\n", 1);
    }

    void raw(const void *data, int32_t size)
    {
        put_bytes("raw ", 4);
        const auto *bytes = static_cast<const uint8_t *>(data);
        const size_t count = static_cast<size_t>(size) + 1;
        const size_t begin = text_->len;
        g_string_set_size(text_, begin + 2 * count);
        char *out = text_->str + begin;
        for (size_t i = 0; i < count; ++i) {
            constexpr const char *digits = "0123456789abcdef";
            *out++ = digits[bytes[i] >> 4];
            *out++ = digits[bytes[i] & 15];
        }
        put_bytes("\n", 1);
    }

    std::string text() const { return {text_->str, text_->len}; }

private:
    void put_bytes(const char *bytes, size_t count)
    {
        g_string_append_len(text_, bytes, static_cast<gssize>(count));
    }

    void put(uint64_t number)
    {
        char digits[24];
        char *const end = digits + sizeof digits;
        char *begin = end;
        do {
            *--begin = static_cast<char>('0' + number % 10);
            number /= 10;
        } while (number != 0);
        *--begin = ' ';
        put_bytes(begin, static_cast<size_t>(end - begin));
    }
    void put(uint32_t number) { put(uint64_t{number}); }
    void put(uint8_t number) { put(uint64_t{number}); }
    void put(int32_t number)
    {
        if (number < 0) {
            put_bytes(" -", 2);
        }
        put(static_cast<uint64_t>(std::abs(int64_t{number})));
    }
    void put(const char *text)
    {
        if (text == nullptr) {
            return put_bytes(" null", 5);
        }
        const size_t length = std::strlen(text);
        put(uint64_t{length});
        put_bytes("\"", 1);
        put_bytes(text, length);
        put_bytes("\"", 1);
    }

    GString *text_;
};

bool is_one_of(uint32_t type, std::initializer_list<uint32_t> types)
{
    return std::ranges::find(types, type) != types.end();
}

bool is_between(uint32_t type, uint32_t first, uint32_t last)
{
    return first <= type && type <= last;
}

// Records: one line for each.

void record(Description &out, const mdm_pwd_policy_t &it)
{
    out.line("policy", it.num0, it.num1, it.num2, it.num3, it.num4, it.num5, it.num6, it.num7,
             it.num8, it.str9, it.str10);
}

void record(Description &out, const mdm_security_item_t &it)
{
    out.line("item", it.num0, it.str1, it.word2, it.str3, it.str4);
}

void record(Description &out, const mdm_security_account_t &it)
{
    out.line("account", it.num0, it.num1, it.num2, it.num3, it.str4, it.str5, it.str6, it.str7,
             it.str8, it.str9, it.str10, it.str11, it.str12, it.str13, it.str14, it.str15, it.str16,
             it.str17, it.str18, it.str19, it.str20, it.str21, it.str22, it.str23, it.str24,
             it.str25);
}

void record(Description &out, const mdm_wifi_pair_t &it)
{
    out.line("pair", it.ssid, it.value);
}

void record(Description &out, const mdm_wifi_dhcp_t &it)
{
    out.line("dhcp", it.str0, it.str1, it.str2, it.str3, it.str4);
}

void record(Description &out, const mdm_wifi_triple_t &it)
{
    out.line("triple", it.str0, it.str1, it.str2);
}

void wifi_detail(Description &out, const mdm_wifi_detail_t &it, int32_t kind)
{
    switch (kind) {
    case 1:
    case 8:
    case 9:
        return out.line("detail", it.w0.number, it.w1.text, it.w2.text, it.w3.text, it.w4.text,
                        it.w5.text, it.w6.text);
    case 5:
    case 7:
        return out.line("detail", it.w0.text, it.w1.text, it.w2.text, it.w3.number, it.w4.text,
                        it.w5.text, it.w6.text);
    default:  // what a kind does not use is null
        return out.line("detail", it.w0.text, it.w1.text, it.w2.text, it.w3.text, it.w4.text,
                        it.w5.text, it.w6.text);
    }
}

void record(Description &out, const mdm_wifi_network_t &it)
{
    out.line("network", it.ssid, it.detail_kind);
    if (it.detail == nullptr) {
        return out.line("no detail");
    }
    wifi_detail(out, *it.detail, it.detail_kind);
}

void record(Description &out, const mdm_eas_account_t &it)
{
    out.line("account", it.num0, it.num1, it.num2, it.num3, it.num4, it.num5, it.str6, it.str7,
             it.str8, it.str9, it.str10, it.str11, it.str12, it.str13, it.str14);
}

void record(Description &out, const mdm_eas_value_t &it)
{
    out.line("value", it.num0, it.str1);
}

void record(Description &out, const mdm_email_account_t &it)
{
    out.line("account", it.num0, it.num1, it.num2, it.num3, it.num4, it.num5, it.num6, it.num7,
             it.num8, it.str9, it.str10, it.str11, it.str12, it.str13, it.str14, it.str15, it.str16,
             it.str17, it.str18, it.str19, it.str20, it.str21);
}

void record(Description &out, const mdm_email_value_t &it)
{
    out.line("value", it.num0, it.str1);
}

void record(Description &out, const mdm_apn_account_t &it)
{
    out.line("profile", it.num0, it.num1, it.profile_name, it.str3, it.str4, it.str5, it.str6,
             it.str7, it.str8, it.str9, it.str10, it.str11, it.str12, it.str13, it.str14);
}

void record(Description &out, const mdm_app_pair_t &it)
{
    out.line("pair", it.first, it.second);
}

void record(Description &out, const mdm_app_num_pair_t &it)
{
    out.line("pair", it.num1, it.num2);
}

void record(Description &out, const mdm_app_res_item_t &it)
{
    out.line("item", it.name, it.value);
}

void record(Description &out, const mdm_misc_str_t &it)
{
    out.line("text", it.value);
}

void record(Description &out, const mdm_book_info_t &it)
{
    out.line("book", it.url, it.title);
}

void record(Description &out, const mdm_misc_str_pair_t &it)
{
    out.line("pair", it.first, it.second);
}

void record(Description &out, const mdm_phone_res_item_t &it)
{
    out.line("item", it.str0, it.word1, it.str2);
}

void record(Description &out, const mdm_phone_res_ext_t &it)
{
    out.line("ext", it.str0, it.word1);
    if (it.detail == nullptr) {
        return out.line("no detail");
    }
    out.line("detail", it.detail->num0, it.detail->num1, it.detail->str2);
}

void record(Description &out, const uint32_t &it)
{
    out.line("key", it);
}

void record(Description &out, const mdm_kiosk_key_pair_t &it)
{
    out.line("pair", it.key, it.value);
}

void record(Description &out, const mdm_container_item_t &it)
{
    out.line("item", it.num0, it.str1, it.str2);
}

void record(Description &out, const mdm_roaming_data_t &it)
{
    out.line("data", it.name);
}

// What a body's `data` points to.

template <class Record>
void payload(Description &out, const void *data)
{
    if (data == nullptr) {
        return out.line("no record");
    }
    record(out, *static_cast<const Record *>(data));
}

// Calls `visit` with each element.
template <class Visit>
void walk(Description &out, const void *list, Visit visit)
{
    const GList *previous = nullptr;
    for (const auto *cell = static_cast<const GList *>(list); cell != nullptr; cell = cell->next) {
        if (cell->prev != previous) {
            return out.line("broken link");
        }
        visit(cell->data);
        previous = cell;
    }
    out.line("end of list");
}

void strings(Description &out, const void *list)
{
    walk(out, list, [&](const void *text) { out.line("-", static_cast<const char *>(text)); });
}

template <class Record>
void records(Description &out, const void *list)
{
    walk(out, list, [&](const void *element) { payload<Record>(out, element); });
}

void record(Description &out, const mdm_app_control_info_t &it)
{
    out.line("control", it.client_id);
    strings(out, it.pkg_list);
}

void nothing(Description &out, const void *data)
{
    out.line(data == nullptr ? "null" : "not null");
}

// As many bytes as the body's head says, and the terminator.
template <class Info>
void raw(Description &out, const Info &info)
{
    if (info.data == nullptr || info.data_size < 0) {
        return nothing(out, info.data);
    }
    out.raw(info.data, info.data_size);
}

// Bodies.

template <class Info>
void head(Description &out, const char *category, const Info &info)
{
    out.line(category, info.type, info.aux, info.param, info.data_size);
}

template <class Info>
void app_head(Description &out, const char *category, const Info &info)
{
    out.line(category, info.type, info.aux, info.param, info.pkg, info.data_size);
}

template <class Info>
void callback_head(Description &out, const char *category, const Info &info)
{
    out.line(category, info.type, info.aux, info.param, info.param2, info.data_size, info.aux2);
}

void body(Description &out, const mdm_admin_info_t &info)
{
    out.line("admin", info.type, info.aux, info.value, info.pkg, info.text, info.status);
}

void body(Description &out, const mdm_pwd_info_t &info)
{
    head(out, "pwd", info);
    if (info.data_size < 1) {
        return nothing(out, info.data);
    }
    info.type == 40 ? payload<mdm_pwd_policy_t>(out, info.data) : raw(out, info);
}

void body(Description &out, const mdm_security_info_t &info)
{
    head(out, "security", info);
    if (info.data_size < 1) {
        return nothing(out, info.data);
    }
    switch (info.type) {
    case 56:
    case 76:
        return payload<mdm_security_item_t>(out, info.data);
    case 68:
    case 69:
        return strings(out, info.data);
    case 70:
    case 71:
        return records<mdm_security_account_t>(out, info.data);
    default:
        return raw(out, info);
    }
}

void body(Description &out, const mdm_wifi_info_t &info)
{
    head(out, "wifi", info);
    if (info.data_size < 1) {
        return nothing(out, info.data);
    }
    if (is_one_of(info.type, {305, 307, 309, 311, 313, 315, 317, 324, 326, 328, 330, 332, 339})) {
        return payload<mdm_wifi_pair_t>(out, info.data);
    }
    if (is_one_of(info.type, {290, 344, 346, 348, 349, 350, 352})) {
        return strings(out, info.data);
    }
    switch (info.type) {
    case 88:
        return payload<mdm_wifi_dhcp_t>(out, info.data);
    case 319:
        return payload<mdm_wifi_triple_t>(out, info.data);
    case 345:
        return payload<mdm_wifi_network_t>(out, info.data);
    default:
        return raw(out, info);
    }
}

void body(Description &out, const mdm_bluetooth_info_t &info)
{
    head(out, "bluetooth", info);
    if (info.data_size < 1) {
        return nothing(out, info.data);
    }
    is_one_of(info.type, {91, 220, 221, 222, 223, 224, 225, 227, 230, 231, 233, 234, 235, 237})
        ? strings(out, info.data)
        : raw(out, info);
}

void body(Description &out, const mdm_eas_info_t &info)
{
    head(out, "eas", info);
    if (info.data_size == 0) {
        return nothing(out, info.data);
    }
    switch (info.type) {
    case 98:
    case 104:
        return payload<mdm_eas_account_t>(out, info.data);
    case 106:
        return records<mdm_eas_account_t>(out, info.data);
    default:
        return payload<mdm_eas_value_t>(out, info.data);
    }
}

void body(Description &out, const mdm_email_info_t &info)
{
    head(out, "email", info);
    if (info.data_size == 0) {
        return nothing(out, info.data);
    }
    switch (info.type) {
    case 359:
    case 362:
        return payload<mdm_email_account_t>(out, info.data);
    case 363:
        return records<mdm_email_account_t>(out, info.data);
    default:
        return payload<mdm_email_value_t>(out, info.data);
    }
}

void body(Description &out, const mdm_apn_info_t &info)
{
    head(out, "apn", info);
    if (info.data_size == 0) {
        return nothing(out, info.data);
    }
    switch (info.type) {
    case 387:
    case 393:
        return payload<mdm_apn_account_t>(out, info.data);
    case 389:
    case 390:
    case 391:
        return records<mdm_apn_account_t>(out, info.data);
    default:
        return raw(out, info);
    }
}

void body(Description &out, const mdm_app_info_t &info)
{
    app_head(out, "app", info);
    if (info.data_size < 1) {
        return nothing(out, info.data);
    }
    switch (info.type) {
    case 4:
    case 15:
        return strings(out, info.data);
    case 140:
    case 141:
        return payload<mdm_app_num_pair_t>(out, info.data);
    case 184:
    case 185:
        return payload<mdm_app_pair_t>(out, info.data);
    default:
        return raw(out, info);
    }
}

void body(Description &out, const mdm_app_res_info_t &info)
{
    app_head(out, "app_res", info);
    if (info.data_size < 1) {
        return nothing(out, info.data);
    }
    const auto type = static_cast<uint32_t>(info.type);
    if (is_one_of(type, {3, 155, 159, 162, 168, 169, 170, 171, 176, 177})) {
        return strings(out, info.data);
    }
    if (is_between(type, 140, 142)) {
        return records<mdm_app_res_item_t>(out, info.data);
    }
    if (is_between(type, 172, 175)) {
        return records<mdm_app_control_info_t>(out, info.data);
    }
    raw(out, info);
}

void body(Description &out, const mdm_app_cb_info_t &info)
{
    callback_head(out, "app_cb", info);
    out.line("payload", info.num6, info.str7, info.str8);
}

void body(Description &out, const mdm_misc_cb_info_t &info)
{
    callback_head(out, "misc_cb", info);
    out.line("payload", info.flag6, info.num7, info.str8);
}

void misc_list(Description &out, const mdm_misc_info_t &info)
{
    out.line("misc", info.type, info.aux, info.data_size);
    nothing(out, info.data);
    strings(out, info.param_list);
}

void misc_array(Description &out, const mdm_misc_info_t &info)
{
    const auto *texts = static_cast<const char *const *>(info.data);
    for (int32_t i = 0; i < info.data_size; ++i) {
        out.line("-", texts[i]);
    }
}

void body(Description &out, const mdm_misc_info_t &info)
{
    if (info.type == 127 || info.type == 128) {
        return misc_list(out, info);
    }
    head(out, "misc", info);
    if (info.data_size == 0) {
        return nothing(out, info.data);
    }
    switch (info.type) {
    case 122:
        return misc_array(out, info);
    case 123:
        return nothing(out, info.data);
    case 124:
    case 125:
    case 126:
        return payload<mdm_misc_str_t>(out, info.data);
    case 281:
    case 283:
        return payload<mdm_book_info_t>(out, info.data);
    case 288:
    case 289:
        return payload<mdm_misc_str_pair_t>(out, info.data);
    default:
        return raw(out, info);
    }
}

void body(Description &out, const mdm_phone_res_info_t &info)
{
    head(out, "phone_res", info);
    if (info.data_size < 1) {
        return nothing(out, info.data);
    }
    const auto type = static_cast<uint32_t>(info.type);
    if (type == 422) {
        return payload<mdm_phone_res_ext_t>(out, info.data);
    }
    // 439 and 440 stand between the records, and are read as raw bytes.
    is_between(type, 394, 455) && !is_one_of(type, {439, 440, 450, 451})
        ? payload<mdm_phone_res_item_t>(out, info.data)
        : raw(out, info);
}

void body(Description &out, const mdm_kiosk_info_t &info)
{
    head(out, "kiosk", info);
    if (info.data_size == 0) {
        return nothing(out, info.data);
    }
    switch (info.type) {
    case 612:
    case 614:
        return out.line("text", static_cast<const char *>(info.data));
    case 618:
    case 621:
        return records<uint32_t>(out, info.data);
    case 619:
        return records<mdm_kiosk_key_pair_t>(out, info.data);
    default:
        return raw(out, info);
    }
}

// The record of 629 ends before `str2`.
void short_container_item(Description &out, const void *data)
{
    if (data == nullptr) {
        return out.line("no record");
    }
    const auto *item = static_cast<const mdm_container_item_t *>(data);
    out.line("item", item->num0, item->str1);
}

void body(Description &out, const mdm_container_info_t &info)
{
    head(out, "container", info);
    if (info.data_size == 0) {
        return nothing(out, info.data);
    }
    switch (info.type) {
    case 628:
        return payload<mdm_container_item_t>(out, info.data);
    case 629:
        return short_container_item(out, info.data);
    case 630:
    case 631:
    case 632:
        return raw(out, info);
    default:
        return nothing(out, info.data);
    }
}

void body(Description &out, const mdm_roaming_info_t &info)
{
    head(out, "roaming", info);
    payload<mdm_roaming_data_t>(out, info.data);
}

void body(Description &out, const mdm_log_manager_info_t &info)
{
    out.line("log_manager", info.type, info.aux);
    if (info.type == 638) {
        return out.line("text", info.value.text);
    }
    out.line("word", uint64_t{info.value.word});
}

void body(Description &out, const mdm_platform_info_t &info)
{
    out.line("platform", info.type, info.aux, info.text, info.aux2, info.number, info.flag);
}

template <class Info>
void single_list(Description &out, const char *category, const Info &info)
{
    head(out, category, info);
    info.data_size < 1 ? nothing(out, info.data) : raw(out, info);
}

// Only the head is read.
template <class Info>
void head_alone(Description &out, const char *category, const Info &info)
{
    head(out, category, info);
    nothing(out, info.data);
}

// A type without a category.
void no_body(Description &out, const mdm_body_t &body)
{
    static const mdm_body_t zeros{};
    out.line(std::memcmp(&body, &zeros, sizeof body) == 0 ? "no body" : "not null");
}

void body_of(Description &out, uint8_t type, const mdm_body_t &any)
{
    switch (type) {
    case 1:
    case 2:
        return body(out, any.admin);
    case 3:
    case 4:
        return body(out, any.pwd);
    case 5:
    case 6:
        return body(out, any.security);
    case 7:
    case 8:
        return body(out, any.wifi);
    case 9:
    case 10:
        return body(out, any.bluetooth);
    case 11:
    case 12:
        return body(out, any.eas);
    case 13:
        return body(out, any.app);
    case 14:
        return body(out, any.app_res);
    case 15:
        return body(out, any.roaming);
    case 16:
        return head_alone(out, "roaming_res", any.roaming_res);
    case 17:
    case 18:
        return body(out, any.misc);
    case 21:
    case 22:
        return body(out, any.apn);
    case 23:
    case 24:
        return head_alone(out, "browser", any.browser);
    case 25:
    case 26:
        return single_list(out, "date_time", any.date_time);
    case 27:
    case 28:
        return single_list(out, "remote", any.remote);
    case 29:
    case 30:
        return single_list(out, "vpn", any.vpn);
    case 31:
    case 32:
        return single_list(out, "firewall", any.firewall);
    case 33:
    case 34:
        return single_list(out, "res", any.res);
    case 35:
    case 36:
        return body(out, any.phone_res);
    case 37:
    case 38:
        return head_alone(out, "enterprise", any.enterprise);
    case 39:
    case 40:
        return body(out, any.email);
    case 45:
    case 46:
        return body(out, any.kiosk);
    case 47:
    case 48:
        return body(out, any.container);
    case 49:
    case 50:
        return head_alone(out, "location", any.location);
    case 51:
    case 52:
        return body(out, any.log_manager);
    case 53:
    case 54:
        return body(out, any.platform);
    case 61:
        return body(out, any.app_cb);
    case 63:
        return body(out, any.misc_cb);
    default:
        return no_body(out, any);
    }
}

}  // namespace

std::string describe(const mdm_msg_t &msg)
{
    Description out;
    out.line("header", msg.hdr_aux, msg.type, msg.hdr_byte, msg.hdr_word1, msg.hdr_word2,
             msg.hdr_text, msg.hdr_word3, msg.hdr_word4, msg.hdr_word5, msg.hdr_word6,
             msg.hdr_word7);
    body_of(out, msg.type, msg.body);
    return out.text();
}

}  // namespace mdm::test
