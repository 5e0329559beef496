// SPDX-License-Identifier: Apache-2.0
//
// Mounts that nobody but this process sees.
#pragma once

#include <optional>
#include <string>

namespace mdm::test {

// Gives this process mounts of its own, the first time it is called. Returns why the machine gives
// none, if so.
const std::optional<std::string> &enter_private_mounts();

// Mounts an empty file system over a directory; `options` as for a tmpfs, such as "size=4k".
// Returns why it cannot be, if so.
std::optional<std::string> mount_empty(const std::string &directory, const char *options = nullptr);

}  // namespace mdm::test
