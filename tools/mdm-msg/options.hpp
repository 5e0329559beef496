// SPDX-License-Identifier: Apache-2.0
//
// The options of a sub-command, read by GOption.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <glib.h>

namespace mdm::msg {

// How the bytes of a file are read.
struct InputOptions {
    gboolean hex = FALSE;
    gboolean raw = FALSE;
    gboolean stream = FALSE;
};

class Options {
public:
    // `usage` is what follows the name of the sub-command: "[FILE…]".
    Options(const char *command, const char *usage, const char *summary);
    ~Options();
    Options(const Options &) = delete;
    Options &operator=(const Options &) = delete;

    // Options of this sub-command alone. The array ends with an entry of zeros, {}.
    void add(const GOptionEntry *entries);
    // --hex, --raw and --stream.
    void add_input();
    // --color.
    void add_color();

    // Returns the words that are no options. Without a value the program ends with the status
    // wrong_usage; the reason is printed. --help ends the program.
    std::optional<std::vector<std::string>> parse(int argc, char **argv);

    const InputOptions &input() const { return input_; }
    bool has_color() const { return has_color_; }

private:
    [[noreturn]] void print_help() const;

    const char *command_;
    GOptionContext *context_;
    InputOptions input_;
    gchar *color_ = nullptr;
    bool has_color_ = false;
    gboolean help_ = FALSE;
};

}  // namespace mdm::msg
