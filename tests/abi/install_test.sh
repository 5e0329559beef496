#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Installs a build in ways that packagers do, and looks at what is there.
# usage: install_test.sh components|paths|apart SOURCE_DIR BUILD_DIR shared|static WORK_DIR
# environment: LIBDIR, the library's folder below a prefix, VERSION and MDM_BUILD_DIR
set -euo pipefail

source_dir=$2
build=$3
kind=$4
work=$5

rm -rf "$work"
mkdir -p "$work"
unset DESTDIR

fail() {
    echo "$*" >&2
    exit 1
}

quietly() { "$@" >"$work/log" || fail "$(cat "$work/log")"; }

# Whatever the type of the build is called.
files_in() {
    mkdir -p "$1"
    find "$1" ! -type d -printf '%P\n' | sed 's/Targets-[a-z]*/Targets-TYPE/' | LC_ALL=C sort
}

# Installs a component, and compares it with the list of files on standard input.
expect_component() {
    quietly cmake --install "$build" --component "$1" --prefix "$work/$1"
    diff <(LC_ALL=C sort) <(files_in "$work/$1") || fail "that differs in the component $1"
}

# The pkg-config file below a directory, and what a variable of it should be.
expect_variable() {
    local value
    value=$(PKG_CONFIG_PATH=$1/pkgconfig pkg-config --variable="$2" mdm-common)
    [ "$value" = "$3" ] || fail "$2 is $value, not $3"
}

case $1 in
components)
    runtime=("$LIBDIR/libmdm-common.so.1" "$LIBDIR/libmdm-common.so.$VERSION")
    development=libmdm-common.so
    # The static build is one without the tools.
    tools=(bin/mdm-msg share/bash-completion/completions/mdm-msg share/man/man1/mdm-msg.1)
    if [ "$kind" = static ]; then
        runtime=()
        tools=()
        development=libmdm-common.a
    fi
    printf '%s\n' "${runtime[@]}" | sed '/^$/d' | expect_component runtime
    {
        (cd "$source_dir" && find include -name '*.h*')
        printf 'share/mdm-common/%s\n' mdm.ksy mdm.lua
        printf "$LIBDIR/%s\n" "$development" pkgconfig/mdm-common.pc \
            cmake/mdm-common/mdm-common{Config,ConfigVersion,Targets,Targets-TYPE}.cmake
    } | expect_component dev
    {
        printf 'share/doc/mdm-common/%s\n' README.md CHANGELOG.md LICENSE
        (cd "$source_dir" &&
            find docs -path docs/site -prune -o -type f \( -name '*.md' -o -name '*.svg' \
                -o -path 'docs/debugging/*' -o -path 'docs/other-languages/*' \) \
                -printf 'share/doc/mdm-common/%p\n')
    } | expect_component doc
    printf '%s\n' "${tools[@]}" | sed '/^$/d' | expect_component tools
    # Every installed file belongs to a component.
    quietly cmake --install "$build" --prefix "$work/all"
    diff <(files_in "$work/all") \
        <(for component in runtime dev tools doc; do files_in "$work/$component"; done |
            LC_ALL=C sort)
    ;;
paths)
    # A package for the system: its directories are those of the system's other headers.
    DESTDIR=$work/root quietly cmake --install "$build" --prefix /usr
    pc=$work/root/usr/$LIBDIR
    expect_variable "$pc" includedir /usr/include
    expect_variable "$pc" libdir "/usr/$LIBDIR"
    [ "$(PKG_CONFIG_PATH=$pc/pkgconfig pkg-config --cflags mdm-common)" = \
        "$(pkg-config --cflags glib-2.0)" ] || fail "a directory of the system is named"

    quietly cmake --install "$build" --prefix "$work/prefix"
    expect_variable "$work/prefix/$LIBDIR" includedir "$work/prefix/include"
    (cd "$work" && quietly cmake --install "$build" --prefix relative)
    expect_variable "$work/relative/$LIBDIR" libdir "$work/relative/$LIBDIR"
    ;;
apart)
    # Directories outside of any prefix. Whatever stands for the library will do.
    quietly "$source_dir/tests/configure_once.sh" -B "$work/build" -G Ninja -S "$source_dir" \
        -D BUILD_SHARED_LIBS=OFF -D MDM_TESTS=OFF -D MDM_TOOLS=OFF -D MDM_EXAMPLES=OFF -D MDM_BENCH=OFF \
        -D CMAKE_INSTALL_LIBDIR=/lib/apart -D CMAKE_INSTALL_INCLUDEDIR=/include/apart
    touch "$work/build/libmdm-common.a"
    DESTDIR=$work/root quietly cmake --install "$work/build" --prefix /usr
    expect_variable "$work/root/lib/apart" libdir /lib/apart
    expect_variable "$work/root/lib/apart" includedir /include/apart
    ;;
*) fail "no such case: $1" ;;
esac
