/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 45 and 46: kiosk-mode policies.
 */
#ifndef MDM_BODY_KIOSK_H
#define MDM_BODY_KIOSK_H

#include "mdm/body/head.h"

/** The setting of one hardware key, sent in the order of the fields. */
typedef struct mdm_kiosk_key_pair {
    uint32_t key;   /**< The hardware key: a number on which server and clients agree. */
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
 * | any other | `data_size` raw bytes                                                    |
 *
 * `data_size` is compared with 0 (Q-BODY-2). If it is 0, or if `data` is null, the head travels
 * alone (Q-BODY-3). A received 0 makes `data` null. The sender sets another value. For the string
 * and the lists sending stores the size of the payload; for a list without the 4 bytes of the count
 * (Q-KIOSK-2). For raw bytes `data_size` must not be negative (Q-BODY-4). Do not send null elements
 * of a list: the count and the size include them, but they are not written. They arrive as zeros at
 * the end of the list (Q-KIOSK-1). Give a list by its first cell: the elements in front of another
 * one are written, but not counted (Q-KIOSK-5).
 *
 * ipc_free() releases the payload. For the string and the lists `data` keeps its old value
 * (Q-BODY-7).
 */
typedef struct mdm_kiosk_info {
    /** @{ A field of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_kiosk_info_t;

#endif
