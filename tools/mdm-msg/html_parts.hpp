// SPDX-License-Identifier: Apache-2.0
//
// The two halves of a page, the bytes and the fields. The attribute data-p of both names the parts
// that they stand for by number: "12", or "5-9" for several.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mdm/inspect.h"
#include "text.hpp"

namespace mdm::msg {

// What the page is about.
struct Inspected {
    Bytes bytes;
    std::vector<ipc_part_t> parts;
    std::optional<ipc_fault_t> fault;
    bool hides_texts;
};

// Text for HTML, also between quotation marks.
std::string escaped(std::string_view text);

// The letter that page.css knows the kind by.
char class_of(ipc_part_kind_t kind);

// The first byte that is not decoded; nothing for a message that is whole. It may be behind the
// last byte.
std::optional<size_t> undecoded_from(const Inspected &message);

void append_bytes(std::string &out, const Inspected &message);
void append_fields(std::string &out, const Inspected &message);

}  // namespace mdm::msg
