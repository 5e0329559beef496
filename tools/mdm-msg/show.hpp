// SPDX-License-Identifier: Apache-2.0
//
// The bytes of a message, a line for each part.
#pragma once

#include <cstdio>
#include <optional>

#include "parts.hpp"

namespace mdm::msg {

struct ShowOptions {
    bool full = false;        // all bytes and whole texts
    bool color = false;       // colours of a terminal
    bool hide_texts = false;  // lengths in place of texts and raw bytes
    bool any_length = false;  // the parts of a message whose length field alone is wrong
};

// What is wrong with a message.
struct ShowFaults {
    std::optional<ipc_fault_t> fault = {};
    std::optional<ipc_fault_t> other = {};  // with a true length field, if `any_length` asks for it
};

ShowFaults show_message(std::FILE *out, Bytes message, const ShowOptions &options);

// Whether `any_length` would show more.
bool is_length_alone(Bytes message, const ipc_fault_t &fault);

}  // namespace mdm::msg
