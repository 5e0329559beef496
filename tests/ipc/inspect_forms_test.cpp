// SPDX-License-Identifier: Apache-2.0
//
// The parts of some messages, written down: what ipc_inspect() shows of the header and of bodies in
// which a part is not simply a field of a record.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mdm/inspect.h"
#include "mdm/result.h"
#include "support/log_recorder.hpp"
#include "support/messages.hpp"
#include "support/parts.hpp"
#include "support/wire.hpp"

namespace mdm::test::inspect_forms_test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::string value_of(const Part &part)
{
    switch (part.kind) {
    case IPC_PART_I32:
        return std::to_string(static_cast<int32_t>(part.number));
    case IPC_PART_U8:
    case IPC_PART_U32:
    case IPC_PART_COUNT:
        return std::to_string(part.number);
    case IPC_PART_STR:
        return '"' + std::string(part.bytes.begin(), part.bytes.end()) + '"';
    case IPC_PART_BYTES:
    case IPC_PART_RESERVED:
    case IPC_PART_PADDING:
    case IPC_PART_REST:
        break;
    }
    std::string text;
    for (const uint8_t byte : part.bytes) {
        text += (text.empty() ? "" : " ") + std::to_string(byte);
    }
    return text;
}

std::string line_of(const Part &part)
{
    static constexpr const char *kinds[] = {"u8",    "u32",      "i32",     "count", "str",
                                            "bytes", "reserved", "padding", "rest"};
    std::string line = std::to_string(part.offset) + ' ' + kinds[part.kind] + ' ';
    line += part.path;
    for (const int32_t position : {part.element, part.inner}) {
        line += position == -1 ? "" : '[' + std::to_string(position) + ']';
    }
    return line + " = " + value_of(part);
}

std::vector<std::string> lines_of(const std::vector<Part> &parts, uint32_t from)
{
    std::vector<std::string> lines;
    for (const Part &part : parts) {
        if (part.offset >= from) {
            lines.push_back(line_of(part));
        }
    }
    return lines;
}

// The parts from the body on.
std::vector<std::string> body_of(uint8_t type, const Bytes &body)
{
    const Inspection found = inspected(framed(type, body));
    EXPECT_EQ(found.result, MDM_RESULT_SUCCESS);
    return lines_of(found.parts, header_size);
}
std::vector<std::string> refused_body_of(uint8_t type, const Bytes &body)
{
    const LogRecorder log(MDM_LOG_NONE);
    const Inspection found = inspected(framed(type, body));
    EXPECT_EQ(found.result, MDM_RESULT_FAILED);
    return lines_of(found.parts, header_size);
}

TEST(InspectForms, Header)
{
    Bytes bytes = framed(19, hex("AA"), "hi");
    bytes[6] = 0xFE;
    bytes[7] = 0xFF;
    EXPECT_THAT(
        lines_of(inspected(bytes).parts, 0),
        ElementsAre("0 u32 header.length = 35", "4 u8 header.type = 19",
                    "5 u8 header.hdr_byte = 90", "6 reserved header.reserved = 254 255",
                    "8 u32 header.hdr_word1 = 286331153", "12 u32 header.hdr_word2 = 572662306",
                    "16 str header.hdr_text = \"hi\"", "22 u32 header.hdr_word3 = 858993459",
                    "26 u32 header.hdr_word6 = 1717986918", "30 u32 header.hdr_word7 = 2004318071",
                    "34 u32 header.hdr_word4 = 1145324612", "38 u32 header.hdr_word5 = 1431655765",
                    "42 padding padding = 170"));
}

TEST(InspectForms, TypeWithoutACategory)
{
    EXPECT_THAT(body_of(19, {}), IsEmpty());
    EXPECT_THAT(body_of(19, hex("01 02 03")), ElementsAre("40 padding padding = 1 2 3"));
}

TEST(InspectForms, AdminQuery)
{
    EXPECT_THAT(body_of(1, word(0) + str("abc") + word(0xFFFFFFFE)),
                ElementsAre("40 u32 admin.type = 0", "44 str admin.pkg = \"abc\"",
                            "51 i32 admin.status = -2"));
}

TEST(InspectForms, AdminGeneral)
{
    EXPECT_THAT(body_of(2, word(7) + word(9) + str("") + str("t")),
                ElementsAre("40 u32 admin.type = 7", "44 u32 admin.value = 9",
                            "48 str admin.pkg = \"\"", "52 str admin.text = \"t\""));
}

// A receiver drops the empty string.
TEST(InspectForms, SecurityStrings)
{
    EXPECT_THAT(body_of(5, head_bytes(68, 30) + word(3) + str("a") + str("") + str("b")),
                ElementsAre("40 u32 security.type = 68", "44 u32 security.param = 16909060",
                            "48 i32 security.data_size = 30", "52 count security.strings = 3",
                            "56 str security.strings[0] = \"a\"",
                            "61 str security.strings[1] = \"\"",
                            "65 str security.strings[2] = \"b\""));
}

TEST(InspectForms, SecurityItem)
{
    EXPECT_THAT(body_of(5, word(56) + word(0) + word(1) + word(7) + str("a") + str("d") + str("")),
                ElementsAre("40 u32 security.type = 56", "44 u32 security.param = 0",
                            "48 i32 security.data_size = 1", "52 u32 security.item.num0 = 7",
                            "56 str security.item.str1 = \"a\"",
                            "61 str security.item.str4 = \"d\"",
                            "66 str security.item.str3 = \"\""));
}

TEST(InspectForms, WifiNetworkWithAMixedDetail)
{
    const Bytes network = str("home") + word(5) + str("a") + str("") + str("c") + word(0xFFFFFFFF) +
                          str("e") + str("");
    EXPECT_THAT(
        body_of(7, word(345) + word(2) + word(1) + network),
        ElementsAre(
            "40 u32 wifi.type = 345", "44 u32 wifi.param = 2", "48 i32 wifi.data_size = 1",
            "52 str wifi.network.ssid = \"home\"", "60 i32 wifi.network.detail_kind = 5",
            "64 str wifi.network.detail.w0 = \"a\"", "69 str wifi.network.detail.w1 = \"\"",
            "73 str wifi.network.detail.w2 = \"c\"", "78 u32 wifi.network.detail.w3 = 4294967295",
            "82 str wifi.network.detail.w4 = \"e\"", "87 str wifi.network.detail.w5 = \"\""));
}

TEST(InspectForms, WifiNetworkWithTexts)
{
    const Bytes network = str("") + word(6) + str("0") + str("1") + str("2") + str("3") + str("4") +
                          str("5") + str("6");
    EXPECT_THAT(
        body_of(8, word(345) + word(2) + word(1) + network + hex("00")),
        ElementsAre(
            "40 u32 wifi.type = 345", "44 u32 wifi.param = 2", "48 i32 wifi.data_size = 1",
            "52 str wifi.network.ssid = \"\"", "56 i32 wifi.network.detail_kind = 6",
            "60 str wifi.network.detail.w0 = \"0\"", "65 str wifi.network.detail.w1 = \"1\"",
            "70 str wifi.network.detail.w2 = \"2\"", "75 str wifi.network.detail.w3 = \"3\"",
            "80 str wifi.network.detail.w4 = \"4\"", "85 str wifi.network.detail.w5 = \"5\"",
            "90 str wifi.network.detail.w6 = \"6\"", "95 padding padding = 0"));
}

TEST(InspectForms, WifiNetworkWithoutADetail)
{
    EXPECT_THAT(body_of(7, word(345) + word(2) + word(1) + str("n") + word(0xFFFFFFFF)),
                ElementsAre("40 u32 wifi.type = 345", "44 u32 wifi.param = 2",
                            "48 i32 wifi.data_size = 1", "52 str wifi.network.ssid = \"n\"",
                            "57 i32 wifi.network.detail_kind = -1"));
}

TEST(InspectForms, WifiSsids)
{
    EXPECT_THAT(
        body_of(7, word(290) + word(2) + word(1) + word(3) + str("a") + str("") + str("bc")),
        ElementsAre("40 u32 wifi.type = 290", "44 u32 wifi.param = 2", "48 i32 wifi.data_size = 1",
                    "52 count wifi.ssids = 3", "56 str wifi.ssids[0] = \"a\"",
                    "61 str wifi.ssids[1] = \"\"", "65 str wifi.ssids[2] = \"bc\""));
}

// A count with a sign that is below 1 announces no element.
TEST(InspectForms, NegativeCount)
{
    EXPECT_THAT(body_of(7, word(290) + word(2) + word(1) + word(0xFFFFFFFF) + str("a")),
                ElementsAre("40 u32 wifi.type = 290", "44 u32 wifi.param = 2",
                            "48 i32 wifi.data_size = 1", "52 count wifi.ssids = 4294967295",
                            "56 padding padding = 1 0 0 0 97"));
}

TEST(InspectForms, CountThatIsTooHigh)
{
    EXPECT_THAT(refused_body_of(7, word(290) + word(2) + word(1) + word(3) + str("a")),
                ElementsAre("40 u32 wifi.type = 290", "44 u32 wifi.param = 2",
                            "48 i32 wifi.data_size = 1", "52 count wifi.ssids = 3",
                            "56 rest rest = 1 0 0 0 97"));
}

// The count of a text whose bytes are not all there.
TEST(InspectForms, TextThatIsTooShort)
{
    EXPECT_THAT(refused_body_of(7, word(290) + word(2) + word(1) + word(2) + str("a") + word(2) +
                                       hex("62")),
                ElementsAre("40 u32 wifi.type = 290", "44 u32 wifi.param = 2",
                            "48 i32 wifi.data_size = 1", "52 count wifi.ssids = 2",
                            "56 str wifi.ssids[0] = \"a\"", "61 count wifi.ssids[1] = 2",
                            "65 rest rest = 98"));
}

TEST(InspectForms, NothingBehindAFault)
{
    EXPECT_THAT(refused_body_of(45, word(612) + word(2) + word(1) + word(9)),
                ElementsAre("40 u32 kiosk.type = 612", "44 u32 kiosk.param = 2",
                            "48 i32 kiosk.data_size = 1", "52 count kiosk.text = 9"));
}

TEST(InspectForms, ApnProfiles)
{
    const auto profile = [](uint32_t first, const char *name) {
        return word(first) + word(0) + str(name) + Bytes(48);
    };
    const std::vector<std::string> lines =
        body_of(21, word(389) + word(0) + word(1) + word(2) + profile(3, "p") + profile(4, ""));
    ASSERT_EQ(lines.size(), 3U + 1 + 2 * 15);
    EXPECT_EQ(lines[3], "52 count apn.profiles = 2");
    EXPECT_EQ(lines[4], "56 u32 apn.profile.num0[0] = 3");
    EXPECT_EQ(lines[5], "60 u32 apn.profile.num1[0] = 0");
    EXPECT_EQ(lines[6], "64 str apn.profile.profile_name[0] = \"p\"");
    EXPECT_EQ(lines[7], "69 str apn.profile.str3[0] = \"\"");
    EXPECT_EQ(lines[18], "113 str apn.profile.str14[0] = \"\"");
    EXPECT_EQ(lines[19], "117 u32 apn.profile.num0[1] = 4");
    EXPECT_EQ(lines[33], "173 str apn.profile.str14[1] = \"\"");
}

// A list in each record of a list.
TEST(InspectForms, AppResControls)
{
    const Bytes controls = word(3) + word(0xFFFFFFFF) + word(2) + str("a") + str("") + word(8) +
                           word(0) + word(9) + word(1) + str("b");
    EXPECT_THAT(
        body_of(14, word(172) + word(2) + str("me") + word(1) + controls),
        ElementsAre(
            "40 i32 app_res.type = 172", "44 u32 app_res.param = 2", "48 str app_res.pkg = \"me\"",
            "54 i32 app_res.data_size = 1", "58 count app_res.controls = 3",
            "62 i32 app_res.control.client_id[0] = -1", "66 count app_res.control.pkg_list[0] = 2",
            "70 str app_res.control.pkg_list[0][0] = \"a\"",
            "75 str app_res.control.pkg_list[0][1] = \"\"",
            "79 i32 app_res.control.client_id[1] = 8", "83 count app_res.control.pkg_list[1] = 0",
            "87 i32 app_res.control.client_id[2] = 9", "91 count app_res.control.pkg_list[2] = 1",
            "95 str app_res.control.pkg_list[2][0] = \"b\""));
}

TEST(InspectForms, AppResItems)
{
    EXPECT_THAT(body_of(14, word(140) + word(0) + str("") + word(1) + word(2) + str("a") + word(5) +
                                str("") + word(6)),
                ElementsAre("40 i32 app_res.type = 140", "44 u32 app_res.param = 0",
                            "48 str app_res.pkg = \"\"", "52 i32 app_res.data_size = 1",
                            "56 count app_res.items = 2", "60 str app_res.item.name[0] = \"a\"",
                            "65 u32 app_res.item.value[0] = 5",
                            "69 str app_res.item.name[1] = \"\"",
                            "73 u32 app_res.item.value[1] = 6"));
}

// `data_size` is the number of texts, and no count travels.
TEST(InspectForms, MiscArray)
{
    EXPECT_THAT(body_of(17, word(122) + word(0) + word(3) + str("a") + str("") + str("b")),
                ElementsAre("40 i32 misc.type = 122", "44 u32 misc.param = 0",
                            "48 i32 misc.data_size = 3", "52 str misc.array[0] = \"a\"",
                            "57 str misc.array[1] = \"\"", "61 str misc.array[2] = \"b\""));
    EXPECT_THAT(refused_body_of(17, word(122) + word(0) + word(2) + str("abc")),
                ElementsAre("40 i32 misc.type = 122", "44 u32 misc.param = 0",
                            "48 i32 misc.data_size = 2", "52 rest rest = 3 0 0 0 97 98 99"));
}

// The list stands behind the head, also without a `data_size`. Its count has no sign.
TEST(InspectForms, MiscParamList)
{
    EXPECT_THAT(body_of(17, word(127) + word(0xFFFFFFFF) + word(0) + word(2) + str("a") + str("")),
                ElementsAre("40 i32 misc.type = 127", "44 u32 misc.param = 4294967295",
                            "48 i32 misc.data_size = 0", "52 count misc.param_list = 2",
                            "56 str misc.param_list[0] = \"a\"",
                            "61 str misc.param_list[1] = \"\""));
    EXPECT_THAT(refused_body_of(17, word(128) + word(0) + word(0) + word(0x80000000) + str("a")),
                ElementsAre("40 i32 misc.type = 128", "44 u32 misc.param = 0",
                            "48 i32 misc.data_size = 0", "52 count misc.param_list = 2147483648",
                            "56 rest rest = 1 0 0 0 97"));
}

TEST(InspectForms, MiscTypesWithASign)
{
    EXPECT_THAT(body_of(17, word(0xFFFFFFFF) + word(0) + word(2) + hex("00 FF")),
                ElementsAre("40 i32 misc.type = -1", "44 u32 misc.param = 0",
                            "48 i32 misc.data_size = 2", "52 bytes misc.data = 0 255"));
}

TEST(InspectForms, KioskText)
{
    EXPECT_THAT(body_of(45, word(612) + word(0) + word(5) + str("a")),
                ElementsAre("40 u32 kiosk.type = 612", "44 u32 kiosk.param = 0",
                            "48 i32 kiosk.data_size = 5", "52 str kiosk.text = \"a\""));
}

TEST(InspectForms, KioskKeys)
{
    EXPECT_THAT(body_of(45, word(618) + word(0) + word(8) + word(2) + word(7) + word(8)),
                ElementsAre("40 u32 kiosk.type = 618", "44 u32 kiosk.param = 0",
                            "48 i32 kiosk.data_size = 8", "52 count kiosk.keys = 2",
                            "56 u32 kiosk.key.number[0] = 7", "60 u32 kiosk.key.number[1] = 8"));
}

TEST(InspectForms, PhoneResExt)
{
    EXPECT_THAT(body_of(35, word(422) + word(0) + word(1) + str("a") + word(5) + word(7) + str("")),
                ElementsAre("40 i32 phone_res.type = 422", "44 u32 phone_res.param = 0",
                            "48 i32 phone_res.data_size = 1", "52 str phone_res.ext.str0 = \"a\"",
                            "57 u32 phone_res.ext.detail.num0 = 5",
                            "61 u32 phone_res.ext.detail.num1 = 7",
                            "65 str phone_res.ext.detail.str2 = \"\""));
}

TEST(InspectForms, LogManager)
{
    EXPECT_THAT(body_of(51, word(638) + str("a")),
                ElementsAre("40 u32 log_manager.type = 638", "44 str log_manager.value = \"a\""));
    EXPECT_THAT(body_of(51, word(1) + hex("FF")),
                ElementsAre("40 u32 log_manager.type = 1", "44 u8 log_manager.value = 255"));
}

TEST(InspectForms, Platform)
{
    EXPECT_THAT(body_of(53, word(439) + str("a") + word(7) + hex("01")),
                ElementsAre("40 u32 platform.type = 439", "44 str platform.text = \"a\"",
                            "49 u32 platform.number = 7", "53 u8 platform.flag = 1"));
    EXPECT_THAT(body_of(53, word(440) + str("a") + word(7)),
                ElementsAre("40 u32 platform.type = 440", "44 str platform.text = \"a\"",
                            "49 u32 platform.number = 7"));
    EXPECT_THAT(body_of(54, word(1) + str("")),
                ElementsAre("40 u32 platform.type = 1", "44 str platform.text = \"\""));
}

TEST(InspectForms, Callbacks)
{
    const Bytes head = word(0xFFFFFFFF) + word(7) + word(8);
    EXPECT_THAT(body_of(61, word(1) + head + word(6) + str("8") + str("7")),
                ElementsAre("40 u32 app_cb.type = 1", "44 u32 app_cb.data_size = 4294967295",
                            "48 u32 app_cb.param = 7", "52 u32 app_cb.param2 = 8",
                            "56 u32 app_cb.num6 = 6", "60 str app_cb.str8 = \"8\"",
                            "65 str app_cb.str7 = \"7\""));
    EXPECT_THAT(body_of(63, word(0) + head + hex("05") + word(7) + str("8")),
                ElementsAre("40 u32 misc_cb.type = 0", "44 u32 misc_cb.data_size = 4294967295",
                            "48 u32 misc_cb.param = 7", "52 u32 misc_cb.param2 = 8",
                            "56 u8 misc_cb.flag6 = 5", "57 u32 misc_cb.num7 = 7",
                            "61 str misc_cb.str8 = \"8\""));
    EXPECT_THAT(body_of(61, word(2) + head + word(6)),
                ElementsAre("40 u32 app_cb.type = 2", "44 u32 app_cb.data_size = 4294967295",
                            "48 u32 app_cb.param = 7", "52 u32 app_cb.param2 = 8",
                            "56 padding padding = 6 0 0 0"));
    EXPECT_THAT(body_of(63, word(2) + head),
                ElementsAre("40 u32 misc_cb.type = 2", "44 u32 misc_cb.data_size = 4294967295",
                            "48 u32 misc_cb.param = 7", "52 u32 misc_cb.param2 = 8"));
}

TEST(InspectForms, ContainerShortItem)
{
    EXPECT_THAT(body_of(47, word(629) + word(0) + word(9) + word(3) + str("a")),
                ElementsAre("40 u32 container.type = 629", "44 u32 container.param = 0",
                            "48 i32 container.data_size = 9",
                            "52 u32 container.short_item.num0 = 3",
                            "56 str container.short_item.str1 = \"a\""));
}

TEST(InspectForms, EasSettingsWithPadding)
{
    EXPECT_THAT(body_of(11, word(104) + word(0) + word(14) + Bytes(12) + hex("00 00")),
                ElementsAre("40 u32 eas.type = 104", "44 u32 eas.param = 0",
                            "48 i32 eas.data_size = 14", "52 str eas.settings.str8 = \"\"",
                            "56 str eas.settings.str10 = \"\"", "60 str eas.settings.str13 = \"\"",
                            "64 padding padding = 0 0"));
}

// No receiver reads the payload, and it need not be there.
TEST(InspectForms, BrowserPayload)
{
    EXPECT_THAT(body_of(23, word(1) + word(0) + word(3) + hex("61 62 63")),
                ElementsAre("40 u32 browser.type = 1", "44 u32 browser.param = 0",
                            "48 i32 browser.data_size = 3", "52 padding padding = 97 98 99"));
    EXPECT_THAT(body_of(37, word(1) + word(0) + word(1000)),
                ElementsAre("40 u32 enterprise.type = 1", "44 u32 enterprise.param = 0",
                            "48 i32 enterprise.data_size = 1000"));
}

TEST(InspectForms, RawBytes)
{
    EXPECT_THAT(body_of(33, word(100) + word(0) + word(2) + hex("6F 6B 00")),
                ElementsAre("40 u32 res.type = 100", "44 u32 res.param = 0",
                            "48 i32 res.data_size = 2", "52 bytes res.data = 111 107",
                            "54 padding padding = 0"));
    EXPECT_THAT(
        body_of(33, word(100) + word(0) + word(0xFFFFFFFF)),
        ElementsAre("40 u32 res.type = 100", "44 u32 res.param = 0", "48 i32 res.data_size = -1"));
    EXPECT_THAT(refused_body_of(33, word(100) + word(0) + word(3) + hex("6F 6B")),
                ElementsAre("40 u32 res.type = 100", "44 u32 res.param = 0",
                            "48 i32 res.data_size = 3", "52 rest rest = 111 107"));
}

// A text with a zero byte has all of its bytes.
TEST(InspectForms, ZeroByteInAText)
{
    const std::vector<Part> parts = inspected(framed(19, {}, std::string("a\0b", 3))).parts;
    ASSERT_EQ(parts.size(), 12U);
    EXPECT_EQ(parts[6].path, "header.hdr_text");
    EXPECT_EQ(parts[6].bytes, hex("61 00 62"));
}

// False lengths and types.

TEST(InspectForms, FalseLength)
{
    const LogRecorder log(MDM_LOG_NONE);
    Bytes bytes = framed(19, {});
    put_word(bytes, 0, 33);
    const std::vector<Part> parts = inspected(bytes).parts;
    ASSERT_EQ(parts.size(), 1U);
    EXPECT_EQ(parts[0].kind, IPC_PART_REST);
    EXPECT_EQ(parts[0].path, "rest");
    EXPECT_EQ(parts[0].bytes, bytes);
    EXPECT_THAT(lines_of(inspected(hex("01 02")).parts, 0), ElementsAre("0 rest rest = 1 2"));
    EXPECT_THAT(inspected({}).parts, IsEmpty());
}

TEST(InspectForms, FalseType)
{
    const LogRecorder log(MDM_LOG_NONE);
    const std::vector<Part> parts = inspected(framed(81, {})).parts;
    ASSERT_EQ(parts.size(), 2U);
    EXPECT_EQ(line_of(parts[0]), "0 u32 header.length = 32");
    EXPECT_EQ(parts[1].kind, IPC_PART_REST);
    EXPECT_EQ(parts[1].offset, 4U);
    EXPECT_EQ(parts[1].size, 36U);
}

}  // namespace
}  // namespace mdm::test::inspect_forms_test
