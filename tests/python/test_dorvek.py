"""The module against the program: what dialogues show, what the companions write, and numbers that
numpy and mpmath computed. Needs DORVEK_PROGRAMS, the directory of the companions."""
import doctest
import io
import math
import os
import re
import subprocess
import warnings
from concurrent.futures import ThreadPoolExecutor
from decimal import ROUND_HALF_UP, Decimal
from pathlib import Path

import numpy
import pandas
import pytest

import dorvek

TESTS = Path(__file__).resolve().parents[1]
ROOT = TESTS.parent
SILICA = ROOT / "examples/silica"
COLD, HOT = SILICA / "silica_300K.dat", SILICA / "silica_1500K.dat"


@pytest.fixture(autouse=True)
def among_the_examples(monkeypatch):
    monkeypatch.chdir(SILICA)


def program(name, *arguments, input=None):
    call = [Path(os.environ["DORVEK_PROGRAMS"]) / f"dorvek-{name}", *map(str, arguments)]
    return subprocess.run(call, input=input, capture_output=True, text=True).stdout


def table(text):
    return pandas.read_csv(io.StringIO(text), dtype=str, keep_default_na=False)


def shown(text, value):
    """Is this text the value as a report has it: its exact digits, rounded half up?"""
    if text in ("", "NaN") or not math.isfinite(value):
        return math.isnan(value) if text in ("", "NaN") else float(text) == value
    return Decimal(value).quantize(Decimal(text), ROUND_HALF_UP) == Decimal(text)


def sample(path, partial=2, partials=None):
    r, g, n = dorvek.read(path, partials)
    return r, g[:, partial - 1], n[:, partial - 1]


def passes(folder, answers):
    """What the dialogue does with these answers: the numbers of each window, or a refusal."""
    answers = iter(answers)
    more_data = more_windows = "y"
    while more_data != "n":
        samples = []
        for _ in range(int(next(answers))):
            samples.append((folder / next(answers), int(next(answers)), next(answers))[:2])
        while more_windows != "n":
            chosen, constraints = [], 0
            for path, partials in samples:
                chosen.append(sample(path, int(next(answers)), partials))
                constraints += int(next(answers))
            rmin, rmax = map(float, next(answers).split())
            try:
                if len(chosen) == 1:
                    yield dorvek.peak(*chosen[0], rmin=rmin, rmax=rmax)[:23]
                else:
                    both = dorvek.compare(*chosen, rmin=rmin, rmax=rmax, constraints=constraints)
                    yield *both.first[:23], *both.second[:23], *both[2:]
            except ValueError as refusal:
                yield (str(refusal),)
            more_windows = next(answers)
        more_data = next(answers)
        more_windows = "y"


@pytest.mark.parametrize(
    "answers, output",
    [(SILICA / name, SILICA / f"expected/{name}.out") for name in ("answers", "answers_two_samples")]
    + [(TESTS / f"e2e/{name}/stdin", TESTS / f"e2e/{name}/expected/stdout")
       for name in ("different_grids", "different_lengths", "empty_window", "equal_grids",
                    "one_bin_differs", "one_window", "ten_partials")],
)
def test_what_dialogues_show(answers, output):
    folder = ROOT if answers.parent == SILICA else answers.parent
    refusals = "no data in this window|zero norm, no atoms found"
    expected = re.findall(rf"(?:\w= +|\+/- +)(-?[\dINa][^ \n]*)|({refusals})", output.read_text())
    with warnings.catch_warnings(record=True) as doubts:
        warnings.simplefilter("always")
        numbers = [x for one in passes(folder, answers.read_text().splitlines()) for x in one]
    assert len(numbers) == len(expected)
    for (text, refusal), number in zip(expected, numbers):
        assert number == refusal if refusal else shown(text, number)
    resampled = "inconsistent bining: adjusted by linear interpolation"
    assert (resampled in output.read_text()) == (resampled in {str(d.message) for d in doubts})


def test_double_precision():
    for line in (TESTS / "references/silica.txt").read_text().splitlines():
        partial, rmin, rmax, quantity, *rest = line.split()
        both = dorvek.compare(*(sample(path, int(partial)) for path in (COLD, HOT)),
                              rmin=float(rmin), rmax=float(rmax))
        values = ([getattr(both, quantity.replace(".", "_"))] if "." in quantity else
                  [getattr(side, quantity) for side in both[:2]])
        for value, reference, tolerance in zip(values, rest[::2], rest[1::2]):
            assert abs(value - float(reference)) <= float(tolerance), line


def test_2000_windows():
    windows = program("peaks", "--partial", 2, "--scan", 40, *sorted(SILICA.glob("*.dat")))
    results = table(program("batch", "-", input=windows))
    limits = table(windows)
    assert len(results) > 2000
    samples = {name: sample(name) for name in set(results.file)}

    def one(i):
        return dorvek.peak(*samples[results.file[i]], rmin=float(limits.rmin[i]),
                           rmax=float(limits.rmax[i]))

    with warnings.catch_warnings():
        warnings.simplefilter("ignore")
        peaks = [one(i) for i in results.index]
        with ThreadPoolExecutor(8) as pool:
            in_threads = list(pool.map(one, results.index))
    assert numpy.array_equal(in_threads, peaks, equal_nan=True)
    for name in dorvek.Peak._fields:
        column = [getattr(peak, name) for peak in peaks]
        assert all(map(shown, results[name], column)), name


@pytest.fixture(scope="module")
def scan():
    windows = program("peaks", "--partial", 2, "--first", "--common", "--scan", 2, "--name",
                      "{glass}_{T}K.dat", *sorted(SILICA.glob("*.dat")))
    return program("batch", "-", input=windows)


@pytest.mark.parametrize("options, arguments", [
    (["--each", "shift"], {"each": "shift"}),
    (["--each", "shift,glass", "--of", "var"], {"each": ["shift", "glass"], "of": "var"}),
    (["--window", "shift"], {"window": ["shift"]}),
    (["--window", "shift", "--pair", "glass", "--compare", "300", "1500"],
     {"window": "shift", "pair": "glass", "compare": (300.0, "1500")}),
    (["--each", "shift", "--compare", "1500", "300", "--of", "CN,Rmea"],
     {"each": "shift", "compare": (1500, 300), "of": ["CN", "Rmea"]}),
])
def test_what_dorvek_replicas_writes(scan, options, arguments):
    expected = table(program("replicas", "--by", "T", *options, input=scan))
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")
        given = dorvek.replicas(pandas.read_csv(io.StringIO(scan)), "T", **arguments)
    assert list(given) == list(expected) and len(given) == len(expected) > 0
    for heading, column in given.items():
        digits = 10 if heading in ("mean", "A", "B", "difference") else 6
        for text, value in zip(expected[heading], column):
            if isinstance(value, float):
                value = f"{value:.{digits}g}".replace("inf", "INF")
            assert text == str(value) or (text in ("", "NaN") and value == "nan"), heading


@pytest.mark.parametrize("error, words, arguments", [
    (ValueError, "no column X", {"by": "X"}),
    (ValueError, "use --each", {"by": "T"}),  # shifts differ
    (ValueError, "two states", {"by": "T", "compare": "30"}),
    (ValueError, "only with compare", {"by": "T", "pair": "glass"}),
    (ValueError, "no quantity is mass", {"by": "T", "of": "mass"}),
    (TypeError, "incompatible", {"by": 3}),
])
def test_bad_replicas(scan, error, words, arguments):
    with pytest.raises(error, match=words):
        dorvek.replicas(pandas.read_csv(io.StringIO(scan)), **arguments)


@pytest.mark.parametrize("partial, options, arguments", [
    (1, [], {}),
    (2, ["--range", "2:6"], {"range": (2, 6)}),
    (3, ["--smooth", 0, "--prominence", 0.05], {"smooth": 0, "prominence": 0.05}),
])
def test_windows_of_dorvek_peaks(partial, options, arguments):
    expected = table(program("peaks", "--partial", partial, *options, COLD))
    r, g, _ = sample(COLD, partial)
    windows = dorvek.find_peaks(r, g, **arguments)
    assert len(windows) == len(expected) > 0
    for window, row in zip(windows, expected.itertuples()):
        assert window[:2] == (numpy.float32(row.rmin), numpy.float32(row.rmax))
        assert shown(row.mode, window.mode) and shown(row.height, window.height)
        assert window.note == row.note


def test_running_numbers_of_dorvek_convert(tmp_path):
    columns = numpy.loadtxt(COLD)[:, [0, 3]]
    numpy.savetxt(tmp_path / "gr.txt", columns, "%.17g")
    converted = tmp_path / "gr.dat"
    converted.write_text(program("convert", "columns", "--density", 0.0441, tmp_path / "gr.txt"))
    assert (dorvek.running(*columns.T, 0.0441) == dorvek.read(converted)[2][:, 0]).all()


def test_what_is_read():
    r, g, n = dorvek.read(COLD)
    rows = numpy.loadtxt(COLD).astype(numpy.float32)
    assert (numpy.column_stack([r, g, n]) == rows[:, [0, 1, 3, 5, 2, 4, 6]]).all()
    assert {a.dtype for a in (r, g, n)} == {numpy.dtype("float32")}


R = numpy.arange(1, 101) / 50
G = numpy.exp(-((R - 1) ** 2) / 0.02)


@pytest.mark.parametrize("r, g, n", [
    (list(R), list(G), None),
    (R.astype("f4"), G.astype("f4"), R),
    (numpy.repeat(R, 2)[::2], pandas.Series(G), numpy.arange(100)),
    (R, G.astype(">f8"), numpy.ones(100, bool)),
])
def test_kinds_of_arrays(r, g, n):
    assert dorvek.peak(r, g, n, rmin=0.5, rmax=1.5)[4:] == dorvek.peak(R, G, rmin=0.5, rmax=1.5)[4:]
    assert math.isnan(dorvek.peak(r, g, rmin=0.5, rmax=1.5).CN)


def test_weights():
    r, g, n = sample(COLD)
    bonds = dorvek.peak(r, g, n, rmin=1.4, rmax=2.2, weight="r2")
    # numpy: w = g r^2 over bins 70 to 110, e.g. numpy.average((r - mean)**2, weights=w)
    assert [f"{x:.5g}" for x in (bonds.var, bonds.skew, bonds.kurt)] == ["0.0014058", "1.3016", "8.0455"]
    assert bonds.CN == dorvek.peak(r, g, n, rmin=1.4, rmax=2.2).CN and math.isnan(bonds.dCN)
    of_g = dorvek.peak(R, numpy.exp(-((R - 1.003) ** 2) / 0.02), rmin=0.4, rmax=1.6)  # a Gaussian
    assert abs(of_g.Rtop - 1.003) < 1e-6 and abs(of_g.Rmed - 1.003) < 1e-4
    cut = dorvek.peak(R, G, rmin=1.01, rmax=1.5)  # its highest bin is the first
    assert math.isnan(cut.Rtop) and cut.Rmed > 1


WITH_NAN = numpy.where(R == 1, math.nan, G)
GOOD = {"r": R, "g": G, "n": G, "rmin": 0.5, "rmax": 1.5}


@pytest.mark.parametrize("error, words, changed", [
    (ValueError, "no data in this window", {"rmin": 1.5, "rmax": 0.5}),
    (ValueError, "no data in this window", {"rmin": 2**70, "rmax": math.inf}),
    (ValueError, "zero norm, no atoms found", {"g": 0 * G}),
    (ValueError, "differ in length", {"r": []}),
    (ValueError, "differ in length", {"g": G[1:]}),
    (ValueError, "differ in length", {"n": G[1:]}),
    (ValueError, "no bins", {"r": [], "g": [], "n": []}),
    (ValueError, "one dimension", {"g": G.reshape(10, 10)}),
    (ValueError, "one dimension", {"r": 1}),
    (ValueError, "more than 10000 bins", dict.fromkeys("rgn", numpy.arange(10001))),
    (ValueError, "r: NaN", {"r": WITH_NAN}),
    (ValueError, "g: NaN", {"g": WITH_NAN}),
    (ValueError, "rmin: nan is no number", {"rmin": math.nan}),
    (TypeError, "r: an array of real numbers", {"r": ["0.1"] * 100}),
    (TypeError, "g: an array of real numbers", {"g": None}),
    (TypeError, "g: an array of real numbers", {"g": [*G[1:], None]}),
    (TypeError, "n: an array of real numbers", {"n": G + 0j}),
    (TypeError, "must be real number", {"rmax": "1.5"}),
    (TypeError, "must be real number", {"rmax": None}),
    (ValueError, "weight is neither g nor r2: r", {"weight": "r"}),
])
def test_bad_samples(error, words, changed):
    with pytest.raises(error, match=words):
        dorvek.peak(**(GOOD | changed))


@pytest.mark.parametrize("error, words, call", [
    (ValueError, "no such file", lambda: dorvek.read("missing.dat")),
    (ValueError, "Bad file specification: ", lambda: dorvek.read("")),
    (ValueError, "README.md, line 1: ", lambda: dorvek.read(ROOT / "README.md")),
    (ValueError, "partials: -1 is no whole number", lambda: dorvek.read(COLD, -1)),
    (ValueError, "is no whole number from 0 to", lambda: dorvek.read(COLD, 2**80)),
    (TypeError, "integer", lambda: dorvek.read(COLD, 3.0)),
    (TypeError, "NoneType", lambda: dorvek.read(None)),
    (TypeError, "tuple", lambda: dorvek.compare(R, (R, G), rmin=0, rmax=2)),
    (ValueError, "constraints", lambda: dorvek.compare((R, G), (R, G), rmin=0, rmax=2,
                                                       constraints=-(2**40))),
    (ValueError, "smooth: 2 is no number from 0", lambda: dorvek.find_peaks(R, G, smooth=2)),
    (ValueError, "prominence", lambda: dorvek.find_peaks(R, G, prominence=math.nan)),
    (ValueError, "below the second", lambda: dorvek.find_peaks(R, G, (2, 1))),
    (ValueError, "two limits", lambda: dorvek.find_peaks(R, G, (1, 2, 3))),
    (TypeError, "int", lambda: dorvek.find_peaks(R, G, 3)),
    (ValueError, "g: NaN", lambda: dorvek.find_peaks(R, WITH_NAN)),
    (ValueError, "density: 0 is no number", lambda: dorvek.running(R, G, 0)),
    (ValueError, "even steps", lambda: dorvek.running(R[::-1], G, 1)),
    (ValueError, "even steps", lambda: dorvek.running(R**2, G, 1)),
    (ValueError, "fewer than two", lambda: dorvek.running([1], [1], 1)),
])
def test_bad_calls(error, words, call):
    with pytest.raises(error, match=words):
        call()


@pytest.mark.parametrize("words, call", [
    ("r is not evenly spaced", lambda: dorvek.peak(R**2, G, rmin=0.1, rmax=2)),
    ("r does not ascend", lambda: dorvek.find_peaks(R[::-1], G)),
    ("second: r is not evenly", lambda: dorvek.compare((R, G), (R**2, G), rmin=0.5, rmax=1.5)),
    ("no degrees of freedom", lambda: dorvek.compare((R, G), (R, G), rmin=0.5, rmax=1.5,
                                                     constraints=99)),
    ("g below zero in 1 bin ", lambda: dorvek.peak(R, G - 0.2 * (R == 1.2), rmin=0.5, rmax=1.5)),
    ("variance not above 1E-6", lambda: dorvek.peak(R / 1000, G, rmin=0, rmax=0.0015)),
    ("only the first 10 pdfs", lambda: dorvek.read(COLD, 11)),
    ("a bin took more than one line", lambda: dorvek.read(COLD, 4)),
])
def test_doubts(words, call):
    with pytest.warns(dorvek.Doubt, match=words) as warned:
        call()
    assert warned[0].filename == __file__


def test_examples_of_the_docstrings():
    assert doctest.testmod(dorvek) == (0, 23)


def test_example_is_that_of_the_documents():
    block = (ROOT / "README.md").read_text().split("```python\n")[1].split("```")[0]
    assert (SILICA / "shift.py").read_text().split("\n", 1)[1] == block


def test_stub_has_the_fields():
    stub = Path(dorvek.__file__).with_suffix(".pyi").read_text()
    for kind in (dorvek.Peak, dorvek.Comparison, dorvek.Window):
        body = stub.split(f"class {kind.__name__}(NamedTuple):\n")[1].split("\n\n")[0]
        assert tuple(re.findall(r"(\w+):", body)) == kind._fields
