/* SPDX-License-Identifier: Apache-2.0 */
#include "clock.h"

#include <glib.h>

int64_t clock_now(void)
{
    return g_get_monotonic_time();
}
