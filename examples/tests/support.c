/* SPDX-License-Identifier: Apache-2.0 */
#include "tests/support.h"

#include <errno.h>
#include <poll.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

#include <glib/gstdio.h>

#include <mdm/log.h>
#include <mdm/noti.h>

#include "common/packet.h"
#include "server/clock.h"

/* Far in the future of the real clock, so that the server's alarm does not go off by itself. */
int64_t world_time = INT64_C(1) << 60;

int64_t clock_now(void)
{
    return world_time != CLOCK_NEVER ? world_time : g_get_monotonic_time();
}

int32_t world_status;

/* In place of the library's: the tests leave the statuses of the machine alone. */
int32_t mdm_write_noti(const char *noti, int32_t status)
{
    g_assert_cmpstr(noti, ==, PROTOCOL_STATUS_CLIENTS);
    world_status = status;
    return MDM_RESULT_SUCCESS;
}

int count_descriptors(void)
{
    int count = 0;
    GDir *directory = g_dir_open("/proc/self/fd", 0, NULL);
    g_assert_nonnull(directory);
    while (g_dir_read_name(directory) != NULL) {
        ++count;
    }
    g_dir_close(directory);
    return count;
}

static char *in_world(const struct world *world, const char *name)
{
    return g_build_filename(world->directory, name, NULL);
}

static struct rules *make_rules(const struct world *world)
{
    const char text[] = "[others]\n"
                        "categories=admin;pwd;security;wifi;bluetooth;eas;app;roaming;misc;apn;"
                        "browser;date_time;remote;vpn;firewall;res;phone_res;enterprise;email;"
                        "container;location;log_manager;platform\n";
    char *path = in_world(world, "rules");
    GError *error = NULL;
    g_file_set_contents(path, text, -1, &error);
    g_assert_no_error(error);
    struct rules *rules = rules_load(path, &error);
    g_assert_no_error(error);
    g_free(path);
    return rules;
}

void world_init(struct world *world)
{
    g_main_context_default(); /* has a descriptor of its own */
    *world = (struct world){.descriptors = count_descriptors()};
    world->directory = g_dir_make_tmp("mdm-server-XXXXXX", NULL);
    g_assert_nonnull(world->directory);
    g_assert_cmpint(g_chmod(world->directory, 0755), ==, 0);
    world->socket = in_world(world, "socket");
    world->state = in_world(world, "policies.db");
    world->log = in_world(world, "log");
    limits_init(&world->limits);
    world->rules = make_rules(world);
    mdm_log_set_level(MDM_LOG_WARN);
    mdm_log_set_path(world->log);
}

static gboolean note_end(gpointer data)
{
    struct world *world = data;
    world->has_ended = true;
    return G_SOURCE_REMOVE;
}

void world_start(struct world *world)
{
    const struct listener_options options = {
        .path = world->socket, .mode = 0666, .directory_mode = 0755};
    GError *error = NULL;
    world->service = (struct service){&world->limits, world->rules, NULL};
    world->service.policies = policies_open(world->state, &world->limits, &error);
    g_assert_no_error(error);
    g_assert_true(listener_open(&world->listener, &options, &error));
    g_assert_no_error(error);
    world->server = server_new(&world->service, &world->listener, note_end, world);
}

void world_crash(struct world *world)
{
    server_free(world->server);
    world->server = NULL;
    policies_close(world->service.policies);
    g_clear_pointer(&world->listener.path, g_free); /* the socket stays */
    listener_close(&world->listener);
}

static void remove_all(const struct world *world)
{
    GDir *directory = g_dir_open(world->directory, 0, NULL);
    for (const char *name = g_dir_read_name(directory); name != NULL;
         name = g_dir_read_name(directory)) {
        char *path = in_world(world, name);
        g_remove(path);
        g_free(path);
    }
    g_dir_close(directory);
    g_assert_cmpint(g_rmdir(world->directory), ==, 0);
}

void world_clear(struct world *world)
{
    if (world->server != NULL) {
        world_crash(world);
    }
    mdm_log_set_path(NULL);
    rules_free(world->rules);
    remove_all(world);
    g_free(world->log);
    g_free(world->state);
    g_free(world->socket);
    g_free(world->directory);
    g_assert_cmpint(count_descriptors(), ==, world->descriptors);
}

void world_run(struct world *world)
{
    (void)world;
    while (g_main_context_iteration(NULL, FALSE)) {}
}

void world_wait(struct world *world, int64_t microseconds)
{
    world_time += microseconds;
    server_tick(world->server);
    world_run(world);
}

char *world_log(const struct world *world)
{
    char *text = NULL;
    return g_file_get_contents(world->log, &text, NULL, NULL) ? text : g_strdup("");
}

int world_connect_unseen(const struct world *world)
{
    struct sockaddr_un address;
    g_assert_true(packet_address(&address, world->socket));
    const int fd = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    g_assert_cmpint(fd, >=, 0);
    g_assert_cmpint(connect(fd, (const struct sockaddr *)&address, sizeof address), ==, 0);
    return fd;
}

int world_connect(struct world *world)
{
    const int fd = world_connect_unseen(world);
    world_run(world);
    return fd;
}

int world_connect_as(struct world *world, uid_t uid)
{
    const uid_t own = geteuid();
    g_assert_cmpint(seteuid(uid), ==, 0);
    const int fd = world_connect_unseen(world);
    g_assert_cmpint(seteuid(own), ==, 0);
    world_run(world);
    return fd;
}

void world_send_bytes(struct world *world, int fd, const uint8_t *bytes, uint32_t length)
{
    g_assert_cmpint(packet_send(fd, bytes, length), ==, PACKET_DONE);
    world_run(world);
}

void world_post(int fd, mdm_msg_t *request)
{
    uint32_t length = 0;
    uint8_t *bytes = ipc_seal(request, &length, NULL);
    g_assert_nonnull(bytes);
    g_assert_cmpint(packet_send(fd, bytes, length), ==, PACKET_DONE);
    g_free(bytes);
}

void world_send(struct world *world, int fd, mdm_msg_t *request)
{
    world_post(fd, request);
    world_run(world);
}

mdm_msg_t *world_receive(int fd)
{
    static uint8_t buffer[1 << 18];
    uint32_t length = 0;
    return packet_receive(fd, buffer, sizeof buffer, &length) == PACKET_DONE
               ? ipc_open(buffer, length, NULL)
               : NULL;
}

mdm_msg_t *world_ask(struct world *world, int fd, mdm_msg_t *request)
{
    world_send(world, fd, request);
    mdm_msg_t *answer = world_receive(fd);
    g_assert_nonnull(answer);
    return answer;
}

bool world_is_closed(int fd)
{
    char byte = 0;
    const ssize_t received = recv(fd, &byte, 1, MSG_PEEK | MSG_DONTWAIT);
    return received == 0 || (received < 0 && errno != EAGAIN);
}

void world_expect_refusal(int fd, uint32_t number, protocol_reason_t reason, const char *text)
{
    mdm_msg_t *refusal = world_receive(fd);
    g_assert_nonnull(refusal);
    const mdm_admin_info_t *admin = mdm_admin_general(refusal);
    g_assert_nonnull(admin);
    g_assert_cmpuint(refusal->type, ==, MDM_TYPE_ADMIN_2);
    g_assert_cmpuint(refusal->hdr_word1, ==, number);
    g_assert_cmpint((int32_t)refusal->hdr_word2, ==, MDM_RESULT_FAILED);
    g_assert_cmpuint(admin->type, ==, ADMIN_REFUSED);
    g_assert_cmpstr(admin->text, ==, text);
    g_assert_cmpuint(admin->value, ==, reason);
    ipc_close(refusal);
}

void world_register(struct world *world, int fd, const char *package)
{
    mdm_msg_t request = {0};
    g_assert_true(mdm_admin_set_general(&request, ADMIN_REGISTER, 0, package, NULL));
    mdm_msg_t *answer = world_ask(world, fd, &request);
    g_assert_cmpint((int32_t)answer->hdr_word2, ==, MDM_RESULT_SUCCESS);
    ipc_close(answer);
}

mdm_msg_t world_policy(uint32_t number, uint32_t discriminator, size_t size)
{
    static char bytes[1 << 18];
    memset(bytes, 'p', sizeof bytes);
    g_assert_cmpuint(size, <=, sizeof bytes);
    mdm_msg_t request = {.hdr_word1 = number};
    g_assert_true(mdm_res_set_data(&request, discriminator, bytes, size));
    return request;
}
