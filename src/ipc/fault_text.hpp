// SPDX-License-Identifier: Apache-2.0
//
// The sentence that describes a fault to a person.
#pragma once

#include <array>

#include "mdm/guarded.h"

namespace mdm {

// The sentence of a fault. It allocates no memory, because lack of memory may be the fault. No path
// is so long that the sentence is cut.
class FaultText {
public:
    explicit FaultText(const ipc_fault_t &fault);
    const char *c_str() const { return text_.data(); }

private:
    std::array<char, 256> text_;
};

}  // namespace mdm
