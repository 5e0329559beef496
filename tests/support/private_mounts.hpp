// SPDX-License-Identifier: Apache-2.0
//
// Mounts that nobody but this process sees.
#pragma once

#include <optional>
#include <string>

namespace mdm::test {

// Mounts an empty file system over a directory, for this process alone; `options` as for a tmpfs,
// such as "size=4k". Returns why it cannot be, if so: a machine may give no private mounts.
std::optional<std::string> mount_empty(const std::string &directory, const char *options = nullptr);

}  // namespace mdm::test
