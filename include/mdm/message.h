/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * The in-memory message: a header and the body of one policy category.
 *
 * Messages are turned into bytes and back by the functions of mdm/ipc.h. Each category's body is
 * documented in its own header under mdm/body/.
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

/** The category bodies. The message type says which member is in use. */
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
 * A message. The meaning of the header words and of `hdr_text` is the callers' business; the
 * codec copies them.
 *
 * A message must not be used by two threads at a time; different messages may be.
 */
typedef struct mdm_msg {
    uint32_t hdr_aux;   /**< The caller's word: never sent, never read, never changed. */
    uint8_t type;       /**< Message type, 1 to 80; selects the category of `body`. */
    uint8_t hdr_byte;   /**< Sent as it stands. */
    uint32_t hdr_word1; /**< Sent as it stands, like the other header words. */
    uint32_t hdr_word2; /**< Its meaning is between server and clients. */
    char *hdr_text;     /**< May be null; an empty text arrives as null. On reception a heap string
                         owned by the message. */
    uint32_t hdr_word3; /**< Its meaning is between server and clients. */
    uint32_t hdr_word4; /**< Its meaning is between server and clients. */
    uint32_t hdr_word5; /**< Its meaning is between server and clients. */
    uint32_t hdr_word6; /**< Its meaning is between server and clients. */
    uint32_t hdr_word7; /**< Its meaning is between server and clients. */
    mdm_body_t body;    /**< The category's body. */
} mdm_msg_t;

#endif
