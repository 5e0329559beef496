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

static bool apply_admin_query(const struct server *server, const mdm_msg_t *request,
                              mdm_msg_t *reply)
{
    const char *pkg = mdm_admin_query(request)->pkg;
    return mdm_admin_set_query(reply, pkg,
                               pkg != NULL && g_hash_table_contains(server->clients, pkg));
}

static bool apply_registration(struct server *server, const mdm_msg_t *request, mdm_msg_t *reply)
{
    const mdm_admin_info_t *asked = mdm_admin_general(request);
    if (asked->type != ADMIN_REGISTER || !mdm_is_valid_package_name(asked->pkg)) {
        return false;
    }
    g_hash_table_add(server->clients, g_strdup(asked->pkg));
    const uint32_t clients = g_hash_table_size(server->clients);
    mdm_write_noti(STATUS_CLIENTS, (int32_t)clients);
    show_status("server", STATUS_CLIENTS);
    return mdm_admin_set_general(reply, ADMIN_REGISTER, clients, asked->pkg, asked->text);
}

static bool apply_pwd(struct server *server, const mdm_msg_t *request, mdm_msg_t *reply)
{
    const mdm_pwd_policy_t *policy = mdm_pwd_policy(request);
    if (policy != NULL) {
        g_free(server->policy.str9);
        g_free(server->policy.str10);
        server->policy = *policy;
        server->policy.str9 = g_strdup(policy->str9);
        server->policy.str10 = g_strdup(policy->str10);
    }
    return mdm_pwd_set_policy(reply, &server->policy);
}

static bool apply_firewall(struct server *server, const mdm_msg_t *request, mdm_msg_t *reply)
{
    const char *rules = mdm_firewall_data(request, NULL);
    if (rules != NULL) {
        g_string_append(server->firewall_rules, rules);
    }
    return mdm_firewall_set_data(reply, request->body.firewall.type, server->firewall_rules->str,
                                 server->firewall_rules->len);
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
static bool apply_vpn_secret(const mdm_msg_t *request, mdm_msg_t *reply)
{
    const char *text = mdm_vpn_data(request, NULL);
    uint32_t size = 0;
    uint8_t *secret = text != NULL ? decrypt_secret(text, &size) : NULL;
    if (secret == NULL) {
        return false;
    }
    printf("server  decrypted a secret: %s\n", (const char *)secret); /* because it is a demo */
    mdm_vpn_set_head(reply, VPN_SET_SECRET);
    reply->body.vpn.param = (uint32_t)strlen((const char *)secret);
    explicit_bzero(secret, size);
    g_free(secret);
    return true;
}

static bool apply_vpn(struct server *server, const mdm_msg_t *request, mdm_msg_t *reply)
{
    if (request->body.vpn.type == VPN_SET_SECRET) {
        return apply_vpn_secret(request, reply);
    }
    const char *profile = mdm_vpn_data(request, NULL);
    if (profile != NULL) {
        g_string_assign(server->vpn_profile, profile);
    }
    return mdm_vpn_set_data(reply, request->body.vpn.type, server->vpn_profile->str,
                            server->vpn_profile->len);
}

/* The reply lists the packages of the request. The status of each is the number of its letters. */
static bool apply_app(const mdm_msg_t *request, mdm_msg_t *reply)
{
    GQueue items = G_QUEUE_INIT;
    for (const GList *cell = mdm_app_packages(request); cell != NULL; cell = cell->next) {
        mdm_app_res_item_t *item = g_new0(mdm_app_res_item_t, 1);
        item->name = cell->data;
        item->value = item->name != NULL ? (uint32_t)strlen(item->name) : 0;
        g_queue_push_tail(&items, item);
    }
    const bool is_filled = mdm_app_res_set_items(reply, MDM_APP_RES_ITEMS_140, items.head);
    reply->body.app_res.pkg = request->body.app.pkg;
    return is_filled;
}

static bool apply_phone_res(const mdm_msg_t *request, mdm_msg_t *reply)
{
    const mdm_phone_res_ext_t *ext = mdm_phone_res_ext(request);
    int32_t type = 0;
    int32_t limit[MDM_PHONE_RES_LIMIT_VALUES] = {0};
    if (ext == NULL ||
        mdm_phone_res_limit_deserialize(ext->detail->str2, &type, limit) != MDM_RESULT_SUCCESS) {
        return false;
    }
    printf("server  limit of type %d: %d %d %d %d %d %d\n", type, limit[0], limit[1], limit[2],
           limit[3], limit[4], limit[5]);
    return mdm_phone_res_set_ext(reply, ext);
}

/* The payload of these two categories is not received. The reply has its size alone. */
static bool apply_browser(const mdm_msg_t *request, mdm_msg_t *reply)
{
    mdm_browser_set_head(reply, request->body.browser.type);
    reply->body.browser.param = (uint32_t)request->body.browser.data_size;
    return true;
}

static bool apply_enterprise(const mdm_msg_t *request, mdm_msg_t *reply)
{
    mdm_enterprise_set_head(reply, request->body.enterprise.type);
    reply->body.enterprise.param = (uint32_t)request->body.enterprise.data_size;
    return true;
}

/* The other policies are in force unchanged. The reply borrows the payload of the request. */

static bool apply_date_time(const mdm_msg_t *request, mdm_msg_t *reply)
{
    size_t size = 0;
    const char *zone = mdm_date_time_data(request, &size);
    return mdm_date_time_set_data(reply, request->body.date_time.type, zone, size);
}

static bool apply_remote(const mdm_msg_t *request, mdm_msg_t *reply)
{
    size_t size = 0;
    const char *command = mdm_remote_data(request, &size);
    return mdm_remote_set_data(reply, request->body.remote.type, command, size);
}

static bool apply_res(const mdm_msg_t *request, mdm_msg_t *reply)
{
    size_t size = 0;
    const char *setting = mdm_res_data(request, &size);
    return mdm_res_set_data(reply, request->body.res.type, setting, size);
}

static bool apply_platform(const mdm_msg_t *request, mdm_msg_t *reply)
{
    const mdm_platform_info_t *asked = mdm_platform_flag(request);
    return mdm_platform_set_flag(reply, asked->text, asked->number, asked->flag);
}

/* Only these forms are served. A missing record is refused. */
static bool apply(struct server *server, const mdm_msg_t *request, mdm_msg_t *reply)
{
    switch (mdm_form_of(request)) {
    case MDM_FORM_ADMIN_QUERY:
        return apply_admin_query(server, request, reply);
    case MDM_FORM_ADMIN_GENERAL:
        return apply_registration(server, request, reply);
    case MDM_FORM_PWD_POLICY:
        return apply_pwd(server, request, reply);
    case MDM_FORM_SECURITY_ITEM:
        return mdm_security_set_item(reply, request->body.security.type,
                                     mdm_security_item(request));
    case MDM_FORM_WIFI_NETWORK:
        return mdm_wifi_set_network(reply, mdm_wifi_network(request));
    case MDM_FORM_BLUETOOTH_NAMES:
        return mdm_bluetooth_set_names(reply, request->body.bluetooth.type,
                                       mdm_bluetooth_names(request));
    case MDM_FORM_EAS_ACCOUNT:
        return mdm_eas_set_account(reply, mdm_eas_account(request));
    case MDM_FORM_APP_PACKAGES:
        return apply_app(request, reply);
    case MDM_FORM_ROAMING_RECORD:
        return mdm_roaming_res_set_head(reply, request->body.roaming.type);
    case MDM_FORM_MISC_BOOK:
        return mdm_misc_set_book(reply, request->body.misc.type, mdm_misc_book(request));
    case MDM_FORM_APN_PROFILE:
        return mdm_apn_set_profile(reply, request->body.apn.type, mdm_apn_profile(request));
    case MDM_FORM_BROWSER_DATA:
        return apply_browser(request, reply);
    case MDM_FORM_DATE_TIME_DATA:
        return apply_date_time(request, reply);
    case MDM_FORM_REMOTE_DATA:
        return apply_remote(request, reply);
    case MDM_FORM_VPN_DATA:
        return apply_vpn(server, request, reply);
    case MDM_FORM_FIREWALL_DATA:
        return apply_firewall(server, request, reply);
    case MDM_FORM_RES_DATA:
        return apply_res(request, reply);
    case MDM_FORM_PHONE_RES_EXT:
        return apply_phone_res(request, reply);
    case MDM_FORM_ENTERPRISE_DATA:
        return apply_enterprise(request, reply);
    case MDM_FORM_EMAIL_ACCOUNT:
        return mdm_email_set_account(reply, mdm_email_account(request));
    case MDM_FORM_KIOSK_KEY_PAIRS:
        return mdm_kiosk_set_key_pairs(reply, mdm_kiosk_key_pairs(request));
    case MDM_FORM_CONTAINER_ITEM:
        return mdm_container_set_item(reply, mdm_container_item(request));
    case MDM_FORM_LOCATION_HEAD:
        return mdm_location_set_head(reply, mdm_location_head(request)->type);
    case MDM_FORM_LOG_MANAGER_TEXT:
        return mdm_log_manager_set_text(reply, mdm_log_manager_text(request));
    case MDM_FORM_PLATFORM_FLAG:
        return apply_platform(request, reply);
    default:
        return false;
    }
}

/* Releases the blocks that apply() has allocated for a reply. */
static void release_reply(mdm_msg_t *reply)
{
    if (reply->type == MDM_TYPE_APP_RES) {
        g_list_free_full(reply->body.app_res.data, g_free);
    }
}

/* Sends and releases the bytes of a sealed reply. They are null if it could not be sealed. */
static bool send_sealed(int fd, uint8_t *bytes, uint32_t length)
{
    if (bytes == NULL) {
        return false;
    }
    show_message("server", "->", bytes, length);
    const bool sent = channel_send(fd, bytes, length);
    g_free(bytes);
    return sent;
}

static bool send_refusal(int fd, const char *reason)
{
    mdm_msg_t reply = {.type = MDM_TYPE_ADMIN_2, .hdr_word2 = (uint32_t)MDM_RESULT_FAILED};
    if (!mdm_admin_set_general(&reply, ADMIN_REFUSED, 0, NULL, reason)) {
        return false;
    }
    uint32_t length = 0;
    uint8_t *bytes = ipc_seal(&reply, &length, NULL);
    return send_sealed(fd, bytes, length);
}

/* Some contents of a request cannot be sent back: an empty name in a list arrives as a null
 * element. */
static bool send_message(int fd, mdm_msg_t *reply)
{
    uint32_t length = 0;
    uint8_t *bytes = ipc_seal(reply, &length, NULL);
    return bytes != NULL ? send_sealed(fd, bytes, length)
                         : send_refusal(fd, "an answer that cannot be sent");
}

/* For some requests the client gets a callback before the answer. */
static bool send_callback(int fd, const mdm_msg_t *request)
{
    const mdm_body_t *body = &request->body;
    mdm_msg_t callback = {.hdr_word1 = request->hdr_word1};
    switch (mdm_form_of(request)) {
    case MDM_FORM_APP_PACKAGES:
        return mdm_app_cb_set_detail(&callback, MDM_APP_CB_DETAIL_0,
                                     (uint32_t)mdm_list_length(mdm_app_packages(request)), "done",
                                     body->app.pkg) &&
               send_message(fd, &callback);
    case MDM_FORM_MISC_BOOK:
        return mdm_misc_cb_set_detail(&callback, MDM_MISC_CB_DETAIL_0, 1, (uint32_t)body->misc.type,
                                      "done") &&
               send_message(fd, &callback);
    default:
        return true;
    }
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
    show_message("server", "<-", packet->data, packet->len);

    mdm_msg_t reply = {.type = (uint8_t)(request->type + 1), .hdr_word1 = request->hdr_word1};
    const bool is_request = request->type % 2 == 1;
    const bool answered = is_request && apply(server, request, &reply)
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
