/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Calls every exported function through the shared library, and some functions of the headers, from
 * C, with a platform log of the program's own.
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <mdm/crypto.h>
#include <mdm/guarded.h>
#include <mdm/inspect.h>
#include <mdm/ipc.h>
#include <mdm/log.h>
#include <mdm/noti.h>
#include <mdm/util.h>
#include <mdm/util_policy.h>

#define CHECK(condition)                                                    \
    do {                                                                    \
        if (!(condition)) {                                                 \
            fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #condition); \
            exit(EXIT_FAILURE);                                             \
        }                                                                   \
    } while (0)

static int lines_seen;

int platform_log_vprint(int buffer_id, int priority, const char *tag, const char *format,
                        va_list args)
{
    (void)args;
    CHECK(buffer_id == MDM_PLATFORM_LOG_SYSTEM);
    CHECK(priority == MDM_PLATFORM_LOG_WARN);
    CHECK(strcmp(tag, "TAG") == 0);
    CHECK(strcmp(format, "%d") == 0);
    ++lines_seen;
    return 42;
}

static void check_logger(void)
{
    CHECK(mdm_log_get_level() == MDM_LOG_INFO);
    CHECK(__mdm_log_print(MDM_LOG_WARN, "TAG", "%d", 1) == 42);
    mdm_log_set_level(MDM_LOG_CRITICAL);
    CHECK(__mdm_log_print(MDM_LOG_WARN, "TAG", "%d", 1) == 0);
    mdm_log_set_enabled(1);
    CHECK(mdm_log_get_level() == MDM_LOG_INFO);
    CHECK(mdm_log_set_path(NULL) == 0);
    CHECK(lines_seen == 1);
}

/* A message of raw bytes. Its discriminator is one of the programs' own. */
static mdm_msg_t new_message(void)
{
    mdm_msg_t msg = {0};
    CHECK(mdm_res_set_data(&msg, 100, "ok", 2));
    return msg;
}

static void check_codec(void)
{
    mdm_msg_t sent = new_message();
    uint32_t length = 0;
    uint8_t *buffer = ipc_serialize(&sent, &length);
    CHECK(buffer != NULL);
    CHECK(length == 54);

    mdm_msg_t received = {0};
    CHECK(ipc_deserialize(&received, buffer, length) == MDM_RESULT_SUCCESS);
    g_free(buffer);
    CHECK(received.type == MDM_TYPE_RES);
    CHECK(received.body.res.type == 100);
    size_t size = 0;
    CHECK(g_strcmp0(mdm_res_data(&received, &size), "ok") == 0);
    CHECK(size == 2);
    CHECK(ipc_free(&received) == MDM_RESULT_SUCCESS);
    CHECK(ipc_free(NULL) == MDM_RESULT_INVALID_ARGUMENT);
}

static void check_guarded_codec(void)
{
    mdm_msg_t sent = new_message();
    uint32_t length = 0;
    ipc_fault_t fault = {0};
    uint8_t *buffer = ipc_seal(&sent, &length, &fault);
    CHECK(buffer != NULL);
    CHECK(length == 54);

    mdm_msg_t *opened = ipc_open(buffer, length, &fault);
    CHECK(opened != NULL);
    CHECK(mdm_form_of(opened) == MDM_FORM_RES_DATA);
    CHECK(strcmp(mdm_form_name(mdm_form_of(opened)), "res.data") == 0);
    CHECK(g_strcmp0(mdm_res_data(opened, NULL), "ok") == 0);
    ipc_close(opened);
    ipc_close(NULL);

    opened = ipc_open(buffer, 3, &fault);
    CHECK(opened == NULL);
    CHECK(fault.offset == 0);
    CHECK(fault.needed == 4);
    CHECK(fault.left == 3);
    CHECK(strcmp(fault.path, "header.length") == 0);
    gchar *text = ipc_fault_describe(&fault);
    CHECK(strcmp(text, "header.length at offset 0 needs 4 bytes, 3 are left") == 0);
    g_free(text);
    g_free(buffer);
}

/* Copies of the parts of a message. Their bytes stay in the message. */
typedef struct parts {
    ipc_part_t all[20];
    unsigned count;
    unsigned given;
} parts_t;

static bool keep_part(const ipc_part_t *part, void *user_data)
{
    parts_t *parts = user_data;
    CHECK(parts->count < sizeof parts->all / sizeof parts->all[0]);
    parts->all[parts->count++] = *part;
    return true;
}

static bool give_part(ipc_part_t *part, void *user_data)
{
    parts_t *parts = user_data;
    if (parts->given == parts->count) {
        return part->kind == IPC_PART_PADDING;
    }
    const ipc_part_t *answer = &parts->all[parts->given++];
    CHECK(strcmp(part->path, answer->path) == 0);
    part->number = answer->number;
    part->length = answer->length;
    part->bytes = answer->bytes;
    return true;
}

static void check_parts(void)
{
    mdm_msg_t sent = new_message();
    uint32_t length = 0;
    uint8_t *buffer = ipc_seal(&sent, &length, NULL);
    CHECK(buffer != NULL);
    parts_t parts = {0};
    ipc_fault_t fault = {0};
    CHECK(ipc_inspect(buffer, length, keep_part, &parts, &fault) == MDM_RESULT_SUCCESS);
    CHECK(parts.count == 16);
    CHECK(strcmp(parts.all[15].path, "res.data") == 0);
    CHECK(parts.all[15].kind == IPC_PART_BYTES);
    CHECK(parts.all[15].element == -1 && parts.all[15].inner == -1);
    CHECK(parts.all[15].offset == 52 && parts.all[15].size == 2);
    CHECK(parts.all[15].length == 2 && memcmp(parts.all[15].bytes, "ok", 2) == 0);

    uint32_t length_again = 0;
    uint8_t *again = ipc_compose(give_part, &parts, &length_again, &fault);
    CHECK(again != NULL);
    CHECK(length_again == length);
    CHECK(memcmp(again, buffer, length) == 0);
    g_free(again);

    CHECK(ipc_inspect(buffer, 3, keep_part, &parts, &fault) == MDM_RESULT_FAILED);
    CHECK(strcmp(fault.path, "header.length") == 0);
    g_free(buffer);
    CHECK(strcmp(ipc_category_name(MDM_TYPE_RES), "res") == 0);
    CHECK(strcmp(ipc_form_name(MDM_TYPE_RES, 100), "res.data") == 0);
}

/* The functions of the bodies: records, names of numbers, refusals. */
static void check_typed_bodies(void)
{
    const mdm_wifi_network_t network = {.ssid = "office"};
    mdm_msg_t msg = {0};
    CHECK(mdm_wifi_set_network(&msg, &network));
    CHECK(msg.type == MDM_TYPE_WIFI);
    CHECK(msg.body.wifi.type == MDM_WIFI_NETWORK);
    CHECK(mdm_wifi_network(&msg) == &network);
    CHECK(mdm_wifi_ssids(&msg) == NULL);
    CHECK(strcmp(mdm_category_name(mdm_category_of(msg.type)), "wifi") == 0);
    CHECK(strcmp(mdm_form_name(mdm_form_of(&msg)), "wifi.network") == 0);

    CHECK(!mdm_wifi_set_network(&msg, NULL));
    CHECK(!mdm_wifi_set_ssids(&msg, MDM_WIFI_NETWORK, NULL));
    CHECK(mdm_wifi_network(&msg) == &network);
}

static void check_aes_helper(void)
{
    const char *key_iv = "0123456789abcdeffedcba9876543210";
    const uint8_t plain[16] = "secret";
    uint8_t *cipher = NULL;
    uint8_t *again = NULL;
    uint32_t length = 0;
    CHECK(mdm_aes_encrypt(plain, 6, key_iv, &cipher, &length) == MDM_RESULT_SUCCESS);
    CHECK(length == 16);
    CHECK(mdm_aes_decrypt(cipher, length, key_iv, &again, &length) == MDM_RESULT_SUCCESS);
    CHECK(length == 16);
    CHECK(memcmp(again, plain, 16) == 0);
    g_free(cipher);
    g_free(again);
}

static void check_utilities(void)
{
    char abc[] = "abc";
    char de[] = "de";
    GList *names = g_list_append(g_list_append(NULL, abc), de);
    CHECK(mdm_get_list_data_size(names) == 9);
    g_list_free(names);
    CHECK(mdm_is_valid_package_name("alpha.beta.app") == 1);
    CHECK(mdm_is_valid_package_name("alpha.beta.my_app") == 0);
}

static void check_limit_texts(void)
{
    const int32_t limit[MDM_PHONE_RES_LIMIT_VALUES] = {10, 0, -3, 4, 5, 6};
    char *text = NULL;
    uint32_t size = 0;
    CHECK(mdm_phone_res_limit_serialize(1, limit, &text, &size) == MDM_RESULT_SUCCESS);
    CHECK(strcmp(text, "1,10,0,-3,4,5,6") == 0);
    CHECK(size == 16);
    int32_t type = 0;
    int32_t again[MDM_PHONE_RES_LIMIT_VALUES] = {0};
    CHECK(mdm_phone_res_limit_deserialize(text, &type, again) == MDM_RESULT_SUCCESS);
    CHECK(type == 1);
    CHECK(memcmp(again, limit, sizeof limit) == 0);
    g_free(text);

    int32_t date_set = 0;
    int32_t period = 0;
    uint32_t send_limit = 0;
    uint32_t recv_limit = 0;
    CHECK(mdm_phone_res_limit_of_data_calls_parse_parameters("1" MDM_UTIL_POLICY_DELIM "2,3,4",
                                                             &date_set, &period, &send_limit,
                                                             &recv_limit) == MDM_RESULT_SUCCESS);
    CHECK(date_set == 1 && period == 2 && send_limit == 3 && recv_limit == 4);
}

/* Below a directory that no machine has. */
static void check_status_store(void)
{
    int32_t status = 42;
    CHECK(mdm_write_noti("missing/directory/key", 1) == MDM_RESULT_FAILED);
    CHECK(mdm_read_noti("missing/directory/key", &status) == MDM_RESULT_FAILED);
    CHECK(mdm_read_noti(NULL, &status) == MDM_RESULT_INVALID_ARGUMENT);
    CHECK(status == 42);
}

int main(void)
{
    check_logger();
    mdm_log_set_enabled(0);
    check_codec();
    check_guarded_codec();
    check_parts();
    check_typed_bodies();
    check_aes_helper();
    check_utilities();
    check_limit_texts();
    check_status_store();
    return EXIT_SUCCESS;
}
