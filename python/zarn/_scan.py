"""The result of a scan of events and PMTs."""

from __future__ import annotations

import contextlib
import html
import json
import os
from collections.abc import Callable, Iterator
from dataclasses import dataclass, field
from typing import TYPE_CHECKING, Any

import numpy as np
import numpy.typing as npt

from ._counts import Counts, count_codes, ratio
from ._files import parquet_options, replacing
from ._verdict import COMPONENTS, Verdict

if TYPE_CHECKING:
    import pandas as pd
    import pyarrow as pa


@dataclass(frozen=True, eq=False)
class ScanResult:
    """The verdicts on the light from each of some events to each PMT.

    ``codes`` and ``reflected_codes`` hold numbers of Verdict.
    """

    events: npt.NDArray[np.float64]
    """Positions, mm: (events, 3)."""
    pmts: npt.NDArray[np.float64]
    """Positions, mm: (PMTs, 3)."""
    codes: npt.NDArray[np.uint8]
    """Direct light: (events, PMTs)."""
    reflected_codes: npt.NDArray[np.uint8] | None = None
    """Light reflected at the vessel: (events, PMTs)."""
    smeared: npt.NDArray[np.uint16] | None = None
    """Positions around the event with a light path, and with a shadowed one:
    (events, PMTs, 2)."""
    smeared_reflected: npt.NDArray[np.uint16] | None = None
    """The same for reflected light."""
    tolerances: npt.NDArray[np.float64] = field(default_factory=lambda: np.empty(0))
    """Tolerances at which verdicts were counted, mm."""
    event_counts: npt.NDArray[np.int64] | None = None
    """Counts by event, tolerance and number of the verdict, of all light paths."""
    pmt_counts: npt.NDArray[np.int64] | None = None
    """The same by PMT, of all events of the scan."""
    first_event: int = 0
    """Number of events before these: not 0 for a chunk of a scan."""
    origin: dict[str, Any] = field(default_factory=dict)
    """Tables with their fingerprint, run, tolerance, wavelength, and why components are
    off: what made this."""

    # ---- counts

    def counts(self) -> Counts:
        """Count all light paths, direct and reflected."""
        return Counts(self._count(None))

    def per_event(self) -> Counts:
        """Count the light paths of each event."""
        return Counts(self._count(1), event=self._event_numbers())

    def per_pmt(self) -> Counts:
        """Count the light paths to each PMT."""
        return Counts(self._count(0), pmt=np.arange(len(self.pmts)))

    def _event_numbers(self) -> npt.NDArray[np.int64]:
        return np.arange(self.first_event, self.first_event + len(self.events))

    def _count(self, axis: int | None) -> npt.NDArray[np.int64]:
        counts = count_codes(self.codes, axis)
        if self.reflected_codes is not None:
            counts += count_codes(self.reflected_codes, axis)
        return counts

    def at_tolerances(self) -> Counts:
        """Count all light paths at each of the tolerances."""
        counts = self.event_counts if self.pmt_counts is None else self.pmt_counts
        total = self._asked(counts, "tolerances").sum(axis=0)
        return Counts(total, tolerance=self.tolerances)

    def per_event_at_tolerances(self) -> Counts:
        """Count the light paths of each event at each of the tolerances."""
        counts = self._asked(self.event_counts, "tolerances")
        return Counts(counts, event=self._event_numbers(), tolerance=self.tolerances)

    def per_pmt_at_tolerances(self) -> Counts:
        """Count the light paths to each PMT at each of the tolerances."""
        counts = self._asked(self.pmt_counts, "tolerances")
        return Counts(counts, pmt=np.arange(len(counts)), tolerance=self.tolerances)

    @property
    def smeared_fraction(self) -> npt.NDArray[np.float64]:
        """The fraction of positions around the event that are shadowed, for direct
        light: (events, PMTs); NaN where no position has a light path."""
        return self._fraction(self.smeared, "smear")

    @property
    def smeared_reflected_fraction(self) -> npt.NDArray[np.float64]:
        """The same for reflected light."""
        return self._fraction(self.smeared_reflected, "smear and reflections")

    def _fraction(
        self, smeared: npt.NDArray[np.uint16] | None, arguments: str
    ) -> npt.NDArray[np.float64]:
        paths, shadowed = np.moveaxis(self._asked(smeared, arguments), -1, 0)
        return ratio(shadowed, paths)

    @staticmethod
    def _asked(values: npt.NDArray[Any] | None, arguments: str) -> npt.NDArray[Any]:
        if values is None:
            raise ValueError(f"the scan was made without {arguments}")
        return values

    # ---- tables

    def to_pandas(self) -> pd.DataFrame:
        """Return a table with a row for each pair: event and pmt (their numbers), code
        and verdict, and those of reflections and of smearing."""
        import pandas as pd

        table = pd.DataFrame(self._columns())
        names = [v.label for v in Verdict]
        verdicts = pd.Categorical.from_codes(table["code"].to_numpy(), names)
        table.insert(3, "verdict", verdicts)
        return table

    def to_arrow(self) -> pa.Table:
        """Return the same table for Arrow; verdicts are dictionary-encoded."""
        import pyarrow as pa

        columns: dict[str, Any] = dict(self._columns())
        names = pa.array([v.label for v in Verdict])
        columns["verdict"] = pa.DictionaryArray.from_arrays(
            pa.array(columns["code"].astype(np.int8)), names
        )
        origin = {"zarn": json.dumps(self.origin)}
        return pa.table(columns).replace_schema_metadata(origin)

    def to_parquet(self, path: str | os.PathLike[str]) -> None:
        """Write the table of to_arrow to a Parquet file, without the verdicts' names.

        An existing file is replaced when the new one is complete.
        """
        import pyarrow.parquet as pq

        with replacing(path) as file:
            table = self.to_arrow().drop_columns("verdict")
            pq.write_table(table, file, **parquet_options(table.schema))

    def _columns(self) -> dict[str, npt.NDArray[Any]]:
        events, pmts = self.codes.shape
        columns: dict[str, npt.NDArray[Any]] = {
            "event": np.repeat(self._event_numbers(), pmts),
            "pmt": np.tile(np.arange(pmts), events),
            "code": self.codes.reshape(-1),
        }
        if self.reflected_codes is not None:
            columns["reflected_code"] = self.reflected_codes.reshape(-1)
        if self.smeared is not None:
            columns["smeared_fraction"] = self.smeared_fraction.reshape(-1)
        if self.smeared_reflected is not None:
            columns["smeared_reflected_fraction"] = self.smeared_reflected_fraction.reshape(-1)
        return columns

    # ---- files

    def save(self, path: str | os.PathLike[str]) -> None:
        """Write everything to a compressed NumPy file (.npz), which load reads.

        An existing file is replaced when the new one is complete.
        """
        arrays = {name: getattr(self, name) for name in _ARRAYS}
        present = {name: array for name, array in arrays.items() if array is not None}
        with replacing(path) as file:
            np.savez_compressed(
                file,
                first_event=np.array(self.first_event),
                origin=np.array(json.dumps(self.origin)),
                **present,
            )

    @classmethod
    def load(cls, path: str | os.PathLike[str]) -> ScanResult:
        """Read what save wrote.

        Raises:
            ValueError: the file holds something else, or is damaged.
        """
        with open(path, "rb") as file:
            try:
                with np.load(file, allow_pickle=False) as arrays:
                    some = {n: arrays[n] for n in arrays.files if n in _ARRAYS}
                    result = cls(
                        **some,
                        first_event=int(arrays["first_event"]),
                        origin=json.loads(str(arrays["origin"])),
                    )
                result._require_shapes()
            except Exception as error:  # NumPy raises many kinds
                raise ValueError(f"{os.fspath(path)}: not a saved scan: {error}") from error
        return result

    def _require_shapes(self) -> None:
        """Raise ValueError unless the arrays are those of one scan."""
        pairs, tolerances = (len(self.events), len(self.pmts)), (len(self.tolerances),)
        for name, shape, kind in (
            ("events", (pairs[0], 3), np.float64),
            ("pmts", (pairs[1], 3), np.float64),
            ("codes", pairs, np.uint8),
            ("reflected_codes", pairs, np.uint8),
            ("smeared", (*pairs, 2), np.uint16),
            ("smeared_reflected", (*pairs, 2), np.uint16),
            ("tolerances", tolerances, np.float64),
            ("event_counts", (pairs[0], *tolerances, len(COMPONENTS) + 1), np.int64),
            ("pmt_counts", (pairs[1], *tolerances, len(COMPONENTS) + 1), np.int64),
        ):
            array = getattr(self, name)
            if array is not None and (array.shape != shape or array.dtype != kind):
                raise ValueError(f"{name} is {array.dtype} {array.shape}, expected {shape}")

    # ---- on the screen

    def __repr__(self) -> str:
        events, pmts = self.codes.shape
        lines = [f"ScanResult({events:,} events x {pmts:,} PMTs)", *self.counts().lines()]
        return "\n".join(lines)

    def _repr_html_(self) -> str:
        events, pmts = self.codes.shape
        rows = "".join(
            f"<tr><th style='text-align:left'>{html.escape(name)}</th><td>{number:,}</td>"
            f"<td>{'' if np.isnan(share) else f'{share:.3%}'}</td></tr>"
            for name, number, share in self.counts().summary()
        )
        return (
            f"<table><caption>{events:,} events &times; {pmts:,} PMTs</caption>"
            f"<thead><tr><th></th><th>light paths</th><th>fraction</th></tr></thead>"
            f"<tbody>{rows}</tbody></table>"
        )


_ARRAYS = tuple(
    name for name in ScanResult.__dataclass_fields__ if name not in ("first_event", "origin")
)


@contextlib.contextmanager
def progress_bar(wanted: bool, events: int) -> Iterator[Callable[[int], None] | None]:
    """Yield what to call with the number of events done; None without a bar."""
    if not wanted:
        yield None
        return
    try:
        from tqdm.auto import tqdm
    except ImportError:
        yield None
        return
    with tqdm(total=events, unit=" events") as bar:

        def show(done: int) -> None:
            bar.update(done - bar.n)

        yield show
