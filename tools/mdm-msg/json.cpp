// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <cstdio>

#include "command.hpp"
#include "complain.hpp"
#include "input.hpp"
#include "json_message.hpp"
#include "options.hpp"
#include "parts.hpp"
#include "verdict.hpp"

namespace mdm::msg {
namespace {

int print(const Input &input, bool is_pretty)
{
    const MessageJson json = to_json(input.bytes, is_pretty);
    std::fwrite(json.text.data(), 1, json.text.size(), stdout);
    std::putchar('\n');
    return judge(input, json.fault);
}

}  // namespace

int run_json(int argc, char **argv)
{
    gboolean has_lines = FALSE;
    const std::array<GOptionEntry, 2> entries = {{
        {"lines", 0, 0, G_OPTION_ARG_NONE, &has_lines, "One line for each message", nullptr},
        {},
    }};
    Options options("json", "[FILE…]",
                    "Prints messages as JSON. 'mdm-msg make' makes the messages again.\n"
                    "\n"
                    "Exit status: 0 if all messages are whole, 1 if one is malformed, 2 for wrong "
                    "usage, 3 if a\n"
                    "file cannot be read.");
    options.add(entries.data());
    options.add_input();
    const auto files = options.parse(argc, argv);
    if (!files) {
        return wrong_usage;
    }
    return for_each_message(*files, options.input(), [has_lines](const Input &input) {
        return print(input, has_lines == FALSE);
    });
}

}  // namespace mdm::msg
