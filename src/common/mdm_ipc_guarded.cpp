// SPDX-License-Identifier: Apache-2.0
//
// The guarded path: the envelope's checks, and the categories' reading and writing code over the
// checked cursors.
#include "mdm/guarded.h"

#include <optional>

#include "mdm_ipc_envelope.hpp"
#include "mdm_log.hpp"

namespace mdm {
namespace {

bool has_envelope(const uint8_t *buffer, uint32_t length)
{
    return buffer != nullptr && length >= smallest_message &&
           load_u32(buffer + ipc_head::length) == length - uncounted_size &&
           is_message_type(buffer[ipc_head::type]);
}

// Of bytes for which has_envelope() is false.
[[gnu::cold, gnu::noinline]] ipc_fault_t fault_of_envelope(const uint8_t *buffer, uint32_t length)
{
    if (buffer == nullptr || length < word_size) {
        return {ipc_head::length, word_size, buffer == nullptr ? 0 : length, fault_path::length};
    }
    const uint64_t claimed = uint64_t{load_u32(buffer + ipc_head::length)} + uncounted_size;
    if (claimed != length) {
        return {ipc_head::length, saturated(claimed), length, fault_path::length};
    }
    if (length < smallest_message) {
        return {ipc_head::length, smallest_message, length, fault_path::length};
    }
    return {ipc_head::type, 1, length - ipc_head::type, fault_path::type};
}

// Null, and the fault, on refusal.
mdm_msg_t *open(const uint8_t *buffer, uint32_t length, ipc_fault_t &fault)
{
    if (!has_envelope(buffer, length)) {
        fault = fault_of_envelope(buffer, length);
        return nullptr;
    }
    CheckedReader in(buffer, length, ipc_head::fields, fault);
    mdm_msg_t *msg = in.message();
    if (msg == nullptr) [[unlikely]] {
        return nullptr;
    }
    msg->type = buffer[ipc_head::type];
    msg->hdr_byte = buffer[ipc_head::hdr_byte];
    in.fields(*msg, head_fields);
    const GuardedRow &row = guarded_row(msg->type);
    if (in && row.open != nullptr) {
        row.open(in, msg->body);
    }
    if (!in) {
        Region::release(msg);
        return nullptr;
    }
    return msg;
}

// What keeps a message from being sized.
std::optional<ipc_fault_t> fault_of_message(const mdm_msg_t *msg)
{
    if (msg == nullptr) {
        return ipc_fault_t{0, 0, 0, fault_path::message};
    }
    if (!is_message_type(msg->type) || guarded_row(msg->type).seal == nullptr) {
        return ipc_fault_t{ipc_head::type, 0, 0, fault_path::type};
    }
    if (const char *path = guarded_row(msg->type).unsound(&msg->body)) {
        return ipc_fault_t{uncounted_size + size_of_fields(*msg, head_fields), 0, 0, path};
    }
    return std::nullopt;
}

// The same for a message that nothing keeps from being sized.
uint8_t *seal_sized(mdm_msg_t *msg, uint32_t *out_length, ipc_fault_t &fault)
{
    const int32_t total = total_size(handler_row(msg->type), msg);
    if (total < static_cast<int32_t>(uncounted_size)) {
        fault = {ipc_head::length, smallest_message, 0, fault_path::length};
        return nullptr;
    }
    const auto length = static_cast<uint32_t>(total);
    auto *buffer = static_cast<uint8_t *>(g_try_malloc0(buffer_size(length)));
    if (buffer == nullptr) [[unlikely]] {
        fault = fault_without_memory(0, buffer_size(length));
        return nullptr;
    }
    set_envelope(buffer, *msg, length);
    CheckedWriter out(buffer, length, ipc_head::fields, fault);
    out.fields(*msg, head_fields);
    if (out) {
        guarded_row(msg->type).seal(out, msg->body);
    }
    if (!out) {
        g_free(buffer);
        return nullptr;
    }
    *out_length = length;
    return buffer;
}

// Null, and the fault, on refusal.
uint8_t *seal(mdm_msg_t *msg, uint32_t *out_length, ipc_fault_t &fault)
{
    if (const auto found = fault_of_message(msg)) {
        fault = *found;
        return nullptr;
    }
    const mdm_body_t before = msg->body;
    uint8_t *buffer = seal_sized(msg, out_length, fault);
    if (buffer == nullptr) {
        msg->body = before;
    }
    return buffer;
}

// Logs why an exported function refuses, in its name, and tells whoever asked.
[[gnu::cold, gnu::noinline]] void refuse(const char *function, int line, const ipc_fault_t &found,
                                         ipc_fault_t *fault)
{
    MDM_CRITICAL_OF(function, line, "Refused: %s", FaultText(found).c_str());
    if (fault != nullptr) {
        *fault = found;
    }
}

}  // namespace
}  // namespace mdm

mdm_msg_t *ipc_open(const uint8_t *buffer, uint32_t length, ipc_fault_t *fault)
{
    MDM_ENTER();
    ipc_fault_t found;  // written on refusal
    mdm_msg_t *msg = mdm::open(buffer, length, found);
    if (msg == nullptr) {
        mdm::refuse(__func__, __LINE__, found, fault);
    }
    return MDM_EXIT(msg);
}

void ipc_close(mdm_msg_t *msg)
{
    if (msg != nullptr) {
        mdm::Region::release(msg);
    }
}

uint8_t *ipc_seal(mdm_msg_t *msg, uint32_t *out_length, ipc_fault_t *fault)
{
    MDM_ENTER();
    ipc_fault_t found;  // written on refusal
    uint8_t *buffer = mdm::seal(msg, out_length, found);
    if (buffer == nullptr) {
        mdm::refuse(__func__, __LINE__, found, fault);
    }
    return MDM_EXIT(buffer);
}
