#!/usr/bin/env python3
"""The verdicts of `zarn-shadow check` on geometry computed by hand."""

import math
import sys
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import (
    ANCHOR, BESIDE_THE_BOSS, COMPONENTS, DATA, HOLD_DOWN_ROPES, INNER_AV, NECK_BOSS,
    OUTER_RADIUS, PIPES, PLATE, PLATE_SOLID, REFERENCE, SUPPORT_ROPES, UNDER_THE_BOSS,
    anchor_reach, at, entry, towards, xyz)
from check_support import CheckTest, TYPES, path


class Verdicts(CheckTest):
    def test_a_point_under_the_neck_boss_is_shadowed(self):
        self.assertEqual(
            self.verdicts(NECK_BOSS, [path("AV->Water", av1=UNDER_THE_BOSS),
                                      path("AV->Water", av1=BESIDE_THE_BOSS),
                                      path("AV->Water", av1=(0.0, 0.0, -5860.0))]),
            ["NeckBoss", "", ""])

    def test_the_neck_boss_tests_the_point_where_the_path_enters_water(self):
        far = {name: BESIDE_THE_BOSS for name in ("av1", "av2", "av3", "av4")}
        rows, wanted = [], []
        for type_name, points in (("Scint/InnerAV->AV->Water", {"av2"}),
                                  ("AV->Scint/InnerAV->AV->Water", {"av3"}),
                                  ("AV->Water", {"av1"}),
                                  ("Water->AV->Scint/InnerAV->AV->Water", {"av1", "av4"}),
                                  ("Water->AV->Water", {"av1", "av2"}),
                                  ("Water->Reflection->Water", {"av1"}),
                                  ("Water", set())):
            for point in far:
                rows.append(path(type_name, **{**far, point: UNDER_THE_BOSS}))
                wanted.append("NeckBoss" if point in points else "")
        self.assertEqual(self.verdicts(NECK_BOSS, rows), wanted)

    def test_the_tolerance_does_not_widen_the_neck_boss(self):
        self.assertEqual(
            self.verdicts(NECK_BOSS, [path("AV->Water", av1=BESIDE_THE_BOSS)],
                          "--tolerance", 5000), [""])

    def test_an_anchor_shadows_points_within_its_half_height_plus_150(self):
        self.assertEqual(
            self.verdicts(ANCHOR, [path("AV->Water", av1=(0.0, 0.0, -5800.0)),
                                   path("AV->Water", av1=(209.999, 0.0, -5800.0)),
                                   path("AV->Water", av1=(210.0, 0.0, -5800.0)),
                                   path("AV->Water", av1=(0.0, 0.0, -5590.001)),
                                   path("AV->Water", av1=(0.0, 0.0, -5590.0))]),
            ["NCDAnchor", "NCDAnchor", "", "NCDAnchor", ""])

    def test_the_tolerance_sets_the_reach_of_an_anchor(self):
        rows = [path("AV->Water", av1=(x, 0.0, -5800.0))
                for x in (59.999, 60.0, 69.999, 70.0, 209.999)]
        for tolerance, reached in (("10", 3), ("+10", 3), ("1e1", 3), ("0", 1), ("-0", 1),
                                   ("1e-400", 1), ("-60", 0), ("-1e3", 0), ("150", 5)):
            with self.subTest(tolerance=tolerance):
                self.assertEqual(self.verdicts(ANCHOR, rows, "--tolerance", tolerance),
                                 ["NCDAnchor"] * reached + [""] * (5 - reached))

    def test_the_pipes_shadow_three_bands_around_azimuth_90(self):
        cases = [(10, 75.001, 1), (10, 74.999, 0), (10, 104.999, 1), (10, 105.001, 0),
                 (29.999, 76, 1), (30.001, 76, 0), (30.001, 80.001, 1),
                 (60, 96, 1), (60, 79.999, 0), (60, 99.999, 1), (60, 100.001, 0),
                 (119.999, 96, 1), (120.001, 96, 0), (120.001, 94.999, 1),
                 (150, 90, 1), (150, 96, 0), (150, 85.001, 1), (150, 84.999, 0),
                 (90, -90, 0)]
        rows = [path("AV->Water", av1=towards(theta, phi)) for theta, phi, _ in cases]
        self.assertEqual(self.verdicts(PIPES, rows),
                         ["AVPipe" if hit else "" for *_, hit in cases])

    def test_the_pipes_judge_a_path_through_the_vessel_by_its_first_crossing(self):
        inside, outside = towards(90, 90), towards(90, 0)
        self.assertEqual(
            self.verdicts(PIPES, [
                path("Water->AV->Water", av1=inside, av2=outside),
                path("Water->AV->Water", av1=outside, av2=inside),
                path("Water->AV->Scint/InnerAV->AV->Water", av1=outside, av4=inside),
                path("Water", start=inside, end=inside)]),
            ["AVPipe", "", "", ""])

    def test_a_belly_plate_shadows_its_height_and_width_plus_tolerance(self):
        cases = [(0, 0, 1), (7.30, 0, 1), (7.33, 0, 0), (-7.30, 0, 1), (-7.33, 0, 0),
                 (0, 749.999, 1), (0, 750.0, 0), (0, -749.999, 1), (0, -750.0, 0),
                 (180, 0, 0)]
        rows = [path("AV->Water", av1=at(5860, azimuth, float(z)))
                for azimuth, z, _ in cases]
        self.assertEqual(self.verdicts(PLATE, rows),
                         ["BellyPlate" if hit else "" for *_, hit in cases])

    def test_the_tolerance_sets_the_margin_of_a_belly_plate(self):
        rows = [path("AV->Water", av1=at(5860, azimuth, float(z)))
                for azimuth, z in ((5.83, 0), (5.86, 0), (0, 599.999), (0, 600))]
        self.assertEqual(self.verdicts(PLATE, rows, "--tolerance", 0),
                         ["BellyPlate", "", "BellyPlate", ""])

    def test_support_ropes_shadow_points_of_their_cylinder(self):
        cases = [(3.911, 100, 1), (-3.911, 100, 1), (5.49, 100, 1), (5.53, 100, 0),
                 (2.34, 100, 1), (2.29, 100, 0), (0, 100, 0), (90, 100, 0),
                 (3.911, 5.001, 1), (3.911, 5.0, 0), (3.911, -100, 0)]
        rows = [path("AV->Water", av1=at(5860, azimuth, float(z)), final=at(1, azimuth, 0.0))
                for azimuth, z, _ in cases]
        self.assertEqual(self.verdicts(SUPPORT_ROPES, rows),
                         ["SupportRope" if hit else "" for *_, hit in cases])

    def test_support_ropes_shadow_straight_paths_that_leave_their_cylinder(self):
        def water(azimuth, first, last):
            return path("Water", start=at(first, azimuth, 100.0),
                        end=at(last, azimuth, 100.0), initial=at(1, azimuth, 0.0))
        self.assertEqual(
            self.verdicts(SUPPORT_ROPES, [water(3.911, 5800, 8000), water(0, 5800, 8000),
                                          water(3.911, 5700, 5800)]),
            ["SupportRope", "", ""])

    def test_hold_down_ropes_shadow_their_legs_below_the_vessels_middle(self):
        cases = [(154, 1), (155.5, 1), (152.5, 1), (155.7, 0), (188, 1), (189.5, 1),
                 (189.7, 0), (8, 0), (90, 0)]
        rows = [path("AV->Water", av1=at(5860, azimuth, -100.0), final=at(1, azimuth, 0.0))
                for azimuth, _ in cases]
        self.assertEqual(self.verdicts(HOLD_DOWN_ROPES, rows),
                         ["AVHDRope" if hit else "" for _, hit in cases])

    def test_hold_down_ropes_shadow_points_of_their_surface(self):
        def surface(radius, azimuth):
            return path("AV->Water", av1=at(radius, azimuth,
                                            math.sqrt(OUTER_RADIUS**2 - radius**2)))
        beside = math.degrees(100 / 4430)
        rows = [surface(4430, 8), surface(4430, 154), surface(4430, 8 - beside),
                surface(4430, 8 - 2 * beside), surface(3000, 351), surface(0, 0),
                surface(3000, 270)]
        self.assertEqual(self.verdicts(HOLD_DOWN_ROPES, rows),
                         ["AVHDRope", "AVHDRope", "AVHDRope", "", "AVHDRope", "", ""])
        self.assertEqual(self.verdicts(HOLD_DOWN_ROPES, rows[:4], "--tolerance", 0),
                         ["AVHDRope", "AVHDRope", "", ""])

    def test_hold_down_ropes_shadow_straight_paths_that_cross_their_cylinder(self):
        def water(azimuth, first, last):
            return path("Water", start=at(first, azimuth, -1000.0),
                        end=at(last, azimuth, -1000.0), initial=at(1, azimuth, 0.0))
        self.assertEqual(
            self.verdicts(HOLD_DOWN_ROPES, [water(154, 5800, 8000), water(160, 5800, 8000),
                                            water(154, 5700, 5800)]),
            ["AVHDRope", "", ""])

    def test_the_component_that_is_tested_first_is_named(self):
        plate_over_anchor = [INNER_AV, PLATE_SOLID, anchor_reach(60.0),
                             entry("GEO_LOCATIONS", "ncd_anchors", xyz([at(5860, 90, 0)])),
                             entry("GEO_LOCATIONS", "belly_plates", xyz([at(5860, 90, 0)]))]
        middle = path("AV->Water", av1=at(5860, 90, 0.0))
        self.assertEqual(self.verdicts(plate_over_anchor + PIPES, [middle]), ["BellyPlate"])
        anchor_over_pipes = [INNER_AV, anchor_reach(60.0),
                             entry("GEO_LOCATIONS", "ncd_anchors", xyz([at(5860, 90, 0)]))]
        self.assertEqual(self.verdicts(anchor_over_pipes + PIPES, [middle]), ["NCDAnchor"])
        top = path("AV->Water", av1=towards(5, 90))
        self.assertEqual(self.verdicts(PIPES + NECK_BOSS, [top]), ["AVPipe"])
        self.assertEqual(self.verdicts(NECK_BOSS, [top]), ["NeckBoss"])

    def test_with_the_vessel_alone_nothing_is_shadowed(self):
        rows = [path(name, av1=UNDER_THE_BOSS) for name in (*TYPES, "other", "")]
        self.assertEqual(self.verdicts([], rows), [""] * len(rows))

    def test_the_example_paths_meet_every_component_of_the_reference_detector(self):
        paths = DATA / "example-paths.csv"
        result = self.check(paths, geometry=REFERENCE)
        found = result.verdicts()
        self.assertEqual(len(found), paths.read_bytes().count(b"\n") - 1)
        for component in COMPONENTS:
            self.assertGreater(found.count(component), 0, component)
        self.assertGreater(found.count("AVHDRope"), 0.05 * len(found))
        self.assertLess(found.count("AVHDRope"), 0.25 * len(found))
        self.assertLess(len(found) - found.count(""), 0.5 * len(found))
        counts = result.counts()
        for component in COMPONENTS:
            self.assertEqual(counts[component][0], f"{found.count(component):,}")

    def test_the_same_input_gives_the_same_bytes(self):
        head = (DATA / "example-paths.csv").read_text().splitlines()[:500]
        paths = self.write("paths.csv", "\n".join(head) + "\n")
        first = self.check(paths, geometry=REFERENCE)
        self.assertEqual(self.check(paths, geometry=REFERENCE).out, first.out)
        self.check(paths, "-o", "out.csv", geometry=REFERENCE)
        self.assertEqual((self.folder / "out.csv").read_bytes(), first.out)


if __name__ == "__main__":
    unittest.main(verbosity=2)
