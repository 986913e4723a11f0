#!/usr/bin/env python3
"""Draw light-paths.svg: the light paths from one event to a ring of PMTs.

    docs/draw-light-paths.py ZARN-SHADOW [FOLDER]

runs the command on the reference detector and writes the drawing to FOLDER
(default: the folder of this script).
"""

import csv
import math
import pathlib
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True  # the source folder stays clean

from drawing import PALETTE, Drawing

HERE = pathlib.Path(__file__).resolve().parent
DETECTOR = HERE.parent / "data" / "reference-detector"

# In the x-z plane, mm: close to the wall, so that total reflection hides the event from
# some PMTs, and off the axis, so that the drawing is not symmetric.
EVENT = (4600.0, 0.0, 3000.0)
PMTS = 72
PMT_RADIUS = 8300.0
SPHERES = (5800.0, 5860.0)

SCALE = 0.035  # pixels per mm
SIZE = 640
MARK = 11      # pixels, the size of a component's shape


def pixel(x, z):
    return SIZE / 2 + SCALE * x, SIZE / 2 - SCALE * z


def scan(command):
    """The ring of PMTs, the verdicts on them and the paths to them."""
    ring = [(PMT_RADIUS * math.sin(a), PMT_RADIUS * math.cos(a))
            for a in (2 * math.pi * i / PMTS for i in range(PMTS))]
    with tempfile.TemporaryDirectory() as folder:
        folder = pathlib.Path(folder)
        rows = [f"{i},{x!r},0,{z!r}" for i, (x, z) in enumerate(ring)]
        (folder / "pmts.csv").write_text("\n".join(["pmt,x,y,z", *rows, ""]))
        subprocess.run(
            [command, "scan", "--geometry", DETECTOR, "--pmts", folder / "pmts.csv",
             "--at=" + ",".join(str(c) for c in EVENT), "-o", folder / "verdicts.csv",
             "--paths", folder / "paths.csv"], check=True, stderr=subprocess.DEVNULL)
        with open(folder / "verdicts.csv") as file:
            verdicts = list(csv.DictReader(file))
        with open(folder / "paths.csv") as file:
            paths = {row["pmt"]: row for row in csv.DictReader(file)}
    return ring, verdicts, paths


def kind_of(verdict):
    """What a PMT is drawn as: a component, clear or no path."""
    return {"": "clear", "no path": "noPath"}.get(verdict["by"], verdict["by"])


def mark(drawing, x, y, kind):
    if kind == "clear":
        drawing.circle(x, y, 0.27 * MARK, fill="clear")
    elif kind == "noPath":
        drawing.circle(x, y, 0.39 * MARK, stroke="noPath", pen=1.4)
    else:
        drawing.mark(x, y, MARK, kind)


def draw(ring, verdicts, paths):
    drawing = Drawing(SIZE, SIZE, "Light paths from one event to a ring of PMTs")
    for radius in reversed(SPHERES):
        drawing.circle(*pixel(0, 0), SCALE * radius, fill="panel", stroke="vessel")
    kinds = [kind_of(verdict) for verdict in verdicts]
    order = ["clear", "noPath", *PALETTE["components"]]  # the rare lie on top
    for wanted in order:
        for verdict, kind in zip(verdicts, kinds):
            if kind != wanted or kind == "noPath":
                continue
            row = paths[verdict["pmt"]]
            points = (pixel(float(row[p + "_x"]), float(row[p + "_z"]))
                      for p in ("start", "av1", "av2", "av3", "av4", "end") if row[p + "_x"])
            if kind == "clear":
                drawing.line(*points, stroke="selection", pen=0.9, opacity=0.3)
            else:
                drawing.line(*points, stroke=kind, pen=1.2)
    for place, kind in zip(ring, kinds):
        mark(drawing, *pixel(*place), kind)
    x, y = pixel(EVENT[0], EVENT[2])
    drawing.circle(x, y, 6, fill="page", stroke="text", pen=2)
    drawing.circle(x, y, 2, fill="text")
    names = {name: look["name"] for name, look in PALETTE["components"].items()}
    names |= {"clear": PALETTE["clear"], "noPath": PALETTE["noPath"]}
    y = 26
    for kind in [*order[2:], *order[:2]]:
        if kind in kinds:
            mark(drawing, 22, y - 4.5, kind)
            drawing.text(36, y, names[kind])
            y += 21
    return drawing


def main():
    folder = pathlib.Path(sys.argv[2]) if len(sys.argv) > 2 else HERE
    (folder / "light-paths.svg").write_text(draw(*scan(sys.argv[1])).svg())


if __name__ == "__main__":
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    main()
