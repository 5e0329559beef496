// SPDX-License-Identifier: Apache-2.0
//
// Most bytes of a message are fields of records and heads, and lists of strings. The fast path
// needs one comparison for everything of a fixed size in a record or a head, and one for each
// string. If not everything fits, the slow path looks at the fields one by one, to find the first
// that does not.
#include "wire/cursor.hpp"

#include <cstring>

#include "wire/fault.hpp"

namespace mdm {
namespace {

constexpr auto head_fields = MDM_FIELDS(mdm_msg_t, "header", hdr_word1, hdr_word2, hdr_text,
                                        hdr_word3, hdr_word6, hdr_word7, hdr_word4, hdr_word5);
static_assert(smallest_size(head_fields) == smallest_head_size);

// A negative count needs more bytes than there can be.
constexpr uint64_t bytes_needed(int32_t count, uint32_t element_size)
{
    return count < 0 ? UINT64_MAX : uint64_t{element_size} * static_cast<uint32_t>(count);
}

// Copies words between a record and the wire, in either direction. A run has few words, so a call
// of memcpy() would cost more.
inline void copy_words(uint8_t *to, const uint8_t *from, size_t count)
{
    for (; count > 0; --count, to += word_size, from += word_size) {
        uint32_t word = 0;
        std::memcpy(&word, from, word_size);
        store_u32(to, word);  // the same byte order conversion in both directions
    }
}

const char *text_in(const uint8_t *member)
{
    return *reinterpret_cast<char *const *>(member);
}

// Calls visit(type, member, path) for each field in turn, until it returns false.
template <class Byte, class Visit>
void for_each_field(Byte *record, Fields list, Visit visit)
{
    const char *path = list.paths();
    for (const Run run : list) {
        Byte *member = record + run.offset;
        for (uint8_t i = 0; i < run.count; ++i) {
            if (!visit(run.type, member, path)) {
                return;
            }
            member += size_of(run.type);
            path += std::strlen(path) + 1;
        }
    }
}

}  // namespace

// Both cursors.

bool Cursor::fail(uint64_t needed, const char *path)
{
    if (!is_guarded()) {
        return false;  // GCOVR_EXCL_LINE: a negative size, which crashes next, or 32-bit addresses
    }
    end_with({offset(), saturated(needed), static_cast<uint32_t>(remaining_), path});
    return true;
}

void Cursor::fail_without_memory(size_t size)
{
    end_with(fault_without_memory(offset(), size));
}

void Cursor::end_with(const ipc_fault_t &fault)
{
    if (has_failed_) {
        return;  // the first fault counts
    }
    *fault_ = fault;
    has_failed_ = true;
    remaining_ = 0;
}

// Writing.

void Writer::fail_in_message_head(const mdm_msg_t &msg)
{
    fail_in_fields(reinterpret_cast<const uint8_t *>(&msg), head_fields);
}

void Writer::fail_in_body_head()
{
    for (const char *path : {names().type(), names().param(), names().data_size()}) {
        if (!reserve(word_size, path)) {
            return;
        }
    }
}

// `aux` stands between `type` and `param` in memory and is not sent. Q-HEAD-1
void Writer::write_body_head(uint32_t type, uint32_t param, uint32_t data_size)
{
    if (remaining() < body_head_size) [[unlikely]] {
        return fail_in_body_head();
    }
    uint8_t *position = advance(body_head_size);
    position = store_u32(position, type);
    position = store_u32(position, param);
    store_u32(position, data_size);
}

void Writer::u32(uint32_t value, const char *path)
{
    if (require(word_size, path)) {
        store_u32(advance(word_size), value);
    }
}

void Writer::str(const char *text, const char *path)
{
    const size_t size = text_size(text);
    if (fits(word_size, size)) {
        const auto length = static_cast<uint32_t>(size);
        write_str(advance(word_size + size_t{length}), text, length);
    } else if (reserve(word_size, path)) {
        reserve(size, path);
    }
}

void Writer::fields(const void *record, Fields list)
{
    const auto *bytes = static_cast<const uint8_t *>(record);
    if (!write_fields(bytes, list)) [[unlikely]] {
        fail_in_fields(bytes, list);
    }
}

// The fast path. False if not all fields fit; the cursor has not moved then. The position is a
// local variable so that it stays in a register: for the compiler, copying a text may change any
// member. `text_budget` is the number of bytes that the texts may still use.
[[gnu::always_inline]] inline bool Writer::write_fields(const uint8_t *record, Fields list)
{
    if (!fits(list.smallest_size(), 0)) {
        return false;
    }
    size_t text_budget = remaining_after(list.smallest_size());
    // The budget of a trusting cursor does not shrink.
    const size_t budget_mask = is_guarded() ? SIZE_MAX : 0;
    uint8_t *position = position_;
    for (const Run run : list) {
        const uint8_t *member = record + run.offset;
        switch (run.type) {
        case WireType::word:
        case WireType::signed_word:
            copy_words(position, member, run.count);
            position += size_t{run.count} * word_size;
            break;
        case WireType::text:
            for (const char *text : std::span(reinterpret_cast<char *const *>(member), run.count)) {
                const size_t size = text_size(text);
                if (size > text_budget) {
                    return false;
                }
                text_budget -= size & budget_mask;
                position = write_str(position, text, static_cast<uint32_t>(size));
            }
            break;
        case WireType::byte:
        case WireType::none:
            std::memcpy(position, member, run.count);
            position += run.count;
            break;
        }
    }
    position_ = position;
    set_remaining(text_budget);
    return true;
}

// The slow path.
void Writer::fail_in_fields(const uint8_t *record, Fields list)
{
    for_each_field(record, list, [this](WireType type, const uint8_t *member, const char *path) {
        return reserve(smallest_size(type), path) &&
               (type != WireType::text || reserve(text_size(text_in(member)), path));
    });
}

void Writer::raw_bytes(const void *data, int32_t data_size)
{
    const uint64_t needed = bytes_needed(data_size, 1);
    if (needed > remaining() && fail(needed, names().data())) [[unlikely]] {
        return;
    }
    const auto size = static_cast<size_t>(data_size);
    if (size != 0) {
        std::memcpy(advance(size), data, size);
    }
}

uint32_t Writer::count(void *list, const char *path)
{
    uint32_t count = lengths_ != nullptr && lengths_->has_all(list) ? lengths_->count() : 0;
    if (count == 0) {
        const auto *cell = static_cast<GList *>(list);   // Q-WIRE-4
        if (cell != nullptr && cell->prev != nullptr) {  // Q-GUARDED-7
            refuse(path);
        }
        for (; cell != nullptr; cell = cell->next, ++count) {
            if (cell->data == nullptr) {
                refuse(path);
            }
        }
    }
    u32(count, path);
    return count;
}

void Writer::records(void *records, const char *path, Fields list)
{
    count(records, path);
    for (const void *record : elements<void>(records)) {
        if (record != nullptr) {
            fields(record, list);
        }
    }
}

// The position is a local variable, as in write_fields().
void Writer::strings_before_null(void *strings, const char *path, EachLine each)
{
    ListLog lines(log(), each);
    const uint32_t *length = lengths_ != nullptr ? lengths_->of(strings) : nullptr;
    size_t remaining = this->remaining();
    uint8_t *position = position_;
    for (const char *text : elements_before_null<char>(strings)) {
        lines.info(text);
        const size_t size = length != nullptr ? *length++ : text_size(text);
        if (is_guarded()) {
            if (remaining < word_size || size > remaining - word_size) [[unlikely]] {
                set_remaining(remaining);
                return str(text, path);  // fails, and finds out where
            }
            remaining -= word_size + size;
        }
        position = write_str(position, text, static_cast<uint32_t>(size));
    }
    position_ = position;
    set_remaining(remaining);
}

void Writer::strings_with_gaps(void *strings, int32_t gap_size, const char *path)
{
    count(strings, path);
    if (lengths_ != nullptr && lengths_->has_all(strings)) {
        return strings_before_null(strings, path);
    }
    for (const char *text : elements<char>(strings)) {
        if (text != nullptr) {
            str(text, path);
        } else {
            gap(gap_size, path);
        }
    }
}

void Writer::gap(int32_t count, const char *path)
{
    refuse(path);
    if (*this) {
        const auto size = static_cast<uint32_t>(count);
        clear(size);
        advance(size);
    }
}

// Clears no byte behind the message. A position that is behind the message stays there, even if it
// wraps around the end of the address space, so `end_` becomes null. Q-WIRE-7
void Writer::clear(size_t count)
{
    if (position_ >= end_) {
        return;
    }
    const auto available = static_cast<size_t>(end_ - position_);
    std::memset(position_, 0, std::min(count, available));
    if (count >= available) {
        end_ = nullptr;
    }
}

// Reading.

// Asks for a part. The step that has asked reads a number next; a text and raw bytes are done with.
bool Reader::ask(uint64_t size, const char *path, Need need)
{
    if (parts_ == nullptr) {
        return !fail(size, path);
    }
    if (!*this) {
        return false;
    }
    if (size > parts_->left() || !take_part(static_cast<uint32_t>(size), path, need)) {
        fail_at_part(size, path);
        return false;
    }
    if (need == Need::text || need == Need::bytes) {
        return false;
    }
    set_remaining(need == Need::elements ? 0 : static_cast<size_t>(size));
    return true;
}

bool Reader::take_part(uint32_t size, const char *path, Need need)
{
    if (need == Need::elements) {
        return true;
    }
    if (need == Need::text) {
        return parts_->take_text(size);
    }
    ipc_part_t part = {
        path,   static_cast<ipc_part_kind_t>(need), positions_[0], positions_[1], 0, 0, 0, 0,
        nullptr};
    position_ = parts_->take(part, size);
    return position_ != nullptr;
}

void Reader::fail_at_part(uint64_t size, const char *path)
{
    set_remaining(parts_->left());
    if (parts_->missing_memory() != 0) {
        fail_without_memory(parts_->missing_memory());
    } else {
        fail(size, path);
    }
}

void Reader::message_head_by_fields(mdm_msg_t &msg)
{
    fields_one_by_one(reinterpret_cast<uint8_t *>(&msg), head_fields);
}

void Reader::read_body_head(uint32_t &type, Need type_need, uint32_t &param, int32_t &data_size)
{
    if (remaining() < body_head_size) [[unlikely]] {
        return body_head_by_words(type, type_need, param, data_size);
    }
    const uint8_t *position = advance(body_head_size);
    type = load_u32(position);
    param = load_u32(position + word_size);
    data_size = static_cast<int32_t>(load_u32(position + size_t{2} * word_size));
}

void Reader::body_head_by_words(uint32_t &type, Need type_need, uint32_t &param, int32_t &data_size)
{
    type = word(names().type(), type_need);
    param = u32(names().param());
    data_size = i32(names().data_size());
}

uint8_t Reader::u8(const char *path)
{
    return require(1, path, Need::u8) ? *advance(1) : 0;
}

uint32_t Reader::word(const char *path, Need need)
{
    return require(word_size, path, need) ? load_u32(advance(word_size)) : 0;
}

void Reader::reserved(uint32_t size, const char *path)
{
    if (require(size, path, Need::reserved)) {
        advance(size);
    }
}

int32_t Reader::count(const char *path, uint32_t smallest)
{
    const auto count = static_cast<int32_t>(word(path, Need::count));
    return count < 1 || require(bytes_needed(count, smallest), path, Need::elements) ? count : 0;
}

uint32_t Reader::unsigned_count(const char *path, uint32_t smallest)
{
    const uint32_t count = word(path, Need::count);
    return require(uint64_t{smallest} * count, path, Need::elements) ? count : 0;
}

char *Reader::str(const char *path)
{
    const uint32_t length = word(path, Need::str);
    return length != 0 && require(length, path, Need::text) ? new_text(advance(length), length)
                                                            : nullptr;
}

void Reader::skip_str(const char *path)
{
    const uint32_t length = word(path, Need::str);
    if (require(length, path, Need::text)) {
        advance(length);
    }
}

char *Reader::raw_bytes(int32_t data_size)
{
    const uint64_t needed = bytes_needed(data_size, 1);
    if (needed > remaining() && !ask(needed, names().data(), Need::bytes)) [[unlikely]] {
        return nullptr;
    }
    const auto size = static_cast<size_t>(data_size);
    return new_text(advance(size), size);
}

void Reader::fields(void *record, Fields list)
{
    auto *bytes = static_cast<uint8_t *>(record);
    if (!read_fields(bytes, list)) [[unlikely]] {
        fields_one_by_one(bytes, list);
    }
}

// Reads strings, and returns the position after them. A bounded call takes their bytes from the
// budget, and returns null if that has too few; an unbounded one does not compare.
template <bool is_bounded, class NewText>
static const uint8_t *copy_texts(const uint8_t *position, char **texts, size_t count,
                                 size_t &budget, NewText new_text)
{
    size_t remaining = budget;
    for (char **end = texts + count; texts != end; ++texts) {
        const size_t length = load_u32(position);
        position += word_size;
        if (length == 0) {
            *texts = nullptr;
            continue;
        }
        if constexpr (is_bounded) {
            if (length > remaining) [[unlikely]] {
                return nullptr;
            }
            remaining -= length;
        }
        *texts = copy_text(new_text(length + 1), position, length);
        position += length;
    }
    budget = remaining;
    return position;
}

inline const uint8_t *Reader::read_texts(const uint8_t *position, char **texts, size_t count,
                                         size_t &budget)
{
    if (!is_guarded()) {
        return copy_texts<false>(position, texts, count, budget,
                                 [](size_t size) { return static_cast<char *>(g_malloc(size)); });
    }
    char *next = arena_->next_text();
    position = copy_texts<true>(position, texts, count, budget, [&next](size_t size) {
        char *text = next;
        next += size;
        return text;
    });
    arena_->set_next_text(next);
    return position;
}

// The fast path, as in Writer::write_fields().
[[gnu::always_inline]] inline bool Reader::read_fields(uint8_t *record, Fields list)
{
    if (!fits(list.smallest_size(), 0)) {
        return false;
    }
    size_t text_budget = remaining_after(list.smallest_size());
    const uint8_t *position = position_;
    for (const Run run : list) {
        uint8_t *member = record + run.offset;
        switch (run.type) {
        case WireType::word:
        case WireType::signed_word:
            copy_words(member, position, run.count);
            position += size_t{run.count} * word_size;
            break;
        case WireType::text:
            position =
                read_texts(position, reinterpret_cast<char **>(member), run.count, text_budget);
            if (position == nullptr) {
                return false;
            }
            break;
        case WireType::byte:
        case WireType::none:
            std::memcpy(member, position, run.count);
            position += run.count;
            break;
        }
    }
    position_ = position;
    set_remaining(text_budget);
    return true;
}

// The slow path. Texts are skipped: they do not matter to a reader that fails, and a reader of
// parts makes none. A field that is not there is zero, because the category may look at it.
void Reader::fields_one_by_one(uint8_t *record, Fields list)
{
    for (const Run run : list) {
        std::memset(record + run.offset, 0, run.count * size_of(run.type));
    }
    for_each_field(record, list, [this](WireType type, uint8_t *member, const char *path) {
        if (type == WireType::text) {
            skip_str(path);
        } else if (type == WireType::byte) {
            *member = u8(path);
        } else {
            const uint32_t value = word(path, static_cast<Need>(type));
            std::memcpy(member, &value, word_size);
        }
        return static_cast<bool>(*this);
    });
}

void *Reader::record(Fields list)
{
    void *record = list.is_whole() ? allocate(list.record_size()) : make(list.record_size());
    fields(record, list);
    return record;
}

GList *Reader::records(const char *path, Fields list)
{
    List records(*this, count(path, list.smallest_size()));
    while (records.next()) {
        records.append(record(list));
    }
    return records.head();
}

[[gnu::flatten]] GList *Reader::strings(int64_t count, const char *path, EachLine each)
{
    ListLog lines(log(), each);
    List strings(*this, count);
    while (strings.next()) {
        char *text = str(path);
        lines.info(text);
        strings.append(text);
    }
    return strings.head();
}

char *Reader::new_text(const uint8_t *bytes, size_t length)
{
    if (!is_guarded()) {
        return copy_text(static_cast<char *>(g_malloc(length + 1)), bytes, length);
    }
    char *text = copy_text(arena_->next_text(), bytes, length);
    arena_->set_next_text(text + length + 1);
    return text;
}

std::span<char *> Reader::make_array(int32_t count, const char *path)
{
    if (!is_guarded()) {
        const auto size = static_cast<size_t>(std::max(count, 0));
        return {g_new0(char *, size), size};
    }
    if (!require(bytes_needed(count, word_size), path, Need::elements) || parts_ != nullptr) {
        return {};
    }
    const auto size = static_cast<uint32_t>(count);
    void *array = allocate_in_arena(size * sizeof(char *));
    if (array == nullptr) {
        return {};
    }
    return {static_cast<char **>(std::memset(array, 0, size * sizeof(char *))), size};
}

Reader::Elements::Elements(Reader &in, int64_t count)
    : in_(in), position_(in.positions_[in.depth_++]),
      count_(count < 1 ? 0 : static_cast<uint32_t>(count))
{
}

Reader::Elements::~Elements()
{
    position_ = -1;
    --in_.depth_;
}

void Reader::List::append(void *element)
{
    auto *cell =
        static_cast<GList *>(in_.is_guarded() ? in_.allocate(sizeof(GList)) : g_list_alloc());
    *cell = {element, nullptr, tail_};
    (tail_ == nullptr ? head_ : tail_->next) = cell;
    tail_ = cell;
}

void *Reader::make(size_t size)
{
    return std::memset(allocate(size), 0, size);
}

void *Reader::try_record(Fields list)
{
    if (is_guarded()) {
        return record(list);
    }
    void *record = g_try_malloc0(list.record_size());
    if (record != nullptr) {
        fields(record, list);
    }
    return record;
}

void *Reader::allocate_in_new_block(size_t size)
{
    const size_t unread = parts_ != nullptr ? parts_->left() : remaining();
    void *memory = arena_->grow(size, unread) ? arena_->take(size) : nullptr;
    if (memory == nullptr) {
        set_remaining(unread);
        fail_without_memory(arena_->capacity());
    }
    return memory;
}

}  // namespace mdm
