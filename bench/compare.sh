#!/bin/sh
# Measures whole processes side by side and prints the table of bench/README.md: dorvek, and a bare
# loop that reads the same numbers. Installs what it needs with apt-get where it is missing.
set -eu
export LC_ALL=C
root=$(dirname "$(dirname "$(realpath "$0")")")
. "$root/packaging/packages.sh"
build_preset "$root" release valgrind python3-pandas
# shellcheck disable=SC2086 # a list of words
build_preset "$root" companions $companions_need
# shellcheck disable=SC2086
build_preset "$root" python $python_need

# In memory where that can be: the disk is not what is compared.
scratch=$(mktemp -d -p "$([ -d /dev/shm ] && echo /dev/shm || echo /tmp)")
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"
dorvek=$root/build/release/dorvek
batch=$root/build/companions/dorvek-batch
convert=$root/build/companions/dorvek-convert
loop=$scratch/loop
for program in loop side_by_side; do # as the release is built
    g++ -std=c++20 -O3 -DNDEBUG -static -o "$program" "$root/bench/$program.cpp"
done
g++ -std=c++20 -O3 -DNDEBUG -static -DREAL=double -o double "$root/bench/loop.cpp"

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

# timed NAME ROUNDS COMMAND LOOP: one line of the table; side_by_side.cpp says what a command is.
# counted NAME ROUNDS COMMAND LOOP: the same with instructions.
timed() {
    echo "| $1 | ${5-| |} | $(./side_by_side "$2" "$3" "$4") |"
}
counted() {
    timed "$@" "$(for command in "$3" "$4"; do
        echo "$command" | sed 's/@/1/' | {
            read -r input program
            # shellcheck disable=SC2086 # a list of words
            valgrind --tool=callgrind --callgrind-out-file=/dev/null $program <"$input" 2>&1
        }
    done | awk '/Collected/ { n[++i] = $4 / 1e6 } END { printf "%.2f | %.2f | %.2f", n[1], n[2], n[1] / n[2] }')"
}

for n in 1 2; do
    data 10000 10 0.002 '%12.6f' "0.0$n" >"f$n"
    data 10000 10 0.002 ' %.6E' "0.0$n" >"e$n"
done
for form in f e; do
    printf '%s\n' 2 ${form}1 10 first ${form}2 10 second 1 0 1 0 '1.4 1.8' n n >$form.typed
done
data 400 3 0.02 '%12.6f' 0.01 >small1
for n in $(seq 2 2000); do cp small1 "small$n"; done
printf '%s\n' 1 small1 3 sample 1 0 '1.4 2.1' n n >small.typed
yes "$dorvek <small.typed" | head -n 2000 >one_by_one
for rows in 1000 2000 10000 100000; do
    awk -v rows=$rows 'BEGIN {
        print "file,partial,partials,rmin,rmax"
        for (i = 0; i < rows; i++) print "small" i % 2000 + 1 ",1,3,1.4,2.1"
    }' >$rows.csv
done
# 51 MB as LAMMPS writes them, and the same as columns.
data 500 3 0.02 ' %g' 0.01 | awk '{ row[NR] = NR $0; rows[NR] = $0 }
    END { for (step = 1; step <= 2000; step++) {
        print step * 1000, 500 >"lammps"
        for (i = 1; i <= 500; i++) { print row[i] >"lammps"; print rows[i] >"columns" } } }'
small="$(seq -f small%g -s ' ' 2000)"

echo "$(date +%F):$(sed -n 's/^model name.*://p;T;q' /proc/cpuinfo), $(nproc) cores," \
    "Debian $(cat /etc/debian_version), g++ $(g++ -dumpfullversion)," \
    "load average $(cut -d ' ' -f 1 /proc/loadavg)"
echo
echo "| work | Minstr | loop | ratio | ms | loop | ratio | peak KB | loop |"
echo "|---|---|---|---|---|---|---|---|---|"
counted "two files, %12.6f" 31 "f.typed $dorvek" "/dev/null $loop 1 f1 f2"
counted "two files, %.6E" 31 "e.typed $dorvek" "/dev/null $loop 1 e1 e2"
counted "one file, 400 x 3, 2000 times" 2000 "small.typed $dorvek" "/dev/null $loop 1 small@"
counted "2000 such files, one core" 9 "/dev/null $batch -j 1 2000.csv" "/dev/null $loop 1 $small"
timed "2000 such files, all cores" 9 "/dev/null $batch 2000.csv" "/dev/null $loop 1 $small"
timed "2000 such files, one dorvek each" 3 "one_by_one /bin/sh" "/dev/null $loop 1 $small"
timed "1000 such files, all cores" 9 "/dev/null $batch 1000.csv" "/dev/null $loop 1 ${small% small1001 *}"
timed "10000 such files, all cores" 5 "/dev/null $batch 10000.csv" "/dev/null $loop 5 $small"
timed "100000 such files, all cores" 3 "/dev/null $batch 100000.csv" "/dev/null $loop 50 $small"
for step in last mean 'all -o step'; do
    timed "2000 steps of LAMMPS, --step ${step% -o*}" 9 \
        "/dev/null $convert lammps --step $step lammps" "/dev/null ./double 1 lammps"
    timed "the same as columns, --step ${step% -o*}" 9 \
        "/dev/null $convert columns --running --step $step columns" "/dev/null ./double 1 columns"
done
# Reading alone, not the start of the interpreter; then the statistics of 41 bins, microseconds.
PYTHONPATH=$root/build/python/module /usr/bin/python3 - "$root/examples/silica/silica_300K.dat" <<'END'
import sys, time, timeit, dorvek, numpy, pandas
for name, read in ("numpy.loadtxt", numpy.loadtxt), ("pandas.read_csv", lambda f: pandas.read_csv(f, sep=r"\s+", header=None)), ("dorvek.read", dorvek.read):
    start = time.perf_counter()
    for f in "f1", "f2": read(f)
    print(f"| two files, %12.6f, {name} | | | | {1000 * (time.perf_counter() - start):.0f} | | | | |")
r, g, n = (a[:, 1] if a.ndim > 1 else a for a in dorvek.read(sys.argv[1]))
def in_numpy():
    lo, hi = numpy.searchsorted(r, (1.4, 2.2)) - 1; x, w = r[lo:hi + 1], g[lo:hi + 1]; total = w.sum(); m = x.size - 1; error = lambda values, mean: numpy.sqrt(((values - mean) ** 2 * w).sum() / m / total)
    shell = x * x * w * (r[1] - r[0]); mean = (w * x).sum() / total; d = x - mean; cn = n[hi] - n[lo]
    m2, m3, m4 = ((w * d**k).sum() / total for k in (2, 3, 4)); left, right = ((w * d * d)[side].sum() / total for side in (d <= 0, d >= 0))
    d2, d4 = error(d**2, m2), error(d**4, m4)
    return (cn, error(shell, shell.sum()) * cn / shell.sum(), mean, error(x, mean), x[w.argmax()], m2, d2, left, right, right - left, right / left, m3,
            error(d**3, m3), m3 / m2**1.5, (6 / m) ** 0.5, m4, d4, m4 / m2**2 - 3, (24 / m) ** 0.5, m4 - 3 * m2 * m2, 6 * m2 * d2 + d4)
assert numpy.allclose(in_numpy(), (peak := lambda: dorvek.peak(r, g, n, rmin=1.4, rmax=2.2))()[2:23], rtol=0.003)
print("41 of 500 bins: dorvek.peak, numpy:", *(f"{min(timeit.repeat(f, number=2000)) * 500:.1f}" for f in (peak, in_numpy)))
END
