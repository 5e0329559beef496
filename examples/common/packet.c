/* SPDX-License-Identifier: Apache-2.0 */
#include "packet.h"

#include <errno.h>
#include <string.h>
#include <sys/socket.h>

#include <glib.h>

bool packet_address(struct sockaddr_un *address, const char *path)
{
    memset(address, 0, sizeof *address);
    address->sun_family = AF_UNIX;
    return g_strlcpy(address->sun_path, path, sizeof address->sun_path) < sizeof address->sun_path;
}

static packet_result_t result_of(int error)
{
    switch (error) {
    case EAGAIN:
    case EINTR:
        return PACKET_LATER;
    case EMSGSIZE:
        return PACKET_TOO_LONG;
    default:
        return PACKET_CLOSED;
    }
}

packet_result_t packet_send(int fd, const uint8_t *bytes, uint32_t length)
{
    /* A packet is sent whole or not at all. */
    const ssize_t sent = send(fd, bytes, length, MSG_NOSIGNAL | MSG_DONTWAIT);
    return sent < 0 ? result_of(errno) : PACKET_DONE;
}

/* NOLINTNEXTLINE(readability-non-const-parameter): recvmsg() writes to the buffer */
packet_result_t packet_receive(int fd, uint8_t *buffer, uint32_t size, uint32_t *length)
{
    struct iovec part = {.iov_base = buffer, .iov_len = size};
    struct msghdr message = {.msg_iov = &part, .msg_iovlen = 1};
    /* With MSG_TRUNC the result is the packet's length, even if the buffer is smaller. */
    ssize_t received = recvmsg(fd, &message, MSG_DONTWAIT | MSG_TRUNC);
    if (received < 0 && errno == ECONNRESET) {
        /* The peer has closed its socket without reading all. What it has sent is still there. */
        received = recvmsg(fd, &message, MSG_DONTWAIT | MSG_TRUNC);
    }
    if (received < 0) {
        return result_of(errno);
    }
    if (received == 0) {
        return PACKET_CLOSED;
    }
    *length = (uint32_t)received;
    return (message.msg_flags & MSG_TRUNC) != 0 ? PACKET_TOO_LONG : PACKET_DONE;
}

uint32_t packet_number(const uint8_t *bytes, uint32_t length)
{
    uint32_t number = 0;
    if (length >= PACKET_NUMBER_OFFSET + sizeof number) {
        memcpy(&number, bytes + PACKET_NUMBER_OFFSET, sizeof number);
    }
    return GUINT32_FROM_LE(number);
}
