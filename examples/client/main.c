/* SPDX-License-Identifier: Apache-2.0 */
/*
 * A client for the command line.
 *
 *     mdm-client register com.example.agent     registers a client
 *     mdm-client registered com.example.agent   asks whether it is registered
 *     mdm-client send FILE                      sends the message in a file, and shows the answer
 *
 * mdm-msg makes such a file of JSON, and shows it.
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "common/protocol.h"
#include "common/show.h"
#include "common/text.h"
#include "mdm_client.h"

#define DEFAULT_SOCKET "/run/mdm/socket"
#define DEFAULT_TIMEOUT 5000

struct options {
    char *socket;
    int timeout; /* milliseconds */
    char **words;
};

/* What a command does with its word. Returns whether the server has answered. */
typedef bool command_t(mdm_client_t *client, const struct options *options, const char *word,
                       GError **error);

static bool do_register(mdm_client_t *client, const struct options *options, const char *word,
                        GError **error)
{
    mdm_msg_t request = {0};
    const bool is_filled = mdm_admin_set_general(&request, ADMIN_REGISTER, 0, word, NULL);
    g_assert_true(is_filled);
    MDM_AUTO_CLOSE mdm_msg_t *answer = mdm_client_call(client, &request, options->timeout, error);
    const mdm_admin_info_t *admin = answer != NULL ? mdm_admin_general(answer) : NULL;
    if (admin != NULL) {
        printf("registered; the server has %u clients\n", admin->value);
    }
    return answer != NULL;
}

static bool do_registered(mdm_client_t *client, const struct options *options, const char *word,
                          GError **error)
{
    mdm_msg_t request = {0};
    mdm_admin_set_query(&request, word, 0);
    MDM_AUTO_CLOSE mdm_msg_t *answer = mdm_client_call(client, &request, options->timeout, error);
    const mdm_admin_info_t *admin = answer != NULL ? mdm_admin_query(answer) : NULL;
    if (admin != NULL) {
        puts(admin->status == 1 ? "yes" : "no");
    }
    return answer != NULL;
}

static void show(bool is_sent, const uint8_t *bytes, uint32_t length, void *user_data)
{
    (void)user_data;
    show_message(is_sent ? "->" : "<-", bytes, length);
}

static bool do_send(mdm_client_t *client, const struct options *options, const char *word,
                    GError **error)
{
    char *bytes = NULL;
    gsize length = 0;
    if (!g_file_get_contents(word, &bytes, &length, error)) {
        return false;
    }
    mdm_client_set_trace(client, show, NULL);
    mdm_msg_t *answer = mdm_client_call_bytes(client, (const uint8_t *)bytes, (uint32_t)length,
                                              options->timeout, error);
    const bool is_answered = answer != NULL;
    ipc_close(answer);
    g_free(bytes);
    return is_answered;
}

static command_t *find_command(char *const *words)
{
    if (words == NULL || g_strv_length((char **)words) != 2) {
        return NULL;
    }
    if (strcmp(words[0], "register") == 0) {
        return do_register;
    }
    if (strcmp(words[0], "registered") == 0) {
        return do_registered;
    }
    return strcmp(words[0], "send") == 0 ? do_send : NULL;
}

static bool parse(struct options *options, int argc, char **argv, GError **error)
{
    const GOptionEntry entries[] = {
        {"socket", 0, 0, G_OPTION_ARG_FILENAME, &options->socket,
         "the socket of the server (default " DEFAULT_SOCKET ")", "PATH"},
        {"timeout", 0, 0, G_OPTION_ARG_INT, &options->timeout,
         "how long to wait (default " G_STRINGIFY(DEFAULT_TIMEOUT) ")", "MS"},
        {G_OPTION_REMAINING, 0, 0, G_OPTION_ARG_FILENAME_ARRAY, &options->words, NULL, NULL},
        {0},
    };
    GOptionContext *context = g_option_context_new("register NAME | registered NAME | send FILE");
    g_option_context_add_main_entries(context, entries, NULL);
    const bool is_parsed = g_option_context_parse(context, &argc, &argv, error);
    g_option_context_free(context);
    if (is_parsed && find_command(options->words) == NULL) {
        g_set_error(error, G_OPTION_ERROR, G_OPTION_ERROR_FAILED,
                    "say register NAME, registered NAME or send FILE");
        return false;
    }
    return is_parsed;
}

static void print_error(const GError *error)
{
    fprintf(stderr, "mdm-client: %s\n", error->message);
}

static bool run(const struct options *options)
{
    GError *error = NULL;
    mdm_client_t *client =
        mdm_client_new(options->socket != NULL ? options->socket : DEFAULT_SOCKET);
    const bool is_answered =
        find_command(options->words)(client, options, options->words[1], &error);
    if (!is_answered) {
        print_error(error);
        g_error_free(error);
    }
    mdm_client_free(client);
    return is_answered;
}

int main(int argc, char **argv)
{
    struct options options = {.timeout = DEFAULT_TIMEOUT};
    GError *error = NULL;
    int status = EXIT_SUCCESS;
    if (!parse(&options, argc, argv, &error)) {
        print_error(error);
        g_error_free(error);
        status = 2;
    } else if (!run(&options)) {
        status = EXIT_FAILURE;
    }
    g_strfreev(options.words);
    g_free(options.socket);
    return status;
}
