#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Starts the server, lets the client talk to it, stops the server. Fails if either does.
# usage: demo.sh BUILD_DIR
# environment: MDM_EMULATOR, what to run programs of another processor with
set -euo pipefail

# Statuses are kept in one directory. Where the machine gives this script mounts of its own, both
# programs find an empty one there.
private_mounts=(unshare --mount)
[ "$(id -u)" = 0 ] || private_mounts+=(--map-root-user)
# shellcheck disable=SC2016 # for the inner shell
make_directory='mount -t tmpfs none /opt && mkdir -p /opt/etc/mdm && [ -x "$1/mdm-server" ]'
if [ -z "${MDM_DEMO_HAS_DIRECTORY:-}" ]; then
    if "${private_mounts[@]}" sh -c "$make_directory" "$0" "$@" 2>/dev/null; then
        export MDM_DEMO_HAS_DIRECTORY=yes
        # shellcheck disable=SC2016
        exec "${private_mounts[@]}" sh -c "$make_directory"' && exec "$0" "$@"' "$0" "$@"
    fi
    echo "no private mounts: statuses go to this machine's /opt/etc/mdm/, if there is one"
fi

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
