/* SPDX-License-Identifier: Apache-2.0 */
/* Sockets of the server's own and of systemd, and what is in their way. */
#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <glib/gstdio.h>
#include <systemd/sd-daemon.h>

#include "common/packet.h"
#include "server/listener.h"

typedef struct place {
    char *directory;
    struct listener_options options;
    struct listener listener;
} place_t;

static void set_up(place_t *place, gconstpointer data)
{
    (void)data;
    place->directory = g_dir_make_tmp("mdm-listener-XXXXXX", NULL);
    g_assert_nonnull(place->directory);
    place->options = (struct listener_options){
        .path = g_build_filename(place->directory, "run", "socket", NULL),
        .mode = 0620,
        .directory_mode = 0750,
    };
}

static void tear_down(place_t *place, gconstpointer data)
{
    (void)data;
    char *run = g_path_get_dirname(place->options.path);
    char *lock = g_strconcat(place->options.path, ".lock", NULL);
    g_remove(place->options.path);
    g_remove(lock);
    g_rmdir(run);
    g_assert_cmpint(g_rmdir(place->directory), ==, 0); /* nothing else is left */
    g_free(lock);
    g_free(run);
    g_free(place->options.path);
    g_free(place->directory);
}

static void open_listener(place_t *place)
{
    GError *error = NULL;
    g_assert_true(listener_open(&place->listener, &place->options, &error));
    g_assert_no_error(error);
}

static void expect_failure(struct listener_options *options, const char *reason)
{
    struct listener listener;
    GError *error = NULL;
    g_assert_false(listener_open(&listener, options, &error));
    char *expected = g_strdup_printf("%s: %s", options->path, reason);
    g_assert_cmpstr(error->message, ==, expected);
    g_free(expected);
    g_error_free(error);
}

static mode_t mode_of(const char *path)
{
    struct stat status;
    g_assert_cmpint(stat(path, &status), ==, 0);
    return status.st_mode & 07777;
}

static void expect_service(const place_t *place)
{
    struct sockaddr_un address;
    g_assert_true(packet_address(&address, place->options.path));
    const int client = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    g_assert_cmpint(connect(client, (const struct sockaddr *)&address, sizeof address), ==, 0);
    int fd = -1;
    struct listener listener = place->listener;
    g_assert_cmpint(listener_accept(&listener, &fd), ==, LISTENER_ACCEPTED);
    close(fd);
    g_assert_cmpint(listener_accept(&listener, &fd), ==, LISTENER_NOBODY);
    close(client);
}

static void has_the_modes_of_the_options(place_t *place, gconstpointer data)
{
    (void)data;
    const mode_t old = umask(077);
    open_listener(place);
    umask(old);
    char *run = g_path_get_dirname(place->options.path);
    g_assert_cmpuint(mode_of(place->options.path), ==, 0620);
    g_assert_cmpuint(mode_of(run), ==, 0750);
    g_free(run);
    expect_service(place);
    listener_close(&place->listener);
    g_assert_false(g_file_test(place->options.path, G_FILE_TEST_EXISTS));
}

static void belongs_to_the_group(place_t *place, gconstpointer data)
{
    (void)data;
    place->options.group = (char *)"there is no such group";
    struct listener listener;
    GError *error = NULL;
    g_assert_false(listener_open(&listener, &place->options, &error));
    g_assert_cmpstr(error->message, ==, "there is no such group: no such group");
    g_error_free(error);
    if (geteuid() != 0) {
        g_test_skip("only root can give files to any group");
        return;
    }
    place->options.group = (char *)"daemon";
    open_listener(place);
    struct stat status;
    g_assert_cmpint(stat(place->options.path, &status), ==, 0);
    g_assert_cmpuint(status.st_gid, ==, 1); /* on every Debian */
    listener_close(&place->listener);
}

static void is_there_once(place_t *place, gconstpointer data)
{
    (void)data;
    open_listener(place);
    expect_failure(&place->options, "another server has it");
    expect_service(place); /* the first one goes on */
    listener_close(&place->listener);
    open_listener(place);
    listener_close(&place->listener);
}

static void takes_over_a_stale_socket(place_t *place, gconstpointer data)
{
    (void)data;
    open_listener(place);
    g_clear_pointer(&place->listener.path, g_free); /* as after a crash */
    listener_close(&place->listener);
    g_assert_true(g_file_test(place->options.path, G_FILE_TEST_EXISTS));
    open_listener(place);
    expect_service(place);
    listener_close(&place->listener);
}

static void leaves_the_socket_of_another_server(place_t *place, gconstpointer data)
{
    (void)data;
    open_listener(place);
    g_assert_cmpint(g_remove(place->options.path), ==, 0);
    struct sockaddr_un address;
    g_assert_true(packet_address(&address, place->options.path));
    const int other = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    g_assert_cmpint(bind(other, (const struct sockaddr *)&address, sizeof address), ==, 0);
    listener_close(&place->listener);
    g_assert_true(g_file_test(place->options.path, G_FILE_TEST_EXISTS));
    close(other);
}

static void leaves_a_socket_that_somebody_serves(place_t *place, gconstpointer data)
{
    (void)data;
    char *run = g_path_get_dirname(place->options.path);
    g_assert_cmpint(g_mkdir(run, 0755), ==, 0);
    g_free(run);
    struct sockaddr_un address;
    g_assert_true(packet_address(&address, place->options.path));
    const int other = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    g_assert_cmpint(bind(other, (const struct sockaddr *)&address, sizeof address), ==, 0);
    g_assert_cmpint(listen(other, 8), ==, 0);
    expect_failure(&place->options, "another program serves it");
    g_assert_true(g_file_test(place->options.path, G_FILE_TEST_EXISTS));
    close(other);
}

static void leaves_what_is_no_socket(place_t *place, gconstpointer data)
{
    (void)data;
    char *run = g_path_get_dirname(place->options.path);
    g_assert_cmpint(g_mkdir(run, 0755), ==, 0);
    g_free(run);
    g_assert_true(g_file_set_contents(place->options.path, "text", -1, NULL));
    expect_failure(&place->options, "is there, and is no socket");
    g_assert_true(g_file_test(place->options.path, G_FILE_TEST_IS_REGULAR));
}

static void needs_a_short_path(place_t *place, gconstpointer data)
{
    (void)data;
    enum { MOST = 103 };
    char *short_path = place->options.path;
    char *name = g_strnfill(MOST - strlen(place->directory) - strlen("/run/"), 's');
    place->options.path = g_build_filename(place->directory, "run", name, NULL);
    g_assert_cmpuint(strlen(place->options.path), ==, MOST);
    open_listener(place);
    listener_close(&place->listener);
    char *lock = g_strconcat(place->options.path, ".lock", NULL);
    g_remove(lock);
    g_free(lock);

    char *longer = g_strconcat(place->options.path, "s", NULL);
    g_free(place->options.path);
    place->options.path = longer;
    expect_failure(&place->options, "too long for a socket: more than 103 bytes");
    lock = g_strconcat(longer, ".lock", NULL);
    g_remove(lock);
    g_free(lock);
    g_free(name);
    g_free(longer);
    place->options.path = short_path;
}

/* As systemd starts a server: the socket is the first descriptor behind standard error. */
static bool be_started(int type)
{
    const int fd = socket(AF_UNIX, type, 0);
    const struct sockaddr_un address = {.sun_family = AF_UNIX};
    char pid[32];
    g_snprintf(pid, sizeof pid, "%ld", (long)getpid());
    g_setenv("LISTEN_PID", pid, TRUE);
    g_setenv("LISTEN_FDS", "1", TRUE);
    return bind(fd, (const struct sockaddr *)&address, sizeof(sa_family_t)) == 0 &&
           listen(fd, 1) == 0 && dup2(fd, SD_LISTEN_FDS_START) == SD_LISTEN_FDS_START;
}

static const struct listener_options unused = {.path = (char *)"/nonexistent/socket"};

static bool is_adopted(void)
{
    struct listener listener;
    int fd = -1;
    return be_started(SOCK_SEQPACKET) && listener_open(&listener, &unused, NULL) &&
           listener.path == NULL && listener.fd == SD_LISTEN_FDS_START &&
           listener_accept(&listener, &fd) == LISTENER_NOBODY && g_getenv("LISTEN_FDS") == NULL;
}

static bool is_refused(void)
{
    struct listener listener;
    GError *error = NULL;
    return be_started(SOCK_STREAM) && !listener_open(&listener, &unused, &error) &&
           g_str_has_prefix(error->message, "LISTEN_FDS: not one listening Unix socket");
}

/* Runs a check in a process of its own. */
static void expect_in_child(bool (*is_true)(void))
{
    const pid_t child = fork();
    if (child == 0) {
        _exit(is_true() ? 0 : 1);
    }
    int status = 0;
    g_assert_cmpint(waitpid(child, &status, 0), ==, child);
    g_assert_true(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

static void adopts_the_socket_of_systemd(place_t *place, gconstpointer data)
{
    (void)place;
    (void)data;
    expect_in_child(is_adopted);
}

static void adopts_no_other_socket(place_t *place, gconstpointer data)
{
    (void)place;
    (void)data;
    expect_in_child(is_refused);
}

#define ADD(name) g_test_add("/listener/" #name, place_t, NULL, set_up, name, tear_down)

int main(int argc, char **argv)
{
    g_test_init(&argc, &argv, NULL);
    ADD(has_the_modes_of_the_options);
    ADD(belongs_to_the_group);
    ADD(is_there_once);
    ADD(takes_over_a_stale_socket);
    ADD(leaves_the_socket_of_another_server);
    ADD(leaves_a_socket_that_somebody_serves);
    ADD(leaves_what_is_no_socket);
    ADD(needs_a_short_path);
    ADD(adopts_the_socket_of_systemd);
    ADD(adopts_no_other_socket);
    return g_test_run();
}
