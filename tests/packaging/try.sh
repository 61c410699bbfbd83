#!/bin/sh
# try.sh PREFIX: does the manual's example work with what is installed below PREFIX?
set -eu
share=$1/share
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
zcat -f "$share"/man/man1/dorvek.1* |
    sed -n '/^printf.*| dorvek$/{s/\\(aq/'"'"'/g; s/\\e/\\/g; p;}' >"$scratch/example"
cp "$share"/doc/dorvek/examples/silica/*.dat "$scratch"
cd "$scratch"
PATH=$1/bin:$PATH sh ./example >shown
# The running number of the data at 2.29 less that at 1.29.
grep '^ CN=     4\.00782  +/- ' shown dorvek.res
