// SPDX-License-Identifier: Apache-2.0
#include "support/messages.hpp"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

#include "support/format.hpp"

namespace mdm::test {
namespace {

using Bytes = std::vector<uint8_t>;

constexpr size_t text_offset = 16;

void append_word(Bytes &bytes, uint32_t value)
{
    for (int i = 0; i < 4; ++i, value >>= 8) {
        bytes.push_back(static_cast<uint8_t>(value));
    }
}

void append_text(Bytes &bytes, std::string_view text)
{
    append_word(bytes, static_cast<uint32_t>(text.size()));
    bytes.insert(bytes.end(), text.begin(), text.end());
}

std::vector<std::string_view> listed_texts(Content content)
{
    switch (content) {
    case Content::full:
        return {"a", "", "bc"};
    case Content::whole:
        return {"a", "bc"};
    case Content::begins_empty:
        return {"", "a", "bc"};
    case Content::ends_empty:
        return {"a", "bc", ""};
    case Content::empty:
        return {"", "", ""};
    case Content::none:
        return {};
    }
    return {};
}

// A body in the making, with the steps of reading it.
class Body {
public:
    // `selector` is the word that selects a nested record.
    Body(const CategoryFormat &category, const Form &form, uint32_t selector = 0)
        : category_(category), form_(form), selector_(selector)
    {
    }

    // Only a full body has a package name.
    void head(uint32_t discriminator, int32_t data_size, Content content)
    {
        for (const Field &field : category_.head) {
            if (field.offset == 0) {
                word(field.path, discriminator);
            } else if (is_data_size(field)) {
                size_at_ = end();
                may_be_sent_on_ = may_be_sent_on_ && may_be_sent_with(data_size);
                word(field.path, static_cast<uint32_t>(data_size));
            } else {
                value(field, content);
            }
        }
    }

    void payload(Content content)
    {
        has_payload_ = true;
        switch (form_.payload) {
        case Payload::nothing:
            return;
        case Payload::body:
        case Payload::record:
            return fields(form_.fields, content);
        case Payload::records:
            return records(content);
        case Payload::strings:
            return strings(form_.path, content,
                           form_.is_in_param ? CountField::Of::unsigned_list
                                             : CountField::Of::list);
        case Payload::text:
            receive_null(content != Content::empty);
            return text(form_.path, content == Content::empty ? "" : "text");
        case Payload::array:
            return array();
        case Payload::raw:
            return raw(content);
        }
    }

    void zeros(size_t count) { bytes_.resize(bytes_.size() + count); }

    size_t size() const { return bytes_.size(); }
    GoodMessage message(std::string name, uint8_t type, Content content) &&
    {
        return {std::move(name), framed(type, bytes_), content,           &category_,        &form_,
                has_payload_,    may_be_sent_on_,      std::move(steps_), std::move(counts_)};
    }

private:
    size_t end() const { return header_size + bytes_.size(); }

    bool may_be_sent_with(int32_t data_size) const
    {
        const bool is_counted = form_.trusts_sign || form_.data_size == DataSize::added;
        return (data_size >= 0 || !is_counted) && (data_size <= 0 || category_.is_payload_read);
    }
    // A receiver of an empty list, text or element holds a null pointer.
    void receive_null(bool may_be_sent) { may_be_sent_on_ = may_be_sent_on_ && may_be_sent; }

    void step(const char *path, size_t needed) { steps_.push_back({path, end(), needed}); }

    void word(const char *path, uint32_t value)
    {
        step(path, 4);
        append_word(bytes_, value);
    }
    void byte(const char *path)
    {
        step(path, 1);
        bytes_.push_back(0xB1);
    }
    void text(const char *path, std::string_view text)
    {
        counts_.push_back({CountField::Of::text, path, end(), end() + 4, 1});
        word(path, static_cast<uint32_t>(text.size()));
        step(path, text.size());
        bytes_.insert(bytes_.end(), text.begin(), text.end());
    }
    void list(const char *path, uint32_t count, uint32_t smallest, CountField::Of of)
    {
        counts_.push_back({of, path, end(), end() + 4, smallest});
        word(path, count);
        step(path, size_t{count} * smallest);
    }

    // Numbers and texts of one letter, each told from the others.
    void value(const Field &field, Content content)
    {
        switch (field.type) {
        case Type::byte:
        case Type::low_byte:
            return byte(field.path);
        case Type::word:
            return word(field.path, 0xC0010000 + number_++);
        case Type::text: {
            const auto letter = static_cast<char>('a' + letter_++ % 26);
            const bool is_empty = content == Content::empty || content == Content::ends_empty;
            return text(field.path, std::string(is_empty ? 0 : 3, letter));
        }
        case Type::strings:
            return strings(field.path, content, CountField::Of::list);
        case Type::record:
            return nested(*field.nested, content);
        }
    }
    void fields(Fields fields, Content content)
    {
        for (const Field &field : fields) {
            selects(field, fields) ? word(field.path, selector_) : value(field, content);
        }
    }
    void nested(const NestedRecord &record, Content content)
    {
        for (const Alternative &one : record.alternatives) {
            if (record.selector == no_offset || one.selectors.has(selector_)) {
                fields(one.fields, content);
            }
        }
    }

    void records(Content content)
    {
        const uint32_t count = content == Content::none ? 0 : 2;
        const bool is_named = content == Content::whole || form_.elements != Elements::nameless;
        receive_null(count != 0 ? is_named : category_.sends_empty_lists);
        list(form_.path, count, smallest_size(form_.fields), CountField::Of::list);
        if (count != 0) {
            fields(form_.fields, first_of_records(content));
            fields(form_.fields, content);
        }
    }
    // Where only the last record may have an empty text, the first has texts, and no elements in a
    // list of its own.
    static Content first_of_records(Content content)
    {
        return content == Content::whole || content == Content::ends_empty ? Content::none
                                                                           : Content::empty;
    }
    void strings(const char *path, Content content, CountField::Of of)
    {
        const bool loses_empty = form_.elements == Elements::lose_empty;
        const std::vector<std::string_view> texts = listed_texts(content);
        const bool is_lost = texts.empty() || (loses_empty && content == Content::empty);
        receive_null(is_lost ? category_.sends_empty_lists
                             : loses_empty || content == Content::whole);
        list(path, static_cast<uint32_t>(texts.size()), 4, of);
        for (const std::string_view one : texts) {
            text(path, one);
        }
    }
    void array()
    {
        counts_.push_back({CountField::Of::array, form_.path, size_at_, end(), 4});
        step(form_.path, size_t{3} * 4);
        for (const char *one : {"a", "", "bc"}) {
            text(form_.path, one);
        }
    }
    void raw(Content content)
    {
        using namespace std::string_view_literals;
        receive_null(!form_.is_raw_record);
        // A sender's record would hold pointers there.
        const std::string_view full = form_.is_raw_record ? "AAAAAAAABBBBBBBBCCCCCCCC"sv : "1234"sv;
        const std::string_view bytes = content == Content::empty ? "ab\0cd"sv : full;
        if (category_.is_payload_read) {
            const auto of = category_.announced == Announced::positive
                                ? CountField::Of::size
                                : CountField::Of::signed_size;
            counts_.push_back({of, form_.path, size_at_, end(), 1});
            step(form_.path, bytes.size());
        }
        bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
    }

    const CategoryFormat &category_;
    const Form &form_;
    uint32_t selector_;
    bool has_payload_ = false;
    bool may_be_sent_on_ = true;
    Bytes bytes_;
    size_t size_at_ = 0;
    uint32_t number_ = 0;
    int letter_ = 0;
    std::vector<Step> steps_;
    std::vector<CountField> counts_;
};

class Messages {
public:
    void add(GoodMessage message)
    {
        std::ranges::replace(message.name, '_', '-');
        all_.push_back(std::move(message));
    }

    // The category's messages.
    void add(const CategoryFormat &category)
    {
        for (const Form &form : category.forms) {
            add_heads(category, form);
            add(category, form);
        }
    }

    std::vector<GoodMessage> take() { return std::move(all_); }

private:
    void add_head(const CategoryFormat &category, const Form &form, const char *suffix,
                  uint8_t type, int32_t data_size)
    {
        Body body(category, form);
        body.head(discriminators_of(category, form).front(), data_size, Content::full);
        const std::string name = std::string(category.name) + "-" + form.name + suffix;
        add(std::move(body).message(name, type, Content::none));
    }

    // Heads without a payload.
    void add_heads(const CategoryFormat &category, const Form &form)
    {
        if (category.counts_body) {
            return add_head(category, form, "-size-zero", category.first_type(), 0);
        }
        if (form.is_always_there) {
            return;
        }
        add_head(category, form, "-head", category.first_type(), 0);
        if (category.announced == Announced::positive) {
            add_head(category, form, "-negative", category.last_type(), -1);
        }
        if (!category.is_payload_read) {  // it need not be there
            add_head(category, form, "-unread", category.last_type(), 1000);
        }
    }

    // A positive `data_size` is the payload's where the form does not ask for another one.
    static int32_t data_size(const CategoryFormat &category, const Form &form, Content content,
                             int32_t payload_size)
    {
        if (category.counts_body) {
            return 16 + payload_size;
        }
        if (form.payload == Payload::array) {
            return 3;
        }
        if (form.payload == Payload::nothing) {
            return content == Content::full ? 9 : -1;
        }
        const bool is_free = form.data_size != DataSize::length &&
                             form.data_size != DataSize::two_words && content == Content::empty;
        const int32_t least = category.announced == Announced::positive ? 1 : -1;
        return is_free ? least : payload_size;
    }

    void add(const CategoryFormat &category, const Form &form, Content content,
             const std::string &suffix, uint32_t selector = 0)
    {
        Body payload(category, form, selector);
        payload.payload(content);
        const auto payload_size = static_cast<int32_t>(payload.size());

        Body body(category, form, selector);
        const bool is_first = content == Content::full;
        const auto discriminators = discriminators_of(category, form);
        body.head(is_first ? discriminators.front() : discriminators.back(),
                  data_size(category, form, content, payload_size), content);
        body.payload(content);
        const bool may_be_padded = form.is_in_param || form.data_size == DataSize::padded ||
                                   form.data_size == DataSize::added;
        body.zeros(is_first && may_be_padded ? 5 : 0);
        const std::string name = std::string(category.name) + "-" + form.name + suffix;
        const uint8_t type = is_first ? category.first_type() : category.last_type();
        add(std::move(body).message(name, type, content));
    }

    void add(const CategoryFormat &category, const Form &form)
    {
        const auto nested = std::ranges::find_if(form.fields, [](const Field &field) {
            return field.nested != nullptr && field.nested->selector != no_offset;
        });
        if (nested != form.fields.end()) {
            return add_selected(category, form, *nested->nested);
        }
        add(category, form, Content::full, "");
        if (form.payload != Payload::array) {
            add(category, form, Content::empty, "-empty");
        }
        if (form.payload == Payload::records || form.payload == Payload::strings) {
            add(category, form, Content::none, "-none");
            add(category, form, Content::whole, "-whole");
            add(category, form, Content::ends_empty, "-ends-empty");
        }
        if (form.payload == Payload::strings) {
            add(category, form, Content::begins_empty, "-begins-empty");
        }
    }

    // One for each record that may be selected, and for none.
    void add_selected(const CategoryFormat &category, const Form &form, const NestedRecord &record)
    {
        for (const uint32_t selector : {0U, 10U}) {
            add(category, form, Content::full, "-" + std::to_string(selector), selector);
        }
        for (const Alternative &one : record.alternatives) {
            for (const uint32_t selector : one.selectors) {
                const std::string suffix = "-" + std::to_string(selector);
                add(category, form, Content::full, suffix, selector);
                add(category, form, Content::empty, suffix + "-empty", selector);
            }
        }
    }

    std::vector<GoodMessage> all_;
};

}  // namespace

std::vector<uint8_t> zeroed_head(const CategoryFormat &category, uint32_t discriminator,
                                 int32_t data_size)
{
    Bytes bytes;
    for (const Field &field : category.head) {
        const auto size = is_data_size(field) ? static_cast<uint32_t>(data_size) : 0;
        append_word(bytes, field.offset == 0 ? discriminator : size);
    }
    return bytes;
}

std::vector<uint8_t> framed(uint8_t type, const std::vector<uint8_t> &body,
                            const std::string &hdr_text)
{
    Bytes bytes;
    append_word(bytes, static_cast<uint32_t>(header_size - 8 + hdr_text.size() + body.size()));
    bytes.insert(bytes.end(), {type, 0x5A, 0, 0});
    append_word(bytes, 0x11111111);
    append_word(bytes, 0x22222222);
    append_text(bytes, hdr_text);
    for (const uint32_t word : {0x33333333U, 0x66666666U, 0x77777777U, 0x44444444U, 0x55555555U}) {
        append_word(bytes, word);
    }
    bytes.insert(bytes.end(), body.begin(), body.end());
    return bytes;
}

uint32_t word_at(const std::vector<uint8_t> &bytes, size_t offset)
{
    uint32_t value = 0;
    for (size_t i = 4; i > 0; --i) {
        value = value << 8 | bytes[offset + i - 1];
    }
    return value;
}

void put_word(std::vector<uint8_t> &bytes, size_t offset, uint32_t value)
{
    for (size_t i = 0; i < 4; ++i, value >>= 8) {
        bytes[offset + i] = static_cast<uint8_t>(value);
    }
}

void correct_length(std::vector<uint8_t> &bytes)
{
    if (bytes.size() >= 4) {
        put_word(bytes, 0, static_cast<uint32_t>(bytes.size()) - 8);
    }
}

void lengthen_text(std::vector<uint8_t> &bytes, uint32_t letters)
{
    if (bytes.size() >= text_offset + 4) {
        put_word(bytes, text_offset, word_at(bytes, text_offset) + letters);
        bytes.insert(bytes.begin() + text_offset + 4, letters, 'x');
    }
}

std::vector<uint8_t> first_bytes(const std::vector<uint8_t> &bytes, size_t count)
{
    return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count)};
}

std::vector<uint8_t> cut(const std::vector<uint8_t> &bytes, size_t size)
{
    Bytes begin = first_bytes(bytes, size);
    correct_length(begin);
    return begin;
}

Opened opened(const std::vector<uint8_t> &bytes, ipc_fault_t *fault)
{
    const auto copy = std::make_unique<uint8_t[]>(bytes.size());
    std::ranges::copy(bytes, copy.get());
    return Opened(ipc_open(copy.get(), static_cast<uint32_t>(bytes.size()), fault));
}

std::vector<GoodMessage> good_messages()
{
    Messages all;
    const uint8_t type = types_without_category().front();
    all.add({.name = "none", .bytes = framed(type, {})});
    all.add({.name = "none-trailing", .bytes = framed(type, {1, 2, 3, 4})});
    all.add({.name = "none-text", .bytes = framed(type, {}, "header")});
    all.add({.name = "none-text-with-zero", .bytes = framed(type, {}, std::string("a\0b", 3))});
    for (const CategoryFormat &category : category_formats()) {
        all.add(category);
    }
    return all.take();
}

}  // namespace mdm::test
