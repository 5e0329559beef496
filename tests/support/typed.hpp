// SPDX-License-Identifier: Apache-2.0
//
// The typed functions of every form, with a payload for each.
#pragma once

#include <cstdint>
#include <ostream>
#include <span>

#include "mdm/message.h"
#include "support/format.hpp"

namespace mdm::test {

// Functions that fill and read one form. What reading returns may be filled in again.
struct TypedForm {
    mdm_form_t form;
    uint8_t first_type;   // of the category
    bool is_only;         // one discriminator selects the form, and filling takes none
    const void *payload;  // an example
    bool (*fill)(mdm_msg_t &msg, uint32_t type, const void *payload);  // null if nothing fills it
    const void *(*read)(const mdm_msg_t &msg);
};

// All forms but those of the head alone, which has no payload.
std::span<const TypedForm> typed_forms();
std::ostream &operator<<(std::ostream &out, const TypedForm &typed);

// Filling with the head alone.
struct TypedHead {
    uint8_t first_type;
    bool (*fill)(mdm_msg_t &msg, uint32_t type);
};
std::span<const TypedHead> typed_heads();

// How many raw bytes, or strings of an array, the examples have.
inline constexpr size_t raw_size = 5;
inline constexpr size_t array_size = 3;

// The public form that a form of the description is.
mdm_form_t public_form_of(const CategoryFormat &category, const Form &form);

}  // namespace mdm::test
