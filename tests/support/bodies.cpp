// SPDX-License-Identifier: Apache-2.0
#include "support/bodies.hpp"

#include <algorithm>
#include <cstring>
#include <utility>

#include <gmock/gmock.h>

namespace mdm::test {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

constexpr auto headed = headed_body<&mdm_body_t::res>;
constexpr auto expect_head = expect_headed<&mdm_body_t::res>;

Bytes head_of(const mdm_body_t &body)
{
    return head_bytes(body.res.type, body.res.data_size);
}

}  // namespace

std::vector<Block> without(std::vector<Block> blocks, const std::vector<const void *> &addresses)
{
    std::erase_if(blocks, [&](const Block &block) {
        return std::ranges::find(addresses, block.address) != addresses.end();
    });
    return blocks;
}

Arrival receive(const Handlers &handlers, const Bytes &bytes, const Bytes &behind)
{
    Arrival arrival{headed(0xEEEEEEEE, 99, sentinel()), {}};
    arrival.body.res.param = 0;
    AllocationTrace trace;
    EXPECT_EQ(handlers.read(&arrival.body, bytes + behind), bytes.size());
    trace.stop();
    arrival.blocks = trace.kept();
    return arrival;
}

Journey travel(uint8_t type, const mdm_body_t &sent, const std::function<void(mdm_body_t &)> &look,
               const mdm_body_t &before)
{
    mdm_msg_t msg = message(type);
    msg.body = sent;
    const Bytes bytes = serialize(msg);
    const auto copy = exact_copy(bytes);
    Journey journey{msg.body, {bytes.begin() + 40, bytes.end()}, {}, {}, {}};
    journey.received.body = before;
    AllocationTrace trace;
    EXPECT_EQ(ipc_deserialize(&journey.received, copy.get(), static_cast<uint32_t>(bytes.size())),
              0);
    if (look) {
        const AllocationTrace::Pause pause;
        look(journey.received.body);
    }
    EXPECT_EQ(ipc_free(&journey.received), 0);
    trace.stop();
    journey.allocated = trace.allocated_sizes();
    journey.kept = trace.kept();
    return journey;
}

std::pair<Journey, Bytes> travel_and_write_again(uint8_t type, const mdm_body_t &sent)
{
    Bytes again;
    Journey journey =
        travel(type, sent, [&](mdm_body_t &received) { again = Handlers(type).write(&received); });
    return {std::move(journey), std::move(again)};
}

HandlerLines logged_lines(const Handlers &handlers, mdm_body_t sent, const Bytes &behind)
{
    HandlerLines lines;
    LogRecorder log;
    handlers.size(&sent);
    lines.size = log.take();
    const Bytes bytes = handlers.write(&sent);
    lines.set = log.take();
    mdm_body_t received{};
    AllocationTrace trace;
    handlers.read(&received, bytes + behind);
    trace.stop();
    lines.get = log.take();
    const std::vector<const void *> released = handlers.release(&received);
    lines.free = log.take();
    release_blocks(without(trace.kept(), released));
    return lines;
}

void expect_entry_and_exit(const Handlers &handlers, const mdm_body_t &sent, const Bytes &behind)
{
    const HandlerLines lines = logged_lines(handlers, sent, behind);
    EXPECT_EQ(lines.size, enter_and_leave(handlers.size));
    EXPECT_EQ(lines.set, enter_and_leave(handlers.set));
    EXPECT_EQ(lines.get, enter_and_leave(handlers.get));
    EXPECT_EQ(lines.free, enter_and_leave(handlers.free));
}

void expect_infos(const Handlers &handlers, const mdm_body_t &sent, const Bytes &behind,
                  const std::vector<std::string> &size_texts,
                  const std::vector<std::string> &set_texts,
                  const std::vector<std::string> &get_texts)
{
    const HandlerLines lines = logged_lines(handlers, sent, behind);
    EXPECT_EQ(lines.size, infos(handlers.size, size_texts));
    EXPECT_EQ(lines.set, infos(handlers.set, set_texts));
    EXPECT_EQ(lines.get, infos(handlers.get, get_texts));
}

void expect_size(const Handlers &handlers, mdm_body_t &sent, uint32_t size, int32_t data_size)
{
    for (int call = 0; call < 3; ++call) {
        EXPECT_EQ(handlers.size(&sent), size);
        EXPECT_EQ(sent.res.data_size, data_size);
    }
}

void expect_head_alone(const Handlers &handlers, const mdm_body_t &sent)
{
    mdm_body_t some = sent;
    EXPECT_EQ(handlers.size(&some), 12U);
    EXPECT_EQ(handlers.write(&some), head_of(sent));
    EXPECT_EQ(std::memcmp(&some, &sent, sizeof sent), 0);
}

void expect_head_received(const Handlers &handlers, uint32_t type, int32_t data_size,
                          const void *data)
{
    const auto [received, blocks] = receive(handlers, head_bytes(type, data_size));
    expect_head(received, type, data_size);
    EXPECT_EQ(received.res.data, data);
    EXPECT_THAT(blocks, IsEmpty());
}

void expect_no_release(const Handlers &handlers, const mdm_body_t &kept,
                       const std::vector<LogLine> &lines)
{
    mdm_body_t some = kept;
    LogRecorder log;
    EXPECT_THAT(handlers.release(&some), IsEmpty());
    EXPECT_EQ(log.take(), lines);
    EXPECT_EQ(std::memcmp(&some, &kept, sizeof kept), 0);
}

void expect_counts_below_1_as_null(const Handlers &handlers, uint32_t type)
{
    for (const char *count : {"00 00 00 00", "FF FF FF FF", "00 00 00 80"}) {
        const auto [received, blocks] = receive(handlers, head_bytes(type, 8) + hex(count));
        expect_head(received, type, 8);
        EXPECT_EQ(received.res.data, nullptr);
        EXPECT_THAT(blocks, IsEmpty());
    }
}

void expect_no_size_with_null_element(const Handlers &handlers, uint32_t type, void *element,
                                      const char *text)
{
    for (const Cells &list : {cells({nullptr}), cells({nullptr, element}),
                              cells({element, nullptr}), cells({element, nullptr, element})}) {
        mdm_body_t sent = headed(type, 77, list.get());
        LogRecorder log;
        EXPECT_EQ(handlers.size(&sent), 0U);
        EXPECT_THAT(log.take(), ElementsAre(enter(handlers.size), critical(handlers.size, text),
                                            leave(handlers.size)));
        expect_head(sent, type, 77);
    }
}

void expect_raw_bytes_to_travel(const Handlers &handlers, uint32_t type)
{
    char payload[] = {'a', '\xFF', 0, 'b', 'c'};
    mdm_body_t sent = headed(type, 4, payload);
    expect_size(handlers, sent, 16, 4);
    const Bytes bytes = handlers.write(&sent);
    EXPECT_EQ(bytes, head_bytes(type, 4) + hex("61 FF 00 62"));
    const auto [received, blocks] = receive(handlers, bytes);
    expect_head(received, type, 4);
    ASSERT_THAT(blocks, ElementsAre(Block{received.res.data, 5}));
    EXPECT_EQ(std::string(static_cast<const char *>(received.res.data), 5),
              std::string("a\xFF\0\0\0", 5));
    release_blocks(blocks);

    for (const size_t length : {size_t{1}, size_t{3000}}) {
        std::string text(length, '\xFE');
        sent = headed(type, static_cast<int32_t>(length), text.data());
        EXPECT_EQ(handlers.size(&sent), 12 + length);
        const Arrival arrival = receive(handlers, handlers.write(&sent));
        EXPECT_EQ(static_cast<const char *>(arrival.body.res.data), text);
        release_blocks(arrival.blocks);
    }
}

void expect_raw_size_with_sign(const Handlers &handlers, uint32_t type, void *data)
{
    for (const auto &[data_size, size] : {std::pair{1, 13U},
                                          {-4, 8U},
                                          {-12, 0U},
                                          {-13, 0xFFFFFFFFU},
                                          {INT32_MIN, 0x8000000CU},
                                          {INT32_MAX, 0x8000000BU}}) {
        mdm_body_t sent = headed(type, data_size, data);
        expect_size(handlers, sent, size, data_size);
    }
}

void expect_raw_bytes_released(const Handlers &handlers, uint32_t type, int32_t data_size,
                               int32_t data_size_afterwards, const std::vector<LogLine> &lines)
{
    mdm_body_t received = headed(type, data_size, heap_text("raw"));
    const void *data = received.res.data;
    LogRecorder log;
    EXPECT_THAT(handlers.release(&received), ElementsAre(data));
    EXPECT_EQ(log.take(), lines);
    expect_head(received, type, data_size_afterwards);
    EXPECT_EQ(received.res.data, nullptr);
    EXPECT_THAT(handlers.release(&received), IsEmpty());
    EXPECT_EQ(log.take(), lines);
    expect_head(received, type, data_size_afterwards);
}

}  // namespace mdm::test
