#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# A compiler launcher for builds of the library that tests make: where the build that runs the tests
# has compiled the same source with the same flags, its object is taken.
# usage: compile_once.sh COMPILER FLAGS... -o OBJECT -c SOURCE
# environment: MDM_BUILD_DIR, the build that runs the tests
set -eu

# The words that an object depends on, without the directories.
flags() { tr ' ' '\n' | sed '/^-[IM]/d; /^-Werror$/d; /\.[do]$/d; s|.*/||' | sort; }

words=$*
object=${words#* -o }
object=${object%% *}
command=$(grep "^ *\"command\": .* -o $object -c " "$MDM_BUILD_DIR/compile_commands.json" |
    sed 's/^ *"command": "//; s/",$//') || true
if [ "$(echo "$words" | flags)" = "$(echo "$command" | flags)" ] &&
    [ -f "$MDM_BUILD_DIR/$object" ]; then
    exec cp "$MDM_BUILD_DIR/$object" "$object"
fi
exec "$@"
