/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message type 61: details of an application event.
 */
#ifndef MDM_BODY_APP_CB_H
#define MDM_BODY_APP_CB_H

#include "mdm/body/callback_head.h"

/**
 * Body of the application callbacks: the callback head (see mdm/body/callback_head.h). For `type` 0
 * and 1, one number and two strings follow. ipc_free() releases both strings and sets them to null.
 *
 * An unknown `type` is the head alone (Q-CALLBACK-3). If a received `type` is unknown, or a
 * received `data_size` is 0 (Q-CALLBACK-2), the number and the strings keep the values of the
 * receiver's record. For an unknown `type` ipc_free() releases nothing.
 */
typedef struct mdm_app_cb_info {
    /** @{ A field of the callback head: see #MDM_CALLBACK_HEAD. */
    MDM_CALLBACK_HEAD;
    uint32_t num6; /**< Sent first. */
    char *str7;    /**< Sent last; may be null. */
    char *str8;    /**< Sent before `str7` (Q-CALLBACK-4); may be null. */
    /** @} */
} mdm_app_cb_info_t;

#endif
