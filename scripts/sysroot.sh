# SPDX-License-Identifier: Apache-2.0
# Root file systems of other architectures. ./dev sources this file.
# shellcheck shell=bash

# The machines of cmake/architectures.
architectures() { sed '/^#/d; s/ .*//' cmake/architectures; }

# A column of a machine's line in cmake/architectures.
architecture_setting() {
    awk -v name="$1" -v arch="$2" '
        BEGIN { place["triplet"] = 2; place["machine"] = 3; place["suite"] = 4 }
        $1 == arch { print $place[name] }' cmake/architectures
}

check_architecture() {
    architectures | grep -Fqx -- "$1" ||
        die "no such architecture: '$1'; there are $(architectures | paste -s -d ' ')"
}

# The main part of this system's suite, or of the named one, as a line for a sources.list.
# usage: main_suite [SUITE]
main_suite() {
    local codename
    # shellcheck source=/dev/null
    codename=$(. /etc/os-release && echo "$VERSION_CODENAME")
    # shellcheck disable=SC2016 # the words in dollars are apt's own
    apt-get indextargets --format 'deb $(REPO_URI) $(CODENAME) $(COMPONENT)' \
        'Created-By: Packages' | sort -u | grep " $codename main\$" |
        sed "s/ $codename main/ ${1-$codename} main/"
}

# A root file system of another architecture for the cross compilers and the emulator. Its packages
# would collide with this machine's own, so they are only unpacked, and nobody needs root.
# usage: make_sysroot ARCHITECTURE SUITE PACKAGE...; the suite may be empty
make_sysroot() {
    local arch=$1 suite=$2
    shift 2
    local sysroot=build/sysroot-$arch state=$PWD/build/sysroot-$arch.apt packages=("$@")
    local contents=${suite:+"$suite: "}${packages[*]}
    [ "$(cat "$sysroot/packages" 2>/dev/null)" != "$contents" ] || return 0
    say "Making $sysroot"
    rm -rf "$state" "$sysroot.new"
    mkdir -p "$state/lists/partial" "$state/cache/archives/partial" "$sysroot.new"
    : >"$state/status"
    if ! main_suite ${suite:+"$suite"} >"$state/sources.list"; then
        as_root apt-get update
        main_suite ${suite:+"$suite"} >"$state/sources.list" ||
            die "apt knows no main suite of this system"
    fi
    local apt=(apt-get
        -o APT::Architecture="$arch" -o APT::Architectures::="$arch"
        -o Dir::Etc::SourceList="$state/sources.list" -o Dir::Etc::SourceParts=/dev/null
        -o Dir::State="$state" -o Dir::State::status="$state/status"
        -o Dir::Cache="$state/cache" -o APT::Sandbox::User= -o Debug::NoLocking=true)
    "${apt[@]}" update
    "${apt[@]}" install --yes --no-install-recommends --download-only "${packages[@]}"
    for package in "$state"/cache/archives/*.deb; do
        dpkg -x "$package" "$sysroot.new"
    done
    # Packages of newer suites rely on this link.
    [ -e "$sysroot.new/lib" ] || ln -s usr/lib "$sysroot.new/lib"
    echo "$contents" >"$sysroot.new/packages"
    rm -rf "$state" "$sysroot"
    mv "$sysroot.new" "$sysroot"
}

# What the library's tests on a machine of cmake/architectures need.
make_test_sysroot() {
    local suite
    suite=$(architecture_setting suite "$1")
    make_sysroot "$1" "${suite#-}" libc6-dev libstdc++6 libglib2.0-dev libssl-dev libgtest-dev \
        libgmock-dev librapidcheck-dev libjson-glib-dev libsqlite3-dev libsystemd-dev
}

make_i386_sysroot() {
    make_sysroot i386 '' libc6-dev libstdc++-12-dev libglib2.0-dev libssl-dev libjson-glib-dev
}
