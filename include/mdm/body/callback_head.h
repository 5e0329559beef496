/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * The callback head: the six fields that open both callback bodies (app_cb, misc_cb).
 *
 * On the wire it is exactly 16 bytes: `type`, `data_size`, `param`, `param2`. `aux` and `aux2`
 * are never written, never read and never cleared.
 */
#ifndef MDM_BODY_CALLBACK_HEAD_H
#define MDM_BODY_CALLBACK_HEAD_H

#include <glib.h>
#include <stdint.h>

/**
 * Declares the fields of the callback head, in order:
 *
 * - `type`: callback type; 0 and 1 carry a detail, every other value is the head alone.
 * - `aux`: the caller's word, never sent.
 * - `param`, `param2`: sent as they stand.
 * - `data_size`: byte size of the whole body on the wire, head included. Computed and stored by
 *   the size handler whenever the message is serialised.
 * - `aux2`: the caller's word, never sent.
 */
#define MDM_CALLBACK_HEAD \
    uint32_t type;        \
    uint32_t aux;         \
    uint32_t param;       \
    uint32_t param2;      \
    uint32_t data_size;   \
    uint32_t aux2

#endif
