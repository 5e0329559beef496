/* SPDX-License-Identifier: Apache-2.0 */
#include "peer.h"

#include <stdio.h>
#include <sys/socket.h>

#include <glib.h>

#include "common/text.h"

/* A process that has ended, or that this one may not see, has no name. */
static void read_program(struct peer *peer)
{
    char path[32];
    snprintf(path, sizeof path, "/proc/%ld/comm", (long)peer->pid);
    char *name = NULL;
    if (!g_file_get_contents(path, &name, NULL, NULL)) {
        g_strlcpy(peer->program, "?", sizeof peer->program);
        return;
    }
    char *escaped = text_escaped(g_strchomp(name));
    g_strlcpy(peer->program, escaped, sizeof peer->program);
    g_free(escaped);
    g_free(name);
}

bool peer_of(int fd, struct peer *peer)
{
    struct ucred credentials;
    socklen_t size = sizeof credentials;
    if (getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &credentials, &size) != 0) {
        return false;
    }
    peer->uid = credentials.uid;
    peer->pid = credentials.pid;
    read_program(peer);
    return true;
}
