/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 17 and 18: policies that belong to no other category.
 */
#ifndef MDM_BODY_MISC_H
#define MDM_BODY_MISC_H

#include <glib.h>
#include <stdint.h>

/** The record of discriminators 124 to 126: one string. */
typedef struct mdm_misc_str {
    char *value; /**< Server and clients agree on its meaning. */
} mdm_misc_str_t;

/** The record of discriminators 281 and 283: a bookmark, sent in the order of the fields. */
typedef struct mdm_book_info {
    /** @{ Server and clients agree on its meaning. */
    char *url;
    char *title;
    /** @} */
} mdm_book_info_t;

/** The record of discriminators 288 and 289, sent in the order of the fields. */
typedef struct mdm_misc_str_pair {
    /** @{ Server and clients agree on its meaning. */
    char *first;
    char *second;
    /** @} */
} mdm_misc_str_pair_t;

/**
 * Body of the misc category: the body head (see mdm/body/head.h). For two discriminators a list
 * stands in the place of `param`.
 *
 * | `type`        | payload                                                                     |
 * |---------------|-----------------------------------------------------------------------------|
 * | 122           | `data`: array of `data_size` string pointers; `data_size` counts strings    |
 * | 123           | none, whatever `data_size` says                                             |
 * | 124, 125, 126 | `data`: one ::mdm_misc_str_t                                                |
 * | 127, 128      | `param_list`: GList of strings, sent even when `data_size` is 0             |
 * | 281, 283      | `data`: one ::mdm_book_info_t                                               |
 * | 288, 289      | `data`: one ::mdm_misc_str_pair_t                                           |
 * | any other     | `data`: `data_size` raw bytes                                               |
 *
 * A `data_size` of 0 sends the head alone, and the receiver's `data` becomes null (Q-BODY-2). This
 * does not hold for 127 and 128, whose list always travels (Q-MISC-2).
 *
 * - Records (124 to 126, 281, 283, 288, 289): the sender sets `data_size` to another value, and
 *   sending stores the size of the payload. The record must then not be missing (Q-MISC-5,
 *   Q-MISC-6). With a missing bookmark ipc_serialize() fails or, if the header's text has 967 bytes
 *   or more, writes beyond its buffer (Q-MISC-4).
 * - 122: the array must not be missing while `data_size` is 1 or more. A negative `data_size` sends
 *   no strings (Q-MISC-8).
 * - 123: if `data_size` is not 0, the receiver's `data` keeps the value of its record (Q-MISC-9).
 * - 127 and 128: the low 32 bits of the list's address travel in the place of `param`. The receiver
 *   discards them. Its `data` keeps the value of its record (Q-MISC-1). A null element of the list
 *   arrives at its end; ipc_seal() refuses it (Q-MISC-3).
 * - Raw bytes: `data_size` must not be negative (Q-BODY-4).
 *
 * If `data` is null, ipc_free() releases nothing. So a 127 or 128 that was received into a zeroed
 * record keeps its list: the owner of the message releases it, with
 * `g_list_free_full(param_list, g_free)` (Q-MISC-10). If `data` is not null, ipc_free() releases
 * that list, and `param_list` keeps its old value. For 122, 288 and 289 `data` keeps its old value
 * (Q-BODY-7).
 *
 * The log: ipc_serialize() logs both texts of an ::mdm_book_info_t at level 1 (Q-MISC-12).
 */
typedef struct mdm_misc_info {
    int32_t type; /**< The discriminator of the policy; selects the payload. */
    uint32_t aux; /**< A word of the caller: never sent, never touched. */
    union {
        uint32_t param;    /**< A parameter of the policy, sent unchanged. */
        GList *param_list; /**< The payload of 127 and 128; null if empty. */
    };
    int32_t data_size; /**< Size of the payload in bytes; for 122 the number of strings. */
    void *data;        /**< The payload of every discriminator except 127 and 128. */
} mdm_misc_info_t;

#endif
