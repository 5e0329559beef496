// SPDX-License-Identifier: Apache-2.0
//
// The message envelope: frames a body with the 40-byte-plus-text header, checks and reads the
// header of received bytes, and dispatches by message type.
#include <array>
#include <cstddef>

#include "mdm_ipc_envelope.hpp"
#include "mdm_log.hpp"

namespace mdm {

#define MDM_ROW(category) MDM_ROW_RELEASED_BY(category, _free_##category)
#define MDM_ROW_RELEASED_BY(category, free)                            \
    {                                                                  \
        {_set_##category, _get_##category, _size_of_##category, free}, \
        {                                                              \
            _open_##category, _seal_##category, _unsound_in_##category \
        }                                                              \
    }

constexpr std::array<MessageRow, last_message_type + 1> message_rows = [] {
    std::array<MessageRow, last_message_type + 1> rows{};
    rows[1] = rows[2] = MDM_ROW(admin);
    rows[3] = rows[4] = MDM_ROW(pwd);
    rows[5] = rows[6] = MDM_ROW(security);
    rows[7] = rows[8] = MDM_ROW(wifi);
    rows[9] = rows[10] = MDM_ROW(bluetooth);
    rows[11] = rows[12] = MDM_ROW(eas);
    rows[13] = MDM_ROW(app);
    rows[14] = MDM_ROW(app_res);
    rows[15] = MDM_ROW(roaming);
    rows[16] = MDM_ROW_RELEASED_BY(roaming_res, _free_roaming);
    rows[17] = rows[18] = MDM_ROW(misc);
    rows[21] = rows[22] = MDM_ROW(apn);
    rows[23] = rows[24] = MDM_ROW(browser);
    rows[25] = rows[26] = MDM_ROW(date_time);
    rows[27] = rows[28] = MDM_ROW(remote);
    rows[29] = rows[30] = MDM_ROW(vpn);
    rows[31] = rows[32] = MDM_ROW(firewall);
    rows[33] = rows[34] = MDM_ROW(res);
    rows[35] = rows[36] = MDM_ROW(phone_res);
    rows[37] = rows[38] = MDM_ROW(enterprise);
    rows[39] = rows[40] = MDM_ROW(email);
    rows[45] = rows[46] = MDM_ROW(kiosk);
    rows[47] = rows[48] = MDM_ROW(container);
    rows[49] = rows[50] = MDM_ROW(location);
    rows[51] = rows[52] = MDM_ROW(log_manager);
    rows[53] = rows[54] = MDM_ROW(platform);
    rows[61] = MDM_ROW(app_cb);
    rows[63] = MDM_ROW(misc_cb);
    return rows;
}();

namespace {

uint8_t *_set_ipc_head(uint8_t *buffer, const mdm_msg_t &msg)
{
    Writer out(buffer + ipc_head::fields);
    out.fields(msg, head_fields);
    return out.position();
}

const uint8_t *_get_ipc_head(mdm_msg_t &msg, const uint8_t *buffer)
{
    release_string(msg.hdr_text);
    Reader in(buffer + ipc_head::fields);
    in.fields(msg, head_fields);
    return in.position();
}

void check_footer(const uint8_t *buffer, uint8_t type)
{
    const uint32_t length = load_u32(buffer + ipc_head::length);
    const uint8_t *end = buffer + length + uncounted_size + guard_offset;
    if (std::memcmp(end, guard.data(), guard.size()) != 0) {
        MDM_CRITICAL("Serialization has corrupted memory!!!!! (msg type=%d, len=%d)", type,
                     static_cast<int>(length));
    }
}

}  // namespace

uint8_t *_alloc_msg(const mdm_msg_t &msg, int32_t total)
{
    // Two checks, so that the log tells a nonsensical size from one that is merely too small.
    MDM_ASSERT(total >= 1, nullptr);
    MDM_ASSERT(total >= static_cast<int32_t>(uncounted_size), nullptr);

    const auto length = static_cast<uint32_t>(total);
    auto *buffer = static_cast<uint8_t *>(g_malloc0(buffer_size(length)));
    set_envelope(buffer, msg, length);
    return buffer;
}

uint8_t *ipc_serialize(const ipc_handler_row &row, mdm_msg_t *msg, uint32_t *out_length)
{
    const int32_t total = total_size(row, msg);
    uint8_t *buffer = _alloc_msg(*msg, total);
    MDM_ASSERT(buffer != nullptr, nullptr);

    uint8_t *lp_body = _set_ipc_head(buffer, *msg);
    if (row.set != nullptr) {
        lp_body = row.set(lp_body, &msg->body);
        if (lp_body == nullptr) {
            MDM_CRITICAL("lp_body is NULL");
        } else {
            check_footer(buffer, msg->type);
        }
    }
    *out_length = static_cast<uint32_t>(total);
    return MDM_EXIT(buffer);
}

int32_t ipc_deserialize(const ipc_handler_row &row, mdm_msg_t *msg, const uint8_t *buffer)
{
    msg->type = buffer[ipc_head::type];
    msg->hdr_byte = buffer[ipc_head::hdr_byte];

    const uint8_t *lp_body = _get_ipc_head(*msg, buffer);
    if (row.get != nullptr && row.get(&msg->body, lp_body) == nullptr) {
        MDM_CRITICAL("lp_body is NULL");
    }
    return MDM_EXIT(MDM_RESULT_SUCCESS);
}

}  // namespace mdm

// The exported functions take their steps in line: of a small message's time, calls would be a good
// part.
[[gnu::flatten]] uint8_t *ipc_serialize(mdm_msg_t *msg, uint32_t *out_length)
{
    MDM_ENTER();
    MDM_ASSERT(msg != nullptr, nullptr);
    MDM_ASSERT(mdm::is_message_type(msg->type), nullptr);

    const mdm::ipc_handler_row &row = mdm::handler_row(msg->type);
    if (row.size == nullptr) {
        return nullptr;
    }
    return mdm::ipc_serialize(row, msg, out_length);
}

[[gnu::flatten]] int32_t ipc_deserialize(mdm_msg_t *msg, const uint8_t *buffer, uint32_t length)
{
    MDM_ENTER();
    MDM_ASSERT(msg != nullptr, MDM_RESULT_FAILED);
    MDM_ASSERT(buffer != nullptr, MDM_RESULT_FAILED);
    // Fewer bytes hold no length field to compare; they are not read.
    MDM_ASSERT(length >= mdm::word_size, MDM_RESULT_FAILED);

    const uint32_t length_field = mdm::load_u32(buffer + mdm::ipc_head::length);
    MDM_ASSERT(length_field == length - mdm::uncounted_size, MDM_RESULT_FAILED);
    MDM_ASSERT(length_field >= mdm::smallest_length_field, MDM_RESULT_FAILED);
    const uint8_t type = buffer[mdm::ipc_head::type];
    MDM_ASSERT(mdm::is_message_type(type), MDM_RESULT_FAILED);

    return mdm::ipc_deserialize(mdm::handler_row(type), msg, buffer);
}

int32_t ipc_free(mdm_msg_t *msg)
{
    if (msg == nullptr) {
        return MDM_RESULT_INVALID_ARGUMENT;
    }
    if (msg->type > mdm::last_message_type) {
        return MDM_RESULT_FAILED;
    }
    mdm::release_string(msg->hdr_text);
    const mdm::ipc_handler_row &row = mdm::handler_row(msg->type);
    if (row.free != nullptr) {
        row.free(&msg->body);
    }
    return MDM_RESULT_SUCCESS;
}
