#!/usr/bin/env python3
"""The light paths of `zarn-shadow scan`."""

import collections
import decimal
import itertools
import math
import random
import struct
import sys
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import ANCHOR, COORDINATES, INNER_RADIUS, OUTER_RADIUS, VECTORS
from light_support import (
    FROM_INSIDE, FROM_WALL, MEDIA_OF, REFLECTION, THROUGH_INSIDE, THROUGH_WALL, WALL_INSIDE,
    WATER, cross, dot, follow, length, medium_at, minus, nearest_to_centre, rays_between,
    times, unit)
from scan_support import (
    BOTTOM, CENTRE, INDICES, LIGHT_WALL, OPTICS, PMT_RADIUS, REFLECTING, STAYS_IN_THE_WALL,
    ScanTest, TOP, in_the_plane, optics, random_direction, random_events, random_pmts, rows_of)


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

    def test_check_gives_the_same_verdicts_for_the_written_paths(self):
        events, pmts = random_events(15, seed=1), random_pmts(40, seed=2)
        events += [CENTRE, TOP, ("nan", "0", "0"), (0.0, -5860.0, 0.0), (0.0, 0.0, 5800.0)]
        pmts += [CENTRE, TOP, BOTTOM, (0.0, 5860.0, 0.0)]
        geometry = self.reference_tables()
        plain = self.assert_checks_alike(geometry, events, pmts)
        both = self.assert_checks_alike(geometry, events, pmts, "--reflections")
        self.assertGreater(len(both), len(plain))
        self.assertGreater(len({row.by for row in both}), 4)

    def test_check_gives_the_same_verdicts_with_another_tolerance_and_run(self):
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

    def test_numbers_are_exact_and_as_short_as_possible(self):
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

    def test_paths_can_go_to_standard_output_if_verdicts_go_to_a_file(self):
        self.paths([CENTRE], [TOP])
        result = self.scan([CENTRE], [TOP], "-o", "verdicts.csv", "--paths", "-")
        self.assertEqual(result.out, self.read("paths.csv"))
        self.assertEqual(rows_of(self.read("verdicts.csv"))[0].type, FROM_INSIDE)


class Physics(ScanTest):
    # Realistic; a strong lens with its focus near the PMTs; light that crosses only
    # the wall; total reflection; a hollow vessel.
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

    def test_every_path_is_the_shortest_that_obeys_snells_law(self):
        several, none = 0, 0
        for number, indices in enumerate(self.MEDIA):
            events = random_events(9, seed=20 + number)
            # Behind the centre, where there may be more than one path.
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

    def test_traced_rays_are_found_as_paths(self):
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

    def test_a_rotated_detector_gives_rotated_paths(self):
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


if __name__ == "__main__":
    unittest.main(verbosity=2)
