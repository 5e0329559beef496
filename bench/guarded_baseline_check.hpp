// SPDX-License-Identifier: Apache-2.0
//
// Whether the guarded baseline does the work of ipc_open().
#pragma once

#include <cstdint>
#include <vector>

#include "guarded_baseline.hpp"

namespace mdm::bench {

// Whether both make the same message of the bytes; of a small message also, whether both make the
// same of it or refuse it, cut short anywhere or with another word anywhere in it.
bool opens_like_library(BaselineOpen *open, const std::vector<uint8_t> &bytes);

}  // namespace mdm::bench
