/* SPDX-License-Identifier: Apache-2.0 */
/*
 * The state of the server: which packages are registered by whom, and the policies of each user.
 * It is an SQLite database in one file.
 *
 * Changes are collected until policies_commit() makes all of them durable at once, or none. If the
 * process or the machine stops at any point, the next start finds the state of the last commit.
 * The connections of a process see the changes at once.
 *
 * A user is charged for the bytes of his policies and package names, and for what the database
 * keeps with each of them.
 */
#ifndef POLICIES_H
#define POLICIES_H

#include <stdbool.h>
#include <stdint.h>
#include <sys/types.h>

#include "limits.h"

enum {
    /* What a user is charged for a policy or a name besides its bytes. */
    POLICIES_CHARGE = 64,
};

struct policies;

typedef enum policies_result {
    POLICIES_DONE,
    POLICIES_ABSENT, /* There is none. */
    POLICIES_TAKEN,  /* The package belongs to another user. */
    POLICIES_LIMIT,  /* The user has no room left. */
    POLICIES_FAILED, /* The database failed, and the log says why. */
} policies_result_t;

/* Opens the database, and makes it if it is not there. Returns null if it is broken, or if another
 * process has it open. */
struct policies *policies_open(const char *path, const struct limits *limits, GError **error);

/* Closes it without the changes that are not committed. */
void policies_close(struct policies *policies);

/* Registers a package name for a user. */
policies_result_t policies_register(struct policies *policies, uid_t uid, const char *package,
                                    struct excess *excess);

/* The user who has registered a package. */
policies_result_t policies_owner(struct policies *policies, const char *package, uid_t *uid);

/* Whether a user has registered a package: POLICIES_DONE or POLICIES_ABSENT. */
policies_result_t policies_has_package(struct policies *policies, uid_t uid);

/* How many packages are registered. */
policies_result_t policies_count(struct policies *policies, uint32_t *count);

/* Stores the message that sets a policy in place of the one that set it before. */
policies_result_t policies_set(struct policies *policies, uid_t uid, uint8_t type,
                               uint32_t discriminator, const uint8_t *message, uint32_t length,
                               struct excess *excess);

/* The message that set a policy. The caller releases it with g_bytes_unref(). */
policies_result_t policies_get(struct policies *policies, uid_t uid, uint8_t type,
                               uint32_t discriminator, GBytes **message);

/* Whether there are changes to commit. */
bool policies_have_changed(const struct policies *policies);

/* Returns false if one of the changes could not be stored. Then none of them was made. */
bool policies_commit(struct policies *policies);

#endif
