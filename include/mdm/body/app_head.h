/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * The application head: the six fields that both application bodies (app, app_res) consist of.
 *
 * On the wire: `type`, `param`, the string `pkg`, `data_size`; 16 bytes plus the text. `aux` and
 * `data` do not travel (see mdm/body/head.h).
 */
#ifndef MDM_BODY_APP_HEAD_H
#define MDM_BODY_APP_HEAD_H

#include <glib.h>
#include <stdint.h>

/**
 * Declares the fields of the application head, in order:
 *
 * - `type`: policy discriminator; selects the form of the payload.
 * - `aux`: the caller's word, never sent.
 * - `param`: a parameter of the policy, sent as it stands.
 * - `pkg`: a string sent with every body; may be null. An empty string arrives as null.
 * - `data_size`: set by the sender; the payload travels only when it is 1 or more.
 * - `data`: the payload, by `type`.
 */
#define MDM_APP_HEAD   \
    int32_t type;      \
    uint32_t aux;      \
    uint32_t param;    \
    char *pkg;         \
    int32_t data_size; \
    void *data

#endif
