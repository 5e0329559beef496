// SPDX-License-Identifier: Apache-2.0
//
// Finds the elements that two lists have in common.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace mdm::msg {

// The same element in both lists: its position in each.
struct Match {
    size_t a;
    size_t b;
};

// Returns a common subsequence, in rising order of both positions. Equal numbers stand for equal
// elements; the numbers are below the number of all elements.
//
// The subsequence is a longest one if few elements have moved or been repeated: elements that only
// one list has do not count. Otherwise it is a longest one of those that match the first occurrence
// of an element with the first one in the other list, the second with the second, and so on.
//
// Memory grows with the number of elements. Time grows with the number of elements times its
// logarithm, plus at most some 200 million steps.
std::vector<Match> common_subsequence(std::span<const uint32_t> a, std::span<const uint32_t> b);

}  // namespace mdm::msg
