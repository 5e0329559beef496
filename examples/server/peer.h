/* SPDX-License-Identifier: Apache-2.0 */
/* Who is at the other end of a socket, as the kernel tells it. */
#ifndef PEER_H
#define PEER_H

#include <stdbool.h>
#include <sys/types.h>

enum { PEER_PROGRAM_SIZE = 64 };

struct peer {
    uid_t uid;                       /* decides what the peer may do */
    pid_t pid;                       /* for the log: another process may have it by now */
    char program[PEER_PROGRAM_SIZE]; /* for the log: escaped; the peer chooses it */
};

/* Reads the credentials that the peer had when it connected. Returns false if there are none. */
bool peer_of(int fd, struct peer *peer);

#endif
