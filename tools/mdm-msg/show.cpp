// SPDX-License-Identifier: Apache-2.0
#include "show.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <functional>
#include <string_view>
#include <vector>

#include "command.hpp"
#include "complain.hpp"
#include "options.hpp"
#include "verdict.hpp"

namespace mdm::msg {
namespace {

constexpr size_t bytes_in_row = 8;
constexpr size_t most_in_text = 40;  // the bytes of a text that are shown of a long one
constexpr size_t least_message = 40;
constexpr size_t type_offset = 4;
constexpr uint32_t uncounted = 8;  // the length field counts all bytes but these
constexpr size_t count_size = 4;   // of a text
constexpr std::string_view gap = "  ";

enum class Color { none, faint, kind, field, text, fault };

const char *start_of(Color color)
{
    switch (color) {
    case Color::faint:
        return "\x1b[2m";
    case Color::kind:
        return "\x1b[36m";
    case Color::field:
        return "\x1b[1m";
    case Color::text:
        return "\x1b[32m";
    case Color::fault:
        return "\x1b[1;31m";
    case Color::none:
        break;
    }
    return "";
}

std::string offset_text(uint32_t offset)
{
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%04x", offset);
    return text.data();
}

bool is_number(const ipc_part_t &part)
{
    return part.kind <= IPC_PART_COUNT;
}

bool is_at(const ipc_part_t &part, std::string_view path)
{
    return part.path == path;
}

// The text, or its first characters.
std::string shortened(Bytes bytes, bool full)
{
    if (full || bytes.size() <= most_in_text) {
        return quoted(as_text(bytes));
    }
    return quoted(as_text(beginning_of(bytes, most_in_text))) + "…";
}

// A copy with a true length field, and with zeros behind it if it is too short for a message.
std::vector<uint8_t> with_true_length(Bytes message)
{
    std::vector<uint8_t> copy(message.begin(), message.end());
    copy.resize(std::max(message.size(), least_message));
    const auto length = GUINT32_TO_LE(static_cast<uint32_t>(copy.size() - uncounted));
    std::memcpy(copy.data(), &length, sizeof length);
    return copy;
}

// Like inspect(), for bytes of which the first `size` are the message's. The others are not shown.
std::optional<ipc_fault_t> inspect_first(Bytes bytes, size_t size,
                                         const std::function<void(const ipc_part_t &)> &visit)
{
    std::optional<ipc_fault_t> cut;
    const auto visit_cut = [&](const ipc_part_t &part) {
        const auto left = static_cast<uint32_t>(size - std::min<size_t>(size, part.offset));
        if (part.size <= left) {
            return visit(part);
        }
        if (left != 0) {
            visit({"rest", IPC_PART_REST, -1, -1, part.offset, left, 0, left, &bytes[part.offset]});
        }
        if (!cut && part.kind != IPC_PART_REST) {
            cut = {part.offset, part.size, left, part.path};
        }
    };
    std::optional<ipc_fault_t> fault = inspect(bytes, visit_cut);
    if (fault && fault->offset < size) {
        fault->left = static_cast<uint32_t>(size) - fault->offset;
    }
    return cut ? cut : fault;
}

// The lines of one message. The parts are visited three times: for the fault, for the widths, for
// the rows.
class Table {
public:
    Table(std::FILE *out, Bytes message, const ShowOptions &options)
        : out_(out), message_(message), options_(options)
    {
    }

    ShowFaults show()
    {
        const auto measure_part = [this](const ipc_part_t &part) { measure(part); };
        ShowFaults faults;
        Bytes bytes = message_;
        std::vector<uint8_t> copy;
        faults.fault = inspect(bytes, [](const ipc_part_t &) {});
        if (options_.any_length && faults.fault && is_length_alone(message_, *faults.fault)) {
            copy = with_true_length(message_);
            bytes = copy;
            length_fault_ = faults.fault;
        }
        const auto fault = inspect_first(bytes, message_.size(), measure_part);
        if (length_fault_) {
            faults.other = fault;
        }
        heading();
        fault_ = fault;
        inspect_first(bytes, message_.size(), [this](const ipc_part_t &part) { row(part); });
        mark_fault();
        return faults;
    }

private:
    void write(std::string_view text, Color color = Color::none)
    {
        const bool has_color = options_.color && color != Color::none;
        if (has_color) {
            std::fputs(start_of(color), out_);
        }
        std::fwrite(text.data(), 1, text.size(), out_);
        if (has_color) {
            std::fputs("\x1b[0m", out_);
        }
    }

    // A cell that others follow. `width` counts columns, and each byte of `text` is one of them,
    // but for the three of "…".
    void cell(std::string_view text, size_t width, Color color)
    {
        write(text, color);
        write(std::string(width - std::min(width, columns(text)), ' '));
        write(gap);
    }
    static size_t columns(std::string_view text)
    {
        constexpr std::string_view ellipsis = "…";
        const bool has_ellipsis = text.find(ellipsis) != std::string_view::npos;
        return text.size() - (has_ellipsis ? ellipsis.size() - 1 : 0);
    }

    void heading()
    {
        cell("offset", offset_width_, Color::faint);
        cell("bytes", bytes_width_, Color::faint);
        cell("kind", kind_width_, Color::faint);
        cell("field", name_width_, Color::faint);
        write("value\n", Color::faint);
    }

    void measure(const ipc_part_t &part)
    {
        offset_width_ = std::max(offset_width_, offset_text(part.offset + part.size).size());
        bytes_width_ = std::max(bytes_width_, columns(first_bytes(part)));
        kind_width_ = std::max(kind_width_, std::string_view(kind_name(part.kind)).size());
        name_width_ = std::max(name_width_, name_of(part).size());
    }

    // How many of the bytes may be seen.
    size_t visible(const ipc_part_t &part) const
    {
        if (!options_.hide_texts || is_number(part)) {
            return part.size;
        }
        return part.kind == IPC_PART_STR ? count_size : 0;
    }

    std::string first_bytes(const ipc_part_t &part) const
    {
        const size_t may_be_seen = visible(part);
        const size_t shown = std::min(may_be_seen, bytes_in_row);
        std::string text = hex(message_.subspan(part.offset, shown));
        if (may_be_seen == part.size && (options_.full || shown == part.size)) {
            return text;
        }
        const std::string left = std::to_string(part.size - shown);
        text += (text.empty() ? "… " : " … ") + left;
        return text + (may_be_seen == part.size ? " more" : " hidden");
    }

    void row(const ipc_part_t &part)
    {
        names_.see(part);
        if (part.kind == IPC_PART_REST) {
            mark_fault();
        }
        cell(offset_text(part.offset), offset_width_, Color::faint);
        cell(first_bytes(part), bytes_width_, Color::none);
        cell(kind_name(part.kind), kind_width_, Color::kind);
        cell(name_of(part), name_width_, Color::field);
        write(value(part), part.kind == IPC_PART_STR ? Color::text : Color::none);
        write("\n");
        is_first_ = false;
        further_rows(part);
        if (length_fault_ && is_at(part, "header.length")) {
            mark(*length_fault_);
        }
    }

    void further_rows(const ipc_part_t &part)
    {
        if (!options_.full || visible(part) != part.size) {
            return;
        }
        for (size_t done = bytes_in_row; done < part.size; done += bytes_in_row) {
            const auto offset = part.offset + static_cast<uint32_t>(done);
            cell(offset_text(offset), offset_width_, Color::faint);
            write(hex(message_.subspan(offset, std::min(bytes_in_row, part.size - done))));
            write("\n");
        }
    }

    void mark_fault()
    {
        if (fault_) {
            mark(*fault_);
            fault_.reset();
        }
    }
    void mark(const ipc_fault_t &fault)
    {
        write(std::string(offset_width_ + gap.size(), ' '));
        write((is_first_ ? "v malformed: " : "^ malformed: ") + sentence(fault), Color::fault);
        write("\n");
    }

    std::string value(const ipc_part_t &part) const
    {
        switch (part.kind) {
        case IPC_PART_U8:
        case IPC_PART_U32:
        case IPC_PART_I32:
        case IPC_PART_COUNT:
            return number(part);
        case IPC_PART_STR:
            return options_.hide_texts
                       ? counted(part.length, "byte")
                       : std::to_string(part.length) + " " + shortened(bytes_of(part), full());
        case IPC_PART_RESERVED:
            return counted(part.length, "byte") + ", ignored";
        case IPC_PART_PADDING:
            return padding(part);
        case IPC_PART_REST:
            return counted(part.length, "byte") + ", not decoded";
        case IPC_PART_BYTES:
            break;
        }
        return content(part);
    }
    bool full() const { return options_.full; }

    std::string content(const ipc_part_t &part) const
    {
        const std::string size = counted(part.length, "byte");
        return options_.hide_texts ? size : size + " " + shortened(bytes_of(part), full());
    }

    std::string padding(const ipc_part_t &part) const
    {
        const bool is_zero =
            std::ranges::all_of(bytes_of(part), [](uint8_t one) { return one == 0; });
        return is_zero && !options_.hide_texts ? counted(part.length, "byte") + ", all zero"
                                               : content(part);
    }

    std::string number(const ipc_part_t &part) const
    {
        if (is_at(part, "header.length")) {  // --any-length has changed the part
            const uint32_t length = first_word(message_);
            return std::to_string(length) +
                   " (+ 8 = " + counted(size_t{length} + uncounted, "byte") + ")";
        }
        std::string decimal = std::to_string(number_of(part));
        if (is_at(part, "header.type")) {
            return decimal + " (" + names_.category() + ")";
        }
        if (is_discriminator(part)) {
            return decimal + " (" + names_.form() + ")";  // begins with the category's name
        }
        if (part.kind != IPC_PART_U32 || part.number <= UINT16_MAX) {
            return decimal;
        }
        std::array<char, 16> text{};
        std::snprintf(text.data(), text.size(), " (0x%x)", part.number);
        return decimal + text.data();
    }

    std::FILE *out_;
    Bytes message_;
    const ShowOptions &options_;
    Names names_;
    std::optional<ipc_fault_t> fault_;
    std::optional<ipc_fault_t> length_fault_;
    bool is_first_ = true;
    size_t offset_width_ = std::string_view("0x0000").size();
    size_t bytes_width_ = std::string_view("bytes").size();
    size_t kind_width_ = std::string_view("kind").size();
    size_t name_width_ = std::string_view("field").size();
};

constexpr const char *summary = "Shows the bytes of messages, a line for each field: its "
                                "offset, its bytes, what it is, its\n"
                                "name and its value. Of a malformed message it shows the "
                                "fields in front of the fault, then "
                                "the\n"
                                "rest. Standard error says what is wrong. In a malformed "
                                "message a number may be a piece of a\n"
                                "text, also with --hide-texts.\n"
                                "\n"
                                "Exit status: 0 if all messages are whole, 1 if one is "
                                "malformed, 2 for wrong usage, 3 if a\n"
                                "file cannot be read.";

}  // namespace

ShowFaults show_message(std::FILE *out, Bytes message, const ShowOptions &options)
{
    return Table(out, message, options).show();
}

bool is_length_alone(Bytes message, const ipc_fault_t &fault)
{
    return std::string_view(fault.path) == "header.length" && message.size() > type_offset;
}

int run_show(int argc, char **argv)
{
    gboolean full = FALSE;
    gboolean hide_texts = FALSE;
    gboolean any_length = FALSE;
    const std::array<GOptionEntry, 4> entries = {{
        {"full", 0, 0, G_OPTION_ARG_NONE, &full, "Show all bytes and whole texts", nullptr},
        {"hide-texts", 0, 0, G_OPTION_ARG_NONE, &hide_texts,
         "Show lengths in place of texts and raw bytes, but show numbers", nullptr},
        {"any-length", 0, 0, G_OPTION_ARG_NONE, &any_length,
         "If the length field is wrong, show the fields as if it were right", nullptr},
        {},
    }};
    Options options("show", "[FILE…]", summary);
    options.add(entries.data());
    options.add_color();
    options.add_input();
    const auto files = options.parse(argc, argv);
    if (!files) {
        return wrong_usage;
    }
    const ShowOptions show = {full != FALSE, options.has_color(), hide_texts != FALSE,
                              any_length != FALSE};
    bool is_first = true;
    return for_each_message(*files, options.input(), [&](const Input &input) {
        if (files->size() > 1 || input.number != 0) {
            std::printf("%s%s:\n", is_first ? "" : "\n", printable(input.name).c_str());
        }
        is_first = false;
        const auto [fault, other] = show_message(stdout, input.bytes, show);
        std::string hint;
        if (other) {
            hint = "apart from that, " + sentence(*other);
        } else if (fault && input.warning.empty() && !show.any_length &&
                   is_length_alone(input.bytes, *fault)) {
            hint = "--any-length shows the fields nevertheless";
        }
        return judge(input, fault, hint);
    });
}

}  // namespace mdm::msg
