/* SPDX-License-Identifier: Apache-2.0 */
/* A policy of every category, as a client sets it. */
#ifndef REQUESTS_H
#define REQUESTS_H

#include <stdbool.h>

#include <mdm/guarded.h>

/* Looks at a request, which stays only for the call. Returns whether to go on. */
typedef bool (*requests_visit_t)(mdm_msg_t *request, void *user_data);

/* Shows one request of every category that has policies. Returns false if a visit did. */
bool requests_visit(requests_visit_t visit, void *user_data);

#endif
