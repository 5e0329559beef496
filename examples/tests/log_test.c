/* SPDX-License-Identifier: Apache-2.0 */
/* What the journal gets of a log line. A socket of the test takes the journal's place. */
#include <sched.h>
#include <string.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <glib/gstdio.h>

#include "common/packet.h"
#include "server/log.h"

/* Returns the socket. -1 if the machine has no mounts of the test's own. */
static int become_journal(void)
{
    struct sockaddr_un address;
    if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", NULL, MS_REC | MS_PRIVATE, NULL) != 0 ||
        mount("none", "/run", "tmpfs", 0, NULL) != 0 ||
        g_mkdir_with_parents("/run/systemd/journal", 0755) != 0) {
        return -1;
    }
    g_assert_true(packet_address(&address, "/run/systemd/journal/socket"));
    const int fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    g_assert_cmpint(bind(fd, (const struct sockaddr *)&address, sizeof address), ==, 0);
    return fd;
}

/* As systemd does for a service whose standard error is the journal. */
static void connect_standard_error(void)
{
    struct stat status;
    g_assert_cmpint(fstat(STDERR_FILENO, &status), ==, 0);
    char *stream = g_strdup_printf("%ju:%ju", (uintmax_t)status.st_dev, (uintmax_t)status.st_ino);
    g_setenv("JOURNAL_STREAM", stream, TRUE);
    g_free(stream);
}

static void expect_entry(int journal, const char *entry)
{
    char bytes[1024] = "";
    const ssize_t length = recv(journal, bytes, sizeof bytes - 1, MSG_DONTWAIT);
    g_assert_cmpint(length, >, 0);
    g_assert_cmpstr(bytes, ==, entry);
}

static void goes_to_the_journal_with_fields(void)
{
    const int journal = become_journal();
    if (journal < 0) {
        g_test_skip("no mounts of the test's own");
        return;
    }
    connect_standard_error();
    mdm_log_set_level(MDM_LOG_DEBUG);
    log_warn("%s", "a line");
    expect_entry(journal, "MESSAGE=a line\nPRIORITY=4\nSYSLOG_IDENTIFIER=MDM_SERVER\n"
                          "CODE_FUNC=goes_to_the_journal_with_fields\n");

    log_begin_request(1000);
    log_set_category(MDM_CATEGORY_WIFI);
    __mdm_log_print(MDM_LOG_CRITICAL, "MDM_COMMON",
                    "%s: %s(%d) > \033[0;31m* Critical * %s\033[0;m", "file.cpp", "ipc_open", 12,
                    "a\033[2Jb");
    log_end_request();
    expect_entry(journal, "MESSAGE=* Critical * a\\033[2Jb\nPRIORITY=3\n"
                          "SYSLOG_IDENTIFIER=MDM_COMMON\nCODE_FUNC=ipc_open\nPEER_UID=1000\n"
                          "MDM_CATEGORY=wifi\n");

    __mdm_log_print(MDM_LOG_INFO, "OTHER", "without a place");
    expect_entry(journal, "MESSAGE=without a place\nPRIORITY=6\nSYSLOG_IDENTIFIER=OTHER\n"
                          "CODE_FUNC=\n");
    __mdm_log_print(MDM_LOG_DEBUG, "OTHER", "more");
    expect_entry(journal, "MESSAGE=more\nPRIORITY=7\nSYSLOG_IDENTIFIER=OTHER\nCODE_FUNC=\n");
    close(journal);
}

/* Standard error is no journal when somebody has redirected it. */
static void goes_elsewhere_if_standard_error_is_no_journal(void)
{
    g_setenv("JOURNAL_STREAM", "1:1", TRUE);
    int ends[2];
    g_assert_cmpint(pipe(ends), ==, 0);
    const int old = dup(STDERR_FILENO);
    dup2(ends[1], STDERR_FILENO);
    mdm_log_set_level(MDM_LOG_WARN);
    __mdm_log_print(MDM_LOG_WARN, "TAG", "a\nb");
    dup2(old, STDERR_FILENO);
    char bytes[64] = "";
    g_assert_cmpint(read(ends[0], bytes, sizeof bytes - 1), >, 0);
    g_assert_cmpstr(bytes, ==, "TAG a\\nb\n");
    close(old);
    close(ends[0]);
    close(ends[1]);
}

static void is_silent_about_what_clients_send(void)
{
    mdm_log_set_level(MDM_LOG_WARN);
    g_assert_cmpuint(log_pause(), ==, MDM_LOG_WARN);
    g_assert_cmpuint(mdm_log_get_level(), ==, MDM_LOG_NONE);
    log_resume(MDM_LOG_WARN);
    g_assert_cmpuint(mdm_log_get_level(), ==, MDM_LOG_WARN);
    mdm_log_set_level(MDM_LOG_INFO);
    g_assert_cmpuint(log_pause(), ==, MDM_LOG_INFO);
    g_assert_cmpuint(mdm_log_get_level(), ==, MDM_LOG_INFO);
}

int main(int argc, char **argv)
{
    g_test_init(&argc, &argv, NULL);
    g_test_add_func("/log/goes_elsewhere_if_standard_error_is_no_journal",
                    goes_elsewhere_if_standard_error_is_no_journal);
    g_test_add_func("/log/goes_to_the_journal_with_fields", goes_to_the_journal_with_fields);
    g_test_add_func("/log/is_silent_about_what_clients_send", is_silent_about_what_clients_send);
    return g_test_run();
}
