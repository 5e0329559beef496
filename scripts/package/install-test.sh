#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Installs the packages beside it on a bare system as a user does, follows the README, and then
# upgrades, removes and purges them.
# usage: install-test.sh, with the packages and README.md in /in
set -euo pipefail

say() { printf '\n== %s\n' "$*"; }

fail() {
    echo "$*" >&2
    exit 1
}

quietly() { "$@" >/tmp/log 2>&1 || fail "$(cat /tmp/log)"; }

# README's block of a language.
readme_block() { sed -n "/^\`\`\`$1\$/,/^\`\`\`\$/{/^\`\`\`/!p}" README.md; }

apt() { DEBIAN_FRONTEND=noninteractive quietly apt-get --yes --no-install-recommends "$@"; }

# Every path but those that the package manager itself writes.
paths() {
    local place skip=(-path /in)
    for place in /out /tmp /proc /sys /dev /var/cache /var/log /var/lib/apt /var/lib/dpkg; do
        skip+=(-o -path "$place")
    done
    find / -xdev \( "${skip[@]}" \) -prune -o -printf '%y %m %u %p %l\n' | LC_ALL=C sort
}

# The packages with an earlier version, as an earlier release would have it.
make_earlier_packages() {
    local package
    mkdir /tmp/earlier
    for package in "$@"; do
        rm -rf /tmp/unpacked
        dpkg-deb --raw-extract "$package" /tmp/unpacked
        sed -i "/^Version: /s/$/~earlier/; s/\(libmdm-common1 ([>=]* $version\))/\1~earlier)/" \
            /tmp/unpacked/DEBIAN/control
        quietly dpkg-deb --build /tmp/unpacked "/tmp/earlier/${package##*/}"
    done
}

expect_version() {
    dpkg-query --show "${names[@]}"
    [ "$(dpkg-query --show --showformat '${Version}\n' "${names[@]}" | sort -u)" = "$1" ] ||
        fail "not all packages have the version $1"
}

names=(libmdm-common1 libmdm-common-dev mdm-tools)
packages=(./libmdm-common1_*.deb ./libmdm-common-dev_*.deb ./mdm-tools_*.deb)
version=$(dpkg-deb --field "${packages[0]}" Version)

paths >/tmp/before
make_earlier_packages "${packages[@]}"

say "Install the earlier version"
apt install /tmp/earlier/*.deb
expect_version "$version~earlier"

say "Upgrade"
apt install "${packages[@]}"
expect_version "$version"

say "README's example"
apt install gcc man-db
mkdir /tmp/example
readme_block c >/tmp/example/example.c
readme_block text >/tmp/example/expected
# shellcheck disable=SC2016 # backquotes of the text
build=$(sed -n 's/.*`\(cc example\.c [^`]*\)`.*/\1/p' README.md)
(cd /tmp/example && sh -eux -c "$build" && ./a.out | tee shown && diff expected shown)

say "man ipc_open"
man ipc_open >/tmp/page
sed -n 1,12p /tmp/page
grep -q ipc_open /tmp/page || fail "that is not the page of ipc_open"

say "mdm-msg"
mdm-msg --version

say "Purge"
apt purge "${names[@]}" gcc man-db
apt autoremove --purge -o APT::AutoRemove::RecommendsImportant=false
paths >/tmp/after
diff /tmp/before /tmp/after
