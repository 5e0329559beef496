#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# CMake with arguments that configure a build, which tests make of many kinds: what the build that
# runs the tests has found out about the same compilers is taken from there.
# usage: configure_once.sh -B BUILD_DIR ARGUMENTS...
# environment: MDM_BUILD_DIR, the build that runs the tests
set -eu

if [ ! -e "$2/CMakeCache.txt" ]; then
    mkdir -p "$2/CMakeFiles"
    cp -R "$MDM_BUILD_DIR"/CMakeFiles/[0-9]* "$2/CMakeFiles"
fi
exec cmake "$@" -D CMAKE_PLATFORM_INFO_INITIALIZED=ON -D CMAKE_EXECUTABLE_FORMAT=ELF
