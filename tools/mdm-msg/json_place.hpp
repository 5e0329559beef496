// SPDX-License-Identifier: Apache-2.0
//
// Where the parts of a message stand in its JSON. The paths of the parts decide it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "mdm/inspect.h"

namespace mdm::msg {

// A step from a JSON value to a value in it: to a member of an object, or to an element of an array
// if the position is not negative.
struct JsonStep {
    std::string_view name;
    int32_t position = -1;
};

using JsonPlace = std::vector<JsonStep>;

// The places of one message's parts, which come in the order of the bytes.
//
//     header.type                        header, type
//     wifi.network.detail.w3             body, network, detail, w3
//     wifi.ssids, element 1              body, ssids, [1]
//     apn.profile.num0, element 1        body, profiles, [1], num0
//     app_res.control.pkg_list, 1 and 0  body, controls, [1], pkg_list, [0]
//     padding                            padding
class JsonPlaces {
public:
    JsonPlace of(const ipc_part_t &part);

private:
    std::string_view list_;  // the last one: its elements have paths without its name
};

// The place as RFC 9535 writes it: "$.body.profiles[1].num0". Names that are no identifiers stand
// in brackets: "$['a b']".
std::string json_path(const JsonPlace &place);

}  // namespace mdm::msg
