// SPDX-License-Identifier: Apache-2.0
//
// A message as JSON, and JSON as a message:
//
//     {"header": {"length": 55, "type": 7, "hdr_byte": 90, "reserved": {"hex": "0000"}, ...},
//      "category": "wifi",
//      "form": "wifi.network",
//      "body": {"type": 345, "param": 0, "data_size": 11, "network": {"ssid": "abc", ...}},
//      "padding": {"hex": "00"}}
//
// The fields stand in the order of the bytes, at the places that json_place.hpp shows. The library
// says which fields a message has (mdm/inspect.h).
//
// A text or raw bytes: a string, or {"hex": "..."} if they are no UTF-8 or have a zero byte.
// A list: an array, or {"count": -5} for a negative count, which announces no elements.
// "padding" stands there if it is not empty.
//
// The JSON of a malformed message has what stands in front of the fault, then "rest" and
// "fault". A text whose bytes are not all there is {"count": 12}, and a list whose elements are not
// all there is {"count": 3, "elements": [...]}.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "json_reader.hpp"
#include "mdm/inspect.h"
#include "text.hpp"

namespace mdm::msg {

struct MessageJson {
    std::string text;                  // without a line break at its end
    std::optional<ipc_fault_t> fault;  // of a malformed message
};

// Nothing in the text acts on a terminal: the characters that quoted() escapes are escaped. The
// memory that the call takes is proportional to the size of the message.
MessageJson to_json(Bytes message, bool is_pretty);

// Escapes the characters that json-glib leaves as they are, and that act on a terminal or end a
// line.
std::string without_terminal_actions(const char *json);

struct MadeMessages {
    std::vector<std::vector<uint8_t>> messages;  // none if there is an error
    std::string error;  // empty if there is none: "$.body.type: expected a number ..., found \"7\""
};

// Makes a message of each value in the text. to_json() of a whole message makes that message again.
//
// The fields of the body and "header.type" must be there. Others that are missing are 0 or empty.
// "header.length" is computed. "category" and "form" are compared, if they are there. Nothing else
// may be there.
MadeMessages from_json(std::string_view text);

// Makes one message. False if there is an error.
bool from_json(JsonValue &value, std::vector<uint8_t> &message, std::string &error);

}  // namespace mdm::msg
