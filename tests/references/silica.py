#!/usr/bin/python3
"""Writes silica.txt: statistics of the silica peaks in double precision, with how far single
precision may be off. Needs mpmath (Debian: python3-mpmath).
    ./silica.py > silica.txt

Each line: partial, typed rmin and rmax, quantity, then value and tolerance, of both samples for a
statistic. u = 2^-24 is the largest relative error of one rounding, of a value read as of one
computed. A sum of n terms, each made by k operations, is off by at most (n + k) u times the sum of
the terms' magnitudes; to first order, errors of terms, mean and centre add to that.
"""
from math import fsum, sqrt
from pathlib import Path

import mpmath as mp

u = 2.0**-24
DATA = Path(__file__).resolve().parents[2] / "examples" / "silica"


def error_of(n, g, x, x_error, centre, centre_error):
    """Weighted standard error of the values x about the centre, and its tolerance."""
    weight = fsum(g)
    e = sqrt(fsum(w * (v - centre) ** 2 for w, v in zip(g, x)) / (n - 1) / weight)
    shift = sqrt(fsum(w * s * s for w, s in zip(g, x_error)) / (n - 1) / weight)
    return e, (n + 8) * u * e + shift + centre_error / sqrt(n - 1)


def statistics(rows, partial, lo, hi):
    window = rows[lo : hi + 1]
    r, g, cn = ([row[c] for row in window] for c in (0, 2 * partial - 1, 2 * partial))
    n, norm, dr = len(r), fsum(g), rows[1][0] - rows[0][0]
    out = {"CN": (cn[-1] - cn[0], 2 * u * cn[-1])}
    x = [dr * w * a * a for w, a in zip(g, r)]
    area = fsum(x)
    e, tolerance = error_of(n, g, x, [12 * u * v for v in x], area, (n + 12) * u * area)
    out["dCN"] = e * out["CN"][0] / area, (tolerance + (n + 16) * u * e) * out["CN"][0] / area
    mean = fsum(w * a for w, a in zip(g, r)) / norm
    shift = (2 * n + 5) * u * mean
    out["Rmea"] = mean, shift
    out["dRmea"] = error_of(n, g, r, [u * a for a in r], mean, shift)
    out["Rmod"] = r[g.index(max(g))], u * max(r)
    d = [a - mean for a in r]

    def moment(k, keep=lambda a: True):
        terms = [(w * a**k, w * abs(a) ** (k - 1)) for w, a in zip(g, d) if keep(a)]
        value = fsum(t for t, _ in terms) / norm
        magnitude = fsum(abs(t) for t, _ in terms) / norm
        slope = k * fsum(s for _, s in terms) / norm
        return value, (2 * n + 2 * k + 6) * u * magnitude + slope * (shift + 2 * u * max(r))

    def moment_error(k):
        x_error = [k * abs(a) ** (k - 1) * (shift + 2 * u * max(r)) + k * u * abs(a) ** k for a in d]
        return error_of(n, g, [a**k for a in d], x_error, *moment(k))

    out["var"], out["dvar"] = moment(2), moment_error(2)
    out["varl"], out["varr"] = moment(2, lambda a: a <= 0), moment(2, lambda a: a >= 0)
    (var, tvar), (left, tleft), (right, tright) = out["var"], out["varl"], out["varr"]
    out["adif"] = right - left, tleft + tright + u * right
    out["arat"] = right / left, (tright / right + tleft / left + u) * right / left
    (p3, t3), (p4, t4) = out["pmo3"], out["pmo4"] = moment(3), moment(4)
    out["dpmo3"], out["dpmo4"] = moment_error(3), moment_error(4)
    out["skew"] = p3 / var**1.5, t3 / var**1.5 + abs(p3) / var**1.5 * (1.5 * tvar / var + 8 * u)
    out["kurt"] = p4 / var**2 - 3, (t4 + p4 * (2 * tvar / var + 12 * u)) / var**2
    out["cum4"] = p4 - 3 * var**2, t4 + 6 * var * tvar + 8 * u * p4
    out["dskew"], out["dkurt"] = ((sqrt(c / (n - 1)), 4 * u * sqrt(c)) for c in (6, 24))
    (dvar, tdvar), (dp4, tdp4) = out["dvar"], out["dpmo4"]
    out["dcum4"] = 6 * var * dvar + dp4, 6 * (tvar * dvar + var * tdvar) + tdp4 + 4 * u * dp4
    return out


def comparison(a, b, steps, u_values, v_values):
    def t_significance(t, doff):
        return mp.betainc(doff / 2, 0.5, 0, doff / (doff + t * t), regularized=True)

    def f_significance(f):
        return 2 * mp.betainc(steps / 2 - 0.5, steps / 2 - 0.5, 0, 1 / (1 + f), regularized=True)

    def q(doff, chsq):
        return mp.gammainc(doff / 2, chsq / 2, regularized=True)

    def spread(significance, x, dx, accuracy):
        return significance(x), abs(significance(x + dx) - significance(x - dx)) + accuracy

    (m1, tm1), (m2, tm2), (v1, tv1), (v2, tv2) = a["Rmea"], b["Rmea"], a["var"], b["var"]
    relative = tv1 / v1 + tv2 / v2 + 8 * u
    s1, s2 = v1 / steps, v2 / steps
    t = (m1 - m2) / sqrt(s1 + s2)
    tt = (tm1 + tm2) / sqrt(s1 + s2) + abs(t) * relative
    doff = (s1 + s2) ** 2 / ((s1**2 + s2**2) / (steps - 1))
    f = max(v1, v2) / min(v1, v2)
    pairs = [(x, y) for x, y in zip(u_values, v_values) if x or y]
    chsq = fsum((x - y) ** 2 / (x + y) for x, y in pairs)
    freedom = len(pairs) - 2
    tchsq = (len(pairs) + 10) * u * chsq + 4 * u * fsum(abs(x - y) for x, y in pairs)
    # Last, the accuracy that the special functions have on this many bins.
    yield "mean.stud", t, tt
    yield "mean.doff", doff, 4 * relative * doff
    yield "mean.sgfc", *spread(lambda x: t_significance(x, doff), t, tt + abs(t) * relative, 2e-5)
    yield "variance.stud", f, f * relative
    yield "variance.sgfc", *spread(f_significance, f, f * relative, 1e-5)
    yield "distribution.doff", freedom, 0
    yield "distribution.chsq", chsq, tchsq
    yield "distribution.sgfc", *spread(lambda x: q(freedom, x), chsq, tchsq, 1e-5)


def main():
    names = ("silica_300K.dat", "silica_1500K.dat")
    files = [[[float(x) for x in line.split()] for line in open(DATA / name)] for name in names]
    for partial, rmin, rmax in ((2, 1.4, 2.2), (3, 2.3, 3.2), (1, 2.8, 3.6)):
        # Windows that start and end between grid points: the bin below either limit.
        lo, hi = (sum(row[0] < limit for row in files[0]) - 1 for limit in (rmin, rmax))
        first, second = (statistics(rows, partial, lo, hi) for rows in files)
        for name in first:
            numbers = (f"{x:.9g}" for x in (*first[name], *second[name]))
            print(partial, rmin, rmax, name, *numbers)
        columns = [[row[2 * partial - 1] for row in rows[lo : hi + 1]] for rows in files]
        for name, value, tolerance in comparison(first, second, hi - lo, *columns):
            print(partial, rmin, rmax, name, mp.nstr(value, 9), mp.nstr(tolerance, 9))


main()
