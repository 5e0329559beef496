#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Sends loads to the server and lets things fail meanwhile.
# usage: load.sh BUILD_DIR CORPUS_DIR REPORT_DIR CASE...
# cases: many, speed, quick, tiny, sanitized, beside: loads, with a report in REPORT_DIR/CASE
#        kill, disk, memory, descriptors, freeze, stop, path: faults
set -euo pipefail

# Statuses, the users of the clients and a small disk need a mount namespace of their own, and root.
if [ "$1" = --under-own-mounts ]; then
    shift
else
    [ "$(id -u)" = 0 ] || { echo "skipped: only root can be many users" && exit 77; }
    exec unshare --mount "$0" --under-own-mounts "$@"
fi

programs=$1
corpus=$2
reports=$3
shift 3
scratch=$(mktemp -d)
server=
others=()

# shellcheck disable=SC2317 # the trap calls it
clean_up() {
    kill -KILL "$server" "${others[@]}" 2>/dev/null || true
    umount "$scratch/disk" 2>/dev/null || true
    rm -rf "$scratch"
}
trap clean_up EXIT

mount -t tmpfs -o mode=0755 tmpfs /opt
mkdir -p /opt/etc/mdm "$scratch/disk" "$reports"
chmod 755 "$scratch"
cat >"$scratch/rules" <<'END'
[uid 1400000-1499999]
categories=admin

[others]
categories=all
END
state=$scratch/policies.db
log=$scratch/log
limits=()
first_uid=0

fail() {
    echo "failed: $*" >&2
    tail -n 20 "$log" "$scratch/stderr" >&2 || true
    exit 1
}

# Words in front of the server are a command that runs it.
start_server() {
    "$@" "$programs/mdm-server" --socket "$scratch/socket" --socket-mode 0666 --state "$state" \
        --rules "$scratch/rules" --log-file "$log" "${limits[@]}" 2>>"$scratch/stderr" &
    server=$!
}

# A server that does not end well has said why, for example which memory it has leaked.
stop_server() {
    kill -TERM "$server"
    wait "$server" || fail "the server ended with status $?"
    server=
}

begin() {
    echo "-- $1"
    first_uid=0
    rm -f "$state"* "$log" "$scratch/stderr"
    limits=("${@:2}")
}

# The clients of each load are users who were not there before. The rule above is for the
# forbidden ones of the first load.
start_load() {
    first_uid=$((first_uid + 1000000))
    "$programs/mdm-load" --socket "$scratch/socket" --corpus "$corpus" --first-uid "$first_uid" \
        --time-limit 60 "$@" >"$scratch/out.$first_uid" 2>&1 &
    others+=($!)
}

load() {
    start_load "$@"
    wait_for_load
}

# Waits for the load that was started last, and shows what it says if it fails.
wait_for_load() {
    wait "${others[-1]}" || { cat "$scratch/out.$first_uid" >&2 && return 1; }
}

# A load whose report stays.
reported_load() {
    mkdir -p "$reports/$1"
    load --report "$reports/$1" --server-pid "$server" "${@:2}" || fail "the load $1"
    cat "$scratch/out.$first_uid"
}

others_beside=(--hostile 10 --hostile-clients 100 --stalled-clients 40 --vanishing-clients 20
    --forbidden-clients 5)

run_load() {
    begin "$1" --max-clients 2000 --max-connects-per-user 64
    start_server
    reported_load "$1" "${@:2}"
    stop_server
}

# The honest clients pause, so that they are at work as long as the hostile ones are.
load_many() {
    run_load many --time-limit 600 --request-timeout 30 --clients 1000 --requests 1000000 \
        --think 90 "${others_beside[@]}"
}

# As fast as the server can.
load_speed() {
    run_load speed --time-limit 600 --request-timeout 30 --clients 1000 --requests 1000000 \
        "${others_beside[@]}" --hostile 2
}

load_quick() {
    run_load quick --request-timeout 30 --clients 1000 --requests 100000 "${others_beside[@]}" \
        --hostile 2
}

load_tiny() {
    run_load tiny --request-timeout 30 --clients 50 --requests 5000 "${others_beside[@]}" \
        --hostile 2
}

load_sanitized() {
    run_load sanitized --time-limit 600 --request-timeout 60 --clients 200 --requests 100000 \
        "${others_beside[@]}"
}

# The slices end by the clock, not by the number of requests.
load_beside() {
    run_load beside --time-limit 600 --clients 50 --think 2 --requests 1000000000 --hostile 1 \
        --hostile-clients 100 --stalled-clients 100 --phases "${PHASES:-10}"
}

# What was acknowledged is there after each crash.
fault_kill() {
    begin kill --max-clients 200
    start_server
    start_load --clients 50 --requests 300000 --survive --time-limit 120
    for _ in 1 2 3 4 5; do
        sleep 0.4
        kill -KILL "$server"
        wait "$server" 2>/dev/null || true
        start_server
    done
    wait_for_load || fail "clients lost something"
    grep -E 'reconnections|found again' "$scratch/out.$first_uid"
    stop_server
}

register() {
    "$programs/mdm-client" --socket "$scratch/socket" register fault.client 2>&1
}

# While the disk is full, changes are refused, and what is stored can be read. The log is on the
# same disk.
fault_disk() {
    local answer
    begin disk --max-clients 200
    mount -t tmpfs -o size=2m,mode=0755 tmpfs "$scratch/disk"
    state=$scratch/disk/policies.db
    log=$scratch/disk/log
    start_server
    load --clients 5 --requests 200 || fail "clients before the disk is full"
    head -c 2m /dev/zero >"$scratch/disk/filler" 2>/dev/null || true
    answer=$(register) && fail "something was stored on a full disk"
    [[ $answer == *"cannot be stored now"* ]] || fail "on a full disk: $answer"
    answer=$("$programs/mdm-client" --socket "$scratch/socket" registered fault.client)
    [ "$answer" = no ] || fail "what a full disk refused is there"
    rm "$scratch/disk/filler"
    register >/dev/null || fail "nothing is stored afterwards"
    load --clients 5 --requests 200 || fail "clients afterwards"
    stop_server
    state=$scratch/policies.db
    log=$scratch/log
    umount "$scratch/disk"
}

# The server has little more memory than it needs. It drops those who take most, and goes on.
fault_memory() {
    local answer
    begin memory --max-clients 4000 --max-connects-per-user 1000 --max-clients-per-user 1000
    start_server prlimit --as=$((48 << 20))
    load --clients 20 --requests 20000 || fail "clients before memory is short"
    register >/dev/null || fail "a client before memory is short"
    load --clients 1 --requests 1000000 --hostile 99 --hostile-clients 300 \
        --stalled-clients 2000 --time-limit 5 2>/dev/null || true
    grep -q "queued while memory is short" "$log" || fail "memory was not short"
    answer=$("$programs/mdm-client" --socket "$scratch/socket" registered fault.client)
    [ "$answer" = yes ] || fail "what was acknowledged is lost"
    load --clients 20 --requests 20000 || fail "clients afterwards"
    stop_server
}

# There are fewer descriptors than clients. Those who are served go on.
fault_descriptors() {
    begin descriptors --max-clients 2000 --max-connects-per-user 1000 --max-clients-per-user 1000
    start_server prlimit --nofile=40
    start_load --clients 10 --requests 200000
    local honest=${others[-1]}
    sleep 0.3
    load --clients 0 --requests 100 --hostile 100 --hostile-clients 50 --stalled-clients 100 \
        --time-limit 3 2>/dev/null || true
    wait "$honest" || fail "clients were harmed"
    load --clients 10 --requests 1000 || fail "clients afterwards"
    grep -q "descriptors used" "$log" || fail "nobody was turned away"
    [ "$(grep -c . "$log")" -lt 200 ] || fail "the log is full of it"
    stop_server
}

count_sockets() { find "/proc/$server/fd" -lname 'socket:*' | wc -l; }

# Clients that stand still are dropped. The others do not notice.
fault_freeze() {
    local before
    begin freeze --max-clients 200 --answer-timeout 1 --idle-timeout 1
    start_server
    load --clients 1 --requests 10 || fail "a client"
    before=$(count_sockets)
    start_load --clients 20 --requests 1000000
    sleep 0.3
    kill -STOP "${others[-1]}"
    load --clients 20 --requests 100000 || fail "clients beside the frozen ones"
    for _ in $(seq 50); do
        [ "$(count_sockets)" -gt "$before" ] || break
        sleep 0.1
    done
    [ "$(count_sockets)" = "$before" ] || fail "frozen clients still have their places"
    stop_server
}

# Clients who go on asking do not keep the server from stopping.
fault_stop() {
    begin stop --max-clients 200 --stop-timeout 2
    start_server
    start_load --clients 30 --requests 100000000 --stalled-clients 20 --survive
    sleep 0.5
    kill -TERM "$server"
    timeout 5 tail --pid="$server" -f /dev/null || fail "the server does not stop"
    wait "$server" || fail "the server ended with status $?"
    kill -KILL "${others[-1]}"
}

expect_no_start() {
    local said
    said=$(timeout 5 "$programs/mdm-server" --rules "$scratch/rules" "${@:2}" 2>&1) &&
        fail "it started"
    [[ $said == *"$1"* ]] || fail "it said: $said"
}

# A second server, and one without a place for its socket, say why they do not start. The first one
# goes on.
fault_path() {
    begin path
    start_server
    load --clients 1 --requests 10 || fail "clients"
    expect_no_start "another server has it" --socket "$scratch/socket" --state "$scratch/other.db"
    expect_no_start "another process has it open" --socket "$scratch/other" --state "$state"
    expect_no_start "too long for a socket" --state "$scratch/other.db" \
        --socket "$scratch/$(printf '%0100d' 0)"
    touch "$scratch/file"
    expect_no_start "is no socket" --socket "$scratch/file" --state "$scratch/other.db"
    load --clients 1 --requests 10 || fail "clients of the first server"
    stop_server
}

for case; do
    case $case in
    many | speed | quick | tiny | sanitized | beside) "load_$case" ;;
    kill | disk | memory | descriptors | freeze | stop | path) "fault_$case" ;;
    *) fail "no such case: $case" ;;
    esac
done
