#!/bin/sh
# try.sh PREFIX: do the examples work with what is installed below PREFIX?
set -eu
[ -x "$1/bin/dorvek" ]
PATH=$1/bin:$PATH
share=$1/share
[ -f "$share/doc/dorvek/doc/si-o.svg" ] # the picture in README.md
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cp -R "$share/doc/dorvek/examples" "$scratch"
cd "$scratch"
dorvek <examples/silica/answers_two_samples | cmp - examples/silica/expected/answers_two_samples.out
cd examples/silica
dorvek-peaks --partial 2 --common --first --name 'silica_{T}K.dat' ./*.dat | dorvek-batch >peaks.csv
dorvek-replicas --by T peaks.csv 2>said | grep '^300,CN,1,4\.00781'
[ "$(find "$1/bin" -name 'dorvek*' | wc -l)" -eq "$(find "$share/man/man1" -name 'dorvek*' | wc -l)" ]
zcat -f "$share"/man/man1/dorvek.1* |
    sed -n '/^printf.*| dorvek$/{s/\\(aq/'"'"'/g; s/\\e/\\/g; p;}' | sh >shown
# The running number of the data at 2.29 less that at 1.29.
for report in shown dorvek.res; do
    grep '^ CN=     4\.00782  +/- ' "$report"
done
