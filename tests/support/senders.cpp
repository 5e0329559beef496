// SPDX-License-Identifier: Apache-2.0
#include "support/senders.hpp"

#include <algorithm>
#include <array>
#include <functional>
#include <initializer_list>
#include <type_traits>

#include <rapidcheck.h>

namespace mdm::test {

bool any_bool()
{
    return *rc::gen::arbitrary<bool>();
}

uint32_t any_word()
{
    return *rc::gen::arbitrary<uint32_t>();
}

namespace {

// Draws.

int32_t any_nonzero()
{
    return *rc::gen::nonZero<int32_t>();
}

int32_t any_positive()
{
    return *rc::gen::inRange<int32_t>(1, INT32_MAX);
}

// For lengths, and for what is padded with as many bytes.
int32_t any_small()
{
    return *rc::gen::inRange<int32_t>(1, 64);
}

size_t any_count()
{
    return *rc::gen::inRange<size_t>(0, 7);
}

uint32_t any_of(std::initializer_list<uint32_t> values)
{
    return *rc::gen::elementOf(std::vector<uint32_t>(values));
}

// Text of whatever encoding: any bytes but a zero one.
std::string any_text()
{
    return *rc::gen::container<std::string>(rc::gen::nonZero<char>());
}

std::string any_bytes(int32_t count)
{
    return *rc::gen::container<std::string>(static_cast<size_t>(count), rc::gen::arbitrary<char>());
}

// Bytes, without the library.

void put(Bytes &bytes, const Bytes &more)
{
    bytes.insert(bytes.end(), more.begin(), more.end());
}

void put_word(Bytes &bytes, uint32_t value)
{
    put(bytes, word(value));
}

void put_text(Bytes &bytes, const std::string &text)
{
    put(bytes, str(text));
}

void put_zeros(Bytes &bytes, size_t count)
{
    bytes.resize(bytes.size() + count);
}

// A body under construction.
struct Sender : SentMessage {
    // The words in front of the payload, `data_size` as it travels.
    void prepend(std::initializer_list<uint32_t> words) { prepend(words, words); }
    void prepend(std::initializer_list<uint32_t> first_words,
                 std::initializer_list<uint32_t> again_words)
    {
        prepend(first, first_words);
        prepend(again, again_words);
    }
    static void prepend(Bytes &payload, std::initializer_list<uint32_t> words)
    {
        Bytes bytes;
        for (const uint32_t word : words) {
            put_word(bytes, word);
        }
        bytes.insert(bytes.end(), payload.begin(), payload.end());
        payload = bytes;
    }

    // Fills the body head, and puts it in front of the payload with the `data_size` that is sent.
    template <class Info>
    void head(Info &info, uint32_t type, int32_t data_size, int32_t sent, int32_t sent_on)
    {
        info.type = static_cast<decltype(info.type)>(type);
        info.param = any_word();
        info.data_size = data_size;
        prepend({type, info.param, static_cast<uint32_t>(sent)},
                {type, info.param, static_cast<uint32_t>(sent_on)});
    }
    template <class Info>
    void head(Info &info, uint32_t type, int32_t data_size)
    {
        head(info, type, data_size, data_size, data_size);
    }
    // The same for a category that stores the payload's size, whatever was there.
    template <class Info>
    void head_with_size(Info &info, uint32_t type, size_t extra = 0)
    {
        head(info, type, any_nonzero(), static_cast<int32_t>(first.size() + extra),
             static_cast<int32_t>(again.size() + extra));
    }
    // The same for a category that adds the payload's size to what was there.
    template <class Info>
    void head_with_sum(Info &info, uint32_t type)
    {
        const int32_t before = any_small();
        const size_t first_payload_size = first.size();
        const auto payload_size = static_cast<int32_t>(first_payload_size);
        put_zeros(first, static_cast<size_t>(before));
        put_zeros(again, static_cast<size_t>(before) + first_payload_size);
        head(info, type, before, before + payload_size, before + 2 * payload_size);
    }

    // Both payloads.
    void word(uint32_t value)
    {
        put_word(first, value);
        put_word(again, value);
    }
    void byte(uint8_t value)
    {
        first.push_back(value);
        again.push_back(value);
    }
    void zeros(size_t count)
    {
        put_zeros(first, count);
        put_zeros(again, count);
    }

    // A string that travels; null and empty ones are the same there.
    char *text()
    {
        if (any_bool()) {
            word(0);
            return nullptr;
        }
        return written(any_text());
    }
    char *written(const std::string &text)
    {
        put_text(first, text);
        put_text(again, text);
        return keep(text);
    }

    // Raw bytes arrive as a string: behind their first zero byte nothing is left of them.
    char *raw(int32_t count)
    {
        std::string bytes = any_bytes(count);
        first.insert(first.end(), bytes.begin(), bytes.end());
        char *data = keep(bytes);
        std::fill(std::ranges::find(bytes, '\0'), bytes.end(), '\0');
        again.insert(again.end(), bytes.begin(), bytes.end());
        return data;
    }

    // The listed members travel, in this order.
    template <class Record, class... Members>
    void fields(Record &record, Members Record::*...members)
    {
        (draw(record.*members), ...);
    }
    template <class Record, class... Members>
    Record *record(Members Record::*...members)
    {
        auto *record = make<Record>();
        fields(*record, members...);
        (note(record->*members), ...);
        return record;
    }

    // A count and as many elements.
    GList *list(size_t count, const std::function<void *()> &draw_element)
    {
        word(static_cast<uint32_t>(count));
        return uncounted_list(count, draw_element);
    }
    GList *uncounted_list(size_t count, const std::function<void *()> &draw_element)
    {
        GList *list = nullptr;
        for (size_t i = 0; i < count; ++i) {
            list = g_list_append(list, draw_element());
        }
        for (GList *cell = list; cell != nullptr; cell = cell->next) {
            note(cell->data);
        }
        lists.push_back(list);
        kept.emplace_back(list, [](void *cells) { g_list_free(static_cast<GList *>(cells)); });
        return list;
    }
    // A count and strings. An empty one arrives as a null element, which may not be sent on.
    GList *texts()
    {
        return list(any_count(), [this] {
            const std::string text = any_text();
            may_be_sent_on = may_be_sent_on && !text.empty();
            return written(text);
        });
    }

    template <class Record>
    Record *make()
    {
        const auto record = std::make_shared<Record>();
        kept.push_back(record);
        return record.get();
    }

    // A member of what the body's data points at.
    template <class Value>
    void note(Value &value)
    {
        if constexpr (std::is_pointer_v<Value>) {
            pointers.push_back(&value);
        }
    }

private:
    void draw(uint32_t &value) { word(value = any_word()); }
    void draw(int32_t &value) { word(static_cast<uint32_t>(value = any_nonzero())); }
    void draw(uint8_t &value) { byte(value = static_cast<uint8_t>(any_word())); }
    void draw(char *&value) { value = text(); }
};

// The generators. Each of the first switch's cases is one row of the category's table; `data_size`
// 0 comes first.

void send_admin(Sender &out)
{
    mdm_admin_info_t &info = out.msg.body.admin;
    info.type = any_of({0, 1, 5, 0xFFFFFFFF});
    if (info.type == 0) {
        out.fields(info, &mdm_admin_info_t::pkg, &mdm_admin_info_t::status);
    } else {
        out.fields(info, &mdm_admin_info_t::value, &mdm_admin_info_t::pkg, &mdm_admin_info_t::text);
    }
    out.prepend({info.type});
}

template <class Info>
void send_head_alone(Sender &out, Info &info)
{
    out.head(info, any_of({0, 40, 56, 68, 88, 98, 290, 305, 387, 389, 612, 628}), 0);
}

template <class Info>
void send_raw(Sender &out, Info &info, uint32_t type)
{
    const int32_t count = any_small();
    info.data = out.raw(count);
    out.head(info, type, count);
}

void send_pwd(Sender &out)
{
    mdm_pwd_info_t &info = out.msg.body.pwd;
    using Policy = mdm_pwd_policy_t;
    switch (any_of({0, 1, 2})) {
    case 0:
        return send_head_alone(out, info);
    case 1:
        return send_raw(out, info, any_of({0, 39, 41, 0xFFFFFFFF}));
    default:
        info.data = out.record(&Policy::num0, &Policy::num1, &Policy::num2, &Policy::num3,
                               &Policy::num4, &Policy::num5, &Policy::num6, &Policy::num7,
                               &Policy::num8, &Policy::str9, &Policy::str10);
        out.head(info, 40, any_positive());
    }
}

mdm_security_account_t *security_account(Sender &out)
{
    using A = mdm_security_account_t;
    return out.record(&A::num0, &A::num1, &A::num2, &A::num3, &A::str4, &A::str5, &A::str6,
                      &A::str7, &A::str8, &A::str9, &A::str10, &A::str11, &A::str12, &A::str13,
                      &A::str14, &A::str15, &A::str16, &A::str17, &A::str18, &A::str19, &A::str20,
                      &A::str21, &A::str22, &A::str23, &A::str24, &A::str25);
}

// Empty strings are lost on the way.
GList *security_strings(Sender &out)
{
    Bytes strings_received;
    uint32_t count_received = 0;
    GList *list = out.list(1 + any_count(), [&] {
        const std::string text = any_text();
        if (!text.empty()) {
            put_text(strings_received, text);
            ++count_received;
        }
        return out.written(text);
    });
    out.again.clear();
    put_word(out.again, count_received);
    out.again.insert(out.again.end(), strings_received.begin(), strings_received.end());
    out.may_be_sent_on = count_received != 0;
    out.is_all_released = false;
    return list;
}

void send_security(Sender &out)
{
    mdm_security_info_t &info = out.msg.body.security;
    using Item = mdm_security_item_t;
    switch (any_of({0, 1, 2, 3, 4, 5})) {
    case 0:
        return out.head(info, any_of({0, 57}), 0);
    case 1:  // an item that is not there
        return out.head(info, any_of({56, 76}), any_nonzero(), 0, 0);
    case 2:  // an empty list is sized with its count, but sent without it
        out.zeros(4);
        return out.head(info, any_of({68, 69, 70, 71}), 0);
    case 3:
        info.data = out.record(&Item::num0, &Item::str1, &Item::str4, &Item::str3);
        return out.head_with_size(info, any_of({56, 76}));
    case 4:
        if (any_bool()) {
            info.data = security_strings(out);
            return out.head_with_size(info, any_of({68, 69}), 12);
        }
        info.data = out.list(1 + any_count(), [&] { return security_account(out); });
        return out.head_with_size(info, any_of({70, 71}), 12);
    default:
        return send_raw(out, info, any_of({0, 55, 57, 67, 72, 75, 77, 0xFFFFFFFF}));
    }
}

void wifi_text(Sender &out, mdm_wifi_word_t &word)
{
    word.text = out.text();
    out.note(word.text);
}

mdm_wifi_network_t *wifi_network(Sender &out)
{
    auto *network = out.record(&mdm_wifi_network_t::ssid);
    network->detail_kind = *rc::gen::inRange<int32_t>(-1, 12);
    out.word(static_cast<uint32_t>(network->detail_kind));
    network->detail = out.make<mdm_wifi_detail_t>();
    out.note(network->detail);
    mdm_wifi_detail_t &detail = *network->detail;
    switch (network->detail_kind) {
    case 1:
    case 8:
    case 9:
        out.word(detail.w0.number = any_word());
        break;
    case 2:
    case 3:
    case 4:
        wifi_text(out, detail.w0);
        break;
    case 5:
    case 7:
        for (mdm_wifi_word_t *word : {&detail.w0, &detail.w1, &detail.w2}) {
            wifi_text(out, *word);
        }
        out.word(detail.w3.number = any_word());
        for (mdm_wifi_word_t *word : {&detail.w4, &detail.w5}) {
            wifi_text(out, *word);
        }
        break;
    case 6:
        for (mdm_wifi_word_t *word :
             {&detail.w0, &detail.w1, &detail.w2, &detail.w3, &detail.w4, &detail.w5, &detail.w6}) {
            wifi_text(out, *word);
        }
        break;
    default:
        network->detail = nullptr;
    }
    return network;
}

void send_wifi(Sender &out)
{
    mdm_wifi_info_t &info = out.msg.body.wifi;
    const auto with_padding = [&](uint32_t type, void *data) {
        info.data = data;
        const int32_t data_size = any_small();
        out.zeros(static_cast<size_t>(data_size));
        out.head(info, type, data_size);
    };
    switch (any_of({0, 1, 2, 3, 4, 5, 6})) {
    case 0:
        return send_head_alone(out, info);
    case 1:
        return with_padding(
            any_of({305, 307, 309, 311, 313, 315, 317, 324, 326, 328, 330, 332, 339}),
            out.record(&mdm_wifi_pair_t::ssid, &mdm_wifi_pair_t::value));
    case 2:
        return with_padding(88, out.record(&mdm_wifi_dhcp_t::str0, &mdm_wifi_dhcp_t::str1,
                                           &mdm_wifi_dhcp_t::str2, &mdm_wifi_dhcp_t::str3,
                                           &mdm_wifi_dhcp_t::str4));
    case 3:
        return with_padding(319, out.record(&mdm_wifi_triple_t::str0, &mdm_wifi_triple_t::str1,
                                            &mdm_wifi_triple_t::str2));
    case 4:
        info.data = wifi_network(out);
        out.is_all_released = false;
        return out.head(info, 345, any_positive());
    case 5:
        info.data = out.texts();
        return out.head(info, any_of({290, 344, 346, 348, 349, 350, 352}), any_positive());
    default:
        return send_raw(out, info, any_of({0, 87, 89, 304, 306, 340, 343, 351, 353}));
    }
}

void send_bluetooth(Sender &out)
{
    mdm_bluetooth_info_t &info = out.msg.body.bluetooth;
    out.is_all_released = false;
    switch (any_of({0, 1, 2})) {
    case 0:
        return send_head_alone(out, info);
    case 1:
        info.data = out.texts();
        return out.head(
            info, any_of({91, 220, 221, 222, 223, 224, 225, 227, 230, 231, 233, 234, 235, 237}),
            any_positive());
    default:
        return send_raw(out, info, any_of({0, 90, 92, 219, 226, 228, 229, 232, 236, 238}));
    }
}

mdm_eas_account_t *eas_account(Sender &out)
{
    using A = mdm_eas_account_t;
    return out.record(&A::num0, &A::num1, &A::num2, &A::num3, &A::num4, &A::num5, &A::str6,
                      &A::str7, &A::str8, &A::str9, &A::str10, &A::str11, &A::str12, &A::str13,
                      &A::str14);
}

void send_eas(Sender &out)
{
    mdm_eas_info_t &info = out.msg.body.eas;
    using Account = mdm_eas_account_t;
    switch (any_of({0, 1, 2, 3, 4})) {
    case 0:
        return send_head_alone(out, info);
    case 1:
        info.data = eas_account(out);
        return out.head_with_size(info, 98);
    case 2:
        info.data = out.record(&Account::str8, &Account::str10, &Account::str13);
        return out.head_with_sum(info, 104);
    case 3:
        info.data = out.list(1 + any_count(), [&] { return eas_account(out); });
        return out.head_with_size(info, 106, 12);
    default:
        info.data = out.record(&mdm_eas_value_t::num0, &mdm_eas_value_t::str1);
        return out.head_with_size(info, any_of({0, 97, 99, 103, 105, 107}));
    }
}

mdm_email_account_t *email_account(Sender &out)
{
    using A = mdm_email_account_t;
    return out.record(&A::num0, &A::num1, &A::num2, &A::num4, &A::num6, &A::num3, &A::num5,
                      &A::str13, &A::str14, &A::str15, &A::str16, &A::str17, &A::str18, &A::str19,
                      &A::str20, &A::str21);
}

mdm_email_account_t *email_element(Sender &out)
{
    using A = mdm_email_account_t;
    return out.record(&A::num0, &A::num1, &A::num2, &A::num3, &A::num4, &A::num5, &A::num6,
                      &A::num7, &A::num8, &A::str9, &A::str10, &A::str11, &A::str12, &A::str13,
                      &A::str14, &A::str15, &A::str16, &A::str17, &A::str18, &A::str19, &A::str20,
                      &A::str21);
}

void send_email(Sender &out)
{
    mdm_email_info_t &info = out.msg.body.email;
    using Account = mdm_email_account_t;
    switch (any_of({0, 1, 2, 3, 4})) {
    case 0:
        return send_head_alone(out, info);
    case 1:
        info.data = email_account(out);
        return out.head_with_size(info, 359);
    case 2:
        info.data = out.record(&Account::str16, &Account::str15, &Account::str14);
        out.is_all_released = false;
        return out.head_with_size(info, 362);
    case 3:
        info.data = out.list(1 + any_count(), [&] { return email_element(out); });
        return out.head_with_size(info, 363, 12);
    default:
        info.data = out.record(&mdm_email_value_t::num0, &mdm_email_value_t::str1);
        return out.head_with_size(info, any_of({0, 358, 360, 361, 364}));
    }
}

mdm_apn_account_t *apn_account(Sender &out)
{
    using A = mdm_apn_account_t;
    return out.record(&A::num0, &A::num1, &A::profile_name, &A::str3, &A::str4, &A::str5, &A::str6,
                      &A::str7, &A::str8, &A::str9, &A::str10, &A::str11, &A::str12, &A::str13,
                      &A::str14);
}

void send_apn(Sender &out)
{
    mdm_apn_info_t &info = out.msg.body.apn;
    switch (any_of({0, 1, 2, 3})) {
    case 0:
        return send_head_alone(out, info);
    case 1:
        info.data = apn_account(out);
        return out.head_with_sum(info, any_of({387, 393}));
    case 2:
        info.data = out.list(1 + any_count(), [&] { return apn_account(out); });
        return out.head_with_size(info, any_of({389, 390, 391}), 12);
    default:
        return send_raw(out, info, any_of({0, 386, 388, 392, 394}));
    }
}

// The head of the application bodies.
template <class Info>
void application_head(Sender &out, Info &info, uint32_t type, int32_t data_size)
{
    Sender head;
    info.type = static_cast<int32_t>(type);
    info.data_size = data_size;
    head.word(type);
    head.word(info.param = any_word());
    const char *pkg = head.text();
    info.pkg = pkg == nullptr ? nullptr : out.keep(pkg);
    head.word(static_cast<uint32_t>(data_size));
    out.first.insert(out.first.begin(), head.first.begin(), head.first.end());
    out.again.insert(out.again.begin(), head.first.begin(), head.first.end());
}

template <class Info>
void application_raw(Sender &out, Info &info, uint32_t type)
{
    const int32_t count = any_small();
    info.data = out.raw(count);
    application_head(out, info, type, count);
}

void send_app(Sender &out)
{
    mdm_app_info_t &info = out.msg.body.app;
    switch (any_of({0, 1, 2, 3, 4})) {
    case 0:
        return application_head(out, info, any_of({0, 4, 140, 184}),
                                *rc::gen::inRange<int32_t>(-2, 1));
    case 1:
        info.data = out.texts();
        out.is_all_released = false;
        return application_head(out, info, any_of({4, 15}), any_positive());
    case 2:
        info.data = out.record(&mdm_app_num_pair_t::num1, &mdm_app_num_pair_t::num2);
        return application_head(out, info, any_of({140, 141}), 8);
    case 3:
        info.data = out.record(&mdm_app_pair_t::first, &mdm_app_pair_t::second);
        return application_head(out, info, any_of({184, 185}), any_positive());
    default:
        return application_raw(out, info, any_of({0, 3, 5, 14, 16, 139, 142, 183, 186}));
    }
}

// An item without a name is not sent, but leaves 8 bytes at the end, which arrive as an item
// without a name. One with an empty name is sent, and sent on as one without.
GList *app_res_items(Sender &out)
{
    size_t unsent = 0;
    size_t lost = 0;
    GList *list = out.list(any_count(), [&] {
        auto *item = out.make<mdm_app_res_item_t>();
        item->value = any_word();
        if (any_bool()) {
            ++unsent;
            return item;
        }
        const std::string name = any_text();
        item->name = out.keep(name);
        out.note(item->name);
        put_text(out.first, name);
        put_word(out.first, item->value);
        if (name.empty()) {
            ++lost;
        } else {
            put_text(out.again, name);
            put_word(out.again, item->value);
        }
        return item;
    });
    put_zeros(out.first, 8 * unsent);
    put_zeros(out.again, 8 * (unsent + lost));
    out.is_whole = unsent == 0;
    out.is_whole_again = lost == 0;
    return list;
}

mdm_app_control_info_t *app_control(Sender &out)
{
    auto *control = out.record(&mdm_app_control_info_t::client_id);
    control->pkg_list = out.texts();
    out.note(control->pkg_list);
    return control;
}

void send_app_res(Sender &out)
{
    mdm_app_res_info_t &info = out.msg.body.app_res;
    switch (any_of({0, 1, 2, 3, 4})) {
    case 0:
        return application_head(out, info, any_of({0, 3, 140, 172}),
                                *rc::gen::inRange<int32_t>(-2, 1));
    case 1:
        info.data = out.texts();
        out.is_all_released = info.data != nullptr;
        return application_head(out, info, any_of({3, 155, 159, 162, 168, 169, 170, 171, 176, 177}),
                                any_positive());
    case 2:
        info.data = app_res_items(out);
        out.is_all_released = info.data != nullptr;
        return application_head(out, info, any_of({140, 141, 142}), any_positive());
    case 3:
        info.data = out.list(any_count(), [&] { return app_control(out); });
        out.is_all_released = false;
        return application_head(out, info, any_of({172, 173, 174, 175}), any_positive());
    default:
        return application_raw(out, info, any_of({0, 2, 4, 139, 143, 154, 156, 167, 178}));
    }
}

template <class Info>
void callback_head(Sender &out, Info &info)
{
    info.param = any_word();
    info.param2 = any_word();
    info.data_size = any_word();
    const auto size = static_cast<uint32_t>(16 + out.first.size());
    out.prepend({info.type, size, info.param, info.param2});
}

void send_app_cb(Sender &out)
{
    using Info = mdm_app_cb_info_t;
    Info &info = out.msg.body.app_cb;
    info.type = any_of({0, 1, 2, 0xFFFFFFFF});
    if (info.type < 2) {
        out.fields(info, &Info::num6, &Info::str8, &Info::str7);
    }
    callback_head(out, info);
}

void send_misc_cb(Sender &out)
{
    using Info = mdm_misc_cb_info_t;
    Info &info = out.msg.body.misc_cb;
    info.type = any_of({0, 1, 2, 0xFFFFFFFF});
    if (info.type < 2) {
        out.fields(info, &Info::flag6, &Info::num7, &Info::str8);
    }
    callback_head(out, info);
}

char **misc_array(Sender &out, int32_t count)
{
    auto *texts = out.make<std::array<char *, 64>>();
    for (int32_t i = 0; i < count; ++i) {
        char *&text = (*texts)[static_cast<size_t>(i)];
        text = out.text();
        out.note(text);
    }
    return texts->data();
}

// A null element is not sent, but leaves 4 bytes at the end, which arrive as a null element. An
// empty string is sent, and sent on as a null element.
GList *misc_list(Sender &out)
{
    size_t unsent = 0;
    size_t lost = 0;
    GList *list = out.list(any_count(), [&]() -> void * {
        if (any_bool()) {
            ++unsent;
            return nullptr;
        }
        const std::string text = any_text();
        put_text(out.first, text);
        if (text.empty()) {
            ++lost;
        } else {
            put_text(out.again, text);
        }
        return out.keep(text);
    });
    put_zeros(out.first, 4 * unsent);
    put_zeros(out.again, 4 * (unsent + lost));
    out.is_whole = unsent == 0;
    out.is_whole_again = lost == 0;
    return list;
}

void send_misc(Sender &out)
{
    mdm_misc_info_t &info = out.msg.body.misc;
    switch (any_of({0, 1, 2, 3, 4, 5, 6, 7})) {
    case 0:
        return out.head(info, any_of({0, 122, 123, 124, 281, 288}), 0);
    case 1: {
        const int32_t count = any_small();
        info.data = misc_array(out, count);
        return out.head(info, 122, count);
    }
    case 2:
        return out.head(info, 123, any_nonzero());
    case 3:
        info.data = out.record(&mdm_misc_str_t::value);
        return out.head_with_size(info, any_of({124, 125, 126}));
    case 4: {
        GList *list = misc_list(out);
        out.head(info, any_of({127, 128}), static_cast<int32_t>(any_word()));
        info.param_list = list;
        out.sends_pointer_as_param = true;
        out.is_all_released = false;
        return;
    }
    case 5:
        info.data = out.record(&mdm_book_info_t::url, &mdm_book_info_t::title);
        return out.head_with_size(info, any_of({281, 283}));
    case 6:
        info.data = out.record(&mdm_misc_str_pair_t::first, &mdm_misc_str_pair_t::second);
        return out.head_with_size(info, any_of({288, 289}));
    default:
        return send_raw(out, info, any_of({0, 121, 129, 280, 282, 284, 287, 290}));
    }
}

void send_phone_res(Sender &out)
{
    mdm_phone_res_info_t &info = out.msg.body.phone_res;
    using Item = mdm_phone_res_item_t;
    using Detail = mdm_phone_res_detail_t;
    const auto record = [&](uint32_t type) {
        const int32_t data_size = any_positive();
        out.head(info, type, data_size, data_size, 12);
    };
    switch (any_of({0, 1, 2, 3})) {
    case 0:
        return out.head(info, any_of({0, 394, 422, 439, 450}), 0);
    case 1:
        info.data = out.record(&Item::str0, &Item::str2);
        return record(any_of({394, 421, 423, 438, 441, 449, 452, 455}));
    case 2: {
        auto *ext = out.record(&mdm_phone_res_ext_t::str0);
        ext->detail = out.record(&Detail::num0, &Detail::num1, &Detail::str2);
        out.note(ext->detail);
        info.data = ext;
        return record(422);
    }
    default:  // but 439 and 440, which are sized as records and sent as raw bytes
        return send_raw(out, info, any_of({0, 393, 450, 451, 456, 0xFFFFFFFF}));
    }
}

// Null elements are not sent, but leave their bytes at the end, which arrive as zeros.
template <class Element>
GList *kiosk_list(Sender &out, size_t count, const std::function<Element *()> &draw_element)
{
    size_t unsent = 0;
    GList *list = out.list(count, [&]() -> void * {
        if (any_bool()) {
            ++unsent;
            return nullptr;
        }
        return draw_element();
    });
    out.zeros(unsent * sizeof(Element));
    out.is_whole = unsent == 0;
    return list;
}

void send_kiosk(Sender &out)
{
    mdm_kiosk_info_t &info = out.msg.body.kiosk;
    using Pair = mdm_kiosk_key_pair_t;
    switch (any_of({0, 1, 2, 3, 4})) {
    case 0:
        return send_head_alone(out, info);
    case 1: {  // an empty string arrives as null, which announces a string and sends none
        const std::string text = any_text();
        info.data = out.written(text);
        out.may_be_sent_on = !text.empty();
        return out.head_with_size(info, any_of({612, 614}));
    }
    case 2:
        info.data = kiosk_list<uint32_t>(out, 1 + any_count(), [&] {
            auto *key = out.make<uint32_t>();
            out.word(*key = any_word());
            return key;
        });
        return out.head_with_size(info, any_of({618, 621}), static_cast<size_t>(-4));
    case 3:
        info.data = kiosk_list<Pair>(out, 1 + any_count(),
                                     [&] { return out.record(&Pair::key, &Pair::value); });
        return out.head_with_size(info, 619, static_cast<size_t>(-4));
    default:
        return send_raw(out, info, any_of({0, 611, 613, 615, 616, 617, 620, 622}));
    }
}

void send_container(Sender &out)
{
    mdm_container_info_t &info = out.msg.body.container;
    using Item = mdm_container_item_t;
    switch (any_of({0, 1, 2, 3, 4})) {
    case 0:
        return send_head_alone(out, info);
    case 1:
        info.data = out.record(&Item::num0, &Item::str1, &Item::str2);
        return out.head_with_size(info, 628);
    case 2:
        info.data = out.record(&Item::num0, &Item::str1);
        return out.head_with_size(info, 629);
    case 3:
        return send_raw(out, info, any_of({630, 631, 632}));
    default:
        // The contract's functions do not look at what has no form to travel in.
        out.is_whole = any_bool();
        info.data = out.is_whole ? nullptr : out.keep("anything");
        return out.head(info, any_of({0, 627, 633, 640}), any_nonzero());
    }
}

void send_roaming(Sender &out)
{
    out.msg.body.roaming.data = out.record(&mdm_roaming_data_t::name);
    out.is_all_released = false;
    out.head(out.msg.body.roaming, any_word(), static_cast<int32_t>(any_word()));
}

template <auto member>
void send_only_head(Sender &out)
{
    out.head(out.msg.body.*member, any_word(), static_cast<int32_t>(any_word()));
}

void send_log_manager(Sender &out)
{
    mdm_log_manager_info_t &info = out.msg.body.log_manager;
    info.type = any_of({0, 637, 638, 639});
    if (info.type == 638) {
        info.value.text = out.text();
    } else {
        info.value.word = any_word();
        out.byte(static_cast<uint8_t>(info.value.word));
    }
    out.prepend({info.type});
}

void send_platform(Sender &out)
{
    using Info = mdm_platform_info_t;
    Info &info = out.msg.body.platform;
    info.type = any_of({0, 438, 439, 440, 441});
    switch (info.type) {
    case 439:
        out.fields(info, &Info::text, &Info::number, &Info::flag);
        break;
    case 440:
        out.fields(info, &Info::text, &Info::number);
        break;
    default:
        out.fields(info, &Info::text);
    }
    out.prepend({info.type});
}

template <auto member>
void send_single_list(Sender &out)
{
    if (any_bool()) {
        return out.head(out.msg.body.*member, any_word(), 0);
    }
    send_raw(out, out.msg.body.*member, any_word());
}

// The payload does not come back.
template <auto member>
void send_unread_list(Sender &out)
{
    send_single_list<member>(out);
    out.is_received = (out.msg.body.*member).data_size == 0;
    out.may_be_sent_on = out.is_received;
}

template <void (*send)(Sender &)>
SentMessage drawn()
{
    Sender out;
    send(out);
    return static_cast<SentMessage &&>(out);
}

}  // namespace

char *SentMessage::keep(const std::string &text)
{
    const auto copy = std::make_shared<std::string>(text);
    kept.push_back(copy);
    return copy->data();
}

std::ostream &operator<<(std::ostream &out, const Category &category)
{
    return out << category.name;
}

const std::vector<Category> &categories()
{
    static const std::vector<Category> all = {
        {"admin", {1, 2}, drawn<send_admin>},
        {"pwd", {3, 4}, drawn<send_pwd>},
        {"security", {5, 6}, drawn<send_security>},
        {"wifi", {7, 8}, drawn<send_wifi>},
        {"bluetooth", {9, 10}, drawn<send_bluetooth>},
        {"eas", {11, 12}, drawn<send_eas>},
        {"app", {13}, drawn<send_app>},
        {"app_res", {14}, drawn<send_app_res>},
        {"roaming", {15}, drawn<send_roaming>},
        {"roaming_res", {16}, drawn<send_only_head<&mdm_body_t::roaming_res>>},
        {"misc", {17, 18}, drawn<send_misc>},
        {"apn", {21, 22}, drawn<send_apn>},
        {"browser", {23, 24}, drawn<send_unread_list<&mdm_body_t::browser>>},
        {"date_time", {25, 26}, drawn<send_single_list<&mdm_body_t::date_time>>},
        {"remote", {27, 28}, drawn<send_single_list<&mdm_body_t::remote>>},
        {"vpn", {29, 30}, drawn<send_single_list<&mdm_body_t::vpn>>},
        {"firewall", {31, 32}, drawn<send_single_list<&mdm_body_t::firewall>>},
        {"res", {33, 34}, drawn<send_single_list<&mdm_body_t::res>>},
        {"phone_res", {35, 36}, drawn<send_phone_res>},
        {"enterprise", {37, 38}, drawn<send_unread_list<&mdm_body_t::enterprise>>},
        {"email", {39, 40}, drawn<send_email>},
        {"kiosk", {45, 46}, drawn<send_kiosk>},
        {"container", {47, 48}, drawn<send_container>},
        {"location", {49, 50}, drawn<send_only_head<&mdm_body_t::location>>},
        {"log_manager", {51, 52}, drawn<send_log_manager>},
        {"platform", {53, 54}, drawn<send_platform>},
        {"app_cb", {61}, drawn<send_app_cb>},
        {"misc_cb", {63}, drawn<send_misc_cb>},
    };
    return all;
}

SentMessage any_message(const Category &category)
{
    SentMessage sent = category.draw_body();
    mdm_msg_t &msg = sent.msg;
    msg.type = *rc::gen::elementOf(category.types);
    msg.hdr_byte = static_cast<uint8_t>(any_word());
    msg.hdr_text = any_bool() ? sent.keep(any_text()) : nullptr;
    for (uint32_t *word : {&msg.hdr_word1, &msg.hdr_word2, &msg.hdr_word3, &msg.hdr_word4,
                           &msg.hdr_word5, &msg.hdr_word6, &msg.hdr_word7}) {
        *word = any_word();
    }
    return sent;
}

Bytes message_bytes(const mdm_msg_t &msg, const Bytes &body)
{
    Bytes bytes = {msg.type, msg.hdr_byte, 0, 0};
    put_word(bytes, msg.hdr_word1);
    put_word(bytes, msg.hdr_word2);
    put_text(bytes, msg.hdr_text == nullptr ? "" : msg.hdr_text);
    for (const uint32_t word :
         {msg.hdr_word3, msg.hdr_word6, msg.hdr_word7, msg.hdr_word4, msg.hdr_word5}) {
        put_word(bytes, word);
    }
    bytes.insert(bytes.end(), body.begin(), body.end());
    Sender::prepend(bytes, {static_cast<uint32_t>(bytes.size() - 4)});
    return bytes;
}

// Makes the body's second word zero.
Bytes without_param(Bytes bytes, size_t body_size)
{
    std::fill_n(bytes.end() - static_cast<std::ptrdiff_t>(body_size) + 4, 4, uint8_t{0});
    return bytes;
}

}  // namespace mdm::test
