#!/bin/sh
# test.sh BUILD [packages]: installs BUILD below a scratch directory, moves that, and tries it.
# With `packages`, does the same with what the packages of BUILD hold, which has to be static.
set -eu
build=$(cd "$1" && pwd)
cd "$(dirname "$0")"
fail() {
    echo "test.sh: $*" >&2
    exit 1
}
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

DESTDIR=$scratch/staged cmake --install "$build" --prefix /opt/here >"$scratch/log"
mv "$scratch/staged/opt/here" "$scratch/moved away"
./try.sh "$scratch/moved away"
[ "${2-}" = packages ] || exit 0

rm -f "$build"/dorvek[-_]*.tar.gz "$build"/dorvek[-_]*.deb
(umask 077 && cmake --build "$build" --target package >"$scratch/log")
dpkg-deb -x "$build"/dorvek_*.deb "$scratch"
tar -xzf "$build"/dorvek-*.tar.gz -C "$scratch"
dpkg-deb -c "$build"/dorvek_*.deb | awk '!/r-[x-] root\/root/ {print; shut = 1} END {exit shut}' ||
    fail 'not open to all, or not of root'
needs=$(dpkg-deb -f "$build"/dorvek_*.deb Depends)
[ -z "$needs" ] || fail "the package depends on $needs"
for prefix in "$scratch/usr" "$scratch"/dorvek-*; do
    ./try.sh "$prefix"
    LC_ALL=C ldd "$prefix/bin/dorvek" 2>&1 | grep 'not a dynamic executable' ||
        fail "$prefix/bin/dorvek is not static"
done
