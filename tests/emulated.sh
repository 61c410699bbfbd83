#!/bin/sh
# emulated.sh BUILD EMULATOR: dialogues, documents and sessions once more, with the programs that
# BUILD holds for another processor. All has to be the same, but 0/0 is taken to have no sign there.
# Without what strace does: it sees the emulator.
set -eu
build=$(realpath "$1")
emulator=$(command -v "$2")
cd "$(dirname "$0")"
rm -rf "$build/emulated"
mkdir "$build/emulated"
for page in ../doc/*.1; do
    name=$(basename "$page" .1)
    printf '#!/bin/sh\nexec "%s" "%s" "$@"\n' "$emulator" "$build/$name" >"$build/emulated/$name"
    chmod +x "$build/emulated/$name"
done
cp -R e2e tools "$build/emulated"
sed -i 's/-NaN/ NaN/' "$build"/emulated/e2e/*/expected/*
for session in tools/*.txt; do
    awk 'function end() { if (step !~ /strace/) printf "%s", step; step = "" }
        /^[$#] / { end() }
        { step = step $0 "\n" }
        END { end() }' "$session" >"$build/emulated/$session"
done
failed=0
for case in "$build"/emulated/e2e/*/; do
    e2e/run_case.sh "$build/emulated/dorvek" "$case" || failed=1
done
e2e/documents.sh "$build/emulated" .. || failed=1
tools/session.sh "$build/emulated" "$build"/emulated/tools/*.txt || failed=1
exit "$failed"
