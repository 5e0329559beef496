// SPDX-License-Identifier: Apache-2.0
//
// Bytes written as hex text, in the ways in which people have them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mdm::msg {

// Why a text is no hex, and where. Both numbers begin at 1; a column is a byte.
struct HexError {
    size_t line;
    size_t column;
    std::string reason;
};

// How many bytes the rows '*' of a dump may stand for, all together. A few lines could stand for
// any number of them.
inline constexpr uint64_t most_repeated = 1 << 20;

struct HexText {
    std::vector<uint8_t> bytes;
    std::string warning = {};  // about a text that can be read
    std::optional<HexError> error = {};
};

// Reads one of these:
// - digits with blanks, line ends, commas, colons, "0x" or "\x" between the bytes; a comment goes
//   from '#' to the end of its line
// - the output of xxd or hexdump -C
// - lines of strace: the strings of the calls that send and receive bytes
// The first line that is neither empty nor a comment decides whether it is a dump.
HexText read_hex(std::string_view text);

}  // namespace mdm::msg
