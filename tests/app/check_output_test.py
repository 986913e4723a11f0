#!/usr/bin/env python3
"""What `zarn-shadow check` writes and prints."""

import os
import sys
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import (
    ANCHOR, INNER_AV, NECK_BOSS, Result, SUPPORT_ROPES, UNDER_THE_BOSS, anchor_reach, entry)
from check_support import CheckTest, FAR_FROM_ANCHOR, NEAR_ANCHOR, path, table


class Output(CheckTest):
    MANY = 40_000  # rows that fill a pipe and the program's buffer

    def many_paths(self):
        return self.paths(*[NEAR_ANCHOR] * self.MANY, name="many.csv")

    def test_standard_output_has_only_the_verdicts(self):
        paths = self.paths(path("odd"), path("Light Path Uninitialised"), NEAR_ANCHOR)
        result = self.check(paths, "--debug", geometry=self.tables(*SUPPORT_ROPES, *ANCHOR))
        self.assertEqual(result.verdicts(), ["", "", "NCDAnchor"])
        self.assertIn("Loaded", result.err)
        self.assertIn("uninitialised", result.err)

    def test_the_input_file_is_not_replaced(self):
        paths = self.paths(NEAR_ANCHOR)
        before = paths.read_bytes()
        result = self.check(paths, "-o", paths, status=2)
        self.assertIn("is both read and written", result.err)
        self.assertEqual(paths.read_bytes(), before)

    def test_messages_never_reach_the_output_if_standard_error_is_closed(self):
        # The next file that is opened gets the descriptor of standard error.
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

    def test_a_bad_row_removes_the_unfinished_file(self):
        self.refuse(table(*[NEAR_ANCHOR] * self.MANY, "short"), rf"line {self.MANY + 2}\b")
        self.check("paths.csv", "-o", "new.csv", status=2)
        self.assertFalse((self.folder / "new.csv").exists())

    def test_a_bad_header_makes_no_file(self):
        self.check(self.write("paths.csv", "type\n"), "-o", "new.csv", status=2)
        self.assertFalse((self.folder / "new.csv").exists())


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

    def test_the_set_up_is_reported_on_standard_error(self):
        result = self.check(self.paths(NEAR_ANCHOR), geometry=self.tables(*ANCHOR))
        for text in ("Cannot load AV hold-down rope parameters, these will not be loaded.",
                     "Cannot load support rope parameters, these will not be loaded.",
                     "Cannot load belly plate parameters, these will not be loaded.",
                     "Loaded NCD anchor shadowing information.",
                     "Cannot load AV pipe parameters, these will not be loaded.",
                     "Cannot neck boss parameters, these will not be loaded."):
            self.assertEqual(result.err.count("ShadowingCalculator: " + text + "\n"), 1, text)

    def test_arrays_of_different_lengths_give_a_warning(self):
        broken = [INNER_AV, anchor_reach(60.0),
                  entry("GEO_LOCATIONS", "ncd_anchors",
                        {"x": [0.0, 0.0], "y": [0.0, 0.0], "z": [-5800.0]})]
        result = self.check(self.paths(NEAR_ANCHOR), geometry=self.tables(*broken))
        self.assertIn("Inequal number of elements", result.err)
        self.assertIn("(GEO_LOCATIONS, ncd_anchors).", result.err)
        self.assertEqual(result.verdicts(), [""])

    def test_debug_shows_the_diagnostics_and_changes_no_verdict(self):
        # The boss's foot is outside the inner sphere, which gives a diagnostic.
        high = [entry("GEO", "av", {"neck_boss_z": 9000.0}), NECK_BOSS[1]]
        plain = self.check(self.paths(path("AV->Water", av1=UNDER_THE_BOSS)),
                           geometry=self.tables(*high))
        debug = self.check(self.paths(path("AV->Water", av1=UNDER_THE_BOSS)), "--debug",
                           geometry=self.tables(*high))
        self.assertNotIn("negative discriminant", plain.err)
        self.assertIn("negative discriminant", debug.err)
        self.assertEqual(plain.out, debug.out)


if __name__ == "__main__":
    unittest.main(verbosity=2)
