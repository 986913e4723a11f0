"""Sky maps of scans, drawn by matplotlib.

They look like those of the command ``zarn-shadow map``: the same projection, words,
colours and shapes.

>>> import numpy as np, zarn, zarn.draw
>>> np.abs(zarn.draw.project([[1, 0, 0], [0, 1, 0], [0, 0, 1]]).round(3))
array([[0., 0.],
       [1., 0.],
       [0., 1.]])

The package matplotlib is needed: ``pip install "zarn[draw]"``.
"""

from __future__ import annotations

import re
from typing import TYPE_CHECKING, Any, Literal

import numpy as np
import numpy.typing as npt

from ._scan import ScanResult
from ._sky import (
    NO_PATH,
    SHARES,
    Array,
    MapContent,
    count_word,
    number_word,
    palette,
    percent_word,
    project,
)
from ._verdict import COMPONENTS, Verdict

try:
    from matplotlib.collections import LineCollection, PolyCollection
    from matplotlib.font_manager import FontProperties, fontManager
    from matplotlib.patheffects import withStroke
    from matplotlib.textpath import text_to_path
except ModuleNotFoundError as error:
    missing = str(error.name).partition(".")[0]
    raise ImportError(
        f'zarn.draw needs the package {missing}: pip install "zarn[draw]"'
    ) from error

if TYPE_CHECKING:
    from matplotlib.axes import Axes

__all__ = ["map", "palette", "project"]


def map(
    result: ScanResult,
    ax: Axes | None = None,
    *,
    view: Literal["centre", "event"] = "centre",
    theme: Literal["light", "dark"] = "light",
    title: str | None = None,
    detector: str | None = None,
) -> Axes:
    """Draw which PMTs the hardware hides, in all directions.

    For one event, each PMT has the shape and colour of what blocks its direct light. For
    several, its colour is the share of its light paths that are shadowed, in five steps.
    Above 20,000 PMTs each is a small square.

    Args:
        result: of ``Calculator.scan``, of at least one event.
        ax: plain axes to draw into, which lose their ticks and frame; a new figure without
            it. The size of words depends on the size that the axes have now.
        view: from where directions are taken: the centre of the detector, or the only
            event.
        theme: for a light or for a dark ground.
        title: instead of one made from the content.
        detector: the name shown for the tables, instead of their file's or folder's.

    Returns:
        The axes. Their data coordinates are those of ``project``, so more can be drawn
        into the map. The marks of each kind are one collection, whose ``get_gid`` is the
        label of the verdict ("AVPipe", "clear"), "no path", or a share ("0–20 %").

    Raises:
        ValueError: there is no event; several, for the view from the event; or an
            argument is none of its words.
    """
    _require("view", view, ("centre", "event"))
    _require("theme", theme, ("light", "dark"))
    events = len(result.events)
    if events == 0:
        raise ValueError("a sky map needs at least one event, the result has none")
    if events > 1 and view == "event":
        raise ValueError(f'view="event" needs one event, the result has {events:,}')
    content = MapContent(result, view, title, detector)
    sheet = _Sheet(ax, theme, _HEIGHT + (_SHARE_ROW if content.has_shares else 0.0))
    _draw_header(sheet, content)
    # Lines show on squares, but not on shapes.
    parts = [_draw_graticule, _draw_marks]
    for draw in reversed(parts) if content.has_areas else parts:
        draw(sheet, content)
    _draw_words_on_map(sheet, content)
    _draw_legend(sheet, content)
    return sheet.axes


def _require(name: str, word: str, words: tuple[str, ...]) -> None:
    if word not in words:
        raise ValueError(f"{name} is {word!r}, expected {' or '.join(words)}")


# ---- where it is drawn

# The picture in units, of which the map is 768 wide; y downwards.
_WIDTH, _HEIGHT = 832.0, 690.0
_SHARE_ROW = 28.0  # more, for the key of shares
_LEFT, _RIGHT, _TOP, _BOTTOM = 32.0, 800.0, 102.0, 486.0  # of the map
_UNITS = 192.0  # for 1 on the map
_DEGREES = (-120, -60, 0, 60, 120), (-60, -30, 0, 30, 60)  # azimuths, latitudes

_TITLE, _SUBTITLE, _HEADING, _LABEL, _NOTE, _AXIS = 22.0, 14.0, 12.5, 13.0, 12.0, 11.5
_FAMILIES = ("Helvetica", "Liberation Sans", "Arial", "Nimbus Sans")

# Sizes relative to a component's shape.
_RING, _SHARE_DOT = 0.78, 0.88


class _Sheet:
    """Axes in which places and sizes are units of the picture, y downwards."""

    def __init__(self, axes: Axes | None, theme: str, height: float) -> None:
        self.palette = palette()
        self.theme = theme
        self.colours = self.palette["themes"][theme]
        self.axes = self._prepare(axes, height)
        self.axes.apply_aspect()
        width = self.axes.get_window_extent().width / self.axes.figure.dpi
        self.points = 72.0 * float(width) / _WIDTH  # a unit
        installed = {font.name for font in fontManager.ttflist}
        self.family = next((name for name in _FAMILIES if name in installed), "sans-serif")
        self._order = 2.0

    def _prepare(self, axes: Axes | None, height: float) -> Axes:
        if axes is None:
            from matplotlib import pyplot

            figure = pyplot.figure(
                figsize=(_WIDTH / 100, height / 100), facecolor=self.colours["view"]
            )
            axes = figure.add_axes((0.0, 0.0, 1.0, 1.0))
        if axes.name != "rectilinear":
            raise ValueError(f"the axes have the projection {axes.name}, expected plain ones")
        axes.set_xticks([])
        axes.set_yticks([])
        axes.spines[:].set_visible(False)
        axes.set_facecolor(self.colours["view"])
        axes.set_autoscale_on(False)
        (left, right), (top, bottom) = self.place([(0.0, 0.0), (_WIDTH, height)]).T
        axes.set(xlim=(left, right), ylim=(bottom, top), aspect="equal")
        return axes

    def colour_of(self, kind: str, area: bool = False) -> str:
        """The colour of marks of one kind."""
        if kind in SHARES:
            return str(self.colours["share"][SHARES.index(kind)])
        if kind == NO_PATH:
            return str(self.colours["noPath"])
        if kind == Verdict.CLEAR.label:
            return str(self.colours["clearArea" if area else "clear"])
        return str(self.palette["components"][kind][self.theme])

    def outline_of(self, kind: str, size: float) -> Array:
        """The polygon of a mark."""
        if kind in SHARES:
            return _circle(_SHARE_DOT * size / 2)
        if kind == NO_PATH:
            return _ring(_RING * size / 2, min(max(0.16 * size, 0.6), 1.4))
        sizes = self.palette["sizes"]
        if kind == Verdict.CLEAR.label:
            return _circle(size / 2 * sizes["clear"] / sizes["shape"])
        shape = self.palette["components"][kind]["shape"]
        return size * np.array(self.palette["shapes"][shape], np.float64)

    @staticmethod
    def place(points: npt.ArrayLike) -> Array:
        """Data coordinates of points of the picture."""
        x, y = np.moveaxis(np.asarray(points, np.float64), -1, 0)
        middle = (_LEFT + _RIGHT) / 2, (_TOP + _BOTTOM) / 2
        return np.stack([(x - middle[0]) / _UNITS, (middle[1] - y) / _UNITS], axis=-1)

    @staticmethod
    def unplace(points: Array) -> Array:
        """The opposite."""
        x, y = np.moveaxis(points, -1, 0)
        middle = (_LEFT + _RIGHT) / 2, (_TOP + _BOTTOM) / 2
        return np.stack([middle[0] + _UNITS * x, middle[1] - _UNITS * y], axis=-1)

    def _next(self) -> float:
        """Each thing lies on those drawn before."""
        self._order += 0.01
        return self._order

    def polygons(
        self, outline: Array, at: Array, colour: str, name: str, sharp: bool = False,
        pen: float = 0.0,
    ) -> None:
        """One polygon at each of several places: filled, or drawn with a pen."""
        corners: Any = self.place(at[:, np.newaxis] + outline)  # faster than a list
        self.axes.add_collection(
            PolyCollection(
                corners, facecolors="none" if pen else colour,
                edgecolors=colour if pen else "none", linewidths=pen * self.points,
                antialiaseds=not sharp, gid=name, zorder=self._next(),
            ),
            autolim=False,
        )

    def lines(self, lines: list[Array], colour: str, opacity: float = 1.0) -> None:
        self.axes.add_collection(
            LineCollection(
                [self.place(line) for line in lines], colors=self.colours[colour], alpha=opacity,
                linewidths=self.points, gid="graticule", zorder=self._next(),
            ),
            autolim=False,
        )

    def width(self, words: str, size: float, bold: bool = False) -> float:
        font = FontProperties(family=self.family, size=size, weight="bold" if bold else "normal")
        return float(text_to_path.get_text_width_height_descent(words, font, False)[0])

    def text(
        self, x: float, y: float, words: str, size: float, colour: str = "text",
        anchor: str = "left", bold: bool = False, room: float = np.inf, halo: float = 0.0,
    ) -> None:
        """A line of words, in smaller letters where it is wider than the room."""
        words = re.sub(r"[\x00-\x1f\x7f]+", " ", words)
        words = re.sub(r"[\ud800-\udfff]", "?", words)  # bytes of a file's name
        # Letters of a readable size on a screen are wider by up to 4 %: by whole pixels.
        size *= min(1.0, 0.96 * room / max(self.width(words, size, bold), 1e-9))
        at_x, at_y = self.place((x, y))
        effects = [withStroke(linewidth=halo * self.points, foreground=self.colours["view"])]
        self.axes.text(
            at_x, at_y, words, size=size * self.points, color=self.colours[colour], ha=anchor,
            va="baseline", family=self.family, weight="bold" if bold else "normal",
            parse_math=False, path_effects=effects if halo else None, zorder=self._next(),
        )


def _circle(radius: float) -> Array:
    """A polygon with corners on a circle."""
    corners = 12 if radius < 3 else 32
    angle = 2 * np.pi * (np.arange(corners) + 0.5) / corners
    return radius * np.stack([np.cos(angle), np.sin(angle)], axis=-1)


def _ring(radius: float, pen: float) -> Array:
    """A ring as one polygon: around it, and back along its inner edge."""
    unit = _circle(radius) / radius
    outer, inner = (radius + pen / 2) * unit, (radius - pen / 2) * unit
    return np.concatenate([outer, outer[:1], inner[:1], inner[::-1]])


# ---- its parts


def _draw_header(sheet: _Sheet, content: MapContent) -> None:
    room = _RIGHT - _LEFT
    sheet.text(_LEFT, 44.0, content.title(), _TITLE, bold=True, room=room)
    sheet.text(_LEFT, 70.0, content.subtitle(), _SUBTITLE, "secondText", room=room)
    sheet.text(
        (_LEFT + _RIGHT) / 2, _BOTTOM + 20.0, content.caption(), _NOTE, "secondText", "center",
        room=room,
    )


def _on_map(azimuth: npt.ArrayLike, latitude: npt.ArrayLike) -> Array:
    """Points of the picture, from degrees; azimuth -180 is the right edge."""
    azimuth, latitude = np.broadcast_arrays(np.asarray(azimuth), np.radians(latitude))
    zero = np.zeros(latitude.shape)
    placed = project(np.stack([np.cos(latitude), zero, np.sin(latitude)], axis=-1))
    placed[..., 0] = -azimuth / 90 * np.sqrt(np.maximum(0, 1 - placed[..., 1] ** 2))
    return _Sheet.unplace(placed)


def _draw_graticule(sheet: _Sheet, content: MapContent) -> None:
    azimuths, latitudes = _DEGREES
    lines = [_on_map([180, -180], latitude) for latitude in latitudes]
    # Points that are even on a meridian: even sines are places, not latitudes.
    angle = np.linspace(-np.pi / 2, np.pi / 2, 73)
    meridian = np.stack([np.cos(angle), np.sin(angle)], axis=-1)
    lines += [_Sheet.unplace(meridian * (-azimuth / 90, 1)) for azimuth in azimuths]
    if content.has_areas:
        sheet.lines(lines, "text", opacity=0.16)
    else:
        sheet.lines(lines, "hairline")
    edge = np.concatenate([meridian * (2, 1), meridian[::-1] * (-2, 1)])
    sheet.lines([_Sheet.unplace(edge)], "noPath")


def _draw_marks(sheet: _Sheet, content: MapContent) -> None:
    places = _Sheet.unplace(project(content.directions))
    is_drawn = np.isfinite(places[:, 0])
    # What each PMT has of the map.
    side = _UNITS * np.sqrt(2 * np.pi / max(len(places), 1))
    sizes = sheet.palette["sizes"]
    size = min(sizes["shape"] * side, sizes["largest"])
    square = max(size, 0.5) * np.array([(-0.5, -0.5), (0.5, -0.5), (0.5, 0.5), (-0.5, 0.5)])
    for kind, is_one in content.kinds():
        at = places[is_one & is_drawn]
        if len(at) == 0:
            continue
        if content.has_areas:
            sheet.polygons(square, at, sheet.colour_of(kind, area=True), kind, sharp=True)
        else:
            sheet.polygons(sheet.outline_of(kind, size), at, sheet.colour_of(kind), kind)


def _draw_words_on_map(sheet: _Sheet, content: MapContent) -> None:
    event = _Sheet.unplace(project(content.shown_event))
    word, space = "event", 12.0
    word_width = sheet.width(word, _HEADING, bold=True)
    word_at = event[0] + space
    if word_at + word_width > _RIGHT:
        word_at = event[0] - space - word_width
    azimuths, latitudes = _DEGREES
    for latitude in latitudes:
        x, y = _on_map(180, latitude)
        sheet.text(x - 7, y + 4, f"{number_word(latitude)}°", _AXIS, "secondText", "right")
    for azimuth in azimuths:
        x, y = _on_map(azimuth, -45)
        # Not below the event and its word.
        if abs(y - event[1]) < 22 and event[0] - 44 < x < word_at + word_width + 22:
            continue
        sheet.text(x, y + 4, f"{number_word(azimuth)}°", _AXIS, "secondText", "center", halo=4.0)
    if np.isfinite(event).all():
        for radius, colour in ((9.5, "view"), (8.0, "text"), (6.0, "view"), (2.0, "text")):
            sheet.polygons(_circle(radius), event[np.newaxis], sheet.colours[colour], "event")
        sheet.text(word_at, event[1] + 4, word, _HEADING, bold=True, halo=4.0)
    if len(content.result.pmts) == 0:
        middle = (_LEFT + _RIGHT) / 2, (_TOP + _BOTTOM) / 2
        sheet.text(middle[0], middle[1] - 24, "No PMTs", _LABEL, "secondText", "center")


def _draw_swatch(
    sheet: _Sheet, content: MapContent, kind: str, x: float, y: float, pen: float = 0.0
) -> None:
    area = content.has_areas
    outline = (
        8.0 * np.array([(-1, -1), (1, -1), (1, 1), (-1, 1)])
        if area
        else sheet.outline_of(kind, 12.0)
    )
    sheet.polygons(
        outline, np.array([(x, y)]), sheet.colour_of(kind, area), f"legend {kind}", pen=pen
    )


def _draw_share_key(sheet: _Sheet, content: MapContent, y: float) -> None:
    before, after, mark, space = "Shadowed from", "of the events", 15.0, 12.0
    words = (before, *SHARES, after)
    widths = [sheet.width(word, _NOTE) + space for word in words]
    x = (_LEFT + _RIGHT - sum(widths) - mark * len(SHARES)) / 2
    for word, width in zip(words, widths, strict=True):
        if word in SHARES:
            _draw_swatch(sheet, content, word, x + 6, y)
            x += mark
        sheet.text(x, y + 4.5, word, _NOTE)
        x += width


def _draw_legend(sheet: _Sheet, content: MapContent) -> None:
    top = _BOTTOM + 50.0
    if content.has_shares:
        _draw_share_key(sheet, content, _BOTTOM + 45.0)
        top += _SHARE_ROW
    heading = "First component that blocks the light, in the order tested"
    sheet.text(_LEFT, top, heading, _HEADING, bold=True)
    counts, names = content.counts(), sheet.palette["components"]
    paths, pairs = int(counts.paths), content.result.codes.size
    rows = [
        (c.label, names[c.label]["name"], int(counts.of(c)), paths, content.why_untested(c))
        for c in COMPONENTS
    ]
    clear = int(counts.of(Verdict.CLEAR))
    rows.append((Verdict.CLEAR.label, sheet.palette["clear"], clear, paths, ""))
    rows.append((NO_PATH, sheet.palette["noPath"], pairs - paths, pairs, ""))
    first = top + 25.0  # the middle of the first row
    for i, (kind, name, count, of, why_untested) in enumerate(rows):
        x, y = _LEFT + 262 * (i // 3), first + 27 * (i % 3)
        _draw_swatch(sheet, content, kind, x + 8, y, pen=1.3 if why_untested else 0.0)
        sheet.text(x + 24, y + 4.5, name, _LABEL)
        if not why_untested:
            sheet.text(x + 183, y + 4.5, count_word(count), _LABEL, anchor="right")
        share = why_untested or percent_word(count, of)
        sheet.text(x + 237, y + 4.5, share, _LABEL, "secondText", "right")
    # Below "No path", in the place of a ninth row.
    sheet.text(x + 24, y + 27, content.reasons(), _NOTE, "secondText", room=212)
    for i, line in enumerate(content.footnotes()):
        sheet.text(_LEFT, first + 93 + 16 * i, line, _NOTE, "secondText", room=_RIGHT - _LEFT)
