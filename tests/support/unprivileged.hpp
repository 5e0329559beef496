// SPDX-License-Identifier: Apache-2.0
//
// Lets file permissions count for a test that runs as root, too.
#pragma once

#include <array>

#include <linux/capability.h>

namespace mdm::test {

// Takes the calling thread's privileges while it lives. The thread keeps its user, and so what the
// test has created stays its own.
class Unprivileged {
public:
    Unprivileged();
    ~Unprivileged();
    Unprivileged(const Unprivileged &) = delete;
    Unprivileged &operator=(const Unprivileged &) = delete;

private:
    using Capabilities = std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3>;

    Capabilities previous_{};
};

}  // namespace mdm::test
