/* SPDX-License-Identifier: Apache-2.0 */
/*
 * A server in the process of the test, and sockets that talk to it. The clock stands still unless
 * the test moves it. Starting and stopping a world fails if it leaves a descriptor open.
 */
#ifndef SUPPORT_H
#define SUPPORT_H

#include <stdbool.h>
#include <stdint.h>
#include <sys/types.h>

#include <glib.h>

#include <mdm/guarded.h>

#include "server/server.h"

struct world {
    char *directory;
    char *socket;
    char *state;
    char *log;
    struct limits limits;
    struct rules *rules;
    struct service service;
    struct listener listener;
    struct server *server;
    bool has_ended;
    int descriptors;
};

/* Makes the directory, and sets the limits that hold by default. Every user may ask for everything
 * but kiosk. The log goes to a file alone. */
void world_init(struct world *world);

/* Starts the server, with the limits that the test has set. */
void world_start(struct world *world);

/* Ends the server at once, and removes everything. */
void world_clear(struct world *world);

/* Ends the server at once, as a crash would. world_start() starts another. */
void world_crash(struct world *world);

/* Runs the main loop until nothing happens any more. */
void world_run(struct world *world);

/* Moves the clock, and does what is then due. */
void world_wait(struct world *world, int64_t microseconds);

/* The clock of the test, in microseconds. CLOCK_NEVER stands for the clock of the machine. */
extern int64_t world_time;

/* The lines of the log. The caller releases them with g_free(). */
char *world_log(const struct world *world);

/* Connects, as this user or as another one, and lets the server accept. Returns a socket. The
 * server does not see the third one until the main loop runs. */
int world_connect(struct world *world);
int world_connect_as(struct world *world, uid_t uid);
int world_connect_unseen(const struct world *world);

/* Sends bytes in one packet, and lets the server serve them. */
void world_send_bytes(struct world *world, int fd, const uint8_t *bytes, uint32_t length);

/* Seals and sends a request. Only world_send() lets the server serve it. */
void world_post(int fd, mdm_msg_t *request);
void world_send(struct world *world, int fd, mdm_msg_t *request);

/* The next message of a socket. Null if there is none. */
mdm_msg_t *world_receive(int fd);

/* Sends a request and receives the answer. */
mdm_msg_t *world_ask(struct world *world, int fd, mdm_msg_t *request);

/* Whether the server has closed the connection. */
bool world_is_closed(int fd);

/* Receives a refusal, and compares its number, reason and text. */
void world_expect_refusal(int fd, uint32_t number, protocol_reason_t reason, const char *text);

/* Registers a client for the user of a socket. */
void world_register(struct world *world, int fd, const char *package);

/* A request of the category res that sets a policy of a number of bytes, which are static. */
mdm_msg_t world_policy(uint32_t number, uint32_t discriminator, size_t size);

/* The last status of registered clients that the server has written. */
extern int32_t world_status;

/* How many descriptors this process has open. */
int count_descriptors(void);

#endif
