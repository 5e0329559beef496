// SPDX-License-Identifier: Apache-2.0
#include "input.hpp"

#include <algorithm>
#include <cstdint>
#include <new>
#include <optional>
#include <stdexcept>
#include <string_view>

#include <glib.h>

#include "command.hpp"
#include "complain.hpp"
#include "file.hpp"
#include "hex.hpp"

namespace mdm::msg {

const char *const input_help =
    "FILE has raw bytes or hex text; '-' and no FILE mean standard input. Hex text is digits with\n"
    "blanks, commas, colons, \"0x\" or \"\\x\" between the bytes and comments behind '#', or the "
    "output\n"
    "of xxd, xxd -p, hexdump -C or strace -xx. Without --hex and --raw, the bytes are raw if the\n"
    "length field makes them one message; otherwise they are hex text if they are UTF-8 without\n"
    "control characters other than white space; otherwise they are raw.";

namespace {

constexpr size_t length_field_size = 4;
constexpr uint64_t uncounted = 8;      // the length field counts all bytes but these
constexpr uint64_t least_length = 32;  // of a message without a text and a body
constexpr uint64_t most_bytes = UINT32_MAX;

// The size that the length field announces; none if there is no whole one.
std::optional<uint64_t> announced_size(Bytes bytes)
{
    if (bytes.size() < length_field_size) {
        return std::nullopt;
    }
    return first_word(bytes) + uncounted;
}

// The size of the first message of a stream. A message that is cut, or whose length field is too
// small for a message, takes all that is left: nobody knows where the next one begins.
size_t first_size(Bytes stream)
{
    const auto announced = announced_size(stream);
    const bool is_one = announced && *announced >= least_length + uncounted;
    return is_one && *announced < stream.size() ? static_cast<size_t>(*announced) : stream.size();
}

// How many messages the bytes are if each begins behind the one in front of it and the last is
// whole; 0 if they are not like that.
size_t count_messages(Bytes stream)
{
    size_t count = 0;
    while (!stream.empty()) {
        const size_t size = first_size(stream);
        const auto announced = announced_size(stream);
        if (!announced || *announced != size || size < least_length + uncounted) {
            return 0;
        }
        ++count;
        stream = stream.subspan(size);
    }
    return count;
}

// UTF-8 whose only control characters are white space. A message is none: the length field of one
// below 16 MiB has a zero byte.
bool is_text(Bytes bytes)
{
    const std::string_view text = as_text(bytes);
    if (g_utf8_validate_len(text.data(), text.size(), nullptr) == FALSE) {
        return false;
    }
    const char *end = text.data() + text.size();
    for (const char *at = text.data(); at < end; at = g_utf8_next_char(at)) {
        const gunichar character = g_utf8_get_char(at);
        if (g_unichar_iscntrl(character) != FALSE && (character < '\t' || character > '\r')) {
            return false;
        }
    }
    return true;
}

bool is_hex(Bytes bytes, const InputOptions &options)
{
    if (options.hex != FALSE || options.raw != FALSE) {
        return options.hex != FALSE;
    }
    return announced_size(bytes) != bytes.size() && is_text(bytes);
}

// The messages of one file.
class Messages {
public:
    Messages(std::string file, const InputOptions &options,
             const std::function<int(const Input &)> &use,
             const std::function<void(const Trouble &)> &report)
        : file_(std::move(file)), name_(file_ == "-" ? "standard input" : file_), options_(options),
          use_(use), report_(report)
    {
    }

    int use_all() const
    {
        try {
            return use_file();
        } catch (const std::bad_alloc &) {
        } catch (const std::length_error &) {  // where a pointer has 32 bits
        }
        return trouble(": needs more memory than there is", unreadable);
    }

private:
    int use_file() const
    {
        const File file(file_);
        if (!file.reason().empty()) {
            return trouble(": cannot be read: " + file.reason(), unreadable);
        }
        if (file.bytes().empty()) {
            return use_empty("the file is empty");
        }
        if (!is_hex(file.bytes(), options_)) {
            return use_bytes(file.bytes(), "");
        }
        const HexText text = read_hex(as_text(file.bytes()));
        if (text.error) {
            const HexError &error = *text.error;
            return trouble(":" + std::to_string(error.line) + ":" + std::to_string(error.column) +
                               ": " + error.reason,
                           malformed);
        }
        const std::string &warning = text.warning;
        return text.bytes.empty() ? use_empty(warning.empty() ? "the text has no bytes" : warning)
                                  : use_bytes(text.bytes, warning);
    }

    int trouble(const std::string &reason, int status) const
    {
        complain("%s%s", name_.c_str(), reason.c_str());
        if (report_ != nullptr) {
            report_({file_, reason.substr(reason.find_first_not_of(": ")), status});
        }
        return status;
    }

    int use_empty(const std::string &warning) const
    {
        static const uint8_t none = 0;  // null would be a mistake of the caller
        return use_({name_, {&none, size_t{0}}, warning, file_, 0});
    }

    int use_bytes(Bytes bytes, const std::string &warning) const
    {
        if (options_.stream != FALSE) {
            return use_stream(bytes, warning);
        }
        if (bytes.size() > most_bytes) {
            return trouble(": the file is larger than 4 GiB, and no message is; --stream reads "
                           "several messages",
                           malformed);
        }
        return use_({name_, bytes, with_hint(bytes, warning), file_, 0});
    }

    static std::string with_hint(Bytes bytes, const std::string &warning)
    {
        const size_t count = warning.empty() ? count_messages(bytes) : 0;
        return count < 2 ? warning
                         : "these are " + std::to_string(count) +
                               " messages, one behind the other; --stream reads them";
    }

    int use_stream(Bytes stream, const std::string &warning) const
    {
        int status = whole;
        size_t offset = 0;
        for (size_t number = 1; offset < stream.size(); ++number) {
            const Bytes rest = stream.subspan(offset);
            const size_t size = first_size(rest);
            const bool is_last = size == rest.size();
            const bool is_only = is_last && number == 1;
            const std::string place =
                ": message " + std::to_string(number) + " at byte " + std::to_string(offset);
            if (size > most_bytes) {
                return std::max(status, trouble(place + " is larger than 4 GiB", malformed));
            }
            status = std::max(status, use_({is_only ? name_ : name_ + place, rest.first(size),
                                            is_last ? warning : "", file_, is_only ? 0 : number}));
            offset += size;
        }
        return status;
    }

    std::string file_;
    std::string name_;
    const InputOptions &options_;
    const std::function<int(const Input &)> &use_;
    const std::function<void(const Trouble &)> &report_;
};

}  // namespace

int for_each_message(const std::vector<std::string> &files, const InputOptions &options,
                     const std::function<int(const Input &)> &use,
                     const std::function<void(const Trouble &)> &report)
{
    int status = whole;
    for (const std::string &file : files.empty() ? std::vector<std::string>{"-"} : files) {
        status = std::max(status, Messages(file, options, use, report).use_all());
    }
    return status;
}

}  // namespace mdm::msg
