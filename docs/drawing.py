"""What the drawings of the documents share: colours, shapes and text in SVG.

A drawing brings its own ground and the colours of its reader's theme, so it is
legible on light and on dark pages.
"""

import json
import pathlib
from xml.sax.saxutils import escape

PALETTE = json.loads((pathlib.Path(__file__).resolve().parent.parent
                      / "display" / "palette.json").read_text())
#: Colours on light and on dark ground, by the names of the palette. Those of components
#: never set text.
COLOURS = {name: (colour, PALETTE["themes"]["dark"][name])
           for name, colour in PALETTE["themes"]["light"].items() if isinstance(colour, str)}
COLOURS |= {name: (look["light"], look["dark"]) for name, look in PALETTE["components"].items()}


def number(value):
    return f"{value:.1f}".removesuffix(".0")


def pairs(points):
    return " ".join(f"{number(x)},{number(y)}" for x, y in points)


class Drawing:
    """An SVG in pixels, y downwards, on a ground "page". Colours are names of COLOURS."""

    def __init__(self, width, height, title):
        self.width, self.height, self.title = width, height, title
        self.used = {"page", "text"}
        self.shapes = []

    def _paint(self, fill=None, stroke=None, pen=1.0, opacity=None, dash=None):
        names = []
        if fill is not None:
            self.used.add(fill)
            names.append(f"f-{fill}")
        if stroke is not None:
            self.used.add(stroke)
            names.append(f"s-{stroke}")
        more = "" if fill is not None else ' fill="none"'
        if stroke is not None:
            more += f' stroke-width="{pen:g}"'
        if opacity is not None:
            more += f' opacity="{opacity:g}"'
        if dash is not None:
            more += f' stroke-dasharray="{dash}"'
        return f'class="{" ".join(names)}"{more}'

    def rect(self, x, y, width, height, radius=0, **paint):
        self.shapes.append(
            f'<rect x="{number(x)}" y="{number(y)}" width="{number(width)}" '
            f'height="{number(height)}" rx="{radius}" {self._paint(**paint)}/>')

    def circle(self, x, y, radius, **paint):
        self.shapes.append(f'<circle cx="{number(x)}" cy="{number(y)}" '
                           f'r="{number(radius)}" {self._paint(**paint)}/>')

    def line(self, *points, **paint):
        self.shapes.append(
            f'<polyline points="{pairs(points)}" {self._paint(**paint)}/>')

    def polygon(self, *points, **paint):
        self.shapes.append(
            f'<polygon points="{pairs(points)}" {self._paint(**paint)}/>')

    def mark(self, x, y, size, component):
        """The shape of a component."""
        shape = PALETTE["shapes"][PALETTE["components"][component]["shape"]]
        self.polygon(*((x + size * dx, y + size * dy) for dx, dy in shape), fill=component)

    def arrow(self, *points, colour="text"):
        """A line of right angles, or any other, with a head at its end."""
        (x1, y1), (x2, y2) = points[-2:]
        length = max(abs(x2 - x1), abs(y2 - y1))
        ux, uy = (x2 - x1) / length, (y2 - y1) / length
        self.line(*points[:-1], (x2 - 6 * ux, y2 - 6 * uy), stroke=colour, pen=1.4)
        self.polygon((x2, y2), (x2 - 9 * ux - 4 * uy, y2 - 9 * uy + 4 * ux),
                     (x2 - 9 * ux + 4 * uy, y2 - 9 * uy - 4 * ux), fill=colour)

    def cells(self, x, y, size, rows, **paint):
        """The cells of a grid whose answers are true, each row in runs."""
        moves = []
        for j, row in enumerate(rows):
            begin = None
            for i, answer in enumerate([*row, False]):
                if answer and begin is None:
                    begin = i
                elif not answer and begin is not None:
                    moves.append(f"M{number(x + size * begin)} {number(y + size * j)}"
                                 f"h{number(size * (i - begin))}v{number(size)}"
                                 f"h{number(size * (begin - i))}z")
                    begin = None
        self.shapes.append(f'<path d="{"".join(moves)}" {self._paint(**paint)}/>')

    def text(self, x, y, words, size=13, colour="text", anchor="start", bold=False):
        self.used.add(colour)
        weight = ' font-weight="bold"' if bold else ""
        self.shapes.append(
            f'<text x="{number(x)}" y="{number(y)}" font-size="{size}" '
            f'text-anchor="{anchor}"{weight} class="f-{colour}">{escape(words)}</text>')

    def _styles(self, theme):
        for name in COLOURS:
            if name in self.used:
                colour = COLOURS[name][theme]
                yield f".f-{name} {{ fill: {colour} }} .s-{name} {{ stroke: {colour} }}"

    def svg(self):
        lines = [
            f'<svg xmlns="http://www.w3.org/2000/svg" '
            f'viewBox="0 0 {self.width} {self.height}" width="{self.width}" '
            'font-family="Helvetica, Arial, sans-serif">',
            f"<title>{escape(self.title)}</title>",
            "<style>", *self._styles(0), "@media (prefers-color-scheme: dark) {",
            *self._styles(1), "}", "</style>",
            f'<rect width="{self.width}" height="{self.height}" class="f-page"/>',
            *self.shapes, "</svg>"]
        return "\n".join(lines) + "\n"
