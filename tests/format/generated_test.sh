#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Compares a file of format/ with what the program prints.
# usage: generated_test.sh FILE OPTION
# environment: MDM_MSG, the program; MDM_EMULATOR, what to run programs of another processor with;
#     MDM_RENEW_GOLDEN=1 writes the file anew
set -euo pipefail

printed=$(mktemp)
trap 'rm -f "$printed"' EXIT
# shellcheck disable=SC2086 # an emulator is a command of several words
${MDM_EMULATOR:-} "$MDM_MSG" forms "$2" >"$printed"
if [ "${MDM_RENEW_GOLDEN-}" = 1 ]; then
    cp "$printed" "$1"
fi
diff "$1" "$printed"
