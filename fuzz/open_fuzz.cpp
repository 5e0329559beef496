// SPDX-License-Identifier: Apache-2.0
//
// Opening. ipc_open() reads only the given bytes, keeps to the bound of its memory, and all memory
// comes back. An opened message has the fields that ipc_deserialize() finds. A refusal reports a
// true fault.
//
// The target corrects the length field, unless the first reserved byte is set. The second reserved
// byte is the number of letters that the target puts in front of the header's text, which moves the
// body; 255 stands for every number up to 64.
#include <cstring>
#include <numeric>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "mdm/ipc.h"
#include "message.hpp"
#include "support/allocation_trace.hpp"
#include "support/dump.hpp"

namespace mdm::fuzz {
namespace {

constexpr size_t memory_for_each_byte = sizeof(void *) == 8 ? 10 : 6;
constexpr size_t memory_for_all = 4096;

constexpr uint8_t letters_to_sweep = 64;

// The fields that the trusting path finds in the bytes. Releases the blocks that it leaks.
std::string deserialized(const Block &bytes)
{
    const Silence silence;
    mdm_msg_t msg{};
    test::AllocationTrace trace;
    const int32_t result = ipc_deserialize(&msg, bytes.data(), bytes.size());
    trace.stop();
    promise(result == MDM_RESULT_SUCCESS, "what is opened can be deserialised");
    std::string description = test::dump(msg);
    test::release_blocks(trace.kept());
    return description;
}

struct Attempt {
    test::Opened msg;
    ipc_fault_t fault;
};

Attempt open(const Block &bytes)
{
    ipc_fault_t fault = test::untouched_fault;
    test::AllocationTrace trace;
    test::Opened msg(ipc_open(bytes.data(), bytes.size(), &fault));
    trace.stop();
    const std::vector<size_t> sizes = trace.allocated_sizes();
    promise(std::accumulate(sizes.begin(), sizes.end(), size_t{0}) <=
                bytes.size() * memory_for_each_byte + memory_for_all,
            "memory stays within its bound");
    promise(msg != nullptr || trace.kept().empty(), "a refusal keeps no memory");
    return {std::move(msg), fault};
}

// Faults of the envelope tell of missing bytes only for lengths.
bool is_of_envelope(const ipc_fault_t &fault)
{
    return std::string_view(fault.path) == "header.length" ||
           std::string_view(fault.path) == "header.type";
}

bool has_same_place(const ipc_fault_t &left, const ipc_fault_t &right)
{
    return left.offset == right.offset && std::strcmp(left.path, right.path) == 0;
}

ipc_fault_t fault_with(Bytes message, size_t more)
{
    message.resize(message.size() + more);
    test::correct_length(message);
    const Attempt attempt = open(Block(message));
    take_critical_lines();
    return attempt.fault;
}

// With one byte less than is missing the message is refused at the same place, and with all of them
// at a later one, if at all.
void promise_truly_needed(const Bytes &message, const ipc_fault_t &fault)
{
    const uint32_t missing = fault.needed - fault.left;
    if (uint64_t{missing} + message.size() > largest_message) {
        return;
    }
    const ipc_fault_t one_less = fault_with(message, missing - 1);
    promise(has_same_place(one_less, fault) && one_less.needed == fault.needed,
            "less than what is needed is not enough");
    const ipc_fault_t none = fault_with(message, missing);
    promise(!has_same_place(none, fault), "what is needed is enough");
}

void promise_true(const Bytes &message, const ipc_fault_t &fault)
{
    promise(fault.path != nullptr, "a fault has a path");
    promise(fault.offset + fault.left == message.size(), "a fault's place is in the bytes");
    promise_logged(fault);
    if (!is_of_envelope(fault)) {
        promise(fault.needed > fault.left, "more was needed than was left");
        promise_truly_needed(message, fault);
    }
}

void open_with(uint8_t letters, Bytes message)
{
    test::lengthen_text(message, letters);
    if (byte_at(message, first_reserved_offset) == 0) {
        test::correct_length(message);
    }
    const Block bytes(message);
    const Attempt attempt = open(bytes);
    if (attempt.msg == nullptr) {
        promise_true(message, attempt.fault);
    } else {
        promise(test::is_untouched(attempt.fault), "nothing is at fault in what is opened");
        take_critical_lines();
        promise_same(test::dump(*attempt.msg), deserialized(bytes),
                     "both readers find the same fields");
    }
    promise(bytes.holds(message), "the bytes are not changed");
}

}  // namespace
}  // namespace mdm::fuzz

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    mdm::fuzz::sweep({data, size}, mdm::fuzz::letters_to_sweep, mdm::fuzz::open_with);
    return 0;
}
