// SPDX-License-Identifier: Apache-2.0
//
// The fields in which two messages differ.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "mdm/guarded.h"
#include "text.hpp"

namespace mdm::msg {

// What a line is about. The values are the marks in front of the lines.
enum class Mark : char {
    same = ' ',
    removed = '-',  // only in the first message
    added = '+',    // only in the second message
    changed = '~',
    note = '!',  // about the messages as a whole
};

using ShowLine = std::function<void(Mark mark, const std::string &text)>;

struct Faults {
    std::optional<ipc_fault_t> a;
    std::optional<ipc_fault_t> b;
};

// Shows the differences, and with `all` the rest, too. Returns why messages are malformed: these
// are compared up to the fault, the bytes behind it as one field. At least one line is about a
// difference if the bytes of the messages differ.
Faults compare(Bytes a, Bytes b, bool all, const ShowLine &show);

}  // namespace mdm::msg
