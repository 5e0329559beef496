/* SPDX-License-Identifier: Apache-2.0 */
/* The clock of every limit in time. The tests put a clock of their own in its place. */
#ifndef CLOCK_H
#define CLOCK_H

#include <stdint.h>

#define CLOCK_MILLISECOND INT64_C(1000)
#define CLOCK_SECOND (1000 * CLOCK_MILLISECOND)

/* Later than every time of the clock. */
#define CLOCK_NEVER INT64_MAX

/* Microseconds since some moment. It never goes back, and setting the time does not change it. */
int64_t clock_now(void);

#endif
