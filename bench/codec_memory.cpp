// SPDX-License-Identifier: Apache-2.0
//
// How much heap memory the messages that grow take, by the library and by hand. A line of the
// output has, with tabs between: the message, its elements, its bytes on the wire, the work, who
// does it, the bytes and the blocks that the result holds, and the most bytes that were held while
// it was made. Bytes are those of the C library's blocks, their rounding and heads included.
//
// A program of its own, because counting takes time.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <tuple>
#include <vector>

#include <glib.h>
#include <malloc.h>

#include "mdm/guarded.h"
#include "mdm/ipc.h"
#include "mdm/log.h"
#include "messages.hpp"

namespace {

struct Heap {
    size_t bytes = 0;
    size_t blocks = 0;
    size_t most_bytes = 0;
};

Heap heap;

size_t size_of(void *block)
{
    return malloc_usable_size(block) + sizeof(size_t);  // a word in front holds the size
}

void *added(void *block)
{
    if (block != nullptr) {
        heap.bytes += size_of(block);
        ++heap.blocks;
        heap.most_bytes = std::max(heap.most_bytes, heap.bytes);
    }
    return block;
}

void remove(void *block)
{
    if (block != nullptr) {
        heap.bytes -= size_of(block);
        --heap.blocks;
    }
}

}  // namespace

// The program's own malloc family, in front of the C library's. GLib must see it too.
#pragma GCC visibility push(default)
extern "C" {

void *__libc_malloc(size_t size);
void *__libc_calloc(size_t nmemb, size_t size);
void *__libc_realloc(void *ptr, size_t size);
void __libc_free(void *ptr);

void *malloc(size_t size)
{
    return added(__libc_malloc(size));
}

void *calloc(size_t nmemb, size_t size)
{
    return added(__libc_calloc(nmemb, size));
}

void *realloc(void *ptr, size_t size)
{
    remove(ptr);
    return added(__libc_realloc(ptr, size));
}

void free(void *ptr)
{
    remove(ptr);
    __libc_free(ptr);
}

}  // extern "C"
#pragma GCC visibility pop

namespace mdm::bench {
namespace {

// What `work` leaves on the heap is printed.
template <class Work>
void measure(const Message &message, size_t length, const char *name, const char *who, Work work)
{
    const Heap before = heap;
    heap.most_bytes = heap.bytes;
    work();
    const Heap after = heap;
    std::printf("%s\t%zu\t%zu\t%s\t%s\t%zu\t%zu\t%zu\n", message.name.c_str(), message.elements,
                length, name, who, after.bytes - before.bytes, after.blocks - before.blocks,
                after.most_bytes - before.bytes);
}

void measure_making(const Message &message, size_t length)
{
    mdm_msg_t msg = message.msg;
    uint32_t made = 0;
    uint8_t *bytes = nullptr;
    measure(message, length, "encode", "by hand",
            [&] { bytes = message.baseline.encode(msg, made); });
    g_free(bytes);
    measure(message, length, "encode", "library", [&] { bytes = ipc_serialize(&msg, &made); });
    g_free(bytes);
    measure(message, length, "seal", "library", [&] { bytes = sealed(&msg, &made); });
    g_free(bytes);
}

void measure_reading(const Message &message, const std::vector<uint8_t> &bytes)
{
    const auto length = static_cast<uint32_t>(bytes.size());
    mdm_msg_t msg{};
    measure(message, length, "decode", "by hand",
            [&] { message.baseline.decode(bytes.data(), msg); });
    message.baseline.release(msg);
    msg = {};
    measure(message, length, "decode", "library",
            [&] { std::ignore = ipc_deserialize(&msg, bytes.data(), length); });
    message.baseline.release(msg);

    mdm_msg_t *opened = nullptr;
    measure(message, length, "open", "by hand",
            [&] { opened = message.baseline.open(bytes.data(), length); });
    baseline_close(opened);
    measure(message, length, "open", "library",
            [&] { opened = ipc_open(bytes.data(), length, nullptr); });
    ipc_close(opened);
}

}  // namespace
}  // namespace mdm::bench

int main()
{
    using namespace mdm::bench;
    if (g_strcmp0(g_getenv("G_SLICE"), "always-malloc") != 0) {
        std::fputs("set G_SLICE=always-malloc, so that each list cell is a block\n", stderr);
        return EXIT_FAILURE;
    }
    mdm_log_set_level(MDM_LOG_NONE);
    static char buffer[BUFSIZ];
    std::setvbuf(stdout, buffer, _IOFBF, sizeof buffer);  // of its own, so that no print allocates
    for (const Message &message : growing_messages()) {
        const std::vector<uint8_t> bytes = encoded(message);
        measure_making(message, bytes.size());
        measure_reading(message, bytes);
    }
    return EXIT_SUCCESS;
}
