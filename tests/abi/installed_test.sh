#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Uses an installed copy of the library as another project would.
# usage: installed_test.sh pkg-config|cmake|readme|values|examples-cmake|examples-meson \
#            SOURCE_DIR INSTALLED_DIR WORK_DIR
# environment: CC, CXX, MDM_BUILD_DIR; LIBDIR, the library's folder below INSTALLED_DIR; and
# MDM_EMULATED, if an emulator runs this
set -eu

source_dir=$2
installed=$3
work=$4

rm -rf "$work"
mkdir -p "$work"
export PKG_CONFIG_PATH="$installed/$LIBDIR/pkgconfig"
export LD_LIBRARY_PATH="$installed/$LIBDIR"

c_source=$source_dir/tests/abi/api_test.c
cxx_source=$source_dir/tests/abi/consumer/consumer.cpp

# A compiler with its language's version, and a source.
build_and_run() {
    # shellcheck disable=SC2046 # pkg-config prints several words
    "$1" "$2" -Wall -Wextra -Wpedantic -Werror "$3" -o "$work/program" \
        $(pkg-config --cflags --libs mdm-common)
    "$work/program"
}

# The blocks of a page that have a language, one after the other.
blocks_of() {
    awk -v fence="\`\`\`$2" '
        $0 == fence { inside = 1; next }
        /^```$/ { inside = 0 }
        inside' "$source_dir/$1"
}

# The program of a page prints the text of that page.
# usage: run_example_of PAGE LANGUAGE COMPILER VERSION
run_example_of() {
    blocks_of "$1" "$2" >"$work/example.$2"
    blocks_of "$1" text >"$work/shown"
    build_and_run "$3" "$4" "$work/example.$2" >"$work/printed"
    diff "$work/shown" "$work/printed"
}

build_and_run_with_cmake() {
    "$source_dir/tests/configure_once.sh" -B "$work/$1" -G Ninja \
        -S "$source_dir/tests/abi/consumer" -D CMAKE_PREFIX_PATH="$installed" \
        -D LANGUAGE="$1" -D SOURCE="$2"
    cmake --build "$work/$1"
    "$work/$1/consumer"
}

case $1 in
pkg-config)
    build_and_run "$CC" -std=c11 "$c_source"
    build_and_run "$CXX" -std=c++20 "$cxx_source"
    ;;
cmake)
    build_and_run_with_cmake C "$c_source"
    build_and_run_with_cmake CXX "$cxx_source"
    ;;
readme)
    run_example_of README.md c "$CC" -std=c11
    ;;
values)
    run_example_of docs/values.md cpp "$CXX" -std=c++11
    ;;
examples-cmake)
    cp -r "$source_dir/examples" "$work"
    "$source_dir/tests/configure_once.sh" -B "$work/build" -G Ninja -S "$work/examples" \
        -D CMAKE_PREFIX_PATH="$installed" -D CMAKE_COMPILE_WARNING_AS_ERROR=ON
    cmake --build "$work/build"
    # An emulator is too slow for a load.
    ctest --test-dir "$work/build" --output-on-failure --no-tests=error \
        --exclude-regex "systemd${MDM_EMULATED:+|load}"
    # The commands of docs/server.md install what systemd needs.
    cmake -D CMAKE_INSTALL_PREFIX=/usr "$work/build"
    cmake --build "$work/build"
    DESTDIR="$work/root" cmake --install "$work/build"
    (cd "$work/root" && find . -type f | LC_ALL=C sort | diff - /dev/fd/3) 3<<END
./usr/bin/mdm-client
./usr/bin/mdm-server
./usr/lib/systemd/system/mdm-server.service
./usr/lib/systemd/system/mdm-server.socket
./usr/lib/sysusers.d/mdm.conf
./usr/lib/tmpfiles.d/mdm.conf
./usr/share/doc/mdm-server/rules.conf
END
    grep -x ExecStart=/usr/bin/mdm-server "$work/root/usr/lib/systemd/system/mdm-server.service"
    ;;
examples-meson)
    cp -r "$source_dir/examples" "$work"
    meson setup --werror "$work/build" "$work/examples"
    meson test -C "$work/build" --print-errorlogs
    ;;
*)
    echo "$0: no such test: $1" >&2
    exit 1
    ;;
esac
