// SPDX-License-Identifier: Apache-2.0
#include "support/no_memory.hpp"

#include <cstdarg>

#include <dlfcn.h>
#include <glib.h>

#include "support/allocation_trace.hpp"

namespace mdm::test {
namespace {

bool allocations_fail = false;

using Split = gchar **(const gchar *, const gchar *, gint);

Split *find_split()
{
    const AllocationTrace::Pause pause;  // the linker's own blocks are nobody's business
    return reinterpret_cast<Split *>(dlsym(RTLD_NEXT, "g_strsplit"));
}

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

extern "C" gchar *g_strdup_printf(const gchar *format, ...)
{
    if (mdm::test::allocations_fail) {
        return nullptr;
    }
    va_list args;
    va_start(args, format);
    gchar *text = g_strdup_vprintf(format, args);
    va_end(args);
    return text;
}

extern "C" gchar **g_strsplit(const gchar *text, const gchar *delimiter, gint max_tokens)
{
    static auto *const split = mdm::test::find_split();
    return mdm::test::allocations_fail ? nullptr : split(text, delimiter, max_tokens);
}
