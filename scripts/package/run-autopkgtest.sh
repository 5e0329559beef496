#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Runs the tests of debian/tests against the packages beside it, in a root file system of its own.
# usage: run-autopkgtest.sh, with the packages and their source tarball in /in
set -eu

mkdir /tmp/source
tar -xf /in/*.tar.xz -C /tmp/source --strip-components=1
# A file of the changes would name packages with debugging symbols, which no test needs.
autopkgtest --output-dir=/tmp/results /in/*.deb /tmp/source/ -- null
