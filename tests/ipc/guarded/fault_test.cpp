// SPDX-License-Identifier: Apache-2.0
//
// Which fault ipc_open() reports, to the byte. Each shape is written down as the steps that reading
// it takes; cutting it, and letting its counts and lengths lie, must hit the step and say so.
#include <algorithm>
#include <initializer_list>
#include <limits>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/mman.h>

#include "mdm/guarded.h"
#include "support/fault.hpp"
#include "support/guard_page.hpp"
#include "support/log_recorder.hpp"
#include "support/shapes.hpp"
#include "support/wire.hpp"

namespace mdm::test {
namespace {

constexpr uint32_t most = std::numeric_limits<uint32_t>::max();

struct Fault {
    uint32_t offset = 0;
    uint32_t needed = 0;
    uint32_t left = 0;
    std::string path;

    friend bool operator==(const Fault &, const Fault &) = default;
    friend std::ostream &operator<<(std::ostream &out, const Fault &fault)
    {
        return out << fault.path << ": offset " << fault.offset << ", needed " << fault.needed
                   << ", left " << fault.left;
    }
};

// Nothing if the bytes were opened.
std::optional<Fault> fault_of(const uint8_t *buffer, size_t length)
{
    const LogRecorder log(MDM_LOG_NONE);
    ipc_fault_t fault{1, 2, 3, "untouched"};
    MDM_AUTO_CLOSE mdm_msg_t *msg = ipc_open(buffer, static_cast<uint32_t>(length), &fault);
    if (msg != nullptr) {
        return std::nullopt;
    }
    return Fault{fault.offset, fault.needed, fault.left, fault.path};
}

std::optional<Fault> fault_of(const Bytes &bytes)
{
    static GuardedBytes buffer(Bytes(4096));  // mapped once, because so many need it
    buffer.assign(bytes);
    return fault_of(buffer.data(), buffer.size());
}

Bytes with_word(Bytes bytes, size_t offset, uint32_t value)
{
    std::ranges::copy(word(value), bytes.begin() + static_cast<std::ptrdiff_t>(offset));
    return bytes;
}

Bytes first(const Bytes &bytes, size_t count)
{
    return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count)};
}

// A cut message whose length field tells so.
Bytes cut(const Bytes &bytes, size_t length)
{
    return with_word(first(bytes, length), 0, static_cast<uint32_t>(length - 8));
}

// The envelope.

TEST(Fault, OfNoBytesIsTheLengthField)
{
    EXPECT_EQ(fault_of(nullptr, 0), (Fault{0, 4, 0, "header.length"}));
    EXPECT_EQ(fault_of(nullptr, 100), (Fault{0, 4, 0, "header.length"}));
    EXPECT_EQ(fault_of(Bytes{}), (Fault{0, 4, 0, "header.length"}));
    EXPECT_EQ(fault_of(hex("20")), (Fault{0, 4, 1, "header.length"}));
    EXPECT_EQ(fault_of(hex("20 00 00")), (Fault{0, 4, 3, "header.length"}));
}

TEST(Fault, OfAFalseLengthIsWhatItClaims)
{
    const Bytes bytes = framed(19, {});
    EXPECT_EQ(fault_of(with_word(bytes, 0, 33)), (Fault{0, 41, 40, "header.length"}));
    EXPECT_EQ(fault_of(with_word(bytes, 0, 31)), (Fault{0, 39, 40, "header.length"}));
    EXPECT_EQ(fault_of(with_word(bytes, 0, 0)), (Fault{0, 8, 40, "header.length"}));
    EXPECT_EQ(fault_of(first(bytes, 39)), (Fault{0, 40, 39, "header.length"}));
    EXPECT_EQ(fault_of(bytes + hex("00")), (Fault{0, 40, 41, "header.length"}));
    EXPECT_EQ(fault_of(with_word(bytes, 0, 0x7FFFFFFF)),
              (Fault{0, 0x80000007, 40, "header.length"}));
    EXPECT_EQ(fault_of(with_word(bytes, 0, 0xFFFFFFF7)), (Fault{0, most, 40, "header.length"}));
    EXPECT_EQ(fault_of(with_word(bytes, 0, 0xFFFFFFF8)), (Fault{0, most, 40, "header.length"}));
    EXPECT_EQ(fault_of(with_word(bytes, 0, most)), (Fault{0, most, 40, "header.length"}));
}

// In 32 bits the length field would wrap to what is expected of so few bytes.
TEST(Fault, OfALengthThatWrapsIsTheLengthField)
{
    EXPECT_EQ(fault_of(hex("FC FF FF FF")), (Fault{0, most, 4, "header.length"}));
    EXPECT_EQ(fault_of(hex("FF FF FF FF 13 00 00")), (Fault{0, most, 7, "header.length"}));
}

TEST(Fault, OfAMessageWithoutAWholeHeaderIsItsLength)
{
    const Bytes bytes = framed(19, {});
    for (uint32_t length = 8; length < 40; ++length) {
        EXPECT_EQ(fault_of(cut(bytes, length)), (Fault{0, 40, length, "header.length"}));
    }
}

TEST(Fault, OfATypeThatIsNoneIsTheType)
{
    for (const uint8_t type : hex("00 51 80 FF")) {
        EXPECT_EQ(fault_of(framed(type, hex("01 02"))), (Fault{4, 1, 38, "header.type"}));
    }
}

TEST(Fault, OfALengthComesBeforeThatOfAType)
{
    EXPECT_EQ(fault_of(cut(framed(0, {}), 39)), (Fault{0, 40, 39, "header.length"}));
}

TEST(Fault, OfALengthThatNoMessageHasIsFoundWithoutReadingOn)
{
    constexpr size_t length = most;
    if constexpr (sizeof(void *) > 4) {
        void *zeros =
            mmap(nullptr, length, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        ASSERT_NE(zeros, MAP_FAILED);
        EXPECT_EQ(fault_of(static_cast<uint8_t *>(zeros), length),
                  (Fault{0, 8, most, "header.length"}));
        munmap(zeros, length);
    }
}

TEST(Fault, OfAHeaderThatItsTextPushesOutIsTheFieldThatIsHit)
{
    const Bytes bytes = framed(19, {}, "12345678");
    EXPECT_EQ(fault_of(bytes), std::nullopt);
    EXPECT_EQ(fault_of(cut(bytes, 47)), (Fault{44, 4, 3, "header.hdr_word5"}));
    EXPECT_EQ(fault_of(cut(bytes, 44)), (Fault{44, 4, 0, "header.hdr_word5"}));
    EXPECT_EQ(fault_of(cut(bytes, 43)), (Fault{40, 4, 3, "header.hdr_word4"}));
    EXPECT_EQ(fault_of(cut(bytes, 40)), (Fault{40, 4, 0, "header.hdr_word4"}));
    EXPECT_EQ(fault_of(with_word(bytes, 16, 13)), (Fault{45, 4, 3, "header.hdr_word4"}));
    EXPECT_EQ(fault_of(with_word(bytes, 16, 17)), (Fault{45, 4, 3, "header.hdr_word7"}));
    EXPECT_EQ(fault_of(with_word(bytes, 16, 21)), (Fault{45, 4, 3, "header.hdr_word6"}));
    EXPECT_EQ(fault_of(with_word(bytes, 16, 28)), (Fault{48, 4, 0, "header.hdr_word3"}));
    EXPECT_EQ(fault_of(with_word(bytes, 16, 29)), (Fault{20, 29, 28, "header.hdr_text"}));
    EXPECT_EQ(fault_of(with_word(bytes, 16, most)), (Fault{20, most, 28, "header.hdr_text"}));
    EXPECT_EQ(fault_of(with_word(bytes, 16, 0x80000000)),
              (Fault{20, 0x80000000, 28, "header.hdr_text"}));
}

// The sentence.

TEST(FaultSentence, SaysWhatIsNeededAndWhatIsLeft)
{
    EXPECT_EQ(sentence({56, 12, 3, "wifi.network.ssid"}),
              "wifi.network.ssid at offset 56 needs 12 bytes, 3 are left");
    EXPECT_EQ(sentence({56, 1, 0, "misc_cb.num6"}),
              "misc_cb.num6 at offset 56 needs 1 byte, 0 are left");
    EXPECT_EQ(sentence({40, 4, 1, "res.type"}), "res.type at offset 40 needs 4 bytes, 1 is left");
    EXPECT_EQ(sentence({52, most, 4, "app.packages"}),
              "app.packages at offset 52 needs 4294967295 bytes or more, 4 are left");
}

// Q-GUARDED-2
TEST(FaultSentence, SaysThatASizeIsNegative)
{
    EXPECT_EQ(sentence({52, most, 4, "apn.data"}), "apn.data at offset 52 has a negative size");
    EXPECT_EQ(sentence({52, most - 1, 4, "apn.data"}),
              "apn.data at offset 52 needs 4294967294 bytes, 4 are left");
    // So much could also be needed by an array that is as long.
    EXPECT_EQ(sentence({52, most, 4, "misc.array"}),
              "misc.array at offset 52 needs 4294967295 bytes or more, 4 are left");
}

TEST(FaultSentence, SaysBothLengthsThatDoNotFit)
{
    EXPECT_EQ(sentence({0, 60, 57, "header.length"}),
              "header.length announces a message of 60 bytes, 57 are there");
    EXPECT_EQ(sentence({0, 8, 40, "header.length"}),
              "header.length announces a message of 8 bytes, 40 are there");
    EXPECT_EQ(sentence({0, 40, 41, "header.length"}),
              "header.length announces a message of 40 bytes, 41 are there");
    EXPECT_EQ(sentence({0, most, 41, "header.length"}),
              "header.length announces a message of 4294967295 bytes or more, 41 are there");
}

// Which length field these bytes have cannot be told from the fault.
TEST(FaultSentence, SaysHowLongAMessageIsAtLeast)
{
    EXPECT_EQ(sentence({0, 40, 39, "header.length"}),
              "header.length: a message has 40 bytes or more, 39 are there");
    EXPECT_EQ(sentence({0, 40, 1, "header.length"}),
              "header.length: a message has 40 bytes or more, 1 is there");
    EXPECT_EQ(sentence({0, 41, 39, "header.length"}),
              "header.length announces a message of 41 bytes, 39 are there");
}

TEST(FaultSentence, SaysThatNotEvenALengthIsThere)
{
    EXPECT_EQ(sentence({0, 4, 3, "header.length"}),
              "header.length at offset 0 needs 4 bytes, 3 are left");
    EXPECT_EQ(sentence({0, 4, 0, "header.length"}),
              "header.length at offset 0 needs 4 bytes, 0 are left");
}

TEST(FaultSentence, SaysThatATypeIsNone)
{
    EXPECT_EQ(sentence({4, 1, 36, "header.type"}), "header.type at offset 4 is no message type");
}

TEST(FaultSentence, SaysWhatIsMissing)
{
    EXPECT_EQ(sentence({0, 0, 0, "message"}), "message is missing");
    EXPECT_EQ(sentence({40, 0, 0, "wifi.data"}), "wifi.data is missing");
    EXPECT_EQ(sentence({40, 0, 0, "phone_res.ext.detail"}), "phone_res.ext.detail is missing");
    EXPECT_EQ(sentence({60, 0, 17, "app_res.item.name"}), "app_res.item.name is missing");
}

TEST(FaultSentence, SaysWhatCannotBeSent)
{
    EXPECT_EQ(sentence({40, 0, 0, "eas.data_size"}),
              "eas.data_size is no size that the payload can be sent with");
    EXPECT_EQ(sentence({40, 0, 0, "phone_res.type"}), "phone_res.type is no type that can be sent");
    EXPECT_EQ(sentence({4, 0, 0, "header.type"}), "header.type is no type that can be sent");
    EXPECT_EQ(sentence({52, 0, 9, "app.packages"}),
              "app.packages has a null element, or is not handed over by its first cell");
    EXPECT_EQ(sentence({0, 40, 0, "header.length"}),
              "header.length: the message adds up to no size that it can have");
}

TEST(FaultSentence, SaysHowMuchMemoryCouldNotBeHad)
{
    EXPECT_EQ(sentence({0, 4000, 0, "memory"}), "there is no memory for 4000 bytes");
    EXPECT_EQ(sentence({0, most, 0, "memory"}), "there is no memory for 4294967295 bytes or more");
}

// Nothing was refused yet.
TEST(FaultSentence, SaysSoOfAFaultThatNobodyHasWritten)
{
    EXPECT_EQ(sentence({}), "there is no fault");
    EXPECT_EQ(sentence({1, 2, 3, ""}), "there is no fault");
}

// A fault's path is the library's own; a longer one is cut, and does no harm.
TEST(FaultSentence, CutsAPathThatIsLongerThanAnyField)
{
    const std::string path(1000, 'p');
    EXPECT_EQ(sentence({1, 2, 3, path.c_str()}), std::string(255, 'p'));
}

// Bodies: some by hand.

TEST(Fault, OfAPairIsTheStringThatIsCut)
{
    // 40 type, 44 param, 48 data_size, 52 count, 56 "home", 60 count, 64 "on"
    const Bytes bytes = framed(7, head_bytes(305, 1) + str("home") + str("on"));
    EXPECT_EQ(fault_of(bytes), std::nullopt);
    EXPECT_EQ(fault_of(cut(bytes, 65)), (Fault{64, 2, 1, "wifi.pair.value"}));
    EXPECT_EQ(fault_of(cut(bytes, 64)), (Fault{64, 2, 0, "wifi.pair.value"}));
    EXPECT_EQ(fault_of(cut(bytes, 63)), (Fault{60, 4, 3, "wifi.pair.value"}));
    EXPECT_EQ(fault_of(cut(bytes, 59)), (Fault{56, 4, 3, "wifi.pair.ssid"}));
    EXPECT_EQ(fault_of(cut(bytes, 55)), (Fault{52, 4, 3, "wifi.pair.ssid"}));
    EXPECT_EQ(fault_of(cut(bytes, 51)), (Fault{48, 4, 3, "wifi.data_size"}));
    EXPECT_EQ(fault_of(cut(bytes, 47)), (Fault{44, 4, 3, "wifi.param"}));
    EXPECT_EQ(fault_of(cut(bytes, 43)), (Fault{40, 4, 3, "wifi.type"}));
}

TEST(Fault, OfAListIsItsElementsBehindTheCount)
{
    const Bytes bytes =
        framed(13, word(4) + word(0) + str("") + word(1) + word(2) + str("abc") + str("c"));
    EXPECT_EQ(fault_of(bytes), std::nullopt);
    EXPECT_EQ(fault_of(with_word(bytes, 56, 3)), (Fault{72, 4, 0, "app.packages"}));
    EXPECT_EQ(fault_of(with_word(bytes, 56, 4)), (Fault{60, 16, 12, "app.packages"}));
    EXPECT_EQ(fault_of(with_word(bytes, 56, 0x3FFFFFFF)),
              (Fault{60, 0xFFFFFFFC, 12, "app.packages"}));
    EXPECT_EQ(fault_of(with_word(bytes, 56, 0x40000000)), (Fault{60, most, 12, "app.packages"}));
    EXPECT_EQ(fault_of(with_word(bytes, 56, 0x7FFFFFFF)), (Fault{60, most, 12, "app.packages"}));
    EXPECT_EQ(fault_of(with_word(bytes, 56, 0x80000000)), std::nullopt);
    EXPECT_EQ(fault_of(with_word(bytes, 56, most)), std::nullopt);
}

TEST(Fault, OfAnAccountsListIsWhatItsSmallestAccountsNeed)
{
    const Bytes bytes = framed(5, head_bytes(70, 1) + word(2) + Bytes(208));
    EXPECT_EQ(fault_of(bytes), std::nullopt);
    EXPECT_EQ(fault_of(cut(bytes, 263)), (Fault{56, 208, 207, "security.accounts"}));
    EXPECT_EQ(fault_of(with_word(bytes, 52, 3)), (Fault{56, 312, 208, "security.accounts"}));
    EXPECT_EQ(fault_of(with_word(bytes, 260, 1)), (Fault{264, 1, 0, "security.account.str25"}));
    EXPECT_EQ(fault_of(with_word(bytes, 72, 1)), (Fault{261, 4, 3, "security.account.str25"}));
}

// Q-MISC-8, Q-GUARDED-2
TEST(Fault, OfANegativeSizeNeedsAllThereIs)
{
    const Bytes payload = hex("01 02 03 04");
    EXPECT_EQ(fault_of(framed(21, head_bytes(388, -1) + payload)),
              (Fault{52, most, 4, "apn.data"}));
    EXPECT_EQ(fault_of(framed(17, head_bytes(1, INT32_MIN) + payload)),
              (Fault{52, most, 4, "misc.data"}));
    EXPECT_EQ(fault_of(framed(17, head_bytes(122, -1) + payload)),
              (Fault{52, most, 4, "misc.array"}));
    EXPECT_EQ(fault_of(framed(45, head_bytes(613, -4))), (Fault{52, most, 0, "kiosk.data"}));
    EXPECT_EQ(fault_of(framed(47, head_bytes(631, -1) + payload)),
              (Fault{52, most, 4, "container.data"}));
}

TEST(Fault, OfANegativeSizeIsNoneWhereTheSizeIsASwitch)
{
    EXPECT_EQ(fault_of(framed(11, head_bytes(104, -1) + word(0) + word(0) + word(0))),
              std::nullopt);
    EXPECT_EQ(fault_of(framed(39, head_bytes(5, -1) + word(0) + word(0))), std::nullopt);
    EXPECT_EQ(fault_of(framed(21, head_bytes(389, -1) + word(0))), std::nullopt);
    EXPECT_EQ(fault_of(framed(17, head_bytes(123, -1))), std::nullopt);
    EXPECT_EQ(fault_of(framed(17, head_bytes(127, -1) + word(0))), std::nullopt);
    EXPECT_EQ(fault_of(framed(45, head_bytes(618, -1) + word(0))), std::nullopt);
    EXPECT_EQ(fault_of(framed(47, head_bytes(640, -1))), std::nullopt);
    EXPECT_EQ(fault_of(framed(33, head_bytes(640, -1))), std::nullopt);
}

TEST(Fault, OfAnUnknownDetailIsNone)
{
    for (const uint32_t kind : {0U, 10U, 0x80000000U, most}) {
        EXPECT_EQ(fault_of(framed(7, head_bytes(345, 1) + str("a") + word(kind))), std::nullopt);
    }
}

// Bodies: all of them, by the steps that reading takes.

using Names = std::vector<std::string>;

Names numbered(const std::string &name, int from, int to)
{
    Names names;
    for (int i = from; i <= to; ++i) {
        names.push_back(name + std::to_string(i));
    }
    return names;
}

std::string dotted(std::string path, const std::string &name)
{
    return path.append(".").append(name);
}

// So many bytes must be there, from an offset on.
struct Step {
    std::string path;
    size_t offset;
    size_t needed;
};

// A number in the bytes that says how much follows it.
struct Lie {
    enum class Kind { text, list, unsigned_list, size, signed_size, array };

    Kind kind;
    std::string path;
    size_t at;          // of the number
    size_t behind;      // where that begins of which it tells
    uint32_t smallest;  // bytes for one of what it counts
};

// A message in the making.
class Shape {
public:
    Shape(std::string category, uint8_t type) : category_(std::move(category)), type_(type) {}

    Shape &numbers(const std::string &record, const Names &names)
    {
        for (const std::string &name : names) {
            number(dotted(record, name), 0xC0C1C2C3);
        }
        return *this;
    }
    Shape &number(const std::string &field, uint32_t value)
    {
        add_step(field, 4);
        body_ = body_ + word(value);
        return *this;
    }
    Shape &byte(const std::string &field)
    {
        add_step(field, 1);
        body_.push_back(0xB1);
        return *this;
    }

    // Some with a text, some without.
    Shape &texts(const std::string &record, const Names &names)
    {
        for (const std::string &name : names) {
            text(dotted(record, name), body_.size() % 3 == 0 ? "" : "text");
        }
        return *this;
    }
    Shape &text(const std::string &field, const std::string &text)
    {
        lies_.push_back({Lie::Kind::text, path(field), end(), end() + 4, 1});
        add_step(field, 4);
        body_ = body_ + word(static_cast<uint32_t>(text.size()));
        add_step(field, text.size());
        body_ = body_ + Bytes(text.begin(), text.end());
        return *this;
    }

    Shape &list(const std::string &field, uint32_t count, uint32_t smallest,
                Lie::Kind kind = Lie::Kind::list)
    {
        lies_.push_back({kind, path(field), end(), end() + 4, smallest});
        number(field, count);
        add_step(field, size_t{count} * smallest);
        return *this;
    }

    Shape &head(uint32_t type, int32_t data_size)
    {
        number("type", type).number("param", 0xD0D1D2D3);
        return size(data_size);
    }
    Shape &app_head(uint32_t type, int32_t data_size)
    {
        number("type", type).number("param", 0xD0D1D2D3).text("pkg", "a.b");
        return size(data_size);
    }
    Shape &callback_head(uint32_t type)
    {
        return number("type", type).number("data_size", 16).number("param", 1).number("param2", 2);
    }

    // Raw bytes as the head's `data_size` tells; where that is tested for zero, a negative one is
    // a lie, too.
    Shape &raw(int32_t count, bool tests_for_zero = false)
    {
        const auto kind = tests_for_zero ? Lie::Kind::signed_size : Lie::Kind::size;
        lies_.push_back({kind, path("data"), size_at_, end(), 1});
        add_step("data", static_cast<size_t>(count));
        body_ = body_ + Bytes(static_cast<size_t>(count), uint8_t{'r'});
        return *this;
    }
    // As many strings.
    Shape &array(uint32_t count)
    {
        lies_.push_back({Lie::Kind::array, path("array"), size_at_, end(), 4});
        add_step("array", size_t{count} * 4);
        for (uint32_t i = 0; i < count; ++i) {
            text("array", i == 1 ? "" : "text");
        }
        return *this;
    }

    const std::string &category() const { return category_; }
    const std::vector<Step> &steps() const { return steps_; }
    const std::vector<Lie> &lies() const { return lies_; }
    Bytes bytes() const { return framed(type_, body_); }

private:
    size_t end() const { return 40 + body_.size(); }
    std::string path(const std::string &field) const { return dotted(category_, field); }
    void add_step(const std::string &field, size_t needed)
    {
        steps_.push_back({path(field), end(), needed});
    }
    Shape &size(int32_t data_size)
    {
        size_at_ = end();
        return number("data_size", static_cast<uint32_t>(data_size));
    }

    std::string category_;
    uint8_t type_;
    Bytes body_;
    size_t size_at_ = 0;
    std::vector<Step> steps_;
    std::vector<Lie> lies_;
};

void add_registration(std::vector<Shape> &all)
{
    all.push_back(Shape("admin", 1).number("type", 0).text("pkg", "a.b").number("status", 1));
    all.push_back(Shape("admin", 2)
                      .number("type", 5)
                      .number("value", 6)
                      .text("pkg", "a.b")
                      .text("text", "text"));
    all.push_back(Shape("pwd", 3).head(40, 0));
    all.push_back(Shape("pwd", 3)
                      .head(40, 1)
                      .numbers("policy", numbered("num", 0, 8))
                      .texts("policy", {"str9", "str10"}));
    all.push_back(Shape("pwd", 4).head(7, 6).raw(6));
}

void add_security(std::vector<Shape> &all)
{
    const auto add_account = [](Shape &shape) {
        shape.numbers("account", numbered("num", 0, 3)).texts("account", numbered("str", 4, 25));
    };
    all.push_back(Shape("security", 5).head(56, -1));
    for (const uint32_t type : {56U, 76U}) {
        all.push_back(Shape("security", 5)
                          .head(type, 1)
                          .number("item.num0", 1)
                          .texts("item", {"str1", "str4", "str3"}));
    }
    for (const uint32_t type : {68U, 69U}) {
        all.push_back(Shape("security", 6)
                          .head(type, 1)
                          .list("strings", 3, 4)
                          .text("strings", "a")
                          .text("strings", "")
                          .text("strings", "bc"));
    }
    for (const uint32_t type : {70U, 71U}) {
        Shape accounts = Shape("security", 5).head(type, 1).list("accounts", 2, 104);
        add_account(accounts);
        add_account(accounts);
        all.push_back(accounts);
    }
    all.push_back(Shape("security", 6).head(72, 6).raw(6));
}

void add_wifi(std::vector<Shape> &all)
{
    const auto network = [](uint32_t kind) {
        return Shape("wifi", 7)
            .head(345, 1)
            .text("network.ssid", "ssid")
            .number("network.detail_kind", kind);
    };
    const std::string detail = "network.detail";
    all.push_back(Shape("wifi", 7).head(305, 0));
    all.push_back(Shape("wifi", 8).head(305, 1).texts("pair", {"ssid", "value"}));
    all.push_back(
        Shape("wifi", 7).head(290, 1).list("ssids", 2, 4).text("ssids", "").text("ssids", "ab"));
    all.push_back(Shape("wifi", 8).head(88, 1).texts("dhcp", numbered("str", 0, 4)));
    all.push_back(Shape("wifi", 7).head(319, 1).texts("triple", numbered("str", 0, 2)));
    all.push_back(Shape("wifi", 8).head(300, 6).raw(6));
    all.push_back(network(0));
    all.push_back(network(10));
    for (const uint32_t kind : {1U, 8U, 9U}) {
        all.push_back(network(kind).number(detail + ".w0", 1));
    }
    for (const uint32_t kind : {2U, 3U, 4U}) {
        all.push_back(network(kind).text(detail + ".w0", "key"));
    }
    for (const uint32_t kind : {5U, 7U}) {
        all.push_back(network(kind)
                          .texts(detail, {"w0", "w1", "w2"})
                          .number(detail + ".w3", 3)
                          .texts(detail, {"w4", "w5"}));
    }
    all.push_back(network(6).texts(detail, numbered("w", 0, 6)));
}

void add_bluetooth(std::vector<Shape> &all)
{
    all.push_back(Shape("bluetooth", 9).head(91, 0));
    all.push_back(Shape("bluetooth", 10)
                      .head(91, 1)
                      .list("names", 2, 4)
                      .text("names", "ab")
                      .text("names", ""));
    all.push_back(Shape("bluetooth", 9).head(226, 6).raw(6));
}

void add_mail(std::vector<Shape> &all)
{
    const auto eas_account = [](Shape shape) {
        return shape.numbers("account", numbered("num", 0, 5))
            .texts("account", numbered("str", 6, 14));
    };
    all.push_back(Shape("eas", 11).head(98, 0));
    all.push_back(eas_account(Shape("eas", 12).head(98, 1)));
    all.push_back(Shape("eas", 11).head(104, -1).texts("settings", {"str8", "str10", "str13"}));
    all.push_back(eas_account(eas_account(Shape("eas", 12).head(106, 1).list("accounts", 2, 60))));
    all.push_back(Shape("eas", 11).head(7, 1).number("value.num0", 1).text("value.str1", "text"));

    const auto email_element = [](Shape shape) {
        return shape.numbers("account", numbered("num", 0, 8))
            .texts("account", numbered("str", 9, 21));
    };
    all.push_back(Shape("email", 39).head(359, 0));
    all.push_back(Shape("email", 40)
                      .head(359, 1)
                      .numbers("account", {"num0", "num1", "num2", "num4", "num6", "num3", "num5"})
                      .texts("account", numbered("str", 13, 21)));
    all.push_back(Shape("email", 39).head(362, -1).texts("settings", {"str16", "str15", "str14"}));
    all.push_back(
        email_element(email_element(Shape("email", 40).head(363, 1).list("accounts", 2, 88))));
    all.push_back(Shape("email", 39).head(5, 1).number("value.num0", 1).text("value.str1", "text"));
}

void add_apn(std::vector<Shape> &all)
{
    const auto profile = [](Shape shape) {
        return shape.numbers("profile", {"num0", "num1"})
            .texts("profile", {"profile_name"})
            .texts("profile", numbered("str", 3, 14));
    };
    all.push_back(Shape("apn", 21).head(387, 0));
    for (const uint32_t type : {387U, 393U}) {
        all.push_back(profile(Shape("apn", 22).head(type, -1)));
    }
    for (const uint32_t type : {389U, 390U, 391U}) {
        all.push_back(profile(profile(Shape("apn", 21).head(type, 1).list("profiles", 2, 60))));
    }
    for (const uint32_t type : {388U, 392U}) {
        all.push_back(Shape("apn", 22).head(type, 6).raw(6, true));
    }
}

void add_app(std::vector<Shape> &all)
{
    all.push_back(Shape("app", 13).app_head(4, 0));
    for (const uint32_t type : {4U, 15U}) {
        all.push_back(Shape("app", 13)
                          .app_head(type, 1)
                          .list("packages", 2, 4)
                          .text("packages", "ab")
                          .text("packages", ""));
    }
    for (const uint32_t type : {140U, 141U}) {
        all.push_back(Shape("app", 13).app_head(type, 1).numbers("num_pair", {"num1", "num2"}));
    }
    for (const uint32_t type : {184U, 185U}) {
        all.push_back(Shape("app", 13).app_head(type, 1).texts("pair", {"first", "second"}));
    }
    all.push_back(Shape("app", 13).app_head(142, 6).raw(6));
}

void add_app_res(std::vector<Shape> &all)
{
    const auto item = [](Shape shape) {
        return shape.text("item.name", "ab").number("item.value", 1);
    };
    all.push_back(Shape("app_res", 14).app_head(3, 0));
    all.push_back(Shape("app_res", 14)
                      .app_head(3, 1)
                      .list("packages", 2, 4)
                      .text("packages", "ab")
                      .text("packages", ""));
    for (const uint32_t type : {140U, 141U, 142U}) {
        all.push_back(item(item(Shape("app_res", 14).app_head(type, 1).list("items", 2, 8))));
    }
    for (const uint32_t type : {172U, 175U}) {
        all.push_back(Shape("app_res", 14)
                          .app_head(type, 1)
                          .list("controls", 2, 8)
                          .number("control.client_id", 1)
                          .number("control.pkg_list", 0)
                          .number("control.client_id", 2)
                          .list("control.pkg_list", 2, 4)
                          .text("control.pkg_list", "ab")
                          .text("control.pkg_list", ""));
    }
    all.push_back(Shape("app_res", 14).app_head(143, 6).raw(6));
}

void add_misc(std::vector<Shape> &all)
{
    all.push_back(Shape("misc", 17).head(122, 0));
    all.push_back(Shape("misc", 18).head(122, 3).array(3));
    all.push_back(Shape("misc", 17).head(123, 40));
    for (const uint32_t type : {124U, 125U, 126U}) {
        all.push_back(Shape("misc", 18).head(type, 1).text("text.value", "text"));
    }
    for (const uint32_t type : {127U, 128U}) {
        all.push_back(Shape("misc", 17)
                          .head(type, 0)
                          .list("param_list", 2, 4, Lie::Kind::unsigned_list)
                          .text("param_list", "ab")
                          .text("param_list", ""));
    }
    for (const uint32_t type : {281U, 283U}) {
        all.push_back(Shape("misc", 18).head(type, -1).texts("book", {"url", "title"}));
    }
    for (const uint32_t type : {288U, 289U}) {
        all.push_back(Shape("misc", 17).head(type, 1).texts("pair", {"first", "second"}));
    }
    all.push_back(Shape("misc", 18).head(282, 6).raw(6, true));
}

void add_phone_res(std::vector<Shape> &all)
{
    all.push_back(Shape("phone_res", 35).head(394, 0));
    for (const uint32_t type : {394U, 455U}) {
        all.push_back(Shape("phone_res", 36).head(type, 1).texts("item", {"str0", "str2"}));
    }
    all.push_back(Shape("phone_res", 35)
                      .head(422, 1)
                      .text("ext.str0", "text")
                      .numbers("ext.detail", {"num0", "num1"})
                      .texts("ext.detail", {"str2"}));
    for (const uint32_t type : {439U, 440U, 450U, 451U, 1U}) {
        all.push_back(Shape("phone_res", 36).head(type, 6).raw(6));
    }
}

void add_kiosk(std::vector<Shape> &all)
{
    all.push_back(Shape("kiosk", 45).head(612, 0));
    for (const uint32_t type : {612U, 614U}) {
        all.push_back(Shape("kiosk", 46).head(type, -1).text("text", "text"));
    }
    for (const uint32_t type : {618U, 621U}) {
        all.push_back(Shape("kiosk", 45)
                          .head(type, 1)
                          .list("keys", 3, 4)
                          .numbers("key", {"number", "number", "number"}));
    }
    all.push_back(Shape("kiosk", 46)
                      .head(619, 1)
                      .list("key_pairs", 2, 8)
                      .numbers("key_pair", {"key", "value", "key", "value"}));
    for (const uint32_t type : {613U, 615U, 616U, 617U, 620U, 622U}) {
        all.push_back(Shape("kiosk", 45).head(type, 6).raw(6, true));
    }
}

void add_container(std::vector<Shape> &all)
{
    all.push_back(Shape("container", 47).head(628, 0));
    all.push_back(Shape("container", 48)
                      .head(628, -1)
                      .number("item.num0", 1)
                      .texts("item", {"str1", "str2"}));
    all.push_back(Shape("container", 47)
                      .head(629, 1)
                      .number("short_item.num0", 1)
                      .text("short_item.str1", "text"));
    for (const uint32_t type : {630U, 631U, 632U}) {
        all.push_back(Shape("container", 48).head(type, 6).raw(6, true));
    }
    all.push_back(Shape("container", 47).head(640, 40));
}

void add_single_lists(std::vector<Shape> &all)
{
    const std::initializer_list<std::pair<const char *, uint8_t>> read = {
        {"date_time", 25}, {"remote", 28}, {"vpn", 29}, {"firewall", 32}, {"res", 33}};
    for (const auto &[category, type] : read) {
        all.push_back(Shape(category, type).head(1, 6).raw(6));
    }
    const std::initializer_list<std::pair<const char *, uint8_t>> heads_alone = {
        {"browser", 23}, {"enterprise", 38}, {"location", 49}, {"roaming_res", 16}};
    for (const auto &[category, type] : heads_alone) {
        all.push_back(Shape(category, type).head(1, 40));
    }
}

void add_small(std::vector<Shape> &all)
{
    all.push_back(Shape("roaming", 15).head(1, 0).text("data.name", "name"));
    all.push_back(Shape("log_manager", 51).number("type", 638).text("value", "text"));
    all.push_back(Shape("log_manager", 52).number("type", 1).byte("value"));
    all.push_back(Shape("platform", 53)
                      .number("type", 439)
                      .text("text", "text")
                      .number("number", 1)
                      .byte("flag"));
    all.push_back(
        Shape("platform", 54).number("type", 440).text("text", "text").number("number", 1));
    all.push_back(Shape("platform", 53).number("type", 1).text("text", "text"));
    for (const uint32_t type : {0U, 1U}) {
        all.push_back(Shape("app_cb", 61)
                          .callback_head(type)
                          .number("num6", 6)
                          .text("str8", "eight")
                          .text("str7", ""));
        all.push_back(Shape("misc_cb", 63)
                          .callback_head(type)
                          .byte("flag6")
                          .number("num7", 7)
                          .text("str8", "eight"));
    }
    all.push_back(Shape("app_cb", 61).callback_head(2));
    all.push_back(Shape("misc_cb", 63).callback_head(most));
}

std::vector<Shape> all_shapes()
{
    std::vector<Shape> all;
    add_registration(all);
    add_security(all);
    add_wifi(all);
    add_bluetooth(all);
    add_mail(all);
    add_apn(all);
    add_app(all);
    add_app_res(all);
    add_misc(all);
    add_phone_res(all);
    add_kiosk(all);
    add_container(all);
    add_single_lists(all);
    add_small(all);
    return all;
}

// The first step that so many bytes are not enough for.
std::optional<Fault> expected_fault(const Shape &shape, size_t length)
{
    if (length < 40) {
        return Fault{0, 40, static_cast<uint32_t>(length), "header.length"};
    }
    for (const Step &step : shape.steps()) {
        const size_t left = length - step.offset;
        if (step.needed > left) {
            return Fault{static_cast<uint32_t>(step.offset), static_cast<uint32_t>(step.needed),
                         static_cast<uint32_t>(left), step.path};
        }
    }
    return std::nullopt;
}

TEST(Fault, NamesTheFieldThatACutHits)
{
    for (const Shape &shape : all_shapes()) {
        const Bytes bytes = shape.bytes();
        EXPECT_EQ(fault_of(bytes), std::nullopt);
        for (size_t length = 8; length < bytes.size(); ++length) {
            EXPECT_EQ(fault_of(cut(bytes, length)), expected_fault(shape, length))
                << shape.category() << " " << ::testing::PrintToString(bytes);
        }
    }
}

// Calls `check` with each lie of a kind, the message and how many bytes are left behind the number.
template <class Check>
void for_each_lie(Lie::Kind kind, Check check)
{
    size_t count = 0;
    for (const Shape &shape : all_shapes()) {
        const Bytes bytes = shape.bytes();
        for (const Lie &lie : shape.lies()) {
            if (lie.kind == kind) {
                ++count;
                SCOPED_TRACE(lie.path + " at " + std::to_string(lie.at));
                check(lie, bytes, static_cast<uint32_t>(bytes.size() - lie.behind));
            }
        }
    }
    EXPECT_GT(count, 0U);
}

// What a lie claims is missing behind it.
void expect_claim_refused(const Lie &lie, const Bytes &bytes, uint32_t value, uint32_t needed)
{
    const auto left = static_cast<uint32_t>(bytes.size() - lie.behind);
    EXPECT_EQ(fault_of(with_word(bytes, lie.at, value)),
              (Fault{static_cast<uint32_t>(lie.behind), needed, left, lie.path}))
        << value;
}

// The claim of one more element than there can be, and such that 32 bits cannot hold.
void expect_large_counts_refused(const Lie &lie, const Bytes &bytes, uint32_t left)
{
    const uint32_t one_too_many = left / lie.smallest + 1;
    expect_claim_refused(lie, bytes, one_too_many, one_too_many * lie.smallest);
    const uint32_t last_exact = most / lie.smallest;
    expect_claim_refused(lie, bytes, last_exact, last_exact * lie.smallest);
    expect_claim_refused(lie, bytes, last_exact + 1, most);
    expect_claim_refused(lie, bytes, 0x7FFFFFFF, most);
}

TEST(Fault, OfATextIsTheLengthThatItClaims)
{
    for_each_lie(Lie::Kind::text, [](const Lie &lie, const Bytes &bytes, uint32_t left) {
        for (const uint32_t value : {left + 1, left + 2, 0x7FFFFFFFU, 0x80000000U, most}) {
            expect_claim_refused(lie, bytes, value, value);
        }
    });
}

TEST(Fault, OfAListIsTheSizeOfTheElementsThatItClaims)
{
    for_each_lie(Lie::Kind::list, [](const Lie &lie, const Bytes &bytes, uint32_t left) {
        expect_large_counts_refused(lie, bytes, left);
        for (const uint32_t value : {0U, 0x80000000U, most}) {
            EXPECT_EQ(fault_of(with_word(bytes, lie.at, value)), std::nullopt) << value;
        }
    });
}

// As many strings as the number says without a sign: the parameter's list knows no empty one but 0.
// Q-MISC-7
TEST(Fault, OfAMiscListIsTheSizeOfTheElementsThatItClaims)
{
    for_each_lie(Lie::Kind::unsigned_list, [](const Lie &lie, const Bytes &bytes, uint32_t left) {
        expect_large_counts_refused(lie, bytes, left);
        expect_claim_refused(lie, bytes, 0x80000000, most);
        expect_claim_refused(lie, bytes, most, most);
        EXPECT_EQ(fault_of(with_word(bytes, lie.at, 0)), std::nullopt);
    });
}

TEST(Fault, OfRawBytesIsTheSizeThatTheHeadClaims)
{
    const auto expect_too_large_refused = [](const Lie &lie, const Bytes &bytes, uint32_t left) {
        for (const uint32_t value : {left + 1, left + 2, 0x7FFFFFFFU}) {
            expect_claim_refused(lie, bytes, value, value);
        }
        EXPECT_EQ(fault_of(with_word(bytes, lie.at, left)), std::nullopt);
        EXPECT_EQ(fault_of(with_word(bytes, lie.at, left - 1)), std::nullopt);
        EXPECT_EQ(fault_of(with_word(bytes, lie.at, 0)), std::nullopt);
    };
    for_each_lie(Lie::Kind::size, [&](const Lie &lie, const Bytes &bytes, uint32_t left) {
        expect_too_large_refused(lie, bytes, left);
        for (const uint32_t value : {0x80000000U, most}) {  // no payload follows
            EXPECT_EQ(fault_of(with_word(bytes, lie.at, value)), std::nullopt) << value;
        }
    });
    for_each_lie(Lie::Kind::signed_size, [&](const Lie &lie, const Bytes &bytes, uint32_t left) {
        expect_too_large_refused(lie, bytes, left);
        for (const uint32_t value : {0x80000000U, most}) {
            expect_claim_refused(lie, bytes, value, most);
        }
    });
}

TEST(Fault, OfAnArrayIsTheSizeOfTheStringsThatTheHeadClaims)
{
    for_each_lie(Lie::Kind::array, [](const Lie &lie, const Bytes &bytes, uint32_t left) {
        expect_large_counts_refused(lie, bytes, left);
        for (const uint32_t value : {0x80000000U, most}) {
            expect_claim_refused(lie, bytes, value, most);
        }
        EXPECT_EQ(fault_of(with_word(bytes, lie.at, 0)), std::nullopt);
    });
}

}  // namespace
}  // namespace mdm::test
