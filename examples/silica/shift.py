# How the Si-O bond grows from 300 K to 1500 K: the difference, and a picture of the means.
from pathlib import Path
import dorvek, pandas, matplotlib.pyplot as plt

samples = {path.stem: dorvek.read(path) for path in Path().glob("*K.dat")}  # or your own arrays
r = samples["silica_300K"][0]
window = dorvek.find_peaks(r, sum(g[:, 1] for _, g, _ in samples.values()) / len(samples))[0]
peaks = []
for name, (r, g, n) in sorted(samples.items()):
    bond = dorvek.peak(r, g[:, 1], rmin=window.rmin, rmax=window.rmax, weight="r2")
    glass, T = name.split("_")
    peaks.append({"glass": glass, "T": int(T.strip("K")), **bond._asdict()})
frame = pandas.DataFrame(peaks)
shift = dorvek.replicas(frame, "T", pair="glass", compare=(300, 1500), of="Rmea")
print(shift[["quantity", "A", "B", "difference", "ci95"]].to_string(index=False))
means = dorvek.replicas(frame, "T", of="Rmea")
plt.errorbar(means["T"], means["mean"], means["ci95"], fmt="o", capsize=3)
plt.savefig("shift.png")
