// SPDX-License-Identifier: Apache-2.0
//
// A message part by part: the categories' handlers run over a reader of parts.
#include "mdm/inspect.h"

#include "ipc/category.hpp"
#include "ipc/envelope.hpp"
#include "ipc/guarded.hpp"
#include "log/log.hpp"
#include "mdm/result.h"
#include "wire/arena.hpp"
#include "wire/cursor.hpp"
#include "wire/fault.hpp"
#include "wire/parts.hpp"
#include "wire/words.hpp"

namespace mdm {
namespace {

// The memory that the records of most messages fit into.
constexpr uint32_t first_block = 512;

// On failure the fault is set.
bool read_message(Reader &in, mdm_msg_t &msg, ipc_fault_t &fault)
{
    in.u32(fault_path::length);
    msg.type = in.u8(fault_path::type);
    if (in && !is_message_type(msg.type)) {
        fault = {ipc_head::type, 1, 0, fault_path::type};
        return false;
    }
    const Category category = category_of(msg.type);
    in.set_log(category.log(Log::Function::silent));
    msg.hdr_byte = in.u8("header.hdr_byte");
    in.reserved(ipc_head::fields - ipc_head::reserved, "header.reserved");
    in.message_head_by_fields(msg);
    if (in && category.row.get != nullptr) {
        category.get(in, &msg.body);
    }
    return static_cast<bool>(in);
}

bool read_message(Parts &parts, ipc_fault_t &fault)
{
    Arena arena(first_block);
    mdm_msg_t *msg = arena.message();
    if (msg == nullptr) [[unlikely]] {
        fault = fault_without_memory(ipc_head::fields, arena.capacity());
        return false;
    }
    Reader in(parts, category_of(0).log(Log::Function::silent), fault, arena);
    const bool is_read = read_message(in, *msg, fault);
    Arena::release(msg);
    return is_read;
}

// Shows every part, or the parts in front of a fault and the rest. False if there is a fault.
bool show(Parts &parts, const uint8_t *buffer, uint32_t length, ipc_fault_t &fault)
{
    if (has_envelope(buffer, length)) {
        if (read_message(parts, fault)) {
            parts.take_all("padding", IPC_PART_PADDING);
            return true;
        }
    } else {
        fault = fault_of_envelope(buffer, length);
        if (fault.offset == ipc_head::type) {
            ipc_part_t part = {fault_path::length, IPC_PART_U32, -1, -1, 0, 0, 0, 0, nullptr};
            parts.take(part, word_size);
        }
    }
    if (parts.has_stopped()) {
        return true;
    }
    parts.take_all("rest", IPC_PART_REST);
    return false;
}

// On refusal the result is null, and the fault is set.
uint8_t *compose(Parts &parts, uint32_t *out_length, ipc_fault_t &fault)
{
    if (!read_message(parts, fault)) {
        fault.left = 0;  // no answer follows
        return nullptr;
    }
    if (!parts.take_all("padding", IPC_PART_PADDING)) {
        fault = parts.missing_memory() != 0
                    ? fault_without_memory(parts.offset(), parts.missing_memory())
                    : ipc_fault_t{parts.offset(), 1, 0, "padding"};
        return nullptr;
    }
    *out_length = parts.offset();
    uint8_t *bytes = parts.release();
    store_u32(bytes + ipc_head::length, *out_length - uncounted_size);
    return bytes;
}

}  // namespace
}  // namespace mdm

int32_t ipc_inspect(const uint8_t *buffer, uint32_t length, ipc_visit_t visit, void *user_data,
                    ipc_fault_t *fault)
{
    const mdm::Log log(MDM_ORIGIN("ipc_inspect"));
    mdm::Parts parts(buffer, buffer != nullptr ? length : 0, visit, user_data);
    ipc_fault_t found;  // written on refusal
    if (mdm::show(parts, buffer, length, found)) {
        return MDM_RESULT_SUCCESS;
    }
    mdm::report_refusal(log, __LINE__, found, fault);
    return MDM_RESULT_FAILED;
}

uint8_t *ipc_compose(ipc_answer_t answer, void *user_data, uint32_t *out_length, ipc_fault_t *fault)
{
    const mdm::Log log(MDM_ORIGIN("ipc_compose"));
    mdm::Parts parts(answer, user_data);
    ipc_fault_t found;  // written on refusal
    uint8_t *bytes = mdm::compose(parts, out_length, found);
    if (bytes == nullptr) {
        mdm::report_refusal(log, __LINE__, found, fault);
    }
    return bytes;
}
