/* SPDX-License-Identifier: Apache-2.0 */
#include "requests.h"

#include <stdio.h>
#include <string.h>

#include <mdm/crypto.h>
#include <mdm/ipc.h>
#include <mdm/util_policy.h>

#include "channel.h"
#include "protocol.h"
#include "release.h"
#include "show.h"

const char own_name[] = "com.example.agent";
const char *request_file;

static uint32_t next_number = 1;

/* A request with its header filled. The caller fills the body. */
static mdm_msg_t new_request(void)
{
    mdm_msg_t request = {.hdr_word1 = next_number++, .hdr_text = mdm_text(own_name)};
    return request;
}

static bool is_callback(const mdm_msg_t *msg)
{
    return msg->type == MDM_TYPE_APP_CB || msg->type == MDM_TYPE_MISC_CB;
}

bool receive_reply(int fd)
{
    bool is_reply = false;
    while (!is_reply) {
        GByteArray *packet = channel_receive(fd);
        if (packet == NULL) {
            fprintf(stderr, "the server is gone\n");
            return false;
        }
        mdm_msg_t msg = {0};
        const int32_t result = ipc_deserialize(&msg, packet->data, packet->len);
        if (result == MDM_RESULT_SUCCESS) {
            show_message("client", "<-", packet->data, packet->len);
            is_reply = !is_callback(&msg);
            release_message(&msg);
        }
        g_byte_array_unref(packet);
        if (result != MDM_RESULT_SUCCESS) {
            return false;
        }
    }
    return true;
}

/* Keeps the bytes of the newest request in the file. */
static bool keep(const uint8_t *bytes, uint32_t length)
{
    GError *error = NULL;
    if (request_file == NULL ||
        g_file_set_contents(request_file, (const gchar *)bytes, (gssize)length, &error)) {
        return true;
    }
    fprintf(stderr, "%s\n", error->message);
    g_error_free(error);
    return false;
}

/* Sends a request and shows the answer. The request and its payload stay the caller's, so it must
 * not go to ipc_free(). */
static bool ask(int fd, mdm_msg_t *request)
{
    uint32_t length = 0;
    uint8_t *bytes = ipc_serialize(request, &length);
    if (bytes == NULL) {
        fprintf(stderr, "message type %u cannot be sent\n", request->type);
        return false;
    }
    show_message("client", "->", bytes, length);
    const bool sent = keep(bytes, length) && channel_send(fd, bytes, length);
    g_free(bytes);
    return sent && receive_reply(fd);
}

bool ask_to_register(int fd, const char *pkg)
{
    mdm_msg_t request = new_request();
    return mdm_admin_set_general(&request, ADMIN_REGISTER, 0, pkg, "Example agent") &&
           ask(fd, &request);
}

bool ask_whether_registered(int fd, const char *pkg)
{
    mdm_msg_t request = new_request();
    return mdm_admin_set_query(&request, pkg, 0) && ask(fd, &request);
}

static bool ask_pwd(int fd)
{
    const mdm_pwd_policy_t policy = {8, 2, 1, 1, 30, 5, 10, 0, 1, "password", "[a-z]{8,}"};
    mdm_msg_t request = new_request();
    return mdm_pwd_set_policy(&request, &policy) && ask(fd, &request);
}

static bool ask_security(int fd)
{
    const mdm_security_item_t item = {
        .num0 = 1, .str1 = "internal", .str3 = "aes-xts", .str4 = "work"};
    mdm_msg_t request = new_request();
    return mdm_security_set_item(&request, MDM_SECURITY_ITEM_56, &item) && ask(fd, &request);
}

static bool ask_wifi(int fd)
{
    mdm_wifi_detail_t detail = {
        .w0.text = "peap", .w1.text = "agent", .w3.number = 2, .w4.text = "mschapv2"};
    const mdm_wifi_network_t network = {"office", 5, &detail};
    mdm_msg_t request = new_request();
    return mdm_wifi_set_network(&request, &network) && ask(fd, &request);
}

static bool ask_bluetooth(int fd)
{
    GList *names = g_list_append(NULL, mdm_text("keyboard"));
    names = g_list_append(names, mdm_text("mouse"));
    mdm_msg_t request = new_request();
    const bool going_on =
        mdm_bluetooth_set_names(&request, MDM_BLUETOOTH_NAMES_223, names) && ask(fd, &request);
    g_list_free(names);
    return going_on;
}

static bool ask_eas(int fd)
{
    const mdm_eas_account_t account = {
        .num0 = 1, .num5 = 6, .str6 = "agent", .str14 = "example.com"};
    mdm_msg_t request = new_request();
    return mdm_eas_set_account(&request, &account) && ask(fd, &request);
}

static bool ask_app(int fd)
{
    GList *packages = g_list_append(NULL, mdm_text("com.example.game"));
    packages = g_list_append(packages, mdm_text("com.example.store"));
    mdm_msg_t request = new_request();
    const bool is_filled = mdm_app_set_packages(&request, MDM_APP_PACKAGES_4, packages);
    request.body.app.pkg = mdm_text(own_name);
    const bool going_on = is_filled && ask(fd, &request);
    g_list_free(packages);
    return going_on;
}

static bool ask_roaming(int fd)
{
    const mdm_roaming_data_t record = {"data"};
    mdm_msg_t request = new_request();
    return mdm_roaming_set_record(&request, SET_POLICY, &record) && ask(fd, &request);
}

static bool ask_misc(int fd)
{
    const mdm_book_info_t book = {"https://intranet.example.com", "Intranet"};
    mdm_msg_t request = new_request();
    return mdm_misc_set_book(&request, MDM_MISC_BOOK_283, &book) && ask(fd, &request);
}

static bool ask_apn(int fd)
{
    const mdm_apn_account_t profile = {
        .num0 = 262, .num1 = 1, .profile_name = "Office", .str3 = "office.example"};
    mdm_msg_t request = new_request();
    return mdm_apn_set_profile(&request, MDM_APN_PROFILE_387, &profile) && ask(fd, &request);
}

/* The function that fills a message with raw bytes of one category. */
typedef bool set_data(mdm_msg_t *msg, uint32_t type, const void *bytes, size_t size);

static bool ask_with_text(int fd, set_data *set, uint32_t discriminator, const char *text)
{
    mdm_msg_t request = new_request();
    return set(&request, discriminator, text, strlen(text)) && ask(fd, &request);
}

/* Sends a ciphertext as base64 text. Raw bytes would end at their first zero byte. */
static bool ask_with_ciphertext(int fd, const uint8_t *ciphertext, uint32_t length)
{
    char *text = g_base64_encode(ciphertext, length);
    const bool going_on = ask_with_text(fd, mdm_vpn_set_data, VPN_SET_SECRET, text);
    g_free(text);
    return going_on;
}

static bool ask_vpn_secret(int fd)
{
    /* Filled with zeros to a whole block: the bytes behind the text are encrypted, too. The sixth
     * byte of this ciphertext is zero. */
    const uint8_t secret[16] = "first light";
    uint8_t *ciphertext = NULL;
    uint32_t length = 0;
    if (mdm_aes_encrypt(secret, (uint32_t)strlen((const char *)secret), EXAMPLE_KEY_IV, &ciphertext,
                        &length) != MDM_RESULT_SUCCESS) {
        return false;
    }
    /* First the whole ciphertext, then one byte less, which the server refuses. */
    const bool going_on = ask_with_ciphertext(fd, ciphertext, length) &&
                          ask_with_ciphertext(fd, ciphertext, length - 1);
    g_free(ciphertext);
    return going_on;
}

static bool ask_single_lists(int fd)
{
    const char *profile = "office:ikev2:vpn.example.com";
    const char *rules = "allow tcp 443;deny udp 53;";
    return ask_with_text(fd, mdm_browser_set_data, SET_POLICY, "https://example.com") &&
           ask_with_text(fd, mdm_date_time_set_data, SET_POLICY, "Europe/Vienna") &&
           ask_with_text(fd, mdm_remote_set_data, SET_POLICY, "ring") &&
           ask_with_text(fd, mdm_vpn_set_data, VPN_SET_PROFILE, profile) && ask_vpn_secret(fd) &&
           ask_with_text(fd, mdm_firewall_set_data, FIREWALL_ADD_RULES, rules) &&
           ask_with_text(fd, mdm_res_set_data, SET_POLICY, "camera=off") &&
           ask_with_text(fd, mdm_enterprise_set_data, SET_POLICY, "0123-4567");
}

static bool ask_phone_res(int fd)
{
    const int32_t limit[MDM_PHONE_RES_LIMIT_VALUES] = {500, 30, 0, -1, 0, 0};
    char *limit_text = NULL;
    uint32_t size = 0;
    if (mdm_phone_res_limit_serialize(1, limit, &limit_text, &size) != MDM_RESULT_SUCCESS) {
        return false;
    }
    mdm_phone_res_detail_t detail = {.num0 = 1, .str2 = limit_text};
    const mdm_phone_res_ext_t ext = {.str0 = "sim1", .detail = &detail};
    mdm_msg_t request = new_request();
    const bool going_on = mdm_phone_res_set_ext(&request, &ext) && ask(fd, &request);
    g_free(limit_text);
    return going_on;
}

static bool ask_email(int fd)
{
    const mdm_email_account_t account = {.num3 = 993,
                                         .num8 = 1,
                                         .str9 = "not sent",
                                         .str13 = "agent@example.com",
                                         .str21 = "mail.example.com"};
    mdm_msg_t request = new_request();
    return mdm_email_set_account(&request, &account) && ask(fd, &request);
}

static bool ask_kiosk(int fd)
{
    mdm_kiosk_key_pair_t home = {172, 0};
    mdm_kiosk_key_pair_t volume = {115, 1};
    GList *pairs = g_list_append(g_list_append(NULL, &home), &volume);
    mdm_msg_t request = new_request();
    const bool going_on = mdm_kiosk_set_key_pairs(&request, pairs) && ask(fd, &request);
    g_list_free(pairs);
    return going_on;
}

static bool ask_container(int fd)
{
    const mdm_container_item_t item = {7, "work", "com.example.mail"};
    mdm_msg_t request = new_request();
    return mdm_container_set_item(&request, &item) && ask(fd, &request);
}

static bool ask_location(int fd)
{
    mdm_msg_t request = new_request();
    return mdm_location_set_head(&request, SET_POLICY) && ask(fd, &request);
}

static bool ask_log_manager(int fd)
{
    mdm_msg_t request = new_request();
    return mdm_log_manager_set_text(&request, "net:info") && ask(fd, &request);
}

static bool ask_platform(int fd)
{
    mdm_msg_t request = new_request();
    return mdm_platform_set_flag(&request, "screen.timeout", 60, 1) && ask(fd, &request);
}

bool ask_every_category(int fd)
{
    return ask_pwd(fd) && ask_security(fd) && ask_wifi(fd) && ask_bluetooth(fd) && ask_eas(fd) &&
           ask_app(fd) && ask_roaming(fd) && ask_misc(fd) && ask_apn(fd) && ask_single_lists(fd) &&
           ask_phone_res(fd) && ask_email(fd) && ask_kiosk(fd) && ask_container(fd) &&
           ask_location(fd) && ask_log_manager(fd) && ask_platform(fd);
}
