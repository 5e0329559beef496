// SPDX-License-Identifier: Apache-2.0
#include "support/unprivileged.hpp"

#include <cerrno>
#include <system_error>

#include <sys/syscall.h>
#include <unistd.h>

namespace mdm::test {
namespace {

// The calls themselves: the C library has no function for them.
template <class Capabilities>
long call(long number, Capabilities &capabilities)
{
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    return syscall(number, &header, capabilities.data());
}

}  // namespace

Unprivileged::Unprivileged()
{
    if (call(SYS_capget, previous_) != 0) {
        throw std::system_error(errno, std::generic_category(), "capget");
    }
    Capabilities reduced = previous_;
    for (auto &word : reduced) {
        word.effective = 0;
    }
    if (call(SYS_capset, reduced) != 0) {
        throw std::system_error(errno, std::generic_category(), "capset");
    }
}

Unprivileged::~Unprivileged()
{
    call(SYS_capset, previous_);
}

}  // namespace mdm::test
