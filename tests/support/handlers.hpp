// SPDX-License-Identifier: Apache-2.0
//
// The handlers of the categories: called through the library's table, and named in log lines like
// the other functions of the codec.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "mdm/ipc.h"
#include "support/format.hpp"
#include "support/log_recorder.hpp"
#include "support/wire.hpp"

namespace mdm::test {

// A handler of a message type. It may stand for the origin of its lines: enter(wifi.set).
class Handler {
public:
    constexpr Handler(uint8_t type, const char *prefix) : type_(type), prefix_(prefix) {}

    // NOLINTNEXTLINE(google-explicit-constructor): see above
    operator Origin() const;

protected:
    uint8_t type_;

private:
    const char *prefix_;
};

struct SizeOf : Handler {
    using Handler::Handler;
    uint32_t operator()(mdm_body_t *body) const;
};

// Writes the body with a trusting writer, which leaves gaps unwritten. Returns the position after
// the body, or null on failure.
struct Set : Handler {
    using Handler::Handler;
    uint8_t *operator()(uint8_t *position, mdm_body_t *body) const;
};

// Reads the body; returns the position after it, or null on failure.
struct Get : Handler {
    using Handler::Handler;
    const uint8_t *operator()(mdm_body_t *body, const uint8_t *position) const;
};

struct Free : Handler {
    using Handler::Handler;
    void operator()(mdm_body_t *body) const;
};

// The handlers of a message type, and short ways to use them.
struct Handlers {
    constexpr explicit Handlers(uint8_t message_type)
        : type(message_type), size(message_type, "_size_of_"), set(message_type, "_set_"),
          get(message_type, "_get_"), free(message_type, "_free_")
    {
    }

    uint8_t type;
    SizeOf size;
    Set set;
    Get get;
    Free free;

    // The bytes that `set` writes into a zeroed buffer that is larger than any test needs.
    Bytes write(mdm_body_t *body) const;
    // Lets `get` read an exact copy of the bytes; returns how many it consumed.
    size_t read(mdm_body_t *body, const Bytes &bytes) const;
    // The blocks that `free` releases, in order.
    std::vector<const void *> release(mdm_body_t *body) const;
};

// The handlers of a category, for its first message type.
Handlers handlers_of(std::string_view category);

// The functions of the codec that log and are no handlers: enter(from::ipc_open).
namespace from {

inline constexpr LoggingFunction ipc_serialize{"ipc_serialize", "mdm_ipc.cpp"};
inline constexpr LoggingFunction alloc_msg{"_alloc_msg", "mdm_ipc.cpp"};
inline constexpr LoggingFunction check_footer{"check_footer", "mdm_ipc.cpp"};
inline constexpr LoggingFunction ipc_deserialize{"ipc_deserialize", "mdm_ipc.cpp"};
inline constexpr LoggingFunction ipc_seal{"ipc_seal", "mdm_ipc_guarded.cpp"};
inline constexpr LoggingFunction ipc_open{"ipc_open", "mdm_ipc_guarded.cpp"};

}  // namespace from

}  // namespace mdm::test
