#!/usr/bin/python3
"""Writes replicas.txt: the means, differences and budget that numpy and scipy.stats (Debian:
python3-scipy) give for tests/tools/replicas.csv, five quenches of silica at two temperatures, window
1.4 to 2.2, and for a scan of their windows; dorvek-peaks and dorvek-batch have to be on PATH. Not
Rmod: it is the same in all, and numpy leaves a rounding error as its deviation.
    ./replicas.py > replicas.txt
"""
import csv
import os
import subprocess

import numpy as np
from scipy import stats

QUANTITIES = "CN Rmea var varl varr adif arat pmo3 skew pmo4 kurt cum4".split()
SCAN = "dorvek-peaks --partial 2 --first --common --scan 15 --name '{glass}_{T}K.dat' *K.dat"


def values(rows, temperature):
    return np.array([[float(r[q]) for r in rows if r["T"] == temperature] for q in QUANTITIES])


def show(command, headings, exact, names, *figures):
    print(f"$ {command} | grep -v Rmod\n{headings}")
    for name, *line in zip(names, *figures):  # ten digits of what may differ by little
        print(name, *(f"{x:.{10 if i < exact else 6}g}" for i, x in enumerate(line)), sep=",")


def holm(p):
    order = np.argsort(p)
    steps = np.maximum.accumulate(p[order] * np.arange(len(p), 0, -1))
    return np.minimum(1, steps)[np.argsort(order)]


def compare(command, a, b, in_pairs):
    test = stats.ttest_rel(b, a, 1) if in_pairs else stats.ttest_ind(b, a, 1, equal_var=False)
    u, v = stats.sem(a, 1) ** 2, stats.sem(b, 1) ** 2
    se, doff = (u + v) ** 0.5, (u + v) ** 2 / (u**2 / (a[0].size - 1) + v**2 / (b[0].size - 1))
    if in_pairs:
        se, doff = stats.sem(b - a, 1), np.full(len(a), a[0].size - 1)
    show(command, "quantity,A,B,difference,se,ci95,doff,stud,sgfc,holm", 3, QUANTITIES, a.mean(1),
         b.mean(1), b.mean(1) - a.mean(1), se, se * stats.t.ppf(0.975, doff), doff, *test, holm(test[1]))


os.chdir(os.path.dirname(os.path.abspath(__file__)) + "/../../examples/silica")
rows = list(csv.DictReader(open("../../tests/tools/replicas.csv")))
a, b = values(rows, "300"), values(rows, "1500")
x, se = np.concatenate([a, b]), stats.sem(np.concatenate([a, b]), 1)
show("dorvek-replicas --by T replicas.csv", "T,quantity,n,mean,sd,se,ci95", 2,
     [f"{T},{q}" for T in (300, 1500) for q in QUANTITIES],
     np.full(len(x), 5), x.mean(1), x.std(1, ddof=1), se, se * stats.t.ppf(0.975, 4))
compare("dorvek-replicas --by T --pair glass --compare 300 1500 replicas.csv", a, b, True)
compare("sed 2d replicas.csv | dorvek-replicas --by T --compare 300 1500", a[:, 1:], b, False)

table = subprocess.check_output(SCAN + " | dorvek-batch", shell=True, text=True).splitlines()
rows, QUANTITIES = list(csv.DictReader(table)), QUANTITIES + ["Rmed", "Rtop"]
moved = {s: [r for r in rows if r["shift"] == s] for s in {r["shift"] for r in rows}}
pairs = {s: values(m, "1500") - values(m, "300") for s, m in moved.items()}
value, se = pairs["0"].mean(1), stats.sem(pairs["0"], 1)
window = np.abs([x.mean(1) - value for x in pairs.values()]).max(0) / 3**0.5
u = (se**2 + window**2) ** 0.5
doff = u**4 / (se**4 / 4)
print(f"$ {SCAN} | dorvek-batch > scan.csv")
show("dorvek-replicas --by T --pair glass --compare 300 1500 --window shift scan.csv 2>&1",
     "dorvek-replicas: windows: rmin 1.31, rmax 1.93 to 2.53\n"
     "quantity,A,B,difference,se,window,u,doff,U95", 3, QUANTITIES, values(moved["0"], "300").mean(1),
     values(moved["0"], "1500").mean(1), value, se, window, u, doff, u * stats.t.ppf(0.975, doff))
