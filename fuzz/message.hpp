// SPDX-License-Identifier: Apache-2.0
//
// The input of the targets that take a message: the message itself. The two bytes of its header
// that no reader looks at say what is done with it.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "mdm/guarded.h"
#include "support.hpp"

namespace mdm::fuzz {

inline constexpr size_t first_reserved_offset = 6;
inline constexpr size_t second_reserved_offset = 7;

// In the second reserved byte: every variation that is worth it, one after the other.
inline constexpr uint8_t every_one = 255;

// Above this, blocks may be more than an allocation trace can hold, and nothing new is to be found.
inline constexpr size_t largest_message = 4096;

uint8_t byte_at(std::span<const uint8_t> bytes, size_t offset);

// Puts the length field right, if there is room for one.
void correct_length(std::vector<uint8_t> &message);

// Puts letters in front of the header's text, if there is room for its count.
void lengthen_text(std::vector<uint8_t> &message, uint8_t letters);

struct Close {
    void operator()(mdm_msg_t *msg) const { ipc_close(msg); }
};
using Opened = std::unique_ptr<mdm_msg_t, Close>;

// A fault that no call has written to.
ipc_fault_t untouched_fault();
bool is_untouched(const ipc_fault_t &fault);

// What one critical line says of a fault.
void promise_logged(const ipc_fault_t &fault);

}  // namespace mdm::fuzz
