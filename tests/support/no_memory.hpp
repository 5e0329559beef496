// SPDX-License-Identifier: Apache-2.0
//
// Lets the calls of GLib fail whose failure the library answers: g_try_malloc0(), g_strdup_printf()
// and g_strsplit().
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
