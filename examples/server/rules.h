/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Which users may ask for which categories. The rules stand in a file of groups:
 *
 *     [uid 0]
 *     categories=all
 *
 *     [uid 10000-19999]
 *     categories=admin;wifi;vpn
 *
 *     [others]
 *     categories=none
 *
 * The first group that has the user decides. A user without a group may ask for nothing. To
 * register a client a user needs the category admin.
 */
#ifndef RULES_H
#define RULES_H

#include <stdbool.h>
#include <sys/types.h>

#include <glib.h>

#include <mdm/types.h>

struct rules;

/* Reads the file. Returns null and says what is wrong with which group. */
struct rules *rules_load(const char *path, GError **error);
void rules_free(struct rules *rules);

bool rules_allow(const struct rules *rules, uid_t uid, mdm_category_t category);

#endif
