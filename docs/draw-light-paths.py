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
COLOURS = {"0": "#4477aa", "1": "#cc6677"}  # clear, shadowed


def pixel(x, z):
    return f"{SIZE / 2 + SCALE * x:.1f},{SIZE / 2 - SCALE * z:.1f}"


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


def drawing(ring, verdicts, paths):
    yield (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {SIZE} {SIZE}" '
           'font-family="Helvetica, Arial, sans-serif" font-size="13">')
    yield "  <title>Light paths from one event to a ring of PMTs</title>"
    yield f'  <rect width="{SIZE}" height="{SIZE}" fill="#ffffff"/>'
    outer, inner = (SCALE * radius for radius in reversed(SPHERES))
    for radius, fill in ((outer, "#cfd8dc"), (inner, "#fdf6e3")):
        yield (f'  <circle cx="{SIZE / 2:g}" cy="{SIZE / 2:g}" r="{radius:.1f}" fill="{fill}" '
               'stroke="#78909c" stroke-width="0.7"/>')
    for verdict in verdicts:
        if verdict["by"] == "no path":
            continue
        row = paths[verdict["pmt"]]
        points = [pixel(float(row[p + "_x"]), float(row[p + "_z"]))
                  for p in ("start", "av1", "av2", "av3", "av4", "end") if row[p + "_x"]]
        yield (f'  <polyline points="{" ".join(points)}" fill="none" '
               f'stroke="{COLOURS[verdict["shadowed"]]}" stroke-width="0.9"/>')
    for (x, z), verdict in zip(ring, verdicts):
        colour = COLOURS.get(verdict["shadowed"], "#ffffff")
        x, y = pixel(x, z).split(",")
        yield f'  <circle cx="{x}" cy="{y}" r="4.5" fill="{colour}" stroke="#455a64"/>'
    x, y = pixel(EVENT[0], EVENT[2]).split(",")
    yield f'  <circle cx="{x}" cy="{y}" r="4" fill="#222222"/>'
    for line, (fill, text) in enumerate(((COLOURS["0"], "clear"), (COLOURS["1"], "shadowed"),
                                         ("#ffffff", "no path"))):
        y = 24 + 20 * line
        yield f'  <circle cx="20" cy="{y}" r="4.5" fill="{fill}" stroke="#455a64"/>'
        yield f'  <text x="32" y="{y + 4.5}" fill="#223">{text}</text>'
    yield "</svg>"


def main():
    folder = pathlib.Path(sys.argv[2]) if len(sys.argv) > 2 else HERE
    (folder / "light-paths.svg").write_text("\n".join(drawing(*scan(sys.argv[1]))) + "\n")


if __name__ == "__main__":
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    main()
