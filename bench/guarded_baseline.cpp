// SPDX-License-Identifier: Apache-2.0
#include "guarded_baseline.hpp"

#include <cstddef>
#include <cstring>
#include <utility>

namespace mdm::bench {
namespace {

constexpr uint32_t header_size = 40;
constexpr uint32_t uncounted_size = 8;
constexpr uint8_t last_type = 80;

constexpr uint32_t word = 4;
constexpr uint32_t head_size = 3 * word;
constexpr uint32_t app_head_size = 4 * word;
constexpr uint32_t pwd_numbers_size = 9 * word;
constexpr uint32_t apn_numbers_size = 2 * word;
constexpr size_t apn_texts = 13;
constexpr uint32_t account_numbers_size = 4 * word;
constexpr size_t account_texts = 22;

// The first block of a message begins with this.
struct Opened {
    void *list;
    mdm_msg_t msg;
};

struct ListedAccount {
    GList cell;
    mdm_security_account_t account;
};

uint32_t load(const uint8_t *position)
{
    uint32_t value = 0;
    std::memcpy(&value, position, word);
    return value;
}

// The received bytes, and the memory for their texts. Functions that take a text are always in
// line, so that everything stays in registers.
class Source {
public:
    Source(const uint8_t *bytes, uint32_t length) : at_(bytes), left_(length) {}

    void set_text_memory(void *memory) { text_memory_ = static_cast<char *>(memory); }

    // Reserves `size` bytes; false if fewer remain. Fixed sizes and the counts of texts are
    // reserved together, so a text costs one comparison.
    bool reserve(uint64_t size)
    {
        if (size > left_) {
            return false;
        }
        left_ -= static_cast<uint32_t>(size);
        return true;
    }

    uint8_t take_byte() { return *at_++; }

    uint32_t take()
    {
        const uint32_t value = load(at_);
        at_ += word;
        return value;
    }

    void take(void *numbers, size_t size)
    {
        std::memcpy(numbers, at_, size);
        at_ += size;
    }

    void skip(size_t size) { at_ += size; }

    // The next `count` bytes and a terminator; the text ends at the first zero byte, and the rest
    // is zero.
    [[gnu::always_inline]] bool take_bytes(uint32_t count, char *&text)
    {
        if (!reserve(count)) {
            return false;
        }
        text = text_memory_;
        std::strncpy(text, reinterpret_cast<const char *>(at_), count);
        text[count] = '\0';
        text_memory_ += size_t{count} + 1;
        at_ += count;
        return true;
    }

    [[gnu::always_inline]] bool take_text(char *&text)
    {
        const uint32_t count = take();
        if (count == 0) {
            text = nullptr;
            return true;
        }
        return take_bytes(count, text);
    }

    // One step for each text: a branch of its own is predicted better than a loop's.
    template <size_t... index>
    bool take_texts(std::index_sequence<index...> /*count*/, char **texts)
    {
        return (take_text(texts[index]) && ...);
    }

private:
    const uint8_t *at_;
    uint32_t left_;
    char *text_memory_ = nullptr;
};

mdm_msg_t *refuse(mdm_msg_t *msg)
{
    baseline_close(msg);
    return nullptr;
}

// The message with its header; behind it `record_size` bytes of no value, and room for all texts.
// Null for a false envelope, and for fewer bytes than header and body head take.
mdm_msg_t *begin(Source &in, const uint8_t *bytes, uint32_t length, size_t record_size,
                 uint32_t body_size)
{
    if (bytes == nullptr || length < header_size || load(bytes) != length - uncounted_size ||
        bytes[4] == 0 || bytes[4] > last_type || !in.reserve(header_size + uint64_t{body_size})) {
        return nullptr;
    }
    auto *opened = static_cast<Opened *>(g_malloc(sizeof(Opened) + record_size + length));
    opened->list = nullptr;
    mdm_msg_t &msg = opened->msg;
    msg.hdr_aux = 0;
    std::memset(&msg.body, 0, sizeof msg.body);  // of the header the rest is read
    in.set_text_memory(reinterpret_cast<char *>(opened + 1) + record_size);
    in.skip(word);
    msg.type = in.take_byte();
    msg.hdr_byte = in.take_byte();
    in.skip(2);
    msg.hdr_word1 = in.take();
    msg.hdr_word2 = in.take();
    if (!in.take_text(msg.hdr_text)) {
        return refuse(&msg);
    }
    msg.hdr_word3 = in.take();
    msg.hdr_word6 = in.take();
    msg.hdr_word7 = in.take();
    msg.hdr_word4 = in.take();
    msg.hdr_word5 = in.take();
    return &msg;
}

// The record behind a message.
template <class Record>
Record *record_of(mdm_msg_t *msg)
{
    return reinterpret_cast<Record *>(msg + 1);
}

template <class Body>
void take_head(Source &in, Body &body)
{
    body.type = in.take();
    body.param = in.take();
    body.data_size = static_cast<int32_t>(in.take());
}

Opened *block_of(mdm_msg_t *msg)
{
    return reinterpret_cast<Opened *>(reinterpret_cast<char *>(msg) - offsetof(Opened, msg));
}

// The second block of a message, in which the list's elements stand one behind the other.
template <class Element>
Element *make_list(mdm_msg_t *msg, uint32_t count)
{
    void *list = g_malloc(sizeof(Element) * size_t{count});
    block_of(msg)->list = list;
    return static_cast<Element *>(list);
}

}  // namespace

void baseline_close(mdm_msg_t *msg)
{
    Opened *opened = block_of(msg);
    g_free(opened->list);
    g_free(opened);
}

mdm_msg_t *baseline_open_res(const uint8_t *bytes, uint32_t length)
{
    Source in(bytes, length);
    mdm_msg_t *msg = begin(in, bytes, length, 0, head_size);
    if (msg == nullptr) {
        return nullptr;
    }
    mdm_res_info_t &body = msg->body.res;
    take_head(in, body);
    if (body.data_size < 1) {
        return msg;
    }
    char *data = nullptr;
    if (!in.take_bytes(static_cast<uint32_t>(body.data_size), data)) {
        return refuse(msg);
    }
    body.data = data;
    return msg;
}

mdm_msg_t *baseline_open_admin(const uint8_t *bytes, uint32_t length)
{
    Source in(bytes, length);
    mdm_msg_t *msg = begin(in, bytes, length, 0, 4 * word);
    if (msg == nullptr) {
        return nullptr;
    }
    mdm_admin_info_t &body = msg->body.admin;
    body.type = in.take();
    body.value = in.take();
    if (!in.take_text(body.pkg) || !in.take_text(body.text)) {
        return refuse(msg);
    }
    return msg;
}

mdm_msg_t *baseline_open_pwd(const uint8_t *bytes, uint32_t length)
{
    Source in(bytes, length);
    mdm_msg_t *msg = begin(in, bytes, length, sizeof(mdm_pwd_policy_t), head_size);
    if (msg == nullptr) {
        return nullptr;
    }
    mdm_pwd_info_t &body = msg->body.pwd;
    take_head(in, body);
    if (body.data_size < 1) {
        return msg;
    }
    auto *policy = record_of<mdm_pwd_policy_t>(msg);
    if (!in.reserve(pwd_numbers_size + 2 * word)) {
        return refuse(msg);
    }
    in.take(&policy->num0, pwd_numbers_size);
    if (!in.take_text(policy->str9) || !in.take_text(policy->str10)) {
        return refuse(msg);
    }
    body.data = policy;
    return msg;
}

mdm_msg_t *baseline_open_apn(const uint8_t *bytes, uint32_t length)
{
    Source in(bytes, length);
    mdm_msg_t *msg = begin(in, bytes, length, sizeof(mdm_apn_account_t), head_size);
    if (msg == nullptr) {
        return nullptr;
    }
    mdm_apn_info_t &body = msg->body.apn;
    take_head(in, body);
    if (body.data_size == 0) {
        return msg;
    }
    auto *account = record_of<mdm_apn_account_t>(msg);
    if (!in.reserve(apn_numbers_size + apn_texts * word)) {
        return refuse(msg);
    }
    in.take(&account->num0, apn_numbers_size);
    if (!in.take_texts(std::make_index_sequence<apn_texts>(), &account->profile_name)) {
        return refuse(msg);
    }
    body.data = account;
    return msg;
}

mdm_msg_t *baseline_open_accounts(const uint8_t *bytes, uint32_t length)
{
    Source in(bytes, length);
    mdm_msg_t *msg = begin(in, bytes, length, 0, head_size);
    if (msg == nullptr) {
        return nullptr;
    }
    mdm_security_info_t &body = msg->body.security;
    take_head(in, body);
    if (body.data_size < 1) {
        return msg;
    }
    if (!in.reserve(word)) {
        return refuse(msg);
    }
    const uint32_t count = in.take();
    if (static_cast<int32_t>(count) < 1) {
        return msg;
    }
    if (!in.reserve(uint64_t{count} * (account_numbers_size + account_texts * word))) {
        return refuse(msg);
    }
    auto *accounts = make_list<ListedAccount>(msg, count);
    GList *before = nullptr;
    for (ListedAccount *listed = accounts; listed != accounts + count; ++listed) {
        mdm_security_account_t &account = listed->account;
        listed->cell = {&account, &(listed + 1)->cell, before};
        before = &listed->cell;
        in.take(&account.num0, account_numbers_size);
        if (!in.take_texts(std::make_index_sequence<account_texts>(), &account.str4)) {
            return refuse(msg);
        }
    }
    before->next = nullptr;
    body.data = &accounts->cell;
    return msg;
}

mdm_msg_t *baseline_open_names(const uint8_t *bytes, uint32_t length)
{
    Source in(bytes, length);
    mdm_msg_t *msg = begin(in, bytes, length, 0, app_head_size);
    if (msg == nullptr) {
        return nullptr;
    }
    mdm_app_info_t &body = msg->body.app;
    body.type = static_cast<int32_t>(in.take());
    body.param = in.take();
    if (!in.take_text(body.pkg)) {
        return refuse(msg);
    }
    body.data_size = static_cast<int32_t>(in.take());
    if (body.data_size < 1) {
        return msg;
    }
    if (!in.reserve(word)) {
        return refuse(msg);
    }
    const uint32_t count = in.take();
    if (static_cast<int32_t>(count) < 1) {
        return msg;
    }
    if (!in.reserve(uint64_t{count} * word)) {
        return refuse(msg);
    }
    auto *cells = make_list<GList>(msg, count);
    GList *before = nullptr;
    for (GList *cell = cells; cell != cells + count; ++cell) {
        char *name = nullptr;
        if (!in.take_text(name)) {
            return refuse(msg);
        }
        *cell = {name, cell + 1, before};
        before = cell;
    }
    before->next = nullptr;
    body.data = cells;
    return msg;
}

}  // namespace mdm::bench
