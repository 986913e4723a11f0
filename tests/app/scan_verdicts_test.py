#!/usr/bin/env python3
"""The verdicts of `zarn-shadow scan`."""

import itertools
import math
import sys
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import ANCHOR, INNER_RADIUS, OUTER_RADIUS, PLATE, anchor_reach
from light_support import (
    FROM_INSIDE, FROM_WALL, MEDIA_OF, REFLECTION, THROUGH_INSIDE, THROUGH_WALL, WALL_INSIDE,
    WATER, follow, length, minus, rays_between, times)
from scan_support import (
    BOTTOM, CENTRE, LIGHT_WALL, NEAR_THE_WALL, OPTICS, PMT_RADIUS, REFLECTING,
    STAYS_IN_THE_WALL, ScanTest, TOP, VERDICT_HEADER, in_the_plane, optics, random_events,
    random_pmts)


class Verdicts(ScanTest):
    # Paths from the centre are straight. The anchor at the bottom is 60 mm inside the
    # outer surface, and shadows points of that surface nearer to it than 60 mm plus
    # the tolerance; so with the default of 150 mm, 201 mm from the axis is too far.
    def pmt_beside_the_bottom(self, distance):
        return times(PMT_RADIUS / INNER_RADIUS,
                     (distance, 0.0, -math.sqrt(INNER_RADIUS**2 - distance**2)))

    def test_gives_a_row_for_every_event_and_pmt_in_order(self):
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

    def test_a_component_shadows_paths_within_its_reach_plus_tolerance(self):
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

    def test_the_type_names_the_media_along_the_path(self):
        found = self.types([(0.0, 0.0, z) for z in (0.0, 5830.0, 7000.0)], [TOP, BOTTOM])
        self.assertEqual(found, [FROM_INSIDE, FROM_INSIDE, FROM_WALL, WALL_INSIDE, WATER,
                                 THROUGH_INSIDE])

    def test_a_surface_belongs_to_the_medium_outside_it(self):
        below = [math.nextafter(r, 0) for r in (INNER_RADIUS, OUTER_RADIUS)]
        found = self.types([(0.0, 0.0, z) for z in (below[0], INNER_RADIUS, below[1],
                                                    OUTER_RADIUS)], [TOP])
        self.assertEqual(found, [FROM_INSIDE, FROM_WALL, FROM_WALL, WATER])
        found = self.types([(0.0, 0.0, -z) for z in (below[0], INNER_RADIUS, below[1],
                                                     OUTER_RADIUS)], [TOP])
        self.assertEqual(found, [FROM_INSIDE, WALL_INSIDE, WALL_INSIDE, THROUGH_INSIDE])
        found = self.types([CENTRE], [(0.0, 0.0, below[1]), (0.0, 0.0, OUTER_RADIUS)])
        self.assertEqual(found, ["", FROM_INSIDE])

    def test_a_path_beside_the_vessel_is_straight_water(self):
        def pair(y):
            return [(-5000.0, y, 0.0)], [(5000.0, y, 0.0)]
        self.assertEqual(self.types(*pair(5861.0)), [WATER])
        self.assertEqual(self.types(*pair(5860.0)), [WATER])  # it touches
        self.assertNotEqual(self.types(*pair(5859.0)), [WATER])
        self.assertEqual(self.types([(0.0, 0.0, 6000.0)], [TOP]), [WATER])

    def test_light_crosses_only_the_wall_if_its_index_is_low_enough(self):
        geometry = self.tables(*optics(*LIGHT_WALL))
        ray = follow(LIGHT_WALL, *STAYS_IN_THE_WALL, PMT_RADIUS)
        self.assertEqual(ray.media, MEDIA_OF[THROUGH_WALL])
        pmt = in_the_plane(math.degrees(ray.swept))
        rows, paths = self.paths([(7000.0, 0.0, 0.0)], [pmt], geometry=geometry)
        self.assertEqual(rows[0].type, THROUGH_WALL)
        for found, wanted in zip(paths[0].points(), ray.points, strict=True):
            self.assertLess(length(minus(found, (wanted.real, wanted.imag, 0.0))), 1e-6)
        # The faster way through the inside is taken instead.
        quick = self.tables(*optics(1.3, *LIGHT_WALL[1:]))
        self.assertEqual(self.types([(7000.0, 0.0, 0.0)], [pmt], geometry=quick),
                         [THROUGH_INSIDE])

    def test_total_reflection_can_leave_no_path(self):
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

    def test_unusual_numbers_do_not_crash(self):
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

    def test_there_are_no_reflections_without_the_option(self):
        found = self.types(self.EVENTS, self.PMTS)
        self.assertEqual(len(found), 12)
        self.assertNotIn(REFLECTION, found)

    def test_the_direct_rows_do_not_depend_on_the_option(self):
        events, pmts = random_events(20, seed=5), random_pmts(20, seed=6)
        geometry = self.reference_tables()
        plain = self.rows(events, pmts, geometry=geometry)
        both = self.rows(events, pmts, "--reflections", geometry=geometry)
        self.assertEqual([row for row in both if row.type != REFLECTION], plain)
        self.assertGreater(len(both), len(plain))
        for before, row in zip(both, both[1:]):
            if row.type == REFLECTION:
                self.assertEqual(before[:3], (*row[:2], WATER))

    def test_a_reflection_has_its_own_verdict(self):
        # Reflected at the equator, where the plate is; the direct path is far from it.
        event, pmt = in_the_plane(-20, 7000.0), in_the_plane(20, 7000.0)
        found = self.rows([event], [pmt], "--reflections", geometry=self.tables(*OPTICS, *PLATE))
        self.assertEqual([row[2:] for row in found],
                         [(WATER, "0", ""), (REFLECTION, "1", "BellyPlate")])


if __name__ == "__main__":
    unittest.main(verbosity=2)
