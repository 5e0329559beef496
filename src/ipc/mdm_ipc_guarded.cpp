// SPDX-License-Identifier: Apache-2.0
//
// The guarded path: it checks the envelope and runs the categories' handlers over guarded cursors.
// The handlers log nothing on this path.
#include "mdm/guarded.h"

#include <optional>

#include "ipc/envelope.hpp"
#include "ipc/fault_text.hpp"
#include "ipc/guarded.hpp"
#include "wire/fault.hpp"

namespace mdm {

ipc_fault_t fault_of_envelope(const uint8_t *buffer, uint32_t length)
{
    if (buffer == nullptr || length < word_size) {
        return {ipc_head::length, word_size, buffer == nullptr ? 0 : length, fault_path::length};
    }
    const uint64_t announced = uint64_t{load_u32(buffer + ipc_head::length)} + uncounted_size;
    if (announced != length) {
        return {ipc_head::length, saturated(announced), length, fault_path::length};
    }
    if (length < smallest_message) {
        return {ipc_head::length, smallest_message, length, fault_path::length};
    }
    return {ipc_head::type, 1, length - ipc_head::type, fault_path::type};
}

void report_refusal(const Log &log, int line, const ipc_fault_t &found, ipc_fault_t *fault)
{
    if (log.says(MDM_LOG_CRITICAL)) {
        log.critical(line, "Refused: %s", FaultText(found).c_str());
    }
    if (fault != nullptr) {
        *fault = found;
    }
}

namespace {

// On refusal the result is null, and the fault is set.
mdm_msg_t *open(const uint8_t *buffer, uint32_t length, ipc_fault_t &fault)
{
    if (!has_envelope(buffer, length)) {
        fault = fault_of_envelope(buffer, length);
        return nullptr;
    }
    Arena arena(length);
    mdm_msg_t *msg = arena.message();
    if (msg == nullptr) [[unlikely]] {
        fault = fault_without_memory(ipc_head::fields, arena.capacity());
        return nullptr;
    }
    msg->type = buffer[ipc_head::type];
    msg->hdr_byte = buffer[ipc_head::hdr_byte];
    const Category category = category_of(msg->type);
    Reader in(buffer, ipc_head::fields, length, category.log(Log::Function::silent), fault, arena);
    in.message_head(*msg);
    if (in && category.row.get != nullptr) {  // Q-GUARDED-6
        category.get(in, &msg->body);         // Q-ENVELOPE-17
    }
    if (!in) {
        Arena::release(msg);
        return nullptr;
    }
    return msg;
}

// The fault that keeps a message from being sized and sealed, if it has one.
std::optional<ipc_fault_t> fault_of_message(const mdm_msg_t *msg)
{
    if (msg == nullptr) {
        return ipc_fault_t{0, 0, 0, fault_path::message};
    }
    if (!is_message_type(msg->type) || category_of(msg->type).row.size == nullptr) {
        return ipc_fault_t{ipc_head::type, 0, 0, fault_path::type};
    }
    const Category category = category_of(msg->type);
    ValidateHandler *validate = category.row.validate;
    const char *path = validate != nullptr ? validate(msg->body, category.names) : nullptr;
    return path != nullptr ? std::optional(ipc_fault_t{head_size(*msg), 0, 0, path}) : std::nullopt;
}

// Sizes and writes a message in which fault_of_message() has found no fault. On refusal the result
// is null, and the fault is set.
uint8_t *seal_sized(mdm_msg_t *msg, uint32_t *out_length, ipc_fault_t &fault)
{
    const Category category = category_of(msg->type);
    const Log silence = category.log(Log::Function::silent);
    Lengths lengths;
    const int32_t total = total_size(category.row, msg, lengths, silence);
    if (total < static_cast<int32_t>(uncounted_size)) {
        fault = {ipc_head::length, smallest_message, 0, fault_path::length};
        return nullptr;
    }
    const auto length = static_cast<uint32_t>(total);
    auto *buffer = static_cast<uint8_t *>(g_try_malloc(buffer_size(length)));
    if (buffer == nullptr) [[unlikely]] {
        fault = fault_without_memory(0, buffer_size(length));
        return nullptr;
    }
    set_envelope(buffer, *msg, length);
    Writer out(buffer, ipc_head::fields, length, silence, fault, &lengths);
    out.message_head(*msg);
    if (out && !category.set(out, &msg->body)) {
        out.refuse(category.names.data());  // GCOVR_EXCL_LINE: such a body was refused before
    }
    if (!out) {
        g_free(buffer);
        return nullptr;
    }
    out.clear_rest();
    *out_length = length;
    return buffer;
}

// On refusal the result is null, the fault is set, and the body is as it was.
uint8_t *seal(mdm_msg_t *msg, uint32_t *out_length, ipc_fault_t &fault)
{
    if (const auto found = fault_of_message(msg)) {
        fault = *found;
        return nullptr;
    }
    const mdm_body_t before = msg->body;
    uint8_t *buffer = seal_sized(msg, out_length, fault);
    if (buffer == nullptr) {
        msg->body = before;  // Q-GUARDED-5
    }
    return buffer;
}

}  // namespace
}  // namespace mdm

[[gnu::flatten]] mdm_msg_t *ipc_open(const uint8_t *buffer, uint32_t length, ipc_fault_t *fault)
{
    const mdm::Log log(MDM_ORIGIN("ipc_open"));
    MDM_ENTER();
    ipc_fault_t found;  // written on refusal
    mdm_msg_t *msg = mdm::open(buffer, length, found);
    if (msg == nullptr) {
        mdm::report_refusal(log, __LINE__, found, fault);
    }
    return MDM_EXIT(msg);
}

void ipc_close(mdm_msg_t *msg)
{
    if (msg != nullptr) {
        mdm::Arena::release(msg);
    }
}

uint8_t *ipc_seal(mdm_msg_t *msg, uint32_t *out_length, ipc_fault_t *fault)
{
    const mdm::Log log(MDM_ORIGIN("ipc_seal"));
    MDM_ENTER();
    ipc_fault_t found;  // written on refusal
    uint8_t *buffer = mdm::seal(msg, out_length, found);
    if (buffer == nullptr) {
        mdm::report_refusal(log, __LINE__, found, fault);
    }
    return MDM_EXIT(buffer);
}
