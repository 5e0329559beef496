#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# The example of a header: the program between its first "@code{.c}" and "@endcode".
# usage: header_example.sh extract HEADER SOURCE
#        header_example.sh run SOURCE COMMAND...
# SOURCE is the program. It has to print the texts behind "// prints: ".
set -eu

extract() {
    awk '
        /@endcode$/ { is_complete = is_inside; exit }
        is_inside { sub(/^ \* ?/, ""); print }
        / @code\{\.c\}$/ { is_inside = 1 }
        END { exit !is_complete }' "$1" >"$2" && return
    echo "$1: no example" >&2
    exit 1
}

run() {
    expected=$(sed -n 's|^// prints: ||p' "$1")
    shift
    printed=$("$@")
    [ -n "$expected" ] && [ "$printed" = "$expected" ] && return
    printf 'expected:\n%s\nprinted:\n%s\n' "$expected" "$printed" >&2
    exit 1
}

verb=$1
shift
"$verb" "$@"
