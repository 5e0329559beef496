// SPDX-License-Identifier: Apache-2.0
#include "ipc/fault_text.hpp"

#include <cstdio>
#include <cstring>
#include <span>

#include "ipc/envelope.hpp"
#include "wire/fault.hpp"

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

// The largest number of a fault stands for itself and every larger one.
constexpr const char *or_more(uint32_t number)
{
    return number == saturated(UINT64_MAX) ? " or more" : "";
}

bool is(const char *path, const char *other)
{
    return std::strcmp(path, other) == 0;
}

[[gnu::noinline]] bool ends_with(const char *path, const char *name)
{
    return g_str_has_suffix(path, name) != FALSE;
}

// The fault of a negative size needs UINT32_MAX bytes, and no positive size of raw bytes does.
[[gnu::cold]] bool has_negative_size(const ipc_fault_t &fault)  // Q-GUARDED-2
{
    return fault.needed == saturated(UINT64_MAX) && ends_with(fault.path, ".data");
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
    if (fault.left == 0) {  // the fault of a sender's message
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

[[gnu::cold]] bool names_one_thing(const char *path)
{
    return is(path, fault_path::message) || ends_with(path, ".data") ||
           ends_with(path, ".detail") || ends_with(path, ".name");
}

// The end of the sentence about a part of a sender's message. The last case is a list.
[[gnu::cold]] const char *complaint(const char *path)
{
    if (names_one_thing(path)) {
        return "is missing";
    }
    if (ends_with(path, ".data_size")) {
        return "is no size that the payload can be sent with";
    }
    if (ends_with(path, ".type")) {
        return "is no type that can be sent";
    }
    return "has a null element, or is not handed over by its first cell";
}

[[gnu::cold]] void describe(Text text, const ipc_fault_t &fault)
{
    if (fault.path == nullptr || *fault.path == '\0') {
        std::snprintf(text.data(), text.size(), "there is no fault");
    } else if (is(fault.path, fault_path::memory)) {
        std::snprintf(text.data(), text.size(), "there is no memory for %u byte%s%s", fault.needed,
                      plural(fault.needed), or_more(fault.needed));
    } else if (is(fault.path, fault_path::length)) {
        describe_length(text, fault);
    } else if (fault.needed == 0) {
        std::snprintf(text.data(), text.size(), "%s %s", fault.path, complaint(fault.path));
    } else if (is(fault.path, fault_path::type)) {
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
