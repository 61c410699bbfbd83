#!/bin/sh
# plot.sh PROGRAM SOURCE: dorvek-plot on the silica example: what stands where in its SVG.
. "$2/tests/tools/check.sh"
plot=$tools/dorvek-plot
mkdir work
cp "$silica"/*.dat work
# shellcheck disable=SC2016 # gnuplot would take backquotes for a command
(cd work && printf '%s\n' 2 silica_300K.dat 3 "it's <cold>_{x}" silica_1500K.dat 3 \
    "$(printf 'caf\351 `id`')" 2 0 2 0 '1.4 1.9' y 2 0 2 0 '1.5 1.8' n n | "$program" >/dev/null)
check 'a picture for each report' 'peak-1.svg peak-2.svg' \
    "$("$plot" -o peak.svg work/dorvek.res | paste -s -d ' ')"
check 'names' "it's &lt;cold>_{x}, partial 2
caf? \`id\`, partial 2" "$(sed -n 's|^[^<]*<text>\(.*partial 2\)</text>|\1|p' peak-1.svg)"

# By the ticks at 1.4 and 1.6: the edges of the window; then, for each sample, left and right end of
# the highest line or mark of its curve, of the bar around its mean, and of its mode.
shown=$(awk '
function r(x) { return sprintf(" %.3f", 1.4 + (x - x14) / (x16 - x14) * 0.2) }
/<text> 1\.4</ { x14 = word[1] }
/<text> 1\.6</ { x16 = word[1] }
{
    line = $0
    gsub(/dasharray=.[0-9.,]*/, "", line)
    gsub(/[^0-9.,]+/, " ", line)
    n = split(line, word, " ")
}
/<polygon/ && !top { printf "%s", r(word[4]) r(word[5]) }
/id="gnuplot_plot_/ || /"#FFFFFF"/ && top {
    if (top && top < 300) printf "%s", r(left) r(right)
    top = 300
}
top { for (i = 1; i <= n; ++i) if (split(word[i], at, ",") == 2 && at[2] != "" && at[2] <= top) {
    if (at[2] < top) left = at[1]
    right = at[1]
    top = at[2]
} }' peak-1.svg)
expected=$("$tools/dorvek-table" --tsv work/dorvek.res | awk -F '\t' '
NR == 2 { printf " %.3f %.3f", $7, $8 }
NR == 2 || NR == 3 { printf " %.3f %.3f %.3f %.3f", $13, $13, $11 - sqrt($14), $11 + sqrt($14) }
NR == 2 || NR == 3 { printf " %.3f %.3f", $13, $13 }')
check 'what stands where' "$expected" "$shown"
check 'two colours, the second dashed' "rgb(  0, 114, 178)'  d
rgb(213,  94,   0)' stroke-dasharray" \
    "$(sed -n "/_plot_[15]\"/,/<path/s/.*path stroke='\([^=]*\).*/\1/p" peak-1.svg)"

check 'text, all of a report' 2 "$("$plot" work/dorvek.res | grep -c 'mean 1.61.*sdev 0.03')"
printf '1D0,-2d-1,3\r\n\n 2.5\t4+1 , 7\r\n3 ,4.0q-1,\n' >odd.dat
check 'preview: numbers in every spelling' odd.svg "$("$plot" --file odd.dat --partial 1 -o odd.svg)"
check 'no such partial' 'dorvek-plot: odd.dat: line 1 has no partial 2' \
    "$("$plot" --file odd.dat --partial 2 2>&1)"
rm work/silica_1500K.dat peak-*.svg
check 'data that have gone' \
    'dorvek-plot: work/silica_1500K.dat: cannot be read, though a report names it' \
    "$("$plot" -o peak.svg work/dorvek.res 2>&1; ls peak* 2>/dev/null)"
mkdir bin
for command in awk cat dirname mktemp rm sh; do ln -s "$(command -v "$command")" bin; done
check 'no gnuplot' 'dorvek-plot: gnuplot is missing (Debian: apt-get install gnuplot-nox)' \
    "$(PATH=$PWD/bin "$plot" work/dorvek.res 2>&1)"
exit "$failed"
