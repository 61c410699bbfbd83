#!/bin/sh
# bare-debian.sh TREE.tar [python]
# Installs the packages of build/companions on a bare Debian 12 and tries them there as a user
# without rights; with `python`, those of build/python as well. TREE.tar holds the bare system, with
# `python` also what the example of the module needs. It is made with debootstrap if it is not
# there, which takes a minute, with `python` several, and the network. Needs root.
set -eu
tree=$1
packages='build/companions/dorvek_*.deb build/companions/dorvek-*.tar.gz'
needed=
if [ "${2-}" = python ]; then
    packages="$packages build/python/python3-dorvek_*.deb build/python/python3-dorvek-*.tar.gz"
    needed=--include=python3-pandas,python3-matplotlib
fi
cd "$(dirname "$0")/.."
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
if [ ! -f "$tree" ]; then
    # shellcheck disable=SC2086 # none, or one
    debootstrap --variant=minbase $needed bookworm "$root"
    tar -C "$root" -cf "$tree.part" .
    mv "$tree.part" "$tree"
else
    tar -C "$root" -xf "$tree"
fi
chmod 755 "$root" # the root directory of all who are inside
# shellcheck disable=SC2086 # a list of patterns
install -m 644 -t "$root/tmp" packaging/try.sh $packages

inside() { env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin chroot "$@"; }
as_user() { inside --userspec=nobody:nogroup "$root" "$@"; }
inside "$root" sh -c 'dpkg -i /tmp/*.deb'
as_user sh /tmp/try.sh /usr
inside "$root" sh -c 'ls /tmp/*.deb | sed "s|.*/||; s|_.*||" | xargs dpkg -r'
for left in "$root"/usr/bin/dorvek* "$root/usr/share/doc/dorvek" \
    "$root/usr/lib/python3/dist-packages/dorvek"; do
    [ ! -e "$left" ] || { echo "bare-debian.sh: dpkg -r leaves $left" >&2 && exit 1; }
done
as_user sh -c 'mkdir /tmp/dorvek && cd /tmp/dorvek &&
    ls /tmp/*.tar.gz | xargs -n 1 tar --strip-components=1 -xzf'
as_user sh /tmp/try.sh /tmp/dorvek
