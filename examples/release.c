/* SPDX-License-Identifier: Apache-2.0 */
#include "release.h"

#include <mdm/ipc.h>

#include "protocol.h"

/* What a category leaves to the owner is documented in its header; these are the forms that this
 * demo exchanges. The body is looked up before ipc_free(), which may set its pointers to null. */
void release_message(mdm_msg_t *msg)
{
    const mdm_body_t body = msg->body;
    ipc_free(msg);
    switch (msg->type) {
    case TYPE_WIFI:
    case TYPE_WIFI + 1:
        if (body.wifi.type == WIFI_NETWORK) {
            g_free(body.wifi.data);
        }
        break;
    case TYPE_APP:
        if (body.app.type == APP_PACKAGES) {
            g_list_free_full(body.app.data, g_free);
        }
        break;
    case TYPE_ROAMING:
        g_free(body.roaming.data);
        break;
    default:
        break;
    }
}
