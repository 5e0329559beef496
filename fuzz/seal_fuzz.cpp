// SPDX-License-Identifier: Apache-2.0
//
// Sealing: the target opens a message, mutates it as the input says, and seals it. The sealed bytes
// equal those of ipc_serialize(), and open with the same fields. A refused message is unchanged.
//
// The target corrects the length field. The second reserved byte is the number of mutations; each
// takes the last three bytes of the input off the message. 255 stands for every mutation, one at
// a time.
#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "mdm/ipc.h"
#include "message.hpp"
#include "mutation_points.hpp"
#include "support/dump.hpp"

namespace mdm::fuzz {
namespace {

constexpr size_t mutation_size = 3;
constexpr size_t most_mutations = 8;
constexpr uint8_t change_of_element = 3;
constexpr uint8_t entry_of_list = 4;
constexpr uint8_t mutation_kinds = 6;
constexpr uint8_t mutation_ways = 10;

struct Mutation {
    uint8_t kind;
    uint8_t which;
    uint8_t how;
};

std::vector<Mutation> take_mutations(Bytes &message, size_t count)
{
    std::vector<Mutation> mutations;
    for (count %= most_mutations + 1; count > 0 && message.size() >= mutation_size; --count) {
        const auto mutation = message.end() - mutation_size;
        mutations.push_back({mutation[0], mutation[1], mutation[2]});
        message.erase(mutation, message.end());
    }
    return mutations;
}

// An opened message that a sender has changed before it sends it on.
class Mutated {
public:
    explicit Mutated(mdm_msg_t &msg) : points_(mutation_points_of(msg)) {}
    ~Mutated() { std::for_each(cells_.begin(), cells_.end(), g_list_free_1); }
    Mutated(const Mutated &) = delete;
    Mutated &operator=(const Mutated &) = delete;

    void mutate(const Mutation &mutation)
    {
        change(mutation);
        // In some categories a negative size, or none, takes the payload away.
        const bool has_payload = points_.data_size == nullptr || *points_.data_size > 0;
        keeps_its_fields_ = keeps_its_fields_ && has_payload;
    }

    // Whether a receiver still finds the same fields.
    bool keeps_its_fields() const { return keeps_its_fields_; }

private:
    void change(const Mutation &mutation)
    {
        switch (mutation.kind % mutation_kinds) {
        case 0:
            return change_text(mutation);
        case 1:
            return change_data_size(mutation);
        case 2:
            return remove(mutation);
        case change_of_element:
            return change_element(mutation);
        case entry_of_list:
            return enter_list(mutation);
        default:
            return lengthen_list(mutation);
        }
    }

    static char *some_text(uint8_t how)
    {
        static std::string nothing;
        static std::string letter = "x";
        static std::string letters(300, 'y');
        const std::array texts = {static_cast<char *>(nullptr), nothing.data(), letter.data(),
                                  letters.data()};
        return texts[how % texts.size()];
    }

    void change_text(const Mutation &mutation)
    {
        if (!points_.texts.empty()) {
            *points_.texts[mutation.which % points_.texts.size()] = some_text(mutation.how);
        }
    }

    void change_data_size(const Mutation &mutation)
    {
        if (points_.data_size == nullptr) {
            return;
        }
        constexpr auto least = std::numeric_limits<int32_t>::min();
        const int32_t size = *points_.data_size;
        const std::array sizes = {0, 1, -1, least, size / 2, 7, 8, 12, 400, MDM_MAX_PADDING};
        const int32_t changed =
            std::min(sizes[mutation.how % sizes.size()], points_.largest_data_size);
        // A shortened payload has no terminator.
        const bool is_cut = points_.takes_data_size_for_length && changed != size;
        keeps_its_fields_ = keeps_its_fields_ && !is_cut;
        *points_.data_size = changed;
    }

    void remove(const Mutation &mutation)
    {
        if (!points_.removals.empty()) {
            points_.removals[mutation.which % points_.removals.size()]();
            keeps_its_fields_ = false;
        }
    }

    MutableList *some_list(const Mutation &mutation)
    {
        return points_.lists.empty() ? nullptr
                                     : &points_.lists[mutation.which % points_.lists.size()];
    }

    // Null for an empty list.
    static GList *some_cell(const MutableList &list, uint8_t how)
    {
        const guint length = g_list_length(list.head);
        return length == 0 ? nullptr : g_list_nth(list.head, how % length);
    }

    static void *some_element(const MutableList &list, uint8_t how)
    {
        return list.holds_texts ? some_text(how) : nullptr;
    }

    void change_element(const Mutation &mutation)
    {
        MutableList *list = some_list(mutation);
        GList *cell = list == nullptr ? nullptr : some_cell(*list, mutation.how / 4);
        if (cell != nullptr) {
            cell->data = some_element(*list, mutation.how);
        }
    }

    // The owner of the list then knows another cell than the first, or no cell.
    void enter_list(const Mutation &mutation)
    {
        MutableList *list = some_list(mutation);
        if (list != nullptr) {
            list->head = mutation.how == 0 ? nullptr : some_cell(*list, mutation.how);
            list->replace(list->head);
            keeps_its_fields_ = false;
        }
    }

    void lengthen_list(const Mutation &mutation)
    {
        MutableList *list = some_list(mutation);
        if (list != nullptr) {
            GList *cell = g_list_append(nullptr, some_element(*list, mutation.how));
            cells_.push_back(cell);
            list->head = g_list_concat(list->head, cell);
            list->replace(list->head);
        }
    }

    MutationPoints points_;
    bool keeps_its_fields_ = true;
    std::vector<GList *> cells_;
};

int32_t data_size_of(mdm_msg_t &msg)
{
    const MutationPoints points = mutation_points_of(msg);
    return points.data_size == nullptr ? 0 : *points.data_size;
}

bool has_null_element(const MutableList &list)
{
    return g_list_find(list.head, nullptr) != nullptr;
}

// Whether an opened message has all that it needs to be sent on, and a size that any category
// accepts.
bool is_whole(mdm_msg_t &msg)
{
    const MutationPoints points = mutation_points_of(msg);
    return points.has_category && !points.is_incomplete && !points.is_raw_record &&
           data_size_of(msg) >= 0 && data_size_of(msg) <= MDM_MAX_PADDING &&
           std::none_of(points.lists.begin(), points.lists.end(), has_null_element);
}

bool is_empty(const void *text)
{
    return text != nullptr && *static_cast<const char *>(text) == '\0';
}

// Empty texts arrive as null; in one category's lists they do not arrive at all.
void receive_empty_texts(mdm_msg_t &msg)
{
    const MutationPoints points = mutation_points_of(msg);
    for (char **text : points.texts) {
        *text = is_empty(*text) ? nullptr : *text;
    }
    if (points.data_text != nullptr && is_empty(*points.data_text)) {
        *points.data_text = nullptr;
    }
    for (const MutableList &list : points.lists) {
        GList *head = list.head;
        for (GList *cell = head; list.holds_texts && cell != nullptr;) {
            GList *next = cell->next;
            if (is_empty(cell->data) && points.drops_empty_texts) {
                head = g_list_remove_link(head, cell);
            } else if (is_empty(cell->data)) {
                cell->data = nullptr;
            }
            cell = next;
        }
        list.replace(head);
    }
}

void promise_same_fields(mdm_msg_t &sent, mdm_msg_t &received)
{
    receive_empty_texts(sent);
    const MutationPoints points = mutation_points_of(received);
    if (points.data_size != nullptr) {  // of some records the receiver states its own
        *mutation_points_of(sent).data_size = *points.data_size;
    }
    promise_same(test::dump(sent), test::dump(received), "what is sealed arrives");
}

// All of a record, as a copy of its bytes has it.
std::string_view bytes_of(const mdm_msg_t &msg)
{
    return {reinterpret_cast<const char *>(&msg), sizeof msg};
}

// Sizing stores a `data_size`, in some categories a sum: both paths begin with the same.
void promise_serialized(const mdm_msg_t &before, const mdm_msg_t &after, const Block &sealed)
{
    mdm_msg_t msg;
    std::memcpy(&msg, &before, sizeof msg);
    uint32_t length = 0;
    const Owned<uint8_t> bytes(ipc_serialize(&msg, &length));
    promise(sealed.holds({bytes.get(), length}), "what is sealed is what is serialised");
    promise(bytes_of(msg) == bytes_of(after), "both store the same size");
}

void promise_openable(mdm_msg_t &msg, const Block &sealed, bool keeps_its_fields)
{
    const test::Opened received(ipc_open(sealed.data(), sealed.size(), nullptr));
    promise(received != nullptr, "what is sealed can be opened");
    const std::string fields = test::dump(*received);
    if (keeps_its_fields) {
        promise_same_fields(msg, *received);
    }
}

// A refusal leaves the message as it was.
void promise_refused(const mdm_msg_t &before, const mdm_msg_t &msg, const ipc_fault_t &fault)
{
    promise(bytes_of(before) == bytes_of(msg), "what is refused is as it was");
    promise(!test::is_untouched(fault) && fault.path != nullptr, "a refusal has a fault");
    promise_logged(fault);
}

void seal(mdm_msg_t &msg, bool must_succeed, bool keeps_its_fields)
{
    mdm_msg_t before;
    std::memcpy(&before, &msg, sizeof msg);
    uint32_t length = test::untouched_length;
    ipc_fault_t fault = test::untouched_fault;
    const Owned<uint8_t> bytes(ipc_seal(&msg, &length, &fault));
    if (bytes == nullptr) {
        promise(!must_succeed, "what was opened and is whole can be sealed");
        promise(length == test::untouched_length, "a refusal has no length");
        return promise_refused(before, msg, fault);
    }
    promise(test::is_untouched(fault), "nothing is at fault in what is sealed");
    promise(!mutation_points_of(msg).lacks_payload, "a missing payload is not announced");
    const Block sealed({bytes.get(), length});
    promise_serialized(before, msg, sealed);
    promise_openable(msg, sealed, keeps_its_fields);
}

void seal_after(const std::vector<Mutation> &mutations, Bytes message)
{
    test::correct_length(message);
    const Block bytes(message);
    const test::Opened msg(ipc_open(bytes.data(), bytes.size(), nullptr));
    take_critical_lines();
    if (msg == nullptr) {
        return;
    }
    Mutated mutated(*msg);
    std::for_each(mutations.begin(), mutations.end(),
                  [&](const Mutation &mutation) { mutated.mutate(mutation); });
    seal(*msg, mutations.empty() && is_whole(*msg), mutated.keeps_its_fields());
    take_critical_lines();
}

void seal_after_every_mutation(const Bytes &message)
{
    seal_after({}, message);
    for (uint8_t kind = 0; kind < mutation_kinds; ++kind) {
        for (uint8_t which = 0; which < 2; ++which) {
            for (uint8_t how = 0; how < mutation_ways; ++how) {
                seal_after({{kind, which, how}}, message);
            }
        }
    }
    // A list is entered behind an element that is missing.
    seal_after({{change_of_element, 0, 0}, {entry_of_list, 0, 1}}, message);
}

}  // namespace
}  // namespace mdm::fuzz

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using namespace mdm::fuzz;
    if (size > largest_message) {
        return 0;
    }
    Bytes message(data, data + size);
    const uint8_t count = byte_at(message, second_reserved_offset);
    if (count == every_one) {
        seal_after_every_mutation(message);
    } else {
        const std::vector<Mutation> mutations = take_mutations(message, count);
        seal_after(mutations, message);
    }
    return 0;
}
