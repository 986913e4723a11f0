#!/usr/bin/env python3
"""Events and PMTs in ROOT files as input of `zarn-shadow scan` and `explain`."""

import pathlib
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import CommandTest, DATA, PROGRAM, REFERENCE
from root_support import NTuple, root_job, write_root

EVENTS, PMTS = DATA / "source-scan.csv", DATA / "pmts.csv"


class RootInput(CommandTest):
    """Files are written once for all tests."""

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="zarn-test-")
        cls.addClassCleanup(folder.cleanup)
        cls.files = pathlib.Path(folder.name)
        many = "".join(f"{i},{i / 7 - 400},{i % 13},{-i}\n" for i in range(6000))
        (cls.files / "many.csv").write_text("event,x,y,z\n" + many)
        (cls.files / "other.csv").write_text(
            EVENTS.read_text().replace("event,x", "name,pos_x", 1))
        (cls.files / "late.csv").write_text(
            "event,x,y,z\n" + "1,0,0,0\n" * 5000 + "late,0,0,0\n")
        write_root(
            root_job(EVENTS, cls.files / "both.root", tree="events", texts=("event",)),
            root_job(PMTS, cls.files / "both.root", "RNTuple", tree="pmts", texts=(), pmt="int32",
                     mode="UPDATE"),
            root_job(PMTS, cls.files / "pmts.root", texts=(), pmt="int64"),
            root_job(cls.files / "many.csv", cls.files / "many.root", "RNTuple", texts=(),
                     event="uint32"),
            root_job(cls.files / "other.csv", cls.files / "other.root", texts=("name",)),
            root_job(cls.files / "late.csv", cls.files / "late.root", texts=("event",)))

    def scan(self, events, pmts, *options, **more):
        return self.run_command([PROGRAM, "scan", "--events", self.files / events, "--pmts",
                                 self.files / pmts, "--geometry", REFERENCE, *options], **more)

    def test_verdicts_are_those_of_the_csv(self):
        self.scan(EVENTS, PMTS, "-o", "csv.csv", "--per-event", "csv-counts.csv")
        self.scan("both.root:events", "both.root:pmts", "-o", "root.csv", "--per-event",
                  "root-counts.csv", "--threads", 7)
        for name in (".csv", "-counts.csv"):
            self.assertEqual((self.folder / f"root{name}").read_bytes(),
                             (self.folder / f"csv{name}").read_bytes())

    def test_many_events_are_those_of_the_csv(self):
        few = self.write("few.csv", "pmt,x,y,z\n0,8300,0,0\n1,0,0,-8300\n")
        wanted = self.scan("many.csv", few).out
        self.assertEqual(wanted.count(b"\n"), 12_001)
        self.assertEqual(self.scan("many.root", few).out, wanted)

    def test_integers_stay_integers(self):
        few = self.write("few.csv", "event,x,y,z\n3,0,0,0\n")
        self.scan(few, "pmts.root", "-o", "out.root")
        self.assertEqual(NTuple("verdicts", self.folder / "out.root").rows[7][:2], [3, 7])

    def test_columns_can_have_other_names(self):
        columns = ["--input-columns", "event=name,event_x=pos_x"]
        wanted = self.scan(EVENTS, PMTS).out
        self.assertEqual(self.scan("other.root", "pmts.root", *columns).out, wanted)
        self.assertEqual(self.scan("other.csv", PMTS, *columns).out, wanted)
        result = self.scan("other.root", "pmts.root", "--input-columns",
                           "event=name,event_x=pos_y", status=2)
        self.assertIn('other.root: tree "paths": missing columns: pos_y; did you mean pos_x?\n',
                      result.err)
        result = self.scan("other.csv", PMTS, "--input-columns", "evnt=name", status=2)
        self.assertIn('--input-columns: there is no column "evnt"; did you mean event?',
                      result.err)

    def test_bad_input_is_refused_with_its_place(self):
        for events, pmts, reason in (
                ("both.root", "pmts.root", r"both.root: which tree\? .*; there are events, pmts"),
                ("both.root:pmts", "pmts.root", "missing columns: event"),
                ("pmts.root", "both.root:pmts", 'pmts.root: tree "paths": missing columns: event'),
                ("both.root:events", "both.root:events", "both.root:events: is used for two"),
                (EVENTS, EVENTS, "source-scan.csv: is used for two inputs")):
            result = self.scan(events, pmts, "-o", "out.csv", status=2)
            self.assertRegex(result.err, reason)
        few = self.write("few.csv", "pmt,x,y,z\n" + "0,8300,0,0\n" * 20)
        result = self.scan("late.root", few, "-o", "out.root", status=2)
        self.assertIn('late.root: tree "paths", column event, entry 5000: "late" is not an '
                      "integer", result.err)
        result = self.scan("many.root", few, "--per-pmt", self.files / "many.root", status=2)
        self.assertIn("is both read and written", result.err)

    def test_explain_finds_events_and_pmts(self):
        ask = [PROGRAM, "explain", "--event", "z=5500", "--pmt", 5, "--geometry", REFERENCE]
        wanted = self.run_command([*ask, "--events", EVENTS, "--pmts", PMTS]).out
        root = [*ask, "--events", self.files / "other.root", "--pmts", self.files / "pmts.root",
                "--input-columns", "event=name,event_x=pos_x"]
        self.assertEqual(self.run_command(root).out, wanted)
        root[root.index("z=5500")] = "z=5501"
        result = self.run_command(root, status=2)
        self.assertIn('other.root: tree "paths": there is no event "z=5501"; did you mean',
                      result.err)
        result = self.run_command([PROGRAM, "explain", "--at", "0,0,0", "--to", "8300,0,0",
                                   "--geometry", REFERENCE, "--input-columns", "event=name"],
                                  status=2)
        self.assertIn("--input-columns is for files", result.err)


if __name__ == "__main__":
    unittest.main(verbosity=2)
