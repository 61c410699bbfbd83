"""Statistics of peaks in pair distribution functions, on arrays.

The numbers are those of the program dorvek and its companions: the same routines compute them, in
single precision. What the program refuses raises ValueError in its words; what is to be said of a
result is a `Doubt`, a warning.

>>> import dorvek
>>> r, g, n = dorvek.read("silica_300K.dat")
>>> for window in dorvek.find_peaks(r, g[:, 1])[:2]:
...     print(f"{window.rmin:g} {window.rmax:g} {window.mode:g}")
1.46 2.14 1.61
2.28 4.74 4.11
>>> round(dorvek.peak(r, g[:, 1], n[:, 1], rmin=1.4, rmax=2.2).CN, 5)
4.00781
"""

import os
import warnings
from collections import namedtuple

from . import _core

__version__ = _core.version


class Doubt(UserWarning):
    """What has to be known beside a number, of the data or of the window."""


Peak = namedtuple("Peak", [*_core.sample_headings, "Rmed", "Rtop"])
Peak.__doc__ = """Statistics of one peak, as the report of dorvek has them; d... is the error of ...

rmin and rmax are r of the first and of the last bin of the window, CN the coordination number, Rmea
the mean distance, Rmod the most probable one, var the variance, varl and varr its parts below and
above the mean, adif and arat their difference and ratio, pmo3 and pmo4 central moments, skew and
kurt skewness and excess kurtosis, cum4 the fourth cumulant, Rmed the median and Rtop the top between
the bins. Lengths are in the unit of r. nan is what is not known: CN and dCN without n, dCN of r2,
Rmed of a weight below zero, Rtop of a highest bin at an edge.
"""

Comparison = namedtuple("Comparison", ["first", "second", *_core.statistics_headings])
Comparison.__doc__ = """The statistics of two peaks, each a `Peak`, and three tests of their difference.

doff are degrees of freedom, sgfc the significance: the probability of a statistic (Student's t, F,
chsq) at least as far out by chance alone, if every bin were an observation.
"""

Window = namedtuple("Window", ["rmin", "rmax", "mode", "height", "note"])
Window.__doc__ = """A window around a peak, as `peak` takes its limits.

mode and height are r and g of its highest bin; note tells what there is to warn of.
"""


def _warn(doubts):
    for doubt in doubts:
        warnings.warn(doubt, Doubt, stacklevel=3)


def peak(r, g, n=None, *, rmin, rmax, weight="g"):
    """Take the statistics of the peak in a window.

    Parameters
    ----------
    r : array_like
        Positions of the bins; they ascend in even steps. At most 10000.
    g : array_like
        The partial pair distribution function at each of them.
    n : array_like, optional
        Its running coordination number. Only CN and dCN depend on it; without it they are nan.
    rmin, rmax : float
        The limits of the window. Both go to the last r strictly below them.
    weight : {"g", "r2"}, optional
        What the moments are weighted with: g, or g r^2, the distribution of bond lengths.

    Returns
    -------
    Peak

    Raises
    ------
    ValueError
        If there is no peak in the window, or the arrays make no sample.
    TypeError
        If an argument is of a kind that is no number.

    Warns
    -----
    Doubt
        What dorvek-batch would say in its column `message`.

    Examples
    --------
    >>> r, g, n = read("silica_300K.dat")
    >>> round(peak(r, g[:, 1], rmin=1.4, rmax=2.2).Rmea, 5)
    1.6139
    """
    values, doubts = _core.peak(r, g, n, rmin, rmax, weight)
    _warn(doubts)
    return Peak._make(values)


def compare(first, second, *, rmin, rmax, constraints=0):
    """Compare the peaks of two samples in one window.

    Parameters
    ----------
    first, second : tuple of array_like
        r, g and, if CN is wanted, n of a sample, as `peak` takes them. If the grids differ, the
        second is brought onto that of the first by linear interpolation.
    rmin, rmax : float
        The limits of the window.
    constraints : int, optional
        How many constraints the chi-square test has, both samples together.

    Returns
    -------
    Comparison

    Raises
    ------
    ValueError, TypeError
        As `peak` does.

    Warns
    -----
    Doubt
        What dorvek-batch would say in its column `message`.

    Examples
    --------
    >>> r, g, n = read("silica_300K.dat")
    >>> s, h, m = read("silica_1500K.dat")
    >>> both = compare((r, g[:, 1], n[:, 1]), (s, h[:, 1], m[:, 1]), rmin=1.4, rmax=2.2)
    >>> round(both.mean_sgfc, 5), both.second.var > both.first.var
    (0.57992, True)
    """
    sides = []
    for side in (first, second):
        if not isinstance(side, (tuple, list)) or len(side) not in (2, 3):
            raise TypeError("a sample is a tuple (r, g, n) or (r, g)")
        sides.extend([*side, None][:3])
    one, two, tests, doubts = _core.compare(*sides, rmin, rmax, constraints)
    _warn(doubts)
    return Comparison(Peak._make(one), Peak._make(two), *tests)


def read(path, partials=None):
    """Read a PDF file.

    Parameters
    ----------
    path : path_like
        Its name.
    partials : int, optional
        How many partials it holds; if not given, as many as its first line does.

    Returns
    -------
    r, g, n : ndarray
        float32, of the shapes (bins,), (bins, partials) and (bins, partials).

    Raises
    ------
    ValueError
        If there is no such file, or it cannot be read.

    Warns
    -----
    Doubt
        If bins or partials are left out (10000 and 10 are kept), a bin takes more than one line, or
        r does not ascend in even steps.

    Examples
    --------
    >>> r, g, n = read("silica_300K.dat")
    >>> g.shape
    (500, 3)
    """
    r, g, n, doubts = _core.read(os.fsencode(path), partials)
    _warn(doubts)
    return r, g, n


def running(r, g, density):
    """Sum up g to the running coordination number, as dorvek-convert does.

    Parameters
    ----------
    r, g : array_like
        As `peak` takes them, in double precision if they are, of any length.
    density : float
        Atoms of the kind counted, in the volume of the unit of r.

    Returns
    -------
    n : ndarray
        float32: n = 4 pi density sum(g r^2 dr), the atoms up to the end of each bin.

    Raises
    ------
    ValueError, TypeError
        As `peak` does, and if r does not ascend in even steps.

    Examples
    --------
    >>> r, g, n = read("silica_300K.dat")
    >>> oxygen = running(r, g[:, 1], 1024 / 23220)
    >>> round(peak(r, g[:, 1], oxygen, rmin=1.4, rmax=2.2).CN, 3)
    4.008
    """
    return _core.running(r, g, density)


def find_peaks(r, g, range=None, prominence=0.3, smooth=0.02):
    """Find peaks and propose a window around each, as dorvek-peaks does.

    Parameters
    ----------
    r, g : array_like
        As `peak` takes them.
    range : tuple of float, optional
        Look at range[0] <= r <= range[1] only.
    prominence : float, optional
        The least of a peak, in the unit of g.
    smooth : float, optional
        Peaks are sought in a copy smoothed over this part of the r of the largest g.

    Returns
    -------
    list of Window
        In the order of r.

    Raises
    ------
    ValueError, TypeError
        As `peak` does.

    Warns
    -----
    Doubt
        If r does not ascend in even steps.

    Examples
    --------
    >>> r, g, n = read("silica_300K.dat")
    >>> [round(window.mode, 2) for window in find_peaks(r, g[:, 1], range=(0, 5))]
    [1.61, 4.11]
    """
    windows, doubts = _core.find_peaks(r, g, range, prominence, smooth)
    _warn(doubts)
    return [Window._make(window) for window in windows]


def replicas(frame, by, each=(), of=(), pair=None, compare=None, window=()):
    """Average independent replicas: means with uncertainties that can be published.

    Does what dorvek-replicas does, whose manual page explains the columns. Needs pandas.

    Parameters
    ----------
    frame : pandas.DataFrame
        A row for each replica: the fields of a `Peak`, and columns that tell what it is of.
    by : str
        Rows equal in this column are replicas of one state.
    each : sequence of str, optional
        All is done for each combination of these columns.
    of : sequence of str, optional
        These quantities only, in this order. Without n, leave out CN.
    pair : str, optional
        With `compare`: rows of both states equal in this column are pairs.
    compare : tuple, optional
        Two states: the difference of their means instead, the first taken off the second.
    window : sequence of str, optional
        Columns of shifts of the window, 0 for the window proposed: a budget of the uncertainty.

    Returns
    -------
    pandas.DataFrame
        With the columns of dorvek-replicas; a number that is not known is nan.

    Raises
    ------
    ValueError
        If a column is missing, or rows must not be averaged.

    Warns
    -----
    Doubt
        What dorvek-replicas would say on standard error.

    Examples
    --------
    >>> import pandas
    >>> peaks = []
    >>> for T in (300, 1500):
    ...     for glass in ("silica", "quench2", "quench3", "quench4", "quench5"):
    ...         r, g, n = read(f"{glass}_{T}K.dat")
    ...         found = peak(r, g[:, 1], n[:, 1], rmin=1.32, rmax=2.24)
    ...         peaks.append({"T": T, "glass": glass, **found._asdict()})
    >>> frame = pandas.DataFrame(peaks)
    >>> shift = replicas(frame, "T", of=["Rmea"], pair="glass", compare=(300, 1500))
    >>> print(shift[["quantity", "difference", "ci95"]].round(5).to_string(index=False))
    quantity  difference    ci95
        Rmea     0.00722 0.00046
    """
    import pandas

    if pair is not None and compare is None:
        raise ValueError("pair: only with compare")
    if compare is not None and (isinstance(compare, str) or len(compare) != 2):
        raise ValueError("compare: two states are needed")
    names = [[name] if isinstance(name, str) else list(name) for name in (each, of, window)]
    headings = [str(heading) for heading in frame.columns]
    if len(set(headings)) < len(headings):
        raise ValueError("a heading stands twice")
    columns = [
        [str(cell) if known else "NaN" if heading in Peak._fields else ""
         for cell, known in zip(column.tolist(), column.notna())]
        for heading, (_, column) in zip(headings, frame.items())
    ]
    each, of, window = names
    states = [str(state) for state in compare or ()]
    given, lines, doubts = _core.replicas(
        headings, columns, by, each, of, pair or "", states, window
    )
    _warn(doubts)
    table = pandas.DataFrame(lines, columns=given)
    for heading in {by, *each}.intersection(given):  # as they were, not as text
        at = headings.index(heading)
        table[heading] = table[heading].map(dict(zip(columns[at], frame.iloc[:, at])))
    return table
