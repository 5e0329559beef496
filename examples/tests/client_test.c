/* SPDX-License-Identifier: Apache-2.0 */
/* The client's calls, and servers that answer late, falsely or not at all. */
#include <poll.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

#include <glib/gstdio.h>

#include <mdm/log.h>

#include "client/mdm_client.h"
#include "common/packet.h"
#include "common/protocol.h"

/* In milliseconds. */
enum { LONG = 10000, SHORT = 50 };
#define SHORT_IN_MICROSECONDS ((int64_t)SHORT * 1000)

/* A server in a thread of its own, which does what a test says. */
typedef struct stage {
    char *directory;
    char *socket;
    int listener;
    GThread *thread;
    mdm_client_t *client;
    GError *error;
} stage_t;

typedef void script_t(int listener);

static void set_up(stage_t *stage, gconstpointer data)
{
    (void)data;
    mdm_log_set_enabled(0);
    stage->directory = g_dir_make_tmp("mdm-client-XXXXXX", NULL);
    g_assert_nonnull(stage->directory);
    stage->socket = g_build_filename(stage->directory, "socket", NULL);
    stage->listener = -1;
    stage->client = mdm_client_new(stage->socket);
}

static void listen_now(stage_t *stage)
{
    struct sockaddr_un address;
    g_assert_true(packet_address(&address, stage->socket));
    stage->listener = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    g_assert_cmpint(bind(stage->listener, (const struct sockaddr *)&address, sizeof address), ==,
                    0);
    g_assert_cmpint(listen(stage->listener, 8), ==, 0);
}

struct play {
    script_t *script;
    int listener;
};

static gpointer play(gpointer data)
{
    const struct play *play = data;
    play->script(play->listener);
    g_free(data);
    return NULL;
}

static void start(stage_t *stage, script_t *script)
{
    if (stage->listener < 0) {
        listen_now(stage);
    }
    struct play *play_data = g_new0(struct play, 1);
    *play_data = (struct play){script, stage->listener};
    stage->thread = g_thread_new("server", play, play_data);
}

static void end(stage_t *stage)
{
    g_thread_join(stage->thread);
    stage->thread = NULL;
}

static void tear_down(stage_t *stage, gconstpointer data)
{
    (void)data;
    mdm_client_free(stage->client);
    g_clear_error(&stage->error);
    if (stage->listener >= 0) {
        close(stage->listener);
    }
    g_remove(stage->socket);
    g_assert_cmpint(g_rmdir(stage->directory), ==, 0);
    g_free(stage->socket);
    g_free(stage->directory);
}

static int accept_client(int listener)
{
    const int fd = accept4(listener, NULL, NULL, SOCK_CLOEXEC);
    g_assert_cmpint(fd, >=, 0);
    return fd;
}

/* Waits for a request. Returns its number; 0 if the client has closed the connection. */
static uint32_t read_request(int fd)
{
    struct pollfd socket = {.fd = fd, .events = POLLIN};
    g_assert_cmpint(poll(&socket, 1, LONG), ==, 1);
    uint8_t bytes[1024];
    uint32_t length = 0;
    return packet_receive(fd, bytes, sizeof bytes, &length) == PACKET_DONE
               ? packet_number(bytes, length)
               : 0;
}

static void send_message(int fd, mdm_msg_t *msg)
{
    uint32_t length = 0;
    uint8_t *bytes = ipc_seal(msg, &length, NULL);
    g_assert_nonnull(bytes);
    g_assert_cmpint(packet_send(fd, bytes, length), ==, PACKET_DONE);
    g_free(bytes);
}

static void answer(int fd, uint32_t number, uint32_t discriminator)
{
    mdm_msg_t msg = {.type = MDM_TYPE_RES_2, .hdr_word1 = number};
    mdm_res_set_head(&msg, discriminator);
    send_message(fd, &msg);
}

static void refuse(int fd, uint32_t number, const char *text)
{
    mdm_msg_t msg = {.type = MDM_TYPE_ADMIN_2, .hdr_word1 = number};
    g_assert_true(mdm_admin_set_general(&msg, ADMIN_REFUSED, PROTOCOL_LIMIT, NULL, text));
    send_message(fd, &msg);
}

/* The answer's discriminator, by which the tests know it. */
static uint32_t call(stage_t *stage, int timeout)
{
    mdm_msg_t request = {0};
    mdm_res_set_head(&request, 1);
    MDM_AUTO_CLOSE mdm_msg_t *msg =
        mdm_client_call(stage->client, &request, timeout, &stage->error);
    g_assert_true((msg == NULL) == (stage->error != NULL));
    return msg != NULL ? msg->body.res.type : 0;
}

static void expect_error(stage_t *stage, mdm_client_error_t code, const char *text)
{
    g_assert_error(stage->error, MDM_CLIENT_ERROR, (int)code);
    g_assert_cmpstr(stage->error->message, ==, text);
    g_clear_error(&stage->error);
}

static void answer_twice(int listener)
{
    const int fd = accept_client(listener);
    g_assert_cmpuint(read_request(fd), ==, 1);
    answer(fd, 1, 11);
    g_assert_cmpuint(read_request(fd), ==, 2);
    answer(fd, 1, 99); /* of another request */
    answer(fd, 2, 12);
    close(fd);
}

static void knows_its_answer_by_the_number(stage_t *stage, gconstpointer data)
{
    (void)data;
    start(stage, answer_twice);
    g_assert_cmpuint(call(stage, LONG), ==, 11);
    g_assert_cmpuint(call(stage, LONG), ==, 12);
    end(stage);
}

static void call_back(int listener)
{
    const int fd = accept_client(listener);
    const uint32_t number = read_request(fd);
    mdm_msg_t callback = {.hdr_word1 = number};
    g_assert_true(mdm_misc_cb_set_detail(&callback, MDM_MISC_CB_DETAIL_0, 1, 2, "done"));
    send_message(fd, &callback);
    answer(fd, number, 11);
    close(fd);
}

static void count(const mdm_msg_t *callback, void *user_data)
{
    g_assert_cmpuint(callback->type, ==, MDM_TYPE_MISC_CB);
    ++*(int *)user_data;
}

static void shows_callbacks(stage_t *stage, gconstpointer data)
{
    (void)data;
    int callbacks = 0;
    mdm_client_set_callback(stage->client, count, &callbacks);
    start(stage, call_back);
    g_assert_cmpuint(call(stage, LONG), ==, 11);
    g_assert_cmpint(callbacks, ==, 1);
    end(stage);
}

static void refuse_rudely(int listener)
{
    const int fd = accept_client(listener);
    refuse(fd, read_request(fd), "no\033[2J");
    close(fd);
}

static void says_why_it_is_refused(stage_t *stage, gconstpointer data)
{
    (void)data;
    start(stage, refuse_rudely);
    g_assert_cmpuint(call(stage, LONG), ==, 0);
    expect_error(stage, MDM_CLIENT_ERROR_REFUSED, "no\\033[2J");
    end(stage);
}

/* The request is unread, so the client's socket reports an error in front of the refusal. */
static void turn_away(int listener)
{
    const int fd = accept_client(listener);
    struct pollfd socket = {.fd = fd, .events = POLLIN};
    g_assert_cmpint(poll(&socket, 1, LONG), ==, 1);
    refuse(fd, 0, "1 of 1 connections used");
    close(fd);
}

static void says_why_it_is_turned_away(stage_t *stage, gconstpointer data)
{
    (void)data;
    start(stage, turn_away);
    g_assert_cmpuint(call(stage, LONG), ==, 0);
    expect_error(stage, MDM_CLIENT_ERROR_REFUSED, "1 of 1 connections used");
    end(stage);
}

static void answer_late(int listener)
{
    const int fd = accept_client(listener);
    const uint32_t first = read_request(fd);
    const uint32_t second = read_request(fd); /* sent when the first has timed out */
    answer(fd, first, 11);
    answer(fd, second, 12);
    close(fd);
}

static void does_not_wait_forever(stage_t *stage, gconstpointer data)
{
    (void)data;
    start(stage, answer_late);
    const int64_t began = g_get_monotonic_time();
    g_assert_cmpuint(call(stage, SHORT), ==, 0);
    g_assert_cmpint(g_get_monotonic_time() - began, >=, SHORT_IN_MICROSECONDS - 1000);
    expect_error(stage, MDM_CLIENT_ERROR_TIMEOUT, "no answer in time");
    g_assert_cmpuint(call(stage, LONG), ==, 12);
    end(stage);
}

static void hang_up(int listener)
{
    int fd = accept_client(listener);
    read_request(fd);
    close(fd);
    fd = accept_client(listener);
    answer(fd, read_request(fd), 11);
    close(fd);
}

static void sends_no_request_twice(stage_t *stage, gconstpointer data)
{
    (void)data;
    start(stage, hang_up);
    g_assert_cmpuint(call(stage, LONG), ==, 0);
    expect_error(stage, MDM_CLIENT_ERROR_LOST, "the server has closed the connection");
    g_assert_cmpuint(call(stage, LONG), ==, 11);
    end(stage);
}

static void answer_and_hang_up(int listener)
{
    for (uint32_t discriminator = 11; discriminator <= 12; ++discriminator) {
        const int fd = accept_client(listener);
        answer(fd, read_request(fd), discriminator);
        close(fd);
    }
}

static void connects_again(stage_t *stage, gconstpointer data)
{
    (void)data;
    start(stage, answer_and_hang_up);
    g_assert_cmpuint(call(stage, LONG), ==, 11);
    g_usleep(SHORT_IN_MICROSECONDS); /* the server has closed the connection by now */
    g_assert_cmpuint(call(stage, LONG), ==, 12);
    end(stage);
}

static void answer_once(int listener)
{
    const int fd = accept_client(listener);
    answer(fd, read_request(fd), 11);
    close(fd);
}

static gpointer listen_later(gpointer data)
{
    stage_t *stage = data;
    g_usleep(3 * SHORT_IN_MICROSECONDS);
    listen_now(stage);
    answer_once(stage->listener);
    return NULL;
}

static void waits_for_a_server(stage_t *stage, gconstpointer data)
{
    (void)data;
    g_assert_cmpuint(call(stage, SHORT), ==, 0);
    expect_error(stage, MDM_CLIENT_ERROR_CONNECT, "No such file or directory");
    stage->thread = g_thread_new("server", listen_later, stage);
    g_assert_cmpuint(call(stage, LONG), ==, 11);
    end(stage);
}

static void babble(int listener)
{
    const int fd = accept_client(listener);
    read_request(fd);
    g_assert_cmpint(packet_send(fd, (const uint8_t *)"babble", 6), ==, PACKET_DONE);
    close(fd);
}

static void believes_no_server(stage_t *stage, gconstpointer data)
{
    (void)data;
    start(stage, babble);
    g_assert_cmpuint(call(stage, LONG), ==, 0);
    expect_error(stage, MDM_CLIENT_ERROR_MALFORMED,
                 "header.length announces a message of 1650614634 bytes, 6 are there");
    end(stage);
}

static void turn_away_at_once(int listener)
{
    const int fd = accept_client(listener);
    refuse(fd, 0, "2 of 2 connections used");
    close(fd);
    const int again = accept_client(listener);
    close(again);
}

/* The client's connection has ended before it could ask. */
static void says_why_it_could_not_ask(stage_t *stage, gconstpointer data)
{
    (void)data;
    start(stage, turn_away_at_once);
    g_usleep(SHORT_IN_MICROSECONDS);
    const uint32_t answered = call(stage, LONG);
    g_assert_cmpuint(answered, ==, 0);
    expect_error(stage, MDM_CLIENT_ERROR_REFUSED, "2 of 2 connections used");
    struct sockaddr_un address;
    g_assert_true(packet_address(&address, stage->socket));
    const int fd = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    g_assert_cmpint(connect(fd, (const struct sockaddr *)&address, sizeof address), ==, 0);
    end(stage);
    close(fd);
}

static void needs_a_request_that_can_travel(stage_t *stage, gconstpointer data)
{
    (void)data;
    mdm_msg_t request = {0};
    g_assert_null(mdm_client_call(stage->client, &request, LONG, &stage->error));
    expect_error(stage, MDM_CLIENT_ERROR_INVALID, "header.type is no type that can be sent");
}

static void needs_a_short_path(stage_t *stage, gconstpointer data)
{
    (void)data;
    char *path = g_strnfill(108, '/');
    mdm_client_t *client = mdm_client_new(path);
    mdm_msg_t request = {0};
    mdm_res_set_head(&request, 1);
    g_assert_null(mdm_client_call(client, &request, LONG, &stage->error));
    expect_error(stage, MDM_CLIENT_ERROR_CONNECT, "the path is too long for a socket");
    mdm_client_free(client);
    g_free(path);
}

#define ADD(name) g_test_add("/client/" #name, stage_t, NULL, set_up, name, tear_down)

int main(int argc, char **argv)
{
    g_test_init(&argc, &argv, NULL);
    ADD(knows_its_answer_by_the_number);
    ADD(shows_callbacks);
    ADD(says_why_it_is_refused);
    ADD(says_why_it_is_turned_away);
    ADD(says_why_it_could_not_ask);
    ADD(does_not_wait_forever);
    ADD(sends_no_request_twice);
    ADD(connects_again);
    ADD(waits_for_a_server);
    ADD(believes_no_server);
    ADD(needs_a_request_that_can_travel);
    ADD(needs_a_short_path);
    return g_test_run();
}
