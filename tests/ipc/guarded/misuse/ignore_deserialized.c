/* SPDX-License-Identifier: Apache-2.0 */
/* Bytes that are no message leave the record as it was. */
#include <mdm/ipc.h>

void use(mdm_msg_t *msg, const uint8_t *bytes, uint32_t length)
{
    ipc_deserialize(msg, bytes, length);
}
