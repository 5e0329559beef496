// SPDX-License-Identifier: Apache-2.0
#include "support/wipe_recorder.hpp"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "support/allocation_trace.hpp"

namespace mdm::test {
namespace {

thread_local WipeRecorder *active = nullptr;

}  // namespace

WipeRecorder::WipeRecorder()
{
    active = this;
}

WipeRecorder::~WipeRecorder()
{
    active = nullptr;
}

bool WipeRecorder::take(const Bytes &secret)
{
    return std::ranges::any_of(wiped_, [&](Bytes &block) {
        const auto found = std::search(block.begin(), block.end(), secret.begin(), secret.end());
        if (found == block.end()) {
            return false;
        }
        block.erase(found, found + static_cast<std::ptrdiff_t>(secret.size()));
        return true;
    });
}

void WipeRecorder::on_wipe(const void *memory, size_t size)
{
    if (active == nullptr) {
        return;
    }
    const AllocationTrace::Pause pause;
    const auto *bytes = static_cast<const uint8_t *>(memory);
    active->wiped_.emplace_back(bytes, bytes + size);
}

}  // namespace mdm::test

// In front of libcrypto's own, which leaves zeros as well.
extern "C" void OPENSSL_cleanse(void *memory, size_t size)
{
    mdm::test::WipeRecorder::on_wipe(memory, size);
    explicit_bzero(memory, size);
}
