/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Body of message types 49 and 50: location policies.
 *
 * @code{.c}
 * #include <mdm/guarded.h>
 * #include <stdio.h>
 *
 * enum { OUR_POLICY = 1 };  // server and clients agree on the number
 *
 * int main(void)
 * {
 *     mdm_msg_t sent = {0};
 *     if (!mdm_location_set_head(&sent, OUR_POLICY)) {
 *         return 1;
 *     }
 *     sent.body.location.param = 5;
 *     uint32_t length = 0;
 *     uint8_t *bytes = ipc_seal(&sent, &length, NULL);
 *     if (bytes == NULL) {
 *         return 1;
 *     }
 *
 *     mdm_msg_t *received = ipc_open(bytes, length, NULL);
 *     g_free(bytes);  // an opened message does not need its bytes
 *     if (received == NULL) {
 *         return 1;
 *     }
 *     const mdm_location_info_t *opened = mdm_location_head(received);
 *     if (opened != NULL) {
 *         printf("policy %u, param %u\n", opened->type, opened->param);
 *     }
 *     ipc_close(received);  // closes the message and all that it holds
 *     return 0;
 * }
 * // prints: policy 1, param 5
 * @endcode
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

/* The functions need the message, and the message needs the records above. */
#include "mdm/body/typed.h"

/**
 * Fills a message with the head alone. `data_size` is 0.
 * @param msg   the message.
 * @param type  any discriminator.
 * @return Always true.
 */
MDM_INLINE bool mdm_location_set_head(mdm_msg_t *msg, uint32_t type)
{
    return mdm_fill_head(msg, MDM_TYPE_LOCATION, type, NULL, 0);
}

/**
 * @param msg  the message.
 * @return Its body if it is the head alone; otherwise null.
 */
MDM_INLINE const mdm_location_info_t *mdm_location_head(const mdm_msg_t *msg)
{
    return MDM_CAST(const mdm_location_info_t *, mdm_body_of(msg, MDM_FORM_LOCATION_HEAD));
}

#endif
