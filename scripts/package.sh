# SPDX-License-Identifier: Apache-2.0
# The Debian packages. ./dev sources this file.
# shellcheck shell=bash

own_arch() { dpkg --print-architecture; }

package_version() { dpkg-parsechangelog --show-field Version; }

# A root file system that one script of scripts/package/ uses, and that is gone behind it. The
# script finds its input in /in, and what it leaves in /out comes to a directory.
# usage: in_clean_root SCRIPT INPUT OUTPUT ARCHITECTURE OPTION OF MMDEBSTRAP... [-- ARGUMENT...]
in_clean_root() {
    local script=$1 input=$2 output=$3 arch=$4 command=(mmdebstrap) sources
    shift 4
    if [ "${arch%%,*}" != "$(own_arch)" ]; then
        command=(as_root scripts/with_emulator.sh "$(architecture_setting machine "$arch")"
            mmdebstrap --mode=root)
    fi
    while [ $# -gt 0 ] && [ "$1" != -- ]; do
        command+=("$1")
        shift
    done
    [ $# = 0 ] || shift
    sources=$(main_suite) || die "apt knows no main suite of this system"
    mkdir -p "$output"
    cp scripts/package/* "$input"
    # shellcheck disable=SC2016 # $1 is the root file system
    "${command[@]}" --quiet --architectures="$arch" --dpkgopt=force-unsafe-io \
        --customize-hook='mkdir "$1/in" "$1/out"' \
        --customize-hook="sync-in '$input' /in" \
        --chrooted-customize-hook="cd /in && ./$script $*" \
        --customize-hook="sync-out /out '$output'" \
        "$(cut -d ' ' -f 3 <<<"$sources")" /dev/null "$sources"
}

# The tree with the changes that are not committed, as the tarball of a source package.
make_source_tarball() {
    local tree
    tree=$(git stash create)
    git archive --prefix="libmdm-common-$(package_version)/" "${tree:-HEAD}" |
        xz >"$1/libmdm-common_$(package_version).tar.xz"
}

# Builds the packages of a source tarball.
# usage: build_packages TARBALL ARCHITECTURE OUTPUT [WORD OF scripts/package/build.sh...]
build_packages() {
    local tarball=$1 arch=$2 output=$3 own words input
    own=$(own_arch)
    words=("${@:4}")
    if [ "$arch" != "$own" ]; then
        words+=(--no-tests --no-all "--host-arch=$arch")
        arch=$own,$arch
    fi
    say "Packages: ${output#build/}"
    rm -rf "$output"
    input=$(mktemp -d)
    cp "$tarball" "$input"
    in_clean_root build.sh "$input" "$PWD/$output" "$arch" --variant=buildd -- "${words[@]}"
    rm -r "$input"
    cp "$tarball" "$output"
    ls "$output"
}

# Runs a script of scripts/package/ with the packages of a directory, their source and the README.
# usage: with_packages DIRECTORY ARCHITECTURE SCRIPT [OPTION OF MMDEBSTRAP...] [-- ARGUMENT...]
with_packages() {
    local packages=$1 arch=$2 script=$3 input
    say "$script: ${packages#build/}"
    input=$(mktemp -d)
    find "$packages" -name '*.deb' ! -name '*-dbgsym_*' -exec cp -t "$input" {} +
    cp "$packages"/*.tar.xz README.md "$input"
    in_clean_root "$script" "$input" "$input/out" "$arch" --variant=minbase "${@:4}"
    rm -r "$input"
}

need_packaging() {
    need packaging
    [ "$1" = "$(own_arch)" ] || need emulated_root
}

do_package() {
    local arch=${1-$(own_arch)} own source
    own=$(own_arch)
    need_packaging "$arch"
    source=$(mktemp -d)
    make_source_tarball "$source"
    build_packages "$source"/*.tar.xz "$arch" "build/packages/$arch"
    rm -r "$source"
    # A build for another machine makes no package that is the same for all machines.
    if [ "$arch" != "$own" ]; then
        [ -d "build/packages/$own" ] || do_package
        cp "build/packages/$own"/*_all.deb "build/packages/$arch"
    fi
}

do_package_test() {
    if [ "${1-}" = --short ]; then
        do_package_test_short
        return
    fi
    local arch=${1-$(own_arch)}
    need_packaging "$arch"
    [ -d "build/packages/$arch" ] || do_package "$@"
    with_packages "build/packages/$arch" "$arch" install-test.sh
    local emulated=()
    [ "$arch" = "$(own_arch)" ] || emulated=(-- --emulated)
    with_packages "build/packages/$arch" "$arch" run-autopkgtest.sh --include=autopkgtest,xz-utils \
        "${emulated[@]}"
}

# CI's part of the above: the packages without their own tests, without the web pages.
do_package_test_short() {
    local arch packages=build/packages/short source
    arch=$(own_arch)
    need_packaging "$arch"
    source=$(mktemp -d)
    make_source_tarball "$source"
    build_packages "$source"/*.tar.xz "$arch" $packages --no-tests --no-all
    rm -r "$source"
    with_packages $packages "$arch" install-test.sh
}

# Builds the packages of ./dev package again: in another directory, at another time, with another
# locale, time zone and umask. Fails if a byte differs.
do_package_again() {
    local arch packages again=build/packages/again package
    arch=$(own_arch)
    packages=build/packages/$arch
    need_packaging "$arch"
    [ -d "$packages" ] || do_package
    build_packages "$packages"/*.tar.xz "$arch" $again --no-tests --elsewhere
    for package in "$packages"/*.deb; do
        cmp "$package" "$again/${package##*/}"
    done
    echo "$(find $again -name '*.deb' | wc -l) packages, built twice, have the same bytes"
}
