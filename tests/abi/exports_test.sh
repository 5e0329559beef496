#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Compares the exports of the shared library with the documented list: T is a function, W a weak
# one, D data of any kind, which compilers keep in different sections.
# usage: exports_test.sh NM LIBRARY LIST
set -eu

"$1" --dynamic --defined-only "$2" |
    awk '$2 != "A" { sub(/[BRV]/, "D", $2); print $2, $3 }' |
    LC_ALL=C sort |
    diff "$3" -
