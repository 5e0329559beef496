// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "command.hpp"
#include "compare.hpp"
#include "complain.hpp"
#include "input.hpp"
#include "options.hpp"
#include "parts.hpp"

namespace mdm::msg {
namespace {

constexpr const char *summary =
    "Shows the fields in which two messages differ:\n"
    "\n"
    "  - FIELD: VALUE       only A has it\n"
    "  + FIELD: VALUE       only B has it\n"
    "  ~ FIELD: OLD -> NEW  both have it\n"
    "  ! SENTENCE           about the messages as a whole\n"
    "\n"
    "The elements of lists are compared like the lines of files. [1 -> 2] is a position\n"
    "in A and in B.\n"
    "\n"
    "The exit status is 0 if the messages are the same, 1 if they differ or one of them is\n"
    "malformed, 2 after wrong usage and 3 if there is nothing to compare.";

struct Message {
    std::string name;
    std::vector<uint8_t> bytes;
};

const char *colour_of(Mark mark)
{
    switch (mark) {
    case Mark::removed:
        return "\x1b[31m";
    case Mark::added:
        return "\x1b[32m";
    case Mark::changed:
        return "\x1b[33m";
    case Mark::note:
        return "\x1b[1m";
    case Mark::same:
        break;
    }
    return "";
}

void print(Mark mark, const std::string &text, bool in_colours)
{
    const std::string colour = in_colours ? colour_of(mark) : "";
    const std::string line =
        colour + static_cast<char>(mark) + ' ' + text + (colour.empty() ? "\n" : "\x1b[0m\n");
    std::fwrite(line.data(), 1, line.size(), stdout);
}

// The messages of a file, which should be one. Without a value the reason has been printed.
std::optional<Message> read_message(const std::string &file, const InputOptions &options,
                                    int &status)
{
    std::vector<Message> messages;
    const int read = for_each_message({file}, options, [&](const Input &input) -> int {
        if (!input.warning.empty()) {
            complain("%s: %s", input.name.c_str(), input.warning.c_str());
        }
        messages.push_back({input.name, {input.bytes.begin(), input.bytes.end()}});
        return whole;
    });
    if (read != whole || messages.empty()) {
        status = std::max<int>(status, unreadable);
        return std::nullopt;
    }
    if (messages.size() > 1) {
        status = std::max(
            status, wrong_usage_of("diff", "%s has %zu messages", file.c_str(), messages.size()));
        return std::nullopt;
    }
    return std::move(messages.front());
}

void complain_about(const Message &message, const std::optional<ipc_fault_t> &fault)
{
    if (fault) {
        complain("%s: %s", message.name.c_str(), sentence(*fault).c_str());
    }
}

int diff(const Message &a, const Message &b, bool all, bool in_colours)
{
    const Faults faults = compare(a.bytes, b.bytes, all, [in_colours](Mark mark, const auto &text) {
        print(mark, text, in_colours);
    });
    complain_about(a, faults.a);
    complain_about(b, faults.b);
    return a.bytes != b.bytes || faults.a || faults.b ? malformed : whole;
}

}  // namespace

int run_diff(int argc, char **argv)
{
    gboolean all = FALSE;
    const GOptionEntry entries[] = {
        {"all", 'a', 0, G_OPTION_ARG_NONE, &all, "Show the equal fields, too", nullptr},
        {},
    };
    Options options("diff", "A B", summary);
    options.add(entries);
    options.add_color();
    options.add_input();
    const auto files = options.parse(argc, argv);
    if (!files) {
        return wrong_usage;
    }
    if (files->size() != 2) {
        return wrong_usage_of("diff", "name two files");
    }
    if (files->front() == "-" && files->back() == "-") {
        return wrong_usage_of("diff", "standard input has one message");
    }
    int status = whole;
    const auto a = read_message(files->front(), options.input(), status);
    const auto b = read_message(files->back(), options.input(), status);
    return a && b ? diff(*a, *b, all != FALSE, options.has_color()) : status;
}

}  // namespace mdm::msg
