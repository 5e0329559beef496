// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <cstdio>

#include "command.hpp"
#include "complain.hpp"
#include "input.hpp"
#include "json_message.hpp"
#include "options.hpp"
#include "parts.hpp"

namespace mdm::msg {
namespace {

int print(const Input &input, bool is_pretty)
{
    const MessageJson json = to_json(input.bytes, is_pretty);
    std::fwrite(json.text.data(), 1, json.text.size(), stdout);
    std::putchar('\n');
    if (!input.warning.empty()) {
        complain("%s: %s", input.name.c_str(), input.warning.c_str());
    }
    if (!json.fault) {
        return whole;
    }
    complain("%s: %s", input.name.c_str(), sentence(*json.fault).c_str());
    return malformed;
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
                    "Prints messages as JSON. 'mdm-msg make' makes the messages again.");
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
