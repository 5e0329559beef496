// SPDX-License-Identifier: Apache-2.0
#include "support/dump.hpp"

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <glib.h>

#include "support/format.hpp"

namespace mdm::test {
namespace {

// Lines of a name and values. A text stands behind its length, so that no two read alike. It grows
// in GLib's own string, which is fast in a program without optimisation, too.
class Dump {
public:
    Dump() : text_(g_string_sized_new(512)) {}
    ~Dump() { g_string_free(text_, TRUE); }
    Dump(const Dump &) = delete;
    Dump &operator=(const Dump &) = delete;

    void begin(const char *name) { put_bytes(name, std::strlen(name)); }
    void end() { put_bytes("\n", 1); }

    template <class... Values>
    void line(const char *name, const Values &...values)
    {
        begin(name);
        (put(values), ...);
        end();
    }

    void raw(const void *data, int32_t size)
    {
        put_bytes("raw ", 4);
        const auto *bytes = static_cast<const uint8_t *>(data);
        const size_t count = static_cast<size_t>(size) + 1;
        const size_t begin = text_->len;
        g_string_set_size(text_, begin + 2 * count);
        char *out = text_->str + begin;
        for (size_t i = 0; i < count; ++i) {
            constexpr const char *digits = "0123456789abcdef";
            *out++ = digits[bytes[i] >> 4];
            *out++ = digits[bytes[i] & 15];
        }
        put_bytes("\n", 1);
    }

    std::string text() const { return {text_->str, text_->len}; }

    void put(uint64_t number)
    {
        char digits[24];
        char *const end = digits + sizeof digits;
        char *begin = end;
        do {
            *--begin = static_cast<char>('0' + number % 10);
            number /= 10;
        } while (number != 0);
        *--begin = ' ';
        put_bytes(begin, static_cast<size_t>(end - begin));
    }
    void put(uint32_t number) { put(uint64_t{number}); }
    void put(const char *text)
    {
        if (text == nullptr) {
            return put_bytes(" null", 5);
        }
        const size_t length = std::strlen(text);
        put(uint64_t{length});
        put_bytes("\"", 1);
        put_bytes(text, length);
        put_bytes("\"", 1);
    }

private:
    void put_bytes(const char *bytes, size_t count)
    {
        g_string_append_len(text_, bytes, static_cast<gssize>(count));
    }

    GString *text_;
};

const Field *find(Fields fields, size_t offset)
{
    for (const Field &field : fields) {
        if (field.offset == offset) {
            return &field;
        }
    }
    return nullptr;
}

void put_value(Dump &out, const void *record, const Field &field)
{
    switch (field.type) {
    case Type::byte:
        return out.put(uint64_t{value_at<uint8_t>(record, field.offset)});
    case Type::word:
        return out.put(value_at<uint32_t>(record, field.offset));
    case Type::text:
        return out.put(value_at<const char *>(record, field.offset));
    case Type::low_byte:
        return out.put(uint64_t{GSIZE_FROM_LE(value_at<uintptr_t>(record, field.offset))});
    case Type::strings:
    case Type::record:
        return;  // in lines of their own
    }
}

// A member of a nested record is of the type that it travels with, and null if it does not travel.
void put_nested(Dump &out, const void *outer, const Field &field)
{
    const auto *record = value_at<const void *>(outer, field.offset);
    const Alternative *alternative = field.nested->alternative(outer);
    if (record == nullptr || alternative == nullptr) {
        return out.line(record == nullptr ? "no record" : "not null");
    }
    out.begin(field.path);
    for (const Field &member : field.nested->members) {
        const Field *sent = find(alternative->fields, member.offset);
        put_value(out, record, sent != nullptr ? *sent : member);
    }
    out.end();
}

// Calls `visit` with each element.
template <class Visit>
void put_list(Dump &out, const GList *list, Visit visit)
{
    const GList *previous = nullptr;
    for (const GList *cell = list; cell != nullptr; cell = cell->next) {
        if (cell->prev != previous) {
            return out.line("broken link");
        }
        visit(cell->data);
        previous = cell;
    }
    out.line("end of list");
}

void put_strings(Dump &out, const GList *list)
{
    put_list(out, list, [&](const void *text) { out.line("-", static_cast<const char *>(text)); });
}

void put_record(Dump &out, const char *name, const void *record, Fields members)
{
    if (record == nullptr) {
        return out.line("no record");
    }
    out.begin(name);
    for (const Field &field : members) {
        put_value(out, record, field);
    }
    out.end();
    for (const Field &field : members) {
        if (field.type == Type::strings) {
            put_strings(out, value_at<const GList *>(record, field.offset));
        } else if (field.type == Type::record) {
            put_nested(out, record, field);
        }
    }
}

void put_array(Dump &out, const void *data, int32_t count)
{
    const auto *texts = static_cast<const char *const *>(data);
    for (int32_t i = 0; i < count; ++i) {
        out.line("-", texts[i]);
    }
}

void put_nothing(Dump &out, const void *data)
{
    out.line(data == nullptr ? "null" : "not null");
}

void put_payload(Dump &out, const Form &form, const void *data, int32_t data_size)
{
    switch (form.payload) {
    case Payload::nothing:
    case Payload::body:  // the body's own members
        return put_nothing(out, data);
    case Payload::record:
        return put_record(out, "record", data, form.members);
    case Payload::records:
        return put_list(out, static_cast<const GList *>(data), [&](const void *record) {
            put_record(out, "element", record, form.members);
        });
    case Payload::strings:
        return put_strings(out, static_cast<const GList *>(data));
    case Payload::text:
        return out.line("text", static_cast<const char *>(data));
    case Payload::array:
        return put_array(out, data, data_size);
    case Payload::raw:
        return data == nullptr || data_size < 0 ? put_nothing(out, data) : out.raw(data, data_size);
    }
}

// A list in the place of `param` hides it.
void put_head(Dump &out, const CategoryFormat &category, const Form &form, const mdm_body_t &body)
{
    out.begin(category.name);
    for (const Field &field : category.members) {
        if (!form.is_in_param || field.offset != offsetof(mdm_misc_info_t, param)) {
            put_value(out, &body, field);
        }
    }
    if (form.payload == Payload::body) {
        for (const Field &field : form.fields) {
            if (find(category.members, field.offset) == nullptr) {
                put_value(out, &body, field);
            }
        }
    }
    out.end();
}

void put_body(Dump &out, const CategoryFormat &category, const mdm_body_t &body)
{
    const Form &form = form_of(category, discriminator_of(body));
    put_head(out, category, form, body);
    if (category.data == no_offset) {
        return;
    }
    const auto *data = value_at<const void *>(&body, category.data);
    const auto data_size = value_at<int32_t>(&body, category.data_size);
    if (form.is_in_param) {
        put_nothing(out, data);
        return put_payload(out, form, body.misc.param_list, data_size);
    }
    is_announced(category, form, data_size) && category.is_payload_read
        ? put_payload(out, form, data, data_size)
        : put_nothing(out, data);
}

// A type without a category.
void put_no_body(Dump &out, const mdm_body_t &body)
{
    static const mdm_body_t zeros{};
    out.line(std::memcmp(&body, &zeros, sizeof body) == 0 ? "no body" : "not null");
}

}  // namespace

std::string dump(const mdm_msg_t &msg)
{
    Dump out;
    out.line("header", msg.hdr_aux, uint64_t{msg.type}, uint64_t{msg.hdr_byte}, msg.hdr_word1,
             msg.hdr_word2, msg.hdr_text, msg.hdr_word3, msg.hdr_word4, msg.hdr_word5,
             msg.hdr_word6, msg.hdr_word7);
    const CategoryFormat *category = format_of(msg.type);
    category != nullptr ? put_body(out, *category, msg.body) : put_no_body(out, msg.body);
    return out.text();
}

}  // namespace mdm::test
