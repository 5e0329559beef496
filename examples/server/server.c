/* SPDX-License-Identifier: Apache-2.0 */
#include "server.h"

#include <unistd.h>

#include <glib-unix.h>

#include "channel.h"
#include "clock.h"
#include "handlers.h"
#include "log.h"
#include "notices.h"

struct server {
    const struct service *service;
    struct listener *listener;
    GSourceFunc ended;
    gpointer data;
    struct users *users;
    struct notices *notices;
    GHashTable *connections; /* a set */
    GQueue held;             /* the connections whose answers wait for the commit */
    GQueue committed;        /* those whose answers may now be sent */
    GSource *accepting;      /* null while nobody is accepted */
    GSource *committing;     /* null if there is nothing to commit */
    GSource *alarm;
    int64_t due; /* when the alarm goes off */
    int64_t accept_again;
    int64_t stop_by; /* CLOCK_NEVER unless the server is stopping */
    uint8_t *buffer; /* for the packet that is being served */
};

/* A channel on the main loop. */
struct connection {
    GSource source;
    struct server *server;
    struct channel *channel;
    gpointer tag;
};

static void serve(struct connection *connection, GIOCondition ready);

static bool is_stopping(const struct server *server)
{
    return server->stop_by != CLOCK_NEVER;
}

guint server_count(const struct server *server)
{
    return g_hash_table_size(server->connections);
}

static void alarm_at(struct server *server, int64_t due)
{
    if (due < server->due) {
        server->due = due;
        g_source_set_ready_time(server->alarm, due);
    }
}

/* Ends a connection. */
static void drop(struct connection *connection)
{
    struct server *server = connection->server;
    g_queue_remove(&server->held, connection);
    g_queue_remove(&server->committed, connection);
    g_hash_table_remove(server->connections, connection);
    channel_free(connection->channel);
    connection->channel = NULL;
    alarm_at(server, clock_now() + CLOCK_SECOND); /* the user may be forgotten then */
    g_source_destroy(&connection->source);
    g_source_unref(&connection->source);
    if (is_stopping(server) && server_count(server) == 0) {
        server->ended(server->data);
    }
}

/* Tells the main loop what the connection waits for, and ends it if that is nothing. */
static void wait_or_drop(struct connection *connection)
{
    const struct channel *channel = connection->channel;
    const int64_t now = clock_now();
    if (channel->is_closing && channel->answers.length == 0) {
        drop(connection);
        return;
    }
    const unsigned in = channel_wants_packet(channel, now) ? G_IO_IN : 0;
    const unsigned out = channel_has_answers(channel) ? G_IO_OUT : 0;
    g_source_modify_unix_fd(&connection->source, connection->tag, (GIOCondition)(in | out));
    alarm_at(connection->server, channel_due(channel, now));
}

static void flush(struct connection *connection)
{
    if (channel_flush(connection->channel, clock_now())) {
        wait_or_drop(connection);
    } else {
        drop(connection);
    }
}

static void note_peer(struct server *server, const struct peer *peer, const struct excess *excess)
{
    notices_add(server->notices, peer, excess, clock_now());
    alarm_at(server, clock_now() + NOTICES_PERIOD);
}

static void note(struct connection *connection, const struct excess *excess)
{
    note_peer(connection->server, &connection->channel->peer, excess);
}

/* Queues a refusal that names a limit. */
static void queue_refusal(struct connection *connection, uint32_t number,
                          const struct excess *excess)
{
    char *text = excess_describe(excess);
    GBytes *refusal = exchange_seal_refusal(number, PROTOCOL_LIMIT, text);
    g_free(text);
    GQueue answers = G_QUEUE_INIT;
    if (refusal != NULL) {
        g_queue_push_tail(&answers, refusal);
    }
    channel_queue(connection->channel, &answers, clock_now());
}

/* The answers of this turn go out once its changes are durable, or are replaced by refusals. */
static gboolean commit(gpointer data)
{
    struct server *server = data;
    g_clear_pointer(&server->committing, g_source_unref);
    const bool is_done = policies_commit(server->service->policies);
    if (is_done) {
        handlers_publish_status(server->service->policies);
    }
    server->committed = server->held; /* a server that stops reads on, for the next commit */
    g_queue_init(&server->held);
    for (struct connection *connection = g_queue_pop_head(&server->committed); connection != NULL;
         connection = g_queue_pop_head(&server->committed)) {
        struct channel *channel = connection->channel;
        if (is_done) {
            channel_release(channel);
        } else {
            GBytes *refusal = exchange_seal_refusal(channel->held_number, PROTOCOL_NOT_STORED,
                                                    "the policies cannot be stored now");
            channel_release_refused(channel, refusal, clock_now());
        }
        serve(connection, (GIOCondition)0);
    }
    return G_SOURCE_REMOVE;
}

/* Other packets of this turn join the same commit. It comes before those of the next turn. */
static void commit_soon(struct server *server)
{
    if (server->committing == NULL) {
        server->committing = g_idle_source_new();
        /* A server that stops reads on after each commit. Its deadline must not wait for that. */
        if (!is_stopping(server)) {
            g_source_set_priority(server->committing, G_PRIORITY_HIGH);
        }
        g_source_set_callback(server->committing, commit, server, NULL);
        g_source_attach(server->committing, NULL);
    }
}

static void count_fault(struct connection *connection, uint32_t number)
{
    struct excess excess;
    const bool is_borne = channel_count_fault(connection->channel, clock_now(), &excess);
    note(connection, &excess);
    if (!is_borne) {
        queue_refusal(connection, number, &excess);
        connection->channel->is_closing = true;
    }
}

/* A refusal does not depend on the changes of this turn. */
static void queue_answers(struct connection *connection, struct exchange *exchange)
{
    struct server *server = connection->server;
    const guint answers = exchange->answers.length;
    channel_queue(connection->channel, &exchange->answers, clock_now());
    if (!policies_have_changed(server->service->policies)) {
        return;
    }
    if (exchange->reason == 0) {
        channel_hold(connection->channel, answers, exchange->number);
        g_queue_push_tail(&server->held, connection);
    }
    commit_soon(server);
}

/* Makes room in memory: ends the connection whose answers take most, but not this one. */
static void drop_greediest(struct server *server, const struct connection *except)
{
    struct connection *greediest = NULL;
    GHashTableIter connections;
    gpointer key = NULL;
    g_hash_table_iter_init(&connections, server->connections);
    while (g_hash_table_iter_next(&connections, &key, NULL)) {
        struct connection *connection = key;
        if (connection != except && connection->channel->queued > 0 &&
            (greediest == NULL || connection->channel->queued > greediest->channel->queued)) {
            greediest = connection;
        }
    }
    if (greediest != NULL) {
        const struct channel *channel = greediest->channel;
        const struct excess excess = {"bytes queued while memory is short", channel->queued,
                                      channel->limits->queued};
        note(greediest, &excess);
        drop(greediest);
    }
}

static void serve_packet(struct connection *connection, uint32_t length)
{
    const struct server *server = connection->server;
    struct exchange exchange = {.service = server->service, .peer = &connection->channel->peer};
    exchange_serve(&exchange, server->buffer, length);
    queue_answers(connection, &exchange);
    if (exchange.reason == PROTOCOL_LIMIT) {
        note(connection, &exchange.excess);
    }
    if (exchange.lacks_memory) {
        drop_greediest(connection->server, connection);
    }
    if (exchange.reason == PROTOCOL_MALFORMED) {
        count_fault(connection, exchange.number);
    }
}

static void refuse_long_packet(struct connection *connection, uint32_t length)
{
    const struct limits *limits = connection->server->service->limits;
    const uint32_t number = packet_number(connection->server->buffer, (uint32_t)limits->message);
    const struct excess excess = {"bytes in a message", length, limits->message};
    note(connection, &excess);
    queue_refusal(connection, number, &excess);
    count_fault(connection, number);
}

/* Reads one packet and serves it. Returns false if there was none. */
static bool read_packet(struct connection *connection)
{
    struct channel *channel = connection->channel;
    const struct server *server = connection->server;
    uint32_t length = 0;
    switch (packet_receive(channel->fd, server->buffer, (uint32_t)server->service->limits->message,
                           &length)) {
    case PACKET_LATER:
        return false;
    case PACKET_CLOSED:
        channel->is_closing = true; /* the peer may still read its answers */
        return false;
    case PACKET_TOO_LONG:
        channel_count_request(channel, clock_now());
        refuse_long_packet(connection, length);
        return true;
    case PACKET_DONE:
        channel_count_request(channel, clock_now());
        serve_packet(connection, length);
        return true;
    }
    return false;
}

/* Reads what is there, and nothing that comes later. */
static void read_last_packets(struct connection *connection)
{
    struct channel *channel = connection->channel;
    while (channel_wants_packet(channel, clock_now()) && read_packet(connection)) {}
    if (channel->held == 0 && channel->queued < channel->limits->queued) {
        channel->is_closing = true;
    }
}

static void serve(struct connection *connection, GIOCondition ready)
{
    struct channel *channel = connection->channel;
    const bool is_gone = (ready & (G_IO_HUP | G_IO_ERR)) != 0;
    if (is_stopping(connection->server)) {
        read_last_packets(connection);
    } else if (channel_wants_packet(channel, clock_now())) {
        if (is_gone || (ready & G_IO_IN) != 0) {
            read_packet(connection);
        }
    } else if (is_gone) {
        drop(connection);
        return;
    }
    flush(connection);
}

static gboolean dispatch_connection(GSource *source, GSourceFunc callback, gpointer data)
{
    (void)callback;
    (void)data;
    struct connection *connection = (struct connection *)(void *)source;
    serve(connection, g_source_query_unix_fd(source, connection->tag));
    return G_SOURCE_CONTINUE;
}

static void add_connection(struct server *server, int fd, const struct peer *peer)
{
    static GSourceFuncs functions = {.dispatch = dispatch_connection};
    GSource *source = g_source_new(&functions, sizeof(struct connection));
    struct connection *connection = (struct connection *)(void *)source;
    connection->server = server;
    connection->channel =
        channel_new(fd, peer, server->service->limits, server->users, clock_now());
    connection->tag = g_source_add_unix_fd(source, fd, G_IO_IN);
    g_hash_table_add(server->connections, connection);
    g_source_attach(source, NULL);
    wait_or_drop(connection);
}

/* Tells a client why it is refused. Its socket is new, so it takes one packet. */
static void turn_away(struct server *server, int fd, const struct peer *peer,
                      const struct excess *excess)
{
    char *text = excess_describe(excess);
    GBytes *refusal = exchange_seal_refusal(0, PROTOCOL_LIMIT, text);
    if (refusal != NULL) {
        gsize length = 0;
        const uint8_t *bytes = g_bytes_get_data(refusal, &length);
        packet_send(fd, bytes, (uint32_t)length);
        g_bytes_unref(refusal);
    }
    /* A socket that is closed with unread packets reports an error to its peer. */
    uint32_t length = 0;
    packet_receive(fd, server->buffer, (uint32_t)server->service->limits->message, &length);
    close(fd);
    g_free(text);
    note_peer(server, peer, excess);
}

static void admit(struct server *server, int fd)
{
    struct peer peer;
    if (!peer_of(fd, &peer)) {
        close(fd);
        return;
    }
    struct excess excess;
    if (!exchange_has_memory_for(0, &excess)) {
        turn_away(server, fd, &peer, &excess);
        drop_greediest(server, NULL);
    } else if (users_connect(server->users, peer.uid, clock_now(), &excess)) {
        add_connection(server, fd, &peer);
    } else {
        turn_away(server, fd, &peer, &excess);
    }
}

static void turn_away_without_descriptor(struct server *server, int fd)
{
    struct peer peer;
    if (!peer_of(fd, &peer)) {
        close(fd);
        return;
    }
    const int64_t limit = sysconf(_SC_OPEN_MAX);
    const struct excess excess = {"descriptors used", limit, limit};
    turn_away(server, fd, &peer, &excess);
}

/* Nobody is accepted for a second. */
static void pause_accepting(struct server *server)
{
    log_warn("no client can be accepted now");
    g_source_destroy(server->accepting);
    g_clear_pointer(&server->accepting, g_source_unref);
    server->accept_again = clock_now() + CLOCK_SECOND;
    alarm_at(server, server->accept_again);
}

/* Returns whether somebody was there. */
static bool accept_one(struct server *server)
{
    int fd = -1;
    const listener_result_t result = listener_accept(server->listener, &fd);
    switch (result) {
    case LISTENER_ACCEPTED:
        admit(server, fd);
        break;
    case LISTENER_FULL:
        turn_away_without_descriptor(server, fd);
        break;
    default:
        break;
    }
    const bool has_spare = listener_take_spare(server->listener);
    if (result == LISTENER_EXHAUSTED || (result == LISTENER_FULL && !has_spare)) {
        pause_accepting(server);
        return false;
    }
    return result != LISTENER_NOBODY;
}

static gboolean accept_in_turn(gint fd, GIOCondition ready, gpointer data)
{
    (void)fd;
    (void)ready;
    accept_one(data);
    return G_SOURCE_CONTINUE;
}

static void start_accepting(struct server *server)
{
    server->accept_again = CLOCK_NEVER;
    server->accepting = g_unix_fd_source_new(server->listener->fd, G_IO_IN);
    g_source_set_callback(server->accepting, (GSourceFunc)(void (*)(void))accept_in_turn, server,
                          NULL);
    g_source_attach(server->accepting, NULL);
}

/* The client is told which limit it has reached, unless it does not read. */
static void expire(struct connection *connection, const struct excess *excess)
{
    struct channel *channel = connection->channel;
    note(connection, excess);
    if (channel->queued > 0) {
        drop(connection);
        return;
    }
    queue_refusal(connection, 0, excess);
    channel->is_closing = true;
    flush(connection);
}

static void tick_connections(struct server *server, int64_t now)
{
    GList *connections = g_hash_table_get_keys(server->connections);
    for (const GList *cell = connections; cell != NULL; cell = cell->next) {
        struct connection *connection = cell->data;
        struct excess excess;
        if (now >= server->stop_by) {
            drop(connection);
        } else if (channel_has_expired(connection->channel, now, &excess)) {
            expire(connection, &excess);
        } else {
            wait_or_drop(connection);
        }
    }
    g_list_free(connections);
}

void server_tick(struct server *server)
{
    const int64_t now = clock_now();
    server->due = CLOCK_NEVER;
    g_source_set_ready_time(server->alarm, -1);
    if (now >= server->accept_again) {
        listener_take_spare(server->listener);
        start_accepting(server);
    }
    users_forget(server->users, now);
    notices_tick(server->notices, now);
    alarm_at(server, MIN(notices_due(server->notices), server->accept_again));
    alarm_at(server, server->stop_by);
    tick_connections(server, now);
}

static gboolean dispatch_alarm(GSource *source, GSourceFunc callback, gpointer data)
{
    (void)source;
    (void)callback;
    server_tick(data);
    return G_SOURCE_CONTINUE;
}

static gboolean no_callback(gpointer data)
{
    (void)data;
    return G_SOURCE_CONTINUE;
}

static void start_alarm(struct server *server)
{
    static GSourceFuncs functions = {.dispatch = dispatch_alarm};
    server->due = CLOCK_NEVER;
    server->alarm = g_source_new(&functions, sizeof(GSource));
    g_source_set_callback(server->alarm, no_callback, server, NULL);
    g_source_attach(server->alarm, NULL);
}

struct server *server_new(const struct service *service, struct listener *listener,
                          GSourceFunc ended, gpointer data)
{
    struct server *server = g_new0(struct server, 1);
    server->service = service;
    server->listener = listener;
    server->ended = ended;
    server->data = data;
    server->users = users_new(service->limits);
    server->notices = notices_new();
    server->connections = g_hash_table_new(g_direct_hash, g_direct_equal);
    server->buffer = g_malloc((gsize)service->limits->message);
    server->stop_by = CLOCK_NEVER;
    start_alarm(server);
    start_accepting(server);
    return server;
}

/* Clients that wait at systemd's socket are the next server's. Those at an own socket have no
 * other. More may keep coming, so their number is bounded. */
static void accept_last_clients(struct server *server)
{
    int left = server->service->limits->clients;
    while (left > 0 && server->accepting != NULL && accept_one(server)) {
        --left;
    }
}

static void stop_accepting(struct server *server)
{
    if (server->listener->path != NULL) {
        accept_last_clients(server);
    }
    if (server->accepting != NULL) {
        g_source_destroy(server->accepting);
        g_clear_pointer(&server->accepting, g_source_unref);
    }
    server->accept_again = CLOCK_NEVER;
    listener_close(server->listener);
}

void server_stop(struct server *server)
{
    if (is_stopping(server)) {
        return;
    }
    stop_accepting(server);
    server->stop_by = clock_now() + server->service->limits->stop_timeout * CLOCK_SECOND;
    alarm_at(server, server->stop_by);
    if (server_count(server) == 0) {
        server->ended(server->data);
        return;
    }
    GList *connections = g_hash_table_get_keys(server->connections);
    for (const GList *cell = connections; cell != NULL; cell = cell->next) {
        /* Another one's packet may have ended it, without memory. */
        if (g_hash_table_contains(server->connections, cell->data)) {
            serve(cell->data, (GIOCondition)0);
        }
    }
    g_list_free(connections);
}

void server_free(struct server *server)
{
    GList *connections = g_hash_table_get_keys(server->connections);
    server->stop_by = CLOCK_NEVER;
    for (const GList *cell = connections; cell != NULL; cell = cell->next) {
        drop(cell->data);
    }
    g_list_free(connections);
    if (server->committing != NULL) {
        g_source_destroy(server->committing);
        g_source_unref(server->committing);
    }
    if (server->accepting != NULL) {
        g_source_destroy(server->accepting);
        g_source_unref(server->accepting);
    }
    g_source_destroy(server->alarm);
    g_source_unref(server->alarm);
    g_hash_table_destroy(server->connections);
    notices_free(server->notices);
    users_free(server->users);
    g_free(server->buffer);
    g_free(server);
}
