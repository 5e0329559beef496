/* SPDX-License-Identifier: Apache-2.0 */
/* Both kinds of messages, each given back in its own way: nothing to warn of. */
#include <stdio.h>
#include <stdlib.h>

#include <glib.h>

/* As the headers of some allocators and compilers do: the library's own do not mind. */
#define malloc(size) my_malloc(size)
#define nonnull
#define warn_unused_result

#include <mdm/guarded.h>

void open_and_close(const uint8_t *bytes, uint32_t length);
void open_in_a_scope(const uint8_t *bytes, uint32_t length);
void deserialize(const uint8_t *bytes, uint32_t length);
uint8_t *answer(mdm_msg_t *msg, uint32_t *length);
void send_twice(mdm_msg_t *msg);

void open_and_close(const uint8_t *bytes, uint32_t length)
{
    ipc_fault_t fault;
    mdm_msg_t *msg = ipc_open(bytes, length, &fault);
    if (msg == NULL) {
        gchar *text = ipc_fault_describe(&fault);
        puts(text);
        g_free(text);
        return;
    }
    printf("%u\n", msg->type);
    ipc_close(msg);
}

void open_in_a_scope(const uint8_t *bytes, uint32_t length)
{
    MDM_AUTO_CLOSE mdm_msg_t *msg = ipc_open(bytes, length, NULL);
    if (msg != NULL) {
        printf("%u\n", msg->type);
    }
}

void deserialize(const uint8_t *bytes, uint32_t length)
{
    g_auto(mdm_msg_t) msg = {0};
    if (ipc_deserialize(&msg, bytes, length) == MDM_RESULT_SUCCESS) {
        printf("%u\n", msg.type);
    }
}

uint8_t *answer(mdm_msg_t *msg, uint32_t *length)
{
    return ipc_seal(msg, length, NULL);
}

void send_twice(mdm_msg_t *msg)
{
    uint32_t length = 0;
    uint8_t *bytes = ipc_serialize(msg, &length);
    g_free(bytes);
    bytes = answer(msg, &length);
    g_free(bytes);
    ipc_close(NULL);
}
