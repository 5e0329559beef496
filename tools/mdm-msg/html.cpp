// SPDX-License-Identifier: Apache-2.0
#include "html.hpp"

#include <array>
#include <cstdio>

#include "command.hpp"
#include "complain.hpp"
#include "options.hpp"
#include "verdict.hpp"

namespace mdm::msg {
namespace {

int print_page(const Input &input, bool hides_texts)
{
    const Page page = page_of(input, hides_texts);
    std::fwrite(page.html.data(), 1, page.html.size(), stdout);
    return judge(input, page.fault);
}

}  // namespace

int run_html(int argc, char **argv)
{
    gboolean hides_texts = FALSE;
    const std::array<GOptionEntry, 2> entries = {{
        {"hide-texts", 0, 0, G_OPTION_ARG_NONE, &hides_texts,
         "Lengths in place of texts and raw bytes", nullptr},
        {},
    }};
    Options options(
        "html", "[FILE]",
        "Writes a page for a browser: the bytes of a message beside its fields. The "
        "page needs no network.\n"
        "\n"
        "Exit status: 0 if the message is whole, 1 if it is malformed, 2 for wrong usage "
        "or, with\n"
        "--stream, several messages, 3 if the file cannot be read.");
    options.add(entries.data());
    options.add_input();
    const auto files = options.parse(argc, argv);
    if (!files) {
        return wrong_usage;
    }
    if (files->size() > 1) {
        return wrong_usage_of("html", "a page shows one message; name one file");
    }
    size_t messages = 0;
    return for_each_message(*files, options.input(), [&](const Input &input) {
        if (++messages == 1) {
            return print_page(input, hides_texts != FALSE);
        }
        if (messages == 2) {
            complain("%s: is not shown, because a page shows one message", input.name.c_str());
        }
        return int{wrong_usage};
    });
}

}  // namespace mdm::msg
