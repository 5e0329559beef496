// SPDX-License-Identifier: Apache-2.0
//
// Faults of the guarded path, and their texts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "mdm/guarded.h"
#include "support/log_recorder.hpp"

namespace mdm::test {

// A fault and a length that no call has written to.
inline constexpr char untouched_path[] = "untouched";
inline constexpr ipc_fault_t untouched_fault = {0xA1A2A3A4, 0xB1B2B3B4, 0xD1D2D3D4, untouched_path};
inline constexpr uint32_t untouched_length = 0xC0C1C2C3;

inline bool is_untouched(const ipc_fault_t &fault)
{
    return fault.offset == untouched_fault.offset && fault.needed == untouched_fault.needed &&
           fault.left == untouched_fault.left && fault.path == untouched_path;
}

// Whether the fault is true for bytes of this length: a check of the envelope has found it, or a
// read that would have left the bytes.
bool is_true(const ipc_fault_t &fault, size_t length);

// All fields of a fault.
std::string text_of(const ipc_fault_t &fault);

// The sentence of ipc_fault_describe().
std::string sentence(const ipc_fault_t &fault);

// The critical line of a refusal, from the function's name on.
std::string refusal_line(const ipc_fault_t &fault);

// All lines of a call that refuses a message with this fault, or refuses none if it is untouched.
std::vector<LogLine> lines_of(const Origin &from, const ipc_fault_t &fault);

}  // namespace mdm::test
