#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Starts the server, tells what a client says to it, kills the server, and asks a new one.
# usage: demo.sh BUILD_DIR [--verbose]
# environment: MDM_EMULATOR, what to run programs of another processor with
set -euo pipefail

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
        exec "${own_mounts[@]}" sh -c "$make_directory"' && exec "$0" --under-own-mounts "$@"' \
            "$0" "$@"
    fi
    echo "no private mounts ($reason): statuses go to the machine's /opt/etc/mdm/, if it is there"
fi

[ -x "$1/mdm-server" ] || { echo "$1 has no mdm-server" >&2 && exit 1; }

# A command of several words, hence unquoted below.
emulator=${MDM_EMULATOR:-}
programs=$1
shift
scratch=$(mktemp -d)
server=
trap '[ -z "$server" ] || kill "$server" 2>/dev/null || true; rm -rf "$scratch"' EXIT

# Everybody may ask for everything but kiosk.
printf '[others]\ncategories=%s\n' "admin;pwd;security;wifi;bluetooth;eas;app;roaming;misc;apn;\
browser;date_time;remote;vpn;firewall;res;phone_res;enterprise;email;container;location;\
log_manager;platform" >"$scratch/rules.conf"

start_server() {
    # shellcheck disable=SC2086
    $emulator "$programs/mdm-server" --socket "$scratch/socket" --state "$scratch/policies.db" \
        --rules "$scratch/rules.conf" --log-file "$scratch/log" --fault-delay 0 \
        2>"$scratch/stderr" &
    server=$!
}

start_server
# shellcheck disable=SC2086
$emulator "$programs/mdm-demo" "$@" "$scratch/socket"

{ kill -KILL "$server" && wait "$server"; } 2>/dev/null || true
echo "the server is killed, and another one starts"
start_server
# shellcheck disable=SC2086
$emulator "$programs/mdm-demo" --after-restart "$@" "$scratch/socket"

kill -TERM "$server"
if ! wait "$server"; then
    cat "$scratch/stderr"
    exit 1
fi
server=
echo "what the servers logged:"
cut -d '>' -f 2- "$scratch/log"
