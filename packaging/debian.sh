#!/bin/sh
# debian.sh OUT: makes the Debian packages of the last commit, source and binaries, in the folder OUT.
# The same commit gives the same bytes, but for what .buildinfo and .changes tell of the machine.
set -eu
mkdir -p "$1"
out=$(cd "$1" && pwd)
cd "$(dirname "$0")/.."
. packaging/packages.sh
# shellcheck disable=SC2086 # lists of words
need dpkg-dev debhelper dh-python g++ cmake $companions_need $python_need
version=$(sed -n 's/^project(dorvek VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
packed=$(dpkg-parsechangelog -l packaging/debian/changelog -S Version)
if [ "${packed%-*}" != "$version" ]; then
    echo "debian.sh: packaging/debian/changelog has version $packed, CMakeLists.txt $version" >&2
    exit 1
fi
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
git archive --prefix="dorvek-$version/" HEAD >"$scratch/tar"
gzip -9n <"$scratch/tar" >"$scratch/dorvek_$version.orig.tar.gz"
tar -C "$scratch" -xf "$scratch/tar"
cp -R "$scratch/dorvek-$version/packaging/debian" "$scratch/dorvek-$version"
SOURCE_DATE_EPOCH=$(git log -1 --format=%ct)
export SOURCE_DATE_EPOCH DEB_BUILD_OPTIONS=noautodbgsym
(cd "$scratch/dorvek-$version" && dpkg-buildpackage -us -uc)
rm -f "$out"/*dorvek_*
mv "$scratch"/*dorvek_* "$out"
