// SPDX-License-Identifier: Apache-2.0
//
// Faults of the guarded path as texts.
#pragma once

#include <string>

#include "mdm/guarded.h"

namespace mdm::test {

// What ipc_fault_describe() returns.
std::string sentence(const ipc_fault_t &fault);

// The critical line of a refusal, from the function's name on.
std::string refusal_line(const ipc_fault_t &fault);

}  // namespace mdm::test
