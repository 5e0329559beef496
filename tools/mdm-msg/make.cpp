// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>

#include <glib.h>
#include <glib/gstdio.h>
#include <unistd.h>

#include "command.hpp"
#include "complain.hpp"
#include "file.hpp"
#include "json_message.hpp"
#include "options.hpp"

namespace mdm::msg {
namespace {

struct FreeString {
    void operator()(gchar *text) const { g_free(text); }
};
using OwnString = std::unique_ptr<gchar, FreeString>;

struct MakeOptions {
    OwnString output;
    bool is_hex = false;
};

// Appends what the file's messages are written as. Returns a status; the reason is printed.
int make_of(const std::string &file, bool is_hex, std::string &out)
{
    const char *name = file == "-" ? "standard input" : file.c_str();
    const File bytes(file);
    if (!bytes.reason().empty()) {
        complain("%s: cannot be read: %s", name, bytes.reason().c_str());
        return unreadable;
    }
    const std::string_view text = as_text(bytes.bytes());
    const MadeMessages made = from_json(text);
    if (!made.error.empty()) {
        const char *hint = text.find('\0') != std::string_view::npos
                               ? "; is this a message? 'mdm-msg json' makes JSON of it"
                               : "";
        complain("%s: %s%s", name, made.error.c_str(), hint);
        return malformed;
    }
    for (const std::vector<uint8_t> &message : made.messages) {
        out += is_hex ? hex(message) + "\n" : std::string(as_text(message));
    }
    return whole;
}

// For what a new file must not replace: a device, a pipe, a symbolic link to nothing.
bool write_into(const char *file, const std::string &bytes)
{
    FILE *out = std::fopen(file, "wbe");
    if (out == nullptr) {
        return false;
    }
    const bool is_written = std::fwrite(bytes.data(), 1, bytes.size(), out) == bytes.size();
    return std::fclose(out) == 0 && is_written;
}

// A regular file has all bytes, or stays as it was. A symbolic link stays.
int write_file(const char *file, const std::string &bytes)
{
    GStatBuf status;
    const bool is_there = g_stat(file, &status) == 0;
    const bool is_dangling = !is_there && g_file_test(file, G_FILE_TEST_IS_SYMLINK) != FALSE;
    if (is_dangling || (is_there && !S_ISREG(status.st_mode))) {
        if (write_into(file, bytes)) {
            return whole;
        }
        complain("%s: cannot be written: %s", file, g_strerror(errno));
        return unreadable;
    }
    const int mode = is_there ? static_cast<int>(status.st_mode & 0777U) : 0666;
    const std::unique_ptr<char, decltype(&std::free)> target(realpath(file, nullptr), std::free);
    GError *error = nullptr;
    if (g_file_set_contents_full(target != nullptr ? target.get() : file, bytes.data(),
                                 static_cast<gssize>(bytes.size()), G_FILE_SET_CONTENTS_CONSISTENT,
                                 mode, &error) != FALSE) {
        return whole;
    }
    complain("%s: cannot be written: %s", file, error->message);
    g_error_free(error);
    return unreadable;
}

int write(const MakeOptions &options, const std::string &bytes)
{
    if (options.output != nullptr && g_str_equal(options.output.get(), "-") == FALSE) {
        return write_file(options.output.get(), bytes);
    }
    std::fwrite(bytes.data(), 1, bytes.size(), stdout);
    return whole;
}

// Nothing is written unless all messages could be made.
int make(const std::vector<std::string> &files, const MakeOptions &options)
{
    std::string bytes;
    int status = whole;
    for (const std::string &file : files) {
        status = std::max(status, make_of(file, options.is_hex, bytes));
    }
    return status == whole ? write(options, bytes) : status;
}

}  // namespace

int run_make(int argc, char **argv)
{
    gchar *output = nullptr;
    gboolean is_hex = FALSE;
    const std::array<GOptionEntry, 3> entries = {{
        {"hex", 0, 0, G_OPTION_ARG_NONE, &is_hex, "Write hex text, a line for each message",
         nullptr},
        {"output", 'o', 0, G_OPTION_ARG_FILENAME, &output,
         "Write to FILE; '-' is standard output, even if it is a terminal", "FILE"},
        {},
    }};
    Options options(
        "make", "[FILE…]",
        "Makes messages of JSON, as 'mdm-msg json' prints it. Several values make\n"
        "several messages, one behind the other. Nothing is written if a value is\n"
        "no message. The number of \"length\" is not used.\n"
        "\n"
        "Exit status: 0 if all messages are made, 1 if a value is no message, 2 for wrong "
        "usage, 3 if a\n"
        "file cannot be read or written.");
    options.add(entries.data());
    const auto files = options.parse(argc, argv);
    const MakeOptions how{OwnString(output), is_hex != FALSE};
    if (!files) {
        return wrong_usage;
    }
    if (how.output == nullptr && !how.is_hex && isatty(STDOUT_FILENO) == 1) {
        return wrong_usage_of("make", "standard output is a terminal; say --hex or --output FILE");
    }
    return make(files->empty() ? std::vector<std::string>{"-"} : *files, how);
}

}  // namespace mdm::msg
