/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message type 63: detail of a miscellaneous event.
 */
#ifndef MDM_BODY_MISC_CB_H
#define MDM_BODY_MISC_CB_H

#include "mdm/body/callback_head.h"

/**
 * Body of the miscellaneous callbacks: the callback head (see mdm/body/callback_head.h) and, for
 * `type` 0 and 1, a byte, a number and a string, sent in field order. ipc_free() releases the
 * string and sets it to null.
 *
 * Receiving: an unknown `type`, or a `data_size` of 0, leaves these fields as the record held
 * them. For an unknown `type` ipc_free() releases nothing.
 */
typedef struct mdm_misc_cb_info {
    /** @{ One of the fields of the callback head: see #MDM_CALLBACK_HEAD. */
    MDM_CALLBACK_HEAD;
    uint8_t flag6; /**< One byte on the wire, so the number after it is unaligned there. */
    uint32_t num7; /**< Its meaning is between server and clients. */
    char *str8;    /**< May be null. */
    /** @} */
} mdm_misc_cb_info_t;

#endif
