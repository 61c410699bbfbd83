#!/bin/sh
# try.sh PREFIX: do the examples work with what is installed below PREFIX?
set -eu
fail() {
    echo "try.sh: $*" >&2
    exit 1
}
[ -x "$1/bin/dorvek" ] || fail "no program $1/bin/dorvek"
PATH=$1/bin:$PATH
share=$1/share
[ -f "$share/doc/dorvek/doc/si-o.svg" ] || fail 'no picture for README.md'
programs=$(find "$1/bin" -name 'dorvek*' | wc -l)
pages=$(find "$share/man/man1" -name 'dorvek*' | wc -l)
[ "$programs" -eq "$pages" ] || fail "$programs programs, but $pages manual pages"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cp -R "$share/doc/dorvek/examples" "$scratch"
cd "$scratch"
dorvek <examples/silica/answers_two_samples |
    cmp - examples/silica/expected/answers_two_samples.out || fail 'dorvek shows something else'
cd examples/silica
# The mean shift is that of the five means of r in double precision.
dorvek-peaks --partial 2 --common --first --name '{glass}_{T}K.dat' ./*.dat | dorvek-batch |
    dorvek-replicas --by T --pair glass --compare 300 1500 |
    grep '^Rmea,.*,0\.00722' || fail 'the mean does not move by 0.00722'
# The module, if it is there.
modules=$1/lib/python3/dist-packages
[ -d "$modules/dorvek" ] || exit 0
export PYTHONPATH="$modules" PYTHONDONTWRITEBYTECODE=1 MPLCONFIGDIR=.
/usr/bin/python3 shift.py | grep '^ *Rmea 1\.6162.* 0\.01198' || fail 'the bonds do not grow by 0.01198'
[ -s shift.png ] || fail 'no picture of the bonds'
