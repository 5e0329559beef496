// SPDX-License-Identifier: Apache-2.0
//
// The fields of a page, as a tree.
#include <string_view>

#include "fields.hpp"
#include "html.hpp"
#include "html_parts.hpp"
#include "parts.hpp"
#include "verdict.hpp"

namespace mdm::msg {
namespace {

constexpr size_t bytes_before_fold = 16;

class Tree {
public:
    Tree(std::string &out, const Inspected &message) : out_(out), message_(message) {}

    // The fault stands in front of the bytes that are not decoded, and behind all other fields.
    void append()
    {
        out_ += "<ul class=\"tree\">\n";
        bool has_fault = !message_.fault;
        for (const Field &field : fields_of(message_.parts)) {
            if (message_.parts[field.first].kind == IPC_PART_REST) {
                append_fault();
                has_fault = true;
            }
            append_field(field);
        }
        if (!has_fault) {
            append_fault();
        }
        out_ += "</ul>\n";
    }

private:
    void append_fault()
    {
        out_ += R"(<li class="fault"><a href="#fault"><b>fault</b> <em>)" +
                escaped(sentence(*message_.fault)) + "</em></a></li>\n";
    }

    void append_field(const Field &field)
    {
        out_ += "<li>";
        if (field.kind == Field::Kind::part) {
            append_part(field);
        } else {
            append_group(field);
        }
        out_ += "</li>\n";
    }

    void append_group(const Field &field)
    {
        const bool is_list = field.kind == Field::Kind::list;
        const bool is_open = !is_list || shown_elements(field) <= elements_before_fold;
        out_ += is_open ? "<details open>" : "<details>";
        out_ += is_list ? "<summary class=\"list\"" : "<summary";
        out_ += " data-p=\"" + std::to_string(field.first) + "-" + std::to_string(field.end - 1) +
                "\"><b>" + escaped(field.name) + "</b> ";
        if (is_list) {
            out_ += "<i>list</i> <em>" + elements_of(field) + "</em> ";
        }
        const ipc_part_t &first = message_.parts[field.first];
        const ipc_part_t &last = message_.parts[field.end - 1];
        append_place(first.offset, last.offset + last.size - first.offset);
        out_ += "</summary>\n<ul>\n";
        for (const Field &inner : field.fields) {
            append_field(inner);
        }
        out_ += "</ul></details>";
    }

    bool has_count(const Field &list) const
    {
        return message_.parts[list.first].kind == IPC_PART_COUNT;
    }

    size_t shown_elements(const Field &list) const
    {
        return list.fields.size() - (has_count(list) ? 1 : 0);
    }

    // "3 elements"; "2 of 3 elements" if a fault stands among them
    std::string elements_of(const Field &list) const
    {
        const size_t shown = shown_elements(list);
        const size_t announced = has_count(list) ? message_.parts[list.first].number : shown;
        const std::string all = counted(announced, "element");
        return shown == announced ? all : std::to_string(shown) + " of " + all;
    }

    void append_part(const Field &field)
    {
        const ipc_part_t &part = message_.parts[field.first];
        const std::string number = std::to_string(field.first);
        out_ += "<a id=\"p" + number + "\" class=\"";
        out_ += class_of(part.kind);
        out_ += "\" href=\"#b" + number + "\" data-p=\"" + number + "\"><b>" + escaped(field.name) +
                "</b> <i>" + kind_name(part.kind) + "</i> ";
        append_value(part);
        append_place(part.offset, part.size);
        out_ += "</a>";
        if (part.kind == IPC_PART_STR && part.length > text_before_fold && !message_.hides_texts) {
            out_ += "<details><summary>the whole text, " + counted(part.length, "byte") +
                    "</summary><pre>" + escaped(quoted(as_text(bytes_of(part)))) +
                    "</pre></details>";
        }
    }

    void append_place(uint32_t offset, uint32_t size)
    {
        out_ += "<small>at " + std::to_string(offset) + ", " + counted(size, "byte") + "</small>";
    }

    void append_value(const ipc_part_t &part)
    {
        switch (part.kind) {
        case IPC_PART_U8:
        case IPC_PART_U32:
        case IPC_PART_I32:
        case IPC_PART_COUNT:
            append_number(part);
            return;
        case IPC_PART_STR:
        case IPC_PART_BYTES:
        case IPC_PART_RESERVED:
        case IPC_PART_PADDING:
            break;
        case IPC_PART_REST:
            out_ += "<em>not decoded</em> ";
            break;
        }
        if (message_.hides_texts) {
            out_ += "<em>" + counted(part.length, "byte") + ", hidden</em> ";
        } else if (part.kind == IPC_PART_STR) {
            append_text(bytes_of(part));
        } else {
            append_raw(bytes_of(part));
        }
    }

    void append_number(const ipc_part_t &part)
    {
        out_ += "<code>" + std::to_string(number_of(part)) + "</code> ";
        names_.see(part);
        if (std::string_view(part.path) == "header.type") {
            out_ += std::string("<em>") + names_.category() + "</em> ";
        } else if (is_discriminator(part)) {
            out_ += std::string("<em>") + names_.form() + "</em> ";
        }
    }

    void append_text(Bytes text)
    {
        const bool is_long = text.size() > text_before_fold;
        const Bytes shown = beginning_of(text, text_before_fold);
        out_ += "<code>" + escaped(quoted(as_text(shown))) + "</code> ";
        out_ += is_long ? "<em>…</em> " : "";
    }

    void append_raw(Bytes raw)
    {
        const bool is_long = raw.size() > bytes_before_fold;
        out_ += "<code>" + hex(is_long ? raw.first(bytes_before_fold) : raw) + "</code> ";
        out_ += is_long ? "<em>…</em> " : "";
    }

    std::string &out_;
    const Inspected &message_;
    Names names_;
};

}  // namespace

void append_fields(std::string &out, const Inspected &message)
{
    Tree(out, message).append();
}

}  // namespace mdm::msg
