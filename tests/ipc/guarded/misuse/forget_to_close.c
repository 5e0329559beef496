/* SPDX-License-Identifier: Apache-2.0 */
/* An opened message is closed on every way out. */
#include <mdm/guarded.h>

uint8_t use(const uint8_t *bytes, uint32_t length)
{
    mdm_msg_t *msg = ipc_open(bytes, length, NULL);
    return msg != NULL ? msg->type : 0;
}
