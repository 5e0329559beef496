// SPDX-License-Identifier: Apache-2.0
//
// The message envelope. It puts the header, 40 bytes and a text, in front of a body, checks and
// reads the header of received bytes, and finds the category's handlers by the message type.
#include "mdm/ipc.h"

#include "ipc/envelope.hpp"

namespace mdm {

void set_envelope(uint8_t *buffer, const mdm_msg_t &msg, uint32_t total)
{
    store_u32(buffer + ipc_head::length, total - uncounted_size);
    buffer[ipc_head::type] = msg.type;
    buffer[ipc_head::hdr_byte] = msg.hdr_byte;
    buffer[ipc_head::reserved] = 0;
    buffer[ipc_head::reserved + 1] = 0;
    std::memcpy(buffer + total, trailer.data(), trailer.size());
}

uint8_t *_alloc_msg(const mdm_msg_t &msg, int32_t total)
{
    const Log log(MDM_ORIGIN("_alloc_msg"));
    // Two checks on two lines, so that the log tells a total below 1 from one that is too small.
    MDM_ASSERT(total >= 1, nullptr);  // Q-ENVELOPE-5
    MDM_ASSERT(total >= static_cast<int32_t>(uncounted_size), nullptr);

    const auto length = static_cast<uint32_t>(total);
    auto *buffer = static_cast<uint8_t *>(g_malloc(buffer_size(length)));
    set_envelope(buffer, msg, length);
    return buffer;
}

namespace {

void check_footer(const uint8_t *buffer, uint8_t type)
{
    const uint32_t length = load_u32(buffer + ipc_head::length);
    const uint8_t *end = buffer + length + uncounted_size;  // Q-ENVELOPE-10
    if (std::memcmp(end + guard_offset, trailer.data() + guard_offset,
                    trailer.size() - guard_offset) != 0) {
        const Log log(MDM_ORIGIN("check_footer"));
        MDM_CRITICAL("Serialization has corrupted memory!!!!! (msg type=%d, len=%d)", type,
                     static_cast<int>(length));
    }
}

}  // namespace

uint8_t *ipc_serialize(const Category &category, mdm_msg_t *msg, uint32_t *out_length)
{
    const Log log(MDM_ORIGIN("ipc_serialize"));
    const ipc_handler_row &row = category.row;
    Lengths lengths;
    const int32_t total = total_size(row, msg, lengths, category.log(Log::Function::size));
    uint8_t *buffer = _alloc_msg(*msg, total);
    MDM_ASSERT(buffer != nullptr, nullptr);

    const auto length = static_cast<uint32_t>(total);
    Writer out(buffer, ipc_head::fields, length, category.log(Log::Function::set), &lengths);
    out.message_head(*msg);
    const bool is_written = row.set == nullptr || category.set(out, &msg->body);
    out.clear_rest();  // Q-ENVELOPE-11
    if (!is_written) {
        MDM_CRITICAL("lp_body is NULL");  // Q-ENVELOPE-7
    } else if (row.set != nullptr) {      // Q-ENVELOPE-9
        check_footer(buffer, msg->type);
    }
    *out_length = length;
    return MDM_EXIT(buffer);
}

int32_t ipc_deserialize(const Category &category, mdm_msg_t *msg, const uint8_t *buffer)
{
    const Log log(MDM_ORIGIN("ipc_deserialize"));
    msg->type = buffer[ipc_head::type];
    msg->hdr_byte = buffer[ipc_head::hdr_byte];
    release_string(msg->hdr_text);  // Q-ENVELOPE-16
    Reader in(buffer, ipc_head::fields, category.log(Log::Function::get));
    in.message_head(*msg);
    if (category.row.get != nullptr && !category.get(in, &msg->body)) {  // Q-ENVELOPE-17
        MDM_CRITICAL("lp_body is NULL");                                 // Q-ENVELOPE-7
    }
    return MDM_EXIT(MDM_RESULT_SUCCESS);
}

}  // namespace mdm

// `flatten` puts the steps of the exported functions in line, because calls would take a large part
// of a small message's time.
[[gnu::flatten]] uint8_t *ipc_serialize(mdm_msg_t *msg, uint32_t *out_length)
{
    const mdm::Log log(MDM_ORIGIN("ipc_serialize"));
    MDM_ENTER();
    MDM_ASSERT(msg != nullptr, nullptr);
    MDM_ASSERT(mdm::is_message_type(msg->type), nullptr);

    const mdm::Category category = mdm::category_of(msg->type);  // Q-ENVELOPE-12
    return category.row.size == nullptr ? nullptr : mdm::ipc_serialize(category, msg, out_length);
}

[[gnu::flatten]] int32_t ipc_deserialize(mdm_msg_t *msg, const uint8_t *buffer, uint32_t length)
{
    const mdm::Log log(MDM_ORIGIN("ipc_deserialize"));
    MDM_ENTER();
    MDM_ASSERT(msg != nullptr, MDM_RESULT_FAILED);
    MDM_ASSERT(buffer != nullptr, MDM_RESULT_FAILED);
    // A shorter buffer holds no length field to compare, so it is not read. Q-ENVELOPE-4
    MDM_ASSERT(length >= mdm::word_size, MDM_RESULT_FAILED);

    const uint32_t length_field = mdm::load_u32(buffer + mdm::ipc_head::length);
    MDM_ASSERT(length_field == length - mdm::uncounted_size, MDM_RESULT_FAILED);
    MDM_ASSERT(length_field >= mdm::smallest_length_field, MDM_RESULT_FAILED);
    const uint8_t type = buffer[mdm::ipc_head::type];
    MDM_ASSERT(mdm::is_message_type(type), MDM_RESULT_FAILED);

    return mdm::ipc_deserialize(mdm::category_of(type), msg, buffer);
}

int32_t ipc_free(mdm_msg_t *msg)  // Q-ENVELOPE-15
{
    if (msg == nullptr) {
        return MDM_RESULT_INVALID_ARGUMENT;  // Q-ENVELOPE-14
    }
    if (msg->type > mdm::last_message_type) {  // Q-ENVELOPE-13
        return MDM_RESULT_FAILED;
    }
    mdm::release_string(msg->hdr_text);
    const mdm::Category category = mdm::category_of(msg->type);
    if (category.row.free != nullptr) {
        category.row.free(category.log(mdm::Log::Function::free), &msg->body);
    }
    return MDM_RESULT_SUCCESS;
}
