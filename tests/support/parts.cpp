// SPDX-License-Identifier: Apache-2.0
#include "support/parts.hpp"

#include <algorithm>
#include <iterator>
#include <map>
#include <memory>
#include <sstream>
#include <utility>

#include "mdm/result.h"
#include "support/format.hpp"
#include "support/messages.hpp"

namespace mdm::test {
namespace {

using Bytes = std::vector<uint8_t>;

// Where the public headers have an `int32_t`; tests/abi/layout.h has the types of all fields.
bool has_sign(std::string_view path)
{
    static constexpr std::string_view signed_fields[] = {"admin.status",
                                                         "app.type",
                                                         "app_res.type",
                                                         "misc.type",
                                                         "phone_res.type",
                                                         "wifi.network.detail_kind",
                                                         "app_res.control.client_id"};
    const bool is_unsigned_size = path == "app_cb.data_size" || path == "misc_cb.data_size";
    return (path.ends_with(".data_size") && !is_unsigned_size) ||
           std::ranges::find(signed_fields, path) != std::end(signed_fields);
}

// The offset of `data_size` in the body; without one, any.
size_t data_size_of(const CategoryFormat &category)
{
    const auto found = std::ranges::find_if(category.head, is_data_size);
    return found != category.head.end() ? found->offset : 0;
}

// A callback with the size 0 has no payload, which no sender makes.
bool has_payload(const CategoryFormat &category, const Form &form, int32_t data_size)
{
    return category.counts_body ? data_size != 0 : is_announced(category, form, data_size);
}

class SecondReader {
public:
    explicit SecondReader(const Bytes &bytes) : bytes_(bytes) {}

    Inspection read() &&
    {
        if (has_length()) {
            message();
            take_all("padding", IPC_PART_PADDING);
        }
        found_.result = is_whole_ ? MDM_RESULT_SUCCESS : MDM_RESULT_FAILED;
        is_whole_ = true;
        take_all("rest", IPC_PART_REST);
        return std::move(found_);
    }

private:
    uint64_t left() const { return bytes_.size() - offset_; }

    bool fail(const char *path, uint64_t needed)
    {
        found_.fault = {static_cast<uint32_t>(offset_),
                        static_cast<uint32_t>(std::min<uint64_t>(needed, UINT32_MAX)),
                        static_cast<uint32_t>(left()), path};
        is_whole_ = false;
        return false;
    }
    bool need(const char *path, uint64_t size)
    {
        return is_whole_ && (size <= left() || fail(path, size));
    }

    Part &add(const char *path, ipc_part_kind_t kind, size_t size)
    {
        Part part;
        part.path = path;
        part.kind = kind;
        part.element = element_;
        part.inner = inner_;
        part.offset = static_cast<uint32_t>(offset_);
        part.size = static_cast<uint32_t>(size);
        offset_ += size;
        return found_.parts.emplace_back(std::move(part));
    }
    void set_bytes(Part &part, size_t begin) const
    {
        part.bytes_at = static_cast<uint32_t>(begin);
        part.bytes.assign(bytes_.begin() + static_cast<std::ptrdiff_t>(begin),
                          bytes_.begin() + static_cast<std::ptrdiff_t>(offset_));
    }

    void take(const char *path, ipc_part_kind_t kind, uint64_t size)
    {
        if (need(path, size)) {
            const size_t begin = offset_;
            set_bytes(add(path, kind, static_cast<size_t>(size)), begin);
        }
    }
    void take_all(const char *path, ipc_part_kind_t kind)
    {
        element_ = -1;
        inner_ = -1;
        if (left() != 0) {
            take(path, kind, left());
        }
    }

    void byte(const char *path)
    {
        if (need(path, 1)) {
            const uint8_t number = bytes_[offset_];
            add(path, IPC_PART_U8, 1).number = number;
        }
    }
    uint32_t word(const char *path, ipc_part_kind_t kind)
    {
        if (!need(path, 4)) {
            return 0;
        }
        const uint32_t number = word_at(bytes_, offset_);
        add(path, kind, 4).number = number;
        return number;
    }
    uint32_t word(const char *path)
    {
        return word(path, has_sign(path) ? IPC_PART_I32 : IPC_PART_U32);
    }

    void text(const char *path)
    {
        const uint32_t length = word(path, IPC_PART_COUNT);
        if (!need(path, length)) {
            return;
        }
        Part &part = found_.parts.back();
        part.kind = IPC_PART_STR;
        part.number = 0;
        part.size += length;
        const size_t begin = offset_;
        offset_ += length;
        set_bytes(part, begin);
    }

    // The number of elements. A negative one announces none.
    int64_t count(const char *path, uint32_t smallest)
    {
        const auto count = static_cast<int32_t>(word(path, IPC_PART_COUNT));
        return count > 0 && need(path, uint64_t{smallest} * static_cast<uint32_t>(count)) ? count
                                                                                          : 0;
    }
    int64_t unsigned_count(const char *path, uint32_t smallest)
    {
        const uint32_t count = word(path, IPC_PART_COUNT);
        return need(path, uint64_t{smallest} * count) ? count : 0;
    }

    template <class Read>
    void elements(int32_t &position, int64_t count, Read read)
    {
        for (int64_t i = 0; is_whole_ && i < count; ++i) {
            position = static_cast<int32_t>(i);
            read();
        }
        position = -1;
    }
    void texts(const char *path, int64_t count)
    {
        elements(element_ == -1 ? element_ : inner_, count, [&] { text(path); });
    }

    // The words of the record, by their offset in memory.
    using Words = std::map<size_t, uint32_t>;

    Words fields(Fields list)
    {
        Words words;
        for (const Field &field : list) {
            if (is_whole_) {
                field_of(words, field);
            }
        }
        return words;
    }
    void field_of(Words &words, const Field &field)
    {
        switch (field.type) {
        case Type::byte:
        case Type::low_byte:
            return byte(field.path);
        case Type::word:
            words[field.offset] = word(field.path);
            return;
        case Type::text:
            return text(field.path);
        case Type::strings:
            return texts(field.path, count(field.path, 4));
        case Type::record:
            return nested(*field.nested, words);
        }
    }
    void nested(const NestedRecord &record, const Words &words)
    {
        for (const Alternative &one : record.alternatives) {
            if (record.selector == no_offset || one.selectors.has(words.at(record.selector))) {
                fields(one.fields);
                return;
            }
        }
    }

    // What the envelope compares before it reads.
    bool has_length()
    {
        const uint64_t size = bytes_.size();
        if (size < 4) {
            return fail("header.length", 4);
        }
        const uint64_t announced = uint64_t{word_at(bytes_, 0)} + 8;
        if (announced != size) {
            return fail("header.length", announced);
        }
        return size >= header_size || fail("header.length", header_size);
    }

    void message()
    {
        word("header.length");
        const uint8_t type = bytes_[type_offset];
        if (type < 1 || type > 80) {
            fail("header.type", 1);
            return;
        }
        byte("header.type");
        byte("header.hdr_byte");
        take("header.reserved", IPC_PART_RESERVED, 2);
        word("header.hdr_word1");
        word("header.hdr_word2");
        text("header.hdr_text");
        word("header.hdr_word3");
        word("header.hdr_word6");
        word("header.hdr_word7");
        word("header.hdr_word4");
        word("header.hdr_word5");
        if (const CategoryFormat *category = format_of(type)) {
            body(*category);
        }
    }

    void body(const CategoryFormat &category)
    {
        Words head = fields(category.head);
        const Form &form = form_of(category, head[0]);
        const auto data_size = static_cast<int32_t>(head[data_size_of(category)]);
        if (is_whole_ && has_payload(category, form, data_size)) {
            payload(category, form, data_size);
        }
    }

    void payload(const CategoryFormat &category, const Form &form, int32_t data_size)
    {
        const uint64_t size = data_size < 0 ? UINT64_MAX / 4 : static_cast<uint64_t>(data_size);
        switch (form.payload) {
        case Payload::nothing:
            return;
        case Payload::body:
        case Payload::record:
            fields(form.fields);
            return;
        case Payload::records:
            return elements(element_, count(form.path, smallest_size(form.fields)),
                            [&] { fields(form.fields); });
        case Payload::strings:
            return texts(form.path,
                         form.is_in_param ? unsigned_count(form.path, 4) : count(form.path, 4));
        case Payload::text:
            return text(form.path);
        case Payload::array:
            return texts(form.path, need(form.path, size * 4) ? static_cast<int64_t>(size) : 0);
        case Payload::raw:
            if (category.is_payload_read) {
                take(form.path, IPC_PART_BYTES, size);
            }
            return;
        }
    }

    const Bytes &bytes_;
    size_t offset_ = 0;
    bool is_whole_ = true;
    int32_t element_ = -1;
    int32_t inner_ = -1;
    Inspection found_;
};

// Values.

class Values {
public:
    void number(std::string_view path, int32_t element, uint32_t number)
    {
        add(path, element, -1, std::to_string(number));
    }
    // The text may be null.
    void text(std::string_view path, int32_t element, int32_t inner, const char *text)
    {
        add(path, element, inner, text == nullptr ? "null" : '"' + std::string(text) + '"');
    }

    std::vector<std::string> take() { return std::move(all_); }

private:
    void add(std::string_view path, int32_t element, int32_t inner, const std::string &value)
    {
        all_.push_back(std::string(path) + ' ' + std::to_string(element) + ' ' +
                       std::to_string(inner) + ' ' + value);
    }

    std::vector<std::string> all_;
};

// The receiver of these forms does not keep the number that has travelled.
bool is_kept(std::string_view path, const Form &form)
{
    return !(form.is_in_param && path == "misc.param") &&
           !(form.data_size == DataSize::stored_twelve && path == "phone_res.data_size");
}

// What an opened message holds, in wire order.
class Holder {
public:
    explicit Holder(const mdm_msg_t &msg) : msg_(msg) {}

    std::vector<std::string> read() &&
    {
        out_.number("header.type", -1, msg_.type);
        out_.number("header.hdr_byte", -1, msg_.hdr_byte);
        out_.number("header.hdr_word1", -1, msg_.hdr_word1);
        out_.number("header.hdr_word2", -1, msg_.hdr_word2);
        out_.text("header.hdr_text", -1, -1, msg_.hdr_text);
        out_.number("header.hdr_word3", -1, msg_.hdr_word3);
        out_.number("header.hdr_word6", -1, msg_.hdr_word6);
        out_.number("header.hdr_word7", -1, msg_.hdr_word7);
        out_.number("header.hdr_word4", -1, msg_.hdr_word4);
        out_.number("header.hdr_word5", -1, msg_.hdr_word5);
        if (const CategoryFormat *category = format_of(msg_.type)) {
            body(*category, msg_.body);
        }
        return out_.take();
    }

private:
    void record(const void *record, Fields list, int32_t element)
    {
        for (const Field &field : list) {
            member(record, field, element);
        }
    }
    void member(const void *outer, const Field &field, int32_t element)
    {
        switch (field.type) {
        case Type::byte:
            return out_.number(field.path, element, value_at<uint8_t>(outer, field.offset));
        case Type::low_byte:
            return out_.number(
                field.path, element,
                static_cast<uint32_t>(GSIZE_FROM_LE(value_at<uintptr_t>(outer, field.offset))));
        case Type::word:
            return out_.number(field.path, element, value_at<uint32_t>(outer, field.offset));
        case Type::text:
            return out_.text(field.path, element, -1, value_at<const char *>(outer, field.offset));
        case Type::strings:
            return strings(field.path, value_at<const GList *>(outer, field.offset), element);
        case Type::record:
            if (const Alternative *alternative = field.nested->alternative(outer)) {
                record(value_at<const void *>(outer, field.offset), alternative->fields, element);
            }
            return;
        }
    }
    // `element` is -1 for a list in no other one.
    void strings(std::string_view path, const GList *list, int32_t element)
    {
        int32_t position = 0;
        for (; list != nullptr; list = list->next, ++position) {
            const auto *text = static_cast<const char *>(list->data);
            element == -1 ? out_.text(path, position, -1, text)
                          : out_.text(path, element, position, text);
        }
    }

    void body(const CategoryFormat &category, const mdm_body_t &body)
    {
        const Form &form = form_of(category, discriminator_of(body));
        for (const Field &field : category.head) {
            if (is_kept(field.path, form)) {
                member(&body, field, -1);
            }
        }
        const auto data_size = value_at<int32_t>(&body, data_size_of(category));
        if (!has_payload(category, form, data_size)) {
            return;
        }
        if (form.payload == Payload::body) {
            record(&body, form.fields, -1);
        } else if (form.is_in_param) {
            strings(form.path, body.misc.param_list, -1);
        } else if (form.payload != Payload::nothing) {
            payload(form, value_at<const void *>(&body, category.data), data_size);
        }
    }
    void payload(const Form &form, const void *data, int32_t data_size)
    {
        switch (form.payload) {
        case Payload::nothing:
        case Payload::body:
            return;
        case Payload::record:
            return record(data, form.fields, -1);
        case Payload::records: {
            int32_t position = 0;
            const auto *list = static_cast<const GList *>(data);
            for (; list != nullptr; list = list->next, ++position) {
                record(list->data, form.fields, position);
            }
            return;
        }
        case Payload::strings:
            return strings(form.path, static_cast<const GList *>(data), -1);
        case Payload::array:
            for (int32_t i = 0; i < data_size; ++i) {
                out_.text(form.path, i, -1, static_cast<const char *const *>(data)[i]);
            }
            return;
        case Payload::text:
            return out_.text(form.path, -1, -1, static_cast<const char *>(data));
        case Payload::raw:
            if (data != nullptr) {
                out_.text(form.path, -1, -1, static_cast<const char *>(data));
            }
            return;
        }
    }

    const mdm_msg_t &msg_;
    Values out_;
};

uint32_t number_of(const std::vector<Part> &parts, std::string_view path)
{
    const auto found =
        std::ranges::find_if(parts, [&](const Part &part) { return part.path == path; });
    return found != parts.end() ? found->number : 0;
}

const Form *form_of(const std::vector<Part> &parts)
{
    const auto type = static_cast<uint8_t>(number_of(parts, "header.type"));
    const CategoryFormat *category = format_of(type);
    return category == nullptr ? nullptr
                               : &form_of(*category, number_of(parts, category->head.front().path));
}

bool has_number(ipc_part_kind_t kind)
{
    return kind == IPC_PART_U8 || kind == IPC_PART_U32 || kind == IPC_PART_I32;
}

// A visitor.
struct Collector {
    const uint8_t *buffer;
    std::vector<Part> parts;

    static bool collect(const ipc_part_t *part, void *collector)
    {
        auto *self = static_cast<Collector *>(collector);
        self->parts.push_back(copy_of(*part, self->buffer));
        return true;
    }
};

// Whether a question says how many bytes the answer has to have.
bool has_length(ipc_part_kind_t kind)
{
    return kind == IPC_PART_BYTES || kind == IPC_PART_RESERVED;
}

// An answerer.
struct Asked {
    const Answer &answer;
    std::vector<Part> questions;

    static bool ask(ipc_part_t *part, void *asked)
    {
        auto *self = static_cast<Asked *>(asked);
        Part question = copy_of(*part, nullptr);
        question.size = has_length(part->kind) ? part->length : 0;
        self->questions.push_back(std::move(question));
        return self->answer(*part);
    }
};

Part question_for(const Part &part)
{
    Part question;
    question.path = part.path;
    question.kind = part.kind;
    question.element = part.element;
    question.inner = part.inner;
    question.offset = part.offset;
    return question;
}

}  // namespace

std::ostream &operator<<(std::ostream &out, const Part &part)
{
    out << part.offset << '+' << part.size << ' ' << part.path << " kind " << part.kind << " ["
        << part.element << "][" << part.inner << "] " << part.number;
    if (part.bytes_at.has_value()) {
        out << " bytes at " << *part.bytes_at << ':';
    }
    for (const uint8_t byte : part.bytes) {
        out << ' ' << unsigned{byte};
    }
    return out;
}

std::string text_of(const std::vector<Part> &parts)
{
    std::ostringstream out;
    for (const Part &part : parts) {
        out << part << '\n';
    }
    return out.str();
}

Part copy_of(const ipc_part_t &part, const uint8_t *buffer)
{
    Part copy;
    copy.path = part.path;
    copy.kind = part.kind;
    copy.element = part.element;
    copy.inner = part.inner;
    copy.offset = part.offset;
    copy.size = part.size;
    copy.number = part.number;
    if (part.bytes != nullptr) {
        copy.bytes_at = static_cast<uint32_t>(part.bytes - buffer);
        copy.bytes.assign(part.bytes, part.bytes + part.length);
    }
    return copy;
}

Inspection inspected(const Bytes &bytes)
{
    const auto copy = std::make_unique<uint8_t[]>(bytes.size());
    std::ranges::copy(bytes, copy.get());
    Collector collector{copy.get(), {}};
    Inspection found;
    found.result = ipc_inspect(copy.get(), static_cast<uint32_t>(bytes.size()), Collector::collect,
                               &collector, &found.fault);
    found.parts = std::move(collector.parts);
    return found;
}

Inspection described(const Bytes &bytes)
{
    return SecondReader(bytes).read();
}

std::string gaps_between(const std::vector<Part> &parts, size_t length)
{
    std::ostringstream out;
    size_t end = 0;
    for (const Part &part : parts) {
        if (part.offset != end || part.size == 0) {
            out << end << " is where this should begin: " << part << '\n';
        }
        end = size_t{part.offset} + part.size;
    }
    if (end != length) {
        out << "the parts end at " << end << " of " << length;
    }
    return out.str();
}

std::vector<std::string> values_of(const std::vector<Part> &parts)
{
    Values values;
    const Form *form = form_of(parts);
    const bool loses_empty = form != nullptr && form->elements == Elements::lose_empty;
    int32_t lost = 0;
    for (const Part &part : parts) {
        if (part.path == "header.length" || (form != nullptr && !is_kept(part.path, *form))) {
            continue;
        }
        if (has_number(part.kind)) {
            values.number(part.path, part.element, part.number);
        } else if (part.kind == IPC_PART_STR || part.kind == IPC_PART_BYTES) {
            const std::string text(part.bytes.begin(), part.bytes.end());
            if (text.empty() && loses_empty && part.element != -1) {
                ++lost;
                continue;
            }
            values.text(part.path, part.element - lost, part.inner,
                        text.empty() ? nullptr : text.c_str());
        }
    }
    return values.take();
}

std::vector<std::string> values_of(const mdm_msg_t &msg)
{
    return Holder(msg).read();
}

Composition composed(const Answer &answer)
{
    Composition made;
    Asked asked{answer, {}};
    uint8_t *bytes = ipc_compose(Asked::ask, &asked, &made.length, &made.fault);
    if (bytes != nullptr) {
        made.bytes.emplace(bytes, bytes + made.length);
        g_free(bytes);
    }
    made.questions = std::move(asked.questions);
    return made;
}

Composition composed(const std::vector<Part> &parts)
{
    size_t next = 0;
    return composed([&](ipc_part_t &part) {
        if (next == parts.size()) {
            return part.kind == IPC_PART_PADDING;
        }
        const Part &answer = parts[next++];
        part.number = answer.number;
        part.length = static_cast<uint32_t>(answer.bytes.size());
        part.bytes = answer.bytes.data();
        return true;
    });
}

std::vector<Part> questions_for(const std::vector<Part> &parts)
{
    std::vector<Part> questions;
    uint32_t end = 0;
    for (const Part &part : parts) {
        Part question = question_for(part);
        question.size = has_length(part.kind) ? part.size : 0;
        questions.push_back(question);
        end = part.offset + part.size;
    }
    if (questions.back().kind != IPC_PART_PADDING) {
        Part padding;
        padding.path = "padding";
        padding.kind = IPC_PART_PADDING;
        padding.offset = end;
        questions.push_back(padding);
    }
    return questions;
}

}  // namespace mdm::test
