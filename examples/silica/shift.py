# How the Si-O bond grows from 300 K to 1500 K: the table, and a picture of the means.
from pathlib import Path

import dorvek
import matplotlib.pyplot as plt
import pandas

# r and the g of each partial: read here, or arrays of your own.
samples = {path.stem: dorvek.read(path) for path in sorted(Path().glob("*K.dat"))}
r = samples["silica_300K"][0]
mean = sum(g[:, 1] for _, g, _ in samples.values()) / len(samples)
window = dorvek.find_peaks(r, mean)[0]  # one for all: windows of their own spoil a comparison

peaks = []
for name, (r, g, n) in samples.items():
    glass, T = name.removesuffix("K").split("_")
    bond = dorvek.peak(r, g[:, 1], rmin=window.rmin, rmax=window.rmax, weight="r2")
    peaks.append({"glass": glass, "T": int(T), **bond._asdict()})
frame = pandas.DataFrame(peaks)

asked = {"by": "T", "of": ["Rmea", "var"]}
shift = dorvek.replicas(frame, pair="glass", compare=(300, 1500), **asked)
print(shift[["quantity", "A", "B", "difference", "ci95"]].to_string(index=False))

means = dorvek.replicas(frame, **asked).query("quantity == 'Rmea'")
plt.errorbar(means["T"], means["mean"], means["ci95"], fmt="o", capsize=3)
plt.xlabel("T / K")
plt.ylabel("mean Si-O distance / Å")
plt.savefig("shift.png", dpi=150)
