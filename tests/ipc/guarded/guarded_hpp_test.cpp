// SPDX-License-Identifier: Apache-2.0
//
// What mdm/guarded.hpp promises, as a program sees it that links the library. The build makes this
// program once for C++17 and once for C++20. The linker leads the calls of ipc_close() and g_free()
// here, so that the tests see what the owners release.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mdm/guarded.hpp"

#ifdef __cpp_lib_ranges
#include <ranges>
#include <span>
#endif

namespace {

std::vector<const void *> closed;
std::vector<const void *> freed;
bool is_recording = false;
size_t news = 0;

// Runs an action and forgets what has been released before it.
template <class Action>
void record(Action action)
{
    closed.clear();
    freed.clear();
    closed.reserve(64);
    freed.reserve(64);
    is_recording = true;
    action();
    is_recording = false;
}

}  // namespace

extern "C" {
void __real_ipc_close(mdm_msg_t *msg);
void __real_g_free(void *block);
MDM_API void __wrap_ipc_close(mdm_msg_t *msg);
MDM_API void __wrap_g_free(void *block);

void __wrap_ipc_close(mdm_msg_t *msg)
{
    if (is_recording) {
        closed.push_back(msg);
    }
    // A static library releases its blocks through the function below.
    const bool was_recording = std::exchange(is_recording, false);
    __real_ipc_close(msg);
    is_recording = was_recording;
}

void __wrap_g_free(void *block)
{
    if (is_recording) {
        freed.push_back(block);
    }
    __real_g_free(block);
}
}

// ThreadSanitizer has operators of its own, which cannot be replaced.
#ifndef __has_feature
#define __has_feature(feature) 0
#endif
#if !__has_feature(thread_sanitizer)
void *operator new(size_t size)
{
    ++news;
    void *block = std::malloc(size);
    if (block == nullptr) {
        std::abort();
    }
    return block;
}

void operator delete(void *block) noexcept
{
    std::free(block);
}

void operator delete(void *block, size_t /*size*/) noexcept
{
    std::free(block);
}
#endif

namespace {

using std::string_view;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Packet = std::vector<uint8_t>;

// Moves are free, and nothing is copied or released twice.
template <class T>
constexpr bool is_move_only =
    std::is_nothrow_move_constructible_v<T> &&std::is_nothrow_move_assignable_v<T> &&
    !std::is_copy_constructible_v<T> && !std::is_copy_assignable_v<T>;
static_assert(is_move_only<mdm::Message>);
static_assert(is_move_only<mdm::SealedBytes>);
static_assert(is_move_only<mdm::Description>);
static_assert(is_move_only<mdm::Result<mdm::Message>>);
static_assert(is_move_only<mdm::Result<mdm::SealedBytes>>);
static_assert(sizeof(mdm::Message) == sizeof(void *));
static_assert(std::is_trivially_copyable_v<mdm::List<uint32_t>>);
static_assert(sizeof(mdm::List<uint32_t>) == sizeof(void *));

// A result is a condition, and not by accident a number.
static_assert(std::is_constructible_v<bool, mdm::Result<mdm::Message>>);
static_assert(!std::is_convertible_v<mdm::Result<mdm::Message>, bool>);

// Each way to read a result, by its value category and constness.
template <class T, class R = mdm::Result<T>>
constexpr bool reads_without_exceptions =
    noexcept(std::declval<R &>().has_value()) &&noexcept(static_cast<bool>(std::declval<R &>()))
        &&noexcept(*std::declval<R &>()) &&noexcept(*std::declval<const R &>())
            &&noexcept(*std::declval<R>()) &&noexcept(std::declval<R &>().operator->()) &&noexcept(
                std::declval<const R &>().operator->()) &&noexcept(std::declval<R &>().error());
static_assert(reads_without_exceptions<mdm::Message>);
static_assert(reads_without_exceptions<mdm::SealedBytes>);

static_assert(noexcept(mdm::open(nullptr, 0)));
static_assert(noexcept(mdm::open(std::declval<const Packet &>())));
static_assert(noexcept(mdm::open(std::declval<string_view>())));
static_assert(noexcept(mdm::open(std::declval<const uint8_t (&)[3]>())));
static_assert(noexcept(mdm::seal(std::declval<mdm_msg_t &>())));
static_assert(noexcept(mdm::describe(std::declval<ipc_fault_t>())));
static_assert(noexcept(mdm::text(nullptr)));
static_assert(noexcept(mdm::list<uint32_t>(nullptr)));
static_assert(noexcept(*mdm::list<uint32_t>(nullptr).begin()));
static_assert(noexcept(*mdm::list<string_view>(nullptr).begin()++));

static_assert(mdm::text(nullptr).data() == nullptr);
static_assert(mdm::text("ab") == "ab");

// A container of the program's own, which may throw.
struct Own {
    const uint8_t *data() const { return packet.data(); }
    size_t size() const { return packet.size(); }
    Packet packet;
};
static_assert(!noexcept(mdm::open(std::declval<const Own &>())));

template <class Bytes, class = void>
constexpr bool can_be_opened = false;
template <class Bytes>
constexpr bool can_be_opened<Bytes, std::void_t<decltype(mdm::open(std::declval<Bytes>()))>> = true;
static_assert(can_be_opened<const Packet &>);
static_assert(can_be_opened<Packet>);
static_assert(!can_be_opened<std::vector<uint16_t>>);
static_assert(!can_be_opened<std::array<mdm::SealedBytes, 1>>);
static_assert(!can_be_opened<const char *>);
static_assert(!can_be_opened<std::nullptr_t>);

// A message of type 33 with the bytes "ok".
const Packet some_packet = {0x2E, 0,  0, 0, 33,  0, 0, 0,  // length and message type
                            1,    0,  0, 0, 2,   0, 0, 0,  // two words
                            0,    0,  0, 0,                // no text
                            3,    0,  0, 0, 6,   0, 0, 0, 7, 0, 0, 0, 4, 0, 0, 0,
                            5,    0,  0, 0, 100, 0, 0, 0, 0, 0, 0, 0, 2, 0, 0, 0,  // the body head
                            'o',  'k'};

const Packet cut_packet(some_packet.begin(), some_packet.end() - 1);

mdm::Message some_message()
{
    return *mdm::open(some_packet);
}

mdm::SealedBytes some_bytes()
{
    return *mdm::seal(*some_message());
}

void expect_some_message(const mdm::Result<mdm::Message> &opened)
{
    ASSERT_TRUE(opened);
    EXPECT_EQ(opened->get()->type, 33);
    EXPECT_EQ((*opened)->hdr_word3, 3U);
    EXPECT_EQ(mdm::text(static_cast<const char *>((*opened)->body.res.data)), "ok");
}

void expect_fault(const ipc_fault_t &fault, const ipc_fault_t &expected)
{
    EXPECT_EQ(fault.offset, expected.offset);
    EXPECT_EQ(fault.needed, expected.needed);
    EXPECT_EQ(fault.left, expected.left);
    EXPECT_EQ(mdm::text(fault.path), mdm::text(expected.path));
}

// A GList, whose elements stay the test's.
class Cells {
public:
    template <class T>
    Cells(std::initializer_list<T *> elements)
    {
        for (T *element : elements) {
            head_ = g_list_append(head_, mdm_unconst(element));
        }
    }
    ~Cells() { g_list_free(head_); }
    Cells(const Cells &) = delete;
    Cells &operator=(const Cells &) = delete;

    GList *head() const { return head_; }

private:
    GList *head_ = nullptr;
};

// A sealed list of wifi names; "" becomes null on its way.
mdm::SealedBytes sealed_names(std::initializer_list<const char *> names)
{
    const Cells cells(names);
    mdm_msg_t msg{};
    EXPECT_TRUE(mdm_wifi_set_ssids(&msg, MDM_WIFI_SSIDS_290, cells.head()));
    auto sealed = mdm::seal(msg);
    EXPECT_TRUE(sealed);
    return std::move(*sealed);
}

// Opening.

TEST(Open, TakesAnyContainerOfBytes)
{
    expect_some_message(mdm::open(some_packet));
    expect_some_message(mdm::open(Packet(some_packet)));
    expect_some_message(mdm::open(some_packet.data(), some_packet.size()));
    const std::string text(some_packet.begin(), some_packet.end());
    expect_some_message(mdm::open(text));
    expect_some_message(mdm::open(string_view{text}));
    expect_some_message(mdm::open(text.data(), text.size()));
    std::array<std::byte, 54> bytes{};
    std::transform(some_packet.begin(), some_packet.end(), bytes.begin(),
                   [](uint8_t byte) { return std::byte{byte}; });
    expect_some_message(mdm::open(bytes));
    signed char array[54];
    std::copy(text.begin(), text.end(), array);
    expect_some_message(mdm::open(array));
    expect_some_message(mdm::open(Own{some_packet}));
    expect_some_message(mdm::open(some_bytes()));
#ifdef __cpp_lib_ranges
    expect_some_message(mdm::open(std::span(some_packet)));
    expect_some_message(mdm::open(std::as_bytes(std::span(some_packet))));
    expect_some_message(mdm::open(std::span(bytes)));
#endif
}

TEST(Open, ServesAConditionThatDeclaresItsResult)
{
    if (const auto opened = mdm::open(some_packet)) {
        EXPECT_EQ((*opened)->type, 33);
    } else {
        ADD_FAILURE();
    }
    if (const auto refused = mdm::open(cut_packet)) {
        ADD_FAILURE();
    } else {
        EXPECT_EQ(refused.error().needed, 54U);
    }
}

TEST(Open, GivesTheFaultOfARefusal)
{
    const auto refused = mdm::open(cut_packet);
    EXPECT_FALSE(refused);
    EXPECT_FALSE(refused.has_value());
    EXPECT_EQ(*refused, nullptr);
    expect_fault(refused.error(), {0, 54, 53, "header.length"});

    Packet packet = some_packet;
    packet[48] = 3;
    expect_fault(mdm::open(packet).error(), {52, 3, 2, "res.data"});
}

TEST(Open, HasAnEmptyFaultIfItDoesNotRefuse)
{
    const auto opened = mdm::open(some_packet);
    EXPECT_TRUE(opened.has_value());
    expect_fault(opened.error(), {0, 0, 0, nullptr});
}

TEST(Open, RefusesNoBytes)
{
    expect_fault(mdm::open(nullptr, 0).error(), {0, 4, 0, "header.length"});
    expect_fault(mdm::open(nullptr, 40).error(), {0, 4, 0, "header.length"});
    expect_fault(mdm::open(Packet()).error(), {0, 4, 0, "header.length"});
    expect_fault(mdm::open(string_view()).error(), {0, 4, 0, "header.length"});
}

// The bytes behind the length field are never read.
TEST(Open, RefusesMoreBytesThanTheLibraryCounts)
{
    constexpr uint32_t most = std::numeric_limits<uint32_t>::max();
    if constexpr (std::numeric_limits<size_t>::max() > most) {
        const size_t too_many = size_t{most} + 1;
        // 54 bytes, if the high half of the number were lost.
        for (const size_t size : {too_many, too_many + 54, std::numeric_limits<size_t>::max()}) {
            const auto refused = mdm::open(some_packet.data(), size);
            EXPECT_FALSE(refused);
            expect_fault(refused.error(), {0, 54, most, "header.length"});
        }
        expect_fault(mdm::open(nullptr, too_many).error(), {0, 4, 0, "header.length"});
        const Packet three{0x01, 0x02, 0x03, 0x04};
        expect_fault(mdm::open(three.data(), too_many).error(),
                     {0, 0x04030209, most, "header.length"});
        for (const uint8_t low : Packet{0xF7, 0xF8, 0xFF}) {
            const Packet negative{low, 0xFF, 0xFF, 0xFF};
            expect_fault(mdm::open(negative.data(), too_many).error(),
                         {0, most, most, "header.length"});
        }
    }
}

TEST(Open, DoesNotKeepTheBytes)
{
    auto bytes = std::make_unique<Packet>(some_packet);
    const auto opened = mdm::open(*bytes);
    std::fill(bytes->begin(), bytes->end(), uint8_t{0xFF});
    bytes.reset();
    expect_some_message(opened);
}

// Sealing.

TEST(Seal, GivesTheBytesOfTheLibrary)
{
    const mdm::Message msg = some_message();
    const auto sealed = mdm::seal(*msg);
    ASSERT_TRUE(sealed);
    EXPECT_EQ(sealed->size(), 54U);
    EXPECT_FALSE(sealed->empty());
    EXPECT_EQ(Packet(sealed->begin(), sealed->end()), some_packet);
    EXPECT_EQ(Packet(sealed->data(), sealed->data() + sealed->size()), some_packet);
    expect_fault(sealed.error(), {0, 0, 0, nullptr});
}

TEST(Seal, GivesTheFaultOfARefusal)
{
    mdm_msg_t msg{};
    msg.type = 33;
    msg.body.res.data_size = 2;
    const auto refused = mdm::seal(msg);
    EXPECT_FALSE(refused);
    EXPECT_EQ(refused->data(), nullptr);
    EXPECT_EQ(refused->size(), 0U);
    EXPECT_TRUE(refused->empty());
    expect_fault(refused.error(), {40, 0, 0, "res.data"});
}

TEST(Describe, GivesTheSentenceOfTheLibrary)
{
    const auto refused = mdm::open(cut_packet);
    const mdm::Description reason = mdm::describe(refused.error());
    EXPECT_STREQ(reason.c_str(), "header.length announces a message of 54 bytes, 53 are there");
    EXPECT_EQ(reason.view(), reason.c_str());
    EXPECT_EQ(reason.view().data(), reason.c_str());
}

// Owners.

TEST(Owner, ReleasesOnceAtTheEndOfItsScope)
{
    const void *msg = nullptr;
    const void *bytes = nullptr;
    const void *reason = nullptr;
    record([&] {
        const auto opened = mdm::open(some_packet);
        const auto sealed = mdm::seal(**opened);
        const auto description = mdm::describe(mdm::open(cut_packet).error());
        msg = opened->get();
        bytes = sealed->data();
        reason = description.c_str();
        EXPECT_THAT(closed, IsEmpty());
        EXPECT_THAT(freed, IsEmpty());
    });
    EXPECT_THAT(closed, ElementsAre(msg));
    EXPECT_THAT(freed, ElementsAre(reason, bytes));
}

TEST(Owner, OfNothingReleasesNothing)
{
    record([] {
        const mdm::Message msg;
        const mdm::SealedBytes bytes;
        EXPECT_EQ(bytes.begin(), bytes.end());
        EXPECT_FALSE(mdm::open(cut_packet));
    });
    EXPECT_THAT(closed, IsEmpty());
    EXPECT_THAT(freed, IsEmpty());
}

TEST(Owner, IsReleasedByTheLastToWhomItMoves)
{
    const void *msg = nullptr;
    const void *bytes = nullptr;
    const void *reason = nullptr;
    record([&] {
        auto opened = mdm::open(some_packet);
        auto moved = std::move(opened);
        const mdm::Message last_msg = *std::move(moved);
        msg = last_msg.get();
        EXPECT_NE(msg, nullptr);

        auto sealed = mdm::seal(*last_msg);
        const mdm::SealedBytes last_bytes = std::move(*sealed);
        bytes = last_bytes.data();
        EXPECT_EQ(last_bytes.size(), 54U);
        EXPECT_TRUE(sealed.has_value());
        EXPECT_EQ(sealed->data(), nullptr);
        EXPECT_EQ(sealed->size(), 0U);

        auto description = mdm::describe(mdm::open(cut_packet).error());
        const auto &source = description;
        const mdm::Description last_reason = std::move(description);
        reason = last_reason.c_str();
        EXPECT_NE(reason, nullptr);
        EXPECT_EQ(source.c_str(), nullptr);
        EXPECT_EQ(source.view().data(), nullptr);
    });
    EXPECT_THAT(closed, ElementsAre(msg));
    EXPECT_THAT(freed, ElementsAre(reason, bytes));
}

TEST(Owner, ReleasesWhatItHadWhenAnotherIsAssigned)
{
    mdm::Message msg = some_message();
    mdm::SealedBytes bytes = some_bytes();
    mdm::Description reason = mdm::describe(mdm::open(cut_packet).error());
    const void *old_msg = msg.get();
    const void *old_bytes = bytes.data();
    const void *old_reason = reason.c_str();
    mdm::Message new_msg = some_message();
    mdm::SealedBytes new_bytes = sealed_names({});
    mdm::Description new_reason = mdm::describe(mdm::open(nullptr, 0).error());
    const size_t new_size = new_bytes.size();
    record([&] {
        msg = std::move(new_msg);
        bytes = std::move(new_bytes);
        reason = std::move(new_reason);
    });
    EXPECT_THAT(closed, ElementsAre(old_msg));
    EXPECT_THAT(freed, ElementsAre(old_bytes, old_reason));
    EXPECT_NE(new_size, 54U);
    EXPECT_EQ(bytes.size(), new_size);
    EXPECT_EQ(new_bytes.data(), nullptr);
    EXPECT_EQ(new_bytes.size(), 0U);
}

TEST(Owner, KeepsWhatItHasWhenItIsAssignedToItself)
{
    auto opened = mdm::open(some_packet);
    auto sealed = mdm::seal(**opened);
    auto reason = mdm::describe(mdm::open(cut_packet).error());
    record([&] {
        // Not a plain assignment to itself, about which compilers warn.
        auto &same_message = opened;
        auto &same_bytes = sealed;
        auto &same_reason = reason;
        opened = std::move(same_message);
        sealed = std::move(same_bytes);
        reason = std::move(same_reason);
    });
    EXPECT_THAT(closed, IsEmpty());
    EXPECT_THAT(freed, IsEmpty());
    expect_some_message(opened);
    expect_some_message(mdm::open(*sealed));
    EXPECT_EQ(reason.view().substr(0, 13), "header.length");
}

TEST(Owner, GivesAway)
{
    mdm_msg_t *msg = nullptr;
    uint8_t *bytes = nullptr;
    record([&] {
        auto opened = mdm::open(some_packet);
        auto sealed = mdm::seal(**opened);
        msg = opened->release();
        bytes = sealed->release();
        EXPECT_EQ(sealed->data(), nullptr);
        EXPECT_EQ(sealed->size(), 0U);
    });
    EXPECT_THAT(closed, IsEmpty());
    EXPECT_THAT(freed, IsEmpty());
    record([&] {
        const mdm::Message new_owner(msg);
        const mdm::SealedBytes other_owner(bytes, 54);
        EXPECT_EQ(Packet(other_owner.begin(), other_owner.end()), some_packet);
    });
    EXPECT_THAT(closed, ElementsAre(msg));
    EXPECT_THAT(freed, ElementsAre(bytes));
}

TEST(Guarded, AllocatesNothingOfItsOwn)
{
    const mdm::SealedBytes names = sealed_names({"office", ""});
    size_t count = 0;
    const size_t before = news;
    {
        auto opened = mdm::open(names);
        const auto sealed = mdm::seal(*some_message());
        const auto refused = mdm::open(cut_packet);
        const auto reason = mdm::describe(refused.error());
        const auto moved = std::move(opened);
        for (const string_view name : mdm::list<string_view>(mdm_wifi_ssids(moved->get()))) {
            count += name.size();
        }
        count += reason.view().size() + sealed->size();
    }
    EXPECT_EQ(news, before);
    EXPECT_EQ(count, 6 + 59 + 54U);
}

// Texts and lists.

TEST(Text, KnowsNullAndEmpty)
{
    EXPECT_EQ(mdm::text("some"), "some");
    EXPECT_EQ(mdm::text(nullptr).data(), nullptr);
    EXPECT_EQ(mdm::text(nullptr).size(), 0U);
    const char *empty = "";
    EXPECT_EQ(mdm::text(empty).data(), empty);
    EXPECT_EQ(mdm::text(empty).size(), 0U);
}

TEST(List, IsEmptyWithoutACell)
{
    const auto list = mdm::list<uint32_t>(nullptr);
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(list.begin(), list.end());
    EXPECT_EQ(std::distance(list.begin(), list.end()), 0);
    EXPECT_TRUE(mdm::List<string_view>().empty());
    EXPECT_EQ(list.end(), mdm::ListIterator<uint32_t>());
}

TEST(List, HasRecords)
{
    mdm_kiosk_key_pair_t first{};
    mdm_kiosk_key_pair_t second{};
    const Cells cells{&first, &second};
    const auto list = mdm::list<mdm_kiosk_key_pair_t>(cells.head());
    static_assert(std::is_same_v<decltype(*list.begin()), const mdm_kiosk_key_pair_t &>);
    EXPECT_FALSE(list.empty());
    std::vector<const mdm_kiosk_key_pair_t *> records;
    for (const auto &record : list) {
        records.push_back(&record);
    }
    EXPECT_THAT(records, ElementsAre(&first, &second));
    EXPECT_EQ(list.begin().operator->(), &first);
}

TEST(List, HasNumbers)
{
    uint32_t numbers[] = {7, 0, 9};
    const Cells cells{&numbers[0], &numbers[1], &numbers[2]};
    const auto list = mdm::list<uint32_t>(cells.head());
    EXPECT_EQ(std::distance(list.begin(), list.end()), 3);
    EXPECT_THAT(std::vector<uint32_t>(list.begin(), list.end()), ElementsAre(7, 0, 9));
    EXPECT_EQ(*std::max_element(list.begin(), list.end()), 9U);
}

TEST(List, BeginsAtTheGivenCell)
{
    uint32_t numbers[] = {7, 8, 9};
    const Cells cells{&numbers[0], &numbers[1], &numbers[2]};
    EXPECT_EQ(*mdm::list<uint32_t>(cells.head()->next).begin(), 8U);
}

TEST(List, HasTextsThatMayBeNull)
{
    const auto opened = mdm::open(sealed_names({"office", "", "office"}));
    ASSERT_TRUE(opened);
    const auto list = mdm::list<string_view>(mdm_wifi_ssids(opened->get()));
    std::vector<string_view> names;
    for (const string_view name : list) {
        names.push_back(name);
    }
    EXPECT_THAT(names, ElementsAre("office", "", "office"));
    EXPECT_EQ(names[1].data(), nullptr);
    EXPECT_EQ(list.begin()->size(), 6U);
    EXPECT_EQ(std::next(list.begin())->data(), nullptr);
    EXPECT_EQ(std::distance(list.begin(), list.end()), 3);
    EXPECT_THAT(std::vector<std::string>(list.begin(), list.end()),
                ElementsAre("office", "", "office"));
}

TEST(List, HasIteratorsThatGoTheirOwnWays)
{
    uint32_t numbers[] = {7, 8};
    const Cells cells{&numbers[0], &numbers[1]};
    auto it = mdm::list<uint32_t>(cells.head()).begin();
    const auto copy = it;
    EXPECT_EQ(*it++, 7U);
    EXPECT_EQ(*it, 8U);
    EXPECT_EQ(*copy, 7U);
    EXPECT_NE(it, copy);
    EXPECT_EQ(it, std::next(copy));
    const mdm::ListIterator<uint32_t> end;
    EXPECT_NE(it, end);
    EXPECT_NE(end, it);
    EXPECT_EQ(&++it, &it);
    EXPECT_EQ(it, end);
}

template <class T>
using Category = typename std::iterator_traits<mdm::ListIterator<T>>::iterator_category;
static_assert(std::is_same_v<Category<uint32_t>, std::forward_iterator_tag>);
static_assert(std::is_same_v<Category<string_view>, std::input_iterator_tag>);
static_assert(std::is_nothrow_default_constructible_v<mdm::ListIterator<string_view>>);

#ifdef __cpp_lib_ranges
template <class T>
constexpr bool is_forward_view = std::ranges::forward_range<T> &&std::ranges::common_range<T>
    &&std::ranges::borrowed_range<T> &&std::ranges::view<T> &&std::ranges::forward_range<const T>;
static_assert(is_forward_view<mdm::List<uint32_t>>);
static_assert(is_forward_view<mdm::List<mdm_kiosk_key_pair_t>>);
static_assert(is_forward_view<mdm::List<string_view>>);
static_assert(std::ranges::contiguous_range<const mdm::SealedBytes>);
static_assert(std::ranges::sized_range<const mdm::SealedBytes>);

TEST(List, ServesTheAlgorithmsOfRanges)
{
    const auto opened = mdm::open(sealed_names({"office", ""}));
    ASSERT_TRUE(opened);
    const GList *names = mdm_wifi_ssids(opened->get());
    // The iterator outlives the list that it comes from.
    const auto found = std::ranges::find(mdm::list<string_view>(names), "");
    EXPECT_EQ(found, std::ranges::next(mdm::list<string_view>(names).begin()));
    EXPECT_EQ(std::ranges::distance(mdm::list<string_view>(names)), 2);
}

// Clang 15 and older cannot compile the views of GCC's library.
#if !defined(__clang__) || __clang_major__ > 15
TEST(List, ServesTheViewsOfRanges)
{
    uint32_t numbers[] = {7, 8, 9};
    const Cells cells{&numbers[0], &numbers[1], &numbers[2]};
    const auto odd = [](uint32_t number) { return number % 2 == 1; };
    std::vector<uint32_t> found;
    for (const uint32_t number :
         mdm::list<uint32_t>(cells.head()) | std::views::filter(odd) | std::views::take(5)) {
        found.push_back(number);
    }
    EXPECT_THAT(found, ElementsAre(7, 9));
}
#endif
#endif

}  // namespace
