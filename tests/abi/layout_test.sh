#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Fails unless layout.h has the layout of each record of the public headers and each member of the
# union of bodies.
# usage: layout_test.sh LAYOUT HEADERS_DIRECTORY
set -eu

# The end of an enumeration looks like that of a record.
records=$(find "$2" -name '*.h' -exec awk '/^typedef / { is_record = $2 != "enum" }
    is_record && /^} [a-z0-9_]*;$/ { print substr($2, 1, length($2) - 1) }' {} +)
members=$(sed -n 's/^ *mdm_[a-z0-9_]*_info_t \([a-z0-9_]*\);.*/\1/p' "$2/mdm/message.h")
if [ -z "$records" ] || [ -z "$members" ]; then
    echo "no record or no member in $2"
    exit 1
fi
missing=0
for record in $records; do
    grep -qE "(FIRST|HEAD|HEAD_WITH)\($record\b" "$1" || { echo "$1 has no $record"; missing=1; }
done
for member in $members; do
    grep -qF "MEMBER($member)" "$1" || { echo "$1 has no MEMBER($member)"; missing=1; }
done
exit "$missing"
