#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Measures a little, and makes the page and the pictures of it. Then takes measurements away.
# usage: report_test.sh BUILD_DIR
set -euo pipefail

here=$(dirname "$0")
run=$(mktemp --directory)
trap 'rm -rf "$run"' EXIT

fail() {
    echo "report_test.sh: $*" >&2
    exit 1
}

# A command that has to fail, and words that it has to complain with.
refuses() {
    local words=$1 complaint
    shift
    if complaint=$("$@" 2>&1 >/dev/null); then
        fail "this should fail: $*"
    fi
    [[ $complaint = *"$words"* ]] || fail "'$words' is not in: $complaint"
}

MDM_LOADS=2 "$here/measure.sh" "$1" "$run" --benchmark_min_time=0 --benchmark_repetitions=2 \
    --benchmark_filter=' (admin|(names|accounts) 10{2,3}|text (16384|65536))/' >"$run/log" 2>&1 ||
    fail "$(cat "$run/log")"
printf 'text\t300\n  wire\t100\n  linking\t200\nrelocations\t7\n' |
    tee "$run/size-armhf.tsv" >"$run/size-x86-64.tsv"
"$here/report.py" collect "$run" >"$run/measured.json"

"$here/report.py" page "$run/measured.json" >"$run/page.md"
! grep -n '@' "$run/page.md" || fail "the page has a place that nothing fills"
for row in '| admin | ' '| 64 KiB | ' '| 1,000 accounts | ' '| – wire | 100 | 100 |' \
    '| relocations | 7 | 7 |' '| `libmdm-common.so'; do
    grep -q "^$row" "$run/page.md" || fail "the page lacks the row: $row"
done

if command -v gnuplot >/dev/null; then
    "$here/draw.sh" "$run/measured.json" "$run"
    grep -oE 'performance/[a-z-]+\.svg' "$here/page.md.in" | while read -r picture; do
        grep -q '</svg>' "$run/${picture#*/}" || fail "no picture: $picture"
    done
fi

for input in time growth unmapped instructions growth-instructions; do
    mv "$run/$input.json" "$run/away"
    refuses "$input.json is missing" "$here/report.py" collect "$run"
    mv "$run/away" "$run/$input.json"
done
sed 's,^"open admin/ipc_open","open other/ipc_open",' "$run/measured.json" >"$run/incomplete.json"
refuses "the measurements lack 'open admin/ipc_open'" "$here/report.py" page "$run/incomplete.json"
