// SPDX-License-Identifier: Apache-2.0
//
// The library's own platform log against a real receiver: a datagram socket in /dev/log's place,
// in a mount namespace that nobody else sees.
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include "mdm/ipc.h"
#include "mdm/log.h"
#include "support/cancellable.hpp"
#include "support/private_mounts.hpp"

namespace {

bool formatting_fails = false;

// In the C library's place, for the library and for GLib alike.
using Format = int(char **, const char *, va_list);

int format_text(char **text, const char *format, va_list args)
{
    static auto *const real = reinterpret_cast<Format *>(dlsym(RTLD_NEXT, "vasprintf"));
    if (formatting_fails) {
        errno = ENOMEM;
        return -1;
    }
    return real(text, format, args);
}

struct Received {
    int facility;
    int severity;
    std::string text;  // behind the priority and the time
};

class PlatformLog : public ::testing::Test {
protected:
    void SetUp() override
    {
        static const auto reason = mdm::test::mount_empty("/dev");
        if (reason) {
            GTEST_SKIP() << "this machine gives no private mount namespace: " << *reason;
        }
        socket_ = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strcpy(address.sun_path, "/dev/log");
        unlink(address.sun_path);
        ASSERT_EQ(bind(socket_, reinterpret_cast<sockaddr *>(&address), sizeof address), 0)
            << std::strerror(errno);
        closelog();
        openlog("host", 0, LOG_USER);
        mdm_log_set_level(MDM_LOG_DEBUG);
    }

    void TearDown() override
    {
        if (socket_ >= 0) {
            close(socket_);
        }
    }

    // The next line that arrived, if any: "<priority>Mmm dd hh:mm:ss text".
    std::optional<Received> receive() const
    {
        std::array<char, 8192> datagram{};
        const ssize_t length = recv(socket_, datagram.data(), datagram.size() - 1, MSG_DONTWAIT);
        if (length < 0) {
            return std::nullopt;
        }
        const std::string line = datagram.data();
        const int priority = std::stoi(line.substr(1));
        const size_t time = line.find('>') + 1;
        return Received{priority >> 3, priority & 7, line.substr(time + sizeof "Mmm dd hh:mm:ss")};
    }

    void expect_line(int facility, int severity, const std::string &text) const
    {
        const auto line = receive();
        ASSERT_TRUE(line.has_value());
        EXPECT_EQ(line->facility, facility >> 3);
        EXPECT_EQ(line->severity, severity);
        EXPECT_EQ(line->text, text);
    }

    void expect_silence() const { EXPECT_FALSE(receive().has_value()); }

private:
    int socket_ = -1;
};

// Q-LOG-7
TEST_F(PlatformLog, EachLevelArrivesWithItsSeverity)
{
    __mdm_log_print(MDM_LOG_DEBUG, "TAG", "debug %d", 0);
    __mdm_log_print(MDM_LOG_INFO, "TAG", "info %d", 1);
    __mdm_log_print(MDM_LOG_WARN, "TAG", "warn %d", 2);
    __mdm_log_print(MDM_LOG_CRITICAL, "TAG", "critical %d", 3);
    __mdm_log_print(7, "TAG", "other %d", 7);
    expect_line(LOG_USER, LOG_DEBUG, "host: TAG: debug 0");
    expect_line(LOG_USER, LOG_INFO, "host: TAG: info 1");
    expect_line(LOG_USER, LOG_WARNING, "host: TAG: warn 2");
    expect_line(LOG_USER, LOG_ERR, "host: TAG: critical 3");
    expect_line(LOG_USER, LOG_NOTICE, "host: TAG: other 7");
    expect_silence();
}

TEST_F(PlatformLog, SilentPriorityPrintsNothing)
{
    EXPECT_EQ(__mdm_log_print(MDM_LOG_NONE, "TAG", "silent"), 0);
    expect_silence();
}

TEST_F(PlatformLog, ReturnsTheLengthOfTheText)
{
    EXPECT_EQ(__mdm_log_print(MDM_LOG_INFO, "TAG", "%s", "12345"), 5);
    expect_line(LOG_USER, LOG_INFO, "host: TAG: 12345");
}

TEST_F(PlatformLog, HostProgramChoosesIdentityAndFacility)
{
    closelog();
    openlog("mdm-server", 0, LOG_DAEMON);
    __mdm_log_print(MDM_LOG_INFO, "TAG", "text");
    expect_line(LOG_DAEMON, LOG_INFO, "mdm-server: TAG: text");
}

TEST_F(PlatformLog, LongLinesArriveWhole)
{
    const std::string text(5000, 'x');
    __mdm_log_print(MDM_LOG_INFO, "TAG", "%s", text.c_str());
    expect_line(LOG_USER, LOG_INFO, "host: TAG: " + text);
}

TEST_F(PlatformLog, PercentSignsInTheTextAreNotAFormat)
{
    __mdm_log_print(MDM_LOG_INFO, "TAG", "%s", "100%s %n");
    expect_line(LOG_USER, LOG_INFO, "host: TAG: 100%s %n");
}

TEST_F(PlatformLog, NullTagIsPrintedAsTheCLibraryDoes)
{
    const char *volatile nothing = nullptr;
    __mdm_log_print(MDM_LOG_INFO, nothing, "text");
    expect_line(LOG_USER, LOG_INFO, "host: (null): text");
}

TEST_F(PlatformLog, TextThatCannotBeFormattedIsDropped)
{
    // No character of the locale "C" stands for this one.
    const std::array<wchar_t, 2> text = {L'\x20AC', 0};
    EXPECT_LT(__mdm_log_print(MDM_LOG_INFO, "TAG", "%ls", text.data()), 0);
    expect_silence();
}

TEST_F(PlatformLog, LinesOfTheLibraryArriveWithTagPrefixAndColour)
{
    mdm_log_set_level(MDM_LOG_INFO);
    EXPECT_EQ(ipc_deserialize(nullptr, nullptr, 0), MDM_RESULT_FAILED);
    const auto line = receive();
    ASSERT_TRUE(line.has_value());
    EXPECT_EQ(line->severity, LOG_ERR);
    EXPECT_TRUE(line->text.starts_with("host: MDM_COMMON: mdm_ipc.cpp: ipc_deserialize("));
    EXPECT_TRUE(line->text.ends_with(") > \033[0;31m* Critical * _ASSERT fails\033[0;m"));
    expect_silence();
}

TEST_F(PlatformLog, TextForWhichThereIsNoMemoryIsDropped)
{
    formatting_fails = true;
    EXPECT_LT(__mdm_log_print(MDM_LOG_INFO, "TAG", "lost"), 0);
    formatting_fails = false;
    expect_silence();
    __mdm_log_print(MDM_LOG_INFO, "TAG", "next");
    expect_line(LOG_USER, LOG_INFO, "host: TAG: next");
}

int print(const char *format, ...) MDM_PRINTF(1, 2);

// As a program does that calls the platform's log itself.
int print(const char *format, ...)
{
    va_list args;
    va_start(args, format);
    const int result =
        platform_log_vprint(MDM_PLATFORM_LOG_SYSTEM, MDM_PLATFORM_LOG_INFO, "TAG", format, args);
    va_end(args);
    return result;
}

TEST_F(PlatformLog, IsNoCancellationPoint)
{
    int result = 0;
    const mdm::test::CancellableThread thread([&result] {
        pthread_cancel(pthread_self());
        result = print("%s", "12345");
        pthread_testcancel();
        print("not reached");
    });
    EXPECT_TRUE(thread.ends_cancelled());
    EXPECT_EQ(result, 5);
    expect_line(LOG_USER, LOG_INFO, "host: TAG: 12345");
    expect_silence();
}

}  // namespace

// Under both names that the compiler gives it. The library must see them. With names of their own
// here, they do not meet the inline one that a hardened build has.
#pragma GCC visibility push(default)

extern "C" int format_text_plainly(char **text, const char *format,
                                   va_list args) __asm__("vasprintf");
extern "C" int format_text_hardened(char **text, int flag, const char *format,
                                    va_list args) __asm__("__vasprintf_chk");

extern "C" int format_text_plainly(char **text, const char *format, va_list args)
{
    return format_text(text, format, args);
}

extern "C" int format_text_hardened(char **text, int /*flag*/, const char *format, va_list args)
{
    return format_text(text, format, args);
}

#pragma GCC visibility pop
