/* SPDX-License-Identifier: Apache-2.0 */
/*
 * A channel that carries messages. It is a Unix socket that keeps packets apart (SOCK_SEQPACKET):
 * one packet is one message, and the kernel tells its exact length.
 */
#ifndef CHANNEL_H
#define CHANNEL_H

#include <stdbool.h>
#include <stdint.h>

#include <glib.h>

/* Both return a descriptor, or print the reason and return -1. */
int channel_listen(const char *path);
int channel_connect(const char *path);

/* Sends bytes as one packet. If the peer cannot take them, prints the reason and returns false. */
bool channel_send(int fd, const uint8_t *bytes, uint32_t length);

/* Receives one packet into a new buffer, which the caller releases with g_byte_array_unref().
 * Returns null if the peer has closed the channel or the packet could not be read. */
GByteArray *channel_receive(int fd);

#endif
