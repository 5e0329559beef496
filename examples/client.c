/* SPDX-License-Identifier: Apache-2.0 */
/*
 * A small management application. It registers, reads the status that the server then keeps, and
 * asks whether it is registered. Then it sends one request of every category, and bytes that are no
 * message.
 *
 * usage: mdm-client SOCKET [FILE]
 *
 * FILE gets the bytes of the last request.
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <mdm/ipc.h>

#include "channel.h"
#include "protocol.h"
#include "requests.h"
#include "show.h"

static bool send_malformed(int fd, const char *what, const uint8_t *bytes, uint32_t length)
{
    printf("client  -> %u malformed bytes on purpose: %s\n", length, what);
    return channel_send(fd, bytes, length) && receive_reply(fd);
}

/* Sends a message whose last word, a count or a length, promises more bytes than there are. */
static bool send_lying_count(int fd, mdm_msg_t *request, const char *what)
{
    uint32_t length = 0;
    uint8_t *bytes = ipc_serialize(request, &length);
    if (bytes == NULL) {
        return false;
    }
    memset(bytes + length - sizeof(uint32_t), 0x7F, sizeof(uint32_t));
    const bool going_on = send_malformed(fd, what, bytes, length);
    g_free(bytes);
    return going_on;
}

/* Sends bytes that look like a message. The server must refuse them and go on. */
static bool send_malformed_bytes(int fd)
{
    mdm_msg_t request = {0};
    mdm_msg_t names = {0};
    if (!mdm_admin_set_query(&request, NULL, 0) ||
        !mdm_app_set_packages(&names, MDM_APP_PACKAGES_4, NULL)) {
        return false;
    }
    uint32_t length = 0;
    uint8_t *bytes = ipc_serialize(&request, &length);
    if (bytes == NULL) {
        return false;
    }
    uint8_t *lying = g_memdup2(bytes, length);
    lying[0]++;
    uint8_t *untyped = g_memdup2(bytes, length);
    untyped[4] = 0xFF;
    const bool going_on = send_malformed(fd, "a single byte", bytes, 1) &&
                          send_malformed(fd, "cut short", bytes, length - 1) &&
                          send_malformed(fd, "a length field that lies", lying, length) &&
                          send_malformed(fd, "message type 255", untyped, length) &&
                          send_lying_count(fd, &names, "a count of names that lies");
    g_free(untyped);
    g_free(lying);
    g_free(bytes);
    return going_on;
}

static bool talk(int fd)
{
    if (!ask_to_register(fd, own_name)) {
        return false;
    }
    show_status("client", STATUS_CLIENTS);
    return ask_to_register(fd, "com.example.no_name") && /* refused because of its underscore */
           ask_whether_registered(fd, own_name) &&
           ask_whether_registered(fd, "com.example.stranger") && ask_every_category(fd) &&
           send_malformed_bytes(fd) && ask_whether_registered(fd, own_name);
}

int main(int argc, char **argv)
{
    if (argc < 2 || argc > 3) {
        fprintf(stderr, "usage: %s SOCKET [FILE]\n", argv[0]);
        return EXIT_FAILURE;
    }
    request_file = argv[2]; /* null if there is none */
    setvbuf(stdout, NULL, _IOLBF, 0);
    const int fd = channel_connect(argv[1]);
    if (fd < 0) {
        return EXIT_FAILURE;
    }
    show_head("client");
    const bool done = talk(fd);
    close(fd);
    return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
