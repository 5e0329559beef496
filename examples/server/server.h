/* SPDX-License-Identifier: Apache-2.0 */
/*
 * The server: accepts clients, reads their packets, and sends the answers. It runs on the default
 * main loop, with a source for each socket. In a turn of the loop it accepts at most one client and
 * serves at most one packet of each. What the packets of a turn change is committed at its end, all
 * at once; then their answers are sent.
 */
#ifndef SERVER_H
#define SERVER_H

#include <glib.h>

#include "exchange.h"
#include "listener.h"

struct server;

/* Starts to serve. `ended` is called once the server has stopped. Everything that is passed has to
 * stay until server_free(). */
struct server *server_new(const struct service *service, struct listener *listener,
                          GSourceFunc ended, gpointer data);

/* Stops: accepts those who already wait at an own socket, serves the packets that are there, sends
 * their answers, and ends. Takes at most the time of the option. Closes the listener. */
void server_stop(struct server *server);

/* Does what is due by the clock. The server calls it by itself. */
void server_tick(struct server *server);

/* The number of connections. */
guint server_count(const struct server *server);

void server_free(struct server *server);

#endif
