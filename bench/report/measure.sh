#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Measures what the report is made of, but for the sizes, which ./dev size measures.
# usage: measure.sh BUILD_DIR OUT_DIR [FLAG...]
# The flags are those of Google Benchmark, for a shorter run.
# environment: MDM_LOADS, how many processes load the library
set -euo pipefail

build=$1
out=$2
shift 2
bench=$build/bench
count=$(dirname "$0")/../count_instructions.sh
library=$(realpath "$build/libmdm-common.so")

# The output of the benchmark for programs.
out_flags() { printf '%s\n' "--benchmark_out=$out/$1.json" --benchmark_out_format=json; }

needed() {
    LC_ALL=C readelf --dynamic "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\]$/\1/p'
}

cached() { sed -n "s/^$1:[A-Z]*=//p" "$build/CMakeCache.txt"; }

fact() { printf '%s\t%s\n' "$1" "$2"; }

machine() {
    local word
    fact processor "$(LC_ALL=C lscpu | sed -n 's/^Model name: *//p')"
    word=$(LC_ALL=C lscpu | sed -n 's/^Hypervisor vendor: *//p')
    fact "virtual machine" "${word:-no}"
    fact "processor cores" "$(nproc)"
    fact memory "$(LC_ALL=C awk '/^MemTotal:/ { printf "%.1f GiB", $2 / 1048576 }' /proc/meminfo)"
    fact kernel "$(uname --kernel-name --kernel-release --machine)"
    # shellcheck source=/dev/null
    fact system "$(. /etc/os-release && echo "$PRETTY_NAME")"
    fact "C library" "$(getconf GNU_LIBC_VERSION)"
    fact GLib "$(pkg-config --modversion glib-2.0)"
    fact compiler "$("$(cached CMAKE_CXX_COMPILER)" --version | head -n 1)"
    fact library "$(cached CMAKE_PROJECT_NAME) $(cached CMAKE_PROJECT_VERSION)"
    fact "load average before the run" "$(cut -d ' ' -f 1-3 /proc/loadavg)"
}

machine >"$out/machine.tsv"
cp "$build/compile_commands.json" "$out/commands.json"

mapfile -t libraries < <(needed)
for ((i = 0; i < ${MDM_LOADS:-31}; ++i)); do
    "$bench/load-cost" "${libraries[@]}" "$library"
done >"$out/load.tsv"

G_SLICE=always-malloc "$bench/codec-memory" >"$out/memory.tsv"

mapfile -t flags < <(out_flags time)
"$bench/codec-bench" "${flags[@]}" "$@"
mapfile -t flags < <(out_flags growth)
"$bench/codec-bench" --growth "${flags[@]}" "$@"
mapfile -t flags < <(out_flags instructions)
"$count" "$bench/codec-bench" "${flags[@]}" "$@"
# Only lists, and not the longest ones, which would take minutes.
mapfile -t flags < <(out_flags growth-instructions)
"$count" "$bench/codec-bench" --growth "${flags[@]}" \
    --benchmark_filter=' (names 10{2,4}|accounts 10{2,3})/' "$@"
# Without mappings: they are the reason if the largest message costs more than its size says.
mapfile -t flags < <(out_flags unmapped)
GLIBC_TUNABLES=glibc.malloc.mmap_max=0:glibc.malloc.trim_threshold=1073741824 \
    "$bench/codec-bench" --growth "${flags[@]}" --benchmark_filter='^open text' "$@"
