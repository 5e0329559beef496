#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Builds the packages of the source tarball beside it, in a root file system of its own.
# usage: build.sh [--no-tests] [--no-all] [--elsewhere] [--host-arch=ARCHITECTURE]
set -eu

install() { apt-get --quiet=2 install --yes --no-install-recommends "$@"; }

directory=/build
build_dep=
kind=full
clock=
for word in "$@"; do
    case $word in
    --no-tests) export DEB_BUILD_OPTIONS=nocheck DEB_BUILD_PROFILES=nocheck ;;
    --no-all)
        kind=any
        build_dep=--arch-only
        ;;
    --elsewhere)
        install faketime locales-all
        directory=/another/place/to/build
        clock='faketime 2031-05-06T07:08:09'
        export LC_ALL=tr_TR.UTF-8 TZ=Pacific/Auckland
        umask 0027
        ;;
    --host-arch=*)
        # A cross compiler brings no libraries of the other machine.
        export DEB_HOST_ARCH="${word#*=}"
        install "crossbuild-essential-$DEB_HOST_ARCH" "libc6-dev:$DEB_HOST_ARCH" \
            "libstdc++6:$DEB_HOST_ARCH"
        build_dep="$build_dep --host-architecture=$DEB_HOST_ARCH"
        ;;
    *)
        echo "build.sh: no such option: $word" >&2
        exit 2
        ;;
    esac
done

mkdir -p $directory
cd $directory
tar -xf /in/source.tar.xz
cd libmdm-common-*
# shellcheck disable=SC2086 # no word or several
apt-get --quiet=2 build-dep --yes --no-install-recommends $build_dep .
# shellcheck disable=SC2086
$clock dpkg-buildpackage --no-sign --build=$kind ${DEB_HOST_ARCH:+--host-arch=$DEB_HOST_ARCH}
if [ -z "$clock" ]; then
    install lintian
    lintian --allow-root --pedantic --display-info --tag-display-limit 0 \
        --fail-on error,warning,info,pedantic ../*.changes
fi
cp ../*_* /out
