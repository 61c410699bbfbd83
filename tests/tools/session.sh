#!/bin/sh
# session.sh BUILD SESSION...: types what follows "$ " in each SESSION, with the programs of BUILD,
# in a scratch directory that holds the data of examples, references and tools, and two dialogues
# with theirs. A command goes on while its lines end in a backslash; lines that begin with "> "
# below it are typed to it. Everything that it shows, and an exit status other than 0 in brackets,
# has to stand below that. Lines that begin with # are comments. Where it shows anything else, the
# difference is one that patch takes.
set -eu
PATH=$(cd "$1" && pwd):$PATH
shift
root=$(cd "$(dirname "$0")/../.." && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
unset TABSIZE # the program reads it; other programs write numbers as the locale has them
export LC_ALL=C.UTF-8

# The session as a script that shows it again. The commands run in one shell.
script() {
    awk 'function finish() {
             if (command == "") return
             printf "cat <<\"%s\"\n%s%s%s\n", mark, shown, typed, mark
             gsub(/(^|\n)> /, "\n", typed)
             # Of a parenthesis alone between the braces, dash would forget where its output goes.
             printf "{ :\n%s} <<\"%s\"%s%s\nended $?\n", command, mark, typed == "" ? "\n" : typed, mark
             command = shown = typed = ""
         }
         BEGIN {
             mark = "-- end of what is shown or typed --"
             print "exec 2>&1; ended() { [ $1 -eq 0 ] || echo \"[$1]\"; }"
         }
         goes_on || /^\$ / {
             if (!goes_on) finish()
             command = command (goes_on ? $0 : substr($0, 3)) "\n"
             shown = shown $0 "\n"
             goes_on = /\\$/
             begun = 1
             next
         }
         /^> / && begun { typed = typed $0 "\n"; next }
         { begun = 0 }
         /^# / { finish(); printf "cat <<\"%s\"\n%s\n%s\n", mark, $0, mark }
         END { finish() }' "$1"
}

failed=0
for session; do
    rm -rf "$scratch/run"
    mkdir "$scratch/run"
    cp -R "$root"/examples/silica/*.dat "$root"/tests/references/*.dat "$root"/tests/tools/*.csv \
        "$root"/tests/e2e/two_bins "$root"/tests/e2e/different_grids "$scratch/run"
    script "$session" >"$scratch/script"
    (cd "$scratch/run" && sh "$scratch/script") >"$scratch/shown" || :
    diff -u -F '^[$] ' "$session" "$scratch/shown" || failed=1
done
exit "$failed"
