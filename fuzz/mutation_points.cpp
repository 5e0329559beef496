// SPDX-License-Identifier: Apache-2.0
#include "mutation_points.hpp"

#include "support/format.hpp"

namespace mdm::fuzz {
namespace {

using test::CategoryFormat;
using test::DataSize;
using test::Elements;
using test::Field;
using test::Fields;
using test::Form;
using test::member_at;
using test::Payload;
using test::Type;
using test::value_at;

void add_text(MutationPoints &points, char *&text)
{
    if (text != nullptr) {
        points.texts.push_back(&text);
    }
}

template <class Pointer>
void add_list(MutationPoints &points, Pointer *&list, bool holds_texts)
{
    points.lists.push_back(
        {static_cast<GList *>(list), [&list](GList *head) { list = head; }, holds_texts});
}

void add_removal(MutationPoints &points, void *&pointer)
{
    points.removals.emplace_back([&pointer] { pointer = nullptr; });
}

void add_fields(MutationPoints &points, void *record, Fields fields)
{
    for (const Field &field : fields) {
        if (field.type == Type::text) {
            add_text(points, member_at<char *>(record, field.offset));
        } else if (field.type == Type::strings) {
            add_list(points, member_at<GList *>(record, field.offset), true);
        } else if (field.type == Type::record) {
            auto *&nested = member_at<void *>(record, field.offset);
            const test::Alternative *alternative = field.nested->alternative(record);
            if (nested != nullptr && alternative != nullptr) {
                add_fields(points, nested, alternative->fields);
                add_removal(points, nested);
            }
        }
    }
}

void add_elements(MutationPoints &points, const Form &form, void *&list)
{
    for (auto *cell = static_cast<GList *>(list); cell != nullptr; cell = cell->next) {
        if (cell->data == nullptr) {
            continue;
        }
        add_fields(points, cell->data, form.fields);
        if (form.elements == Elements::nameless) {
            const auto *name = value_at<const char *>(cell->data, form.fields.front().offset);
            points.is_incomplete = points.is_incomplete || name == nullptr;  // it is not sent
        }
    }
    add_list(points, list, false);
}

void add_array(MutationPoints &points, char **texts, int32_t count)
{
    for (int32_t i = 0; i < count; ++i) {
        add_text(points, texts[i]);
    }
}

// A payload that `data_size` bytes, texts or one record must be there for.
void add_single(MutationPoints &points, const Form &form, void *&data, int32_t data_size)
{
    points.lacks_payload = data == nullptr && data_size > 0;
    if (data == nullptr) {
        return;
    }
    add_removal(points, data);
    points.takes_data_size_for_length =
        form.payload == Payload::raw || form.payload == Payload::array;
    if (points.takes_data_size_for_length) {  // no more bytes are there
        points.largest_data_size = data_size;
    }
    points.is_raw_record = form.is_raw_record;
    if (form.payload == Payload::record) {
        add_fields(points, data, form.fields);
    } else if (form.payload == Payload::array) {
        add_array(points, static_cast<char **>(data), data_size);
    } else if (form.payload == Payload::text) {
        points.data_text = &data;
    }
}

void add_payload(MutationPoints &points, const Form &form, void *&data, int32_t data_size)
{
    switch (form.payload) {
    case Payload::nothing:
    case Payload::body:
        return;
    case Payload::strings:
        points.drops_empty_texts = form.elements == Elements::lose_empty;
        return add_list(points, data, true);
    case Payload::records:
        return add_elements(points, form, data);
    case Payload::record:
    case Payload::text:
    case Payload::array:
    case Payload::raw:
        return add_single(points, form, data, data_size);
    }
}

// Whether a payload must be there for a `data_size` that is not zero.
bool needs_payload(const CategoryFormat &category, const Form &form)
{
    return !category.is_payload_read || form.payload != Payload::nothing;
}

void add_body(MutationPoints &points, const CategoryFormat &category, mdm_body_t &body)
{
    const Form &form = form_of(category, test::discriminator_of(body));
    for (const Field &field : category.head) {  // the package name of an application head
        if (field.type == Type::text) {
            add_text(points, member_at<char *>(&body, field.offset));
        }
    }
    if (form.payload == Payload::body) {
        return add_fields(points, &body, form.fields);
    }
    points.data_size = &member_at<int32_t>(&body, category.data_size);
    if (form.is_in_param) {
        return add_list(points, body.misc.param_list, true);
    }
    auto *&data = member_at<void *>(&body, category.data);
    points.is_incomplete =
        *points.data_size != 0 && data == nullptr && needs_payload(category, form);
    if (form.data_size == DataSize::two_words) {
        points.is_incomplete = *points.data_size != 8;
    }
    if (category.is_payload_read) {
        add_payload(points, form, data, *points.data_size);
    }
}

}  // namespace

MutationPoints mutation_points_of(mdm_msg_t &msg)
{
    MutationPoints points;
    add_text(points, msg.hdr_text);
    const CategoryFormat *category = test::format_of(msg.type);
    points.has_category = category != nullptr;
    if (category != nullptr) {
        add_body(points, *category, msg.body);
    }
    return points;
}

}  // namespace mdm::fuzz
