#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Draws the figures that load.sh has left, and prints the tables of a page about them.
# usage: report.sh REPORT_DIR
set -euo pipefail
cd "$1"

value() { awk -F '\t' -v name="$2" '$1 == name { print $2 }' "$1/summary.tsv"; }

# title, unit of the first axis, of the second, and further lines
draw() {
    gnuplot <<END
set terminal svg size 720,360 font "sans-serif,12" background "white"
set output "$1.svg"
set title "$2"
set xlabel "$3"
set ylabel "$4"
set grid
set key top left
$5
END
}

if [ -d beside ]; then
    draw latency "Latency of honest clients" "one of so many requests takes longer" "milliseconds" '
set logscale xy
plot "beside/calm.tsv" with lines linewidth 2 title "alone", \
     "beside/hostile.tsv" with lines linewidth 2 title "beside 100 hostile and 100 stalled clients"'
fi
# shellcheck disable=SC2016 # the signs are those of gnuplot
if [ -d many ]; then
    draw memory "1,000 clients: memory of the server" "seconds" "MiB" '
set yrange [0:*]
plot "many/memory.tsv" using 1:($2/1024) with lines linewidth 2 notitle'
    draw throughput "1,000 clients: right answers" "seconds" "a second" '
set yrange [0:*]
last_time = 0
last_count = 0
rate(time, count) = (result = (count - last_count) / (time - last_time), last_time = time, \
    last_count = count, result)
plot "many/memory.tsv" using 1:(rate($1, $4)) every ::1 with lines linewidth 2 notitle'
fi

for run in many speed sanitized-asan sanitized-tsan; do
    [ -d "$run" ] || continue
    printf '\n### %s\n\n' "$run"
    printf '| figure | measured |\n|---|---|\n'
    sed 's/^/| /; s/\t/ | /; s/$/ |/' "$run/summary.tsv"
done
if [ -d beside ]; then
    printf '\n### beside\n\n| latency, ms | alone | beside them | ratio |\n|---|---|---|---|\n'
    for share in "50th percentile" "99th percentile" "99.9th percentile" worst; do
        calm=$(value beside "latency, calm, $share, ms")
        hostile=$(value beside "latency, hostile, $share, ms")
        awk -v share="$share" -v calm="$calm" -v hostile="$hostile" \
            'BEGIN { printf "| %s | %s | %s | %.2f |\n", share, calm, hostile, hostile / calm }'
    done
fi
