/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message type 63: details of a miscellaneous event.
 */
#ifndef MDM_BODY_MISC_CB_H
#define MDM_BODY_MISC_CB_H

#include "mdm/body/callback_head.h"

/**
 * Body of the miscellaneous callbacks: the callback head (see mdm/body/callback_head.h). For `type`
 * 0 and 1, a byte, a number and a string follow, in the order of the fields. ipc_free() releases
 * the string and sets it to null.
 *
 * An unknown `type` is the head alone (Q-CALLBACK-3). If a received `type` is unknown, or a
 * received `data_size` is 0 (Q-CALLBACK-2), these fields keep the values of the receiver's record.
 * For an unknown `type` ipc_free() releases nothing.
 */
typedef struct mdm_misc_cb_info {
    /** @{ A field of the callback head: see #MDM_CALLBACK_HEAD. */
    MDM_CALLBACK_HEAD;
    uint8_t flag6; /**< One byte on the wire, so the number after it is unaligned there
                        (Q-CALLBACK-5). */
    uint32_t num7; /**< Server and clients agree on its meaning. */
    char *str8;    /**< May be null. */
    /** @} */
} mdm_misc_cb_info_t;

#endif
