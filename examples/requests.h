/* SPDX-License-Identifier: Apache-2.0 */
/* One request of every category. */
#ifndef REQUESTS_H
#define REQUESTS_H

#include <stdbool.h>

/* The package name under which this client registers. */
extern const char own_name[];

/* Where the bytes of the last request stay; null for nowhere. */
extern const char *request_file;

/* Each of these functions sends a request over the channel, and shows the request and the answer.
 * They return false if the server can no longer be asked. */

/* Asks the server to register a client. */
bool ask_to_register(int fd, const char *pkg);

/* Asks whether a client is registered. */
bool ask_whether_registered(int fd, const char *pkg);

/* Sends one request of every category except admin. */
bool ask_every_category(int fd);

/* Receives and shows the answer of the server. */
bool receive_reply(int fd);

#endif
