// SPDX-License-Identifier: Apache-2.0
#include "message.hpp"

#include <string>

#include "ipc/envelope.hpp"

namespace mdm::fuzz {
namespace {

constexpr size_t text_offset = ipc_head::fields + 2 * word_size;
constexpr const char *no_path = "untouched";

bool mentions(const std::string &line, const std::string &text)
{
    return line.find(text) != std::string::npos;
}

}  // namespace

uint8_t byte_at(std::span<const uint8_t> bytes, size_t offset)
{
    return offset < bytes.size() ? bytes[offset] : 0;
}

void correct_length(std::vector<uint8_t> &message)
{
    if (message.size() >= word_size) {
        store_u32(message.data() + ipc_head::length,
                  static_cast<uint32_t>(message.size()) - uncounted_size);
    }
}

void lengthen_text(std::vector<uint8_t> &message, uint8_t letters)
{
    if (message.size() >= text_offset + word_size) {
        uint8_t *count = message.data() + text_offset;
        store_u32(count, load_u32(count) + letters);
        message.insert(message.begin() + text_offset + word_size, letters, 'x');
    }
}

ipc_fault_t untouched_fault()
{
    return {1, 2, 3, no_path};
}

bool is_untouched(const ipc_fault_t &fault)
{
    return fault.offset == 1 && fault.needed == 2 && fault.left == 3 && fault.path == no_path;
}

void promise_logged(const ipc_fault_t &fault)
{
    const std::vector<std::string> lines = take_critical_lines();
    promise(!lines.empty(), "a refusal is logged");
    const Owned<gchar> sentence(ipc_fault_describe(&fault));
    promise(mentions(lines.back(), sentence.get()), "the log says what the fault says");
}

}  // namespace mdm::fuzz
