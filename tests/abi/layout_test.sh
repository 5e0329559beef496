#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Fails unless layout.h says how each record of the public headers is laid out.
# usage: layout_test.sh LAYOUT HEADERS_DIRECTORY
set -eu

records=$(find "$2" -name '*.h' -exec sed -n 's/^} \([a-z_]*\);$/\1/p' {} +)
[ -n "$records" ] || { echo "no record in $2"; exit 1; }
missing=0
for record in $records; do
    grep -qE "(FIRST|HEAD|HEAD_WITH)\($record\b" "$1" || { echo "$1 has no $record"; missing=1; }
done
exit "$missing"
