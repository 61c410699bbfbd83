#!/bin/sh
# Measures whole processes side by side and prints the table of bench/README.md: dorvek, and a bare
# loop that reads the same numbers. Installs what it needs with apt-get where it is missing.
set -eu
export LC_ALL=C
root=$(dirname "$(dirname "$(realpath "$0")")")
. "$root/packaging/packages.sh"
build_preset "$root" release valgrind

# In memory where that can be: the disk is not what is compared.
scratch=$(mktemp -d -p "$([ -d /dev/shm ] && echo /dev/shm || echo /tmp)")
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"
dorvek=$root/build/release/dorvek
limit=$scratch/limit
for program in limit side_by_side; do # as the release is built
    g++ -std=c++20 -O3 -DNDEBUG -static -o "$program" "$root/bench/$program.cpp"
done

# data BINS PARTIALS STEP FORMAT SHIFT: a file of peaks that move with the partial.
data() {
    awk -v bins="$1" -v partials="$2" -v step="$3" -v format="$4" -v shift="$5" 'BEGIN {
        for (i = 1; i <= bins; i++) {
            r = step * i
            line = sprintf(format, r)
            for (p = 1; p <= partials; p++) {
                d = r - 1.6 - 0.05 * p - shift
                g = d * d < 4 ? 6 * exp(-50 * d * d) : 0
                if (r > 2.4) g += 1 + 0.3 * sin(7 * r + p) / r
                cn[p] += g * r * r * step
                line = line sprintf(format format, g, cn[p])
            }
            print line
        }
    }'
}

# one FILE PARTIALS RMAX, two FILE FILE: the answers to type.
one() {
    printf '1\n%s\n%s\nsample\n1\n0\n1.4 %s\nn\nn\n' "$1" "$2" "$3"
}
two() {
    printf '2\n%s\n10\nfirst\n%s\n10\nsecond\n1\n0\n1\n0\n1.4 1.8\nn\nn\n' "$1" "$2"
}

# instructions INPUT PROGRAM...
instructions() {
    input=$1
    shift
    valgrind --tool=callgrind --callgrind-out-file=/dev/null "$@" 2>&1 >/dev/null <"$input" |
        awk '/Collected/ { print $4 }'
}

# row NAME ROUNDS INPUT FILES: one line of the table. INPUT and FILES hold an @ for each round's number.
row() {
    ./side_by_side "$2" "$3 $dorvek" "/dev/null $limit $4" >measured
    # shellcheck disable=SC2046 # a list of files
    awk -v name="$1" -v dorvek="$(instructions "$(echo "$3" | sed 's/@/1/')" "$dorvek")" \
        -v limit="$(instructions /dev/null "$limit" $(echo "$4" | sed 's/@/1/'))" '
        { ms[NR] = $1 / 1000; faults[NR] = $2; kb[NR] = $3 }
        END {
            printf "| %s | %.2f | %.2f | %.2f | %.2f | %.2f | %.2f | %d | %d | %d | %d |\n", name,
                dorvek / 1e6, limit / 1e6, dorvek / limit, ms[1], ms[2], ms[1] / ms[2],
                faults[1], faults[2], kb[1], kb[2]
        }' measured
}

for n in 1 2; do
    data 10000 10 0.002 '%12.6f' "0.0$n" >"f$n"
    data 10000 10 0.002 ' %.6E' "0.0$n" >"e$n"
done
data 10000 10 0.0021 '%12.6f' 0.01 >other_grid
data 10000 1 0.002 '%12.6f' 0.01 >narrow
data 400 3 0.02 '%12.6f' 0.01 >small1
for n in $(seq 2 2000); do cp small1 "small$n"; done
for n in $(seq 2000); do one "small$n" 3 2.1 >"small$n.typed"; done
two f1 f2 >f.typed
two e1 e2 >e.typed
two f1 other_grid >grids.typed
one narrow 1 1.8 >narrow.typed

echo "$(date +%F):$(sed -n 's/^model name.*://p;T;q' /proc/cpuinfo), $(nproc) cores," \
    "Debian $(cat /etc/debian_version), g++ $(g++ -dumpfullversion)," \
    "load average $(cut -d ' ' -f 1 /proc/loadavg)"
echo
echo "| work | Minstr | limit | ratio | ms | limit | ratio | faults | limit | peak KB | limit |"
echo "|---|---|---|---|---|---|---|---|---|---|---|"
row "two files, %12.6f" 15 f.typed "f1 f2"
row "two files, %.6E" 15 e.typed "e1 e2"
row "two files, two grids" 15 grids.typed "f1 other_grid"
row "one file, 10000 x 1" 101 narrow.typed narrow
row "one file, 400 x 3, 2000 times" 2000 small@.typed small@
