#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Draws the pictures of docs/performance.md.
# usage: draw.sh MEASURED_JSON OUT_DIR
set -euo pipefail

out=$2
points=$(mktemp --directory)
trap 'rm -rf "$points"' EXIT
"$(dirname "$0")/report.py" points "$1" "$points"

# The name of a picture, its title, and what else gnuplot is told.
draw() {
    gnuplot <<END
set terminal svg size 720,420 font "sans-serif,12" background "white"
set output "$out/$1.svg"
set datafile separator "\t"
set colorsequence podo
set linetype 9 linecolor "gray60"
set pointsize 0.6
set grid
set key opaque
set title "$2"
points(name) = "$points/".name.".tsv"
$3
END
    # The title that a program reads to somebody.
    sed -i "s|<title>Gnuplot</title>|<title>$2</title>|" "$out/$1.svg"
}

# Gray lines, along which everything grows that is linear, and then the curves.
# shellcheck disable=SC1003 # the backslash is that of gnuplot
along_linear='
set logscale xy
set format xy "10^{%T}"
set key left top
plot for [power=-6:9] 10**power * x noautoscale with lines linecolor "gray75" notitle, \
    1/0 with lines linecolor "gray75" title "linear", \'

# The name of the series, and what it grows in.
draw_growth() {
    draw "growth-$1" "Time and $2" "
set xlabel '$2'
set ylabel 'ns for a message'
file = points('growth-$1')
works = 'encode decode open seal'
$along_linear
    for [i=1:4] file using 1:(column(2 * i)) with linespoints linetype i pointtype 7 linewidth 2 \
        title word(works, i), \
    for [i=1:3] file using 1:(column(2 * i + 1)) with lines linetype i dashtype 2 \
        title word(works, i).' by hand'"
}

# shellcheck disable=SC2016 # the signs are those of gnuplot
draw ratios "Time of the library, as a ratio to the same work by hand" '
set ylabel "ratio: median and quartiles"
set yrange [0:*]
set xtics rotate by -35
set offsets 0.5, 0.5, 0, 0
set key outside top horizontal
works = "encode decode open"
plot 1 with lines linecolor "gray40" title "by hand", \
    for [i=1:3] points("ratios") \
        using ($0 + 0.2 * (i - 2)):(column(3 * i)):(column(3 * i - 1)):(column(3 * i + 1)) \
        with yerrorbars linetype i linewidth 2 pointtype 7 title word(works, i), \
    points("ratios") using 0:(NaN):xtic(1) notitle'

draw_growth text "the bytes of one text"
draw_growth names "the names of a list"
draw_growth accounts "the accounts of a list"

draw memory "Heap memory and the length of a message" "
set xlabel 'bytes on the wire'
set ylabel 'bytes of memory'
works = 'sealing decoded opened'
series = 'text names accounts'
$along_linear
    for [i=1:3] for [j=1:3] points('memory-'.word(series, i)) using 1:(column(j + 1)) \
        with linespoints linetype i dashtype j pointtype j linewidth 2 \
        title word(series, i).', '.word(works, j)"

draw size "The size of the library" '
set ylabel "KiB of code and constant data"
set yrange [0:*]
set style data histograms
set style histogram rowstacked
set style fill solid border linecolor "white"
set boxwidth 0.6
set key outside right reverse Left invert
set key autotitle columnheader
plot for [i=2:*] points("size") using (column(i) / 1024):xtic(1)'
