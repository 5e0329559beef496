/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * The body head: the five fields that open most category bodies.
 *
 * On the wire the head is exactly 12 bytes: `type`, `param`, `data_size`, each 4 bytes,
 * little-endian. `aux` and `data` do not travel; the payload that `data` points to follows the
 * head in the category's own form.
 *
 * Some rules hold for every body, and the category headers do not repeat them:
 *
 * - `aux` is never written, never read and never cleared by the codec. It keeps whatever each
 *   side put there.
 * - Everything that a receiver finds in a body (strings, records, lists) comes from GLib's
 *   allocator and belongs to the message until ipc_free(). A sender's body belongs to the sender
 *   and is released the way the sender allocated it; the codec only reads it, except where a
 *   category says that a computed `data_size` is stored.
 * - The receiver knows of the payload only what `data_size` says. A sender without a payload sets
 *   `data_size` to 0 as well: with a null `data` and another `data_size` a category sends a head
 *   that announces a payload that is not there, reads through the null pointer, or cannot size the
 *   body.
 * - A list is handed over by its first cell, an empty one as null.
 * - An empty string in a list arrives as a null element, unless a category says otherwise.
 * - Where these headers say what ipc_free() leaves alone, they speak of the body: the header's
 *   text is always released.
 */
#ifndef MDM_BODY_HEAD_H
#define MDM_BODY_HEAD_H

#include <glib.h>
#include <stdint.h>

/**
 * Declares the fields of the body head, in order:
 *
 * - `type`: policy discriminator of the category; selects the form of the payload.
 * - `aux`: the caller's word, never sent.
 * - `param`: a parameter of the policy, sent as it stands.
 * - `data_size`: byte size of the payload. How it is counted, and who sets it, is the
 *   category's business.
 * - `data`: the payload: raw bytes, a string, a record or a GList, by category and `type`.
 */
#define MDM_BODY_HEAD  \
    uint32_t type;     \
    uint32_t aux;      \
    uint32_t param;    \
    int32_t data_size; \
    void *data

#endif
