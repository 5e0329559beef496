#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs the command in the first line of a golden file, and compares the output with the other lines.
# usage: golden_test.sh GOLDEN_FILE...
# environment: MDM_MSG, the program; MDM_EMULATOR, what to run programs of another processor with;
#     MDM_LOCALES_DIR, where other locales are; MDM_RENEW_GOLDEN=1 writes the files anew
#
# A golden file:
#     $ mdm-msg show wifi-network.hex      a command of bash, run in messages/
#     offset  bytes ...                    standard output; the escape character is written ␛
#     stderr: mdm-msg: ...                 each line of standard error
#     status: 1                            the last command's
set -euo pipefail

messages=$(cd "$(dirname "$0")" && pwd)/messages
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

mdm-msg() {
    # shellcheck disable=SC2086,SC2317 # an emulator is a command of several words; called by eval
    ${MDM_EMULATOR:-} "$MDM_MSG" "$@"
}

# The golden file that a command makes.
recorded() {
    local status=0
    (set +euo pipefail && cd "$messages" && eval "$1") \
        >"$scratch/out" 2>"$scratch/err" </dev/null || status=$?
    printf '$ %s\n' "$1"
    LC_ALL=C sed 's/\x1b/␛/g' "$scratch/out"
    [ -z "$(tail -c 1 "$scratch/out")" ] || printf '\n(no line end)\n'
    LC_ALL=C sed 's/^/stderr: /' "$scratch/err"
    [ -z "$(tail -c 1 "$scratch/err")" ] || printf '\n(no line end)\n'
    printf 'status: %s\n' "$status"
}

failed=0
for golden in "$@"; do
    command=$(sed -n '1s/^\$ //p' "$golden")
    [ -n "$command" ] || { echo "$golden: the first line is no command" >&2; exit 2; }
    recorded "$command" >"$scratch/here"
    if [ "${MDM_RENEW_GOLDEN:-}" = 1 ]; then
        cp "$scratch/here" "$golden"
    fi
    (
        export LC_ALL=de_DE.ISO-8859-1 TZ=Asia/Kathmandu
        [ -z "${MDM_LOCALES_DIR:-}" ] || export LOCPATH="$MDM_LOCALES_DIR"
        recorded "$command"
    ) >"$scratch/elsewhere" 2>"$scratch/shell"  # bash itself complains about a missing locale
    for run in here elsewhere; do
        diff -u --label "$golden" --label "$golden, $run" "$golden" "$scratch/$run" || failed=1
    done
done
exit "$failed"
