#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Makes the site again, from another directory and for another user, and compares the bytes.
#
# Usage: site_again_test.sh SITE
set -euo pipefail
site=$(realpath "$1")
cd "$(dirname "$0")/../.."

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir -p "$scratch/another place"
find . -mindepth 1 -maxdepth 1 ! -name build ! -name .git -exec cp -r {} "$scratch/another place" \;
umask 077
LC_ALL=POSIX TZ=Pacific/Kiritimati SOURCE_DATE_EPOCH=1 HOME=$scratch \
    "$scratch/another place/scripts/make_site.sh" "$scratch/site again"
diff -r "$site" "$scratch/site again"
