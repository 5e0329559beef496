#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Runs the tests of debian/tests against the packages beside it, in a root file system of its own.
# usage: run-autopkgtest.sh [--emulated], with the packages and source.tar.xz in /in
set -eu

# Tests make mounts of their own, for which the root directory has to be a mount.
if ! mountpoint --quiet /; then
    # shellcheck disable=SC2016 # for the inner shell
    exec unshare --mount --propagation unchanged \
        sh -c 'mount --rbind / /mnt && exec chroot /mnt "$0" "$@"' "$(realpath "$0")" "$@"
fi
cd /in
mkdir /tmp/source
tar -xf source.tar.xz -C /tmp/source --strip-components=1
[ "${1-}" != --emulated ] || set -- --env=MDM_EMULATED=1
autopkgtest --output-dir=/tmp/results "$@" ./*.deb /tmp/source/ -- null
