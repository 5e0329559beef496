// SPDX-License-Identifier: Apache-2.0
#include "baseline.hpp"

#include <cstring>

namespace mdm::bench {
namespace {

void put(uint8_t *&out, uint32_t value)
{
    std::memcpy(out, &value, 4);
    out += 4;
}

void put(uint8_t *&out, const char *text, uint32_t length)
{
    put(out, length);
    if (length != 0) {
        std::memcpy(out, text, length);
        out += length;
    }
}

// The same for a text whose length is not known: the length is filled in behind the copy, whose
// terminator is overwritten by what comes next.
uint8_t *put_text(uint8_t *out, const char *text)
{
    char *begin = reinterpret_cast<char *>(out) + 4;
    char *end = stpcpy(begin, text);
    const auto length = static_cast<uint32_t>(end - begin);
    std::memcpy(out, &length, 4);
    return out + 4 + length;
}

uint32_t take(const uint8_t *&in)
{
    uint32_t value = 0;
    std::memcpy(&value, in, 4);
    in += 4;
    return value;
}

// What g_strndup() returns: its text ends at the first zero byte, and the rest is zero.
char *take_bytes(const uint8_t *&in, uint32_t length)
{
    char *text = static_cast<char *>(g_malloc(length + 1));
    std::strncpy(text, reinterpret_cast<const char *>(in), length);
    text[length] = '\0';
    in += length;
    return text;
}

char *take_text(const uint8_t *&in)
{
    const uint32_t length = take(in);
    return length == 0 ? nullptr : take_bytes(in, length);
}

uint8_t *begin(const mdm_msg_t &msg, uint32_t body_size, uint32_t &length, uint8_t *&out)
{
    const uint32_t text_length =
        msg.hdr_text == nullptr ? 0 : static_cast<uint32_t>(std::strlen(msg.hdr_text));
    length = 40 + text_length + body_size;
    auto *buffer = static_cast<uint8_t *>(g_malloc(length + 5));
    buffer[length] = 0;
    std::memset(buffer + length + 1, 0xF4, 4);
    out = buffer;
    put(out, length - 8);
    *out++ = msg.type;
    *out++ = msg.hdr_byte;
    *out++ = 0;
    *out++ = 0;
    put(out, msg.hdr_word1);
    put(out, msg.hdr_word2);
    put(out, msg.hdr_text, text_length);
    put(out, msg.hdr_word3);
    put(out, msg.hdr_word6);
    put(out, msg.hdr_word7);
    put(out, msg.hdr_word4);
    put(out, msg.hdr_word5);
    return buffer;
}

void take_header(const uint8_t *&in, mdm_msg_t &msg)
{
    in += 4;
    msg.type = *in++;
    msg.hdr_byte = *in++;
    in += 2;
    msg.hdr_word1 = take(in);
    msg.hdr_word2 = take(in);
    msg.hdr_text = take_text(in);
    msg.hdr_word3 = take(in);
    msg.hdr_word6 = take(in);
    msg.hdr_word7 = take(in);
    msg.hdr_word4 = take(in);
    msg.hdr_word5 = take(in);
}

template <class Body>
void put_head(uint8_t *&out, const Body &body)
{
    put(out, body.type);
    put(out, body.param);
    put(out, static_cast<uint32_t>(body.data_size));
}

template <class Body>
void take_head(const uint8_t *&in, Body &body)
{
    body.type = take(in);
    body.param = take(in);
    body.data_size = static_cast<int32_t>(take(in));
}

}  // namespace

uint8_t *baseline_encode_res(const mdm_msg_t &msg, uint32_t &length)
{
    const mdm_res_info_t &body = msg.body.res;
    const auto size = static_cast<uint32_t>(body.data_size);
    uint8_t *out = nullptr;
    uint8_t *buffer = begin(msg, 12 + size, length, out);
    put_head(out, body);
    std::memcpy(out, body.data, size);
    return buffer;
}

void baseline_decode_res(const uint8_t *bytes, mdm_msg_t &msg)
{
    take_header(bytes, msg);
    mdm_res_info_t &body = msg.body.res;
    take_head(bytes, body);
    body.data = take_bytes(bytes, static_cast<uint32_t>(body.data_size));
}

void baseline_release_res(mdm_msg_t &msg)
{
    mdm_res_info_t &body = msg.body.res;
    g_free(msg.hdr_text);
    g_free(body.data);
}

uint8_t *baseline_encode_admin(const mdm_msg_t &msg, uint32_t &length)
{
    const mdm_admin_info_t &body = msg.body.admin;
    const auto pkg_length = static_cast<uint32_t>(std::strlen(body.pkg));
    const auto text_length = static_cast<uint32_t>(std::strlen(body.text));
    uint8_t *out = nullptr;
    uint8_t *buffer = begin(msg, 16 + pkg_length + text_length, length, out);
    put(out, body.type);
    put(out, body.value);
    put(out, body.pkg, pkg_length);
    put(out, body.text, text_length);
    return buffer;
}

void baseline_decode_admin(const uint8_t *bytes, mdm_msg_t &msg)
{
    take_header(bytes, msg);
    mdm_admin_info_t &body = msg.body.admin;
    body.type = take(bytes);
    body.value = take(bytes);
    body.pkg = take_text(bytes);
    body.text = take_text(bytes);
}

void baseline_release_admin(mdm_msg_t &msg)
{
    mdm_admin_info_t &body = msg.body.admin;
    g_free(msg.hdr_text);
    g_free(body.pkg);
    g_free(body.text);
}

uint8_t *baseline_encode_pwd(const mdm_msg_t &msg, uint32_t &length)
{
    const mdm_pwd_info_t &body = msg.body.pwd;
    const auto &policy = *static_cast<mdm_pwd_policy_t *>(body.data);
    const auto length9 = static_cast<uint32_t>(std::strlen(policy.str9));
    const auto length10 = static_cast<uint32_t>(std::strlen(policy.str10));
    uint8_t *out = nullptr;
    uint8_t *buffer = begin(msg, 56 + length9 + length10, length, out);
    put_head(out, body);
    std::memcpy(out, &policy.num0, 36);
    out += 36;
    put(out, policy.str9, length9);
    put(out, policy.str10, length10);
    return buffer;
}

void baseline_decode_pwd(const uint8_t *bytes, mdm_msg_t &msg)
{
    take_header(bytes, msg);
    mdm_pwd_info_t &body = msg.body.pwd;
    take_head(bytes, body);
    auto *policy = static_cast<mdm_pwd_policy_t *>(g_malloc0(sizeof(mdm_pwd_policy_t)));
    std::memcpy(&policy->num0, bytes, 36);
    bytes += 36;
    policy->str9 = take_text(bytes);
    policy->str10 = take_text(bytes);
    body.data = policy;
}

void baseline_release_pwd(mdm_msg_t &msg)
{
    auto *policy = static_cast<mdm_pwd_policy_t *>(msg.body.pwd.data);
    g_free(msg.hdr_text);
    g_free(policy->str9);
    g_free(policy->str10);
    g_free(policy);
}

namespace {

constexpr size_t apn_texts = 13;
constexpr size_t account_texts = 22;

GList *append(GList *&head, GList *tail, void *element)
{
    GList *cell = g_list_alloc();
    cell->data = element;
    cell->prev = tail;
    (tail == nullptr ? head : tail->next) = cell;
    return cell;
}

}  // namespace

// The sender's `data_size` stays at the end, as so many zero bytes.
uint8_t *baseline_encode_apn(const mdm_msg_t &msg, uint32_t &length)
{
    const mdm_apn_info_t &body = msg.body.apn;
    const auto &account = *static_cast<mdm_apn_account_t *>(body.data);
    char *const *texts = &account.profile_name;
    uint32_t lengths[apn_texts];
    auto size = static_cast<uint32_t>(body.data_size) + 8;
    for (size_t i = 0; i < apn_texts; ++i) {
        lengths[i] = static_cast<uint32_t>(std::strlen(texts[i]));
        size += 4 + lengths[i];
    }
    uint8_t *out = nullptr;
    uint8_t *buffer = begin(msg, 12 + size, length, out);
    put(out, body.type);
    put(out, body.param);
    put(out, size);
    put(out, account.num0);
    put(out, account.num1);
    for (size_t i = 0; i < apn_texts; ++i) {
        put(out, texts[i], lengths[i]);
    }
    std::memset(out, 0, static_cast<uint32_t>(body.data_size));
    return buffer;
}

void baseline_decode_apn(const uint8_t *bytes, mdm_msg_t &msg)
{
    take_header(bytes, msg);
    mdm_apn_info_t &body = msg.body.apn;
    take_head(bytes, body);
    auto *account = static_cast<mdm_apn_account_t *>(g_malloc0(sizeof(mdm_apn_account_t)));
    account->num0 = take(bytes);
    account->num1 = take(bytes);
    char **texts = &account->profile_name;
    for (size_t i = 0; i < apn_texts; ++i) {
        texts[i] = take_text(bytes);
    }
    body.data = account;
}

void baseline_release_apn(mdm_msg_t &msg)
{
    auto *account = static_cast<mdm_apn_account_t *>(msg.body.apn.data);
    char **texts = &account->profile_name;
    g_free(msg.hdr_text);
    for (size_t i = 0; i < apn_texts; ++i) {
        g_free(texts[i]);
    }
    g_free(account);
}

uint8_t *baseline_encode_accounts(const mdm_msg_t &msg, uint32_t &length)
{
    const mdm_security_info_t &body = msg.body.security;
    uint32_t size = 16;
    uint32_t count = 0;
    for (const auto *cell = static_cast<GList *>(body.data); cell != nullptr; cell = cell->next) {
        const auto &account = *static_cast<mdm_security_account_t *>(cell->data);
        char *const *texts = &account.str4;
        size += 16;
        for (size_t i = 0; i < account_texts; ++i) {
            size += 4 + static_cast<uint32_t>(std::strlen(texts[i]));
        }
        ++count;
    }
    uint8_t *out = nullptr;
    uint8_t *buffer = begin(msg, size, length, out);
    put(out, body.type);
    put(out, body.param);
    put(out, size);
    put(out, count);
    for (const auto *cell = static_cast<GList *>(body.data); cell != nullptr; cell = cell->next) {
        const auto &account = *static_cast<mdm_security_account_t *>(cell->data);
        char *const *texts = &account.str4;
        std::memcpy(out, &account.num0, 16);
        out += 16;
        for (size_t i = 0; i < account_texts; ++i) {
            out = put_text(out, texts[i]);
        }
    }
    return buffer;
}

void baseline_decode_accounts(const uint8_t *bytes, mdm_msg_t &msg)
{
    take_header(bytes, msg);
    mdm_security_info_t &body = msg.body.security;
    take_head(bytes, body);
    GList *list = nullptr;
    GList *tail = nullptr;
    for (uint32_t left = take(bytes); left > 0; --left) {
        auto *account =
            static_cast<mdm_security_account_t *>(g_malloc0(sizeof(mdm_security_account_t)));
        std::memcpy(&account->num0, bytes, 16);
        bytes += 16;
        char **texts = &account->str4;
        for (size_t i = 0; i < account_texts; ++i) {
            texts[i] = take_text(bytes);
        }
        tail = append(list, tail, account);
    }
    body.data = list;
}

void baseline_release_accounts(mdm_msg_t &msg)
{
    auto *list = static_cast<GList *>(msg.body.security.data);
    g_free(msg.hdr_text);
    for (const GList *cell = list; cell != nullptr; cell = cell->next) {
        char **texts = &static_cast<mdm_security_account_t *>(cell->data)->str4;
        for (size_t i = 0; i < account_texts; ++i) {
            g_free(texts[i]);
        }
    }
    g_list_free_full(list, g_free);
}

uint8_t *baseline_encode_names(const mdm_msg_t &msg, uint32_t &length)
{
    const mdm_app_info_t &body = msg.body.app;
    uint32_t size = 20;
    uint32_t count = 0;
    for (const auto *cell = static_cast<GList *>(body.data); cell != nullptr; cell = cell->next) {
        size += 4 + static_cast<uint32_t>(std::strlen(static_cast<char *>(cell->data)));
        ++count;
    }
    uint8_t *out = nullptr;
    uint8_t *buffer = begin(msg, size, length, out);
    put(out, static_cast<uint32_t>(body.type));
    put(out, body.param);
    put(out, nullptr, 0);
    put(out, static_cast<uint32_t>(body.data_size));
    put(out, count);
    for (const auto *cell = static_cast<GList *>(body.data); cell != nullptr; cell = cell->next) {
        out = put_text(out, static_cast<char *>(cell->data));
    }
    return buffer;
}

// The list is not released with the message, but by its owner.
void baseline_decode_names(const uint8_t *bytes, mdm_msg_t &msg)
{
    take_header(bytes, msg);
    mdm_app_info_t &body = msg.body.app;
    body.type = static_cast<int32_t>(take(bytes));
    body.param = take(bytes);
    body.pkg = take_text(bytes);
    body.data_size = static_cast<int32_t>(take(bytes));
    GList *list = nullptr;
    GList *tail = nullptr;
    for (uint32_t left = take(bytes); left > 0; --left) {
        tail = append(list, tail, take_text(bytes));
    }
    body.data = list;
}

void baseline_release_names(mdm_msg_t &msg)
{
    mdm_app_info_t &body = msg.body.app;
    g_free(msg.hdr_text);
    g_free(body.pkg);
    g_list_free_full(static_cast<GList *>(body.data), g_free);
}

}  // namespace mdm::bench
