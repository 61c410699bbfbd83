#!/bin/sh
# threads.sh BUILD: dorvek-batch on good rows, bad cells, bad files and files that rows share gives the
# same bytes on any number of threads. A build with the thread sanitizer says what they race for.
set -eu
batch=$(realpath "$1")/dorvek-batch
silica=$(realpath "$(dirname "$0")/../../examples/silica")
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"
awk 'BEGIN { for (i = 1; i <= 9500; i++) print i / 1000, i % 7, i }' >long.dat
(head -n 300 "$silica/silica_300K.dat" && echo '3.01 x') >bad.dat
{
    echo file,partial,rmin,rmax,file2,partial2
    for _ in $(seq 40); do
        printf '%s\n' long.dat,1,1,2 long.dat,x,1,2 long.dat,1,1,x long.dat,1,20,30 long.dat,1,1,2 \
            bad.dat,1,1,2 bad.dat,2,1,2 none.dat,1,1,2 .,1,1,2 ,1,1,2 \
            "$silica/silica_300K.dat,2,1.4,2.2,$silica/silica_1500K.dat,2" \
            "$silica/silica_300K.dat,2,1.4,2.2,long.dat,1" "long.dat,1,1,2,bad.dat,1" \
            "$silica/silica_300K.dat,4,1.4,2.2" "$silica/silica_300K.dat,2,1.4,2.2"
    done
} >table.csv
for jobs in 1 2 8 8 8; do
    status=0
    "$batch" -j "$jobs" table.csv >"out.$jobs" 2>err || status=$?
    if [ "$status" -ne 1 ] || ! cmp out.1 "out.$jobs"; then
        echo "-j $jobs: status $status" && cat err
        exit 1
    fi
done
grep -c ,ok, out.1
