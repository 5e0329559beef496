// SPDX-License-Identifier: Apache-2.0
//
// Takes the place of libcrypto's OPENSSL_cleanse() and keeps what was wiped.
#pragma once

#include <cstdint>
#include <vector>

#include "support/wire.hpp"

namespace mdm::test {

// Keeps what the calling thread wipes, as it was before, from its construction to its destruction.
class WipeRecorder {
public:
    WipeRecorder();
    ~WipeRecorder();
    WipeRecorder(const WipeRecorder &) = delete;
    WipeRecorder &operator=(const WipeRecorder &) = delete;

    // Whether the bytes were among what was wiped. The same place is not found twice.
    bool take(const Bytes &secret);

    // Called for every wipe of the process; not for tests.
    static void on_wipe(const void *memory, size_t size);

private:
    std::vector<Bytes> wiped_;
};

}  // namespace mdm::test
