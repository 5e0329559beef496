/* SPDX-License-Identifier: Apache-2.0 */
/* SQLite calls these functions with offsets of 64 bits, also on a machine of 32. */
#define _FILE_OFFSET_BITS 64
#include "tests/disk.h"

#include <errno.h>
#include <signal.h>
#include <unistd.h>

#include <glib.h>
#include <sqlite3.h>

typedef ssize_t pwrite_t(int fd, const void *bytes, size_t size, off_t offset);
typedef int ftruncate_t(int fd, off_t size);

static struct {
    disk_fate_t fate;
    unsigned left; /* writes until then */
} chosen;

static pwrite_t *real_pwrite;
static ftruncate_t *real_ftruncate;

static bool is_last(void)
{
    if (chosen.left > 0) {
        --chosen.left;
    }
    return chosen.left == 0;
}

static bool kills(void)
{
    return chosen.fate == DISK_KILLS || chosen.fate == DISK_KILLS_HALFWAY;
}

static ssize_t write_or_fail(int fd, const void *bytes, size_t size, off_t offset)
{
    if (!is_last()) {
        return real_pwrite(fd, bytes, size, offset);
    }
    if (chosen.fate != DISK_KILLS) {
        (void)!real_pwrite(fd, bytes, size / 2, offset);
    }
    if (kills()) {
        raise(SIGKILL);
    }
    if (chosen.fate == DISK_IS_FULL_ONCE) {
        disk_restore();
    }
    errno = ENOSPC;
    return -1;
}

/* A file can be made shorter on a full disk, too. */
static int truncate_or_fail(int fd, off_t size)
{
    if (kills() && is_last()) {
        raise(SIGKILL);
    }
    return real_ftruncate(fd, size);
}

static sqlite3_syscall_ptr find(const char *name)
{
    sqlite3_vfs *vfs = sqlite3_vfs_find(NULL);
    return vfs->xGetSystemCall(vfs, name);
}

static void replace(const char *name, sqlite3_syscall_ptr call)
{
    sqlite3_vfs *vfs = sqlite3_vfs_find(NULL);
    g_assert_cmpint(vfs->xSetSystemCall(vfs, name, call), ==, SQLITE_OK);
}

/* SQLite lets tests stand between it and the system. It uses one of the two names of pwrite(). */
void disk_choose(disk_fate_t fate, unsigned write)
{
    disk_restore();
    chosen.fate = fate;
    chosen.left = write;
    const char *name = find("pwrite64") != NULL ? "pwrite64" : "pwrite";
    real_pwrite = (pwrite_t *)(void (*)(void))find(name);
    real_ftruncate = (ftruncate_t *)(void (*)(void))find("ftruncate");
    replace(name, (sqlite3_syscall_ptr)(void (*)(void))write_or_fail);
    replace("ftruncate", (sqlite3_syscall_ptr)(void (*)(void))truncate_or_fail);
}

void disk_restore(void)
{
    replace(NULL, NULL);
}
