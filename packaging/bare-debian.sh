#!/bin/sh
# bare-debian.sh TREE.tar FILE...
# Tries packages on a bare Debian 12: the FILEs that are .debs are installed together, tried by a user
# without rights, and removed; each .tar.gz is unpacked and tried. TREE.tar holds the bare system with
# what the packages depend on, and what the example of the module needs. It is made with debootstrap
# if it is not there, which takes some minutes and the network. Needs root.
set -eu
tree=$1
shift
for file; do
    [ -f "$file" ] || { echo "bare-debian.sh: no file $file" >&2 && exit 1; }
done
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
install -m 644 -t "$root/tmp" "$(dirname "$0")/try.sh" "$@"

inside() { env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin chroot "$@"; }
as_user() { inside --userspec=nobody:nogroup "$root" "$@"; }
files() { (cd "$root" && find etc usr var/lib | sort); }
if ls "$root"/tmp/*.deb >/dev/null 2>&1; then
    files >"$root/before"
    inside "$root" sh -c 'dpkg -i /tmp/*.deb'
    as_user sh /tmp/try.sh /usr
    inside "$root" sh -c 'ls /tmp/*.deb | sed "s|.*/||; s|_.*||" | xargs dpkg --purge'
    left=$(files | grep -vFxf "$root/before" || :)
    [ -z "$left" ] || { echo "bare-debian.sh: dpkg --purge leaves $left" >&2 && exit 1; }
fi
for file in "$root"/tmp/*.tar.gz; do
    [ -f "$file" ] || continue # there is none
    packed=${file#"$root"}
    as_user mkdir "$packed.d"
    as_user tar -C "$packed.d" --strip-components=1 -xzf "$packed"
    as_user sh /tmp/try.sh "$packed.d"
done
