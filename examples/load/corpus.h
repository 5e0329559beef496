/* SPDX-License-Identifier: Apache-2.0 */
/* The policies that honest clients set: messages of every category. */
#ifndef CORPUS_H
#define CORPUS_H

#include <stdbool.h>
#include <stdint.h>

#include <glib.h>

#include <mdm/guarded.h>

struct policy {
    uint8_t type;
    uint32_t discriminator;
    GBytes *request; /* sealed, with the number 0 */
};

/* Reads the messages in a directory, and adds one of every category and some large ones. Returns
 * an array of struct policy; null with `error` set if there is no such directory. */
GPtrArray *corpus_load(const char *directory, GError **error);

/* The bytes of a request for a policy, with a number. The caller releases them with g_free(). */
uint8_t *corpus_request(const struct policy *policy, uint8_t hdr_byte, uint32_t number,
                        uint32_t *length);

#endif
