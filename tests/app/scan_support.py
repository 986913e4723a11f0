"""Helpers for the tests of `zarn-shadow scan`."""

import collections
import csv
import io
import json
import math
import pathlib
import random

from command_support import (
    ANCHOR, COMPONENTS, COORDINATES, CommandTest, PROGRAM, REFERENCE, VECTORS, entry, line)
from light_support import MEDIA_OF, length, minus, times, unit

VERDICT_HEADER = "event,pmt,type,shadowed,by"
PATH_HEADER = ",".join(["event", "pmt", "type", *COORDINATES])

CENTRE = (0.0, 0.0, 0.0)
PMT_RADIUS = 8300.0
TOP = (0.0, 0.0, PMT_RADIUS)
BOTTOM = (0.0, 0.0, -PMT_RADIUS)


# --- Media -------------------------------------------------------------------

def optics(inner, acrylic, water, **more):
    """The three media; each is a number or a dictionary of fields."""
    return [entry("OPTICS", index, value if isinstance(value, dict)
                  else {"refractive_index": value}, **more)
            for index, value in zip(("inner_av", "acrylic", "water"), (inner, acrylic, water))]


INDICES = (1.50, 1.49, 1.33)
OPTICS = optics(*INDICES)

# Some light stays in the wall: 1.34 * 5800 is less than 1.33 * 5860. The product of
# index, radius and sine is conserved; here it lies between these two values.
LIGHT_WALL = (1.5, 1.34, 1.33)
STAYS_IN_THE_WALL = (7000.0, math.pi - math.asin(7780 / (1.33 * 7000)))  # radius, angle

# From radius 5700 in this liquid, light that starts at 42 to 138 degrees to the
# radius cannot leave the vessel, so PMTs at 80 to 90 degrees from the event get none.
REFLECTING = (2.0, 1.6, 1.3)
NEAR_THE_WALL = (5700.0, 0.0, 0.0)


class Path:
    """A row of the written paths."""

    def __init__(self, cells):
        self.event, self.pmt, self.type = cells["event"], cells["pmt"], cells["type"]
        self.cells = cells
        self.vectors = {}
        for vector in VECTORS:
            texts = [cells[f"{vector}_{axis}"] for axis in "xyz"]
            if any(texts):
                self.vectors[vector] = tuple(map(float, texts))

    def __getattr__(self, vector):
        return self.vectors[vector]

    def points(self):
        """All points from start to end."""
        return [self.start, *(self.vectors[v] for v in VECTORS[4:] if v in self.vectors),
                self.end]

    def optical_length(self, indices):
        points = self.points()
        return sum(indices[m] * length(minus(b, a))
                   for m, a, b in zip(MEDIA_OF[self.type], points, points[1:]))


Row = collections.namedtuple("Row", "event pmt type shadowed by")


def records(content):
    """The records of CSV text, which must end with a line end."""
    text = content.decode()
    assert text.endswith("\n"), text[-100:]
    return list(csv.reader(io.StringIO(text, newline=""), strict=True))


def rows_of(content):
    """The rows of a verdict table, after checking its format."""
    header, *rows = records(content)
    assert ",".join(header) == VERDICT_HEADER, header
    rows = [Row(*cells) for cells in rows]
    for row in rows:
        if row.type == "":
            assert row[2:] == ("", "", "no path"), row
        else:
            assert row.type in MEDIA_OF, row
            assert row.by in ("", *COMPONENTS), row
            assert row.shadowed == ("1" if row.by else "0"), row
    return rows


def paths_of(content):
    header, *rows = records(content)
    assert ",".join(header) == PATH_HEADER, header
    return [Path(dict(zip(header, cells, strict=True))) for cells in rows]


def positions(kind, points, end="\n"):
    """A CSV table of points: {id: (x, y, z)}, or a list that gets numbers as ids."""
    if not isinstance(points, dict):
        points = {f"{kind[0]}{i}": point for i, point in enumerate(points)}
    lines = [f"{kind},x,y,z"]
    lines += [line([name, *(x if isinstance(x, str) else repr(float(x)) for x in point)])
              for name, point in points.items()]
    return "".join(text + end for text in lines)


def random_direction(numbers):
    while True:
        point = tuple(numbers.uniform(-1, 1) for _ in range(3))
        if 0.1 < length(point) < 1:
            return unit(point)


def random_events(count, seed):
    """Events inside, in the wall and in the water, in turn."""
    numbers = random.Random(seed)
    ranges = ((0, 5800), (5800, 5860), (5860, 8200))
    return [times(numbers.uniform(*ranges[i % 3]), random_direction(numbers))
            for i in range(count)]


def random_pmts(count, seed):
    numbers = random.Random(seed)
    return [times(PMT_RADIUS, random_direction(numbers)) for _ in range(count)]


def in_the_plane(degrees, radius=PMT_RADIUS):
    angle = math.radians(degrees)
    return (radius * math.cos(angle), radius * math.sin(angle), 0.0)


class ScanTest(CommandTest):
    def events(self, points, name="events.csv"):
        return self.write(name, positions("event", points))

    def pmts(self, points, name="pmts.csv"):
        return self.write(name, positions("pmt", points))

    def reference_tables(self, *more):
        """The reference detector, without tables that are only drawn."""
        entries = [e for file in sorted(REFERENCE.glob("*.json")) if file.stem != "pmts"
                   for e in json.loads(file.read_text())]
        return self.write("reference.json", json.dumps([*entries, *OPTICS, *more]))

    @staticmethod
    def scan_command(events, pmts, geometry, *options):
        return [PROGRAM, "scan", "--geometry", str(geometry), "--events", str(events),
                "--pmts", str(pmts), *map(str, options)]

    def scan(self, events, pmts, *options, geometry=None, status=0, **more):
        """Run with files, or with points, which are first written to files."""
        if not isinstance(events, (str, pathlib.Path)):
            events = self.events(events)
        if not isinstance(pmts, (str, pathlib.Path)):
            pmts = self.pmts(pmts)
        if geometry is None:
            geometry = self.tables(*OPTICS, *ANCHOR)
        result = self.run_command(self.scan_command(events, pmts, geometry, *options),
                                  status=status, **more)
        self.assertNotRegex(result.bytes_err, rb"[\x00-\x09\x0b-\x1f\x7f]")
        if result.status == 0:
            self.assertTrue(result.bytes_err.isascii(), result.err)
            # The calculator's message for a pair without a path.
            self.assertNotIn("uninitialised", result.err)
        return result

    def rows(self, events, pmts, *options, **more):
        return rows_of(self.scan(events, pmts, *options, **more).out)

    def types(self, events, pmts, *options, **more):
        return [row.type for row in self.rows(events, pmts, *options, **more)]

    def paths(self, events, pmts, *options, **more):
        """The rows and the paths of a scan."""
        result = self.scan(events, pmts, "--paths", "paths.csv", *options, **more)
        return rows_of(result.out), paths_of((self.folder / "paths.csv").read_bytes())

    def read(self, name):
        return (self.folder / name).read_bytes()

    def snapshot(self):
        """All files of the folder with their content."""
        return {str(p): p.read_bytes() for p in self.folder.rglob("*") if p.is_file()}

    def temporaries(self):
        return sorted(p for p in self.folder.rglob("*") if "tmp" in p.name)

    def refuse(self, events, pmts, *wanted, options=(), **more):
        """Bad input: status 2, a message with all of @p wanted, no new files, and
        existing files unchanged."""
        if not isinstance(events, pathlib.Path):
            events = self.write("events.csv", events)
        if not isinstance(pmts, pathlib.Path):
            pmts = self.write("pmts.csv", pmts)
        more.setdefault("geometry", self.tables(*OPTICS, *ANCHOR, name="usual.json"))
        self.write("old.csv", "as it was")
        self.write("old-pmts.csv", "as it was")
        before = self.snapshot()
        result = self.scan(events, pmts, "-o", "old.csv", "--paths", "new.csv", "--per-pmt",
                           "old-pmts.csv", "--per-event", "new-events.csv", *options, status=2,
                           **more)
        self.assertEqual(self.snapshot(), before)
        self.assertEqual(result.out, b"")
        for part in wanted:
            self.assertRegex(result.err, part)
        self.assertNotIn("paths/second", result.err)
        return result
