#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Installs the library with README's commands, and then builds README's example with README's
# compiler command, as root of a machine whose /usr/local and /etc only this test sees.
# usage: readme_install_test.sh SOURCE_DIR WORK_DIR
set -euo pipefail

if [ "$1" != --under-own-mounts ]; then
    source_dir=$1
    work=$2
    rm -rf "$work"
    mkdir -p "$work/checkout" "$work/etc"
    # Without what this user may not read, and without passwords.
    cp -R /etc/. "$work/etc" 2>/dev/null || true
    rm -f "$work"/etc/*shadow*
    for tool in cmake ninja cc pkg-config; do
        case $(readlink -f "$(command -v $tool || true)") in
        /usr/local/*)
            printf '%s: Skipped\n%s is in /usr/local\n' "${0##*/}" $tool
            exit 77
            ;;
        esac
    done
    own_mounts=(unshare --mount)
    [ "$(id -u)" = 0 ] || own_mounts+=(--map-root-user)
    # shellcheck disable=SC2016 # for the inner shell
    mounts='mount --bind "$1/etc" /etc && mount -t tmpfs none /usr/local &&
        { [ ! -d /var/cache/ldconfig ] || mount -t tmpfs none /var/cache/ldconfig; }'
    if ! reason=$("${own_mounts[@]}" sh -c "$mounts" "$0" "$work" 2>&1); then
        printf '%s: Skipped\nno private mounts: %s\n' "${0##*/}" "$reason"
        exit 77
    fi
    # shellcheck disable=SC2016
    exec "${own_mounts[@]}" sh -c "$mounts"' && exec "$0" --under-own-mounts "$2" "$1"' \
        "$0" "$work" "$source_dir"
fi

source_dir=$2
work=$3
unset LD_LIBRARY_PATH PKG_CONFIG_PATH PKG_CONFIG_LIBDIR DESTDIR CMAKE_GENERATOR
PATH=$PATH:/usr/sbin:/sbin

# The first block of a language behind a heading.
block() {
    awk -v heading="## $1" -v fence="\`\`\`$2" '
        $0 == "```" { if (inside) exit }
        inside
        $0 == heading { found = 1 }
        found && $0 == fence { inside = 1 }' "$source_dir/README.md"
}

# A checkout without builds in it.
for file in "$source_dir"/*; do
    [ "${file##*/}" = build ] || [ -e "$file/CMakeCache.txt" ] || cp -R "$file" "$work/checkout"
done
cd "$work/checkout"
block Install sh >install.sh
sh -eux install.sh

mkdir "$work/example"
cd "$work/example"
block "A message there and back" c >example.c
block "A message there and back" text >expected
# shellcheck disable=SC2016 # backquotes of the text
sed -n 's/.*`\(cc example\.c [^`]*\)`.*/\1/p' "$source_dir/README.md" >build.sh
sh -eux build.sh
./a.out | diff expected -
ldd a.out | grep '/usr/local/lib/libmdm-common\.so\.1'
