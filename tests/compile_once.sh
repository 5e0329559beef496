#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# A compiler launcher for builds of the library that tests make: where the build that runs the tests
# has compiled the same source with the same flags, its object is taken.
# usage: compile_once.sh COMPILER FLAGS... -o OBJECT -c SOURCE
# environment: MDM_BUILD_DIR, the build that runs the tests
set -eu

words=$*
object=${words#* -o }
object=${object%% *}
# The words that an object depends on are compared without the directories, in any order.
if [ -f "$MDM_BUILD_DIR/$object" ] && WORDS=$words OBJECT=$object awk '
    function count(command, sign, words, i, n) {
        n = split(command, words, " ")
        for (i = 1; i <= n; ++i) {
            if (words[i] ~ /^-[IM]|^-Werror$|\.[do]$/)
                continue
            sub(/.*\//, "", words[i])
            counts[words[i]] += sign
        }
    }
    /^ *"command": / && index($0, " -o " ENVIRON["OBJECT"] " -c ") {
        gsub(/^ *"command": "|",$/, "")
        count($0, 1)
        found = 1
    }
    END {
        count(ENVIRON["WORDS"], -1)
        for (word in counts)
            if (counts[word] != 0)
                exit 1
        exit !found
    }' "$MDM_BUILD_DIR/compile_commands.json"; then
    exec cp "$MDM_BUILD_DIR/$object" "$object"
fi
exec "$@"
