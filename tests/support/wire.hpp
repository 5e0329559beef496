// SPDX-License-Identifier: Apache-2.0
//
// Short ways to write bytes down and to run messages through the codec.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "mdm/ipc.h"

namespace mdm::test {

using Bytes = std::vector<uint8_t>;

// hex("0A 00 ff") is {0x0A, 0x00, 0xFF}.
Bytes hex(std::string_view text);

Bytes operator+(const Bytes &left, const Bytes &right);

// The bytes of a word and of a string on the wire, made without the library; a null string is
// empty.
Bytes word(uint32_t value);
Bytes str(const std::string &text);
Bytes str(const char *text);

// A pointer for a field that nobody dereferences: to be found again where it was put.
void *sentinel();

// A heap string as a receiver's record holds one.
char *heap_text(const char *text);

// A string literal for a sender's record: the codec reads a sender's strings and no more.
char *borrowed(const char *text);

// A new list of new strings, as a receiver's body holds one; a null text is a null element.
GList *heap_list(std::initializer_list<const char *> texts);

// A new list of elements that stay where they are.
GList *list_of(std::initializer_list<void *> elements);

// The same for a sender: the cells go with the test, the elements belong to somebody else.
struct ReleaseCells {
    void operator()(GList *list) const { g_list_free(list); }
};
using Cells = std::unique_ptr<GList, ReleaseCells>;
Cells cells(std::initializer_list<void *> elements);

// The contents of a list in a body's `data`: the texts of its strings (none for a null element), the
// addresses of its elements, and the addresses of its cells.
std::vector<std::optional<std::string>> texts_of(const void *list);
std::vector<const void *> elements_of(const void *list);
std::vector<const void *> cells_of(const void *list);

// A body that begins with the body head, as sender and receiver hold it in most tests: its `aux`
// and its `param` are told apart from anything else. `category` is a member of mdm_body_t.
inline constexpr uint32_t some_aux = 0xAAAAAAAA;
inline constexpr uint32_t some_param = 0x01020304;

template <auto category>
mdm_body_t headed_body(uint32_t type, int32_t data_size, void *data)
{
    mdm_body_t body{};
    auto &info = body.*category;
    info.type = static_cast<decltype(info.type)>(type);
    info.aux = some_aux;
    info.param = some_param;
    info.data_size = data_size;
    info.data = data;
    return body;
}

// The head of such a body on the wire.
Bytes head_bytes(uint32_t type, int32_t data_size);

// Everything of such a body but its `data`.
template <auto category>
void expect_headed(const mdm_body_t &body, uint32_t type, int32_t data_size)
{
    const auto &info = body.*category;
    EXPECT_EQ(static_cast<uint32_t>(info.type), type);
    EXPECT_EQ(info.aux, some_aux);
    EXPECT_EQ(info.param, some_param);
    EXPECT_EQ(info.data_size, data_size);
}

// Every type up to 1000, and types beyond that an 8-bit, a 16-bit or a 31-bit comparison would take
// for one of `listed`.
std::vector<uint32_t> swept_types(const std::vector<uint32_t> &listed);

// A heap copy of a record, as a receiver's body holds one.
template <class Record>
Record *on_heap(const Record &record)
{
    auto *copy = static_cast<Record *>(g_malloc0(sizeof(Record)));
    *copy = record;
    return copy;
}

// A zeroed message of a type.
mdm_msg_t message(uint8_t type);

// The bytes of a message; fails the test if there are none.
Bytes serialize(mdm_msg_t &msg);

// A heap copy of the bytes alone, so that no read beyond them goes unseen under a sanitizer.
std::unique_ptr<uint8_t[]> exact_copy(const Bytes &bytes);

// ipc_deserialize() on an exact copy of the bytes.
int32_t deserialize(mdm_msg_t &msg, const Bytes &bytes);

}  // namespace mdm::test
