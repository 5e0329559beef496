/* SPDX-License-Identifier: Apache-2.0 */
/* Whoever opens a message has to close it. */
#include <mdm/guarded.h>

void use(const uint8_t *bytes, uint32_t length)
{
    ipc_open(bytes, length, NULL);
}
