// SPDX-License-Identifier: Apache-2.0
//
// The bytes of a page, in rows of 16.
#include <algorithm>
#include <cstdio>

#include "html.hpp"
#include "html_parts.hpp"
#include "parts.hpp"

namespace mdm::msg {
namespace {

constexpr size_t row_size = 16;
constexpr size_t rows_in_block = 64;  // page.css says how tall such a block is
constexpr std::string_view hidden_byte = "··";
constexpr std::string_view hidden_letter = "·";
constexpr std::string_view missing_byte = R"(<mark id="fault" title="the fault">??</mark>)";

// From `begin` up to `end`, which does not belong to it.
struct Range {
    size_t begin;
    size_t end;

    size_t size() const { return end - begin; }
};

bool is_hidden(const Inspected &message, const ipc_part_t &part, size_t offset)
{
    if (!message.hides_texts) {
        return false;
    }
    switch (part.kind) {
    case IPC_PART_U8:
    case IPC_PART_U32:
    case IPC_PART_I32:
    case IPC_PART_COUNT:
        return false;
    case IPC_PART_STR:
        return offset >= part.offset + part.size - part.length;
    case IPC_PART_BYTES:
    case IPC_PART_RESERVED:
    case IPC_PART_PADDING:
    case IPC_PART_REST:
        break;
    }
    return true;
}

class Rows {
public:
    Rows(std::string &out, const Inspected &message)
        : out_(out), message_(message), fault_(undecoded_from(message)),
          digits_(message.bytes.size() <= 0x10000 ? 4 : 8)
    {
    }

    void append()
    {
        append_ruler();
        out_ += "<pre>";
        const size_t size = message_.bytes.size();
        for (size_t begin = 0; begin < size;) {
            begin = append_rows_at(begin);
            if (begin % (rows_in_block * row_size) == 0 && begin < size) {
                out_ += "</pre>\n<pre>";
            }
        }
        if (fault_ == size && size % row_size == 0) {
            append_offset(size);
            (out_ += missing_byte) += '\n';
        }
        out_ += "</pre>\n";
    }

private:
    const ipc_part_t &part() const { return message_.parts[part_]; }
    size_t end_of_part() const { return size_t{part().offset} + part().size; }

    void append_ruler()
    {
        out_ += R"(<pre class="ruler" aria-hidden="true">)";
        out_.append(digits_ + 1, ' ');
        for (unsigned column = 0; column < row_size; ++column) {
            append_number(" %02x", column);
        }
        out_ += "<i>  0123456789abcdef</i></pre>\n";
    }

    void append_number(const char *format, size_t number)
    {
        char text[24];
        std::snprintf(text, sizeof text, format, static_cast<unsigned>(number));
        out_ += text;
    }

    void append_hex_number(size_t number) { append_number(digits_ == 4 ? "%04x" : "%08x", number); }

    void append_offset(size_t offset)
    {
        out_ += "<b>";
        append_hex_number(offset);
        out_ += "</b>  ";
    }

    // Appends one row, or the many rows of a long value. Returns where they end.
    size_t append_rows_at(size_t begin)
    {
        while (end_of_part() <= begin) {
            ++part_;
        }
        const bool is_inside = part().offset <= begin;
        const size_t rows = is_inside ? (end_of_part() - begin) / row_size : 0;
        if (rows <= 2 * rows_before_fold) {
            const size_t end = std::min(begin + row_size, message_.bytes.size());
            append_row({begin, end});
            return end;
        }
        const size_t fold = begin + rows_before_fold * row_size;
        for (; begin < fold; begin += row_size) {
            append_row({begin, begin + row_size});
        }
        const size_t end = begin + (rows - rows_before_fold) * row_size;
        append_folded({begin, end});
        return end;
    }

    void append_row(Range row)
    {
        append_offset(row.begin);
        const size_t first_part = part_;
        append_runs(row, &Rows::append_hex_run, " ");
        if (fault_ == row.end && row.size() < row_size) {
            (out_ += ' ') += missing_byte;
            out_.append((row_size - row.size() - 1) * 3, ' ');
        } else {
            out_.append((row_size - row.size()) * 3, ' ');
        }
        part_ = first_part;
        out_ += "  <i>";
        append_runs(row, &Rows::append_letter_run, "");
        out_ += "\n</i>";
    }

    // A run is what a row has of a part.
    void append_runs(Range row, void (Rows::*append_run)(Range), const char *between)
    {
        for (size_t begin = row.begin; begin < row.end;) {
            while (end_of_part() <= begin) {
                ++part_;
            }
            if (begin != row.begin) {
                out_ += between;
            }
            const size_t end = std::min(end_of_part(), row.end);
            (this->*append_run)({begin, end});
            begin = end;
        }
    }

    void append_hex_run(Range run)
    {
        begin_run(run.begin == part().offset);
        for (size_t offset = run.begin; offset < run.end; ++offset) {
            if (offset != run.begin) {
                out_ += ' ';
            }
            const bool is_fault = offset == fault_;
            out_ += is_fault ? R"(<mark id="fault" title="the fault">)" : "";
            append_byte(offset);
            out_ += is_fault ? "</mark>" : "";
        }
        out_ += "</span>";
    }

    void append_letter_run(Range run)
    {
        begin_run(false);
        for (size_t offset = run.begin; offset < run.end; ++offset) {
            const bool is_fault = offset == fault_;
            out_ += is_fault ? "<mark>" : "";
            append_letter(offset);
            out_ += is_fault ? "</mark>" : "";
        }
        out_ += "</span>";
    }

    void begin_run(bool has_name)
    {
        const std::string number = std::to_string(part_);
        out_ += "<span ";
        if (has_name) {
            out_ += "id=\"b" + number + "\" ";
        }
        out_ += "class=\"";
        out_ += class_of(part().kind);
        out_ += "\" data-p=\"" + number + "\">";
    }

    void append_byte(size_t offset)
    {
        if (is_hidden(message_, part(), offset)) {
            out_ += hidden_byte;
        } else {
            append_number("%02x", message_.bytes[offset]);
        }
    }

    void append_letter(size_t offset)
    {
        const char letter = static_cast<char>(message_.bytes[offset]);
        if (is_hidden(message_, part(), offset)) {
            out_ += hidden_letter;
        } else {
            out_ += letter >= ' ' && letter <= '~' ? escaped({&letter, 1}) : ".";
        }
    }

    // Rows that have no byte of another part need no elements.
    void append_folded(Range folded)
    {
        const std::string number = std::to_string(part_);
        out_ += "</pre>\n<details><summary data-p=\"" + number + "\">" +
                counted(folded.size(), "byte") + " more, from ";
        append_hex_number(folded.begin);
        out_ += " to ";
        append_hex_number(folded.end - 1);
        out_ += "</summary><pre class=\"";
        out_ += class_of(part().kind);
        out_ += "\" data-p=\"" + number + "\">";
        for (size_t begin = folded.begin; begin < folded.end; begin += row_size) {
            append_plain_row({begin, begin + row_size});
        }
        out_ += "</pre></details>\n<pre>";
    }

    void append_plain_row(Range row)
    {
        append_hex_number(row.begin);
        out_ += ' ';
        for (size_t offset = row.begin; offset < row.end; ++offset) {
            out_ += ' ';
            append_byte(offset);
        }
        out_ += "  ";
        for (size_t offset = row.begin; offset < row.end; ++offset) {
            append_letter(offset);
        }
        out_ += '\n';
    }

    std::string &out_;
    const Inspected &message_;
    const std::optional<size_t> fault_;
    const size_t digits_;  // of an offset
    size_t part_ = 0;      // the one that has the byte at hand
};

}  // namespace

void append_bytes(std::string &out, const Inspected &message)
{
    Rows(out, message).append();
}

}  // namespace mdm::msg
