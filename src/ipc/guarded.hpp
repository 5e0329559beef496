// SPDX-License-Identifier: Apache-2.0
//
// What the functions for untrusted bytes share.
#pragma once

#include <cstdint>

#include "ipc/envelope.hpp"
#include "log/log.hpp"
#include "mdm/guarded.h"

namespace mdm {

inline bool has_envelope(const uint8_t *buffer, uint32_t length)
{
    return buffer != nullptr && length >= smallest_message &&
           load_u32(buffer + ipc_head::length) == length - uncounted_size &&
           is_message_type(buffer[ipc_head::type]);
}

// The fault of bytes for which has_envelope() is false.
[[gnu::cold]] ipc_fault_t fault_of_envelope(const uint8_t *buffer, uint32_t length);

// Logs why an exported function refuses, and gives the fault to a caller who asked for it.
[[gnu::cold]] void report_refusal(const Log &log, int line, const ipc_fault_t &found,
                                  ipc_fault_t *fault);

}  // namespace mdm
