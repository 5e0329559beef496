// SPDX-License-Identifier: Apache-2.0
#include "support/no_memory.hpp"

#include <cstdarg>

#include <dlfcn.h>
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
    using Split = gchar **(const gchar *, const gchar *, gint);
    static auto *const split = reinterpret_cast<Split *>(dlsym(RTLD_NEXT, "g_strsplit"));
    return mdm::test::allocations_fail ? nullptr : split(text, delimiter, max_tokens);
}
