// SPDX-License-Identifier: Apache-2.0
#include "support/fault.hpp"

namespace mdm::test {

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

}  // namespace mdm::test
