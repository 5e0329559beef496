// SPDX-License-Identifier: Apache-2.0
#include "guarded_baseline_check.hpp"

#include <cstddef>
#include <cstring>
#include <optional>

#include "mdm/guarded.h"
#include "support/dump.hpp"

namespace mdm::bench {
namespace {

using Bytes = std::vector<uint8_t>;

constexpr size_t word = 4;
constexpr size_t length_offset = 0;
constexpr size_t type_offset = 4;
constexpr size_t text_offset = 16;
constexpr size_t header_size = 40;
constexpr uint8_t last_type = 80;

// Each cut and each change of a message beyond this size would take too long.
constexpr size_t largest_tried = 4096;

uint32_t load(const Bytes &bytes, size_t offset)
{
    uint32_t value = 0;
    std::memcpy(&value, bytes.data() + offset, word);
    return value;
}

void store(Bytes &bytes, size_t offset, uint32_t value)
{
    std::memcpy(bytes.data() + offset, &value, word);
}

// Each body of the benchmark begins with its discriminator. No value if the bytes end before it.
std::optional<uint32_t> discriminator(const Bytes &bytes)
{
    const size_t offset = header_size + load(bytes, text_offset);
    return offset + word > bytes.size() ? std::nullopt : std::optional(load(bytes, offset));
}

// Whether changed bytes are still a message of the original's type and form, as far as they tell: a
// baseline knows no other.
bool is_of_same_form(const Bytes &original, const Bytes &changed)
{
    const uint8_t type = changed[type_offset];
    if (type == 0 || type > last_type) {
        return true;
    }
    const std::optional<uint32_t> told = discriminator(changed);
    return type == original[type_offset] && (!told || told == discriminator(original));
}

bool opens_alike(BaselineOpen *open, const Bytes &bytes)
{
    const auto length = static_cast<uint32_t>(bytes.size());
    mdm_msg_t *msg = open(bytes.data(), length);
    mdm_msg_t *expected = ipc_open(bytes.data(), length, nullptr);
    const bool alike = msg == nullptr || expected == nullptr
                           ? msg == expected
                           : test::dump(*msg) == test::dump(*expected);
    if (msg != nullptr) {
        baseline_close(msg);
    }
    ipc_close(expected);
    return alike;
}

// The first so many of the bytes, framed as a message of that size.
Bytes cut(const Bytes &bytes, size_t size)
{
    Bytes shorter(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
    if (size >= word) {
        store(shorter, length_offset, static_cast<uint32_t>(size) - 8);
    }
    return shorter;
}

bool opens_alike_at(size_t offset, BaselineOpen *open, const Bytes &bytes)
{
    if (!opens_alike(open, cut(bytes, offset))) {
        return false;
    }
    const auto left = static_cast<uint32_t>(bytes.size() - offset - word);
    Bytes changed = bytes;
    for (const uint32_t value :
         {0U, 1U, left - 1, left, left + 1, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        store(changed, offset, value);
        if (is_of_same_form(bytes, changed) && !opens_alike(open, changed)) {
            return false;
        }
    }
    return true;
}

}  // namespace

bool opens_like_library(BaselineOpen *open, const Bytes &bytes)
{
    if (!opens_alike(open, bytes) || open(nullptr, header_size) != nullptr) {
        return false;
    }
    if (bytes.size() > largest_tried) {
        return true;
    }
    for (size_t offset = 0; offset + word <= bytes.size(); ++offset) {
        if (!opens_alike_at(offset, open, bytes)) {
            return false;
        }
    }
    return true;
}

}  // namespace mdm::bench
