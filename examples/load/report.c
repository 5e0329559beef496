/* SPDX-License-Identifier: Apache-2.0 */
#include "load/report.h"

#include <math.h>
#include <stdio.h>
#include <string.h>

static const char *const slice_names[REPORT_SLICES] = {"calm", "hostile"};

struct sample {
    double seconds;
    uint64_t kilobytes;
    uint32_t descriptors;
    uint64_t answers; /* since the start */
};

void report_init(struct report *report, pid_t server)
{
    *report = (struct report){.started = g_get_monotonic_time(), .server = server};
    for (int i = 0; i < REPORT_SLICES; ++i) {
        report->latencies[i] = g_array_new(FALSE, FALSE, sizeof(uint32_t));
    }
    report->samples = g_array_new(FALSE, FALSE, sizeof(struct sample));
}

void report_clear(struct report *report)
{
    for (int i = 0; i < REPORT_SLICES; ++i) {
        g_array_unref(report->latencies[i]);
    }
    g_array_unref(report->samples);
}

void report_add_latency(struct report *report, report_slice_t slice, int64_t microseconds)
{
    const uint32_t latency = (uint32_t)MIN(microseconds, UINT32_MAX);
    g_array_append_val(report->latencies[slice], latency);
}

static uint64_t resident_kilobytes(pid_t pid)
{
    char *path = g_strdup_printf("/proc/%ld/status", (long)pid);
    char *text = NULL;
    g_file_get_contents(path, &text, NULL, NULL);
    const char *line = text != NULL ? strstr(text, "VmRSS:") : NULL;
    const uint64_t kilobytes =
        line != NULL ? g_ascii_strtoull(line + strlen("VmRSS:"), NULL, 10) : 0;
    g_free(text);
    g_free(path);
    return kilobytes;
}

static uint32_t open_descriptors(pid_t pid)
{
    char *path = g_strdup_printf("/proc/%ld/fd", (long)pid);
    GDir *directory = g_dir_open(path, 0, NULL);
    uint32_t count = 0;
    while (directory != NULL && g_dir_read_name(directory) != NULL) {
        ++count;
    }
    if (directory != NULL) {
        g_dir_close(directory);
    }
    g_free(path);
    return count;
}

static double seconds_since(int64_t start, int64_t end)
{
    return (double)(end - start) / G_USEC_PER_SEC;
}

void report_sample(struct report *report)
{
    if (report->server == 0) {
        return;
    }
    const struct sample sample = {
        seconds_since(report->started, g_get_monotonic_time()),
        resident_kilobytes(report->server),
        open_descriptors(report->server),
        report->right,
    };
    if (sample.kilobytes > 0) {
        g_array_append_val(report->samples, sample);
    }
}

static int compare(gconstpointer a, gconstpointer b)
{
    const uint32_t one = *(const uint32_t *)a;
    const uint32_t other = *(const uint32_t *)b;
    return (one > other) - (one < other);
}

/* The smallest latency that this share of all requests does not exceed. The array is sorted. */
static double milliseconds_at(const GArray *latencies, double share)
{
    if (latencies->len == 0) {
        return 0;
    }
    const double rank = ceil(share * latencies->len);
    const guint index = rank < 1 ? 0 : (guint)rank - 1;
    return g_array_index(latencies, uint32_t, MIN(index, latencies->len - 1)) / 1000.0;
}

/* The memory after the first minute, or after a tenth of a shorter run. */
static uint64_t early_kilobytes(const struct report *report)
{
    const double whole = seconds_since(report->started, report->ended);
    const double early = whole > 70 ? 60 : whole / 10;
    for (guint i = 0; i < report->samples->len; ++i) {
        const struct sample *sample = &g_array_index(report->samples, struct sample, i);
        if (sample->seconds >= early) {
            return sample->kilobytes;
        }
    }
    return 0;
}

static uint64_t last_kilobytes(const struct report *report)
{
    return report->samples->len > 0
               ? g_array_index(report->samples, struct sample, report->samples->len - 1).kilobytes
               : 0;
}

static void add_count(GString *table, const char *name, uint64_t count)
{
    g_string_append_printf(table, "%s\t%" G_GUINT64_FORMAT "\n", name, count);
}

static void add_latencies(GString *table, const struct report *report, report_slice_t slice)
{
    const GArray *latencies = report->latencies[slice];
    if (latencies->len == 0) {
        return;
    }
    static const struct {
        const char *name;
        double share;
    } rows[] = {{"50th percentile", 0.5},
                {"99th percentile", 0.99},
                {"99.9th percentile", 0.999},
                {"worst", 1}};
    for (size_t i = 0; i < G_N_ELEMENTS(rows); ++i) {
        g_string_append_printf(table, "latency, %s, %s, ms\t%.3f\n", slice_names[slice],
                               rows[i].name, milliseconds_at(latencies, rows[i].share));
    }
}

/* The table as lines of a name and a value. The latencies are sorted. */
static char *make_table(const struct report *report)
{
    GString *table = g_string_new(NULL);
    const double seconds = seconds_since(report->started, report->ended);
    add_count(table, "honest requests", report->sent);
    add_count(table, "hostile packets", report->hostile);
    add_count(table, "right answers", report->right);
    add_count(table, "wrong answers", report->wrong);
    add_count(table, "lost answers", report->lost);
    add_count(table, "harmed clients", report->harmed);
    add_count(table, "forbidden requests", report->forbidden);
    add_count(table, "stalled clients dropped", report->stalled);
    add_count(table, "vanished clients", report->vanished);
    add_count(table, "reconnections", report->reconnected);
    add_count(table, "policies found again", report->found);
    g_string_append_printf(table, "seconds\t%.1f\n", seconds);
    g_string_append_printf(table, "right answers a second\t%.0f\n",
                           (double)report->right / seconds);
    add_latencies(table, report, REPORT_CALM);
    add_latencies(table, report, REPORT_HOSTILE);
    if (report->samples->len > 0) {
        add_count(table, "memory early, KiB", early_kilobytes(report));
        add_count(table, "memory at the end, KiB", last_kilobytes(report));
    }
    return g_string_free(table, FALSE);
}

static void sort_latencies(const struct report *report)
{
    for (int i = 0; i < REPORT_SLICES; ++i) {
        g_array_sort(report->latencies[i], compare);
    }
}

void report_print(const struct report *report)
{
    sort_latencies(report);
    char *table = make_table(report);
    char **lines = g_strsplit(table, "\n", -1);
    for (char **line = lines; **line != '\0'; ++line) {
        char **cells = g_strsplit(*line, "\t", 2);
        printf("%-42s %12s\n", cells[0], cells[1]);
        g_strfreev(cells);
    }
    g_strfreev(lines);
    g_free(table);
}

static bool write_file(const char *directory, const char *name, const char *text, GError **error)
{
    char *path = g_build_filename(directory, name, NULL);
    const bool is_written = g_file_set_contents(path, text, -1, error);
    g_free(path);
    return is_written;
}

/* For a plot with one over one minus the share as its axis: the tail is what matters. */
static char *make_curve(const GArray *latencies)
{
    GString *curve = g_string_new(NULL);
    double rest = 1; /* of the requests take longer */
    while (rest * latencies->len >= 1) {
        g_string_append_printf(curve, "%.3f\t%.3f\n", 1 / rest,
                               milliseconds_at(latencies, 1 - rest));
        rest /= 1.05;
    }
    return g_string_free(curve, FALSE);
}

static char *make_memory(const struct report *report)
{
    GString *text = g_string_new(NULL);
    for (guint i = 0; i < report->samples->len; ++i) {
        const struct sample *sample = &g_array_index(report->samples, struct sample, i);
        g_string_append_printf(text, "%.2f\t%" G_GUINT64_FORMAT "\t%u\t%" G_GUINT64_FORMAT "\n",
                               sample->seconds, sample->kilobytes, sample->descriptors,
                               sample->answers);
    }
    return g_string_free(text, FALSE);
}

static bool write_owned(const char *directory, const char *name, char *text, GError **error)
{
    const bool is_written = write_file(directory, name, text, error);
    g_free(text);
    return is_written;
}

bool report_write(struct report *report, const char *directory, GError **error)
{
    sort_latencies(report);
    return write_owned(directory, "summary.tsv", make_table(report), error) &&
           write_owned(directory, "calm.tsv", make_curve(report->latencies[REPORT_CALM]), error) &&
           write_owned(directory, "hostile.tsv", make_curve(report->latencies[REPORT_HOSTILE]),
                       error) &&
           write_owned(directory, "memory.tsv", make_memory(report), error);
}

bool report_is_good(const struct report *report)
{
    return report->wrong == 0 && report->lost == 0 && report->harmed == 0;
}
