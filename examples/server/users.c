/* SPDX-License-Identifier: Apache-2.0 */
#include "users.h"

#include "clock.h"

struct user {
    int connections;
    int64_t room; /* for new connections, each of which takes CLOCK_SECOND */
    int64_t filled;
};

struct users {
    const struct limits *limits;
    GHashTable *by_uid;
    int connections;
};

struct users *users_new(const struct limits *limits)
{
    struct users *users = g_new0(struct users, 1);
    users->limits = limits;
    users->by_uid = g_hash_table_new_full(g_direct_hash, g_direct_equal, NULL, g_free);
    return users;
}

void users_free(struct users *users)
{
    g_hash_table_destroy(users->by_uid);
    g_free(users);
}

int users_connections(const struct users *users)
{
    return users->connections;
}

static int64_t whole_room(const struct users *users)
{
    return users->limits->connects * CLOCK_SECOND;
}

/* In a second there comes room for as many connections as a user may make in it. */
static void fill(const struct users *users, struct user *user, int64_t now)
{
    const int64_t passed = CLAMP(now - user->filled, 0, CLOCK_SECOND);
    user->room = MIN(user->room + passed * users->limits->connects, whole_room(users));
    user->filled = now;
}

static struct user *find_or_add(struct users *users, uid_t uid, int64_t now)
{
    struct user *user = g_hash_table_lookup(users->by_uid, GUINT_TO_POINTER(uid));
    if (user == NULL) {
        user = g_new0(struct user, 1);
        user->room = whole_room(users);
        user->filled = now;
        g_hash_table_insert(users->by_uid, GUINT_TO_POINTER(uid), user);
    }
    return user;
}

static bool exceeds(struct excess *excess, const char *what, int64_t used, int64_t limit)
{
    if (used < limit) {
        return false;
    }
    *excess = (struct excess){what, used, limit};
    return true;
}

bool users_connect(struct users *users, uid_t uid, int64_t now, struct excess *excess)
{
    const struct limits *limits = users->limits;
    struct user *user = find_or_add(users, uid, now);
    fill(users, user, now);
    const int64_t made = (whole_room(users) - user->room + CLOCK_SECOND - 1) / CLOCK_SECOND;
    if (exceeds(excess, "new connections in a second made", made, limits->connects)) {
        return false;
    }
    /* A connection that another limit refuses counts as made, too. */
    user->room -= CLOCK_SECOND;
    if (exceeds(excess, "connections of all users used", users->connections, limits->clients) ||
        exceeds(excess, "connections used", user->connections, limits->clients_per_user)) {
        return false;
    }
    ++user->connections;
    ++users->connections;
    return true;
}

void users_disconnect(struct users *users, uid_t uid)
{
    struct user *user = g_hash_table_lookup(users->by_uid, GUINT_TO_POINTER(uid));
    --user->connections;
    --users->connections;
}

struct forgetting {
    const struct users *users;
    int64_t now;
};

static gboolean is_forgotten(gpointer key, gpointer value, gpointer data)
{
    (void)key;
    const struct forgetting *forgetting = data;
    struct user *user = value;
    fill(forgetting->users, user, forgetting->now);
    return user->connections == 0 && user->room == whole_room(forgetting->users);
}

void users_forget(struct users *users, int64_t now)
{
    struct forgetting forgetting = {users, now};
    g_hash_table_foreach_remove(users->by_uid, is_forgotten, &forgetting);
}
