/* SPDX-License-Identifier: Apache-2.0 */
/*
 * The trusting path and the helpers beside the codec, in one process. The functions of mdm/ipc.h
 * believe every count and pointer. They are for bytes of a sender that is trusted as much as this
 * process. The server and its clients use mdm/guarded.h instead.
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <mdm/crypto.h>
#include <mdm/ipc.h>
#include <mdm/log.h>
#include <mdm/util.h>
#include <mdm/util_policy.h>

#include "release.h"

/* A key and an initialisation vector of 16 characters each. A real service gives each device its
 * own, and keeps them out of its sources. */
#define EXAMPLE_KEY_IV "an example's keyand first vector"

static bool show_packages(const uint8_t *bytes, uint32_t length)
{
    mdm_msg_t received = {0};
    if (ipc_deserialize(&received, bytes, length) != MDM_RESULT_SUCCESS) {
        return false;
    }
    printf("%u bytes from %s, packages:", length, received.hdr_text);
    for (const GList *cell = mdm_app_packages(&received); cell != NULL; cell = cell->next) {
        printf(" %s", (const char *)cell->data);
    }
    putchar('\n');
    release_message(&received);
    return true;
}

/* The message and its payload stay the sender's, so they must not go to ipc_free(). */
static bool send_packages(void)
{
    GList *packages = g_list_append(NULL, mdm_text("com.example.game"));
    packages = g_list_append(packages, mdm_text("com.example.store"));
    printf("names of %d bytes\n", mdm_get_list_data_size(packages));
    mdm_msg_t sent = {.hdr_text = mdm_text("com.example.agent")};
    uint32_t length = 0;
    uint8_t *bytes = mdm_app_set_packages(&sent, MDM_APP_PACKAGES_4, packages)
                         ? ipc_serialize(&sent, &length)
                         : NULL;
    const bool is_shown = bytes != NULL && show_packages(bytes, length);
    g_free(bytes);
    g_list_free(packages);
    return is_shown;
}

/* The bytes behind the text are encrypted, too: the buffer has whole blocks. */
static bool encrypt_and_decrypt(void)
{
    const uint8_t secret[16] = "first light";
    uint8_t *ciphertext = NULL;
    uint8_t *plain = NULL;
    uint32_t length = 0;
    uint32_t plain_length = 0;
    const bool is_done =
        mdm_aes_encrypt(secret, (uint32_t)strlen((const char *)secret), EXAMPLE_KEY_IV, &ciphertext,
                        &length) == MDM_RESULT_SUCCESS &&
        mdm_aes_decrypt(ciphertext, length, EXAMPLE_KEY_IV, &plain, &plain_length) ==
            MDM_RESULT_SUCCESS;
    if (is_done) {
        printf("a secret of %u bytes is back: %s\n", length, (const char *)plain);
        explicit_bzero(plain, plain_length);
    }
    g_free(plain);
    g_free(ciphertext);
    return is_done;
}

static bool write_and_read_limit(void)
{
    const int32_t limit[MDM_PHONE_RES_LIMIT_VALUES] = {500, 30, 0, -1, 0, 0};
    char *text = NULL;
    uint32_t size = 0;
    if (mdm_phone_res_limit_serialize(1, limit, &text, &size) != MDM_RESULT_SUCCESS) {
        return false;
    }
    int32_t type = 0;
    int32_t read[MDM_PHONE_RES_LIMIT_VALUES] = {0};
    const bool is_read = mdm_phone_res_limit_deserialize(text, &type, read) == MDM_RESULT_SUCCESS;
    printf("the limit \"%s\" has the type %d\n", text, type);
    g_free(text);
    return is_read;
}

int main(void)
{
    mdm_log_set_level(MDM_LOG_WARN); /* the lines below it repeat texts of messages */
    return send_packages() && encrypt_and_decrypt() && write_and_read_limit() ? EXIT_SUCCESS
                                                                              : EXIT_FAILURE;
}
