/* SPDX-License-Identifier: Apache-2.0 */
/* Whoever serialises a message has to send and to free it. */
#include <mdm/guarded.h>

void use(mdm_msg_t *msg, uint32_t *length)
{
    ipc_serialize(msg, length);
}
