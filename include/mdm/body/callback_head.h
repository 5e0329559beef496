/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * The callback head: the six fields that begin both callback bodies (app_cb, misc_cb).
 *
 * On the wire it is exactly 16 bytes: `type`, `data_size`, `param`, `param2`. The codec never
 * reads, writes or clears `aux` and `aux2` (Q-HEAD-1). The rules of mdm/body/head.h hold.
 */
#ifndef MDM_BODY_CALLBACK_HEAD_H
#define MDM_BODY_CALLBACK_HEAD_H

#include <glib.h>
#include <stdint.h>

/**
 * Declares the fields of the callback head, in order:
 *
 * - `type`: the callback type. 0 and 1 carry a payload; every other value is the head alone
 *   (Q-CALLBACK-3).
 * - `aux`: a word of the caller, never sent.
 * - `param`, `param2`: sent unchanged.
 * - `data_size`: the size of the whole body on the wire in bytes, head included (Q-CALLBACK-1).
 *   Serialising and sealing compute and store it; the sender need not set it.
 * - `aux2`: a word of the caller, never sent.
 */
#define MDM_CALLBACK_HEAD \
    uint32_t type;        \
    uint32_t aux;         \
    uint32_t param;       \
    uint32_t param2;      \
    uint32_t data_size;   \
    uint32_t aux2

#endif
