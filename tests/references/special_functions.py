#!/usr/bin/python3
"""Writes special_functions.txt: the special functions and tests at exact single-precision arguments.

Needs mpmath (Debian: python3-mpmath). Each line: routine, bins of the window, arguments, value.
    ./special_functions.py > special_functions.txt
"""
import struct

import mpmath as mp

mp.mp.dps = 40


def single(x):
    """The nearest float, exactly."""
    return mp.mpf(struct.unpack("f", struct.pack("f", float(x)))[0])


def q_gamma(a, x):
    return mp.gammainc(a, x, regularized=True)


def i_beta(a, b, x):
    return mp.betainc(a, b, 0, x, regularized=True)


def t_test(n, mean1, mean2, var1, var2):
    s1, s2 = var1 / n, var2 / n
    t2 = (mean1 - mean2) ** 2 / (s1 + s2)
    doff = (s1 + s2) ** 2 / (s1**2 / (n - 1) + s2**2 / (n - 1))
    return i_beta(doff / 2, mp.mpf(1) / 2, doff / (doff + t2))


def f_test(n, var1, var2):
    ratio = max(var1, var2) / min(var1, var2)
    half = mp.mpf(n - 1) / 2
    return 2 * i_beta(half, half, 1 / (1 + ratio))


def row(routine, bins, args, value):
    if routine == "gammln" or value > mp.mpf(10) ** -12:  # below, a significance is as good as 0
        print(routine, bins, *(mp.nstr(a, 12) for a in args), mp.nstr(value, 17))


def main():
    for i in range(2, 2001, 6):
        xx = mp.mpf(i) / 4
        row("gammln", 0, [xx], mp.loggamma(xx))
    for bins in (10, 30, 100, 300, 1000):
        n, scatter = bins - 1, mp.sqrt(mp.mpf(2) / bins)
        for step in range(-32, 33):
            half_doff = mp.mpf(bins - 2) / 2
            x = single(half_doff * (1 + scatter * step / 4))
            if x > 0:
                row("gammq", bins, [half_doff, x], q_gamma(half_doff, x))
            variance = single(mp.mpf("0.01") * mp.exp(scatter * step / 4))
            row("ftest", bins, [n, single(0.01), variance], f_test(n, single(0.01), variance))
            mean = single(mp.mpf("1.6") + scatter / 10 * step / 4)
            for var in (single(0.01), single(0.03)):
                args = [single(1.6), mean, single(0.01), var]
                row("tutest", bins, [n, *args], t_test(n, *args))
            for a, b in ((n, 1), (n - 1, n - 1), (1, n), (n, 3 * n)):
                a, b = mp.mpf(a) / 2, mp.mpf(b) / 2
                x = single(a / (a + b) * (1 + scatter * step / 4))
                if 0 < x < 1:
                    row("betai", bins, [a, b, x], i_beta(a, b, x))
        # Nearly equal means and variances: significances near 1.
        for step in range(8, 80):
            t = mp.mpf(2) ** (-mp.mpf(step) / 5)
            variance = single(mp.mpf("0.01") * mp.exp(scatter * t))
            row("ftest", bins, [n, single(0.01), variance], f_test(n, single(0.01), variance))
            for var in (single(0.01), single(0.03)):
                mean = single(mp.mpf("1.6") + t * mp.sqrt((single(0.01) + var) / n))
                args = [n, single(1.6), mean, single(0.01), var]
                row("tutest", bins, args, t_test(*args))


main()
