/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 49 and 50: location policies.
 */
#ifndef MDM_BODY_LOCATION_H
#define MDM_BODY_LOCATION_H

#include "mdm/body/head.h"

/**
 * Body of the location category: the head alone. `data_size` is sent unchanged and announces no
 * payload (Q-LOCATION-1). The codec never uses `data`: ipc_free() releases nothing of the body.
 */
typedef struct mdm_location_info {
    /** @{ A field of the body head: see #MDM_BODY_HEAD. */
    MDM_BODY_HEAD;
    /** @} */
} mdm_location_info_t;

#endif
