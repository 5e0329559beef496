// SPDX-License-Identifier: Apache-2.0
//
// The messages in files: raw bytes or hex text, one message a file or several.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "options.hpp"
#include "text.hpp"

namespace mdm::msg {

// One message of a file.
struct Input {
    std::string name;  // for people: "FILE"; of several messages in it "FILE: message 2 at byte 63"
    Bytes bytes;
    std::string warning;  // about the text that the bytes come from; mostly empty
    std::string file = {};
    size_t number = 0;  // of several messages in the file, from 1; 0 of one message
};

// A file without messages.
struct Trouble {
    std::string file;
    std::string reason;  // for people
    int status;          // unreadable; malformed if the text is no hex
};

// Calls `use` for each message of each file; "-" and no files mean standard input. Returns the
// largest of the statuses that `use` returns. For a file that cannot be read, or whose text is no
// hex, the reason is printed, and the status is unreadable or malformed. `report`, if there is one,
// is called for such a file, too. An empty file is a message of no bytes.
int for_each_message(const std::vector<std::string> &files, const InputOptions &options,
                     const std::function<int(const Input &)> &use,
                     const std::function<void(const Trouble &)> &report = nullptr);

// How --help describes the input.
extern const char *const input_help;

}  // namespace mdm::msg
