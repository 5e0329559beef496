/* SPDX-License-Identifier: Apache-2.0 */
#include "listener.h"

#include <errno.h>
#include <fcntl.h>
#include <grp.h>
#include <string.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <glib-unix.h>
#include <glib/gstdio.h>
#include <systemd/sd-daemon.h>

#include "common/packet.h"

enum { BACKLOG = 4096 };

static bool fail(GError **error, const char *path, const char *reason)
{
    g_set_error(error, G_FILE_ERROR, G_FILE_ERROR_FAILED, "%s: %s", path, reason);
    return false;
}

static bool fail_errno(GError **error, const char *path)
{
    return fail(error, path, g_strerror(errno));
}

bool listener_take_spare(struct listener *listener)
{
    if (listener->spare < 0) {
        listener->spare = open("/dev/null", O_RDONLY | O_CLOEXEC);
    }
    return listener->spare >= 0;
}

static bool adopt(struct listener *listener, int count, GError **error)
{
    if (count != 1 || sd_is_socket(SD_LISTEN_FDS_START, AF_UNIX, SOCK_SEQPACKET, 1) <= 0) {
        return fail(error, "LISTEN_FDS",
                    "not one listening Unix socket that keeps packets apart "
                    "(ListenSequentialPacket=)");
    }
    listener->fd = SD_LISTEN_FDS_START;
    return g_unix_set_fd_nonblocking(listener->fd, TRUE, error);
}

static bool give_to_group(const char *path, const char *name, GError **error)
{
    if (name == NULL) {
        return true;
    }
    /* NOLINTNEXTLINE(concurrency-mt-unsafe): there is one thread */
    const struct group *group = getgrnam(name);
    if (group == NULL) {
        return fail(error, name, "no such group");
    }
    return lchown(path, (uid_t)-1, group->gr_gid) == 0 || fail_errno(error, path);
}

/* Makes the directory of the socket, and nothing above it. One that is there stays as it is. */
static bool make_directory(const struct listener_options *options, GError **error)
{
    char *directory = g_path_get_dirname(options->path);
    bool is_done = false;
    if (g_mkdir(directory, options->directory_mode) == 0) {
        /* The mask of the process does not count. */
        is_done =
            (chmod(directory, options->directory_mode) == 0 || fail_errno(error, directory)) &&
            give_to_group(directory, options->group, error);
    } else {
        is_done = errno == EEXIST || fail_errno(error, directory);
    }
    g_free(directory);
    return is_done;
}

/* The lock ends with the process, however it ends. */
static bool take_lock(struct listener *listener, const char *path, GError **error)
{
    char *name = g_strconcat(path, ".lock", NULL);
    listener->lock = open(name, O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    bool is_taken = false;
    if (listener->lock < 0) {
        fail_errno(error, name);
    } else if (flock(listener->lock, LOCK_EX | LOCK_NB) != 0) {
        fail(error, path, "another server has it");
    } else {
        is_taken = true;
    }
    g_free(name);
    return is_taken;
}

/* Nobody listens at a socket that a crash has left. */
static bool is_stale(const char *path)
{
    struct sockaddr_un address;
    const int fd = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    const bool is_refused = fd >= 0 && packet_address(&address, path) &&
                            connect(fd, (const struct sockaddr *)&address, sizeof address) != 0 &&
                            errno == ECONNREFUSED;
    if (fd >= 0) {
        close(fd);
    }
    return is_refused;
}

/* Only a stale socket may be in the way. */
static bool is_free_or_stale(const char *path, GError **error)
{
    struct stat status;
    if (lstat(path, &status) != 0) {
        return errno == ENOENT || fail_errno(error, path);
    }
    if (!S_ISSOCK(status.st_mode)) {
        return fail(error, path, "is there, and is no socket");
    }
    return is_stale(path) || fail(error, path, "another program serves it");
}

/* The socket gets its name once it listens and has its mode: a client that sees the name may
 * connect. The rename takes the place of a stale socket. */
static bool bind_and_listen(int fd, const char *hidden, const struct listener_options *options,
                            GError **error)
{
    struct sockaddr_un address;
    if (!packet_address(&address, hidden)) {
        char *reason = g_strdup_printf("too long for a socket: more than %zu bytes",
                                       sizeof address.sun_path - sizeof ".new");
        fail(error, options->path, reason);
        g_free(reason);
        return false;
    }
    unlink(hidden); /* a crash may have left it */
    if (bind(fd, (const struct sockaddr *)&address, sizeof address) != 0) {
        return fail_errno(error, options->path);
    }
    if (chmod(hidden, options->mode) != 0 || listen(fd, BACKLOG) != 0) {
        return fail_errno(error, options->path);
    }
    if (!give_to_group(hidden, options->group, error)) {
        return false;
    }
    return rename(hidden, options->path) == 0 || fail_errno(error, options->path);
}

static bool make_socket(struct listener *listener, const struct listener_options *options,
                        GError **error)
{
    listener->fd = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (listener->fd < 0) {
        return fail_errno(error, options->path);
    }
    char *hidden = g_strconcat(options->path, ".new", NULL);
    const bool is_made = bind_and_listen(listener->fd, hidden, options, error);
    if (!is_made) {
        unlink(hidden);
    }
    g_free(hidden);
    return is_made;
}

static bool make_own(struct listener *listener, const struct listener_options *options,
                     GError **error)
{
    if (!make_directory(options, error) || !take_lock(listener, options->path, error) ||
        !is_free_or_stale(options->path, error) || !make_socket(listener, options, error)) {
        return false;
    }
    struct stat status;
    if (lstat(options->path, &status) != 0) {
        return fail_errno(error, options->path);
    }
    listener->path = g_strdup(options->path);
    listener->inode = status.st_ino;
    listener->made = status.st_mtim;
    return true;
}

bool listener_open(struct listener *listener, const struct listener_options *options,
                   GError **error)
{
    *listener = (struct listener){.fd = -1, .spare = -1, .lock = -1};
    const int count = sd_listen_fds(1);
    const bool is_open =
        count > 0 ? adopt(listener, count, error) : make_own(listener, options, error);
    if (!is_open) {
        listener_close(listener);
        return false;
    }
    listener_take_spare(listener);
    return true;
}

static void close_if_open(int *fd)
{
    if (*fd >= 0) {
        close(*fd);
        *fd = -1;
    }
}

/* Inode numbers are used again, so the time counts, too. */
static bool is_own(const struct listener *listener, const struct stat *status)
{
    return status->st_ino == listener->inode && status->st_mtim.tv_sec == listener->made.tv_sec &&
           status->st_mtim.tv_nsec == listener->made.tv_nsec;
}

void listener_close(struct listener *listener)
{
    if (listener->path != NULL) {
        struct stat status;
        if (lstat(listener->path, &status) == 0 && is_own(listener, &status)) {
            unlink(listener->path);
        }
        g_clear_pointer(&listener->path, g_free);
    }
    close_if_open(&listener->fd);
    close_if_open(&listener->spare);
    close_if_open(&listener->lock);
}

static int accept_now(const struct listener *listener)
{
    return accept4(listener->fd, NULL, NULL, SOCK_CLOEXEC | SOCK_NONBLOCK);
}

static bool has_no_descriptor(void)
{
    return errno == EMFILE || errno == ENFILE;
}

listener_result_t listener_accept(struct listener *listener, int *fd)
{
    *fd = accept_now(listener);
    if (*fd >= 0) {
        return LISTENER_ACCEPTED;
    }
    if (has_no_descriptor() && listener->spare >= 0) {
        close_if_open(&listener->spare);
        *fd = accept_now(listener);
        if (*fd >= 0) {
            return LISTENER_FULL;
        }
    }
    switch (errno) {
    case EAGAIN:
    case EINTR:
    case ECONNABORTED:
        return LISTENER_NOBODY;
    default:
        return LISTENER_EXHAUSTED;
    }
}
