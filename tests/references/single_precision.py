"""Rows for tests/analysis/peaks.txt, tests/stats/cases.txt and tests/input/grids.txt in which the
order of operations decides the last digit.

Every operation is rounded to single precision by itself: a float operation done in double precision
and then rounded is exact to the last bit. Among random inputs the script takes those for which the
other orders of operations that come to mind give other results. The significances of the tests, which
rest on the library's exp and log, are not among them.
"""

import random
import struct
import sys

random.seed(1)


class Single(float):
    """A single-precision real."""

    def __new__(cls, value):
        return super().__new__(cls, struct.unpack("f", struct.pack("f", value))[0])

    def __add__(self, other): return Single(float(self) + float(other))
    def __sub__(self, other): return Single(float(self) - float(other))
    def __mul__(self, other): return Single(float(self) * float(other))
    def __truediv__(self, other): return Single(float(self) / float(other))
    def root(self): return Single(float(self) ** 0.5)


ZERO, ONE, THREE, SIX = map(Single, (0, 1, 3, 6))


def added(terms):
    total = ZERO
    for term in terms:
        total = total + term
    return total


def errana(weights, values, centre, square=lambda d, w: d * (d * w)):
    spread = (added(square(x - centre, w) for x, w in zip(values, weights))
              / Single(len(values) - 1)).root()
    return spread / added(weights).root()


def peak(r, g, cn):
    """The fields of a peak: the value, then what other orders of operations give."""
    fields = {}
    def put(name, *values): fields[name] = values
    left = lambda d, w: d * d * w
    dr, CN = r[1] - r[0], cn[-1] - cn[0]
    A = added(x * x * dr * w for x, w in zip(r, g))
    values = [dr * w * x * x for x, w in zip(r, g)]
    put("CN", CN)
    e = errana(g, values, A)
    other_A = added(values)
    put("dCN", e * CN / A, e * (CN / A), errana(g, values, A, left) * CN / A,
        errana(g, [x * x * dr * w for x, w in zip(r, g)], A) * CN / A,
        errana(g, values, other_A) * CN / other_A)
    W = added(g)
    mean = added(w * x for x, w in zip(r, g)) / W
    put("Rmea", mean, added(w * x for x, w in zip(reversed(r), reversed(g))) / added(reversed(g)),
        added(w / W * x for x, w in zip(r, g)))
    put("dRmea", errana(g, r, mean), errana(g, r, mean, left))
    d = [x - mean for x in r]
    terms = [x * (x * w) for x, w in zip(d, g)]
    var = added(terms) / W
    put("var", var, added(x * x * w for x, w in zip(d, g)) / W, added(reversed(terms)) / W)
    varl = added(t for t, x in zip(terms, r) if mean >= x) / W
    varr = added(t for t, x in zip(terms, r) if x >= mean) / W
    sdev = var.root()
    fields |= {"varl": (varl,), "varr": (varr,), "adif": (varr - varl,), "arat": (varr / varl,),
               "sdev": (sdev,)}
    dvar = errana(g, [x * x for x in d], var)
    put("dvar", dvar, errana(g, [x * x for x in d], var, left))
    pmo3 = added(x * (x * (x * w)) for x, w in zip(d, g)) / W
    pmo4 = added(x * (x * (x * (x * w))) for x, w in zip(d, g)) / W
    put("pmo3", pmo3, added(x * x * x * w for x, w in zip(d, g)) / W)
    put("pmo4", pmo4, added(x * x * x * x * w for x, w in zip(d, g)) / W)
    put("skew", pmo3 / (sdev * sdev * sdev), pmo3 / (sdev * var), pmo3 / sdev / sdev / sdev)
    put("kurt", Single(-3) + pmo4 / (sdev * sdev * sdev * sdev), Single(-3) + pmo4 / (var * var),
        Single(-3) + pmo4 / (sdev * sdev * (sdev * sdev)))
    put("cum4", pmo4 - THREE * var * var, pmo4 - THREE * (var * var))
    put("dpmo3", errana(g, [x * x * x for x in d], pmo3),
        errana(g, [x * x * x for x in d], pmo3, left))
    dpmo4 = errana(g, [x * x * x * x for x in d], pmo4)
    put("dpmo4", dpmo4, errana(g, [x * x * x * x for x in d], pmo4, left),
        errana(g, [x * x * (x * x) for x in d], pmo4))
    put("dcum4", SIX * var * dvar + dpmo4, SIX * (var * dvar) + dpmo4)
    return fields


def tutest(n1, n2, mean1, mean2, var1, var2):
    s1, s2 = var1 / Single(n1), var2 / Single(n2)
    m1, m2 = Single(n1 - 1), Single(n2 - 1)
    total = s1 + s2
    under = s1 * s1 / m1 + s2 * s2 / m2
    stud = (mean1 - mean2) / total.root()
    doff = total * total / under
    return {"stud": (stud,),
            "doff": (doff, total / under * total, total * total / (s1 / m1 * s1 + s2 / m2 * s2))}


def chi_square(u, v):
    terms = [(a - b) * (a - b) / (a + b) for a, b in zip(u, v)]
    others = [(a - b) / (a + b) * (a - b) for a, b in zip(u, v)]
    chsq = added(terms)
    return {"chsq": (added(terms), added(others), added(reversed(terms)))}


def lintpo(x1, x2, y1, y2, x):
    t = (x2 - x) / (x2 - x1)
    u = ONE - t
    y = u * y2 + t * y1
    upper = (x - x1) / (x2 - x1)
    return {"y": (y, y1 + u * (y2 - y1), y2 - t * (y2 - y1), upper * y2 + t * y1,
                  upper * y2 + (ONE - upper) * y1)}


def telling(make, compute):
    """Inputs and results that tell every other order of operations from the right one."""
    untold = {(name, i) for name, values in compute(*make()).items() for i in range(1, len(values))}
    while untold:
        best = set()
        for _ in range(200):
            inputs = make()
            results = compute(*inputs)
            told = {(name, i) for name, i in untold if results[name][i] != results[name][0]}
            if len(told) > len(best):
                best, best_inputs, best_results = told, inputs, results
        if not best:
            sys.exit(f"cannot tell: {untold}")
        untold -= best
        yield best_inputs, {name: values[0] for name, values in best_results.items()}


def typed(low, high):
    return Single(round(random.uniform(low, high), 3))


def row(numbers):
    return " ".join(f"{number:.7g}" for number in numbers)


def exactly(values):
    return " ".join(f"{value:.17g} 0" for value in values)


for (r, g, cn), fields in telling(lambda: (
        [typed(1.5 + 0.1 * i, 1.53 + 0.1 * i) for i in range(7)],
        [typed(0.1, 9) for _ in range(7)], [typed(i, i + 0.9) for i in range(7)]), peak):
    print(f"r {row(r)}\ng {row(g)}\ncn {row(cn)}\nwindow 1 7 1 atoms")
    print("\n".join(f"{name} {exactly([value])}" for name, value in fields.items()))
for inputs, results in telling(lambda: (
        random.randint(5, 50), random.randint(5, 50), *(typed(0.1, 2) for _ in range(4))), tutest):
    print("tutest", row(inputs), "=", exactly(results.values()))
for (u, v), results in telling(
        lambda: [[typed(1, 9) for _ in range(5)] for _ in range(2)], chi_square):
    print("ditest 0 ", row(u), " ", row(v), "= 3 0", exactly(results.values()))
for (x1, x2, y1, y2, x), results in telling(lambda: (
        typed(1, 1.5), typed(2, 3), typed(1, 9), typed(1, 9), typed(1.5, 2)), lintpo):
    print(f"grid {row([x1, x2])}\nvalues {row([y1, y2])}\napprox {row([x])} = {results['y']:.17g}")
