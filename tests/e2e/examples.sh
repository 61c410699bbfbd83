#!/bin/sh
# examples.sh PROGRAM SOURCE
# Replays the silica sessions, where each must give its expected terminal and dorvek.res, and the
# README's console blocks. In these, lines that begin with "> " are typed, the rest is shown; a
# block that begins with "..." shows the end of a session. Trailing blanks do not count there.
set -eu
program=$(realpath "${DORVEK_UNDER_TEST:-$1}")
source=$(realpath "$2")
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir "$scratch/examples"
cp -R "$source/examples/silica" "$scratch/examples"
cd "$scratch"
blocks=0
for answers in answers answers_two_samples; do
    expected=examples/silica/expected/$answers
    "$program" <"examples/silica/$answers" >shown
    diff -u "$expected.out" shown
    diff -u "$expected.res" dorvek.res
    awk -v start="\$ ./run < examples/silica/$answers" \
        '/^```/ { inside = 0 } inside; $0 == start { inside = 1 }' "$source/README.md" >block
    grep '^> ' block | cut -c 3- | diff - "examples/silica/$answers" >typed || true
    grep -v '^> ' block | sed '/^\.\.\.$/d' >readme
    if grep -q '^\.\.\.$' block; then
        tail -n "$(wc -l <readme)" shown >end
        mv end shown
    elif [ -s typed ]; then
        cat typed
        exit 1
    fi
    diff -uZ shown readme
    [ "$(wc -l <readme)" -gt 10 ] && blocks=$((blocks + 1))
done
[ "$blocks" -eq 2 ]
