#!/bin/sh
# conversions.sh PROGRAM PAGE: runs the conversions that PAGE (manual or Markdown) shows, as they
# stand there, with every awk there is.
# shellcheck disable=SC2016 # awk's dollars
set -eu
program=$1
page=$2
silica=$(cd "$(dirname "$0")/../../examples/silica" && pwd)/silica_300K.dat
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"
mkdir bin
PATH=$scratch/bin:$PATH

# convert FILE: runs the display in which FILE is read.
convert() {
    rm -f ./*.dat
    sed -En '/^(\.Bd|```)/{:more; N; /\n(\.Ed|```)$/!b more
        /'"$1"' >/{s/^[^\n]*//; s/\n[^\n]*$//; s/\\\(aq/'"'"'/g; s/\\-/-/g; s/\\e/\\/g; p}}' "$page" | sh
}

# The step that counts stands between another one and one that is cut short.
awk '{row[NR] = $0} END {print "# Time-averaged data\n# TimeStep Number-of-rows\n# Row c_g[1]"
    for (step = 1; step <= 3; step++) for (i = 0; i < NR + (step < 3); i++)
        print i ? i " " (step == 2 ? row[i] : "1 2 3 4 5 6 7") : step " " NR}' "$silica" >rdf.out
awk 'NR == 1 {print "r, Si-Si, Si-O, O-O\r"} {print $1 ", " $2 "," $4 "," $6 "\r"}
    END {print "\r"}' "$silica" >gr.csv
awk 'NR == 1 {print "# r g\n@ title"} {print "  " $1 "\t1"}' "$silica" >gr.txt

for awk in mawk gawk original-awk; do
    found=$(command -v "$awk") || continue
    ln -sf "$found" bin/awk
    convert rdf.out
    cmp "$silica" rdf.dat
    convert gr.csv # Si-Si and O-O had been normalised with one atom less than the 512 and 1024
    paste -d ' ' gr.dat "$silica" | awk '
        function off(n, expected) {return expected > 0.5 && (n / expected - 1) ^ 2 > 5e-5 ^ 2}
        NF != 14 || $1 != $8 || $2 != $9 || $4 != $11 || $6 != $13 || off($3, $10 * 512 / 511) ||
        off($5, $12) || off($7, $14 * 1024 / 1023) {print; bad = 1} END {exit bad || NR != 500}'
    printf '%s\n' 1 gr.dat 3 CSV 2 0 '1.3 2.3' n n | "$program" | grep -q '^ CN=     4\.007'
    convert gr.txt # g = 1 fills spheres, 4/3 pi rho R^3 up to the upper edge R of a bin
    awk '{R = $1 + 0.01; off = $3 / (4 / 3 * 3.14159265 * 0.0441 * R ^ 3) - 1}
        NF != 3 || $2 != 1 || R > 1 && off ^ 2 > 2e-4 ^ 2 {print; bad = 1}
        END {exit bad || NR != 500}' gr.dat
done
