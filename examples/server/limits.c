/* SPDX-License-Identifier: Apache-2.0 */
#include "limits.h"

#include <stddef.h>

static const struct limit {
    const char *name;
    size_t offset;
    int standard;
    int least;
    int most;
    const char *unit;
    const char *meaning;
} table[] = {
#define LIMIT(name, member) name, offsetof(struct limits, member)
    {LIMIT("max-clients", clients), 256, 1, 65536, "N", "connections at once"},
    {LIMIT("max-clients-per-user", clients_per_user), 32, 1, 65536, "N", "connections of one user"},
    {LIMIT("max-connects-per-user", connects), 32, 1, 65536, "N",
     "new connections of one user in a second"},
    /* The smallest is the length of a refusal. The largest is what Linux lets a socket hold
     * without being asked. */
    {LIMIT("max-message", message), 65536, 512, 131072, "BYTES", "length of a message"},
    {LIMIT("max-queued", queued), 131072, 512, 16777216, "BYTES", "unread answers of a connection"},
    {LIMIT("max-policy", policy), 262144, 512, 1073741824, "BYTES", "stored policies of one user"},
    {LIMIT("max-faults", faults), 16, 1, 65536, "N",
     "malformed or too long messages of a connection"},
    {LIMIT("fault-delay", fault_delay), 100, 0, 60000, "MS",
     "time without reading after a malformed message"},
    {LIMIT("first-timeout", first_timeout), 10, 1, 86400, "S", "time until the first request"},
    {LIMIT("idle-timeout", idle_timeout), 600, 1, 86400, "S", "time between requests"},
    {LIMIT("answer-timeout", answer_timeout), 30, 1, 86400, "S", "time until an answer is read"},
    {LIMIT("stop-timeout", stop_timeout), 5, 1, 60, "S", "time that stopping takes at most"},
#undef LIMIT
};

static int *value_of(struct limits *limits, const struct limit *limit)
{
    return (int *)(void *)((char *)limits + limit->offset);
}

void limits_init(struct limits *limits)
{
    for (size_t i = 0; i < G_N_ELEMENTS(table); ++i) {
        *value_of(limits, &table[i]) = table[i].standard;
    }
}

const GOptionEntry *limits_options(struct limits *limits)
{
    static GOptionEntry entries[G_N_ELEMENTS(table) + 1];
    for (size_t i = 0; i < G_N_ELEMENTS(table); ++i) {
        const struct limit *limit = &table[i];
        g_free((char *)entries[i].description);
        entries[i] = (GOptionEntry){
            .long_name = limit->name,
            .arg = G_OPTION_ARG_INT,
            .arg_data = value_of(limits, limit),
            .description = g_strdup_printf("%s (default %d)", limit->meaning, limit->standard),
            .arg_description = limit->unit,
        };
    }
    return entries;
}

bool limits_check(const struct limits *limits, GError **error)
{
    for (size_t i = 0; i < G_N_ELEMENTS(table); ++i) {
        const struct limit *limit = &table[i];
        const int value = *value_of((struct limits *)limits, limit);
        if (value < limit->least || value > limit->most) {
            g_set_error(error, G_OPTION_ERROR, G_OPTION_ERROR_BAD_VALUE,
                        "--%s=%d is not between %d and %d", limit->name, value, limit->least,
                        limit->most);
            return false;
        }
    }
    return true;
}

char *excess_describe(const struct excess *excess)
{
    return g_strdup_printf("%" G_GINT64_FORMAT " of %" G_GINT64_FORMAT " %s", excess->used,
                           excess->limit, excess->what);
}
