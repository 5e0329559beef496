/* SPDX-License-Identifier: Apache-2.0 */
/* An opened message is closed once. */
#include <mdm/guarded.h>

void use(const uint8_t *bytes, uint32_t length)
{
    mdm_msg_t *msg = ipc_open(bytes, length, NULL);
    ipc_close(msg);
    ipc_close(msg);
}
