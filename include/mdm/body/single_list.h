/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Bodies of message types 23 to 34, 37 and 38: seven categories that carry raw bytes.
 *
 * Each body is the body head (see mdm/body/head.h) and nothing else:
 *
 * - `type`, `param`: the caller's numbers. The codec sends them unchanged and never looks at them.
 * - `data_size`: the number of raw bytes. The sender sets it; it must not be negative
 *   (Q-SINGLE_LIST-2). If it is below 1, the head travels alone, and the receiver's `data` becomes
 *   null.
 * - `data`: a buffer of `data_size` bytes.
 *
 * The receiver of a browser or enterprise message gets `type`, `param` and `data_size`, but never
 * the raw bytes: if `data_size` is 1 or more, its `data` keeps the value of its record
 * (Q-SINGLE_LIST-1). So pass ipc_deserialize() a record whose `data` is null, because ipc_free()
 * releases whatever `data` holds.
 *
 * ipc_free() releases `data` and sets `data` to null and `data_size` to 0. Freeing twice is
 * harmless.
 */
#ifndef MDM_BODY_SINGLE_LIST_H
#define MDM_BODY_SINGLE_LIST_H

#include "mdm/body/head.h"

/** Message types 23 and 24. Raw bytes are sent, but never received. */
typedef struct mdm_browser_info {
    /** @{ A field of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_browser_info_t;

/** Message types 25 and 26. */
typedef struct mdm_date_time_info {
    /** @{ A field of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_date_time_info_t;

/** Message types 27 and 28. */
typedef struct mdm_remote_info {
    /** @{ A field of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_remote_info_t;

/** Message types 29 and 30. */
typedef struct mdm_vpn_info {
    /** @{ A field of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_vpn_info_t;

/** Message types 31 and 32. */
typedef struct mdm_firewall_info {
    /** @{ A field of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_firewall_info_t;

/** Message types 33 and 34. */
typedef struct mdm_res_info {
    /** @{ A field of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_res_info_t;

/** Message types 37 and 38. Raw bytes are sent, but never received. */
typedef struct mdm_enterprise_info {
    /** @{ A field of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_enterprise_info_t;

#endif
