/* SPDX-License-Identifier: Apache-2.0 */
/*
 * The socket that clients connect to: one that systemd hands over, or one of the server's own.
 *
 * The lock file beside an own socket belongs to the server that runs. Whoever has the lock takes
 * over a socket that a crash has left. The lock file itself stays.
 */
#ifndef LISTENER_H
#define LISTENER_H

#include <stdbool.h>
#include <sys/types.h>
#include <time.h>

#include <glib.h>

struct listener_options {
    char *path;
    char *group;           /* of the socket; may be null */
    mode_t mode;           /* of the socket */
    mode_t directory_mode; /* of its directory, if it is made */
};

struct listener {
    int fd;
    int spare;   /* a descriptor that is given up to turn a client away; -1 if there is none */
    int lock;    /* -1 for systemd's socket */
    char *path;  /* of the own socket, or null */
    ino_t inode; /* of the own socket */
    struct timespec made;
};

typedef enum listener_result {
    LISTENER_ACCEPTED,
    LISTENER_NOBODY,    /* Nobody waits any more. */
    LISTENER_FULL,      /* There was no descriptor but the spare one: turn this client away. */
    LISTENER_EXHAUSTED, /* No client can be accepted now. */
} listener_result_t;

/* Takes the socket of systemd if there is one, otherwise makes its own. */
bool listener_open(struct listener *listener, const struct listener_options *options,
                   GError **error);

/* Removes its own socket, and nothing of another server. */
void listener_close(struct listener *listener);

/* Accepts one client. `fd` becomes its socket for LISTENER_ACCEPTED and LISTENER_FULL. */
listener_result_t listener_accept(struct listener *listener, int *fd);

/* Takes a spare descriptor again once there is one. */
bool listener_take_spare(struct listener *listener);

#endif
