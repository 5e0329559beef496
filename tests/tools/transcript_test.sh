#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs the commands of a page's ```console blocks, and compares what they print with the page. A
# command is the rest of a line that begins with "$ "; what it prints follows.
# usage: transcript_test.sh PAGE DIRECTORY...
# environment: MDM_MSG, the program; MDM_EMULATOR, what to run programs of another processor with;
# MDM_PYTHON, what the page calls python3; MDM_RENEW_GOLDEN=1 writes what is printed into the page
set -uo pipefail

page=$(realpath "$1")
uses() {
    grep -q "^\$ .*\b$1 " "$page"
}
skip() {
    printf 'transcript_test.sh: Skipped\n%s\n' "$1"
    exit 77
}
for program in tshark text2pcap xxd; do
    if uses "$program" && ! command -v "$program" >/dev/null; then
        skip "$program is not installed"
    fi
done
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir "$scratch/bin" "$scratch/files"
printf '#!/bin/sh\nexec %s "%s" "$@"\n' "${MDM_EMULATOR:-}" "$MDM_MSG" >"$scratch/bin/mdm-msg"
# tshark says on standard error if root runs it.
printf '#!/bin/bash\n%s "$@" 2> >(grep -v "^Running as user " >&2)\n' "$(command -v tshark)" \
    >"$scratch/bin/tshark"
chmod +x "$scratch/bin/"*
[ -z "${MDM_PYTHON-}" ] || ln -s "$MDM_PYTHON" "$scratch/bin/python3"
for directory in "${@:2}"; do
    cp -R "$directory"/. "$scratch/files"
done
cd "$scratch/files" || exit 1
export PATH=$scratch/bin:$PATH LC_ALL=C.UTF-8 NO_COLOR=1
if grep -q '^from mdm import' "$page" && ! python3 -c 'import mdm' 2>/dev/null; then
    skip 'python3 has no mdm.py, or not its runtime'
fi

in_block=false commands=0
while IFS= read -r line; do
    case $line in
    '```console')
        in_block=true
        echo "$line"
        ;;
    '```')
        in_block=false
        echo "$line"
        ;;
    '$ '*)
        echo "$line"
        if $in_block; then
            commands=$((commands + 1))
            bash -c "${line#\$ }" </dev/null 2>&1
        fi
        ;;
    *)
        $in_block || printf '%s\n' "$line"
        ;;
    esac
done <"$page" >"$scratch/page"
if [ "$commands" = 0 ]; then
    echo "$page has no commands"
    exit 1
fi
if [ "${MDM_RENEW_GOLDEN-}" = 1 ]; then
    cp "$scratch/page" "$page"
    exit
fi
diff "$page" "$scratch/page"
