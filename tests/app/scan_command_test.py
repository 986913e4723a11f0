#!/usr/bin/env python3
"""What a user may rely on when running `zarn-shadow scan` (command_support.py
says what it needs)."""

import cmath
import collections
import csv
import decimal
import io
import itertools
import json
import math
import os
import pathlib
import random
import re
import signal
import stat
import struct
import subprocess
import sys
import threading
import time
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import (
    ANCHOR, COMPONENTS, COORDINATES, DATA, INNER_RADIUS, OUTER_RADIUS, PLATE, PROGRAM,
    REFERENCE, TIMEOUT, VECTORS, VESSEL, CommandTest, anchor_reach, entry, line, towards)

VERDICT_HEADER = "event,pmt,type,shadowed,by"
PATH_HEADER = ",".join(["event", "pmt", "type", *COORDINATES])

FROM_INSIDE = "Scint/InnerAV->AV->Water"
WALL_INSIDE = "AV->Scint/InnerAV->AV->Water"
FROM_WALL = "AV->Water"
THROUGH_INSIDE = "Water->AV->Scint/InnerAV->AV->Water"
THROUGH_WALL = "Water->AV->Water"
WATER = "Water"
REFLECTION = "Water->Reflection->Water"

# The media along a path: the inside, the wall and the water are 0, 1 and 2.
MEDIA_OF = {FROM_INSIDE: (0, 1, 2), WALL_INSIDE: (1, 0, 1, 2), FROM_WALL: (1, 2),
            THROUGH_INSIDE: (2, 1, 0, 1, 2), THROUGH_WALL: (2, 1, 2), WATER: (2,),
            REFLECTION: (2, 2)}

CENTRE = (0.0, 0.0, 0.0)
PMT_RADIUS = 8300.0
TOP = (0.0, 0.0, PMT_RADIUS)
BOTTOM = (0.0, 0.0, -PMT_RADIUS)


# --- Media -------------------------------------------------------------------

def optics(inner, acrylic, water, **more):
    """The three media; each is a number, or holds its fields."""
    return [entry("OPTICS", index, value if isinstance(value, dict)
                  else {"refractive_index": value}, **more)
            for index, value in zip(("inner_av", "acrylic", "water"), (inner, acrylic, water))]


INDICES = (1.50, 1.49, 1.33)
OPTICS = optics(*INDICES)

# Some light stays in the wall: 1.34 * 5800 is less than 1.33 * 5860. Conserved are
# index times radius times sine; here they lie between the two.
LIGHT_WALL = (1.5, 1.34, 1.33)
STAYS_IN_THE_WALL = (7000.0, math.pi - math.asin(7780 / (1.33 * 7000)))  # radius, angle

# From 5700 in this liquid no light gets out that leaves at an angle between 42 and
# 138 degrees to the radius, so PMTs at 80 to 90 degrees from the event get none.
REFLECTING = (2.0, 1.6, 1.3)
NEAR_THE_WALL = (5700.0, 0.0, 0.0)


# --- Light, followed by vectors and without the program's formulas ------------

Ray = collections.namedtuple("Ray", "media swept optical points")


def medium_at(radius):
    return 0 if radius < INNER_RADIUS else 1 if radius < OUTER_RADIUS else 2


def follow(indices, start_radius, angle, end_radius):
    """Follow a ray in the plane through the vessel and out to a radius.

    It starts at (start_radius, 0) at an angle to the outward radius. None where
    it is totally reflected or, from the water, misses the vessel.
    """
    position, direction = complex(start_radius), cmath.rect(1, angle)
    here = medium_at(start_radius)
    media, swept, optical, points = [here], 0.0, 0.0, [position]
    while here is not None:
        along = (position * direction.conjugate()).real
        beyond = along * along - abs(position) ** 2  # plus radius squared: a meeting
        inner, outer = ((0, INNER_RADIUS), (INNER_RADIUS, OUTER_RADIUS),
                        (OUTER_RADIUS, end_radius))[here]
        goes_inward = along < 0 and here > 0 and beyond + inner * inner > 0
        if here == 2 and len(media) == 1 and not goes_inward:
            return None
        if goes_inward:
            step, there = -along - math.sqrt(beyond + inner * inner), here - 1
        else:
            step, there = -along + math.sqrt(beyond + outer * outer), here + 1
        arrival = position + step * direction
        swept += cmath.phase(arrival / position)
        optical += indices[here] * step
        points.append(arrival)
        position, here = arrival, there if there < 3 else None
        if here is None:
            break
        radial = position / abs(position)
        local = direction / radial
        sine = indices[media[-1]] * local.imag / indices[here]
        if abs(sine) > 1:
            return None
        cosine = math.copysign(math.sqrt(1 - sine * sine), local.real)
        direction = radial * complex(cosine, sine)
        media.append(here)
    return Ray(tuple(media), swept, optical, points)


def dot(a, b):
    return sum(x * y for x, y in zip(a, b))


def minus(a, b):
    return tuple(x - y for x, y in zip(a, b))


def times(factor, a):
    return tuple(factor * x for x in a)


def length(a):
    return math.hypot(*a)


def unit(a):
    return times(1 / length(a), a)


def cross(a, b):
    return (a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0])


def nearest_to_centre(a, b):
    """The least distance from the centre of the points between two."""
    way = minus(b, a)
    part = 0.0 if a == b else min(1.0, max(0.0, -dot(a, way) / dot(way, way)))
    return length(tuple(x + part * y for x, y in zip(a, way)))


def rays_between(indices, event, pmt, steps=1500):
    """Rays from an event to a PMT, among @p steps launch angles: a few that exist
    only for a narrow range of angles may be missing."""
    start, end = length(event), length(pmt)
    between = math.atan2(length(cross(event, pmt)), dot(event, pmt))
    found, last = [], None
    for i in range(1, steps):
        angle = math.pi * i / steps
        ray = follow(indices, start, angle, end)
        if last and ray and last[1].media == ray.media:
            for target in (between, 2 * math.pi - between):
                if (last[1].swept > target) != (ray.swept > target):
                    found.append(narrow(indices, start, end, target, last, (angle, ray)))
        last = (angle, ray) if ray else None
    return [ray for ray in found if ray]


def narrow(indices, start, end, target, low, high):
    for _ in range(60):
        middle = (low[0] + high[0]) / 2
        ray = follow(indices, start, middle, end)
        if ray is None or ray.media != low[1].media:
            return None
        if (ray.swept > target) == (low[1].swept > target):
            low = (middle, ray)
        else:
            high = (middle, ray)
    return low[1]


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
        """Its points from end to end."""
        return [self.start, *(self.vectors[v] for v in VECTORS[4:] if v in self.vectors),
                self.end]

    def optical_length(self, indices):
        points = self.points()
        return sum(indices[m] * length(minus(b, a))
                   for m, a, b in zip(MEDIA_OF[self.type], points, points[1:]))


# --- Running the scan --------------------------------------------------------

Row = collections.namedtuple("Row", "event pmt type shadowed by")


def records(content):
    """The records of CSV, which must end with its last line's end."""
    text = content.decode()
    assert text.endswith("\n"), text[-100:]
    return list(csv.reader(io.StringIO(text, newline=""), strict=True))


def rows_of(content):
    """The rows of a verdict table, whose form is checked."""
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
    """A table of points: {id: (x, y, z)}, or points that are numbered."""
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
        """The reference detector, without what is only drawn."""
        entries = [e for file in sorted(REFERENCE.glob("*.json")) if file.stem != "pmts"
                   for e in json.loads(file.read_text())]
        return self.write("reference.json", json.dumps([*entries, *OPTICS, *more]))

    @staticmethod
    def scan_command(events, pmts, geometry, *options):
        return [PROGRAM, "scan", "--geometry", str(geometry), "--events", str(events),
                "--pmts", str(pmts), *map(str, options)]

    def scan(self, events, pmts, *options, geometry=None, status=0, **more):
        """Run with files, or with points that are written to files first."""
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
            # What the shadowing says of a pair that has no path.
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
        """Every file of the folder with what it holds."""
        return {str(p): p.read_bytes() for p in self.folder.rglob("*") if p.is_file()}

    def temporaries(self):
        return sorted(p for p in self.folder.rglob("*") if "tmp" in p.name)

    def refuse(self, events, pmts, *wanted, options=(), **more):
        """Bad input: status 2, a message with all that is wanted, and every file as
        it was, whether there was one or not."""
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


# --- Verdicts ----------------------------------------------------------------

class Verdicts(ScanTest):
    # Seen from the centre, where paths are straight. The anchor at the bottom takes
    # the points on the outer surface that are nearer than 60 and the tolerance to it,
    # which is 60 inside; so 201 from the axis are too far for the usual 210.
    def pmt_beside_the_bottom(self, distance):
        return times(PMT_RADIUS / INNER_RADIUS,
                     (distance, 0.0, -math.sqrt(INNER_RADIUS**2 - distance**2)))

    def test_gives_a_row_for_every_event_with_every_pmt_in_their_order(self):
        events = {"a": CENTRE, "b": (0.0, 0.0, 7000.0)}
        pmts = {"top": TOP, "bottom": BOTTOM, "near": times(0.5, TOP)}
        result = self.scan(events, pmts)
        self.assertEqual(result.out.decode(), VERDICT_HEADER + "\n"
                         f"a,top,{FROM_INSIDE},0,\n"
                         f"a,bottom,{FROM_INSIDE},1,NCDAnchor\n"
                         "a,near,,,no path\n"
                         "b,top,Water,0,\n"
                         f"b,bottom,{THROUGH_INSIDE},1,NCDAnchor\n"
                         "b,near,,,no path\n")

    def test_a_component_shadows_what_comes_within_its_reach_and_the_tolerance(self):
        pmts = [self.pmt_beside_the_bottom(x) for x in (0, 59, 80, 199, 201)]
        for tolerance, hits in ((None, 4), (150, 4), ("1.5e2", 4), (153, 5), ("+0", 0),
                                ("0.001", 1), (30, 2), (41, 3), (-60, 0)):
            with self.subTest(tolerance=tolerance):
                options = [] if tolerance is None else ["--tolerance", tolerance]
                found = [row.by for row in self.rows([CENTRE], pmts, *options)]
                self.assertEqual(found, ["NCDAnchor"] * hits + [""] * (5 - hits))

    def test_the_tables_are_those_of_the_run(self):
        geometry = self.tables(*OPTICS, *ANCHOR, anchor_reach(900.0, runs=[10, 20]),
                               *optics(1.7, 1.49, 1.33, runs=[20, 30]))
        bent = [(1000.0, 0.0, 0.0)], [TOP]
        angles = {}
        for run in (None, 0, 9, 10, 20, 21, 30, 31):
            options = [] if run is None else ["--run", run]
            hit = self.rows([CENTRE], [self.pmt_beside_the_bottom(500)], *options,
                            geometry=geometry)[0].by
            self.assertEqual(hit, "NCDAnchor" if run in (10, 20) else "", run)
            angles[run] = self.paths(*bent, *options, geometry=geometry)[1][0].initial
        self.assertEqual({run for run, angle in angles.items() if angle != angles[None]},
                         {20, 21, 30})

    def test_the_type_tells_where_the_event_lies_and_what_light_crosses(self):
        found = self.types([(0.0, 0.0, z) for z in (0.0, 5830.0, 7000.0)], [TOP, BOTTOM])
        self.assertEqual(found, [FROM_INSIDE, FROM_INSIDE, FROM_WALL, WALL_INSIDE, WATER,
                                 THROUGH_INSIDE])

    def test_a_surface_belongs_to_what_lies_outside_it(self):
        below = [math.nextafter(r, 0) for r in (INNER_RADIUS, OUTER_RADIUS)]
        found = self.types([(0.0, 0.0, z) for z in (below[0], INNER_RADIUS, below[1],
                                                    OUTER_RADIUS)], [TOP])
        self.assertEqual(found, [FROM_INSIDE, FROM_WALL, FROM_WALL, WATER])
        found = self.types([(0.0, 0.0, -z) for z in (below[0], INNER_RADIUS, below[1],
                                                     OUTER_RADIUS)], [TOP])
        self.assertEqual(found, [FROM_INSIDE, WALL_INSIDE, WALL_INSIDE, THROUGH_INSIDE])
        found = self.types([CENTRE], [(0.0, 0.0, below[1]), (0.0, 0.0, OUTER_RADIUS)])
        self.assertEqual(found, ["", FROM_INSIDE])

    def test_a_path_that_passes_the_vessel_is_straight_water(self):
        def pair(y):
            return [(-5000.0, y, 0.0)], [(5000.0, y, 0.0)]
        self.assertEqual(self.types(*pair(5861.0)), [WATER])
        self.assertEqual(self.types(*pair(5860.0)), [WATER])  # it touches
        self.assertNotEqual(self.types(*pair(5859.0)), [WATER])
        self.assertEqual(self.types([(0.0, 0.0, 6000.0)], [TOP]), [WATER])

    def test_light_crosses_the_wall_alone_where_its_index_is_low_enough(self):
        geometry = self.tables(*optics(*LIGHT_WALL))
        ray = follow(LIGHT_WALL, *STAYS_IN_THE_WALL, PMT_RADIUS)
        self.assertEqual(ray.media, MEDIA_OF[THROUGH_WALL])
        pmt = in_the_plane(math.degrees(ray.swept))
        rows, paths = self.paths([(7000.0, 0.0, 0.0)], [pmt], geometry=geometry)
        self.assertEqual(rows[0].type, THROUGH_WALL)
        for found, wanted in zip(paths[0].points(), ray.points, strict=True):
            self.assertLess(length(minus(found, (wanted.real, wanted.imag, 0.0))), 1e-6)
        # A quicker way through the inside is taken instead.
        quick = self.tables(*optics(1.3, *LIGHT_WALL[1:]))
        self.assertEqual(self.types([(7000.0, 0.0, 0.0)], [pmt], geometry=quick),
                         [THROUGH_INSIDE])

    def test_total_reflection_may_leave_no_path(self):
        geometry = self.tables(*optics(*REFLECTING))
        for degrees in (80, 85, 90):
            self.assertEqual(
                rays_between(REFLECTING, NEAR_THE_WALL, in_the_plane(degrees)), [])
        pmts = [in_the_plane(degrees) for degrees in (0, 30, 80, 85, 90, 180)]
        found = self.rows([NEAR_THE_WALL], pmts, geometry=geometry)
        self.assertEqual([row[2:] for row in found],
                         [(FROM_INSIDE, "0", "")] * 2 + [("", "", "no path")] * 3
                         + [(FROM_INSIDE, "0", "")])

    def test_there_is_no_path_to_a_pmt_that_is_not_in_the_water(self):
        pmts = [CENTRE, (0.0, 0.0, 5799.0), (0.0, 5830.0, 0.0), (0.0, 0.0, -5859.9)]
        found = self.rows([CENTRE, (0.0, 0.0, 7000.0), (5830.0, 0.0, 0.0)], pmts,
                          "--reflections")
        self.assertEqual([row[2:] for row in found], [("", "", "no path")] * 12)

    def test_there_is_no_path_from_an_event_at_the_pmt(self):
        pmts = [TOP, (1.1, -20.3, 8000.0), (math.nextafter(0, 1), 0.0, PMT_RADIUS)]
        found = self.rows(pmts, pmts, "--reflections")
        for row in found:
            self.assertEqual(row.by == "no path", row.event[1:] == row.pmt[1:], row)
        self.assertEqual(len(found), 3 + 6 * 2)

    def test_there_is_no_path_from_or_to_a_position_that_is_not_finite(self):
        odd = [("nan", "0", "0"), ("0", "inf", "0"), ("0", "0", "-inf"), ("0", "0", "-nan"),
               ("NaN", "nan", "nan")]
        found = self.rows([CENTRE, *odd], [TOP, *odd], "--reflections")
        self.assertEqual(found[0].type, FROM_INSIDE)
        self.assertEqual([row[2:] for row in found[1:]], [("", "", "no path")] * 35)

    def test_odd_numbers_are_survived(self):
        tiny_or_huge = ("4.9e-324", "-4.9e-324", "1e-160", "1e160", "1e308", "-0")
        events = {str(i): point for i, point in enumerate(
            itertools.product(tiny_or_huge, (*tiny_or_huge, "5860", "5800", "1"), ["0"]))}
        pmts = {"top": TOP, "far": ("1e154", "0", "1"), "farther": ("1e200", "1e200", "0"),
                "farthest": ("1e308", "1e308", "1e308")}
        found = self.rows(events, pmts, "--reflections")
        self.assertEqual(len([row for row in found if row.type != REFLECTION]),
                         len(events) * len(pmts))


class Reflections(ScanTest):
    EVENTS = {"inside": (10.0, 20.0, 30.0), "wall": (0.0, 5830.0, 0.0),
              "water": (0.0, 0.0, 7000.0)}
    PMTS = {"top": TOP, "beside": (8000.0, 0.0, 3000.0), "bottom": BOTTOM, "in": CENTRE}

    def test_a_reflection_follows_the_direct_row_of_a_straight_path_in_water(self):
        found = self.rows(self.EVENTS, self.PMTS, "--reflections", geometry=self.tables(*OPTICS))
        self.assertEqual([(r.event, r.pmt, r.type) for r in found], [
            ("inside", "top", FROM_INSIDE), ("inside", "beside", FROM_INSIDE),
            ("inside", "bottom", FROM_INSIDE), ("inside", "in", ""),
            ("wall", "top", found[4].type), ("wall", "beside", found[5].type),
            ("wall", "bottom", found[6].type), ("wall", "in", ""),
            ("water", "top", WATER), ("water", "top", REFLECTION),
            ("water", "beside", WATER), ("water", "beside", REFLECTION),
            ("water", "bottom", THROUGH_INSIDE), ("water", "in", "")])

    def test_without_the_option_there_are_none(self):
        found = self.types(self.EVENTS, self.PMTS)
        self.assertEqual(len(found), 12)
        self.assertNotIn(REFLECTION, found)

    def test_the_direct_rows_are_the_same_with_and_without(self):
        events, pmts = random_events(20, seed=5), random_pmts(20, seed=6)
        geometry = self.reference_tables()
        plain = self.rows(events, pmts, geometry=geometry)
        both = self.rows(events, pmts, "--reflections", geometry=geometry)
        self.assertEqual([row for row in both if row.type != REFLECTION], plain)
        self.assertGreater(len(both), len(plain))
        for before, row in zip(both, both[1:]):
            if row.type == REFLECTION:
                self.assertEqual(before[:3], (*row[:2], WATER))

    def test_a_reflection_is_judged_by_itself(self):
        # Mirrored at the equator, where the plate is; the direct path is far off it.
        event, pmt = in_the_plane(-20, 7000.0), in_the_plane(20, 7000.0)
        found = self.rows([event], [pmt], "--reflections", geometry=self.tables(*OPTICS, *PLATE))
        self.assertEqual([row[2:] for row in found],
                         [(WATER, "0", ""), (REFLECTION, "1", "BellyPlate")])


# --- Paths -------------------------------------------------------------------

class Paths(ScanTest):
    def assert_checks_alike(self, geometry, events, pmts, *options, check_options=()):
        rows, paths = self.paths(events, pmts, *options, geometry=geometry)
        with_path = [row for row in rows if row.type]
        self.assertEqual([row[:3] for row in with_path],
                         [(path.event, path.pmt, path.type) for path in paths])
        again = self.check("paths.csv", *check_options, geometry=geometry)
        self.assertEqual(again.verdicts(), [row.by for row in with_path])
        self.assertNotIn("unknown", again.err)
        return with_path

    def test_check_finds_the_same_verdicts_in_the_written_paths(self):
        events, pmts = random_events(15, seed=1), random_pmts(40, seed=2)
        events += [CENTRE, TOP, ("nan", "0", "0"), (0.0, -5860.0, 0.0), (0.0, 0.0, 5800.0)]
        pmts += [CENTRE, TOP, BOTTOM, (0.0, 5860.0, 0.0)]
        geometry = self.reference_tables()
        plain = self.assert_checks_alike(geometry, events, pmts)
        both = self.assert_checks_alike(geometry, events, pmts, "--reflections")
        self.assertGreater(len(both), len(plain))
        self.assertGreater(len({row.by for row in both}), 4)

    def test_check_finds_the_same_verdicts_with_another_tolerance_and_run(self):
        events, pmts = random_events(12, seed=3), random_pmts(25, seed=4)
        geometry = self.reference_tables(*optics(1.6, 1.3, 1.2, runs=[7, 7]))
        common = ["--tolerance", "12.5", "--run", "7"]
        changed = self.assert_checks_alike(geometry, events, pmts, "--reflections", *common,
                                           check_options=common)
        plain = self.assert_checks_alike(geometry, events, pmts, "--reflections")
        self.assertNotEqual([row[2:] for row in changed], [row[2:] for row in plain])

    def test_each_type_has_its_points_and_leaves_the_others_empty(self):
        geometry = self.tables(*optics(*LIGHT_WALL))
        light = follow(LIGHT_WALL, *STAYS_IN_THE_WALL, PMT_RADIUS)
        events = [CENTRE, (0.0, 0.0, 5830.0), (0.0, 0.0, 7000.0), (7000.0, 0.0, 0.0)]
        pmts = [TOP, BOTTOM, in_the_plane(math.degrees(light.swept))]
        _, paths = self.paths(events, pmts, "--reflections", geometry=geometry)
        counts = {FROM_INSIDE: 2, WALL_INSIDE: 3, FROM_WALL: 1, THROUGH_INSIDE: 4,
                  THROUGH_WALL: 2, WATER: 0, REFLECTION: 1}
        self.assertEqual({path.type for path in paths}, set(counts))
        for path in paths:
            used = VECTORS[:4 + counts[path.type]]
            for name in COORDINATES:
                self.assertEqual(path.cells[name] != "", name.split("_")[0] in used,
                                 (path.type, name))

    def test_numbers_come_back_bit_for_bit_and_are_no_longer_than_they_must_be(self):
        numbers = random.Random(11)
        events = {f"{i}": tuple(numbers.uniform(-2900, 2900) for _ in range(3))
                  for i in range(30)}
        events |= {"tiny": (4.9e-324, -1e-300, 2.2250738585072014e-308), "zero": (-0.0, 0.0, -0.0),
                   "third": (1 / 3, -2e-7, 1e3)}
        pmts = {str(i): tuple(math.nextafter(x, math.inf) for x in pmt)
                for i, pmt in enumerate(random_pmts(10, seed=12))}
        _, paths = self.paths(events, pmts, geometry=self.tables(*OPTICS))
        self.assertEqual(len(paths), 330)

        def bits(point):
            return struct.pack("3d", *point)
        digits = collections.Counter()
        for path in paths:
            self.assertEqual(bits(path.start), bits(events[path.event]))
            self.assertEqual(bits(path.end), bits(pmts[path.pmt]))
            for name in COORDINATES:
                if text := path.cells[name]:
                    shortest = decimal.Decimal(repr(float(text)))
                    self.assertEqual(decimal.Decimal(text), shortest, (name, text))
                    self.assertLessEqual(len(text), len(repr(float(text))))
                    digits[len(decimal.Decimal(text).normalize().as_tuple().digits)] += 1
        self.assertGreater(digits[17] + digits[16], 3000, digits)

    def test_the_straight_path_through_the_centre_is_exact(self):
        def points(event, pmt):
            rows, paths = self.paths([event], [pmt])
            self.assertEqual(len(rows), 1)
            return [paths[0].type, paths[0].initial, paths[0].final, *paths[0].points()]
        up = (0.0, 0.0, 1.0)
        def z(*values):
            return [(0.0, 0.0, value) for value in values]
        for event, wanted in ((0.0, [FROM_INSIDE, up, up, *z(0, 5800, 5860, 8300)]),
                              (-3000.5, [FROM_INSIDE, up, up, *z(-3000.5, 5800, 5860, 8300)]),
                              (-5830.0, [WALL_INSIDE, up, up,
                                         *z(-5830, -5800, 5800, 5860, 8300)]),
                              (5830.0, [FROM_WALL, up, up, *z(5830, 5860, 8300)]),
                              (-7000.0, [THROUGH_INSIDE, up, up,
                                         *z(-7000, -5860, -5800, 5800, 5860, 8300)]),
                              (7000.0, [WATER, up, up, *z(7000, 8300)])):
            with self.subTest(event=event):
                self.assertEqual(points((0.0, 0.0, event), TOP), wanted)

    def test_ids_are_written_with_the_paths(self):
        events, pmts = {'say "a", b\nc': CENTRE, "": CENTRE}, {"\u00e9": TOP, "p,q": BOTTOM}
        _, paths = self.paths(events, pmts)
        self.assertEqual([(p.event, p.pmt) for p in paths],
                         list(itertools.product(events, pmts)))
        again = self.check("paths.csv", geometry=self.tables(*ANCHOR))
        self.assertEqual(again.verdicts(), ["", "NCDAnchor"] * 2)

    def test_paths_may_go_to_standard_output_where_verdicts_go_to_a_file(self):
        self.paths([CENTRE], [TOP])
        result = self.scan([CENTRE], [TOP], "-o", "verdicts.csv", "--paths", "-")
        self.assertEqual(result.out, self.read("paths.csv"))
        self.assertEqual(rows_of(self.read("verdicts.csv"))[0].type, FROM_INSIDE)


class Physics(ScanTest):
    # In turn: as in nature; a strong lens, with its focus near the PMTs; light that
    # crosses the wall alone; total reflection; a hollow vessel.
    MEDIA = (INDICES, (1.8, 1.2, 1.0), LIGHT_WALL, REFLECTING, (1.0, 1.5, 1.4))

    def assert_physical(self, path, event, pmt, indices):
        media, points = MEDIA_OF[path.type], path.points()
        self.assertEqual((path.start, path.end), (event, pmt))
        self.assertEqual(media[0], medium_at(length(event)))
        self.assertEqual(len(points), len(media) + 1)
        ways = [unit(minus(b, a)) for a, b in zip(points, points[1:])]
        for direction, way in ((path.initial, ways[0]), (path.final, ways[-1])):
            self.assertLess(abs(length(direction) - 1), 1e-14)
            self.assertLess(length(minus(direction, way)), 1e-9)
        for here, a, b in zip(media, points, points[1:]):
            floor = (0, INNER_RADIUS, OUTER_RADIUS)[here]
            self.assertGreater(nearest_to_centre(a, b), floor - 1e-6)
        for here, there, point, before, after in zip(media, media[1:], points[1:], ways,
                                                     ways[1:]):
            radius = INNER_RADIUS if 0 in (here, there) else OUTER_RADIUS
            self.assertLess(abs(length(point) - radius), 1e-6)
            normal = unit(point)
            bend = minus(times(indices[here], cross(before, normal)),
                         times(indices[there], cross(after, normal)))
            self.assertLess(length(bend), 1e-9, "Snell's law")
            goes_on = dot(before, normal) * dot(after, normal)
            self.assertEqual(goes_on > 0, here != there)

    def test_every_path_obeys_snells_law_and_is_the_shortest_of_those_that_do(self):
        several, none = 0, 0
        for number, indices in enumerate(self.MEDIA):
            events = random_events(9, seed=20 + number)
            # Behind the centre, where more than one path may lead.
            pmts = random_pmts(3, seed=30 + number)
            pmts += [times(-PMT_RADIUS, unit(minus(e, times(500, random_direction(
                random.Random(number)))))) for e in (events[0], events[2], events[5])]
            rows, paths = self.paths(events, pmts, geometry=self.tables(*optics(*indices)))
            pairs = dict(zip(((row.event, row.pmt) for row in rows),
                             itertools.product(events, pmts)))
            found = {(path.event, path.pmt): path for path in paths}
            for ids, (event, pmt) in pairs.items():
                with self.subTest(indices=indices, event=event, pmt=pmt):
                    path = found.get(ids)
                    if path:
                        self.assert_physical(path, event, pmt, indices)
                    misses = nearest_to_centre(event, pmt) > OUTER_RADIUS
                    self.assertEqual(path is not None and path.type == WATER, misses)
                    if misses:
                        continue
                    rays = rays_between(indices, event, pmt)
                    several += len(rays) > 1
                    none += path is None
                    if not path:
                        self.assertEqual(rays, [])
                    elif rays:
                        self.assertLess(path.optical_length(indices),
                                        min(ray.optical for ray in rays) + 1e-6)
        self.assertGreater(several, 10)
        self.assertGreater(none, 5)

    def test_rays_that_are_followed_forward_are_found_again(self):
        numbers = random.Random(40)
        checked = 0
        for indices in self.MEDIA:
            events, pmts, rays = [], [], []
            while len(rays) < 8:
                event = numbers.uniform(100, 8000)
                ray = follow(indices, event, numbers.uniform(0, math.pi), PMT_RADIUS)
                if ray:
                    rays.append(ray)
                    events.append((event, 0.0, 0.0))
                    pmts.append(in_the_plane(math.degrees(ray.swept)))
            rows, paths = self.paths(events, pmts, geometry=self.tables(*optics(*indices)))
            found = {(path.event, path.pmt): path for path in paths}
            for i, ray in enumerate(rays):
                path = found[f"e{i}", f"p{i}"]
                if path.type == WATER:
                    continue
                shortest = min(r.optical for r in
                               [ray, *rays_between(indices, events[i], pmts[i])])
                self.assertLess(path.optical_length(indices), shortest + 1e-6)
                checked += 1
        self.assertGreater(checked, 20)

    def test_reflections_are_mirrored_at_the_outer_surface(self):
        numbers = random.Random(50)
        events = [times(numbers.uniform(5870, 8290), random_direction(numbers))
                  for _ in range(12)]
        pmts = random_pmts(20, seed=51)
        _, paths = self.paths(events, pmts, "--reflections", geometry=self.tables(*OPTICS))
        mirrored = [path for path in paths if path.type == REFLECTION]
        self.assertGreater(len(mirrored), 40)
        self.assertEqual(len(mirrored), sum(path.type == WATER for path in paths))
        for path in mirrored:
            event, pmt = events[int(path.event[1:])], pmts[int(path.pmt[1:])]
            self.assert_physical(path, event, pmt, INDICES)

    def test_equal_indices_give_straight_lines(self):
        events, pmts = random_events(12, seed=60), random_pmts(12, seed=61)
        _, paths = self.paths(events, pmts, geometry=self.tables(*optics(1.4, 1.4, 1.4)))
        self.assertEqual(len(paths), 144)
        for path in paths:
            way = unit(minus(path.end, path.start))
            for point in path.points()[1:-1]:
                self.assertLess(length(cross(minus(point, path.start), way)), 1e-9)
            self.assertLess(length(minus(path.initial, way)), 1e-12)
            self.assertLess(length(minus(path.final, way)), 1e-12)

    def test_a_turned_detector_gives_turned_paths(self):
        events, pmts = random_events(9, seed=70), random_pmts(9, seed=71)

        def turned(points):
            return [(z, x, y) for x, y, z in points]
        _, paths = self.paths(events, pmts, "--reflections", geometry=self.tables(*OPTICS))
        _, others = self.paths(turned(events), turned(pmts), "--reflections",
                               geometry=self.tables(*OPTICS))
        for path, other in zip(paths, others, strict=True):
            self.assertEqual(path.type, other.type)
            for a, b in zip(turned(path.points()), other.points(), strict=True):
                self.assertLess(length(minus(a, b)), 1e-6)


# --- Media -------------------------------------------------------------------

class Media(ScanTest):
    FLAT = {"wavelength": [300, 400, 500, 600], "refractive_index": [1.75, 1.5, 1.25, 1.125]}
    BENT = ([(3000.0, 0.0, 0.0)], [TOP])

    def bent(self, inner, *options):
        """Bytes of the path of a pair that any change of the inner index changes."""
        result = self.scan(*self.BENT, "--paths", "paths.csv", *options,
                           geometry=self.tables(*optics(inner, 1.49, 1.33)))
        return self.read("paths.csv"), self.new_lines(result)

    def new_lines(self, result):
        """What is said beyond the set-up's messages and the table."""
        if not hasattr(self, "usual"):
            plain = self.scan(*self.BENT, geometry=self.tables(*OPTICS))
            self.usual = set(plain.err.splitlines())
        return [text for text in result.err.splitlines()
                if text not in self.usual and not re.match(r" *[\w/ ]+ +[\d,.]+( |$)", text)]

    def test_between_its_wavelengths_a_table_is_interpolated_linearly(self):
        for wavelength, index in ((300, 1.75), (400, 1.5), (450, 1.375), (462.5, 1.34375),
                                  ("5e2", 1.25), (550, 1.1875), ("+600.0", 1.125)):
            with self.subTest(wavelength=wavelength):
                table, warnings = self.bent(self.FLAT, "--wavelength", wavelength)
                self.assertEqual(table, self.bent(index)[0])
                self.assertEqual(warnings, [])

    def test_the_wavelength_is_400_where_none_is_given(self):
        self.assertEqual(self.bent(self.FLAT)[0], self.bent(1.5)[0])
        self.assertNotEqual(self.bent(self.FLAT)[0], self.bent(1.25)[0])

    def test_outside_a_table_its_end_is_used_and_each_medium_warned_of_once(self):
        inner, water = self.FLAT, {"wavelength": [350, 450], "refractive_index": [1.375, 1.25]}
        for wavelength, ends, warned in ((299, (1.75, 1.375), ["inner_av", "water"]),
                                         (1e-3, (1.75, 1.375), ["inner_av", "water"]),
                                         (451, (1.3725, 1.25), ["water"]),
                                         (601, (1.125, 1.25), ["inner_av", "water"]),
                                         (1e9, (1.125, 1.25), ["inner_av", "water"]),
                                         (400, (1.5, 1.3125), [])):
            for threads in (1, 7):
                with self.subTest(wavelength=wavelength, threads=threads):
                    result = self.scan(random_events(9, 1), random_pmts(9, 2), "--wavelength",
                                       wavelength, "--threads", threads, "--paths", "paths.csv",
                                       geometry=self.tables(*optics(inner, 1.49, water)))
                    told = self.new_lines(result)
                    self.assertEqual(len(told), len(warned), told)
                    for text, index in zip(told, warned):
                        self.assertIn(index, text)
                        self.assertIn("wavelength", text)
                    found = self.read("paths.csv")
                    self.scan(random_events(9, 1), random_pmts(9, 2), "--paths", "paths.csv",
                              geometry=self.tables(*optics(ends[0], 1.49, ends[1])))
                    if wavelength != 451:  # its inner index is a rounded one
                        self.assertEqual(found, self.read("paths.csv"))

    def test_a_number_holds_for_all_wavelengths(self):
        for wavelength in ("1e-300", "200", "1e300"):
            table, warnings = self.bent(1.5, "--wavelength", wavelength)
            self.assertEqual(table, self.bent(1.5)[0])
            self.assertEqual(warnings, [])

    def test_snells_law_holds_at_the_wavelength(self):
        geometry = self.tables(*optics(self.FLAT, {"wavelength": [380, 480],
                                                   "refractive_index": [1.5, 1.45]}, 1.33))
        at_430 = (1.5 - 0.3 * 0.25, 1.5 - 0.5 * 0.05, 1.33)
        _, paths = self.paths(random_events(6, 80), random_pmts(6, 81), "--wavelength", 430,
                              geometry=geometry)
        bends = 0
        for path in paths:
            points, media = path.points(), MEDIA_OF[path.type]
            ways = [unit(minus(b, a)) for a, b in zip(points, points[1:])]
            for i, point in enumerate(points[1:-1]):
                before = length(cross(ways[i], unit(point)))
                after = length(cross(ways[i + 1], unit(point)))
                self.assertAlmostEqual(at_430[media[i]] * before,
                                       at_430[media[i + 1]] * after, delta=1e-9)
                bends += 1
        self.assertGreater(bends, 40)

    def refuse_tables(self, entries, *wanted):
        geometry = self.write("tables.json", json.dumps(entries))
        return self.refuse(positions("event", [CENTRE]), positions("pmt", [TOP]),
                           r"tables\.json", *wanted, geometry=geometry)

    def test_a_missing_medium_is_named(self):
        for i, index in enumerate(("inner_av", "acrylic", "water")):
            with self.subTest(index=index):
                some = OPTICS[:i] + OPTICS[i + 1:]
                self.refuse_tables([*VESSEL, *some], "OPTICS", rf"\b{index}\b")
                empty = [*some, entry("OPTICS", index, {})]
                self.refuse_tables([*VESSEL, *empty], "OPTICS", rf"\b{index}\b",
                                   "refractive_index")
                later = [*some, {**OPTICS[i], "runs": [1, None]}]
                self.refuse_tables([*VESSEL, *later], "OPTICS", rf"\b{index}\b")
        self.refuse_tables(VESSEL, "OPTICS")

    def test_an_impossible_medium_is_named_with_its_field(self):
        def two(wavelength, index):
            return {"wavelength": wavelength, "refractive_index": index}
        index_field, wave_field = "refractive_index", "wavelength"
        for value, field in ((0.999, index_field), (0, index_field), (-1.5, index_field),
                             ({index_field: "1.5"}, index_field),
                             ({index_field: [1.5, 1.4]}, index_field + "|" + wave_field),
                             ({wave_field: [400, 500]}, index_field),
                             (two([400, 500], [1.5, 0.99]), index_field),
                             (two([400, 500], [1.5]), index_field + "|" + wave_field),
                             (two([400], [1.5, 1.4]), index_field + "|" + wave_field),
                             (two([], []), index_field + "|" + wave_field),
                             (two([400, 400], [1.5, 1.4]), wave_field),
                             (two([500, 400], [1.5, 1.4]), wave_field),
                             (two([300, 400, 350], [1.5, 1.4, 1.3]), wave_field)):
            for i, index in enumerate(("inner_av", "acrylic", "water")):
                with self.subTest(value=value, index=index):
                    media = [*INDICES[:i], value, *INDICES[i + 1:]]
                    self.refuse_tables([*VESSEL, *optics(*media)], "OPTICS", rf"\b{index}\b",
                                       field)

    def test_an_index_of_1_and_a_table_of_one_wavelength_are_possible(self):
        self.assertEqual(self.types(*self.BENT, geometry=self.tables(
            *optics(1, 1.0, {"wavelength": [400], "refractive_index": [1]}))), [FROM_INSIDE])

    def test_missing_or_impossible_radii_are_named(self):
        def radii(inner, outer):
            return [entry("SOLID", "acrylic_vessel_inner", {"r_sphere": inner}),
                    entry("SOLID", "acrylic_vessel_outer", {"r_sphere": outer, "r_neck": 700.0})]
        for vessel in ([], VESSEL[:1], VESSEL[1:]):
            with self.subTest(vessel=vessel):
                self.refuse_tables([*vessel, *OPTICS], "SOLID", "acrylic_vessel_(inner|outer)")
        no_field = [VESSEL[0], entry("SOLID", "acrylic_vessel_outer", {"r_neck": 700.0})]
        for vessel in (no_field, radii("big", 5860), radii(5800, [5860]), radii(0, 5860),
                       radii(-5800, 5860), radii(5800, 5799), radii(5800, 0), radii(5800, 5800)):
            with self.subTest(vessel=vessel):
                self.refuse_tables([*vessel, *OPTICS], "SOLID", "acrylic_vessel_(inner|outer)",
                                   "r_sphere")

    def test_check_needs_no_media(self):
        _, paths = self.paths([CENTRE], [TOP, BOTTOM])
        self.assertEqual(len(paths), 2)
        result = self.check("paths.csv", geometry=self.tables(*ANCHOR))
        self.assertEqual(result.verdicts(), ["", "NCDAnchor"])


# --- The form of the input ---------------------------------------------------

class Input(ScanTest):
    EVENT = positions("event", [CENTRE])
    PMT = positions("pmt", [TOP])

    def scan_text(self, events, pmts, *options, **more):
        return self.scan(self.write("events.csv", events), self.write("pmts.csv", pmts),
                         *options, **more)

    def test_finds_columns_by_name_in_any_order_and_ignores_others(self):
        plain = self.scan({"a": (0.0, 0.0, 7000.0)}, {"b": BOTTOM, "c": TOP}).out
        events = 'z,note,event,"x","",y,Event,event_x\n7000,"say ""no"",\nor yes",a,0,,0,x,y\n'
        pmts = "y,x,z,pmt,event,\n0,0,-8300,b,1,2\n0,0,8300,c,,\n"
        self.assertEqual(self.scan_text(events, pmts).out, plain)

    def test_the_tables_may_have_the_columns_of_both(self):
        both = "event,pmt,x,y,z\na,b,0,0,8300\n"
        self.assertEqual(self.scan_text(both, both).out.decode(),
                         VERDICT_HEADER + "\na,b,,,no path\n")

    def test_ids_are_carried_through_whatever_they_hold(self):
        names = ["plain", "two words", " blanks ", "a,b", 'say "x"', '"', '""', "two\nlines",
                 "two\r\nlines", "a\rb", "\n", "", "\u00e9t\u00e9 \u4e2d\U0001f600", "=1+1", "-7",
                 "007", "1e5", "nan", "#", ";", "'", "\t", "\\n", "no path", "x" * 100_000]
        events = {name: CENTRE for name in names}
        pmts = {name: TOP for name in names}
        result = self.scan(events, pmts, "--per-pmt", "pmts-out.csv", "--per-event",
                           "events-out.csv", "--paths", "paths.csv")
        wanted = list(itertools.product(names, names))
        self.assertEqual([(row.event, row.pmt) for row in rows_of(result.out)], wanted)
        self.assertEqual([(p.event, p.pmt) for p in paths_of(self.read("paths.csv"))], wanted)
        for file in ("pmts-out.csv", "events-out.csv"):
            self.assertEqual([cells[0] for cells in records(self.read(file))[1:]], names)

    def test_ids_are_quoted_only_where_they_must_be(self):
        events = 'event,x,y,z\n"plain",0,0,0\n"a,b",0,0,0\n"say ""x""",0,0,0\n'
        events += '"a\rb",0,0,0\n"a\nb",0,0,0\n" c ",0,0,0\n"",0,0,0\n'
        wanted = ["plain", '"a,b"', '"say ""x"""', '"a\rb"', '"a\nb"', " c ", ""]
        result = self.scan_text(events, self.PMT)
        self.assertEqual(result.out.decode(), VERDICT_HEADER + "\n" + "".join(
            f"{name},p0,{FROM_INSIDE},0,\n" for name in wanted))

    def test_ids_need_not_be_text_that_can_be_decoded(self):
        events = b"event,x,y,z\n\xff\xfe\x80,0,0,0\nnul\0nul,0,0,0\n"
        result = self.scan_text(events, self.PMT)
        self.assertEqual(result.out, VERDICT_HEADER.encode() + b"\n"
                         + b"".join(name + b",p0," + FROM_INSIDE.encode() + b",0,\n"
                                    for name in (b"\xff\xfe\x80", b"nul\0nul")))

    def test_ids_may_come_twice(self):
        pmts = "pmt,x,y,z\nsame,0,0,8300\nsame,0,0,-8300\n"
        events = "event,x,y,z\n1,0,0,0\n1,0,0,7000\n"
        result = self.scan_text(events, pmts, "--per-pmt", "pmts-out.csv", "--per-event",
                                "events-out.csv")
        self.assertEqual([row[:2] for row in rows_of(result.out)], [("1", "same")] * 4)
        self.assertEqual(self.read("pmts-out.csv"), b"pmt,paths,shadowed,fraction,by\n"
                         b"same,2,0,0,\nsame,2,2,1,NCDAnchor\n")
        self.assertEqual(self.read("events-out.csv"), b"event,paths,shadowed,fraction,by\n"
                         b"1,2,1,0.5,NCDAnchor\n1,2,1,0.5,NCDAnchor\n")

    def test_accepts_crlf_and_a_byte_order_mark(self):
        plain = self.scan([CENTRE, TOP], [TOP, BOTTOM]).out
        for mark, end in (("", "\r\n"), ("\ufeff", "\n"), ("\ufeff", "\r\n")):
            events = mark + positions("event", [CENTRE, TOP], end)
            pmts = mark + positions("pmt", [TOP, BOTTOM], end)
            self.assertEqual(self.scan_text(events, pmts).out, plain)
            self.assertEqual(self.scan_text(events[:-len(end)], pmts[:-len(end)]).out, plain)
            blank = events.replace(end, 2 * end)
            self.assertEqual(self.scan_text(blank, end + pmts.replace(end, 3 * end)).out
                             if not mark else plain, plain)

    def test_reads_numbers_as_check_does(self):
        for z in ("8300", "+8300", "8.3e3", "83E+2", "8300.", "08300", "0.83e4",
                  "8300." + "0" * 3000, "83" + "0" * 400 + "e-398"):
            with self.subTest(z=z[:20]):
                self.assertEqual(rows_of(self.scan_text(
                    f"event,x,y,z\n1,-0,+0,1e-400\n", f"pmt,x,y,z\n1,.0,0.,{z}\n").out)[0].type,
                    FROM_INSIDE)

    def test_a_cell_that_is_not_a_number_is_named_by_file_line_row_and_column(self):
        for column, axis in enumerate("xyz", start=1):
            for cell in ("abc", "", '""', " ", "1 ", " 1", "0x10", "1_0", '"1,5"', "1e400", "+-1",
                         "1\0"):
                with self.subTest(column=axis, cell=cell):
                    cells = ["id", "0", "0", "0"]
                    cells[column] = cell
                    bad = ",".join(cells) + "\n"
                    place = rf"line 4 \(row 1\), column {axis}\b"
                    self.refuse(self.EVENT + "\n" + bad, self.PMT, rf"events\.csv: {place}")
                    self.refuse(self.EVENT, self.PMT + "\n" + bad, rf"pmts\.csv: {place}")

    def test_the_cell_is_told(self):
        result = self.refuse(self.EVENT + "id,0,abc,0\n", self.PMT)
        self.assertIn('events.csv: line 3 (row 1), column y: "abc" is not a number\n', result.err)
        result = self.refuse(self.EVENT + "id,0,\x1b[2J,0\n", self.PMT, r"column y")
        self.assertNotIn("\x1b", result.err)
        self.refuse(self.EVENT + "id,0,1e999,0\n", self.PMT, "too large")

    def test_a_row_with_too_few_or_too_many_cells_is_an_error(self):
        for row, column in (("id,1,2", "z"), ("id", "x"), ("id,1,2,3,4", "z"), ('""', "x")):
            with self.subTest(row=row):
                self.refuse(self.EVENT + row + "\n", self.PMT,
                            rf"events\.csv: line 3 \(row 1\), column {column}\b")
                self.refuse(self.EVENT, self.PMT + row + "\n",
                            rf"pmts\.csv: line 3 \(row 1\), column {column}\b")

    def test_wrong_quotes_are_an_error(self):
        for row in ('"id,1,2,3', '"id"x,1,2,3', 'i"d,1,2,3'):
            with self.subTest(row=row):
                self.refuse(self.EVENT + row + "\n", self.PMT, r"events\.csv: line 3 .*quote")
                self.refuse(self.EVENT, self.PMT + row + "\n", r"pmts\.csv: line 3 .*quote")

    def test_missing_columns_are_all_named(self):
        for kind, other in (("event", "pmt"), ("pmt", "event")):
            for header, missing in ((f"{kind},y", "x, z"), ("x,y,z", kind), (other, f"{kind}, x"),
                                    (f" {kind},x,y,z", kind), (f"{kind};x;y;z", f"{kind}, x, y, z"),
                                    (f"{kind.upper()},X,y,z", f"{kind}, x")):
                with self.subTest(kind=kind, header=header):
                    texts = {"event": self.EVENT, "pmt": self.PMT} | {kind: header + "\n"}
                    result = self.refuse(texts["event"], texts["pmt"])
                    self.assertRegex(result.err, rf"{kind}s\.csv: line 1 \(the header\): "
                                                 rf"missing columns: {missing}")
        result = self.refuse("event,y\n", self.PMT)
        self.assertIn("events.csv: line 1 (the header): missing columns: x, z\n", result.err)

    def test_a_column_named_twice_is_an_error(self):
        self.refuse("event,x,y,z,x\n1,2,3,4,5\n", self.PMT, r"events\.csv: line 1\b.*x.*twice")
        self.refuse(self.EVENT, "pmt,x,y,z,pmt\n1,2,3,4,5\n", r"pmts\.csv: line 1\b.*pmt.*twice")

    def test_an_empty_file_is_refused_and_a_missing_one_named(self):
        for text in ("", "\n", "\ufeff"):
            self.refuse(text, self.PMT, r"events\.csv.*header")
            self.refuse(self.EVENT, text, r"pmts\.csv.*header")
        nowhere = self.folder / "nowhere.csv"
        self.refuse(nowhere, self.PMT, r"nowhere\.csv")
        self.refuse(self.EVENT, nowhere, r"nowhere\.csv")
        self.refuse(self.folder, self.PMT)
        self.refuse(self.EVENT, self.folder)
        self.refuse(pathlib.Path("/dev/zero"), self.PMT, "/dev/zero")

    def test_a_header_alone_gives_a_header_alone(self):
        head, pmt_head = "event,x,y,z\n", "pmt,x,y,z\n"
        files = ["--paths", "paths.csv", "--per-pmt", "pmts-out.csv", "--per-event",
                 "events-out.csv"]
        sums = b",paths,shadowed,fraction,by\n"
        for events, pmts, per_event, per_pmt in (
                (head, self.PMT, b"", b"p0,0,0,,\n"), (self.EVENT, pmt_head, b"e0,0,0,,\n", b""),
                (head, pmt_head, b"", b""), (head[:-1], "\ufeff" + pmt_head, b"", b"")):
            result = self.scan_text(events, pmts, *files)
            self.assertEqual(result.out.decode(), VERDICT_HEADER + "\n")
            self.assertEqual(self.read("paths.csv").decode(), PATH_HEADER + "\n")
            self.assertEqual(self.read("events-out.csv"), b"event" + sums + per_event)
            self.assertEqual(self.read("pmts-out.csv"), b"pmt" + sums + per_pmt)
            counts = result.counts()
            for label in ("pairs", "no path", "paths", "shadowed"):
                self.assertEqual(counts[label][0], "0", label)
            self.assertNotIn("nan", result.err)

    def test_an_error_far_into_the_events_is_told_with_its_place(self):
        events = self.EVENT + "id,0,0,0\n" * 5000 + '"two\nlines",0,0,0\nid,0,0,\n'
        for threads in (1, 7):
            self.refuse(events, self.PMT, r"events\.csv: line 5005 \(row 5002\), column z",
                        options=["--threads", threads])
        result = self.scan(self.write("e.csv", events), self.write("p.csv", self.PMT), status=2)
        self.assertTrue(result.out == b"" or result.out.startswith(VERDICT_HEADER.encode()))

    def test_reads_standard_input_where_either_file_is_a_dash(self):
        wanted = self.scan([CENTRE, TOP], [TOP, BOTTOM]).out
        events, pmts = positions("event", [CENTRE, TOP]), positions("pmt", [TOP, BOTTOM])
        self.assertEqual(self.scan("-", [TOP, BOTTOM], stdin=events.encode()).out, wanted)
        self.assertEqual(self.scan([CENTRE, TOP], "-", stdin=pmts.encode()).out, wanted)
        for arguments in (("-", [TOP]), ([CENTRE], "-")):
            result = self.scan(*arguments, stdin=b"event,pmt,x,y,z\n1,2,3,4\n", status=2)
            self.assertRegex(result.err, r"(?i)standard input: line 2 \(row 0\), column z")
        both = b"event,pmt,x,y,z\n1,2,3,4,5\n"
        result = self.scan("-", "-", stdin=both, status=2)
        self.assertRegex(result.err, "(?i)standard input.*twice")

    def test_files_may_be_pipes(self):
        wanted = self.scan([CENTRE, TOP], [TOP, BOTTOM]).out
        threads = []
        for name, text in (("events", positions("event", [CENTRE, TOP])),
                           ("pmts", positions("pmt", [TOP, BOTTOM]))):
            pipe = self.folder / name
            os.mkfifo(pipe)
            threads.append(threading.Thread(target=pipe.write_text, args=(text,)))
            threads[-1].start()
        result = self.scan(self.folder / "events", self.folder / "pmts")
        self.assertEqual(result.out, wanted)
        for thread in threads:
            thread.join(TIMEOUT)

    def test_events_may_come_slowly(self):
        pmts = self.pmts([TOP, BOTTOM])
        for threads in (1, 7):
            process = self.start(self.scan_command("-", pmts, self.tables(*OPTICS, *ANCHOR),
                                                   "--threads", threads))
            for byte in positions("event", [CENTRE, TOP], "\r\n").encode():
                os.write(process.stdin.fileno(), bytes([byte]))
            self.wait_until_it_sleeps(process)
            out, _ = process.communicate(timeout=TIMEOUT)
            self.assertEqual(out, self.scan([CENTRE, TOP], pmts).out)

    def test_waiting_for_events_takes_no_processor_time(self):
        process = self.start(self.scan_command("-", self.pmts([TOP]), self.tables(*OPTICS),
                                               "--threads", 7))
        self.feed(process, "event,x,y,z\n1,0,0,0\n")
        self.wait_until_it_sleeps(process)

        def ticks():
            fields = pathlib.Path(f"/proc/{process.pid}/stat").read_text().rpartition(")")[2]
            return sum(map(int, fields.split()[11:13]))
        before = ticks()
        time.sleep(0.5)
        self.assertLess(ticks() - before, 0.1 * os.sysconf("SC_CLK_TCK"))

    def test_bad_tables_and_pmts_are_told_before_any_event_comes(self):
        pmts, bad = self.pmts([TOP]), self.write("bad.csv", self.PMT + "id,0,0,x\n")
        geometry = self.tables(*OPTICS)
        for arguments, wanted in (((pmts, "nowhere.json"), "nowhere.json"),
                                  ((bad, geometry), "bad.csv"),
                                  ((pmts, self.tables(name="bare.json")), "bare.json")):
            process = self.start(self.scan_command("-", *arguments))
            self.assertIn(wanted, self.assert_ends(process, 2, timeout=60))

    def test_numbers_are_read_and_written_alike_in_every_locale(self):
        wanted, _ = self.paths([(1.5, 2.25, 3.125)], [TOP])
        text = self.read("paths.csv")
        for locale in ("de_DE", "de_DE.UTF-8", "nowhere"):
            env = {**os.environ, "LC_ALL": locale, "LANG": locale}
            found, _ = self.paths([(1.5, 2.25, 3.125)], [TOP], env=env)
            self.assertEqual((found, self.read("paths.csv")), (wanted, text))


class At(ScanTest):
    def at(self, text, *options, **more):
        more.setdefault("status", 0)
        pmts = self.pmts([TOP, BOTTOM])
        option = [text] if text.startswith("--at") else ["--at", text]
        return self.run_command([PROGRAM, "scan", "--geometry", self.tables(*OPTICS, *ANCHOR),
                                 *option, "--pmts", pmts, *options], **more)

    def test_one_position_stands_for_a_file_with_the_event_0(self):
        for text, point in (("0,0,0", CENTRE), ("-100,+2e2,-.5", (-100.0, 200.0, -0.5)),
                            ("--at=-1,-2,7000", (-1.0, -2.0, 7000.0)),
                            ("1e400,0,0", None), ("0,0,8300", TOP)):
            with self.subTest(text=text):
                if point is None:
                    self.at(text, status=2)
                    continue
                options = ["--paths", "paths.csv", "--per-event", "sums.csv"]
                out = self.at(text, *options).out
                files = self.read("paths.csv"), self.read("sums.csv")
                self.assertEqual(self.scan({"0": point}, [TOP, BOTTOM], *options).out, out)
                self.assertEqual((self.read("paths.csv"), self.read("sums.csv")), files)

    def test_anything_but_three_numbers_is_bad_usage(self):
        for text in ("", "1", "1,2", "1,2,", "1,,3", ",,", "1,2,3,", "1,2,3,4", "a,b,c",
                     "1;2;3", "1 2 3", "1, 2,3", " 1,2,3", "1,2,3 ", "0x1,2,3", "1,2,3mm",
                     '"1",2,3', "1,2,3\n", "1.2.3,4,5", "(1,2,3)"):
            with self.subTest(text=text):
                result = self.at("--at=" + text, "-o", "out.csv", status=2)
                self.assertIn("--at", result.err)
                self.assertEqual(result.out, b"")
                self.assertFalse((self.folder / "out.csv").exists())

    def test_takes_the_place_of_the_events_and_does_not_join_them(self):
        events, pmts, geometry = self.events([CENTRE]), self.pmts([TOP]), self.tables(*OPTICS)
        for some in ([], ["--events", events, "--at", "0,0,0"], ["--at", "0,0,0", "--at", "1,1,1"],
                     ["--events", events, "--events", events]):
            result = self.run_command([PROGRAM, "scan", "--geometry", geometry, "--pmts", pmts,
                                       "-o", "out.csv", *some], status=2)
            self.assertRegex(result.err, "--at|--events")
            self.assertFalse((self.folder / "out.csv").exists())

    def test_standard_input_is_left_for_the_pmts(self):
        result = self.run_command([PROGRAM, "scan", "--geometry", self.tables(*OPTICS), "--at",
                                   "0,0,0", "--pmts", "-"],
                                  stdin=positions("pmt", [TOP]).encode())
        self.assertEqual(rows_of(result.out), [Row("0", "p0", FROM_INSIDE, "0", "")])


# --- Counts ------------------------------------------------------------------

class Counts(ScanTest):
    def sums(self, rows, ids, column):
        """What --per-pmt and --per-event must hold, from the verdicts."""
        lines = []
        for name in ids:
            mine = [row for row in rows if row[column] == name and row.type]
            hits = [row.by for row in mine if row.shadowed == "1"]
            most = max(COMPONENTS, key=hits.count) if hits else ""  # of equal ones the first
            lines.append([name, len(mine), len(hits),
                          len(hits) / len(mine) if mine else None, most])
        return lines

    def written(self, name, kind):
        header, *lines = records(self.read(name))
        self.assertEqual(header, [kind, "paths", "shadowed", "fraction", "by"])
        for cells in lines:
            self.assertEqual([str(int(text)) for text in cells[1:3]], cells[1:3])
        return [[cells[0], int(cells[1]), int(cells[2]),
                 float(cells[3]) if cells[3] else None, cells[4]] for cells in lines]

    def test_sums_and_table_follow_from_the_verdicts(self):
        events = {f"e{i}": p for i, p in enumerate(random_events(24, 90))}
        pmts = {f"p{i}": p for i, p in enumerate(random_pmts(30, 91))}
        events["nowhere"] = ("nan", "0", "0")
        pmts["in"] = CENTRE
        geometry = self.reference_tables()
        for options in ([], ["--reflections", "--threads", "3"]):
            result = self.scan(events, pmts, "--per-pmt", "pmts-out.csv", "--per-event",
                               "events-out.csv", *options, geometry=geometry)
            rows = rows_of(result.out)
            self.assertEqual(self.written("events-out.csv", "event"), self.sums(rows, events, 0))
            self.assertEqual(self.written("pmts-out.csv", "pmt"), self.sums(rows, pmts, 1))
            paths = [row for row in rows if row.type]
            wanted = {"pairs": len(events) * len(pmts), "no path": len(rows) - len(paths),
                      "paths": len(paths), "shadowed": sum(bool(row.by) for row in paths)}
            wanted |= {c: sum(row.by == c for row in paths) for c in COMPONENTS}
            counts = result.counts()
            self.assertEqual({label: counts[label][0] for label in wanted},
                             {label: f"{count:,}" for label, count in wanted.items()})
            for label in ("shadowed", *COMPONENTS):
                self.assertEqual(counts[label][1], f"{100 * wanted[label] / len(paths):.3f}")
            self.assertGreater(len({cells[4] for cells in self.written("pmts-out.csv", "pmt")}), 3)

    def test_the_table_begins_with_pairs_and_those_without_a_path(self):
        result = self.scan([CENTRE] * 50, [TOP, BOTTOM, CENTRE] * 20)
        labels = list(result.counts())
        begin = labels.index("pairs")
        self.assertEqual(labels[begin:], ["pairs", "no path", "paths", "shadowed", *COMPONENTS,
                                          "seconds", "paths/second"])
        counts = result.counts()
        self.assertEqual([counts[label][0] for label in labels[begin:begin + 4]],
                         ["3,000", "1,000", "2,000", "1,000"])
        self.assertEqual(counts["NCDAnchor"], ("1,000", "50.000"))
        self.assertEqual(counts["AVPipe"][0], "not loaded")
        self.assertGreaterEqual(float(counts["seconds"][0]), 0)
        self.assertRegex(counts["paths/second"][0], r"^[\d,]+$")

    def test_of_equally_frequent_components_the_one_tested_first_is_named(self):
        sideways = towards(60, 0, INNER_RADIUS + 0.1)
        anchor = entry("GEO_LOCATIONS", "ncd_anchors",
                       {axis: [x] for axis, x in zip("xyz", towards(60, 0, INNER_RADIUS))})
        geometry = self.tables(*OPTICS, *PLATE, *ANCHOR[1:2], anchor)
        pmts = {"aside": (PMT_RADIUS, 0.0, 0.0)}
        for events, by in (([CENTRE, sideways], "BellyPlate"), ([sideways, CENTRE], "BellyPlate"),
                           ([CENTRE, sideways, sideways], "NCDAnchor")):
            rows = self.rows(events, pmts, "--per-pmt", "out.csv", geometry=geometry)
            self.assertEqual({row.by for row in rows}, {"BellyPlate", "NCDAnchor"})
            self.assertEqual(self.read("out.csv").decode(), "pmt,paths,shadowed,fraction,by\n"
                             f"aside,{len(events)},{len(events)},1,{by}\n")

    def test_reflections_count_as_paths(self):
        result = self.scan([in_the_plane(-20, 7000.0)], [in_the_plane(20, 7000.0)],
                           "--reflections", "--per-pmt", "pmts-out.csv", "--per-event",
                           "events-out.csv", geometry=self.tables(*OPTICS, *PLATE))
        self.assertEqual(self.read("pmts-out.csv").split(b"\n")[1], b"p0,2,1,0.5,BellyPlate")
        self.assertEqual(self.read("events-out.csv").split(b"\n")[1], b"e0,2,1,0.5,BellyPlate")
        counts = result.counts()
        self.assertEqual([counts[x][0] for x in ("pairs", "no path", "paths", "shadowed")],
                         ["1", "0", "2", "1"])

    def test_sums_may_go_to_standard_output(self):
        for option, wanted in (("--per-pmt", b"pmt,paths,shadowed,fraction,by\np0,1,0,0,\n"),
                               ("--per-event", b"event,paths,shadowed,fraction,by\ne0,1,0,0,\n")):
            self.assertEqual(self.scan([CENTRE], [TOP], "-o", "out.csv", option, "-").out, wanted)


# --- Threads and memory ------------------------------------------------------

class Threads(ScanTest):
    OUTPUTS = ("verdicts.csv", "paths.csv", "per-pmt.csv", "per-event.csv")

    def outputs(self, events, pmts, *options, **more):
        arguments = itertools.chain(*zip(("-o", "--paths", "--per-pmt", "--per-event"),
                                         self.OUTPUTS))
        result = self.scan(events, pmts, *arguments, *options, **more)
        told = [text for text in result.err.splitlines() if "second" not in text]
        return [self.read(name) for name in self.OUTPUTS], told

    def assert_threads_do_not_matter(self, events, pmts, *options, **more):
        wanted = self.outputs(events, pmts, *options, "--threads", 1, **more)
        for threads in (["--threads", 2], ["--threads", 7], []):
            with self.subTest(threads=threads):
                found = self.outputs(events, pmts, *options, *threads, **more)
                for name, a, b in zip(self.OUTPUTS, wanted[0], found[0]):
                    self.assertTrue(a == b, name)
                self.assertEqual(found[1], wanted[1])
        return wanted[0]

    def test_outputs_are_the_same_with_any_number(self):
        events = random_events(45, 100) + [("nan", "0", "0"), TOP] * 10
        pmts = random_pmts(20, 101) + [TOP, CENTRE]
        geometry = self.reference_tables()
        self.assert_threads_do_not_matter(events, pmts, "--reflections", geometry=geometry)

    def test_many_cheap_events_stay_in_order(self):
        # Pairs without a path take far less time than others.
        events = {f"{i}": ("nan", "0", "0") if i % 97 else (i / 10, 0.0, 0.0)
                  for i in range(20_000)}
        out = self.assert_threads_do_not_matter(self.events(events), [TOP],
                                                geometry=self.tables(*OPTICS))[0]
        self.assertEqual([row.event for row in rows_of(out)], list(events))

    def test_many_pmts_of_one_event_stay_in_order(self):
        pmts = {f"{i}": ("nan", "0", "0") if i % 97 else (i / 10, 0.0, 8000.0)
                for i in range(20_000)}
        out = self.assert_threads_do_not_matter([CENTRE], self.pmts(pmts),
                                                geometry=self.tables(*OPTICS))[0]
        self.assertEqual([row.pmt for row in rows_of(out)], list(pmts))

    def test_more_threads_than_work_do_no_harm(self):
        wanted = self.scan([CENTRE], [TOP], "--threads", 1).out
        for threads in (64, 1024):
            self.assertEqual(self.scan([CENTRE], [TOP], "--threads", threads).out, wanted)
        self.assertEqual(self.scan("-", [TOP], "--threads", 64, stdin=b"event,x,y,z\n").out,
                         VERDICT_HEADER.encode() + b"\n")

    def test_threads_share_the_work(self):
        events, pmts = self.events(random_events(60, 110)), self.pmts(random_pmts(100, 111))
        process = self.start(self.scan_command(events, pmts, self.reference_tables(),
                                               "--threads", 4))
        most = 0

        def ended():
            nonlocal most
            try:
                most = max(most, len(os.listdir(f"/proc/{process.pid}/task")))
            except FileNotFoundError:
                pass
            return process.poll() is not None
        reader = threading.Thread(target=process.stdout.read, daemon=True)
        reader.start()
        self.wait_for(ended, "its end")
        reader.join(TIMEOUT)
        self.assertGreaterEqual(most, 4)


class Memory(ScanTest):
    def peak_of(self, events, pmts, *options):
        """The most memory, kB, that a run took up when all its events are worked on."""
        geometry = self.tables(*OPTICS)
        process = self.start(self.scan_command("-", pmts, geometry, "--per-event", "sums.csv",
                                               *options), stdout=subprocess.DEVNULL, env=self.MEMORY_ENV)
        process.stdin.write(events)
        process.stdin.flush()
        self.wait_until_it_sleeps(process)
        peak = self.peak(process)
        process.stdin.close()
        self.assert_ends(process, 0)
        return peak

    def events_text(self, count):
        lines = [f"event number {i},{i % 5000},0,0\n" for i in range(count)]
        return ("event,x,y,z\n" + "".join(lines)).encode()

    def test_memory_does_not_grow_with_the_number_of_events(self):
        pmts = self.pmts([TOP, BOTTOM])
        for threads in (1, 7):
            short, long = (self.peak_of(self.events_text(count), pmts, "--paths", "/dev/null",
                                        "--threads", threads)
                           for count in (10_000, 120_000))
            self.assertLess(long - short, self.SLACK_KB)

    def test_memory_does_not_grow_with_the_number_of_events_of_many_pmts(self):
        pmts = self.pmts(random_pmts(2000, 120))
        short, long = (self.peak_of(self.events_text(count), pmts) for count in (20, 150))
        self.assertLess(long - short, self.SLACK_KB)

    def test_events_are_not_read_ahead_of_an_output_that_nobody_reads(self):
        pmts = self.pmts([TOP])
        for threads in (1, 7):
            process = self.start(self.scan_command("-", pmts, self.tables(*OPTICS), "--threads",
                                                   threads), env=self.MEMORY_ENV)
            fed = 0

            def feed():
                nonlocal fed
                rows = b"".join(b"%06d,0,0,0\n" % i for i in range(1000))
                try:
                    process.stdin.write(b"event,x,y,z\n")
                    while True:
                        process.stdin.write(rows)
                        fed += len(rows)
                except (BrokenPipeError, ValueError):
                    pass
            thread = threading.Thread(target=feed, daemon=True)
            thread.start()
            self.wait_until_it_sleeps(process)
            self.assertLess(fed, 8 << 20)
            process.kill()
            thread.join(TIMEOUT)


# --- The output --------------------------------------------------------------

class OutputTest(ScanTest):
    FILES = {"-o": "verdicts.csv", "--paths": "paths.csv", "--per-pmt": "per-pmt.csv",
             "--per-event": "per-event.csv"}

    def everything(self, changed=()):
        """Options that write all that there is to write, some of it elsewhere."""
        return [word for pair in {**self.FILES, **dict(changed)}.items() for word in pair]

    def prepare(self):
        """Inputs, and something in the place of every output."""
        for name in (*self.FILES.values(), "verdicts.root"):
            self.write(name, "as it was")
        return (self.events([CENTRE, TOP]), self.pmts([TOP, BOTTOM]),
                self.tables(*OPTICS, *ANCHOR))

    def assert_all_left_alone(self, *options, status, wanted=(), **more):
        """Such a run fails and changes no file."""
        events, pmts, geometry = self.prepare()
        before = self.snapshot()
        result = self.scan(events, pmts, *options, geometry=geometry, status=status, **more)
        self.assertEqual(self.snapshot(), before)
        self.assertNotIn("paths/second", result.err)
        for part in wanted:
            self.assertIn(part, result.err)
        return result

    def many(self):
        """Inputs for 14,000 verdicts of some 35 bytes each."""
        return self.events([CENTRE] * 700, "many.csv"), self.pmts([TOP, BOTTOM] * 10)


class Output(OutputTest):
    def test_verdicts_go_to_standard_output_and_nothing_else_does(self):
        self.prepare()
        result = self.scan([CENTRE], [TOP], *self.everything())
        self.assertEqual(result.out, b"")
        wanted = self.read("verdicts.csv")
        for options in ([], ["-o", "-"], ["--output=-"], ["--paths", "p.csv"]):
            self.assertEqual(self.scan([CENTRE], [TOP], *options).out, wanted)
        self.assertEqual(wanted.decode(), VERDICT_HEADER + f"\ne0,p0,{FROM_INSIDE},0,\n")
        self.assertEqual(set(self.snapshot()),
                         {str(self.folder / name) for name in (
                             *self.FILES.values(), "verdicts.root", "p.csv", "events.csv",
                             "pmts.csv", "tables.json")})

    def test_existing_files_are_replaced_whole_and_keep_their_permissions(self):
        for i, name in enumerate(self.FILES.values()):
            self.write(name, "x" * 100_000).chmod((0o600, 0o640, 0o664, 0o755)[i])
        events, pmts, geometry = (self.events([CENTRE]), self.pmts([TOP]), self.tables(*OPTICS))
        self.scan(events, pmts, *self.everything(), geometry=geometry)
        for i, name in enumerate(self.FILES.values()):
            self.assertNotIn(b"xx", self.read(name))
            self.assertEqual(stat.S_IMODE((self.folder / name).stat().st_mode),
                             (0o600, 0o640, 0o664, 0o755)[i])

    def test_a_symbolic_link_stays_and_its_file_is_replaced(self):
        real = self.write("elsewhere/real.csv", "old")
        (self.folder / "link.csv").symlink_to("elsewhere/real.csv")
        self.scan([CENTRE], [TOP], "--per-pmt", self.folder / "link.csv")
        self.assertTrue((self.folder / "link.csv").is_symlink())
        self.assertIn(b"p0,1,0,0,", real.read_bytes())

    def test_a_file_may_be_named_once_only(self):
        (self.folder / "sub").mkdir()
        (self.folder / "link.csv").symlink_to("new.csv")
        (self.folder / "folder").symlink_to(".")
        options = list(self.FILES)
        for a, b in itertools.permutations(options, 2):
            for one, other in (("new.csv", "new.csv"), ("paths.csv", "./paths.csv")):
                with self.subTest(a=a, b=b, name=other):
                    self.assert_all_left_alone(a, one, b, other, status=2, wanted=[one])
        for other in ("./new.csv", "sub/../new.csv", self.folder / "new.csv", "link.csv",
                      "folder/new.csv"):
            with self.subTest(name=other):
                self.assert_all_left_alone("-o", "new.csv", "--paths", other, status=2)
                self.assert_all_left_alone("-o", other, "--paths", "new.csv", status=2)
        self.assert_all_left_alone("-o", "x.root", "--paths", "x.root", status=2)

    def test_an_output_may_not_be_an_input(self):
        (self.folder / "link.csv").symlink_to("events.csv")
        for option in self.FILES:
            for name in ("events.csv", "pmts.csv", "tables.json", "./events.csv", "link.csv",
                         self.folder / "pmts.csv"):
                with self.subTest(option=option, name=name):
                    self.assert_all_left_alone(option, name, status=2, wanted=[str(name)])
        folder = self.write("tables/all.json", json.dumps([*VESSEL, *OPTICS])).parent
        before = self.snapshot()
        self.scan(self.folder / "events.csv", self.folder / "pmts.csv", "-o", "tables/all.json",
                  geometry=folder, status=2)
        self.assertEqual(self.snapshot(), before)

    def test_one_output_at_most_goes_to_standard_output(self):
        for a, b in itertools.combinations(self.FILES, 2):
            result = self.assert_all_left_alone(a, "-", b, "-", status=2)
            self.assertEqual(result.out, b"")
        # Without -o the verdicts go there.
        for option in ("--paths", "--per-pmt", "--per-event"):
            result = self.assert_all_left_alone(option, "-", status=2)
            self.assertEqual(result.out, b"")

    def test_a_place_that_cannot_be_written_gives_status_1_and_leaves_the_rest(self):
        self.write("file", "x")
        for option in self.FILES:
            for name in ("missing/out.csv", "file/out.csv", str(self.folder), "/proc/out.csv",
                         "x" * 256):
                with self.subTest(option=option, name=name[:20]):
                    self.assert_all_left_alone(*self.everything({option: name}), status=1,
                                               wanted=[name])
        for name in ("missing/out.root", "file/out.root", "/proc/out.root", "x" * 256 + ".root"):
            with self.subTest(name=name[:20]):
                self.assert_all_left_alone(*self.everything({"-o": name}), status=1,
                                           wanted=[name])
        folder = self.folder / "folder.root"
        folder.mkdir()
        self.assert_all_left_alone("-o", folder, status=1, wanted=["folder.root"])

    def test_a_file_without_write_permission_gives_status_1(self):
        if os.geteuid() == 0:
            self.skipTest("permissions do not bind root")
        for name in (*self.FILES.values(), "verdicts.root"):
            with self.subTest(name=name):
                self.prepare()
                (self.folder / name).chmod(0o400)
                option = {n: o for o, n in self.FILES.items()}.get(name, "-o")
                result = self.scan([CENTRE], [TOP], option, name, status=1)
                self.assertIn(name, result.err)
                self.assertEqual(self.read(name), b"as it was")
                (self.folder / name).chmod(0o600)

    def test_a_full_disk_leaves_everything_as_it_was(self):
        for inputs in (self.prepare()[:2], self.many()):
            geometry = self.tables(*OPTICS)
            self.prepare()
            self.scan(*inputs, *self.everything(), geometry=geometry)
            sizes = sorted((len(self.read(name)), name) for name in self.FILES.values())
            self.assertEqual(sizes[-1][1], "paths.csv")
            self.prepare()
            before = self.snapshot()
            for size in (1, *(size - 1 for size, _ in sizes)):
                with self.subTest(size=size):
                    result = self.scan(*inputs, *self.everything(), geometry=geometry, status=1,
                                       preexec_fn=self.limited(size))
                    self.assertEqual(self.snapshot(), before)
                    self.assertRegex(result.err, r"\w\.csv: (?i:.*file too large)")
                    self.assertNotIn("paths/second", result.err)
            self.assertIn("paths.csv", result.err)  # nothing else was too large in the end

    def test_one_full_output_leaves_the_others_as_they_were(self):
        for option in self.FILES:
            with self.subTest(option=option):
                self.assert_all_left_alone(*self.everything({option: "/dev/full"}), status=1,
                                           wanted=["/dev/full"])
        with open("/dev/full", "wb") as full:
            for option in self.FILES:
                self.assert_all_left_alone(*self.everything({option: "-"}), status=1, stdout=full)

    def test_a_pipe_that_closes_early_gives_status_1(self):
        for threads in (1, 7):
            process = self.start(self.scan_command(*self.many(), self.tables(*OPTICS), "--paths",
                                                   "paths.csv", "--threads", threads))
            self.assertEqual(process.stdout.readline().decode(), VERDICT_HEADER + "\n")
            process.stdout.close()
            err = self.assert_ends(process, 1)
            self.assertRegex(err, "(?i)standard output.*broken pipe")
            self.assertFalse((self.folder / "paths.csv").exists())

    def test_files_appear_only_when_all_is_done(self):
        self.prepare()
        before = {str(self.folder / name) for name in (
            *self.FILES.values(), "verdicts.root", "events.csv", "pmts.csv", "tables.json")}
        process = self.start(self.scan_command("-", self.pmts([TOP]),
                                               self.tables(*OPTICS, *ANCHOR), *self.everything()))
        self.feed(process, positions("event", [CENTRE]))
        self.wait_for(self.temporaries, "temporary files")
        self.wait_until_it_sleeps(process)
        for name in self.FILES.values():
            self.assertEqual(self.read(name), b"as it was")
        for file in self.temporaries():
            self.assertEqual(file.parent, self.folder)
        process.stdin.close()
        self.assert_ends(process, 0)
        self.assertEqual(set(self.snapshot()), before)
        self.assertNotIn(b"as it was", [self.read(name) for name in self.FILES.values()])

    def test_what_a_killed_run_left_behind_is_swept_by_the_next(self):
        for verdicts in ("verdicts.csv", "verdicts.root"):
            names = self.everything({"-o": verdicts})
            process = self.start(self.scan_command("-", self.pmts([TOP]), self.tables(*OPTICS),
                                                   *names))
            self.feed(process, positions("event", [CENTRE]))
            self.wait_for(self.temporaries, "temporary files")
            self.wait_until_it_sleeps(process)
            process.kill()
            process.wait()
            self.scan([CENTRE], [TOP], *names)
            self.assert_no_temporaries()

    def test_closed_streams_spoil_no_file(self):
        for verdicts in ("verdicts.csv", "verdicts.root"):
            events, pmts, geometry = self.prepare()
            options = self.everything({"-o": verdicts})
            self.scan(events, pmts, *options, geometry=geometry)
            wanted = [self.read(name) for name in list(self.FILES.values())[1:]]
            self.prepare()
            self.run_command(self.scan_command(events, pmts, geometry, *options),
                             stdout=None, stderr=None,
                             preexec_fn=lambda: [os.close(i) for i in (0, 1, 2)])
            self.assertEqual([self.read(name) for name in list(self.FILES.values())[1:]], wanted)
            self.assertNotEqual(self.read(verdicts), b"as it was")


class RootOutput(OutputTest):
    """What can be seen of it from outside, without ROOT."""

    def assert_whole(self, name):
        """It is closed: its header names its length."""
        content = self.read(name)
        self.assertEqual(content[:4], b"root")
        version, = struct.unpack(">i", content[4:8])
        end, = struct.unpack(">q", content[12:20]) if version >= 1_000_000 else \
            struct.unpack(">i", content[12:16])
        self.assertEqual(end, len(content))

    def test_a_name_that_ends_in_root_gives_a_root_file(self):
        for name in ("verdicts.root", "a.csv.root", "sub/x.root"):
            (self.folder / "sub").mkdir(exist_ok=True)
            before = set(self.snapshot())
            result = self.scan([CENTRE, TOP], [TOP, BOTTOM], "-o", name)
            self.assert_whole(name)
            self.assertEqual(result.out, b"")
            self.assertEqual(result.counts()["paths"][0], "3")
            self.assertLessEqual(set(self.snapshot()) - before, {str(self.folder / name)} | {
                str(self.folder / x) for x in ("events.csv", "pmts.csv", "tables.json")})
        for name in ("root", "root.csv", "xroot"):
            self.scan([CENTRE], [TOP], "-o", name)
            self.assertTrue(self.read(name).startswith(VERDICT_HEADER.encode()))

    def test_an_existing_file_is_replaced_and_keeps_its_permissions(self):
        self.write("verdicts.root", "x" * 1_000_000).chmod(0o640)
        self.scan([CENTRE], [TOP], "-o", "verdicts.root")
        self.assert_whole("verdicts.root")
        self.assertEqual(stat.S_IMODE((self.folder / "verdicts.root").stat().st_mode), 0o640)
        real = self.write("elsewhere/real.root", "old")
        (self.folder / "link.root").symlink_to("elsewhere/real.root")
        self.scan([CENTRE], [TOP], "-o", "link.root")
        self.assertTrue((self.folder / "link.root").is_symlink())
        self.assert_whole(real)

    def test_a_new_file_has_the_permissions_that_the_umask_leaves(self):
        for mask, wanted in ((0o022, 0o644), (0o077, 0o600)):
            self.scan([CENTRE], [TOP], "-o", f"{mask:o}.root",
                      preexec_fn=lambda m=mask: os.umask(m))
            self.assertEqual(stat.S_IMODE((self.folder / f"{mask:o}.root").stat().st_mode), wanted)

    def test_what_is_no_file_is_not_replaced(self):
        pipe = self.folder / "pipe.root"
        os.mkfifo(pipe)
        self.scan([CENTRE], [TOP], "-o", pipe, status=(1, 2))
        self.assertTrue(stat.S_ISFIFO(pipe.stat().st_mode))

    def test_no_rows_give_a_file_too(self):
        self.scan([], [TOP], "-o", "verdicts.root")
        self.assert_whole("verdicts.root")

    def test_the_other_outputs_do_not_depend_on_it(self):
        events, pmts = random_events(9, 130), random_pmts(9, 131)
        self.scan(events, pmts, *self.everything())
        wanted = [self.read(name) for name in list(self.FILES.values())[1:]]
        for threads in (1, 7):
            self.scan(events, pmts, *self.everything({"-o": "verdicts.root"}), "--threads",
                      threads)
            self.assertEqual([self.read(name) for name in list(self.FILES.values())[1:]], wanted)

    def test_a_full_disk_leaves_everything_as_it_was(self):
        numbers = random.Random(140)
        events = self.events({numbers.randbytes(30).hex(): CENTRE for _ in range(2000)})
        pmts = self.pmts([TOP, BOTTOM] * 2)
        geometry = self.tables(*OPTICS)
        self.scan(events, pmts, "-o", "verdicts.root", geometry=geometry)
        size = len(self.read("verdicts.root"))
        self.write("verdicts.root", "as it was")
        for limit in (1, 200, size // 2, size - 500):  # names of files are part of it
            with self.subTest(limit=limit):
                before = self.snapshot()
                for name in ("verdicts.root", "new.root"):
                    result = self.scan(events, pmts, "-o", name, geometry=geometry, status=1,
                                       preexec_fn=self.limited(limit))
                    # One line for the user, and nothing of the library's insides.
                    self.assertRegex(result.err, rf"\nzarn-shadow: {name}: .*\n\Z")
                    self.assertNotIn("ROOT::", result.err)
                    self.assertNotIn("paths/second", result.err)
                    self.assertEqual(self.snapshot(), before)

    def test_bad_events_leave_everything_as_it_was(self):
        events = self.write("events.csv", positions("event", [CENTRE] * 2000) + "id,0,0,x\n")
        self.write("verdicts.root", "as it was")
        pmts, geometry = self.pmts([TOP]), self.tables(*OPTICS)
        before = self.snapshot()
        for name in ("verdicts.root", "new.root"):
            for threads in (1, 7):
                self.scan(events, pmts, "-o", name, "--threads", threads, geometry=geometry,
                          status=2)
                self.assertEqual(self.snapshot(), before)


class Signals(OutputTest):
    ROWS = b"".join(b"%06d,%d,0,0\n" % (i, i) for i in range(5000))
    KINDS = list(itertools.product(("verdicts.csv", "verdicts.root"), (1, 7)))  # and threads

    def start_scan(self, verdicts, threads, **more):
        """A run that waits for events, and what the folder held before."""
        _, pmts, geometry = self.prepare()
        before = self.snapshot()
        process = self.start(self.scan_command("-", pmts, geometry, *self.everything(
            {"-o": verdicts}), "--threads", threads), **more)
        return process, before

    def assert_stopped(self, process, before, number):
        process.send_signal(number)
        err = self.assert_ends(process, 128 + number, timeout=30)
        self.assertNotIn("paths/second", err)
        self.assertEqual(self.snapshot(), before)

    def test_a_signal_while_events_are_waited_for_leaves_everything_as_it_was(self):
        for kind in self.KINDS:
            with self.subTest(kind=kind):
                for number in (signal.SIGINT, signal.SIGTERM):
                    process, before = self.start_scan(*kind)
                    self.feed(process, positions("event", [CENTRE, TOP]))
                    self.wait_for(self.temporaries, "temporary files")
                    self.wait_until_it_sleeps(process)
                    self.assert_stopped(process, before, number)

    def test_a_signal_before_the_first_event_leaves_everything_as_it_was(self):
        for kind in self.KINDS:
            with self.subTest(kind=kind):
                process, before = self.start_scan(*kind)
                self.wait_until_it_sleeps(process)
                self.assert_stopped(process, before, signal.SIGINT)

    def test_a_signal_stops_an_endless_input(self):
        for kind in self.KINDS:
            with self.subTest(kind=kind):
                process, before = self.start_scan(*kind)
                self.feed_endlessly(process, "event,x,y,z", self.ROWS)
                self.wait_for(lambda: any(p.stat().st_size > 0 for p in self.temporaries()),
                              "some output")
                self.assert_stopped(process, before, signal.SIGINT)

    def test_a_signal_stops_the_work_on_one_event_with_many_pmts(self):
        # One thread works on an event for some 4 s. The verdicts alone, so that no
        # other file's writing hears the signal.
        pmts = self.pmts(random_pmts(100, 150) * 600)
        geometry = self.reference_tables()
        for verdicts, threads in self.KINDS:
            with self.subTest(verdicts=verdicts, threads=threads):
                self.write(verdicts, "as it was")
                before = self.snapshot()
                process = self.start(self.scan_command("-", pmts, geometry, "-o", verdicts,
                                                       "--threads", threads))
                self.feed_endlessly(process, "event,x,y,z", self.ROWS)
                self.wait_for(self.temporaries, "a temporary file")
                time.sleep(0.2)
                begin = time.monotonic()
                self.assert_stopped(process, before, signal.SIGINT)
                self.assertLess(time.monotonic() - begin, 3)

    def test_a_signal_stops_a_run_whose_output_nobody_reads(self):
        for threads in (1, 7):
            process, before = self.start_scan("-", threads)
            self.feed_endlessly(process, "event,x,y,z", self.ROWS)
            self.wait_until_it_sleeps(process)
            self.assert_stopped(process, before, signal.SIGTERM)

    def test_a_hang_up_cleans_up_too(self):
        process, before = self.start_scan("verdicts.root", 2)
        self.feed(process, positions("event", [CENTRE]))
        self.wait_until_it_sleeps(process)
        self.assert_stopped(process, before, signal.SIGHUP)

    def test_signals_that_the_caller_ignores_stay_ignored(self):
        process, _ = self.start_scan("verdicts.csv", 7, preexec_fn=lambda: signal.signal(
            signal.SIGINT, signal.SIG_IGN))
        self.feed(process, positions("event", [CENTRE]))
        self.wait_until_it_sleeps(process)
        process.send_signal(signal.SIGINT)
        time.sleep(0.2)
        process.stdin.close()
        self.assert_ends(process, 0)
        self.assertEqual(len(rows_of(self.read("verdicts.csv"))), 2)


# --- Standard error ----------------------------------------------------------

class Messages(ScanTest):
    def test_the_set_up_is_told_once_whatever_the_number_of_threads(self):
        for threads in (1, 7):
            result = self.scan(random_events(9, 160), [TOP], "--threads", threads,
                               geometry=self.tables(*OPTICS, *ANCHOR))
            for text in ("Cannot load AV hold-down rope parameters, these will not be loaded.",
                         "Loaded NCD anchor shadowing information."):
                self.assertEqual(result.err.count("ShadowingCalculator: " + text + "\n"), 1, text)

    def test_the_work_itself_has_nothing_to_say(self):
        def said(events, pmts):
            result = self.scan(events, pmts, "--reflections", geometry=self.reference_tables())
            return [text for text in result.err.splitlines()
                    if not re.match(r" *[\w/ ]+ +[\d,.]+( |$)", text)]
        quiet = said([], [])
        events = random_events(30, 170) + [CENTRE, TOP, ("nan", "0", "0")]
        self.assertEqual(said(events, random_pmts(30, 171) + [TOP, BOTTOM, CENTRE]), quiet)

    def test_numbers_in_the_table_have_their_thousands_set_apart(self):
        counts = self.scan([CENTRE] * 61, [BOTTOM] * 20).counts()
        self.assertEqual(counts["pairs"][0], "1,220")
        self.assertEqual(counts["NCDAnchor"], ("1,220", "100.000"))

    def test_lost_messages_do_not_spoil_the_verdicts(self):
        with open("/dev/full", "wb") as full:
            out = self.run_command(self.scan_command(
                self.events([CENTRE]), self.pmts([TOP]), self.tables(*OPTICS)), stderr=full).out
        self.assertEqual(len(rows_of(out)), 1)


class Progress(ScanTest):
    def arguments(self, events, *options):
        """Verdicts that fill a pipe, the program's buffers and its queues."""
        return self.scan_command(events, self.pmts([TOP] * 300), self.tables(*OPTICS), *options)

    def long_events(self):
        return self.events([CENTRE] * 800)

    def test_a_bar_with_rate_and_time_left_is_shown_on_a_terminal(self):
        for threads in (1, 7):
            _, shown = self.run_on_terminal(
                self.arguments(self.long_events(), "--threads", threads), 1.5)
            self.assertRegex(shown, r"\[#*\.*\] +\d+ %")
            self.assertRegex(shown, r"[\d,]+ (paths|pairs), [\d,]+ a second, [^\r]*\bleft")
            shares = [int(share) for share in re.findall(r"\] +(\d+) %", shown)]
            self.assertEqual(shares, sorted(shares))
            self.assertLessEqual(shares[-1], 100)

    def test_the_bar_fits_a_terminal_and_is_gone_when_the_table_appears(self):
        _, shown = self.run_on_terminal(self.arguments(self.long_events()), 1.5)
        before, _, after = shown.rpartition("\r\x1b[K")
        self.assertIn(" a second", before)
        self.assertTrue(after.startswith("pairs "), after[:100])
        self.assertNotIn("\x1b", after)
        for bar in re.findall(r"\x1b\[K([^\r\n\x1b]*)", shown):
            self.assertLess(len(bar), 80, bar)

    def test_no_time_left_is_told_where_the_end_is_not_known(self):
        def feed(process):
            text = positions("event", [CENTRE] * 200).encode()
            process.stdin.write(text)
            process.stdin.flush()
            time.sleep(1.5)
            process.stdin.write(b"e,0,0,0\n" * 100)
            process.stdin.close()
        arguments = self.scan_command("-", self.pmts([TOP]), self.tables(*OPTICS))
        _, shown = self.run_on_terminal(arguments, 0, feed)
        self.assertRegex(shown, r"[\d,]+ (paths|pairs), [\d,]+ a second")
        self.assertNotRegex(shown, r"\[#*\.*\]|\bleft\b")

    def test_no_bar_is_shown_when_the_work_is_short_or_standard_error_is_no_terminal(self):
        _, shown = self.run_on_terminal(self.scan_command(
            self.events([CENTRE]), self.pmts([TOP]), self.tables(*OPTICS)))
        self.assertIn("pairs ", shown)
        self.assertNotIn("\x1b", shown)
        process = self.start(self.arguments(self.long_events()))
        time.sleep(1.5)
        process.stdout.read()
        err = self.assert_ends(process, 0)
        self.assertNotRegex(err, "[\x1b\r]|a second")

    def test_an_interrupt_leaves_no_bar_behind(self):
        master, slave = os.openpty()
        self.addCleanup(os.close, master)
        process = self.start(self.scan_command("-", self.pmts([TOP]), self.tables(*OPTICS)),
                             stderr=slave, stdout=subprocess.DEVNULL)
        os.close(slave)
        self.feed_endlessly(process, "event,x,y,z", Signals.ROWS)
        shown = b""
        while b" a second" not in shown:
            shown += os.read(master, 65536)
        process.send_signal(signal.SIGINT)
        self.assertEqual(process.wait(TIMEOUT), 130)
        try:
            while data := os.read(master, 65536):
                shown += data
        except OSError:  # the other end is closed
            pass
        self.assertRegex(shown.rpartition(b"\r\x1b[K")[2].decode(), r"^zarn-shadow: [^\x1b]*$")


# --- Usage -------------------------------------------------------------------

class Usage(ScanTest):
    def test_help_names_every_option_and_shows_an_example(self):
        for arguments in (["scan", "--help"], ["scan", "-h"], ["--help-all"]):
            with self.subTest(arguments=arguments):
                result = self.run_command([PROGRAM, *arguments])
                text = result.out.decode()
                self.assertEqual(result.err, "")
                for option in ("--geometry", "--events", "--at", "--pmts", "-o", "--output",
                               "--paths", "--per-pmt", "--per-event", "--run", "--tolerance",
                               "--wavelength", "--threads", "--reflections"):
                    self.assertRegex(text, rf"(?m)(^ *|,){option}\b")
        text = self.run_command([PROGRAM, "scan", "--help"]).out.decode()
        for word in (r"\bmm\b", r"\bnm\b", "no path", "OPTICS", r"\.root", r"\b130\b",
                     "Example", "zarn-shadow scan "):
            self.assertRegex(text, word)
        self.assertRegex(self.run_command([PROGRAM, "--help"]).out.decode(), r"\n *scan\b")

    def test_the_help_fits_a_terminal(self):
        text = self.run_command([PROGRAM, "scan", "--help"]).out.decode()
        for help_line in text.split("\n"):
            self.assertLessEqual(len(help_line), 100, help_line)

    def test_the_example_of_the_help_works(self):
        text = self.run_command([PROGRAM, "scan", "--help"]).out.decode()
        words = text.partition("Example:")[2].replace("\\\n", " ").split()
        self.assertEqual(words[0], "zarn-shadow")
        for i, word in enumerate(words):
            if word.startswith("data/"):
                words[i] = DATA / word[len("data/"):]
                if words[i].suffix == ".csv":  # its first rows will do
                    text = "".join(words[i].read_text().splitlines(keepends=True)[:20])
                    words[i] = self.write(words[i].name, text)
        self.run_command([PROGRAM, *words[1:]])

    def test_bad_usage_gives_status_2_and_points_to_the_help(self):
        good = ["--geometry", self.tables(*OPTICS), "--events", self.events([CENTRE]), "--pmts",
                self.pmts([TOP])]
        self.run_command([PROGRAM, "scan", *good])
        for arguments in ([], good[2:], good[:4], good[:2] + good[4:], [*good, "--frobnicate"],
                          [*good, "more.csv"], [*good, "-o"], [*good, "--paths"],
                          [*good, "--threads"], [*good, "--wavelength"], [*good, "--at"],
                          [*good, "--reflections=maybe"], [*good, "--pmts", good[5]],
                          [*good, "--geometry", good[1]]):
            with self.subTest(arguments=arguments):
                result = self.run_command([PROGRAM, "scan", *arguments], status=2)
                self.assertEqual(result.out, b"")
                self.assertIn("--help", result.err)

    def test_options_out_of_their_range_are_bad_usage(self):
        not_finite = ("", " ", "abc", "nan", "inf", "-inf", "1e400", "0x10", "1_0", "1,5", "1 ",
                      " 1", "4nm", "+-1", "1e")
        not_whole = ("", " ", "abc", "1.5", "1e1", "1 ", " 1", "99999999999", "0x10", "1,0", "nan")
        for option, wrong in (("--tolerance", not_finite),
                              ("--wavelength", (*not_finite, "0", "-0", "-400", "1e-400")),
                              ("--run", (*not_whole, "2147483648")),
                              ("--threads", (*not_whole, "0", "-1", "1025", "4294967297"))):
            events, pmts, geometry = self.events([CENTRE]), self.pmts([TOP]), self.tables(*OPTICS)
            for text in wrong:
                with self.subTest(option=option, text=text):
                    result = self.scan(events, pmts, option, text, "-o", "out.csv", status=2,
                                       geometry=geometry)
                    self.assertIn(option[2:], result.err)
                    self.assertFalse((self.folder / "out.csv").exists())

    def test_an_empty_name_is_refused(self):
        for option in ("-o", "--paths", "--per-pmt", "--per-event"):
            result = self.scan([CENTRE], [TOP], option, "", status=(1, 2))
            self.assertEqual(result.out, b"")

    def test_files_may_bear_odd_names(self):
        for name in ("-events.csv", "--help", "a b.csv", "\u00e9.csv", "%s.csv"):
            with self.subTest(name=name):
                self.events([CENTRE], name)
                result = self.run_command([PROGRAM, "scan", "--geometry", self.tables(*OPTICS),
                                           f"--events={name}", "--pmts", self.pmts([TOP])])
                self.assertEqual(len(rows_of(result.out)), 1)

    def test_runs_without_any_environment(self):
        self.assertEqual(self.types([CENTRE], [TOP], env={}), [FROM_INSIDE])


# --- The reference detector --------------------------------------------------

class ReferenceDetector(ScanTest):
    def first_rows(self, name, count, step=1):
        lines = (DATA / name).read_text().splitlines(keepends=True)
        return self.write(name, lines[0] + "".join(lines[1::step][:count]))

    def test_its_source_scan_and_pmts_can_be_scanned(self):
        events = self.first_rows("source-scan.csv", 50)
        pmts = self.first_rows("pmts.csv", 120, step=66)
        rows = self.rows(events, pmts, "--paths", "paths.csv", geometry=REFERENCE)
        self.assertEqual(len(rows), 50 * 120)
        shadowed = sum(row.shadowed == "1" for row in rows)
        self.assertGreater(shadowed, 0.05 * len(rows))
        self.assertLess(shadowed, 0.6 * len(rows))
        found = self.check("paths.csv", geometry=REFERENCE).verdicts()
        self.assertEqual(found, [row.by for row in rows if row.type])

    def test_its_pmts_are_those_of_its_table(self):
        fields = json.loads((REFERENCE / "pmts.json").read_text())[0]["fields"]
        pmts = list(csv.DictReader((DATA / "pmts.csv").read_text().splitlines()))
        self.assertEqual([[float(pmt[axis]) for pmt in pmts] for axis in "xyz"],
                         [fields[axis] for axis in "xyz"])
        self.assertEqual(len({pmt["pmt"] for pmt in pmts}), 8000)

    def test_its_media_bend_blue_light_more_than_red(self):
        paths = {}
        for wavelength in (380, 400, 550):
            _, (path,) = self.paths([(4000.0, 0.0, 0.0)], [TOP], "--wavelength", wavelength,
                                    geometry=REFERENCE)
            inner, outer = path.av1, path.av2
            bend = dot(path.initial, path.final)
            self.assertLess(bend, 1)
            paths[wavelength] = bend
        self.assertLess(paths[380], paths[400])
        self.assertLess(paths[400], paths[550])


if __name__ == "__main__":
    unittest.main(verbosity=2)
