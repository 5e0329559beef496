/* SPDX-License-Identifier: Apache-2.0 */
/* Bytes are no message. */
#include <mdm/guarded.h>

void use(mdm_msg_t *msg)
{
    uint32_t length;
    void *bytes = ipc_serialize(msg, &length);
    ipc_close(bytes);
}
