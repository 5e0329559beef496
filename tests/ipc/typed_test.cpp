// SPDX-License-Identifier: Apache-2.0
//
// The named numbers, and the functions that fill and read a body by form, agree with each other,
// with the description of the format and with the codec.
#include <algorithm>
#include <cctype>
#include <cstring>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "mdm/guarded.h"
#include "support/format.hpp"
#include "support/guard_page.hpp"
#include "support/messages.hpp"
#include "support/typed.hpp"
#include "support/wire.hpp"

namespace mdm::test::typed_test {
namespace {

// Discriminators around and between those that select a form, and some that look like them where
// fewer bits are compared.
const std::vector<uint32_t> &discriminators()
{
    static const std::vector<uint32_t> all = [] {
        std::vector<uint32_t> some;
        for (uint32_t discriminator = 0; discriminator < 1024; ++discriminator) {
            some.push_back(discriminator);
        }
        for (const uint32_t low : {0U, 1U, 40U, 345U, 422U, 439U}) {
            some.push_back(low + 0x10000);
            some.push_back(low + 0x80000000);
        }
        some.push_back(UINT32_MAX);
        return some;
    }();
    return all;
}

mdm_msg_t message_of(uint8_t type, uint32_t discriminator)
{
    mdm_msg_t msg = message(type);
    msg.body.res.type = discriminator;  // every body begins with it
    return msg;
}

// Numbers and names.

TEST(Forms, AreThoseOfTheDescription)
{
    for (unsigned type = 0; type < 256; ++type) {
        const auto *category = format_of(static_cast<uint8_t>(type));
        for (const uint32_t discriminator : discriminators()) {
            const mdm_msg_t msg = message_of(static_cast<uint8_t>(type), discriminator);
            mdm_form_t expected = MDM_FORM_NONE;
            if (category != nullptr) {
                expected = public_form_of(*category, form_of(*category, discriminator));
            }
            ASSERT_EQ(mdm_form_of(&msg), expected) << type << ", " << discriminator;
        }
    }
}

TEST(WifiDetails, HaveTheFormOfTheirKind)
{
    const std::map<int32_t, mdm_wifi_detail_form_t> forms = {
        {1, MDM_WIFI_DETAIL_NUMBER}, {2, MDM_WIFI_DETAIL_TEXT},   {3, MDM_WIFI_DETAIL_TEXT},
        {4, MDM_WIFI_DETAIL_TEXT},   {5, MDM_WIFI_DETAIL_MIXED},  {6, MDM_WIFI_DETAIL_TEXTS},
        {7, MDM_WIFI_DETAIL_MIXED},  {8, MDM_WIFI_DETAIL_NUMBER}, {9, MDM_WIFI_DETAIL_NUMBER},
    };
    for (int32_t kind = -3; kind < 300; ++kind) {
        const auto form = forms.contains(kind) ? forms.at(kind) : MDM_WIFI_DETAIL_NONE;
        EXPECT_EQ(mdm_wifi_detail_form(kind), form) << kind;
        EXPECT_EQ(mdm_wifi_detail_has_texts(kind), kind >= 2 && kind <= 7) << kind;
    }
}

TEST(Categories, AreThoseOfTheDescription)
{
    for (unsigned number = 0; number < 256; ++number) {
        const auto type = static_cast<uint8_t>(number);
        const auto *category = format_of(type);
        EXPECT_STREQ(mdm_category_name(mdm_category_of(type)),
                     category != nullptr ? category->name : "none");
    }
    EXPECT_EQ(mdm_category_of(19), MDM_CATEGORY_NONE);
    EXPECT_EQ(mdm_category_of(7), MDM_CATEGORY_WIFI);
    EXPECT_EQ(mdm_category_of(8), MDM_CATEGORY_WIFI);
}

TEST(Forms, HaveANameEachAndATypedFunction)
{
    std::set<std::string> names;
    std::map<mdm_form_t, int> rows;
    for (const TypedForm &typed : typed_forms()) {
        ++rows[typed.form];
    }
    for (unsigned number = 0; number < 256; ++number) {
        const auto form = static_cast<mdm_form_t>(number);
        const std::string name = mdm_form_name(form);
        if (name == "none") {
            EXPECT_EQ(rows.count(form), 0U) << number;
            continue;
        }
        EXPECT_TRUE(names.insert(name).second) << name;
        EXPECT_EQ(rows[form], name.ends_with(".head") ? 0 : 1) << name;
    }
    EXPECT_EQ(names.size(), 73U);
    EXPECT_STREQ(mdm_form_name(MDM_FORM_WIFI_NETWORK), "wifi.network");
    EXPECT_STREQ(mdm_form_name(MDM_FORM_NONE), "none");
    EXPECT_STREQ(mdm_category_name(MDM_CATEGORY_APP_RES), "app_res");
    EXPECT_STREQ(mdm_category_name(static_cast<mdm_category_t>(29)), "none");
}

// The enumerators of types.h by their names without "MDM_".
std::map<std::string, uint32_t> named_numbers()
{
    static const std::regex entry("^ *(MDM_[A-Z0-9_]+) = ([0-9]+),.*");
    std::ifstream header(MDM_DOCS_DIR "/../include/mdm/types.h");
    std::map<std::string, uint32_t> numbers;
    std::smatch found;
    for (std::string line; std::getline(header, line);) {
        if (std::regex_match(line, found, entry)) {
            numbers[found[1]] = static_cast<uint32_t>(std::stoul(found[2]));
        }
    }
    return numbers;
}

// "MDM_WIFI_PAIR_305" of the form "wifi.pair" and 305; without the number if no other one selects
// the form.
std::string constant_name(mdm_form_t form, uint32_t discriminator, bool is_only)
{
    std::string name = std::string("MDM_") + mdm_form_name(form);
    for (char &letter : name) {
        letter = letter == '.' ? '_' : static_cast<char>(std::toupper(letter));
    }
    return is_only ? name : name + "_" + std::to_string(discriminator);
}

// A form that is not the last one of its category has a name for each number that selects it, and
// no number has another name.
TEST(Names, AreThoseOfTheDiscriminatorsThatSelectAForm)
{
    std::map<std::string, uint32_t> expected;
    for (const CategoryFormat &category : category_formats()) {
        std::string type = std::string("MDM_TYPE_") + category.name;
        for (char &letter : type) {
            letter = static_cast<char>(std::toupper(letter));
        }
        expected[type] = category.first_type();
        if (category.last_type() != category.first_type()) {
            expected[type + "_2"] = category.last_type();
        }
        std::map<mdm_form_t, std::vector<uint32_t>> selecting;
        for (uint32_t discriminator = 0; discriminator < 1024; ++discriminator) {
            selecting[public_form_of(category, form_of(category, discriminator))].push_back(
                discriminator);
        }
        for (const auto &[form, numbers] : selecting) {
            if (numbers.size() > 100) {  // every number that no other form takes
                continue;
            }
            for (const uint32_t number : numbers) {
                expected[constant_name(form, number, numbers.size() == 1)] = number;
            }
        }
    }
    std::map<std::string, uint32_t> named = named_numbers();
    EXPECT_EQ(named.erase("MDM_CATEGORY_NONE"), 1U);
    EXPECT_EQ(named.erase("MDM_FORM_NONE"), 1U);
    named.erase("MDM_MISC_HEAD");
    expected.erase("MDM_MISC_HEAD");
    EXPECT_EQ(named, expected);
}

// Filling.

std::vector<uint8_t> sealed(mdm_msg_t &msg)
{
    uint32_t length = 0;
    ipc_fault_t fault{};
    uint8_t *bytes = ipc_seal(&msg, &length, &fault);
    if (bytes == nullptr) {
        ADD_FAILURE() << "refused: " << fault.path;
        return {};
    }
    std::vector<uint8_t> copy(bytes, bytes + length);
    g_free(bytes);
    return copy;
}

bool is_same(const mdm_msg_t &one, const mdm_msg_t &other)
{
    return std::memcmp(&one, &other, sizeof one) == 0;
}

// The category of a typed form has this name in the description.
const CategoryFormat &category_of(const TypedForm &typed)
{
    return *format_of(typed.first_type);
}

class TypedForms : public testing::TestWithParam<TypedForm> {};

std::string name_of(const testing::TestParamInfo<TypedForm> &info)
{
    std::string name = mdm_form_name(info.param.form);
    std::ranges::replace(name, '.', '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Typed, TypedForms, testing::ValuesIn(typed_forms()), name_of);

// The discriminators that select the form.
std::vector<uint32_t> selecting(const TypedForm &typed)
{
    std::vector<uint32_t> some;
    for (const uint32_t discriminator : discriminators()) {
        const mdm_msg_t msg = message_of(typed.first_type, discriminator);
        if (mdm_form_of(&msg) == typed.form) {
            some.push_back(discriminator);
        }
    }
    return some;
}

TEST_P(TypedForms, AreFilledForTheirDiscriminatorsAlone)
{
    const TypedForm &typed = GetParam();
    if (typed.fill == nullptr) {
        return;
    }
    for (const uint32_t discriminator : discriminators()) {
        const mdm_msg_t expected = message_of(typed.first_type, discriminator);
        const bool is_selected = mdm_form_of(&expected) == typed.form;
        mdm_msg_t msg{};
        std::memset(&msg, 0x5A, sizeof msg);
        msg.type = typed.first_type;
        mdm_msg_t before;
        std::memcpy(&before, &msg, sizeof msg);
        const bool is_filled = typed.fill(msg, discriminator, typed.payload);
        ASSERT_EQ(is_filled, typed.is_only || is_selected) << discriminator;
        if (!is_filled) {
            ASSERT_TRUE(is_same(msg, before)) << discriminator;
        } else {
            ASSERT_EQ(mdm_form_of(&msg), typed.form) << discriminator;
            ASSERT_EQ(msg.body.res.type, typed.is_only ? selecting(typed).front() : discriminator);
        }
    }
}

// The bytes without the word that holds the address of a list in the place of `param`.
std::vector<uint8_t> without_address(std::vector<uint8_t> bytes, const TypedForm &typed)
{
    if (typed.form == MDM_FORM_MISC_STRINGS) {
        put_word(bytes, header_size + 4, 0);
    }
    return bytes;
}

// Both paths send what was filled; a receiver reads it; filled in again, it is sent as the same
// bytes. Sending may change the message, and filling makes it what it was.
TEST_P(TypedForms, TravelThereAndBack)
{
    const TypedForm &typed = GetParam();
    if (typed.fill == nullptr) {
        return;
    }
    const bool is_read = category_of(typed).is_payload_read;
    for (const uint32_t discriminator : selecting(typed)) {
        SCOPED_TRACE(discriminator);
        mdm_msg_t msg{};
        ASSERT_TRUE(typed.fill(msg, discriminator, typed.payload));
        EXPECT_NE(typed.read(msg), nullptr);
        const auto bytes = sealed(msg);
        ASSERT_TRUE(typed.fill(msg, discriminator, typed.payload));
        EXPECT_EQ(sealed(msg), bytes);
        ASSERT_TRUE(typed.fill(msg, discriminator, typed.payload));
        EXPECT_EQ(serialize(msg), bytes);

        ipc_fault_t fault{};
        const Opened received = opened(bytes, &fault);
        ASSERT_NE(received, nullptr) << fault.path;
        EXPECT_EQ(mdm_form_of(received.get()), typed.form);
        const void *payload = typed.read(*received);
        ASSERT_EQ(payload != nullptr, is_read);
        if (is_read) {
            mdm_msg_t again{};
            ASSERT_TRUE(typed.fill(again, discriminator, payload));
            EXPECT_EQ(without_address(sealed(again), typed), without_address(bytes, typed));
        }
    }
}

// A payload that travels is longer than the head alone.
TEST_P(TypedForms, SendTheirPayload)
{
    const TypedForm &typed = GetParam();
    if (typed.fill == nullptr) {
        return;
    }
    mdm_msg_t msg{};
    ASSERT_TRUE(typed.fill(msg, selecting(typed).front(), typed.payload));
    const auto bytes = sealed(msg);
    const mdm_msg_t head = message_of(typed.first_type, msg.body.res.type);
    EXPECT_GT(bytes.size(), header_size + smallest_size(category_of(typed).head));
    EXPECT_EQ(word_at(bytes, header_size), head.body.res.type);
}

// Whatever the message was before, the same bytes travel, and only the message type of the category
// is kept.
TEST_P(TypedForms, AreTheSameInAUsedMessage)
{
    const TypedForm &typed = GetParam();
    if (typed.fill == nullptr) {
        return;
    }
    const uint32_t discriminator = selecting(typed).front();
    mdm_msg_t fresh{};
    ASSERT_TRUE(typed.fill(fresh, discriminator, typed.payload));
    EXPECT_EQ(fresh.type, typed.first_type);
    const auto bytes = sealed(fresh);
    for (const TypedForm &other : typed_forms()) {
        if (other.fill == nullptr) {
            continue;
        }
        SCOPED_TRACE(mdm_form_name(other.form));
        mdm_msg_t msg{};
        ASSERT_TRUE(other.fill(msg, selecting(other).front(), other.payload));
        sealed(msg);
        ASSERT_TRUE(typed.fill(msg, discriminator, typed.payload));
        EXPECT_EQ(sealed(msg), bytes);
    }
    // A body without a category is none of this one.
    mdm_msg_t unknown{};
    std::memset(&unknown, 0x5A, sizeof unknown);
    unknown.hdr_text = nullptr;
    unknown.type = 19;
    ASSERT_TRUE(typed.fill(unknown, discriminator, typed.payload));
    const auto of_unknown = sealed(unknown);
    EXPECT_TRUE(std::equal(bytes.begin() + header_size, bytes.end(),
                           of_unknown.begin() + header_size, of_unknown.end()));
    mdm_msg_t second = message(category_of(typed).last_type());
    ASSERT_TRUE(typed.fill(second, discriminator, typed.payload));
    EXPECT_EQ(second.type, category_of(typed).last_type());
}

size_t width_of(const Field &field)
{
    return field.type == Type::text ? sizeof(char *) : field.type == Type::byte ? 1 : 4;
}

// Whether the body holds the same as another one.
bool has_same(const Field &field, const mdm_body_t &body, const void *other)
{
    const auto *bytes = reinterpret_cast<const char *>(&body);
    return std::memcmp(bytes + field.offset, static_cast<const char *>(other) + field.offset,
                       width_of(field)) == 0;
}

// Also in a message that has no category yet. In one of another category they are cleared.
TEST_P(TypedForms, KeepTheCallersWords)
{
    const TypedForm &typed = GetParam();
    if (typed.fill == nullptr) {
        return;
    }
    const CategoryFormat &category = category_of(typed);
    const uint32_t discriminator = selecting(typed).front();
    const bool has_param = !form_of(category, discriminator).is_in_param;
    const uint8_t other = typed.first_type == MDM_TYPE_VPN ? MDM_TYPE_RES : MDM_TYPE_VPN;
    for (const uint8_t type_before : {typed.first_type, uint8_t{0}, other}) {
        mdm_msg_t msg{};
        std::memset(&msg, 0x5A, sizeof msg);
        msg.type = type_before;
        mdm_msg_t before;
        std::memcpy(&before, &msg, sizeof msg);
        ASSERT_TRUE(typed.fill(msg, discriminator, typed.payload));
        before.type = typed.first_type;
        EXPECT_EQ(std::memcmp(&msg, &before, offsetof(mdm_msg_t, body)), 0);
        if (type_before == other) {
            before.body = {};
        }
        for (const Field &member : category.members) {
            const std::string name = std::string(member.path).substr(strlen(category.name) + 1);
            const bool is_callers = name.starts_with("aux") || name == "param2" ||
                                    (name == "param" && has_param) ||
                                    (name == "pkg" && category.data != no_offset);
            if (is_callers) {
                EXPECT_TRUE(has_same(member, msg.body, &before.body)) << name;
            }
        }
    }
}

// A payload of the body's own fields is put into these fields, and every other field that a form of
// the category sends is zero.
TEST(TypedFilling, PutsEachFieldInItsPlace)
{
    const mdm_body_t zero{};
    for (const TypedForm &typed : typed_forms()) {
        const CategoryFormat &category = category_of(typed);
        const Form &form = form_of(category, selecting(typed).front());
        if (form.payload != Payload::body || typed.first_type == MDM_TYPE_LOG_MANAGER) {
            continue;
        }
        SCOPED_TRACE(mdm_form_name(typed.form));
        mdm_msg_t msg{};
        std::memset(&msg, 0x5A, sizeof msg);
        msg.type = typed.first_type;
        ASSERT_TRUE(typed.fill(msg, selecting(typed).front(), typed.payload));
        for (const Form &any : category.forms) {
            for (const Field &field : any.fields) {
                const bool travels = std::ranges::find(form.fields, field.offset, &Field::offset) !=
                                     form.fields.end();
                EXPECT_TRUE(has_same(field, msg.body, travels ? typed.payload : &zero))
                    << field.path;
            }
        }
    }
    mdm_msg_t msg{};
    const char text[] = "text";
    ASSERT_TRUE(mdm_log_manager_set_text(&msg, text));
    EXPECT_EQ(mdm_log_manager_text(&msg), text);
    ASSERT_TRUE(mdm_log_manager_set_byte(&msg, 1, 0xFE));
    EXPECT_EQ(msg.body.log_manager.value.word, GSIZE_TO_LE(0xFEU));
    ASSERT_TRUE(mdm_app_cb_set_head(&msg, 2));
    EXPECT_EQ(msg.body.app_cb.str7, nullptr);
}

TEST(TypedFilling, RefusesAMissingPayload)
{
    for (const TypedForm &typed : typed_forms()) {
        const auto &form = form_of(category_of(typed), selecting(typed).front());
        const bool is_list = form.payload == Payload::strings || form.payload == Payload::records;
        if (typed.fill == nullptr || is_list || form.payload == Payload::body) {
            continue;
        }
        SCOPED_TRACE(mdm_form_name(typed.form));
        mdm_msg_t msg{};
        const mdm_msg_t before{};
        EXPECT_FALSE(typed.fill(msg, selecting(typed).front(), nullptr));
        EXPECT_TRUE(is_same(msg, before));
    }
    const mdm_phone_res_ext_t without_detail = {nullptr, 0, nullptr};
    mdm_msg_t msg{};
    EXPECT_FALSE(mdm_phone_res_set_ext(&msg, &without_detail));
    const auto list = cells({sentinel(), sentinel()});
    EXPECT_FALSE(mdm_wifi_set_ssids(&msg, MDM_WIFI_SSIDS_290, list->next));
    EXPECT_FALSE(mdm_email_set_accounts(&msg, list->next));
    EXPECT_FALSE(mdm_app_res_set_items(&msg, MDM_APP_RES_ITEMS_140, list->next));
    EXPECT_FALSE(mdm_misc_set_strings(&msg, MDM_MISC_STRINGS_127, list->next));
    for (int32_t kind = -1; kind <= 11; ++kind) {
        const mdm_wifi_network_t network = {nullptr, kind, nullptr};
        EXPECT_EQ(mdm_wifi_set_network(&msg, &network), kind < 2 || kind > 7) << kind;
    }
}

// A null list is the empty one. It is sealed, and its receiver has none.
TEST(TypedFilling, TakesTheEmptyList)
{
    for (const TypedForm &typed : typed_forms()) {
        const auto &form = form_of(category_of(typed), selecting(typed).front());
        if (form.payload != Payload::strings && form.payload != Payload::records) {
            continue;
        }
        SCOPED_TRACE(mdm_form_name(typed.form));
        mdm_msg_t msg{};
        ASSERT_TRUE(typed.fill(msg, selecting(typed).front(), nullptr));
        const auto bytes = sealed(msg);
        const uint32_t head = smallest_size(category_of(typed).head);
        const bool travels = category_of(typed).sends_empty_lists;
        EXPECT_EQ(bytes.size(), header_size + head + (travels ? 4 : form.empty_list_padding));
        const Opened received = opened(bytes);
        ASSERT_NE(received, nullptr);
        EXPECT_EQ(mdm_form_of(received.get()), typed.form);
        EXPECT_EQ(typed.read(*received), nullptr);
    }
}

TEST(TypedFilling, CountsRawBytes)
{
    mdm_msg_t msg{};
    EXPECT_FALSE(mdm_res_set_data(&msg, 1, "x", size_t{INT32_MAX} + 1));
    EXPECT_FALSE(mdm_misc_set_array(&msg, nullptr, 1));
    EXPECT_EQ(msg.type, 0);
    ASSERT_TRUE(mdm_res_set_data(&msg, 1, "x", INT32_MAX));
    EXPECT_EQ(msg.body.res.data_size, INT32_MAX);

    size_t size = 77;
    ASSERT_TRUE(mdm_res_set_data(&msg, 1, "abc", 3));
    EXPECT_EQ(std::string(mdm_res_data(&msg, &size), 3), "abc");
    EXPECT_EQ(size, 3U);
    EXPECT_EQ(mdm_vpn_data(&msg, &size), nullptr);
    EXPECT_EQ(size, 0U);
    ASSERT_TRUE(mdm_res_set_data(&msg, 1, "abc", 0));
    EXPECT_EQ(msg.body.res.data, nullptr);
    EXPECT_EQ(mdm_res_data(&msg, &size), nullptr);
    EXPECT_EQ(size, 0U);
}

// The head alone.

TEST(TypedHeads, TravelForEveryDiscriminatorThatNeedsNoPayload)
{
    std::set<std::string> names;
    for (const TypedHead &head : typed_heads()) {
        const CategoryFormat &category = *format_of(head.first_type);
        names.insert(category.name);
        for (const uint32_t discriminator : discriminators()) {
            SCOPED_TRACE(std::string(category.name) + ", " + std::to_string(discriminator));
            const Form &form = form_of(category, discriminator);
            const bool needs_payload = form.is_always_there && !form.fields.empty();
            mdm_msg_t msg{};
            ASSERT_EQ(head.fill(msg, discriminator), !needs_payload && !form.is_in_param);
            if (msg.type == 0) {
                continue;
            }
            ASSERT_EQ(msg.type, head.first_type);
            const auto bytes = sealed(msg);
            ASSERT_EQ(bytes.size(),
                      header_size + smallest_size(category.head) + form.empty_list_padding);
            ASSERT_EQ(word_at(bytes, header_size), discriminator);
            for (const TypedForm &typed : typed_forms()) {
                ASSERT_EQ(typed.read(msg), nullptr) << mdm_form_name(typed.form);
            }
        }
    }
    for (const CategoryFormat &category : category_formats()) {
        const bool has_payload_always = category.data == no_offset && !category.counts_body;
        const bool has_head = !has_payload_always && std::string(category.name) != "roaming";
        EXPECT_EQ(names.count(category.name), has_head ? 1U : 0U) << category.name;
    }
}

// Nothing of the list of strings in the place of `param` is left.
TEST(TypedHeads, AreTheSameInAUsedMessage)
{
    for (const TypedHead &head : typed_heads()) {
        SCOPED_TRACE(format_of(head.first_type)->name);
        mdm_msg_t fresh{};
        ASSERT_TRUE(head.fill(fresh, 5));
        const auto bytes = sealed(fresh);
        for (const TypedForm &typed : typed_forms()) {
            mdm_msg_t msg{};
            if (typed.fill != nullptr && typed.fill(msg, selecting(typed).front(), typed.payload)) {
                ASSERT_TRUE(head.fill(msg, 5));
                ASSERT_EQ(sealed(msg), bytes) << mdm_form_name(typed.form);
            }
        }
    }
}

TEST(TypedHeads, ReadABodyThatIsTheHeadAlone)
{
    mdm_msg_t msg = message_of(MDM_TYPE_LOCATION_2, 5);
    EXPECT_EQ(mdm_location_head(&msg), &msg.body.location);
    EXPECT_EQ(mdm_roaming_res_head(&msg), nullptr);
    msg = message_of(MDM_TYPE_ROAMING_RES, 5);
    EXPECT_EQ(mdm_roaming_res_head(&msg), &msg.body.roaming_res);
    EXPECT_EQ(mdm_location_head(&msg), nullptr);
    msg = message_of(MDM_TYPE_CONTAINER, 633);
    EXPECT_EQ(mdm_container_head(&msg), &msg.body.container);
    msg = message_of(MDM_TYPE_CONTAINER, 632);
    EXPECT_EQ(mdm_container_head(&msg), nullptr);
    msg = message_of(MDM_TYPE_MISC, MDM_MISC_HEAD);
    EXPECT_EQ(mdm_misc_head(&msg), &msg.body.misc);
    msg = message_of(MDM_TYPE_MISC, MDM_MISC_ARRAY);
    EXPECT_EQ(mdm_misc_head(&msg), nullptr);
    msg = message_of(MDM_TYPE_APP_CB, 2);
    EXPECT_EQ(mdm_app_cb_head(&msg), &msg.body.app_cb);
    EXPECT_EQ(mdm_misc_cb_head(&msg), nullptr);
    msg = message_of(MDM_TYPE_MISC_CB, 1);
    EXPECT_EQ(mdm_misc_cb_head(&msg), nullptr);
    msg = message_of(MDM_TYPE_MISC_CB, 2);
    EXPECT_EQ(mdm_misc_cb_head(&msg), &msg.body.misc_cb);
}

// Reading.

// The payload that an opened message should show, found without the typed functions.
const void *payload_of(const mdm_msg_t &msg, const GoodMessage &good)
{
    const Form &form = *good.form;
    if (!good.has_payload) {
        return nullptr;
    }
    if (form.is_in_param) {
        return msg.body.misc.param_list;
    }
    if (form.payload == Payload::body) {
        const bool is_text = mdm_form_of(&msg) == MDM_FORM_LOG_MANAGER_TEXT;
        const bool is_byte = mdm_form_of(&msg) == MDM_FORM_LOG_MANAGER_BYTE;
        return is_text   ? static_cast<const void *>(msg.body.log_manager.value.text)
               : is_byte ? static_cast<const void *>(&msg.body.log_manager.value.byte)
                         : &msg.body;
    }
    return good.category->data == no_offset
               ? nullptr
               : value_at<const void *>(&msg.body, good.category->data);
}

// Opens bytes that were made without the library, with every discriminator that the description
// gives to their form. The function of that form alone finds the payload.
TEST(TypedReading, FindsThePayloadOfEveryOpenedMessage)
{
    for (const GoodMessage &good : good_messages()) {
        if (good.category == nullptr) {
            continue;
        }
        SCOPED_TRACE(good.name);
        const size_t body = header_size + word_at(good.bytes, 16);
        const uint32_t own = word_at(good.bytes, body);
        std::vector<uint8_t> bytes = good.bytes;
        for (const uint32_t discriminator : discriminators()) {
            if (&form_of(*good.category, discriminator) != good.form) {
                continue;
            }
            put_word(bytes, body, discriminator);
            const Opened msg = opened(bytes);
            ASSERT_NE(msg, nullptr);
            const mdm_form_t form = public_form_of(*good.category, *good.form);
            ASSERT_EQ(mdm_form_of(msg.get()), form);
            for (const TypedForm &typed : typed_forms()) {
                if (typed.form == form) {
                    ASSERT_EQ(typed.read(*msg), payload_of(*msg, good)) << discriminator;
                } else if (discriminator == own ||
                           typed.first_type == good.category->first_type()) {
                    ASSERT_EQ(typed.read(*msg), nullptr) << mdm_form_name(typed.form);
                }
            }
        }
    }
}

// A pointer that `data_size` does not announce is an old one.
TEST(TypedReading, ReturnsNoStalePointer)
{
    for (const TypedForm &typed : typed_forms()) {
        const CategoryFormat &category = category_of(typed);
        const Form &form = form_of(category, selecting(typed).front());
        if (category.data == no_offset || form.is_always_there) {
            continue;
        }
        SCOPED_TRACE(mdm_form_name(typed.form));
        for (const int32_t data_size : {0, -1, 1, 5}) {
            mdm_msg_t msg = message_of(typed.first_type, selecting(typed).front());
            member_at<void *>(&msg.body, category.data) = sentinel();
            member_at<int32_t>(&msg.body, category.data_size) = data_size;
            const bool is_counted = form.payload == Payload::raw || form.payload == Payload::array;
            const bool is_there =
                is_announced(category, form, data_size) && (data_size > 0 || !is_counted);
            EXPECT_EQ(typed.read(msg), is_there ? sentinel() : nullptr) << data_size;
        }
    }
}

TEST(TypedReading, CountsTheElementsOfAList)
{
    EXPECT_EQ(mdm_list_length(nullptr), 0U);
    const auto list = cells({sentinel(), nullptr, sentinel()});
    EXPECT_EQ(mdm_list_length(list.get()), 3U);
}

TEST(TypedReading, TellsAByteFromNone)
{
    mdm_msg_t msg{};
    ASSERT_TRUE(mdm_log_manager_set_byte(&msg, 1, 0));
    ASSERT_NE(mdm_log_manager_byte(&msg), nullptr);
    EXPECT_EQ(*mdm_log_manager_byte(&msg), 0);
    EXPECT_EQ(mdm_log_manager_text(&msg), nullptr);
}

// Sending writes nothing but `data_size`: a payload may be in memory that nobody can write.
TEST(TypedFilling, TakesAPayloadThatCannotBeWritten)
{
    struct Payload {
        mdm_wifi_network_t network;
        mdm_wifi_detail_t detail;
        GList cell;
        mdm_eas_account_t account;
        char ssid[8];
    };
    const std::vector<uint8_t> room(sizeof(Payload));
    GuardedBytes guarded(room);
    // A copy whose pointers lead to where it is put.
    Payload payload{};
    const auto *placed = reinterpret_cast<const Payload *>(guarded.data());
    std::memcpy(payload.ssid, "office", 7);
    payload.network = {mdm_text(placed->ssid), 2,
                       static_cast<mdm_wifi_detail_t *>(mdm_unconst(&placed->detail))};
    payload.detail.w0.text = mdm_text(placed->ssid);
    payload.cell.data = mdm_unconst(&placed->account);
    payload.account.str8 = mdm_text(placed->ssid);
    const auto *bytes = reinterpret_cast<const uint8_t *>(&payload);
    guarded.assign({bytes, bytes + sizeof payload});

    mdm_msg_t msg{};
    ASSERT_TRUE(mdm_wifi_set_network(&msg, &placed->network));
    EXPECT_EQ(sealed(msg), serialize(msg));
    ASSERT_TRUE(mdm_eas_set_settings(&msg, &placed->account));
    sealed(msg);
    ASSERT_TRUE(mdm_eas_set_accounts(&msg, &placed->cell));
    EXPECT_EQ(sealed(msg), serialize(msg));
}

}  // namespace
}  // namespace mdm::test::typed_test
