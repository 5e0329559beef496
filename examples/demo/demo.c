/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Tells what a server and its clients say to each other: what is asked, what is answered, and which
 * lies are refused.
 *
 * usage: mdm-demo [--verbose] [--after-restart] SOCKET
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <mdm/log.h>
#include <mdm/noti.h>

#include "client/mdm_client.h"
#include "common/protocol.h"
#include "common/show.h"
#include "common/text.h"
#include "requests.h"

enum { TIMEOUT = 5000 };

#define OWN_PACKAGE "com.example.agent"

struct demo {
    mdm_client_t *client;
    bool is_verbose;
    bool has_failed;
    GString *in_force; /* names of categories */
};

/* One line of the story: what is asked, and what comes of it. */
static void tell(const char *asked, const char *answer)
{
    printf("%-42s  %s\n", asked, answer);
}

static void fail(struct demo *demo, const char *asked, const char *reason)
{
    demo->has_failed = true;
    tell(asked, reason);
}

/* Tells of a request that the server must refuse. */
static void tell_refusal(struct demo *demo, const char *asked, mdm_msg_t *answer, GError *error)
{
    if (g_error_matches(error, MDM_CLIENT_ERROR, MDM_CLIENT_ERROR_REFUSED)) {
        char *text = g_strdup_printf("refused: %s", error->message);
        tell(asked, text);
        g_free(text);
    } else {
        fail(demo, asked, error != NULL ? error->message : "was not refused");
    }
    g_clear_error(&error);
    ipc_close(answer);
}

/* Sends a request that the server must answer. Null if it does not. */
static mdm_msg_t *call(struct demo *demo, const char *asked, mdm_msg_t *request)
{
    GError *error = NULL;
    mdm_msg_t *answer = mdm_client_call(demo->client, request, TIMEOUT, &error);
    if (answer == NULL) {
        fail(demo, asked, error->message);
        g_error_free(error);
    }
    return answer;
}

static void tell_registration(struct demo *demo, const char *asked, const char *package)
{
    mdm_msg_t request = {0};
    if (!mdm_admin_set_general(&request, ADMIN_REGISTER, 0, package, "Example agent")) {
        return;
    }
    MDM_AUTO_CLOSE mdm_msg_t *answer = call(demo, asked, &request);
    const mdm_admin_info_t *admin = answer != NULL ? mdm_admin_general(answer) : NULL;
    if (admin == NULL) {
        demo->has_failed = true;
        return;
    }
    char *text = g_strdup_printf("done, registered clients: %u", admin->value);
    tell(asked, text);
    g_free(text);
}

static void tell_refused_registration(struct demo *demo, const char *asked, const char *package)
{
    mdm_msg_t request = {0};
    if (mdm_admin_set_general(&request, ADMIN_REGISTER, 0, package, NULL)) {
        GError *error = NULL;
        mdm_msg_t *answer = mdm_client_call(demo->client, &request, TIMEOUT, &error);
        tell_refusal(demo, asked, answer, error);
    }
}

static void tell_query(struct demo *demo, const char *asked, const char *package)
{
    mdm_msg_t request = {0};
    mdm_admin_set_query(&request, package, 0);
    MDM_AUTO_CLOSE mdm_msg_t *answer = call(demo, asked, &request);
    const mdm_admin_info_t *admin = answer != NULL ? mdm_admin_query(answer) : NULL;
    if (admin == NULL) {
        demo->has_failed = true;
        return;
    }
    tell(asked, admin->status == 1 ? "yes" : "no");
}

/* Only the rules of the demo keep a category from this user. */
static bool set_policy(mdm_msg_t *request, void *user_data)
{
    struct demo *demo = user_data;
    const char *category = mdm_category_name(mdm_category_of(request->type));
    GError *error = NULL;
    mdm_msg_t *answer = mdm_client_call(demo->client, request, TIMEOUT, &error);
    if (answer != NULL) {
        g_string_append_printf(demo->in_force, " %s", category);
        ipc_close(answer);
    } else {
        char *asked = g_strdup_printf("sets a policy of %s", category);
        tell_refusal(demo, asked, answer, error);
        g_free(asked);
    }
    return true;
}

/* A list of names, broken into lines. */
static void tell_names(const char *asked, const char *names)
{
    enum { WIDTH = 56 };
    while (strlen(names) > WIDTH) {
        const char *end = names + WIDTH;
        while (*end != ' ') {
            --end;
        }
        char *line = g_strndup(names, (gsize)(end - names));
        tell(asked, line);
        g_free(line);
        asked = "";
        names = end + 1;
    }
    tell(asked, names);
}

static void tell_policies(struct demo *demo)
{
    g_string_assign(demo->in_force, "in force:");
    requests_visit(set_policy, demo);
    tell_names("sets a policy of each other category", demo->in_force->str);
}

static void tell_network(struct demo *demo, const char *asked)
{
    mdm_msg_t request = {.hdr_byte = PROTOCOL_ASK};
    mdm_wifi_set_head(&request, MDM_WIFI_NETWORK);
    MDM_AUTO_CLOSE mdm_msg_t *answer = call(demo, asked, &request);
    const mdm_wifi_network_t *network = answer != NULL ? mdm_wifi_network(answer) : NULL;
    if (network == NULL) {
        fail(demo, asked, "there is none");
        return;
    }
    char *name = text_escaped(network->ssid);
    tell(asked, name);
    g_free(name);
}

/* Without a directory for status files there is no status. */
static void tell_status(void)
{
    int32_t status = 0;
    const bool is_there = mdm_read_noti(PROTOCOL_STATUS_CLIENTS, &status) == MDM_RESULT_SUCCESS;
    char *text = is_there ? g_strdup_printf("%d", status) : g_strdup("there is none");
    tell("reads the status of registered clients", text);
    g_free(text);
}

static void tell_callback(const mdm_msg_t *callback, void *user_data)
{
    (void)user_data;
    char *text =
        g_strdup_printf("a callback of %s", mdm_category_name(mdm_category_of(callback->type)));
    tell("  before the answer comes", text);
    g_free(text);
}

/* Sends bytes that look like a message. */
static void tell_lie(struct demo *demo, const char *asked, const uint8_t *bytes, uint32_t length)
{
    GError *error = NULL;
    mdm_msg_t *answer = mdm_client_call_bytes(demo->client, bytes, length, TIMEOUT, &error);
    tell_refusal(demo, asked, answer, error);
}

/* The last word of the message is the count of a list. */
static void tell_lying_count(struct demo *demo)
{
    mdm_msg_t request = {0};
    uint32_t length = 0;
    if (!mdm_app_set_packages(&request, MDM_APP_PACKAGES_4, NULL)) {
        return;
    }
    uint8_t *bytes = ipc_seal(&request, &length, NULL);
    if (bytes != NULL) {
        memset(bytes + length - sizeof(uint32_t), 0x7F, sizeof(uint32_t));
        tell_lie(demo, "lies about the count of a list", bytes, length);
    }
    g_free(bytes);
}

static void tell_lies(struct demo *demo)
{
    mdm_msg_t request = {0};
    mdm_admin_set_query(&request, OWN_PACKAGE, 0);
    uint32_t length = 0;
    uint8_t *bytes = ipc_seal(&request, &length, NULL);
    if (bytes == NULL) {
        return;
    }
    tell_lie(demo, "sends a single byte", bytes, 1);
    tell_lie(demo, "cuts a message short", bytes, length - 1);
    ++bytes[0];
    tell_lie(demo, "lies about the length of a message", bytes, length);
    --bytes[0];
    bytes[4] = UINT8_MAX;
    tell_lie(demo, "invents a message type", bytes, length);
    bytes[4] = MDM_TYPE_ADMIN_2;
    tell_lie(demo, "sends an answer in place of a request", bytes, length);
    g_free(bytes);
    tell_lying_count(demo);
}

static void tell_story(struct demo *demo)
{
    tell("A client", "The server");
    tell_refused_registration(demo, "registers a name with an underscore", "com.example.no_name");
    tell_registration(demo, "registers " OWN_PACKAGE, OWN_PACKAGE);
    tell_query(demo, "asks whether it is registered", OWN_PACKAGE);
    tell_query(demo, "asks about com.example.stranger", "com.example.stranger");
    tell_status();
    tell_policies(demo);
    tell_network(demo, "asks for its Wi-Fi network");
    tell_lies(demo);
    tell_query(demo, "asks again whether it is registered", OWN_PACKAGE);
}

static void trace(bool is_sent, const uint8_t *bytes, uint32_t length, void *user_data)
{
    (void)user_data;
    show_message(is_sent ? "->" : "<-", bytes, length);
}

static bool run(struct demo *demo, const char *socket_path, bool is_after_restart)
{
    demo->client = mdm_client_new(socket_path);
    demo->in_force = g_string_new(NULL);
    mdm_client_set_callback(demo->client, tell_callback, NULL);
    if (demo->is_verbose) {
        mdm_client_set_trace(demo->client, trace, NULL);
    }
    if (is_after_restart) {
        tell_network(demo, "asks for its Wi-Fi network");
    } else {
        tell_story(demo);
    }
    g_string_free(demo->in_force, TRUE);
    mdm_client_free(demo->client);
    return !demo->has_failed;
}

int main(int argc, char **argv)
{
    struct demo demo = {0};
    gboolean is_verbose = FALSE;
    gboolean is_after_restart = FALSE;
    const GOptionEntry entries[] = {
        {"verbose", 0, 0, G_OPTION_ARG_NONE, &is_verbose, "show every message", NULL},
        {"after-restart", 0, 0, G_OPTION_ARG_NONE, &is_after_restart,
         "tell what a new server still knows", NULL},
        {0},
    };
    GOptionContext *context = g_option_context_new("SOCKET");
    g_option_context_add_main_entries(context, entries, NULL);
    GError *error = NULL;
    const bool is_parsed = g_option_context_parse(context, &argc, &argv, &error);
    g_option_context_free(context);
    if (!is_parsed || argc != 2) {
        g_printerr("mdm-demo: %s\n", is_parsed ? "say SOCKET" : error->message);
        g_clear_error(&error);
        return 2;
    }
    demo.is_verbose = is_verbose;
    return run(&demo, argv[1], is_after_restart) ? EXIT_SUCCESS : EXIT_FAILURE;
}
