// SPDX-License-Identifier: Apache-2.0
//
// What the fuzz targets share. A broken promise ends the process, which is how a fuzzer learns of
// it.
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

// Prints what was promised and ends the process, if the promise is broken.
void promise(bool kept, const char *what);

// The same for two texts that are to be equal, which are printed if they are not.
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

// Takes the number at the beginning of the text off it. Numbers far outside 32 bits are made smaller.
// Without a number the text stays as it is.
std::optional<int64_t> take_number(std::string_view &text);

struct Release {
    void operator()(void *block) const { g_free(block); }
};
template <class Value>
using Owned = std::unique_ptr<Value, Release>;

// The critical lines that the library has logged since the last call.
std::vector<std::string> take_critical_lines();

// While it lives, the library logs nothing.
class Silence {
public:
    Silence();
    ~Silence();
    Silence(const Silence &) = delete;
    Silence &operator=(const Silence &) = delete;
};

}  // namespace mdm::fuzz

// What a fuzzer calls, and the replay as well.
extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
