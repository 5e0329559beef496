// SPDX-License-Identifier: Apache-2.0
#include "message.hpp"

#include <string>

namespace mdm::fuzz {

uint8_t byte_at(std::span<const uint8_t> bytes, size_t offset)
{
    return offset < bytes.size() ? bytes[offset] : 0;
}

void sweep(std::span<const uint8_t> bytes, uint8_t most,
           void (*with)(uint8_t letters, Bytes message))
{
    if (bytes.size() > largest_message) {
        return;
    }
    const Bytes message(bytes.begin(), bytes.end());
    const uint8_t letters = byte_at(message, second_reserved_offset);
    if (letters != every_one) {
        return with(letters, message);
    }
    for (uint8_t i = 0; i <= most; ++i) {
        with(i, message);
    }
}

void promise_logged(const ipc_fault_t &fault)
{
    const std::vector<std::string> lines = take_critical_lines();
    promise(!lines.empty(), "a refusal is logged");
    const Owned<gchar> sentence(ipc_fault_describe(&fault));
    const bool says_so = lines.back().find(sentence.get()) != std::string::npos;
    promise(says_so, "the log says what the fault says");
}

}  // namespace mdm::fuzz
