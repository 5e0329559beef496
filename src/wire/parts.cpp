// SPDX-License-Identifier: Apache-2.0
#include "wire/parts.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "wire/words.hpp"

namespace mdm {

const uint8_t *Parts::take(ipc_part_t &part, uint32_t size)
{
    part.offset = offset_;
    part.size = size;
    const uint32_t offset = offset_;
    if (answer_ != nullptr) {
        return ask_for(part) ? new_bytes_ + offset : nullptr;
    }
    const uint8_t *bytes = bytes_ + offset;
    offset_ += part.size;
    left_ -= part.size;
    show(part, bytes);
    return has_stopped_ ? nullptr : bytes;
}

bool Parts::take_text(uint32_t size)
{
    if (answer_ != nullptr) {
        return add(text_, size);
    }
    offset_ += size;
    left_ -= size;
    return true;
}

bool Parts::take_all(const char *path, ipc_part_kind_t kind)
{
    ipc_part_t part = {path, kind, -1, -1, offset_, 0, 0, 0, nullptr};
    if (answer_ != nullptr) {
        return ask_for(part);
    }
    return left_ == 0 || take(part, left_) != nullptr;
}

uint8_t *Parts::release()
{
    return std::exchange(new_bytes_, nullptr);
}

// A text that is not all there is a count.
void Parts::show(ipc_part_t &part, const uint8_t *bytes)
{
    switch (part.kind) {
    case IPC_PART_U8:
        part.number = *bytes;
        break;
    case IPC_PART_STR: {
        const uint32_t length = load_u32(bytes);
        if (length <= left_) {
            part.size += length;
            part.bytes = bytes + word_size;
            part.length = length;
            break;
        }
        part.kind = IPC_PART_COUNT;
        [[fallthrough]];
    }
    case IPC_PART_U32:
    case IPC_PART_I32:
    case IPC_PART_COUNT:
        part.number = load_u32(bytes);
        break;
    case IPC_PART_BYTES:
    case IPC_PART_RESERVED:
    case IPC_PART_PADDING:
    case IPC_PART_REST:
        part.bytes = bytes;
        part.length = part.size;
        break;
    }
    has_stopped_ = !visit_(&part, user_data_);
}

bool Parts::ask_for(ipc_part_t &part)
{
    const uint32_t size = part.size;
    const ipc_part_kind_t kind = part.kind;
    part.length = size;
    if (!answer_(&part, user_data_)) {
        return false;
    }
    std::array<uint8_t, word_size> word{};
    switch (kind) {
    case IPC_PART_U8:
        word[0] = static_cast<uint8_t>(part.number);
        return part.number <= UINT8_MAX && add(word.data(), size);
    case IPC_PART_STR:
        text_ = part.bytes;
        store_u32(word.data(), part.length);
        return add(word.data(), word_size);
    case IPC_PART_U32:
    case IPC_PART_I32:
    case IPC_PART_COUNT:
        store_u32(word.data(), part.number);
        return add(word.data(), word_size);
    case IPC_PART_BYTES:
    case IPC_PART_RESERVED:
        return part.length == size && add(part.bytes, size);
    case IPC_PART_PADDING:
    case IPC_PART_REST:
        break;
    }
    return add(part.bytes, part.length);
}

bool Parts::add(const uint8_t *bytes, uint32_t size)
{
    if (size > left_ || (bytes == nullptr && size != 0)) {
        return false;
    }
    const uint32_t end = offset_ + size;
    if (end > capacity_) {
        const auto capacity = static_cast<uint32_t>(
            std::min<uint64_t>(UINT32_MAX, std::max<uint64_t>(256, uint64_t{end} * 2)));
        auto *grown = static_cast<uint8_t *>(g_try_realloc(new_bytes_, capacity));
        if (grown == nullptr) {
            missing_memory_ = capacity;
            return false;
        }
        new_bytes_ = grown;
        capacity_ = capacity;
    }
    if (size != 0) {
        std::memcpy(new_bytes_ + offset_, bytes, size);
    }
    offset_ = end;
    left_ -= size;
    return true;
}

}  // namespace mdm
