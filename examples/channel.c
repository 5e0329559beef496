/* SPDX-License-Identifier: Apache-2.0 */
#include "channel.h"

#include <stdio.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

static int open_socket(const char *path, struct sockaddr_un *address)
{
    memset(address, 0, sizeof *address);
    address->sun_family = AF_UNIX;
    if (strlen(path) >= sizeof address->sun_path) {
        fprintf(stderr, "%s: too long for a socket\n", path);
        return -1;
    }
    strcpy(address->sun_path, path);
    const int fd = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    if (fd < 0) {
        perror("socket");
    }
    return fd;
}

static int close_after_error(int fd, const char *path)
{
    perror(path);
    close(fd);
    return -1;
}

int channel_listen(const char *path)
{
    /* The socket gets its name once it listens: a client that sees the name can connect. */
    char *hidden = g_strconcat(path, ".new", NULL);
    struct sockaddr_un address;
    int fd = open_socket(hidden, &address);
    unlink(hidden); /* a crash may have left it */
    if (fd >= 0 && (bind(fd, (const struct sockaddr *)&address, sizeof address) != 0 ||
                    listen(fd, 8) != 0 || rename(hidden, path) != 0)) {
        fd = close_after_error(fd, path);
    }
    g_free(hidden);
    return fd;
}

int channel_connect(const char *path)
{
    struct sockaddr_un address;
    const int fd = open_socket(path, &address);
    if (fd < 0) {
        return -1;
    }
    if (connect(fd, (const struct sockaddr *)&address, sizeof address) != 0) {
        return close_after_error(fd, path);
    }
    return fd;
}

bool channel_send(int fd, const uint8_t *bytes, uint32_t length)
{
    /* send() sends a whole packet or none. It does not wait for a peer that does not read. */
    if (send(fd, bytes, length, MSG_NOSIGNAL | MSG_DONTWAIT) < 0) {
        perror("send");
        return false;
    }
    return true;
}

GByteArray *channel_receive(int fd)
{
    /* With MSG_TRUNC the result is the packet's length, even if the buffer is smaller. */
    const ssize_t length = recv(fd, NULL, 0, MSG_PEEK | MSG_TRUNC);
    if (length <= 0) {
        return NULL;
    }
    GByteArray *packet = g_byte_array_sized_new((guint)length);
    g_byte_array_set_size(packet, (guint)length);
    if (recv(fd, packet->data, packet->len, 0) != length) {
        g_byte_array_unref(packet);
        return NULL;
    }
    return packet;
}
