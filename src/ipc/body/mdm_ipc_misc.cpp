// SPDX-License-Identifier: Apache-2.0
//
// The body of message types 17 and 18 (policies of no other category) is the body head and a
// payload:
//
//   type 122             data_size strings, without a count
//   type 123             none
//   type 124, 125, 126   value
//   type 127, 128        a count, then the strings of the list in `param_list`
//   type 281, 283        url, title
//   type 288, 289        first, second
//   any other            data_size raw bytes
#include <algorithm>
#include <span>

#include "ipc/body/handlers.hpp"
#include "ipc/body/payload.hpp"

namespace mdm {
namespace {

constexpr auto text_fields = MDM_FIELDS(mdm_misc_str_t, "misc.text", value);
constexpr auto book_fields = MDM_FIELDS(mdm_book_info_t, "misc.book", url, title);
constexpr auto pair_fields = MDM_FIELDS(mdm_misc_str_pair_t, "misc.pair", first, second);

// Q-MISC-4: the size of a body without its book record.
constexpr auto no_book_size = static_cast<uint32_t>(-999);

// Q-MISC-8: `data_size` is the number of strings. A negative one stands for none.
std::span<char *> texts_of(const mdm_misc_info_t &info)
{
    return {static_cast<char **>(info.data), static_cast<size_t>(std::max(info.data_size, 0))};
}

// Q-MISC-2: the list in `param_list` travels even if `data_size` is 0.
bool announces_payload(const mdm_misc_info_t &info)
{
    return info.data_size != 0 || mdm_misc_form(info.type) == MDM_FORM_MISC_STRINGS;
}

// Stores the size of a record in `data_size`, and returns it.
uint32_t store_size(mdm_misc_info_t &info, Fields list)
{
    const uint32_t size = size_of_fields(info.data, list);
    info.data_size = static_cast<int32_t>(size);
    return size;
}

}  // namespace

// An array with a negative number of strings is refused, although no string would be written.
const char *_validate_misc(const mdm_body_t &body, Names names)
{
    const mdm_misc_info_t &info = body.misc;
    switch (mdm_misc_form(info.type)) {
    case MDM_FORM_MISC_HEAD:
    case MDM_FORM_MISC_STRINGS:  // Its payload is not in `data`.
        return validate_nothing(info.data, names);
    case MDM_FORM_MISC_ARRAY:
    case MDM_FORM_MISC_DATA:
        return validate_bytes(info.data_size, info.data, names);
    case MDM_FORM_MISC_TEXT:
    case MDM_FORM_MISC_BOOK:
    case MDM_FORM_MISC_PAIR:
    default:
        break;
    }
    return validate_payload(info.data_size != 0, info.data, names);
}

// Stores the payload's size in `data_size` for a text, a book and a pair.
uint32_t _size_of_misc(Lengths & /*lengths*/, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(body != nullptr, 0);

    mdm_misc_info_t &info = body->misc;
    uint32_t size = body_head_size;
    if (!announces_payload(info)) {
        return MDM_EXIT(size);
    }
    switch (mdm_misc_form(info.type)) {
    case MDM_FORM_MISC_ARRAY:
        for (const char *text : texts_of(info)) {
            size += size_of_str(text);
        }
        break;
    case MDM_FORM_MISC_HEAD:
        break;
    case MDM_FORM_MISC_TEXT:
        size += store_size(info, text_fields);
        break;
    case MDM_FORM_MISC_STRINGS:
        // Q-MISC-3: a null element is sized with 4 bytes, but not written.
        size += word_size;
        for (const char *text : elements<char>(info.param_list)) {
            size += size_of_str(text);
        }
        break;
    case MDM_FORM_MISC_BOOK:
        MDM_FAIL_IF(info.data == nullptr, no_book_size, "p_book_info is NULL");
        size += store_size(info, book_fields);
        break;
    case MDM_FORM_MISC_PAIR:
        if (info.data != nullptr) {  // Q-MISC-5
            size += store_size(info, pair_fields);
        }
        break;
    case MDM_FORM_MISC_DATA:
    default:
        size += static_cast<uint32_t>(info.data_size);  // Q-BODY-4: a negative one, too
        break;
    }
    return MDM_EXIT(size);
}

bool _set_misc(Writer &out, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(out && body != nullptr, false);

    const mdm_misc_info_t &info = body->misc;
    out.body_head(info);  // Q-MISC-1: `param` may be the low 32 bits of the list's address.
    MDM_INFO("data: %p, data_size: %d", info.data, info.data_size);
    if (!announces_payload(info)) {
        return MDM_EXIT(true);
    }
    MDM_INFO("serializing...");
    switch (mdm_misc_form(info.type)) {
    case MDM_FORM_MISC_ARRAY:
        for (const char *text : texts_of(info)) {
            out.str(text, "misc.array");
        }
        break;
    case MDM_FORM_MISC_HEAD:
        break;
    case MDM_FORM_MISC_TEXT:
        if (info.data == nullptr) {
            return MDM_EXIT(false);  // Q-MISC-6: this failure has no line of its own.
        }
        out.fields(info.data, text_fields);
        break;
    case MDM_FORM_MISC_STRINGS:
        out.strings_with_gaps(info.param_list, 0, "misc.param_list");  // Q-MISC-3
        break;
    case MDM_FORM_MISC_BOOK:
    default: {
        MDM_ASSERT(info.data != nullptr, false);
        const auto &book = payload<mdm_book_info_t>(info);
        MDM_INFO("URL : %s, TITLE : %s", book.url, book.title);  // Q-MISC-12
        out.fields(&book, book_fields);
        break;
    }
    case MDM_FORM_MISC_PAIR:
        if (info.data != nullptr) {  // Q-MISC-5: without its pair, the head travels alone.
            out.fields(info.data, pair_fields);
        }
        break;
    case MDM_FORM_MISC_DATA:
        out.raw_bytes(info.data, info.data_size);
        break;
    }
    return MDM_EXIT(true);
}

static char **read_array(Reader &in, int32_t count)
{
    const auto texts = in.make_array(count, "misc.array");
    Reader::Elements elements(in, count);
    for (size_t i = 0; elements.next(); ++i) {
        char *text = in.str("misc.array");
        if (text != nullptr) {  // the array is zero-filled, and a reader of parts makes none
            texts[i] = text;
        }
    }
    return texts.data();
}

bool _get_misc(Reader &in, const Log &log, mdm_body_t *body)
{
    MDM_ENTER_ASSERT(in && body != nullptr, false);

    mdm_misc_info_t &info = body->misc;
    in.body_head(info);
    MDM_INFO("data: %p, data_size: %d", info.data, info.data_size);
    if (!announces_payload(info)) {
        info.data = nullptr;
        return MDM_EXIT(true);
    }
    switch (mdm_misc_form(info.type)) {
    case MDM_FORM_MISC_ARRAY:
        info.data = read_array(in, info.data_size);
        break;
    case MDM_FORM_MISC_HEAD:
        break;  // Q-MISC-9: `data` stays as it was.
    case MDM_FORM_MISC_TEXT:
    default: {
        // Q-MISC-11: without memory, reading a text fails and reading a pair does not.
        auto *text = in.try_record(text_fields);
        if (text == nullptr) {
            return MDM_EXIT(false);
        }
        info.data = text;
        break;
    }
    case MDM_FORM_MISC_STRINGS:
        // Q-MISC-1: the number in `param` is discarded. `data` stays as it was.
        // Q-MISC-7: the count has no sign.
        info.param_list =
            in.strings(in.unsigned_count("misc.param_list", word_size), "misc.param_list");
        break;
    case MDM_FORM_MISC_BOOK:
        info.data = in.record(book_fields);
        break;
    case MDM_FORM_MISC_PAIR: {
        if (auto *pair = in.try_record(pair_fields)) {
            info.data = pair;
        }
        break;
    }
    case MDM_FORM_MISC_DATA:
        info.data = in.raw_bytes(info.data_size);
        break;
    }
    return MDM_EXIT(true);
}

// Q-MISC-10: if `data` is null, nothing is released, not even the list in `param_list`.
void _free_misc(const Log &log, mdm_body_t *body)
{
    MDM_ENTER();
    if (body == nullptr || body->misc.data == nullptr) {
        return MDM_EXIT();
    }
    mdm_misc_info_t &info = body->misc;
    switch (mdm_misc_form(info.type)) {
    case MDM_FORM_MISC_ARRAY:
        for (char *text : texts_of(info)) {
            g_free(text);
        }
        g_free(info.data);  // Q-BODY-7: `data` keeps its value.
        break;
    case MDM_FORM_MISC_HEAD:
        break;
    case MDM_FORM_MISC_TEXT:
        release_record(info.data, text_fields);
        info.data = nullptr;
        break;
    case MDM_FORM_MISC_STRINGS:
        release_elements(info.param_list);  // Q-BODY-7: `param_list` keeps its value.
        break;
    case MDM_FORM_MISC_BOOK:
        release_record(info.data, book_fields);
        info.data = nullptr;
        break;
    case MDM_FORM_MISC_PAIR:
        release_record(info.data, pair_fields);  // Q-BODY-7: `data` keeps its value.
        break;
    case MDM_FORM_MISC_DATA:
    default:
        release_data(info.data);
        break;
    }
    return MDM_EXIT();
}

}  // namespace mdm
