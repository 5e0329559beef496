/* SPDX-License-Identifier: Apache-2.0 */
#include "policies.h"

#include <fcntl.h>
#include <string.h>
#include <unistd.h>

#include <sqlite3.h>

#include "log.h"

enum { VERSION = 1 };

typedef enum query {
    BEGIN,
    COMMIT,
    ROLLBACK,
    CHARGE,
    ADD_CHARGE,
    OWNER,
    REGISTER,
    COUNT,
    HAS_PACKAGE,
    SIZE,
    SET,
    GET,
    QUERIES,
} query_t;

static const char *const queries[QUERIES] = {
    [BEGIN] = "BEGIN",
    [COMMIT] = "COMMIT",
    [ROLLBACK] = "ROLLBACK",
    [CHARGE] = "SELECT bytes FROM charge WHERE uid = ?1",
    [ADD_CHARGE] = "INSERT INTO charge VALUES (?1, ?2)"
                   " ON CONFLICT DO UPDATE SET bytes = bytes + ?2",
    [OWNER] = "SELECT uid FROM package WHERE name = ?1",
    [REGISTER] = "INSERT INTO package VALUES (?1, ?2)",
    [COUNT] = "SELECT count(*) FROM package",
    [HAS_PACKAGE] = "SELECT 1 FROM package WHERE uid = ?1 LIMIT 1",
    [SIZE] = "SELECT length(message) FROM policy"
             " WHERE uid = ?1 AND type = ?2 AND discriminator = ?3",
    [SET] = "INSERT INTO policy VALUES (?1, ?2, ?3, ?4)"
            " ON CONFLICT DO UPDATE SET message = ?4",
    [GET] = "SELECT message FROM policy WHERE uid = ?1 AND type = ?2 AND discriminator = ?3",
};

/* The write-ahead log makes a commit one write and one wait for the disk. With the exclusive lock
 * another process cannot open the database. */
static const char *const settings = "PRAGMA locking_mode = EXCLUSIVE;"
                                    "PRAGMA journal_mode = WAL;"
                                    "PRAGMA synchronous = FULL;"
                                    "PRAGMA journal_size_limit = 4194304;"
                                    "PRAGMA temp_store = MEMORY;";

static const char *const schema =
    "BEGIN EXCLUSIVE;"
    "CREATE TABLE package (name TEXT PRIMARY KEY, uid INTEGER NOT NULL) WITHOUT ROWID;"
    "CREATE INDEX package_of ON package (uid);"
    "CREATE TABLE policy (uid INTEGER, type INTEGER, discriminator INTEGER,"
    " message BLOB NOT NULL, PRIMARY KEY (uid, type, discriminator)) WITHOUT ROWID;"
    "CREATE TABLE charge (uid INTEGER PRIMARY KEY, bytes INTEGER NOT NULL);"
    "PRAGMA user_version = 1;"
    "COMMIT;";

struct policies {
    const struct limits *limits;
    sqlite3 *database;
    sqlite3_stmt *statements[QUERIES];
    bool is_changing;
    bool has_failed; /* since the last commit */
    bool has_logged; /* that it failed, since the last commit that succeeded */
};

static int run_text(struct policies *policies, const char *text)
{
    return sqlite3_exec(policies->database, text, NULL, NULL, NULL);
}

static int read_version(void *data, int columns, char **values, char **names)
{
    (void)columns;
    (void)names;
    *(gint64 *)data = g_ascii_strtoll(values[0], NULL, 10);
    return 0;
}

/* A new file has version 0. */
static int prepare_schema(struct policies *policies)
{
    gint64 version = 0;
    const int result =
        sqlite3_exec(policies->database, "PRAGMA user_version", read_version, &version, NULL);
    if (result != SQLITE_OK || version == VERSION) {
        return result;
    }
    return version == 0 ? run_text(policies, schema) : SQLITE_MISMATCH;
}

static int prepare_queries(struct policies *policies)
{
    for (int i = 0; i < QUERIES; ++i) {
        const int result =
            sqlite3_prepare_v3(policies->database, queries[i], -1, SQLITE_PREPARE_PERSISTENT,
                               &policies->statements[i], NULL);
        if (result != SQLITE_OK) {
            return result;
        }
    }
    return SQLITE_OK;
}

/* Messages may hold secrets. The files that SQLite puts beside this one get its permissions. */
static void make_private_file(const char *path)
{
    const int fd = open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (fd >= 0) {
        close(fd);
    }
}

static int open_database(struct policies *policies, const char *path)
{
    make_private_file(path);
    int result = sqlite3_open_v2(path, &policies->database,
                                 SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, NULL);
    if (result == SQLITE_OK) {
        result = run_text(policies, settings);
    }
    if (result == SQLITE_OK) {
        result = prepare_schema(policies);
    }
    return result == SQLITE_OK ? prepare_queries(policies) : result;
}

static const char *reason_of(const struct policies *policies, int result)
{
    switch (result) {
    case SQLITE_BUSY:
        return "another process has it open";
    case SQLITE_MISMATCH:
        return "it was written by another version of this program";
    default:
        return policies->database != NULL ? sqlite3_errmsg(policies->database)
                                          : sqlite3_errstr(result);
    }
}

struct policies *policies_open(const char *path, const struct limits *limits, GError **error)
{
    struct policies *policies = g_new0(struct policies, 1);
    policies->limits = limits;
    const int result = open_database(policies, path);
    if (result == SQLITE_OK) {
        return policies;
    }
    g_set_error(error, G_FILE_ERROR, G_FILE_ERROR_FAILED, "%s: %s", path,
                reason_of(policies, result));
    policies_close(policies);
    return NULL;
}

void policies_close(struct policies *policies)
{
    for (int i = 0; i < QUERIES; ++i) {
        sqlite3_finalize(policies->statements[i]);
    }
    sqlite3_close(policies->database);
    g_free(policies);
}

/* A query that is ready for its next run. */
static sqlite3_stmt *ready(struct policies *policies, query_t query)
{
    sqlite3_stmt *statement = policies->statements[query];
    sqlite3_reset(statement);
    return statement;
}

/* A full disk fails each transaction. Only the first one is logged. */
static policies_result_t fail(struct policies *policies)
{
    if (!policies->has_logged) {
        policies->has_logged = true;
        log_error("the database failed: %s", sqlite3_errmsg(policies->database));
    }
    return POLICIES_FAILED;
}

/* Runs a query that changes something. If it fails, nothing more is changed until the end of the
 * transaction, which then takes all changes back. */
static policies_result_t run(struct policies *policies, sqlite3_stmt *statement)
{
    const bool is_done = !policies->has_failed && sqlite3_step(statement) == SQLITE_DONE;
    if (!is_done && !policies->has_failed) {
        policies->has_failed = true;
        fail(policies);
    }
    sqlite3_reset(statement);
    return is_done ? POLICIES_DONE : POLICIES_FAILED;
}

/* Runs a query for one number. */
static policies_result_t find_number(struct policies *policies, sqlite3_stmt *statement,
                                     gint64 *number)
{
    policies_result_t result = POLICIES_DONE;
    const int step = sqlite3_step(statement);
    if (step == SQLITE_ROW) {
        *number = sqlite3_column_int64(statement, 0);
    } else {
        result = step == SQLITE_DONE ? POLICIES_ABSENT : fail(policies);
    }
    sqlite3_reset(statement);
    return result;
}

static policies_result_t begin(struct policies *policies)
{
    if (policies->is_changing) {
        return POLICIES_DONE;
    }
    policies->is_changing = true;
    return run(policies, ready(policies, BEGIN));
}

bool policies_have_changed(const struct policies *policies)
{
    return policies->is_changing;
}

bool policies_commit(struct policies *policies)
{
    const bool is_done = run(policies, ready(policies, COMMIT)) == POLICIES_DONE;
    policies->has_failed = false;
    policies->is_changing = false;
    policies->has_logged = policies->has_logged && !is_done;
    /* Some failures have rolled back already. */
    if (!is_done && sqlite3_get_autocommit(policies->database) == 0) {
        run(policies, ready(policies, ROLLBACK));
        policies->has_failed = false;
    }
    return is_done;
}

/* Looks whether a user may store more. A smaller policy in place of a larger one always fits. */
static policies_result_t find_room(struct policies *policies, uid_t uid, gint64 more,
                                   struct excess *excess)
{
    gint64 used = 0;
    sqlite3_stmt *statement = ready(policies, CHARGE);
    sqlite3_bind_int64(statement, 1, uid);
    if (find_number(policies, statement, &used) == POLICIES_FAILED) {
        return POLICIES_FAILED;
    }
    if (more <= 0 || used + more <= policies->limits->policy) {
        return POLICIES_DONE;
    }
    *excess = (struct excess){"bytes of policies needed", used + more, policies->limits->policy};
    return POLICIES_LIMIT;
}

static policies_result_t charge(struct policies *policies, uid_t uid, gint64 more)
{
    sqlite3_stmt *statement = ready(policies, ADD_CHARGE);
    sqlite3_bind_int64(statement, 1, uid);
    sqlite3_bind_int64(statement, 2, more);
    return run(policies, statement);
}

policies_result_t policies_owner(struct policies *policies, const char *package, uid_t *uid)
{
    gint64 number = 0;
    sqlite3_stmt *statement = ready(policies, OWNER);
    sqlite3_bind_text(statement, 1, package, -1, SQLITE_TRANSIENT);
    const policies_result_t result = find_number(policies, statement, &number);
    *uid = (uid_t)number;
    return result;
}

static policies_result_t insert_package(struct policies *policies, uid_t uid, const char *package)
{
    sqlite3_stmt *statement = ready(policies, REGISTER);
    sqlite3_bind_text(statement, 1, package, -1, SQLITE_TRANSIENT);
    sqlite3_bind_int64(statement, 2, uid);
    return run(policies, statement);
}

policies_result_t policies_register(struct policies *policies, uid_t uid, const char *package,
                                    struct excess *excess)
{
    uid_t owner = 0;
    policies_result_t result = policies_owner(policies, package, &owner);
    if (result != POLICIES_ABSENT) {
        return result == POLICIES_DONE && owner != uid ? POLICIES_TAKEN : result;
    }
    const gint64 more = (gint64)strlen(package) + POLICIES_CHARGE;
    result = find_room(policies, uid, more, excess);
    if (result == POLICIES_DONE) {
        result = begin(policies);
    }
    if (result == POLICIES_DONE) {
        result = insert_package(policies, uid, package);
    }
    return result == POLICIES_DONE ? charge(policies, uid, more) : result;
}

policies_result_t policies_count(struct policies *policies, uint32_t *count)
{
    gint64 number = 0;
    const policies_result_t result = find_number(policies, ready(policies, COUNT), &number);
    *count = (uint32_t)number;
    return result;
}

policies_result_t policies_has_package(struct policies *policies, uid_t uid)
{
    gint64 one = 0;
    sqlite3_stmt *statement = ready(policies, HAS_PACKAGE);
    sqlite3_bind_int64(statement, 1, uid);
    return find_number(policies, statement, &one);
}

static sqlite3_stmt *ready_for_policy(struct policies *policies, query_t query, uid_t uid,
                                      uint8_t type, uint32_t discriminator)
{
    sqlite3_stmt *statement = ready(policies, query);
    sqlite3_bind_int64(statement, 1, uid);
    sqlite3_bind_int(statement, 2, type);
    sqlite3_bind_int64(statement, 3, discriminator);
    return statement;
}

static policies_result_t insert_policy(struct policies *policies, sqlite3_stmt *statement,
                                       const uint8_t *message, uint32_t length)
{
    sqlite3_bind_blob(statement, 4, message, (int)length, SQLITE_STATIC);
    const policies_result_t result = run(policies, statement);
    sqlite3_bind_null(statement, 4); /* the bytes are the caller's */
    return result;
}

policies_result_t policies_set(struct policies *policies, uid_t uid, uint8_t type,
                               uint32_t discriminator, const uint8_t *message, uint32_t length,
                               struct excess *excess)
{
    gint64 old = -POLICIES_CHARGE;
    sqlite3_stmt *size = ready_for_policy(policies, SIZE, uid, type, discriminator);
    policies_result_t result = find_number(policies, size, &old);
    if (result == POLICIES_FAILED) {
        return result;
    }
    const gint64 more = length - old;
    result = find_room(policies, uid, more, excess);
    if (result == POLICIES_DONE) {
        result = begin(policies);
    }
    if (result == POLICIES_DONE) {
        result = insert_policy(policies, ready_for_policy(policies, SET, uid, type, discriminator),
                               message, length);
    }
    return result == POLICIES_DONE ? charge(policies, uid, more) : result;
}

policies_result_t policies_get(struct policies *policies, uid_t uid, uint8_t type,
                               uint32_t discriminator, GBytes **message)
{
    sqlite3_stmt *statement = ready_for_policy(policies, GET, uid, type, discriminator);
    policies_result_t result = POLICIES_DONE;
    const int step = sqlite3_step(statement);
    if (step == SQLITE_ROW) {
        const void *bytes = sqlite3_column_blob(statement, 0);
        *message = g_bytes_new(bytes, (gsize)sqlite3_column_bytes(statement, 0));
    } else {
        result = step == SQLITE_DONE ? POLICIES_ABSENT : fail(policies);
    }
    sqlite3_reset(statement);
    return result;
}
