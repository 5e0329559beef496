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
    rm -rf "$output"
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

# The same bytes from a commit for everybody who has the same xz.
# usage: make_tarball NAME COMMIT FILE
make_tarball() { git -c tar.umask=0022 archive --prefix="$1/" "$2" | xz >"$3"; }

# The tree with the changes of known files that are not committed.
make_source_tarball() {
    local tree
    [ -z "$(git ls-files --others --exclude-standard)" ] ||
        die "git does not know all files: add them, or remove them"
    tree=$(git stash create)
    make_tarball "libmdm-common-$(package_version)" "${tree:-HEAD}" "$1"
}

# Builds the packages of a tarball, and keeps it beside them as source.tar.xz.
# usage: build_packages TARBALL ARCHITECTURE OUTPUT [WORD OF scripts/package/build.sh...]
build_packages() {
    local tarball=$1 arch=$2 output=$3 own words input=$scratch/build
    own=$(own_arch)
    words=("${@:4}")
    if [ "$arch" != "$own" ]; then
        words+=(--no-tests --no-all "--host-arch=$arch")
        arch=$own,$arch
    fi
    say "Packages: ${output#build/}"
    rm -rf "$output" "$output.new" "$input"
    mkdir "$input"
    cp "$tarball" "$input/source.tar.xz"
    in_clean_root build.sh "$input" "$PWD/$output.new" "$arch" --variant=buildd -- "${words[@]}"
    cp "$tarball" "$output.new/source.tar.xz"
    mv "$output.new" "$output"
    ls "$output"
}

# Builds the packages of the tree, unless they are there.
# usage: build_packages_of_tree ARCHITECTURE OUTPUT [WORD OF scripts/package/build.sh...]
build_packages_of_tree() {
    make_source_tarball "$scratch/tree.tar.xz"
    cmp -s "$scratch/tree.tar.xz" "$2/source.tar.xz" ||
        build_packages "$scratch/tree.tar.xz" "$@"
}

# Runs a script of scripts/package/ with the packages of a directory, their source and the README.
# usage: with_packages DIRECTORY ARCHITECTURE SCRIPT [OPTION OF MMDEBSTRAP...] [-- ARGUMENT...]
with_packages() {
    local packages=$1 arch=$2 script=$3 input=$scratch/test
    say "$script: ${packages#build/}"
    rm -rf "$input"
    mkdir "$input"
    find "$packages" -name '*.deb' ! -name '*-dbgsym_*' -exec cp -t "$input" {} +
    cp "$packages/source.tar.xz" README.md "$input"
    in_clean_root "$script" "$input" "$scratch/out" "$arch" --variant=minbase "${@:4}"
}

# Where the verbs below put what they do not keep.
make_scratch() {
    [ -z "${scratch-}" ] || return 0
    scratch=$(mktemp -d)
    trap 'rm -rf "$scratch"' EXIT
}

need_packaging() {
    need packaging
    [ "$1" = "$(own_arch)" ] || need emulated_root
    make_scratch
}

do_package() {
    local arch=${1-$(own_arch)} own
    own=$(own_arch)
    need_packaging "$arch"
    build_packages_of_tree "$own" "build/packages/$own"
    [ "$arch" != "$own" ] || return 0
    build_packages_of_tree "$arch" "build/packages/$arch"
    # A build for another machine makes no package that is the same for all machines.
    cp "build/packages/$own"/*_all.deb "build/packages/$arch"
}

do_package_test() {
    if [ "${1-}" = --short ]; then
        do_package_test_short
        return
    fi
    local arch=${1-$(own_arch)} emulated=()
    do_package "$@"
    with_packages "build/packages/$arch" "$arch" install-test.sh
    [ "$arch" = "$(own_arch)" ] || emulated=(-- --emulated)
    with_packages "build/packages/$arch" "$arch" run-autopkgtest.sh --include=autopkgtest,xz-utils \
        "${emulated[@]}"
}

# CI's part of the above: the packages without their own tests, without the web pages.
do_package_test_short() {
    local arch packages=build/packages/short
    arch=$(own_arch)
    need_packaging "$arch"
    build_packages_of_tree "$arch" $packages --no-tests --no-all
    with_packages $packages "$arch" install-test.sh
}

# Builds the packages again: in another directory, at another time, with another locale, time zone
# and umask. Fails if a byte differs.
do_package_again() {
    local arch packages again=build/packages/again package
    arch=$(own_arch)
    packages=build/packages/$arch
    do_package
    build_packages "$packages/source.tar.xz" "$arch" $again --no-tests --elsewhere
    for package in "$packages"/*.deb; do
        cmp "$package" "$again/${package##*/}"
    done
    echo "$(find $again -name '*.deb' | wc -l) packages, built twice, have the same bytes"
}
