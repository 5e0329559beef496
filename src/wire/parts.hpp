// SPDX-License-Identifier: Apache-2.0
//
// The parts of a message, one after the other. They are taken from bytes and shown to a visitor, or
// an answerer gives them and they are added to new bytes.
#pragma once

#include <cstddef>
#include <cstdint>

#include <glib.h>

#include "mdm/inspect.h"

namespace mdm {

class Parts {
public:
    // Shows the parts of these bytes.
    Parts(const uint8_t *bytes, uint32_t size, ipc_visit_t visit, void *user_data)
        : visit_(visit), user_data_(user_data), bytes_(bytes), left_(size)
    {
    }
    // Makes new bytes.
    Parts(ipc_answer_t answer, void *user_data)
        : answer_(answer), user_data_(user_data), left_(UINT32_MAX)
    {
    }
    ~Parts() { g_free(new_bytes_); }
    Parts(const Parts &) = delete;
    Parts &operator=(const Parts &) = delete;

    // Where the next part begins, and how many bytes can follow.
    uint32_t offset() const { return offset_; }
    uint32_t left() const { return left_; }

    bool has_stopped() const { return has_stopped_; }  // because the visitor wanted it
    // The memory that could not be allocated, if there was none.
    size_t missing_memory() const { return missing_memory_; }

    // Takes a part of `size` bytes, which are left; of a text, its count alone. The caller sets the
    // path, the kind and the positions of the part. Returns its bytes. Null if the visitor has
    // stopped, or if no answer is there.
    const uint8_t *take(ipc_part_t &part, uint32_t size);
    // Takes the text whose count was the last part. False without memory.
    bool take_text(uint32_t size);
    // Takes all bytes that follow as one part.
    bool take_all(const char *path, ipc_part_kind_t kind);

    // Hands over the new bytes.
    uint8_t *release();

private:
    void show(ipc_part_t &part, const uint8_t *bytes);
    bool ask_for(ipc_part_t &part);
    bool add(const uint8_t *bytes, uint32_t size);

    ipc_visit_t visit_ = nullptr;
    ipc_answer_t answer_ = nullptr;
    void *user_data_;
    const uint8_t *bytes_ = nullptr;
    const uint8_t *text_ = nullptr;  // the answered one
    uint8_t *new_bytes_ = nullptr;
    uint32_t capacity_ = 0;  // of the new bytes
    uint32_t offset_ = 0;
    uint32_t left_;
    size_t missing_memory_ = 0;
    bool has_stopped_ = false;
};

}  // namespace mdm
