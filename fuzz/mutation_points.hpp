// SPDX-License-Identifier: Apache-2.0
//
// The places where a sender could change an opened message.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <vector>

#include <glib.h>

#include "mdm/message.h"

namespace mdm::fuzz {

struct MutableList {
    GList *head;
    std::function<void(GList *)> replace;
    bool holds_texts;
};

struct MutationPoints {
    std::vector<char **> texts;  // those that are there, elements of lists excepted
    void **data_text = nullptr;  // a text in `data` itself
    std::vector<MutableList> lists;
    std::vector<std::function<void()>> removals;  // each takes a record, an array or raw bytes away
    int32_t *data_size = nullptr;
    // Whether the category takes `data_size` for the length of `data`, and the largest value that
    // it may be set to.
    bool takes_data_size_for_length = false;
    int32_t largest_data_size = std::numeric_limits<int32_t>::max();
    // Without one a message can be opened, but not sent.
    bool has_category = true;
    // Empty texts of its list do not arrive at all; elsewhere they arrive as null.
    bool drops_empty_texts = false;
    // An announced payload is not there, or not as long as it is announced.
    bool is_incomplete = false;
    // `data` is null where only a payload of `data_size` bytes will do.
    bool lacks_payload = false;
    // `data` holds raw bytes where a sender's would hold a record.
    bool is_raw_record = false;
};

// They follow from the message's type and discriminator, which must not change.
MutationPoints mutation_points_of(mdm_msg_t &msg);

}  // namespace mdm::fuzz
