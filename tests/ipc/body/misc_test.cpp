// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ipc/envelope.hpp"
#include "support/allocation_trace.hpp"
#include "support/bodies.hpp"
#include "support/handlers.hpp"
#include "support/log_recorder.hpp"
#include "support/no_memory.hpp"
#include "support/wire.hpp"

namespace mdm::test::misc_test {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

constexpr Handlers misc(17);
constexpr size_t pointer_size = sizeof(void *);

enum class BodyForm { array, nothing, text, list, book, pair, raw };

const std::map<int32_t, BodyForm> listed{
    {122, BodyForm::array}, {123, BodyForm::nothing}, {124, BodyForm::text}, {125, BodyForm::text},
    {126, BodyForm::text},  {127, BodyForm::list},    {128, BodyForm::list}, {281, BodyForm::book},
    {283, BodyForm::book},  {288, BodyForm::pair},    {289, BodyForm::pair}};

BodyForm form_of(int32_t type)
{
    const auto found = listed.find(type);
    return found == listed.end() ? BodyForm::raw : found->second;
}

// Whether `data` keeps its value when a received body is released.
bool dangles_when_freed(BodyForm form)
{
    return form == BodyForm::array || form == BodyForm::pair;
}

mdm_body_t body(int32_t type, int32_t data_size, void *data)
{
    mdm_body_t body{};
    body.misc.type = type;
    body.misc.aux = 0xAAAAAAAA;
    body.misc.param = some_param;
    body.misc.data_size = data_size;
    body.misc.data = data;
    return body;
}

mdm_body_t list_body(int32_t type, int32_t data_size, GList *list)
{
    mdm_body_t with_list = body(type, data_size, nullptr);
    with_list.misc.param_list = list;
    return with_list;
}

Bytes head(int32_t type, int32_t data_size, uint32_t param = some_param)
{
    return word(static_cast<uint32_t>(type)) + word(param) + word(static_cast<uint32_t>(data_size));
}

// What `param` has of the address: they share their first bytes in memory, which are the low ones
// on a little-endian machine.
uint32_t low_bits(const GList *list)
{
    uint32_t bits = 0;
    std::memcpy(&bits, &list, sizeof bits);
    return bits;
}

const Bytes abc_str = hex("03 00 00 00 61 62 63");
const Bytes de_str = hex("02 00 00 00 64 65");
const Bytes null_str = hex("00 00 00 00");

struct Received {
    mdm_body_t body;
    size_t consumed;
    std::vector<Block> kept;
};

// A receiver's record that was used before: it has nothing that may be released.
mdm_body_t used_body()
{
    mdm_body_t used{};
    used.misc.aux = 0xBBBBBBBB;
    used.misc.param_list = static_cast<GList *>(sentinel());
    used.misc.data_size = 99;
    used.misc.data = sentinel();
    return used;
}

Received receive(const Bytes &bytes)
{
    Received received{used_body(), 0, {}};
    AllocationTrace trace;
    received.consumed = misc.read(&received.body, bytes);
    trace.stop();
    received.kept = trace.kept();
    return received;
}

template <class Record>
Record &payload(const Received &received)
{
    return *static_cast<Record *>(received.body.misc.data);
}

void expect_head(const mdm_body_t &body, int32_t type, int32_t data_size)
{
    EXPECT_EQ(body.misc.type, type);
    EXPECT_EQ(body.misc.aux, 0xBBBBBBBBU);
    EXPECT_EQ(body.misc.data_size, data_size);
    if (form_of(type) != BodyForm::list) {
        EXPECT_EQ(body.misc.param, some_param);
    }
}

// The received blocks, a record or an array behind its strings.
std::vector<const void *> in_order_of_release(const Received &received)
{
    std::vector<const void *> addresses;
    for (const Block &block : received.kept) {
        addresses.push_back(block.address);
    }
    if (form_of(received.body.misc.type) != BodyForm::list && !addresses.empty()) {
        std::rotate(addresses.begin(), addresses.begin() + 1, addresses.end());
    }
    return addresses;
}

// "(null)" for null, as the log prints it.
std::string shown(const char *text)
{
    return text == nullptr ? "(null)" : text;
}

std::string data_line(const void *data, int32_t data_size)
{
    std::array<char, 64> line{};
    std::snprintf(line.data(), line.size(), "data: %p, data_size: %d", data, data_size);
    return line.data();
}

std::vector<LogLine> sent_lines(const mdm_body_t &sent)
{
    const mdm_misc_info_t &body = sent.misc;
    std::vector<LogLine> lines{enter(misc.set),
                               info(misc.set, data_line(body.data, body.data_size))};
    const BodyForm form = form_of(body.type);
    if (body.data_size != 0 || form == BodyForm::list) {
        lines.push_back(info(misc.set, "serializing..."));
        if (form == BodyForm::book) {
            const auto &book = *static_cast<const mdm_book_info_t *>(body.data);
            lines.push_back(
                info(misc.set, "URL : " + shown(book.url) + ", TITLE : " + shown(book.title)));
        }
    }
    lines.push_back(leave(misc.set));
    return lines;
}

std::vector<LogLine> received_lines(const mdm_body_t &before, int32_t data_size)
{
    return {enter(misc.get), info(misc.get, data_line(before.misc.data, data_size)),
            leave(misc.get)};
}

// The head and its lines come before the failure, whose line is the last.
void expect_failing_write(mdm_body_t &sent, const LogLine &last)
{
    Bytes buffer(64);
    LogRecorder log;
    EXPECT_EQ(misc.set(buffer.data(), &sent), nullptr);
    EXPECT_EQ(buffer, head(sent.misc.type, sent.misc.data_size) + Bytes(52));
    EXPECT_THAT(log.take(), ElementsAre(enter(misc.set),
                                        info(misc.set, data_line(nullptr, sent.misc.data_size)),
                                        info(misc.set, "serializing..."), last));
}

// Valid in every form. Its size differs in nearly every form.
std::array<char *, 2> two_texts{borrowed("abc"), borrowed("de")};
GList one_cell{borrowed("xyz"), nullptr, nullptr};

mdm_body_t any_form(int32_t type)
{
    mdm_body_t sent = body(type, 2, two_texts.data());
    sent.misc.param_list = &one_cell;
    return sent;
}

// How any_form() travels.
struct Look {
    Bytes payload;
    int32_t data_size;           // as stored and sent
    std::vector<size_t> blocks;  // as received, in the order of their allocation
};

Look look_of(BodyForm form)
{
    switch (form) {
    case BodyForm::array:
        return {abc_str + de_str, 2, {2 * pointer_size, 4, 3}};
    case BodyForm::nothing:
        return {{}, 2, {}};
    case BodyForm::text:
        return {abc_str, 7, {sizeof(mdm_misc_str_t), 4}};
    case BodyForm::list:
        return {hex("01 00 00 00 03 00 00 00 78 79 7A"), 2, {4, sizeof(GList)}};
    case BodyForm::book:
        return {abc_str + de_str, 13, {sizeof(mdm_book_info_t), 4, 3}};
    case BodyForm::pair:
        return {abc_str + de_str, 13, {sizeof(mdm_misc_str_pair_t), 4, 3}};
    case BodyForm::raw:
        break;
    }
    Bytes raw(2);
    std::memcpy(raw.data(), two_texts.data(), raw.size());
    return {raw, 2, {3}};
}

void expect_form(int32_t type)
{
    SCOPED_TRACE(type);
    const BodyForm form = form_of(type);
    const Look look = look_of(form);
    mdm_body_t sent = any_form(type);
    LogRecorder log;
    EXPECT_EQ(misc.size(&sent), 12 + look.payload.size());
    EXPECT_EQ(sent.misc.data_size, look.data_size);
    EXPECT_EQ(log.take(), enter_and_leave(misc.size));

    const Bytes bytes = misc.write(&sent);
    EXPECT_EQ(bytes, head(type, look.data_size, low_bits(&one_cell)) + look.payload);
    EXPECT_THAT(log.take(), ElementsAreArray(sent_lines(sent)));

    Received received = receive(bytes);
    EXPECT_THAT(log.take(), ElementsAreArray(received_lines(used_body(), look.data_size)));
    mdm_misc_info_t &back = received.body.misc;
    EXPECT_EQ(received.consumed, bytes.size());
    EXPECT_EQ(back.type, type);
    EXPECT_EQ(back.data_size, look.data_size);
    EXPECT_EQ(sizes_of(received.kept), look.blocks);
    const bool has_data = form != BodyForm::nothing && form != BodyForm::list;
    EXPECT_EQ(back.data != sentinel(), has_data);

    const void *data = back.data;
    const auto expected = in_order_of_release(received);
    EXPECT_EQ(misc.release(&received.body), expected);
    EXPECT_EQ(log.take(), enter_and_leave(misc.free));
    EXPECT_EQ(back.data, has_data && !dangles_when_freed(form) ? nullptr : data);
    EXPECT_EQ(back.data_size, look.data_size);
}

TEST(Misc, TypeSelectsTheForm)
{
    for (int32_t type = -2; type <= 1000; ++type) {
        expect_form(type);
    }
    for (const auto &[type, form] : listed) {
        expect_form(type + 0x10000);
        expect_form(-type);
        expect_form(INT32_MIN + type);
    }
    expect_form(INT32_MAX);
    expect_form(INT32_MIN);
}

TEST(Misc, DataSize0SendsTheHeadAloneUnlessAListTravels)
{
    for (const int32_t type : {122, 123, 124, 125, 126, 281, 283, 288, 289, 0, 7}) {
        SCOPED_TRACE(type);
        for (void *data : {static_cast<void *>(two_texts.data()), static_cast<void *>(nullptr)}) {
            mdm_body_t sent = body(type, 0, data);
            LogRecorder log;
            EXPECT_EQ(misc.size(&sent), 12U);
            EXPECT_EQ(sent.misc.data_size, 0);
            EXPECT_EQ(log.take(), enter_and_leave(misc.size));
            const Bytes bytes = misc.write(&sent);
            EXPECT_EQ(bytes, head(type, 0));
            EXPECT_THAT(log.take(), ElementsAreArray(sent_lines(sent)));

            const Received received = receive(bytes);
            EXPECT_EQ(received.consumed, 12U);
            expect_head(received.body, type, 0);
            EXPECT_EQ(received.body.misc.data, nullptr);
            EXPECT_THAT(received.kept, IsEmpty());
            EXPECT_THAT(log.take(), ElementsAreArray(received_lines(used_body(), 0)));
        }
    }
}

TEST(Misc, RecordsStoreTheirSizeInPlaceOfAnyDataSize)
{
    for (const int32_t type : {124, 125, 126, 281, 283, 288, 289}) {
        const Look look = look_of(form_of(type));
        for (const int32_t data_size : {1, -1, 100, INT32_MIN, INT32_MAX}) {
            mdm_body_t sent = body(type, data_size, two_texts.data());
            for (int call = 0; call < 2; ++call) {
                EXPECT_EQ(misc.size(&sent), 12 + look.payload.size());
                EXPECT_EQ(sent.misc.data_size, look.data_size);
            }
            EXPECT_EQ(misc.write(&sent), head(type, look.data_size) + look.payload);
        }
    }
}

// Q-BODY-2
TEST(Misc, RecordsAreSentAndReceivedUnderAnyDataSizeBut0)
{
    for (const int32_t type : {124, 281, 288}) {
        const Look look = look_of(form_of(type));
        for (const int32_t data_size : {1, -1, INT32_MIN, INT32_MAX}) {
            mdm_body_t sent = body(type, data_size, two_texts.data());
            const Bytes bytes = misc.write(&sent);
            EXPECT_EQ(bytes, head(type, data_size) + look.payload);
            Received received = receive(bytes);
            EXPECT_EQ(received.consumed, bytes.size());
            expect_head(received.body, type, data_size);
            EXPECT_EQ(sizes_of(received.kept), look.blocks);
            misc.release(&received.body);
        }
    }
}

TEST(Misc, TextRecordCarriesOneStringOfAnyKind)
{
    const std::string longer(350, 'x');
    for (const int32_t type : {124, 125, 126}) {
        for (const char *text : {"a", "abc", "\xC3\xA9\xFF", longer.c_str()}) {
            mdm_misc_str_t record{borrowed(text)};
            mdm_body_t sent = body(type, 1, &record);
            const auto data_size = static_cast<int32_t>(4 + std::strlen(text));
            EXPECT_EQ(misc.size(&sent), 12U + static_cast<uint32_t>(data_size));
            const Bytes bytes = misc.write(&sent);
            EXPECT_EQ(bytes, head(type, data_size) + str(text));
            Received received = receive(bytes);
            expect_head(received.body, type, data_size);
            EXPECT_STREQ(payload<mdm_misc_str_t>(received).value, text);
            misc.release(&received.body);
        }
    }
}

TEST(Misc, TextRecordWithoutTextIs16Bytes)
{
    for (const char *text : {static_cast<const char *>(nullptr), ""}) {
        mdm_misc_str_t record{borrowed(text)};
        mdm_body_t sent = body(125, 1, &record);
        EXPECT_EQ(misc.size(&sent), 16U);
        EXPECT_EQ(sent.misc.data_size, 4);
        const Bytes bytes = misc.write(&sent);
        EXPECT_EQ(bytes, hex("7D 00 00 00 04 03 02 01 04 00 00 00 00 00 00 00"));
        Received received = receive(bytes);
        EXPECT_EQ(received.consumed, 16U);
        EXPECT_EQ(payload<mdm_misc_str_t>(received).value, nullptr);
        misc.release(&received.body);
    }
}

struct TwoTexts {
    const char *first;
    const char *second;
    Bytes payload;
};

// Two strings in every state that a sender's record may hold them in.
std::vector<TwoTexts> pairs_of_texts()
{
    static const std::string longer(350, 'y');
    return {{"abc", "de", abc_str + de_str},
            {nullptr, "de", null_str + de_str},
            {"abc", nullptr, abc_str + null_str},
            {nullptr, nullptr, null_str + null_str},
            {"", "\xFF\xC3\xA9", null_str + hex("03 00 00 00 FF C3 A9")},
            {"a", longer.c_str(), hex("01 00 00 00 61") + str(longer)}};
}

// As it arrives: an empty string is null.
std::string arriving(const char *text)
{
    return text == nullptr || *text == '\0' ? shown(nullptr) : text;
}

template <class Record>
void expect_two_strings(int32_t type, char *Record::*first, char *Record::*second)
{
    for (const TwoTexts &texts : pairs_of_texts()) {
        Record record{};
        record.*first = borrowed(texts.first);
        record.*second = borrowed(texts.second);
        mdm_body_t sent = body(type, 1, &record);
        const auto data_size = static_cast<int32_t>(texts.payload.size());
        EXPECT_EQ(misc.size(&sent), 12 + texts.payload.size());
        EXPECT_EQ(sent.misc.data_size, data_size);
        LogRecorder log;
        const Bytes bytes = misc.write(&sent);
        EXPECT_EQ(bytes, head(type, data_size) + texts.payload);
        EXPECT_THAT(log.take(), ElementsAreArray(sent_lines(sent)));

        Received received = receive(bytes);
        EXPECT_EQ(received.consumed, bytes.size());
        expect_head(received.body, type, data_size);
        EXPECT_EQ(received.kept.front(), (Block{received.body.misc.data, sizeof(Record)}));
        EXPECT_EQ(shown(payload<Record>(received).*first), arriving(texts.first));
        EXPECT_EQ(shown(payload<Record>(received).*second), arriving(texts.second));
        EXPECT_THAT(log.take(), ElementsAreArray(received_lines(used_body(), data_size)));
        misc.release(&received.body);
    }
}

TEST(Misc, BookCarriesUrlThenTitle)
{
    for (const int32_t type : {281, 283}) {
        expect_two_strings(type, &mdm_book_info_t::url, &mdm_book_info_t::title);
    }
}

TEST(Misc, PairCarriesFirstThenSecond)
{
    for (const int32_t type : {288, 289}) {
        expect_two_strings(type, &mdm_misc_str_pair_t::first, &mdm_misc_str_pair_t::second);
    }
}

// Q-MISC-12
TEST(Misc, BookIsLoggedWithItsTexts)
{
    mdm_book_info_t book{nullptr, borrowed("de")};
    mdm_body_t sent = body(283, 9, &book);
    LogRecorder log;
    misc.write(&sent);
    EXPECT_THAT(log.take(),
                ElementsAre(enter(misc.set), info(misc.set, data_line(&book, 9)),
                            info(misc.set, "serializing..."),
                            info(misc.set, "URL : (null), TITLE : de"), leave(misc.set)));
}

// Q-MISC-8
TEST(Misc, ArrayCarriesAsManyStringsAsDataSizeSays)
{
    std::array<char *, 4> texts{borrowed("abc"), nullptr, borrowed("de"), borrowed("")};
    const Bytes strings = abc_str + null_str + de_str + null_str;
    const std::array<size_t, 5> ends{0, 7, 11, 17, 21};
    for (const int32_t count : {1, 2, 3, 4}) {
        mdm_body_t sent = body(122, count, texts.data());
        const size_t end = ends.at(static_cast<size_t>(count));
        const Bytes expected(strings.begin(), strings.begin() + static_cast<std::ptrdiff_t>(end));
        EXPECT_EQ(misc.size(&sent), 12 + end);
        EXPECT_EQ(sent.misc.data_size, count);
        const Bytes bytes = misc.write(&sent);
        EXPECT_EQ(bytes, head(122, count) + expected);

        Received received = receive(bytes);
        EXPECT_EQ(received.consumed, 12 + end);
        expect_head(received.body, 122, count);
        const Block array = received.kept.front();
        EXPECT_EQ(array,
                  (Block{received.body.misc.data, pointer_size * static_cast<size_t>(count)}));
        for (int32_t i = 0; i < count; ++i) {
            EXPECT_EQ(shown((&payload<char *>(received))[i]),
                      arriving(texts.at(static_cast<size_t>(i))));
        }
        EXPECT_EQ(misc.release(&received.body), in_order_of_release(received));
    }
}

TEST(Misc, ArrayOfManyStringsTravels)
{
    std::array<char *, 300> texts{};
    texts.fill(borrowed("abc"));
    mdm_body_t sent = body(122, 300, texts.data());
    EXPECT_EQ(misc.size(&sent), 12U + 300 * 7);
    Received received = receive(misc.write(&sent));
    EXPECT_EQ(received.consumed, 12U + 300 * 7);
    EXPECT_EQ(received.kept.size(), 301U);
    EXPECT_STREQ((&payload<char *>(received))[299], "abc");
    EXPECT_EQ(misc.release(&received.body), in_order_of_release(received));
}

// Q-MISC-8
TEST(Misc, ArrayOfNegativeCountIsEmpty)
{
    for (const int32_t count : {-1, -3, INT32_MIN}) {
        mdm_body_t sent = body(122, count, two_texts.data());
        EXPECT_EQ(misc.size(&sent), 12U);
        EXPECT_EQ(sent.misc.data_size, count);
        LogRecorder log;
        const Bytes bytes = misc.write(&sent);
        EXPECT_EQ(bytes, head(122, count));
        EXPECT_THAT(log.take(), ElementsAreArray(sent_lines(sent)));

        const Received received = receive(bytes);
        EXPECT_EQ(received.consumed, 12U);
        expect_head(received.body, 122, count);
        EXPECT_EQ(received.body.misc.data, nullptr);
        EXPECT_THAT(received.kept, IsEmpty());
    }
}

// Q-MISC-9
TEST(Misc, Type123SendsNothingWhateverDataSizeSays)
{
    for (const int32_t data_size : {40, 1, -1, INT32_MIN}) {
        mdm_body_t sent = body(123, data_size, two_texts.data());
        EXPECT_EQ(misc.size(&sent), 12U);
        EXPECT_EQ(sent.misc.data_size, data_size);
        const Bytes bytes = misc.write(&sent);
        EXPECT_EQ(bytes, head(123, data_size));

        Received received = receive(bytes);
        EXPECT_EQ(received.consumed, 12U);
        expect_head(received.body, 123, data_size);
        EXPECT_EQ(received.body.misc.data, sentinel());
        EXPECT_THAT(misc.release(&received.body), IsEmpty());
        EXPECT_EQ(received.body.misc.data, sentinel());
    }
}

// Q-MISC-1, Q-MISC-2
TEST(Misc, ListTravelsInPlaceOfParamWhateverDataSizeSays)
{
    GList *list = list_of({borrowed("abc"), borrowed("de")});
    for (const int32_t type : {127, 128}) {
        for (const int32_t data_size : {0, 5, -1, INT32_MIN}) {
            mdm_body_t sent = list_body(type, data_size, list);
            EXPECT_EQ(misc.size(&sent), 29U);
            EXPECT_EQ(sent.misc.data_size, data_size);
            LogRecorder log;
            const Bytes bytes = misc.write(&sent);
            EXPECT_EQ(bytes, head(type, data_size, low_bits(list)) + hex("02 00 00 00") + abc_str +
                                 de_str);
            EXPECT_THAT(log.take(), ElementsAreArray(sent_lines(sent)));

            Received received = receive(bytes);
            EXPECT_EQ(received.consumed, 29U);
            expect_head(received.body, type, data_size);
            EXPECT_THAT(texts_of(received.body.misc.param_list), ElementsAre("abc", "de"));
            EXPECT_EQ(received.body.misc.param_list->prev, nullptr);
            EXPECT_EQ(received.body.misc.data, sentinel());
            EXPECT_EQ(sizes_of(received.kept),
                      (std::vector<size_t>{4, sizeof(GList), 3, sizeof(GList)}));
            EXPECT_THAT(log.take(), ElementsAreArray(received_lines(used_body(), data_size)));
            misc.release(&received.body);
        }
    }
    g_list_free(list);
}

TEST(Misc, NullListIsACountOf0)
{
    for (const int32_t type : {127, 128}) {
        for (const int32_t data_size : {0, 8}) {
            mdm_body_t sent = list_body(type, data_size, nullptr);
            EXPECT_EQ(misc.size(&sent), 16U);
            const Bytes bytes = misc.write(&sent);
            EXPECT_EQ(bytes, head(type, data_size, 0) + null_str);

            const Received received = receive(bytes);
            EXPECT_EQ(received.consumed, 16U);
            EXPECT_EQ(received.body.misc.param_list, nullptr);
            EXPECT_EQ(received.body.misc.data, sentinel());
            EXPECT_THAT(received.kept, IsEmpty());
        }
    }
}

// Q-MISC-3
TEST(Misc, NullElementsOfAListAreCountedAndSizedButNotWritten)
{
    struct {
        GList *list;
        uint32_t gap;
        Bytes payload;
    } const cases[] = {
        {list_of({borrowed("abc"), nullptr, borrowed("de")}), 4,
         hex("03 00 00 00") + abc_str + de_str},
        {list_of({nullptr, borrowed("abc"), nullptr, nullptr, borrowed("de")}), 12,
         hex("05 00 00 00") + abc_str + de_str},
        {list_of({nullptr}), 4, hex("01 00 00 00")},
        {list_of({borrowed("abc"), nullptr}), 4, hex("02 00 00 00") + abc_str},
    };
    for (const auto &[list, gap, payload] : cases) {
        for (const int32_t type : {127, 128}) {
            mdm_body_t sent = list_body(type, 0, list);
            EXPECT_EQ(misc.size(&sent), 12 + payload.size() + gap);
            EXPECT_EQ(misc.write(&sent), head(type, 0, low_bits(list)) + payload);
        }
        g_list_free(list);
    }
}

TEST(Misc, EmptyStringsOfAListArriveAsNullElements)
{
    GList *list = list_of({borrowed(""), borrowed("abc"), borrowed("")});
    mdm_body_t sent = list_body(128, 0, list);
    EXPECT_EQ(misc.size(&sent), 31U);
    const Bytes bytes = misc.write(&sent);
    EXPECT_EQ(bytes,
              head(128, 0, low_bits(list)) + hex("03 00 00 00") + null_str + abc_str + null_str);
    Received received = receive(bytes);
    EXPECT_EQ(received.consumed, 31U);
    EXPECT_THAT(texts_of(received.body.misc.param_list),
                ElementsAre(std::nullopt, "abc", std::nullopt));
    EXPECT_EQ(misc.release(&received.body).size(), 4U);
    g_list_free(list);
}

// Q-WIRE-4
TEST(Misc, SizeCountsAListFromItsFirstElement)
{
    GList *list = list_of({borrowed("abc"), borrowed("de")});
    mdm_body_t sent = list_body(127, 0, list->next);
    EXPECT_EQ(misc.size(&sent), 29U);
    g_list_free(list);
}

TEST(Misc, LongListsAndStringsTravel)
{
    const std::string longer(400, '\xC3');
    GList *list = list_of({borrowed(longer.c_str())});
    for (int i = 0; i < 100; ++i) {
        list = g_list_prepend(list, borrowed("abc"));
    }
    mdm_body_t sent = list_body(128, 0, list);
    EXPECT_EQ(misc.size(&sent), 16U + 100 * 7 + 404);
    Received received = receive(misc.write(&sent));
    EXPECT_EQ(received.consumed, 16U + 100 * 7 + 404);
    const auto texts = texts_of(received.body.misc.param_list);
    ASSERT_EQ(texts.size(), 101U);
    EXPECT_EQ(texts[99], "abc");
    EXPECT_EQ(texts[100], longer);
    EXPECT_EQ(misc.release(&received.body).size(), 202U);
    g_list_free(list);
}

TEST(Misc, OtherTypesCarryRawBytesAndReceiveAString)
{
    const std::string longer(350, '\xFE');
    for (const std::string &raw : {std::string("x"), std::string("a\0b\xFF", 4), longer}) {
        const auto data_size = static_cast<int32_t>(raw.size());
        mdm_body_t sent = body(7, data_size, borrowed(raw.c_str()));
        EXPECT_EQ(misc.size(&sent), 12 + raw.size());
        EXPECT_EQ(sent.misc.data_size, data_size);
        const Bytes bytes = misc.write(&sent);
        EXPECT_EQ(bytes, head(7, data_size) + Bytes(raw.begin(), raw.end()));

        Received received = receive(bytes);
        EXPECT_EQ(received.consumed, bytes.size());
        expect_head(received.body, 7, data_size);
        EXPECT_THAT(received.kept, ElementsAre(Block{received.body.misc.data, raw.size() + 1}));
        EXPECT_STREQ(&payload<char>(received), raw.c_str());
        misc.release(&received.body);
    }
}

// Q-BODY-4
TEST(Misc, SizeOfRawBytesTrustsDataSize)
{
    mdm_body_t sent = body(7, -4, nullptr);
    EXPECT_EQ(misc.size(&sent), 8U);
    sent.misc.data_size = -13;
    EXPECT_EQ(misc.size(&sent), 0xFFFFFFFFU);
    sent.misc.data_size = INT32_MAX;
    EXPECT_EQ(misc.size(&sent), 0x8000000BU);
    EXPECT_EQ(sent.misc.data_size, INT32_MAX);
}

// Q-MISC-4
TEST(Misc, MissingBookFailsToBeSizedAndWritten)
{
    for (const int32_t type : {281, 283}) {
        for (const int32_t data_size : {8, 1, -1}) {
            mdm_body_t sent = body(type, data_size, nullptr);
            LogRecorder log;
            EXPECT_EQ(static_cast<int32_t>(misc.size(&sent)), -999);
            EXPECT_EQ(sent.misc.data_size, data_size);
            EXPECT_THAT(log.take(),
                        ElementsAre(enter(misc.size), critical(misc.size, "p_book_info is NULL"),
                                    leave(misc.size)));
            expect_failing_write(sent, assert_fails(misc.set));
        }
    }
}

// Q-MISC-6
TEST(Misc, MissingTextRecordFailsToBeWritten)
{
    for (const int32_t type : {124, 125, 126}) {
        for (const int32_t data_size : {8, 1, -1}) {
            mdm_body_t sent = body(type, data_size, nullptr);
            expect_failing_write(sent, leave(misc.set));
        }
    }
}

// Q-MISC-5
TEST(Misc, MissingPairSendsTheHeadAlone)
{
    for (const int32_t type : {288, 289}) {
        mdm_body_t sent = body(type, 8, nullptr);
        LogRecorder log;
        EXPECT_EQ(misc.size(&sent), 12U);
        EXPECT_EQ(sent.misc.data_size, 8);
        EXPECT_EQ(log.take(), enter_and_leave(misc.size));
        const Bytes bytes = misc.write(&sent);
        EXPECT_EQ(bytes, head(type, 8));
        EXPECT_THAT(log.take(), ElementsAreArray(sent_lines(sent)));

        // The receiver believes the 8 and reads the bytes behind the message.
        Received received = receive(bytes + null_str + abc_str);
        EXPECT_EQ(received.consumed, 23U);
        EXPECT_EQ(payload<mdm_misc_str_pair_t>(received).first, nullptr);
        EXPECT_STREQ(payload<mdm_misc_str_pair_t>(received).second, "abc");
        misc.release(&received.body);
    }
}

// Q-MISC-11
TEST(Misc, WithoutMemoryATextRecordFailsToBeRead)
{
    for (const int32_t type : {124, 125, 126}) {
        const Bytes bytes = head(type, 7) + abc_str;
        mdm_body_t received = used_body();
        LogRecorder log;
        AllocationTrace trace;
        {
            const NoMemory no_memory;
            EXPECT_EQ(misc.get(&received, bytes.data()), nullptr);
        }
        trace.stop();
        EXPECT_THAT(trace.allocated(), IsEmpty());
        expect_head(received, type, 7);
        EXPECT_EQ(received.misc.data, sentinel());
        EXPECT_THAT(log.take(), ElementsAreArray(received_lines(used_body(), 7)));
    }
}

// Q-MISC-11
TEST(Misc, WithoutMemoryAPairIsNotRead)
{
    for (const int32_t type : {288, 289}) {
        const NoMemory no_memory;
        LogRecorder log;
        const Received received = receive(head(type, 13) + abc_str + de_str);
        EXPECT_EQ(received.consumed, 12U);
        expect_head(received.body, type, 13);
        EXPECT_EQ(received.body.misc.data, sentinel());
        EXPECT_THAT(received.kept, IsEmpty());
        EXPECT_THAT(log.take(), ElementsAreArray(received_lines(used_body(), 13)));
    }
}

TEST(Misc, WithoutMemoryAMessageIsReceivedWithoutItsTextRecord)
{
    mdm_misc_str_t record{borrowed("abc")};
    mdm_msg_t msg = message(18);
    msg.body = body(125, 1, &record);
    const Bytes bytes = serialize(msg);
    const NoMemory no_memory;
    mdm_msg_t received{};
    LogRecorder log(MDM_LOG_CRITICAL);
    EXPECT_EQ(deserialize(received, bytes), 0);
    EXPECT_EQ(received.body.misc.data_size, 7);
    EXPECT_EQ(received.body.misc.data, nullptr);
    EXPECT_THAT(log.take(), ElementsAre(critical(from::ipc_deserialize, "lp_body is NULL")));
}

TEST(Misc, FreeNullsEachStringOfABookAtOnce)
{
    for (const int32_t type : {281, 283}) {
        Received received = receive(head(type, 13) + abc_str + de_str);
        const auto *book = &payload<mdm_book_info_t>(received);
        const void *url = book->url;
        const void *title = book->title;
        AllocationTrace trace;
        trace.during_release([&](const void *block) {
            EXPECT_EQ(book->url == nullptr, block != url);
            EXPECT_EQ(book->title == nullptr, block == book);
        });
        misc.free(&received.body);
        trace.stop();
        EXPECT_THAT(trace.released(), ElementsAre(url, title, book));
    }
}

TEST(Misc, FreeNullsTheStringOfATextRecord)
{
    for (const int32_t type : {124, 125, 126}) {
        Received received = receive(head(type, 7) + abc_str);
        const auto *record = &payload<mdm_misc_str_t>(received);
        const void *value = record->value;
        AllocationTrace trace;
        trace.during_release(
            [&](const void *block) { EXPECT_EQ(record->value == nullptr, block == record); });
        misc.free(&received.body);
        trace.stop();
        EXPECT_THAT(trace.released(), ElementsAre(value, record));
    }
}

// Q-BODY-7
TEST(Misc, FreeOfAPairKeepsThePointer)
{
    for (const int32_t type : {288, 289}) {
        Received received = receive(head(type, 13) + abc_str + de_str);
        const auto *pair = &payload<mdm_misc_str_pair_t>(received);
        const void *first = pair->first;
        const void *second = pair->second;
        EXPECT_THAT(misc.release(&received.body), ElementsAre(first, second, pair));
        EXPECT_EQ(received.body.misc.data, pair);
        expect_head(received.body, type, 13);
    }
}

TEST(Misc, FreeMayRunTwiceWhereItNullsData)
{
    for (const int32_t type : {124, 125, 126, 281, 283, 7}) {
        mdm_body_t sent = any_form(type);
        misc.size(&sent);
        Received received = receive(misc.write(&sent));
        misc.release(&received.body);
        EXPECT_EQ(received.body.misc.data, nullptr);
        EXPECT_THAT(misc.release(&received.body), IsEmpty());
    }
}

// Q-MISC-10
TEST(Misc, FreeOfNullDataReleasesNothingNotEvenAList)
{
    for (const int32_t type : {122, 123, 124, 125, 126, 127, 128, 281, 283, 288, 289, 7}) {
        mdm_body_t received = list_body(type, 2, &one_cell);
        LogRecorder log;
        EXPECT_THAT(misc.release(&received), IsEmpty());
        EXPECT_EQ(received.misc.param_list, &one_cell);
        EXPECT_EQ(received.misc.data_size, 2);
        EXPECT_EQ(log.take(), enter_and_leave(misc.free));
    }
}

// Q-BODY-7, Q-MISC-10
TEST(Misc, FreeOfAListNeedsDataButLeavesIt)
{
    for (const int32_t type : {127, 128}) {
        GList *list = heap_list({"abc", nullptr, "de"});
        const auto elements = elements_of(list);
        const auto cells = cells_of(list);
        mdm_body_t received = list_body(type, 0, list);
        received.misc.data = sentinel();
        EXPECT_THAT(misc.release(&received),
                    ElementsAre(elements[0], elements[2], cells[0], cells[1], cells[2]));
        EXPECT_EQ(received.misc.param_list, list);
        EXPECT_EQ(received.misc.data, sentinel());
        EXPECT_EQ(received.misc.data_size, 0);
    }
}

// Q-BODY-7
TEST(Misc, FreeOfAnArrayReleasesAsManyStringsAsDataSizeSays)
{
    for (const int32_t data_size : {2, 1, 0, -1, INT32_MIN}) {
        auto *texts = g_new0(char *, 2);
        texts[0] = heap_text("abc");
        texts[1] = heap_text("de");
        const std::vector<char *> strings{texts[0], texts[1]};
        const size_t count = data_size < 0 ? 0 : static_cast<size_t>(data_size);
        std::vector<const void *> expected(strings.begin(),
                                           strings.begin() + static_cast<std::ptrdiff_t>(count));
        expected.push_back(texts);
        mdm_body_t received = body(122, data_size, texts);
        EXPECT_EQ(misc.release(&received), expected);
        EXPECT_EQ(received.misc.data, texts);
        EXPECT_EQ(received.misc.data_size, data_size);
        for (size_t i = count; i < strings.size(); ++i) {
            g_free(strings[i]);
        }
    }
}

// Q-BODY-5
TEST(Misc, FreeLooksAtDataAndNotAtDataSize)
{
    for (const int32_t type : {124, 281, 288, 7}) {
        void *data = g_malloc0(sizeof(mdm_book_info_t));
        mdm_body_t received = body(type, 0, data);
        EXPECT_THAT(misc.release(&received), ElementsAre(data));
    }
}

TEST(Misc, WholeMessagesLeakNothingButLists)
{
    for (const uint8_t message_type : {uint8_t{17}, uint8_t{18}}) {
        for (const int32_t type : {122, 123, 124, 125, 126, 127, 128, 281, 283, 288, 289, 7}) {
            const Look look = look_of(form_of(type));
            const Journey journey = travel(message_type, any_form(type));
            EXPECT_EQ(journey.bytes,
                      head(type, look.data_size, low_bits(&one_cell)) + look.payload);
            if (form_of(type) != BodyForm::list) {
                EXPECT_THAT(journey.kept, IsEmpty());
                continue;
            }
            EXPECT_EQ(sizes_of(journey.kept), look.blocks);
            EXPECT_THAT(texts_of(journey.received.body.misc.param_list), ElementsAre("xyz"));
            release_blocks(journey.kept);
        }
    }
}

// Q-MISC-3
TEST(Misc, NullElementsOfAListTravelAsZerosAtTheMessagesEnd)
{
    const Cells list = cells({borrowed("abc"), nullptr, borrowed("de")});
    LogRecorder log(MDM_LOG_CRITICAL);
    const Journey journey = travel(17, list_body(128, 0, list.get()));
    EXPECT_EQ(journey.bytes, head(128, 0, low_bits(list.get())) + hex("03 00 00 00") + abc_str +
                                 de_str + null_str);
    EXPECT_THAT(log.take(), IsEmpty());
    EXPECT_THAT(texts_of(journey.received.body.misc.param_list),
                ElementsAre("abc", "de", std::nullopt));
    release_blocks(journey.kept);
}

TEST(Misc, MissingBookMakesNoMessage)
{
    mdm_msg_t msg = message(17);
    msg.body = body(283, 8, nullptr);
    uint32_t length = 77;
    LogRecorder log(MDM_LOG_CRITICAL);
    EXPECT_EQ(ipc_serialize(&msg, &length), nullptr);
    EXPECT_EQ(length, 77U);
    EXPECT_THAT(log.take(),
                ElementsAre(critical(misc.size, "p_book_info is NULL"),
                            assert_fails(from::alloc_msg), assert_fails(from::ipc_serialize)));
}

// The envelope takes 8 bytes for a message. This one would be written beyond them, hence only its
// size is asked for.
// Q-MISC-4
TEST(Misc, MissingBookIsRefusedUpToAHeaderTextOf966Bytes)
{
    const Category category = category_of(17);
    const Log silence = category.log(Log::Function::silent);
    Lengths lengths;
    for (const int32_t type : {281, 283}) {
        std::string text(966, 'x');
        mdm_msg_t msg = message(17);
        msg.hdr_text = text.data();
        msg.body = body(type, 8, nullptr);
        uint32_t length = 0;
        EXPECT_EQ(ipc_serialize(&msg, &length), nullptr);
        EXPECT_EQ(total_size(category.row, &msg, lengths, silence), 7);

        text += 'x';
        msg.hdr_text = text.data();
        EXPECT_EQ(total_size(category.row, &msg, lengths, silence), 8);
    }
}

}  // namespace
}  // namespace mdm::test::misc_test
