#!/bin/sh
# session.sh BUILD SESSION...: types what follows "$ " in each SESSION, with the programs of BUILD,
# in a scratch directory that holds the data of examples, references and tools. Everything shown,
# and an exit status other than 0 in brackets, has to stand below it in the SESSION. Lines that
# begin with # are comments.
set -u
PATH=$(cd "$1" && pwd):$PATH
shift
root=$(cd "$(dirname "$0")/../.." && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

show() {
    while IFS= read -r line; do
        case $line in
        '# '*) printf '%s\n' "$line" ;;
        '$ '*)
            printf '%s\n' "$line"
            eval "${line#??}" </dev/null 2>&1
            status=$?
            [ "$status" -eq 0 ] || echo "[$status]"
            ;;
        esac
    done <"$1"
}

failed=0
for session; do
    rm -rf "$scratch/run"
    mkdir "$scratch/run"
    cp "$root"/examples/silica/*.dat "$root"/tests/references/*.dat \
        "$root"/tests/tools/*.csv "$scratch/run"
    (cd "$scratch/run" && show "$session") >"$scratch/shown"
    diff -u "$session" "$scratch/shown" || failed=1
done
exit "$failed"
