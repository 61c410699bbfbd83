#!/bin/sh
# batch.sh BIN SOURCE: dorvek-batch on good rows, bad rows and odd tables.
. "$2/tests/tools/check.sh"
cp "$silica"/*.dat .
for case in two_bins different_grids; do
    mkdir $case
    cp "$source/tests/e2e/$case"/*.dat $case
done
batch() { # what it says on standard error goes to errors, its exit status to status
    status=0
    "$bin/dorvek-batch" "$@" 2>errors || status=$?
}
column() { # HEADING: of the table on standard input, whose cells hold no commas
    awk -F , -v heading="$1" 'NR == 1 { while ($++n != heading); } { print $n }' | paste -s -d ' '
}

# What the dialogue reports for the same answers: windows of one sample; of two, with constraints; of
# two grids, the second time on what the first has resampled; of two bins, with pauses.
dialogue() {
    printf '%s\n' "$@" n n | "$bin/dorvek" >shown
    "$bin/dorvek-table" dorvek.res | sed '1d; s/^dorvek.res,[0-9]*,//'
}
{
    dialogue 1 silica_300K.dat 3 first 2 0 '1.4 2.2' y 3 0 '2.3 3.2'
    dialogue 2 silica_300K.dat 3 x silica_1500K.dat 3 '"y", z' 2 1 2 2 '1.4 2.2'
    dialogue 2 different_grids/a.dat 2 4 different_grids/b.dat 1 4 1 0 1 0 '0 9' '' \
        1 0 1 0 '2 6' '' 1 0 1 0 '2 9'
    dialogue 2 two_bins/a.dat 2 a two_bins/a.dat 2 b 1 0 2 0 '3.5 4.5' '' '' '' ''
} >expected
cat >good.csv <<'END'
T,file,partial,partials,rmin,rmax,name,constraints,file2,partial2,partials2,name2,constraints2
300,silica_300K.dat,2,,1.4,2.2,first
300,silica_300K.dat,3,3,2.3,3.2,first
,silica_300K.dat,2.0,3.,1.4,2.2,x,1,silica_1500K.dat,2,,"""y"", z",2
,different_grids/a.dat,1,,0,9,,,different_grids/b.dat,1
,different_grids/a.dat,1,,2,6,4,,different_grids/b.dat,1,,4
,different_grids/a.dat,1,,2,9,4,,different_grids/b.dat,1,,4
"quoted ""x"",
on two lines",two_bins/a.dat,1,,3.5,4.5,a,,two_bins/a.dat,2,,b
END
batch good.csv >good
check 'the rows of the dialogue' "$(cat expected)" \
    "$(sed -n 's/^.*,ok,[^,]*,[0-9]*,\([12],\)/\1/p' good)"
check 'and its messages' 'inconsistent bining: adjusted by linear interpolation
pause: A or B too big, or ITMAX too small; pause: A or B too big, or ITMAX too small; '"\
pause without a message; pause: A too large, ITMAX too small; "'the chi-square test has no degrees of freedom' \
    "$(sed -n 's/.*,ok,\(".*"\|[^,]*\),[0-9]*,1,.*/\1/p' good | sed 's/^"//; s/"$//' | grep . | uniq)"
check 'what is passed through' '1,300, 2,300, "7,""quoted ""x"" ",' \
    "$(sed -n 's/^\([127],[^,]*,\).*/\1/p' good | uniq | paste -s -d ' ')"

# In their order, each file read once, on any number of cores; what comes out can go in again.
mkfifo fifo
{
    echo 'file,partial,rmin,rmax'
    for n in $(seq 700); do printf '%s\n' "silica_300K.dat,$((n % 4)),1.4,2.2" fifo,2,1.4,2.2; done
} >long.csv
cat silica_300K.dat >fifo &
sed -i 's/,2,1.4,2.2$/&,fifo,3/; s/rmax/&,file2,partial2/; s/fifo,2/silica_300K.dat,2/' long.csv
batch -j 1 long.csv >one
check 'rows in their order' "$(seq -s ' ' 1400)" "$(column id <one | tr ' ' '\n' | uniq | paste -s -d ' ')"
exit "$failed"
