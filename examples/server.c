/* SPDX-License-Identifier: Apache-2.0 */
/*
 * An MDM server in small: receives requests over a Unix socket, keeps what they set, and answers
 * with what is now in force, one client at a time. Runs until SIGTERM or SIGINT.
 *
 * It trusts its clients as far as ipc_deserialize() does: what is no message is refused, but a
 * message whose counts lie is not safe to receive.
 *
 * usage: mdm-server SOCKET [LOG_FILE]
 */
#include <poll.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

#include <mdm/ipc.h>
#include <mdm/log.h>

#include "channel.h"
#include "protocol.h"
#include "show.h"

/* What the server keeps. Everything here is its own: copies of what requests carried. */
struct server {
    GHashTable *clients; /* the package names that have registered */
    mdm_pwd_policy_t policy;
    GString *firewall_rules;
    GString *vpn_profile;
};

static void server_init(struct server *server)
{
    memset(server, 0, sizeof *server);
    server->clients = g_hash_table_new_full(g_str_hash, g_str_equal, g_free, NULL);
    server->firewall_rules = g_string_new(NULL);
    server->vpn_profile = g_string_new(NULL);
}

static void server_clear(struct server *server)
{
    g_hash_table_destroy(server->clients);
    g_free(server->policy.str9);
    g_free(server->policy.str10);
    g_string_free(server->firewall_rules, TRUE);
    g_string_free(server->vpn_profile, TRUE);
}

/*
 * Each of these applies a request and fills the reply's body. A reply points at the server's own
 * memory; it is sent, and never passed to ipc_free().
 */

static void apply_admin(struct server *server, const mdm_admin_info_t *request,
                        mdm_admin_info_t *reply)
{
    *reply = *request; /* pkg and text stay the request's; the reply only borrows them */
    if (request->type == ADMIN_REGISTER && request->pkg != NULL) {
        g_hash_table_add(server->clients, g_strdup(request->pkg));
        reply->value = g_hash_table_size(server->clients);
    } else if (request->type == IS_CLIENT_REGISTERED) {
        reply->status =
            request->pkg != NULL && g_hash_table_contains(server->clients, request->pkg);
    }
}

static void apply_pwd(struct server *server, const mdm_pwd_info_t *request, mdm_pwd_info_t *reply)
{
    if (request->type == PWD_POLICY && request->data_size >= 1) {
        const mdm_pwd_policy_t *policy = request->data;
        g_free(server->policy.str9);
        g_free(server->policy.str10);
        server->policy = *policy;
        server->policy.str9 = g_strdup(policy->str9);
        server->policy.str10 = g_strdup(policy->str10);
    }
    reply->type = PWD_POLICY;
    reply->data_size = 1; /* for a policy record: it travels */
    reply->data = &server->policy;
}

static void apply_firewall(struct server *server, const mdm_firewall_info_t *request,
                           mdm_firewall_info_t *reply)
{
    if (request->data_size >= 1) {
        g_string_append(server->firewall_rules, request->data);
    }
    reply->type = request->type;
    reply->param = request->param;
    reply->data_size = (int32_t)server->firewall_rules->len;
    reply->data = server->firewall_rules->str;
}

static void apply_vpn(struct server *server, const mdm_vpn_info_t *request, mdm_vpn_info_t *reply)
{
    if (request->data_size >= 1) {
        g_string_assign(server->vpn_profile, request->data);
    }
    reply->type = request->type;
    reply->param = request->param;
    reply->data_size = (int32_t)server->vpn_profile->len;
    reply->data = server->vpn_profile->str;
}

static bool apply(struct server *server, const mdm_msg_t *request, mdm_msg_t *reply)
{
    reply->type = (uint8_t)(request->type + 1);
    reply->hdr_word1 = request->hdr_word1;
    switch (request->type) {
    case TYPE_ADMIN:
        apply_admin(server, &request->body.admin, &reply->body.admin);
        return true;
    case TYPE_PWD:
        apply_pwd(server, &request->body.pwd, &reply->body.pwd);
        return true;
    case TYPE_FIREWALL:
        apply_firewall(server, &request->body.firewall, &reply->body.firewall);
        return true;
    case TYPE_VPN:
        apply_vpn(server, &request->body.vpn, &reply->body.vpn);
        return true;
    default:
        return false;
    }
}

static bool send_reply(int fd, mdm_msg_t *reply)
{
    uint32_t length = 0;
    uint8_t *bytes = ipc_serialize(reply, &length);
    if (bytes == NULL) {
        return false;
    }
    show_message("server", "->", reply, length);
    const bool sent = channel_send(fd, bytes, length);
    g_free(bytes);
    return sent;
}

static bool send_refusal(int fd, const char *reason)
{
    char *text = g_strdup(reason);
    mdm_msg_t reply = {.type = TYPE_ADMIN + 1, .hdr_word2 = (uint32_t)MDM_RESULT_FAILED};
    reply.body.admin.type = ADMIN_REFUSED;
    reply.body.admin.text = text;
    const bool sent = send_reply(fd, &reply);
    g_free(text);
    return sent;
}

/* Answers one packet. False when the client can no longer be answered. */
static bool serve_packet(struct server *server, int fd, const GByteArray *packet)
{
    mdm_msg_t request = {0}; /* zeroed: fields that a category does not assign stay as they are */
    if (packet->len < SMALLEST_MESSAGE ||
        ipc_deserialize(&request, packet->data, packet->len) != MDM_RESULT_SUCCESS) {
        printf("server  refused a packet of %u bytes: not a message\n", packet->len);
        return send_refusal(fd, "not a message");
    }
    show_message("server", "<-", &request, packet->len);

    mdm_msg_t reply = {0};
    const bool answered = apply(server, &request, &reply)
                              ? send_reply(fd, &reply)
                              : send_refusal(fd, "nothing that this server serves");
    ipc_free(&request); /* once, and only after the reply that borrows from it is sent */
    return answered;
}

static volatile sig_atomic_t asked_to_stop;

static void stop(int signal_number)
{
    (void)signal_number;
    asked_to_stop = 1;
}

/* Waits until the descriptor is readable. False when the server was asked to stop instead. */
static bool wait_for(int fd, const sigset_t *signals_while_waiting)
{
    struct pollfd readable = {.fd = fd, .events = POLLIN};
    while (!asked_to_stop) {
        if (ppoll(&readable, 1, NULL, signals_while_waiting) > 0) {
            return true;
        }
    }
    return false;
}

static void serve_client(struct server *server, int fd, const sigset_t *signals_while_waiting)
{
    bool going_on = true;
    while (going_on && wait_for(fd, signals_while_waiting)) {
        GByteArray *packet = channel_receive(fd);
        if (packet == NULL) {
            return;
        }
        going_on = serve_packet(server, fd, packet);
        g_byte_array_unref(packet);
    }
}

/* Lets SIGTERM and SIGINT in only while the server waits, so that none is missed. */
static sigset_t handle_stop_signals(void)
{
    const struct sigaction action = {.sa_handler = stop};
    sigset_t stop_signals;
    sigset_t signals_before;
    sigemptyset(&stop_signals);
    sigaddset(&stop_signals, SIGTERM);
    sigaddset(&stop_signals, SIGINT);
    pthread_sigmask(SIG_BLOCK, &stop_signals, &signals_before);
    sigdelset(&signals_before, SIGTERM);
    sigdelset(&signals_before, SIGINT);
    sigaction(SIGTERM, &action, NULL);
    sigaction(SIGINT, &action, NULL);
    return signals_before;
}

int main(int argc, char **argv)
{
    if (argc < 2 || argc > 3) {
        fprintf(stderr, "usage: %s SOCKET [LOG_FILE]\n", argv[0]);
        return EXIT_FAILURE;
    }
    setvbuf(stdout, NULL, _IOLBF, 0);
    if (argc == 3) {
        mdm_log_set_path(argv[2]); /* kept, not copied: argv lives as long as the program */
    }
    const sigset_t signals_while_waiting = handle_stop_signals();
    const int listener = channel_listen(argv[1]);
    if (listener < 0) {
        return EXIT_FAILURE;
    }

    struct server server;
    server_init(&server);
    show_head("server");
    while (wait_for(listener, &signals_while_waiting)) {
        const int fd = accept4(listener, NULL, NULL, SOCK_CLOEXEC);
        if (fd < 0) {
            perror("accept");
            continue;
        }
        serve_client(&server, fd, &signals_while_waiting);
        close(fd);
    }
    server_clear(&server);
    close(listener);
    unlink(argv[1]);
    return EXIT_SUCCESS;
}
