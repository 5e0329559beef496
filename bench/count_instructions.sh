#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs the benchmark under callgrind, which counts instructions instead of time.
# usage: count_instructions.sh CODEC_BENCH [FLAG...]
set -euo pipefail

# Callgrind leaves a dump for each run.
dumps=$(mktemp --directory)
trap 'rm -rf "$dumps"' EXIT
valgrind --quiet --tool=callgrind --instr-atstart=no --callgrind-out-file="$dumps/dump" \
    "$1" --instructions="$dumps/dump" "${@:2}"
