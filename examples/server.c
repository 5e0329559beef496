/* SPDX-License-Identifier: Apache-2.0 */
/*
 * A small MDM server. It receives requests over a Unix socket, keeps the policies that they set,
 * and answers with the policy that is now in force. It serves one client at a time, until SIGTERM
 * or SIGINT.
 *
 * The server does not trust its clients. It opens their bytes and seals its answers, so neither
 * false bytes nor an answer that repeats odd contents of a request can do harm. It does not limit
 * how much its clients make it keep.
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

#include <mdm/crypto.h>
#include <mdm/guarded.h>
#include <mdm/log.h>
#include <mdm/noti.h>
#include <mdm/util.h>
#include <mdm/util_policy.h>

#include "channel.h"
#include "protocol.h"
#include "show.h"

/* The state of the server between requests. It owns all of it: copies of the requests' contents. */
struct server {
    GHashTable *clients; /* the package names of the registered clients */
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
 * Each of these functions applies a request and fills the body of the reply. A reply points to the
 * memory of the server or of the request. The request is closed only after the reply is sent.
 */

static bool apply_admin(struct server *server, const mdm_admin_info_t *request,
                        mdm_admin_info_t *reply)
{
    *reply = *request; /* the reply borrows pkg and text of the request */
    if (request->type == ADMIN_REGISTER) {
        if (!mdm_is_valid_package_name(request->pkg)) {
            return false;
        }
        g_hash_table_add(server->clients, g_strdup(request->pkg));
        reply->value = g_hash_table_size(server->clients);
        mdm_write_noti(STATUS_CLIENTS, (int32_t)reply->value);
        show_status("server", STATUS_CLIENTS);
    } else if (request->type == IS_CLIENT_REGISTERED) {
        reply->status =
            request->pkg != NULL && g_hash_table_contains(server->clients, request->pkg);
    }
    return true;
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
    reply->data_size = 1; /* makes the policy travel */
    reply->data = &server->policy;
}

/* An empty text is no payload. */
static void *payload_of(const GString *text)
{
    return text->len > 0 ? text->str : NULL;
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
    reply->data = payload_of(server->firewall_rules);
}

/* Makes a new secret of a base64 text of whole blocks. Returns null for any other text. */
static uint8_t *decrypt_secret(const char *text, uint32_t *size)
{
    uint8_t *secret = NULL;
    gsize length = 0;
    uint8_t *ciphertext = g_base64_decode(text, &length);
    if (length >= 16 && length % 16 == 0) {
        mdm_aes_decrypt(ciphertext, (uint32_t)length, EXAMPLE_KEY_IV, &secret, size);
    }
    g_free(ciphertext);
    return secret;
}

/* The reply has the length of the secret, but not the secret. */
static bool apply_vpn_secret(const mdm_vpn_info_t *request, mdm_vpn_info_t *reply)
{
    uint32_t size = 0;
    uint8_t *secret = request->data_size >= 1 ? decrypt_secret(request->data, &size) : NULL;
    if (secret == NULL) {
        return false;
    }
    printf("server  decrypted a secret: %s\n", (const char *)secret); /* because it is a demo */
    reply->type = request->type;
    reply->param = (uint32_t)strlen((const char *)secret);
    explicit_bzero(secret, size);
    g_free(secret);
    return true;
}

static bool apply_vpn(struct server *server, const mdm_vpn_info_t *request, mdm_vpn_info_t *reply)
{
    if (request->type == VPN_SET_SECRET) {
        return apply_vpn_secret(request, reply);
    }
    if (request->data_size >= 1) {
        g_string_assign(server->vpn_profile, request->data);
    }
    reply->type = request->type;
    reply->param = request->param;
    reply->data_size = (int32_t)server->vpn_profile->len;
    reply->data = payload_of(server->vpn_profile);
    return true;
}

/* The reply lists the packages of the request. The status of each is the number of its letters. */
static bool apply_app(const mdm_app_info_t *request, mdm_app_res_info_t *reply)
{
    if (request->type != APP_PACKAGES) {
        return false;
    }
    reply->type = APP_RES_ITEMS;
    reply->pkg = request->pkg;
    GQueue items = G_QUEUE_INIT;
    for (GList *cell = request->data; cell != NULL; cell = cell->next) {
        mdm_app_res_item_t *item = g_new0(mdm_app_res_item_t, 1);
        item->name = cell->data;
        item->value = item->name != NULL ? (uint32_t)strlen(item->name) : 0;
        g_queue_push_tail(&items, item);
    }
    reply->data = items.head;
    reply->data_size = 1;
    return true;
}

/* The policy of the request is in force unchanged: the reply borrows all of its body. The bodies of
 * these categories begin with the same five fields, so the fields of one stand for all. */
static bool apply_as_it_is(const mdm_body_t *request, uint32_t discriminator, mdm_body_t *reply)
{
    *reply = *request;
    return request->res.type == discriminator && request->res.data != NULL;
}

static bool apply_phone_res(const mdm_body_t *request, mdm_body_t *reply)
{
    if (!apply_as_it_is(request, PHONE_RES_EXT, reply)) {
        return false;
    }
    const mdm_phone_res_ext_t *ext = request->phone_res.data;
    int32_t type = 0;
    int32_t limit[MDM_PHONE_RES_LIMIT_VALUES] = {0};
    if (mdm_phone_res_limit_deserialize(ext->detail->str2, &type, limit) != MDM_RESULT_SUCCESS) {
        return false;
    }
    printf("server  limit of type %d: %d %d %d %d %d %d\n", type, limit[0], limit[1], limit[2],
           limit[3], limit[4], limit[5]);
    return true;
}

/* Sending a profile adds its size to `data_size`, which holds the received sum. So set it anew. */
static bool apply_apn(const mdm_body_t *request, mdm_body_t *reply)
{
    const bool is_served = apply_as_it_is(request, APN_PROFILE, reply);
    reply->apn.data_size = 1;
    return is_served;
}

/* The payload of these two categories is not received, so the reply has none. */
static bool apply_unread(const mdm_body_t *request, mdm_body_t *reply)
{
    reply->res.type = request->res.type;
    reply->res.param = (uint32_t)request->res.data_size;
    return true;
}

static bool apply_roaming(const mdm_roaming_info_t *request, mdm_roaming_res_info_t *reply)
{
    reply->type = request->type;
    reply->data_size = request->data_size;
    return true;
}

static bool apply(struct server *server, const mdm_msg_t *request, mdm_msg_t *reply)
{
    const mdm_body_t *asked = &request->body;
    mdm_body_t *in_force = &reply->body;
    reply->type = (uint8_t)(request->type + 1);
    reply->hdr_word1 = request->hdr_word1;
    switch (request->type) {
    case TYPE_ADMIN:
        return apply_admin(server, &asked->admin, &in_force->admin);
    case TYPE_PWD:
        apply_pwd(server, &asked->pwd, &in_force->pwd);
        return true;
    case TYPE_FIREWALL:
        apply_firewall(server, &asked->firewall, &in_force->firewall);
        return true;
    case TYPE_VPN:
        return apply_vpn(server, &asked->vpn, &in_force->vpn);
    case TYPE_APP:
        return apply_app(&asked->app, &in_force->app_res);
    case TYPE_ROAMING:
        return apply_roaming(&asked->roaming, &in_force->roaming_res);
    case TYPE_BROWSER:
    case TYPE_ENTERPRISE:
        return apply_unread(asked, in_force);
    case TYPE_SECURITY:
        return apply_as_it_is(asked, SECURITY_ITEM, in_force);
    case TYPE_WIFI:
        return apply_as_it_is(asked, WIFI_NETWORK, in_force);
    case TYPE_BLUETOOTH:
        return apply_as_it_is(asked, BLUETOOTH_NAMES, in_force);
    case TYPE_EAS:
        return apply_as_it_is(asked, EAS_ACCOUNT, in_force);
    case TYPE_MISC:
        *in_force = *asked;
        return asked->misc.type == MISC_BOOK && asked->misc.data != NULL;
    case TYPE_APN:
        return apply_apn(asked, in_force);
    case TYPE_DATE_TIME:
    case TYPE_REMOTE:
    case TYPE_RES:
        return apply_as_it_is(asked, SET_POLICY, in_force);
    case TYPE_PHONE_RES:
        return apply_phone_res(asked, in_force);
    case TYPE_EMAIL:
        return apply_as_it_is(asked, EMAIL_ACCOUNT, in_force);
    case TYPE_KIOSK:
        return apply_as_it_is(asked, KIOSK_KEY_PAIRS, in_force);
    case TYPE_CONTAINER:
        return apply_as_it_is(asked, CONTAINER_ITEM, in_force);
    case TYPE_LOCATION:
    case TYPE_LOG_MANAGER:
    case TYPE_PLATFORM:
        *in_force = *asked;
        return true;
    default:
        return false;
    }
}

/* Releases the blocks that apply() has allocated for a reply. */
static void release_reply(mdm_msg_t *reply)
{
    if (reply->type == TYPE_APP_RES) {
        g_list_free_full(reply->body.app_res.data, g_free);
    }
}

/* Sends and releases the bytes of a sealed reply. They are null if it could not be sealed. */
static bool send_sealed(int fd, const mdm_msg_t *reply, uint8_t *bytes, uint32_t length)
{
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
    uint32_t length = 0;
    uint8_t *bytes = ipc_seal(&reply, &length, NULL);
    const bool sent = send_sealed(fd, &reply, bytes, length);
    g_free(text);
    return sent;
}

/* Some contents of a request cannot be sent back: an empty name in a list arrives as a null
 * element. */
static bool send_message(int fd, mdm_msg_t *reply)
{
    uint32_t length = 0;
    uint8_t *bytes = ipc_seal(reply, &length, NULL);
    return bytes != NULL ? send_sealed(fd, reply, bytes, length)
                         : send_refusal(fd, "an answer that cannot be sent");
}

/* For some requests the client gets a callback before the answer. */
static bool send_callback(int fd, const mdm_msg_t *request)
{
    char done[] = "done";
    mdm_msg_t callback = {.hdr_word1 = request->hdr_word1};
    if (request->type == TYPE_APP) {
        callback.type = TYPE_APP_CB;
        callback.body.app_cb.type = CALLBACK_DONE;
        callback.body.app_cb.num6 = g_list_length(request->body.app.data);
        callback.body.app_cb.str7 = done;
        callback.body.app_cb.str8 = request->body.app.pkg;
    } else if (request->type == TYPE_MISC) {
        callback.type = TYPE_MISC_CB;
        callback.body.misc_cb.type = CALLBACK_DONE;
        callback.body.misc_cb.flag6 = 1;
        callback.body.misc_cb.num7 = (uint32_t)request->body.misc.type;
        callback.body.misc_cb.str8 = done;
    } else {
        return true;
    }
    return send_message(fd, &callback);
}

/* Answers one packet. Returns false if the client can no longer be answered. */
static bool serve_packet(struct server *server, int fd, const GByteArray *packet)
{
    ipc_fault_t fault;
    MDM_AUTO_CLOSE mdm_msg_t *request = ipc_open(packet->data, packet->len, &fault);
    if (request == NULL) {
        gchar *reason = ipc_fault_describe(&fault);
        printf("server  refused %u bytes: %s\n", packet->len, reason);
        g_free(reason);
        return send_refusal(fd, "not a message");
    }
    show_message("server", "<-", request, packet->len);

    mdm_msg_t reply = {0};
    const bool answered = apply(server, request, &reply)
                              ? send_callback(fd, request) && send_message(fd, &reply)
                              : send_refusal(fd, "nothing that this server serves");
    release_reply(&reply);
    return answered;
}

static volatile sig_atomic_t asked_to_stop;

static void stop(int signal_number)
{
    (void)signal_number;
    asked_to_stop = 1;
}

/* Waits until the descriptor is readable. Returns false if the server was asked to stop. */
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

/* Unblocks SIGTERM and SIGINT only while the server waits, so that it misses none. */
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
        mdm_log_set_path(argv[2]); /* keeps the pointer; argv lives as long as the program */
    }
    const sigset_t signals_while_waiting = handle_stop_signals();
    const int listener = channel_listen(argv[1]);
    if (listener < 0) {
        return EXIT_FAILURE;
    }

    struct server server;
    server_init(&server);
    show_status("server", STATUS_CLIENTS);
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
