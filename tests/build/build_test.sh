#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Configures the project in one of the ways that builders do, and looks at what would be built.
# usage: build_test.sh CASE SOURCE_DIR WORK_DIR
# environment: CC, CXX, VERSION, MDM_BUILD_DIR, and MDM_BENCH, whether the machine can build the
# benchmark
set -euo pipefail

source_dir=$2
work=$3
build=$work/build
cmake=("${0%/*}/../configure_once.sh")

rm -rf "$work"
mkdir -p "$work"
unset CFLAGS CXXFLAGS CPPFLAGS LDFLAGS

fail() {
    echo "$*" >&2
    exit 1
}

# Configures a directory, with further words for CMake, which is quiet unless it fails.
configure() {
    "${cmake[@]}" -B "$build" -G Ninja -S "$1" -D CMAKE_BUILD_TYPE=Release "${@:2}" \
        >"$work/log" 2>&1 || fail "$(cat "$work/log")"
}

configure_for_flags() {
    configure "$source_dir" -D CMAKE_EXPORT_COMPILE_COMMANDS=ON -D MDM_BENCH=OFF "$@"
}

targets() { ninja -C "$build" -t targets all | cut -d: -f1; }
expect_target() { targets | grep -xFe "$1" >/dev/null || fail "$1 is not built"; }
expect_no_target() { ! targets | grep -Ee "$1" || fail "that is built"; }

# What a macro is whenever a source is compiled.
macro_in() {
    local commands
    commands=$(sed -n "s|^ *\"command\": \"\(.*/$1\)\",\$|\1 -E -dM|p" \
        "$build/compile_commands.json" | sed 's/ -o [^ ]*//; s/\\"/"/g')
    (cd "$build" && eval "$commands") | sed -n "s/^#define $2 //p" | sort -u
}

# The words of the command that compiles or links a file.
words_of() { ninja -C "$build" -t commands -s "$1" | tr ' ' '\n'; }

expect_word() { words_of "$1" | grep -xFe "$2" >/dev/null || fail "$1: there is no $2"; }
expect_no_word() { ! words_of "$1" | grep -xFe "$2" || fail "$1: there is $2"; }
expect_macro() { [ "$(macro_in "$1" "$2")" = "$3" ] || fail "$1: $2 is not '$3'"; }

library=src/util/mdm_util.cpp
library_object=CMakeFiles/mdm-common-objects.dir/$library.o
example=examples/common/packet.c
unoptimised=tests/support/dump.cpp

case $1 in
hardened)
    configure_for_flags -D MDM_TESTS=OFF
    for source in $library $example; do
        expect_macro "$source" _FORTIFY_SOURCE 2
        expect_macro "$source" __SSP_STRONG__ 3
    done
    expect_word $library_object -fno-plt
    for linked in "libmdm-common.so.$VERSION" examples/mdm-server; do
        for word in relro now noexecstack; do
            expect_word "$linked" -Wl,-z,$word
        done
    done
    ;;
builders-hardening)
    CXXFLAGS="-Wp,-D_FORTIFY_SOURCE=3 -fstack-protector-all -fplt" \
        LDFLAGS="-Wl,-z,lazy -z norelro" \
        configure_for_flags -D CMAKE_C_FLAGS_RELEASE="-O1 -fno-stack-protector"
    expect_macro $library _FORTIFY_SOURCE 3
    expect_macro $library __SSP_ALL__ 2
    expect_no_word $library_object -fno-plt
    # The C library would warn.
    expect_macro $unoptimised _FORTIFY_SOURCE ""
    # Each language has its own flags.
    expect_macro $example _FORTIFY_SOURCE 2
    expect_macro $example __SSP_STRONG__ ""
    for linked in "libmdm-common.so.$VERSION" examples/mdm-server; do
        expect_no_word "$linked" -Wl,-z,now
        expect_no_word "$linked" -Wl,-z,relro
        expect_word "$linked" -Wl,-z,noexecstack
    done
    ;;
compilers-hardening)
    # shellcheck disable=SC2016 # for the script that is written
    printf '#!/bin/sh\nexec %s -D_FORTIFY_SOURCE=3 "$@"\n' "$CXX" >"$work/c++"
    chmod +x "$work/c++"
    cmake=(cmake) # of that compiler nothing is known
    configure_for_flags -D MDM_TESTS=OFF -D CMAKE_CXX_COMPILER="$work/c++"
    expect_macro $library _FORTIFY_SOURCE 3
    expect_macro $example _FORTIFY_SOURCE 2
    ;;
no-tests)
    configure "$source_dir" -D BUILD_TESTING=OFF -D MDM_TESTS=ON -D MDM_BENCH="$MDM_BENCH"
    ctest --test-dir "$build" -N | grep -x 'Total Tests: 0' >/dev/null || fail "there are tests"
    expect_no_target '(^|/)(mdm-tests|replay-[a-z]*|api-test)$'
    ;;
no-own-tests)
    configure "$source_dir" -D BUILD_TESTING=ON -D MDM_TESTS=OFF -D MDM_BENCH=OFF
    [ -f "$build/CTestTestfile.cmake" ] || fail "testing depends on MDM_TESTS"
    ;;
subproject)
    configure "$source_dir/tests/build/super" -D MDM_SOURCE_DIR="$source_dir"
    expect_target mdm/libmdm-common.so
    expect_no_target '(^|/)(mdm-(tests|server|client)|codec-bench|message-seeds)$'
    ! grep -E '^(BUILD_(SHARED_LIBS|TESTING)|CMAKE_INSTALL_LIBDIR)' "$build/CMakeCache.txt" ||
        fail "that is in the cache"
    # Nothing is built, so there is nothing that could be installed.
    cmake --install "$build" --prefix "$work/installed"
    [ ! -e "$work/installed" ] || fail "something is installed: $(find "$work/installed")"
    configure "$source_dir/tests/build/super" -D MDM_INSTALL=ON
    grep -q libmdm-common.so "$build/mdm/cmake_install.cmake" || fail "nothing is installed"
    configure "$source_dir/tests/build/super" -D BUILD_SHARED_LIBS=OFF
    expect_target mdm/libmdm-common.a
    ;;
demo)
    # On a machine that has nothing of what the tests and the benchmark need.
    "${cmake[@]}" -B "$build" --preset demo -S "$source_dir" -D CMAKE_DISABLE_FIND_PACKAGE_GTest=ON \
        -D CMAKE_DISABLE_FIND_PACKAGE_benchmark=ON >"$work/log" 2>&1 || fail "$(cat "$work/log")"
    expect_target examples/mdm-server
    expect_target examples/mdm-client
    steps=$(ninja -C "$build" -t commands all | wc -l)
    [ "$steps" -lt 130 ] || fail "the demo takes $steps steps"
    ;;
*) fail "no such case: $1" ;;
esac
