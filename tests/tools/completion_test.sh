#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Tests the completion of mdm-msg: asks it for the words that may follow, as bash does.
# usage: completion_test.sh PROGRAM COMPLETION
set -uo pipefail

if [ $# -eq 2 ]; then
    # A shell with nothing but the search path, so that no setting of the caller's matters.
    exec env -i PATH="$PATH" bash --norc --noprofile "$0" "$1" "$2" inner
fi
program=$(realpath "$1")
completion=$(realpath "$2")
failures=0

fail() {
    echo "FAILED: $*"
    failures=$((failures + 1))
}

# shellcheck source=tools/completion/mdm-msg.sh
. "$completion"

# usage: replies WORD... : what may stand in the place of the last word, in one line
replies() {
    COMP_WORDS=("$program" "$@")
    COMP_CWORD=$#
    COMPREPLY=()
    _mdm_msg "$program" "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}"
    echo "${COMPREPLY[*]}"
}

# usage: expect REPLIES WORD...
expect() {
    local expected=$1 found
    shift
    found=$(replies "$@")
    [ "$found" = "$expected" ] || fail "'mdm-msg $*' is completed by '$found', not '$expected'"
}

commands='show json make check diff html forms'
expect "$commands" ''
expect 'diff' d
expect '' nothing
expect '--help --version' -
expect '--version' --v

expect '--help --json --kaitai --wireshark' forms -
expect '--all' diff --a
expect '--color=' diff --col
expect '--hex' diff A --hex
expect 'auto always never' diff --color ''
expect 'auto always never' diff --color =
expect 'auto always' diff --color = a
expect '--color=auto --color=always' diff --color=a
expect '' diff --all = a
expect '' diff --other=a
expect '' diff ''
expect '' diff A B
expect '' diff -- -
expect 'bluetooth browser' forms b
expect 'wifi' forms --json w
expect 'wifi' forms -- w
expect '' nothing -

# Files are completed by bash itself.
complete -p mdm-msg | grep -q -- '-o default' || fail 'no files'

# Nothing is left out, and nothing is more than the program says.
read -ra all < <(replies '')
for command in "${all[@]}"; do
    from_help=$("$program" "$command" --help 2>/dev/null | awk '/^  -/ {
        for (i = 1; i <= 2; ++i) { if (sub(/^--/, "", $i)) { sub(/=.*/, "", $i); print $i } }
    }' | sort)
    from_completion=$(replies "$command" - | tr ' ' '\n' | sed 's/^--//; s/=$//' | sort)
    [ "$from_help" = "$from_completion" ] ||
        fail "options of $command: help has '$from_help', completion '$from_completion'"
done
read -ra categories < <(replies forms '')
[ ${#categories[@]} -eq 28 ] || fail "${#categories[@]} categories"
for category in "${categories[@]}"; do
    "$program" forms "$category" >/dev/null || fail "no category $category"
done

# Nothing is printed or completed without the program.
program=/nonexistent/mdm-msg
[ -z "$(replies diff - 2>&1)" ] || fail 'a missing program is not silent'

# The package bash-completion finds the file by its name.
package=/usr/share/bash-completion/bash_completion
if [ -r $package ]; then
    directory=$(mktemp -d)
    trap 'rm -r "$directory"' EXIT
    mkdir "$directory/completions"
    cp "$completion" "$directory/completions/mdm-msg"
    loaded=$(BASH_COMPLETION_USER_DIR=$directory bash --norc --noprofile -c "
        . $package
        _completion_loader mdm-msg
        complete -p mdm-msg" 2>&1)
    [[ $loaded == *'-F _mdm_msg mdm-msg' ]] || fail "bash-completion: $loaded"
fi

[ "$failures" -eq 0 ] || exit 1
