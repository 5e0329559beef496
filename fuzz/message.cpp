// SPDX-License-Identifier: Apache-2.0
#include "message.hpp"

#include <string>

namespace mdm::fuzz {
namespace {

constexpr uint32_t uncounted_size = 8;
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
    if (message.size() < sizeof(uint32_t)) {
        return;
    }
    uint32_t field = static_cast<uint32_t>(message.size()) - uncounted_size;
    for (size_t i = 0; i < sizeof field; ++i) {
        message[length_offset + i] = static_cast<uint8_t>(field);
        field >>= 8;
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
    for (const std::string &part : {std::string(fault.path), std::to_string(fault.offset),
                                    std::to_string(fault.needed), std::to_string(fault.left)}) {
        promise(mentions(lines.back(), part), "the log says what the fault says");
    }
}

}  // namespace mdm::fuzz
