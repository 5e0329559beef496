/* SPDX-License-Identifier: Apache-2.0 */
/* Nobody can send bytes without their number. */
#include <mdm/guarded.h>

uint8_t *use(mdm_msg_t *msg)
{
    return ipc_serialize(msg, NULL);
}
