/* SPDX-License-Identifier: Apache-2.0 */
#include "load/corpus.h"

#include <string.h>

#include "common/packet.h"
#include "common/protocol.h"
#include "demo/requests.h"
#include "load/model.h"

enum {
    LENGTH_SIZE = 4,
    LENGTH_LACKS = 8, /* The length field does not count these bytes. */
    OFFSET_OF_HDR_BYTE = 5,
    LONGEST = 40000,
};

static void free_policy(gpointer data)
{
    struct policy *policy = data;
    g_bytes_unref(policy->request);
    g_free(policy);
}

/* Adds the message as a request, if it can be one: the first type of a category is that of its
 * requests. */
static void add(GPtrArray *policies, mdm_msg_t *msg)
{
    const uint8_t type = (uint8_t)(msg->type - (msg->type % 2 == 0 ? 1 : 0));
    mdm_msg_t request = {.type = type, .body = msg->body};
    uint32_t length = 0;
    if (mdm_category_of(type) != mdm_category_of(msg->type) || !model_has_policies(type)) {
        return;
    }
    uint8_t *bytes = ipc_seal(&request, &length, NULL);
    if (bytes == NULL) {
        return;
    }
    struct policy *policy = g_new0(struct policy, 1);
    *policy = (struct policy){type, msg->body.res.type, g_bytes_new_take(bytes, length)};
    g_ptr_array_add(policies, policy);
}

/* A kept input may have any length field. */
static void add_file(GPtrArray *policies, const char *path)
{
    char *bytes = NULL;
    gsize length = 0;
    if (!g_file_get_contents(path, &bytes, &length, NULL)) {
        return;
    }
    if (length >= LENGTH_LACKS) {
        const uint32_t field = GUINT32_TO_LE((uint32_t)length - LENGTH_LACKS);
        memcpy(bytes, &field, LENGTH_SIZE);
        MDM_AUTO_CLOSE mdm_msg_t *msg = ipc_open((const uint8_t *)bytes, (uint32_t)length, NULL);
        if (msg != NULL) {
            add(policies, msg);
        }
    }
    g_free(bytes);
}

static bool add_request(mdm_msg_t *request, void *user_data)
{
    add(user_data, request);
    return true;
}

static void add_large(GPtrArray *policies)
{
    char *bytes = g_strnfill(LONGEST, 'l');
    for (size_t size = LONGEST / 100; size <= LONGEST; size *= 10) {
        mdm_msg_t request = {0};
        if (mdm_firewall_set_data(&request, (uint32_t)size, bytes, size)) {
            add(policies, &request);
        }
    }
    g_free(bytes);
}

GPtrArray *corpus_load(const char *directory, GError **error)
{
    GDir *files = g_dir_open(directory, 0, error);
    if (files == NULL) {
        return NULL;
    }
    GPtrArray *policies = g_ptr_array_new_with_free_func(free_policy);
    requests_visit(add_request, policies);
    add_large(policies);
    for (const char *name = g_dir_read_name(files); name != NULL; name = g_dir_read_name(files)) {
        char *path = g_build_filename(directory, name, NULL);
        add_file(policies, path);
        g_free(path);
    }
    g_dir_close(files);
    return policies;
}

uint8_t *corpus_request(const struct policy *policy, uint8_t hdr_byte, uint32_t number,
                        uint32_t *length)
{
    gsize size = 0;
    const uint8_t *sealed = g_bytes_get_data(policy->request, &size);
    uint8_t *bytes = g_memdup2(sealed, size);
    const uint32_t word = GUINT32_TO_LE(number);
    bytes[OFFSET_OF_HDR_BYTE] = hdr_byte;
    memcpy(bytes + PACKET_NUMBER_OFFSET, &word, sizeof word);
    *length = (uint32_t)size;
    return bytes;
}
