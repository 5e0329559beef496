// SPDX-License-Identifier: Apache-2.0
//
// The input of the targets that take a message: the message itself. The two bytes of its header
// that no reader looks at tell the target how to vary it.
#pragma once

#include <cstdint>
#include <span>

#include "mdm/guarded.h"
#include "support.hpp"
#include "support/fault.hpp"
#include "support/messages.hpp"

namespace mdm::fuzz {

inline constexpr size_t first_reserved_offset = 6;
inline constexpr size_t second_reserved_offset = 7;

// In the second reserved byte: every variation that is worth it, one after the other.
inline constexpr uint8_t every_one = 255;

// Larger messages may have more blocks than an allocation trace can hold, and show nothing new.
inline constexpr size_t largest_message = 4096;

uint8_t byte_at(std::span<const uint8_t> bytes, size_t offset);

// Calls with(letters, bytes). `letters`, from 0 to `most`, is the second reserved byte, or each
// number in turn if that byte is every_one.
void sweep(std::span<const uint8_t> bytes, uint8_t most,
           void (*with)(uint8_t letters, Bytes message));

// The last critical line says what the fault says.
void promise_logged(const ipc_fault_t &fault);

}  // namespace mdm::fuzz
