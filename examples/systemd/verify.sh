#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Lets systemd's own programs check the files of this directory, in a directory that stands for the
# root of a machine. Exits with 77 if they are not there.
# usage: verify.sh DIR_WITH_UNITS PATH_OF_SERVER
set -euo pipefail

skip() {
    echo "skipped: $*"
    exit 77
}

fail() {
    echo "failed: $*" >&2
    exit 1
}

for program in systemd-analyze systemd-sysusers systemd-tmpfiles; do
    command -v "$program" >/dev/null || skip "no $program"
done
[ "$(id -u)" = 0 ] || skip "only root can give a directory to another user"

units=$1
server=$2
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT

# The targets and the programs that the units name must be there.
path=$(sed -n 's/^ExecStart=\([^ ]*\).*/\1/p' "$units/mdm-server.service")
install -D "$server" "$root$path"
install -D /bin/kill "$root/bin/kill"
mkdir -p "$root/etc/systemd/system"
cp /lib/systemd/system/{basic,shutdown,sockets,sysinit}.target \
    "$units"/mdm-server.{service,socket} "$root/etc/systemd/system"

report=$(systemd-analyze --root="$root" verify mdm-server.service mdm-server.socket 2>&1) ||
    fail "systemd-analyze verify: $report"
[ -z "$report" ] || fail "systemd-analyze verify: $report"
echo "the units are correct"

report=$(systemd-analyze --no-pager security --offline=true --threshold=10 \
    "$units/mdm-server.service" 2>&1) || fail "the service is too exposed: $report"
# Lines before the table complain about the unit.
[[ $report == *([[:space:]])NAME* ]] || fail "systemd-analyze security: $report"
grep "Overall exposure" <<<"$report"

export SYSTEMD_LOG_LEVEL=warning
systemd-sysusers --root="$root" "$units/mdm.sysusers.conf"
IFS=: read -r _ _ uid gid _ home shell < <(grep "^mdm:" "$root/etc/passwd") ||
    fail "there is no user mdm"
[[ $uid -gt 0 && $home = /var/lib/mdm && $shell = */nologin ]] ||
    fail "the user mdm has id $uid, home $home, shell $shell"
echo "the user mdm is made"

systemd-tmpfiles --root="$root" --create "$units/mdm.tmpfiles.conf"
status=$(stat --format="%u %g %a" "$root/opt/etc/mdm")
[ "$status" = "$uid $gid 755" ] || fail "/opt/etc/mdm has owner, group and mode $status"
echo "/opt/etc/mdm is made"
