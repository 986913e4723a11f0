#!/usr/bin/env python3
"""Write the inputs of a scan: data/pmts.csv and data/source-scan.csv.

pmts.csv has the PMTs of reference-detector/pmts.json, named by their index
there, from 0. source-scan.csv has the 50 positions of a light source in the
detector, each named by its position.

Lengths are in mm, in detector coordinates: centre of the vessel at the
origin, neck along +z.
"""

import argparse
import csv
import io
import json
import os
import pathlib
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
PMT_TABLE = HERE / "reference-detector" / "pmts.json"

# As in reference-detector: radius of the inner surface, and height of the
# opening of the neck (radius 700 mm).
INNER_RADIUS = 5800
NECK_FOOT = 5757

# Along the axis: the source hangs from one rope through the neck, so its
# position is known best here and most positions are here. The ends are 300 mm
# from the wall, for the source's capsule, and more than 5158 mm from the
# centre, where total reflection begins to keep light inside.
AXIS_END = 5500
AXIS_STEP = 500

# Off the axis: a side rope to the equator at +x or -x pulls the source aside,
# so all these positions are in the plane y = 0. Two ropes can carry the source
# only below the line from the neck to the end of the side rope. A source on
# two ropes keeps 500 mm from the wall.
SIDE_STEP = 1500
SIDE_STEPS = 3
SIDE_MARGIN = 500

# Outside: a guide tube in the water, half way between the wall (5860 mm) and
# the PMT faces (8300 mm), clear of the ropes (5920 mm) and the bulbs.
TUBE_X = 7000
TUBE_Z = (3000, 0, -3000)


def down(end, step):
    return range(end, -end - 1, -step)


def in_reach(x, z):
    """Whether the source can hang here from neck and side rope."""
    line = NECK_FOOT * (1.0 - abs(x) / INNER_RADIUS)
    return z < line and x * x + z * z < (INNER_RADIUS - SIDE_MARGIN)**2


def stops():
    """Every (x, z), in the order of the scan; y is 0."""
    axis = [(0, z) for z in down(AXIS_END, AXIS_STEP)]
    side = [(x, z)
            for x in down(SIDE_STEPS * SIDE_STEP, SIDE_STEP) if x != 0
            for z in down(SIDE_STEPS * SIDE_STEP, SIDE_STEP) if in_reach(x, z)]
    return axis + side + [(TUBE_X, z) for z in TUBE_Z]


def source_rows():
    for x, z in stops():
        yield f"x={x} z={z}" if x else f"z={z}", x, 0, z


def pmt_rows():
    # Keep the numbers exactly as they are written.
    (entry,) = json.loads(PMT_TABLE.read_text(encoding="utf-8"),
                          parse_float=str)
    fields = entry["fields"]
    for n, position in enumerate(zip(fields["x"], fields["y"], fields["z"])):
        yield n, *position


FILES = {
    "pmts.csv": ("pmt", pmt_rows),
    "source-scan.csv": ("event", source_rows),
}


def file_text(name, rows):
    out = io.StringIO()
    writer = csv.writer(out, lineterminator="\n")
    writer.writerow([name, "x", "y", "z"])
    writer.writerows(rows)
    return out.getvalue()


def write_file(path, text):
    """Replace the file in one step, so that readers never see a part of it."""
    handle, temporary = tempfile.mkstemp(prefix=f".{path.name}.",
                                         dir=path.parent)
    try:
        with os.fdopen(handle, "w", encoding="utf-8", newline="\n") as out:
            out.write(text)
            out.flush()
            os.fsync(out.fileno())
        os.chmod(temporary, 0o644)  # mkstemp creates it private
        os.replace(temporary, path)
    except BaseException:
        os.unlink(temporary)
        raise


def main():
    parser = argparse.ArgumentParser(
        description="Write the PMTs of the reference detector and a source "
                    "scan of it, as CSV files.")
    parser.add_argument("--output", metavar="DIR", type=pathlib.Path,
                        default=HERE,
                        help="folder to write to, created if missing "
                             "(default: the folder of this script)")
    folder = parser.parse_args().output
    try:
        folder.mkdir(parents=True, exist_ok=True)
        for file, (name, rows) in FILES.items():
            write_file(folder / file, file_text(name, rows()))
    except OSError as error:
        sys.exit(f"make-scan-inputs.py: {error}")


if __name__ == "__main__":
    main()
