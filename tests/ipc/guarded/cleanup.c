/* SPDX-License-Identifier: Apache-2.0 */
/*
 * The cleanup macros in C. They are header only: a program that closes and frees by functions of
 * its own sees what they call, when, and with what.
 */
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>

#include <mdm/guarded.h>

#define CHECK(condition)                                                    \
    do {                                                                    \
        if (!(condition)) {                                                 \
            fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #condition); \
            exit(EXIT_FAILURE);                                             \
        }                                                                   \
    } while (0)

static const mdm_msg_t *closed;
static const mdm_msg_t *freed;
static int calls;

void ipc_close(mdm_msg_t *msg)
{
    closed = msg;
    ++calls;
}

int32_t ipc_free(mdm_msg_t *msg)
{
    freed = msg;
    ++calls;
    return 0;
}

static void forget_calls(void)
{
    closed = NULL;
    freed = NULL;
    calls = 0;
}

static void check_end_of_scope(mdm_msg_t *opened)
{
    forget_calls();
    {
        MDM_AUTO_CLOSE mdm_msg_t *msg = opened;
        CHECK(msg == opened && calls == 0);
    }
    CHECK(calls == 1 && closed == opened);

    const mdm_msg_t *record = NULL;
    forget_calls();
    {
        g_auto(mdm_msg_t) msg = {0};
        record = &msg;
        CHECK(calls == 0);
    }
    CHECK(calls == 1 && freed == record);
}

static bool close_and_return_early(mdm_msg_t *opened, bool early)
{
    MDM_AUTO_CLOSE mdm_msg_t *msg = opened;
    if (early) {
        return true;
    }
    return msg != opened;
}

static bool free_and_return_early(bool early)
{
    g_auto(mdm_msg_t) msg = {0};
    if (early) {
        return true;
    }
    return msg.type != 0;
}

static void check_every_way_out(mdm_msg_t *opened)
{
    for (int early = 0; early < 2; ++early) {
        forget_calls();
        CHECK(close_and_return_early(opened, early) == (early != 0));
        CHECK(calls == 1 && closed == opened);

        forget_calls();
        CHECK(free_and_return_early(early) == (early != 0));
        CHECK(calls == 1 && freed != NULL);
    }
}

static void check_null(void)
{
    forget_calls();
    CHECK(!close_and_return_early(NULL, false));
    CHECK(calls == 1 && closed == NULL && freed == NULL);
}

/* The last one first, and each its own way. */
static void check_both(mdm_msg_t *opened)
{
    forget_calls();
    {
        g_auto(mdm_msg_t) record = {0};
        MDM_AUTO_CLOSE mdm_msg_t *msg = opened;
        CHECK(record.type == 0 && msg == opened);
    }
    CHECK(calls == 2 && closed == opened);
    CHECK(freed != NULL && freed != opened);
}

int main(void)
{
    /* Volatile, so that the compiler cannot see that ipc_open() did not return it. */
    static mdm_msg_t record;
    static mdm_msg_t *volatile opened = &record;
    check_end_of_scope(opened);
    check_every_way_out(opened);
    check_null();
    check_both(opened);
    return EXIT_SUCCESS;
}
