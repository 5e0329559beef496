/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 17 and 18: policies that belong to no other category.
 */
#ifndef MDM_BODY_MISC_H
#define MDM_BODY_MISC_H

#include <glib.h>
#include <stdint.h>

/** The record of discriminators 124 to 126: one string, which may be null. */
typedef struct mdm_misc_str {
    char *value; /**< Its meaning is between server and clients. */
} mdm_misc_str_t;

/** The record of discriminators 281 and 283, sent in field order; either string may be null. */
typedef struct mdm_book_info {
    /** @{ Its meaning is between server and clients. */
    char *url;
    char *title;
    /** @} */
} mdm_book_info_t;

/** The record of discriminators 288 and 289, sent in field order; either string may be null. */
typedef struct mdm_misc_str_pair {
    /** @{ Its meaning is between server and clients. */
    char *first;
    char *second;
    /** @} */
} mdm_misc_str_pair_t;

/**
 * Body of the misc category: the body head (see mdm/body/head.h) with a list in `param`'s place
 * for two discriminators.
 *
 * | `type`        | payload                                                                     |
 * |---------------|-----------------------------------------------------------------------------|
 * | 122           | `data`: array of `data_size` string pointers; `data_size` counts strings    |
 * | 123           | none, whatever `data_size` says                                             |
 * | 124, 125, 126 | `data`: one ::mdm_misc_str_t                                                |
 * | 127, 128      | `param_list`: GList of strings, sent even when `data_size` is 0             |
 * | 281, 283      | `data`: one ::mdm_book_info_t                                               |
 * | 288, 289      | `data`: one ::mdm_misc_str_pair_t                                           |
 * | any other     | `data`: `data_size` raw bytes, which arrive as a string with a terminator   |
 *
 * A `data_size` of 0 sends the head alone (127 and 128 aside) and the receiver's `data` becomes
 * null. For the record discriminators the sender sets it to a non-zero value and sending stores
 * the payload's byte count in it; their records must then not be missing. A missing book record
 * makes ipc_serialize() fail or, with a header text of 967 bytes or more, write beyond its buffer.
 * For 122 the array must not be missing while `data_size` is 1 or more; a negative one sends no
 * strings. It must not be negative for raw bytes. For 123 with another `data_size` the receiver's
 * `data` stays as its record held it.
 *
 * For 127 and 128 the low 32 bits of the list pointer travel in `param`'s place, as they stand;
 * the receiver discards them and `data` stays as its record held it.
 *
 * ipc_free() does nothing at all when `data` is null, so the list of a 127 or 128 that was received
 * into a zeroed record stays with the owner of the message; with another `data` the list is
 * released and `param_list` keeps its old value. For 122, 288 and 289 `data` keeps its old value,
 * so a message is freed once.
 *
 * The log: ipc_serialize() logs both texts of an ::mdm_book_info_t at level 1; see mdm/ipc.h and
 * docs/security.md.
 */
typedef struct mdm_misc_info {
    int32_t type; /**< Policy discriminator; selects the payload. */
    uint32_t aux; /**< The caller's word: never sent, never touched. */
    union {
        uint32_t param;    /**< A parameter of the policy, sent as it stands. */
        GList *param_list; /**< The payload of 127 and 128; null when empty. */
    };
    int32_t data_size; /**< Byte size of the payload; for 122 the number of strings. */
    void *data;        /**< The payload of every discriminator but 127 and 128. */
} mdm_misc_info_t;

#endif
