"""The calculator: verdicts, light paths and scans of one detector."""

from __future__ import annotations

import copy
import dataclasses
import math
import numbers
import operator
import os
from collections.abc import Callable
from typing import Any

import numpy as np
import numpy.typing as npt

from . import _core
from ._columns import PathColumns, PathTable, positions
from ._explanation import Explanation
from ._scan import ScanResult, progress_bar
from ._source import Source, TableSource, Time
from ._verdict import COMPONENTS, Verdict

_NUMBERS = (
    *_core.path_columns()[1:],
    *("length_inner", "length_av", "length_water"),
    *("optical_length", "time", "angle"),
)

#: The elements of the array that Calculator.light_paths returns.
LIGHT_PATH = np.dtype(
    [("type", np.int32), *((name, np.float64) for name in _NUMBERS)], align=True
)

#: The most elements of an array for a chunk, unless one event needs more.
_NUMBERS_IN_CHUNK = 1 << 24


def _threads(threads: int | None) -> int:
    if threads is None:
        return len(os.sched_getaffinity(0))
    return _whole(threads, "threads", 1, 1024)


def _number(value: float, name: str, least: float = -math.inf) -> float:
    if not isinstance(value, numbers.Real):
        raise TypeError(f"{name}: expected a number, got {type(value).__name__}")
    if not (math.isfinite(value) and value >= least):
        limit = "" if least == -math.inf else f" of at least {least:g}"
        raise ValueError(f"{name}: expected a finite number{limit}, got {value}")
    return float(value)


def _whole(value: int, name: str, least: int, most: int) -> int:
    number = operator.index(value)
    if not least <= number <= most:
        raise ValueError(f"{name}: expected {least:,} to {most:,}, got {number}")
    return number


def _component(component: Verdict) -> Verdict:
    if component not in COMPONENTS:
        raise ValueError(f"component: expected one of zarn.COMPONENTS, got {component!r}")
    return Verdict(component)


class Calculator:
    """Tells what blocks the light in one detector, for one run and tolerance.

    A calculator never changes, so any number of threads can use one. It has tables of
    its own: several detectors can be used side by side. It can be pickled, as the source
    of its tables with run and tolerance; they are read again where it arrives.

    Lengths are in mm, angles in rad, times in ns, wavelengths in nm.

    Args:
        source: geometry tables: a JSON file, a folder of *.json files, or a database,
            "sqlite:FILE" or "postgresql:CONNECTION".
        run: run number for which the tables are read.
        tolerance: margin around ropes, belly plates and NCD anchors, mm.
        overrides: JSON laid over the source: an entry replaces those of its table and
            index, in its runs.
        as_of: of a database, read what stood then: "2026-01-31" (its end),
            "2026-01-31T12:00:00Z", a date, or a datetime with a time zone.

    Raises:
        TableFileError: a file cannot be read or is invalid.
        StoreError: a database cannot be read.
        ImportError: the libraries that read databases are not installed.
        DBNotFoundError: a radius of the vessel is missing. (A component whose tables
            are missing is off, and a warning is logged.)

    >>> calc = Calculator("data/reference-detector")
    >>> calc
    Calculator('data/reference-detector', run=0, tolerance=150.0)
      on: AVHDRope, SupportRope, BellyPlate, NCDAnchor, AVPipe, NeckBoss
    """

    def __init__(
        self,
        source: Source,
        run: int = 0,
        tolerance: float = 150.0,
        *,
        overrides: Source | None = None,
        as_of: Time | None = None,
    ) -> None:
        self._run = _whole(run, "run", -(2**31), 2**31 - 1)
        self._tolerance = _number(tolerance, "tolerance")
        self._source = TableSource.of(source, overrides, as_of).pinned()
        self._place = self._source.absolute()
        try:
            self._core = _core.Calculator(self._source.read(), self._run, self._tolerance)
        finally:
            _core.deliver_messages()
        self._fingerprint: str = self._core.fingerprint

    @property
    def hold_down_ropes(self) -> _core.HoldDownRopes:
        """Points and radius of the hold-down ropes, as read-only views."""
        return self._core.hold_down_ropes

    @property
    def support_ropes(self) -> _core.SupportRopes:
        """Points and sizes of the support ropes, as read-only views."""
        return self._core.support_ropes

    @property
    def belly_plates(self) -> _core.BellyPlates:
        """Points and sizes of the belly plates, as read-only views."""
        return self._core.belly_plates

    @property
    def ncd_anchors(self) -> _core.NCDAnchors:
        """Points and sizes of the NCD anchors, as read-only views."""
        return self._core.ncd_anchors

    @property
    def av_pipes(self) -> _core.AVPipes:
        """Points and radius of the pipes, as read-only views."""
        return self._core.av_pipes

    @property
    def neck_boss(self) -> _core.NeckBoss:
        """The angle of the neck boss."""
        return self._core.neck_boss

    @property
    def source(self) -> str:
        """Where the tables were read from."""
        return self._source.name

    @property
    def overrides(self) -> str | None:
        """What was laid over them."""
        return self._source.overrides

    @property
    def as_of(self) -> str | None:
        """The time of the last import that was read; as_of= this time reads the same
        again. None of files."""
        return self._source.as_of

    @property
    def run(self) -> int:
        """The run for which the tables were read."""
        return self._run

    @property
    def tolerance(self) -> float:
        """Margin around ropes, belly plates and NCD anchors, mm."""
        return self._tolerance

    @property
    def fingerprint(self) -> str:
        """A hash of the tables; the same for the same tables, wherever they are."""
        return self._fingerprint

    @property
    def tables(self) -> str:
        """The tables that are valid for the run, as one line of JSON: an object of
        tables, each an object of entries, each an object of fields. The fingerprint is
        the SHA-256 of this text."""
        return self._core.tables

    @property
    def components(self) -> tuple[Verdict, ...]:
        """The components that are on, in the order in which they are tested."""
        return tuple(c for c in COMPONENTS if not self.why_off(c))

    def why_off(self, component: Verdict) -> str:
        """Why a component is off, with table, index and field; empty if it is on."""
        return self._core.why_off(_component(component))

    def with_tolerance(self, tolerance: float) -> Calculator:
        """Return a calculator of the same tables at another tolerance, mm.

        Reads no files. Copies the points of the models: 2 ms with 250,000 of them.
        """
        other = object.__new__(Calculator)
        vars(other).update(vars(self))
        other._tolerance = _number(tolerance, "tolerance")
        other._core = self._core.with_tolerance(other._tolerance)
        return other

    def __reduce__(self) -> tuple[Any, ...]:
        return (_restore, (self._place, self._run, self._tolerance, self._fingerprint))

    def __copy__(self) -> Calculator:
        return self  # it never changes

    def __deepcopy__(self, memo: dict[int, Any]) -> Calculator:
        return self

    def __repr__(self) -> str:
        on = ", ".join(c.label for c in self.components) or "none"
        off = [f"\n  off: {c.label} ({self.why_off(c)})" for c in COMPONENTS if self.why_off(c)]
        more = "" if self.overrides is None else f", overrides={self.overrides!r}"
        if self.as_of is not None:
            more += f", as_of={self.as_of!r}"
        return (
            f"Calculator({self.source!r}, run={self._run}, tolerance={self._tolerance!r}{more})"
            f"\n  on: {on}{''.join(off)}"
        )

    def check(
        self,
        paths: PathTable,
        *,
        out: npt.NDArray[np.uint8] | None = None,
        threads: int = 1,
    ) -> npt.NDArray[np.uint8]:
        """Judge light paths.

        Args:
            paths: a table with the columns type, start_x, start_y, start_z, end_*,
                initial_*, final_* (directions) and av1_* to av4_* (points on the
                vessel): a structured array of any shape, a mapping of arrays, or a
                table of pandas, pyarrow or awkward. A column that no type in the table
                uses can be missing. Types are numbers or names; coordinates are
                float64 and are read in place, also with strides.
            out: where to write: uint8, dense, with the shape of the paths.
            threads: maximum number of threads; it does not change verdicts.

        Returns:
            The number of the Verdict on each path, uint8, 0 to 6, in the shape of the
            paths.

        >>> calc = Calculator("data/reference-detector")
        >>> calc.check({"type": ["Water"], "start_x": [-7000.0], "start_y": [0.0],
        ...     "start_z": [0.0], "end_x": [-8000.0], "end_y": [0.0], "end_z": [0.0],
        ...     "initial_x": [-1.0], "initial_y": [0.0], "initial_z": [0.0]})
        array([0], dtype=uint8)
        """
        columns = PathColumns(paths)
        if out is None:
            out = np.empty(columns.shape, np.uint8)
        elif type(out) is not np.ndarray or out.dtype != np.uint8:
            kind = out.dtype if type(out) is np.ndarray else type(out).__name__
            raise TypeError(f"out: expected an array of uint8, got {kind}")
        elif out.shape != columns.shape:
            raise ValueError(f"out: expected the shape {columns.shape}, got {out.shape}")
        elif not out.flags.c_contiguous or not out.flags.writeable:
            raise ValueError("out: expected a dense array that can be written")
        elif any(np.may_share_memory(out, array) for array in columns.arrays()):
            raise ValueError("out: expected an array apart from the columns")
        self._core.check(columns.types, columns.vectors, out.reshape(-1), _threads(threads))
        return out

    def critical_tolerance(
        self, paths: PathTable, component: Verdict | None = None
    ) -> npt.NDArray[np.float64]:
        """Find the smallest tolerance at which each component blocks each light path.

        Args:
            paths: as in check.
            component: one of the six; None for all.

        Returns:
            Tolerances in mm, whatever the tolerance of this calculator: inf where a
            component blocks a path at none, -inf where at every one. For one component
            in the shape of the paths; for all with one more dimension of six, in the
            order of testing: its minimum is where the path becomes shadowed.
        """
        which = slice(None) if component is None else COMPONENTS.index(_component(component))
        columns = PathColumns(paths)
        found = np.empty((columns.types.size, len(COMPONENTS)))
        self._core.critical_tolerances(columns.types, columns.vectors, found)
        return found.reshape(*columns.shape, len(COMPONENTS))[..., which]

    def explain(
        self,
        path: PathTable | None = None,
        *,
        event: npt.ArrayLike | None = None,
        pmt: npt.ArrayLike | None = None,
        wavelength: float = 400.0,
        reflection: bool = False,
    ) -> Explanation:
        """Tell how every component judges one light path: rule, quantity, limit, item.

        Args:
            path: a table of one light path, as in check; or
            event, pmt: positions, mm, between which the light path is computed, for
            wavelength: nm, and
            reflection: the light that is reflected at the vessel.
        """
        if (path is None) == (event is None) or (event is None) != (pmt is None):
            raise TypeError("explain: give either a path, or an event and a pmt")
        if path is not None:
            if isinstance(path, np.void):  # an element of a structured array
                path = np.array([path])
            columns = PathColumns(path)
            return Explanation(*self._core.explain_path(columns.types, columns.vectors))
        ends = np.concatenate([positions(event, "event"), positions(pmt, "pmt")])
        if len(ends) != 2:
            raise ValueError("explain: expected one event and one pmt")
        return Explanation(*self._core.explain_pair(ends, float(wavelength), bool(reflection)))

    def light_paths(
        self,
        events: npt.ArrayLike,
        pmts: npt.ArrayLike,
        wavelength: float = 400.0,
        reflections: bool = False,
    ) -> npt.NDArray[np.void]:
        """Compute the light paths from events to PMTs, refracted at the vessel.

        Args:
            events, pmts: positions, mm: arrays (n, 3), or data frames with x, y, z.
            wavelength: nm.
            reflections: also compute the paths reflected at the vessel.

        Returns:
            A structured array (events, PMTs) of LIGHT_PATH, which check reads: the type,
            the points and directions, length_inner, length_av, length_water and
            optical_length (mm), time (of flight, ns) and angle (of incidence on a PMT
            that faces the centre, rad). With reflections the shape is (events, PMTs, 2),
            direct light first. The type is 0 where there is no path.
        """
        of_events, of_pmts = positions(events, "events"), positions(pmts, "pmts")
        shape = (len(of_events), len(of_pmts)) + ((2,) if reflections else ())
        paths = np.empty(shape, LIGHT_PATH)
        try:
            self._core.light_paths(
                of_events, of_pmts, float(wavelength), bool(reflections),
                paths.reshape(-1).view(np.uint8),
            )
        finally:
            _core.deliver_messages()
        return paths

    def scan(
        self,
        events: npt.ArrayLike,
        pmts: npt.ArrayLike,
        *,
        wavelength: float = 400.0,
        reflections: bool = False,
        smear: float | None = None,
        samples: int = 100,
        seed: int = 1,
        tolerances: npt.ArrayLike = (),
        threads: int | None = None,
        progress: bool = False,
        on_chunk: Callable[[ScanResult], None] | None = None,
    ) -> ScanResult:
        """Judge the light from each event to each PMT.

        Args:
            events, pmts: positions, mm: arrays (n, 3), or data frames with x, y, z.
            wavelength: nm.
            reflections: also judge the light that is reflected at the vessel.
            smear: also judge Gaussian positions around each event, with this standard
                deviation in each coordinate, mm.
            samples: number of these positions, 1 to 65,535.
            seed: of these positions.
            tolerances: also count the verdicts at each of these tolerances, mm.
            threads: maximum number of threads; None for all cores.
            progress: show a bar, if tqdm is installed.
            on_chunk: called with results of some events each, in their order, instead
                of returning all of them: for scans that do not fit into memory. The
                scan's own result then has no events; its pmt_counts are of all.

        Returns:
            The verdicts, and the counts at the tolerances.
        """
        # Copies, because the result keeps them.
        of_events, of_pmts = positions(events, "events").copy(), positions(pmts, "pmts").copy()
        if smear is not None:
            smear = _number(smear, "smear", least=0)
        at = np.array(tolerances, dtype=np.float64)
        if at.ndim != 1 or not np.isfinite(at).all():
            raise ValueError("tolerances: expected finite numbers in one dimension")

        verdicts = len(COMPONENTS) + 1
        # The arrays hold one chunk: of all events, unless they are handed out.
        events_at_once = len(of_events)
        if on_chunk is not None:
            of_event = max(1, len(of_pmts), len(at) * verdicts)
            events_at_once = min(events_at_once, max(1, _NUMBERS_IN_CHUNK // of_event))
        shape = (events_at_once, len(of_pmts))
        arrays: dict[str, Any] = {
            "codes": np.empty(shape, np.uint8),
            "reflected_codes": np.empty(shape, np.uint8) if reflections else None,
            "smeared": np.empty((*shape, 2), np.uint16) if smear is not None else None,
            "smeared_reflected": np.empty((*shape, 2), np.uint16)
            if smear is not None and reflections
            else None,
            "event_counts": np.empty((events_at_once, len(at), verdicts), np.int64)
            if len(at)
            else None,
        }
        pmt_counts = np.empty((len(of_pmts), len(at), verdicts), np.int64) if len(at) else None
        origin = {
            "source": self.source,
            "overrides": self.overrides,
            "as_of": self.as_of,
            "fingerprint": self._fingerprint,
            "run": self._run,
            "tolerance": self._tolerance,
            "wavelength": float(wavelength),
            "off": {c.label: self.why_off(c) for c in COMPONENTS if self.why_off(c)},
        }

        def result(first: int, count: int) -> ScanResult:
            some: dict[str, Any] = {
                name: None if array is None else array[:count] for name, array in arrays.items()
            }
            return ScanResult(
                of_events[first : first + count],
                of_pmts,
                **some,
                tolerances=at,
                first_event=first,
                origin=origin,
            )

        def deliver(first: int, count: int) -> None:
            assert on_chunk is not None
            on_chunk(copy.deepcopy(result(first, count)))

        try:
            with progress_bar(progress, len(of_events)) as on_tick:
                self._core.scan(
                    of_events,
                    of_pmts,
                    wavelength=float(wavelength),
                    threads=_threads(threads),
                    smear=smear,
                    samples=_whole(samples, "samples", 1, 65535),
                    seed=_whole(seed, "seed", -(2**63), 2**63 - 1),
                    tolerances=at.tolist(),
                    **arrays,
                    pmt_counts=pmt_counts,
                    on_tick=on_tick,
                    on_chunk=None if on_chunk is None else deliver,
                )
        finally:
            _core.deliver_messages()
        done = result(0, 0 if on_chunk is not None else len(of_events))
        return dataclasses.replace(done, pmt_counts=pmt_counts)


def _restore(source: TableSource, run: int, tolerance: float, fingerprint: str) -> Calculator:
    """Make a calculator that was pickled."""
    name, overrides, as_of = dataclasses.astuple(source)
    calculator = Calculator(name, run, tolerance, overrides=overrides, as_of=as_of)
    if calculator.fingerprint != fingerprint:
        raise _core.Error(f"{name}: the tables have changed since the calculator was pickled")
    return calculator
