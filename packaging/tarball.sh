#!/bin/sh
# tarball.sh BUILD: packs the programs of BUILD, which have to be static, into
# BUILD/dorvek-VERSION-linux-PROCESSOR.tar.gz, for any Linux. The same programs give the same bytes.
# The licences of what they hold are copied from this machine, which has to be a Debian.
set -eu
build=$(cd "$1" && pwd)
cd "$(dirname "$0")/.."
name=$(sed -n 's/^DORVEK_TARBALL:INTERNAL=//p' "$build/CMakeCache.txt")
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
tree=$scratch/$name
cmake --install "$build" --strip --prefix "$tree" >"$scratch/log"
for program in "$tree"/bin/*; do
    if readelf -l "$program" | grep -q INTERP; then
        echo "tarball.sh: ${program##*/} is not static" >&2
        exit 1
    fi
done
doc=$tree/share/doc/dorvek
cp packaging/debian/copyright "$doc/COPYRIGHT"
mkdir "$doc/licences"
cp -L /usr/share/common-licenses/LGPL-2.1 /usr/share/common-licenses/GPL-3 "$doc/licences"
cp /usr/share/doc/libc6/copyright "$doc/licences/glibc"
cp /usr/share/doc/libstdc++6/copyright "$doc/licences/gcc"

SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct)}
tar -C "$scratch" --sort=name --mtime="@$SOURCE_DATE_EPOCH" --mode=u=rwX,go=rX \
    --owner=0 --group=0 --numeric-owner -cf "$scratch/tar" "$name"
gzip -9n <"$scratch/tar" >"$build/$name.tar.gz"
