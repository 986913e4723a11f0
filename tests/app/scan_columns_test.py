#!/usr/bin/env python3
"""More columns of `zarn-shadow scan`."""

import collections
import json
import math
import re
import sys
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import ANCHOR, COMPONENTS, NECK_BOSS, PLATE, PROGRAM
from light_support import MEDIA_OF, length, minus
from root_support import NTuple
from scan_support import (
    BOTTOM, CENTRE, INDICES, NEAR_THE_WALL, OPTICS, REFLECTING, ScanTest, TOP, VERDICT_HEADER, optics,
    paths_of, random_events, random_pmts, records)

NAMES = ["time", "length_inner", "length_av", "length_water", "optical_length", "angle",
         "initial_x", "initial_y", "initial_z", "final_x", "final_y", "final_z", "code",
         "event_x", "event_y", "event_z", "pmt_x", "pmt_y", "pmt_z"]
DETAILS = ["critical_tolerance", "critical_by", "item"]
SPEED_OF_LIGHT = 299.792458  # mm/ns


class Columns(ScanTest):
    def table(self, events, pmts, names, *options, **more):
        """The rows of a scan with these columns, as dictionaries."""
        result = self.scan(events, pmts, "--columns", ",".join(names), *options, **more)
        header, *rows = records(result.out)
        self.assertEqual(header, [*VERDICT_HEADER.split(","), *names])
        return [dict(zip(header, cells, strict=True)) for cells in rows]

    def test_the_values_are_those_of_the_light_paths(self):
        events = {f"e{i}": p for i, p in enumerate(random_events(12, 300))}
        pmts = {f"p{i}": p for i, p in enumerate(random_pmts(25, 301))}
        rows = self.table(events, pmts, NAMES, "--reflections", "--paths", "paths.csv",
                          geometry=self.reference_tables())
        paths = iter(paths_of(self.read("paths.csv")))
        seen = set()
        for row in rows:
            position, pmt = events[row["event"]], pmts[row["pmt"]]
            self.assertEqual([float(row[f"event_{x}"]) for x in "xyz"], list(position))
            self.assertEqual([float(row[f"pmt_{x}"]) for x in "xyz"], list(pmt))
            if not row["type"]:
                self.assertEqual({row[name] for name in NAMES[:12]}, {""})
                self.assertEqual(row["code"], "7")
                continue
            path = next(paths)
            seen.add(path.type)
            self.assertEqual(row["type"], path.type)
            self.assertEqual(row["code"], str(1 + COMPONENTS.index(row["by"])
                                              if row["by"] else 0))
            for vector in ("initial", "final"):
                self.assertEqual([row[f"{vector}_{x}"] for x in "xyz"],
                                 [path.cells[f"{vector}_{x}"] for x in "xyz"])
            self.assert_lengths(row, path)
        self.assertEqual(list(paths), [])
        self.assertGreater(len(seen), 4)

    def assert_lengths(self, row, path):
        lengths = [0.0, 0.0, 0.0]
        points = path.points()
        for medium, a, b in zip(MEDIA_OF[path.type], points, points[1:]):
            lengths[medium] += length(minus(b, a))
        for name, wanted in zip(("inner", "av", "water"), lengths):
            self.assertAlmostEqual(float(row[f"length_{name}"]), wanted, delta=1e-6)
        optical = path.optical_length(INDICES)
        self.assertAlmostEqual(float(row["optical_length"]), optical, delta=1e-6)
        self.assertAlmostEqual(float(row["time"]), optical / SPEED_OF_LIGHT, delta=1e-8)
        outwards = sum(a * b for a, b in zip(path.final, path.end)) / length(path.end)
        self.assertAlmostEqual(math.cos(float(row["angle"])), outwards, delta=1e-9)

    def test_columns_come_in_the_order_given_after_the_default_ones(self):
        rows = self.table([CENTRE], [TOP], ["pmt_z", "code", "event_z"])
        self.assertEqual(list(rows[0].values())[-3:], ["8300", "0", "0"])
        result = self.scan([CENTRE], [TOP], "--columns", " pmt_z, code ")
        self.assertEqual(records(result.out)[0][-2:], ["pmt_z", "code"])

    def test_the_other_cells_stay_the_same(self):
        events, pmts = random_events(9, 310), random_pmts(20, 311)
        plain = records(self.scan(events, pmts, "--reflections").out)
        more = records(self.scan(events, pmts, "--reflections", "--columns", "time,code").out)
        self.assertEqual([cells[:5] for cells in more], plain)

    def test_code_says_why_there_is_no_path(self):
        geometry = self.tables(*optics(*REFLECTING))
        events = {"wall": NEAR_THE_WALL, "nan": ("nan", "0", "0"), "top": TOP}
        pmts = {"aside": (0.0, 8300.0, 0.0), "top": TOP, "in": (0.0, 0.0, 5830.0)}
        codes = [row["code"] for row in self.table(events, pmts, ["code"], geometry=geometry)]
        self.assertEqual(codes, ["7", "7", "8", "10", "10", "10", "0", "9", "8"])

    def test_positions_that_are_no_numbers_are_kept(self):
        rows = self.table({"nan": ("nan", "inf", "0")}, [TOP], ["event_x", "event_y", "time"])
        self.assertEqual([rows[0][name] for name in ("event_x", "event_y", "time")],
                         ["nan", "inf", ""])

    def test_a_root_file_can_have_them(self):
        self.scan(random_events(9, 320), random_pmts(9, 321), "--columns", ",".join(NAMES), "-o",
                  "out.root", "--reflections")
        self.assertEqual(self.read("out.root")[:4], b"root")

    def test_the_critical_tolerance_is_where_the_verdict_changes(self):
        geometry = self.tables(*OPTICS, *ANCHOR, *PLATE)
        events, pmts = random_events(6, 330), [BOTTOM, *random_pmts(20, 331)]
        rows = self.table(events, pmts, DETAILS, "--reflections", geometry=geometry)
        seen = set()
        for tolerance in (-20, 0, 150, 2000, 5000):
            verdicts = self.table(events, pmts, ["code"], "--reflections",
                                  f"--tolerance={tolerance}", geometry=geometry)
            for row, verdict in zip(rows, verdicts, strict=True):
                if not row["type"]:
                    self.assertEqual([row[name] for name in DETAILS], ["", "", ""])
                    continue
                critical = float(row["critical_tolerance"])
                self.assertEqual(verdict["shadowed"], str(int(critical <= tolerance)))
                self.assertEqual(row["critical_by"] == "", critical == math.inf)
                seen.add(row["critical_by"])
        self.assertEqual(seen, {"", "BellyPlate", "NCDAnchor"})

    def test_what_always_blocks_has_a_critical_tolerance_of_minus_infinity(self):
        geometry = self.tables(*OPTICS, *NECK_BOSS)
        rows = self.table([CENTRE], [TOP, BOTTOM], DETAILS, geometry=geometry)
        self.assertEqual([[row[name] for name in DETAILS] for row in rows],
                         [["-inf", "NeckBoss", ""], ["inf", "", ""]])

    def test_the_item_is_that_of_explain(self):
        geometry = self.reference_tables()
        events = {f"e{i}": p for i, p in enumerate(random_events(6, 340))}
        pmts = {f"p{i}": p for i, p in enumerate(random_pmts(30, 341))}
        rows = self.table(events, pmts, ["item"], geometry=geometry)
        kinds = collections.Counter()
        for row in rows:
            kind = row["item"].partition(" ")[0]
            kinds[kind] += 1
            if kinds[kind] > 4:
                continue
            explained = json.loads(self.run_command(
                [PROGRAM, "explain", "--geometry", geometry, "--events", "events.csv", "--event",
                 row["event"], "--pmts", "pmts.csv", "--pmt", row["pmt"], "--json"]).out)
            items = [finding["item"] for component in explained.get("components", [])
                     if component["component"] == row["by"]
                     for finding in component["findings"] if finding["blocks"]]
            self.assertEqual(row["item"], items[0]["name"] if items and items[0] else "")
        self.assertGreater(len(kinds), 3, kinds)

    def test_details_are_the_same_on_any_number_of_threads_and_in_a_root_file(self):
        arguments = (random_events(5, 350), random_pmts(40, 351), "--columns",
                     ",".join(DETAILS), "--reflections")
        geometry = self.reference_tables()
        one = self.scan(*arguments, "--threads", 1, geometry=geometry).out
        self.assertEqual(self.scan(*arguments, "--threads", 5, geometry=geometry).out, one)
        self.scan(*arguments, "-o", "out.root", geometry=geometry)
        found = NTuple("verdicts", self.folder / "out.root")
        for name in ("critical_by", "item"):
            column = records(one)[0].index(name)
            self.assertEqual(found.column(name), [cells[column] for cells in records(one)[1:]])
        column = records(one)[0].index("critical_tolerance")
        self.assertEqual([repr(value) for value in found.column("critical_tolerance")],
                         [repr(float(cells[column] or "nan")) for cells in records(one)[1:]])

    def test_bad_lists_are_refused(self):
        for text, wanted in (
                ("tme", 'there is no column "tme"; did you mean time?'),
                ("time,lenght_av", 'there is no column "lenght_av"; did you mean length_av?'),
                ("time,,code", 'there is no column ""; see --help'),
                ("", 'there is no column ""'), ("time,", 'there is no column ""'),
                ("colour", 'there is no column "colour"; see --help'),
                ("Time", 'there is no column "Time"; did you mean time?'),
                ("by", 'there is no column "by"'),
                ("time,code,time", 'the column "time" is given more than once')):
            self.refuse(self.events([CENTRE]), self.pmts([TOP]), "--columns: " + re.escape(wanted),
                        options=["--columns", text])

    def test_columns_need_verdicts(self):
        result = self.scan([CENTRE], [TOP], "--per-pmt", "out.csv", "--columns", "time", status=2)
        self.assertIn("--columns needs -o", result.err)

    def test_the_help_lists_all_names(self):
        shown = self.run_command([PROGRAM, "scan", "--help"]).out.decode()
        for name in NAMES + DETAILS:
            self.assertRegex(shown, rf"\n  {name}  ")


if __name__ == "__main__":
    unittest.main(verbosity=2)
