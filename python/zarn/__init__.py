"""Which light paths does the hardware around the vessel block?

A spherical acrylic vessel in water is watched by photomultiplier tubes (PMTs). Ropes,
plates, anchors, pipes and the neck boss around it cast shadows. This package tells
whether such hardware blocks the light from an event to a PMT, and which part does.

>>> import zarn
>>> calc = zarn.Calculator("data/reference-detector")
>>> result = calc.scan([[0, 0, 3000]], [[8300, 0, 0], [0, 8300, 0]])
>>> [zarn.Verdict(code).label for code in result.codes[0]]
['clear', 'AVPipe']

Lengths are in mm, angles in rad, times in ns, wavelengths in nm. Messages go to the
logger "zarn" of Python's logging module.
"""

from ._calculator import LIGHT_PATH, Calculator
from ._core import DBNotFoundError, DBValueError, Error, StoreError, TableFileError
from ._core import version as __version__
from ._counts import Counts
from ._explanation import Explanation
from ._findings import Severity, TableCheckError, TableFinding, TableFindings, check_tables
from ._path_type import PathType
from ._scan import ScanResult
from ._verdict import COMPONENTS, Verdict

__all__ = [
    "COMPONENTS",
    "LIGHT_PATH",
    "Calculator",
    "Counts",
    "DBNotFoundError",
    "DBValueError",
    "Error",
    "Explanation",
    "PathType",
    "ScanResult",
    "Severity",
    "StoreError",
    "TableCheckError",
    "TableFileError",
    "TableFinding",
    "TableFindings",
    "Verdict",
    "__version__",
    "check_tables",
]

# Messages name them as users know them.
for _error in (Error, DBNotFoundError, DBValueError, StoreError, TableFileError):
    _error.__module__ = __name__
