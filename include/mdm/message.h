/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * The in-memory message: a header and the body of one policy category.
 *
 * The functions of mdm/ipc.h and mdm/guarded.h turn messages into bytes and back. Each category's
 * body is documented in its own header below mdm/body/, which begins with an example.
 * mdm/body/typed.h tells how to fill a message and how to read one. mdm/body/head.h explains the
 * terms and the rules that hold for every body.
 *
 * The message type selects the category, and with it the member of ::mdm_body_t. Most categories
 * have two message types. The codec treats both alike; server and clients agree on their use, for
 * example one for requests and one for replies. The message types that ::mdm_body_t does not list
 * have no category.
 *
 * @code{.c}
 * #include <mdm/message.h>
 * #include <stdio.h>
 *
 * int main(void)
 * {
 *     mdm_msg_t msg = {0};
 *     msg.hdr_text = mdm_text("org.example.agent");
 *     if (!mdm_kiosk_set_text(&msg, MDM_KIOSK_TEXT_612,
 *                             "org.example.mail")) {
 *         return 1;
 *     }
 *     switch (mdm_form_of(&msg)) {
 *     case MDM_FORM_KIOSK_TEXT:
 *         printf("%s: %s\n", msg.hdr_text, mdm_kiosk_text(&msg));
 *         return 0;
 *     default:
 *         return 1;
 *     }
 * }
 * // prints: org.example.agent: org.example.mail
 * @endcode
 */
#ifndef MDM_MESSAGE_H
#define MDM_MESSAGE_H

#include <stdint.h>
#include <string.h>

#include "mdm/body/admin.h"
#include "mdm/body/apn.h"
#include "mdm/body/app.h"
#include "mdm/body/app_cb.h"
#include "mdm/body/app_res.h"
#include "mdm/body/bluetooth.h"
#include "mdm/body/container.h"
#include "mdm/body/eas.h"
#include "mdm/body/email.h"
#include "mdm/body/kiosk.h"
#include "mdm/body/location.h"
#include "mdm/body/log_manager.h"
#include "mdm/body/misc.h"
#include "mdm/body/misc_cb.h"
#include "mdm/body/phone_res.h"
#include "mdm/body/platform.h"
#include "mdm/body/pwd.h"
#include "mdm/body/roaming.h"
#include "mdm/body/security.h"
#include "mdm/body/single_list.h"
#include "mdm/body/wifi.h"
#include "mdm/types.h"

/** The bodies of the categories. The message type selects the member. */
typedef union mdm_body {
    mdm_admin_info_t admin;             /**< Types 1, 2. */
    mdm_pwd_info_t pwd;                 /**< Types 3, 4. */
    mdm_security_info_t security;       /**< Types 5, 6. */
    mdm_wifi_info_t wifi;               /**< Types 7, 8. */
    mdm_bluetooth_info_t bluetooth;     /**< Types 9, 10. */
    mdm_eas_info_t eas;                 /**< Types 11, 12. */
    mdm_app_info_t app;                 /**< Type 13. */
    mdm_app_res_info_t app_res;         /**< Type 14. */
    mdm_roaming_info_t roaming;         /**< Type 15. */
    mdm_roaming_res_info_t roaming_res; /**< Type 16. */
    mdm_misc_info_t misc;               /**< Types 17, 18. */
    mdm_apn_info_t apn;                 /**< Types 21, 22. */
    mdm_browser_info_t browser;         /**< Types 23, 24. */
    mdm_date_time_info_t date_time;     /**< Types 25, 26. */
    mdm_remote_info_t remote;           /**< Types 27, 28. */
    mdm_vpn_info_t vpn;                 /**< Types 29, 30. */
    mdm_firewall_info_t firewall;       /**< Types 31, 32. */
    mdm_res_info_t res;                 /**< Types 33, 34. */
    mdm_phone_res_info_t phone_res;     /**< Types 35, 36. */
    mdm_enterprise_info_t enterprise;   /**< Types 37, 38. */
    mdm_email_info_t email;             /**< Types 39, 40. */
    mdm_kiosk_info_t kiosk;             /**< Types 45, 46. */
    mdm_container_info_t container;     /**< Types 47, 48. */
    mdm_location_info_t location;       /**< Types 49, 50. */
    mdm_log_manager_info_t log_manager; /**< Types 51, 52. */
    mdm_platform_info_t platform;       /**< Types 53, 54. */
    mdm_app_cb_info_t app_cb;           /**< Type 61. */
    mdm_misc_cb_info_t misc_cb;         /**< Type 63. */
} mdm_body_t;

/**
 * A message. Server and clients give `hdr_byte`, the header words and `hdr_text` their meaning; the
 * codec only copies them. The text of a field begins with its position on the wire, behind the
 * length of the message (Q-ENVELOPE-3).
 *
 * Start with a zeroed record, `mdm_msg_t msg = {0};`, both for sending and for ipc_deserialize().
 *
 * Two threads must not use the same message at a time. They may use different messages.
 */
typedef struct mdm_msg {
    uint32_t hdr_aux;   /**< Never sent, never read, never changed: a word of the caller. */
    uint8_t type;       /**< 1st. Message type, 1 to 80; selects the category of `body`. */
    uint8_t hdr_byte;   /**< 2nd. */
    uint32_t hdr_word1; /**< 3rd. */
    uint32_t hdr_word2; /**< 4th. */
    char *hdr_text;     /**< 5th. A string; may be null. An empty text arrives as null. A received
                             text belongs to the message. */
    uint32_t hdr_word3; /**< 6th. */
    uint32_t hdr_word4; /**< 9th. */
    uint32_t hdr_word5; /**< 10th. */
    uint32_t hdr_word6; /**< 7th. */
    uint32_t hdr_word7; /**< 8th. */
    mdm_body_t body;    /**< 11th. The category's body. */
} mdm_msg_t;

/**
 * @param msg  the message. Must not be null.
 * @return The form that its message type and the discriminator of its body select, whether a
 *         payload is there or not; #MDM_FORM_NONE for a message type without a category.
 */
MDM_INLINE mdm_form_t mdm_form_of(const mdm_msg_t *msg)
{
    const mdm_body_t *body = &msg->body;
    switch (mdm_category_of(msg->type)) {
    case MDM_CATEGORY_ADMIN:
        return mdm_admin_form(body->admin.type);
    case MDM_CATEGORY_PWD:
        return mdm_pwd_form(body->pwd.type);
    case MDM_CATEGORY_SECURITY:
        return mdm_security_form(body->security.type);
    case MDM_CATEGORY_WIFI:
        return mdm_wifi_form(body->wifi.type);
    case MDM_CATEGORY_BLUETOOTH:
        return mdm_bluetooth_form(body->bluetooth.type);
    case MDM_CATEGORY_EAS:
        return mdm_eas_form(body->eas.type);
    case MDM_CATEGORY_APP:
        return mdm_app_form(body->app.type);
    case MDM_CATEGORY_APP_RES:
        return mdm_app_res_form(body->app_res.type);
    case MDM_CATEGORY_ROAMING:
        return MDM_FORM_ROAMING_RECORD;
    case MDM_CATEGORY_ROAMING_RES:
        return MDM_FORM_ROAMING_RES_HEAD;
    case MDM_CATEGORY_MISC:
        return mdm_misc_form(body->misc.type);
    case MDM_CATEGORY_APN:
        return mdm_apn_form(body->apn.type);
    case MDM_CATEGORY_BROWSER:
        return MDM_FORM_BROWSER_DATA;
    case MDM_CATEGORY_DATE_TIME:
        return MDM_FORM_DATE_TIME_DATA;
    case MDM_CATEGORY_REMOTE:
        return MDM_FORM_REMOTE_DATA;
    case MDM_CATEGORY_VPN:
        return MDM_FORM_VPN_DATA;
    case MDM_CATEGORY_FIREWALL:
        return MDM_FORM_FIREWALL_DATA;
    case MDM_CATEGORY_RES:
        return MDM_FORM_RES_DATA;
    case MDM_CATEGORY_PHONE_RES:
        return mdm_phone_res_form(body->phone_res.type);
    case MDM_CATEGORY_ENTERPRISE:
        return MDM_FORM_ENTERPRISE_DATA;
    case MDM_CATEGORY_EMAIL:
        return mdm_email_form(body->email.type);
    case MDM_CATEGORY_KIOSK:
        return mdm_kiosk_form(body->kiosk.type);
    case MDM_CATEGORY_CONTAINER:
        return mdm_container_form(body->container.type);
    case MDM_CATEGORY_LOCATION:
        return MDM_FORM_LOCATION_HEAD;
    case MDM_CATEGORY_LOG_MANAGER:
        return mdm_log_manager_form(body->log_manager.type);
    case MDM_CATEGORY_PLATFORM:
        return mdm_platform_form(body->platform.type);
    case MDM_CATEGORY_APP_CB:
        return mdm_app_cb_form(body->app_cb.type);
    case MDM_CATEGORY_MISC_CB:
        return mdm_misc_cb_form(body->misc_cb.type);
    case MDM_CATEGORY_NONE:
        break;
    }
    return MDM_FORM_NONE;
}

/** @cond The common parts of the functions of the body headers. */

MDM_INLINE void *mdm_begin_body(mdm_msg_t *msg, uint8_t first_type)
{
    if (mdm_category_of(msg->type) != mdm_category_of(first_type)) {
        if (msg->type != 0) {
            memset(&msg->body, 0, sizeof msg->body);
        }
        msg->type = first_type;
    }
    return &msg->body;
}

/* The heads of all bodies with a body head are alike, so one body stands for all. */
MDM_INLINE bool mdm_fill_head(mdm_msg_t *msg, uint8_t first_type, uint32_t type, const void *data,
                              int32_t data_size)
{
    mdm_begin_body(msg, first_type);
    msg->body.res.type = type;
    msg->body.res.data_size = data_size;
    msg->body.res.data = data_size != 0 ? mdm_unconst(data) : NULL;
    return true;
}

MDM_INLINE bool mdm_fill_bytes(mdm_msg_t *msg, uint8_t first_type, uint32_t type, const void *bytes,
                               size_t size)
{
    return mdm_is_sendable(bytes, size) &&
           mdm_fill_head(msg, first_type, type, bytes, MDM_CAST(int32_t, size));
}

MDM_INLINE bool mdm_fill_app_head(mdm_msg_t *msg, uint8_t first_type, int32_t type,
                                  const void *data, int32_t data_size)
{
    mdm_begin_body(msg, first_type);
    msg->body.app.type = type;
    msg->body.app.data_size = data_size;
    msg->body.app.data = data_size != 0 ? mdm_unconst(data) : NULL;
    return true;
}

MDM_INLINE bool mdm_fill_app_bytes(mdm_msg_t *msg, uint8_t first_type, int32_t type,
                                   const void *bytes, size_t size)
{
    return mdm_is_sendable(bytes, size) &&
           mdm_fill_app_head(msg, first_type, type, bytes, MDM_CAST(int32_t, size));
}

MDM_INLINE const void *mdm_body_of(const mdm_msg_t *msg, mdm_form_t form)
{
    return mdm_form_of(msg) == form ? &msg->body : NULL;
}

MDM_INLINE const void *mdm_payload(const mdm_msg_t *msg, mdm_form_t form)
{
    return mdm_form_of(msg) == form && msg->body.res.data_size >= 1 ? msg->body.res.data : NULL;
}

MDM_INLINE const void *mdm_payload_unless_0(const mdm_msg_t *msg, mdm_form_t form)
{
    return mdm_form_of(msg) == form && msg->body.res.data_size != 0 ? msg->body.res.data : NULL;
}

MDM_INLINE const void *mdm_app_payload(const mdm_msg_t *msg, mdm_form_t form)
{
    return mdm_form_of(msg) == form && msg->body.app.data_size >= 1 ? msg->body.app.data : NULL;
}

MDM_INLINE const char *mdm_bytes(const mdm_msg_t *msg, mdm_form_t form, size_t *size)
{
    const void *data = mdm_payload(msg, form);
    return MDM_CAST(const char *, mdm_counted(data, msg->body.res.data_size, size));
}

MDM_INLINE const char *mdm_app_bytes(const mdm_msg_t *msg, mdm_form_t form, size_t *size)
{
    const void *data = mdm_app_payload(msg, form);
    return MDM_CAST(const char *, mdm_counted(data, msg->body.app.data_size, size));
}

/** @endcond */

#endif
