// SPDX-License-Identifier: Apache-2.0
//
// Whether the guarded baseline does the work of ipc_open().
#pragma once

#include <cstdint>
#include <vector>

#include "guarded_baseline.hpp"

namespace mdm::bench {

// Whether both open the bytes as the same message. A small message is also cut at each place and
// gets other words at each place: both must open the result as the same message, or refuse it.
bool opens_like_library(BaselineOpen *open, const std::vector<uint8_t> &bytes);

}  // namespace mdm::bench
