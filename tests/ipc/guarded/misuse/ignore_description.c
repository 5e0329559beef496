/* SPDX-License-Identifier: Apache-2.0 */
/* A sentence that nobody reads stays allocated. */
#include <mdm/guarded.h>

void use(const ipc_fault_t *fault)
{
    ipc_fault_describe(fault);
}
