// SPDX-License-Identifier: Apache-2.0
//
// The parts of a message, as the sub-commands use them.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "mdm/inspect.h"
#include "text.hpp"

namespace mdm::msg {

// Calls `visit` for each part. Returns the fault of malformed bytes; the last part is the rest
// then, unless no byte is left.
std::optional<ipc_fault_t> inspect(Bytes message,
                                   const std::function<void(const ipc_part_t &)> &visit);

// The path with the positions in lists: "wifi.ssids[3]", "apn.profile[2].num0",
// "app_res.control[1].pkg_list[0]". A count has the name of its list.
std::string name_of(const ipc_part_t &part);

// The same with other texts in the places of the positions.
std::string name_of(const ipc_part_t &part, const std::string &element, const std::string &inner);

// "u8", "u32", "i32", "count", "str", "bytes", "reserved", "padding", "rest"
const char *kind_name(ipc_part_kind_t kind);

// Whether a number has a sign. A count has one, unless it is one of "misc.param_list" (Q-MISC-7).
bool has_sign(std::string_view path, ipc_part_kind_t kind);

// The number of U8, U32, I32 and COUNT, with its sign.
int64_t number_of(const ipc_part_t &part);

// The bytes of the other kinds, without the count of a text.
Bytes bytes_of(const ipc_part_t &part);

// Whether the part is the discriminator of a body: "wifi.type"
bool is_discriminator(const ipc_part_t &part);

// The sentence of a fault.
std::string sentence(const ipc_fault_t &fault);

}  // namespace mdm::msg
