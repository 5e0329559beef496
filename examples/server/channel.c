/* SPDX-License-Identifier: Apache-2.0 */
#include "channel.h"

#include <unistd.h>

#include "clock.h"

struct channel *channel_new(int fd, const struct peer *peer, const struct limits *limits,
                            struct users *users, int64_t now)
{
    struct channel *channel = g_new0(struct channel, 1);
    channel->fd = fd;
    channel->peer = *peer;
    channel->limits = limits;
    channel->users = users;
    channel->asked = now;
    channel->read_by_peer = now;
    g_queue_init(&channel->answers);
    return channel;
}

static void unref_bytes(gpointer bytes)
{
    g_bytes_unref(bytes);
}

void channel_free(struct channel *channel)
{
    close(channel->fd);
    users_disconnect(channel->users, channel->peer.uid);
    g_queue_clear_full(&channel->answers, unref_bytes);
    g_free(channel);
}

bool channel_wants_packet(const struct channel *channel, int64_t now)
{
    return !channel->is_closing && channel->held == 0 &&
           channel->queued < channel->limits->queued && now >= channel->delayed_until;
}

bool channel_has_answers(const struct channel *channel)
{
    return channel->answers.length > channel->held;
}

void channel_count_request(struct channel *channel, int64_t now)
{
    channel->has_asked = true;
    channel->asked = now;
}

bool channel_count_fault(struct channel *channel, int64_t now, struct excess *excess)
{
    ++channel->faults;
    channel->delayed_until = now + channel->limits->fault_delay * CLOCK_MILLISECOND;
    *excess = (struct excess){"malformed messages sent", channel->faults, channel->limits->faults};
    return channel->faults < channel->limits->faults;
}

static int64_t charge_for(GBytes *answer)
{
    return (int64_t)g_bytes_get_size(answer) + CHANNEL_CHARGE;
}

void channel_queue(struct channel *channel, GQueue *answers, int64_t now)
{
    if (channel->queued == 0) {
        channel->read_by_peer = now;
    }
    for (GBytes *answer = g_queue_pop_head(answers); answer != NULL;
         answer = g_queue_pop_head(answers)) {
        channel->queued += charge_for(answer);
        g_queue_push_tail(&channel->answers, answer);
    }
}

void channel_hold(struct channel *channel, guint answers, uint32_t number)
{
    channel->held = answers;
    channel->held_number = number;
}

void channel_release(struct channel *channel)
{
    channel->held = 0;
}

static void drop(struct channel *channel, GBytes *answer)
{
    channel->queued -= charge_for(answer);
    g_bytes_unref(answer);
}

void channel_release_refused(struct channel *channel, GBytes *refusal, int64_t now)
{
    for (; channel->held > 0; --channel->held) {
        drop(channel, g_queue_pop_tail(&channel->answers));
    }
    GQueue answers = G_QUEUE_INIT;
    if (refusal != NULL) {
        g_queue_push_tail(&answers, refusal);
    }
    channel_queue(channel, &answers, now);
}

bool channel_flush(struct channel *channel, int64_t now)
{
    while (channel_has_answers(channel)) {
        GBytes *answer = g_queue_peek_head(&channel->answers);
        gsize length = 0;
        const uint8_t *bytes = g_bytes_get_data(answer, &length);
        const packet_result_t result = packet_send(channel->fd, bytes, (uint32_t)length);
        if (result != PACKET_DONE) {
            return result == PACKET_LATER;
        }
        channel->read_by_peer = now;
        g_queue_pop_head(&channel->answers);
        drop(channel, answer);
    }
    return true;
}

/* What the channel waits for, and since when. */
static int64_t waiting_since(const struct channel *channel, struct excess *excess)
{
    const struct limits *limits = channel->limits;
    if (channel->queued > 0) {
        *excess = (struct excess){"seconds without reading an answer", 0, limits->answer_timeout};
        return channel->read_by_peer;
    }
    if (!channel->has_asked) {
        *excess = (struct excess){"seconds without a request", 0, limits->first_timeout};
        return channel->asked;
    }
    *excess = (struct excess){"seconds between requests", 0, limits->idle_timeout};
    return channel->asked;
}

bool channel_has_expired(const struct channel *channel, int64_t now, struct excess *excess)
{
    const int64_t since = waiting_since(channel, excess);
    excess->used = (now - since) / CLOCK_SECOND;
    return excess->used >= excess->limit;
}

int64_t channel_due(const struct channel *channel, int64_t now)
{
    struct excess excess;
    const int64_t since = waiting_since(channel, &excess);
    const int64_t due = since + excess.limit * CLOCK_SECOND;
    return channel->delayed_until > now ? MIN(due, channel->delayed_until) : due;
}
