#!/bin/sh
# bare-debian.sh TREE.tar
# Installs the packages of build/companions and build/python on a bare Debian 12 and tries them there
# as a user without rights. TREE.tar holds the bare system, and what the example of the module needs
# besides; it is made with debootstrap if it is not there, which takes minutes and the network.
# Needs root.
set -eu
tree=$1
cd "$(dirname "$0")/.."
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
if [ ! -f "$tree" ]; then
    debootstrap --variant=minbase --include=python3-pandas,python3-matplotlib bookworm "$root"
    tar -C "$root" -cf "$tree.part" .
    mv "$tree.part" "$tree"
else
    tar -C "$root" -xf "$tree"
fi
chmod 755 "$root" # the root directory of all who are inside
install -m 644 -t "$root/tmp" \
    packaging/try.sh build/companions/dorvek_*.deb build/companions/dorvek-*.tar.gz \
    build/python/python3-dorvek_*.deb build/python/python3-dorvek-*.tar.gz

inside() { env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin chroot "$@"; }
as_user() { inside --userspec=nobody:nogroup "$root" "$@"; }
inside "$root" sh -c 'dpkg -i /tmp/dorvek_*.deb /tmp/python3-dorvek_*.deb'
as_user sh /tmp/try.sh /usr
inside "$root" dpkg -r dorvek python3-dorvek
for left in "$root"/usr/bin/dorvek* "$root/usr/share/doc/dorvek" \
    "$root/usr/lib/python3/dist-packages/dorvek"; do
    [ ! -e "$left" ] || { echo "bare-debian.sh: dpkg -r leaves $left" >&2 && exit 1; }
done
as_user sh -c 'mkdir /tmp/dorvek && cd /tmp/dorvek &&
    ls /tmp/*.tar.gz | xargs -n 1 tar --strip-components=1 -xzf'
as_user sh /tmp/try.sh /tmp/dorvek
