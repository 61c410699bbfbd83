from collections.abc import Sequence
from os import PathLike
from typing import Literal, NamedTuple

from numpy import float32
from numpy.typing import ArrayLike, NDArray
from pandas import DataFrame

__version__: str

class Doubt(UserWarning): ...

class Peak(NamedTuple):
    rmin: float
    rmax: float
    CN: float
    dCN: float
    Rmea: float
    dRmea: float
    Rmod: float
    var: float
    dvar: float
    varl: float
    varr: float
    adif: float
    arat: float
    pmo3: float
    dpmo3: float
    skew: float
    dskew: float
    pmo4: float
    dpmo4: float
    kurt: float
    dkurt: float
    cum4: float
    dcum4: float
    Rmed: float
    Rtop: float

class Comparison(NamedTuple):
    first: Peak
    second: Peak
    mean_doff: float
    mean_stud: float
    mean_sgfc: float
    variance_stud: float
    variance_sgfc: float
    distribution_doff: float
    distribution_chsq: float
    distribution_sgfc: float

class Window(NamedTuple):
    rmin: float
    rmax: float
    mode: float
    height: float
    note: str

def peak(
    r: ArrayLike,
    g: ArrayLike,
    n: ArrayLike | None = None,
    *,
    rmin: float,
    rmax: float,
    weight: Literal["g", "r2"] = "g",
) -> Peak: ...
def compare(
    first: Sequence[ArrayLike],
    second: Sequence[ArrayLike],
    *,
    rmin: float,
    rmax: float,
    constraints: int = 0,
) -> Comparison: ...
def read(
    path: str | bytes | PathLike[str] | PathLike[bytes], partials: int | None = None
) -> tuple[NDArray[float32], NDArray[float32], NDArray[float32]]: ...
def running(r: ArrayLike, g: ArrayLike, density: float) -> NDArray[float32]: ...
def find_peaks(
    r: ArrayLike,
    g: ArrayLike,
    range: tuple[float, float] | None = None,
    prominence: float = 0.3,
    smooth: float = 0.02,
) -> list[Window]: ...
def replicas(
    frame: DataFrame,
    by: str,
    each: str | Sequence[str] = (),
    of: str | Sequence[str] = (),
    pair: str | None = None,
    compare: tuple[object, object] | None = None,
    window: str | Sequence[str] = (),
) -> DataFrame: ...
