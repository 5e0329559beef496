# shellcheck shell=bash
# SPDX-License-Identifier: Apache-2.0
# Part of ./dev: the manual, and what it has to keep.

# What a linter says of a page. It is not asked about pages that other packages bring, and the
# footer's name of the library is meant.
lint_page() {
    local expected='referenced manual not found|mandoc.db lacks|operating system explicitly'
    mandoc -T lint "$1" 2>&1 | grep -vE "$expected" || true
    {
        LC_ALL=C.UTF-8 man --warnings -E UTF-8 -l -Tutf8 -Z "$1" >/dev/null ||
            echo "$1: man refuses the page"
    } 2>&1
}

# The functions of the library: those of the shared one, and those of the headers alone.
public_functions() {
    sed -n 's/^T \([a-z0-9_]*\)@.*/\1/p' tests/abi/exports.txt
    sed '/@cond/,/@endcond/d' include/mdm/*.h include/mdm/body/*.h | tr '\n' ' ' |
        grep -oE 'MDM_INLINE [^({]*\(' | grep -oE '[a-z0-9_]+\($' | tr -d '('
}

# The pages of our own that a directory's pages refer to, as man3/NAME.3.
references() {
    grep -hoE '^\.Xr (ipc_|_*mdm[_-])[^ ]+ [1-8]' "$1"/man?/* |
        awk '{ print "man" $3 "/" $2 "." $3 }' | LC_ALL=C sort -u
}

check_manual() {
    local directory=$1 page complaints
    complaints=$(
        lint_page tools/mdm-msg/mdm-msg.1
        cd "$directory" || exit
        for page in man?/*; do
            if read -r link target <"$page" && [ "$link" = .so ]; then
                [ -e "$target" ] || echo "$page: leads nowhere"
            else
                lint_page "$page"
            fi
        done
    )
    [ -z "$complaints" ] || die "$complaints"
    complaints=$(public_functions | LC_ALL=C sort -u | while read -r page; do
        [ -e "$directory/man3/$page.3" ] || echo "no page for $page"
    done)
    [ -z "$complaints" ] || die "$complaints"
    complaints=$(references "$directory" | while read -r page; do
        [ -e "$directory/$page" ] || [ "$page" = man1/mdm-msg.1 ] || echo "no page $page"
    done)
    [ -z "$complaints" ] || die "$complaints"
}

# The pages must not depend on the place, the locale, the time zone or the permissions of new files.
check_manual_again() {
    local copy
    copy=$(mktemp -d)
    cp -R --parents CHANGELOG.md CMakeLists.txt README.md docs include scripts \
        tools/mdm-msg/mdm-msg.1 "$copy"
    (
        umask 077
        LC_ALL=C TZ=Asia/Tokyo "$copy/scripts/manual.py" "$copy/made"
    )
    diff -r "$1" "$copy/made" || die "the manual differs when it is made in another place: $copy"
    rm -r "$copy"
}

do_manual() {
    need manual
    say "Manual: build/manual"
    rm -rf build/manual
    scripts/manual.py build/manual
    check_manual build/manual
    check_manual_again build/manual
}
