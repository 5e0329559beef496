/* SPDX-License-Identifier: Apache-2.0 */
/* A disk that is full, or a process that dies, at a write of the database that the test chooses. */
#ifndef DISK_H
#define DISK_H

#include <stdbool.h>

typedef enum disk_fate {
    DISK_KILLS,         /* The process is killed in place of the write. */
    DISK_KILLS_HALFWAY, /* Half of the bytes are written first. */
    DISK_IS_FULL,       /* Half of the bytes are written, and every later write fails, too. */
    DISK_IS_FULL_ONCE,  /* Later writes succeed. */
} disk_fate_t;

/* From now on, what happens at the write with this number, counted from 1. */
void disk_choose(disk_fate_t fate, unsigned write);

/* Lets all writes succeed again. */
void disk_restore(void);

#endif
