#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs a command that may run programs of another machine: in a namespace of its own, where the
# kernel gives them to an emulator. Nothing outside of the namespace changes.
# usage: with_emulator.sh QEMU_MACHINE COMMAND...; as root, with Linux 6.7 or newer
set -euo pipefail

if [ "$1" = --inside ]; then
    until grep -q . /proc/self/gid_map; do # the second one to be written
        sleep 0.1
    done
    mount -t binfmt_misc none /proc/sys/fs/binfmt_misc
    cat "/usr/lib/binfmt.d/qemu-$2.conf" >/proc/sys/fs/binfmt_misc/register
    exec "${@:3}"
fi

unshare --user --mount "$0" --inside "$@" &
inside=$!
outside_namespace=$(readlink /proc/self/ns/user)
while [ "$(readlink "/proc/$inside/ns/user")" = "$outside_namespace" ]; do
    sleep 0.1
done
# Every user is itself. newuidmap would map only those that /etc/subuid lists.
echo '0 0 65536' >"/proc/$inside/uid_map"
echo '0 0 65536' >"/proc/$inside/gid_map"
wait "$inside"
