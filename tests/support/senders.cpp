// SPDX-License-Identifier: Apache-2.0
#include "support/senders.hpp"

#include <algorithm>
#include <functional>

#include <rapidcheck.h>

namespace mdm::test {

bool any_bool()
{
    return *rc::gen::arbitrary<bool>();
}

uint32_t any_word()
{
    return *rc::gen::arbitrary<uint32_t>();
}

namespace {

// Draws.

int32_t any_nonzero()
{
    return *rc::gen::nonZero<int32_t>();
}

int32_t any_positive()
{
    return *rc::gen::inRange<int32_t>(1, INT32_MAX);
}

// For lengths, and for payloads with as many bytes of padding.
int32_t any_small()
{
    return *rc::gen::inRange<int32_t>(1, 64);
}

size_t any_count()
{
    return *rc::gen::inRange<size_t>(0, 7);
}

// Text of whatever encoding: any bytes but a zero one.
std::string any_text()
{
    return *rc::gen::container<std::string>(rc::gen::nonZero<char>());
}

std::string any_bytes(int32_t count)
{
    return *rc::gen::container<std::string>(static_cast<size_t>(count), rc::gen::arbitrary<char>());
}

template <class Container>
auto any_of(const Container &values)
{
    return values.begin()[*rc::gen::inRange<std::ptrdiff_t>(0, values.end() - values.begin())];
}

const Form &any_form(const CategoryFormat &category)
{
    return category.forms[*rc::gen::inRange<size_t>(0, category.forms.size())];
}

// Bytes, without the library.

void put(Bytes &bytes, const Bytes &more)
{
    bytes.insert(bytes.end(), more.begin(), more.end());
}

// The two bodies under construction, as the sender sends it and as a receiver sends it on.
struct Bodies {
    Bytes first;
    Bytes again;

    void word(uint32_t value) { words(value, value); }
    void words(uint32_t first_value, uint32_t again_value)
    {
        put(first, mdm::test::word(first_value));
        put(again, mdm::test::word(again_value));
    }
    void byte(uint8_t value)
    {
        first.push_back(value);
        again.push_back(value);
    }
    void text(const std::string &text)
    {
        put(first, str(text));
        put(again, str(text));
    }
    void zeros(size_t first_count, size_t again_count)
    {
        first.resize(first.size() + first_count);
        again.resize(again.size() + again_count);
    }
    void zeros(size_t count) { zeros(count, count); }
};

class Sender {
public:
    explicit Sender(const CategoryFormat &category)
        : category_(category), form_(any_form(category)),
          type_(any_of(discriminators_of(category, form_)))
    {
    }

    SentMessage draw()
    {
        member<uint32_t>(body(), 0) = type_;
        // A quarter of the bodies are heads without a payload. A receiver takes the records of some
        // forms for raw bytes: no sender may pass them.
        const bool has_payload = form_.is_always_there || category_.data == no_offset ||
                                 (!form_.is_raw_record && *rc::gen::inRange(0, 4) != 0);
        has_payload ? draw_payload() : draw_head_alone();
        sent_.first = std::move(head_.first);
        sent_.again = std::move(head_.again);
        put(sent_.first, payload_.first);
        put(sent_.again, payload_.again);
        return std::move(sent_);
    }

    void *body() { return &sent_.msg.body; }
    template <class Value>
    static Value &member(void *record, size_t offset)
    {
        return member_at<Value>(record, offset);
    }
    int32_t &data_size() { return member<int32_t>(body(), category_.data_size); }
    void set_data(void *data)
    {
        if (form_.is_in_param) {
            sent_.msg.body.misc.param_list = static_cast<GList *>(data);
        } else {
            member<void *>(body(), category_.data) = data;
        }
    }

    // The head, with the `data_size` that travels first and again.
    void write_head(int32_t first_size, int32_t again_size)
    {
        for (const Field &field : category_.head) {
            if (field.offset == 0) {
                head_.word(type_);
            } else if (is_data_size(field)) {
                head_.words(static_cast<uint32_t>(first_size), static_cast<uint32_t>(again_size));
            } else if (form_.is_in_param) {
                head_.word(0);  // the low half of the list's address
            } else {
                draw_value(head_, body(), field);
            }
        }
    }
    void write_head(int32_t size) { write_head(size, size); }

    void draw_head_alone()
    {
        const bool has_pkg = std::ranges::any_of(
            category_.head, [](const Field &field) { return field.type == Type::text; });
        data_size() = has_pkg ? *rc::gen::inRange<int32_t>(-2, 1) : 0;
        payload_.zeros(form_.empty_list_padding);
        write_head(data_size());
    }

    void draw_payload()
    {
        if (form_.may_be_absent && any_bool()) {
            data_size() = any_nonzero();
            return write_head(0);
        }
        void *data = draw_data();
        if (category_.data != no_offset) {
            set_data(data);
        }
        sent_.is_all_released = !leaks(data != nullptr);
        sent_.is_received = category_.is_payload_read;
        sent_.may_be_sent_on = sent_.may_be_sent_on && sent_.is_received;
        draw_data_size();
        sent_.sends_pointer_as_param = form_.is_in_param;
    }

    bool leaks(bool has_data) const
    {
        return form_.leak == Leak::always ||
               form_.leak == (has_data ? Leak::with_data : Leak::without_data);
    }

    void draw_data_size()
    {
        if (category_.counts_body) {
            member<uint32_t>(body(), offset_of_data_size()) = any_word();
            return write_head(static_cast<int32_t>(16 + payload_.first.size()));
        }
        if (category_.data == no_offset) {
            return write_head(0);
        }
        const auto first_size = static_cast<int32_t>(payload_.first.size());
        const auto again_size = static_cast<int32_t>(payload_.again.size());
        int32_t &size = data_size();
        switch (form_.data_size) {
        case DataSize::as_given:
            size = any_positive();
            return write_head(size);
        case DataSize::anything:
            size = form_.is_always_there ? static_cast<int32_t>(any_word()) : any_nonzero();
            return write_head(size);
        case DataSize::length:
            size = length_;
            return write_head(size);
        case DataSize::two_words:
            size = 8;
            return write_head(size);
        case DataSize::stored:
            size = any_nonzero();
            return write_head(first_size + form_.extra, again_size + form_.extra);
        case DataSize::added:
            size = any_small();
            payload_.zeros(static_cast<size_t>(size),
                           static_cast<size_t>(size) + payload_.first.size());
            return write_head(size + first_size, size + 2 * first_size);
        case DataSize::padded:
            size = any_small();
            payload_.zeros(static_cast<size_t>(size));
            return write_head(size);
        case DataSize::stored_twelve:
            size = any_positive();
            return write_head(size, 12);
        }
    }
    size_t offset_of_data_size() const
    {
        return std::ranges::find_if(category_.head, is_data_size)->offset;
    }

    void *draw_data()
    {
        switch (form_.payload) {
        case Payload::nothing:
            // ipc_serialize() does not look at data that has no form to travel in.
            sent_.is_whole = any_bool();
            return sent_.is_whole ? nullptr : sent_.keep("anything");
        case Payload::body:
            draw_fields(payload_, body(), form_.fields);
            return nullptr;
        case Payload::record:
            return draw_record(form_.size, form_.fields);
        case Payload::records:
            return draw_elements([this] { return draw_record(form_.size, form_.fields); });
        case Payload::strings:
            return draw_elements([this] { return draw_string(); });
        case Payload::text: {  // an empty one arrives as null, and announces a text
            const std::string text = any_text();
            sent_.may_be_sent_on = !text.empty();
            return draw_text(text);
        }
        case Payload::array:
            return draw_array();
        case Payload::raw:
            return draw_raw();
        }
        return nullptr;
    }

    // Records.

    char *draw_text(const std::string &text)
    {
        payload_.text(text);
        return sent_.keep(text);
    }
    // Null and empty strings are the same on the wire.
    char *draw_text(Bodies &out)
    {
        const std::string text = any_bool() ? "" : any_text();
        out.text(text);
        return text.empty() && any_bool() ? nullptr : sent_.keep(text);
    }

    void draw_value(Bodies &out, void *record, const Field &field)
    {
        switch (field.type) {
        case Type::byte:
            return out.byte(member<uint8_t>(record, field.offset) =
                                static_cast<uint8_t>(any_word()));
        case Type::word:
            return out.word(member<uint32_t>(record, field.offset) = any_word());
        case Type::low_byte:
            member<uintptr_t>(record, field.offset) = GSIZE_TO_LE(uintptr_t{any_word()});
            return out.byte(member<uint8_t>(record, field.offset));
        case Type::text:
            member<char *>(record, field.offset) = draw_text(out);
            break;
        case Type::strings:
            member<GList *>(record, field.offset) =
                draw_list(any_count(), [this] { return draw_string(); });
            break;
        case Type::record:
            member<void *>(record, field.offset) = draw_nested(record, *field.nested);
            break;
        }
        if (&out == &payload_) {
            note(record, field);
        }
    }
    void draw_fields(Bodies &out, void *record, Fields fields)
    {
        for (const Field &field : fields) {
            if (selects(field, fields)) {
                const auto selector = static_cast<uint32_t>(*rc::gen::inRange<int32_t>(-1, 12));
                out.word(member<uint32_t>(record, field.offset) = selector);
            } else {
                draw_value(out, record, field);
            }
        }
    }

    void *draw_nested(const void *outer, const NestedRecord &nested)
    {
        const Alternative *alternative = nested.alternative(outer);
        return alternative == nullptr ? nullptr : draw_record(nested.size, alternative->fields);
    }
    void *draw_record(size_t size, Fields fields)
    {
        void *record = make(size);
        draw_fields(payload_, record, fields);
        return record;
    }
    void *make(size_t size)
    {
        sent_.kept.emplace_back(g_malloc0(size), g_free);
        return sent_.kept.back().get();
    }
    // A member of the payload that is a pointer.
    void note(void *record, const Field &field)
    {
        if (record != body()) {
            sent_.pointers.push_back(&member<void *>(record, field.offset));
        }
    }

    // Lists.

    // A count and the elements that stand in its place.
    GList *draw_list(size_t count, const std::function<void *()> &draw_element)
    {
        payload_.word(static_cast<uint32_t>(count));
        GList *list = nullptr;
        for (size_t i = 0; i < count; ++i) {
            list = g_list_append(list, draw_element());
        }
        for (GList *cell = list; cell != nullptr; cell = cell->next) {
            sent_.pointers.push_back(&cell->data);
        }
        sent_.lists.push_back(list);
        sent_.kept.emplace_back(list,
                                [](void *cells) { g_list_free(static_cast<GList *>(cells)); });
        return list;
    }
    GList *draw_elements(const std::function<void *()> &draw_element)
    {
        const size_t count = any_count() + (category_.sends_empty_lists ? 0 : 1);
        switch (form_.elements) {
        case Elements::ordinary:
            return draw_list(count, draw_element);
        case Elements::lose_empty:
            return draw_list_that_loses_empty(count);
        case Elements::null_gaps:
            return draw_list_with_gaps(count, draw_element, [] { return nullptr; });
        case Elements::nameless:
            return draw_list_with_gaps(count, draw_element, [this] { return draw_nameless(); });
        }
        return nullptr;
    }

    // An empty one arrives as a null element, which may not be sent on.
    char *draw_string()
    {
        const std::string text = any_text();
        sent_.may_be_sent_on = sent_.may_be_sent_on && !text.empty();
        return draw_text(text);
    }

    // The receiver's list has only the strings that are not empty.
    GList *draw_list_that_loses_empty(size_t count)
    {
        Bytes strings_received;
        uint32_t count_received = 0;
        GList *list = draw_list(count, [&] {
            const std::string text = any_text();
            if (!text.empty()) {
                put(strings_received, str(text));
                ++count_received;
            }
            return draw_text(text);
        });
        payload_.again = word(count_received) + strings_received;
        sent_.may_be_sent_on = count_received != 0;
        return list;
    }

    // An element that is not sent leaves a gap at the list's end, which arrives as zeros. Of texts,
    // an empty one is sent, and sent on as an element that is not.
    GList *draw_list_with_gaps(size_t count, const std::function<void *()> &draw_element,
                               const std::function<void *()> &draw_unsent)
    {
        size_t unsent = 0;
        size_t lost = 0;
        GList *list = draw_list(count, [&]() -> void * {
            if (any_bool()) {
                ++unsent;
                return draw_unsent();
            }
            const size_t before = payload_.again.size();
            void *element = form_.elements == Elements::nameless ? draw_named() : draw_element();
            if (begins_with_empty_text(before)) {
                ++lost;
                payload_.again.resize(before);
            }
            return element;
        });
        sent_.may_be_sent_on = true;
        payload_.zeros(form_.gap * unsent, form_.gap * (unsent + lost));
        sent_.is_whole = unsent == 0;
        sent_.is_whole_again = lost == 0;
        return list;
    }
    bool begins_with_empty_text(size_t offset) const
    {
        const bool is_text =
            form_.payload == Payload::strings || form_.fields.front().type == Type::text;
        return is_text &&
               std::all_of(payload_.again.begin() + static_cast<std::ptrdiff_t>(offset),
                           payload_.again.begin() + static_cast<std::ptrdiff_t>(offset) + 4,
                           [](uint8_t byte) { return byte == 0; });
    }
    void *draw_named()
    {
        void *record = draw_record(form_.size, form_.fields);
        auto *&name = member<char *>(record, form_.fields.front().offset);
        name = name == nullptr ? sent_.keep("") : name;
        return record;
    }
    void *draw_nameless()
    {
        void *record = make(form_.size);
        member<uint32_t>(record, form_.fields.back().offset) = any_word();
        return record;
    }

    // Others.

    void *draw_array()
    {
        length_ = any_small();
        auto **texts = static_cast<char **>(make(static_cast<size_t>(length_) * sizeof(char *)));
        for (int32_t i = 0; i < length_; ++i) {
            texts[i] = draw_text(payload_);
            sent_.pointers.push_back(&texts[i]);
        }
        return static_cast<void *>(texts);
    }

    // Raw bytes arrive as a string: behind their first zero byte nothing is left of them.
    char *draw_raw()
    {
        length_ = any_small();
        std::string bytes = any_bytes(length_);
        put(payload_.first, {bytes.begin(), bytes.end()});
        char *data = sent_.keep(bytes);
        std::fill(std::ranges::find(bytes, '\0'), bytes.end(), '\0');
        put(payload_.again, {bytes.begin(), bytes.end()});
        return data;
    }

    const CategoryFormat &category_;
    const Form &form_;
    uint32_t type_;
    SentMessage sent_;
    Bodies head_;
    Bodies payload_;
    int32_t length_ = 0;
};

}  // namespace

char *SentMessage::keep(const std::string &text)
{
    const auto copy = std::make_shared<std::string>(text);
    kept.push_back(copy);
    return copy->data();
}

SentMessage any_message(const CategoryFormat &category)
{
    SentMessage sent = Sender(category).draw();
    mdm_msg_t &msg = sent.msg;
    msg.type = static_cast<uint8_t>(any_of(category.types));
    msg.hdr_byte = static_cast<uint8_t>(any_word());
    msg.hdr_text = any_bool() ? sent.keep(any_text()) : nullptr;
    for (uint32_t *word : {&msg.hdr_word1, &msg.hdr_word2, &msg.hdr_word3, &msg.hdr_word4,
                           &msg.hdr_word5, &msg.hdr_word6, &msg.hdr_word7}) {
        *word = any_word();
    }
    return sent;
}

Bytes message_bytes(const mdm_msg_t &msg, const Bytes &body)
{
    Bytes bytes = {msg.type, msg.hdr_byte, 0, 0};
    put(bytes, word(msg.hdr_word1) + word(msg.hdr_word2) + str(msg.hdr_text));
    for (const uint32_t value :
         {msg.hdr_word3, msg.hdr_word6, msg.hdr_word7, msg.hdr_word4, msg.hdr_word5}) {
        put(bytes, word(value));
    }
    put(bytes, body);
    return word(static_cast<uint32_t>(bytes.size() - 4)) + bytes;
}

Bytes without_param(Bytes bytes, size_t body_size)
{
    std::fill_n(bytes.end() - static_cast<std::ptrdiff_t>(body_size) + 4, 4, uint8_t{0});
    return bytes;
}

}  // namespace mdm::test
