#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Runs a program with many tests. Of tests that pass, nothing is printed. The last lines name each
# test that failed, and the test that was running if the program ended early. The script also fails
# if no test ran, unless GTEST_FILTER selects them.
# usage: run_tests.sh SECONDS PROGRAM ARGUMENTS...
set -uo pipefail

timeout "$@" 2>&1 | awk '
    sub(/^\[ RUN      \] /, "") { name = $0; text = ""; ran = 1; next }
    name == "" && /^(\[-----|$)/ { next }
    name == "" { print; next }
    { text = text $0 "\n" }
    index($0, "[       OK ] " name) { name = "" }
    index($0, "[  SKIPPED ] " name) { printf "%s", text; name = "" }
    index($0, "[  FAILED  ] " name) { printf "%s", text; failed[++count] = name; name = "" }
    END {
        if (name != "") {
            printf "%s", text
            failed[++count] = name " (the program ended in it)"
        }
        for (i = 1; i <= count; ++i) {
            print "failed: " failed[i]
        }
        if (!ran && !ENVIRON["GTEST_FILTER"]) {
            print "failed: no test ran"
            exit 1
        }
    }'
results=("${PIPESTATUS[@]}")
[ "${results[0]}" = 0 ] || exit "${results[0]}"
exit "${results[1]}"
