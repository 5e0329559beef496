// SPDX-License-Identifier: Apache-2.0
#include "verdict.hpp"

#include <string_view>

#include "command.hpp"
#include "complain.hpp"

namespace mdm::msg {

void Names::see(const ipc_part_t &part)
{
    if (std::string_view(part.path) == "header.type") {
        type_ = static_cast<uint8_t>(part.number);
        category_ = ipc_category_name(type_);
    } else if (is_discriminator(part)) {
        form_ = ipc_form_name(type_, part.number);
    }
}

int judge(const Input &input, const std::optional<ipc_fault_t> &fault, const std::string &hint)
{
    std::string line = fault ? sentence(*fault) : "";
    for (const std::string &addition : {input.warning, fault ? hint : ""}) {
        line += line.empty() || addition.empty() ? addition : "; " + addition;
    }
    if (!line.empty()) {
        complain("%s: %s", input.name.c_str(), line.c_str());
    }
    return fault ? malformed : whole;
}

}  // namespace mdm::msg
