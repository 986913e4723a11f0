"""Counts of verdicts."""

from __future__ import annotations

from typing import TYPE_CHECKING

import numpy as np
import numpy.typing as npt

from ._verdict import COMPONENTS, Verdict

if TYPE_CHECKING:
    import pandas as pd


class Counts:
    """Numbers of light paths by verdict: of a scan, of each event, or of each PMT.

    Every property is an array in the shape of what is counted.
    """

    def __init__(self, numbers: npt.NDArray[np.int64]) -> None:
        #: Last index: the number of the verdict.
        self.numbers = numbers

    @classmethod
    def of_codes(cls, codes: npt.NDArray[np.uint8], axis: int | None = None) -> Counts:
        """Count codes along an axis, or all of them."""
        numbers = [np.count_nonzero(codes == code, axis=axis) for code in Verdict]
        return cls(np.stack(np.asarray(numbers, dtype=np.int64), axis=-1))

    def __add__(self, other: Counts) -> Counts:
        return Counts(self.numbers + other.numbers)

    def of(self, verdict: Verdict) -> npt.NDArray[np.int64]:
        """Return the number of pairs with this verdict.

        Counts at several tolerances are of light paths only: to Verdict.NECK_BOSS.
        """
        return np.asarray(self.numbers[..., verdict])

    @property
    def paths(self) -> npt.NDArray[np.int64]:
        """The number of light paths."""
        return np.asarray(self.numbers[..., : Verdict.TOTAL_REFLECTION].sum(axis=-1))

    @property
    def shadowed(self) -> npt.NDArray[np.int64]:
        """The number of light paths that are shadowed."""
        return self.paths - self.of(Verdict.CLEAR)

    @property
    def fraction(self) -> npt.NDArray[np.float64]:
        """The fraction of light paths that are shadowed; NaN without paths."""
        paths = self.paths
        return np.divide(self.shadowed, paths, out=np.full(paths.shape, np.nan), where=paths > 0)

    @property
    def fraction_error(self) -> npt.NDArray[np.float64]:
        """The binomial standard error of the fraction; NaN without paths."""
        p, paths = self.fraction, self.paths
        return np.sqrt(
            np.divide(p * (1 - p), paths, out=np.full(paths.shape, np.nan), where=paths > 0)
        )

    def to_pandas(self) -> pd.DataFrame:
        """Return a table: paths, shadowed, fraction, its error, and each component."""
        import pandas as pd

        columns = {
            "paths": self.paths,
            "shadowed": self.shadowed,
            "fraction": self.fraction,
            "fraction_error": self.fraction_error,
            **{c.label: self.of(c) for c in COMPONENTS},
        }
        return pd.DataFrame({name: np.atleast_1d(values) for name, values in columns.items()})
