// SPDX-License-Identifier: Apache-2.0
//
// The helpers of all fuzz targets. A broken promise ends the process: the fuzzer then reports it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <glib.h>

namespace mdm::fuzz {

using Bytes = std::vector<uint8_t>;

// Prints a broken promise and ends the process.
void promise(bool kept, const char *what);

// The same for two equal texts. Prints them if they differ.
void promise_same(const std::string &left, const std::string &right, const char *what);

// Bytes in a heap block of exactly their number, so that a sanitizer sees any step beyond it.
class Block {
public:
    explicit Block(std::span<const uint8_t> bytes);

    const uint8_t *data() const { return bytes_.get(); }
    uint32_t size() const { return static_cast<uint32_t>(size_); }
    const char *text() const { return reinterpret_cast<const char *>(bytes_.get()); }
    bool holds(std::span<const uint8_t> bytes) const;

private:
    std::unique_ptr<uint8_t[]> bytes_;
    size_t size_;
};

// The characters of white space.
inline constexpr std::string_view spaces = " \t\n\v\f\r";

// Takes the number at the beginning of a text off it. Brings a number far outside 32 bits nearer to
// them. Without a number the text stays as it is.
std::optional<int64_t> take_number(std::string_view &text);

struct Release {
    void operator()(void *block) const { g_free(block); }
};
template <class Value>
using Owned = std::unique_ptr<Value, Release>;

// The critical lines that the library has logged since the last call.
std::vector<std::string> take_critical_lines();

// The library does not log as long as this lives.
class Silence {
public:
    Silence();
    ~Silence();
    Silence(const Silence &) = delete;
    Silence &operator=(const Silence &) = delete;
};

}  // namespace mdm::fuzz

// The functions that a fuzzer and the replay call.
extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
