/* SPDX-License-Identifier: Apache-2.0 */
/* Sentences come from GLib's allocator. */
#include <stdlib.h>

#include <mdm/guarded.h>

void use(const ipc_fault_t *fault)
{
    gchar *text = ipc_fault_describe(fault);
    free(text);
}
