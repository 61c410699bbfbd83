#!/bin/sh
# test.sh BUILD: installs BUILD below a scratch directory, moves that, and tries it.
set -eu
build=$(cd "$1" && pwd)
cd "$(dirname "$0")"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
DESTDIR=$scratch/staged cmake --install "$build" --prefix /opt/here >"$scratch/log"
mv "$scratch/staged/opt/here" "$scratch/moved away"
./try.sh "$scratch/moved away"
