"""Counts of verdicts."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any

import numpy as np
import numpy.typing as npt

from ._verdict import COMPONENTS, Verdict

if TYPE_CHECKING:
    import pandas as pd


def ratio(some: npt.NDArray[Any], of: npt.NDArray[Any]) -> npt.NDArray[np.float64]:
    """The ratio of numbers; NaN where the second is zero."""
    found = np.full(of.shape, np.nan)
    np.divide(some, of, out=found, where=of > 0)
    return found


class Counts:
    """Numbers of light paths by verdict: of a scan, of each event, or of each PMT.

    Every property is an array in the shape of what is counted.
    """

    def __init__(self, numbers: npt.NDArray[np.int64], **axes: npt.NDArray[Any]) -> None:
        #: Last index: the number of the verdict.
        self.numbers = numbers
        #: What the other indices are, in order: "event" or "pmt", "tolerance".
        self.axes = axes

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
        return ratio(self.shadowed, self.paths)

    @property
    def fraction_error(self) -> npt.NDArray[np.float64]:
        """The binomial standard error of the fraction; NaN without paths."""
        p = self.fraction
        return np.sqrt(ratio(p * (1 - p), self.paths))

    def summary(self) -> list[tuple[str, int, float]]:
        """Names, numbers and fractions of light paths; for counts of a whole scan."""
        paths = int(self.paths)
        of = {"shadowed": int(self.shadowed)}
        of |= {c.label: int(self.of(c)) for c in COMPONENTS}
        shares = [(name, n, n / paths if paths else float("nan")) for name, n in of.items()]
        return [("paths", paths, float("nan")), *shares]

    def lines(self) -> list[str]:
        """The summary as text."""
        return [
            f"  {name:<12} {number:>12,}" + ("" if np.isnan(share) else f"  {share:8.3%}")
            for name, number, share in self.summary()
        ]

    def __repr__(self) -> str:
        if self.axes:
            return f"Counts(by {', '.join(self.axes)})"
        return "\n".join(["Counts", *self.lines()])

    def to_pandas(self) -> pd.DataFrame:
        """Return a table: paths, shadowed, fraction, its error, and each component.

        Its index names what is counted: event or pmt, and tolerance (mm).
        """
        import pandas as pd

        columns = {
            "paths": self.paths,
            "shadowed": self.shadowed,
            "fraction": self.fraction,
            "fraction_error": self.fraction_error,
            **{c.label: self.of(c) for c in COMPONENTS},
        }
        table = pd.DataFrame({name: values.reshape(-1) for name, values in columns.items()})
        if len(self.axes) == 1:
            ((name, values),) = self.axes.items()
            table.index = pd.Index(values, name=name)
        elif self.axes:
            table.index = pd.MultiIndex.from_product(list(self.axes.values()), names=list(self.axes))
        return table


def count_codes(codes: npt.NDArray[np.uint8], axis: int | None = None) -> npt.NDArray[np.int64]:
    """Count codes along an axis, or all of them; the last index of the result is the code."""
    numbers = [np.asarray(np.count_nonzero(codes == code, axis=axis)) for code in Verdict]
    return np.stack(numbers, axis=-1)
