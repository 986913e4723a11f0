"""Colours and axes that the pictures of these examples share."""

from __future__ import annotations

import sys
from pathlib import Path

import matplotlib.pyplot as plt
import numpy as np
import numpy.typing as npt
import zarn.draw
from matplotlib.axes import Axes
from matplotlib.figure import Figure
from matplotlib.patheffects import withStroke

Array = npt.NDArray[np.float64]

_LIGHT = zarn.draw.palette()["themes"]["light"]
INK: str = _LIGHT["text"]
SECOND_INK: str = _LIGHT["secondText"]
HAIRLINE: str = _LIGHT["hairline"]
CLEAR: str = _LIGHT["clear"]
NO_PATH: str = _LIGHT["noPath"]
ACCENT: str = _LIGHT["accent"]

plt.rcParams.update({
    "font.size": 10,
    "text.color": INK,
    "axes.titlesize": 13,
    "axes.titleweight": "bold",
    "axes.titlelocation": "left",
    "axes.edgecolor": NO_PATH,
    "axes.labelcolor": INK,
    "axes.spines.top": False,
    "axes.spines.right": False,
    "xtick.color": SECOND_INK,
    "ytick.color": SECOND_INK,
    "grid.color": HAIRLINE,
    "legend.frameon": False,
})


def degrees(angle: float) -> str:
    """An angle with a true minus sign."""
    return f"{angle:.0f}°".replace("-", "−")


def sky_map(title: str, subtitle: str) -> tuple[Figure, Axes]:
    """Make a map of directions from the detector's centre, of equal areas (Mollweide).

    Seen from inside: azimuth grows to the left.
    """
    figure = plt.figure(figsize=(10, 6.6))
    figure.text(0.04, 0.94, title, size=16, weight="bold")
    figure.text(0.04, 0.90, subtitle, color=SECOND_INK)
    axes = figure.add_axes((0.07, 0.19, 0.9, 0.675), projection="mollweide")
    axes.grid(True)
    axes.set_axisbelow(True)
    azimuths, latitudes = (-120, -60, 0, 60, 120), (-60, -30, 0, 30, 60)
    axes.set_xticks(np.radians(azimuths), labels=[])
    axes.set_yticks(np.radians(latitudes), labels=[degrees(a) for a in latitudes])
    axes.set_ylabel("Latitude")
    for azimuth in azimuths:
        axes.annotate(
            degrees(azimuth), (-np.radians(azimuth), np.radians(-45)), ha="center", va="center",
            size=9, color=SECOND_INK, path_effects=[withStroke(linewidth=3, foreground="white")],
        )
    figure.text(
        0.52, 0.155, "Each mark is one PMT, at its direction from the detector's centre. Seen "
        "from inside: azimuth grows to the left. Equal areas (Mollweide).",
        size=9, color=SECOND_INK, ha="center",
    )
    return figure, axes


def on_map(pmts: Array) -> tuple[Array, Array]:
    """Longitude and latitude of PMTs on the map, rad."""
    x, y, z = pmts.T
    return -np.arctan2(y, x), np.arctan2(z, np.hypot(x, y))


def mark_size(pmts: Array, width: float = 0.93) -> float:
    """Size of a mark: its width as a fraction of what each PMT has on the map."""
    map_area = np.pi / 8 * (0.86 * 720) ** 2  # an ellipse twice as wide as high, points
    return float(width**2 * map_area / len(pmts))


def output_folder() -> Path:
    """The folder given on the command line, or this one: also in a notebook."""
    is_given = len(sys.argv) == 2 and not sys.argv[1].startswith("-")
    folder = Path(sys.argv[1] if is_given else ".")
    folder.mkdir(parents=True, exist_ok=True)
    return folder
