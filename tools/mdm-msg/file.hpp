// SPDX-License-Identifier: Apache-2.0
//
// The bytes of a file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "text.hpp"

namespace mdm::msg {

// Reads a file, or maps it if it is large.
class File {
public:
    // "-" is standard input.
    explicit File(const std::string &name);
    ~File();
    File(const File &) = delete;
    File &operator=(const File &) = delete;

    // Why the file cannot be read; empty if it was read.
    const std::string &reason() const { return reason_; }
    Bytes bytes() const;

private:
    void load(int file);
    bool map(int file);
    void read(int file);

    std::string reason_;
    std::vector<uint8_t> read_;
    void *mapped_ = nullptr;
    size_t mapped_size_ = 0;
};

}  // namespace mdm::msg
