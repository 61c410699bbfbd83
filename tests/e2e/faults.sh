#!/bin/sh
# faults.sh PROGRAM
# Faults of the system: what the user sees, how the run ends, and that every report finished before
# is in dorvek.res. Needs strace, and runs the program as an ordinary user.
set -eu
program=${DORVEK_UNDER_TEST:-$1}
umask 0 # whatever the caller's: the ordinary user reads, and the program creates, files made here
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir "$scratch/run"
cp "$program" "$scratch/dorvek"
chmod 755 "$scratch" "$scratch/dorvek"
[ "$(id -u)" -ne 0 ] || chown -R nobody "$scratch/run"
cd "$scratch/run"

# What is typed: data from FILE (default peak.dat), two windows, an end.
printf '1 1 0\n2 2 2\n3 1 4\n4 0 4\n5 0 4\n' >peak.dat
answers() {
    printf '1\n%s\n1\nname\n1\n0\n0 3.5\ny\n1\n0\n0 3.5\nn\nn\n' "${1-peak.dat}"
}

# become_user COMMAND...: root may read and write anything, so root becomes nobody.
become_user() {
    [ "$(id -u)" -ne 0 ] || set -- setpriv --reuid=nobody --regid=nogroup --clear-groups "$@"
    exec "$@"
}

# run COMMAND...: what it shows goes to ../out and ../err, its status to $status.
run() {
    status=0
    (become_user "$@") >../out 2>../err || status=$?
}

# expect NAME STATUS REPORTS [MESSAGE PLACE]: how it ended, the reports in dorvek.res, which holds
# nothing that belongs on a stream, and what standard error says: nothing, or a run-time error.
expect() {
    reports=0
    [ ! -f dorvek.res ] || reports=$(grep -c '^ cum4= ' dorvek.res) || true
    : >../expected
    [ $# -le 3 ] || printf '? Run-time error\n? %s\n? %s\n' "$4" "$5" >../expected
    if [ "$status" -ne "$2" ] || [ "$reports" -ne "$3" ] || ! diff ../expected ../err ||
        grep -s '^? ' dorvek.res; then
        echo "$1: status $status, $reports reports"
        exit 1
    fi
    rm -f dorvek.res
}

# must WHAT COMMAND...
must() {
    what=$1
    shift
    "$@" || { echo "$what" && exit 1; }
}

results='unit 16, file "dorvek.res"'

# An argument must not cost the last results.
echo kept >dorvek.res
for call in -h --versions '--help --version'; do
    # shellcheck disable=SC2086 # a word or two
    run ../dorvek $call </dev/null
    echo 'usage: dorvek    (no arguments; it asks for what it needs)' >../expected
    must "$call is a wrong call" cmp ../expected ../err
    : >../err
    must "$call keeps dorvek.res" grep -qx kept dorvek.res
    must "$call shows nothing else" [ "$status:$(cat ../out)" = 2: ]
done
for call in --help --version; do
    run ../dorvek $call
    sed -E '1s/^dorvek [0-9.]+: statistics .*/a name/; 2s/^usage: dorvek .*/a usage/' ../out >../lines
    must "$call" [ "$status:$(cat ../lines ../err)" = "0:a name
a usage" ]
    for closed in '/dev/full:No space left on device' '&-:Bad file descriptor'; do
        run sh -c "../dorvek $call >${closed%:*}"
        must "$call to $closed" [ "$status:$(cat ../err)" = "1:dorvek: cannot write: ${closed#*:}" ]
    done
done
must '--version keeps dorvek.res' grep -qx kept dorvek.res
rm dorvek.res

# Who may read and write what the program creates is the user's affair.
answers new.dat >../typed
run ../dorvek <../typed
must 'rights of new files' [ "$(stat -c %a dorvek.res new.dat | uniq)" = 666 ]
expect 'new files' 0 0

# dorvek.res
mkdir dorvek.res
answers >../typed
run ../dorvek <../typed
rmdir dorvek.res
expect 'a directory of that name' 255 0 'Cannot open file: Is a directory' "open, $results"
chmod a-w .
run ../dorvek <../typed
chmod u+w .
expect 'read-only directory' 255 0 'Cannot open file: Permission denied' "open, $results"
ln -s /dev/full dorvek.res
run ../dorvek <../typed
rm dorvek.res
expect 'full disk' 255 0 'Cannot write: No space left on device' "write, $results"
{
    answers | head -n 7
    for _ in $(seq 49); do printf 'y\n1\n0\n0 3.5\n'; done
    printf 'n\nn\n'
} >../typed
run ../dorvek <../typed
head -c 16384 dorvek.res >../fits
expect 'fifty windows' 0 50
run sh -c 'ulimit -f 32; ../dorvek' <../typed # blocks of 512 bytes
must 'what fits is written' cmp ../fits dorvek.res
expect 'file-size limit' 255 "$(grep -c '^ cum4= ' ../fits)" 'Cannot write: File too large' \
    "write, $results"

# The PDF file
{
    answers absent.dat | head -n 7 && printf 'n\ny\n'
    for _ in $(seq 8); do answers | head -n 7 && printf 'n\ny\n'; done
    answers
} >../typed
run sh -c 'ulimit -n 8; ../dorvek' <../typed
expect 'every file closed' 0 2
mkdir folder
answers folder >../typed
run ../dorvek <../typed
expect 'a directory as data' 255 0 'Cannot read: Is a directory' 'read, unit 15, file "folder", line 1'
cp peak.dat secret
chmod 0 secret
answers secret >../typed
run ../dorvek <../typed
expect 'unreadable data' 255 0 'Cannot open file: Permission denied' 'open, unit 15, file "secret"'
answers no/such/folder >../typed
run ../dorvek <../typed
expect 'no folder' 255 0 'Cannot open file: No such file or directory' \
    'open, unit 15, file "no/such/folder"'
answers >../typed
# inject FAULT FILE...: lets system calls on these files fail; calls lists them.
inject() {
    fault=$1
    shift
    run strace -qq -o calls -e "inject=$fault" "$@" ../dorvek <../typed
}
inject read:error=EIO:when=2 -P "$PWD/peak.dat"
expect 'failure in mid-read' 255 0 'Cannot read: Input/output error' \
    'read, unit 15, file "peak.dat", line 6'
run ../dorvek <../typed
tail -c +11 dorvek.res >../rest
inject write:retval=10:when=1 -P "$PWD/dorvek.res" # and the ten bytes are lost
must 'the rest is written' cmp ../rest dorvek.res
expect 'half a write' 0 2
run strace -qq -o calls -e trace=write -s 4096 ../dorvek <../typed
sed -n '/cum4=/{s/^write(1,.*/terminal/; s/^write(.*/file/; p;}' calls | tr '\n' ' ' >../order
must 'the terminal, then the file' grep -qx 'terminal file terminal file ' ../order
expect 'each report on the terminal first' 0 2
inject close:error=EIO -P "$PWD/dorvek.res"
expect 'failure on closing' 255 2 'Cannot write: Input/output error' "close, $results"
# Signals interrupt a call; a stream that another program left non-blocking is not ready at once.
inject close:error=EINTR -P "$PWD/dorvek.res"
expect 'interrupted closing' 0 2
for fault in read:error=EINTR write:error=EINTR read:error=EAGAIN write:error=EAGAIN; do
    inject "$fault:when=1+2" -P "$PWD/peak.dat" -P "$PWD/dorvek.res" -P "$scratch/typed" \
        -P "$scratch/out"
    expect "$fault" 0 2
done
inject read:error=EAGAIN:when=1 -e 'inject=?poll,ppoll:error=EINTR:when=1' -P "$PWD/peak.dat"
must 'it waits without a time limit' grep -Eq 'poll\(.*, 1, (-1|NULL)' calls
expect 'interrupted waiting' 0 2
inject read:error=EAGAIN:when=1 -e 'inject=?poll,ppoll:error=ENOMEM' -P "$PWD/peak.dat"
expect 'failure in waiting' 255 0 'Cannot read: Cannot allocate memory' \
    'read, unit 15, file "peak.dat", line 1'

# Standard streams
run sh -c '../dorvek <&-'
expect 'closed input' 255 0 'Attempt to read past end of file' 'read, unit *'
run ../dorvek <.
expect 'a directory as input' 255 0 'Cannot read: Is a directory' 'read, unit *'
run sh -c '../dorvek >&-' <../typed
expect 'closed output' 0 2
run sh -c '../dorvek >/dev/full' <../typed
expect 'full output' 0 2
run sh -c '(../dorvek; echo $? >status) | :' <../typed
status=$(cat status)
expect 'output that nobody reads' 0 2
# A line that memory cannot hold, or not twice, as one with tabs needs. The address sanitizer takes
# more than any limit leaves.
small='ulimit -v 60000; ../dorvek'
if sh -c "$small --help" 2>&1 | grep -q '^usage'; then
    for bytes in 64000000 33500000; do
        {
            answers | head -n 7
            head -c "$bytes" /dev/zero
            printf '\t\n'
        } >../typed
        run sh -c "$small" <../typed
        expect "a line of $bytes bytes" 255 1 'Cannot read: Cannot allocate memory' 'read, unit *'
    done
fi
run sh -c '../dorvek <&- 2>&-'
expect 'closed error' 255 0

# Signals at a prompt, with one report shown. Every question is seen before it is answered.
mkfifo ../in ../shown
shows() {
    while read -r line <&4; do
        case $line in *"$1"*) break ;; esac
    done
}
for signal in INT:130 TERM:143 KILL:137; do
    become_user env --default-signal=INT ../dorvek <../in >../shown 2>../err &
    exec 3>../in 4<../shown
    shows 'one or two pdfs'
    answers | head -n 6 >&3
    shows 'rmin, rmax'
    answers | sed -n 7p >&3
    shows 'more analysis'
    kill -s "${signal%:*}" $!
    status=0
    wait $! || status=$?
    exec 3>&- 4<&-
    expect "SIG${signal%:*} at a prompt" "${signal#*:}" 1
done
