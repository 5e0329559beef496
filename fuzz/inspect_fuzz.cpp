// SPDX-License-Identifier: Apache-2.0
//
// Inspecting. The parts cover the bytes one after the other, and are those of a second reader. The
// verdict is that of ipc_open(), and the values are those of the opened message. ipc_compose()
// makes the same bytes of the parts. All memory comes back.
//
// The two reserved bytes of the header mean what they mean to the target `open`.
#include <cstring>
#include <string>
#include <vector>

#include "mdm/result.h"
#include "message.hpp"
#include "support/allocation_trace.hpp"
#include "support/parts.hpp"

namespace mdm::fuzz {
namespace {

constexpr uint8_t letters_to_sweep = 8;

bool ignore(const ipc_part_t * /*part*/, void * /*user_data*/)
{
    return true;
}

void promise_no_memory_kept(const Block &bytes)
{
    const Silence silence;
    test::AllocationTrace trace;
    ipc_inspect(bytes.data(), bytes.size(), ignore, nullptr, nullptr);
    trace.stop();
    promise(trace.kept().empty(), "inspecting keeps no memory");
}

std::string lines_of(const std::vector<std::string> &values)
{
    std::string lines;
    for (const std::string &value : values) {
        lines += value + '\n';
    }
    return lines;
}

void promise_whole(const Bytes &message, const std::vector<test::Part> &parts, const mdm_msg_t &msg)
{
    promise_same(lines_of(test::values_of(parts)), lines_of(test::values_of(msg)),
                 "the parts have the values of the opened message");
    const test::Composition again = test::composed(parts);
    promise(again.bytes == message && again.length == message.size(),
            "the parts make the bytes again");
    promise_same(test::text_of(again.questions), test::text_of(test::questions_for(parts)),
                 "a message asks for its parts");
}

void promise_same_fault(const ipc_fault_t &left, const ipc_fault_t &right, const char *what)
{
    promise(left.offset == right.offset && left.needed == right.needed && left.left == right.left &&
                std::strcmp(left.path, right.path) == 0,
            what);
}

// The rest begins where the fault is.
void promise_rest(const Bytes &message, const std::vector<test::Part> &parts,
                  const ipc_fault_t &fault)
{
    const bool has_rest = !parts.empty() && parts.back().kind == IPC_PART_REST;
    promise(has_rest ? parts.back().offset == fault.offset : fault.offset == message.size(),
            "the rest stands behind the fault");
}

void inspect_with(uint8_t letters, Bytes message)
{
    test::lengthen_text(message, letters);
    if (byte_at(message, first_reserved_offset) == 0) {
        test::correct_length(message);
    }
    const test::Inspection found = test::inspected(message);
    promise_same(test::gaps_between(found.parts, message.size()), "", "the parts are the bytes");
    if (found.result == MDM_RESULT_SUCCESS) {
        promise(take_critical_lines().empty(), "nothing is logged but a refusal");
    } else {
        promise_logged(found.fault);
    }

    ipc_fault_t fault = test::untouched_fault;
    const Block bytes(message);
    const test::Opened msg(ipc_open(bytes.data(), bytes.size(), &fault));
    take_critical_lines();
    promise((msg != nullptr) == (found.result == MDM_RESULT_SUCCESS), "both come to one verdict");
    promise_same_fault(found.fault, fault, "both find one fault");
    msg != nullptr ? promise_whole(message, found.parts, *msg)
                   : promise_rest(message, found.parts, fault);

    const test::Inspection described = test::described(message);
    promise_same(test::text_of(found.parts), test::text_of(described.parts),
                 "the parts are those of the format");
    promise_same_fault(found.fault, described.fault, "the fault is that of the format");
    promise_no_memory_kept(bytes);
}

}  // namespace
}  // namespace mdm::fuzz

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    mdm::fuzz::sweep({data, size}, mdm::fuzz::letters_to_sweep, mdm::fuzz::inspect_with);
    return 0;
}
