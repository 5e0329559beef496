// SPDX-License-Identifier: Apache-2.0
//
// Bodies on their way through a category's handlers, and expectations that the tests of several
// categories share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "mdm/ipc.h"
#include "support/allocation_trace.hpp"
#include "support/handlers.hpp"
#include "support/log_recorder.hpp"
#include "support/wire.hpp"

namespace mdm::test {

// A body with the body head that was read, and the blocks that reading has left allocated.
struct Arrival {
    mdm_body_t body;
    std::vector<Block> blocks;
};

// Reads all the bytes, and none behind them, into a record whose `data` is sentinel(). The caller
// releases the blocks.
Arrival receive(const Handlers &handlers, const Bytes &bytes, const Bytes &behind = {});

// A message that was sent, received and released.
struct Journey {
    mdm_body_t sent;                // as ipc_serialize() has left it
    Bytes bytes;                    // of the body, on the wire
    mdm_msg_t received;             // after ipc_free()
    std::vector<size_t> allocated;  // the sizes of the blocks that the receiver took
    std::vector<Block> kept;        // the blocks that ipc_free() has left
};

// Sends a body in a message of a type. The receiver's record holds `before`; `look` sees the
// received body before it is released.
Journey travel(uint8_t type, const mdm_body_t &sent,
               const std::function<void(mdm_body_t &)> &look = nullptr,
               const mdm_body_t &before = {});

// The journey, and the bytes that the writer makes of the received body.
std::pair<Journey, Bytes> travel_and_write_again(uint8_t type, const mdm_body_t &sent);

// The blocks that have none of the addresses.
std::vector<Block> without(std::vector<Block> blocks, const std::vector<const void *> &addresses);

// The lines that each handler logs.
struct HandlerLines {
    std::vector<LogLine> size;
    std::vector<LogLine> set;
    std::vector<LogLine> get;
    std::vector<LogLine> free;
};

// Sizes and writes a body; reads and releases it from its bytes and those behind them.
HandlerLines logged_lines(const Handlers &handlers, mdm_body_t sent, const Bytes &behind = {});

// Every handler logs its entry and its exit.
void expect_entry_and_exit(const Handlers &handlers, const mdm_body_t &sent,
                           const Bytes &behind = {});

// The size handler, the writer and the reader log these texts as information, and no other line.
void expect_infos(const Handlers &handlers, const mdm_body_t &sent, const Bytes &behind,
                  const std::vector<std::string> &size_texts,
                  const std::vector<std::string> &set_texts,
                  const std::vector<std::string> &get_texts);

// Expectations of bodies with the body head, which stands at the same place in all of them. Admin,
// misc, app, app_res, log_manager, platform and the callbacks have heads of their own.

// The size handler returns the size and stores the data_size, however often it is called.
void expect_size(const Handlers &handlers, mdm_body_t &sent, uint32_t size, int32_t data_size);

// The head alone is sized and written, and the body stays as it is.
void expect_head_alone(const Handlers &handlers, const mdm_body_t &sent);

// A received head alone leaves this `data`: null, or sentinel() if it is not assigned.
void expect_head_received(const Handlers &handlers, uint32_t type, int32_t data_size,
                          const void *data);

// The free handler releases nothing, leaves the body as it is and logs the lines.
void expect_no_release(const Handlers &handlers, const mdm_body_t &kept,
                       const std::vector<LogLine> &lines);

// A list whose count is below 1 is received as null.
void expect_counts_below_1_as_null(const Handlers &handlers, uint32_t type);

// A list with a null element has no size. The size handler logs the text as a failure.
void expect_no_size_with_null_element(const Handlers &handlers, uint32_t type, void *element,
                                      const char *text);

// Raw bytes travel as they are, and arrive as a text that ends at their first zero byte.
void expect_raw_bytes_to_travel(const Handlers &handlers, uint32_t type);

// The size of raw bytes is their data_size and the head's size, also below 0.
void expect_raw_size_with_sign(const Handlers &handlers, uint32_t type, void *data);

// Raw bytes are released once. `data` is then null, and `data_size` the one given.
void expect_raw_bytes_released(const Handlers &handlers, uint32_t type, int32_t data_size,
                               int32_t data_size_afterwards, const std::vector<LogLine> &lines);

// A list of many records arrives in order, with the data_size. `number` tells the records apart.
template <class Record>
void expect_many_records_to_travel(const Handlers &handlers, uint32_t type,
                                   uint32_t Record::*number, size_t count, int32_t data_size)
{
    std::vector<Record> records(count);
    Cells list;
    for (size_t i = 0; i < count; ++i) {
        records[i].*number = static_cast<uint32_t>(i);
        list.reset(g_list_append(list.release(), &records[i]));
    }
    const auto expect_order = [&](const mdm_body_t &received) {
        EXPECT_EQ(received.res.data_size, data_size);
        const auto elements = elements_of(received.res.data);
        ASSERT_EQ(elements.size(), count);
        for (size_t i = 0; i < count; ++i) {
            EXPECT_EQ(static_cast<const Record *>(elements[i])->*number, i);
        }
    };
    const mdm_body_t sent = headed_body<&mdm_body_t::res>(type, 1, list.get());
    EXPECT_TRUE(travel(handlers.type, sent, expect_order).kept.empty());
}

}  // namespace mdm::test
