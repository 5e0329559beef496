// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>
#include <map>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/allocation_trace.hpp"
#include "support/bodies.hpp"
#include "support/handlers.hpp"
#include "support/log_recorder.hpp"
#include "support/wire.hpp"

namespace mdm::test::app_res_test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Optional;

constexpr Handlers app_res(14);

constexpr std::array package_types = {3, 155, 159, 162, 168, 169, 170, 171, 176, 177};
constexpr std::array item_types = {140, 141, 142};
constexpr std::array control_types = {172, 173, 174, 175};
// One type of each form, raw last.
constexpr std::array sample_types = {162, 141, 142, 173, 143};

enum class BodyForm { packages, items, controls, raw };

BodyForm expected_form(int32_t type)
{
    const auto listed = [type](const auto &types) {
        return std::find(types.begin(), types.end(), type) != types.end();
    };
    return listed(package_types)   ? BodyForm::packages
           : listed(item_types)    ? BodyForm::items
           : listed(control_types) ? BodyForm::controls
                                   : BodyForm::raw;
}

mdm_body_t body(int32_t type, int32_t data_size, void *data, const char *pkg = nullptr)
{
    mdm_body_t body{};
    body.app_res = {type, 0xAAAAAAAA, 0x01020304, borrowed(pkg), data_size, data};
    return body;
}

// The size handler leaves the body as it is. The set handler writes `unwritten` bytes fewer than
// the size.
Bytes sized_and_written(mdm_body_t sent, uint32_t unwritten = 0)
{
    const int32_t data_size = sent.app_res.data_size;
    const uint32_t size = app_res.size(&sent);
    EXPECT_EQ(app_res.size(&sent), size);
    EXPECT_EQ(sent.app_res.data_size, data_size);
    Bytes bytes = app_res.write(&sent);
    EXPECT_EQ(bytes.size() + unwritten, size);
    return bytes;
}

// The head of a body without a package, a data_size of 1 in it.
Bytes head(int32_t type)
{
    return Bytes{static_cast<uint8_t>(type)} + hex("00 00 00 04 03 02 01 00 00 00 00 01 00 00 00");
}

struct Received {
    mdm_body_t body;
    size_t consumed;
    std::vector<Block> kept;

    const mdm_app_res_info_t &info() const { return body.app_res; }
    GList *list() const { return static_cast<GList *>(body.app_res.data); }
};

// Reads into a record that was used before.
Received read(const Bytes &bytes)
{
    mdm_body_t used{};
    used.app_res = {-1, 0xBBBBBBBB, 0xCCCCCCCC, static_cast<char *>(sentinel()), -9, sentinel()};
    AllocationTrace trace;
    const size_t consumed = app_res.read(&used, bytes);
    trace.stop();
    EXPECT_EQ(used.app_res.aux, 0xBBBBBBBBU);
    EXPECT_EQ(used.app_res.param, 0x01020304U);
    return {used, consumed, trace.kept()};
}

template <class Record>
const Record &record(const void *element)
{
    return *static_cast<const Record *>(element);
}

// Releases records that stay behind.
void release(const std::vector<const void *> &records)
{
    for (const void *element : records) {
        g_free(const_cast<void *>(element));
    }
}

// Releases a received body with the records that stay behind; returns the blocks that the free
// handler released itself.
std::vector<const void *> release(mdm_body_t &received)
{
    std::vector<const void *> kept;
    if (expected_form(received.app_res.type) == BodyForm::controls &&
        received.app_res.data_size > 0) {
        kept = elements_of(received.app_res.data);
    }
    auto released = app_res.release(&received);
    release(kept);
    return released;
}

mdm_app_res_item_t *heap_item(const char *name, uint32_t value)
{
    auto *item = g_new0(mdm_app_res_item_t, 1);
    *item = {heap_text(name), value};
    return item;
}

mdm_app_control_info_t *heap_control(int32_t client_id, GList *pkg_list)
{
    auto *control = g_new0(mdm_app_control_info_t, 1);
    *control = {client_id, pkg_list};
    return control;
}

TEST(AppRes, HeadCarriesAStringBetweenParamAndDataSize)
{
    const Bytes bytes = sized_and_written(body(-2, 0, nullptr, "abc"));
    EXPECT_EQ(bytes, hex("FE FF FF FF 04 03 02 01 03 00 00 00 61 62 63 00 00 00 00"));
    Received received = read(bytes);
    EXPECT_EQ(received.consumed, 19U);
    EXPECT_EQ(received.info().type, -2);
    EXPECT_STREQ(received.info().pkg, "abc");
    EXPECT_EQ(received.info().data_size, 0);
    EXPECT_EQ(received.info().data, nullptr);
    EXPECT_THAT(received.kept, ElementsAre(Block{received.info().pkg, 4}));
    release(received.body);
}

TEST(AppRes, PackageNameOfAnyLengthTravels)
{
    for (const std::string &pkg :
         {std::string(), std::string("x"), std::string("\xC3\xA9\xFF"), std::string(300, 'p')}) {
        const Bytes bytes = sized_and_written(body(7, 1, borrowed("z"), pkg.c_str()));
        EXPECT_EQ(bytes.size(), 17 + pkg.size());
        Received received = read(bytes);
        EXPECT_EQ(received.consumed, bytes.size());
        const char *back = received.info().pkg;
        EXPECT_EQ(back == nullptr, pkg.empty());
        EXPECT_EQ(back == nullptr ? "" : back, pkg);
        EXPECT_STREQ(static_cast<char *>(received.info().data), "z");
        release(received.body);
    }
    EXPECT_EQ(sized_and_written(body(3, 1, nullptr)), head(3) + Bytes(4));
}

TEST(AppRes, DataSizeBelow1SendsTheHeadAloneWhateverTheType)
{
    const Cells list = cells({borrowed("abc")});
    for (const int32_t type : sample_types) {
        for (const int32_t data_size : {0, -1, INT32_MIN}) {
            const Bytes bytes = sized_and_written(body(type, data_size, list.get()));
            EXPECT_EQ(bytes.size(), 16U);
            const Received received = read(bytes);
            EXPECT_EQ(received.consumed, 16U);
            EXPECT_EQ(received.info().type, type);
            EXPECT_EQ(received.info().data_size, data_size);
            EXPECT_EQ(received.info().data, nullptr);
        }
    }
}

// One body and one payload that every form makes something else of, so that a type's form shows
// in how many bytes are sized, written, read and how many blocks are released.
TEST(AppRes, TypeSelectsTheFormInEveryHandler)
{
    struct Marks {
        uint32_t sized;
        size_t written;
        size_t read;
        size_t released;
    };
    const std::map<BodyForm, Marks> marks = {
        {BodyForm::packages, {24, 24, 26, 2}},
        {BodyForm::items, {28, 20, 30, 3}},
        {BodyForm::controls, {28, 28, 32, 2}},
        {BodyForm::raw, {21, 21, 21, 1}},
    };
    mdm_app_control_info_t element{};  // or an item without a name, or an empty string
    const Cells list = cells({&element});
    for (const uint32_t number : swept_types(
             {3, 155, 159, 162, 168, 169, 170, 171, 176, 177, 140, 141, 142, 172, 173, 174, 175})) {
        const auto type = static_cast<int32_t>(number);
        SCOPED_TRACE(type);
        const Marks &expected = marks.at(expected_form(type));
        const Bytes written = sized_and_written(
            body(type, 5, list.get()), expected.sized - static_cast<uint32_t>(expected.written));
        EXPECT_EQ(written.size(), expected.written);

        Received received = read(Bytes(written.begin(), written.begin() + 16) +
                                 hex("01 00 00 00 02 00 00 00 01 00 00 00 00 00 00 00"));
        EXPECT_EQ(received.consumed, expected.read);
        EXPECT_EQ(release(received.body).size(), expected.released);
    }
}

TEST(AppRes, PackagesFollowTheirCount)
{
    const Cells list = cells({borrowed("abc"), borrowed(""), borrowed("\xC3\xA9")});
    for (const int32_t type : package_types) {
        SCOPED_TRACE(type);
        const Bytes bytes = sized_and_written(body(type, 1, list.get()));
        EXPECT_EQ(bytes, head(type) +
                             hex("03 00 00 00 03 00 00 00 61 62 63 00 00 00 00 02 00 00 00 C3 A9"));
        Received received = read(bytes);
        EXPECT_EQ(received.consumed, bytes.size());
        EXPECT_EQ(received.info().type, type);
        EXPECT_EQ(received.info().data_size, 1);
        EXPECT_THAT(texts_of(received.list()),
                    ElementsAre(Optional(std::string("abc")), std::nullopt,
                                Optional(std::string("\xC3\xA9"))));
        const auto names = elements_of(received.list());
        const auto cells = cells_of(received.list());
        EXPECT_THAT(received.kept, ElementsAre(Block{names[0], 4}, Block{cells[0], sizeof(GList)},
                                               Block{cells[1], sizeof(GList)}, Block{names[2], 3},
                                               Block{cells[2], sizeof(GList)}));
        release(received.body);
    }
}

// Q-BODY-12
TEST(AppRes, NullPackageEndsTheListButNotTheCount)
{
    const Cells list = cells({borrowed("a"), nullptr, borrowed("b")});
    const Bytes bytes = sized_and_written(body(3, 1, list.get()));
    EXPECT_EQ(bytes, head(3) + hex("03 00 00 00 01 00 00 00 61"));
    Received received = read(bytes + hex("02 00 00 00 79 7A 00 00 00 00 FF"));
    EXPECT_EQ(received.consumed, bytes.size() + 10);
    EXPECT_THAT(texts_of(received.list()),
                ElementsAre(Optional(std::string("a")), Optional(std::string("yz")), std::nullopt));
    release(received.body);
}

TEST(AppRes, ItemsCarryTheirNameBeforeTheirValue)
{
    mdm_app_res_item_t first = {borrowed("abc"), 0xF1F2F3F4};
    mdm_app_res_item_t second = {borrowed("\xC3\xA9"), 0};
    const Cells list = cells({&first, &second});
    for (const int32_t type : item_types) {
        SCOPED_TRACE(type);
        const Bytes bytes = sized_and_written(body(type, 1, list.get()));
        EXPECT_EQ(bytes, head(type) + hex("02 00 00 00 03 00 00 00 61 62 63 F4 F3 F2 F1 "
                                          "02 00 00 00 C3 A9 00 00 00 00"));
        Received received = read(bytes);
        EXPECT_EQ(received.consumed, bytes.size());
        const auto items = elements_of(received.list());
        const auto cells = cells_of(received.list());
        ASSERT_EQ(items.size(), 2U);
        const auto &back = record<mdm_app_res_item_t>(items[0]);
        EXPECT_STREQ(back.name, "abc");
        EXPECT_EQ(back.value, 0xF1F2F3F4U);
        EXPECT_STREQ(record<mdm_app_res_item_t>(items[1]).name, "\xC3\xA9");
        EXPECT_EQ(record<mdm_app_res_item_t>(items[1]).value, 0U);
        EXPECT_EQ(received.kept.size(), 6U);
        EXPECT_EQ(received.kept[0], (Block{items[0], sizeof first}));
        EXPECT_EQ(received.kept[1], (Block{back.name, 4}));
        EXPECT_EQ(received.kept[2], (Block{cells[0], sizeof(GList)}));
        release(received.body);
    }
}

// Q-APP_RES-1
TEST(AppRes, ItemWithoutANameIsSizedAndCountedButNotWritten)
{
    mdm_app_res_item_t a = {borrowed("a"), 1};
    mdm_app_res_item_t unnamed = {nullptr, 2};
    mdm_app_res_item_t c = {borrowed("c"), 3};
    mdm_app_res_item_t empty = {borrowed(""), 4};
    const Cells list = cells({&a, &unnamed, &c});
    for (const int32_t type : item_types) {
        EXPECT_EQ(sized_and_written(body(type, 1, list.get()), 8),
                  head(type) + hex("03 00 00 00 01 00 00 00 61 01 00 00 00 "
                                   "01 00 00 00 63 03 00 00 00"));
    }
    const Cells two = cells({&unnamed, &empty, &unnamed});
    EXPECT_EQ(sized_and_written(body(140, 1, two.get()), 16),
              head(140) + hex("03 00 00 00 00 00 00 00 04 00 00 00"));
}

// Q-BODY-12
TEST(AppRes, NullItemEndsTheListButNotTheCount)
{
    mdm_app_res_item_t a = {borrowed("a"), 1};
    const Cells list = cells({&a, nullptr, &a});
    for (const int32_t type : item_types) {
        EXPECT_EQ(sized_and_written(body(type, 1, list.get())),
                  head(type) + hex("03 00 00 00 01 00 00 00 61 01 00 00 00"));
    }
}

TEST(AppRes, ControlsCarryAClientAndItsPackages)
{
    const Cells packages = cells({borrowed("abc"), borrowed("\xC3\xA9")});
    mdm_app_control_info_t first = {-2, packages.get()};
    mdm_app_control_info_t second = {0x01020304, nullptr};
    const Cells list = cells({&first, &second});
    for (const int32_t type : control_types) {
        SCOPED_TRACE(type);
        const Bytes bytes = sized_and_written(body(type, 1, list.get()));
        EXPECT_EQ(bytes, head(type) + hex("02 00 00 00 FE FF FF FF 02 00 00 00 03 00 00 00 61 62 "
                                          "63 02 00 00 00 C3 A9 04 03 02 01 00 00 00 00"));
        Received received = read(bytes);
        EXPECT_EQ(received.consumed, bytes.size());
        const auto controls = elements_of(received.list());
        ASSERT_EQ(controls.size(), 2U);
        const auto &back = record<mdm_app_control_info_t>(controls[0]);
        EXPECT_EQ(back.client_id, -2);
        EXPECT_THAT(texts_of(back.pkg_list),
                    ElementsAre(Optional(std::string("abc")), Optional(std::string("\xC3\xA9"))));
        EXPECT_EQ(record<mdm_app_control_info_t>(controls[1]).client_id, 0x01020304);
        EXPECT_EQ(record<mdm_app_control_info_t>(controls[1]).pkg_list, nullptr);
        EXPECT_EQ(received.kept.size(), 8U);
        EXPECT_EQ(received.kept[0], (Block{controls[0], sizeof first}));
        release(received.body);
    }
}

// Q-BODY-12
TEST(AppRes, NullElementsEndBothListsOfControlsButNotTheCounts)
{
    const Cells packages = cells({borrowed("a"), nullptr, borrowed("b")});
    mdm_app_control_info_t control = {5, packages.get()};
    const Cells list = cells({&control, nullptr, &control});
    for (const int32_t type : control_types) {
        EXPECT_EQ(sized_and_written(body(type, 1, list.get())),
                  head(type) + hex("03 00 00 00 05 00 00 00 03 00 00 00 01 00 00 00 61"));
    }
}

TEST(AppRes, ReceivedControlsMayHoldEmptyPackagesOrNone)
{
    Received received =
        read(head(172) + hex("03 00 00 00 01 00 00 00 02 00 00 00 00 00 00 00 01 00 00 00 7A "
                             "02 00 00 00 FF FF FF FF 03 00 00 00 00 00 00 80"));
    EXPECT_EQ(received.consumed, 16U + 4 + 17 + 8 + 8);
    const auto controls = elements_of(received.list());
    ASSERT_EQ(controls.size(), 3U);
    EXPECT_THAT(texts_of(record<mdm_app_control_info_t>(controls[0]).pkg_list),
                ElementsAre(std::nullopt, Optional(std::string("z"))));
    for (const int i : {1, 2}) {
        const auto &control = record<mdm_app_control_info_t>(controls[static_cast<size_t>(i)]);
        EXPECT_EQ(control.client_id, i + 1);
        EXPECT_EQ(control.pkg_list, nullptr);
    }
    release(received.body);
}

// Q-WIRE-4
TEST(AppRes, ListsBeginAtTheirFirstElement)
{
    mdm_app_res_item_t item = {borrowed("a"), 1};
    mdm_app_control_info_t control = {5, nullptr};
    const Cells packages = cells({borrowed("a"), borrowed("b")});
    const Cells items = cells({&item, &item});
    const Cells controls = cells({&control, &control});
    EXPECT_EQ(sized_and_written(body(3, 1, packages.get()->next)).size(), 16U + 4 + 5 + 5);
    EXPECT_EQ(sized_and_written(body(142, 1, items.get()->next)).size(), 16U + 4 + 9 + 9);
    EXPECT_EQ(sized_and_written(body(175, 1, controls.get()->next)).size(), 16U + 4 + 8 + 8);
}

TEST(AppRes, EmptyListsAreACountOf0AndComeBackAsNull)
{
    for (const int32_t type : {162, 140, 142, 174}) {
        SCOPED_TRACE(type);
        EXPECT_EQ(sized_and_written(body(type, 1, nullptr)), head(type) + Bytes(4));
        for (const char *count : {"00 00 00 00", "FF FF FF FF", "00 00 00 80"}) {
            const Received received = read(head(type) + hex(count));
            EXPECT_EQ(received.consumed, 20U);
            EXPECT_EQ(received.info().data_size, 1);
            EXPECT_EQ(received.info().data, nullptr);
            EXPECT_THAT(received.kept, IsEmpty());
        }
    }
}

TEST(AppRes, EveryOtherTypeIsRawAndEndsAtItsFirstZeroByte)
{
    char payload[] = "a\xC3\xA9\0bc";
    const Bytes bytes = sized_and_written(body(143, 6, payload));
    EXPECT_EQ(Bytes(bytes.begin() + 12, bytes.end()), hex("06 00 00 00 61 C3 A9 00 62 63"));
    Received received = read(bytes);
    EXPECT_EQ(received.consumed, 22U);
    EXPECT_EQ(received.info().data_size, 6);
    EXPECT_EQ(std::string(static_cast<char *>(received.info().data), 7),
              std::string("a\xC3\xA9\0\0\0\0", 7));
    EXPECT_THAT(received.kept, ElementsAre(Block{received.info().data, 7}));
    release(received.body);

    mdm_body_t endless = body(143, INT32_MAX, nullptr, "abc");
    EXPECT_EQ(app_res.size(&endless), 0x80000012U);
}

TEST(AppRes, FreeReleasesPackagesThenCellsThenThePackageName)
{
    for (const int32_t type : package_types) {
        mdm_body_t received = body(type, 1, heap_list({"a", nullptr, "b"}), heap_text("pkg"));
        const void *pkg = received.app_res.pkg;
        const auto names = elements_of(received.app_res.data);
        const auto cells = cells_of(received.app_res.data);
        LogRecorder log;
        EXPECT_THAT(app_res.release(&received),
                    ElementsAre(names[0], names[2], cells[0], cells[1], cells[2], pkg));
        EXPECT_EQ(received.app_res.data, nullptr);
        EXPECT_EQ(received.app_res.pkg, nullptr);
        EXPECT_EQ(received.app_res.data_size, 1);
        EXPECT_THAT(log.take(), IsEmpty());
        EXPECT_THAT(app_res.release(&received), IsEmpty());
        EXPECT_THAT(log.take(), ElementsAre(leave(app_res.free)));
    }
}

// Q-BODY-7
TEST(AppRes, FreeReleasesItemsUpToANullOneAndKeepsThePointer)
{
    for (const int32_t type : item_types) {
        auto *first = heap_item("a", 1);
        auto *second = heap_item(nullptr, 0xFFFFFFFF);
        auto *behind = heap_item("b", 3);
        GList *list = list_of({first, second, nullptr, behind});
        mdm_body_t received = body(type, 1, list, heap_text("pkg"));
        const void *pkg = received.app_res.pkg;
        const void *name = first->name;
        const auto cells = cells_of(list);
        LogRecorder log;
        EXPECT_THAT(app_res.release(&received),
                    ElementsAre(name, first, second, cells[0], cells[1], cells[2], cells[3], pkg));
        EXPECT_EQ(received.app_res.data, list);
        EXPECT_EQ(received.app_res.pkg, nullptr);
        EXPECT_EQ(received.app_res.data_size, 1);
        EXPECT_EQ(log.take(), infos(app_res.free, {"a(1)", "(null)(4294967295)"}));
        EXPECT_STREQ(behind->name, "b");
        release({behind->name, behind});
    }
}

// Q-APP_RES-5
TEST(AppRes, FreeReleasesTheListsOfControlsAndLeavesTheRecords)
{
    for (const int32_t type : control_types) {
        auto *first = heap_control(1, heap_list({"a", nullptr, "b"}));
        auto *second = heap_control(2, nullptr);
        auto *behind = heap_control(3, heap_list({"c"}));
        GList *list = list_of({first, second, nullptr, behind});
        mdm_body_t received = body(type, 1, list, heap_text("pkg"));
        const void *pkg = received.app_res.pkg;
        const GList *dangling = first->pkg_list;
        const auto names = elements_of(dangling);
        const auto inner = cells_of(dangling);
        const auto outer = cells_of(list);
        LogRecorder log;
        EXPECT_THAT(app_res.release(&received),
                    ElementsAre(names[0], names[2], inner[0], inner[1], inner[2], outer[0],
                                outer[1], outer[2], outer[3], pkg));
        EXPECT_EQ(received.app_res.data, nullptr);
        EXPECT_EQ(received.app_res.pkg, nullptr);
        EXPECT_EQ(received.app_res.data_size, 1);
        EXPECT_EQ(first->client_id, 1);
        EXPECT_EQ(first->pkg_list, dangling);
        EXPECT_THAT(texts_of(behind->pkg_list), ElementsAre(Optional(std::string("c"))));
        EXPECT_THAT(app_res.release(&received), IsEmpty());
        EXPECT_THAT(log.take(), ElementsAre(leave(app_res.free)));
        g_list_free_full(behind->pkg_list, g_free);
        release({first, second, behind});
    }
}

TEST(AppRes, FreeReleasesAnyOtherPayloadThenThePackageName)
{
    for (const int32_t type : {0, 4, 143, 178}) {
        mdm_body_t received = body(type, 3, heap_text("abc"), heap_text("pkg"));
        const void *pkg = received.app_res.pkg;
        const void *data = received.app_res.data;
        LogRecorder log;
        EXPECT_THAT(app_res.release(&received), ElementsAre(data, pkg));
        EXPECT_EQ(received.app_res.data, nullptr);
        EXPECT_EQ(received.app_res.pkg, nullptr);
        EXPECT_EQ(received.app_res.data_size, 3);
        EXPECT_THAT(log.take(), IsEmpty());
    }
}

// Q-BODY-5
TEST(AppRes, FreeLooksAtDataOnlyWhenDataSizeIsAtLeast1)
{
    for (const int32_t type : sample_types) {
        for (const int32_t data_size : {0, -1, INT32_MIN}) {
            mdm_body_t received = body(type, data_size, sentinel(), heap_text("pkg"));
            const void *pkg = received.app_res.pkg;
            LogRecorder log;
            EXPECT_THAT(app_res.release(&received), ElementsAre(pkg));
            EXPECT_EQ(received.app_res.pkg, nullptr);
            EXPECT_EQ(received.app_res.data, sentinel());
            EXPECT_EQ(received.app_res.data_size, data_size);
            EXPECT_THAT(app_res.release(&received), IsEmpty());
            EXPECT_THAT(log.take(), IsEmpty());
        }
    }
}

// Q-APP_RES-4
TEST(AppRes, FreeOfAnAnnouncedButMissingPayloadLeavesThePackageName)
{
    for (const int32_t type : sample_types) {
        mdm_body_t received = body(type, 1, nullptr, heap_text("pkg"));
        char *pkg = received.app_res.pkg;
        LogRecorder log;
        EXPECT_THAT(app_res.release(&received), IsEmpty());
        EXPECT_EQ(received.app_res.pkg, pkg);
        EXPECT_STREQ(pkg, "pkg");
        EXPECT_THAT(log.take(), ElementsAre(leave(app_res.free)));
        g_free(pkg);
    }
}

// The information that each handler logs. The receiver reads the sender's bytes and zeros.
void expect_lines(const mdm_body_t &sent, const std::vector<std::string> &size_lines,
                  const std::vector<std::string> &set_lines,
                  const std::vector<std::string> &get_lines)
{
    expect_infos(app_res, sent, Bytes(32), size_lines, set_lines, get_lines);
}

// Q-APP_RES-3
TEST(AppRes, PackagesAreLoggedByTheSizeHandlerOnly)
{
    const Cells list = cells({borrowed("abc"), borrowed(""), borrowed("d")});
    const Cells interrupted = cells({borrowed("abc"), nullptr, borrowed("d")});
    for (const int32_t type : package_types) {
        expect_lines(body(type, 1, list.get()),
                     {"len : 3", "pkg : abc", "pkg : ", "pkg : d", "size : 36"}, {"len : 3"},
                     {"len : 3"});
        expect_lines(body(type, 1, interrupted.get()), {"len : 3", "pkg : abc", "size : 27"},
                     {"len : 3"}, {"len : 3"});
    }
}

// Q-APP_RES-2
TEST(AppRes, ItemsAreLoggedUpToANullOne)
{
    mdm_app_res_item_t a = {borrowed("a"), 0xFFFFFFFF};
    mdm_app_res_item_t unnamed = {nullptr, 2};
    const Cells list = cells({&a, &unnamed, nullptr, &a});
    for (const int32_t type : item_types) {
        // A receiver of the other two types sees the value with a sign.
        const char *received = type == 142 ? "a(4294967295)" : "a(-1)";
        expect_lines(body(type, 1, list.get()),
                     {"len : 4", "a(4294967295)", "(null)(2)", "size : 37"},
                     {"len : 4", "a(4294967295)", "(null)(2)"},
                     {"len : 4", received, "(null)(0)", "(null)(0)", "(null)(0)"});
    }
}

// Q-APP_RES-3, Q-APP_RES-6
TEST(AppRes, ControlsAreLoggedWithTheirPackages)
{
    const Cells packages = cells({borrowed("a"), borrowed("b")});
    const Cells interrupted = cells({nullptr, borrowed("b")});
    mdm_app_control_info_t first = {-7, packages.get()};
    mdm_app_control_info_t second = {8, nullptr};
    mdm_app_control_info_t third = {9, interrupted.get()};
    const Cells list = cells({&first, &second, &third, nullptr, &first});
    for (const int32_t type : control_types) {
        expect_lines(body(type, 1, list.get()),
                     {"len : 5", "app_control_info->client_id : -7", "len2 : 2",
                      "app_control_info->client_id : 8", "app_control_info->client_id : 9",
                      "len2 : 2", "size : 54"},
                     {"len : 5", "app_control_info->client_id : -7", "len2 : 2",
                      "app_control_info->client_id : 8", "len2 : 0",
                      "app_control_info->client_id : 9", "len2 : 2"},
                     // Names and records that the counts promise are read from the zeros behind.
                     {"len : 5", "client_id : -7", "len2 : 2", "name : a", "name : b",
                      "client_id : 8", "len2 : 0", "client_id : 9", "len2 : 2", "name : (null)",
                      "name : (null)", "client_id : 0", "len2 : 0", "client_id : 0", "len2 : 0"});
    }
}

// Q-BODY-13
TEST(AppRes, OtherBodiesLogTheirSizeOnly)
{
    const Cells list = cells({borrowed("abc")});
    expect_lines(body(143, 3, borrowed("abc")), {"size : 19"}, {}, {});
    for (const int32_t type : sample_types) {
        expect_lines(body(type, 0, list.get(), "abc"), {"size : 19"}, {}, {});
    }
}

TEST(AppRes, CountsAreLoggedEvenWhenNothingFollows)
{
    for (const int32_t type : {162, 141, 142, 173}) {
        expect_lines(body(type, 1, nullptr), {"len : 0", "size : 20"}, {"len : 0"}, {"len : 0"});
        LogRecorder log;
        read(head(type) + hex("FE FF FF FF"));
        EXPECT_THAT(log.take(), ElementsAre(info(app_res.get, "len : -2")));
    }
}

TEST(AppRes, WholeMessageLeaksNothingButRecordsOfControls)
{
    const Cells packages = cells({borrowed("a"), borrowed(""), borrowed("c")});
    mdm_app_res_item_t item = {borrowed("a"), 1};
    const Cells items = cells({&item, &item});
    mdm_app_control_info_t control = {5, packages.get()};
    const Cells controls = cells({&control, &control});
    for (const mdm_body_t &sent :
         {body(177, 1, packages.get(), "pkg"), body(142, 1, items.get(), "pkg"),
          body(143, 3, borrowed("abc"), "pkg")}) {
        EXPECT_THAT(travel(app_res.type, sent).kept, IsEmpty());
    }

    const Journey journey = travel(app_res.type, body(173, 1, controls.get(), "pkg"));
    EXPECT_EQ(journey.received.body.app_res.data, nullptr);
    ASSERT_EQ(journey.kept.size(), 2U);
    for (const Block &block : journey.kept) {
        EXPECT_EQ(block.size, sizeof control);
        EXPECT_EQ(record<mdm_app_control_info_t>(block.address).client_id, 5);
    }
    release_blocks(journey.kept);
}

TEST(AppRes, WholeMessageWithAnEmptyListLeaksThePackageName)
{
    for (const int32_t type : {3, 140, 172}) {
        const Journey journey = travel(app_res.type, body(type, 1, nullptr, "pkg"));
        EXPECT_THAT(journey.kept, ElementsAre(Block{journey.received.body.app_res.pkg, 4}));
        release_blocks(journey.kept);
    }
}

// Q-APP_RES-1
TEST(AppRes, ZerosOfAnItemWithoutANameTravelAtTheEndOfTheMessage)
{
    mdm_app_res_item_t a = {borrowed("a"), 1};
    mdm_app_res_item_t unnamed = {nullptr, 2};
    const Cells list = cells({&unnamed, &a});
    const Journey journey =
        travel(app_res.type, body(140, 1, list.get()), [](const mdm_body_t &received) {
            const auto items = elements_of(received.app_res.data);
            ASSERT_EQ(items.size(), 2U);
            EXPECT_STREQ(record<mdm_app_res_item_t>(items[0]).name, "a");
            EXPECT_EQ(record<mdm_app_res_item_t>(items[1]).name, nullptr);
            EXPECT_EQ(record<mdm_app_res_item_t>(items[1]).value, 0U);
        });
    EXPECT_EQ(Bytes(journey.bytes.begin() + 16, journey.bytes.end()),
              hex("02 00 00 00 01 00 00 00 61 01 00 00 00 00 00 00 00 00 00 00 00"));
}

TEST(AppRes, ManyItemsComeBackInOrder)
{
    std::vector<std::string> names;
    std::vector<mdm_app_res_item_t> records;
    Cells list;
    for (uint32_t i = 0; i < 500; ++i) {
        names.push_back(std::to_string(i) + std::string(i == 250 ? 300 : 1, 'n'));
    }
    for (std::string &name : names) {
        records.push_back({name.data(), static_cast<uint32_t>(records.size())});
    }
    for (mdm_app_res_item_t &item : records) {
        list.reset(g_list_append(list.release(), &item));
    }
    travel(app_res.type, body(141, 1, list.get()), [&](const mdm_body_t &received) {
        const auto items = elements_of(received.app_res.data);
        ASSERT_EQ(items.size(), names.size());
        for (size_t i = 0; i < names.size(); ++i) {
            EXPECT_EQ(record<mdm_app_res_item_t>(items[i]).name, names[i]);
            EXPECT_EQ(record<mdm_app_res_item_t>(items[i]).value, i);
        }
    });
}

}  // namespace
}  // namespace mdm::test::app_res_test
