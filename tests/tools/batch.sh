#!/bin/sh
# batch.sh PROGRAM SOURCE: dorvek-batch with good and bad runs, then again after changes.
. "$2/tests/tools/check.sh"
mkdir data
cp "$silica"/*.dat data
cp data/silica_300K.dat "data/it's a \"b\", & c.dat"
echo 'r g n' >data/text.dat
# shellcheck disable=SC2016 # expanded by the script
printf '#!/bin/sh\necho "${PWD##*/}" >>"%s/ran"\nexec "%s"\n' "$scratch" "$program" >counting
chmod +x counting
export DORVEK=./counting
run() {
    status=0
    : >ran
    "$tools/dorvek-batch" -j 2 "$1" >out.csv 2>errors || status=$?
}

s300='data/silica_300K.dat|3|2|1.4|1.9'
{
    echo 'id|file|partials|partial|rmin|rmax|file2|partials2|partial2'
    echo "pair|$s300|data/silica_1500K.dat|3|2"
    echo "odd|data/it's a \"b\", & c.dat|3|2|1.4|1.9"
    echo "gone|data/gone.dat|3|2|1.4|1.9"
    echo "gone2|$s300|data/gone2.dat|3|2"
    echo "text|data/text.dat|3|2|1.4|1.9"
    echo 'empty|data/silica_300K.dat|3|2|20|30'
    echo 'zero|data/silica_300K.dat|3|2|0.2|0.9'
    echo 'limit|data/silica_300K.dat|3|2|1.4|1,9'
    echo "half|$s300|data/silica_1500K.dat|3"
    for n in $(seq 50); do echo "many$n|$s300"; done
} | tr '|' '\t' >runs.tsv
run runs.tsv
check 'failed runs say why' 'gone,failed,"no such file: data/gone.dat"
gone2,failed,"no such file: data/gone2.dat"
text,failed,"Illegal character in numeric input; read, unit 15, file ""../../data/text.dat"", line 1"
empty,failed,"no data in this window"
zero,failed,"zero norm, no atoms found"
limit,failed,"rmax cannot be 1,9"
half,failed,"partial2 is missing"' "$(grep ,failed, out.csv | sed 's/,*$//')"
check 'exit status and count' '1 dorvek-batch: 59 runs, 7 failed' "$status $(cat errors)"
check 'every run in its place' "$(cut -f 1 runs.tsv | sed 's/^pair$/pair\n&/')" \
    "$(cut -d , -f 1 out.csv)"
check 'as many fields everywhere' 40 \
    "$(sed 's/"[^"]*"//g' out.csv | awk -F , '{ print NF }' | uniq)"
check 'no data file was created' 4 "$(printf '%s\n' data/* | wc -l)"
printf '%s\n' 2 data/silica_300K.dat 3 pair data/silica_1500K.dat 3 pair 2 0 2 0 '1.4 1.9' n n |
    "$program" >/dev/null
check 'the numbers of a dialogue by hand' \
    "$("$tools/dorvek-table" dorvek.res | sed 1d | cut -d , -f 5-)" \
    "$(grep ^pair out.csv | cut -d , -f 8-)"

cp out.csv first.csv
run runs.tsv
check 'the same again, but for what the program failed on' 'text 0' \
    "$(cat ran) $(cmp first.csv out.csv 2>&1 | wc -l)"
cp data/silica_1500K.dat data/gone.dat
sed -i '/^many7	/s/1\.9/1.8/' runs.tsv
: >runs.runs/many8/status                  # interrupted
touch -t 200001010000 runs.runs/odd/status # older than its data
run runs.tsv
check 'mended, changed, interrupted and outdated runs' 'gone many7 many8 odd text' \
    "$(sort ran | paste -s -d ' ')"
check 'the new window' 1.79000 "$(grep ^many7, out.csv | cut -d , -f 11)"

for id in ../x .x -x 'a b' a/b '' é one; do
    printf 'id\tfile\none\tx\n%s\tx\n' "$id" >ids.tsv
    run ids.tsv
    check "unfit or second id $id" '2, none ran' "$status, $([ -d ids.runs/one ] || echo none ran)"
done
printf 'id\tfile_2\n' >columns.tsv
run columns.tsv
check 'misspelt column' 'dorvek-batch: line 1: no column may be called file_2 here' "$(cat errors)"
exit "$failed"
