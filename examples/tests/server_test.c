/* SPDX-License-Identifier: Apache-2.0 */
/* What the server answers, and what it bears. */
#include "tests/support.h"

#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <mdm/log.h>

#include "common/packet.h"
#include "server/channel.h"
#include "server/clock.h"
#include "tests/disk.h"

enum { OTHER_USER = 12345 };

typedef struct world world_t;

static void set_up(world_t *world, gconstpointer data)
{
    (void)data;
    world_init(world);
    world_start(world);
}

static void set_up_stopped(world_t *world, gconstpointer data)
{
    (void)data;
    world_init(world);
}

static void tear_down(world_t *world, gconstpointer data)
{
    (void)data;
    world_clear(world);
}

static void expect_log(const world_t *world, const char *format, ...) G_GNUC_PRINTF(2, 3);
static void expect_log(const world_t *world, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    char *line = g_strdup_vprintf(format, args);
    va_end(args);
    char *log = world_log(world);
    if (strstr(log, line) == NULL) {
        g_error("the log has no line \"%s\":\n%s", line, log);
    }
    g_free(log);
    g_free(line);
}

static void expect_no_log(const world_t *world, const char *text)
{
    char *log = world_log(world);
    g_assert_null(strstr(log, text));
    g_free(log);
}

/* The line about a limit, up to the program. */
static void expect_notice(const world_t *world, const char *excess)
{
    expect_log(world, "uid %lu: %s, refused pid %ld (", (unsigned long)geteuid(), excess,
               (long)getpid());
}

static void ask_for_policy(world_t *world, int fd, uint32_t discriminator, uint32_t result,
                           size_t size)
{
    mdm_msg_t request = {.hdr_byte = PROTOCOL_ASK, .hdr_word1 = 99};
    mdm_res_set_head(&request, discriminator);
    mdm_msg_t *answer = world_ask(world, fd, &request);
    g_assert_cmpuint(answer->type, ==, MDM_TYPE_RES_2);
    g_assert_cmpuint(answer->hdr_word1, ==, 99);
    g_assert_cmpuint(answer->hdr_word2, ==, result);
    g_assert_cmpint(answer->body.res.data_size, ==, (int)size);
    ipc_close(answer);
}

static void set_policy(world_t *world, int fd, uint32_t discriminator, size_t size)
{
    mdm_msg_t request = world_policy(1, discriminator, size);
    mdm_msg_t *answer = world_ask(world, fd, &request);
    g_assert_cmpuint(answer->type, ==, MDM_TYPE_RES_2);
    g_assert_cmpuint(answer->hdr_word2, ==, MDM_RESULT_SUCCESS);
    g_assert_cmpint(answer->body.res.data_size, ==, (int)size);
    ipc_close(answer);
}

static void send_lie(world_t *world, int fd)
{
    const uint8_t lie[12] = {[8] = 77};
    world_send_bytes(world, fd, lie, sizeof lie);
}

static void sets_and_asks(world_t *world, gconstpointer data)
{
    (void)data;
    const int fd = world_connect(world);
    world_register(world, fd, "com.example.agent");
    g_assert_cmpint(world_status, ==, 1);
    ask_for_policy(world, fd, 100, PROTOCOL_UNSET, 0);
    set_policy(world, fd, 100, 10);
    ask_for_policy(world, fd, 100, MDM_RESULT_SUCCESS, 10);
    ask_for_policy(world, fd, 101, PROTOCOL_UNSET, 0);
    set_policy(world, fd, 100, 0);
    ask_for_policy(world, fd, 100, MDM_RESULT_SUCCESS, 0);
    close(fd);
}

static void keeps_what_it_has_acknowledged(world_t *world, gconstpointer data)
{
    (void)data;
    const int before = world_connect(world);
    world_register(world, before, "com.example.agent");
    set_policy(world, before, 100, 10);
    world_crash(world);
    g_assert_true(world_is_closed(before));
    close(before);

    world_start(world);
    const int after = world_connect(world);
    ask_for_policy(world, after, 100, MDM_RESULT_SUCCESS, 10);
    close(after);
}

static void refuses_with_the_number_of_the_request(world_t *world, gconstpointer data)
{
    (void)data;
    const int fd = world_connect(world);
    mdm_msg_t request = world_policy(7, 1, 3);
    world_send(world, fd, &request);
    world_expect_refusal(fd, 7, PROTOCOL_NOT_REGISTERED, "this user has not registered a client");

    world_register(world, fd, "com.example.agent");
    request = world_policy(8, 1, 3);
    request.hdr_byte = 2;
    world_send(world, fd, &request);
    world_expect_refusal(fd, 8, PROTOCOL_NOT_SERVED, "neither sets nor asks");

    request = (mdm_msg_t){.hdr_word1 = 9};
    mdm_kiosk_set_head(&request, 1);
    world_send(world, fd, &request);
    char *text = g_strdup_printf("uid %lu may not ask for kiosk", (unsigned long)geteuid());
    world_expect_refusal(fd, 9, PROTOCOL_FORBIDDEN, text);
    g_free(text);

    request = (mdm_msg_t){.type = MDM_TYPE_RES_2, .hdr_word1 = 10};
    mdm_res_set_head(&request, 1);
    world_send(world, fd, &request);
    world_expect_refusal(fd, 10, PROTOCOL_NOT_SERVED, "no type of a request");

    uint8_t bare[40] = {[0] = 32, [4] = 79, [8] = 11};
    world_send_bytes(world, fd, bare, sizeof bare);
    world_expect_refusal(fd, 11, PROTOCOL_NOT_SERVED, "no type of a request");

    request = (mdm_msg_t){.hdr_word1 = 12};
    g_assert_true(mdm_admin_set_general(&request, ADMIN_REFUSED, 0, NULL, NULL));
    world_send(world, fd, &request);
    world_expect_refusal(fd, 12, PROTOCOL_NOT_SERVED, "no request of admin");

    request = (mdm_msg_t){.hdr_word1 = 13};
    g_assert_true(mdm_admin_set_general(&request, ADMIN_REGISTER, 0, "no_name", NULL));
    world_send(world, fd, &request);
    world_expect_refusal(fd, 13, PROTOCOL_INVALID, "no package name");

    const mdm_wifi_network_t nameless = {0};
    request = (mdm_msg_t){.hdr_word1 = 14};
    g_assert_true(mdm_wifi_set_network(&request, &nameless));
    world_send(world, fd, &request);
    world_expect_refusal(fd, 14, PROTOCOL_INVALID, "a network without a name");

    mdm_phone_res_detail_t detail = {.str2 = mdm_text("secret")};
    const mdm_phone_res_ext_t ext = {.detail = &detail};
    request = (mdm_msg_t){.hdr_word1 = 15};
    g_assert_true(mdm_phone_res_set_ext(&request, &ext));
    mdm_log_set_level(MDM_LOG_DEBUG);
    world_send(world, fd, &request);
    world_expect_refusal(fd, 15, PROTOCOL_INVALID, "no limit of data or calls");
    expect_no_log(world, "secret");
    close(fd);
}

/* What is refused is not stored. */
static void stores_no_refused_policy(world_t *world, gconstpointer data)
{
    (void)data;
    const int fd = world_connect(world);
    world_register(world, fd, "com.example.agent");
    const mdm_wifi_network_t nameless = {0};
    mdm_msg_t request = {.hdr_word1 = 1};
    g_assert_true(mdm_wifi_set_network(&request, &nameless));
    world_send(world, fd, &request);
    world_expect_refusal(fd, 1, PROTOCOL_INVALID, "a network without a name");

    request = (mdm_msg_t){.hdr_byte = PROTOCOL_ASK};
    mdm_wifi_set_head(&request, MDM_WIFI_NETWORK);
    mdm_msg_t *answer = world_ask(world, fd, &request);
    g_assert_cmpuint(answer->hdr_word2, ==, PROTOCOL_UNSET);
    ipc_close(answer);
    close(fd);
}

static void says_what_is_malformed(world_t *world, gconstpointer data)
{
    (void)data;
    world->limits.fault_delay = 0;
    const int fd = world_connect(world);
    const uint8_t byte = 1;
    world_send_bytes(world, fd, &byte, 1);
    world_expect_refusal(fd, 0, PROTOCOL_MALFORMED,
                         "header.length at offset 0 needs 4 bytes, 1 is left");
    send_lie(world, fd);
    world_expect_refusal(fd, 77, PROTOCOL_MALFORMED,
                         "header.length announces a message of 8 bytes, 12 are there");
    expect_notice(world, "1 of 16 malformed messages sent");
    close(fd);
}

static void calls_back_before_it_answers(world_t *world, gconstpointer data)
{
    (void)data;
    const int fd = world_connect(world);
    world_register(world, fd, "com.example.agent");
    GList *packages = g_list_append(NULL, mdm_text("abc"));
    mdm_msg_t request = {.hdr_word1 = 5};
    g_assert_true(mdm_app_set_packages(&request, MDM_APP_PACKAGES_4, packages));
    world_send(world, fd, &request);
    g_list_free(packages);

    mdm_msg_t *callback = world_receive(fd);
    g_assert_nonnull(callback);
    g_assert_cmpuint(callback->type, ==, MDM_TYPE_APP_CB);
    g_assert_cmpuint(callback->hdr_word1, ==, 5);
    ipc_close(callback);

    mdm_msg_t *answer = world_receive(fd);
    g_assert_nonnull(answer);
    g_assert_cmpuint(answer->type, ==, MDM_TYPE_APP_RES);
    g_assert_cmpuint(answer->hdr_word1, ==, 5);
    const GList *items = mdm_app_res_items(answer);
    g_assert_nonnull(items);
    const mdm_app_res_item_t *item = items->data;
    g_assert_cmpstr(item->name, ==, "abc");
    g_assert_cmpuint(item->value, ==, 3);
    g_assert_null(items->next);
    ipc_close(answer);
    close(fd);
}

static bool can_change_user(void)
{
    if (geteuid() == 0) {
        return true;
    }
    g_test_skip("only root can be another user");
    return false;
}

static void believes_the_kernel_alone(world_t *world, gconstpointer data)
{
    (void)data;
    if (!can_change_user()) {
        return;
    }
    const int own = world_connect(world);
    world_register(world, own, "com.example.agent");
    set_policy(world, own, 100, 10);

    const int other = world_connect_as(world, OTHER_USER);
    mdm_msg_t request = {.hdr_word1 = 1, .hdr_text = mdm_text("com.example.agent")};
    g_assert_true(mdm_admin_set_general(&request, ADMIN_REGISTER, 0, "com.example.agent", NULL));
    world_send(world, other, &request);
    world_expect_refusal(other, 1, PROTOCOL_FORBIDDEN, "another user has this package");

    request = (mdm_msg_t){.hdr_word1 = 2, .hdr_text = mdm_text("com.example.agent")};
    mdm_admin_set_query(&request, "com.example.agent", 1);
    mdm_msg_t *answer = world_ask(world, other, &request);
    g_assert_cmpint(mdm_admin_query(answer)->status, ==, 0);
    ipc_close(answer);

    world_register(world, other, "com.example.other");
    ask_for_policy(world, other, 100, PROTOCOL_UNSET, 0);
    set_policy(world, other, 100, 20);
    ask_for_policy(world, own, 100, MDM_RESULT_SUCCESS, 10);
    close(other);
    close(own);
}

static void bears_that_many_clients(world_t *world, gconstpointer data)
{
    (void)data;
    world->limits.clients = 3;
    world_start(world);
    const int first = world_connect(world);
    const int second = world_connect(world);
    const int third = world_connect(world);
    const int fourth = world_connect(world);
    world_expect_refusal(fourth, 0, PROTOCOL_LIMIT, "3 of 3 connections of all users used");
    g_assert_true(world_is_closed(fourth));
    expect_notice(world, "3 of 3 connections of all users used");
    close(fourth);
    world_register(world, third, "com.example.agent"); /* the others go on */

    close(first);
    world_run(world);
    const int fifth = world_connect(world);
    world_register(world, fifth, "com.example.agent");
    close(fifth);
    close(third);
    close(second);
}

static void bears_that_many_clients_of_a_user(world_t *world, gconstpointer data)
{
    (void)data;
    if (!can_change_user()) {
        return;
    }
    world->limits.clients_per_user = 2;
    world_start(world);
    const int first = world_connect(world);
    const int second = world_connect(world);
    const int third = world_connect(world);
    world_expect_refusal(third, 0, PROTOCOL_LIMIT, "2 of 2 connections used");
    expect_notice(world, "2 of 2 connections used");
    close(third);

    const int other = world_connect_as(world, OTHER_USER);
    world_register(world, other, "com.example.other");
    close(first);
    world_run(world);
    const int fourth = world_connect(world);
    world_register(world, fourth, "com.example.agent");
    close(fourth);
    close(other);
    close(second);
}

static void bears_that_many_connections_in_a_second(world_t *world, gconstpointer data)
{
    (void)data;
    world->limits.connects = 2;
    world_start(world);
    close(world_connect(world));
    close(world_connect(world));
    int refused = world_connect(world);
    world_expect_refusal(refused, 0, PROTOCOL_LIMIT, "2 of 2 new connections in a second made");
    close(refused);

    world_wait(world, CLOCK_SECOND / 2 - 1);
    refused = world_connect(world);
    world_expect_refusal(refused, 0, PROTOCOL_LIMIT, "2 of 2 new connections in a second made");
    close(refused);

    world_wait(world, 1);
    const int accepted = world_connect(world);
    world_register(world, accepted, "com.example.agent");
    close(accepted);
}

/* A message of the category res is 52 bytes longer than its policy. */
static void bears_messages_of_that_length(world_t *world, gconstpointer data)
{
    (void)data;
    enum { LIMIT = 1000, HEAD = 52 };
    world->limits.message = LIMIT;
    world->limits.fault_delay = 0;
    world_start(world);
    const int fd = world_connect(world);
    world_register(world, fd, "com.example.agent");
    set_policy(world, fd, 1, LIMIT - HEAD - 1);
    set_policy(world, fd, 1, LIMIT - HEAD);
    mdm_msg_t request = world_policy(31, 1, LIMIT - HEAD + 1);
    world_send(world, fd, &request);
    world_expect_refusal(fd, 31, PROTOCOL_LIMIT, "1001 of 1000 bytes in a message");
    expect_notice(world, "1001 of 1000 bytes in a message");
    ask_for_policy(world, fd, 1, MDM_RESULT_SUCCESS, LIMIT - HEAD);
    close(fd);
}

/* The client's text makes the answer longer than the request: a callback with it comes first. */
static void bears_answers_of_that_length(world_t *world, gconstpointer data)
{
    (void)data;
    enum { LIMIT = 1000, NAMES = 100 };
    world->limits.message = LIMIT;
    world_start(world);
    const int fd = world_connect(world);
    world_register(world, fd, "com.example.agent");
    GList *names = NULL;
    for (int i = 0; i < NAMES; ++i) {
        names = g_list_prepend(names, mdm_text("abc"));
    }
    mdm_msg_t request = {.hdr_word1 = 4};
    g_assert_true(mdm_app_set_packages(&request, MDM_APP_PACKAGES_4, names));
    world_send(world, fd, &request);
    g_list_free(names);
    world_expect_refusal(fd, 4, PROTOCOL_LIMIT, "1160 of 1000 bytes in the answer");
    g_assert_null(world_receive(fd)); /* no callback */
    close(fd);
}

static void bears_that_many_policies_of_a_user(world_t *world, gconstpointer data)
{
    (void)data;
    enum { LIMIT = 1000, NAME = 17 + POLICIES_CHARGE, HEAD = 52 + POLICIES_CHARGE };
    world->limits.policy = LIMIT;
    world_start(world);
    const int fd = world_connect(world);
    world_register(world, fd, "com.example.agent");
    const size_t left = LIMIT - NAME - HEAD;
    mdm_msg_t request = world_policy(1, 1, left + 1);
    world_send(world, fd, &request);
    world_expect_refusal(fd, 1, PROTOCOL_LIMIT, "1001 of 1000 bytes of policies needed");
    expect_notice(world, "1001 of 1000 bytes of policies needed");
    set_policy(world, fd, 1, left - 1);
    set_policy(world, fd, 1, left);
    ask_for_policy(world, fd, 1, MDM_RESULT_SUCCESS, left);

    request = world_policy(2, 2, 0);
    world_send(world, fd, &request);
    world_expect_refusal(fd, 2, PROTOCOL_LIMIT, "1116 of 1000 bytes of policies needed");
    set_policy(world, fd, 1, left - HEAD); /* gives room back */
    set_policy(world, fd, 2, 0);

    request = (mdm_msg_t){.hdr_word1 = 3};
    g_assert_true(mdm_admin_set_general(&request, ADMIN_REGISTER, 0, "a", NULL));
    world_send(world, fd, &request);
    world_expect_refusal(fd, 3, PROTOCOL_LIMIT, "1065 of 1000 bytes of policies needed");
    close(fd);
}

static void bears_that_many_malformed_messages(world_t *world, gconstpointer data)
{
    (void)data;
    world->limits.faults = 3;
    world->limits.fault_delay = 0;
    world_start(world);
    const int fd = world_connect(world);
    const char *fault = "header.length announces a message of 8 bytes, 12 are there";
    send_lie(world, fd);
    world_expect_refusal(fd, 77, PROTOCOL_MALFORMED, fault);
    send_lie(world, fd);
    world_expect_refusal(fd, 77, PROTOCOL_MALFORMED, fault);
    world_register(world, fd, "com.example.agent");
    send_lie(world, fd);
    world_expect_refusal(fd, 77, PROTOCOL_MALFORMED, fault);
    world_expect_refusal(fd, 77, PROTOCOL_LIMIT, "3 of 3 malformed messages sent");
    g_assert_true(world_is_closed(fd));
    g_assert_cmpuint(server_count(world->server), ==, 0);
    close(fd);
}

static void reads_on_some_time_after_a_malformed_message(world_t *world, gconstpointer data)
{
    (void)data;
    const int fd = world_connect(world);
    const int other = world_connect(world);
    world_register(world, fd, "com.example.agent");
    send_lie(world, fd);
    ipc_close(world_receive(fd));
    mdm_msg_t request = world_policy(1, 1, 1);
    world_send(world, fd, &request);
    g_assert_null(world_receive(fd));
    set_policy(world, other, 2, 2); /* the others do not wait */
    world_wait(world, 100 * CLOCK_MILLISECOND - 1);
    g_assert_null(world_receive(fd));
    world_wait(world, 1);
    mdm_msg_t *answer = world_receive(fd);
    g_assert_nonnull(answer);
    ipc_close(answer);
    close(other);
    close(fd);
}

static void drops_who_does_not_ask(world_t *world, gconstpointer data)
{
    (void)data;
    const int fd = world_connect(world);
    world_wait(world, 10 * CLOCK_SECOND - 1);
    g_assert_false(world_is_closed(fd));
    world_wait(world, 1);
    world_expect_refusal(fd, 0, PROTOCOL_LIMIT, "10 of 10 seconds without a request");
    g_assert_true(world_is_closed(fd));
    expect_notice(world, "10 of 10 seconds without a request");
    close(fd);
}

static void drops_who_asks_no_more(world_t *world, gconstpointer data)
{
    (void)data;
    const int fd = world_connect(world);
    world_wait(world, 9 * CLOCK_SECOND);
    world_register(world, fd, "com.example.agent");
    world_wait(world, 599 * CLOCK_SECOND);
    set_policy(world, fd, 1, 1);
    world_wait(world, 600 * CLOCK_SECOND - 1);
    g_assert_false(world_is_closed(fd));
    world_wait(world, 1);
    world_expect_refusal(fd, 0, PROTOCOL_LIMIT, "600 of 600 seconds between requests");
    g_assert_true(world_is_closed(fd));
    close(fd);
}

/* Sends requests until the server reads no more of them. Returns how many the server has read. */
static unsigned fill_answers(world_t *world, int fd, size_t size)
{
    mdm_msg_t request = world_policy(1, 1, size);
    uint32_t length = 0;
    uint8_t *bytes = ipc_seal(&request, &length, NULL);
    unsigned sent = 0;
    while (send(fd, bytes, length, MSG_DONTWAIT | MSG_NOSIGNAL) > 0) {
        ++sent;
        world_run(world);
    }
    g_free(bytes);
    return sent;
}

/* Both directions have a buffer in the kernel, and the queue is bounded. */
static void does_not_read_from_who_does_not_read(world_t *world, gconstpointer data)
{
    (void)data;
    enum { SIZE = 10000, LENGTH = SIZE + 52 };
    world->limits.queued = 50000;
    world_start(world);
    const int fd = world_connect(world);
    const int other = world_connect(world);
    world_register(world, other, "com.example.agent");
    const unsigned sent = fill_answers(world, fd, SIZE);
    set_policy(world, other, 2, 2); /* the others are served */

    unsigned received = 0;
    for (mdm_msg_t *answer = world_receive(fd); answer != NULL; answer = world_receive(fd)) {
        ++received;
        ipc_close(answer);
    }
    g_assert_cmpuint(received, <, sent);
    world_run(world);
    for (mdm_msg_t *answer = world_receive(fd); answer != NULL; answer = world_receive(fd)) {
        ++received;
        ipc_close(answer);
        world_run(world);
    }
    g_assert_cmpuint(received, ==, sent);
    close(other);
    close(fd);
}

/* Whether a channel with an answer of that size in its queue reads on. */
static bool reads_with(world_t *world, int64_t charge)
{
    const struct peer peer = {.uid = OTHER_USER};
    struct users *users = users_new(&world->limits);
    struct excess excess;
    g_assert_true(users_connect(users, peer.uid, world_time, &excess));
    struct channel *channel =
        channel_new(open("/dev/null", O_RDONLY | O_CLOEXEC), &peer, &world->limits, users, 0);
    GQueue answers = G_QUEUE_INIT;
    const gsize size = (gsize)(charge - CHANNEL_CHARGE);
    g_queue_push_tail(&answers, g_bytes_new_take(g_malloc(size), size));
    channel_queue(channel, &answers, 0);
    const bool reads = channel_wants_packet(channel, 0);
    channel_free(channel);
    g_assert_cmpint(users_connections(users), ==, 0);
    users_free(users);
    return reads;
}

static void reads_until_the_queue_is_full(world_t *world, gconstpointer data)
{
    (void)data;
    world->limits.queued = 1000;
    g_assert_true(reads_with(world, 999));
    g_assert_false(reads_with(world, 1000));
    g_assert_false(reads_with(world, 1001));
}

static void drops_who_does_not_read(world_t *world, gconstpointer data)
{
    (void)data;
    const int fd = world_connect(world);
    world_register(world, fd, "com.example.agent");
    fill_answers(world, fd, 10000);
    world_wait(world, 30 * CLOCK_SECOND - 1);
    g_assert_cmpuint(server_count(world->server), ==, 1);
    world_wait(world, 1);
    g_assert_cmpuint(server_count(world->server), ==, 0);
    expect_notice(world, "30 of 30 seconds without reading an answer");
    close(fd);
}

static void logs_once_a_minute(world_t *world, gconstpointer data)
{
    (void)data;
    world->limits.clients = 1;
    world_start(world);
    const int fd = world_connect(world);
    world_register(world, fd, "com.example.agent");
    for (int i = 0; i < 5; ++i) {
        close(world_connect(world));
    }
    char *log = world_log(world);
    char *first = strstr(log, "1 of 1 connections of all users used");
    g_assert_nonnull(first);
    g_assert_null(strstr(first + 1, "1 of 1 connections of all users used"));
    g_free(log);
    world_wait(world, 60 * CLOCK_SECOND);
    expect_log(world, "); 3 more in the last minute");
    close(fd);
}

static rlim_t set_descriptors(rlim_t most)
{
    struct rlimit limit;
    g_assert_cmpint(getrlimit(RLIMIT_NOFILE, &limit), ==, 0);
    const rlim_t old = limit.rlim_cur;
    limit.rlim_cur = most;
    g_assert_cmpint(setrlimit(RLIMIT_NOFILE, &limit), ==, 0);
    return old;
}

/* The lowest descriptor that is not open is the next one. */
static rlim_t next_descriptor(void)
{
    const int fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
    close(fd);
    return (rlim_t)fd;
}

static void turns_away_without_a_descriptor(world_t *world, gconstpointer data)
{
    (void)data;
    const int fd = world_connect(world);
    struct sockaddr_un address;
    g_assert_true(packet_address(&address, world->socket));
    const int late = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    const rlim_t old = set_descriptors(next_descriptor());
    g_assert_cmpint(connect(late, (const struct sockaddr *)&address, sizeof address), ==, 0);
    world_run(world);
    world_register(world, fd, "com.example.agent"); /* the others go on */
    set_descriptors(old);
    mdm_msg_t *refusal = world_receive(late);
    g_assert_nonnull(refusal);
    g_assert_nonnull(strstr(mdm_admin_general(refusal)->text, " descriptors used"));
    ipc_close(refusal);
    g_assert_true(world_is_closed(late));
    close(late);

    const int again = world_connect(world);
    world_register(world, again, "com.example.agent");
    close(again);
    close(fd);
}

static void goes_on_when_the_clock_jumps(world_t *world, gconstpointer data)
{
    (void)data;
    const int fd = world_connect(world);
    world_register(world, fd, "com.example.agent");
    world_time -= INT64_C(365) * 86400 * CLOCK_SECOND;
    set_policy(world, fd, 1, 1);
    world_wait(world, 0);
    g_assert_false(world_is_closed(fd));
    world_wait(world, INT64_C(730) * 86400 * CLOCK_SECOND);
    g_assert_true(server_count(world->server) == 0);
    close(fd);
    const int again = world_connect(world);
    ask_for_policy(world, again, 1, MDM_RESULT_SUCCESS, 1);
    close(again);
}

static void answers_what_is_there_when_it_stops(world_t *world, gconstpointer data)
{
    (void)data;
    const int fd = world_connect(world);
    const int idle = world_connect(world);
    world_register(world, fd, "com.example.agent");
    for (uint32_t number = 1; number <= 3; ++number) {
        mdm_msg_t request = world_policy(number, number, number);
        world_post(fd, &request);
    }
    server_stop(world->server);
    world_run(world);
    g_assert_true(world->has_ended);
    g_assert_true(world_is_closed(idle));
    g_assert_false(g_file_test(world->socket, G_FILE_TEST_EXISTS));
    for (uint32_t number = 1; number <= 3; ++number) {
        mdm_msg_t *answer = world_receive(fd);
        g_assert_nonnull(answer);
        g_assert_cmpuint(answer->hdr_word1, ==, number);
        ipc_close(answer);
    }
    g_assert_true(world_is_closed(fd));
    close(idle);
    close(fd);

    world_crash(world);
    world_start(world);
    const int after = world_connect(world);
    ask_for_policy(world, after, 3, MDM_RESULT_SUCCESS, 3);
    close(after);
}

static gboolean note_time(gpointer data)
{
    *(bool *)data = true;
    return G_SOURCE_REMOVE;
}

/* A server that stops commits again and again for a client who has sent much. Its deadline, which
 * stands for all other sources, comes in between. */
static void looks_at_its_deadline_while_it_stops(world_t *world, gconstpointer data)
{
    (void)data;
    const int fd = world_connect(world);
    world_register(world, fd, "com.example.agent");
    for (uint32_t number = 1; number <= 50; ++number) {
        mdm_msg_t request = world_policy(number, number, 10);
        world_post(fd, &request);
    }
    server_stop(world->server);
    bool is_over = false;
    g_timeout_add(0, note_time, &is_over);
    while (!is_over) {
        g_main_context_iteration(NULL, FALSE);
    }
    g_assert_false(world->has_ended);
    world_run(world);
    g_assert_true(world->has_ended);
    close(fd);
}

static void stops_in_spite_of_who_does_not_read(world_t *world, gconstpointer data)
{
    (void)data;
    const int fd = world_connect(world);
    world_register(world, fd, "com.example.agent");
    fill_answers(world, fd, 10000);
    server_stop(world->server);
    world_run(world);
    g_assert_false(world->has_ended);
    world_wait(world, 5 * CLOCK_SECOND - 1);
    g_assert_false(world->has_ended);
    world_wait(world, 1);
    g_assert_true(world->has_ended);
    close(fd);
}

/* A client may close its direction after its last request. */
static void answers_who_has_said_all(world_t *world, gconstpointer data)
{
    (void)data;
    const int fd = world_connect(world);
    world_register(world, fd, "com.example.agent");
    mdm_msg_t request = world_policy(1, 1, 1);
    world_post(fd, &request);
    g_assert_cmpint(shutdown(fd, SHUT_WR), ==, 0);
    world_run(world);
    mdm_msg_t *answer = world_receive(fd);
    g_assert_nonnull(answer);
    ipc_close(answer);
    g_assert_cmpuint(server_count(world->server), ==, 0);
    close(fd);
}

static void forgets_who_vanishes(world_t *world, gconstpointer data)
{
    (void)data;
    const int descriptors = count_descriptors();
    for (int i = 0; i < 20; ++i) {
        const int fd = world_connect(world);
        mdm_msg_t request = world_policy(1, 1, 100);
        world_post(fd, &request);
        close(fd);
    }
    world_run(world);
    g_assert_cmpuint(server_count(world->server), ==, 0);
    g_assert_cmpint(count_descriptors(), ==, descriptors);
}

/* What others changed in the same turn is taken back, too; a refusal stays what it is. */
static void says_that_nothing_could_be_stored(world_t *world, gconstpointer data)
{
    (void)data;
    const int fd = world_connect(world);
    const int other = world_connect(world);
    const int liar = world_connect(world);
    world_register(world, fd, "com.example.agent");
    disk_choose(DISK_IS_FULL, 1);
    mdm_msg_t request = world_policy(5, 1, 10);
    world_post(fd, &request);
    request = world_policy(6, 2, 10);
    world_post(other, &request);
    request = (mdm_msg_t){0};
    const uint8_t lie = 0;
    g_assert_cmpint(packet_send(liar, &lie, 1), ==, PACKET_DONE);
    world_run(world);
    world_expect_refusal(fd, 5, PROTOCOL_NOT_STORED, "the policies cannot be stored now");
    world_expect_refusal(other, 6, PROTOCOL_NOT_STORED, "the policies cannot be stored now");
    world_expect_refusal(liar, 0, PROTOCOL_MALFORMED,
                         "header.length at offset 0 needs 4 bytes, 1 is left");
    expect_log(world, "the database failed: database or disk is full");

    g_assert_true(mdm_admin_set_general(&request, ADMIN_REGISTER, 0, "com.example.more", NULL));
    world_send(world, fd, &request);
    ipc_close(world_receive(fd));
    g_assert_cmpint(world_status, ==, 1); /* the other name was taken back */

    disk_restore();
    ask_for_policy(world, fd, 1, PROTOCOL_UNSET, 0);
    set_policy(world, fd, 1, 10);
    close(liar);
    close(other);
    close(fd);
}

static void answers_who_waits_when_it_stops(world_t *world, gconstpointer data)
{
    (void)data;
    const int before = world_connect(world);
    world_register(world, before, "com.example.agent");
    const int fd = world_connect_unseen(world);
    mdm_msg_t request = world_policy(1, 1, 1);
    world_post(fd, &request);
    server_stop(world->server);
    world_run(world);
    mdm_msg_t *answer = world_receive(fd);
    g_assert_nonnull(answer);
    ipc_close(answer);
    close(fd);
    close(before);
}

/* The socket of a newcomer has no error, although his request was not served. */
static void refuses_a_newcomer_who_has_asked(world_t *world, gconstpointer data)
{
    (void)data;
    world->limits.clients = 1;
    world_start(world);
    const int first = world_connect(world);
    const int fd = world_connect_unseen(world);
    mdm_msg_t request = world_policy(1, 1, 1);
    world_post(fd, &request);
    world_run(world);
    uint8_t bytes[256];
    g_assert_cmpint(recv(fd, bytes, sizeof bytes, MSG_DONTWAIT), >, 0);
    close(fd);
    close(first);
}

static void accepts_again_after_a_while(world_t *world, gconstpointer data)
{
    (void)data;
    close(world->listener.spare);
    world->listener.spare = -1;
    const int fd = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    struct sockaddr_un address;
    g_assert_true(packet_address(&address, world->socket));
    const rlim_t old = set_descriptors(next_descriptor());
    g_assert_cmpint(connect(fd, (const struct sockaddr *)&address, sizeof address), ==, 0);
    world_run(world);
    set_descriptors(old);
    g_assert_cmpuint(server_count(world->server), ==, 0);
    world_wait(world, CLOCK_SECOND - 1);
    g_assert_cmpuint(server_count(world->server), ==, 0);
    world_wait(world, 1);
    world_register(world, fd, "com.example.agent");
    g_assert_cmpint(world->listener.spare, >=, 0);
    close(fd);
}

/* Runs the main loop for a while, as a program does. */
static void run_for(guint milliseconds)
{
    bool is_over = false;
    g_timeout_add(milliseconds, note_time, &is_over);
    while (!is_over) {
        g_main_context_iteration(NULL, TRUE);
    }
}

/* By the clock of the machine, with a margin for a slow one. */
static void looks_at_the_clock_by_itself(world_t *world, gconstpointer data)
{
    (void)data;
    const int64_t time = world_time;
    world_time = CLOCK_NEVER;
    world->limits.first_timeout = 1;
    world->limits.stop_timeout = 1;
    world_start(world);
    const int liar = world_connect(world);
    const int silent = world_connect(world);
    send_lie(world, liar);
    ipc_close(world_receive(liar));
    mdm_msg_t request = world_policy(1, 1, 1);
    world_post(liar, &request);
    run_for(500);
    world_expect_refusal(liar, 1, PROTOCOL_NOT_REGISTERED, "this user has not registered a client");
    world_register(world, liar, "com.example.agent");
    run_for(1000);
    world_expect_refusal(silent, 0, PROTOCOL_LIMIT, "1 of 1 seconds without a request");
    g_assert_true(world_is_closed(silent));

    fill_answers(world, liar, 10000);
    server_stop(world->server);
    run_for(1500);
    g_assert_true(world->has_ended);
    close(silent);
    close(liar);
    world_time = time;
}

/* A request whose head alone is answered, because no receiver reads the payload. */
static void answers_with_the_size_of_what_nobody_reads(world_t *world, gconstpointer data)
{
    (void)data;
    const int fd = world_connect(world);
    world_register(world, fd, "com.example.agent");
    mdm_msg_t request = {0};
    g_assert_true(mdm_browser_set_data(&request, 1, "12345", 5));
    mdm_msg_t *answer = world_ask(world, fd, &request);
    g_assert_cmpuint(answer->type, ==, MDM_TYPE_BROWSER_2);
    g_assert_cmpuint(answer->body.browser.param, ==, 5);
    g_assert_cmpint(answer->body.browser.data_size, ==, 0);
    ipc_close(answer);

    request = (mdm_msg_t){0};
    g_assert_true(mdm_enterprise_set_data(&request, 1, "123", 3));
    answer = world_ask(world, fd, &request);
    g_assert_cmpuint(answer->type, ==, MDM_TYPE_ENTERPRISE_2);
    g_assert_cmpuint(answer->body.enterprise.param, ==, 3);
    ipc_close(answer);

    request = (mdm_msg_t){0};
    mdm_app_set_head(&request, 77);
    request.body.app.pkg = mdm_text("com.example.game");
    answer = world_ask(world, fd, &request);
    g_assert_cmpuint(answer->type, ==, MDM_TYPE_APP_RES);
    g_assert_cmpint(answer->body.app_res.type, ==, 77);
    g_assert_cmpstr(answer->body.app_res.pkg, ==, "com.example.game");
    ipc_close(answer);

    const mdm_roaming_data_t roaming = {.name = mdm_text("data")};
    request = (mdm_msg_t){0};
    g_assert_true(mdm_roaming_set_record(&request, 3, &roaming));
    answer = world_ask(world, fd, &request);
    g_assert_cmpuint(answer->type, ==, MDM_TYPE_ROAMING_RES);
    g_assert_cmpuint(answer->body.roaming_res.type, ==, 3);
    ipc_close(answer);
    close(fd);
}

/* Raw bytes of phone_res 439 can be opened, but not sealed. The library's line about it would let
 * a client fill the log. */
static void refuses_quietly_what_cannot_be_sent_back(world_t *world, gconstpointer data)
{
    (void)data;
    const int fd = world_connect(world);
    world_register(world, fd, "com.example.agent");
    const uint8_t bytes[56] = {[0] = 48, [4] = 35, [8] = 9, [40] = 0xB7, [41] = 1, [48] = 4};
    world_send_bytes(world, fd, bytes, sizeof bytes);
    mdm_msg_t *refusal = world_receive(fd);
    g_assert_nonnull(refusal);
    g_assert_cmpuint(mdm_admin_general(refusal)->value, ==, PROTOCOL_INVALID);
    g_assert_nonnull(strstr(mdm_admin_general(refusal)->text, "phone_res.type"));
    ipc_close(refusal);
    expect_no_log(world, "Refused");
    close(fd);
}

static void logs_each_user(world_t *world, gconstpointer data)
{
    (void)data;
    if (!can_change_user()) {
        return;
    }
    world->limits.clients = 1;
    world_start(world);
    const int fd = world_connect(world);
    close(world_connect(world));
    close(world_connect_as(world, OTHER_USER));
    expect_log(world, "uid 0: 1 of 1 connections of all users used");
    expect_log(world, "uid 12345: 1 of 1 connections of all users used");
    close(fd);
}

#define ADD(name) g_test_add("/server/" #name, world_t, NULL, set_up, name, tear_down)
#define ADD_STOPPED(name) \
    g_test_add("/server/" #name, world_t, NULL, set_up_stopped, name, tear_down)

int main(int argc, char **argv)
{
    g_test_init(&argc, &argv, NULL);
    ADD(sets_and_asks);
    ADD(keeps_what_it_has_acknowledged);
    ADD(refuses_with_the_number_of_the_request);
    ADD(stores_no_refused_policy);
    ADD(says_what_is_malformed);
    ADD(calls_back_before_it_answers);
    ADD(believes_the_kernel_alone);
    ADD_STOPPED(bears_that_many_clients);
    ADD_STOPPED(bears_that_many_clients_of_a_user);
    ADD_STOPPED(bears_that_many_connections_in_a_second);
    ADD_STOPPED(bears_messages_of_that_length);
    ADD_STOPPED(bears_answers_of_that_length);
    ADD_STOPPED(bears_that_many_policies_of_a_user);
    ADD_STOPPED(bears_that_many_malformed_messages);
    ADD(reads_on_some_time_after_a_malformed_message);
    ADD(drops_who_does_not_ask);
    ADD(drops_who_asks_no_more);
    ADD_STOPPED(does_not_read_from_who_does_not_read);
    ADD_STOPPED(reads_until_the_queue_is_full);
    ADD(drops_who_does_not_read);
    ADD_STOPPED(logs_once_a_minute);
    ADD(turns_away_without_a_descriptor);
    ADD(goes_on_when_the_clock_jumps);
    ADD(answers_what_is_there_when_it_stops);
    ADD(looks_at_its_deadline_while_it_stops);
    ADD(stops_in_spite_of_who_does_not_read);
    ADD(answers_who_has_said_all);
    ADD(forgets_who_vanishes);
    ADD(says_that_nothing_could_be_stored);
    ADD(answers_who_waits_when_it_stops);
    ADD_STOPPED(refuses_a_newcomer_who_has_asked);
    ADD(accepts_again_after_a_while);
    ADD_STOPPED(looks_at_the_clock_by_itself);
    ADD(answers_with_the_size_of_what_nobody_reads);
    ADD(refuses_quietly_what_cannot_be_sent_back);
    ADD_STOPPED(logs_each_user);
    return g_test_run();
}
