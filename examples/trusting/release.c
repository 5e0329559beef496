/* SPDX-License-Identifier: Apache-2.0 */
#include "release.h"

#include <mdm/ipc.h>

static void release_names(GList *names)
{
    g_list_free_full(names, g_free);
}

static void release_network(mdm_wifi_network_t *network)
{
    if (network == NULL) {
        return;
    }
    const int32_t kind = network->detail_kind;
    if (kind == 1 || kind == 8 || kind == 9) {
        g_free(network->detail);
    }
    g_free(network);
}

/* ipc_free() leaves the records of the list allocated, and no pointer to them. */
static GList *controls_of(const mdm_msg_t *msg)
{
    return g_list_copy(mdm_unconst(mdm_app_res_controls(msg)));
}

/* Releases the blocks that ipc_free() has left allocated. The category's header says which blocks
 * these are. `before` is the body as it was before ipc_free(). */
static void release_rest(const mdm_msg_t *msg, const mdm_body_t *before)
{
    switch (mdm_form_of(msg)) {
    case MDM_FORM_WIFI_NETWORK:
        release_network(before->wifi.data);
        break;
    case MDM_FORM_BLUETOOTH_NAMES:
        release_names(msg->body.bluetooth.data); /* null if ipc_free() has released the names */
        break;
    case MDM_FORM_BLUETOOTH_DATA:
        g_free(before->bluetooth.data);
        break;
    case MDM_FORM_APP_PACKAGES:
        release_names(before->app.data);
        break;
    case MDM_FORM_ROAMING_RECORD:
        g_free(before->roaming.data);
        break;
    case MDM_FORM_MISC_STRINGS:
        release_names(before->misc.param_list);
        break;
    case MDM_FORM_EMAIL_SETTINGS:
        g_free(before->email.data);
        break;
    case MDM_FORM_APP_RES_PACKAGES:
    case MDM_FORM_APP_RES_ITEMS:
    case MDM_FORM_APP_RES_CONTROLS:
        if (before->app_res.data == NULL && before->app_res.data_size >= 1) {
            g_free(before->app_res.pkg);
        }
        break;
    default:
        break;
    }
}

void release_message(mdm_msg_t *msg)
{
    if (mdm_form_of(msg) == MDM_FORM_PHONE_RES_RAW_ITEM) {
        /* Raw bytes that ipc_free() would take for a record. */
        g_free(msg->body.phone_res.data);
        msg->body.phone_res.data = NULL;
    }
    GList *controls = controls_of(msg);
    const mdm_body_t before = msg->body;
    ipc_free(msg);
    g_list_free_full(controls, g_free);
    release_rest(msg, &before);
}
