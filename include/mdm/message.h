/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * The in-memory message: a header and the body of one policy category.
 *
 * The functions of mdm/ipc.h and mdm/guarded.h turn messages into bytes and back. Each category's
 * body is documented in its own header below mdm/body/. mdm/body/head.h explains the terms and the
 * rules that hold for every body: read it first.
 *
 * The message type selects the category, and with it the member of ::mdm_body_t. Most categories
 * have two message types. The codec treats both alike; server and clients agree on their use, for
 * example one for requests and one for replies. The message types that ::mdm_body_t does not list
 * have no category.
 */
#ifndef MDM_MESSAGE_H
#define MDM_MESSAGE_H

#include <stdint.h>

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
 * codec only copies them.
 *
 * Start with a zeroed record, `mdm_msg_t msg = {0};`, both for sending and for ipc_deserialize().
 *
 * Two threads must not use the same message at a time. They may use different messages.
 */
typedef struct mdm_msg {
    uint32_t hdr_aux;   /**< The caller's word: never sent, never read, never changed. */
    uint8_t type;       /**< Message type, 1 to 80; selects the category of `body`. */
    uint8_t hdr_byte;   /**< Sent unchanged. */
    uint32_t hdr_word1; /**< Sent unchanged, like the other header words. */
    uint32_t hdr_word2; /**< Server and clients agree on its meaning. */
    char *hdr_text;     /**< A string; may be null. An empty text arrives as null. A received text
                         belongs to the message. */
    uint32_t hdr_word3; /**< Server and clients agree on its meaning. */
    uint32_t hdr_word4; /**< Server and clients agree on its meaning. */
    uint32_t hdr_word5; /**< Server and clients agree on its meaning. */
    uint32_t hdr_word6; /**< Server and clients agree on its meaning. */
    uint32_t hdr_word7; /**< Server and clients agree on its meaning. */
    mdm_body_t body;    /**< The category's body. */
} mdm_msg_t;

#endif
