# SPDX-License-Identifier: Apache-2.0
# The benchmark and its report. ./dev sources this file.
# shellcheck shell=bash

do_bench() {
    case ${1-} in
    --report) bench_report ;;
    --instructions) bench_instructions ;;
    *) bench_time ;;
    esac
}

bench_time() {
    need library tools examples tests
    build_preset release --target codec-bench
    say "Benchmark"
    build/release/bench/codec-bench
}

bench_instructions() {
    need library tools examples tests
    build_preset release --target codec-bench
    say "Benchmark"
    bench/count_instructions.sh build/release/bench/codec-bench
}

# docs/performance.md and its pictures, from what this machine measures.
bench_report() {
    do_size
    need library tools examples tests load
    build_preset release --target codec-bench codec-memory load-cost
    say "Measuring"
    local run=build/bench-report pictures=docs/performance
    local measured=$pictures/measured.json
    rm -rf "$run"
    mkdir -p "$run" "$pictures"
    cp build/armhf/size "$run/size-armhf.tsv"
    cp build/release/size "$run/size-x86-64.tsv"
    bench/report/measure.sh build/release "$run"
    bench/report/report.py collect "$run" >"$run/measured.json"
    bench/report/report.py page "$run/measured.json" >"$run/performance.md"
    bench/report/draw.sh "$run/measured.json" "$run"
    say "Report: docs/performance.md"
    cp "$run/measured.json" "$measured"
    cp "$run"/*.svg "$pictures"
    cp "$run/performance.md" docs/performance.md
}
