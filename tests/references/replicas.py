#!/usr/bin/python3
"""Writes replicas.txt: the means and differences that scipy.stats (Debian: python3-scipy) gives for
tests/tools/replicas.csv, five quenches of silica at two temperatures, window 1.4 to 2.2. Not Rmod:
it is the same in all, and numpy leaves a rounding error as its deviation.
    ./replicas.py > replicas.txt
"""
import csv
from pathlib import Path

import numpy as np
from scipy import stats

TABLE = Path(__file__).resolve().parents[1] / "tools" / "replicas.csv"
QUANTITIES = "CN Rmea var varl varr adif arat pmo3 skew pmo4 kurt cum4".split()


def column(rows, temperature, quantity):
    return np.array([float(row[quantity]) for row in rows if row["T"] == temperature])


def put(*cells):
    print(*(c if isinstance(c, str) else f"{c:.6g}" for c in cells), sep=",")


def compare(rows, in_pairs):
    print("quantity,A,B,difference,se,ci95,doff,stud,sgfc")
    for quantity in QUANTITIES:
        a, b = (column(rows, temperature, quantity) for temperature in ("300", "1500"))
        test = stats.ttest_rel(b, a) if in_pairs else stats.ttest_ind(b, a, equal_var=False)
        u, v = stats.sem(a) ** 2, stats.sem(b) ** 2
        se, doff = (u + v) ** 0.5, (u + v) ** 2 / (u**2 / (len(a) - 1) + v**2 / (len(b) - 1))
        if in_pairs:
            se, doff = stats.sem(b - a), len(a) - 1
        ci95 = se * stats.t.ppf(0.975, doff)
        put(quantity, a.mean(), b.mean(), b.mean() - a.mean(), se, ci95, doff, *test)


rows = list(csv.DictReader(open(TABLE)))
print("$ dorvek-replicas --by T replicas.csv | grep -v Rmod\nT,quantity,n,mean,sd,se,ci95")
for temperature in ("300", "1500"):
    for quantity in QUANTITIES:
        x = column(rows, temperature, quantity)
        se = stats.sem(x)
        ci95 = se * stats.t.ppf(0.975, len(x) - 1)
        put(temperature, quantity, len(x), x.mean(), x.std(ddof=1), se, ci95)
print("$ dorvek-replicas --by T --pair glass --compare 300 1500 replicas.csv | grep -v Rmod")
compare(rows, in_pairs=True)
print("$ sed 2d replicas.csv | dorvek-replicas --by T --compare 300 1500 | grep -v Rmod")
compare(rows[1:], in_pairs=False)
