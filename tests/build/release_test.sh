#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# What ./dev release refuses, in a copy of the tree.
# usage: release_test.sh SOURCE_DIR
set -euo pipefail

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/tree"
# The tree with its changes. There is no stash of a tree without changes.
stash=$(cd "$1" && git stash create)
git -C "$1" archive "${stash:-HEAD}" | tar -x -C "$work/tree"
cd "$work/tree"

fail() {
    echo "$*" >&2
    exit 1
}

quiet_git() { git -c user.name=T -c user.email=t@localhost -c commit.gpgsign=false "$@" >"$work/log" 2>&1; }

commit() { quiet_git add --all && quiet_git commit --allow-empty --message "$1"; }

# A function of ./dev, with what it prints.
call() { bash -c '. ./dev help >/dev/null && "$@"' ./dev "$@" 2>&1; }

expect_pass() {
    local output
    output=$(call "$@") || fail "$* should pass, but: $output"
}

expect_refusal() {
    local reason=$1 output
    shift
    ! output=$(call "$@") || fail "$* should refuse: $reason"
    [[ $output == *"$reason"* ]] || fail "$* should refuse because of '$reason', but: $output"
}

# Undoes what a case has changed.
undo() { quiet_git checkout --force HEAD -- .; }

quiet_git init
version=$(sed -n 's/^project(mdm-common VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
sed -i "s/^## $version - .*/## $version - unreleased/" CHANGELOG.md
sed -i '1s/) [a-z]*;/) UNRELEASED;/I' debian/changelog
commit "A tree that is not ready"
expect_refusal "give $version its date" check_tree "$version"

sed -i "s/^## $version - .*/## $version - 2026-12-01/" CHANGELOG.md
commit "A date"
expect_refusal "give $version a distribution" check_tree "$version"

sed -i '1s/UNRELEASED/bookworm/' debian/changelog
commit "A distribution"
expect_pass check_tree "$version"

expect_refusal "not 9.9.9" check_tree 9.9.9
echo >>README.md
expect_refusal "not committed" check_tree "$version"
undo
sed -i "1s/$version/9.9.9/" debian/changelog
expect_refusal "debian/changelog begins with 9.9.9" check_tree "$version"
undo
sed -i "s/^## $version/## 9.9.9/" CHANGELOG.md
expect_refusal "CHANGELOG.md begins with '9.9.9" check_tree "$version"
undo

# The interface of an earlier release: this tree's, with the same major version.
earlier=v${version%%.*}.0.0-earlier
quiet_git tag "$earlier"
commit "Something else"
[ "$(call last_release "$version")" = "$earlier" ] || fail "$(call last_release "$version")"
expect_pass check_compatible "$earlier"
quiet_git tag "v$version" HEAD~1
expect_refusal "is another commit" check_tree "$version"

symbols=debian/libmdm-common1.symbols
sed -i '/ ipc_open@/d' $symbols
expect_refusal "are gone:  ipc_open@" check_compatible "$earlier"
undo
echo ' ipc_new@MDM_COMMON_1.0 1.1.0' >>$symbols
expect_pass check_compatible "$earlier"
undo
sed -i 's/\bipc_open\b/ipc_opened/g' include/mdm/guarded.h
expect_refusal "do not compile with these headers" check_compatible "$earlier"
undo
description=$(call abi_description)
sed -i "/<elf-symbol name='ipc_open'/d; /<function-decl name='ipc_open'/,/<\/function-decl>/d" \
    "$description"
expect_refusal "raise the major version" check_compatible "$earlier"
undo
sed -i 's/^\(project(mdm-common VERSION \)[0-9]*/\199/' CMakeLists.txt
expect_pass check_compatible "$earlier"
