// SPDX-License-Identifier: Apache-2.0
//
// The parts of a message: as ipc_inspect() shows them, as a second reader finds them, and as
// ipc_compose() asks for them. The second reader knows the format from format.hpp alone.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "mdm/inspect.h"
#include "support/fault.hpp"

namespace mdm::test {

// A copy of a part.
struct Part {
    std::string_view path;  // a static text
    ipc_part_kind_t kind = IPC_PART_U8;
    int32_t element = -1;
    int32_t inner = -1;
    uint32_t offset = 0;
    uint32_t size = 0;
    uint32_t number = 0;
    std::optional<uint32_t> bytes_at = {};  // the offset of `bytes` in the message
    std::vector<uint8_t> bytes = {};

    friend bool operator==(const Part &, const Part &) = default;
};
std::ostream &operator<<(std::ostream &out, const Part &part);

// One line for each.
std::string text_of(const std::vector<Part> &parts);

// `buffer` is the message, if `bytes` points into it.
Part copy_of(const ipc_part_t &part, const uint8_t *buffer);

// What a call of ipc_inspect() shows and returns.
struct Inspection {
    int32_t result = -1;
    ipc_fault_t fault = untouched_fault;
    std::vector<Part> parts = {};
};

// Inspects an exact heap copy of the bytes, so that a sanitizer sees a read beyond it.
Inspection inspected(const std::vector<uint8_t> &bytes);

// What the second reader finds in the bytes.
Inspection described(const std::vector<uint8_t> &bytes);

// Where the parts do not cover the bytes one after the other, or a part is empty; otherwise empty.
std::string gaps_between(const std::vector<Part> &parts, size_t length);

// The values of a whole message, in wire order, as a receiver can know them: a text ends at its
// first zero byte, and an empty one is null. Values that no receiver keeps are left out.
std::vector<std::string> values_of(const std::vector<Part> &parts);
std::vector<std::string> values_of(const mdm_msg_t &msg);

// What a call of ipc_compose() asks for and returns.
struct Composition {
    std::optional<std::vector<uint8_t>> bytes;  // empty if the call refuses
    uint32_t length = untouched_length;
    ipc_fault_t fault = untouched_fault;
    std::vector<Part> questions = {};  // without values; `size` is the asked length
};
using Answer = std::function<bool(ipc_part_t &)>;
Composition composed(const Answer &answer);

// Answers with the parts, in order. Where none is left, the padding is empty, and another answer is
// missing.
Composition composed(const std::vector<Part> &parts);

// The questions that lead to these parts of a whole message.
std::vector<Part> questions_for(const std::vector<Part> &parts);

}  // namespace mdm::test
