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
300, silica_300K.dat ,3,3,2.3,3.2,first
,silica_300K.dat,2.0,3.,1.4,2.2,x,1,silica_1500K.dat,2,,"""y"", z",2
,different_grids/a.dat,1,,0,9,,,different_grids/b.dat,1
,different_grids/a.dat,1,,2,6,4,,different_grids/b.dat,1,,4
,different_grids/a.dat,1,,2,9,4,,different_grids/b.dat,1,,4
"quoted ""x"",
on two lines",two_bins/a.dat,1,,3.5,4.5,a,,two_bins/a.dat,2,,b
END
batch good.csv >good
sed -n 's/^.*,ok,\("[^"]*"\|[^,]*\),[0-9]*,[^,]*,g,\([12],\)/\2/p' good | sed 's/,[^,]*,[^,]*$//' >rows
check 'the rows of the dialogue' '' "$(diff expected rows)"
check 'the headings' "id,T,status,message,bins,step,weight,$(paste -s -d '' <<'END'
sample,file,name,pdf,rmin,rmax,CN,dCN,Rmea,dRmea,Rmod,var,dvar,varl,varr,adif,arat,pmo3,dpmo3,skew,dskew,
pmo4,dpmo4,kurt,dkurt,cum4,dcum4,mean_doff,mean_stud,mean_sgfc,variance_stud,variance_sgfc,
distribution_doff,distribution_chsq,distribution_sgfc,Rmed,Rtop
END
)" "$(head -n 1 good)"
check 'and its messages' 'inconsistent bining: adjusted by linear interpolation
pause: A or B too big, or ITMAX too small; pause: A or B too big, or ITMAX too small; '"\
pause without a message; pause: A too large, ITMAX too small; "'the chi-square test has no degrees of freedom' \
    "$(sed -n 's/.*,ok,\(".*"\|[^,]*\),[0-9]*,[^,]*,g,1,.*/\1/p' good | sed 's/^"//; s/"$//' | grep . | uniq)"
check 'what is passed through' '1,300, 2,300, 7,"quoted ""x"",' \
    "$(sed -n 's/^\([127],[^,]*,\).*/\1/p' good | uniq | paste -s -d ' ')"

# In their order, a file read once for the rows that follow one another, on any number of cores.
mkfifo fifo
{
    echo 'file,partial,rmin,rmax,file2,partial2'
    for n in $(seq 700); do echo "fifo,$((n % 4)),1.4,2.2,fifo,3"; done
    for n in $(seq 700); do echo "silica_300K.dat,$((n % 4)),1.4,2.2"; done
} >long.csv
for jobs in 1 7; do
    timeout 20 cat silica_300K.dat >fifo &
    batch -j $jobs - <long.csv >jobs_$jobs
done
check 'rows in their order' "$(seq -s ' ' 1400)" "$(sed 1d jobs_1 | cut -d , -f 1 | uniq | paste -s -d ' ')"
check 'the same on seven cores' "$(cksum <jobs_1)" "$(cksum <jobs_7)"
status=0
strace -qq -o calls -e inject=clone,clone3:error=EAGAIN "$bin/dorvek-batch" -j 7 good.csv >alone || status=$?
check 'and on one, where no thread can be started' "0 $(cksum <good)" "$status $(cksum <alone)"

# What is wrong with a row stands in it; what is odd about the data as well.
echo 'r g n' >text.dat
printf '0.1 0 0\n0.2 1 1 2\n0.3 x 2\n' >third.dat
printf '%s\n' '0.1 1' '1' '0.2 2' '3' '0.3 1 4 9 9' >wrapped.dat
printf '%s\n' '1 1 0' '2 2 2' '3 1 4' '2.5 1 5' >turning.dat
printf '%s 1 1\n' 0 1.4 1.7 3 >jump.dat
printf '%s 1 1\n' 0 1.3 2.6 3.3 4 >drift.dat
printf '%s\n' '1 1 0 1' '2 2 2 1' >even.dat
printf '%s 20*1\n' 1 2 3 >ten.dat
seq 10001 | sed 's/$/ 1 1/' >many.dat
sed 's/$/ 18*1 4*2/' wrapped.dat | tail -n 1 >twelve.dat
tr ' ' '\t' >bad.csv <<'END'
id file partial partials rmin rmax constraints file2 partial2
gone gone.dat 1 3 1 2
gone2 turning.dat 1  0 9  gone.dat 1
text text.dat 1  1 2
third third.dat 1 1 0 9
folder different_grids 1 1 0 9
even even.dat 1  0 9
empty silica_300K.dat 2  20 30
zero silica_300K.dat 2  0.2 0.9
beyond silica_300K.dat 4  1.4 2.2
comma silica_300K.dat 2  1.4 1,9
slash silica_300K.dat 2  1.4/ 1.9
half silica_300K.dat 2.5  1.4 1.9
nameless  1  0 9
none silica_300K.dat   1.4 1.9
long silica_300K.dat 2  1.4 1.9  even.dat  more
wrapped wrapped.dat 1 1 0 9
turning turning.dat 1  0 9
jump jump.dat 1  0 9
drift drift.dat 1  0 9
zeros /dev/zero 1  0 9
ten ten.dat 10  0 9
many many.dat 1  9 99
twelve silica_300K.dat 2 12 0.1 9
END
batch bad.csv >bad
check 'what is wrong, and what is odd' "$(cat "$source/tests/tools/batch_messages.txt")" \
    "$(sed -n 's/^\([a-z0-9]*\),\(ok\|failed\),\(".*"\|[^,]*\),.*/\1: \2 \3/p' bad | cut -c 1-200)"
check 'status and count' '1 dorvek-batch: 23 rows, 16 failed' "$status $(cat errors)"
check 'as many fields everywhere' 43 "$(sed 's/"[^"]*"//g' bad | awk -F , '{ print NF }' | uniq)"
printf 'file,partial,rmin,rmax\nsilica_300K.dat,2,1.4,"1.9\n1.8"\n' >feed.csv
batch feed.csv >feed
check 'a number on two lines' '1,failed,"rmax is no number: 1.9' "$(sed -n 2p feed)"
printf 'file,partial,rmin,rmax\na.dat,1,0,9\n%s/jump.dat,1,0,9\n' "$PWD" >two_bins/beside.csv
batch two_bins/beside.csv >/dev/null
check 'files beside the table, and elsewhere' 0 "$status"
check 'no data file is created' 'gone*' "$(echo gone*)"

# Tables in other clothes.
printf '\357\273\277\r\nfile,name,partial,rmin,rmax,x\r\n\r\n  \r\nsilica_300K.dat,%079dé,2,1.4,2.2,"a\r\n""b""\tc"\r\nsilica_300K.dat,caf\351s,2,1.4,2.2' 0 >odd.csv
batch odd.csv >odd
check 'odd characters' "$(printf '1,"a\r\n""b""\tc",ok,,500,2.000000E-02,g,1,silica_300K.dat,%079d,2\n2,,ok,,500,2.000000E-02,g,1,silica_300K.dat,caf\357\277\275s,2' 0)" \
    "$(sed '1d; s/,1\.39000.*//' odd)"
batch odd
check 'results fed back' 2 "$status"
printf 'file,partial,rmin,rmax\ngone,2,1,2\nsilica\0x,2,1,2\n%0300d/x,2,1,2\n' 0 >names.csv
batch names.csv >out
check 'names of no file' 'no such file: gone
Bad file specification: silica
Cannot open file: File name too long: 000' "$(sed 1d out | cut -d , -f 3 | cut -c 1-41)"
check 'only headings' 1 "$(head -n 1 good.csv | "$bin/dorvek-batch" | wc -l)"

# Calls and ends.
for call in 'no column partial:file,rmin,rmax' 'no column rmax:file,partial,rmin' 'no headings:'; do
    printf '%s\n' "${call#*:}" >wrong.csv
    batch wrong.csv >out
    check "a table with ${call%%:*}" 2 "$status$(cat out)"
    check 'and why' 1 "$(grep -c "${call%%:*}" errors)"
done
printf 'file,partial,rmin,rmax\n"silica' >wrong.csv
batch wrong.csv >out
check 'a quote that is not closed' '1 dorvek-batch: wrong.csv, row 1: a quote is not closed' "$status $(cat errors)"
batch -j 0 good.csv
check 'no cores' 2 "$status"
for stream in '>/dev/full' '>&-'; do
    status=0
    eval "\"\$bin/dorvek-batch\" good.csv 2>errors $stream" || status=$?
    check "standard output $stream" '1 dorvek-batch: cannot write' "$status $(sed 's/: [^:]*$//' errors)"
done
# A cell that memory cannot hold. The address sanitizer takes more than any limit leaves.
small="ulimit -v 30000; exec '$bin/dorvek-batch'"
if sh -c "$small --version" >out 2>&1; then
    status=0
    head -c 30000000 /dev/zero | sh -c "$small" >out 2>errors || status=$?
    check 'a cell too large' '1 dorvek-batch: not enough memory' "$status $(cat out errors)"
fi
{ "$bin/dorvek-batch" good.csv 2>errors || :; } | :
check 'a reader that goes away' '' "$(cat errors)"
exit "$failed"
