# SPDX-License-Identifier: Apache-2.0
# The fuzzers and their corpus. ./dev sources this file.
# shellcheck shell=bash

mapfile -t fuzz_targets < <(sed '/^#/d; s/ .*//' fuzz/targets)

check_fuzz_target() {
    local target
    for target in "${fuzz_targets[@]}"; do
        [ "$target" != "$1" ] || return 0
    done
    die "no such fuzz target: '$1'; there are ${fuzz_targets[*]}"
}

# A column of a target's line in fuzz/targets.
fuzz_setting() {
    awk -v column="$1" -v target="$2" '
        $1 == "#" && $2 == "target" { for (i = 2; i <= NF; ++i) place[$i] = i - 1 }
        $1 == target { print $place[column] }' fuzz/targets
}

# The fuzzer of a preset and a target, with further arguments. What it finds stays in build/.
run_fuzzer() {
    local preset=$1 target=$2 dict options
    shift 2
    options=("-max_len=$(fuzz_setting max-len "$target")")
    dict=$(fuzz_setting dict "$target")
    [ "$dict" = - ] || options+=("-dict=build/$preset/fuzz/$dict")
    mkdir -p "build/$preset/$target/corpus"
    G_SLICE=always-malloc UBSAN_OPTIONS=print_stacktrace=1 \
        ASAN_OPTIONS=detect_leaks=1:detect_stack_use_after_return=1:strict_string_checks=1 \
        "build/$preset/fuzz/fuzz-$target" "${options[@]}" -timeout=10 -rss_limit_mb=2048 \
        -print_final_stats=1 -artifact_prefix="build/$preset/$target/" "$@"
}

fuzz_for() {
    local preset=$1 target=$2
    run_fuzzer "$preset" "$target" -max_total_time="$3" \
        "build/$preset/$target/corpus" "fuzz/corpus/$target"
}

build_fuzzers() {
    need library tools tests clang
    if [ "$1" = fuzz-i386 ]; then
        [ "$(uname -m)" = x86_64 ] || die "only an x86-64 machine runs 32-bit x86 programs"
        make_i386_sysroot
    fi
    build_preset "$1"
}

# Fails if the corpus no longer reaches what its target is for.
check_reach() {
    local target=$1 sources objects=build/coverage/CMakeFiles
    shift
    sources=$(fuzz_setting sources "$target")
    [[ $sources != tools/* ]] || objects=build/coverage/tools
    say "Reach of the target $target"
    find build/coverage -name '*.gcda' -delete
    G_SLICE=always-malloc "build/coverage/fuzz/replay-$target" "$@"
    gcovr --root . --filter "$sources" --exclude-throw-branches --exclude-unreachable-branches \
        --fail-under-line "$(fuzz_setting reach "$target")" "$objects"
}

build_replays() {
    need library tools tests coverage
    build_preset coverage --target replays
}

do_fuzz() {
    local target=$1 preset=fuzz${3:+-$3}
    build_fuzzers "$preset"
    build_replays
    say "Fuzzing: $target, $2 seconds"
    fuzz_for "$preset" "$target" "$2"
    check_reach "$target" "fuzz/corpus/$target" "build/$preset/$target/corpus"
}

do_fuzz_merge() {
    local target=$1 merged=build/fuzz/$1/merged options=() found=()
    [ ! -L "fuzz/corpus/$target" ] ||
        die "$target has the corpus of $(readlink "fuzz/corpus/$target"): merge that one"
    build_fuzzers fuzz
    rm -rf "$merged" build/fuzz/messages
    mkdir -p "$merged" build/fuzz/messages "fuzz/corpus/$target"
    if [ "$(fuzz_setting dict "$target")" = message.dict ]; then
        # How often a message takes a branch would multiply the files.
        options=(-use_counters=0)
        build/fuzz/fuzz/message-seeds build/fuzz/messages
        found=(build/fuzz/messages)
    fi
    for directory in build/fuzz*/"$target"/corpus; do
        [ ! -d "$directory" ] || found+=("$directory")
    done
    say "Merging: $target"
    run_fuzzer fuzz "$target" -merge=1 "${options[@]}" "$merged" "fuzz/corpus/$target" \
        "${found[@]}"
    rm -r "fuzz/corpus/$target"
    mv "$merged" "fuzz/corpus/$target"
}

# Runs of a preset, a target and seconds each, one after the other: a line for a run that finds
# nothing, and all of its output otherwise.
fuzz_in_turn() {
    local log failed=0
    while [ $# -gt 0 ]; do
        log=build/$1/$2.log
        if fuzz_for "$1" "$2" "$3" >"$log" 2>&1; then
            echo "$1 $2: $(sed -n 's/^stat::number_of_executed_units: *//p' "$log") executions"
        else
            cat "$log"
            failed=1
        fi
        shift 3
    done
    return $failed
}

# The place of the least of some numbers.
shortest() {
    local place=0 i=0 number least=$1
    for number in "$@"; do
        [ "$number" -ge "$least" ] || { place=$i least=$number; }
        i=$((i + 1))
    done
    echo "$place"
}

# Every target on 64 and on 32 bits. Three at a time, each in a turn of its own.
do_fuzz_all() {
    build_fuzzers fuzz
    build_fuzzers fuzz-i386
    build_replays
    say "Fuzzing: ${fuzz_targets[*]}"
    local times=${1-1} bits target seconds turn preset=fuzz
    local runs=('' '' '') total=(0 0 0) turns=() failed=0
    for bits in 64 32; do
        for target in "${fuzz_targets[@]}"; do
            seconds=$(($(fuzz_setting $bits "$target") * times))
            turn=$(shortest "${total[@]}")
            runs[turn]+=" $preset $target $seconds"
            total[turn]=$((total[turn] + seconds))
        done
        preset=fuzz-i386
    done
    # The shell lets programs in the background ignore Ctrl-C.
    trap 'kill 0' INT
    for turn in "${!runs[@]}"; do
        # shellcheck disable=SC2086 # three words a run
        fuzz_in_turn ${runs[turn]} &
        turns+=($!)
    done
    for turn in "${turns[@]}"; do
        wait "$turn" || failed=1
    done
    trap - INT
    [ $failed = 0 ] || die "a fuzzer has found something, see build/fuzz*/TARGET"
    for target in "${fuzz_targets[@]}"; do
        check_reach "$target" "fuzz/corpus/$target"
    done
}
