#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# The example of a header: the program between its first "@code{.c}" or "@code{.cpp}" and "@endcode".
# usage: header_example.sh extract HEADER SOURCE
#        header_example.sh run SOURCE COMMAND...
#        header_example.sh run-with-statuses SOURCE COMMAND...
# SOURCE is the program. It has to print the texts behind "// prints: ". The last verb gives it a
# directory for status files that nobody else sees.
set -eu

extract() {
    awk '
        /@endcode$/ { is_complete = is_inside; exit }
        is_inside { sub(/^ \* ?/, ""); print }
        / @code\{\.c(pp)?\}$/ { is_inside = 1 }
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

run_with_statuses() {
    mounts='mount -t tmpfs none /opt && mkdir -p /opt/etc/mdm'
    map=--map-root-user
    [ "$(id -u)" != 0 ] || map=--propagation=private
    if ! reason=$(unshare --mount "$map" sh -c "$mounts && [ -e \"\$0\" ]" "$0" 2>&1); then
        printf '%s: Skipped\nno private mounts: %s\n' "${0##*/}" "$reason"
        exit 77
    fi
    # shellcheck disable=SC2016 # for the inner shell
    exec unshare --mount "$map" sh -c "$mounts"' && exec "$0" run "$@"' "$0" "$@"
}

verb=$1
shift
case $verb in
run-with-statuses) run_with_statuses "$@" ;;
*) "$verb" "$@" ;;
esac
