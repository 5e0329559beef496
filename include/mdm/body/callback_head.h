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
 * - `type`: 1st on the wire. The callback type. 0 and 1 carry a payload; every other value is the
 *   head alone (Q-CALLBACK-3).
 * - `aux`: never sent. A word of the caller.
 * - `param`, `param2`: 3rd and 4th. Sent unchanged.
 * - `data_size`: 2nd. The size of the whole body on the wire in bytes, head included
 *   (Q-CALLBACK-1). Serialising and sealing compute and store it; the sender need not set it.
 * - `aux2`: never sent. A word of the caller.
 */
#define MDM_CALLBACK_HEAD \
    uint32_t type;        \
    uint32_t aux;         \
    uint32_t param;       \
    uint32_t param2;      \
    uint32_t data_size;   \
    uint32_t aux2

#endif
