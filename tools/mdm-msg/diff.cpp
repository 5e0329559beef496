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
#include "verdict.hpp"

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
    "malformed, 2 for wrong usage or, with --stream, several messages in a file, and 3 if\n"
    "there is nothing to compare.";

struct Message {
    std::string name;
    std::vector<uint8_t> bytes;
    std::string warning;
};

const char *color_of(Mark mark)
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

void print(Mark mark, const std::string &text, bool in_color)
{
    const std::string color = in_color ? color_of(mark) : "";
    const std::string line =
        color + static_cast<char>(mark) + ' ' + text + (color.empty() ? "\n" : "\x1b[0m\n");
    std::fwrite(line.data(), 1, line.size(), stdout);
}

// The messages of a file, which should be one. Without a value the reason has been printed.
std::optional<Message> read_message(const std::string &file, const InputOptions &options,
                                    int &status)
{
    std::vector<Message> messages;
    const int read = for_each_message({file}, options, [&](const Input &input) -> int {
        messages.push_back({input.name, {input.bytes.begin(), input.bytes.end()}, input.warning});
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

int diff(const Message &a, const Message &b, bool all, bool in_color)
{
    const Faults faults = compare(a.bytes, b.bytes, all, [in_color](Mark mark, const auto &text) {
        print(mark, text, in_color);
    });
    const int status = std::max(judge({a.name, a.bytes, a.warning}, faults.a),
                                judge({b.name, b.bytes, b.warning}, faults.b));
    return a.bytes != b.bytes ? malformed : status;
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
        return wrong_usage_of("diff", "standard input can be read only once");
    }
    int status = whole;
    const auto a = read_message(files->front(), options.input(), status);
    const auto b = read_message(files->back(), options.input(), status);
    return a && b ? diff(*a, *b, all != FALSE, options.has_color()) : status;
}

}  // namespace mdm::msg
