# shellcheck shell=sh
# What the tests of the companions share. To be sourced with the arguments BIN SOURCE: the directory of
# the programs, and that of the sources.
# shellcheck disable=SC2034 # used there
set -eu
bin=$1 source=$2 silica=$2/examples/silica failed=0
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"
check() { # WHAT EXPECTED GOT
    [ "$2" = "$3" ] || { printf '%s\n  expected: %s\n  got:      %s\n' "$@" && failed=1; }
}
