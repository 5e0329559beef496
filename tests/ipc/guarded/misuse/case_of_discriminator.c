/* SPDX-License-Identifier: Apache-2.0 */
/* A switch over forms has no cases that are discriminators. */
#include <mdm/guarded.h>

const void *payload_of(const mdm_msg_t *msg)
{
    switch (mdm_form_of(msg)) {
    case MDM_WIFI_NETWORK: /* for MDM_FORM_WIFI_NETWORK */
        return mdm_wifi_network(msg);
    default:
        return NULL;
    }
}
