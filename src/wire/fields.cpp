// SPDX-License-Identifier: Apache-2.0
#include "wire/fields.hpp"

#include <span>

#include "wire/lists.hpp"

namespace mdm {
namespace {

template <class Byte, class Visit>
[[gnu::always_inline]] inline void for_each_text(Byte *record, Fields list, Visit visit)
{
    using Text = std::conditional_t<std::is_const_v<Byte>, char *const, char *>;
    for (const Run run : list) {
        if (run.type != WireType::text) {
            continue;
        }
        for (auto &text : std::span(reinterpret_cast<Text *>(record + run.offset), run.count)) {
            visit(text);
        }
    }
}

}  // namespace

uint32_t size_of_fields(const void *record, Fields list)
{
    uint32_t size = list.smallest_size();
    for_each_text(static_cast<const uint8_t *>(record), list,
                  [&size](const char *text) { size += text_length(text); });
    return size;
}

uint32_t size_of_records_before_null(void *records, Fields list)
{
    uint32_t size = 0;
    for (const void *record : elements_before_null<void>(records)) {
        size += size_of_fields(record, list);
    }
    return size;
}

void release_strings(void *record, Fields list)
{
    for_each_text(static_cast<uint8_t *>(record), list, [](char *&text) { release_string(text); });
}

void release_record(void *record, Fields list)
{
    release_strings(record, list);
    g_free(record);
}

void release_records(void *records, Fields list)
{
    for (void *record : elements<void>(records)) {
        if (record != nullptr) {
            release_record(record, list);
        }
    }
    release_cells(records);
}

}  // namespace mdm
