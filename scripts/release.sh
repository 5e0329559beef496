# SPDX-License-Identifier: Apache-2.0
# A release: what must be true of the tree, and what is published. ./dev sources this file.
# shellcheck shell=bash

project_version() { sed -n 's/^project(mdm-common VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt; }

# The heading of the newest version in the changelog: "1.0.0 - 2026-12-01", or "1.0.0 - unreleased".
changelog_heading() { sed -n '/^## /{s/^## //p;q}' CHANGELOG.md; }

# CMakeLists.txt has the version. The two changelogs name it, too.
check_version() {
    local version
    version=$(project_version)
    [[ "$(changelog_heading)" =~ ^"$version - "(unreleased|[0-9]{4}-[0-9]{2}-[0-9]{2})$ ]] ||
        die "CHANGELOG.md begins with '$(changelog_heading)', CMakeLists.txt has $version"
    [ "$(package_version)" = "$version" ] ||
        die "debian/changelog begins with $(package_version), CMakeLists.txt has $version"
}

# The tag of the newest release before a version; nothing before the first release.
last_release() {
    git tag --list 'v[0-9]*' --merged HEAD --sort=-version:refname |
        awk -v own="v$1" '$0 != own { print; exit }'
}

check_tree() {
    local version=$1
    check_version
    [ "$version" = "$(project_version)" ] ||
        die "this tree has the version $(project_version), not $version"
    [ -z "$(git status --porcelain)" ] || die "there are changes that are not committed"
    [[ "$(changelog_heading)" != *unreleased ]] ||
        die "CHANGELOG.md: give $version its date in place of 'unreleased'"
    [ "$(dpkg-parsechangelog --show-field Distribution)" != UNRELEASED ] ||
        die "debian/changelog: give $version a distribution in place of UNRELEASED"
    [ "$(git rev-parse --quiet --verify "v$version^{commit}" || git rev-parse HEAD)" = \
        "$(git rev-parse HEAD)" ] || die "the tag v$version is another commit"
}

# Compares the interface with that of an earlier release. Within a major version nothing may be gone
# or changed.
check_compatible() {
    local tag=$1 scratch=build/released description file
    local symbols=debian/libmdm-common1.symbols
    if [ "$(major "${tag#v}")" != "$(major "$(project_version)")" ]; then
        echo "$tag has another major version: anything may have changed"
        return
    fi
    mkdir -p $scratch
    description=$(abi_description)
    for file in "$description" $symbols tests/abi/api_test.c tests/abi/consumer/consumer.cpp; do
        git show "$tag:$file" >"$scratch/${file##*/}" || die "$tag has no $file"
    done
    # Only what is new may differ.
    abidiff --no-added-syms "$scratch/${description##*/}" "$description" ||
        die "programs built with $tag would break: raise the major version, or undo the change"
    LC_ALL=C comm -23 <(grep '^ ' "$scratch/${symbols##*/}" | LC_ALL=C sort) \
        <(grep '^ ' $symbols | LC_ALL=C sort) >"$scratch/gone"
    [ ! -s "$scratch/gone" ] || die "symbols of $tag are gone: $(cat "$scratch/gone")"
    # What compiled with that release still compiles.
    local flags=(-Wall -Wextra -Werror -fsyntax-only -Iinclude)
    # shellcheck disable=SC2207 # a word an option
    flags+=($(pkg-config --cflags glib-2.0))
    if ! { cc -std=c11 "${flags[@]}" "$scratch/api_test.c" &&
        c++ -std=c++20 "${flags[@]}" "$scratch/consumer.cpp"; }; then
        die "programs of $tag do not compile with these headers"
    fi
}

major() { echo "${1%%.*}"; }

do_release() {
    local version=$1 last output=build/release-$1 name=libmdm-common-$1 packages arch
    need library abi
    need_packaging "$(own_arch)"
    say "Release $version: the tree"
    check_tree "$version"
    last=$(last_release "$version")
    if [ -n "$last" ]; then
        say "Release $version: the interface of $last"
        check_compatible "$last"
    fi
    do_abi
    say "Release $version: what is published"
    arch=$(own_arch)
    packages=$output/packages
    rm -rf "$output"
    mkdir -p "$output"
    make_tarball "$name" HEAD "$output/$name.tar.xz"
    build_packages "$output/$name.tar.xz" "$arch" "$packages"
    rm "$packages/source.tar.xz"
    scripts/sbom.py "$version" "$(git log -1 --format=%ct)" "$output/$name.tar.xz" \
        "$packages"/*.buildinfo "$packages"/*.deb >"$output/$name.spdx.json"
    (cd "$output" && find . -type f -printf '%P\n' | LC_ALL=C sort | xargs sha256sum) >build/sums
    mv build/sums "$output/SHA256SUMS"
    cat "$output/SHA256SUMS"
    printf '\nNext, as RELEASING.md says:\n'
    printf '  git tag --sign v%s --message "libmdm-common %s"\n' "$version" "$version"
    printf '  gpg --armor --detach-sign %s/SHA256SUMS\n' "$output"
}
