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

char own_name[] = "com.example.agent";

static uint32_t next_number = 1;

/* A request with its header filled. The caller fills the body. */
static mdm_msg_t new_request(uint8_t type)
{
    mdm_msg_t request = {.type = type, .hdr_word1 = next_number++, .hdr_text = own_name};
    return request;
}

static bool is_callback(const mdm_msg_t *msg)
{
    return msg->type == TYPE_APP_CB || msg->type == TYPE_MISC_CB;
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
            show_message("client", "<-", &msg, packet->len);
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
    show_message("client", "->", request, length);
    const bool sent = channel_send(fd, bytes, length);
    g_free(bytes);
    return sent && receive_reply(fd);
}

bool ask_admin(int fd, uint32_t discriminator, char *pkg, char *text)
{
    mdm_msg_t request = new_request(TYPE_ADMIN);
    request.body.admin.type = discriminator;
    request.body.admin.pkg = pkg;
    request.body.admin.text = text;
    return ask(fd, &request);
}

/* Sends a request whose body is the body head and a payload. The categories declare the same five
 * fields, so the body of one stands for all. For raw bytes `data_size` is their number; for a
 * record any value of 1 or more makes it travel. */
static bool ask_with_payload(int fd, uint8_t type, uint32_t discriminator, int32_t data_size,
                             void *data)
{
    mdm_msg_t request = new_request(type);
    request.body.res.type = discriminator;
    request.body.res.data_size = data_size;
    request.body.res.data = data;
    return ask(fd, &request);
}

static bool ask_with_text(int fd, uint8_t type, uint32_t discriminator, char *text)
{
    return ask_with_payload(fd, type, discriminator, (int32_t)strlen(text), text);
}

static bool ask_pwd(int fd)
{
    char forbidden[] = "password";
    char pattern[] = "[a-z]{8,}";
    mdm_pwd_policy_t policy = {8, 2, 1, 1, 30, 5, 10, 0, 1, forbidden, pattern};
    return ask_with_payload(fd, TYPE_PWD, PWD_POLICY, 1, &policy);
}

static bool ask_security(int fd)
{
    char storage[] = "internal";
    char algorithm[] = "aes-xts";
    char owner[] = "work";
    mdm_security_item_t item = {.num0 = 1, .str1 = storage, .str3 = algorithm, .str4 = owner};
    return ask_with_payload(fd, TYPE_SECURITY, SECURITY_ITEM, 1, &item);
}

static bool ask_wifi(int fd)
{
    char ssid[] = "office";
    char method[] = "peap";
    char identity[] = "agent";
    char inner[] = "mschapv2";
    mdm_wifi_detail_t detail = {
        .w0.text = method, .w1.text = identity, .w3.number = 2, .w4.text = inner};
    mdm_wifi_network_t network = {ssid, 5, &detail};
    return ask_with_payload(fd, TYPE_WIFI, WIFI_NETWORK, 1, &network);
}

static bool ask_bluetooth(int fd)
{
    char keyboard[] = "keyboard";
    char mouse[] = "mouse";
    GList *names = g_list_append(g_list_append(NULL, keyboard), mouse);
    const bool going_on = ask_with_payload(fd, TYPE_BLUETOOTH, BLUETOOTH_NAMES, 1, names);
    g_list_free(names);
    return going_on;
}

static bool ask_eas(int fd)
{
    char user[] = "agent";
    char domain[] = "example.com";
    mdm_eas_account_t account = {.num0 = 1, .num5 = 6, .str6 = user, .str14 = domain};
    return ask_with_payload(fd, TYPE_EAS, EAS_ACCOUNT, 1, &account);
}

static bool ask_app(int fd)
{
    char game[] = "com.example.game";
    char store[] = "com.example.store";
    GList *packages = g_list_append(g_list_append(NULL, game), store);
    mdm_msg_t request = new_request(TYPE_APP);
    request.body.app.type = APP_PACKAGES;
    request.body.app.pkg = own_name;
    request.body.app.data_size = 1;
    request.body.app.data = packages;
    const bool going_on = ask(fd, &request);
    g_list_free(packages);
    return going_on;
}

static bool ask_roaming(int fd)
{
    char name[] = "data";
    mdm_roaming_data_t data = {name};
    return ask_with_payload(fd, TYPE_ROAMING, SET_POLICY, 0, &data);
}

static bool ask_misc(int fd)
{
    char url[] = "https://intranet.example.com";
    char title[] = "Intranet";
    mdm_book_info_t book = {url, title};
    mdm_msg_t request = new_request(TYPE_MISC);
    request.body.misc.type = MISC_BOOK;
    request.body.misc.data_size = 1;
    request.body.misc.data = &book;
    return ask(fd, &request);
}

static bool ask_apn(int fd)
{
    char name[] = "Office";
    char apn[] = "office.example";
    mdm_apn_account_t profile = {.num0 = 262, .num1 = 1, .profile_name = name, .str3 = apn};
    return ask_with_payload(fd, TYPE_APN, APN_PROFILE, 1, &profile);
}

/* Sends a ciphertext as base64 text. Raw bytes would end at their first zero byte. */
static bool ask_with_ciphertext(int fd, const uint8_t *ciphertext, uint32_t length)
{
    char *text = g_base64_encode(ciphertext, length);
    const bool going_on = ask_with_text(fd, TYPE_VPN, VPN_SET_SECRET, text);
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
    char home_page[] = "https://example.com";
    char zone[] = "Europe/Vienna";
    char command[] = "ring";
    char vpn_profile[] = "office:ikev2:vpn.example.com";
    char rules[] = "allow tcp 443;deny udp 53;";
    char camera[] = "camera=off";
    char licence[] = "0123-4567";
    return ask_with_text(fd, TYPE_BROWSER, SET_POLICY, home_page) &&
           ask_with_text(fd, TYPE_DATE_TIME, SET_POLICY, zone) &&
           ask_with_text(fd, TYPE_REMOTE, SET_POLICY, command) &&
           ask_with_text(fd, TYPE_VPN, VPN_SET_PROFILE, vpn_profile) && ask_vpn_secret(fd) &&
           ask_with_text(fd, TYPE_FIREWALL, FIREWALL_ADD_RULES, rules) &&
           ask_with_text(fd, TYPE_RES, SET_POLICY, camera) &&
           ask_with_text(fd, TYPE_ENTERPRISE, SET_POLICY, licence);
}

static bool ask_phone_res(int fd)
{
    char slot[] = "sim1";
    const int32_t limit[MDM_PHONE_RES_LIMIT_VALUES] = {500, 30, 0, -1, 0, 0};
    char *limit_text = NULL;
    uint32_t size = 0;
    if (mdm_phone_res_limit_serialize(1, limit, &limit_text, &size) != MDM_RESULT_SUCCESS) {
        return false;
    }
    mdm_phone_res_detail_t detail = {.num0 = 1, .str2 = limit_text};
    mdm_phone_res_ext_t ext = {.str0 = slot, .detail = &detail};
    mdm_msg_t request = new_request(TYPE_PHONE_RES);
    request.body.phone_res.type = PHONE_RES_EXT;
    request.body.phone_res.data_size = 1;
    request.body.phone_res.data = &ext;
    const bool going_on = ask(fd, &request);
    g_free(limit_text);
    return going_on;
}

static bool ask_email(int fd)
{
    char not_sent[] = "not sent";
    char address[] = "agent@example.com";
    char server[] = "mail.example.com";
    mdm_email_account_t account = {
        .num3 = 993, .num8 = 1, .str9 = not_sent, .str13 = address, .str21 = server};
    return ask_with_payload(fd, TYPE_EMAIL, EMAIL_ACCOUNT, 1, &account);
}

static bool ask_kiosk(int fd)
{
    mdm_kiosk_key_pair_t home = {172, 0};
    mdm_kiosk_key_pair_t volume = {115, 1};
    GList *pairs = g_list_append(g_list_append(NULL, &home), &volume);
    const bool going_on = ask_with_payload(fd, TYPE_KIOSK, KIOSK_KEY_PAIRS, 1, pairs);
    g_list_free(pairs);
    return going_on;
}

static bool ask_container(int fd)
{
    char name[] = "work";
    char package[] = "com.example.mail";
    mdm_container_item_t item = {7, name, package};
    return ask_with_payload(fd, TYPE_CONTAINER, CONTAINER_ITEM, 1, &item);
}

static bool ask_log_manager(int fd)
{
    char filter[] = "net:info";
    mdm_msg_t request = new_request(TYPE_LOG_MANAGER);
    request.body.log_manager.type = LOG_MANAGER_TEXT;
    request.body.log_manager.value.text = filter;
    return ask(fd, &request);
}

static bool ask_platform(int fd)
{
    char key[] = "screen.timeout";
    mdm_msg_t request = new_request(TYPE_PLATFORM);
    request.body.platform.type = PLATFORM_NUMBER_AND_FLAG;
    request.body.platform.text = key;
    request.body.platform.number = 60;
    request.body.platform.flag = 1;
    return ask(fd, &request);
}

bool ask_every_category(int fd)
{
    return ask_pwd(fd) && ask_security(fd) && ask_wifi(fd) && ask_bluetooth(fd) && ask_eas(fd) &&
           ask_app(fd) && ask_roaming(fd) && ask_misc(fd) && ask_apn(fd) && ask_single_lists(fd) &&
           ask_phone_res(fd) && ask_email(fd) && ask_kiosk(fd) && ask_container(fd) &&
           ask_with_payload(fd, TYPE_LOCATION, SET_POLICY, 0, NULL) && ask_log_manager(fd) &&
           ask_platform(fd);
}
