// SPDX-License-Identifier: Apache-2.0
#include "support/wire.hpp"

#include <algorithm>
#include <charconv>
#include <memory>
#include <numeric>

#include <gtest/gtest.h>

namespace mdm::test {

Bytes hex(std::string_view text)
{
    Bytes bytes;
    const char *position = text.data();
    const char *end = position + text.size();
    while (position < end) {
        uint8_t byte = 0;
        const auto [next, error] = std::from_chars(position, end, byte, 16);
        EXPECT_EQ(error, std::errc{}) << text;
        EXPECT_EQ(next - position, 2) << text;
        bytes.push_back(byte);
        position = next + 1;
    }
    return bytes;
}

Bytes operator+(const Bytes &left, const Bytes &right)
{
    Bytes both = left;
    both.insert(both.end(), right.begin(), right.end());
    return both;
}

Bytes word(uint32_t value)
{
    Bytes bytes;
    for (int shift = 0; shift < 32; shift += 8) {
        bytes.push_back(static_cast<uint8_t>(value >> shift));
    }
    return bytes;
}

Bytes str(const std::string &text)
{
    return word(static_cast<uint32_t>(text.size())) + Bytes(text.begin(), text.end());
}

Bytes str(const char *text)
{
    return str(std::string(text == nullptr ? "" : text));
}

Bytes head_bytes(uint32_t type, int32_t data_size)
{
    return word(type) + word(some_param) + word(static_cast<uint32_t>(data_size));
}

std::vector<uint32_t> swept_types(const std::vector<uint32_t> &listed)
{
    std::vector<uint32_t> types(1001);
    std::iota(types.begin(), types.end(), 0U);
    for (const uint32_t type : listed) {
        types.insert(types.end(), {type + 0x10000, type | 0x01000000, type | 0x80000000, 0 - type});
    }
    types.insert(types.end(), {0x80000000, 0xFFFFFFFF});
    return types;
}

void *sentinel()
{
    static int place = 0;
    return &place;
}

char *heap_text(const char *text)
{
    return g_strdup(text);
}

char *borrowed(const char *text)
{
    return const_cast<char *>(text);
}

GList *heap_list(std::initializer_list<const char *> texts)
{
    GList *list = nullptr;
    for (const char *text : texts) {
        list = g_list_append(list, g_strdup(text));
    }
    return list;
}

GList *list_of(std::initializer_list<void *> elements)
{
    GList *list = nullptr;
    for (void *element : elements) {
        list = g_list_append(list, element);
    }
    return list;
}

Cells cells(std::initializer_list<void *> elements)
{
    return Cells(list_of(elements));
}

std::vector<std::optional<std::string>> texts_of(const void *list)
{
    std::vector<std::optional<std::string>> texts;
    for (const void *element : elements_of(list)) {
        texts.push_back(element == nullptr
                            ? std::nullopt
                            : std::optional<std::string>(static_cast<const char *>(element)));
    }
    return texts;
}

std::vector<const void *> elements_of(const void *list)
{
    std::vector<const void *> elements;
    for (const void *cell : cells_of(list)) {
        elements.push_back(static_cast<const GList *>(cell)->data);
    }
    return elements;
}

std::vector<const void *> cells_of(const void *list)
{
    std::vector<const void *> cells;
    for (const auto *cell = static_cast<const GList *>(list); cell != nullptr; cell = cell->next) {
        cells.push_back(cell);
    }
    return cells;
}

mdm_msg_t message(uint8_t type)
{
    mdm_msg_t msg{};
    msg.type = type;
    return msg;
}

Bytes serialize(mdm_msg_t &msg)
{
    uint32_t length = 0;
    uint8_t *buffer = ipc_serialize(&msg, &length);
    EXPECT_NE(buffer, nullptr);
    Bytes bytes(buffer, buffer + length);
    g_free(buffer);
    return bytes;
}

std::unique_ptr<uint8_t[]> exact_copy(const Bytes &bytes)
{
    auto copy = std::make_unique<uint8_t[]>(bytes.size());
    std::ranges::copy(bytes, copy.get());
    return copy;
}

int32_t deserialize(mdm_msg_t &msg, const Bytes &bytes)
{
    const auto copy = exact_copy(bytes);
    return ipc_deserialize(&msg, copy.get(), static_cast<uint32_t>(bytes.size()));
}

}  // namespace mdm::test
