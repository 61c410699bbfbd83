#!/bin/sh
# table.sh BIN SOURCE: dorvek-table on whole results files and on damaged ones.
. "$2/tests/tools/check.sh"
line=------------------------------------------------
dialogue() { printf '%s\n' "$@" n n | "$bin/dorvek" >/dev/null; }
mkdir 'one, "two"' three
(cd 'one, "two"' && dialogue 1 "$silica/silica_300K.dat" 3 " $line" 2 0 '1.4 1.9' y 2 0 '1.5 1.8')
(cd three && dialogue 2 "$silica/silica_300K.dat" 3 ' statistics: ' "$silica/silica_1500K.dat" 3 \
    'and "quote' 2 0 2 0 '1.4 1.9' y 2 0 2 0 '1.4 1.8' y 2 0 2 0 '1.4 1.7')
table() { # its rows go to out, what it says to errors
    status=0
    "$bin/dorvek-table" "$@" >out 2>errors || status=$?
}

table one*/dorvek.res three/dorvek.res
check 'which rows' "0 \"one, \"\"two\"\"/dorvek.res\",1,1 \"one, \"\"two\"\"/dorvek.res\",2,1 \
three/dorvek.res,1,1 three/dorvek.res,1,2 three/dorvek.res,2,1 three/dorvek.res,2,2 \
three/dorvek.res,3,1 three/dorvek.res,3,2" \
    "$status $(sed "1d; s|,$silica.*||" out | paste -s -d ' ')"
check 'names' " $line| $line| statistics:|\"and \"\"quote\"" \
    "$(sed '1d; s/.*\.dat,//; s/,2,1\..*//' out | head -n 4 | paste -s -d '|')"
grep ^three out >named
table - <three/dorvek.res
check 'standard input' "0 $(cat named)" "$status $(sed '1d; s|^-|three/dorvek.res|' out)"
# All numbers of a report, of which some are -NaN there.
res=$source/tests/e2e/two_bins/expected/dorvek.res
table "$res"
for row in 2:1,28p 3:29,51p; do
    check "the digits of row $row" "$(sed -n "${row#*:}; 56,66p" "$res" | grep -v '?' |
        grep -aoE -e '-?[0-9]+[.][0-9]+(E[-+][0-9]+)?|NaN' | sed 's/^-NaN/NaN/' | paste -s -d ,)" \
        "$(sed -n "${row%:*}p" out | cut -d , -f 7-)"
done
table --tsv three/dorvek.res
check 'tabs, no quotes' "1 2 $silica/silica_1500K.dat and \"quote 2" \
    "$(sed -n 3p out | cut -f 2-6 | tr '\t' ' ')"

# Damage: the whole reports are there, also behind it.
head -c -100 three/dorvek.res >cut.res
sed '16s/Rmea/Rmae/' three/dorvek.res >label.res
sed '/^ CN=/s/4\./4,/' three/dorvek.res >number.res
head -n 6 three/dorvek.res >none.res
head -n 2 three/dorvek.res >begun.res && echo 'file: ' >>begun.res
head -n 3 three/dorvek.res >named.res
echo text >text.res
: >empty.res
table cut.res label.res number.res none.res begun.res named.res text.res empty.res gone.res . three/dorvek.res
check 'rows in spite of damage' "1 results,report cut.res,1 cut.res,2 label.res,2 label.res,3 number.res,2 number.res,3 \
three/dorvek.res,1 three/dorvek.res,2 three/dorvek.res,3" \
    "$status $(cut -d , -f 1,2 out | uniq | paste -s -d ' ')"
check 'what is wrong' 'cut.res: report 3 is cut short or damaged
label.res: report 1 is cut short or damaged
number.res: report 1 is cut short or damaged
none.res: no report
begun.res: is cut short or damaged before the first report
named.res: is cut short or damaged before the first report
text.res: no results file of dorvek
empty.res: no results file of dorvek
gone.res: cannot be read: No such file or directory
.: cannot be read: Is a directory' "$(sed 's/^dorvek-table: //' errors)"
for call in '' --nonsense; do
    # shellcheck disable=SC2086 # none, or one
    table $call
    check "wrong call $call" '2 ' "$status $(cat out)"
done
exit "$failed"
