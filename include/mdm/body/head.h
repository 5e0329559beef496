/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * The body head, which begins most bodies, and the rules that hold for every body.
 *
 * On the wire the head is exactly 12 bytes: `type`, `param` and `data_size`, each 4 bytes,
 * little-endian. `aux` and `data` do not travel. The payload that `data` points to follows the
 * head.
 *
 * Programs fill and read bodies with the functions of the categories' headers. mdm/body/typed.h has
 * the rules of these functions: they set `data_size` and the other fields as the rules below ask.
 * The rules matter to a program that fills or reads the fields by hand, and to ipc_free().
 *
 * Terms of these headers:
 *
 * - The discriminator is the `type` of a body. It selects the form of the payload: raw bytes, a
 *   string, a record or a list. The headers list the discriminators that select a form of their
 *   own. Server and clients agree on the policies that the numbers stand for.
 * - The payload is everything behind the head. A body without a payload is the head alone.
 * - Raw bytes are `data_size` bytes that the codec copies unchanged. They arrive as a new string
 *   with a terminator. A zero byte inside ends that text early (Q-WIRE-2).
 * - A string is zero-terminated, in any encoding. Any string of a record may be null. Null and
 *   empty are the same on the wire, and arrive as null (Q-WIRE-1).
 * - A list is a GList, handed over by its first cell. The trusting path does not check this
 *   (Q-WIRE-4). An empty list is null.
 *
 * Rules for every body, which the other headers do not repeat:
 *
 * - The codec never reads, writes or clears `aux` (Q-HEAD-1). It is the caller's on either side. In
 *   a message that ipc_open() returned it is zero.
 * - Every string, record and list in a received body comes from GLib's allocator and belongs to the
 *   message until ipc_free(). A sender's body belongs to the sender, who releases it as it was
 *   allocated. The codec only reads it, except where a category stores a computed `data_size`.
 * - A receiver learns from `data_size` alone whether there is a payload. A sender without a payload
 *   sets `data_size` to 0, too. If `data` is null and `data_size` is not 0, the trusting path may
 *   send a head that announces a missing payload, read through the null pointer, or fail to size
 *   the body (Q-BODY-1, Q-BODY-3).
 * - An empty string in a list arrives as a null element, unless the category says otherwise
 *   (Q-WIRE-6).
 * - On the trusting path ipc_free() always releases the header's text. The other headers say what
 *   it does with the body, and which fields keep their values. Where `data` keeps its old value
 *   after ipc_free(), it points to released memory, unless the category says that this memory stays
 *   allocated: do not use it, and do not free the message again (Q-BODY-7). ipc_close() of
 *   mdm/guarded.h releases everything.
 * - Some categories log texts of a message on the trusting path. Their headers say which. mdm/ipc.h
 *   says how to silence these lines, and docs/security.md lists them.
 *
 * Ids in these headers, such as Q-WIFI-3, stand in docs/quirks.md.
 */
#ifndef MDM_BODY_HEAD_H
#define MDM_BODY_HEAD_H

#include <glib.h>
#include <stdint.h>

/**
 * Declares the fields of the body head, in order:
 *
 * - `type`: 1st on the wire. The discriminator of the policy. It selects the form of the payload.
 * - `aux`: never sent. A word of the caller.
 * - `param`: 2nd. A parameter of the policy, sent unchanged.
 * - `data_size`: 3rd. The size of the payload in bytes. The category says what it counts and who
 *   sets it.
 * - `data`: the payload, sent behind the head: raw bytes, a string, a record or a GList, by
 *   category and `type`.
 */
#define MDM_BODY_HEAD  \
    uint32_t type;     \
    uint32_t aux;      \
    uint32_t param;    \
    int32_t data_size; \
    void *data

#endif
