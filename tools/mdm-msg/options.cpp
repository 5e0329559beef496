// SPDX-License-Identifier: Apache-2.0
#include "options.hpp"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include <unistd.h>

#include "command.hpp"
#include "complain.hpp"
#include "input.hpp"

namespace mdm::msg {

namespace {

// The words of --color. Without a value the word is none of them.
std::optional<bool> wants_color(std::string_view when)
{
    if (when == "always" || when == "never") {
        return when == "always";
    }
    if (when != "auto") {
        return std::nullopt;
    }
    const char *no_color = g_getenv("NO_COLOR");
    const bool is_unwanted = no_color != nullptr && *no_color != '\0';
    const char *terminal = g_getenv("TERM");
    const bool is_dumb = terminal != nullptr && std::string_view(terminal) == "dumb";
    return !is_unwanted && !is_dumb && isatty(STDOUT_FILENO) != 0;
}

}  // namespace

Options::Options(const char *command, const char *usage, const char *summary)
    : command_(command), context_(g_option_context_new(usage))
{
    g_option_context_set_summary(context_, summary);
    g_option_context_set_translate_func(context_, nullptr, nullptr, nullptr);
    g_option_context_set_help_enabled(context_, FALSE);  // GLib's prints in the locale's characters
    const std::array<GOptionEntry, 2> entries = {{
        {"help", 'h', 0, G_OPTION_ARG_NONE, &help_, "Show this text", nullptr},
        {},
    }};
    add(entries.data());
}

Options::~Options()
{
    g_free(color_);
    g_option_context_free(context_);
}

void Options::add(const GOptionEntry *entries)
{
    g_option_context_add_main_entries(context_, entries, nullptr);
}

void Options::add_input()
{
    const std::array<GOptionEntry, 4> entries = {{
        {"hex", 0, 0, G_OPTION_ARG_NONE, &input_.hex, "The files are hex text", nullptr},
        {"raw", 0, 0, G_OPTION_ARG_NONE, &input_.raw, "The files are the bytes themselves",
         nullptr},
        {"stream", 0, 0, G_OPTION_ARG_NONE, &input_.stream,
         "Each file has several messages, one behind the other", nullptr},
        {},
    }};
    add(entries.data());
    g_option_context_set_description(context_, input_help);
}

void Options::add_color()
{
    const std::array<GOptionEntry, 2> entries = {{
        {"color", 0, 0, G_OPTION_ARG_STRING, &color_,
         "Use colours: always, never or auto (on a terminal, without NO_COLOR)", "WHEN"},
        {},
    }};
    add(entries.data());
}

void Options::print_help() const
{
    gchar *help = g_option_context_get_help(context_, TRUE, nullptr);
    std::fputs(help, stdout);
    g_free(help);
    std::exit(finish(whole));  // NOLINT(concurrency-mt-unsafe): there is one thread
}

std::optional<std::vector<std::string>> Options::parse(int argc, char **argv)
{
    std::string program = std::string("mdm-msg ") + command_;
    std::vector<char *> words(argv, argv + argc);
    words[0] = program.data();
    words.push_back(nullptr);
    char **rest = words.data();
    GError *error = nullptr;
    if (g_option_context_parse(context_, &argc, &rest, &error) == FALSE) {
        wrong_usage_of(command_, "%s", error->message);
        g_error_free(error);
        return std::nullopt;
    }
    if (help_ != FALSE) {
        print_help();
    }
    if (input_.hex != FALSE && input_.raw != FALSE) {
        wrong_usage_of(command_, "say --hex or --raw, not both");
        return std::nullopt;
    }
    const auto has_color = wants_color(color_ == nullptr ? "auto" : color_);
    if (!has_color) {
        wrong_usage_of(command_, "--color is always, never or auto, not '%s'", color_);
        return std::nullopt;
    }
    has_color_ = *has_color;
    std::vector<std::string> files(rest + 1, rest + argc);
    // GLib keeps the "--" in front of a word with a hyphen.
    const auto end_of_options = std::ranges::find(files, "--");
    if (end_of_options != files.end() && end_of_options + 1 != files.end() &&
        end_of_options[1].starts_with('-')) {
        files.erase(end_of_options);
    }
    return files;
}

}  // namespace mdm::msg
