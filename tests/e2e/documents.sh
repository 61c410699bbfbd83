#!/bin/sh
# documents.sh BUILD SOURCE
# Replays what the documents show: in Markdown the blocks marked `console`, in the manual pages the
# literal displays under EXAMPLES that begin with a command. Lines that begin with "$ " are
# commands, and go on while they end in a backslash; those with "> " are typed to them; the rest is
# what they show on both streams, with an exit status other than 0 in brackets. "..." stands for
# what is left out at the beginning or at the end. Blank lines and trailing blanks do not count.
# The commands of one document follow one another: those of README in the root of a tree, those of
# a manual page beside the data of the example and files of the programs that it names.
set -eu
build=$(realpath "$1")
program=$(realpath "${DORVEK_UNDER_TEST:-$1/dorvek}")
source=$(realpath "$2")
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir "$scratch/bin"
ln -s "$build"/dorvek-* "$scratch/bin"
ln -s "$program" "$scratch/bin/dorvek"
# A cluster that runs one job after the other.
cat >"$scratch/bin/sbatch" <<'END'
#!/bin/sh
for argument; do case $argument in --array=1-*) jobs=${argument#*-*-*-} ;; esac done
for n in $(seq "$jobs"); do SLURM_ARRAY_TASK_ID=$n sh "$argument"; done
END
chmod +x "$scratch/bin/sbatch"
PATH=$scratch/bin:$PATH
failed=0

blocks() {
    case $1 in
    *.md) awk '/^```./ && !/console$|python$/ { print "$ false", $0 }
            /^```/ { inside = $0 == "```console"; next }
            inside' "$1" ;;
    *) awk '/^\.Sh / { examples = $2 == "EXAMPLES" }
            /^\.Ed/ { inside = 0 }
            inside == 1 { inside = /^\$ / ? 2 : 0 }
            inside == 0 && begins && !/^rule all:/ { print "$ false", $0 }
            { begins = 0 }
            inside
            examples && /^\.Bd -literal/ { inside = begins = 1 }' "$1" |
        sed 's/\\(aq/'"'"'/g; s/\\(oA/Å/g; s/\\(ha/^/g; s/\\-/-/g; s/\\&//g; s/\\e/\\/g' ;;
    esac
}

# What the programs that a manual page names have left behind, made of the example.
foreign() {
    awk 'FNR == 1 { print ++n, 500 } { print FNR, $0 }' ./*K.dat >rdf.out
    cut -d ' ' -f 1,6 silica_300K.dat | sed '1i @ title "O-O"' >rdf.xvg
    cut -d ' ' -f 1,2,4,6 silica_300K.dat | tr ' ' , | sed '1i r,Si-Si,Si-O,O-O' >silica_PDFpartials.csv
    cut -d ' ' -f -4,6 silica_300K.dat | tr ' ' , >table.csv
}

# replay DOCUMENT: in the working directory, step by step.
replay() {
    rm -rf "$scratch/steps"
    mkdir "$scratch/steps"
    blocks "$1" | awk -v steps="$scratch/steps/" '
        goes_on || /^\$ / {
            if (!goes_on) step = steps sprintf("%03d", ++n)
            dialogue = /^\$ dorvek$/
            print (goes_on ? $0 : substr($0, 3)) >(step ".command")
            goes_on = /\\$/
            next
        }
        /^> / {
            print substr($0, 3) >(step ".typed")
            if (dialogue && previous !~ /[:?]$/) print "no question:", $0 >(step ".shown")
        }
        !/^> / { print >(step ".shown") }
        { previous = $0 }'
    for command in "$scratch"/steps/*.command; do
        step=${command%.command}
        touch "$step.typed" "$step.shown"
        sh -n "$command"
        status=0
        eval "$(cat "$command")" <"$step.typed" >"$step.got" 2>&1 || status=$?
        [ "$status" -eq 0 ] || echo "[$status]" >>"$step.got"
        sed -i '/^ *$/d' "$step.got" "$step.shown"
        lines=$(($(wc -l <"$step.shown") - 1))
        case $(sed -n '1p;$p' "$step.shown") in
        ...*) [ "$lines" -eq 0 ] || { echo ... && tail -n "$lines" "$step.got"; } ;;
        *...) { head -n "$lines" "$step.got" && echo ...; } ;;
        *) cat "$step.got" ;;
        esac | diff -uZ "$step.shown" - || { cat "$command" && failed=1; }
    done
}

HOME=$scratch/home
mkdir "$HOME"
for document in README.md examples/silica/README.md; do
    rm -rf "$scratch/tree"
    mkdir "$scratch/tree"
    cp -R "$source/examples" "$scratch/tree"
    ln -s "$program" "$scratch/tree/run"
    cd "$scratch/tree"
    replay "$source/$document"
done
# The pictures in README, of which the session there draws the second.
dorvek <examples/silica/answers_two_samples >/dev/null
dorvek-plot --unit Å -o si-o.svg >/dev/null
for picture in si-o.svg "$HOME/silica/window.svg"; do
    cmp "$picture" "$source/doc/${picture##*/}" || failed=1
done
for page in "$source"/doc/*.1; do
    rm -rf "$scratch/silica"
    cp -R "$source/examples/silica" "$scratch"
    cd "$scratch/silica"
    foreign
    replay "$page"
done
cd "$source"
version=$("$build/dorvek-batch" --version)
stale=$(
    exec 2>&1
    grep -LFx ".Os dorvek $version" doc/*.1
    "$program" --version | grep -q "^dorvek $version:" || echo dorvek
    grep -LFx "version: $version" CITATION.cff
    grep -LFx "date-released: $(sed -n "s/^## $version - //p" CHANGELOG.md)" CITATION.cff
    grep -LF "\`dorvek $version\`" README.md
) || :
[ -z "$stale" ] || { echo "not of version $version: $stale" && failed=1; }
exit "$failed"
