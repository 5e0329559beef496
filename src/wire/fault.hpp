// SPDX-License-Identifier: Apache-2.0
//
// The faults that the guarded path reports.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "mdm/guarded.h"

namespace mdm {

// Paths that name no field of a body.
namespace fault_path {
inline constexpr const char *message = "message";
inline constexpr const char *memory = "memory";
inline constexpr const char *length = "header.length";
inline constexpr const char *type = "header.type";
}  // namespace fault_path

constexpr uint32_t saturated(uint64_t number)
{
    return static_cast<uint32_t>(std::min<uint64_t>(number, std::numeric_limits<uint32_t>::max()));
}

// The fault of a failed allocation of `size` bytes.
inline ipc_fault_t fault_without_memory(uint32_t offset, size_t size)
{
    return {offset, saturated(size), 0, fault_path::memory};
}

}  // namespace mdm
