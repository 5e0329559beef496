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
};

// Calls `use` for each message of each file; "-" and no files mean standard input. Returns the
// largest of the statuses that `use` returns. For a file that cannot be read, or whose text is no
// hex, the reason is printed, and the status is unreadable or malformed.
int for_each_message(const std::vector<std::string> &files, const InputOptions &options,
                     const std::function<int(const Input &)> &use);

}  // namespace mdm::msg
