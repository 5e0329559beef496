/* SPDX-License-Identifier: Apache-2.0 */
/* What a process pays to load libraries, one after the other, each with those that it needs and
 * that are not there yet. A line of the output has, with tabs between: the name as given, the time
 * in microseconds, and by how many KiB the private dirty memory of the process grows.
 * usage: load-cost LIBRARY... */
#define _POSIX_C_SOURCE 200809L
#include <dlfcn.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

static double now(void)
{
    struct timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return (double)time.tv_sec * 1e6 + (double)time.tv_nsec / 1e3;
}

static _Noreturn void fail(const char *what)
{
    fprintf(stderr, "load-cost: %s\n", what);
    exit(EXIT_FAILURE);
}

/* In KiB; read without the heap, which is part of it. */
static long private_dirty(void)
{
    static const char field[] = "Private_Dirty:";
    static char text[4096];
    int file = open("/proc/self/smaps_rollup", O_RDONLY | O_CLOEXEC);
    ssize_t length = file == -1 ? -1 : read(file, text, sizeof text - 1);
    if (length < 0)
        fail("no /proc/self/smaps_rollup");
    close(file);
    text[length] = '\0';
    const char *found = strstr(text, field);
    if (found == NULL)
        fail("no private dirty memory in /proc/self/smaps_rollup");
    return strtol(found + sizeof field - 1, NULL, 10);
}

int main(int argc, char **argv)
{
    static char buffer[BUFSIZ];
    setvbuf(stdout, buffer, _IOFBF, sizeof buffer);
    printf("library\tmicroseconds\tKiB\n");
    private_dirty(); /* touches what reading itself needs */
    for (int i = 1; i < argc; ++i) {
        long before = private_dirty();
        double start = now();
        if (dlopen(argv[i], RTLD_LAZY) == NULL)
            fail(dlerror());
        double end = now();
        printf("%s\t%.1f\t%ld\n", argv[i], end - start, private_dirty() - before);
    }
    return EXIT_SUCCESS;
}
