# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
#
# Completes the words of mdm-msg in bash. The program itself says which commands, options and
# categories it has. Installed as share/bash-completion/completions/mdm-msg.

# usage: _mdm_msg_say PROGRAM WORD... : what the program prints
_mdm_msg_say() {
    LC_ALL=C "$@" 2>/dev/null </dev/null
}

_mdm_msg_commands() {
    _mdm_msg_say "$1" --help | sed -n '/^Commands:/,/^$/s/^  \([a-z][a-z0-9-]*\) .*/\1/p'
}

# The options of the program, or of a command. Those that take a value end in "=".
_mdm_msg_options() {
    if [ $# -eq 1 ]; then
        _mdm_msg_say "$1" --help | grep -oE -- '--[a-z]+' | sort -u
    else
        _mdm_msg_say "$@" --help | sed -nE 's/^  (-., )?(--[a-z0-9-]+=?).*/\2/p'
    fi
}

_mdm_msg_categories() {
    _mdm_msg_say "$1" forms | sed -n 's/^\([a-z0-9_]*\): message types\{0,1\} .*/\1/p'
}

# usage: _mdm_msg_reply WORD CHOICES [PREFIX]. No other words are right, not even files.
_mdm_msg_reply() {
    mapfile -t COMPREPLY < <(compgen -P "${3-}" -W "$2" -- "$1")
    compopt +o default 2>/dev/null
    if [ ${#COMPREPLY[@]} -eq 1 ] && [[ ${COMPREPLY[0]} == *= ]]; then
        compopt -o nospace 2>/dev/null
    fi
}

# Without a reply bash completes the name of a file.
_mdm_msg() {
    local program=$1 word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
    local command=${COMP_WORDS[1]} option='' prefix='' earlier
    COMPREPLY=()

    if [ "$COMP_CWORD" -eq 1 ]; then
        case $word in
            -*) _mdm_msg_reply "$word" "$(_mdm_msg_options "$program")" ;;
            *) _mdm_msg_reply "$word" "$(_mdm_msg_commands "$program")" ;;
        esac
        return
    fi

    for earlier in "${COMP_WORDS[@]:2:COMP_CWORD-2}"; do
        if [ "$earlier" = -- ]; then
            [ "$command" != forms ] || _mdm_msg_reply "$word" "$(_mdm_msg_categories "$program")"
            return
        fi
    done

    # "--color=al" is three words, unless COMP_WORDBREAKS lacks "=".
    if [ "$word" = = ]; then
        option=$before word=''
    elif [ "$before" = = ]; then
        option=${COMP_WORDS[COMP_CWORD - 2]}
    elif [[ $word == --*=* ]]; then
        option=${word%%=*} prefix=$option= word=${word#*=}
    else
        option=$before
    fi
    case $option in
        --color) _mdm_msg_reply "$word" 'auto always never' "$prefix" ;;
        *)
            if [ "$before" = = ] || [ -n "$prefix" ]; then
                return
            elif [[ $word == -* ]]; then
                _mdm_msg_reply "$word" "$(_mdm_msg_options "$program" "$command")"
            elif [ "$command" = forms ]; then
                _mdm_msg_reply "$word" "$(_mdm_msg_categories "$program")"
            fi
            ;;
    esac
}

complete -o default -F _mdm_msg mdm-msg
