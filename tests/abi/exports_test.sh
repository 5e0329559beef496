#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Compares the exports of the shared library with the documented list.
# usage: exports_test.sh NM LIBRARY LIST
set -eu

"$1" --dynamic --defined-only "$2" |
    awk '$2 != "A" { print $2, $3 }' |
    LC_ALL=C sort |
    diff "$3" -
