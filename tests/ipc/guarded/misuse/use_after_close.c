/* SPDX-License-Identifier: Apache-2.0 */
/* Nothing of a message outlives it. */
#include <mdm/guarded.h>

char *use(const uint8_t *bytes, uint32_t length)
{
    mdm_msg_t *msg = ipc_open(bytes, length, NULL);
    ipc_close(msg);
    return msg->hdr_text;
}
