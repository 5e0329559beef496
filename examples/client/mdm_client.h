/* SPDX-License-Identifier: Apache-2.0 */
/*
 * A client of the server: a piece to copy into a program. It needs common/packet.c, common/text.c,
 * common/protocol.h, GLib and the library.
 *
 *     mdm_client_t *client = mdm_client_new("/run/mdm/socket");
 *     mdm_msg_t request = {0};
 *     GError *error = NULL;
 *     if (mdm_res_set_data(&request, 100, "off", 3)) {
 *         MDM_AUTO_CLOSE mdm_msg_t *answer = mdm_client_call(client, &request, 1000, &error);
 *         ...
 *     }
 *     mdm_client_free(client);
 *
 * It uses the guarded path only: a server that lies, or somebody in its place, can do no harm.
 *
 * Thread safety: one thread at a time may use a client. Different threads may use different
 * clients.
 */
#ifndef MDM_CLIENT_H
#define MDM_CLIENT_H

#include <glib.h>

#include <mdm/guarded.h>

typedef struct mdm_client mdm_client_t;

#define MDM_CLIENT_ERROR (mdm_client_error_quark())

typedef enum mdm_client_error {
    /* The server refuses the request. The message is its reason, escaped. */
    MDM_CLIENT_ERROR_REFUSED,
    /* Nothing was sent: the request is no message that can travel. */
    MDM_CLIENT_ERROR_INVALID,
    /* Nothing was sent: in time there was no connection, or no room in its socket. */
    MDM_CLIENT_ERROR_CONNECT,
    /* The request was sent, but no answer came in time. The server may carry it out. */
    MDM_CLIENT_ERROR_TIMEOUT,
    /* The request was sent, and the connection ended before the answer. The server may have carried
     * it out. Setting a policy again does no harm. */
    MDM_CLIENT_ERROR_LOST,
    /* The answer is no message. */
    MDM_CLIENT_ERROR_MALFORMED,
} mdm_client_error_t;

GQuark mdm_client_error_quark(void);

/* Makes a client. It connects with its first call. */
mdm_client_t *mdm_client_new(const char *socket_path);
void mdm_client_free(mdm_client_t *client);

/* Sees the callbacks of the server: the messages that come before an answer. */
typedef void (*mdm_client_callback_t)(const mdm_msg_t *callback, void *user_data);
void mdm_client_set_callback(mdm_client_t *client, mdm_client_callback_t callback, void *user_data);

/* Sees each packet that the client sends or receives; for a log or a trace. */
typedef void (*mdm_client_trace_t)(bool is_sent, const uint8_t *bytes, uint32_t length,
                                   void *user_data);
void mdm_client_set_trace(mdm_client_t *client, mdm_client_trace_t trace, void *user_data);

/*
 * Sends a request and waits for its answer. The call connects if there is no connection. If the
 * server is not there, it tries again, first after 50 ms, then after longer and longer pauses. It
 * sends the request once.
 *
 * `request` is filled by the caller; the call writes its hdr_word1. `timeout` is in milliseconds.
 *
 * Returns the answer, which the caller releases with ipc_close(); null with `error` set otherwise.
 */
mdm_msg_t *mdm_client_call(mdm_client_t *client, mdm_msg_t *request, int timeout, GError **error)
    MDM_RELEASED_BY(ipc_close) MDM_WARN_UNUSED;

/* The same for bytes that need not be a message. Their number is that of their header. */
mdm_msg_t *mdm_client_call_bytes(mdm_client_t *client, const uint8_t *bytes, uint32_t length,
                                 int timeout, GError **error)
    MDM_RELEASED_BY(ipc_close) MDM_WARN_UNUSED;

#endif
