// SPDX-License-Identifier: Apache-2.0
#include "support/format.hpp"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace mdm::test {
namespace {

template <class Member>
constexpr Type type_of()
{
    if constexpr (std::is_same_v<Member, char *>) {
        return Type::text;
    } else if constexpr (std::is_same_v<Member, GList *>) {
        return Type::strings;
    } else if constexpr (std::is_same_v<Member, uint8_t>) {
        return Type::byte;
    } else {
        static_assert(std::is_same_v<Member, uint32_t> || std::is_same_v<Member, int32_t>);
        return Type::word;
    }
}

// FIELDS(record, "place", a, b) is an array of record::a, "place.a", and record::b, "place.b".
#define FIELDS(record, place, ...)                      \
    std::array                                          \
    {                                                   \
        EXPAND(FIELDS_STEP(record, place, __VA_ARGS__)) \
    }
#define FIELDS_STEP(record, place, first, ...) \
    FIELD(record, place, first) __VA_OPT__(, FIELDS_NEXT PARENS(record, place, __VA_ARGS__))
#define FIELD(record, place, member)                                                     \
    Field                                                                                \
    {                                                                                    \
        place "." #member, type_of<decltype(record::member)>(), offsetof(record, member) \
    }
#define FIELDS_NEXT() FIELDS_STEP
#define PARENS ()
#define EXPAND(...) EXPAND_8(EXPAND_8(EXPAND_8(EXPAND_8(__VA_ARGS__))))
#define EXPAND_8(...) EXPAND_4(EXPAND_4(EXPAND_4(__VA_ARGS__)))
#define EXPAND_4(...) EXPAND_2(EXPAND_2(EXPAND_2(EXPAND_2(__VA_ARGS__))))
#define EXPAND_2(...) __VA_ARGS__

// Forms. A record's members all travel if they are not named apart.

template <class Record>
constexpr Form record(const char *name, Numbers types, Fields fields, DataSize data_size)
{
    return {.name = name,
            .types = types,
            .payload = Payload::record,
            .size = sizeof(Record),
            .fields = fields,
            .members = fields,
            .data_size = data_size};
}

template <class Record>
constexpr Form records(const char *name, Numbers types, const char *path, Fields fields,
                       DataSize data_size, int32_t extra = 0)
{
    return {.name = name,
            .types = types,
            .payload = Payload::records,
            .path = path,
            .size = sizeof(Record),
            .fields = fields,
            .members = fields,
            .data_size = data_size,
            .extra = extra};
}

constexpr Form strings(const char *name, Numbers types, const char *path, DataSize data_size,
                       int32_t extra = 0)
{
    return {.name = name,
            .types = types,
            .payload = Payload::strings,
            .path = path,
            .data_size = data_size,
            .extra = extra};
}

constexpr Form text(const char *name, Numbers types, const char *path, DataSize data_size)
{
    return {.name = name,
            .types = types,
            .payload = Payload::text,
            .path = path,
            .data_size = data_size};
}

constexpr Form raw(Numbers types, const char *path)
{
    return {.name = "data",
            .types = types,
            .payload = Payload::raw,
            .path = path,
            .data_size = DataSize::length};
}

constexpr Form signed_raw(Numbers types, const char *path)
{
    Form form = raw(types, path);
    form.trusts_sign = true;
    return form;
}

constexpr Form nothing(Numbers types)
{
    return {.name = "head", .types = types, .data_size = DataSize::anything};
}

constexpr Form body_fields(const char *name, Numbers types, Fields fields)
{
    return {.name = name,
            .types = types,
            .payload = Payload::body,
            .fields = fields,
            .data_size = DataSize::anything,
            .is_always_there = true};
}

constexpr Form with_members(Form form, Fields members)
{
    form.members = members;
    return form;
}

constexpr Form leaking(Form form, Leak leak = Leak::with_data)
{
    form.leak = leak;
    return form;
}

constexpr Form always_there(Form form)
{
    form.is_always_there = true;
    return form;
}

constexpr Form with_elements(Form form, Elements elements, uint32_t gap = 0)
{
    form.elements = elements;
    form.gap = gap;
    return form;
}

constexpr uint32_t minus_one = 0xFFFFFFFF;

// Bodies.

#define HEADED_BODY(category)                                               \
    constexpr auto category##_head =                                        \
        FIELDS(mdm_##category##_info_t, #category, type, param, data_size); \
    constexpr auto category##_members =                                     \
        FIELDS(mdm_##category##_info_t, #category, type, aux, param, data_size)
#define APP_BODY(category)                                                       \
    constexpr auto category##_head =                                             \
        FIELDS(mdm_##category##_info_t, #category, type, param, pkg, data_size); \
    constexpr auto category##_members =                                          \
        FIELDS(mdm_##category##_info_t, #category, type, aux, param, pkg, data_size)
#define CATEGORY(category, source, ...)                                        \
    .name = #category, .file = "mdm_ipc_" source ".cpp", .types = __VA_ARGS__, \
    .head = category##_head, .members = category##_members, .forms = category##_forms
#define HEADED_IN(source, category, ...)                           \
    CATEGORY(category, source, {__VA_ARGS__}),                     \
        .data_size = offsetof(mdm_##category##_info_t, data_size), \
        .data = offsetof(mdm_##category##_info_t, data)
#define HEADED(category, ...) HEADED_IN(#category, category, __VA_ARGS__)

constexpr auto admin_head = FIELDS(mdm_admin_info_t, "admin", type);
constexpr auto admin_members =
    FIELDS(mdm_admin_info_t, "admin", type, aux, value, pkg, text, status);
constexpr auto admin_query = FIELDS(mdm_admin_info_t, "admin", pkg, status);
constexpr auto admin_general = FIELDS(mdm_admin_info_t, "admin", value, pkg, text);
constexpr std::array admin_forms = {
    body_fields("query", {0}, admin_query),
    body_fields("general", {1, 5, minus_one}, admin_general),
};

HEADED_BODY(pwd);
constexpr auto pwd_policy = FIELDS(mdm_pwd_policy_t, "pwd.policy", num0, num1, num2, num3, num4,
                                   num5, num6, num7, num8, str9, str10);
constexpr std::array pwd_forms = {
    record<mdm_pwd_policy_t>("policy", {40}, pwd_policy, DataSize::as_given),
    raw({0, 39, 41, minus_one}, "pwd.data"),
};

HEADED_BODY(security);
constexpr auto security_item = FIELDS(mdm_security_item_t, "security.item", num0, str1, str4, str3);
constexpr auto security_item_members =
    FIELDS(mdm_security_item_t, "security.item", num0, str1, word2, str3, str4);
constexpr auto security_account =
    FIELDS(mdm_security_account_t, "security.account", num0, num1, num2, num3, str4, str5, str6,
           str7, str8, str9, str10, str11, str12, str13, str14, str15, str16, str17, str18, str19,
           str20, str21, str22, str23, str24, str25);
constexpr Form security_list(Form form)
{
    form.empty_list_padding = 4;
    return form;
}
constexpr Form security_item_form()
{
    Form form =
        with_members(record<mdm_security_item_t>("item", {56, 76}, security_item, DataSize::stored),
                     security_item_members);
    form.may_be_absent = true;
    return form;
}
constexpr std::array security_forms = {
    security_item_form(),
    security_list(with_elements(
        leaking(strings("strings", {68, 69}, "security.strings", DataSize::stored, 12)),
        Elements::lose_empty)),
    security_list(records<mdm_security_account_t>("accounts", {70, 71}, "security.accounts",
                                                  security_account, DataSize::stored, 12)),
    signed_raw({0, 55, 57, 67, 72, 75, 77, minus_one}, "security.data"),
};

HEADED_BODY(wifi);
constexpr auto wifi_pair = FIELDS(mdm_wifi_pair_t, "wifi.pair", ssid, value);
constexpr auto wifi_dhcp = FIELDS(mdm_wifi_dhcp_t, "wifi.dhcp", str0, str1, str2, str3, str4);
constexpr auto wifi_triple = FIELDS(mdm_wifi_triple_t, "wifi.triple", str0, str1, str2);
#define DETAIL(word, type)                                                          \
    Field                                                                           \
    {                                                                               \
        "wifi.network.detail." #word, Type::type, offsetof(mdm_wifi_detail_t, word) \
    }
constexpr std::array wifi_detail_number = {DETAIL(w0, word)};
constexpr std::array wifi_detail_text = {DETAIL(w0, text)};
constexpr std::array wifi_detail_mixed = {DETAIL(w0, text), DETAIL(w1, text), DETAIL(w2, text),
                                          DETAIL(w3, word), DETAIL(w4, text), DETAIL(w5, text)};
constexpr std::array wifi_detail_texts = {DETAIL(w0, text), DETAIL(w1, text), DETAIL(w2, text),
                                          DETAIL(w3, text), DETAIL(w4, text), DETAIL(w5, text),
                                          DETAIL(w6, text)};
constexpr std::array<Alternative, 4> wifi_details = {{{{1, 8, 9}, wifi_detail_number},
                                                      {{2, 3, 4}, wifi_detail_text},
                                                      {{5, 7}, wifi_detail_mixed},
                                                      {{6}, wifi_detail_texts}}};
constexpr NestedRecord wifi_detail = {sizeof(mdm_wifi_detail_t),
                                      offsetof(mdm_wifi_network_t, detail_kind), wifi_detail_texts,
                                      wifi_details};
constexpr std::array wifi_network = {
    FIELD(mdm_wifi_network_t, "wifi.network", ssid),
    FIELD(mdm_wifi_network_t, "wifi.network", detail_kind),
    Field{"wifi.network.detail", Type::record, offsetof(mdm_wifi_network_t, detail), &wifi_detail}};
constexpr std::array wifi_forms = {
    record<mdm_wifi_pair_t>("pair",
                            {305, 307, 309, 311, 313, 315, 317, 324, 326, 328, 330, 332, 339},
                            wifi_pair, DataSize::padded),
    record<mdm_wifi_dhcp_t>("dhcp", {88}, wifi_dhcp, DataSize::padded),
    record<mdm_wifi_triple_t>("triple", {319}, wifi_triple, DataSize::padded),
    leaking(record<mdm_wifi_network_t>("network", {345}, wifi_network, DataSize::as_given)),
    strings("ssids", {290, 344, 346, 348, 349, 350, 352}, "wifi.ssids", DataSize::as_given),
    raw({0, 87, 89, 304, 306, 318, 320, 340, 343, 347, 351, 353}, "wifi.data"),
};

HEADED_BODY(bluetooth);
constexpr std::array bluetooth_forms = {
    leaking(strings("names", {91, 220, 221, 222, 223, 224, 225, 227, 230, 231, 233, 234, 235, 237},
                    "bluetooth.names", DataSize::as_given)),
    leaking(raw({0, 90, 92, 219, 226, 228, 229, 232, 236, 238}, "bluetooth.data")),
};

HEADED_BODY(eas);
constexpr auto eas_account =
    FIELDS(mdm_eas_account_t, "eas.account", num0, num1, num2, num3, num4, num5, str6, str7, str8,
           str9, str10, str11, str12, str13, str14);
constexpr auto eas_settings = FIELDS(mdm_eas_account_t, "eas.settings", str8, str10, str13);
constexpr auto eas_value = FIELDS(mdm_eas_value_t, "eas.value", num0, str1);
constexpr std::array eas_forms = {
    record<mdm_eas_account_t>("account", {98}, eas_account, DataSize::stored),
    with_members(record<mdm_eas_account_t>("settings", {104}, eas_settings, DataSize::added),
                 eas_account),
    records<mdm_eas_account_t>("accounts", {106}, "eas.accounts", eas_account, DataSize::stored,
                               12),
    record<mdm_eas_value_t>("value", {0, 97, 99, 103, 105, 107}, eas_value, DataSize::stored),
};

HEADED_BODY(email);
constexpr auto email_account =
    FIELDS(mdm_email_account_t, "email.account", num0, num1, num2, num4, num6, num3, num5, str13,
           str14, str15, str16, str17, str18, str19, str20, str21);
constexpr auto email_element = FIELDS(
    mdm_email_account_t, "email.account", num0, num1, num2, num3, num4, num5, num6, num7, num8,
    str9, str10, str11, str12, str13, str14, str15, str16, str17, str18, str19, str20, str21);
constexpr auto email_settings = FIELDS(mdm_email_account_t, "email.settings", str16, str15, str14);
constexpr auto email_value = FIELDS(mdm_email_value_t, "email.value", num0, str1);
constexpr std::array email_forms = {
    with_members(record<mdm_email_account_t>("account", {359}, email_account, DataSize::stored),
                 email_element),
    with_members(
        leaking(record<mdm_email_account_t>("settings", {362}, email_settings, DataSize::stored)),
        email_element),
    records<mdm_email_account_t>("accounts", {363}, "email.accounts", email_element,
                                 DataSize::stored, 12),
    record<mdm_email_value_t>("value", {0, 358, 360, 361, 364}, email_value, DataSize::stored),
};

HEADED_BODY(apn);
constexpr auto apn_profile =
    FIELDS(mdm_apn_account_t, "apn.profile", num0, num1, profile_name, str3, str4, str5, str6, str7,
           str8, str9, str10, str11, str12, str13, str14);
constexpr std::array apn_forms = {
    record<mdm_apn_account_t>("profile", {387, 393}, apn_profile, DataSize::added),
    records<mdm_apn_account_t>("profiles", {389, 390, 391}, "apn.profiles", apn_profile,
                               DataSize::stored, 12),
    raw({0, 386, 388, 392, 394}, "apn.data"),
};

APP_BODY(app);
constexpr auto app_num_pair = FIELDS(mdm_app_num_pair_t, "app.num_pair", num1, num2);
constexpr auto app_pair = FIELDS(mdm_app_pair_t, "app.pair", first, second);
constexpr std::array app_forms = {
    leaking(strings("packages", {4, 15}, "app.packages", DataSize::as_given)),
    record<mdm_app_num_pair_t>("num-pair", {140, 141}, app_num_pair, DataSize::two_words),
    record<mdm_app_pair_t>("pair", {184, 185}, app_pair, DataSize::as_given),
    raw({0, 3, 5, 14, 16, 139, 142, 183, 186}, "app.data"),
};

APP_BODY(app_res);
constexpr auto app_res_item = FIELDS(mdm_app_res_item_t, "app_res.item", name, value);
constexpr auto app_res_control =
    FIELDS(mdm_app_control_info_t, "app_res.control", client_id, pkg_list);
constexpr std::array app_res_forms = {
    leaking(strings("packages", {3, 155, 159, 162, 168, 169, 170, 171, 176, 177},
                    "app_res.packages", DataSize::as_given),
            Leak::without_data),
    with_elements(leaking(records<mdm_app_res_item_t>("items", {140, 141, 142}, "app_res.items",
                                                      app_res_item, DataSize::as_given),
                          Leak::without_data),
                  Elements::nameless, 8),
    leaking(records<mdm_app_control_info_t>("controls", {172, 173, 174, 175}, "app_res.controls",
                                            app_res_control, DataSize::as_given),
            Leak::always),
    raw({0, 2, 4, 139, 143, 154, 156, 167, 178}, "app_res.data"),
};

HEADED_BODY(roaming);
constexpr auto roaming_data = FIELDS(mdm_roaming_data_t, "roaming.data", name);
constexpr std::array roaming_forms = {
    leaking(always_there(record<mdm_roaming_data_t>("record", {0, 1, 7, 100, minus_one},
                                                    roaming_data, DataSize::anything))),
};

constexpr std::array head_alone_forms = {always_there(nothing({0, 1, 7, 100, minus_one}))};

HEADED_BODY(roaming_res);
constexpr auto roaming_res_forms = head_alone_forms;
HEADED_BODY(location);
constexpr auto location_forms = head_alone_forms;

constexpr auto misc_head = FIELDS(mdm_misc_info_t, "misc", type, param, data_size);
constexpr auto misc_members = FIELDS(mdm_misc_info_t, "misc", type, aux, param, data_size);
constexpr auto misc_text = FIELDS(mdm_misc_str_t, "misc.text", value);
constexpr auto misc_book = FIELDS(mdm_book_info_t, "misc.book", url, title);
constexpr auto misc_pair = FIELDS(mdm_misc_str_pair_t, "misc.pair", first, second);
constexpr Form misc_param_list()
{
    Form form = with_elements(always_there(leaking(strings("strings", {127, 128}, "misc.param_list",
                                                           DataSize::anything))),
                              Elements::null_gaps, 4);
    form.is_in_param = true;
    return form;
}
constexpr std::array misc_forms = {
    Form{.name = "array",
         .types = {122},
         .payload = Payload::array,
         .path = "misc.array",
         .data_size = DataSize::length},
    nothing({123}),
    record<mdm_misc_str_t>("text", {124, 125, 126}, misc_text, DataSize::stored),
    misc_param_list(),
    record<mdm_book_info_t>("book", {281, 283}, misc_book, DataSize::stored),
    record<mdm_misc_str_pair_t>("pair", {288, 289}, misc_pair, DataSize::stored),
    raw({0, 121, 129, 280, 282, 284, 287, 290}, "misc.data"),
};

HEADED_BODY(phone_res);
constexpr auto phone_res_item = FIELDS(mdm_phone_res_item_t, "phone_res.item", str0, str2);
constexpr auto phone_res_item_members =
    FIELDS(mdm_phone_res_item_t, "phone_res.item", str0, word1, str2);
constexpr auto phone_res_detail_fields =
    FIELDS(mdm_phone_res_detail_t, "phone_res.ext.detail", num0, num1, str2);
constexpr std::array<Alternative, 1> phone_res_details = {{{{}, phone_res_detail_fields}}};
constexpr NestedRecord phone_res_detail = {sizeof(mdm_phone_res_detail_t), no_offset,
                                           phone_res_detail_fields, phone_res_details};
#define PHONE_RES_DETAIL                                                             \
    Field                                                                            \
    {                                                                                \
        "phone_res.ext.detail", Type::record, offsetof(mdm_phone_res_ext_t, detail), \
            &phone_res_detail                                                        \
    }
constexpr std::array phone_res_ext = {FIELD(mdm_phone_res_ext_t, "phone_res.ext", str0),
                                      PHONE_RES_DETAIL};
constexpr std::array phone_res_ext_members = {FIELD(mdm_phone_res_ext_t, "phone_res.ext", str0),
                                              FIELD(mdm_phone_res_ext_t, "phone_res.ext", word1),
                                              PHONE_RES_DETAIL};
constexpr Form phone_res_raw_record()
{
    Form form = raw({439, 440}, "phone_res.data");
    form.name = "raw-item";
    form.is_raw_record = true;
    return form;
}
constexpr Form phone_res_raw_between()
{
    Form form = raw({450, 451}, "phone_res.data");
    form.name = "data-between";
    return form;
}
constexpr std::array phone_res_forms = {
    with_members(record<mdm_phone_res_ext_t>("ext", {422}, phone_res_ext, DataSize::stored_twelve),
                 phone_res_ext_members),
    phone_res_raw_record(),
    phone_res_raw_between(),
    with_members(record<mdm_phone_res_item_t>("item", Numbers::between(394, 455), phone_res_item,
                                              DataSize::stored_twelve),
                 phone_res_item_members),
    raw({0, 393, 456, minus_one}, "phone_res.data"),
};

HEADED_BODY(kiosk);
constexpr std::array kiosk_key = {Field{"kiosk.key.number", Type::word, 0}};
constexpr auto kiosk_key_pair = FIELDS(mdm_kiosk_key_pair_t, "kiosk.key_pair", key, value);
constexpr std::array kiosk_forms = {
    text("text", {612, 614}, "kiosk.text", DataSize::stored),
    with_elements(
        records<uint32_t>("keys", {618, 621}, "kiosk.keys", kiosk_key, DataSize::stored, -4),
        Elements::null_gaps, 4),
    with_elements(records<mdm_kiosk_key_pair_t>("key-pairs", {619}, "kiosk.key_pairs",
                                                kiosk_key_pair, DataSize::stored, -4),
                  Elements::null_gaps, 8),
    raw({0, 611, 613, 615, 616, 617, 620, 622}, "kiosk.data"),
};

HEADED_BODY(container);
constexpr auto container_item = FIELDS(mdm_container_item_t, "container.item", num0, str1, str2);
constexpr auto container_short_item =
    FIELDS(mdm_container_item_t, "container.short_item", num0, str1);
constexpr std::array container_forms = {
    record<mdm_container_item_t>("item", {628}, container_item, DataSize::stored),
    record<mdm_container_item_t>("short-item", {629}, container_short_item, DataSize::stored),
    raw({630, 631, 632}, "container.data"),
    nothing({0, 627, 633, 640}),
};

constexpr auto log_manager_head = FIELDS(mdm_log_manager_info_t, "log_manager", type);
constexpr auto log_manager_members = FIELDS(mdm_log_manager_info_t, "log_manager", type, aux);
constexpr size_t log_manager_value = offsetof(mdm_log_manager_info_t, value);
constexpr std::array log_manager_text = {Field{"log_manager.value", Type::text, log_manager_value}};
constexpr std::array log_manager_byte = {
    Field{"log_manager.value", Type::low_byte, log_manager_value}};
constexpr std::array log_manager_forms = {
    body_fields("text", {638}, log_manager_text),
    body_fields("byte", {0, 637, 639}, log_manager_byte),
};

constexpr auto platform_head = FIELDS(mdm_platform_info_t, "platform", type);
constexpr auto platform_members =
    FIELDS(mdm_platform_info_t, "platform", type, aux, text, aux2, number, flag);
constexpr auto platform_flag = FIELDS(mdm_platform_info_t, "platform", text, number, flag);
constexpr auto platform_number = FIELDS(mdm_platform_info_t, "platform", text, number);
constexpr auto platform_text = FIELDS(mdm_platform_info_t, "platform", text);
constexpr std::array platform_forms = {
    body_fields("flag", {439}, platform_flag),
    body_fields("number", {440}, platform_number),
    body_fields("text", {0, 438, 441}, platform_text),
};

#define CALLBACK_BODY(category, ...)                                                             \
    constexpr auto category##_head =                                                             \
        FIELDS(mdm_##category##_info_t, #category, type, data_size, param, param2);              \
    constexpr auto category##_members = FIELDS(mdm_##category##_info_t, #category, type, aux,    \
                                               param, param2, data_size, aux2, __VA_ARGS__);     \
    constexpr auto category##_payload = FIELDS(mdm_##category##_info_t, #category, __VA_ARGS__); \
    constexpr std::array category##_forms = {                                                    \
        body_fields("detail", {0, 1}, category##_payload),                                       \
        body_fields("head", {2, 5, minus_one}, {}),                                              \
    }
CALLBACK_BODY(app_cb, num6, str8, str7);
CALLBACK_BODY(misc_cb, flag6, num7, str8);

// Seven categories have the same format.
// clang-format off: it would break the path
#define SINGLE_LIST(category)                                                                    \
    HEADED_BODY(category);                                                                       \
    constexpr std::array category##_forms = {signed_raw({0, 1, 100, minus_one}, #category ".dat" \
                                                                                          "a")}
// clang-format on
SINGLE_LIST(browser);
SINGLE_LIST(date_time);
SINGLE_LIST(remote);
SINGLE_LIST(vpn);
SINGLE_LIST(firewall);
SINGLE_LIST(res);
SINGLE_LIST(enterprise);

constexpr CategoryFormat all_categories[] = {
    {CATEGORY(admin, "admin", {1, 2})},
    {HEADED(pwd, 3, 4)},
    {HEADED(security, 5, 6), .sends_empty_lists = false},
    {HEADED(wifi, 7, 8)},
    {HEADED(bluetooth, 9, 10)},
    {HEADED(eas, 11, 12), .announced = Announced::nonzero, .sends_empty_lists = false},
    {HEADED(app, 13)},
    {HEADED(app_res, 14)},
    {HEADED(roaming, 15)},
    {HEADED_IN("roaming", roaming_res, 16)},
    {HEADED(misc, 17, 18), .announced = Announced::nonzero},
    {HEADED(apn, 21, 22), .announced = Announced::nonzero, .sends_empty_lists = false},
    {HEADED_IN("single_list", browser, 23, 24), .is_payload_read = false},
    {HEADED_IN("single_list", date_time, 25, 26)},
    {HEADED_IN("single_list", remote, 27, 28)},
    {HEADED_IN("single_list", vpn, 29, 30)},
    {HEADED_IN("single_list", firewall, 31, 32)},
    {HEADED_IN("single_list", res, 33, 34)},
    {HEADED(phone_res, 35, 36)},
    {HEADED_IN("single_list", enterprise, 37, 38), .is_payload_read = false},
    {HEADED(email, 39, 40), .announced = Announced::nonzero, .sends_empty_lists = false},
    {HEADED(kiosk, 45, 46), .announced = Announced::nonzero, .sends_empty_lists = false},
    {HEADED(container, 47, 48), .announced = Announced::nonzero},
    {HEADED(location, 49, 50)},
    {CATEGORY(log_manager, "log_manager", {51, 52})},
    {CATEGORY(platform, "platform", {53, 54})},
    {CATEGORY(app_cb, "callback", {61}), .counts_body = true},
    {CATEGORY(misc_cb, "callback", {63}), .counts_body = true},
};

}  // namespace

const Alternative *NestedRecord::alternative(const void *outer) const
{
    for (const Alternative &one : alternatives) {
        if (selector == no_offset || one.selectors.has(value_at<uint32_t>(outer, selector))) {
            return &one;
        }
    }
    return nullptr;
}

std::span<const CategoryFormat> category_formats()
{
    return all_categories;
}

std::ostream &operator<<(std::ostream &out, const CategoryFormat &category)
{
    return out << category.name;
}

const CategoryFormat *format_of(uint8_t message_type)
{
    for (const CategoryFormat &category : all_categories) {
        if (category.types.has(message_type)) {
            return &category;
        }
    }
    return nullptr;
}

std::vector<uint8_t> types_without_category()
{
    std::vector<uint8_t> types;
    for (uint8_t type = 1; type <= 80; ++type) {
        if (format_of(type) == nullptr) {
            types.push_back(type);
        }
    }
    return types;
}

const Form &form_of(const CategoryFormat &category, uint32_t discriminator)
{
    for (const Form &form : category.forms) {
        if (form.types.has(discriminator)) {
            return form;
        }
    }
    return category.forms.back();
}

std::vector<uint32_t> discriminators_of(const CategoryFormat &category, const Form &form)
{
    std::vector<uint32_t> all;
    std::ranges::copy_if(form.types, std::back_inserter(all), [&](uint32_t discriminator) {
        return &form_of(category, discriminator) == &form;
    });
    return all;
}

bool is_data_size(const Field &field)
{
    return std::string_view(field.path).ends_with(".data_size");
}

bool is_announced(const CategoryFormat &category, const Form &form, int32_t data_size)
{
    if (form.is_always_there) {
        return true;
    }
    return category.announced == Announced::positive ? data_size > 0 : data_size != 0;
}

bool selects(const Field &field, Fields fields)
{
    return std::ranges::any_of(fields, [&](const Field &other) {
        return other.nested != nullptr && other.nested->selector == field.offset;
    });
}

uint32_t smallest_size(const Field &field)
{
    switch (field.type) {
    case Type::byte:
    case Type::low_byte:
        return 1;
    case Type::record:
        return 0;
    default:
        return 4;
    }
}

uint32_t smallest_size(Fields fields)
{
    uint32_t size = 0;
    for (const Field &field : fields) {
        size += smallest_size(field);
    }
    return size;
}

}  // namespace mdm::test
