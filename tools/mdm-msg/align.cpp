// SPDX-License-Identifier: Apache-2.0
#include "align.hpp"

#include <algorithm>
#include <optional>

namespace mdm::msg {
namespace {

using Numbers = std::span<const uint32_t>;

constexpr size_t none = SIZE_MAX;

// The largest number of edits that exact_subsequence() is tried with. It keeps an array for each
// number of edits, 4 MB for all of them, and its steps are at most the elements times the edits.
constexpr size_t most_edits = 1000;
constexpr size_t most_steps = 100'000'000;

size_t edit_limit(size_t elements)
{
    return std::min(most_edits, most_steps / std::max<size_t>(1, elements));
}

// The elements that may have a match, and where they stand in the list.
struct Candidates {
    std::vector<uint32_t> numbers;
    std::vector<size_t> positions;
};

Candidates candidates(Numbers list, size_t first, size_t end, const std::vector<bool> &is_in_other)
{
    Candidates kept;
    for (size_t i = first; i < end; ++i) {
        if (is_in_other[list[i]]) {
            kept.numbers.push_back(list[i]);
            kept.positions.push_back(i);
        }
    }
    return kept;
}

std::vector<bool> members(Numbers list, size_t first, size_t end, size_t count)
{
    std::vector<bool> is_member(count);
    for (size_t i = first; i < end; ++i) {
        is_member[list[i]] = true;
    }
    return is_member;
}

// The greedy algorithm of Myers. A path through the grid of both lists goes right for an element
// that only `a` has, down for one that only `b` has, and diagonally for a match. Diagonal k has the
// points with x - y = k.
class ShortestEdit {
public:
    ShortestEdit(Numbers a, Numbers b, size_t limit)
        : a_(a), b_(b), limit_(static_cast<int>(limit)), farthest_(2 * limit + 3)
    {
    }

    // Without a value more than `limit` edits are needed.
    std::optional<std::vector<Match>> find()
    {
        for (int edits = 0; edits <= limit_; ++edits) {
            history_.emplace_back(&at(-edits), &at(edits) + 1);
            for (int k = -edits; k <= edits; k += 2) {
                const int x = goes_down(k, edits) ? at(k + 1) : at(k - 1) + 1;
                at(k) = end_of_matches(x, x - k);
                if (at(k) >= size(a_) && at(k) - k >= size(b_)) {
                    return path(edits);
                }
            }
        }
        return std::nullopt;
    }

private:
    static int size(Numbers list) { return static_cast<int>(list.size()); }

    // The largest x that is reached on a diagonal.
    int &at(int k) { return *(farthest_.begin() + limit_ + 1 + k); }

    bool goes_down(int k, int edits)
    {
        return k == -edits || (k != edits && at(k - 1) < at(k + 1));
    }

    int end_of_matches(int x, int y) const
    {
        while (x < size(a_) && y < size(b_) &&
               a_[static_cast<size_t>(x)] == b_[static_cast<size_t>(y)]) {
            ++x;
            ++y;
        }
        return x;
    }

    std::vector<Match> path(int edits)
    {
        std::vector<Match> matches;
        int x = size(a_);
        int y = size(b_);
        for (; edits >= 0; --edits) {
            std::ranges::copy(history_[static_cast<size_t>(edits)], &at(-edits));
            const int k = x - y;
            const int before = goes_down(k, edits) ? k + 1 : k - 1;
            const int x_before = edits > 0 ? at(before) : 0;
            const int y_before = edits > 0 ? x_before - before : 0;
            while (x > x_before && y > y_before) {
                matches.push_back({static_cast<size_t>(--x), static_cast<size_t>(--y)});
            }
            x = x_before;
            y = y_before;
        }
        std::ranges::reverse(matches);
        return matches;
    }

    Numbers a_;
    Numbers b_;
    int limit_;
    std::vector<int> farthest_;
    std::vector<std::vector<int>> history_;  // before each number of edits
};

// For each element of `a` the position of the same occurrence in `b`.
std::vector<size_t> same_occurrences(Numbers a, Numbers b, size_t count)
{
    std::vector<size_t> first(count, none);
    std::vector<size_t> next(b.size(), none);
    for (size_t i = b.size(); i-- > 0;) {
        next[i] = first[b[i]];
        first[b[i]] = i;
    }
    std::vector<size_t> positions;
    for (const uint32_t number : a) {
        const size_t position = first[number];
        positions.push_back(position);
        first[number] = position == none ? none : next[position];
    }
    return positions;
}

std::vector<Match> longest_rising(const std::vector<size_t> &positions)
{
    std::vector<size_t> ends;  // of the best sequence of each length: an index of `positions`
    std::vector<size_t> before(positions.size(), none);
    for (size_t i = 0; i < positions.size(); ++i) {
        if (positions[i] == none) {
            continue;
        }
        const auto end = std::ranges::lower_bound(
            ends, positions[i], {}, [&positions](size_t index) { return positions[index]; });
        before[i] = end == ends.begin() ? none : *(end - 1);
        if (end == ends.end()) {
            ends.push_back(i);
        } else {
            *end = i;
        }
    }
    std::vector<Match> matches;
    for (size_t i = ends.empty() ? none : ends.back(); i != none; i = before[i]) {
        matches.push_back({i, positions[i]});
    }
    std::ranges::reverse(matches);
    return matches;
}

}  // namespace

std::vector<Match> common_subsequence(Numbers a, Numbers b)
{
    const size_t count = a.size() + b.size();
    const size_t shorter = std::min(a.size(), b.size());
    size_t first = 0;
    while (first < shorter && a[first] == b[first]) {
        ++first;
    }
    size_t last = 0;  // how many are equal at the end
    while (last < shorter - first && a[a.size() - 1 - last] == b[b.size() - 1 - last]) {
        ++last;
    }
    const size_t a_end = a.size() - last;
    const size_t b_end = b.size() - last;

    std::vector<Match> matches;
    for (size_t i = 0; i < first; ++i) {
        matches.push_back({i, i});
    }
    const Candidates of_a = candidates(a, first, a_end, members(b, first, b_end, count));
    const Candidates of_b = candidates(b, first, b_end, members(a, first, a_end, count));
    const size_t limit = edit_limit(of_a.numbers.size() + of_b.numbers.size());
    auto middle = ShortestEdit(of_a.numbers, of_b.numbers, limit).find();
    if (!middle) {
        middle = longest_rising(same_occurrences(of_a.numbers, of_b.numbers, count));
    }
    for (const Match match : *middle) {
        matches.push_back({of_a.positions[match.a], of_b.positions[match.b]});
    }
    for (size_t i = 0; i < last; ++i) {
        matches.push_back({a_end + i, b_end + i});
    }
    return matches;
}

}  // namespace mdm::msg
