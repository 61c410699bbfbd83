#!/usr/bin/python3
"""Writes peaks.txt, calls of dorvek-peaks and the tables expected of them, by scipy (Debian:
python3-scipy), and noisy.dat, which some of the calls read.
    ./peaks.py > peaks.txt

Numbers are what the program holds: nearest floats. Midpoints of these grids have few decimals.
"""
from pathlib import Path

import numpy as np
from scipy.ndimage import gaussian_filter1d
from scipy.signal import find_peaks

HERE = Path(__file__).resolve().parent

rng = np.random.default_rng(20517)
r = np.arange(1, 201) * 0.05
liquid = 1 + np.sin(5 * r) * np.exp(-r / 6) - 4 * np.exp(-r)
atoms = np.maximum(liquid + rng.normal(0, 0.15, r.size), 0)
itself = np.where(r < 0.4, 8, np.where(r < 1, 0, 2 * np.round(1.5 * atoms, 1)))  # flat tops
nowhere_zero = 2 + r * np.sin(2 * r) / 4 + rng.normal(0, 0.2, r.size)
columns = np.column_stack((r, atoms, itself, nowhere_zero))
np.savetxt(HERE / "noisy.dat", columns, "%.2f %.3f 0 %.1f 0 %.2f 0")


def table(file, partial, prominence=0.3, smooth=0.02, bounds="0:99"):
    folder = HERE if file == "noisy.dat" else HERE.parents[1] / "examples" / "silica"
    rows = np.loadtxt(folder / file, dtype=np.float32).astype(float)
    r, g = rows[:, 0], rows[:, 2 * partial - 1]
    step = (r[-1] - r[0]) / (r.size - 1)
    if g[0] != 0 and (g == 0).any():
        r, g = r[np.argmin(g != 0) :], g[np.argmin(g != 0) :]
    low, high = (np.float32(b) for b in bounds.split(":"))
    used = np.flatnonzero((r >= low) & (r <= high))
    sigma = smooth * r[used][g[used].argmax()] / step
    copy = gaussian_filter1d(g, sigma, mode="nearest") if sigma else g
    peaks = find_peaks(copy[used], prominence=prominence)[0] + used[0]
    ends = [used[0] - 1, *peaks, used[-1] + 1]
    for k, peak in enumerate(peaks, 1):
        edges = []
        for side in (range(peak - 1, ends[k - 1], -1), range(peak + 1, ends[k + 1])):
            zeros = [i for i in side if g[i] == 0]
            edges.append(zeros[0] if zeros else min(side, key=lambda i: copy[i]))
        window = g[edges[0] : edges[1] + 1]
        mode, height = r[edges[0] + window.argmax()], window.max()
        cells = *(f"{r[i] + step / 2:.6g}" for i in edges), f"{mode:#.6g}", f"{height:#.6g}"
        print(f"{file[:-4]}-{partial}-{k}", file, 3, partial, k, *cells, sep=",")


SMOOTH = {"prominence": 0.1, "smooth": 0.05}
for file, partial, options in (
    ("silica_300K.dat", 1, {}),
    ("silica_300K.dat", 2, {"smooth": 0}),
    ("silica_300K.dat", 3, SMOOTH),
    ("silica_1500K.dat", 2, {"bounds": "2.41:6"}),
    ("silica_1500K.dat", 3, {}),
    ("noisy.dat", 1, {}),
    ("noisy.dat", 1, SMOOTH),
    ("noisy.dat", 2, {"smooth": 0}),
    ("noisy.dat", 2, {"bounds": "2.41:6"}),
    ("noisy.dat", 3, {}),
    ("noisy.dat", 3, SMOOTH),
    ("noisy.dat", 3, {"bounds": "2.41:6"}),
):
    words = "".join(f"--{name} {value} " for name, value in options.items())
    call = f"--partial {partial} {words.replace('bounds', 'range')}{file}"
    print(f"$ dorvek-peaks {call} | cut -d , -f -9")
    print("id,file,partials,partial,peak,rmin,rmax,mode,height")
    table(file, partial, **options)
