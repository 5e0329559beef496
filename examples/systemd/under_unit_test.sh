#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Boots systemd in namespaces of its own, on an overlay of this machine's files that is thrown
# away, and looks at the server as its units start it. Exits with 77 if the machine cannot do this.
# usage: under_unit_test.sh DIR_WITH_UNITS PATH_OF_SERVER PATH_OF_CLIENT
set -euo pipefail

skip() {
    echo "skipped: $*"
    exit 77
}

# The script starts itself again three times, each time further in: under mounts of its own, as the
# first process, and in the control group of that process.
self=$(realpath "$0")
case ${1:-} in
--under-own-mounts)
    shift
    ;;
--as-first-process)
    read -r pid _ </proc/self/stat
    echo 0 >"$3/cgroup.procs"
    echo "$pid" >"$2/pid"
    exec unshare --mount --cgroup "$self" --in-control-group "$2/root"
    ;;
--in-control-group)
    mount -t proc proc "$2/proc"
    # Some of these settings are the whole machine's, and systemd changes them.
    mount --bind "$2/proc/sys" "$2/proc/sys"
    mount -o remount,bind,ro "$2/proc/sys"
    mount -t cgroup2 cgroup2 "$2/sys/fs/cgroup"
    cd "$2"
    pivot_root . .
    umount -l .
    exec env -i container=test PATH=/usr/sbin:/usr/bin:/sbin:/bin SYSTEMD_UNIT_PATH=/run/units \
        SYSTEMD_GENERATOR_PATH=/run/none /lib/systemd/systemd --system --unit=sockets.target \
        --log-target=journal --show-status=no
    ;;
*)
    [ "$(id -u)" = 0 ] || skip "only root can start another systemd"
    for program in /lib/systemd/systemd systemd-{sysusers,tmpfiles} unshare nsenter setpriv; do
        command -v "$program" >/dev/null || skip "no $program"
    done
    reason=$(unshare --mount --pid --fork true 2>&1) || skip "$reason"
    exec timeout --kill-after=5 60 unshare --mount "$self" --under-own-mounts "$@"
    ;;
esac

units=$1
server=$2
client=$3
base=$(mktemp -d)
root=$base/root
group=$base/cgroup/mdm-under-unit-test-$$
first=

clean_up() {
    [ -z "$first" ] || { kill -KILL "$first" && wait "$first"; } 2>/dev/null || true
    # The control groups are empty once the last process has ended.
    for _ in $(seq 50); do
        [ -d "$group" ] || break
        find "$group" -depth -type d -exec rmdir {} + 2>/dev/null || sleep 0.1
    done
    umount --recursive --lazy "$base" && rmdir "$base"
}

within() {
    timeout --foreground 10 nsenter --all --target "$(<"$base/pid")" -- "$@"
}

fail() {
    echo "failed: $*" >&2
    within journalctl --no-pager --lines=40 >&2
    exit 1
}

make_root() {
    mkdir "$base"/{upper,work,root,cgroup}
    mount -t cgroup2 cgroup2 "$base/cgroup"
    mkdir "$group"
    mount -t overlay -o "lowerdir=/,upperdir=$base/upper,workdir=$base/work" overlay "$root"
    mount -t sysfs -o ro sysfs "$root/sys"
    local directory device
    for directory in dev run tmp; do
        mount -t tmpfs -o mode=0755 tmpfs "$root/$directory"
    done
    for device in null zero full random urandom tty; do
        touch "$root/dev/$device"
        mount --bind "/dev/$device" "$root/dev/$device"
    done
    mkdir "$root/dev/pts"
    mount -t devpts -o newinstance,ptmxmode=0666 devpts "$root/dev/pts"
    ln -s pts/ptmx "$root/dev/ptmx"
}

# Nothing else of the machine is started than the journal.
install_units() {
    local system=/lib/systemd/system
    mkdir -p "$root/run/units/sockets.target.wants"
    cp "$system"/{basic,shutdown,sockets,sysinit}.target \
        "$system"/systemd-journald.{service,socket} \
        "$units"/mdm-server.{service,socket} "$root/run/units"
    ln -s ../systemd-journald.socket "$root/run/units/sockets.target.wants"
}

install_programs() {
    local path libraries
    path=$(sed -n 's/^ExecStart=\([^ ]*\).*/\1/p' "$units/mdm-server.service")
    install -D "$server" "$root$path"
    install -D "$client" "$root/usr/local/bin/mdm-client"
    # The loader looks beside the C library if the user of the server may not see the build.
    libraries=$(ldd "$server")
    path=$(awk '$1 == "libc.so.6" { print $3 }' <<<"$libraries")
    awk '$1 ~ /^libmdm-common/ { print $3 }' <<<"$libraries" |
        xargs --no-run-if-empty cp -L -t "$root${path%/*}"
    install -D -m 0644 "$(dirname "$self")/rules.conf" "$root/etc/mdm/rules.conf"
    export SYSTEMD_LOG_LEVEL=warning
    systemd-sysusers --root="$root" "$units/mdm.sysusers.conf"
    systemd-tmpfiles --root="$root" --create "$units/mdm.tmpfiles.conf"
}

boot() {
    setpriv --pdeathsig=KILL unshare --pid --ipc --uts --net --fork --kill-child \
        "$self" --as-first-process "$base" "$group" >"$base/log" 2>&1 &
    first=$!
    for _ in $(seq 100); do
        [ ! -S "$root/run/systemd/private" ] || return 0
        sleep 0.1
    done
    return 1
}

client() {
    local uid=$1 group=$2
    within setpriv --reuid="$uid" --regid="$uid" --groups="$group" mdm-client "${@:3}"
}

property() {
    within systemctl show --property="$1" --value mdm-server.service
}

# expect PATTERN COMMAND...: what the command shows matches the pattern.
expect() {
    local shown
    shown=$("${@:2}" 2>&1) || true
    # shellcheck disable=SC2053 # a pattern
    [[ $shown == $1 ]] || fail "${*:2}: '$shown', not '$1'"
}

# Where the server could write if it were root, but for pseudo-terminals.
writable_mounts() {
    # shellcheck disable=SC2016 # for the inner shell
    within nsenter --mount --target "$1" sh -c '
        while read -r _ _ _ _ path _; do
            case $path in /proc | /dev/pts) ;; *) [ ! -w "$path" ] || echo "$path" ;; esac
        done </proc/self/mountinfo' | sort -u
}

test_activation() {
    expect '' within systemctl start mdm-server.socket
    expect inactive property ActiveState
    expect "registered; *" client 10001 mdm register com.example.agent
    expect active property ActiveState
    echo "a client has started the server through its socket"
}

test_rules() {
    expect "*Permission denied" client 10001 10001 --timeout=100 registered com.example.agent
    expect "*may not ask for admin" client 20000 mdm registered com.example.agent
    sed -i 's/^\[uid 10000-19999\]/[uid 10000-29999]/' "$root/etc/mdm/rules.conf"
    expect '' within systemctl reload mdm-server.service
    for _ in $(seq 20); do
        ! client 20000 mdm registered com.example.agent &>/dev/null || break
        sleep 0.1
    done
    expect "no" client 20000 mdm registered com.example.agent
    echo "the socket admits a group, and the rules a range of users; new rules can be loaded"
}

test_log() {
    expect "*bytes*" client 10001 mdm send /etc/mdm/rules.conf
    within journalctl --sync
    local journal=(within journalctl --output=json --unit=mdm-server _COMM=mdm-server)
    expect '*"MESSAGE":"*[(]mdm-client[)]"*' "${journal[@]}"
    expect '*"PRIORITY":"4"*' "${journal[@]}"
    expect '*"CODE_FUNC":"[a-z]*' "${journal[@]}"
    expect "*mdm-server.service*active (running)*" within systemctl status mdm-server.service
    echo "the journal has the server's lines with their fields, and the name of the client"
}

test_restrictions() {
    local pid line
    pid=$(property MainPID)
    for line in CapEff:$'\t'0000000000000000 CapBnd:$'\t'0000000000000000 NoNewPrivs:$'\t'1 \
        Seccomp:$'\t'2; do
        expect "*$line*" within cat "/proc/$pid/status"
    done
    expect mdm within stat --format=%U "/proc/$pid"
    [ "$(within readlink "/proc/$pid/ns/net")" != "$(within readlink /proc/1/ns/net)" ] ||
        fail "the server has a network"
    expect $'/opt/etc/mdm\n/tmp\n/var/lib/mdm\n/var/tmp' writable_mounts "$pid"
    expect "644 mdm" within stat --format="%a %U" /opt/etc/mdm/registered-clients
    expect "700 mdm" within stat --format="%a %U" /var/lib/mdm
    echo "the server has no privileges and no network, and may write to its own directories only"
}

test_restart() {
    expect '' within systemctl kill --signal=KILL mdm-server.service
    expect "yes" client 10001 mdm registered com.example.agent
    expect 1 property NRestarts
    echo "a killed server is back, and so is what it has stored"
}

test_watchdog() {
    mkdir "$root/run/units/mdm-server.service.d"
    printf '[Service]\nWatchdogSec=500ms\nRestartSec=100ms\n' \
        >"$root/run/units/mdm-server.service.d/watchdog.conf"
    expect '' within systemctl daemon-reload
    expect '' within systemctl restart mdm-server.service
    sleep 1
    expect 0 property NRestarts
    expect '' within systemctl kill --signal=STOP mdm-server.service
    expect "yes" client 10001 mdm registered com.example.agent
    expect 1 property NRestarts
    expect "*watchdog*" within journalctl --output=cat --unit=mdm-server UNIT_RESULT=watchdog
    echo "a server that hangs is started anew, and one that does not is left alone"
}

test_stop() {
    expect '' within systemctl stop mdm-server.socket
    expect "inactive" property ActiveState
    expect "success" property Result
    expect 0 property ExecMainStatus
    [ ! -e "$root/run/mdm/socket" ] || fail "the socket is left behind"
    echo "the server stops without an error, and the socket is gone"
}

trap clean_up EXIT
mount -t tmpfs tmpfs "$base"
set +e
reason=$(set -e && make_root 2>&1)
status=$?
set -e
[ "$status" = 0 ] || skip "$reason"
install_units
install_programs
boot || skip "systemd does not start: $(<"$base/log")"
expect running within systemctl is-system-running --wait
test_activation
test_rules
test_log
test_restrictions
test_restart
test_watchdog
test_stop
