/* SPDX-License-Identifier: Apache-2.0 */
#include "release.h"

#include <stdbool.h>

#include <mdm/ipc.h>

#include "protocol.h"

static void release_names(GList *names)
{
    g_list_free_full(names, g_free);
}

/* Each of these functions takes a body as it was before ipc_free(), and releases the blocks that
 * ipc_free() has left allocated. The category's header says which blocks these are. */

static void release_wifi(const mdm_wifi_info_t *info)
{
    mdm_wifi_network_t *network = info->data;
    if (info->type != WIFI_NETWORK || network == NULL) {
        return;
    }
    const int32_t kind = network->detail_kind;
    if (kind == 1 || kind == 8 || kind == 9) {
        g_free(network->detail);
    }
    g_free(network);
}

static void release_bluetooth(const mdm_bluetooth_info_t *info)
{
    switch (info->type) {
    case 91:
    case 223:
    case 227:
    case 233:
    case 237:
        break; /* ipc_free() has released it */
    case 220:
    case 221:
    case 222:
    case 224:
    case 225:
    case 230:
    case 231:
    case 234:
    case 235:
        release_names(info->data);
        break;
    default:
        g_free(info->data);
    }
}

static void release_app(const mdm_app_info_t *info)
{
    if (info->type == 4 || info->type == 15) {
        release_names(info->data);
    }
}

static void release_misc(const mdm_misc_info_t *info)
{
    if (info->type == 127 || info->type == 128) {
        release_names(info->param_list);
    }
}

static void release_email(const mdm_email_info_t *info)
{
    if (info->type == 362 && info->data_size != 0) {
        g_free(info->data);
    }
}

/* ipc_free() leaves the records of the list allocated, and no pointer to them. */
static GList *controls_of(const mdm_app_res_info_t *info)
{
    const bool has_controls = info->type >= 172 && info->type <= 175 && info->data_size >= 1;
    return has_controls ? g_list_copy(info->data) : NULL;
}

static void release_app_res(const mdm_app_res_info_t *info, GList *controls)
{
    g_list_free_full(controls, g_free);
    if (info->data == NULL && info->data_size >= 1) {
        g_free(info->pkg);
    }
}

/* Releases raw bytes that ipc_free() would take for a record. */
static void release_phone_res(mdm_phone_res_info_t *info)
{
    if (info->type == 439 || info->type == 440) {
        g_free(info->data);
        info->data = NULL;
    }
}

void release_message(mdm_msg_t *msg)
{
    const uint8_t request = msg->type % 2 == 1 ? msg->type : (uint8_t)(msg->type - 1);
    const mdm_body_t body = msg->body;
    GList *controls = msg->type == TYPE_APP_RES ? controls_of(&body.app_res) : NULL;
    if (request == TYPE_PHONE_RES) {
        release_phone_res(&msg->body.phone_res);
    }
    ipc_free(msg);
    if (msg->type == TYPE_APP_RES) {
        release_app_res(&body.app_res, controls);
        return;
    }
    if (msg->type == TYPE_ROAMING_RES) {
        return;
    }
    switch (request) {
    case TYPE_WIFI:
        release_wifi(&body.wifi);
        break;
    case TYPE_BLUETOOTH:
        release_bluetooth(&body.bluetooth);
        break;
    case TYPE_APP:
        release_app(&body.app);
        break;
    case TYPE_ROAMING:
        g_free(body.roaming.data);
        break;
    case TYPE_MISC:
        release_misc(&body.misc);
        break;
    case TYPE_EMAIL:
        release_email(&body.email);
        break;
    default:
        break;
    }
}
