// SPDX-License-Identifier: Apache-2.0
#include "support/private_mounts.hpp"

#include <cerrno>
#include <cstring>
#include <fstream>

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

namespace mdm::test {
namespace {

// Maps the caller to root of its new user namespace, without which it could create no file there.
bool map_to_root(uid_t uid, gid_t gid)
{
    std::ofstream("/proc/self/setgroups") << "deny";
    return (std::ofstream("/proc/self/uid_map") << "0 " << uid << " 1" << std::flush) &&
           (std::ofstream("/proc/self/gid_map") << "0 " << gid << " 1" << std::flush);
}

bool unshare_mounts()
{
    const uid_t uid = geteuid();
    const gid_t gid = getegid();
    if (uid == 0) {
        return unshare(CLONE_NEWNS) == 0;
    }
    return unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 && map_to_root(uid, gid);
}

std::optional<std::string> reason_unless(bool succeeded)
{
    return succeeded ? std::nullopt : std::optional<std::string>(std::strerror(errno));
}

// Enters them in the first call. If the machine refuses, returns the reason.
const std::optional<std::string> &enter_private_mounts()
{
    static const std::optional<std::string> reason = reason_unless(
        unshare_mounts() && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0);
    return reason;
}

}  // namespace

std::optional<std::string> mount_empty(const std::string &directory, const char *options)
{
    const auto &reason = enter_private_mounts();
    return reason ? reason
                  : reason_unless(mount("none", directory.c_str(), "tmpfs", 0, options) == 0);
}

}  // namespace mdm::test
