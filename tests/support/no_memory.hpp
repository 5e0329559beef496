// SPDX-License-Identifier: Apache-2.0
//
// Lets those calls fail for want of memory whose failure the library answers: g_try_malloc(),
// g_try_malloc0(), g_try_malloc_n(), g_try_realloc(), g_strdup_printf(), g_strsplit() and
// open_memstream().
#pragma once

#include <cstddef>

namespace mdm::test {

class NoMemory {
public:
    // So many calls still succeed.
    explicit NoMemory(size_t after = 0);
    ~NoMemory();
    NoMemory(const NoMemory &) = delete;
    NoMemory &operator=(const NoMemory &) = delete;
};

// Lets formatting into a stream end early for want of memory: vfprintf().
class NoMemoryForText {
public:
    NoMemoryForText();
    ~NoMemoryForText();
    NoMemoryForText(const NoMemoryForText &) = delete;
    NoMemoryForText &operator=(const NoMemoryForText &) = delete;
};

}  // namespace mdm::test
