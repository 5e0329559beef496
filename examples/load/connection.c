/* SPDX-License-Identifier: Apache-2.0 */
#include "load/connection.h"

#include <sys/socket.h>
#include <unistd.h>

#include <glib.h>

enum { BUFFER_SIZE = 1 << 18 };

struct connection {
    GSource source;
    int fd;
    gpointer tag;
    const struct connection_owner *functions;
    void *owner;
};

/* The server sees the user who connects. */
static bool connect_as(int fd, const char *path, uid_t uid)
{
    struct sockaddr_un address;
    const uid_t own = geteuid();
    if (!packet_address(&address, path) || (uid != own && seteuid(uid) != 0)) {
        return false;
    }
    const bool is_connected = connect(fd, (const struct sockaddr *)&address, sizeof address) == 0;
    if (uid != own && seteuid(own) != 0) {
        g_error("cannot become user %lu again", (unsigned long)own);
    }
    return is_connected;
}

static gboolean dispatch(GSource *source, GSourceFunc callback, gpointer data)
{
    (void)callback;
    (void)data;
    static uint8_t buffer[BUFFER_SIZE];
    struct connection *connection = (struct connection *)(void *)source;
    uint32_t length = 0;
    switch (packet_receive(connection->fd, buffer, BUFFER_SIZE, &length)) {
    case PACKET_DONE:
        connection->functions->received(connection->owner, buffer, length);
        break;
    case PACKET_LATER:
        break;
    default:
        connection->functions->closed(connection->owner);
    }
    return G_SOURCE_CONTINUE;
}

struct connection *connection_open(const char *path, uid_t uid, bool reads,
                                   const struct connection_owner *functions, void *owner)
{
    static GSourceFuncs source_functions = {.dispatch = dispatch};
    const int fd = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (fd < 0) {
        return NULL;
    }
    if (!connect_as(fd, path, uid)) {
        close(fd);
        return NULL;
    }
    GSource *source = g_source_new(&source_functions, sizeof(struct connection));
    struct connection *connection = (struct connection *)(void *)source;
    connection->fd = fd;
    connection->functions = functions;
    connection->owner = owner;
    connection->tag = g_source_add_unix_fd(source, fd, reads ? G_IO_IN : (GIOCondition)0);
    g_source_attach(source, NULL);
    return connection;
}

packet_result_t connection_send(struct connection *connection, const uint8_t *bytes,
                                uint32_t length)
{
    return packet_send(connection->fd, bytes, length);
}

void connection_close(struct connection *connection)
{
    if (connection == NULL) {
        return;
    }
    close(connection->fd);
    g_source_destroy(&connection->source);
    g_source_unref(&connection->source);
}
