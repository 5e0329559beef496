/* SPDX-License-Identifier: Apache-2.0 */
/* There has to be a fault. */
#include <mdm/guarded.h>

gchar *use(void)
{
    return ipc_fault_describe(NULL);
}
