#!/bin/sh
# replicas.sh BIN: types the commands of two sessions, lines that begin with "$ ", and compares
# what they show, standard error first, and their exit status, if it is not 0, with what stands
# there.
set -eu
PATH=$(cd "$1" && pwd):$PATH
cd "$(dirname "$0")"
for session in replicas.txt ../references/replicas.txt; do
    grep '^[$#] ' "$session" | while read -r prompt command; do
        echo "$prompt $command"
        [ "$prompt" = '$' ] || continue
        status=0
        sh -c "$command" 2>&1 </dev/null || status=$?
        [ "$status" -eq 0 ] || echo "[$status]"
    done | diff -u "$session" -
done
