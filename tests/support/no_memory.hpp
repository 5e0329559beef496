// SPDX-License-Identifier: Apache-2.0
//
// Lets the allocations fail whose failure a category answers: those of g_try_malloc0().
#pragma once

namespace mdm::test {

class NoMemory {
public:
    NoMemory();
    ~NoMemory();
    NoMemory(const NoMemory &) = delete;
    NoMemory &operator=(const NoMemory &) = delete;
};

}  // namespace mdm::test
