#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Uses an installed copy of the library as another project would.
# usage: installed_test.sh pkg-config|cmake|readme SOURCE_DIR INSTALLED_DIR WORK_DIR
# environment: CC, CXX, and LIBDIR, the library's folder below INSTALLED_DIR
set -eu

source_dir=$2
installed=$3
work=$4

rm -rf "$work"
mkdir -p "$work"
export PKG_CONFIG_PATH="$installed/$LIBDIR/pkgconfig"
export LD_LIBRARY_PATH="$installed/$LIBDIR"

build_and_run_c() {
    # shellcheck disable=SC2046 # pkg-config prints several words
    "$CC" -std=c11 -Wall -Wextra -Wpedantic -Werror "$1" -o "$work/program" \
        $(pkg-config --cflags --libs mdm-common)
    "$work/program"
}

case $1 in
pkg-config)
    build_and_run_c "$source_dir/tests/abi/api_test.c"
    ;;
cmake)
    cmake -G Ninja -S "$source_dir/tests/abi/consumer" -B "$work" \
        -DCMAKE_PREFIX_PATH="$installed" -DCMAKE_CXX_COMPILER="$CXX"
    cmake --build "$work"
    "$work/consumer"
    ;;
readme)
    awk '/^```c$/ { inside = 1; next } /^```$/ { inside = 0 } inside' "$source_dir/README.md" \
        >"$work/example.c"
    [ "$(build_and_run_c "$work/example.c")" = "54 bytes carry: ok" ]
    ;;
*)
    echo "$0: no such test: $1" >&2
    exit 1
    ;;
esac
