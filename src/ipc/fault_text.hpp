// SPDX-License-Identifier: Apache-2.0
//
// The sentence that tells a person about a fault.
#pragma once

#include <array>

#include "mdm/guarded.h"

namespace mdm {

// The sentence of a fault. It takes no memory, because that may be what is missing. A path is never
// so long that the sentence would be cut.
class FaultText {
public:
    explicit FaultText(const ipc_fault_t &fault);
    const char *c_str() const { return text_.data(); }

private:
    std::array<char, 256> text_;
};

}  // namespace mdm
