// SPDX-License-Identifier: Apache-2.0
#include "support.hpp"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "mdm/log.h"
#include "support/allocation_trace.hpp"

namespace mdm::fuzz {
namespace {

std::vector<std::string> critical_lines;

}  // namespace

void promise(bool kept, const char *what)
{
    if (kept) {
        return;
    }
    std::fprintf(stderr, "broken promise: %s\n", what);
    std::abort();
}

void promise_same(const std::string &left, const std::string &right, const char *what)
{
    if (left != right) {
        std::fprintf(stderr, "%s\n\n%s\n", left.c_str(), right.c_str());
    }
    promise(left == right, what);
}

Block::Block(std::span<const uint8_t> bytes)
    : bytes_(new uint8_t[bytes.size()]), size_(bytes.size())
{
    std::copy(bytes.begin(), bytes.end(), bytes_.get());
}

bool Block::holds(std::span<const uint8_t> bytes) const
{
    return std::equal(bytes.begin(), bytes.end(), data(), data() + size_);
}

std::optional<int64_t> take_number(std::string_view &text)
{
    constexpr int64_t far_outside = int64_t{1} << 40;
    const bool is_negative = text.starts_with('-');
    const size_t begin = is_negative || text.starts_with('+') ? 1 : 0;
    const size_t end = std::min(text.find_first_not_of("0123456789", begin), text.size());
    if (begin == end) {
        return std::nullopt;
    }
    int64_t number = 0;
    for (const char digit : text.substr(begin, end - begin)) {
        number = std::min(number * 10 + (digit - '0'), far_outside);
    }
    text.remove_prefix(end);
    return is_negative ? -number : number;
}

std::vector<std::string> take_critical_lines()
{
    return std::exchange(critical_lines, {});
}

Silence::Silence()
{
    mdm_log_set_level(MDM_LOG_NONE);
}

Silence::~Silence()
{
    mdm_log_set_level(MDM_LOG_DEBUG);
}

}  // namespace mdm::fuzz

// Takes the place of the platform's log, and formats every line: a text without an end shows.
int platform_log_vprint(int /*buffer_id*/, int priority, const char * /*tag*/, const char *format,
                        va_list args)
{
    const mdm::test::AllocationTrace::Pause pause;
    std::array<char, 4096> text{};
    const int length = std::vsnprintf(text.data(), text.size(), format, args);
    if (priority == MDM_PLATFORM_LOG_ERROR) {
        mdm::fuzz::critical_lines.emplace_back(text.data());
    }
    return length;
}

int LLVMFuzzerInitialize(int * /*argc*/, char *** /*argv*/)
{
    // Only then are list cells blocks of their own, and GLib has looked already.
    const char *slices = std::getenv("G_SLICE");
    if (slices == nullptr || std::string_view(slices) != "always-malloc") {
        std::fputs("run with G_SLICE=always-malloc\n", stderr);
        std::exit(EXIT_FAILURE);
    }
    mdm_log_set_level(MDM_LOG_DEBUG);
    return 0;
}
