// SPDX-License-Identifier: Apache-2.0
#include "support/fault.hpp"

#include <string_view>

namespace mdm::test {

bool is_true(const ipc_fault_t &fault, size_t length)
{
    if (is_untouched(fault) || uint64_t{fault.offset} + fault.left != length) {
        return false;
    }
    const std::string_view path = fault.path;
    if (path == "header.length") {  // it may also say less than there is
        return fault.offset == 0 && fault.needed != fault.left;
    }
    if (path == "header.type") {  // the type is there, but wrong
        return fault.offset == 4 && fault.needed == 1;
    }
    return fault.needed > fault.left;
}

std::string text_of(const ipc_fault_t &fault)
{
    return std::string(fault.path) + ": offset " + std::to_string(fault.offset) + ", needed " +
           std::to_string(fault.needed) + ", left " + std::to_string(fault.left);
}

std::string sentence(const ipc_fault_t &fault)
{
    gchar *text = ipc_fault_describe(&fault);
    std::string copy = text;
    g_free(text);
    return copy;
}

std::string refusal_line(const ipc_fault_t &fault)
{
    return "Refused: " + sentence(fault);
}

std::vector<LogLine> lines_of(const Origin &from, const ipc_fault_t &fault)
{
    std::vector<LogLine> lines = enter_and_leave(from);
    if (!is_untouched(fault)) {
        lines.insert(lines.begin() + 1, critical(from, refusal_line(fault)));
    }
    return lines;
}

}  // namespace mdm::test
