/* SPDX-License-Identifier: Apache-2.0 */
#include "notices.h"

#include "log.h"

/* The last time that a user reached a limit. */
struct notice {
    struct peer peer;
    struct excess excess;
    unsigned held_back;
    int64_t due;
};

struct notices {
    GHashTable *notices; /* a set */
};

static guint hash_of(gconstpointer key)
{
    const struct notice *notice = key;
    return g_direct_hash(notice->excess.what) ^ notice->peer.uid;
}

/* The name of a limit is a constant, so its address is enough. */
static gboolean are_alike(gconstpointer a, gconstpointer b)
{
    const struct notice *one = a;
    const struct notice *other = b;
    return one->peer.uid == other->peer.uid && one->excess.what == other->excess.what;
}

struct notices *notices_new(void)
{
    struct notices *notices = g_new0(struct notices, 1);
    notices->notices = g_hash_table_new_full(hash_of, are_alike, g_free, NULL);
    return notices;
}

void notices_free(struct notices *notices)
{
    g_hash_table_destroy(notices->notices);
    g_free(notices);
}

static void log_notice(const struct notice *notice)
{
    const struct peer *peer = &notice->peer;
    char *excess = excess_describe(&notice->excess);
    char *more = notice->held_back > 1
                     ? g_strdup_printf("; %u more in the last minute", notice->held_back - 1)
                     : g_strdup("");
    log_begin_request(peer->uid);
    log_warn("uid %lu: %s, refused pid %ld (%s)%s", (unsigned long)peer->uid, excess,
             (long)peer->pid, peer->program, more);
    log_end_request();
    g_free(more);
    g_free(excess);
}

void notices_add(struct notices *notices, const struct peer *peer, const struct excess *excess,
                 int64_t now)
{
    struct notice *notice = g_new0(struct notice, 1);
    *notice = (struct notice){*peer, *excess, 0, now + NOTICES_PERIOD};
    const struct notice *known = g_hash_table_lookup(notices->notices, notice);
    if (known == NULL) {
        log_notice(notice);
    } else {
        notice->held_back = known->held_back + 1;
        notice->due = known->due;
    }
    g_hash_table_replace(notices->notices, notice, notice);
}

static gboolean tell_if_due(gpointer key, gpointer value, gpointer data)
{
    (void)value;
    struct notice *notice = key;
    const int64_t now = *(const int64_t *)data;
    if (now < notice->due) {
        return FALSE;
    }
    if (notice->held_back == 0) {
        return TRUE;
    }
    log_notice(notice);
    notice->held_back = 0;
    notice->due = now + NOTICES_PERIOD;
    return FALSE;
}

void notices_tick(struct notices *notices, int64_t now)
{
    g_hash_table_foreach_remove(notices->notices, tell_if_due, &now);
}

static void find_earliest(gpointer key, gpointer value, gpointer data)
{
    (void)value;
    const struct notice *notice = key;
    int64_t *due = data;
    *due = MIN(*due, notice->due);
}

int64_t notices_due(const struct notices *notices)
{
    int64_t due = CLOCK_NEVER;
    g_hash_table_foreach(notices->notices, find_earliest, &due);
    return due;
}
