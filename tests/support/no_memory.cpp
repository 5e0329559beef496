// SPDX-License-Identifier: Apache-2.0
#include "support/no_memory.hpp"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include <dlfcn.h>
#include <glib.h>

#include "support/allocation_trace.hpp"

namespace mdm::test {
namespace {

bool memory_is_short = false;
size_t allocations_left = 0;
bool formatting_fails = false;

bool allocation_fails()
{
    if (!memory_is_short) {
        return false;
    }
    if (allocations_left == 0) {
        return true;
    }
    --allocations_left;
    return false;
}

using Split = gchar **(const gchar *, const gchar *, gint);
using OpenMemoryStream = FILE *(char **, size_t *);
using Format = int(FILE *, const char *, va_list);

// The function in whose place one of those below stands.
template <class Function>
Function *find(const char *name)
{
    const AllocationTrace::Pause pause;  // the linker's own blocks are nobody's business
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

int format_text(FILE *stream, const char *format, va_list args)
{
    static auto *const real = find<Format>("vfprintf");
    if (formatting_fails) {
        std::fputs("the beginning", stream);
        errno = ENOMEM;
        return -1;
    }
    return real(stream, format, args);
}

}  // namespace

NoMemory::NoMemory(size_t after)
{
    memory_is_short = true;
    allocations_left = after;
}

NoMemory::~NoMemory()
{
    memory_is_short = false;
}

NoMemoryForText::NoMemoryForText()
{
    formatting_fails = true;
}

NoMemoryForText::~NoMemoryForText()
{
    formatting_fails = false;
}

}  // namespace mdm::test

// In front of the libraries' own.

extern "C" gpointer g_try_malloc(gsize size)
{
    return mdm::test::allocation_fails() ? nullptr : std::malloc(size);
}

extern "C" gpointer g_try_malloc0(gsize size)
{
    return mdm::test::allocation_fails() ? nullptr : std::calloc(1, size);
}

extern "C" gpointer g_try_malloc_n(gsize count, gsize size)
{
    return g_try_malloc(count * size);
}

extern "C" gpointer g_try_realloc(gpointer block, gsize size)
{
    return mdm::test::allocation_fails() ? nullptr : std::realloc(block, size);
}

extern "C" gchar *g_strdup_printf(const gchar *format, ...)
{
    if (mdm::test::allocation_fails()) {
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
    static auto *const split = mdm::test::find<mdm::test::Split>("g_strsplit");
    return mdm::test::allocation_fails() ? nullptr : split(text, delimiter, max_tokens);
}

extern "C" FILE *open_memstream(char **text, size_t *size)
{
    static auto *const open = mdm::test::find<mdm::test::OpenMemoryStream>("open_memstream");
    return mdm::test::allocation_fails() ? nullptr : open(text, size);
}

// Under both names that the compiler gives it.

extern "C" int vfprintf(FILE *stream, const char *format, va_list args)
{
    return mdm::test::format_text(stream, format, args);
}

extern "C" int __vfprintf_chk(FILE *stream, int /*flag*/, const char *format, va_list args)
{
    return mdm::test::format_text(stream, format, args);
}
