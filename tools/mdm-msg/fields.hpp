// SPDX-License-Identifier: Apache-2.0
//
// The parts of a message as a tree: what belongs to a record or a list stands below it.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "mdm/inspect.h"

namespace mdm::msg {

struct Field {
    enum class Kind {
        part,
        record,  // also the header, a body, and an element of a list that has fields
        list,    // its first part is its count, but for misc.array, which has none
    };

    Kind kind;
    std::string name;  // the last name of name_of(): "ssids[0]"
    // The parts from `first` up to `end`, which does not belong to it.
    size_t first;
    size_t end;
    std::vector<Field> fields = {};
};

std::vector<Field> fields_of(const std::vector<ipc_part_t> &parts);

}  // namespace mdm::msg
