#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs the demo and compares what each side shows, in order, with what it should.
# usage: demo_test.sh BUILD_DIR
set -euo pipefail

here=$(dirname "$0")
output=$("$here/demo.sh" "$1")
printf '%s\n' "$output"
# What the status store has to tell without a directory is the machine's affair.
comparable='.'
! grep --quiet '^no private mounts' <<<"$output" || comparable='^(client|server)  ([^s]|s[^t])'
for side in client server; do
    grep "^$side" <<<"$output" | grep --extended-regexp "$comparable" |
        diff <(grep --extended-regexp "$comparable" "$here/demo_$side.txt") -
done
[ "$(grep -c '^3 MDM_COMMON mdm_ipc.cpp: ipc_deserialize(.*_ASSERT fails' <<<"$output")" = 3 ]
