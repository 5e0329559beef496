#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Runs CMake to configure a build for a test. If a build runs the tests, takes the compiler checks
# from it, so that they run once.
# usage: configure_once.sh -B BUILD_DIR ARGUMENTS...
# environment: MDM_BUILD_DIR, the build that runs the tests
set -eu

if [ -z "${MDM_BUILD_DIR:-}" ]; then
    exec cmake "$@"
fi
if [ ! -e "$2/CMakeCache.txt" ]; then
    mkdir -p "$2/CMakeFiles"
    cp -R "$MDM_BUILD_DIR"/CMakeFiles/[0-9]* "$2/CMakeFiles"
fi
exec cmake "$@" -D CMAKE_PLATFORM_INFO_INITIALIZED=ON -D CMAKE_EXECUTABLE_FORMAT=ELF
