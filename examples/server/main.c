/* SPDX-License-Identifier: Apache-2.0 */
/*
 * The server of the example: it keeps the policies that its clients set, and answers with the
 * policy that is in force. `mdm-server --help` lists its options.
 */
#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>

#include <glib-unix.h>
#include <systemd/sd-daemon.h>

#include "handlers.h"
#include "log.h"
#include "server.h"

enum {
    /* The descriptors that the server needs besides those of its clients. */
    OWN_DESCRIPTORS = 32,
};

struct options {
    struct listener_options listener;
    struct limits limits;
    char *socket_mode;
    char *directory_mode;
    char *state;
    char *rules;
    char *log_file;
    int log_level;
};

/* Everything that runs. */
struct program {
    struct options options;
    struct service service;
    struct rules *rules;
    struct listener listener;
    struct server *server;
    GMainLoop *loop;
};

#define DEFAULT_SOCKET "/run/mdm/socket"
#define DEFAULT_SOCKET_MODE "0660"
#define DEFAULT_DIRECTORY_MODE "0755"
#define DEFAULT_STATE "/var/lib/mdm/policies.db"
#define DEFAULT_RULES "/etc/mdm/rules.conf"
#define DEFAULT_LOG_LEVEL 2

static void options_init(struct options *options)
{
    *options = (struct options){.log_level = DEFAULT_LOG_LEVEL};
    limits_init(&options->limits);
}

static void set_default(char **option, const char *value)
{
    if (*option == NULL) {
        *option = g_strdup(value);
    }
}

/* GLib does not release the values that an option replaces, so the defaults come afterwards. */
static void options_complete(struct options *options)
{
    set_default(&options->listener.path, DEFAULT_SOCKET);
    set_default(&options->socket_mode, DEFAULT_SOCKET_MODE);
    set_default(&options->directory_mode, DEFAULT_DIRECTORY_MODE);
    set_default(&options->state, DEFAULT_STATE);
    set_default(&options->rules, DEFAULT_RULES);
}

static void options_clear(struct options *options)
{
    g_free(options->listener.path);
    g_free(options->listener.group);
    g_free(options->socket_mode);
    g_free(options->directory_mode);
    g_free(options->state);
    g_free(options->rules);
    g_free(options->log_file);
}

static bool parse_mode(const char *name, const char *text, mode_t *mode, GError **error)
{
    guint64 number = 0;
    if (!g_ascii_string_to_unsigned(text, 8, 0, 07777, &number, NULL)) {
        g_set_error(error, G_OPTION_ERROR, G_OPTION_ERROR_BAD_VALUE,
                    "--%s=%s is no octal number up to 7777", name, text);
        return false;
    }
    *mode = (mode_t)number;
    return true;
}

#define DEFAULT_TEXT(value) " (default " value ")"

static bool options_parse(struct options *options, int argc, char **argv, GError **error)
{
    const GOptionEntry entries[] = {
        {"socket", 0, 0, G_OPTION_ARG_FILENAME, &options->listener.path,
         "the socket, unless systemd hands one over" DEFAULT_TEXT(DEFAULT_SOCKET), "PATH"},
        {"socket-mode", 0, 0, G_OPTION_ARG_STRING, &options->socket_mode,
         "who may connect" DEFAULT_TEXT(DEFAULT_SOCKET_MODE), "MODE"},
        {"directory-mode", 0, 0, G_OPTION_ARG_STRING, &options->directory_mode,
         "of the socket's directory, if it is made" DEFAULT_TEXT(DEFAULT_DIRECTORY_MODE), "MODE"},
        {"group", 0, 0, G_OPTION_ARG_STRING, &options->listener.group, "the group of the socket",
         "NAME"},
        {"state", 0, 0, G_OPTION_ARG_FILENAME, &options->state,
         "the database of the policies" DEFAULT_TEXT(DEFAULT_STATE), "PATH"},
        {"rules", 0, 0, G_OPTION_ARG_FILENAME, &options->rules,
         "who may ask for what" DEFAULT_TEXT(DEFAULT_RULES), "PATH"},
        {"log-file", 0, 0, G_OPTION_ARG_FILENAME, &options->log_file,
         "a file that gets the log lines, too", "PATH"},
        {"log-level", 0, 0, G_OPTION_ARG_INT, &options->log_level,
         "0 debug, 1 info, 2 warnings, 3 failures, 4 nothing" DEFAULT_TEXT(
             G_STRINGIFY(DEFAULT_LOG_LEVEL)),
         "LEVEL"},
        {0},
    };
    GOptionContext *context = g_option_context_new(NULL);
    g_option_context_set_summary(context, "Serves requests of device management.");
    g_option_context_add_main_entries(context, entries, NULL);
    g_option_context_add_main_entries(context, limits_options(&options->limits), NULL);
    const bool is_parsed = g_option_context_parse(context, &argc, &argv, error);
    g_option_context_free(context);
    if (is_parsed && argc > 1) {
        g_set_error(error, G_OPTION_ERROR, G_OPTION_ERROR_FAILED, "%s is no option", argv[1]);
        return false;
    }
    return is_parsed;
}

static bool options_check(struct options *options, GError **error)
{
    if (options->log_level < MDM_LOG_DEBUG || options->log_level > MDM_LOG_NONE) {
        g_set_error(error, G_OPTION_ERROR, G_OPTION_ERROR_BAD_VALUE,
                    "--log-level=%d is not between %d and %d", options->log_level, MDM_LOG_DEBUG,
                    MDM_LOG_NONE);
        return false;
    }
    return parse_mode("socket-mode", options->socket_mode, &options->listener.mode, error) &&
           parse_mode("directory-mode", options->directory_mode, &options->listener.directory_mode,
                      error) &&
           limits_check(&options->limits, error);
}

static void start_log(const struct options *options)
{
    mdm_log_set_level((mdm_log_level_t)options->log_level);
    mdm_log_set_path(options->log_file);
    /* A log that cannot be written must not end the server. */
    signal(SIGPIPE, SIG_IGN);
    signal(SIGXFSZ, SIG_IGN);
}

static void raise_descriptor_limit(const struct limits *limits)
{
    struct rlimit limit;
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0) {
        return;
    }
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
    const rlim_t needed = (rlim_t)limits->clients + OWN_DESCRIPTORS;
    if (limit.rlim_max < needed) {
        log_warn("%ju descriptors are fewer than %d clients may need", (uintmax_t)limit.rlim_max,
                 limits->clients);
    }
}

static gboolean stop(gpointer data)
{
    struct program *program = data;
    sd_notify(0, "STOPPING=1\nSTATUS=Answering the last requests");
    server_stop(program->server);
    return G_SOURCE_CONTINUE;
}

static gboolean ended(gpointer data)
{
    const struct program *program = data;
    g_main_loop_quit(program->loop);
    return G_SOURCE_REMOVE;
}

/* Rules that are wrong leave the old ones in force. */
static gboolean reload(gpointer data)
{
    struct program *program = data;
    GError *error = NULL;
    struct rules *rules = rules_load(program->options.rules, &error);
    if (rules == NULL) {
        log_error("the rules stay as they are: %s", error->message);
        g_error_free(error);
        return G_SOURCE_CONTINUE;
    }
    log_warn("the rules of %s are in force", program->options.rules);
    rules_free(program->rules);
    program->rules = rules;
    program->service.rules = rules;
    return G_SOURCE_CONTINUE;
}

static gboolean feed_watchdog(gpointer data)
{
    (void)data;
    sd_notify(0, "WATCHDOG=1");
    return G_SOURCE_CONTINUE;
}

/* The main loop feeds the watchdog, so it notices a loop that hangs. */
static void start_watchdog(void)
{
    uint64_t period = 0; /* in microseconds */
    if (sd_watchdog_enabled(0, &period) > 0) {
        g_timeout_add((guint)(period / 1000 / 2), feed_watchdog, NULL);
    }
}

static bool start(struct program *program, GError **error)
{
    const struct options *options = &program->options;
    program->rules = rules_load(options->rules, error);
    if (program->rules == NULL) {
        return false;
    }
    struct policies *policies = policies_open(options->state, &options->limits, error);
    program->service = (struct service){&options->limits, program->rules, policies};
    if (policies == NULL || !listener_open(&program->listener, &options->listener, error)) {
        return false;
    }
    handlers_publish_status(policies);
    program->server = server_new(&program->service, &program->listener, ended, program);
    return true;
}

static void run(struct program *program)
{
    program->loop = g_main_loop_new(NULL, FALSE);
    g_unix_signal_add(SIGTERM, stop, program);
    g_unix_signal_add(SIGINT, stop, program);
    g_unix_signal_add(SIGHUP, reload, program);
    start_watchdog();
    sd_notify(0, "READY=1\nSTATUS=Serving");
    g_main_loop_run(program->loop);
    g_main_loop_unref(program->loop);
}

static void clear(struct program *program)
{
    if (program->server != NULL) {
        server_free(program->server);
    }
    if (program->service.policies != NULL) {
        policies_close(program->service.policies);
    }
    if (program->rules != NULL) {
        rules_free(program->rules);
    }
    mdm_log_set_path(NULL);
    options_clear(&program->options);
}

int main(int argc, char **argv)
{
    struct program program = {0};
    GError *error = NULL;
    options_init(&program.options);
    const bool is_parsed = options_parse(&program.options, argc, argv, &error);
    options_complete(&program.options);
    if (!is_parsed || !options_check(&program.options, &error)) {
        g_printerr("mdm-server: %s\n", error->message);
        g_error_free(error);
        options_clear(&program.options);
        return 2;
    }
    start_log(&program.options);
    raise_descriptor_limit(&program.options.limits);
    const bool is_started = start(&program, &error);
    if (is_started) {
        run(&program);
    } else {
        log_error("%s", error->message);
        g_error_free(error);
    }
    clear(&program);
    return is_started ? EXIT_SUCCESS : EXIT_FAILURE;
}
