"""Changes src in one place at a time and runs the tests, which should notice.

A mutant is killed if a test fails or does not end. One that no test kills needs a test, or an entry
in equivalent.txt that says why it does the same as the original. Mutants that do not compile, and
those of which an optimising compiler makes the same program, are not counted.
"""

import concurrent.futures
import os
import pathlib
import queue
import re
import resource
import shutil
import signal
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
WORK = ROOT / "build" / "mutation"
MEMORY = 4 << 30  # bytes a test may take
FILE = 256 << 20  # bytes a test may write into one file
CPU = 8  # seconds that a process may compute; unchanged, the slowest needs two
SECONDS = 120  # that a test program may take, waiting included

# Operators stand between blanks: the formatter sees to that.
OPERATORS = {
    "<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="], ">=": [">", "<"],
    "==": ["!="], "!=": ["=="], "&&": ["||"], "||": ["&&"],
    "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["*"],
    "<<": [">>"], ">>": ["<<"], "&": ["|"], "|": ["&"],
    "+=": ["-="], "-=": ["+="], "*=": ["/="], "/=": ["*="],
}
BETWEEN_BLANKS = re.compile(r"(?<= )(" + "|".join(map(re.escape, OPERATORS)) + r")(?= |$)")
REWRITES = [
    (re.compile(r"\+\+"), "--"),
    (re.compile(r"--"), "++"),
    (re.compile(r"!(?!=)"), ""),
    (re.compile(r"(?<=[ (\[:])-(?=[\w(])"), ""),
    (re.compile(r"\btrue\b"), "false"),
    (re.compile(r"\bfalse\b"), "true"),
    (re.compile(r"\bstd::min\b"), "std::max"),
    (re.compile(r"\bstd::max\b"), "std::min"),
]
INTEGER = re.compile(r"(?<![\w.])(0x[0-9A-F]+|[0-9][0-9']*)U?\b(?!\.)")
REAL = re.compile(r"(?<![\w.])[0-9]+\.[0-9]*(e-?[0-9]+)?f?")
STRING = re.compile(r'"(?:[^"\\]|\\.)*"')
NO_STATEMENT = re.compile(
    r"(return .|using|const|struct|enum|static|template|inline|namespace|auto|case|else|\[\[|#"
    r"|(std::\S+|float|int|bool|double|char|[A-Z]\w*)[*&]? \w+( = .*|\{.*|\(.*)?;)")


def negated_if(line, at):
    """The line with the condition of the `if` at `at` negated, or None if it ends elsewhere."""
    start = line.index("(", at)
    depth = 0
    for end in range(start, len(line)):
        depth += {"(": 1, ")": -1}.get(line[end], 0)
        if depth == 0:
            condition = line[start + 1:end]
            if ";" in condition:  # an initialiser comes first
                first, condition = condition.split("; ", 1)
                return f"{line[:start]}({first}; !({condition})){line[end + 1:]}"
            return f"{line[:start]}(!({condition})){line[end + 1:]}"
    return None


def mutations(line):
    """All changes of one line of code."""
    code = re.sub(r"//.*", "", STRING.sub(lambda m: '"' + "_" * (len(m[0]) - 2) + '"', line))
    code = re.sub(r"'(?:[^'\\]|\\.)'", lambda m: "'" + "_" * (len(m[0]) - 2) + "'", code).rstrip()
    if not code.strip() or code.lstrip().startswith(("#", "static_assert")):
        return
    def changed(match, text):
        return line[:match.start()] + text + line[match.end():]
    for match in BETWEEN_BLANKS.finditer(code):
        for text in OPERATORS[match[0]]:
            yield changed(match, text)
    for pattern, text in REWRITES:
        for match in pattern.finditer(code):
            yield changed(match, text)
    for match in re.finditer(r"\bif \(", code):
        if (negated := negated_if(line, match.start())) is not None:
            yield negated
    for match in INTEGER.finditer(code):
        yield changed(match, f"({match[0]} + 1)")
        if match[0] != "0":
            yield changed(match, f"({match[0]} - 1)")
    for match in REAL.finditer(code):
        yield changed(match, f"({match[0]} + 1)")
    for match in STRING.finditer(line[:len(code)]):
        yield line[:match.start() + 1] + "~" + line[match.start() + 1:]
    statement = code.strip()
    balanced = statement.count("(") == statement.count(")")
    if statement.endswith(";") and balanced and not NO_STATEMENT.match(statement):
        yield line[:len(line) - len(line.lstrip())] + ";"


def changes(file, lines):
    """The mutants of a file: line number, new line. A header has no statements to leave out, and its
    default values are left alone: zeros for the sake of the storage, that hardly anyone reads."""
    header = file.endswith(".hpp")
    for number, line in enumerate(lines):
        if header and re.match(r"\s+[\w:]+ \w+ = (0|0\.0f|false);", line):
            continue
        for text in dict.fromkeys(mutations(line)):
            if text != line and not (header and text.strip() == ";"):
                yield number, text


def equivalents():
    """The known equivalent mutants: file, line before, line after."""
    known, file, before = set(), "", ""
    for entry in (ROOT / "mutation" / "equivalent.txt").read_text().splitlines():
        if entry.startswith("- "):
            before = entry[2:]
        elif entry.startswith("+ "):
            known.add((file, before, entry[2:]))
        elif entry and not entry.startswith("#"):
            file = entry
    return known


def run(command, folder):
    """True if the command ends well within its limits."""
    def limit():
        resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
        resource.setrlimit(resource.RLIMIT_FSIZE, (FILE, FILE))
        resource.setrlimit(resource.RLIMIT_CPU, (CPU, CPU))
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    process = subprocess.Popen(command, cwd=folder, stdin=subprocess.DEVNULL,
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                               preexec_fn=limit, start_new_session=True)
    try:
        return process.wait(SECONDS) == 0
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        process.wait()
        return False


def build(folder, *targets):
    return subprocess.run(["ninja", "-C", folder, "-j", "1", *targets],
                          stdout=subprocess.DEVNULL).returncode == 0


def passes(folder):
    """True if every test passes on what stands in the folder; the quick ones go first."""
    tests = folder / "build" / "tests"
    slow = "RealSweep*:Accuracy*"
    ctest = ["ctest", "--stop-on-failure", "--timeout", "30", "-R"]
    return (run(["./dorvek_tests", "--gtest_fail_fast", f"--gtest_filter=-{slow}"], tests)
            and run([*ctest, "^e2e"], folder / "build")
            and run(["./dorvek_tests", f"--gtest_filter={slow}"], tests)
            and build(folder / "build")
            and run([*ctest, "^(fuzz|tools|packaging|conversions)"], folder / "build"))


def judge(folder, file, lines, number, text):
    """What became of the mutant: "no program", "killed", "same code" or "survived"."""
    try:
        (folder / file).write_text("\n".join([*lines[:number], text, *lines[number + 1:]]))
        if not build(folder / "build", "dorvek", "dorvek_tests"):
            return "no program"
        if not passes(folder):
            return "killed"
        build(folder / "release")
        same = (folder / "release" / "dorvek").read_bytes() == (folder / "dorvek").read_bytes()
        return "same code" if same else "survived"
    finally:
        (folder / file).write_text("\n".join(lines))


def prepare(folder):
    """A copy of the project to spoil, and its builds; those of an earlier run are used again."""
    names = subprocess.check_output(["git", "ls-files"], cwd=ROOT, text=True).splitlines()
    for path in folder.rglob("*"):
        kept = path.relative_to(folder).as_posix()
        if path.is_file() and not kept.startswith(("build/", "release/")) and kept not in names:
            path.unlink()
    for name in names:
        copy, content = folder / name, (ROOT / name).read_bytes()
        if not copy.exists() or copy.read_bytes() != content:
            copy.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(ROOT / name, copy)
    flags = "-DCMAKE_CXX_FLAGS=-w"
    for kind, options in (("build", ["-DDORVEK_TESTS=ON", flags + " -D_GLIBCXX_ASSERTIONS"]),
                          ("release", ["-DCMAKE_BUILD_TYPE=Release", flags])):
        subprocess.run(["cmake", "-G", "Ninja", "-S", folder, "-B", folder / kind, *options],
                       check=True, stdout=subprocess.DEVNULL)
        if not build(folder / kind):
            sys.exit("The project has to build before anything is changed.")
    shutil.copy2(folder / "release" / "dorvek", folder / "dorvek")
    if not passes(folder):
        sys.exit("The tests have to pass before anything is changed.")


def main():
    files = sys.argv[1:] or subprocess.check_output(
        ["git", "ls-files", "src"], cwd=ROOT, text=True).splitlines()
    files.sort(key=lambda file: file.endswith(".hpp"))  # those that take longest last
    sources = {file: (ROOT / file).read_text().split("\n") for file in files}
    mutants = [(file, number, text)
               for file, lines in sources.items() for number, text in changes(file, lines)]
    folders = queue.SimpleQueue()
    workers = os.cpu_count() or 1
    for worker in range(workers):
        prepare(WORK / str(worker))
        folders.put(WORK / str(worker))

    def outcome_of(mutant):
        folder = folders.get()
        try:
            file, number, text = mutant
            return judge(folder, file, sources[file], number, text)
        finally:
            folders.put(folder)

    known, met = equivalents(), set()
    counts = dict.fromkeys(["killed", "no program", "same code", "equivalent", "survived"], 0)
    with concurrent.futures.ThreadPoolExecutor(workers) as pool:
        for (file, number, text), outcome in zip(mutants, pool.map(outcome_of, mutants)):
            before = sources[file][number].strip()
            key = (file, before, text.strip())
            if outcome == "survived" and key in known:
                outcome = "equivalent"
                met.add(key)
            counts[outcome] += 1
            if outcome == "survived":
                print(f"{file}:{number + 1}\n- {before}\n+ {text.strip()}", flush=True)
            print(f"\r{sum(counts.values())} of {len(mutants)} ", end="", file=sys.stderr)
    print(", ".join(f"{count} {outcome}" for outcome, count in counts.items()))
    for file, before, after in sorted(known - met):
        if file in files:
            print(f"no longer met: {file}\n- {before}\n+ {after}")
    sys.exit(1 if counts["survived"] or any(key[0] in files for key in known - met) else 0)


if __name__ == "__main__":
    main()
