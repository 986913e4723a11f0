#!/usr/bin/env python3
"""The counts and messages of `zarn-shadow scan`, and the reference detector."""

import csv
import json
import re
import sys
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import ANCHOR, COMPONENTS, DATA, INNER_RADIUS, PLATE, REFERENCE, entry, towards
from light_support import dot
from scan_support import (
    BOTTOM, CENTRE, OPTICS, PMT_RADIUS, ScanTest, TOP, in_the_plane, random_events,
    random_pmts, records, rows_of)


class Counts(ScanTest):
    def sums(self, rows, ids, column):
        """The expected content of --per-pmt or --per-event, from the verdicts."""
        lines = []
        for name in ids:
            mine = [row for row in rows if row[column] == name and row.type]
            hits = [row.by for row in mine if row.shadowed == "1"]
            most = max(COMPONENTS, key=hits.count) if hits else ""  # on a tie the first
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

    def test_sums_and_table_match_the_verdicts(self):
        events = {f"e{i}": p for i, p in enumerate(random_events(24, 90))}
        pmts = {f"p{i}": p for i, p in enumerate(random_pmts(30, 91))}
        events["nowhere"] = ("nan", "0", "0")
        pmts["in"] = CENTRE
        geometry = self.reference_tables()
        for options in ([], ["--reflections", "--threads", "3"]):
            result = self.scan(events, pmts, "-o", "-", "--per-pmt", "pmts-out.csv",
                               "--per-event", "events-out.csv", *options, geometry=geometry)
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

    def test_the_table_begins_with_pairs_and_pairs_without_a_path(self):
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

    def test_on_a_tie_the_component_tested_first_is_named(self):
        sideways = towards(60, 0, INNER_RADIUS + 0.1)
        anchor = entry("GEO_LOCATIONS", "ncd_anchors",
                       {axis: [x] for axis, x in zip("xyz", towards(60, 0, INNER_RADIUS))})
        geometry = self.tables(*OPTICS, *PLATE, *ANCHOR[1:2], anchor)
        pmts = {"aside": (PMT_RADIUS, 0.0, 0.0)}
        for events, by in (([CENTRE, sideways], "BellyPlate"), ([sideways, CENTRE], "BellyPlate"),
                           ([CENTRE, sideways, sideways], "NCDAnchor")):
            rows = self.rows(events, pmts, "-o", "-", "--per-pmt", "out.csv",
                             geometry=geometry)
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

    def test_sums_alone_are_those_of_a_scan_that_writes_verdicts(self):
        events, pmts = random_events(30, 92), random_pmts(40, 93)
        geometry = self.reference_tables()
        options = ["--per-pmt", "pmts-out.csv", "--per-event", "events-out.csv", "--reflections"]
        wanted = self.scan(events, pmts, "-o", "-", *options, geometry=geometry)
        sums = [self.read(name) for name in ("pmts-out.csv", "events-out.csv")]
        for threads in (1, 3):
            found = self.scan(events, pmts, *options, "--threads", threads, geometry=geometry)
            self.assertEqual(found.out, b"")
            self.assertEqual([self.read(name) for name in ("pmts-out.csv", "events-out.csv")], sums)
            for label in ("pairs", "no path", "paths", "shadowed", *COMPONENTS):
                self.assertEqual(found.counts()[label], wanted.counts()[label])

    def test_verdicts_go_to_standard_output_only_without_sums_or_on_request(self):
        for option in ("--per-pmt", "--per-event"):
            self.assertEqual(self.scan([CENTRE], [TOP], option, "out.csv").out, b"")
            self.assertEqual(len(rows_of(self.scan([CENTRE], [TOP], option, "out.csv", "-o",
                                                   "-").out)), 1)

    def test_more_rows_than_a_byte_can_count_are_counted(self):
        self.scan([CENTRE] * 1000, [TOP, BOTTOM], "--per-pmt", "out.csv", "--threads", "1")
        self.assertEqual(self.written("out.csv", "pmt"),
                         [["p0", 1000, 0, 0.0, ""], ["p1", 1000, 1000, 1.0, "NCDAnchor"]])

    def test_sums_can_go_to_standard_output(self):
        for option, wanted in (("--per-pmt", b"pmt,paths,shadowed,fraction,by\np0,1,0,0,\n"),
                               ("--per-event", b"event,paths,shadowed,fraction,by\ne0,1,0,0,\n")):
            self.assertEqual(self.scan([CENTRE], [TOP], "-o", "out.csv", option, "-").out, wanted)
            self.assertEqual(self.scan([CENTRE], [TOP], option, "-").out, wanted)


class Messages(ScanTest):
    def test_the_set_up_is_reported_once_with_any_number_of_threads(self):
        for threads in (1, 7):
            result = self.scan(random_events(9, 160), [TOP], "--threads", threads,
                               geometry=self.tables(*OPTICS, *ANCHOR))
            for text in ("Cannot load AV hold-down rope parameters, these will not be loaded.",
                         "Loaded NCD anchor shadowing information."):
                self.assertEqual(result.err.count("ShadowingCalculator: " + text + "\n"), 1, text)

    def test_the_work_prints_no_messages(self):
        def messages_of(events, pmts):
            result = self.scan(events, pmts, "--reflections", geometry=self.reference_tables())
            return [text for text in result.err.splitlines()
                    if not re.match(r" *[\w/ ]+ +[\d,.]+( |$)", text)]
        quiet = messages_of([], [])
        events = random_events(30, 170) + [CENTRE, TOP, ("nan", "0", "0")]
        self.assertEqual(messages_of(events, random_pmts(30, 171) + [TOP, BOTTOM, CENTRE]), quiet)


class ReferenceDetector(ScanTest):
    def first_rows(self, name, count, step=1):
        lines = (DATA / name).read_text().splitlines(keepends=True)
        return self.write(name, lines[0] + "".join(lines[1::step][:count]))

    def test_the_source_scan_and_pmts_can_be_scanned(self):
        events = self.first_rows("source-scan.csv", 50)
        pmts = self.first_rows("pmts.csv", 120, step=66)
        rows = self.rows(events, pmts, "--paths", "paths.csv", geometry=REFERENCE)
        self.assertEqual(len(rows), 50 * 120)
        shadowed = sum(row.shadowed == "1" for row in rows)
        self.assertGreater(shadowed, 0.05 * len(rows))
        self.assertLess(shadowed, 0.6 * len(rows))
        found = self.check("paths.csv", geometry=REFERENCE).verdicts()
        self.assertEqual(found, [row.by for row in rows if row.type])

    def test_the_pmts_are_those_of_the_table(self):
        fields = json.loads((REFERENCE / "pmts.json").read_text())[0]["fields"]
        pmts = list(csv.DictReader((DATA / "pmts.csv").read_text().splitlines()))
        self.assertEqual([[float(pmt[axis]) for pmt in pmts] for axis in "xyz"],
                         [fields[axis] for axis in "xyz"])
        self.assertEqual(len({pmt["pmt"] for pmt in pmts}), 8000)

    def test_the_media_bend_blue_light_more_than_red(self):
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
