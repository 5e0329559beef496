/* SPDX-License-Identifier: Apache-2.0 */
/* One request of every category. */
#ifndef REQUESTS_H
#define REQUESTS_H

#include <stdbool.h>
#include <stdint.h>

/* The package name under which this client registers. */
extern char own_name[];

/* Each of these sends a request over the channel, shows it and what comes back. False when the
 * server can no longer be asked. */

bool ask_admin(int fd, uint32_t discriminator, char *pkg, char *text);

/* Every category but admin, one request each. */
bool ask_every_category(int fd);

/* Receives and shows what the server answers. */
bool receive_reply(int fd);

#endif
