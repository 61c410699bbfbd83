# shellcheck shell=sh
# What the tests of the tools share. To be sourced with the arguments PROGRAM SOURCE.
# shellcheck disable=SC2034 # used there
set -eu
program=$1 tools=$2/tools silica=$2/examples/silica failed=0
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"
check() { # WHAT EXPECTED GOT
    [ "$2" = "$3" ] || { printf '%s\n  expected: %s\n  got:      %s\n' "$@" && failed=1; }
}
