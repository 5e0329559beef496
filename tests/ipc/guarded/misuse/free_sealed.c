/* SPDX-License-Identifier: Apache-2.0 */
/* Sealed bytes come from GLib's allocator. */
#include <stdlib.h>

#include <mdm/guarded.h>

void use(mdm_msg_t *msg)
{
    uint32_t length;
    uint8_t *bytes = ipc_seal(msg, &length, NULL);
    free(bytes);
}
