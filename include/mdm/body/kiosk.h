/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 45 and 46: kiosk-mode policies.
 */
#ifndef MDM_BODY_KIOSK_H
#define MDM_BODY_KIOSK_H

#include "mdm/body/head.h"

/** The setting of one hardware key, sent in field order. */
typedef struct mdm_kiosk_key_pair {
    uint32_t key;   /**< The hardware key. */
    uint32_t value; /**< Its setting. */
} mdm_kiosk_key_pair_t;

/**
 * Body of the kiosk category.
 *
 * | `type`    | `data` points to                                                         |
 * |-----------|--------------------------------------------------------------------------|
 * | 612, 614  | a string                                                                 |
 * | 618, 621  | GList of pointers to heap-allocated `uint32_t` (hardware keys)           |
 * | 619       | GList of ::mdm_kiosk_key_pair_t                                          |
 * | any other | `data_size` raw bytes, which arrive as a new string with a terminator    |
 *
 * `data_size`: 0, or a null `data`, sends the head alone; a received 0 makes `data` null. The
 * sender sets it to a non-zero value, and for the string and the lists sending stores the
 * payload's byte count in it (for a list without the 4 bytes of the element count). It must not
 * be negative for raw bytes. Null elements of a list are counted and sized, but not sent: they
 * arrive as zeros at the list's end.
 *
 * ipc_free() releases the payload; for the string and the lists `data` keeps its old value, so a
 * message is freed once.
 */
typedef struct mdm_kiosk_info {
    /** @{ One of the fields of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_kiosk_info_t;

#endif
