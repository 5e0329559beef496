// SPDX-License-Identifier: Apache-2.0
//
// What is said about a message.
#pragma once

#include <optional>
#include <string>

#include "input.hpp"
#include "parts.hpp"

namespace mdm::msg {

// The names of the category and the form, found while the parts are visited.
class Names {
public:
    void see(const ipc_part_t &part);

    // Null if the message has no such part.
    const char *category() const { return category_; }
    const char *form() const { return form_; }

private:
    uint8_t type_ = 0;
    const char *category_ = nullptr;
    const char *form_ = nullptr;
};

// Prints the line on standard error about a message that is malformed or whose text is doubtful,
// if it is. `hint` is added for a fault. Returns whole or malformed.
int judge(const Input &input, const std::optional<ipc_fault_t> &fault,
          const std::string &hint = "");

}  // namespace mdm::msg
