/* SPDX-License-Identifier: Apache-2.0 */
/* What the database keeps: after crashes at every write, on a full disk, and when it is broken. */
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <glib/gstdio.h>
#include <sqlite3.h>

#include <mdm/log.h>

#include "server/policies.h"
#include "tests/disk.h"

enum { USER = 1000, OTHER_USER = 1001, TYPE = 33, ROUNDS = 6 };

static struct limits limits;

typedef struct files {
    char *directory;
    char *state;
} files_t;

static void set_up(files_t *files, gconstpointer data)
{
    (void)data;
    limits_init(&limits);
    files->directory = g_dir_make_tmp("mdm-policies-XXXXXX", NULL);
    g_assert_nonnull(files->directory);
    files->state = g_build_filename(files->directory, "policies.db", NULL);
}

static void tear_down(files_t *files, gconstpointer data)
{
    (void)data;
    char *log = g_strconcat(files->state, "-wal", NULL);
    g_remove(log);
    g_remove(files->state);
    g_assert_cmpint(g_rmdir(files->directory), ==, 0);
    g_free(log);
    g_free(files->state);
    g_free(files->directory);
}

static struct policies *open_policies(const files_t *files)
{
    GError *error = NULL;
    struct policies *policies = policies_open(files->state, &limits, &error);
    g_assert_no_error(error);
    return policies;
}

static policies_result_t set(struct policies *policies, uint32_t discriminator, const char *text)
{
    struct excess excess;
    return policies_set(policies, USER, TYPE, discriminator, (const uint8_t *)text,
                        (uint32_t)strlen(text), &excess);
}

/* The text of a policy, which the caller releases with g_free(); null if there is none. */
static char *get(struct policies *policies, uint32_t discriminator)
{
    GBytes *message = NULL;
    if (policies_get(policies, USER, TYPE, discriminator, &message) != POLICIES_DONE) {
        return NULL;
    }
    gsize size = 0;
    const char *bytes = g_bytes_get_data(message, &size);
    char *text = g_strndup(bytes, size);
    g_bytes_unref(message);
    return text;
}

static void expect(struct policies *policies, uint32_t discriminator, const char *text)
{
    char *found = get(policies, discriminator);
    g_assert_cmpstr(found, ==, text);
    g_free(found);
}

static void keeps_what_is_committed(files_t *files, gconstpointer data)
{
    (void)data;
    struct policies *policies = open_policies(files);
    g_assert_false(policies_have_changed(policies));
    g_assert_cmpint(set(policies, 1, "one"), ==, POLICIES_DONE);
    g_assert_true(policies_have_changed(policies));
    expect(policies, 1, "one");
    g_assert_true(policies_commit(policies));
    g_assert_false(policies_have_changed(policies));
    g_assert_cmpint(set(policies, 1, "two"), ==, POLICIES_DONE);
    g_assert_cmpint(set(policies, 2, "two"), ==, POLICIES_DONE);
    policies_close(policies);

    policies = open_policies(files);
    expect(policies, 1, "one");
    expect(policies, 2, NULL);
    policies_close(policies);
}

static void is_for_one_user_alone(files_t *files, gconstpointer data)
{
    (void)data;
    const mode_t old = umask(0);
    struct policies *policies = open_policies(files);
    umask(old);
    g_assert_cmpint(set(policies, 1, "one"), ==, POLICIES_DONE);
    g_assert_true(policies_commit(policies));
    char *names[] = {g_strdup(files->state), g_strconcat(files->state, "-wal", NULL)};
    for (size_t i = 0; i < G_N_ELEMENTS(names); ++i) {
        GStatBuf status;
        g_assert_cmpint(g_stat(names[i], &status), ==, 0);
        g_assert_cmpuint(status.st_mode & 07777, ==, 0600);
        g_free(names[i]);
    }
    policies_close(policies);
}

static void keeps_users_apart(files_t *files, gconstpointer data)
{
    (void)data;
    struct policies *policies = open_policies(files);
    g_assert_cmpint(set(policies, 1, "one"), ==, POLICIES_DONE);
    GBytes *message = NULL;
    g_assert_cmpint(policies_get(policies, OTHER_USER, TYPE, 1, &message), ==, POLICIES_ABSENT);
    g_assert_cmpint(policies_get(policies, USER, TYPE + 2, 1, &message), ==, POLICIES_ABSENT);
    g_assert_null(message);
    policies_close(policies);
}

static void registers_a_package_once(files_t *files, gconstpointer data)
{
    (void)data;
    struct policies *policies = open_policies(files);
    struct excess excess;
    uid_t owner = 0;
    uint32_t count = 0;
    g_assert_cmpint(policies_owner(policies, "a.b", &owner), ==, POLICIES_ABSENT);
    g_assert_cmpint(policies_has_package(policies, USER), ==, POLICIES_ABSENT);
    g_assert_cmpint(policies_register(policies, USER, "a.b", &excess), ==, POLICIES_DONE);
    g_assert_cmpint(policies_register(policies, USER, "a.b", &excess), ==, POLICIES_DONE);
    g_assert_cmpint(policies_register(policies, OTHER_USER, "a.b", &excess), ==, POLICIES_TAKEN);
    g_assert_cmpint(policies_register(policies, OTHER_USER, "A.b", &excess), ==, POLICIES_DONE);
    g_assert_cmpint(policies_owner(policies, "a.b", &owner), ==, POLICIES_DONE);
    g_assert_cmpuint(owner, ==, USER);
    g_assert_cmpint(policies_has_package(policies, USER), ==, POLICIES_DONE);
    g_assert_cmpint(policies_count(policies, &count), ==, POLICIES_DONE);
    g_assert_cmpuint(count, ==, 2);
    policies_close(policies);
}

static void charges_as_long_as_it_keeps(files_t *files, gconstpointer data)
{
    (void)data;
    limits.policy = 2 * POLICIES_CHARGE + 10;
    struct policies *policies = open_policies(files);
    g_assert_cmpint(set(policies, 1, "12345"), ==, POLICIES_DONE);
    g_assert_cmpint(set(policies, 2, "123456"), ==, POLICIES_LIMIT);
    g_assert_cmpint(set(policies, 2, "12345"), ==, POLICIES_DONE);
    g_assert_cmpint(set(policies, 3, ""), ==, POLICIES_LIMIT);
    g_assert_cmpint(set(policies, 1, ""), ==, POLICIES_DONE);
    g_assert_cmpint(set(policies, 2, "1234567890"), ==, POLICIES_DONE);
    g_assert_true(policies_commit(policies));
    policies_close(policies);

    limits.policy = 1; /* less than there is: only less is taken */
    policies = open_policies(files);
    g_assert_cmpint(set(policies, 2, "12345678901"), ==, POLICIES_LIMIT);
    g_assert_cmpint(set(policies, 2, "123456789"), ==, POLICIES_DONE);
    policies_close(policies);
}

static void opens_for_one_process(files_t *files, gconstpointer data)
{
    (void)data;
    struct policies *policies = open_policies(files);
    GError *error = NULL;
    g_assert_null(policies_open(files->state, &limits, &error));
    g_assert_nonnull(strstr(error->message, "policies.db: another process has it open"));
    g_clear_error(&error);
    policies_close(policies);
}

static void says_what_is_broken(files_t *files, gconstpointer data)
{
    (void)data;
    char *text = g_strnfill(8192, 'x');
    GError *error = NULL;
    g_assert_true(g_file_set_contents(files->state, text, -1, NULL));
    g_assert_null(policies_open(files->state, &limits, &error));
    g_assert_nonnull(strstr(error->message, "file is not a database"));
    g_clear_error(&error);
    g_free(text);

    sqlite3 *database = NULL;
    g_remove(files->state);
    g_assert_cmpint(sqlite3_open(files->state, &database), ==, SQLITE_OK);
    g_assert_cmpint(sqlite3_exec(database, "PRAGMA user_version = 2", NULL, NULL, NULL), ==,
                    SQLITE_OK);
    sqlite3_close(database);
    g_assert_null(policies_open(files->state, &limits, &error));
    g_assert_nonnull(strstr(error->message, "written by another version"));
    g_clear_error(&error);

    g_assert_null(policies_open("/nonexistent/policies.db", &limits, &error));
    g_assert_nonnull(strstr(error->message, "unable to open database file"));
    g_clear_error(&error);
}

/* Both policies of a round change together. */
static bool change(struct policies *policies, int round)
{
    char text[32];
    g_snprintf(text, sizeof text, "round %d", round);
    const bool is_set =
        set(policies, 1, text) == POLICIES_DONE && set(policies, 2, text) == POLICIES_DONE;
    return policies_commit(policies) && is_set;
}

/* Changes the policies, and tells of each round that is committed. */
static void change_and_tell(const files_t *files, int tell)
{
    struct policies *policies = policies_open(files->state, &limits, NULL);
    if (policies == NULL) {
        _exit(2);
    }
    for (int round = 1; round <= ROUNDS; ++round) {
        if (change(policies, round) && write(tell, "", 1) != 1) {
            _exit(3);
        }
    }
    policies_close(policies); /* moves the log into the database */
    _exit(0);
}

/* Returns how many rounds the child has committed; `is_whole` tells whether it came to its end. */
static int run_child(const files_t *files, unsigned writes, disk_fate_t fate, bool *is_whole)
{
    int ends[2];
    g_assert_cmpint(pipe(ends), ==, 0);
    const pid_t child = fork();
    if (child == 0) {
        disk_choose(fate, writes);
        change_and_tell(files, ends[1]);
    }
    close(ends[1]);
    int committed = 0;
    char byte = 0;
    while (read(ends[0], &byte, 1) == 1) {
        ++committed;
    }
    close(ends[0]);
    int status = 0;
    g_assert_cmpint(waitpid(child, &status, 0), ==, child);
    *is_whole = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    g_assert_true(*is_whole || (WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL));
    return committed;
}

/* The rounds that the database has: the same for both policies. */
static int rounds_in(const files_t *files)
{
    struct policies *policies = open_policies(files);
    char *one = get(policies, 1);
    char *other = get(policies, 2);
    g_assert_cmpstr(one, ==, other);
    const int rounds = one != NULL ? (int)strtol(one + strlen("round "), NULL, 10) : 0;
    g_free(one);
    g_free(other);
    policies_close(policies);
    return rounds;
}

static void kill_at_every_write(files_t *files, disk_fate_t fate)
{
    bool is_whole = false;
    unsigned writes = 0;
    while (!is_whole) {
        ++writes;
        char *log = g_strconcat(files->state, "-wal", NULL);
        g_remove(log);
        g_remove(files->state);
        g_free(log);
        const int committed = run_child(files, writes, fate, &is_whole);
        const int found = rounds_in(files);
        /* A round may be whole, although the process died before it could tell. */
        g_assert_cmpint(found, >=, committed);
        g_assert_cmpint(found, <=, committed + 1);
    }
    g_assert_cmpint(rounds_in(files), ==, ROUNDS);
    g_test_message("killed at each of %u writes", writes - 1);
    g_assert_cmpuint(writes, >, (unsigned)(2 * ROUNDS));
}

static void is_never_half_if_killed_before_a_write(files_t *files, gconstpointer data)
{
    (void)data;
    kill_at_every_write(files, DISK_KILLS);
}

static void is_never_half_if_killed_in_a_write(files_t *files, gconstpointer data)
{
    (void)data;
    kill_at_every_write(files, DISK_KILLS_HALFWAY);
}

/* The disk is full from some write on. When there is room again, changes are taken again. Returns
 * how many rounds were committed before. */
static int fill_disk_at(const files_t *files, unsigned writes)
{
    struct policies *policies = open_policies(files);
    g_assert_true(change(policies, 1));
    disk_choose(DISK_IS_FULL, writes);
    int committed = 1;
    while (committed < ROUNDS && change(policies, committed + 1)) {
        ++committed;
    }
    char expected[32];
    g_snprintf(expected, sizeof expected, "round %d", committed);
    expect(policies, 1, expected);
    expect(policies, 2, expected);
    g_assert_false(policies_have_changed(policies));
    disk_restore();
    g_assert_true(change(policies, ROUNDS));
    policies_close(policies);
    g_assert_cmpint(rounds_in(files), ==, ROUNDS);
    return committed;
}

static void takes_back_what_a_full_disk_refuses(files_t *files, gconstpointer data)
{
    (void)data;
    mdm_log_set_enabled(0);
    unsigned writes = 1;
    g_assert_cmpint(fill_disk_at(files, writes), ==, 1);
    while (fill_disk_at(files, ++writes) < ROUNDS) {
        g_assert_cmpuint(writes, <, 1000);
    }
    g_assert_cmpuint(writes, >, ROUNDS);
    mdm_log_set_enabled(1);
}

/* A large policy does not fit into the cache, so it is written before the commit. */
static void changes_nothing_after_a_failure(files_t *files, gconstpointer data)
{
    (void)data;
    enum { LARGE = 16 << 20 };
    mdm_log_set_enabled(0);
    limits.policy = 2 * LARGE;
    struct policies *policies = open_policies(files);
    g_assert_true(change(policies, 1));
    char *large = g_strnfill(LARGE, 'x');
    disk_choose(DISK_IS_FULL_ONCE, 1);
    g_assert_cmpint(set(policies, 1, large), ==, POLICIES_FAILED);
    g_assert_cmpint(set(policies, 3, "more"), ==, POLICIES_FAILED);
    g_assert_false(policies_commit(policies));
    expect(policies, 1, "round 1");
    expect(policies, 3, NULL);
    g_assert_true(change(policies, 2));
    g_free(large);
    policies_close(policies);
    mdm_log_set_enabled(1);
}

#define ADD(name) g_test_add("/policies/" #name, files_t, NULL, set_up, name, tear_down)

int main(int argc, char **argv)
{
    g_test_init(&argc, &argv, NULL);
    ADD(keeps_what_is_committed);
    ADD(is_for_one_user_alone);
    ADD(keeps_users_apart);
    ADD(registers_a_package_once);
    ADD(charges_as_long_as_it_keeps);
    ADD(opens_for_one_process);
    ADD(says_what_is_broken);
    ADD(is_never_half_if_killed_before_a_write);
    ADD(is_never_half_if_killed_in_a_write);
    ADD(takes_back_what_a_full_disk_refuses);
    ADD(changes_nothing_after_a_failure);
    return g_test_run();
}
