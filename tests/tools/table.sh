#!/bin/sh
# table.sh PROGRAM SOURCE: dorvek-table on numbered results, on results of PROGRAM, on damaged ones.
. "$2/tests/tools/check.sh"
table=$tools/dorvek-table

# Every value is its number in the file, so that a row shows which one it took.
line=------------------------------------------------
numbered() { # FIRST NAME
    printf " $line\n  \n %-80s\n  \n" "$2"
    # shellcheck disable=SC2046 # a list of words
    set -- $(seq "$1" $(($1 + 23)))
    printf ' pdf #:   %s\n  \n rmin=   %s  rmax=   %s\n  \n' "$1" "$2" "$3" && shift 3
    printf ' CN=     %s  +/-   %s\n Rmea=   %s  +/-   %s\n Rmod=   %s\n  \n var=    %s  +/-   %s
 varl=   %s  varr=   %s\n adif=   %s  arat=   %s\n  \n pmo3=   %s  +/-   %s\n skew=   %s  +/-   %s
  \n pmo4=   %s  +/-   %s\n kurt=   %s  +/-   %s\n cum4=   %s  +/-   %s\n  \n' "$@"
}
{
    printf 'analysis of rmc pdfs\n \nfile: %-256s\n \nfile: %-256s\n \n' a.dat ' b,c.dat'
    numbered 1 "$line"
    numbered 25 'file: "x", y'
    printf '  \n statistics: \n  \n doff=   49\n  \n mean ?\n stud=   -NaN  sgfc=   51\n  \n'
    printf ' variance ?\n stud=   52  sgfc=   INF\n  \n distributions ?\n doff=   54\n'
    printf ' chsq=   55  sgfc=   56\n  \n%s\n' $line
} >numbered.res
tests='49,NaN,51,52,INF,54,55,56'
check 'numbered values' "numbered.res,1,1,a.dat,$line,$(seq -s , 1 24),$tests
numbered.res,1,2,\"b,c.dat\",\"file: \"\"x\"\", y\",$(seq -s , 25 48),$tests" \
    "$("$table" numbered.res | sed 1d)"
check 'tabs, no quotes' '1	2	b,c.dat	file: "x", y	25' \
    "$("$table" --tsv numbered.res | sed -n 3p | cut -f 2-6)"

# Two windows in one directory, one in another; names that look like the file's own lines.
mkdir 'one, "two"' three
(cd 'one, "two"' && printf '%s\n' 1 "$silica/silica_300K.dat" 3 " $line" 2 0 '1.4 1.9' y \
    2 0 '1.5 1.8' n n | "$program" >/dev/null)
(cd three && printf '%s\n' 1 "$silica/silica_1500K.dat" 3 ' statistics: ' 2 0 '1.4 1.9' n n |
    "$program" >/dev/null)
printf '%s\n' one*/dorvek.res three/dorvek.res | "$table" - >table.csv
check 'rows from the program' "\"one, \"\"two\"\"/dorvek.res\",1,1,$silica/silica_300K.dat, $line
\"one, \"\"two\"\"/dorvek.res\",2,1,$silica/silica_300K.dat, $line
three/dorvek.res,1,1,$silica/silica_1500K.dat, statistics:" \
    "$(sed '1d; s/,2,1\.[34]9000,.*//' table.csv)"

# What is damaged is named, and costs no other row.
head -c -100 one*/dorvek.res >cut.res
sed 's/varl/vrl/' three/dorvek.res >label.res
head -n 4 three/dorvek.res >none.res
echo text >text.res
status=0
"$table" cut.res label.res none.res text.res gone.res three/dorvek.res >rows 2>errors || status=$?
check 'rows in spite of damage' '1 results cut.res three/dorvek.res' \
    "$status $(cut -d , -f 1 rows | paste -s -d ' ')"
check 'what is wrong' 'dorvek-table: cut.res: report 2 is cut short or damaged
dorvek-table: label.res: report 1 is cut short or damaged
dorvek-table: none.res: no report
dorvek-table: text.res: no results file of dorvek
dorvek-table: gone.res: cannot be read' "$(cat errors)"
exit "$failed"
