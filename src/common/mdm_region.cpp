// SPDX-License-Identifier: Apache-2.0
#include "mdm_region.hpp"

#include "mdm_wire.hpp"

namespace mdm {
namespace {

// What a byte of a message needs at most, texts aside: four of them may be a number in a list, with
// a record and a cell of its own.
constexpr size_t growth = (sizeof(GList) + sizeof(void *)) / word_size;

}  // namespace

// Twice the newest block, but no more than what is left may need.
bool Region::grow(size_t size, size_t left)
{
    size = room_of(size);
    const uint64_t needed = size + uint64_t{left} * growth;
    capacity_ =
        allocation_size(std::min(std::max<uint64_t>(size, uint64_t{capacity_} * 2), needed));
    auto *block = static_cast<Block *>(g_try_malloc(capacity_));
    if (block == nullptr) {
        return false;
    }
    Block *first = first_block(msg_);
    block->next = first->next;
    first->next = block;
    begin_ = reinterpret_cast<std::byte *>(block + 1);
    end_ = reinterpret_cast<std::byte *>(block) + capacity_;
    return true;
}

void Region::release_further(const Block *first)
{
    Block *block = first->next;
    while (block != nullptr) {
        Block *next = block->next;
        g_free(block);
        block = next;
    }
}

}  // namespace mdm
