#!/usr/bin/env python3
"""`zarn-shadow explain`."""

import json
import re
import sys
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import (
    ANCHOR, COMPONENTS, DATA, HEADER, PIPES, PROGRAM, REFERENCE, anchor_reach)
from check_support import FAR_FROM_ANCHOR, NEAR_ANCHOR, row_with, table
from light_support import FROM_INSIDE, REFLECTION
from scan_support import (
    BOTTOM, CENTRE, NEAR_THE_WALL, OPTICS, REFLECTING, ScanTest, TOP, optics, random_events,
    random_pmts)

VERDICT = "verdict: shadowed by {}, the first in the order of tests that blocks\n"


class ExplainTest(ScanTest):
    def explain(self, *options, geometry=None, **more):
        geometry = geometry or self.tables(*OPTICS, *ANCHOR, *PIPES)
        return self.run_command([PROGRAM, "explain", "--geometry", geometry, *options], **more)

    def text(self, *options, **more):
        return self.explain(*options, **more).out.decode()

    def json(self, *options, **more):
        return json.loads(self.text("--json", *options, **more))

    def refused(self, *options, **more):
        result = self.explain(*options, status=2, **more)
        self.assertEqual(result.out, b"")
        return result.err


class Answers(ExplainTest):
    def test_a_path_between_positions_is_explained_in_words(self):
        text = self.text("--at", "0, 0, 0", "--to", "0,0,-8300")
        self.assertIn(f"path: {FROM_INSIDE}\n  start: (0, 0, 0)\n  end: (0, 0, -8300)\n", text)
        self.assertIn("length: 5800 mm inside the vessel, 60 mm in the wall, 2440 mm in water",
                      text)
        self.assertIn("NCDAnchor: blocks\n  segment 1: nearest anchor 60 mm from the crossing, "
                      "limit 210 mm (anchor 0): blocks\n", text)
        self.assertIn("AVHDRope: off, its tables are missing\n", text)
        self.assertTrue(text.endswith(VERDICT.format("NCDAnchor")), text)

    def test_names_in_files_give_the_same_as_positions(self):
        files = ["--events", self.events({"7": CENTRE, "8": TOP}),
                 "--pmts", self.pmts({"a b": TOP, "": BOTTOM})]
        self.assertEqual(self.text(*files, "--event", "7", "--pmt", ""),
                         self.text("--at=0,0,0", "--to=0,0,-8300"))
        read = self.write("pmts2.csv", self.pmts({"x": TOP}).read_bytes())
        self.assertEqual(self.text("--events", "-", "--event", "7", "--pmts", read, "--pmt", "x",
                                   stdin=self.events({"7": CENTRE}).read_bytes()),
                         self.text("--at=0,0,0", "--to=0,0,8300"))

    def test_a_row_of_paths_counts_from_1(self):
        paths = self.write("paths.csv", table(FAR_FROM_ANCHOR, NEAR_ANCHOR, FAR_FROM_ANCHOR))
        verdicts = [self.json(paths, "--row", row)["by"] for row in (1, 2, 3)]
        self.assertEqual(verdicts, [None, "NCDAnchor", None])
        many = table(*[FAR_FROM_ANCHOR] * 20_000, NEAR_ANCHOR)  # several blocks
        self.assertEqual(self.json("-", "--row", 20_001, stdin=many.encode())["by"], "NCDAnchor")

    def test_the_verdicts_are_those_of_scan_and_check(self):
        geometry = self.reference_tables()
        events, pmts = random_events(6, 400), random_pmts(4, 401)
        rows, paths = self.paths(events, pmts, "--reflections", geometry=geometry)
        rows = [row for row in rows if row.type]
        seen = set()
        for number, (row, path) in enumerate(zip(rows, paths, strict=True), 1):
            seen.add(row.type)
            names = ["--events", "events.csv", "--event", row.event, "--pmts", "pmts.csv",
                     "--pmt", row.pmt, *(["--reflections"] if row.type == REFLECTION else [])]
            by_names = self.json(*names, geometry=geometry)
            self.assertEqual(by_names["path"]["type"], row.type)
            self.assertEqual(by_names["by"] or "", row.by)
            self.assertEqual(self.json("paths.csv", "--row", number, geometry=geometry), by_names)
        self.assertGreater(len(seen), 4)

    def test_the_components_come_in_the_order_of_tests(self):
        found = self.json(DATA / "example-paths.csv", "--row", 1, geometry=REFERENCE)
        self.assertEqual([c["component"] for c in found["components"]], list(COMPONENTS))
        self.assertEqual({c["state"] for c in found["components"]}, {"on"})

    def test_the_reason_for_no_path_is_told(self):
        reflecting = self.tables(*optics(*REFLECTING))
        at = "--at=" + ",".join(map(str, NEAR_THE_WALL))
        events = self.events({"nan": ("nan", "0", "0")})
        for options, reason in (
                ((at, "--to=0,8300,0"), "total reflection"),
                (("--at=0,0,0", "--to=0,0,5830"), "PMT not in the water"),
                (("--at=0,0,7000", "--to=0,0,7000"), "event at the PMT"),
                (("--events", events, "--event=nan", "--pmts", self.pmts({"p": TOP}), "--pmt=p"),
                 "position not finite"),
                (("--at=0,0,0", "--to=0,0,8300", "--reflections"), "no reflected path"),
                (("--at=0,0,0", "--to=0,0,5830", "--reflections"), "PMT not in the water")):
            self.assertEqual(self.text(*options, geometry=reflecting),
                             f"no light path: {reason}\n")
            self.assertEqual(self.json(*options, geometry=reflecting),
                             {"path": None, "no_path": reason})

    def test_reflected_light_is_explained(self):
        positions = "--at=7000,0,0", "--to=6000,6000,0"
        self.assertEqual(self.json(*positions)["path"]["type"], "Water")
        self.assertEqual(self.json(*positions, "--reflections")["path"]["type"], REFLECTION)

    def test_run_tolerance_and_wavelength_are_used(self):
        positions = "--at=0,0,0", "--to=0,0,-8300"
        self.assertEqual(self.json(*positions)["by"], "NCDAnchor")
        self.assertIsNone(self.json(*positions, "--tolerance=-1")["by"])
        in_run_10 = self.tables(*OPTICS, *ANCHOR, anchor_reach(500.0, runs=[10, 10]))
        for run, reach in ((9, 210), (10, 650)):
            anchor = self.json(*positions, "--run", run, geometry=in_run_10)["components"][3]
            self.assertEqual(anchor["findings"][0]["limit"], reach)
        geometry = self.tables(*optics({"refractive_index": [1.6, 1.5, 1.45],
                                        "wavelength": [300, 400, 500]}, 1.5, 1.3))
        blue, red = (self.json(*positions, "--wavelength", nm, geometry=geometry)["path"]
                     for nm in (350, 450))
        self.assertGreater(blue["time_of_flight"], red["time_of_flight"])

    def test_a_row_of_paths_needs_no_media(self):
        paths = self.write("paths.csv", table(NEAR_ANCHOR))
        without = self.json(paths, "--row=1", geometry=self.tables(*ANCHOR))
        self.assertNotIn("time_of_flight", without["path"])
        self.assertIn("time_of_flight", self.json(paths, "--row=1")["path"])

    def test_a_path_of_unknown_type_is_explained(self):
        paths = self.write("paths.csv", table(row_with("type", "odd")))
        self.assertIn("path: unknown type\n", self.text(paths, "--row=1"))


class BadInput(ExplainTest):
    def test_the_path_must_be_given_in_one_way(self):
        paths = self.write("paths.csv", table(NEAR_ANCHOR))
        one_of = ("explain needs one of: --at and --to; --events, --event, --pmts and --pmt; "
                  "PATHS and --row")
        for options, wanted in (
                ((), one_of), (("--at=0,0,0", "--to=0,0,1", paths, "--row=1"), one_of),
                (("--at=0,0,0", "--pmts=a", "--pmt=b"), one_of),
                (("--at=0,0,0",), "--at needs --to"), (("--row=1",), "--row needs PATHS"),
                ((paths,), "PATHS needs --row"),
                (("--event=1",), "--event needs --events, --pmts and --pmt"),
                ((paths, "--row=1", "--reflections"), "--reflections is for positions"),
                ((paths, "--row=0"), '--row: "0" is less than 1'),
                ((paths, "--row=x"), '--row: "x" is not a whole number'),
                (("--at=0,0", "--to=0,0,0"), '--at: "0,0" is not three numbers'),
                (("--at=0,0,0", "--to=0,0,inf"), '--to: "0,0,inf"|--to: "inf" is not finite'),
                (("--threads=2",), 'explain has no option "--threads"'),
                (("--events=-", "--event=a", "--pmts=-", "--pmt=b"),
                 "standard input is used twice")):
            self.assertRegex(self.refused(*options), re.escape(wanted).replace(r"\|", "|"))

    def test_an_unknown_name_is_answered_with_the_nearest(self):
        files = ["--events", self.events({"z=5500": CENTRE, "z=3000": TOP}),
                 "--pmts", self.pmts({"12": TOP, "13": BOTTOM})]
        for event, pmt, wanted in (
                ("z=300", "12", 'events.csv: there is no event "z=300"; did you mean z=3000?'),
                ("z=5500", "x", 'pmts.csv: there is no pmt "x"\n'),
                ("z=5500", "1213", 'pmts.csv: there is no pmt "1213"\n')):
            self.assertIn(wanted, self.refused(*files, "--event", event, "--pmt", pmt))

    def test_a_name_of_two_rows_is_refused(self):
        events = self.write("events.csv", "event,x,y,z\na,0,0,0\nb,0,0,0\na,1,0,0\n")
        files = ["--events", events, "--pmts", self.pmts({"p": TOP}), "--pmt=p"]
        self.assertRegex(self.refused(*files, "--event=a"),
                         r'events.csv: line 4.*"a" is the name of an earlier row, too')
        self.assertEqual(self.explain(*files, "--event=b").status, 0)

    def test_bad_files_are_named_with_the_place(self):
        paths = self.write("paths.csv", table(NEAR_ANCHOR, row_with("end_y", "1,5"),
                                              row_with("av1_x", "bad")))
        short = self.write("short.csv", table(NEAR_ANCHOR))
        for options, wanted in (
                ((short, "--row=2"), "short.csv: there is no row 2; the number of rows is 1"),
                ((self.write("none.csv", HEADER + "\n"), "--row=1"), "the number of rows is 0"),
                ((paths, "--row=3"), "paths.csv: line 3"),
                ((self.write("cell.csv", table(NEAR_ANCHOR, row_with("av1_x", "bad"))), "--row=2"),
                 r'cell.csv: line 3.*av1_x: "bad"'),
                (("missing.csv", "--row=1"), "missing.csv"),
                (("--events=missing.csv", "--event=1", "--pmts=p", "--pmt=1"), "missing.csv"),
                (("--events", self.write("e.csv", "event,x,y,z\n1,2,three,4\n"), "--event=1",
                  "--pmts=p", "--pmt=1"), r'e.csv: line 2.*column y: "three"')):
            self.assertRegex(self.refused(*options), wanted)

    def test_positions_need_media(self):
        self.assertRegex(self.refused("--at=0,0,0", "--to=0,0,8300", geometry=self.tables()),
                         "OPTICS")


class Help(ExplainTest):
    def test_the_help_shows_the_ways(self):
        shown = self.run_command([PROGRAM, "explain", "--help"]).out.decode()
        for name in ("--at X,Y,Z", "--row N", "--events EVENTS", "--json"):
            self.assertIn(name, shown)
        self.assertRegex(self.run_command([PROGRAM, "--help"]).out.decode(), r"\n  explain ")


if __name__ == "__main__":
    unittest.main(verbosity=2)
