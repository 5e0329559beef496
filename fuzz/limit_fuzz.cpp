// SPDX-License-Identifier: Apache-2.0
//
// The limit texts: any text is read as another reader of the same rules reads it, and a limit comes
// back from its own text. The input is the text.
#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include "mdm/util_policy.h"
#include "support.hpp"

namespace mdm::fuzz {
namespace {

using Numbers = std::array<int32_t, 1 + MDM_PHONE_RES_LIMIT_VALUES>;

constexpr int32_t untouched = 0x5A5A5A5A;
constexpr size_t parameters = 4;

// Takes a number off the text, behind white space, and brings it into the range of 32 bits. Without
// a number the text stays as it is.
std::optional<int32_t> take_value(std::string_view &text)
{
    std::string_view rest = text.substr(std::min(text.find_first_not_of(spaces), text.size()));
    const std::optional<int64_t> number = take_number(rest);
    if (!number) {
        return std::nullopt;
    }
    text = rest;
    return static_cast<int32_t>(std::clamp<int64_t>(*number, std::numeric_limits<int32_t>::min(),
                                                    std::numeric_limits<int32_t>::max()));
}

bool take_comma(std::string_view &text)
{
    if (!text.starts_with(',')) {
        return false;
    }
    text.remove_prefix(1);
    return true;
}

// Stores the numbers that a limit's text begins with, and returns how many. The others stay.
size_t read_limit(std::string_view text, Numbers &numbers)
{
    for (size_t i = 0; i < numbers.size(); ++i) {
        if (i > 0 && !take_comma(text)) {
            return i;
        }
        const std::optional<int32_t> number = take_value(text);
        if (!number) {
            return i;
        }
        numbers[i] = *number;
    }
    return numbers.size();
}

Numbers all_untouched()
{
    Numbers numbers{};
    numbers.fill(untouched);
    return numbers;
}

void write_again(const Numbers &numbers)
{
    std::string expected = std::to_string(numbers[0]);
    for (size_t i = 1; i < numbers.size(); ++i) {
        expected += ',' + std::to_string(numbers[i]);
    }
    char *text = nullptr;
    uint32_t size = 0;
    const int32_t result =
        mdm_phone_res_limit_serialize(numbers[0], numbers.data() + 1, &text, &size);
    const Owned<char> owner(text);
    promise(result == MDM_RESULT_SUCCESS, "a limit that was read can be written");
    promise(text == expected, "a limit's text is its numbers");
    promise(size == expected.size() + 1, "the size counts the terminator");
}

void read_as_limit(const Block &text)
{
    Numbers expected = all_untouched();
    const bool has_all = read_limit(text.text(), expected) == expected.size();
    const bool is_limit = has_all && (expected[0] == 0 || expected[0] == 1);
    Numbers numbers = all_untouched();
    const int32_t result =
        mdm_phone_res_limit_deserialize(text.text(), numbers.data(), numbers.data() + 1);
    promise(result == (is_limit ? MDM_RESULT_SUCCESS : MDM_RESULT_INVALID_ARGUMENT),
            "seven numbers and nothing else are a limit");
    promise(numbers == expected, "each number is stored as it is read");
    if (is_limit) {
        write_again(numbers);
    }
}

using Parameters = std::array<int64_t, parameters>;

constexpr Parameters untouched_parameters = {untouched, untouched, untouched, untouched};

// The fields of the parameters; no value if there are fewer than four.
std::optional<Parameters> read_parameters(std::string_view text)
{
    Parameters numbers{};
    for (size_t i = 0; i < numbers.size(); ++i) {
        const bool is_last = i + 1 == numbers.size();
        const size_t comma = text.find(',');
        if (!is_last && comma == std::string_view::npos) {
            return std::nullopt;
        }
        std::string_view field = text.substr(0, is_last ? text.size() : comma);
        numbers[i] = std::max(0, take_value(field).value_or(0));
        text.remove_prefix(is_last ? 0 : comma + 1);
    }
    return numbers;
}

void read_as_parameters(const Block &text)
{
    const bool is_empty = std::string_view(text.text()) == MDM_UTIL_POLICY_DEFAULT_EMPTY_STRING;
    const std::optional<Parameters> expected =
        is_empty ? untouched_parameters : read_parameters(text.text());
    int32_t date_set = untouched;
    int32_t period = untouched;
    uint32_t send_limit = untouched;
    uint32_t recv_limit = untouched;
    const int32_t result = mdm_phone_res_limit_of_data_calls_parse_parameters(
        text.text(), &date_set, &period, &send_limit, &recv_limit);
    promise(result == (expected ? MDM_RESULT_SUCCESS : MDM_RESULT_FAILED),
            "four fields are parameters");
    promise(Parameters{date_set, period, send_limit, recv_limit} ==
                expected.value_or(untouched_parameters),
            "each field is its number");
}

}  // namespace
}  // namespace mdm::fuzz

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using namespace mdm::fuzz;
    std::vector<uint8_t> bytes(data, std::find(data, data + size, 0));
    bytes.push_back(0);
    const Block text(bytes);
    read_as_limit(text);
    read_as_parameters(text);
    promise(text.holds(bytes), "the text is not changed");
    take_critical_lines();
    return 0;
}
