/* SPDX-License-Identifier: Apache-2.0 */
#include "load/hostile.h"

#include <string.h>

#include "load/connection.h"
#include "load/model.h"

enum {
    PAUSE = 100, /* milliseconds until a client connects again */
    STRIDE = 10, /* milliseconds between two requests that are forbidden */
    LONG_PACKET = 100000,
    OFFSET_OF_TYPE = 4,
};

struct hostile {
    struct load *load;
    load_kind_t kind;
    int number;
    struct connection *connection;
    guint timer;
    bool is_paused;
    int faults;               /* of this connection */
    struct expected expected; /* of the packet that is not answered yet */
    bool is_waiting;
    bool is_registered; /* who asks for what he may not */
};

static void act(struct hostile *hostile);

static gboolean act_now(gpointer data)
{
    struct hostile *hostile = data;
    hostile->timer = 0;
    act(hostile);
    return G_SOURCE_REMOVE;
}

static void act_later(struct hostile *hostile, guint milliseconds)
{
    if (hostile->timer == 0) {
        hostile->timer = g_timeout_add(milliseconds, act_now, hostile);
    }
}

static void disconnect(struct hostile *hostile)
{
    connection_close(hostile->connection);
    hostile->connection = NULL;
    hostile->is_waiting = false;
    hostile->faults = 0;
    expected_clear(&hostile->expected);
}

static const struct policy *any_policy(const struct hostile *hostile)
{
    const GPtrArray *corpus = hostile->load->corpus;
    return corpus->pdata[g_rand_int_range(hostile->load->random, 0, (gint32)corpus->len)];
}

static uint32_t any_number(const struct hostile *hostile, uint32_t below)
{
    return (uint32_t)g_rand_int_range(hostile->load->random, 0, (gint32)below);
}

static uint8_t *make_noise(const struct hostile *hostile, uint32_t *length)
{
    *length = 1 + any_number(hostile, 200);
    uint8_t *bytes = g_malloc(*length);
    for (uint32_t i = 0; i < *length; ++i) {
        bytes[i] = (uint8_t)any_number(hostile, 256);
    }
    return bytes;
}

/* Bytes that are no message, or one that the server does not serve. */
static uint8_t *make_lie(const struct hostile *hostile, uint32_t *length)
{
    enum { NOISE, CUT, LENGTH, BYTE, WORD, TYPE, LONG, LIES };
    const uint32_t lie = any_number(hostile, LIES);
    if (lie == NOISE) {
        return make_noise(hostile, length);
    }
    uint8_t *bytes =
        corpus_request(any_policy(hostile), PROTOCOL_SET, 1 + any_number(hostile, 1000), length);
    const uint32_t place = any_number(hostile, *length);
    switch (lie) {
    case CUT:
        *length = place + 1;
        break;
    case LENGTH:
        bytes[0] = (uint8_t)(bytes[0] + 1 + any_number(hostile, 255));
        break;
    case BYTE:
        bytes[place] = (uint8_t)(bytes[place] + 1 + any_number(hostile, 255));
        break;
    case WORD:
        memset(bytes + place, 0xFF, MIN(sizeof(uint32_t), *length - place));
        break;
    case TYPE:
        bytes[OFFSET_OF_TYPE] = (uint8_t)any_number(hostile, 256);
        break;
    default:
        bytes = g_realloc(bytes, LONG_PACKET);
        memset(bytes + *length, 0, LONG_PACKET - *length);
        *length = LONG_PACKET;
    }
    return bytes;
}

/* A change may turn a request into one of admin, which the server serves. */
static bool is_of_admin(const uint8_t *bytes, uint32_t length)
{
    return length > OFFSET_OF_TYPE && bytes[OFFSET_OF_TYPE] == MDM_TYPE_ADMIN;
}

static void send_lie(struct hostile *hostile)
{
    struct load *load = hostile->load;
    if (load->hostile_left <= 0) {
        return;
    }
    uint32_t length = 0;
    uint8_t *bytes = make_lie(hostile, &length);
    if (is_of_admin(bytes, length)) {
        bytes[OFFSET_OF_TYPE] = UINT8_MAX;
    }
    if (connection_send(hostile->connection, bytes, length) == PACKET_DONE) {
        --load->hostile_left;
        ++load->report.hostile;
        hostile->expected = model_stranger(bytes, length, load->longest);
        hostile->is_waiting = true;
    }
    g_free(bytes);
}

/* The first request registers, the others are forbidden. */
static void send_forbidden(struct hostile *hostile)
{
    uint32_t length = 0;
    uint8_t *bytes = NULL;
    if (hostile->is_registered) {
        bytes = corpus_request(any_policy(hostile), PROTOCOL_SET, 7, &length);
        hostile->expected = (struct expected){.number = 7, .reason = PROTOCOL_FORBIDDEN};
    } else {
        char *package =
            g_strdup_printf("load.forbidden.%d.%u", hostile->number, hostile->load->first_uid);
        mdm_msg_t request = {0};
        if (mdm_admin_set_general(&request, ADMIN_REGISTER, 0, package, NULL)) {
            bytes = ipc_seal(&request, &length, NULL);
        }
        g_free(package);
    }
    hostile->is_waiting = connection_send(hostile->connection, bytes, length) == PACKET_DONE;
    g_free(bytes);
}

/* Half of the stalled clients send nothing. The others send as much as the server takes, and read
 * nothing. */
static void stall(struct hostile *hostile)
{
    if (hostile->number % 2 == 0) {
        return;
    }
    uint32_t length = 0;
    uint8_t *bytes = corpus_request(any_policy(hostile), PROTOCOL_SET, 1, &length);
    bool is_sent = true;
    while (is_sent) {
        is_sent = connection_send(hostile->connection, bytes, length) == PACKET_DONE;
    }
    g_free(bytes);
    act_later(hostile, PAUSE);
}

static void vanish(struct hostile *hostile)
{
    uint32_t length = 0;
    uint8_t *bytes = corpus_request(any_policy(hostile), PROTOCOL_SET, 1, &length);
    connection_send(hostile->connection, bytes, length);
    g_free(bytes);
    disconnect(hostile);
    ++hostile->load->report.vanished;
    act_later(hostile, PAUSE);
}

static void complain(struct hostile *hostile, const uint8_t *bytes, uint32_t length)
{
    GPtrArray *packets = g_ptr_array_new();
    GBytes *packet = g_bytes_new(bytes, length);
    g_ptr_array_add(packets, packet);
    ++hostile->load->report.wrong;
    load_complain(hostile->load, "a hostile client", "a wrong answer", packets);
    g_bytes_unref(packet);
    g_ptr_array_unref(packets);
}

static bool is_expected(const struct hostile *hostile, const uint8_t *bytes, uint32_t length)
{
    GPtrArray *packets = g_ptr_array_new();
    GBytes *packet = g_bytes_new(bytes, length);
    g_ptr_array_add(packets, packet);
    const bool is_right = expected_is(&hostile->expected, packets);
    g_bytes_unref(packet);
    g_ptr_array_unref(packets);
    return is_right;
}

static bool is_fault(const struct expected *expected)
{
    return expected->reason == PROTOCOL_MALFORMED || expected->reason == PROTOCOL_LIMIT;
}

static void check_refusal(struct hostile *hostile, const uint8_t *bytes, uint32_t length)
{
    struct report *report = &hostile->load->report;
    if (!is_expected(hostile, bytes, length)) {
        complain(hostile, bytes, length);
        return;
    }
    ++report->right;
    report->forbidden += hostile->kind == LOAD_FORBIDDEN;
    hostile->faults += is_fault(&hostile->expected);
}

/* Refusals that end the connection are expected: of a newcomer, of the last fault, of idleness. */
static void received(void *owner, const uint8_t *bytes, uint32_t length)
{
    struct hostile *hostile = owner;
    const bool ends = model_reason(bytes, length) == PROTOCOL_LIMIT &&
                      (!hostile->is_waiting || packet_number(bytes, length) == 0) &&
                      hostile->expected.reason != PROTOCOL_LIMIT;
    if (ends || hostile->kind == LOAD_STALLED) {
        return;
    }
    if (hostile->kind == LOAD_FORBIDDEN && !hostile->is_registered) {
        hostile->is_registered = model_reason(bytes, length) == 0;
    } else if (hostile->is_waiting) {
        check_refusal(hostile, bytes, length);
    } else {
        complain(hostile, bytes, length);
    }
    hostile->is_waiting = false;
    expected_clear(&hostile->expected);
    hostile->expected.reason = 0;
    if (hostile->kind == LOAD_FORBIDDEN) {
        act_later(hostile, STRIDE);
    } else if (hostile->faults < hostile->load->faults) {
        act(hostile);
    }
}

static void closed(void *owner)
{
    struct hostile *hostile = owner;
    hostile->load->report.stalled += hostile->kind == LOAD_STALLED;
    disconnect(hostile);
    act_later(hostile, PAUSE);
}

static void connect_now(struct hostile *hostile)
{
    static const struct connection_owner functions = {received, closed};
    const struct load *load = hostile->load;
    const bool reads = hostile->kind != LOAD_STALLED || hostile->number % 2 == 0;
    hostile->connection = connection_open(
        load->socket, load_uid(load, hostile->kind, hostile->number), reads, &functions, hostile);
}

static void act(struct hostile *hostile)
{
    if (hostile->is_paused) {
        return;
    }
    if (hostile->connection == NULL) {
        connect_now(hostile);
    }
    if (hostile->connection == NULL) {
        act_later(hostile, PAUSE);
        return;
    }
    switch (hostile->kind) {
    case LOAD_HOSTILE:
        send_lie(hostile);
        break;
    case LOAD_FORBIDDEN:
        send_forbidden(hostile);
        break;
    case LOAD_STALLED:
        stall(hostile);
        break;
    default:
        vanish(hostile);
    }
}

struct hostile *hostile_new(struct load *load, load_kind_t kind, int number)
{
    struct hostile *hostile = g_new0(struct hostile, 1);
    hostile->load = load;
    hostile->kind = kind;
    hostile->number = number;
    act_later(hostile, (guint)(number % PAUSE)); /* not all at once */
    return hostile;
}

void hostile_pause(struct hostile *hostile)
{
    hostile->is_paused = true;
    disconnect(hostile);
}

void hostile_resume(struct hostile *hostile)
{
    hostile->is_paused = false;
    act_later(hostile, (guint)(hostile->number % PAUSE));
}

void hostile_free(struct hostile *hostile)
{
    if (hostile->timer != 0) {
        g_source_remove(hostile->timer);
    }
    disconnect(hostile);
    g_free(hostile);
}
