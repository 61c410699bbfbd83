#!/bin/sh
# torture.sh BUILD JOB
# Lets every system call of a job below fail once, in turn, in every way that the call has, and sends a
# signal at each. What came out has to be what it is without the fault, or the status and a message
# say that it is not, with the reason that the system gave: no wrong number, no file of which half is
# new, nothing left behind, no file of the user's lost. Wants the static programs: the faults of a
# dynamic loader are not ours. Needs strace.
set -eu
build=$(realpath "$1")
silica=$(realpath "$(dirname "$0")/../../examples/silica")
job=$2

# Calls and how they fail. A call that is not here is only met by signals; so is brk, whose failures
# strace cannot tell as the kernel does.
faults='openat EMFILE EIO EINTR|read EIO EINTR|write ENOSPC EIO EINTR|close EIO EINTR|lseek EIO
newfstatat EIO|statx EIO|readlink EACCES|readlinkat EACCES|unlink EIO|rename EIO ENOSPC|link EIO
fchmod EPERM|ftruncate EIO|fsync EIO|mmap ENOMEM|munmap ENOMEM|memfd_create EMFILE ENOMEM
pipe2 EMFILE|dup2 EMFILE|dup3 EMFILE|clone EAGAIN ENOMEM|clone3 EAGAIN ENOMEM|vfork EAGAIN
execve EACCES ENOMEM|wait4 EINTR|poll EINTR ENOMEM|sched_getaffinity EINVAL'
reasons='Too many|Input/out|No space|[Nn]ot enough mem|allocate mem|Interrupted|denied|permitted|temporar'

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir "$scratch/data"
cd "$scratch/data"
cp "$silica/silica_300K.dat" a.dat
cp "$silica/silica_1500K.dat" b.dat
printf '%s\n' 1 a.dat 3 name 2 0 '1.4 2.2' y 2 0 '1.4 2.1' n n >answers
printf '%s\n' T,file,partial,rmin,rmax 3,a.dat,2,1.4,2.2 15,b.dat,2,1.4,2.2 3,a.dat,2,1.4,2.3 \
    15,b.dat,2,1.4,2.3 >windows.csv
"$build/dorvek" <answers >shown && mv dorvek.res old.res
"$build/dorvek-batch" windows.csv >results.csv
for name in picture.svg out-1.dat; do echo 'of the user' >$name; done
cd ..

# start COMMAND...: the job, below COMMAND.
start() {
    case $job in
    dorvek) "$@" "$build/dorvek" <answers ;;
    batch) "$@" "$build/dorvek-batch" -j 2 windows.csv ;;
    convert) "$@" "$build/dorvek-convert" columns --running --step all -o out a.dat ;;
    peaks) "$@" "$build/dorvek-peaks" --partial 2 --first a.dat b.dat ;;
    plot) "$@" "$build/dorvek-plot" --file a.dat --partial 2 -o picture.svg ;;
    replicas) "$@" "$build/dorvek-replicas" --by T --compare 3 15 results.csv ;;
    table) "$@" "$build/dorvek-table" old.res ;;
    esac
}

# try STRACE OPTION...: the job in a fresh folder `run`; streams, status and calls beside it.
try() {
    rm -rf run calls
    cp -R data run
    status=0
    case $job:$call in
    *:execve) set -- -f -P "$(command -v gnuplot)" "$@" ;; # not of strace
    batch:* | *:all | *:dup2) set -- -f "$@" ;; # threads and children as well
    esac
    (cd run && start timeout 20 strace -qq -o ../calls "$@" >../out 2>../err) || status=$?
}

# Nothing but whole rows that are right, or say that they have failed.
rows_hold() { ! grep -vxF -f whole.out out | grep -qv ,failed,; }

# Every file is as it was, as it shall be or, if the job makes it, not there; dorvek.res holds what was
# written before the fault. There is no other.
files_hold() {
    for path in data/* whole/* run/* run/.[!.]*; do
        file=${path##*/}
        if [ "$file" = dorvek.res ] && [ -f "run/$file" ]; then
            cmp -s -n "$(wc -c <"run/$file")" "run/$file" "whole/$file" || return 1
        elif [ -e "data/$file" ] || [ -e "run/$file" ]; then
            cmp -s "run/$file" "whole/$file" || cmp -s "run/$file" "data/$file" || return 1
        fi
    done
}

# holds FAULT: is what the last try left as it has to be?
holds() {
    case $status:$1 in
    143:signal=TERM | 130:signal=INT) files_hold && rows_hold ;;
    1:signal=*) grep -q 'gnuplot failed' err && files_hold ;; # the child has met it
    0:signal=*) return 1 ;;
    0:*) diff -r run whole && { [ "$job" = dorvek ] || cmp -s out whole.out; } ;;
    1:* | 255:*) files_hold && rows_hold && grep -qE "$reasons" out err ;;
    *) return 1 ;;
    esac
}

call=all
try -e trace=all
mv run whole
mv out whole.out
met=$(sed -nE 's/^([0-9]+ +)?([a-z0-9_]+)\(.*/\2/p' calls | grep -v exit | sort -u)
count=0
failed=0
for call in $met; do
    errors=$(echo "$faults" | tr '|' '\n' | sed -n "/^$call /{s/^$call//; s/ / error=/g; p;}")
    for fault in signal=INT signal=TERM $errors; do
        n=0
        while n=$((n + 1)) && try -e trace="$call" -e inject="$call:$fault:when=$n" &&
            grep -qE '\(INJECTED\)|^([0-9]+ +)?--- SIG(INT|TERM)|killed by' calls; do
            count=$((count + 1))
            holds "$fault" || { echo "$job: $call $n $fault: status $status: $(cat err)" && failed=1; }
        done
    done
done
echo "$job: $count faults"
exit "$failed"
