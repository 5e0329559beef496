/* SPDX-License-Identifier: Apache-2.0 */
/* Packets of a Unix socket that keeps them apart (SOCK_SEQPACKET). No call here waits. */
#ifndef PACKET_H
#define PACKET_H

#include <stdbool.h>
#include <stdint.h>
#include <sys/un.h>

typedef enum packet_result {
    PACKET_DONE,     /* A whole packet was sent or received. */
    PACKET_LATER,    /* The socket is not ready. */
    PACKET_TOO_LONG, /* The packet does not fit. A received one is lost but for its beginning. */
    PACKET_CLOSED,   /* The peer is gone, or the socket is broken. */
} packet_result_t;

/* The offset of hdr_word1, the number of a request, in a message. */
enum { PACKET_NUMBER_OFFSET = 8 };

/* Fills the address of a socket. Returns false if the path is too long for one. */
bool packet_address(struct sockaddr_un *address, const char *path);

packet_result_t packet_send(int fd, const uint8_t *bytes, uint32_t length);

/*
 * Receives a packet into a buffer. `length` becomes the packet's whole length, also if the buffer
 * holds only its beginning. An empty packet counts as the end: nothing tells them apart.
 * Descriptors that the peer sends along are discarded.
 */
packet_result_t packet_receive(int fd, uint8_t *buffer, uint32_t size, uint32_t *length);

/* The number of the request in a packet that need not be a message. 0 if it is too short. */
uint32_t packet_number(const uint8_t *bytes, uint32_t length);

#endif
