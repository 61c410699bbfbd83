#!/bin/sh
# run_case.sh PROGRAM CASE [--accept]
# Runs PROGRAM, or the one that DORVEK_UNDER_TEST names, on the typed answers and data files
# of the directory CASE, in a scratch copy of it, and compares terminal, standard error, exit status,
# dorvek.res and the names of the files left behind with CASE/expected.
# --accept writes what came out to CASE/expected instead; review the difference like code.
set -eu
program=$(realpath "${DORVEK_UNDER_TEST:-$1}")
case=$2
unset TABSIZE # which the program reads
export LC_ALL=C
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir "$scratch/got" "$scratch/run"
cp -R "$case/." "$scratch/run"
rm -rf "$scratch/run/expected" "$scratch/run/stdin"
status=0
(cd "$scratch/run" && exec "$program") <"$case/stdin" \
    >"$scratch/got/stdout" 2>"$scratch/got/stderr" || status=$?
echo "$status" >"$scratch/got/status"
(cd "$scratch/run" && find . -type f | sort) >"$scratch/got/files"
mv "$scratch/run/dorvek.res" "$scratch/got"
if [ "${3-}" = --accept ]; then
    rm -rf "$case/expected"
    cp -R "$scratch/got" "$case/expected"
else
    diff -ru "$case/expected" "$scratch/got"
fi
