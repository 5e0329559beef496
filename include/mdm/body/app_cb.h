/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message type 61: detail of an application event.
 */
#ifndef MDM_BODY_APP_CB_H
#define MDM_BODY_APP_CB_H

#include "mdm/body/callback_head.h"

/**
 * Body of the application callbacks: the callback head (see mdm/body/callback_head.h) and, for
 * `type` 0 and 1, one number and two strings. ipc_free() releases both strings and sets them to
 * null.
 *
 * Receiving: an unknown `type`, or a `data_size` of 0, leaves the number and the strings as the
 * record held them. For an unknown `type` ipc_free() releases nothing.
 */
typedef struct mdm_app_cb_info {
    /** @{ One of the fields of the callback head: see #MDM_CALLBACK_HEAD. */
    MDM_CALLBACK_HEAD;
    uint32_t num6; /**< Sent first. */
    char *str7;    /**< Sent last; may be null. */
    char *str8;    /**< Sent before `str7`; may be null. */
    /** @} */
} mdm_app_cb_info_t;

#endif
