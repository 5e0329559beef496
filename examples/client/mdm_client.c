/* SPDX-License-Identifier: Apache-2.0 */
#include "mdm_client.h"

#include <errno.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "common/packet.h"
#include "common/protocol.h"
#include "common/text.h"

enum {
    /* An answer may be as long as the longest message of the server. */
    BUFFER_SIZE = 131072,
    FIRST_PAUSE = 50, /* milliseconds */
    LONGEST_PAUSE = 2000,
};

struct mdm_client {
    char *path;
    int fd; /* -1 without a connection */
    uint32_t number;
    mdm_client_callback_t callback;
    void *callback_data;
    mdm_client_trace_t trace;
    void *trace_data;
    uint8_t *buffer;
};

GQuark mdm_client_error_quark(void)
{
    return g_quark_from_static_string("mdm-client-error");
}

mdm_client_t *mdm_client_new(const char *socket_path)
{
    mdm_client_t *client = g_new0(mdm_client_t, 1);
    client->path = g_strdup(socket_path);
    client->fd = -1;
    client->buffer = g_malloc(BUFFER_SIZE);
    return client;
}

static void disconnect(mdm_client_t *client)
{
    if (client->fd >= 0) {
        close(client->fd);
        client->fd = -1;
    }
}

void mdm_client_free(mdm_client_t *client)
{
    disconnect(client);
    g_free(client->buffer);
    g_free(client->path);
    g_free(client);
}

void mdm_client_set_callback(mdm_client_t *client, mdm_client_callback_t callback, void *user_data)
{
    client->callback = callback;
    client->callback_data = user_data;
}

void mdm_client_set_trace(mdm_client_t *client, mdm_client_trace_t trace, void *user_data)
{
    client->trace = trace;
    client->trace_data = user_data;
}

static mdm_msg_t *fail(GError **error, mdm_client_error_t code, const char *text)
{
    g_set_error_literal(error, MDM_CLIENT_ERROR, (int)code, text);
    return NULL;
}

static int64_t milliseconds(void)
{
    return g_get_monotonic_time() / 1000;
}

/* Returns false if the server cannot be reached now. */
static bool try_to_connect(mdm_client_t *client, const struct sockaddr_un *address)
{
    client->fd = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (client->fd < 0) {
        return false;
    }
    if (connect(client->fd, (const struct sockaddr *)address, sizeof *address) == 0) {
        return true;
    }
    const int reason = errno;
    disconnect(client);
    errno = reason;
    return false;
}

/* Clients that lost the same server do not come back all at once. */
static int64_t next_pause(int64_t pause)
{
    return MIN(pause * 2, LONGEST_PAUSE) - g_random_int_range(0, FIRST_PAUSE / 2);
}

static bool connect_until(mdm_client_t *client, int64_t deadline, GError **error)
{
    struct sockaddr_un address;
    if (!packet_address(&address, client->path)) {
        fail(error, MDM_CLIENT_ERROR_CONNECT, "the path is too long for a socket");
        return false;
    }
    int64_t pause = FIRST_PAUSE;
    while (client->fd < 0 && !try_to_connect(client, &address)) {
        const char *reason = g_strerror(errno);
        const int64_t left = deadline - milliseconds();
        if (left <= 0) {
            fail(error, MDM_CLIENT_ERROR_CONNECT, reason);
            return false;
        }
        g_usleep((gulong)MIN(pause, left) * 1000);
        pause = next_pause(pause);
    }
    return true;
}

/* Returns false when the time is over. */
static bool wait_for(const mdm_client_t *client, short events, int64_t deadline)
{
    struct pollfd socket = {.fd = client->fd, .events = events};
    int64_t left = deadline - milliseconds();
    while (left > 0) {
        if (poll(&socket, 1, (int)MIN(left, G_MAXINT)) > 0) {
            return true;
        }
        left = deadline - milliseconds();
    }
    return false;
}

static void trace(const mdm_client_t *client, bool is_sent, const uint8_t *bytes, uint32_t length)
{
    if (client->trace != NULL) {
        client->trace(is_sent, bytes, length, client->trace_data);
    }
}

static mdm_msg_t *fail_refused(GError **error, const mdm_msg_t *refusal)
{
    char *text = text_escaped(mdm_admin_general(refusal)->text);
    fail(error, MDM_CLIENT_ERROR_REFUSED, text);
    g_free(text);
    return NULL;
}

static bool is_refusal(const mdm_msg_t *msg)
{
    const mdm_admin_info_t *admin = mdm_admin_general(msg);
    return admin != NULL && admin->type == ADMIN_REFUSED;
}

/* Whether a message is the answer to the request. A refusal without a number may answer any
 * request: a newcomer is refused, or the packet was too short. Other messages may be the answers of
 * calls that have timed out. */
static bool is_answer(mdm_client_t *client, const mdm_msg_t *msg, uint32_t number)
{
    if (msg->hdr_word1 == 0 && is_refusal(msg)) {
        return true;
    }
    if (msg->hdr_word1 != number) {
        return false;
    }
    const bool is_callback = msg->type == MDM_TYPE_APP_CB || msg->type == MDM_TYPE_MISC_CB;
    if (is_callback && client->callback != NULL) {
        client->callback(msg, client->callback_data);
    }
    return !is_callback;
}

static packet_result_t receive(mdm_client_t *client, uint32_t *length)
{
    return packet_receive(client->fd, client->buffer, BUFFER_SIZE, length);
}

/* A server that turns a client away says why before it closes the new connection. */
static bool is_turned_away(mdm_client_t *client, GError **error)
{
    uint32_t length = 0;
    if (receive(client, &length) != PACKET_DONE) {
        return false;
    }
    MDM_AUTO_CLOSE mdm_msg_t *msg = ipc_open(client->buffer, length, NULL);
    if (msg == NULL || !is_refusal(msg)) {
        return false;
    }
    trace(client, false, client->buffer, length);
    fail_refused(error, msg);
    return true;
}

/* The connection may have ended since the last call, for example with the server. Nothing of the
 * request has then been sent, so a new connection may send it. A new one that ends at once is
 * followed by a pause. */
static bool send_until(mdm_client_t *client, const uint8_t *bytes, uint32_t length,
                       int64_t deadline, GError **error)
{
    bool is_new = client->fd < 0;
    while (connect_until(client, deadline, error)) {
        switch (packet_send(client->fd, bytes, length)) {
        case PACKET_DONE:
            trace(client, true, bytes, length);
            return true;
        case PACKET_LATER:
            if (!wait_for(client, POLLOUT, deadline)) {
                fail(error, MDM_CLIENT_ERROR_CONNECT, "the server takes no request");
                return false;
            }
            break;
        case PACKET_TOO_LONG:
            fail(error, MDM_CLIENT_ERROR_INVALID, "the request is too long for a packet");
            return false;
        case PACKET_CLOSED:
            if (is_new && is_turned_away(client, error)) {
                disconnect(client);
                return false;
            }
            disconnect(client);
            if (is_new && milliseconds() + FIRST_PAUSE >= deadline) {
                fail(error, MDM_CLIENT_ERROR_CONNECT, "the server closes each connection");
                return false;
            }
            g_usleep(is_new ? FIRST_PAUSE * 1000UL : 0);
            is_new = true;
            break;
        }
    }
    return false;
}

/* The next message. Null with `error` set if there is none. */
static mdm_msg_t *receive_until(mdm_client_t *client, int64_t deadline, GError **error)
{
    uint32_t length = 0;
    packet_result_t result = receive(client, &length);
    while (result == PACKET_LATER) {
        if (!wait_for(client, POLLIN, deadline)) {
            return fail(error, MDM_CLIENT_ERROR_TIMEOUT, "no answer in time");
        }
        result = receive(client, &length);
    }
    if (result == PACKET_CLOSED) {
        disconnect(client);
        return fail(error, MDM_CLIENT_ERROR_LOST, "the server has closed the connection");
    }
    if (result == PACKET_TOO_LONG) {
        return fail(error, MDM_CLIENT_ERROR_MALFORMED, "an answer that is too long");
    }
    trace(client, false, client->buffer, length);
    ipc_fault_t fault;
    mdm_msg_t *msg = ipc_open(client->buffer, length, &fault);
    if (msg == NULL) {
        char *reason = ipc_fault_describe(&fault);
        fail(error, MDM_CLIENT_ERROR_MALFORMED, reason);
        g_free(reason);
    }
    return msg;
}

mdm_msg_t *mdm_client_call_bytes(mdm_client_t *client, const uint8_t *bytes, uint32_t length,
                                 int timeout, GError **error)
{
    const int64_t deadline = milliseconds() + timeout;
    if (!send_until(client, bytes, length, deadline, error)) {
        return NULL;
    }
    const uint32_t number = packet_number(bytes, length);
    for (;;) {
        mdm_msg_t *msg = receive_until(client, deadline, error);
        if (msg == NULL) {
            return NULL;
        }
        if (is_answer(client, msg, number)) {
            if (!is_refusal(msg)) {
                return msg;
            }
            fail_refused(error, msg);
            ipc_close(msg);
            return NULL;
        }
        ipc_close(msg);
    }
}

mdm_msg_t *mdm_client_call(mdm_client_t *client, mdm_msg_t *request, int timeout, GError **error)
{
    request->hdr_word1 = ++client->number;
    ipc_fault_t fault;
    uint32_t length = 0;
    uint8_t *bytes = ipc_seal(request, &length, &fault);
    if (bytes == NULL) {
        char *reason = ipc_fault_describe(&fault);
        fail(error, MDM_CLIENT_ERROR_INVALID, reason);
        g_free(reason);
        return NULL;
    }
    mdm_msg_t *answer = mdm_client_call_bytes(client, bytes, length, timeout, error);
    g_free(bytes);
    return answer;
}
