/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * The application head: the six fields of both application bodies (app, app_res).
 *
 * On the wire it is `type`, `param`, the string `pkg` and `data_size`: 16 bytes and the text of
 * `pkg`. `aux` and `data` do not travel. The rules of mdm/body/head.h hold.
 */
#ifndef MDM_BODY_APP_HEAD_H
#define MDM_BODY_APP_HEAD_H

#include <glib.h>
#include <stdint.h>

/**
 * Declares the fields of the application head, in order:
 *
 * - `type`: 1st on the wire. The discriminator of the policy. It selects the form of the payload.
 * - `aux`: never sent. A word of the caller.
 * - `param`: 2nd. A parameter of the policy, sent unchanged.
 * - `pkg`: 3rd. A string, sent with every body; may be null. An empty string arrives as null.
 * - `data_size`: 4th. The sender sets it. The payload travels only if it is 1 or more.
 * - `data`: the payload, by `type`, sent behind the head.
 */
#define MDM_APP_HEAD   \
    int32_t type;      \
    uint32_t aux;      \
    uint32_t param;    \
    char *pkg;         \
    int32_t data_size; \
    void *data

#endif
