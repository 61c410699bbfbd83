#!/bin/sh
# run_case.sh PROGRAM CASE [--accept]
# Runs PROGRAM on the typed answers and data files of the directory CASE, in a scratch copy of it,
# and compares terminal, standard error, exit status and dorvek.res with CASE/expected.
# --accept writes what came out to CASE/expected instead; review the difference like code.
set -eu
program=$1
case=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cp -R "$case/." "$scratch"
rm -rf "$scratch/expected" "$scratch/stdin"
mkdir "$scratch/got"
status=0
(cd "$scratch" && exec "$program") <"$case/stdin" \
    >"$scratch/got/stdout" 2>"$scratch/got/stderr" || status=$?
echo "$status" >"$scratch/got/status"
[ ! -f "$scratch/dorvek.res" ] || mv "$scratch/dorvek.res" "$scratch/got"
if [ "${3-}" = --accept ]; then
    rm -rf "$case/expected"
    cp -R "$scratch/got" "$case/expected"
else
    diff -ru "$case/expected" "$scratch/got"
fi
