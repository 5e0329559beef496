// SPDX-License-Identifier: Apache-2.0
//
// The messages of the benchmark, each with its functions by hand.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "baseline.hpp"
#include "guarded_baseline.hpp"
#include "mdm/message.h"

namespace mdm::bench {

using Hook = void(mdm_msg_t &msg);

// One message by hand.
struct Baseline {
    BaselineEncode *encode;
    BaselineDecode *decode;
    BaselineRelease *release;
    BaselineOpen *open;
};

struct Message {
    std::string name;
    mdm_msg_t msg;
    Baseline baseline;
    size_t elements = 1;            // of a list, or bytes of a text that grows
    Hook *before_encode = nullptr;  // takes back what an encoding has stored in the body
    Hook *after_free = nullptr;     // releases what ipc_free() leaves to the owner
};

// Each message is made once and lives as long as the program.

// Messages of many kinds.
std::vector<Message> kinds_of_messages();

// One text and two kinds of lists, each in sizes from small to large: "text 16", "text 64", ...
std::vector<Message> growing_messages();

// Too small to be measured, and small enough for is_true() to try them with every change.
std::vector<Message> small_lists();

inline void run(Hook *hook, mdm_msg_t &msg)
{
    if (hook != nullptr) {
        hook(msg);
    }
}

// The bytes that ipc_serialize() makes.
std::vector<uint8_t> encoded(const Message &message);

// What ipc_seal() makes, without a fault.
uint8_t *sealed(mdm_msg_t *msg, uint32_t *length);

// Whether the functions by hand do the library's work, and ipc_seal() that of ipc_serialize(). A
// reason goes to stderr.
bool is_true(const Message &message);

}  // namespace mdm::bench
