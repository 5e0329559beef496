// SPDX-License-Identifier: Apache-2.0
#include "complain.hpp"

#include <cerrno>
#include <cstdarg>
#include <cstdio>

#include <glib.h>

#include "command.hpp"
#include "text.hpp"

namespace mdm::msg {
namespace {

std::string formatted(const char *format, va_list args)
{
    gchar *text = g_strdup_vprintf(format, args);
    std::string copy = text;
    g_free(text);
    return copy;
}

void print_line(const std::string &text)
{
    std::fflush(stdout);  // what was shown stands in front of the verdict
    std::fprintf(stderr, "mdm-msg: %s\n", printable(text).c_str());
}

}  // namespace

void complain(const char *format, ...)
{
    va_list args;
    va_start(args, format);
    print_line(formatted(format, args));
    va_end(args);
}

int wrong_usage_of(const char *command, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    const std::string reason = formatted(format, args);
    va_end(args);
    const std::string name = command == nullptr ? "" : std::string(" ") + command;
    print_line(reason + "; see 'mdm-msg" + name + " --help'");
    return wrong_usage;
}

int finish(int status)
{
    errno = 0;
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) {
        return status;
    }
    if (errno != EPIPE) {  // a reader that has seen enough is no failure
        complain("cannot write: %s", errno != 0 ? g_strerror(errno) : "an earlier write failed");
        return unreadable;
    }
    return status;
}

}  // namespace mdm::msg
