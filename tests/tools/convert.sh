#!/bin/sh
# convert.sh BIN: runs dorvek-convert on files as other programs write them.
set -eu
program=$1/dorvek-convert
silica=$(cd "$(dirname "$0")/../../examples/silica" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"
failed=0
fail() {
    echo "$*"
    failed=1
}

# Each row: options, the file, the status, what stands on standard output, a part of what stands on
# standard error. The numbers are worked by hand: with this rho, 4 pi rho is 1.
rho=0.07957747154594767
lammps='# Time-averaged data\n# TimeStep Number-of-rows\n# Row c_g[1] c_g[2] c_g[3]\n'
row=0
while IFS='|' read -r options input status output says; do
    row=$((row + 1))
    printf '%b' "$input" >in.txt
    got=0
    # shellcheck disable=SC2086 # a list of options
    "$program" $options <in.txt >out.txt 2>err.txt || got=$?
    printf '%b' "$output" >expected.txt
    if [ "$got" -ne "$status" ] || ! cmp -s expected.txt out.txt || ! grep -qF -e "$says" err.txt; then
        fail "row $row: $options: $input: $got: $(cat out.txt err.txt)"
    fi
done <<EOF
columns --density $rho|# title\n@ s0 legend "a-b"\n  2.000  1\n  4.000\t.5\n\n&\n  6.0 2.0 \n|0|2.000 1 8\n4.000 .5 24\n6.0 2.0 168\n|1 block
columns --density $rho --fractions .5,.25|\0357\0273\0277r,"Si, O",O\r\n2,1,0,\r\n4 , 0.5,\t1,\r\n6,2,1|0|2 1 4 0 0\n4 0.5 12 1 8\n6 2 84 1 26\n|
columns --density $rho --use 3,2 --fractions 1,.5|2 1 0\n4 0.5 1\n|0|2 0 0 1 4\n4 1 32 0.5 12\n|
columns --density $rho|2 1 0\n4 0.5 1\n|0|2 1 8 0 0\n4 0.5 24 1 32\n|no --fractions
columns --atoms A=$rho,B-=1 --volume 2 --pairs B--A|2 1\n4 0.5\n|0|2 1 4\n4 0.5 12\n|
columns --density $rho|+1.0D1,+1\n.2+2 1.e+0,\n3E1,1-0,,\n|0|+1.0D1 +1 1000\n.2+2 1.e+0 5000\n3E1 1-0 14000\n|
columns --density $rho|0.3 3\n0.6 0\n1.0 0\n1.3 0\n|0|0.3 3 0.09\n0.6 0 0.09\n1.0 0 0.09\n1.3 0 0.09\n|
columns --running|r g n g n\n.5 1 2 3 4\n.6 5 6 7 8\n|0|.5 1 2 3 4\n.6 5 6 7 8\n|
columns --running --use 4|.5 1 2 3 4\n.6 5 6 7 8\n|0|.5 3 4\n.6 7 8\n|
columns --running|.5 1 2 3\n.6 5 6 7\n|1||4 columns are not r, and g and n of each partial
columns --density 1|r\n.5\n.6\n|1||1 columns are not r, and g of each partial
columns --running|2$(printf ' 1%.0s' $(seq 22))\n3$(printf ' 1%.0s' $(seq 22))\n|0|2$(printf ' 1%.0s' $(seq 22))\n3$(printf ' 1%.0s' $(seq 22))\n|11 partials: dorvek takes the first 10
columns --running --step last|2 1 2\n4 3 4\n2 5 6\n4 7 8\n|0|2 5 6\n4 7 8\n|2 blocks
columns --running|2 1 2\n4 3 4\n2 5 6\n4 7 8\n|1||before block 2: line 2: 4 3 4
columns --running|2 1 2\n4 3 4\n# next\n2 5 6\n4 7 8|0|2 1 2\n4 3 4\n|cut short
columns --running|2 1 2\n4 3 4\n2 5 6\n|0|2 1 2\n4 3 4\n|cut short
columns --running|2 1 2\n4 3 4\n2 5 6\n4 7|0|2 1 2\n4 3 4\n|cut short
columns --running|2 1 2\n4 3|1||cut short
columns --running|2 1 2\n4 3 4\n6 1|1||no whole block
columns --running --step mean|2 1 2\n4 3 4\n2 2 3\n4 4 5\n2 0 1\n4 4 9\n|0|2 1 2\n4 3.6666667 6\n|3 blocks
columns --density $rho --step mean --from 2|2 1\n4 3\n2 2\n4 4\n2 0\n4 4\n|0|2 1 8\n4 4 136\n|3 blocks
columns --running --step mean --from 3|2 1 2\n4 3 4\n2 1 2\n4 3 4\n|1||2 blocks
columns --running --step mean|2 1 2\n4 3 4\n2 1 2\n5 3 4\n|1||block 2 has another grid
columns --running --step mean|2 1 2\n4 3 4\n2 1 2\n4 3 4\n6 3 4\n|1||block 2 has another grid
columns --density 1|2 1\n4 nan\n|1||line 2: column 2 is no number
columns --density 1|2 1\n-Inf 1\n|1||line 2: column 1 is no number
columns --density 1|2 1\nInfinity 1\n|1||line 2: column 1 is no number
columns --density 1|2 1\n4 1e39\n|1||line 2: column 2 is no number
columns --density 1|r;g\n2 0x1\n|1||line 2: column 2 is no number
columns --density 1|2 1\n4 2*1\n|1||line 2: column 2 is no number
columns --density 1|2,,1\n|1||line 1: column 2 is no number
columns --density $rho|r;g\n2,0;,5\n4,0;0\n|0|2.0 .5 4\n4.0 0 4\n|1 block
columns --density 1|2 1\n4 1 1\n|1||line 2: the number of columns is 3, not 2
columns --density 1|0,02\t1,5\n0,03\t1,5\n|1||line 1: decimal commas
columns --density 1|2 1\n3 1\n4 1\n6 1\n7 1\n|1||r does not ascend in even steps at
columns --density 1|2 1\n|1||fewer than two bins
columns --density 1|heading\n|1||no whole block
columns --density 1e38|2 1\n4 1\n|1||too large
columns --density 1|,r,g\n0,.1,0\n1,.2,0\n2,.3,1\n|1||only counts rows
columns --density 1 --use 3|1 .01 0\n2 .03 0\n3 .05 1\n4 .01 0\n5 .03 0\n6 .05 1\n|1||only counts rows
columns --density $rho|0 0\n.5 1\n1 2\n|0|0 0 0\n.5 1 0.125\n1 2 1.125\n|
columns --density 1|0 .1\n1 .2\n2 .3\n|1||only counts rows
columns --density $rho|1 0\n2 1\n3 2\n4 1\n|0|1 0 0\n2 1 4\n3 2 22\n4 1 38\n|
columns|2 1\n4 1\n|2||--density
columns --density 1 --running|2 1 1\n4 1 1\n|2||--density
columns --density 1 --fractions .5|2 1 1\n4 1 1\n|2||fractions
columns --density 1 --fractions 50|2 1\n4 1\n|2||50 is no number above 0 to 1
columns --density nan|2 1\n4 1\n|2||nan is no number above 0
columns --density 1 --use 1|2 1\n4 1\n|2||1 is no whole number from 2 on
columns --density 1 --use 3|2 1\n4 1\n|2||there are 2 columns
columns --atoms A=1 --density 1|2 1\n4 1\n|2||--volume
columns --atoms A=1 --volume 2 --pairs A-B|2 1\n4 1\n|2||A-B
columns --atoms A=1,A=2 --volume 2 --pairs A-A|2 1\n4 1\n|2||A-A
columns --density 1 --step all|2 1\n4 1\n|2||-o
columns --density 1 --from 2|2 1\n4 1\n|2||--step mean
columns --density 1 $scratch/none||1||none: Cannot open file: No such file
columns --density 1 $scratch||1||Is a directory
lammps --density 1|${lammps}|2||does not go with lammps
lammps|${lammps}0 2\n1 .1 1 2\n2 .3 3 4\n${lammps}9 2\n1 .1 5 6\n2 .3 7 8\n|0|.1 5 6\n.3 7 8\n|2 blocks
lammps|${lammps}0 2\n1 .1 1 2\n2 .3 3 4\n9 2\n1 .1 5 6\n2 .3 7 8|0|.1 1 2\n.3 3 4\n|cut short
lammps|${lammps}0 2\n1 .1 1 2\n2 .3 3 4\n9 2\n1 .1 5 6\n|0|.1 1 2\n.3 3 4\n|cut short
lammps --step mean|0 2\n1 .1 1 2\n2 .3 3 4\n9 2\n1 .1 2 4\n2 .3 4 4\n|0|.1 1.5 3\n.3 3.5 4\n|2 blocks
lammps|0 2\n1 .1 1 2\n3 .3 3 4\n|1||line 3: not row 2
lammps|0 2\n1 .1 1 2\n9 2\n1 .1 1 2\n|1||line 3: the number of columns
lammps|0 2\n1\n2\n|1||line 2: not row 1
lammps|0 -1\n|1||line 1: no number of rows
lammps|0 2\n1 .1 1\n2 .3 1\n|1||g and n
EOF

# The steps of a file as files, and one that cannot be written.
cat "$silica"/silica_*.dat | "$program" columns --running --step all -o glass 2>/dev/null
cmp glass-1.dat "$silica/silica_1500K.dat" && cmp glass-2.dat "$silica/silica_300K.dat" || failed=1
! "$program" columns --running --step all -o no/glass glass-1.dat 2>/dev/null || fail "no/glass-1.dat"
# An older file stays if a full disk or a signal comes between, and nothing lies beside it. A link is
# followed, and permissions are kept.
(umask 077 && echo old >kept.dat)
ln -s kept.dat kept-1.dat
for fault in write:error=ENOSPC write:signal=TERM fchown:signal=INT; do
    ! strace -qq -o calls -e inject="$fault" "$program" columns --running --step all -o kept \
        glass-1.dat 2>/dev/null || fail "$fault"
    [ "$(cat kept.dat) $(echo .dorvek*)" = 'old .dorvek*' ] || fail "left by $fault"
done
"$program" columns --running --step all -o kept glass-1.dat 2>/dev/null
cmp kept.dat glass-1.dat || failed=1
[ -h kept-1.dat ] || fail "a link"
[ "$(stat -c %a kept.dat)" = 600 ] || fail "permissions"
! "$program" columns --running glass-1.dat >/dev/full 2>/dev/null || fail "full"

# LAMMPS's own running numbers of silica, whose Si-Si and O-O count one atom less than 512 and 1024.
edge=$(awk 'BEGIN {print (1536 * 28.0855 / 3 + 1536 * 2 * 15.9994 / 3) / 0.602214076 / 2.2}')
awk '{print $1 "," $2 "," $4 "," $6}' glass-2.dat |
    "$program" columns --atoms Si=512,O=1024 --volume "$edge" --pairs Si-Si,Si-O,O-O 2>/dev/null |
    paste -d ' ' - glass-2.dat | awk '
        function off(n, expected) {return expected > 0.5 && (n / expected - 1) ^ 2 > 5e-5 ^ 2}
        NF != 14 || $1 != $8 || $2 != $9 || $4 != $11 || $6 != $13 || off($3, $10 * 512 / 511) ||
        off($5, $12) || off($7, $14 * 1024 / 1023) {print; bad = 1} END {exit bad || NR != 500}' ||
    fail "silica"

# g = 1 fills spheres, 4/3 pi rho R^3 up to the upper edge R of a bin.
awk '{print $1, 1}' glass-1.dat | "$program" columns --density 0.0441 2>/dev/null | awk '
    {R = $1 + 0.01; off = $3 / (4 / 3 * 3.14159265 * 0.0441 * R ^ 3) - 1}
    NF != 3 || R > 1 && off ^ 2 > 1e-4 ^ 2 {print; bad = 1} END {exit bad || NR != 500}' ||
    fail "spheres"
exit "$failed"
