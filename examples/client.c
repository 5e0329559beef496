/* SPDX-License-Identifier: Apache-2.0 */
/*
 * A management application in small: registers, asks whether it is registered, sets a password
 * policy, firewall rules and a vpn profile, and sends bytes that are no message.
 *
 * usage: mdm-client SOCKET
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <mdm/ipc.h>

#include "channel.h"
#include "protocol.h"
#include "show.h"

static char own_name[] = "com.example.agent";

static uint32_t next_number = 1;

/* A request with its header filled; the body is the caller's. */
static mdm_msg_t new_request(uint8_t type)
{
    mdm_msg_t request = {.type = type, .hdr_word1 = next_number++, .hdr_text = own_name};
    return request;
}

/* Receives and shows the server's answer. */
static bool receive_reply(int fd)
{
    GByteArray *packet = channel_receive(fd);
    if (packet == NULL) {
        fprintf(stderr, "the server is gone\n");
        return false;
    }
    mdm_msg_t reply = {0};
    const int32_t result = ipc_deserialize(&reply, packet->data, packet->len);
    if (result == MDM_RESULT_SUCCESS) {
        show_message("client", "<-", &reply, packet->len);
        ipc_free(&reply);
    }
    g_byte_array_unref(packet);
    return result == MDM_RESULT_SUCCESS;
}

/* Sends a request and shows what comes back. The request stays the caller's: what it points at
 * was never given to the library, so ipc_free() is not for it. */
static bool ask(int fd, mdm_msg_t *request)
{
    uint32_t length = 0;
    uint8_t *bytes = ipc_serialize(request, &length);
    if (bytes == NULL) {
        fprintf(stderr, "message type %u cannot be sent\n", request->type);
        return false;
    }
    show_message("client", "->", request, length);
    const bool sent = channel_send(fd, bytes, length);
    g_free(bytes);
    return sent && receive_reply(fd);
}

static bool ask_admin(int fd, uint32_t discriminator, char *pkg, char *text)
{
    mdm_msg_t request = new_request(TYPE_ADMIN);
    request.body.admin.type = discriminator;
    request.body.admin.pkg = pkg;
    request.body.admin.text = text;
    return ask(fd, &request);
}

static bool set_password_policy(int fd)
{
    char forbidden[] = "password";
    char pattern[] = "[a-z]{8,}";
    mdm_pwd_policy_t policy = {8, 2, 1, 1, 30, 5, 10, 0, 1, forbidden, pattern};
    mdm_msg_t request = new_request(TYPE_PWD);
    request.body.pwd.type = PWD_POLICY;
    request.body.pwd.data_size = 1; /* 1 or more sends the record; its length is its own */
    request.body.pwd.data = &policy;
    return ask(fd, &request);
}

static bool add_firewall_rules(int fd)
{
    char rules[] = "allow tcp 443;deny udp 53;";
    mdm_msg_t request = new_request(TYPE_FIREWALL);
    request.body.firewall.type = FIREWALL_ADD_RULES;
    request.body.firewall.param = 2;
    request.body.firewall.data_size = (int32_t)strlen(rules);
    request.body.firewall.data = rules;
    return ask(fd, &request);
}

static bool set_vpn_profile(int fd)
{
    char profile[] = "office:ikev2:vpn.example.com";
    mdm_msg_t request = new_request(TYPE_VPN);
    request.body.vpn.type = VPN_SET_PROFILE;
    request.body.vpn.data_size = (int32_t)strlen(profile);
    request.body.vpn.data = profile;
    return ask(fd, &request);
}

static bool send_malformed(int fd, const char *what, const uint8_t *bytes, uint32_t length)
{
    printf("client  -> %u malformed bytes on purpose: %s\n", length, what);
    return channel_send(fd, bytes, length) && receive_reply(fd);
}

/* Bytes that look like a message and are none. The server must refuse each and go on. */
static bool send_malformed_bytes(int fd)
{
    mdm_msg_t request = new_request(TYPE_ADMIN);
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
                          send_malformed(fd, "message type 255", untyped, length);
    g_free(untyped);
    g_free(lying);
    g_free(bytes);
    return going_on;
}

static bool talk(int fd)
{
    char stranger[] = "com.example.stranger";
    char label[] = "Example agent";
    return ask_admin(fd, ADMIN_REGISTER, own_name, label) &&
           ask_admin(fd, IS_CLIENT_REGISTERED, own_name, NULL) &&
           ask_admin(fd, IS_CLIENT_REGISTERED, stranger, NULL) && set_password_policy(fd) &&
           add_firewall_rules(fd) && set_vpn_profile(fd) && send_malformed_bytes(fd) &&
           ask_admin(fd, IS_CLIENT_REGISTERED, own_name, NULL);
}

int main(int argc, char **argv)
{
    if (argc != 2) {
        fprintf(stderr, "usage: %s SOCKET\n", argv[0]);
        return EXIT_FAILURE;
    }
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
