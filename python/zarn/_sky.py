"""What a sky map shows, apart from how it is drawn: as the command zarn-shadow map."""

from __future__ import annotations

import json
import pathlib
from dataclasses import dataclass
from typing import Any

import numpy as np
import numpy.typing as npt

from ._counts import Counts
from ._scan import ScanResult
from ._source import short_name
from ._verdict import COMPONENTS, Verdict

Array = npt.NDArray[np.float64]

SHARES = ("0–20 %", "20–40 %", "40–60 %", "60–80 %", "80–100 %")
NO_PATH = "no path"
MOST_SHAPES = 20_000
_SEPARATOR = "\u00a0\u00a0 \u00b7\u00a0\u00a0 "


def palette() -> dict[str, Any]:
    """Return the names, shapes and colours of everything that is drawn.

    ``["components"]["AVPipe"]`` has the name of a component, its shape and its colours in
    the themes "light" and "dark"; ``["themes"]["light"]`` has the other colours, and
    ``["shapes"]`` has polygons, about 1 across, y downwards.
    """
    file = pathlib.Path(__file__).parent / "palette.json"
    return dict(json.loads(file.read_text(encoding="utf-8")))


def project(directions: npt.ArrayLike) -> Array:
    """Place directions on a sky map.

    Equal solid angles become equal areas (Mollweide). Azimuth 0 is in the middle, and
    azimuth grows to the left, as seen from inside.

    Args:
        directions: vectors of any length: (3,) or (n, 3).

    Returns:
        x from -2 to 2 and y from -1 to 1, data coordinates of the axes that ``map``
        returns: (2,) or (n, 2). NaN for a vector that is zero or not finite.

    Source: J. P. Snyder, Map Projections: A Working Manual (1987), section 31, scaled by
    the square root of 2.
    """
    given = np.asarray(directions, np.float64)
    if given.ndim not in (1, 2) or given.shape[-1] != 3:
        raise ValueError(f"directions have the shape {given.shape}, expected (3,) or (n, 3)")
    length = np.hypot(np.hypot(given[..., 0], given[..., 1]), given[..., 2])
    is_direction = np.isfinite(length) & (length > 0)
    length = np.where(is_direction, length, 1.0)
    x, y, z = np.moveaxis(np.where(is_direction[..., np.newaxis], given, 0.0), -1, 0)
    across, up = np.hypot(x, y) / length, np.abs(z) / length
    # 1 - up, without its cancellation near a pole.
    psi = _solve_parallel(np.pi * across**2 / (1 + up))
    across_map = -2 / np.pi * np.arctan2(y, x) * np.sin(psi / 2)
    placed = np.stack([across_map, np.copysign(np.cos(psi / 2), z)], axis=-1)
    placed[~is_direction] = np.nan
    return placed


def _solve_parallel(k: Array) -> Array:
    """Solve psi - sin(psi) = k for psi from 0 to pi, by Newton's steps from above."""
    psi = np.minimum(np.pi, 1.25 * np.cbrt(6 * k))
    for _ in range(60):
        square = psi * psi
        # Near a pole the difference vanishes; it is then computed from its series.
        series = psi * square / 6 * (1 - square / 20 * (1 - square / 42))
        value = np.where(psi < 0.1, series, psi - np.sin(psi))
        slope = 2 * np.sin(psi / 2) ** 2
        lower = psi - np.divide(value - k, slope, out=np.zeros_like(psi), where=slope > 0)
        if not (lower < psi).any():
            break
        psi = np.minimum(psi, lower)
    return np.asarray(psi)


def number_word(number: float) -> str:
    """A number with a true minus sign and at most three decimals; from a thousand million
    on with six digits."""
    if abs(number) < 1e9:
        text = f"{abs(number):.3f}".rstrip("0").rstrip(".")
    else:
        text = f"{abs(number):.6g}"
    return "\u2212" + text if number < 0 and text != "0" else text


def count_word(count: int) -> str:
    """A count with thousands separators; from 100 million on in powers of ten."""
    if count < 100_000_000:
        return f"{count:,}"
    digits, power = f"{count:.2e}".split("e")
    raised = str.maketrans("0123456789", "⁰¹²³⁴⁵⁶⁷⁸⁹")
    return f"{digits}×10{str(int(power)).translate(raised)}"


def percent_word(count: int, of: int) -> str:
    """A share, "< 0.1 %" for little; a dash if there is nothing to take a share of."""
    if of == 0:
        return "–"
    word = f"{100 * count / of:.1f}"
    return f"{'< 0.1' if count > 0 and word == '0.0' else word} %"


@dataclass(frozen=True)
class MapContent:
    """A scan as its map shows it."""

    result: ScanResult
    view: str
    given_title: str | None
    given_detector: str | None

    @property
    def has_shares(self) -> bool:
        return len(self.result.events) > 1

    @property
    def has_areas(self) -> bool:
        return len(self.result.pmts) > MOST_SHAPES

    @property
    def directions(self) -> Array:
        """Of the PMTs, as seen from the point of view."""
        if self.view == "centre":
            return self.result.pmts
        with np.errstate(invalid="ignore"):  # positions that are not finite
            return np.asarray(self.result.pmts - self.result.events[0])

    @property
    def shown_event(self) -> Array:
        """The event if it is a mark on the map, else zero: no direction."""
        is_shown = self.view == "centre" and not self.has_shares
        return np.asarray(self.result.events[0] if is_shown else np.zeros(3))

    def counts(self) -> Counts:
        """Of direct light, which the map shows."""
        return Counts(np.bincount(self.result.codes.reshape(-1), minlength=len(Verdict)))

    def kinds(self) -> list[tuple[str, npt.NDArray[np.bool_]]]:
        """What is drawn, in this order, and which PMTs it is: the rare lie on top."""
        if self.has_shares:
            has_path = self.result.codes < Verdict.TOTAL_REFLECTION
            paths = has_path.sum(axis=0)
            shadowed = (has_path & (self.result.codes != Verdict.CLEAR)).sum(axis=0)
            # Whole numbers: 1 of 5 events begins the second step.
            step = np.minimum(shadowed * len(SHARES) // np.maximum(paths, 1), len(SHARES) - 1)
            steps = [(name, (paths > 0) & (step == i)) for i, name in enumerate(SHARES)]
            return [(NO_PATH, paths == 0), *steps]
        codes = self.result.codes[0]
        return [
            (Verdict.CLEAR.label, codes == Verdict.CLEAR),
            (NO_PATH, codes >= Verdict.TOTAL_REFLECTION),
            *((component.label, codes == component) for component in COMPONENTS),
        ]

    def title(self) -> str:
        if self.given_title:
            return self.given_title
        if self.has_shares:
            return f"How often PMTs are hidden from {count_word(len(self.result.events))} events"
        x, y, z = (number_word(c) for c in self.result.events[0])
        return f"What hides the PMTs from an event at ({x}, {y}, {z}) mm"

    def subtitle(self) -> str:
        parts, origin = [self.summary()], self.result.origin
        if "run" in origin:
            parts.append(f"run {number_word(origin['run'])}")
        if "tolerance" in origin:
            parts.append(f"tolerance {number_word(origin['tolerance'])} mm")
        if "wavelength" in origin:
            parts.append(f"{number_word(origin['wavelength'])} nm")
        detector = self.given_detector
        if detector is None and "source" in origin:
            detector = short_name(origin["source"], origin.get("overrides"))
        return _SEPARATOR.join([*parts, detector] if detector else parts)

    def summary(self) -> str:
        counts, pairs = self.counts(), self.result.codes.size
        paths, shadowed = int(counts.paths), int(counts.shadowed)
        if pairs == 0:
            return f"No {self.unit}"
        if paths == 0:
            return f"No light path to any of the {self.unit}"
        part = " with a light path" if paths != pairs and not self.has_shares else ""
        return (
            f"{count_word(shadowed)} of {self.counted_unit(paths)}{part} shadowed "
            f"({percent_word(shadowed, paths)})"
        )

    @property
    def unit(self) -> str:
        return "light paths" if self.has_shares else "PMTs"

    def counted_unit(self, count: int) -> str:
        """As "1 PMT" or "2 PMTs"."""
        return f"{count_word(count)} {self.unit[:-1] if count == 1 else self.unit}"

    def why_untested(self, component: Verdict) -> str:
        """What stands instead of the counts of a component that is off, else empty."""
        why = self.result.origin.get("off", {}).get(component.label, "")
        return why if why in ("", "nothing to test") else "not loaded"

    def caption(self) -> str:
        origin = "event" if self.view == "event" else "detector centre"
        what = (
            f"Each mark is one PMT, at its direction from the {origin}."
            if len(self.result.pmts)
            else "There are no PMTs."
        )
        return f"{what} Seen from inside: azimuth grows to the left. Equal areas (Mollweide)."

    def footnotes(self) -> list[str]:
        paths, pairs = int(self.counts().paths), self.result.codes.size
        text = f"Percent of the {self.counted_unit(paths)}"
        if paths != pairs and self.has_shares:
            text += f"; no path: of all {count_word(pairs)} pairs of event and PMT"
        elif paths != pairs:
            text += f" with a light path; no path: of all {self.counted_unit(pairs)}"
        hidden = int(np.isnan(project(self.directions)[:, 0]).sum())
        if hidden == 0:
            return [f"{text}."]
        more = f"{count_word(hidden)} PMT{'' if hidden == 1 else 's'}"
        return [f"{text}.", f"Not drawn, because without a direction: {more}."]

    def reasons(self) -> str:
        """Why something has no path."""
        counts = self.counts()
        found = [v.label for v in Verdict if not v.has_path and counts.of(v) > 0]
        return f"({', '.join(found or [Verdict.TOTAL_REFLECTION.label])})"
