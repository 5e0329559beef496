// SPDX-License-Identifier: Apache-2.0
#include "messages.hpp"

#include <cstdio>
#include <deque>
#include <string_view>
#include <utility>

#include "guarded_baseline_check.hpp"
#include "mdm/guarded.h"
#include "mdm/ipc.h"

namespace mdm::bench {
namespace {

constexpr Baseline res_baseline = {baseline_encode_res, baseline_decode_res, baseline_release_res,
                                   baseline_open_res};
constexpr Baseline admin_baseline = {baseline_encode_admin, baseline_decode_admin,
                                     baseline_release_admin, baseline_open_admin};
constexpr Baseline pwd_baseline = {baseline_encode_pwd, baseline_decode_pwd, baseline_release_pwd,
                                   baseline_open_pwd};
constexpr Baseline apn_baseline = {baseline_encode_apn, baseline_decode_apn, baseline_release_apn,
                                   baseline_open_apn};
constexpr Baseline accounts_baseline = {baseline_encode_accounts, baseline_decode_accounts,
                                        baseline_release_accounts, baseline_open_accounts};
constexpr Baseline names_baseline = {baseline_encode_names, baseline_decode_names,
                                     baseline_release_names, baseline_open_names};

mdm_msg_t new_message(uint8_t type)
{
    mdm_msg_t msg{};
    msg.type = type;
    msg.hdr_word1 = 1;
    return msg;
}

mdm_msg_t payload(size_t size)
{
    static std::deque<std::string> payloads;  // which keeps its elements in place
    payloads.emplace_back(size, 'x');
    mdm_msg_t msg = new_message(MDM_TYPE_RES);
    msg.body.res.type = 100;
    msg.body.res.data_size = static_cast<int32_t>(size);
    msg.body.res.data = payloads.back().data();
    return msg;
}

mdm_msg_t admin_record()
{
    mdm_msg_t msg = new_message(MDM_TYPE_ADMIN);
    msg.body.admin.type = 5;
    msg.body.admin.value = 7;
    msg.body.admin.pkg = mdm_text("com.example.agent");
    msg.body.admin.text = mdm_text("Example management agent");
    return msg;
}

mdm_msg_t pwd_policy()
{
    static mdm_pwd_policy_t policy = {
        8, 2, 1, 1, 30, 5, 10, 0, 1, mdm_text("password"), mdm_text("[a-z]{8,}")};
    mdm_msg_t msg = new_message(MDM_TYPE_PWD);
    msg.body.pwd.type = MDM_PWD_POLICY;
    msg.body.pwd.data_size = 1;
    msg.body.pwd.data = &policy;
    return msg;
}

// A text of its own for each place that needs one.
char *text(size_t length)
{
    static std::deque<std::string> texts;  // which keeps its elements in place
    texts.emplace_back(length, 'x');
    return texts.back().data();
}

template <class Record>
Record *new_record()
{
    static std::deque<Record> records;
    return &records.emplace_back();
}

// From the first to the last string of a record.
void fill(char **first, char **last)
{
    for (char **place = first; place <= last; ++place) {
        *place = text(12);
    }
}

mdm_msg_t text_record(size_t length)
{
    mdm_msg_t msg = new_message(MDM_TYPE_ADMIN);
    msg.body.admin.type = 5;
    msg.body.admin.pkg = mdm_text("");
    msg.body.admin.text = text(length);
    return msg;
}

mdm_msg_t apn_record()
{
    auto *account = new_record<mdm_apn_account_t>();
    account->num0 = 262;
    account->num1 = 1;
    fill(&account->profile_name, &account->str14);
    mdm_msg_t msg = new_message(MDM_TYPE_APN);
    msg.body.apn.type = MDM_APN_PROFILE_387;
    msg.body.apn.data_size = 1;
    msg.body.apn.data = account;
    return msg;
}

GList *list_of(size_t count, void *(*new_element)())
{
    GQueue elements = G_QUEUE_INIT;
    for (size_t i = 0; i < count; ++i) {
        g_queue_push_tail(&elements, new_element());
    }
    return elements.head;
}

void *new_account()
{
    auto *account = new_record<mdm_security_account_t>();
    fill(&account->str4, &account->str25);
    return account;
}

mdm_msg_t security_accounts(size_t count)
{
    mdm_msg_t msg = new_message(MDM_TYPE_SECURITY);
    msg.body.security.type = MDM_SECURITY_ACCOUNTS_70;
    msg.body.security.data = list_of(count, new_account);
    return msg;
}

void *new_name()
{
    return text(20);
}

mdm_msg_t package_names(size_t count)
{
    mdm_msg_t msg = new_message(MDM_TYPE_APP);
    msg.body.app.type = MDM_APP_PACKAGES_4;
    msg.body.app.data_size = 1;
    msg.body.app.data = list_of(count, new_name);
    return msg;
}

void release_names(mdm_msg_t &msg)
{
    g_list_free_full(static_cast<GList *>(msg.body.app.data), g_free);
}

void restart_data_size(mdm_msg_t &msg)
{
    msg.body.apn.data_size = 1;
}

std::vector<uint8_t> taken(uint8_t *bytes, uint32_t length)
{
    std::vector<uint8_t> copy(bytes, bytes + length);
    g_free(bytes);
    return copy;
}

std::vector<uint8_t> encoded_as(const Message &message, mdm_msg_t msg)
{
    uint32_t length = 0;
    run(message.before_encode, msg);
    uint8_t *bytes = ipc_serialize(&msg, &length);
    return taken(bytes, length);
}

// With a header text, which none of the measured messages has.
std::vector<uint8_t> encoded_with_text(const Message &message)
{
    static char header_text[] = "header text";
    mdm_msg_t msg = message.msg;
    msg.hdr_text = header_text;
    return encoded_as(message, msg);
}

// The baseline must do the same work: make the same bytes, and a message that makes them again.
bool baseline_is_true(const Message &message)
{
    const std::vector<uint8_t> expected = encoded(message);
    uint32_t length = 0;
    uint8_t *bytes = message.baseline.encode(message.msg, length);
    if (taken(bytes, length) != expected) {
        return false;
    }
    mdm_msg_t decoded{};
    message.baseline.decode(expected.data(), decoded);
    const bool same = encoded_as(message, decoded) == expected;
    message.baseline.release(decoded);
    return same && opens_like_library(message.baseline.open, expected) &&
           opens_like_library(message.baseline.open, encoded_with_text(message));
}

// What is sealed must be what is serialised.
bool seal_is_true(const Message &message)
{
    mdm_msg_t msg = message.msg;
    uint32_t length = 0;
    run(message.before_encode, msg);
    uint8_t *bytes = sealed(&msg, &length);
    return bytes != nullptr && taken(bytes, length) == encoded(message);
}

Message accounts(std::string name, size_t count)
{
    return {std::move(name), security_accounts(count), accounts_baseline, count};
}

Message names(std::string name, size_t count)
{
    return {std::move(name), package_names(count), names_baseline, count, nullptr, release_names};
}

Message text_of(std::string name, size_t length)
{
    return {std::move(name), text_record(length), admin_baseline, length};
}

// From `smallest` to `largest`, `factor` times as large each.
void add_series(std::vector<Message> &messages, Message make(std::string name, size_t size),
                std::string_view name, size_t smallest, size_t largest, size_t factor)
{
    for (size_t size = smallest; size <= largest; size *= factor) {
        messages.push_back(make(std::string(name) + " " + std::to_string(size), size));
    }
}

}  // namespace

std::vector<Message> kinds_of_messages()
{
    return {
        {"2 bytes", payload(2), res_baseline},
        {"1 KiB", payload(1024), res_baseline},
        {"1 MiB", payload(size_t{1024} * 1024), res_baseline},
        {"admin", admin_record(), admin_baseline},
        {"pwd policy", pwd_policy(), pwd_baseline},
        {"apn record", apn_record(), apn_baseline, 1, restart_data_size},
        accounts("100 accounts", 100),
        names("1,000 names", 1000),
        names("10,000 names", 10000),
        names("100,000 names", 100000),
    };
}

std::vector<Message> growing_messages()
{
    std::vector<Message> messages;
    add_series(messages, text_of, "text", 16, size_t{16} * 1024 * 1024, 4);
    add_series(messages, names, "names", 1, 100000, 10);
    add_series(messages, accounts, "accounts", 1, 10000, 10);
    return messages;
}

std::vector<Message> small_lists()
{
    return {accounts("2 accounts", 2), names("3 names", 3)};
}

std::vector<uint8_t> encoded(const Message &message)
{
    return encoded_as(message, message.msg);
}

uint8_t *sealed(mdm_msg_t *msg, uint32_t *length)
{
    return ipc_seal(msg, length, nullptr);
}

bool is_true(const Message &message)
{
    if (!baseline_is_true(message)) {
        std::fprintf(stderr, "%s: the baseline does other work\n", message.name.c_str());
        return false;
    }
    if (!seal_is_true(message)) {
        std::fprintf(stderr, "%s: ipc_seal makes other bytes\n", message.name.c_str());
        return false;
    }
    return true;
}

}  // namespace mdm::bench
