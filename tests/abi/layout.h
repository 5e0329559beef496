/* SPDX-License-Identifier: Apache-2.0 */
/*
 * The layout of the message and of every body and record, on 32 and on 64 bits: fields in the
 * documented order, at their natural alignment, with nothing between, before or behind them.
 */
#ifndef LAYOUT_H
#define LAYOUT_H

#include <assert.h>
#include <stddef.h>
#include <stdint.h>

#include "mdm/guarded.h"
#include "mdm/inspect.h"
#include "mdm/message.h"

#define SAME(left, right) static_assert((left) == (right), #left " == " #right)

#ifdef __cplusplus
#include <type_traits>
#define HAS_TYPE(record, field, type)                                                              \
    static_assert(std::is_same_v<std::remove_reference_t<decltype((((record *)0)->field))>, type>, \
                  #field " is " #type)
#else
#define HAS_TYPE(record, field, type) \
    static_assert(_Generic(((record *)0)->field, type : 1, default : 0), #field " is " #type)
#endif

/* A field and the end of the one before it, rounded up to the field's own size. */
#define END_OF(record, field) (offsetof(record, field) + sizeof(((record *)0)->field))
#define ALIGNED(size, to) (((size) + (to)-1) / (to) * (to))
#define FIRST(record, field, type)    \
    SAME(offsetof(record, field), 0); \
    HAS_TYPE(record, field, type)
#define NEXT(record, previous, field, type)                                         \
    SAME(offsetof(record, field), ALIGNED(END_OF(record, previous), sizeof(type))); \
    HAS_TYPE(record, field, type)
/* A record ends where its widest field would begin again. */
#define LAST(record, field, widest) \
    SAME(sizeof(record), ALIGNED(END_OF(record, field), sizeof(widest)))

typedef char *text_t;
typedef const char *const_text_t;
typedef const uint8_t *const_bytes_t;
typedef void *pointer_t;
typedef GList *list_t;
typedef mdm_wifi_detail_t *wifi_detail_pointer_t;
typedef mdm_phone_res_detail_t *phone_res_detail_pointer_t;

/* The body head, and bodies that consist of it. */
#define BODY_HEAD(record) BODY_HEAD_WITH(record, uint32_t)
#define BODY_HEAD_WITH(record, type_t)        \
    FIRST(record, type, type_t);              \
    NEXT(record, type, aux, uint32_t);        \
    NEXT(record, aux, param, uint32_t);       \
    NEXT(record, param, data_size, int32_t);  \
    NEXT(record, data_size, data, pointer_t); \
    LAST(record, data, pointer_t)

BODY_HEAD(mdm_pwd_info_t);
BODY_HEAD(mdm_security_info_t);
BODY_HEAD(mdm_wifi_info_t);
BODY_HEAD(mdm_bluetooth_info_t);
BODY_HEAD(mdm_eas_info_t);
BODY_HEAD(mdm_roaming_info_t);
BODY_HEAD(mdm_roaming_res_info_t);
BODY_HEAD(mdm_apn_info_t);
BODY_HEAD(mdm_browser_info_t);
BODY_HEAD(mdm_date_time_info_t);
BODY_HEAD(mdm_remote_info_t);
BODY_HEAD(mdm_vpn_info_t);
BODY_HEAD(mdm_firewall_info_t);
BODY_HEAD(mdm_res_info_t);
BODY_HEAD(mdm_enterprise_info_t);
BODY_HEAD(mdm_email_info_t);
BODY_HEAD(mdm_kiosk_info_t);
BODY_HEAD(mdm_container_info_t);
BODY_HEAD(mdm_location_info_t);
BODY_HEAD_WITH(mdm_phone_res_info_t, int32_t);

FIRST(mdm_misc_info_t, type, int32_t);
NEXT(mdm_misc_info_t, type, aux, uint32_t);
SAME(offsetof(mdm_misc_info_t, param), ALIGNED(8, sizeof(list_t)));
HAS_TYPE(mdm_misc_info_t, param, uint32_t);
NEXT(mdm_misc_info_t, aux, param_list, list_t);
NEXT(mdm_misc_info_t, param_list, data_size, int32_t);
NEXT(mdm_misc_info_t, data_size, data, pointer_t);
LAST(mdm_misc_info_t, data, pointer_t);

#define APP_HEAD(record)                      \
    FIRST(record, type, int32_t);             \
    NEXT(record, type, aux, uint32_t);        \
    NEXT(record, aux, param, uint32_t);       \
    NEXT(record, param, pkg, text_t);         \
    NEXT(record, pkg, data_size, int32_t);    \
    NEXT(record, data_size, data, pointer_t); \
    LAST(record, data, pointer_t)

APP_HEAD(mdm_app_info_t);
APP_HEAD(mdm_app_res_info_t);

#define CALLBACK_HEAD(record)                  \
    FIRST(record, type, uint32_t);             \
    NEXT(record, type, aux, uint32_t);         \
    NEXT(record, aux, param, uint32_t);        \
    NEXT(record, param, param2, uint32_t);     \
    NEXT(record, param2, data_size, uint32_t); \
    NEXT(record, data_size, aux2, uint32_t)

CALLBACK_HEAD(mdm_app_cb_info_t);
NEXT(mdm_app_cb_info_t, aux2, num6, uint32_t);
NEXT(mdm_app_cb_info_t, num6, str7, text_t);
NEXT(mdm_app_cb_info_t, str7, str8, text_t);
LAST(mdm_app_cb_info_t, str8, text_t);

CALLBACK_HEAD(mdm_misc_cb_info_t);
NEXT(mdm_misc_cb_info_t, aux2, flag6, uint8_t);
NEXT(mdm_misc_cb_info_t, flag6, num7, uint32_t);
NEXT(mdm_misc_cb_info_t, num7, str8, text_t);
LAST(mdm_misc_cb_info_t, str8, text_t);

/* Bodies with fields of their own. */
FIRST(mdm_admin_info_t, type, uint32_t);
NEXT(mdm_admin_info_t, type, aux, uint32_t);
NEXT(mdm_admin_info_t, aux, value, uint32_t);
NEXT(mdm_admin_info_t, value, pkg, text_t);
NEXT(mdm_admin_info_t, pkg, text, text_t);
NEXT(mdm_admin_info_t, text, status, int32_t);
LAST(mdm_admin_info_t, status, text_t);

FIRST(mdm_log_manager_info_t, type, uint32_t);
NEXT(mdm_log_manager_info_t, type, aux, uint32_t);
NEXT(mdm_log_manager_info_t, aux, value.text, text_t);
NEXT(mdm_log_manager_info_t, aux, value.word, uintptr_t);
SAME(offsetof(mdm_log_manager_info_t, value.byte), 8);
HAS_TYPE(mdm_log_manager_info_t, value.byte, uint8_t);
LAST(mdm_log_manager_info_t, value, uintptr_t);

FIRST(mdm_platform_info_t, type, uint32_t);
NEXT(mdm_platform_info_t, type, aux, uint32_t);
NEXT(mdm_platform_info_t, aux, text, text_t);
NEXT(mdm_platform_info_t, text, aux2, uint32_t);
NEXT(mdm_platform_info_t, aux2, number, uint32_t);
NEXT(mdm_platform_info_t, number, flag, uint8_t);
LAST(mdm_platform_info_t, flag, text_t);

/* Records. */
FIRST(mdm_pwd_policy_t, num0, uint32_t);
NEXT(mdm_pwd_policy_t, num0, num1, uint32_t);
NEXT(mdm_pwd_policy_t, num1, num2, uint32_t);
NEXT(mdm_pwd_policy_t, num2, num3, uint32_t);
NEXT(mdm_pwd_policy_t, num3, num4, uint32_t);
NEXT(mdm_pwd_policy_t, num4, num5, uint32_t);
NEXT(mdm_pwd_policy_t, num5, num6, uint32_t);
NEXT(mdm_pwd_policy_t, num6, num7, uint32_t);
NEXT(mdm_pwd_policy_t, num7, num8, uint32_t);
NEXT(mdm_pwd_policy_t, num8, str9, text_t);
NEXT(mdm_pwd_policy_t, str9, str10, text_t);
LAST(mdm_pwd_policy_t, str10, text_t);

FIRST(mdm_security_account_t, num0, uint32_t);
NEXT(mdm_security_account_t, num0, num1, uint32_t);
NEXT(mdm_security_account_t, num1, num2, uint32_t);
NEXT(mdm_security_account_t, num2, num3, uint32_t);
NEXT(mdm_security_account_t, num3, str4, text_t);
NEXT(mdm_security_account_t, str4, str5, text_t);
NEXT(mdm_security_account_t, str5, str6, text_t);
NEXT(mdm_security_account_t, str6, str7, text_t);
NEXT(mdm_security_account_t, str7, str8, text_t);
NEXT(mdm_security_account_t, str8, str9, text_t);
NEXT(mdm_security_account_t, str9, str10, text_t);
NEXT(mdm_security_account_t, str10, str11, text_t);
NEXT(mdm_security_account_t, str11, str12, text_t);
NEXT(mdm_security_account_t, str12, str13, text_t);
NEXT(mdm_security_account_t, str13, str14, text_t);
NEXT(mdm_security_account_t, str14, str15, text_t);
NEXT(mdm_security_account_t, str15, str16, text_t);
NEXT(mdm_security_account_t, str16, str17, text_t);
NEXT(mdm_security_account_t, str17, str18, text_t);
NEXT(mdm_security_account_t, str18, str19, text_t);
NEXT(mdm_security_account_t, str19, str20, text_t);
NEXT(mdm_security_account_t, str20, str21, text_t);
NEXT(mdm_security_account_t, str21, str22, text_t);
NEXT(mdm_security_account_t, str22, str23, text_t);
NEXT(mdm_security_account_t, str23, str24, text_t);
NEXT(mdm_security_account_t, str24, str25, text_t);
LAST(mdm_security_account_t, str25, text_t);

FIRST(mdm_wifi_pair_t, ssid, text_t);
NEXT(mdm_wifi_pair_t, ssid, value, text_t);
LAST(mdm_wifi_pair_t, value, text_t);

FIRST(mdm_wifi_dhcp_t, str0, text_t);
NEXT(mdm_wifi_dhcp_t, str0, str1, text_t);
NEXT(mdm_wifi_dhcp_t, str1, str2, text_t);
NEXT(mdm_wifi_dhcp_t, str2, str3, text_t);
NEXT(mdm_wifi_dhcp_t, str3, str4, text_t);
LAST(mdm_wifi_dhcp_t, str4, text_t);

FIRST(mdm_wifi_triple_t, str0, text_t);
NEXT(mdm_wifi_triple_t, str0, str1, text_t);
NEXT(mdm_wifi_triple_t, str1, str2, text_t);
LAST(mdm_wifi_triple_t, str2, text_t);

FIRST(mdm_wifi_word_t, text, text_t);
FIRST(mdm_wifi_word_t, number, uint32_t);
LAST(mdm_wifi_word_t, text, text_t);

FIRST(mdm_wifi_detail_t, w0, mdm_wifi_word_t);
NEXT(mdm_wifi_detail_t, w0, w1, mdm_wifi_word_t);
NEXT(mdm_wifi_detail_t, w1, w2, mdm_wifi_word_t);
NEXT(mdm_wifi_detail_t, w2, w3, mdm_wifi_word_t);
NEXT(mdm_wifi_detail_t, w3, w4, mdm_wifi_word_t);
NEXT(mdm_wifi_detail_t, w4, w5, mdm_wifi_word_t);
NEXT(mdm_wifi_detail_t, w5, w6, mdm_wifi_word_t);
LAST(mdm_wifi_detail_t, w6, text_t);

FIRST(mdm_eas_account_t, num0, uint32_t);
NEXT(mdm_eas_account_t, num0, num1, uint32_t);
NEXT(mdm_eas_account_t, num1, num2, uint32_t);
NEXT(mdm_eas_account_t, num2, num3, uint32_t);
NEXT(mdm_eas_account_t, num3, num4, uint32_t);
NEXT(mdm_eas_account_t, num4, num5, uint32_t);
NEXT(mdm_eas_account_t, num5, str6, text_t);
NEXT(mdm_eas_account_t, str6, str7, text_t);
NEXT(mdm_eas_account_t, str7, str8, text_t);
NEXT(mdm_eas_account_t, str8, str9, text_t);
NEXT(mdm_eas_account_t, str9, str10, text_t);
NEXT(mdm_eas_account_t, str10, str11, text_t);
NEXT(mdm_eas_account_t, str11, str12, text_t);
NEXT(mdm_eas_account_t, str12, str13, text_t);
NEXT(mdm_eas_account_t, str13, str14, text_t);
LAST(mdm_eas_account_t, str14, text_t);

FIRST(mdm_eas_value_t, num0, uint32_t);
NEXT(mdm_eas_value_t, num0, str1, text_t);
LAST(mdm_eas_value_t, str1, text_t);

FIRST(mdm_email_account_t, num0, uint32_t);
NEXT(mdm_email_account_t, num0, num1, uint32_t);
NEXT(mdm_email_account_t, num1, num2, uint32_t);
NEXT(mdm_email_account_t, num2, num3, uint32_t);
NEXT(mdm_email_account_t, num3, num4, uint32_t);
NEXT(mdm_email_account_t, num4, num5, uint32_t);
NEXT(mdm_email_account_t, num5, num6, uint32_t);
NEXT(mdm_email_account_t, num6, num7, uint32_t);
NEXT(mdm_email_account_t, num7, num8, uint32_t);
NEXT(mdm_email_account_t, num8, str9, text_t);
NEXT(mdm_email_account_t, str9, str10, text_t);
NEXT(mdm_email_account_t, str10, str11, text_t);
NEXT(mdm_email_account_t, str11, str12, text_t);
NEXT(mdm_email_account_t, str12, str13, text_t);
NEXT(mdm_email_account_t, str13, str14, text_t);
NEXT(mdm_email_account_t, str14, str15, text_t);
NEXT(mdm_email_account_t, str15, str16, text_t);
NEXT(mdm_email_account_t, str16, str17, text_t);
NEXT(mdm_email_account_t, str17, str18, text_t);
NEXT(mdm_email_account_t, str18, str19, text_t);
NEXT(mdm_email_account_t, str19, str20, text_t);
NEXT(mdm_email_account_t, str20, str21, text_t);
LAST(mdm_email_account_t, str21, text_t);

FIRST(mdm_email_value_t, num0, uint32_t);
NEXT(mdm_email_value_t, num0, str1, text_t);
LAST(mdm_email_value_t, str1, text_t);

FIRST(mdm_apn_account_t, num0, uint32_t);
NEXT(mdm_apn_account_t, num0, num1, uint32_t);
NEXT(mdm_apn_account_t, num1, profile_name, text_t);
NEXT(mdm_apn_account_t, profile_name, str3, text_t);
NEXT(mdm_apn_account_t, str3, str4, text_t);
NEXT(mdm_apn_account_t, str4, str5, text_t);
NEXT(mdm_apn_account_t, str5, str6, text_t);
NEXT(mdm_apn_account_t, str6, str7, text_t);
NEXT(mdm_apn_account_t, str7, str8, text_t);
NEXT(mdm_apn_account_t, str8, str9, text_t);
NEXT(mdm_apn_account_t, str9, str10, text_t);
NEXT(mdm_apn_account_t, str10, str11, text_t);
NEXT(mdm_apn_account_t, str11, str12, text_t);
NEXT(mdm_apn_account_t, str12, str13, text_t);
NEXT(mdm_apn_account_t, str13, str14, text_t);
LAST(mdm_apn_account_t, str14, text_t);

FIRST(mdm_app_pair_t, first, text_t);
NEXT(mdm_app_pair_t, first, second, text_t);
LAST(mdm_app_pair_t, second, text_t);

FIRST(mdm_app_num_pair_t, num1, uint32_t);
NEXT(mdm_app_num_pair_t, num1, num2, uint32_t);
LAST(mdm_app_num_pair_t, num2, uint32_t);

FIRST(mdm_misc_str_t, value, text_t);
LAST(mdm_misc_str_t, value, text_t);

FIRST(mdm_book_info_t, url, text_t);
NEXT(mdm_book_info_t, url, title, text_t);
LAST(mdm_book_info_t, title, text_t);

FIRST(mdm_misc_str_pair_t, first, text_t);
NEXT(mdm_misc_str_pair_t, first, second, text_t);
LAST(mdm_misc_str_pair_t, second, text_t);

FIRST(mdm_phone_res_detail_t, num0, uint32_t);
NEXT(mdm_phone_res_detail_t, num0, num1, uint32_t);
NEXT(mdm_phone_res_detail_t, num1, str2, text_t);
LAST(mdm_phone_res_detail_t, str2, text_t);

FIRST(mdm_kiosk_key_pair_t, key, uint32_t);
NEXT(mdm_kiosk_key_pair_t, key, value, uint32_t);
LAST(mdm_kiosk_key_pair_t, value, uint32_t);

FIRST(mdm_container_item_t, num0, uint32_t);
NEXT(mdm_container_item_t, num0, str1, text_t);
NEXT(mdm_container_item_t, str1, str2, text_t);
LAST(mdm_container_item_t, str2, text_t);

FIRST(mdm_container_short_item_t, num0, uint32_t);
NEXT(mdm_container_short_item_t, num0, str1, text_t);
LAST(mdm_container_short_item_t, str1, text_t);

FIRST(mdm_roaming_data_t, name, text_t);
LAST(mdm_roaming_data_t, name, text_t);

FIRST(mdm_app_control_info_t, client_id, int32_t);
NEXT(mdm_app_control_info_t, client_id, pkg_list, list_t);
LAST(mdm_app_control_info_t, pkg_list, text_t);

FIRST(mdm_security_item_t, num0, uint32_t);
NEXT(mdm_security_item_t, num0, str1, text_t);
NEXT(mdm_security_item_t, str1, word2, uint32_t);
NEXT(mdm_security_item_t, word2, str3, text_t);
NEXT(mdm_security_item_t, str3, str4, text_t);
LAST(mdm_security_item_t, str4, text_t);

FIRST(mdm_wifi_network_t, ssid, text_t);
NEXT(mdm_wifi_network_t, ssid, detail_kind, int32_t);
NEXT(mdm_wifi_network_t, detail_kind, detail, wifi_detail_pointer_t);
LAST(mdm_wifi_network_t, detail, pointer_t);

FIRST(mdm_phone_res_item_t, str0, text_t);
NEXT(mdm_phone_res_item_t, str0, word1, uint32_t);
NEXT(mdm_phone_res_item_t, word1, str2, text_t);
LAST(mdm_phone_res_item_t, str2, text_t);

FIRST(mdm_phone_res_ext_t, str0, text_t);
NEXT(mdm_phone_res_ext_t, str0, word1, uint32_t);
NEXT(mdm_phone_res_ext_t, word1, detail, phone_res_detail_pointer_t);
LAST(mdm_phone_res_ext_t, detail, pointer_t);

FIRST(mdm_app_res_item_t, name, text_t);
NEXT(mdm_app_res_item_t, name, value, uint32_t);
LAST(mdm_app_res_item_t, value, text_t);

/* The message. */
FIRST(mdm_msg_t, hdr_aux, uint32_t);
NEXT(mdm_msg_t, hdr_aux, type, uint8_t);
NEXT(mdm_msg_t, type, hdr_byte, uint8_t);
NEXT(mdm_msg_t, hdr_byte, hdr_word1, uint32_t);
NEXT(mdm_msg_t, hdr_word1, hdr_word2, uint32_t);
NEXT(mdm_msg_t, hdr_word2, hdr_text, text_t);
NEXT(mdm_msg_t, hdr_text, hdr_word3, uint32_t);
NEXT(mdm_msg_t, hdr_word3, hdr_word4, uint32_t);
NEXT(mdm_msg_t, hdr_word4, hdr_word5, uint32_t);
NEXT(mdm_msg_t, hdr_word5, hdr_word6, uint32_t);
NEXT(mdm_msg_t, hdr_word6, hdr_word7, uint32_t);
SAME(offsetof(mdm_msg_t, body), ALIGNED(END_OF(mdm_msg_t, hdr_word7), sizeof(pointer_t)));

SAME(sizeof(mdm_msg_t), offsetof(mdm_msg_t, body) + sizeof(mdm_body_t));

/* Every category has its member of the union. */
#define MEMBER(category) FIRST(mdm_body_t, category, mdm_##category##_info_t)

MEMBER(admin);
MEMBER(pwd);
MEMBER(security);
MEMBER(wifi);
MEMBER(bluetooth);
MEMBER(eas);
MEMBER(app);
MEMBER(app_res);
MEMBER(roaming);
MEMBER(roaming_res);
MEMBER(misc);
MEMBER(apn);
MEMBER(browser);
MEMBER(date_time);
MEMBER(remote);
MEMBER(vpn);
MEMBER(firewall);
MEMBER(res);
MEMBER(phone_res);
MEMBER(enterprise);
MEMBER(email);
MEMBER(kiosk);
MEMBER(container);
MEMBER(location);
MEMBER(log_manager);
MEMBER(platform);
MEMBER(app_cb);
MEMBER(misc_cb);

FIRST(ipc_fault_t, offset, uint32_t);
NEXT(ipc_fault_t, offset, needed, uint32_t);
NEXT(ipc_fault_t, needed, left, uint32_t);
NEXT(ipc_fault_t, left, path, const_text_t);
LAST(ipc_fault_t, path, const_text_t);

FIRST(ipc_part_t, path, const_text_t);
NEXT(ipc_part_t, path, kind, ipc_part_kind_t);
SAME(sizeof(ipc_part_kind_t), sizeof(uint32_t));
NEXT(ipc_part_t, kind, element, int32_t);
NEXT(ipc_part_t, element, inner, int32_t);
NEXT(ipc_part_t, inner, offset, uint32_t);
NEXT(ipc_part_t, offset, size, uint32_t);
NEXT(ipc_part_t, size, number, uint32_t);
NEXT(ipc_part_t, number, length, uint32_t);
NEXT(ipc_part_t, length, bytes, const_bytes_t);
LAST(ipc_part_t, bytes, const_bytes_t);

/* The kinds of parts are numbers of the binary interface. */
SAME(IPC_PART_U8, 0);
SAME(IPC_PART_U32, 1);
SAME(IPC_PART_I32, 2);
SAME(IPC_PART_COUNT, 3);
SAME(IPC_PART_STR, 4);
SAME(IPC_PART_BYTES, 5);
SAME(IPC_PART_RESERVED, 6);
SAME(IPC_PART_PADDING, 7);
SAME(IPC_PART_REST, 8);

#endif
