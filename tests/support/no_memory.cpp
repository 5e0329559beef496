// SPDX-License-Identifier: Apache-2.0
#include "support/no_memory.hpp"

#include <glib.h>

namespace mdm::test {
namespace {

bool allocations_fail = false;

}  // namespace

NoMemory::NoMemory()
{
    allocations_fail = true;
}

NoMemory::~NoMemory()
{
    allocations_fail = false;
}

}  // namespace mdm::test

// In front of GLib's own.
extern "C" gpointer g_try_malloc0(gsize size)
{
    return mdm::test::allocations_fail ? nullptr : g_malloc0(size);
}
