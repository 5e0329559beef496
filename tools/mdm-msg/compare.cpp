// SPDX-License-Identifier: Apache-2.0
#include "compare.hpp"

#include <algorithm>
#include <cstring>
#include <map>
#include <span>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "align.hpp"
#include "parts.hpp"

namespace mdm::msg {
namespace {

using Parts = std::span<const ipc_part_t>;

// Bytes of a larger field are shown where they differ.
constexpr size_t most_bytes_shown_whole = 32;

// Elements of a larger gap are paired by their places alone.
constexpr size_t most_compared_pairs = 4096;

// What the parts belong to: the message, an element of a list, or an element of its list.
enum class Level : uint8_t { message, element, inner };

Level below(Level level)
{
    return level == Level::message ? Level::element : Level::inner;
}

// In a list of this level; negative for a field.
int32_t position_of(const ipc_part_t &part, Level level)
{
    if (level == Level::inner) {
        return -1;
    }
    return level == Level::message ? part.element : part.inner;
}

// A field, or a list with its elements.
struct Item {
    const ipc_part_t *field;  // of a list its count; null for a list without one
    std::vector<Parts> elements;

    std::string_view key() const
    {
        return field != nullptr ? field->path : elements.front().front().path;
    }
};

// Divides parts that stand one behind the other into items.
std::vector<Item> items_of(Parts parts, Level level)
{
    std::vector<Item> items;
    while (!parts.empty()) {
        const int32_t position = position_of(parts.front(), level);
        if (position < 0) {
            items.push_back({&parts.front(), {}});
            parts = parts.subspan(1);
            continue;
        }
        const auto end = std::ranges::find_if(
            parts, [&](const ipc_part_t &part) { return position_of(part, level) != position; });
        const auto size = static_cast<size_t>(end - parts.begin());
        const bool goes_on = !items.empty() && (!items.back().elements.empty() ||
                                                items.back().field->kind == IPC_PART_COUNT);
        if (!goes_on) {
            items.push_back({nullptr, {}});
        }
        items.back().elements.push_back(parts.first(size));
        parts = parts.subspan(size);
    }
    return items;
}

// Equal parts have equal values, wherever they stand.
auto value_of(const ipc_part_t &part)
{
    return std::tuple(std::string_view(part.path), part.kind, part.number, as_text(bytes_of(part)));
}

bool are_equal(const ipc_part_t &a, const ipc_part_t &b)
{
    return value_of(a) == value_of(b);
}

bool stands_before(const ipc_part_t &a, const ipc_part_t &b)
{
    return value_of(a) < value_of(b);
}

// Gives equal keys the same number.
template <class Key, class Less = std::less<Key>>
class Numbering {
public:
    uint32_t operator[](const Key &key)
    {
        return numbers_.emplace(key, static_cast<uint32_t>(numbers_.size())).first->second;
    }

private:
    std::map<Key, uint32_t, Less> numbers_;
};

struct ElementLess {
    bool operator()(Parts a, Parts b) const
    {
        return std::ranges::lexicographical_compare(a, b, stands_before);
    }
};

template <class Numbered, class List, class Key>
std::vector<Match> matches_of(const List &a, const List &b, Key key)
{
    Numbered numbering;
    const auto numbers_of = [&](const List &list) {
        std::vector<uint32_t> numbers(list.size());
        std::ranges::transform(list, numbers.begin(),
                               [&](const auto &one) { return numbering[key(one)]; });
        return numbers;
    };
    const std::vector<uint32_t> numbers_a = numbers_of(a);
    return common_subsequence(numbers_a, numbers_of(b));
}

// Calls `pair` for each match and `gap` for what stands in front of it and behind the last one.
template <class Pair, class Gap>
void in_order(const std::vector<Match> &matches, size_t end_a, size_t end_b, Pair pair, Gap gap)
{
    Match next{0, 0};
    for (const Match &match : matches) {
        gap(next, match);
        pair(match);
        next = {match.a + 1, match.b + 1};
    }
    gap(next, Match{end_a, end_b});
}

size_t count_equal(Parts a, Parts b)
{
    size_t count = 0;
    for (size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
        count += are_equal(a[i], b[i]) ? 1 : 0;
    }
    return count;
}

using Elements = std::span<const Parts>;

std::vector<Match> pairs_by_place(size_t count)
{
    std::vector<Match> pairs;
    for (size_t i = 0; i < count; ++i) {
        pairs.push_back({i, i});
    }
    return pairs;
}

// Pairs the removed and the added elements between two matches, as many as possible. If more were
// added than removed, or fewer, those are paired that have the most fields in common.
std::vector<Match> pairs_of(Elements a, Elements b)
{
    const size_t columns = b.size() + 1;
    if (a.size() == b.size() || a.size() * b.size() > most_compared_pairs) {
        return pairs_by_place(std::min(a.size(), b.size()));
    }
    constexpr size_t points_for_pair = 1'000'000;  // more than an element mostly has fields
    std::vector<size_t> points(a.size() * b.size());
    std::vector<size_t> best((a.size() + 1) * columns);  // of the elements from there on
    for (size_t i = a.size(); i-- > 0;) {
        for (size_t j = b.size(); j-- > 0;) {
            points[i * b.size() + j] = points_for_pair + count_equal(a[i], b[j]);
            best[i * columns + j] =
                std::max({best[(i + 1) * columns + j], best[i * columns + j + 1],
                          best[(i + 1) * columns + j + 1] + points[i * b.size() + j]});
        }
    }
    std::vector<Match> pairs;
    for (size_t i = 0, j = 0; i < a.size() && j < b.size();) {
        const size_t here = best[i * columns + j];
        if (here == best[(i + 1) * columns + j + 1] + points[i * b.size() + j]) {
            pairs.push_back({i++, j++});
        } else if (here == best[(i + 1) * columns + j]) {
            ++i;
        } else {
            ++j;
        }
    }
    return pairs;
}

bool is_legible(Bytes bytes)
{
    const std::string_view text = as_text(bytes);
    return quoted(text).size() == text.size() + 2;
}

std::string shown_bytes(Bytes bytes, bool as_letters)
{
    if (bytes.empty()) {
        return "no bytes";
    }
    return as_letters ? quoted(as_text(bytes)) : hex(bytes);
}

std::string value_text(const ipc_part_t &part)
{
    switch (part.kind) {
    case IPC_PART_U8:
    case IPC_PART_U32:
    case IPC_PART_I32:
        return std::to_string(number_of(part));
    case IPC_PART_COUNT:
        return "count " + std::to_string(number_of(part));
    case IPC_PART_STR:
        return quoted(as_text(bytes_of(part)));
    case IPC_PART_BYTES:
    case IPC_PART_RESERVED:
    case IPC_PART_PADDING:
    case IPC_PART_REST:
        break;
    }
    return shown_bytes(bytes_of(part), is_legible(bytes_of(part)));
}

bool is_of_bytes(const ipc_part_t &part)
{
    return part.kind >= IPC_PART_BYTES;
}

// Both values; of many bytes, those between the equal ones at the beginning and the end.
std::string changed_bytes(Bytes a, Bytes b)
{
    std::string where;
    if (std::max(a.size(), b.size()) > most_bytes_shown_whole) {
        const auto first = static_cast<size_t>(std::ranges::mismatch(a, b).in1 - a.begin());
        a = a.subspan(first);
        b = b.subspan(first);
        while (!a.empty() && !b.empty() && a.back() == b.back()) {
            a = a.first(a.size() - 1);
            b = b.first(b.size() - 1);
        }
        where = "at byte " + std::to_string(first) + ": ";
    }
    const bool as_letters = is_legible(a) && is_legible(b);
    return where + shown_bytes(a, as_letters) + " -> " + shown_bytes(b, as_letters);
}

std::string changed_value(const ipc_part_t &a, const ipc_part_t &b)
{
    if (is_of_bytes(a) && is_of_bytes(b)) {
        return changed_bytes(bytes_of(a), bytes_of(b));
    }
    return value_text(a) + " -> " + value_text(b);
}

std::string both_positions(int32_t a, int32_t b)
{
    const std::string text = std::to_string(a);
    return "[" + (a == b ? text : text + " -> " + std::to_string(b)) + "]";
}

std::string common_name(const ipc_part_t &a, const ipc_part_t &b)
{
    return name_of(a, both_positions(a.element, b.element), both_positions(a.inner, b.inner));
}

std::string_view last_name(std::string_view path)
{
    return path.substr(path.rfind('.') + 1);
}

// An item of an element: `num0 1`, `pkg_list ["a", "b"]`
std::string short_text(const Item &item)
{
    std::string text(last_name(item.key()));
    if (item.elements.empty() && item.field->kind != IPC_PART_COUNT) {
        return text + ' ' + value_text(*item.field);
    }
    std::vector<std::string> elements;
    for (const Parts &element : item.elements) {
        elements.push_back(value_text(element.front()));
    }
    return text + " [" + joined(elements, ", ") + "]";
}

// An element in one line: `wifi.ssids[2]: "home"`, `app_res.item[1]: {name "a", value 1}`
std::string element_text(Parts element)
{
    const ipc_part_t &first = element.front();
    std::string name = name_of(first);
    if (element.size() == 1) {
        return name + ": " + value_text(first);
    }
    std::vector<std::string> fields;
    for (const Item &item : items_of(element, Level::element)) {
        fields.push_back(short_text(item));
    }
    name.erase(name.find(']') + 1);
    return name + ": {" + joined(fields, ", ") + "}";
}

// Whether the count says what the elements show.
bool is_explained(const Item &list)
{
    return list.field == nullptr || list.field->number == list.elements.size();
}

class Comparison {
public:
    Comparison(bool all, const ShowLine &show) : all_(all), show_(show) {}

    void compare(Parts a, Parts b, Level level)
    {
        const std::vector<Item> items_a = items_of(a, level);
        const std::vector<Item> items_b = items_of(b, level);
        const auto matches = matches_of<Numbering<std::string_view>>(
            items_a, items_b, [](const Item &item) { return item.key(); });
        in_order(
            matches, items_a.size(), items_b.size(),
            [&](Match match) { compare(items_a[match.a], items_b[match.b], level); },
            [&](Match from, Match to) {
                for (size_t i = from.a; i < to.a; ++i) {
                    show_item(Mark::removed, items_a[i]);
                }
                for (size_t i = from.b; i < to.b; ++i) {
                    show_item(Mark::added, items_b[i]);
                }
            });
    }

    void line(Mark mark, const std::string &text) const
    {
        if (mark != Mark::same || all_) {
            show_(mark, text);
        }
    }

private:
    void show_item(Mark mark, const Item &item) const
    {
        if (item.field != nullptr &&
            !(item.field->kind == IPC_PART_COUNT && is_explained(item) && !item.elements.empty())) {
            line(mark, name_of(*item.field) + ": " + value_text(*item.field));
        }
        for (const Parts &element : item.elements) {
            line(mark, element_text(element));
        }
    }

    void compare(const Item &a, const Item &b, Level level)
    {
        if (a.field != nullptr && b.field != nullptr) {
            compare_fields(a, b);
        }
        compare_elements(a.elements, b.elements, below(level));
    }

    // The count of a list is a consequence of its elements, and the length of the message one of
    // all fields.
    void compare_fields(const Item &a, const Item &b) const
    {
        const bool is_count = a.field->kind == IPC_PART_COUNT && b.field->kind == IPC_PART_COUNT;
        const bool is_consequence =
            (is_count && is_explained(a) && is_explained(b)) || a.key() == "header.length";
        const std::string name = common_name(*a.field, *b.field) + ": ";
        if (are_equal(*a.field, *b.field)) {
            line(Mark::same, name + value_text(*a.field));
        } else if (all_ || !is_consequence) {
            line(Mark::changed, name + changed_value(*a.field, *b.field));
        }
    }

    void compare_elements(const std::vector<Parts> &a, const std::vector<Parts> &b, Level level)
    {
        const auto matches =
            matches_of<Numbering<Parts, ElementLess>>(a, b, [](Parts element) { return element; });
        in_order(
            matches, a.size(), b.size(), [&](Match match) { line_of(Mark::same, a[match.a]); },
            [&](Match from, Match to) {
                compare_gap(Elements(a).subspan(from.a, to.a - from.a),
                            Elements(b).subspan(from.b, to.b - from.b), level);
            });
    }

    void compare_gap(Elements a, Elements b, Level level)
    {
        in_order(
            pairs_of(a, b), a.size(), b.size(),
            [&](Match pair) { compare(a[pair.a], b[pair.b], level); },
            [&](Match from, Match to) {
                for (size_t i = from.a; i < to.a; ++i) {
                    line_of(Mark::removed, a[i]);
                }
                for (size_t i = from.b; i < to.b; ++i) {
                    line_of(Mark::added, b[i]);
                }
            });
    }

    void line_of(Mark mark, Parts element) const
    {
        if (mark != Mark::same || all_) {  // saves the text of a line that is not shown
            show_(mark, element_text(element));
        }
    }

    bool all_;
    const ShowLine &show_;
};

struct Message {
    std::vector<ipc_part_t> parts;
    std::optional<ipc_fault_t> fault;
    std::optional<uint8_t> type;
    std::string form;  // "wifi.pair"; without a discriminator "wifi"
};

Message message_of(Bytes bytes)
{
    Message message;
    message.fault = inspect(bytes, [&](const ipc_part_t &part) { message.parts.push_back(part); });
    for (const ipc_part_t &part : message.parts) {
        if (std::strcmp(part.path, "header.type") == 0) {
            message.type = static_cast<uint8_t>(part.number);
            message.form = ipc_category_name(*message.type);
        } else if (is_discriminator(part)) {
            message.form = ipc_form_name(*message.type, part.number);
            break;
        }
    }
    return message;
}

void compare_forms(const Message &a, const Message &b, const ShowLine &show)
{
    if (!a.type || !b.type) {
        return;
    }
    if (*a.type != *b.type) {
        show(Mark::note, "different message types: " + std::to_string(*a.type) + " (" + a.form +
                             ") and " + std::to_string(*b.type) + " (" + b.form + ")");
    } else if (a.form != b.form) {
        show(Mark::note, "different forms: " + a.form + " and " + b.form);
    }
}

std::string fault_text(const Message &message)
{
    return message.fault ? sentence(*message.fault) : "none";
}

}  // namespace

Faults compare(Bytes a, Bytes b, bool all, const ShowLine &show)
{
    const Message of_a = message_of(a);
    const Message of_b = message_of(b);
    compare_forms(of_a, of_b, show);
    Comparison comparison(all, show);
    comparison.compare(of_a.parts, of_b.parts, Level::message);
    const std::string fault_a = fault_text(of_a);
    const std::string fault_b = fault_text(of_b);
    if (fault_a != fault_b) {
        comparison.line(Mark::changed, "fault: " + fault_a + " -> " + fault_b);
    } else if (of_a.fault) {
        comparison.line(Mark::same, "fault: " + fault_a);
    }
    return {of_a.fault, of_b.fault};
}

}  // namespace mdm::msg
