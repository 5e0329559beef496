// SPDX-License-Identifier: Apache-2.0
//
// mdm-msg: looks into messages, and makes them.
#include <array>
#include <csignal>
#include <cstdio>
#include <new>
#include <stdexcept>
#include <string_view>

#include "command.hpp"
#include "complain.hpp"
#include "mdm/log.h"

namespace mdm::msg {
namespace {

struct Row {
    std::string_view name;
    Command *run;
    const char *summary;
};

constexpr std::array rows = {
    Row{"show", run_show, "the bytes of messages, a line for each field"},
    Row{"json", run_json, "messages as JSON"},
    Row{"make", run_make, "JSON as messages"},
    Row{"check", run_check, "whether messages are whole"},
    Row{"diff", run_diff, "the fields in which two messages differ"},
    Row{"html", run_html, "a message as a page for a browser"},
    Row{"forms", run_forms, "which messages there are, and their fields"},
};

void print_help()
{
    std::fputs("Usage:\n  mdm-msg COMMAND [OPTION…] [FILE…]\n\nCommands:\n", stdout);
    for (const Row &row : rows) {
        std::printf("  %-7s %s\n", row.name.data(), row.summary);
    }
    std::fputs("\n'mdm-msg COMMAND --help' shows the options of a command.\n"
               "'mdm-msg --version' shows the version.\n",
               stdout);
}

int run_row(const Row &row, int argc, char **argv)
{
    try {
        return row.run(argc, argv);
    } catch (const std::bad_alloc &) {
    } catch (const std::length_error &) {  // where a pointer has 32 bits
    }
    complain("this needs more memory than there is");
    return unreadable;
}

int run(int argc, char **argv)
{
    if (argc < 2) {
        return wrong_usage_of(nullptr, "say which command");
    }
    const std::string_view word = argv[1];
    if (word == "--help" || word == "-h") {
        print_help();
        return whole;
    }
    if (word == "--version") {
        std::puts("mdm-msg " MDM_VERSION);
        return whole;
    }
    for (const Row &row : rows) {
        if (row.name == word) {
            return run_row(row, argc - 1, argv + 1);
        }
    }
    return wrong_usage_of(nullptr, "there is no command '%s'", argv[1]);
}

}  // namespace
}  // namespace mdm::msg

int main(int argc, char **argv)
{
    mdm_log_set_enabled(0);         // the program itself says what the library refuses
    std::signal(SIGPIPE, SIG_DFL);  // a parent may have ignored it
    return mdm::msg::finish(mdm::msg::run(argc, argv));
}
