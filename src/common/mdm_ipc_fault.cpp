// SPDX-License-Identifier: Apache-2.0
#include "mdm_ipc_fault.hpp"

#include <cstdio>
#include <span>
#include <string_view>

#include "mdm_ipc_envelope.hpp"

namespace mdm {
namespace {

using Text = std::span<char>;

constexpr const char *plural(uint32_t count)
{
    return count == 1 ? "" : "s";
}

constexpr const char *verb(uint32_t count)
{
    return count == 1 ? "is" : "are";
}

// A fault holds no larger number.
constexpr const char *or_more(uint32_t number)
{
    return number == saturated(UINT64_MAX) ? " or more" : "";
}

// What a negative size needs reads like more than a positive size of raw bytes can be.
[[gnu::cold]] bool has_negative_size(const ipc_fault_t &fault)
{
    return fault.needed == saturated(UINT64_MAX) && std::string_view(fault.path).ends_with(".data");
}

[[gnu::cold]] void describe_shortage(Text text, const ipc_fault_t &fault)
{
    if (has_negative_size(fault)) {
        std::snprintf(text.data(), text.size(), "%s at offset %u has a negative size", fault.path,
                      fault.offset);
        return;
    }
    std::snprintf(text.data(), text.size(), "%s at offset %u needs %u byte%s%s, %u %s left",
                  fault.path, fault.offset, fault.needed, plural(fault.needed),
                  or_more(fault.needed), fault.left, verb(fault.left));
}

[[gnu::cold]] void describe_length(Text text, const ipc_fault_t &fault)
{
    if (fault.needed == word_size) {
        return describe_shortage(text, fault);
    }
    if (fault.left == 0) {  // a sender's
        std::snprintf(text.data(), text.size(),
                      "%s: the message adds up to no size that it can have", fault.path);
    } else if (fault.needed == smallest_message && fault.left < smallest_message) {
        std::snprintf(text.data(), text.size(), "%s: a message has %u bytes or more, %u %s there",
                      fault.path, smallest_message, fault.left, verb(fault.left));
    } else {
        std::snprintf(text.data(), text.size(),
                      "%s announces a message of %u byte%s%s, %u %s there", fault.path,
                      fault.needed, plural(fault.needed), or_more(fault.needed), fault.left,
                      verb(fault.left));
    }
}

[[gnu::cold]] bool names_one_thing(std::string_view path)
{
    return path == fault_path::message || path.ends_with(".data") || path.ends_with(".detail") ||
           path.ends_with(".name");
}

// What is wrong with a part of a sender's message; any other path names a list.
[[gnu::cold]] const char *complaint(std::string_view path)
{
    if (names_one_thing(path)) {
        return "is missing";
    }
    if (path.ends_with(".data_size")) {
        return "is no size that the payload can be sent with";
    }
    if (path.ends_with(".type")) {
        return "is no type that can be sent";
    }
    return "has a null element, or is not handed over by its first cell";
}

[[gnu::cold]] void describe(Text text, const ipc_fault_t &fault)
{
    const std::string_view path = fault.path != nullptr ? fault.path : "";
    if (path.empty()) {
        std::snprintf(text.data(), text.size(), "there is no fault");
    } else if (path == fault_path::memory) {
        std::snprintf(text.data(), text.size(), "there is no memory for %u byte%s%s", fault.needed,
                      plural(fault.needed), or_more(fault.needed));
    } else if (path == fault_path::length) {
        describe_length(text, fault);
    } else if (fault.needed == 0) {
        std::snprintf(text.data(), text.size(), "%s %s", fault.path, complaint(path));
    } else if (path == fault_path::type) {
        std::snprintf(text.data(), text.size(), "%s at offset %u is no message type", fault.path,
                      fault.offset);
    } else {
        describe_shortage(text, fault);
    }
}

}  // namespace

FaultText::FaultText(const ipc_fault_t &fault)
{
    describe(text_, fault);
}

}  // namespace mdm

gchar *ipc_fault_describe(const ipc_fault_t *fault)
{
    return g_strdup(mdm::FaultText(*fault).c_str());
}
