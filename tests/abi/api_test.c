/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Calls every exported function through the shared library, from C, with a platform log of the
 * program's own.
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <mdm/ipc.h>
#include <mdm/log.h>

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

static void check_codec(void)
{
    char payload[] = "ok";
    mdm_msg_t sent = {.type = 33, .body.res = {.type = 100, .data_size = 2, .data = payload}};
    uint32_t length = 0;
    uint8_t *buffer = ipc_serialize(&sent, &length);
    CHECK(buffer != NULL);
    CHECK(length == 54);

    mdm_msg_t received = {0};
    CHECK(ipc_deserialize(&received, buffer, length) == MDM_RESULT_SUCCESS);
    g_free(buffer);
    CHECK(received.type == 33);
    CHECK(received.body.res.type == 100);
    CHECK(strcmp(received.body.res.data, "ok") == 0);
    CHECK(ipc_free(&received) == MDM_RESULT_SUCCESS);
    CHECK(ipc_free(NULL) == MDM_RESULT_INVALID_ARGUMENT);
}

int main(void)
{
    check_logger();
    check_codec();
    return EXIT_SUCCESS;
}
