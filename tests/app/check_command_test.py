#!/usr/bin/env python3
"""What a user may rely on when running `zarn-shadow check` (command_support.py
says what it needs)."""

import json
import math
import os
import pty
import re
import signal
import stat
import subprocess
import sys
import threading
import time
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import (
    ANCHOR, COLUMNS, COMPONENTS, COORDINATES, DATA, HEADER, HOLD_DOWN_ROPES, INNER_AV,
    NECK_BOSS, OUTER_RADIUS, PIPES, PLATE, PLATE_SOLID, PROGRAM, REFERENCE, SUPPORT_ROPES,
    TIMEOUT, UNDER_THE_BOSS, BESIDE_THE_BOSS, VECTORS, VESSEL, CommandTest, Result,
    anchor_reach, at, entry, line, towards, xyz)

TYPES = ("Scint/InnerAV->AV->Water", "AV->Scint/InnerAV->AV->Water", "AV->Water",
         "Water->AV->Scint/InnerAV->AV->Water", "Water->AV->Water", "Water",
         "Water->Reflection->Water", "Light Path Uninitialised")


# --- Paths -------------------------------------------------------------------

def path(type_name, **vectors):
    """One row: path("AV->Water", av1=(0, 0, 5860)); the other cells are empty."""
    cells = {"type": type_name}
    for vector, coordinates in vectors.items():
        for axis, value in zip("xyz", coordinates):
            cells[f"{vector}_{axis}"] = value if isinstance(value, str) else repr(value)
    return line([cells.get(column, "") for column in COLUMNS])


def row_with(column, text):
    """A row of raw text, in which one cell holds @p text as it stands."""
    return ",".join(text if name == column else "Water" if name == "type" else ""
                    for name in COLUMNS)


def table(*rows, end="\n"):
    return "".join(row + end for row in (HEADER, *rows))


NEAR_ANCHOR = path("AV->Water", av1=(0.0, 0.0, -5800.0))
FAR_FROM_ANCHOR = path("AV->Water", av1=(0.0, 0.0, 5860.0))


class CheckTest(CommandTest):
    def paths(self, *rows, name="paths.csv"):
        return self.write(name, table(*rows))

    def check_text(self, text, *options, **more):
        return self.check(self.write("paths.csv", text), *options, **more)

    def verdicts(self, entries, rows, *options):
        return self.check(self.paths(*rows), *options,
                          geometry=self.tables(*entries)).verdicts()

    def refuse(self, text, *wanted, **more):
        """Bad input: status 2, a message with the file's name and all that is
        wanted, no output file, and an existing one as it was."""
        paths = self.write("paths.csv", text)
        (self.folder / "new.csv").unlink(missing_ok=True)
        self.check(paths, "-o", self.folder / "new.csv", status=2, **more)
        self.assertFalse((self.folder / "new.csv").exists())
        old = self.write("old.csv", "as it was")
        result = self.check(paths, "-o", old, status=2, **more)
        self.assertEqual(old.read_bytes(), b"as it was")
        for part in ("paths.csv", *wanted):
            self.assertRegex(result.err, part)
        self.assertNotIn("paths/second", result.err)
        return result


# --- Verdicts ----------------------------------------------------------------

class Verdicts(CheckTest):
    def test_a_point_under_the_neck_boss_is_shadowed(self):
        self.assertEqual(
            self.verdicts(NECK_BOSS, [path("AV->Water", av1=UNDER_THE_BOSS),
                                      path("AV->Water", av1=BESIDE_THE_BOSS),
                                      path("AV->Water", av1=(0.0, 0.0, -5860.0))]),
            ["NeckBoss", "", ""])

    def test_the_neck_boss_looks_at_the_point_where_the_path_enters_water(self):
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

    def test_an_anchor_shadows_points_nearer_than_its_half_height_and_150(self):
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

    def test_a_belly_plate_shadows_its_height_and_width_and_the_tolerance(self):
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

    def test_support_ropes_shadow_the_cylinder_on_which_they_stand(self):
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

    def test_hold_down_ropes_shadow_the_surface_on_which_they_lie(self):
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

    def test_the_first_component_in_the_order_of_testing_is_named(self):
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

    def test_the_same_input_gives_the_same_bytes_again(self):
        head = (DATA / "example-paths.csv").read_text().splitlines()[:500]
        paths = self.write("paths.csv", "\n".join(head) + "\n")
        first = self.check(paths, geometry=REFERENCE)
        self.assertEqual(self.check(paths, geometry=REFERENCE).out, first.out)
        self.check(paths, "-o", "out.csv", geometry=REFERENCE)
        self.assertEqual((self.folder / "out.csv").read_bytes(), first.out)


# --- Types -------------------------------------------------------------------

class TypeNames(CheckTest):
    WRONG = "Cannot calculate shadowing for this light light path type: "

    def test_a_type_name_is_taken_as_it_stands_and_never_trimmed(self):
        # An unknown name is tested at the origin, which lies under the boss.
        names = ["water", " Water", "Water ", "WATER", "Water\t", "AV -> Water",
                 "LightPath Uninitialised", "0", "Water->AV", "\xc9tat"]
        found = self.verdicts(NECK_BOSS, [path(name, av1=BESIDE_THE_BOSS) for name in names])
        self.assertEqual(found, ["NeckBoss"] * len(names))
        beside = dict.fromkeys(("av1", "av2", "av3", "av4"), BESIDE_THE_BOSS)
        found = self.verdicts(NECK_BOSS, [path(name, **beside) for name in TYPES])
        self.assertEqual(found, [""] * len(TYPES))

    def test_quotes_around_a_known_name_are_not_part_of_it(self):
        text = table(*('"' + name + '"' + "," * 24 for name in TYPES))
        result = self.check_text(text, geometry=self.tables(*SUPPORT_ROPES))
        self.assertEqual(result.verdicts(), [""] * len(TYPES))
        self.assertNotIn("unknown", result.err)

    def test_unknown_names_reach_the_calculator_unchanged(self):
        names = ["first", "second one", "third, with a comma", 'a "quoted" one', "first",
                 " blanks ", "Water "]
        result = self.check(self.paths(*(path(name) for name in names)),
                            geometry=self.tables(*SUPPORT_ROPES))
        told = [text.split(self.WRONG)[1] for text in result.err.split("\n")
                if self.WRONG in text]
        self.assertEqual(told, names)
        self.assertEqual(result.verdicts(), [""] * len(names))

    def test_a_name_with_a_line_break_reaches_the_calculator_whole(self):
        for name in ("two\nlines", "two\r\nlines", "ends\n", "\n"):
            result = self.check(self.paths(path(name)),
                                geometry=self.tables(*SUPPORT_ROPES))
            self.assertIn((self.WRONG + name + "\n").encode(), result.bytes_err)

    def test_an_unknown_name_does_not_change_what_known_ones_mean(self):
        rows = []
        for name in TYPES:
            rows += [path("odd"), path(name, av1=UNDER_THE_BOSS, av2=UNDER_THE_BOSS,
                                       av3=UNDER_THE_BOSS)]
        found = self.verdicts(NECK_BOSS, rows)
        self.assertEqual(found[1::2], ["" if name in ("Water", TYPES[-1]) else "NeckBoss"
                                       for name in TYPES])

    def test_the_number_of_unknown_names_is_said_at_the_end(self):
        rows = [path("odd"), path("Water"), path("odd"), path(""), path("Light Path Uninitialised")]
        result = self.check(self.paths(*rows), geometry=self.tables(*NECK_BOSS))
        last = result.err.rstrip("\n").split("\n")[-1]
        self.assertRegex(last, r"unknown name: 3\b")

    def test_nothing_is_said_of_unknown_names_where_there_are_none(self):
        result = self.check(self.paths(*(path(name) for name in TYPES)))
        self.assertNotIn("unknown", result.err)

    def test_an_empty_type_is_a_name_like_any_other(self):
        result = self.check(self.paths(path("")), geometry=self.tables(*SUPPORT_ROPES))
        self.assertIn(self.WRONG + "\n", result.err)
        self.assertRegex(result.err, r"unknown name: 1\b")

    def test_an_uninitialised_path_is_warned_of_and_not_shadowed(self):
        everything = HOLD_DOWN_ROPES + SUPPORT_ROPES + PLATE + ANCHOR + PIPES + NECK_BOSS
        result = self.check(self.paths(path("Light Path Uninitialised")),
                            geometry=self.tables(*everything))
        self.assertEqual(result.verdicts(), [""])
        told = [text for text in result.err.split("\n") if "uninitialised" in text]
        self.assertEqual(
            told,
            ["ShadowingCalculator::CheckAVHDRopeShadowing: LightPathCalculator object is "
             "uninitialised, call LightPathCalculator::CalcByPosition first before checking "
             "for shadowing!"]
            + [f"ShadowingCalculator::CheckFor{test}Shadowing: LightPath is uninitialised, "
               "call CalcByPosition first before checking for shadowing!"
               for test in ("SupportRope", "BellyPlate", "SupportRope", "AVHDRope", "AVHDRope")])

    def test_a_very_long_name_is_accepted(self):
        name = "x" * 500_000
        result = self.check(self.paths(path(name), NEAR_ANCHOR),
                            geometry=self.tables(*ANCHOR))
        self.assertEqual(result.verdicts(), ["", "NCDAnchor"])

    def test_a_name_may_hold_nul_bytes(self):
        result = self.check_text(table("Wat\0er" + "," * 24, NEAR_ANCHOR))
        self.assertEqual(result.verdicts(), ["", "NCDAnchor"])
        self.assertRegex(result.err, r"unknown name: 1\b")


# --- The form of the input ---------------------------------------------------

class Input(CheckTest):
    def test_counts_rows_from_zero_in_the_order_of_the_input(self):
        rows = [NEAR_ANCHOR, FAR_FROM_ANCHOR, FAR_FROM_ANCHOR, NEAR_ANCHOR]
        result = self.check(self.paths(*rows))
        self.assertEqual(result.out, b"row,shadowed,by\n0,1,NCDAnchor\n1,0,\n2,0,\n"
                                     b"3,1,NCDAnchor\n")

    def test_finds_columns_by_name_in_any_order(self):
        columns = list(reversed(COLUMNS))
        cells = {"type": "AV->Water", "av1_z": "-5800"}
        text = ",".join(columns) + "\n" + ",".join(cells.get(c, "") for c in columns) + "\n"
        self.assertEqual(self.check_text(text).verdicts(), ["NCDAnchor"])

    def test_ignores_unknown_columns_whatever_they_hold(self):
        columns = ["note", *COLUMNS[:7], "", *COLUMNS[7:], "", "Type", "start_X"]
        cells = {"type": "AV->Water", "av1_z": "-5800", "note": '"say ""no"", or\nyes"',
                 "Type": "nonsense", "start_X": "far", "": "1;5"}
        text = ",".join(columns) + "\n" + ",".join(cells.get(c, "") for c in columns) + "\n"
        self.assertEqual(self.check_text(text).verdicts(), ["NCDAnchor"])

    def test_understands_quotes_around_any_cell(self):
        text = (",".join(f'"{c}"' for c in COLUMNS) + "\n"
                + ",".join(f'"{cell}"' for cell in NEAR_ANCHOR.split(",")) + "\n")
        self.assertEqual(self.check_text(text).verdicts(), ["NCDAnchor"])

    def test_reads_standard_input_where_the_file_is_a_dash(self):
        result = self.check("-", stdin=table(NEAR_ANCHOR, FAR_FROM_ANCHOR).encode())
        self.assertEqual(result.verdicts(), ["NCDAnchor", ""])
        result = self.check("-", stdin=table(NEAR_ANCHOR, "short").encode(), status=2)
        self.assertRegex(result.err, r"(?i)standard input.*line 3")

    def test_reads_a_named_pipe(self):
        pipe = self.folder / "pipe"
        os.mkfifo(pipe)
        thread = threading.Thread(target=lambda: pipe.write_text(table(NEAR_ANCHOR)))
        thread.start()
        self.assertEqual(self.check(pipe).verdicts(), ["NCDAnchor"])
        thread.join(TIMEOUT)

    def test_reads_a_pipe_that_brings_one_byte_at_a_time(self):
        process = self.start(self.command("-", self.tables(*ANCHOR)))
        for byte in table(NEAR_ANCHOR, FAR_FROM_ANCHOR, end="\r\n").encode():
            os.write(process.stdin.fileno(), bytes([byte]))
        out, _ = process.communicate(timeout=TIMEOUT)
        self.assertEqual(out, b"row,shadowed,by\n0,1,NCDAnchor\n1,0,\n")

    def test_one_end_of_file_typed_at_a_terminal_ends_the_input(self):
        master, slave = pty.openpty()
        self.addCleanup(os.close, master)
        process = self.start(self.command("-", self.tables(*ANCHOR)), stdin=slave)
        os.close(slave)
        os.write(master, table(NEAR_ANCHOR).encode() + b"\x04")
        self.assert_ends(process, 0, timeout=20)
        self.assertEqual(process.stdout.read(), b"row,shadowed,by\n0,1,NCDAnchor\n")

    def test_accepts_crlf_and_a_byte_order_mark(self):
        plain = self.check_text(table(NEAR_ANCHOR, FAR_FROM_ANCHOR)).out
        crlf = table(NEAR_ANCHOR, FAR_FROM_ANCHOR, end="\r\n")
        self.assertEqual(self.check_text(crlf).out, plain)
        self.assertEqual(self.check_text("\ufeff" + crlf).out, plain)
        self.assertEqual(self.check_text("\ufeff" + crlf.replace("type", '"type"', 1)).out,
                         plain)
        self.assertEqual(self.check_text(crlf.replace("\r", "", 1)).out, plain)

    def test_takes_only_a_whole_byte_order_mark_for_one(self):
        for start in (b"\xef", b"\xef\xbb", b"\xbb\xbf", b"\xef\xbb\xbf\xef\xbb\xbf",
                      b"\xff\xfe"):
            with self.subTest(start=start):
                self.refuse(start + table(NEAR_ANCHOR).encode(), r"line 1\b", r"\btype\b")

    def test_the_last_line_needs_no_end(self):
        for end in ("", "\n", "\r\n", "\n\n\n", "\r\n\r\n", "\r"):
            with self.subTest(end=end):
                text = HEADER + "\n" + NEAR_ANCHOR + end
                self.assertEqual(self.check_text(text).verdicts(), ["NCDAnchor"])
        quoted = NEAR_ANCHOR.rpartition(",")[0] + ',"0"'
        for end in ("", "\n", "\r\n", "\r"):
            with self.subTest(quoted=end):
                text = HEADER + "\n" + quoted + end
                self.assertEqual(self.check_text(text).verdicts(), ["NCDAnchor"])

    def test_skips_blank_lines_and_does_not_count_them(self):
        text = ("\n\r\n" + HEADER + "\n\n\r\n\n" + NEAR_ANCHOR + "\n\n" + FAR_FROM_ANCHOR
                + "\r\n\r\n" + NEAR_ANCHOR + "\n\n")
        self.assertEqual(self.check_text(text).verdicts(), ["NCDAnchor", "", "NCDAnchor"])

    def test_a_header_alone_gives_a_header_alone(self):
        for text in (HEADER, HEADER + "\n", HEADER + "\r\n\r\n", "\ufeff" + HEADER):
            result = self.check_text(text)
            self.assertEqual(result.out, b"row,shadowed,by\n")
            self.assertEqual(result.counts()["paths"][0], "0")
            self.assertNotIn("nan", result.err)

    def test_an_empty_file_is_refused(self):
        for text in ("", "\n", "\r\n\n", "\ufeff", "\ufeff\n"):
            with self.subTest(text=text):
                self.refuse(text, "header")

    def test_an_empty_cell_is_zero(self):
        for empty in ("", '""'):
            cells = [{"type": "AV->Water", "av1_z": "-5800"}.get(c, empty) for c in COLUMNS]
            text = HEADER + "\n" + ",".join(cells) + "\n"
            self.assertEqual(self.check_text(text).verdicts(), ["NCDAnchor"])

    def test_missing_columns_are_all_named(self):
        for missing in (["type"], ["start_x"], ["av4_z"], ["type", "final_y", "av2_x"]):
            with self.subTest(missing=missing):
                header = ",".join(c for c in COLUMNS if c not in missing)
                result = self.refuse(header + "\n", r"line 1\b", *missing)
                self.assertNotIn("end_x", result.err)

    def test_column_names_are_neither_trimmed_nor_case_folded(self):
        for wrong in (HEADER.replace("type", " type"), HEADER.replace("type", "Type"),
                      HEADER.replace("end_x", "end_x "), HEADER.replace(",", ";"),
                      HEADER.replace(",", "\t"), HEADER.replace(",", ", ")):
            with self.subTest(header=wrong[:20]):
                self.refuse(wrong + "\n" + NEAR_ANCHOR + "\n", r"line 1\b")

    def test_a_column_named_twice_is_an_error(self):
        for name in ("type", "start_x", "note"):
            with self.subTest(name=name):
                extra = f",{name},{name}" if name == "note" else f",{name}"
                self.refuse(HEADER + extra + "\n", r"line 1\b", name, "twice")

    def test_the_header_may_stand_after_blank_lines_and_its_line_is_told(self):
        self.refuse("\n\n" + HEADER.replace("type", "kind") + "\n", r"line 3\b", r"\btype\b")

    def test_a_row_with_too_few_or_too_many_cells_is_an_error(self):
        self.refuse(table(NEAR_ANCHOR, "Water" + "," * 23), r"line 3\b", r"row 1\b",
                    "av4_z", r"\b24\b", r"\b25\b")
        self.refuse(table(NEAR_ANCHOR, "Water" + "," * 25), r"line 3\b", r"row 1\b",
                    r"\b26\b", r"\b25\b", "column")
        self.refuse(table("Water"), r"line 2\b", r"row 0\b", "start_x")
        self.refuse(table('""'), r"line 2\b")
        self.refuse(table(" "), r"line 2\b")

    def test_a_cell_that_is_not_a_number_is_named_by_file_line_row_and_column(self):
        for column in COORDINATES:
            with self.subTest(column=column):
                self.refuse(table(NEAR_ANCHOR, "", FAR_FROM_ANCHOR, row_with(column, "abc")),
                            r"line 5\b", r"row 2\b", rf"\b{column}\b", "abc")

    def test_lines_within_quotes_count_as_lines_of_the_file(self):
        note = path('a\nname\r\nof "three" lines')
        self.refuse(table(note, row_with("end_y", "abc")), r"line 5\b", r"row 1\b",
                    r"\bend_y\b")
        header = HEADER + ',"a\nnote"'
        self.refuse(header + "\n" + NEAR_ANCHOR + ",\n" + row_with("end_y", "abc") + ",\n",
                    r"line 4\b", r"row 1\b", r"\bend_y\b")

    def test_wrong_quotes_are_an_error(self):
        rest = "," * 24
        for text, column in (('"Water' + rest, "type"), ('Wa"ter' + rest, "type"),
                             ('"Water"x' + rest, "type"), ('"Water" ' + rest, "type"),
                             ('Water, "1"' + "," * 23, "start_x"),
                             ('Water,"1""' + "," * 23, "start_x"),
                             ('Water,1"' + "," * 23, "start_x")):
            with self.subTest(text=text):
                self.refuse(table(NEAR_ANCHOR, text, NEAR_ANCHOR), r"line 3\b", r"row 1\b",
                            rf"\b{column}\b", "quote")

    def test_a_carriage_return_ends_a_line_only_with_a_newline_or_the_file(self):
        self.refuse(table(NEAR_ANCHOR + "\r", end="\r\n"), r"line 2\b", r"\bav4_z\b")
        self.refuse(table(row_with("end_y", "1\r2")), r"line 2\b", r"\bend_y\b")
        self.refuse(table(row_with("end_y", "\r")), r"line 2\b", r"\bend_y\b")
        self.refuse(table('"Water"\r' + "," * 24), r"line 2\b", r"\btype\b")
        self.refuse(table(NEAR_ANCHOR, NEAR_ANCHOR, end="\r"), r"line 1\b")
        self.refuse("\r" + table(NEAR_ANCHOR), r"line 1\b")
        result = self.check_text(table("Wa\rter" + "," * 24, "\r" + NEAR_ANCHOR))
        self.assertRegex(result.err, r"unknown name: 2\b")

    def test_nul_bytes_in_a_number_are_an_error_that_names_the_place(self):
        for cell in ("\0", "1\0", "\x001", "1\x002"):
            with self.subTest(cell=cell):
                self.refuse(table(row_with("end_y", cell)), r"line 2\b", r"row 0\b",
                            r"\bend_y\b", "not a number")
        self.refuse(b"\0" * 300_000, "paths.csv")

    def test_a_bad_cell_cannot_command_the_terminal(self):
        result = self.refuse(table(row_with("end_y", "\x1b[2J\x1b]0;x\x07")), r"\bend_y\b")
        self.assertNotIn(b"\x1b", result.bytes_err)
        self.assertNotIn(b"\x07", result.bytes_err)

    def test_a_very_long_cell_does_not_make_a_very_long_message(self):
        result = self.refuse(table(row_with("end_y", "9" * 500_000 + "x")), r"line 2\b",
                             r"\bend_y\b", "not a number")
        self.assertLess(len(result.err), 2000)

    def test_a_missing_quote_does_not_take_the_whole_file_into_memory(self):
        text = table('"Water' + "," * 24) + (NEAR_ANCHOR + "\n") * 100_000
        self.refuse(text, r"line 2\b", r"row 0\b", r"\btype\b", "quote")

    def test_something_that_is_no_table_is_refused(self):
        self.refuse(bytes(range(256)) * 4096, "paths.csv")
        self.check("/dev/zero", status=2)
        self.check(PROGRAM, status=2)
        self.check(self.folder, status=2)

    def test_a_missing_file_is_bad_input(self):
        result = self.check("nowhere.csv", "-o", "out.csv", status=2)
        self.assertIn("nowhere.csv", result.err)
        self.assertFalse((self.folder / "out.csv").exists())

    def test_rows_may_span_the_buffers_in_which_the_file_is_read(self):
        rows, wanted = [], []
        for i in range(12_000):
            near = i * 7919 % 3 == 0
            vectors = {"av1": (0.0, 0.0, -5800.0) if near else (0.0, 0.0, 5860.0)}
            for extra in range(i % 7):
                vectors[VECTORS[extra]] = vectors.get(VECTORS[extra], (i / 7, -i / 3, 1e-3 * i))
            vectors["av1"] = (0.0, 0.0, -5800.0) if near else (0.0, 0.0, 5860.0)
            text = path("AV->Water", **vectors)
            rows.append('"AV->Water"' + text[len("AV->Water"):] if i % 5 == 0 else text)
            wanted.append("NCDAnchor" if near else "")
        for end in ("\n", "\r\n"):
            text = table(*rows, end=end)
            self.assertGreater(len(text), 1 << 20)
            self.assertEqual(self.check_text(text).verdicts(), wanted)

    def test_the_place_of_an_error_is_right_far_into_a_long_file(self):
        rows = [NEAR_ANCHOR, path("two\nlines"), ""] * 20_000
        self.refuse(table(*rows, row_with("av2_y", "abc"), NEAR_ANCHOR),
                    rf"line {4 * 20_000 + 2}\b", rf"row {2 * 20_000}\b", r"\bav2_y\b")

    def test_without_an_output_file_a_bad_row_still_gives_status_2(self):
        rows = [NEAR_ANCHOR] * 30_000
        result = self.check(self.paths(*rows, "short"), status=2)
        self.assertRegex(result.err, r"line 30002\b")
        self.assertTrue(result.out == b"" or result.out.startswith(b"row,shadowed,by\n"))


class Numbers(CheckTest):
    def z_of_av1(self, cell, *options, **more):
        text = table(NEAR_ANCHOR.replace("-5800.0", cell))
        return self.check_text(text, *options, **more).verdicts()

    def test_reads_decimals_and_exponents_with_either_sign(self):
        for cell in ("-5800", "-5.8e3", "-58E2", "-5800.", "-580000e-2", "-5800.000e+0",
                     "-05800", "-0.0058e6", "-" + "0" * 3000 + "5800", "-5800." + "0" * 3000,
                     "-58" + "0" * 400 + "e-398"):
            with self.subTest(cell=cell[:40]):
                self.assertEqual(self.z_of_av1(cell), ["NCDAnchor"])
        for cell in ("+5800", "5800", "+5.8e+3", ".5", "+.5", "-.5e0", "0", "-0", "+0"):
            with self.subTest(cell=cell):
                self.assertEqual(self.z_of_av1(cell), [""])

    def test_refuses_what_is_not_wholly_a_number(self):
        for cell in ("+-1", "-+1", "++1", "--1", "+", "-", ".", "e5", "1e", "1e+", "0x10",
                     "0X1p3", "1_000", "1'000", '"1,5"', "1 ", " 1", "\t1", "1\t", " ", "1 2",
                     "1.2.3", "1f", "1d5", "1e5.5", "1mm", "one", "NaNs", "infinit", "nan(",
                     "nan(x y)", "1\xa0", "\u0661", "\u22121", "\uff11", "#N/A", "NULL"):
            with self.subTest(cell=cell):
                self.refuse(table(row_with("av1_z", cell)), r"line 2\b", r"row 0\b",
                            r"\bav1_z\b", "not a number")

    def test_refuses_what_is_too_large(self):
        for cell in ("1e400", "-1e400", "+1e309", "1.7976931348623159e308", "9" * 400,
                     "1e99999999999999999999"):
            with self.subTest(cell=cell[:30]):
                self.refuse(table(row_with("av1_z", cell)), r"line 2\b", r"\bav1_z\b",
                            "too large")

    def test_takes_the_nearest_double_of_what_is_too_small(self):
        # Seen by its azimuth: any y above 0 lies at 90 degrees, in the pipes' band.
        def rows(*cells):
            return self.verdicts(PIPES, [path("AV->Water", av1=("0", y, "0")) for y in cells])
        self.assertEqual(rows("4.9e-324", "+4.9e-324", "3e-324", "2.5e-324", "1e-320",
                              "2.2250738585072011e-308"), ["AVPipe"] * 6)
        self.assertEqual(rows("2e-324", "1e-400", "-1e-400", "1e-99999999999999999999",
                              "0." + "0" * 5000 + "1", "-4.9e-324"), [""] * 6)

    def test_accepts_nan_and_infinity_in_any_spelling(self):
        for cell in ("nan", "NaN", "NAN", "-nan", "+nan", "inf", "Inf", "INF", "-inf", "+inf",
                     "infinity", "-Infinity"):
            with self.subTest(cell=cell):
                self.assertEqual(self.z_of_av1(cell), [""])

    def test_does_not_crash_on_a_nan_with_a_payload(self):
        for cell in ("nan(x)", "nan()", "nan(0x1)"):
            result = self.run_command(
                self.command(self.write("paths.csv", table(row_with("av1_z", cell))),
                             self.tables(*ANCHOR)), status=0)
            self.assertEqual(result.verdicts(), [""])

    def test_odd_numbers_never_crash_a_test(self):
        values = ("nan", "-nan", "inf", "-inf", "1e308", "-1e308", "1.7976931348623157e308",
                  "4.9e-324", "-4.9e-324", "0", "-0", "1e-160", "1e160")
        rows = []
        for name in (*TYPES, "odd", "LightPath Uninitialised", ""):
            for value in values:
                rows.append(name + ("," + value) * 24)
                for column in range(24):
                    cells = ["1"] * 24
                    cells[column] = value
                    rows.append(name + "," + ",".join(cells))
                for vector in range(8):
                    cells = ["5900", "1", "-3"] * 8
                    cells[3 * vector:3 * vector + 3] = [value] * 3
                    rows.append(name + "," + ",".join(cells))
        for tolerance in ("150", "0", "-150", "1e308", "-1e308"):
            with self.subTest(tolerance=tolerance):
                result = self.check(self.paths(*rows), "--tolerance", tolerance,
                                    geometry=REFERENCE)
                self.assertEqual(len(result.verdicts()), len(rows))

    def test_numbers_are_read_and_written_alike_in_every_locale(self):
        rows = [path("AV->Water", av1=(0.0, 0.0, z)) for z in (-5590.5, -5589.5)]
        for locale in ("de_DE", "de_DE.UTF-8", "fr_FR.UTF-8", "nowhere"):
            with self.subTest(locale=locale):
                env = {**os.environ, "LC_ALL": locale, "LANG": locale, "LC_NUMERIC": locale}
                result = self.check(self.paths(*rows), "--tolerance", "150.0", env=env)
                self.assertEqual(result.verdicts(), ["NCDAnchor", ""])
                self.assertEqual(result.counts()["shadowed"], ("1", "50.000"))
                self.check_text(table(row_with("av1_z", '"1,5"')), env=env, status=2)


# --- The output --------------------------------------------------------------

class Output(CheckTest):
    MANY = 40_000  # rows that fill a pipe and the program's buffer

    def many_paths(self):
        return self.paths(*[NEAR_ANCHOR] * self.MANY, name="many.csv")

    def test_standard_output_holds_the_table_and_nothing_else(self):
        paths = self.paths(path("odd"), path("Light Path Uninitialised"), NEAR_ANCHOR)
        result = self.check(paths, "--debug", geometry=self.tables(*SUPPORT_ROPES, *ANCHOR))
        self.assertEqual(result.verdicts(), ["", "", "NCDAnchor"])
        self.assertIn("Loaded", result.err)
        self.assertIn("uninitialised", result.err)

    def test_with_an_output_file_standard_output_stays_empty(self):
        for option in (["-o", "out.csv"], ["-oout.csv"], ["--output", "out.csv"],
                       ["--output=out.csv"]):
            (self.folder / "out.csv").unlink(missing_ok=True)
            result = self.check(self.paths(NEAR_ANCHOR), *option)
            self.assertEqual(result.out, b"")
            self.assertEqual((self.folder / "out.csv").read_bytes(),
                             b"row,shadowed,by\n0,1,NCDAnchor\n")

    def test_an_existing_file_is_replaced_whole(self):
        out = self.write("out.csv", "x" * 10_000)
        self.check(self.paths(NEAR_ANCHOR), "-o", out)
        self.assertEqual(out.read_bytes(), b"row,shadowed,by\n0,1,NCDAnchor\n")

    def test_the_input_file_may_be_the_output_file(self):
        paths = self.many_paths()
        self.check(paths, "-o", paths)
        self.assertEqual(Result(0, paths.read_bytes(), b"").verdicts(),
                         ["NCDAnchor"] * self.MANY)
        bad = self.paths(NEAR_ANCHOR, "short")
        before = bad.read_bytes()
        self.check(bad, "-o", bad, status=2)
        self.assertEqual(bad.read_bytes(), before)

    def test_a_new_file_has_the_permissions_that_the_umask_leaves(self):
        for mask, wanted in ((0o022, 0o644), (0o027, 0o640), (0o077, 0o600)):
            out = self.folder / f"{mask:o}.csv"
            self.check(self.paths(NEAR_ANCHOR), "-o", out, preexec_fn=lambda m=mask: os.umask(m))
            self.assertEqual(stat.S_IMODE(out.stat().st_mode), wanted)

    def test_an_existing_file_keeps_its_permissions(self):
        for mode in (0o600, 0o640, 0o664, 0o755):
            out = self.write("out.csv", "old")
            out.chmod(mode)
            self.check(self.paths(NEAR_ANCHOR), "-o", out)
            self.assertEqual(stat.S_IMODE(out.stat().st_mode), mode)

    def test_a_symbolic_link_stays_and_its_file_is_replaced(self):
        real = self.write("elsewhere/real.csv", "old")
        (self.folder / "out.csv").symlink_to("elsewhere/real.csv")
        self.check(self.paths(NEAR_ANCHOR), "-o", self.folder / "out.csv")
        self.assertTrue((self.folder / "out.csv").is_symlink())
        self.assertEqual(real.read_bytes(), b"row,shadowed,by\n0,1,NCDAnchor\n")

    def test_a_symbolic_link_to_a_file_that_is_not_there_yet_stays_too(self):
        (self.folder / "elsewhere").mkdir()
        for target in ("real.csv", "elsewhere/real.csv", self.folder / "elsewhere/third.csv"):
            link = self.folder / "out.csv"
            link.unlink(missing_ok=True)
            link.symlink_to(target)
            self.check(self.paths(NEAR_ANCHOR), "-o", link)
            self.assertTrue(link.is_symlink())
            self.assertEqual((self.folder / target).read_bytes(),
                             b"row,shadowed,by\n0,1,NCDAnchor\n")

    def test_writes_to_devices_and_pipes_in_place(self):
        result = self.check(self.paths(NEAR_ANCHOR), "-o", "/dev/null")
        self.assertEqual(result.counts()["paths"][0], "1")
        self.assertTrue(stat.S_ISCHR(os.stat("/dev/null").st_mode))
        result = self.check(self.paths(NEAR_ANCHOR), "-o", "/dev/stdout")
        self.assertEqual(result.verdicts(), ["NCDAnchor"])
        pipe = self.folder / "pipe"
        os.mkfifo(pipe)
        read = []
        thread = threading.Thread(target=lambda: read.append(pipe.read_bytes()))
        thread.start()
        self.check(self.paths(NEAR_ANCHOR), "-o", pipe)
        thread.join(TIMEOUT)
        self.assertEqual(read, [b"row,shadowed,by\n0,1,NCDAnchor\n"])
        self.assertTrue(stat.S_ISFIFO(pipe.stat().st_mode))

    def test_a_place_that_cannot_be_written_gives_status_1(self):
        file = self.write("file", "x")
        (self.folder / "loop").symlink_to("loop")
        for out in ("missing/out.csv", file / "out.csv", self.folder, "/proc/out.csv",
                    "missing/", "loop/out.csv", "x" * 256):
            with self.subTest(out=out):
                result = self.check(self.paths(NEAR_ANCHOR), "-o", out, status=1)
                self.assertIn(str(out), result.err)
                self.assertNotIn("paths/second", result.err)
        self.assertEqual(file.read_text(), "x")

    def test_a_folder_without_write_permission_gives_status_1(self):
        folder = self.folder / "closed"
        folder.mkdir()
        folder.chmod(0o500)
        self.addCleanup(folder.chmod, 0o700)
        # Permissions do not bind root, for whom the folder is simply writable.
        status = 0 if os.access(folder, os.W_OK) else 1
        self.check(self.paths(NEAR_ANCHOR), "-o", folder / "out.csv", status=status)
        self.assertEqual((folder / "out.csv").exists(), status == 0)

    def test_an_empty_name_for_the_output_is_refused(self):
        result = self.run_command([PROGRAM, "check", self.paths(NEAR_ANCHOR), "--geometry",
                                   self.tables(*ANCHOR), "-o", ""], status=(1, 2))
        self.assertEqual(result.out, b"")

    def test_a_file_name_may_be_as_long_as_the_system_allows(self):
        for length in (200, 230, 255):
            with self.subTest(length=length):
                out = self.folder / ("x" * (length - 4) + ".csv")
                self.check(self.paths(NEAR_ANCHOR), "-o", out)
                self.assertEqual(out.read_bytes(), b"row,shadowed,by\n0,1,NCDAnchor\n")

    def test_odd_file_names_are_taken_as_they_are(self):
        for name in ("with blank.csv", "new\nline.csv", "\u00e9t\u00e9.csv", "*.csv", "a'b\".csv",
                     "%s%n.csv", "out", ".hidden"):
            with self.subTest(name=name):
                self.check(self.paths(NEAR_ANCHOR, name="in " + name), "-o", name)
                self.assertEqual((self.folder / name).read_bytes(),
                                 b"row,shadowed,by\n0,1,NCDAnchor\n")

    def test_a_full_disk_leaves_no_half_file(self):
        paths = self.many_paths()
        for size in (1, 10, 65_536, 100_000, 300_000):
            with self.subTest(size=size):
                result = self.check(paths, "-o", "new.csv", status=1,
                                    preexec_fn=self.limited(size))
                self.assertIn("new.csv", result.err)
                self.assertRegex(result.err, r"(?i)file too large")
                self.assertFalse((self.folder / "new.csv").exists())
                old = self.write("old.csv", "as it was")
                self.check(paths, "-o", old, status=1, preexec_fn=self.limited(size))
                self.assertEqual(old.read_bytes(), b"as it was")
                self.assert_no_temporaries()

    def test_a_full_disk_is_noticed_even_by_a_short_output(self):
        self.check(self.paths(NEAR_ANCHOR), "-o", "new.csv", status=1,
                   preexec_fn=self.limited(20))
        self.assertFalse((self.folder / "new.csv").exists())

    def test_a_full_disk_behind_standard_output_gives_status_1(self):
        for paths in (self.paths(NEAR_ANCHOR), self.many_paths()):
            with open("/dev/full", "wb") as full:
                result = self.check(paths, status=1, stdout=full)
            self.assertRegex(result.err, "(?i)standard output.*no space")
            result = self.check(paths, "-o", "/dev/full", status=1)
            self.assertRegex(result.err, "/dev/full.*(?i:no space)")
        with open(self.folder / "redirected.csv", "wb") as out:
            self.check(self.many_paths(), status=1, stdout=out, preexec_fn=self.limited(100_000))

    def test_a_pipe_that_closes_early_gives_status_1(self):
        process = self.start(self.command(self.many_paths(), self.tables(*ANCHOR)))
        self.assertEqual(process.stdout.readline(), b"row,shadowed,by\n")
        process.stdout.close()
        err = self.assert_ends(process, 1)
        self.assertRegex(err, "(?i)standard output.*broken pipe")

    def test_a_closed_standard_output_gives_status_1(self):
        self.check(self.paths(NEAR_ANCHOR), status=1, stdout=None,
                   preexec_fn=lambda: os.close(1))
        self.check(self.paths(NEAR_ANCHOR), "-o", "out.csv", stdout=None,
                   preexec_fn=lambda: os.close(1))
        self.assertEqual((self.folder / "out.csv").read_bytes(),
                         b"row,shadowed,by\n0,1,NCDAnchor\n")

    def test_messages_never_get_into_the_output_where_standard_error_is_closed(self):
        # The next file to be opened gets the number of standard error.
        rows = [path("odd"), path("Light Path Uninitialised"), path("odd")]
        geometry = self.tables(*SUPPORT_ROPES)
        self.run_command(self.command("-", geometry, "-o", "out.csv", "--debug"),
                         stdin=table(*rows).encode(), stderr=None,
                         preexec_fn=lambda: os.close(2))
        self.assertEqual((self.folder / "out.csv").read_bytes(),
                         b"row,shadowed,by\n0,0,\n1,0,\n2,0,\n")
        self.run_command(self.command(self.paths(*rows), geometry, "-o", "out.csv"),
                         stderr=None, preexec_fn=lambda: [os.close(i) for i in (0, 1, 2)])
        self.assertEqual((self.folder / "out.csv").read_bytes(),
                         b"row,shadowed,by\n0,0,\n1,0,\n2,0,\n")

    def test_lost_messages_do_not_spoil_the_verdicts(self):
        with open("/dev/full", "wb") as full:
            result = self.check(self.paths(NEAR_ANCHOR), stderr=full)
        self.assertEqual(result.verdicts(), ["NCDAnchor"])

    def test_a_bad_row_removes_what_was_written_so_far(self):
        self.refuse(table(*[NEAR_ANCHOR] * self.MANY, "short"), rf"line {self.MANY + 2}\b")

    def test_two_runs_may_write_the_same_file_at_once(self):
        geometry = self.tables(*ANCHOR)
        slow = self.start(self.command("-", geometry, "-o", "out.csv"))
        self.feed(slow, table(NEAR_ANCHOR, FAR_FROM_ANCHOR))
        self.wait_for(self.temporaries, "a temporary file")
        self.check(self.paths(NEAR_ANCHOR), "-o", "out.csv", geometry=geometry)
        self.assertEqual((self.folder / "out.csv").read_bytes(),
                         b"row,shadowed,by\n0,1,NCDAnchor\n")
        self.assertEqual(len(self.temporaries()), 1, "the other run's file was taken away")
        slow.stdin.close()
        self.assert_ends(slow, 0)
        self.assertEqual((self.folder / "out.csv").read_bytes(),
                         b"row,shadowed,by\n0,1,NCDAnchor\n1,0,\n")

    def test_the_output_file_appears_only_when_it_is_complete(self):
        process = self.start(self.command("-", self.tables(*ANCHOR), "-o", "out.csv"))
        self.feed(process, table(NEAR_ANCHOR))
        self.wait_for(self.temporaries, "a temporary file")
        self.wait_until_it_sleeps(process)
        self.assertFalse((self.folder / "out.csv").exists())
        self.assertEqual(self.temporaries()[0].parent, self.folder)
        process.stdin.close()
        self.assert_ends(process, 0)
        self.assertTrue((self.folder / "out.csv").exists())


class Signals(CheckTest):
    ROWS = (NEAR_ANCHOR + "\n").encode() * 1000

    def start_writing(self, out="out.csv", **more):
        """A run that reads a slow pipe and has begun its output."""
        process = self.start(self.command("-", self.tables(*ANCHOR), "-o", out), **more)
        self.feed(process, table(NEAR_ANCHOR, NEAR_ANCHOR))
        self.wait_for(self.temporaries, "a temporary file")
        self.wait_until_it_sleeps(process)
        return process

    def test_an_interrupt_while_a_slow_pipe_is_read_leaves_everything_as_it_was(self):
        old = self.write("out.csv", "as it was")
        process = self.start_writing()
        process.send_signal(signal.SIGINT)
        err = self.assert_ends(process, 130)
        self.assertNotIn("paths/second", err)
        self.assertEqual(old.read_bytes(), b"as it was")
        self.assert_no_temporaries()

    def test_an_interrupt_leaves_no_new_file(self):
        process = self.start_writing()
        process.send_signal(signal.SIGINT)
        self.assert_ends(process, 130)
        self.assertFalse((self.folder / "out.csv").exists())
        self.assert_no_temporaries()

    def test_an_interrupt_in_the_middle_of_a_long_file_leaves_everything_as_it_was(self):
        old = self.write("out.csv", "as it was")
        paths = self.write("paths.csv", (HEADER + "\n").encode() + self.ROWS * 1000)
        process = self.start(self.command(paths, self.tables(*ANCHOR), "-o", old))
        self.wait_for(lambda: any(p.stat().st_size > 0 for p in self.temporaries()),
                      "some output")
        process.send_signal(signal.SIGINT)
        self.assert_ends(process, 130)
        self.assertEqual(old.read_bytes(), b"as it was")
        self.assert_no_temporaries()

    def test_an_interrupt_stops_an_endless_input(self):
        process = self.start(self.command("-", self.tables(*ANCHOR), "-o", "out.csv"))
        self.feed_endlessly(process, HEADER, self.ROWS)
        self.wait_for(lambda: any(p.stat().st_size > 0 for p in self.temporaries()),
                      "some output")
        process.send_signal(signal.SIGINT)
        self.assert_ends(process, 130)
        self.assertFalse((self.folder / "out.csv").exists())

    def test_an_interrupt_stops_a_run_whose_output_nobody_reads(self):
        process = self.start(self.command("-", self.tables(*ANCHOR)))
        self.feed_endlessly(process, HEADER, self.ROWS)
        self.wait_until_it_sleeps(process)
        process.send_signal(signal.SIGINT)
        self.assert_ends(process, 130)

    def test_an_interrupt_is_answered_while_a_named_pipe_waits_for_its_other_end(self):
        pipe = self.folder / "pipe"
        os.mkfifo(pipe)
        paths, geometry = self.paths(NEAR_ANCHOR), self.tables(*ANCHOR)
        for what, arguments in (("paths", self.command(pipe, geometry)),
                                ("output", self.command(paths, geometry, "-o", pipe)),
                                ("geometry", self.command(paths, pipe))):
            with self.subTest(what=what):
                process = self.start(arguments)
                self.wait_until_it_sleeps(process)
                process.send_signal(signal.SIGINT)
                self.assert_ends(process, 130, timeout=20)

    def test_an_interrupt_is_answered_while_geometry_comes_from_a_slow_pipe(self):
        pipe = self.folder / "pipe"
        os.mkfifo(pipe)
        process = self.start(self.command(self.paths(NEAR_ANCHOR), pipe))
        with open(pipe, "wb", buffering=0) as writer:
            writer.write(b"[")
            self.wait_until_it_sleeps(process)
            process.send_signal(signal.SIGINT)
            self.assert_ends(process, 130, timeout=20)

    def test_termination_and_hang_up_clean_up_too(self):
        for number in (signal.SIGTERM, signal.SIGHUP):
            old = self.write("out.csv", "as it was")
            process = self.start_writing()
            process.send_signal(number)
            self.assert_ends(process, 128 + number)
            self.assertEqual(old.read_bytes(), b"as it was")
            self.assert_no_temporaries()

    def test_signals_that_the_caller_ignores_stay_ignored(self):
        # As nohup does with a hang-up, and a shell with interrupts of a job in
        # the background.
        for number in (signal.SIGHUP, signal.SIGINT):
            (self.folder / "out.csv").unlink(missing_ok=True)
            process = self.start_writing(
                preexec_fn=lambda n=number: signal.signal(n, signal.SIG_IGN))
            process.send_signal(number)
            time.sleep(0.2)
            try:
                process.stdin.close()
            except BrokenPipeError:
                pass
            self.assert_ends(process, 0)
            self.assertEqual((self.folder / "out.csv").read_bytes(),
                             b"row,shadowed,by\n0,1,NCDAnchor\n1,1,NCDAnchor\n")

    def test_what_a_killed_run_left_behind_is_swept_by_the_next(self):
        old = self.write("out.csv", "as it was")
        process = self.start_writing()
        process.kill()
        process.wait()
        self.assertEqual(old.read_bytes(), b"as it was")
        self.assertEqual(len(self.temporaries()), 1)
        self.check(self.paths(NEAR_ANCHOR), "-o", old)
        self.assert_no_temporaries()
        self.assertEqual(old.read_bytes(), b"row,shadowed,by\n0,1,NCDAnchor\n")

    def test_what_a_killed_run_left_of_a_new_file_is_swept_by_the_next(self):
        (self.folder / "folder").mkdir()
        for out in ("out.csv", "./out.csv", "folder/out.csv", self.folder / "out.csv"):
            with self.subTest(out=out):
                (self.folder / out).unlink(missing_ok=True)
                for left in self.temporaries():
                    left.unlink()
                process = self.start_writing(out)
                process.kill()
                process.wait()
                self.assertFalse((self.folder / out).exists())
                self.check(self.paths(NEAR_ANCHOR), "-o", out)
                self.assert_no_temporaries()
        for left in self.temporaries():
            left.unlink()

    def test_a_sweep_spares_the_files_of_other_targets(self):
        process = self.start_writing("other.csv")
        process.kill()
        process.wait()
        mine = self.write("out.csv.bak", "mine")
        for name in ("out.csv", "ther.csv", "other.cs"):
            self.check(self.paths(NEAR_ANCHOR), "-o", self.folder / name)
        self.assertEqual(len(self.temporaries()), 1)
        self.assertEqual(mine.read_text(), "mine")
        self.check(self.paths(NEAR_ANCHOR), "-o", self.folder / "other.csv")
        self.assert_no_temporaries()


# --- Threads -----------------------------------------------------------------

class Threads(CheckTest):
    """The file is read in blocks of 256 KiB, which threads judge; what comes out
    does not tell."""
    BLOCK = 256 * 1024
    WRONG = TypeNames.WRONG

    def story(self, result):
        """All that a run tells, without how long it took."""
        err = re.sub(r"(?m)^(seconds|paths/second) .*$", r"\1", result.err)
        return [result.status], result.out, err

    def assert_same(self, found, wanted):
        """For long texts and lists, of which assertEqual seeks all differences for
        hours."""
        if found == wanted:
            return
        at = next((i for i, (a, b) in enumerate(zip(found, wanted)) if a != b),
                  min(len(found), len(wanted)))
        part = slice(max(0, at - 100), at + 100)
        self.fail(f"at {at}:\n{found[part]}\n-- instead of\n{wanted[part]}")

    def assert_threads_do_not_matter(self, text, *options, status=0, **more):
        paths = self.write("paths.csv", text)
        one = self.check(paths, "--threads", 1, *options, status=status, **more)
        for threads in (["--threads", 2], ["--threads", 3], ["--threads", 7], []):
            with self.subTest(threads=threads):
                found = self.check(paths, *threads, *options, status=status, **more)
                for said, wanted in zip(self.story(found), self.story(one)):
                    self.assert_same(said, wanted)
        self.check(paths, "--threads", 3, "-o", "out.csv", *options, status=status, **more)
        if status == 0:
            self.assert_same((self.folder / "out.csv").read_bytes(), one.out)
        with open(paths, "rb") as file:
            piped = self.check("-", "--threads", 3, *options, status=status, **more,
                               stdin=file.read())
        self.assert_same(piped.out, one.out)
        return one

    def many_rows(self, count, odd_every=None):
        """Rows of many lengths and a wanted verdict each; odd types carry the row's
        number, and lines in quotes, blank lines and line ends of both kinds are
        spread among them."""
        rows, wanted = [], []
        for i in range(count):
            if odd_every and i % odd_every == 0:
                rows.append(path(f"odd {i}") + "\n")
                wanted.append("")
                continue
            near = i * 7919 % 3 == 0
            points = {"av1": (0.0, 0.0, -5800.0 if near else -5000.0)}
            for extra in range(i % 7):
                if VECTORS[extra] != "av1":
                    points[VECTORS[extra]] = (i / 7, -i / 3, 1e-3 * i)
            note = '"two\nlines, ""quoted"""' if i % 5 == 0 else str(i)
            end = ("\n", "\r\n", "\n\n", "\r\n\n")[i % 4]
            rows.append(path("AV->Water", **points) + "," + note + end)
            wanted.append("NCDAnchor" if near else "")
        return rows, wanted

    def text_of(self, rows):
        return HEADER + ",note\n" + "".join(rows)

    def many_odd_rows(self, count, every):
        rows, wanted = self.many_rows(count, every)
        for i in range(0, count, every):
            rows[i] = rows[i].replace("\n", ",\n")
        return rows, wanted

    def test_verdicts_are_the_same(self):
        rows, wanted = self.many_rows(20_000)
        text = self.text_of(rows)
        self.assertGreater(len(text), 6 * self.BLOCK)
        self.assert_same(self.assert_threads_do_not_matter(text).verdicts(), wanted)

    def test_a_block_may_end_anywhere_in_a_row(self):
        rows = [path("AV->Water", av1=(0.0, 0.0, -5800.0), end=(1.5, 2.5, 3.5)) + ',"a\n""b"\r\n',
                path("Water") + ",\r\n"]
        unit = "".join(rows)
        for before in range(len(unit) + 1):
            filler = path("Water") + "," + "f" * (self.BLOCK - before - len(HEADER) - 35) + "\n"
            text = self.text_of([filler, unit])
            found = self.check(self.write("paths.csv", text), "--threads", 2).verdicts()
            self.assertEqual(found, ["", "NCDAnchor", ""], before)

    def test_warnings_of_unknown_types_come_in_the_order_of_the_rows(self):
        rows, wanted = self.many_odd_rows(20_000, 37)
        result = self.assert_threads_do_not_matter(
            self.text_of(rows), geometry=self.tables(*SUPPORT_ROPES, *ANCHOR))
        self.assert_same(result.verdicts(), wanted)
        told = re.findall(re.escape(self.WRONG) + r"odd (\d+)$", result.err, re.MULTILINE)
        self.assert_same(told, [str(i) for i in range(0, 20_000, 37)])
        last = result.err.rstrip("\n").split("\n")[-1]
        self.assertRegex(last, rf'unknown name: {len(told)}\b.*"odd 0"')

    def test_the_first_unknown_type_in_the_order_of_the_rows_is_named(self):
        rows, _ = self.many_rows(20_000)
        for i in (11_000, 15_000, 19_999):
            rows[i] = path(f"odd {i}") + ",\n"
        result = self.assert_threads_do_not_matter(self.text_of(rows))
        self.assertIn('unknown name: 3, the first "odd 11000"\n', result.err)

    def test_diagnostics_come_in_the_order_of_the_rows(self):
        # A path that passes the ropes' cylinder at a tangent is worth a word, which
        # tells its distance from the axis.
        rows, wanted = [], []
        for i in range(9000):
            if i % 37 == 0:
                rows.append(path("Light Path Uninitialised"))
                wanted.append("is uninitialised")
            else:
                rows.append(path("AV->Water", av1=(10_000.0 + i, 0.0, -100.0),
                                 final=(0.0, 1.0, 0.0)))
                wanted.append(f"Mag(): {10_000 + i} ")
        text = table(*rows)
        self.assertGreater(len(text), 2 * self.BLOCK)
        result = self.assert_threads_do_not_matter(text, "--debug",
                                                   geometry=self.tables(*HOLD_DOWN_ROPES))
        told = re.findall(r"is uninitialised|Mag\(\): 1\d+ ", result.err)
        self.assert_same(told, wanted)
        self.assert_same(self.check_text(text, geometry=self.tables(*HOLD_DOWN_ROPES)).out,
                         result.out)

    def test_the_first_error_in_the_order_of_the_rows_is_told(self):
        rows, wanted = self.many_rows(20_000)
        rows[11_000] = row_with("end_y", "abc") + ",\n"
        rows[11_001] = "short\n"
        rows[12_500] = row_with("end_y", "def") + ",\n"
        rows[19_000] = "\"never closed" + rows[19_000]
        result = self.assert_threads_do_not_matter(self.text_of(rows), status=2)
        lines = self.text_of(rows[:11_000]).count("\n")
        self.assertRegex(result.err, rf'paths.csv: line {lines + 1} \(row 11000\), '
                                     r'column end_y: "abc" is not a number\n')
        found = result.out.decode().splitlines()[1:]
        self.assertGreater(len(found), 6000)
        self.assert_same(found, [f"{i},{1 if by else 0},{by}"
                                 for i, by in enumerate(wanted[:len(found)])])
        self.refuse(self.text_of(rows), rf"line {lines + 1}\b")

    def test_rows_before_an_error_are_written_as_far_as_they_fill_the_buffer(self):
        # Whole lines wait in a buffer of 64 KiB until the next one finds no room.
        waiting, row = b"row,shadowed,by\n", 0
        while len(waiting) + len(text := b"%d,1,NCDAnchor\n" % row) <= 64 << 10:
            waiting += text
            row += 1
        for rows_before, wanted in ((row, b""), (row + 1, waiting)):
            paths = self.paths(*[NEAR_ANCHOR] * rows_before, "short")
            for threads in (1, 3):
                result = self.check(paths, "--threads", threads, status=2)
                self.assert_same(result.out, wanted)

    def test_wrong_quotes_in_a_late_block_are_told_with_their_line(self):
        for wrong, reason in (('"never closed', "the closing quote is missing"),
                              ('a "quote" within', "within a cell"),
                              ('"text"behind', "behind the closing quote")):
            rows, _ = self.many_rows(12_000)
            rows[11_500] = path("Water") + "," + wrong + "\n"
            lines = self.text_of(rows[:11_500]).count("\n")
            with self.subTest(wrong=wrong):
                result = self.assert_threads_do_not_matter(self.text_of(rows[:11_501]), status=2)
                self.assertIn(f"line {lines + 1} (row 11500), column note: ", result.err)
                self.assertIn(reason, result.err)

    def test_a_file_that_is_cut_short_meanwhile_ends_there(self):
        rows = [NEAR_ANCHOR] * 200_000
        for cut, status in ((0, 0), (5, 2)):
            with self.subTest(cut=cut):
                paths = self.write("paths.csv", table(*rows))
                process = self.start(self.command(paths, self.tables(*ANCHOR), "--threads", 2))
                self.wait_until_it_sleeps(process)  # its output is not read
                os.truncate(paths, len(table(*rows[:150_000])) - cut)
                out = process.stdout.read()
                self.assert_ends(process, status)
                if status == 0:
                    self.assert_same(Result(0, out, b"").verdicts(), ["NCDAnchor"] * 150_000)

    def test_what_could_be_read_comes_before_the_failure_of_reading(self):
        for threads in (1, 3):
            for row, wanted in ((path("odd"), [self.WRONG + "odd", "Input/output error"]),
                                ("short", ["line 2"])):
                with self.subTest(row=row, threads=threads):
                    # One end of a terminal fails when the other is closed.
                    master, slave = pty.openpty()
                    os.write(slave, table(row).encode())
                    os.close(slave)
                    process = self.start(self.command("-", self.tables(*SUPPORT_ROPES),
                                                      "--threads", threads), stdin=master)
                    os.close(master)
                    err = self.assert_ends(process, 2, timeout=20)
                    self.assertEqual(re.findall("|".join((*wanted, "Input/output")), err), wanted)

    def test_a_row_is_judged_as_soon_as_it_comes(self):
        for threads in (1, 3):
            with self.subTest(threads=threads):
                process = self.start(self.command("-", self.tables(*SUPPORT_ROPES), "--threads",
                                                  threads))
                self.feed(process, table(path("first"), path("second")))
                told = []
                while len(told) < 2:
                    text = process.stderr.readline().decode()
                    self.assertNotEqual(text, "")
                    told += re.findall(self.WRONG + "(.*)\n", text)
                self.assertEqual(told, ["first", "second"])
                self.feed(process, "short\n")  # and the pipe stays open
                err = self.assert_ends(process, 2, timeout=20)
                self.assertRegex(err, r"standard input: line 4 \(row 2\)")

    def test_an_interrupt_is_answered_by_all_threads(self):
        process = self.start(self.command("-", self.tables(*ANCHOR), "-o", "out.csv", "--threads",
                                          7))
        self.feed(process, table(*[NEAR_ANCHOR] * 60_000))  # several threads have begun
        self.wait_until_it_sleeps(process)
        process.send_signal(signal.SIGINT)
        self.assert_ends(process, 130, timeout=20)
        self.assertFalse((self.folder / "out.csv").exists())

    def test_a_pipe_that_closes_early_stops_all_threads(self):
        paths = self.paths(*[NEAR_ANCHOR] * 200_000)
        process = self.start(self.command(paths, self.tables(*ANCHOR), "--threads", 7))
        self.assertEqual(process.stdout.readline(), b"row,shadowed,by\n")
        process.stdout.close()
        self.assertRegex(self.assert_ends(process, 1), "(?i)standard output.*broken pipe")

    def test_a_file_is_not_read_ahead_of_an_output_that_nobody_reads(self):
        paths = self.paths(*[NEAR_ANCHOR] * 200_000)
        for threads in (1, 7):
            with open(paths, "rb") as file:
                process = self.start(self.command("-", self.tables(*ANCHOR), "--threads",
                                                  threads), stdin=file)
                self.wait_until_it_sleeps(process)
                self.assertLess(os.lseek(file.fileno(), 0, os.SEEK_CUR),
                                (4 + 2 * threads) * self.BLOCK)
                process.kill()

    def test_memory_does_not_grow_with_the_number_of_paths(self):
        rows, _ = self.many_odd_rows(4000, 37)
        for threads in (1, 7):
            peaks = []
            for times in (10, 60):
                process = self.start(self.command("-", self.tables(*ANCHOR), "-o", "out.csv",
                                                  "--threads", threads), env=self.MEMORY_ENV,
                                     stderr=subprocess.DEVNULL)
                self.feed(process, self.text_of(rows * times))
                self.wait_until_it_sleeps(process)
                peaks.append(self.peak(process))
                process.stdin.close()
                self.assert_ends(process, 0)
            self.assertLess(peaks[1] - peaks[0], self.SLACK_KB)

    def test_more_threads_than_work_do_no_harm(self):
        for text in (table(), table(NEAR_ANCHOR)):
            wanted = self.check_text(text, "--threads", 1).out
            for threads in (64, 1024):
                self.assertEqual(self.check_text(text, "--threads", threads).out, wanted)

    def test_threads_share_the_work(self):
        head, *rows = (DATA / "example-paths.csv").read_text().splitlines()
        process = self.start(self.command("-", REFERENCE, "--threads", 4, "-o", "/dev/null"))
        self.feed_endlessly(process, head, ("\n".join(rows) + "\n").encode())
        tasks = f"/proc/{process.pid}/task"
        self.wait_for(lambda: len(os.listdir(tasks)) >= 4, "four threads")

    def test_a_number_of_threads_that_is_none_is_bad_usage(self):
        paths = self.paths(NEAR_ANCHOR)
        for text in ("", " ", "abc", "1.5", "1e1", "0x2", "2 ", "0", "-1", "1025", "4294967297"):
            with self.subTest(text=text):
                result = self.check(paths, "--threads", text, "-o", "out.csv", status=2)
                self.assertIn("--threads", result.err)
                self.assertFalse((self.folder / "out.csv").exists())


# --- Standard error ----------------------------------------------------------

class Messages(CheckTest):
    def test_the_table_at_the_end_counts_the_verdicts(self):
        rows = ([NEAR_ANCHOR] * 3 + [path("AV->Water", av1=(0.0, 0.0, 5860.0))]
                + [FAR_FROM_ANCHOR.replace("5860.0", "0.0")] * 12)
        result = self.check(self.paths(*rows), geometry=self.tables(*ANCHOR, *NECK_BOSS))
        counts = result.counts()
        self.assertEqual(counts["paths"][0], "16")
        self.assertEqual(counts["NCDAnchor"], ("3", "18.750"))
        boss = result.verdicts().count("NeckBoss")
        self.assertEqual(counts["NeckBoss"][0], str(boss))
        self.assertEqual(counts["shadowed"][0], str(3 + boss))
        for component in ("AVHDRope", "SupportRope", "BellyPlate", "AVPipe"):
            self.assertEqual(counts[component][0], "not loaded")
        self.assertGreaterEqual(float(counts["seconds"][0]), 0)
        self.assertRegex(counts["paths/second"][0], r"^[\d,]+$")

    def test_a_component_that_is_loaded_and_meets_nothing_counts_zero(self):
        counts = self.check(self.paths(FAR_FROM_ANCHOR)).counts()
        self.assertEqual(counts["NCDAnchor"], ("0", "0.000"))

    def test_the_set_up_is_reported_on_standard_error(self):
        result = self.check(self.paths(NEAR_ANCHOR), geometry=self.tables(*ANCHOR))
        for text in ("Cannot load AV hold-down rope parameters, these will not be loaded.",
                     "Cannot load support rope parameters, these will not be loaded.",
                     "Cannot load belly plate parameters, these will not be loaded.",
                     "Loaded NCD anchor shadowing information.",
                     "Cannot load AV pipe parameters, these will not be loaded.",
                     "Cannot neck boss parameters, these will not be loaded."):
            self.assertEqual(result.err.count("ShadowingCalculator: " + text + "\n"), 1, text)

    def test_a_component_whose_arrays_differ_in_length_is_warned_of(self):
        broken = [INNER_AV, anchor_reach(60.0),
                  entry("GEO_LOCATIONS", "ncd_anchors",
                        {"x": [0.0, 0.0], "y": [0.0, 0.0], "z": [-5800.0]})]
        result = self.check(self.paths(NEAR_ANCHOR), geometry=self.tables(*broken))
        self.assertIn("Inequal number of elements", result.err)
        self.assertIn("(GEO_LOCATIONS, ncd_anchors).", result.err)
        self.assertEqual(result.verdicts(), [""])

    def test_debug_shows_the_diagnostics_and_changes_no_verdict(self):
        # The boss's foot lies outside the inner sphere, which is worth a word.
        high = [entry("GEO", "av", {"neck_boss_z": 9000.0}), NECK_BOSS[1]]
        plain = self.check(self.paths(path("AV->Water", av1=UNDER_THE_BOSS)),
                           geometry=self.tables(*high))
        debug = self.check(self.paths(path("AV->Water", av1=UNDER_THE_BOSS)), "--debug",
                           geometry=self.tables(*high))
        self.assertNotIn("negative discriminant", plain.err)
        self.assertIn("negative discriminant", debug.err)
        self.assertEqual(plain.out, debug.out)

    def test_numbers_in_the_table_have_their_thousands_set_apart(self):
        counts = self.check(self.paths(*[NEAR_ANCHOR] * 12_345)).counts()
        self.assertEqual(counts["paths"][0], "12,345")
        self.assertEqual(counts["NCDAnchor"], ("12,345", "100.000"))


class Progress(CheckTest):
    ROWS = 60_000  # their verdicts fill a pipe and the program's buffer

    def on_terminal(self, paths, read_after, feed=None):
        out, shown = self.run_on_terminal(self.command(paths, self.tables(*ANCHOR)),
                                          read_after, feed)
        self.assertTrue(out.startswith(b"row,shadowed,by\n"))
        return shown

    def test_a_bar_is_shown_on_a_terminal_when_the_work_takes_longer_than_a_second(self):
        shown = self.on_terminal(self.paths(*[NEAR_ANCHOR] * self.ROWS), 1.5)
        self.assertRegex(shown, r"\[#*\.*\] +\d+ %")
        self.assertRegex(shown, r"[\d,]+ paths, [\d,]+ a second")
        bars = [float(b) for b in re.findall(r"\] +(\d+) %", shown)]
        self.assertEqual(bars, sorted(bars))
        self.assertLessEqual(bars[-1], 100)

    def test_the_bar_is_gone_when_the_table_appears(self):
        shown = self.on_terminal(self.paths(*[NEAR_ANCHOR] * self.ROWS), 1.5)
        before, _, after = shown.rpartition("\r\x1b[K")
        self.assertIn(" a second", before)
        self.assertTrue(after.startswith("paths "), after[:100])
        self.assertNotIn("\x1b", after)

    def test_the_bar_counts_without_a_share_where_the_end_is_not_known(self):
        def feed(process):
            text = (HEADER + "\n" + (NEAR_ANCHOR + "\n") * 100).encode()
            process.stdin.write(text)
            process.stdin.flush()
            time.sleep(1.5)
            process.stdin.write(((NEAR_ANCHOR + "\n") * 100).encode())
            process.stdin.close()
        shown = self.on_terminal("-", 0, feed)
        self.assertRegex(shown, r"[\d,]+ paths, [\d,]+ a second")
        self.assertNotRegex(shown, r"\[#*\.*\]")

    def test_no_bar_is_shown_when_the_work_is_short(self):
        shown = self.on_terminal(self.paths(NEAR_ANCHOR), 0)
        self.assertIn("paths ", shown)
        self.assertNotIn("\x1b", shown)
        self.assertNotIn(" a second", shown)

    def test_no_bar_is_shown_where_standard_error_is_not_a_terminal(self):
        process = self.start(self.command(self.paths(*[NEAR_ANCHOR] * self.ROWS),
                                          self.tables(*ANCHOR)))
        time.sleep(1.5)
        process.stdout.read()
        err = self.assert_ends(process, 0)
        self.assertNotIn("\x1b", err)
        self.assertNotIn("\r", err)
        self.assertNotIn("a second", err)


# --- Usage -------------------------------------------------------------------

class Usage(CheckTest):
    def test_help_tells_units_and_shows_an_example(self):
        for arguments in (["--help"], ["-h"], ["check", "--help"], ["check", "-h"],
                          ["--help-all"]):
            with self.subTest(arguments=arguments):
                result = self.run_command([PROGRAM, *arguments])
                text = result.out.decode()
                self.assertEqual(result.err, "")
                self.assertIn("Example", text)
                self.assertIn("zarn-shadow check ", text)
        text = self.run_command([PROGRAM, "check", "--help"]).out.decode()
        self.assertRegex(text, r"\bmm\b")
        for option in ("--geometry", "-o", "--run", "--tolerance", "--threads", "--debug"):
            self.assertIn(option, text)
        self.assertRegex(text, r"130")

    def test_the_help_fits_a_terminal(self):
        for arguments in (["--help"], ["check", "--help"]):
            text = self.run_command([PROGRAM, *arguments]).out.decode()
            for help_line in text.split("\n"):
                self.assertLessEqual(len(help_line), 100, help_line)

    def test_the_example_of_the_help_works(self):
        text = self.run_command([PROGRAM, "check", "--help"]).out.decode()
        words = text.partition("Example:")[2].replace("\\\n", " ").split()
        self.assertEqual(words[0], "zarn-shadow")
        out = words[words.index("-o") + 1]
        words = [str(DATA / w[len("data/"):]) if w.startswith("data/") else w for w in words]
        self.run_command([PROGRAM, *words[1:]])
        self.assertTrue((self.folder / out).exists())

    def test_version_tells_a_version(self):
        result = self.run_command([PROGRAM, "--version"])
        self.assertRegex(result.out.decode(), r"^zarn-shadow \d+\.\d+\.\d+\n$")

    def test_help_that_cannot_be_written_gives_status_1(self):
        for arguments in (["--help"], ["check", "--help"], ["--version"]):
            with self.subTest(arguments=arguments), open("/dev/full", "wb") as full:
                self.run_command([PROGRAM, *arguments], status=1, stdout=full)

    def test_bad_usage_gives_status_2_and_points_to_the_help(self):
        paths, geometry = str(self.paths(NEAR_ANCHOR)), str(self.tables(*ANCHOR))
        for arguments in ([], ["frobnicate"], ["--frobnicate"], ["check"], ["check", paths],
                          ["check", "--geometry", geometry],
                          ["check", paths, paths, "--geometry", geometry],
                          ["check", paths, "--geometry"],
                          ["check", paths, "--geometry", geometry, "-o"],
                          ["check", paths, "--geometry", geometry, "--frobnicate"],
                          ["check", paths, "--geometry", geometry, "--run"],
                          ["check", paths, "--geometry", geometry, "--debug=maybe"],
                          ["check", paths, "--geometry", geometry, "--geometry", geometry]):
            with self.subTest(arguments=arguments):
                result = self.run_command([PROGRAM, *arguments], status=2)
                self.assertEqual(result.out, b"")
                self.assertIn("--help", result.err)

    def test_options_may_stand_anywhere(self):
        paths, geometry = str(self.paths(NEAR_ANCHOR)), str(self.tables(*ANCHOR))
        for arguments in (["--geometry", geometry, paths], [f"--geometry={geometry}", paths],
                          ["--run", "5", "--geometry", geometry, "--tolerance=0", paths],
                          ["--geometry", geometry, "--", paths]):
            with self.subTest(arguments=arguments):
                result = self.run_command([PROGRAM, "check", *arguments])
                self.assertEqual(result.verdicts(), ["NCDAnchor"])

    def test_a_file_may_bear_any_name(self):
        geometry = self.tables(*ANCHOR)
        for name in ("check", "-paths.csv", "--help", "a b.csv", "\u00e9.csv"):
            with self.subTest(name=name):
                self.paths(NEAR_ANCHOR, name=name)
                result = self.run_command([PROGRAM, "check", "--geometry", geometry, "--", name])
                self.assertEqual(result.verdicts(), ["NCDAnchor"])

    def test_a_tolerance_that_is_not_a_finite_number_is_bad_usage(self):
        paths = self.paths(NEAR_ANCHOR)
        for text in ("", " ", "abc", "nan", "inf", "-inf", "1e400", "0x10", "1_000", "1,5", "1 ",
                     " 1", "15mm", "+-1", "1e"):
            with self.subTest(text=text):
                result = self.check(paths, "--tolerance", text, "-o", "out.csv", status=2)
                self.assertIn("tolerance", result.err)
                self.assertFalse((self.folder / "out.csv").exists())

    def test_a_run_that_is_not_a_whole_number_is_bad_usage(self):
        paths = self.paths(NEAR_ANCHOR)
        for text in ("", " ", "abc", "1.5", "1e3", "1 ", " 1", "99999999999", "2147483648",
                     "0x10", "1,000", "1_000", "nan"):
            with self.subTest(text=text):
                (self.folder / "out.csv").unlink(missing_ok=True)
                result = self.check(paths, "--run", text, "-o", "out.csv", status=2)
                self.assertIn("run", result.err)
                self.assertFalse((self.folder / "out.csv").exists())

    def test_a_run_that_begins_with_0_is_not_read_as_octal(self):
        geometry = self.tables(*ANCHOR, anchor_reach(500.0, runs=[10, 10]))
        paths = self.paths(path("AV->Water", av1=(300.0, 0.0, -5800.0)))
        for run, wanted in (("10", "NCDAnchor"), ("8", ""), ("-10", ""), ("2147483647", "")):
            self.assertEqual(self.check(paths, "--run", run, geometry=geometry).verdicts(),
                             [wanted])
        result = self.check(paths, "--run", "010", geometry=geometry, status=(0, 2))
        if result.status == 0:
            self.assertEqual(result.verdicts(), ["NCDAnchor"])

    def test_bad_geometry_is_told_before_any_input_comes(self):
        process = self.start(self.command("-", "nowhere.json"))
        err = self.assert_ends(process, 2, timeout=20)
        self.assertIn("nowhere.json", err)

    def test_runs_without_any_environment(self):
        result = self.check(self.paths(NEAR_ANCHOR), env={})
        self.assertEqual(result.verdicts(), ["NCDAnchor"])


# --- Geometry tables ---------------------------------------------------------

class Geometry(CheckTest):
    # Only an anchor of 500 reaches this point, one of 60 does not.
    MIDWAY = path("AV->Water", av1=(300.0, 0.0, -5800.0))

    def reach(self, *entries, run=None):
        """Whether the anchor reaches the midway point for a run."""
        options = [] if run is None else ["--run", run]
        return self.verdicts([*ANCHOR, *entries], [self.MIDWAY], *options) == ["NCDAnchor"]

    def refuse_tables(self, text, line_number, json_path, *wanted):
        file = self.write("tables.json", text)
        result = self.check(self.paths(NEAR_ANCHOR), "-o", "out.csv", geometry=file, status=2)
        self.assertFalse((self.folder / "out.csv").exists())
        self.assertRegex(result.err, rf"tables\.json\D{{1,8}}{line_number}\b")
        self.assertIn(json_path, result.err)
        for part in wanted:
            self.assertRegex(result.err, part)
        return result

    def test_a_range_of_runs_includes_both_ends(self):
        for run, wanted in ((999, False), (1000, True), (1500, True), (2000, True),
                            (2001, False)):
            self.assertEqual(self.reach(anchor_reach(500.0, runs=[1000, 2000]), run=run),
                             wanted, run)

    def test_null_leaves_a_range_open(self):
        for runs, run, wanted in (([1000, None], 999, False), ([1000, None], 1000, True),
                                  ([1000, None], 2147483647, True), ([None, 1000], 1000, True),
                                  ([None, 1000], 1001, False), ([None, 1000], 0, True),
                                  ([None, None], 7, True)):
            self.assertEqual(self.reach(anchor_reach(500.0, runs=runs), run=run), wanted,
                             (runs, run))

    def test_an_entry_without_runs_holds_for_all_and_the_default_run_is_0(self):
        self.assertTrue(self.reach(anchor_reach(500.0), run=123))
        self.assertTrue(self.reach(anchor_reach(500.0, runs=[0, 0])))
        self.assertFalse(self.reach(anchor_reach(500.0, runs=[1, None])))

    def test_the_highest_pass_valid_for_the_run_wins(self):
        low, high = anchor_reach(60.0, **{"pass": 1}), anchor_reach(500.0, **{"pass": 2})
        self.assertTrue(self.reach(low, high))
        self.assertTrue(self.reach(high, low))
        self.assertFalse(self.reach(anchor_reach(500.0, **{"pass": 2}, runs=[1, None]), low))
        self.assertTrue(self.reach(anchor_reach(500.0, **{"pass": 0})))
        self.assertFalse(self.reach(high, anchor_reach(60.0, **{"pass": 2147483647})))

    def test_among_equal_passes_the_one_loaded_last_wins(self):
        self.assertTrue(self.reach(anchor_reach(60.0), anchor_reach(500.0)))
        self.assertFalse(self.reach(anchor_reach(500.0), anchor_reach(60.0)))
        one, two = {"pass": 3}, {"pass": 3, "runs": [0, 5]}
        self.assertTrue(self.reach(anchor_reach(60.0, **one), anchor_reach(500.0, **two)))

    def test_a_directory_is_read_in_the_order_of_its_file_names(self):
        folder = self.folder / "tables"
        self.write("tables/a.json", json.dumps([*VESSEL, *ANCHOR]))
        self.write("tables/c.json", json.dumps([anchor_reach(500.0)]))
        self.write("tables/b.json", json.dumps([anchor_reach(60.0)]))
        self.write("tables/z.txt", "no table")
        self.write("tables/README.md", "no table")
        self.write("tables/more/z.json", "no table")
        paths = self.paths(self.MIDWAY)
        self.assertEqual(self.check(paths, geometry=folder).verdicts(), ["NCDAnchor"])
        self.write("tables/d.json", json.dumps([anchor_reach(60.0)]))
        self.assertEqual(self.check(paths, geometry=folder).verdicts(), [""])
        self.assertEqual(self.check(paths, geometry=str(folder) + "/").verdicts(), [""])

    def test_one_bad_file_of_a_directory_is_named(self):
        self.write("tables/a.json", json.dumps([*VESSEL, *ANCHOR]))
        self.write("tables/b.json", "[\n1]")
        result = self.check(self.paths(NEAR_ANCHOR), geometry=self.folder / "tables", status=2)
        self.assertRegex(result.err, r"b\.json\D{1,8}2\b")
        self.assertIn("$[0]", result.err)
        self.assertNotIn("a.json", result.err)

    def test_a_directory_without_tables_or_a_missing_path_is_bad_input(self):
        (self.folder / "empty").mkdir()
        for geometry in ("empty", "nowhere", "nowhere/tables.json", ""):
            with self.subTest(geometry=geometry):
                result = self.check(self.paths(NEAR_ANCHOR), "-o", "out.csv",
                                    geometry=geometry, status=2)
                self.assertIn(geometry, result.err)
                self.assertFalse((self.folder / "out.csv").exists())

    def test_geometry_without_the_vessel_radii_is_bad_input(self):
        for entries in ([], VESSEL[:1], VESSEL[1:], ANCHOR,
                        [VESSEL[0], entry("SOLID", "acrylic_vessel_outer", {"r_sphere": 5860})],
                        [VESSEL[0], entry("SOLID", "acrylic_vessel_outer", {"r_neck": 700})],
                        [VESSEL[1], entry("SOLID", "acrylic_vessel_inner", {"r_sphere": "big"})],
                        [VESSEL[1], entry("SOLID", "acrylic_vessel_inner", {"r_sphere": [1]})],
                        [VESSEL[1], {**VESSEL[0], "runs": [1, None]}]):
            with self.subTest(entries=entries):
                file = self.write("tables.json", json.dumps(entries))
                result = self.check(self.paths(NEAR_ANCHOR), "-o", "out.csv", geometry=file,
                                    status=2)
                self.assertRegex(result.err, r"tables\.json.*acrylic_vessel_(inner|outer)")
                self.assertFalse((self.folder / "out.csv").exists())

    def test_tables_may_come_through_a_pipe(self):
        pipe = self.folder / "pipe"
        os.mkfifo(pipe)
        text = json.dumps([*VESSEL, *ANCHOR])
        thread = threading.Thread(target=lambda: pipe.write_text(text))
        thread.start()
        self.assertEqual(self.check(self.paths(NEAR_ANCHOR), geometry=pipe).verdicts(),
                         ["NCDAnchor"])
        thread.join(TIMEOUT)

    def test_a_byte_order_mark_and_crlf_are_accepted_in_tables(self):
        text = json.dumps([*VESSEL, *ANCHOR], indent=1).replace("\n", "\r\n")
        file = self.write("tables.json", "\ufeff" + text)
        self.assertEqual(self.check(self.paths(NEAR_ANCHOR), geometry=file).verdicts(),
                         ["NCDAnchor"])

    def test_unused_tables_and_fields_do_no_harm(self):
        more = [entry("OTHER", "thing", {"a": 1, "b": [], "c": "text", "d": -0.0, "e": [1, 2.5]}),
                entry("", "", {"": 1})]
        self.assertEqual(self.verdicts([*ANCHOR, *more], [NEAR_ANCHOR]), ["NCDAnchor"])

    def test_text_that_is_not_json_is_refused_with_its_line(self):
        good = json.dumps(VESSEL)[1:-1]
        for text, number in (("", 1), ("\n\n", None), ("[", 1), ("[\n\n]x", 3),
                             ("[\n" + good + ",\n]", 3), ("[] []", 1),
                             ("// tables\n[]", 1), ("[\n'a'\n]", 2),
                             ('[\n{"table": "A",\n"index"}]', 3), ("\0", 1), ("[\n\xa0]", 2)):
            with self.subTest(text=text[-30:]):
                self.refuse_tables(text, number if number else r"\d+", "$")

    def test_numbers_that_are_not_finite_are_refused(self):
        for value in ("NaN", "nan", "Infinity", "-Infinity", "1e400", "-1e400", "inf"):
            for field, json_path in ((value, "$[0].fields"), (f"[1,\n{value}]", "$[0].fields.x")):
                with self.subTest(value=field):
                    text = '[{"table": "A", "index": "b", "fields": {\n"x": ' + field + "}}]"
                    self.refuse_tables(text, 3 if "\n" in field else 2, json_path)

    def test_unknown_keys_are_refused(self):
        for key in ("field", "Table", "run", "passes", "comment", ""):
            with self.subTest(key=key):
                text = ('[\n{"table": "A", "index": "b", "fields": {},\n'
                        f'{json.dumps(key)}: 1}}]')
                self.refuse_tables(text, 3, "$[0]", re.escape(key or "[0]"))

    def test_missing_keys_are_refused(self):
        for key in ("table", "index", "fields"):
            with self.subTest(key=key):
                whole = {"table": "A", "index": "b", "fields": {}}
                del whole[key]
                self.refuse_tables("[\n" + json.dumps(whole) + "]", 2, "$[0]", f'"?{key}"?')

    def test_keys_given_twice_are_refused(self):
        for text, number, json_path in (
                ('[{"table": "A",\n"table": "A", "index": "b", "fields": {}}]', 2, "$[0]"),
                ('[{"table": "A", "index": "b", "fields": {"x": 1,\n\n"x": 1}}]', 3,
                 "$[0].fields"),
                ('[{"table": "A", "index": "b", "fields": {},\n"fields": {}}]', 2, "$[0]")):
            with self.subTest(text=text):
                self.refuse_tables(text, number, json_path, "twice")

    def test_a_wrong_shape_is_refused_with_its_place(self):
        def one(**changes):
            return {"table": "A", "index": "b", "fields": {}, **changes}
        for tables, json_path in (
                ({}, "$"), (1, "$"), ("a", "$"), (None, "$"), (one(), "$"), ([1], "$[0]"),
                ([one(), []], "$[1]"), ([None], "$[0]"), ([one(table=1)], "$[0].table"),
                ([one(index=None)], "$[0].index"), ([one(fields=[])], "$[0].fields"),
                ([one(fields="x")], "$[0].fields"), ([one(runs=1)], "$[0].runs"),
                ([one(runs=[])], "$[0].runs"), ([one(runs=[1])], "$[0].runs"),
                ([one(runs=[1, 2, 3])], "$[0].runs"), ([one(runs=[2, 1])], "$[0].runs[1]"),
                ([one(runs=["1", 2])], "$[0].runs[0]"), ([one(runs=[1, 2.5])], "$[0].runs[1]"),
                ([one(runs=[1.0, 2])], "$[0].runs[0]"),
                ([one(runs=[0, 2147483648])], "$[0].runs[1]"),
                ([one(runs=[-2147483649, 0])], "$[0].runs[0]"),
                ([one(runs=[0, 18446744073709551615])], "$[0].runs[1]"),
                ([one(runs=[0, 10**30])], "$[0].runs[1]"), ([one(runs=None)], "$[0].runs"),
                ([one(**{"pass": -1})], "$[0].pass"), ([one(**{"pass": 1.5})], "$[0].pass"),
                ([one(**{"pass": "1"})], "$[0].pass"), ([one(**{"pass": None})], "$[0].pass"),
                ([one(**{"pass": 2147483648})], "$[0].pass"),
                ([one(**{"pass": 18446744073709551615})], "$[0].pass"),
                ([one(fields={"x": None})], "$[0].fields.x"),
                ([one(fields={"x": True})], "$[0].fields.x"),
                ([one(fields={"x": {}})], "$[0].fields.x"),
                ([one(fields={"x": [1, "2"]})], "$[0].fields.x[1]"),
                ([one(fields={"x": [1, None]})], "$[0].fields.x[1]"),
                ([one(fields={"x": [[1]]})], "$[0].fields.x[0]"),
                ([one(), one(fields={"y": [1, 2, True]})], "$[1].fields.y[2]")):
            with self.subTest(tables=tables):
                self.refuse_tables(json.dumps(tables), 1, json_path + ":")

    def test_deep_nesting_is_refused(self):
        self.refuse_tables("[" * 100_000, 1, "$[0]")
        self.refuse_tables('[{"a":' * 50_000, 1, "$[0]")

    def test_the_line_of_an_entry_far_down_is_right(self):
        entries = ['{"table": "A", "index": "b", "fields": {"x": [1,\n2]}}'] * 5000
        text = "[" + ",\n".join(entries) + ',\n{"table": 5, "index": "b", "fields": {}}]'
        self.refuse_tables(text, 10_001, "$[5000].table:")

    def test_bytes_that_are_not_utf8_are_refused(self):
        self.refuse_tables(b'[\n{"table": "A\xff", "index": "b", "fields": {}}]', 2, "$[0]")


if __name__ == "__main__":
    unittest.main(verbosity=2)
