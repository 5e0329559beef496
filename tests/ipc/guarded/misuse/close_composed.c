/* SPDX-License-Identifier: Apache-2.0 */
/* Composed bytes are no opened message. */
#include <mdm/inspect.h>

void use(ipc_answer_t answer, uint32_t *length)
{
    uint8_t *bytes = ipc_compose(answer, NULL, length, NULL);
    ipc_close((mdm_msg_t *)bytes);
}
