/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Sends a load to the server: many honest clients, and beside them hostile ones. Every answer is
 * compared with the one that must come. `mdm-load --help` lists the options.
 */
#include <stdio.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <unistd.h>

#include <mdm/log.h>

#include "common/text.h"
#include "load/corpus.h"
#include "load/honest.h"
#include "load/hostile.h"

enum {
    TICK = 250, /* milliseconds between two looks at clients and server */
    HOSTILE_CLIENTS_A_USER = 16,
    USERS_OF_A_KIND = 100000,
    COMPLAINTS = 10,
    MOST_SHOWN = 64, /* bytes of a packet */
};

struct options {
    char *socket;
    char *corpus;
    char *report;
    int clients;
    int requests;
    int hostile_percent;
    int counts[LOAD_FORBIDDEN + 1]; /* of clients of each kind */
    int first_uid;
    int seed;
    int server;
    int timeout;
    int time_limit;
    int think;
    int longest;
    int faults;
    int phases;
    int phase_seconds;
    gboolean survives;
};

struct run {
    struct load load;
    GPtrArray *honest;
    GPtrArray *hostile;
    GMainLoop *loop;
    int64_t time_limit;
    int phases_left;
};

uid_t load_uid(const struct load *load, load_kind_t kind, int number)
{
    if (!load->has_uids) {
        return geteuid();
    }
    const int user = kind == LOAD_HONEST ? number : number / HOSTILE_CLIENTS_A_USER;
    return load->first_uid + (uid_t)((int)kind * USERS_OF_A_KIND + user);
}

void load_complain(struct load *load, const char *who, const char *what, const GPtrArray *packets)
{
    if (load->report.wrong > COMPLAINTS) {
        return;
    }
    fprintf(stderr, "%s got %s:\n", who, what);
    for (guint i = 0; i < packets->len; ++i) {
        gsize length = 0;
        const void *bytes = g_bytes_get_data(packets->pdata[i], &length);
        char *text = text_escaped_bytes(bytes, MIN(length, MOST_SHOWN));
        fprintf(stderr, "    %zu bytes: %s\n", length, text);
        g_free(text);
    }
}

#define STANDARD(number) " (default " G_STRINGIFY(number) ")"
#define STANDARD_CORPUS "fuzz/corpus/open"
#define STANDARD_CLIENTS 100
#define STANDARD_REQUESTS 10000
#define STANDARD_UID 100000
#define STANDARD_TIMEOUT 10
#define STANDARD_TIME_LIMIT 600
#define STANDARD_LONGEST 65536
#define STANDARD_FAULTS 16
#define STANDARD_PHASE 2

static bool parse(struct options *options, int argc, char **argv, GError **error)
{
    const GOptionEntry entries[] = {
        {"socket", 0, 0, G_OPTION_ARG_FILENAME, &options->socket, "of the server", "PATH"},
        {"corpus", 0, 0, G_OPTION_ARG_FILENAME, &options->corpus,
         "a directory of messages (default " STANDARD_CORPUS ")", "DIR"},
        {"clients", 0, 0, G_OPTION_ARG_INT, &options->clients,
         "honest clients" STANDARD(STANDARD_CLIENTS), "N"},
        {"requests", 0, 0, G_OPTION_ARG_INT, &options->requests,
         "of all clients" STANDARD(STANDARD_REQUESTS), "N"},
        {"hostile", 0, 0, G_OPTION_ARG_INT, &options->hostile_percent,
         "share of the requests that are hostile (default 0)", "PERCENT"},
        {"hostile-clients", 0, 0, G_OPTION_ARG_INT, &options->counts[LOAD_HOSTILE],
         "who send them (default 0)", "N"},
        {"stalled-clients", 0, 0, G_OPTION_ARG_INT, &options->counts[LOAD_STALLED],
         "who send nothing or do not read (default 0)", "N"},
        {"vanishing-clients", 0, 0, G_OPTION_ARG_INT, &options->counts[LOAD_VANISHING],
         "who leave in the middle (default 0)", "N"},
        {"forbidden-clients", 0, 0, G_OPTION_ARG_INT, &options->counts[LOAD_FORBIDDEN],
         "who may not ask for anything (default 0)", "N"},
        {"first-uid", 0, 0, G_OPTION_ARG_INT, &options->first_uid,
         "of the clients, if root starts them" STANDARD(STANDARD_UID), "UID"},
        {"seed", 0, 0, G_OPTION_ARG_INT, &options->seed, "of the random choices (default 0)", "N"},
        {"server-pid", 0, 0, G_OPTION_ARG_INT, &options->server, "whose memory is measured", "PID"},
        {"request-timeout", 0, 0, G_OPTION_ARG_INT, &options->timeout,
         "after which an answer is lost" STANDARD(STANDARD_TIMEOUT), "S"},
        {"time-limit", 0, 0, G_OPTION_ARG_INT, &options->time_limit,
         "of the run" STANDARD(STANDARD_TIME_LIMIT), "S"},
        {"think", 0, 0, G_OPTION_ARG_INT, &options->think,
         "time between two requests of an honest client (default 0)", "MS"},
        {"max-message", 0, 0, G_OPTION_ARG_INT, &options->longest,
         "the limit of the server" STANDARD(STANDARD_LONGEST), "BYTES"},
        {"max-faults", 0, 0, G_OPTION_ARG_INT, &options->faults,
         "the limit of the server" STANDARD(STANDARD_FAULTS), "N"},
        {"phases", 0, 0, G_OPTION_ARG_INT, &options->phases,
         "pairs of slices of time, without and with hostile clients (default 0)", "N"},
        {"phase-seconds", 0, 0, G_OPTION_ARG_INT, &options->phase_seconds,
         "length of a slice" STANDARD(STANDARD_PHASE), "S"},
        {"survive", 0, 0, G_OPTION_ARG_NONE, &options->survives,
         "the server may go away and come back", NULL},
        {"report", 0, 0, G_OPTION_ARG_FILENAME, &options->report,
         "a directory that gets the figures", "DIR"},
        {0},
    };
    GOptionContext *context = g_option_context_new(NULL);
    g_option_context_add_main_entries(context, entries, NULL);
    const bool is_parsed = g_option_context_parse(context, &argc, &argv, error);
    g_option_context_free(context);
    if (is_parsed && (argc > 1 || options->socket == NULL)) {
        g_set_error(error, G_OPTION_ERROR, G_OPTION_ERROR_FAILED, "say --socket=PATH");
        return false;
    }
    return is_parsed;
}

/* One descriptor a client. */
static void raise_descriptor_limit(void)
{
    struct rlimit limit;
    if (getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = limit.rlim_max;
        setrlimit(RLIMIT_NOFILE, &limit);
    }
}

static void free_honest(gpointer client)
{
    honest_free(client);
}

static void free_hostile(gpointer client)
{
    hostile_free(client);
}

static bool prepare(struct run *run, const struct options *options, GError **error)
{
    struct load *load = &run->load;
    load->corpus = corpus_load(options->corpus != NULL ? options->corpus : STANDARD_CORPUS, error);
    if (load->corpus == NULL) {
        return false;
    }
    load->socket = options->socket;
    load->random = g_rand_new_with_seed((guint32)options->seed);
    load->hostile_left = (int64_t)options->requests * options->hostile_percent / 100;
    load->honest_left = options->requests - load->hostile_left;
    load->honest_clients = options->clients;
    load->first_uid = (uid_t)options->first_uid;
    load->has_uids = geteuid() == 0;
    load->timeout = (int64_t)options->timeout * G_USEC_PER_SEC;
    load->think = options->think;
    load->longest = (uint32_t)options->longest;
    load->faults = options->faults;
    load->survives = options->survives;
    load->slice =
        options->counts[LOAD_HOSTILE] > 0 && options->phases == 0 ? REPORT_HOSTILE : REPORT_CALM;
    report_init(&load->report, options->server);
    run->time_limit = g_get_monotonic_time() + (int64_t)options->time_limit * G_USEC_PER_SEC;
    run->honest = g_ptr_array_new_with_free_func(free_honest);
    run->hostile = g_ptr_array_new_with_free_func(free_hostile);
    run->loop = g_main_loop_new(NULL, FALSE);
    return true;
}

static void add_clients(struct run *run, const struct options *options)
{
    for (int i = 0; i < options->clients; ++i) {
        g_ptr_array_add(run->honest, honest_new(&run->load, i));
    }
    for (int kind = LOAD_HOSTILE; kind <= LOAD_FORBIDDEN; ++kind) {
        for (int i = 0; i < options->counts[kind]; ++i) {
            g_ptr_array_add(run->hostile, hostile_new(&run->load, (load_kind_t)kind, i));
        }
    }
}

static bool is_done(const struct run *run)
{
    for (guint i = 0; i < run->honest->len; ++i) {
        if (!honest_is_done(run->honest->pdata[i])) {
            return false;
        }
    }
    return run->load.hostile_left <= 0;
}

/* A run that does not end in time has lost the answers that it still waits for. */
static gboolean tick(gpointer data)
{
    struct run *run = data;
    for (guint i = 0; i < run->honest->len; ++i) {
        honest_tick(run->honest->pdata[i]);
    }
    report_sample(&run->load.report);
    if (is_done(run)) {
        g_main_loop_quit(run->loop);
    } else if (g_get_monotonic_time() > run->time_limit) {
        fprintf(stderr, "the run takes too long\n");
        ++run->load.report.lost;
        g_main_loop_quit(run->loop);
    }
    return G_SOURCE_CONTINUE;
}

static void set_slice(struct run *run, report_slice_t slice)
{
    run->load.slice = slice;
    for (guint i = 0; i < run->hostile->len; ++i) {
        if (slice == REPORT_CALM) {
            hostile_pause(run->hostile->pdata[i]);
        } else {
            hostile_resume(run->hostile->pdata[i]);
        }
    }
}

/* The slices take turns. After the last one the clients have nothing left to do. */
static gboolean change_slice(gpointer data)
{
    struct run *run = data;
    if (--run->phases_left == 0) {
        run->load.honest_left = 0;
        run->load.hostile_left = 0;
        return G_SOURCE_REMOVE;
    }
    set_slice(run, run->load.slice == REPORT_CALM ? REPORT_HOSTILE : REPORT_CALM);
    return G_SOURCE_CONTINUE;
}

static void start_phases(struct run *run, const struct options *options)
{
    if (options->phases > 0) {
        run->phases_left = 2 * options->phases;
        set_slice(run, REPORT_CALM);
        g_timeout_add_seconds((guint)options->phase_seconds, change_slice, run);
    }
}

static void finish(struct run *run)
{
    g_ptr_array_unref(run->honest);
    g_ptr_array_unref(run->hostile);
    g_ptr_array_unref(run->load.corpus);
    g_rand_free(run->load.random);
    g_main_loop_unref(run->loop);
    report_clear(&run->load.report);
}

static int run_load(const struct options *options, GError **error)
{
    struct run run = {0};
    if (!prepare(&run, options, error)) {
        return EXIT_FAILURE;
    }
    add_clients(&run, options);
    start_phases(&run, options);
    g_timeout_add(TICK, tick, &run);
    g_main_loop_run(run.loop);
    struct report *report = &run.load.report;
    report->ended = g_get_monotonic_time();
    report_print(report);
    const bool is_written = options->report == NULL || report_write(report, options->report, error);
    const bool is_good = report_is_good(report);
    finish(&run);
    return is_written && is_good ? EXIT_SUCCESS : EXIT_FAILURE;
}

int main(int argc, char **argv)
{
    struct options options = {
        .clients = STANDARD_CLIENTS,
        .requests = STANDARD_REQUESTS,
        .first_uid = STANDARD_UID,
        .timeout = STANDARD_TIMEOUT,
        .time_limit = STANDARD_TIME_LIMIT,
        .longest = STANDARD_LONGEST,
        .faults = STANDARD_FAULTS,
        .phase_seconds = STANDARD_PHASE,
    };
    GError *error = NULL;
    mdm_log_set_enabled(0); /* the library logs each refusal that the model looks at */
    raise_descriptor_limit();
    int status = 2;
    if (parse(&options, argc, argv, &error)) {
        status = run_load(&options, &error);
    }
    if (error != NULL) {
        fprintf(stderr, "mdm-load: %s\n", error->message);
        g_error_free(error);
    }
    g_free(options.socket);
    g_free(options.corpus);
    g_free(options.report);
    return status;
}
