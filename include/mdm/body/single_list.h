/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Bodies of message types 23 to 34, 37 and 38: seven categories that carry one opaque payload.
 *
 * Each body is the body head (see mdm/body/head.h) and nothing else:
 *
 * - `type`, `param`: chosen by the caller; the codec sends them and never branches on them.
 * - `data_size`: payload length in bytes, set by the sender. Below 1 the head travels alone and
 *   the receiver's `data` becomes null. It must not be negative.
 * - `data`: on sending any buffer of `data_size` bytes; on reception a new string with a
 *   terminator (a zero byte inside ends the text early).
 *
 * The receiver of a browser or enterprise message learns `type`, `param` and `data_size`, never
 * the payload: its `data` stays exactly as its record held it. Hand ipc_deserialize() a record
 * whose `data` is null, because ipc_free() releases whatever `data` holds.
 *
 * ipc_free() releases `data` and resets `data` and `data_size`; freeing twice is harmless.
 */
#ifndef MDM_BODY_SINGLE_LIST_H
#define MDM_BODY_SINGLE_LIST_H

#include "mdm/body/head.h"

/** Message types 23 and 24. The payload is sent, but never read back. */
typedef struct mdm_browser_info {
    /** @{ One of the fields of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_browser_info_t;

/** Message types 25 and 26. */
typedef struct mdm_date_time_info {
    /** @{ One of the fields of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_date_time_info_t;

/** Message types 27 and 28. */
typedef struct mdm_remote_info {
    /** @{ One of the fields of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_remote_info_t;

/** Message types 29 and 30. */
typedef struct mdm_vpn_info {
    /** @{ One of the fields of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_vpn_info_t;

/** Message types 31 and 32. */
typedef struct mdm_firewall_info {
    /** @{ One of the fields of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_firewall_info_t;

/** Message types 33 and 34. */
typedef struct mdm_res_info {
    /** @{ One of the fields of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_res_info_t;

/** Message types 37 and 38. The payload is sent, but never read back. */
typedef struct mdm_enterprise_info {
    /** @{ One of the fields of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_enterprise_info_t;

#endif
