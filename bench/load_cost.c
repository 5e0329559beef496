/* SPDX-License-Identifier: Apache-2.0 */
/* What a process pays to load libraries, one after the other, each with those that it needs and
 * that are not there yet. A line of the output has, with tabs between: the name as given, the time
 * in microseconds, and by how many KiB the private dirty memory of the process grows.
 * usage: load-cost LIBRARY... */
#define _POSIX_C_SOURCE 200809L
#include <dlfcn.h>
#include <fcntl.h>
#include <stdbool.h>
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

/* In KiB, or -1; read without the heap, which is part of it. */
static long private_dirty(void)
{
    static const char field[] = "Private_Dirty:";
    static char text[4096];
    int file = open("/proc/self/smaps_rollup", O_RDONLY | O_CLOEXEC);
    if (file == -1) {
        return -1;
    }
    ssize_t length = read(file, text, sizeof text - 1);
    close(file);
    text[length < 0 ? 0 : length] = '\0';
    const char *found = strstr(text, field);
    return found == NULL ? -1 : strtol(found + sizeof field - 1, NULL, 10);
}

static bool load(const char *library)
{
    long before = private_dirty();
    double start = now();
    void *handle = dlopen(library, RTLD_LAZY);
    double end = now();
    if (handle == NULL) {
        fprintf(stderr, "load-cost: cannot load %s\n", library);
        return false;
    }
    printf("%s\t%.1f\t%ld\n", library, end - start, private_dirty() - before);
    return true;
}

int main(int argc, char **argv)
{
    static char buffer[BUFSIZ];
    setvbuf(stdout, buffer, _IOFBF, sizeof buffer);
    if (private_dirty() < 0) { /* which also touches what reading itself needs */
        fprintf(stderr, "load-cost: no private dirty memory in /proc/self/smaps_rollup\n");
        return EXIT_FAILURE;
    }
    for (int i = 1; i < argc; ++i) {
        if (!load(argv[i])) {
            return EXIT_FAILURE;
        }
    }
    return EXIT_SUCCESS;
}
