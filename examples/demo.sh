#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Starts the server, lets the client talk to it, stops the server. Fails if either does.
# usage: demo.sh BUILD_DIR
# environment: MDM_EMULATOR, what to run programs of another processor with
set -euo pipefail

left_behind=

# Statuses are kept in one directory of the machine. Where it gives this script mounts of its own,
# the script starts once more under them, and both programs find an empty directory there.
if [ "$1" = --under-own-mounts ]; then
    shift
else
    own_mounts=(unshare --mount)
    [ "$(id -u)" = 0 ] || own_mounts+=(--map-root-user)
    # shellcheck disable=SC2016 # for the inner shell
    make_directory='mount -t tmpfs none /opt && mkdir -p /opt/etc/mdm && [ -x "$1/mdm-server" ]'
    if reason=$("${own_mounts[@]}" sh -c "$make_directory" "$0" "$1" 2>&1); then
        # shellcheck disable=SC2016
        exec "${own_mounts[@]}" sh -c "$make_directory"' && exec "$0" --under-own-mounts "$1"' \
            "$0" "$1"
    fi
    echo "no private mounts ($reason): statuses go to the machine's /opt/etc/mdm/, if it is there"
    status=/opt/etc/mdm/demo-registered-clients
    [ -e "$status" ] || left_behind=$status
fi

# A command of several words, hence unquoted below.
emulator=${MDM_EMULATOR:-}
scratch=$(mktemp -d)
server=
trap '[ -z "$server" ] || kill "$server" 2>/dev/null || true; rm -rf "$scratch" "$left_behind"' EXIT

# shellcheck disable=SC2086
$emulator "$1/mdm-server" "$scratch/socket" "$scratch/log" &
server=$!
for _ in $(seq 100); do
    [ ! -S "$scratch/socket" ] || break
    sleep 0.1
done

# shellcheck disable=SC2086
$emulator "$1/mdm-client" "$scratch/socket" "$scratch/request"

kill -TERM "$server"
wait "$server"
server=
echo "what the server's library logged:"
cat "$scratch/log"
if [ -x "$1/../tools/mdm-msg" ]; then
    echo "the client's last request, as mdm-msg shows it:"
    # shellcheck disable=SC2086
    $emulator "$1/../tools/mdm-msg" show "$scratch/request"
fi
