// SPDX-License-Identifier: Apache-2.0
#include <map>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/allocation_trace.hpp"
#include "support/bodies.hpp"
#include "support/handlers.hpp"
#include "support/log_recorder.hpp"
#include "support/no_memory.hpp"
#include "support/wire.hpp"

namespace mdm::test::app_test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Optional;

constexpr Handlers app(13);

enum class BodyForm { packages, num_pair, pair, raw };

BodyForm expected_form(int32_t type)
{
    static const std::map<int32_t, BodyForm> listed = {
        {4, BodyForm::packages},   {15, BodyForm::packages}, {140, BodyForm::num_pair},
        {141, BodyForm::num_pair}, {184, BodyForm::pair},    {185, BodyForm::pair},
    };
    const auto found = listed.find(type);
    return found == listed.end() ? BodyForm::raw : found->second;
}

mdm_body_t body(int32_t type, int32_t data_size, void *data, const char *pkg = nullptr)
{
    mdm_body_t body{};
    body.app = {type, 0xAAAAAAAA, 0x01020304, borrowed(pkg), data_size, data};
    return body;
}

// A body as a receiver that used its record before may hand it over.
mdm_body_t used_body()
{
    mdm_body_t body{};
    body.app = {-1, 0xBBBBBBBB, 0xCCCCCCCC, static_cast<char *>(sentinel()), -9, sentinel()};
    return body;
}

Cells packages(std::initializer_list<const char *> names)
{
    GList *list = nullptr;
    for (const char *name : names) {
        list = g_list_append(list, borrowed(name));
    }
    return Cells(list);
}

Bytes sized_and_written(mdm_body_t sent)
{
    const int32_t data_size = sent.app.data_size;
    const uint32_t size = app.size(&sent);
    EXPECT_EQ(app.size(&sent), size);
    EXPECT_EQ(sent.app.data_size, data_size);
    Bytes bytes = app.write(&sent);
    EXPECT_EQ(bytes.size(), size);
    return bytes;
}

// The head of a body without a package: a type, the data_size, both as four bytes.
Bytes head(const char *type, const char *data_size)
{
    return hex(type) + hex("04 03 02 01 00 00 00 00") + hex(data_size);
}

void expect_nothing_but_head_fields_read(const mdm_body_t &received, int32_t type,
                                         int32_t data_size)
{
    EXPECT_EQ(received.app.type, type);
    EXPECT_EQ(received.app.aux, 0xBBBBBBBBU);
    EXPECT_EQ(received.app.param, 0x01020304U);
    EXPECT_EQ(received.app.data_size, data_size);
}

const std::string long_text(300, 'x');

TEST(App, HeadCarriesAStringBetweenParamAndDataSize)
{
    EXPECT_EQ(sized_and_written(body(0x11223344, 0, nullptr, "abc")),
              hex("44 33 22 11 04 03 02 01 03 00 00 00 61 62 63 00 00 00 00"));
    EXPECT_EQ(sized_and_written(body(7, 0, nullptr)), head("07 00 00 00", "00 00 00 00"));
    EXPECT_EQ(sized_and_written(body(7, 0, nullptr, "")), head("07 00 00 00", "00 00 00 00"));
}

TEST(App, HeadComesBackFieldByField)
{
    for (const std::string &pkg :
         {std::string(), std::string("x"), std::string("\xC3\xA9\xFF"), long_text}) {
        mdm_body_t received = used_body();
        const Bytes bytes = sized_and_written(body(0x11223344, 0, nullptr, pkg.c_str()));
        AllocationTrace trace;
        EXPECT_EQ(app.read(&received, bytes), 16 + pkg.size());
        trace.stop();
        expect_nothing_but_head_fields_read(received, 0x11223344, 0);
        EXPECT_EQ(received.app.data, nullptr);
        if (pkg.empty()) {
            EXPECT_EQ(received.app.pkg, nullptr);
            EXPECT_THAT(trace.kept(), IsEmpty());
            continue;
        }
        EXPECT_EQ(received.app.pkg, pkg);
        EXPECT_THAT(trace.kept(), ElementsAre(Block{received.app.pkg, pkg.size() + 1}));
        g_free(received.app.pkg);
    }
}

TEST(App, DataSizeBelow1SendsTheHeadAloneWhateverTheType)
{
    for (const int32_t type : {4, 15, 140, 141, 184, 185, 7}) {
        for (const int32_t data_size : {0, -1, INT32_MIN}) {
            const Bytes bytes = sized_and_written(body(type, data_size, sentinel(), "abc"));
            EXPECT_EQ(bytes.size(), 19U);
            mdm_body_t received = used_body();
            EXPECT_EQ(app.read(&received, bytes), 19U);
            expect_nothing_but_head_fields_read(received, type, data_size);
            EXPECT_EQ(received.app.data, nullptr);
            app.release(&received);
        }
    }
}

// One body and one payload that every form can make something else of, so that a type's form
// shows in how many bytes are written, read and released.
TEST(App, TypeSelectsTheFormInEveryHandler)
{
    struct Marks {
        size_t written;
        size_t read;
        size_t released;
    };
    const std::map<BodyForm, Marks> marks = {
        {BodyForm::packages, {20, 28, 0}},
        {BodyForm::num_pair, {21, 24, 1}},
        {BodyForm::pair, {24, 26, 2}},
        {BodyForm::raw, {21, 21, 1}},
    };
    GList cell{};  // a list of a null name, or two null strings, or bytes
    for (const uint32_t number : swept_types({4, 15, 140, 141, 184, 185})) {
        const auto type = static_cast<int32_t>(number);
        SCOPED_TRACE(type);
        const BodyForm form = expected_form(type);
        const Bytes written = sized_and_written(body(type, 5, &cell));
        EXPECT_EQ(written.size(), marks.at(form).written);

        const Bytes bytes = Bytes(written.begin(), written.begin() + 16) +
                            hex("02 00 00 00 00 00 00 00 00 00 00 00");
        mdm_body_t received{};
        EXPECT_EQ(app.read(&received, bytes), marks.at(form).read);
        void *data = received.app.data;
        EXPECT_EQ(app.release(&received).size(), marks.at(form).released);
        const bool keeps_data = form == BodyForm::packages || form == BodyForm::pair;
        EXPECT_EQ(received.app.data, keeps_data ? data : nullptr);
        if (form == BodyForm::packages) {
            g_list_free(static_cast<GList *>(data));
        }
    }
}

TEST(App, PackagesFollowTheirCount)
{
    const Cells list = packages({"abc", "", "\xC3\xA9"});
    const Bytes bytes = sized_and_written(body(4, 1, list.get()));
    EXPECT_EQ(bytes, head("04 00 00 00", "01 00 00 00") +
                         hex("03 00 00 00 03 00 00 00 61 62 63 00 00 00 00 02 00 00 00 C3 A9"));

    mdm_body_t received = used_body();
    AllocationTrace trace;
    EXPECT_EQ(app.read(&received, bytes), bytes.size());
    trace.stop();
    expect_nothing_but_head_fields_read(received, 4, 1);
    EXPECT_EQ(received.app.pkg, nullptr);
    EXPECT_THAT(texts_of(received.app.data), ElementsAre(Optional(std::string("abc")), std::nullopt,
                                                         Optional(std::string("\xC3\xA9"))));
    const auto names = elements_of(received.app.data);
    const auto cells = cells_of(received.app.data);
    EXPECT_THAT(trace.kept(), ElementsAre(Block{names[0], 4}, Block{cells[0], sizeof(GList)},
                                          Block{cells[1], sizeof(GList)}, Block{names[2], 3},
                                          Block{cells[2], sizeof(GList)}));

    // Sent on, the list ends where the empty name was.
    EXPECT_EQ(sized_and_written(body(15, 1, received.app.data)),
              head("0F 00 00 00", "01 00 00 00") + hex("03 00 00 00 03 00 00 00 61 62 63"));
    g_list_free_full(static_cast<GList *>(received.app.data), g_free);
}

// Q-BODY-12
TEST(App, NullPackageEndsTheListButNotTheCount)
{
    const Cells list = packages({"a", nullptr, "b"});
    const Bytes bytes = sized_and_written(body(15, 1, list.get(), "p"));
    const Bytes expected = hex("0F 00 00 00 04 03 02 01 01 00 00 00 70 01 00 00 00") +
                           hex("03 00 00 00 01 00 00 00 61");
    EXPECT_EQ(bytes, expected);

    // The receiver takes the next bytes for the names that the count promised.
    mdm_body_t received = used_body();
    EXPECT_EQ(app.read(&received, bytes + hex("02 00 00 00 79 7A 00 00 00 00 FF")),
              expected.size() + 10);
    EXPECT_THAT(texts_of(received.app.data),
                ElementsAre(Optional(std::string("a")), Optional(std::string("yz")), std::nullopt));
    g_list_free_full(static_cast<GList *>(received.app.data), g_free);
    g_free(received.app.pkg);

    const Cells null_first = packages({nullptr, "b"});
    EXPECT_EQ(sized_and_written(body(4, 1, null_first.get())),
              head("04 00 00 00", "01 00 00 00") + hex("02 00 00 00"));
}

// Q-WIRE-4
TEST(App, PackagesBeginAtTheListsFirstElement)
{
    const Cells list = packages({"a", "b"});
    const Bytes bytes = sized_and_written(body(4, 1, list->next));
    EXPECT_EQ(Bytes(bytes.begin() + 20, bytes.end()), hex("01 00 00 00 61 01 00 00 00 62"));
}

TEST(App, NoPackagesAreACountOf0AndComeBackAsNull)
{
    const Bytes bytes = sized_and_written(body(4, 9, nullptr));
    EXPECT_EQ(bytes, head("04 00 00 00", "09 00 00 00") + hex("00 00 00 00"));
    for (const char *count : {"00 00 00 00", "FF FF FF FF", "00 00 00 80"}) {
        mdm_body_t received = used_body();
        EXPECT_EQ(app.read(&received, head("0F 00 00 00", "09 00 00 00") + hex(count)), 20U);
        EXPECT_EQ(received.app.data_size, 9);
        EXPECT_EQ(received.app.data, nullptr);
    }
}

TEST(App, NumberPairTravelsAs8Bytes)
{
    mdm_app_num_pair_t numbers = {0x11121314, 0xF1F2F3F4};
    for (const int32_t type : {140, 141}) {
        const Bytes bytes = sized_and_written(body(type, 8, &numbers));
        EXPECT_EQ(Bytes(bytes.begin() + 12, bytes.end()),
                  hex("08 00 00 00 14 13 12 11 F4 F3 F2 F1"));

        mdm_body_t received = used_body();
        AllocationTrace trace;
        EXPECT_EQ(app.read(&received, bytes), 24U);
        trace.stop();
        expect_nothing_but_head_fields_read(received, type, 8);
        const auto &back = *static_cast<mdm_app_num_pair_t *>(received.app.data);
        EXPECT_EQ(back.num1, 0x11121314U);
        EXPECT_EQ(back.num2, 0xF1F2F3F4U);
        EXPECT_THAT(trace.kept(), ElementsAre(Block{&back, sizeof numbers}));
        app.release(&received);
    }
}

// Q-APP-1
TEST(App, NumberPairIsWrittenByDataSizeAndReadAs8Bytes)
{
    struct Case {
        int32_t data_size;
        const char *written;
    };
    char bytes[] = "abcdefghijk";
    for (const auto &[data_size, written] :
         {Case{1, "61"}, Case{4, "61 62 63 64"}, Case{9, "61 62 63 64 65 66 67 68 69"}}) {
        const Bytes sent = sized_and_written(body(140, data_size, bytes));
        EXPECT_EQ(Bytes(sent.begin() + 16, sent.end()), hex(written));
        mdm_body_t received = used_body();
        EXPECT_EQ(app.read(&received, sent + Bytes(8)), 24U);
        EXPECT_EQ(received.app.data_size, data_size);
        app.release(&received);
    }
}

TEST(App, PairCarriesTwoStrings)
{
    mdm_app_pair_t strings = {borrowed("abc"), borrowed("hi")};
    for (const int32_t type : {184, 185}) {
        const Bytes bytes = sized_and_written(body(type, 1, &strings));
        EXPECT_EQ(Bytes(bytes.begin() + 12, bytes.end()),
                  hex("01 00 00 00 03 00 00 00 61 62 63 02 00 00 00 68 69"));

        mdm_body_t received = used_body();
        AllocationTrace trace;
        EXPECT_EQ(app.read(&received, bytes), bytes.size());
        trace.stop();
        expect_nothing_but_head_fields_read(received, type, 1);
        const auto &back = *static_cast<mdm_app_pair_t *>(received.app.data);
        EXPECT_STREQ(back.first, "abc");
        EXPECT_STREQ(back.second, "hi");
        EXPECT_THAT(trace.kept(), ElementsAre(Block{&back, sizeof strings}, Block{back.first, 4},
                                              Block{back.second, 3}));
        app.release(&received);
    }
}

TEST(App, NullAndEmptyStringsOfAPairComeBackAsNull)
{
    for (char *text : {static_cast<char *>(nullptr), borrowed("")}) {
        mdm_app_pair_t strings = {text, text};
        const Bytes bytes = sized_and_written(body(184, INT32_MAX, &strings));
        EXPECT_EQ(bytes, head("B8 00 00 00", "FF FF FF 7F") + Bytes(8));
        mdm_body_t received = used_body();
        EXPECT_EQ(app.read(&received, bytes), 24U);
        const auto &back = *static_cast<mdm_app_pair_t *>(received.app.data);
        EXPECT_EQ(back.first, nullptr);
        EXPECT_EQ(back.second, nullptr);
        app.release(&received);
    }
}

// Q-APP-2
TEST(App, MissingPairIsSentAsTheHeadAloneAndReadAllTheSame)
{
    const Bytes bytes = sized_and_written(body(184, 5, nullptr));
    EXPECT_EQ(bytes, head("B8 00 00 00", "05 00 00 00"));
    EXPECT_EQ(sized_and_written(body(185, 5, nullptr)), head("B9 00 00 00", "05 00 00 00"));
    mdm_body_t received = used_body();
    EXPECT_EQ(app.read(&received, bytes + hex("01 00 00 00 79 01 00 00 00 7A")), 26U);
    const auto &back = *static_cast<mdm_app_pair_t *>(received.app.data);
    EXPECT_STREQ(back.first, "y");
    EXPECT_STREQ(back.second, "z");
    app.release(&received);
}

// Q-APP-3
TEST(App, PairWithoutMemoryIsLeftUnread)
{
    mdm_app_pair_t strings = {borrowed("abc"), borrowed("hi")};
    const Bytes bytes = sized_and_written(body(185, 1, &strings));
    mdm_body_t received = used_body();
    LogRecorder log;
    {
        const NoMemory no_memory;
        EXPECT_EQ(app.read(&received, bytes), 16U);
    }
    EXPECT_THAT(log.take(), ElementsAre(critical(app.get, "malloc failed!")));
    expect_nothing_but_head_fields_read(received, 185, 1);
    EXPECT_EQ(received.app.pkg, nullptr);
    EXPECT_EQ(received.app.data, sentinel());
}

TEST(App, RawBytesComeBackAsATextThatAZeroByteEnds)
{
    char payload[] = "\xC3\0z";
    for (const int32_t data_size : {1, 3}) {
        const Bytes bytes = sized_and_written(body(7, data_size, payload));
        const Bytes sent = hex("C3 00 7A");
        EXPECT_EQ(Bytes(bytes.begin() + 16, bytes.end()),
                  Bytes(sent.begin(), sent.begin() + data_size));
        mdm_body_t received = used_body();
        AllocationTrace trace;
        EXPECT_EQ(app.read(&received, bytes), bytes.size());
        trace.stop();
        expect_nothing_but_head_fields_read(received, 7, data_size);
        const auto length = static_cast<size_t>(data_size);
        EXPECT_EQ(std::string(static_cast<char *>(received.app.data), length + 1),
                  "\xC3" + std::string(length, '\0'));
        EXPECT_THAT(trace.kept(), ElementsAre(Block{received.app.data, length + 1}));
        app.release(&received);
    }
}

TEST(App, SizeAddsDataSizeWithoutLookingAtTheBytes)
{
    for (const int32_t type : {7, 140, 141}) {
        mdm_body_t sent = body(type, INT32_MAX, nullptr, "abc");
        LogRecorder log;
        EXPECT_EQ(app.size(&sent), 0x80000012U);
        EXPECT_THAT(log.take(), ElementsAre(info(app.size, "size : -2147483630")));
    }
}

// Q-APP-4
TEST(App, FreeReleasesThePackageNameAndLeavesThePackages)
{
    for (const int32_t type : {4, 15}) {
        mdm_body_t received = body(type, 2, heap_list({"a", nullptr, "b"}), heap_text("pkg"));
        void *list = received.app.data;
        const void *pkg = received.app.pkg;
        LogRecorder log;
        EXPECT_THAT(app.release(&received), ElementsAre(pkg));
        EXPECT_EQ(received.app.pkg, nullptr);
        EXPECT_THAT(app.release(&received), IsEmpty());
        EXPECT_EQ(received.app.data, list);
        EXPECT_EQ(received.app.data_size, 2);
        EXPECT_THAT(log.take(), IsEmpty());
        EXPECT_EQ(texts_of(list).size(), 3U);
        g_list_free_full(static_cast<GList *>(list), g_free);
    }
}

// Q-BODY-7
TEST(App, FreeReleasesAPairAndKeepsThePointer)
{
    for (const int32_t type : {184, 185}) {
        auto *pair = g_new0(mdm_app_pair_t, 1);
        *pair = {heap_text("1"), heap_text("2")};
        const void *first = pair->first;
        const void *second = pair->second;
        mdm_body_t received = body(type, 0, pair, heap_text("pkg"));
        const void *pkg = received.app.pkg;
        LogRecorder log;
        EXPECT_THAT(app.release(&received), ElementsAre(pkg, first, second, pair));
        EXPECT_EQ(received.app.pkg, nullptr);
        EXPECT_EQ(received.app.data, pair);
        EXPECT_EQ(received.app.data_size, 0);
        EXPECT_THAT(log.take(), IsEmpty());
    }
}

// Q-BODY-5
TEST(App, FreeReleasesAnyOtherPayloadAndMayRunTwice)
{
    for (const int32_t type : {7, 140, 141}) {
        for (const int32_t data_size : {-1, 0, 8}) {
            mdm_body_t received = body(type, data_size, heap_text("12345678"), heap_text("pkg"));
            const void *pkg = received.app.pkg;
            const void *data = received.app.data;
            LogRecorder log;
            EXPECT_THAT(app.release(&received), ElementsAre(pkg, data));
            EXPECT_THAT(log.take(), IsEmpty());
            EXPECT_THAT(app.release(&received), IsEmpty());
            EXPECT_THAT(log.take(), ElementsAre(leave(app.free)));
            EXPECT_EQ(received.app.pkg, nullptr);
            EXPECT_EQ(received.app.data, nullptr);
            EXPECT_EQ(received.app.data_size, data_size);
        }
    }
}

// Q-BODY-13
TEST(App, FreeWithoutDataReleasesThePackageNameAndLogsItsExit)
{
    for (const int32_t type : {4, 15, 140, 141, 184, 185, 7}) {
        mdm_body_t received = body(type, 3, nullptr, heap_text("pkg"));
        const void *pkg = received.app.pkg;
        LogRecorder log;
        EXPECT_THAT(app.release(&received), ElementsAre(pkg));
        EXPECT_EQ(received.app.pkg, nullptr);
        EXPECT_EQ(received.app.data_size, 3);
        EXPECT_THAT(log.take(), ElementsAre(leave(app.free)));
    }
}

// The information that each handler logs. Names that the count promises and that are not written
// are read as empty ones.
void expect_lines(const mdm_body_t &sent, const std::vector<std::string> &size_lines,
                  const std::vector<std::string> &set_lines,
                  const std::vector<std::string> &get_lines)
{
    expect_infos(app, sent, Bytes(8), size_lines, set_lines, get_lines);
}

TEST(App, EveryPackageIsLogged)
{
    const Cells list = packages({"abc", "", "d"});
    const Cells interrupted = packages({"abc", nullptr, "d"});
    for (const int32_t type : {4, 15}) {
        expect_lines(body(type, 1, list.get()),
                     {"len : 3", "pkg_name : abc", "pkg_name : ", "pkg_name : d", "size : 36"},
                     {"len : 3", "pkg_name : abc", "pkg_name : ", "pkg_name : d"},
                     {"len : 3", "pkg_name : abc", "pkg_name : (null)", "pkg_name : d"});
        expect_lines(body(type, 1, interrupted.get()), {"len : 3", "pkg_name : abc", "size : 27"},
                     {"len : 3", "pkg_name : abc"},
                     {"len : 3", "pkg_name : abc", "pkg_name : (null)", "pkg_name : (null)"});
        expect_lines(body(type, 1, nullptr), {"len : 0", "size : 20"}, {"len : 0"}, {"len : 0"});
    }
    mdm_body_t received{};
    LogRecorder log;
    app.read(&received, head("04 00 00 00", "01 00 00 00") + hex("FE FF FF FF"));
    EXPECT_THAT(log.take(), ElementsAre(info(app.get, "len : -2")));
}

TEST(App, BothStringsOfAPairAreLogged)
{
    mdm_app_pair_t strings = {borrowed("abc"), borrowed("hi")};
    mdm_app_pair_t half = {nullptr, borrowed("hi")};
    for (const int32_t type : {184, 185}) {
        expect_lines(body(type, 1, &strings), {"size : 29"}, {"[abc,hi]"}, {"[abc,hi]"});
        expect_lines(body(type, 1, &half), {"size : 26"}, {"[(null),hi]"}, {"[(null),hi]"});
        expect_lines(body(type, 1, nullptr), {"size : 16"}, {}, {"[(null),(null)]"});
    }
}

// Q-BODY-13
TEST(App, OtherBodiesLogTheirSizeOnly)
{
    char payload[] = "12345678";
    for (const int32_t type : {7, 140, 141}) {
        expect_lines(body(type, 8, payload), {"size : 24"}, {}, {});
    }
    for (const int32_t type : {4, 15, 140, 141, 184, 185, 7}) {
        expect_lines(body(type, 0, payload, "abc"), {"size : 19"}, {}, {});
    }
}

TEST(App, WholeMessageLeaksNothingButThePackages)
{
    char payload[] = "12345678";
    mdm_app_pair_t strings = {borrowed(long_text.c_str()), borrowed("hi")};
    const Journey raw = travel(app.type, body(7, 6, payload, "pkg"));
    EXPECT_THAT(raw.allocated, ElementsAre(4, 7));
    EXPECT_THAT(raw.kept, IsEmpty());
    const Journey numbers = travel(app.type, body(141, 8, payload, "pkg"));
    EXPECT_THAT(numbers.allocated, ElementsAre(4, sizeof(mdm_app_num_pair_t)));
    EXPECT_THAT(numbers.kept, IsEmpty());
    const Journey pair = travel(app.type, body(184, 1, &strings, "pkg"));
    EXPECT_THAT(pair.allocated, ElementsAre(4, sizeof strings, 301, 3));
    EXPECT_THAT(pair.kept, IsEmpty());
}

TEST(App, WholeMessageKeepsItsPackagesInOrder)
{
    std::vector<std::string> names;
    GList *cells = nullptr;
    for (int i = 0; i < 500; ++i) {
        names.push_back(std::to_string(i) + (i == 250 ? long_text : ".app"));
    }
    for (std::string &name : names) {
        cells = g_list_prepend(cells, name.data());
    }
    const Cells list(g_list_reverse(cells));
    const Journey done = travel(app.type, body(15, 1, list.get(), "pkg"));
    EXPECT_EQ(done.allocated.size(), 1001U);
    EXPECT_EQ(done.kept.size(), 1000U);
    EXPECT_EQ(done.received.body.app.pkg, nullptr);
    const auto *kept = static_cast<const GList *>(done.received.body.app.data);
    std::vector<std::string> back;
    for (const auto &name : texts_of(kept)) {
        back.push_back(name.value_or("null"));
    }
    EXPECT_EQ(back, names);
    EXPECT_EQ(kept->prev, nullptr);
    release_blocks(done.kept);
}

}  // namespace
}  // namespace mdm::test::app_test
