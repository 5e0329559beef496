/* SPDX-License-Identifier: Apache-2.0 */
/*
 * A channel that carries messages: a Unix socket that keeps packets apart (SOCK_SEQPACKET), so
 * that one packet is one message and the kernel tells its exact length.
 */
#ifndef CHANNEL_H
#define CHANNEL_H

#include <stdbool.h>
#include <stdint.h>

#include <glib.h>

/* Each returns a descriptor, or -1 after printing the reason. */
int channel_listen(const char *path);
int channel_connect(const char *path);

/* Sends bytes as one packet. False, after printing the reason, if the peer cannot take them. */
bool channel_send(int fd, const uint8_t *bytes, uint32_t length);

/* Receives one packet into a new buffer, which the caller releases with g_byte_array_unref().
 * Null when the peer has closed the channel or the packet could not be read. */
GByteArray *channel_receive(int fd);

#endif
