// SPDX-License-Identifier: Apache-2.0
//
// Messages that a sender may pass, drawn at random. Each is built together with the bytes that must
// travel, which are made without the library: once as the sender sends the body, and once as a
// receiver sends on the body that it has decoded.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "mdm/message.h"
#include "support/format.hpp"
#include "support/wire.hpp"

namespace mdm::test {

bool any_bool();
uint32_t any_word();

// A message, and the bytes that must travel of its body.
struct SentMessage {
    mdm_msg_t msg{};
    Bytes first;  // as it is sent
    Bytes again;  // as it is sent on by a receiver
    bool may_be_sent_on = true;
    bool sends_pointer_as_param = false;
    bool is_received = true;      // or left unread
    bool is_all_released = true;  // or some blocks stay with the owner of the message
    bool is_whole = true;         // or not all that the message holds is sent
    bool is_whole_again = true;   // the same for a receiver that sends it on

    // Where the pointers of the payload stand, and the first cells of its lists.
    std::vector<void *> pointers;
    std::vector<GList *> lists;

    // The memory that the message points at lives as long as this does.
    std::vector<std::shared_ptr<void>> kept;
    char *keep(const std::string &text);
};

// The message has one of the category's types, and any header.
SentMessage any_message(const CategoryFormat &category);

// A whole message, made without the library.
Bytes message_bytes(const mdm_msg_t &msg, const Bytes &body);

// Makes the body's second word zero.
Bytes without_param(Bytes bytes, size_t body_size);

}  // namespace mdm::test
