#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Starts the server, lets the client talk to it, stops the server. Fails if either does.
# usage: demo.sh BUILD_DIR
# environment: MDM_EMULATOR, what to run programs of another processor with
set -euo pipefail

# A command of several words, hence unquoted below.
emulator=${MDM_EMULATOR:-}
scratch=$(mktemp -d)
server=
trap '[ -z "$server" ] || kill "$server" 2>/dev/null || true; rm -rf "$scratch"' EXIT

# shellcheck disable=SC2086
$emulator "$1/mdm-server" "$scratch/socket" "$scratch/log" &
server=$!
for _ in $(seq 100); do
    [ ! -S "$scratch/socket" ] || break
    sleep 0.1
done

# shellcheck disable=SC2086
$emulator "$1/mdm-client" "$scratch/socket"

kill -TERM "$server"
wait "$server"
server=
echo "what the server's library logged:"
cat "$scratch/log"
