/* SPDX-License-Identifier: Apache-2.0 */
/*
 * What each user's connections are charged with: their number, and how fast they come. A user is
 * known while he has a connection, or has had one within the last second.
 */
#ifndef USERS_H
#define USERS_H

#include <stdbool.h>
#include <stdint.h>
#include <sys/types.h>

#include "limits.h"

struct users;

struct users *users_new(const struct limits *limits);
void users_free(struct users *users);

/* Charges a user with a new connection. Returns false and says which limit is reached. */
bool users_connect(struct users *users, uid_t uid, int64_t now, struct excess *excess);

/* Gives the charge for a connection back. */
void users_disconnect(struct users *users, uid_t uid);

/* Forgets the users that have no charge any more. */
void users_forget(struct users *users, int64_t now);

/* The number of connections of all users. */
int users_connections(const struct users *users);

#endif
