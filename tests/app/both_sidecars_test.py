#!/usr/bin/env python3
"""The file beside the verdicts of `zarn-shadow check` and `scan` that says how they
were made."""

import json
import os
import re
import signal
import sys
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import ANCHOR, PROGRAM, VESSEL, anchor_reach, entry
from both_support import BothTest, CheckDriver, ScanDriver
from scan_support import OPTICS

NAME = "out.csv.json"


class Sidecars(BothTest):
    def origin(self, *options, geometry=None):
        self.run_on(self.input(), "-o", "out.csv", *options, geometry=geometry)
        return json.loads(self.read(NAME))

    def fingerprint(self, *entries, run=0):
        geometry = self.tables(*OPTICS, *entries, name="others.json")
        return self.origin("--run", run, geometry=geometry)["fingerprint"]

    def test_it_says_how_the_verdicts_were_made(self):
        version = self.run_command([PROGRAM, "--version"]).out.decode().split()[1]
        for options, run, tolerance in (([], 0, 150), (["--run", 7, "--tolerance", 99.5], 7, 99.5)):
            found = self.origin(*options)
            self.assertRegex(found.pop("fingerprint"), "^[0-9a-f]{64}$")
            self.assertEqual(found, {"program": "zarn-shadow", "version": version, "run": run,
                                     "tolerance": tolerance, **self.MORE})
            self.assertEqual(self.read(NAME)[-2:], b"}\n")
            self.assertEqual(self.read("out.csv"), self.wanted())

    def test_the_fingerprint_does_not_depend_on_the_layout_of_the_tables(self):
        wanted = self.fingerprint(*ANCHOR)
        entries = [*VESSEL, *OPTICS, *ANCHOR]
        for number, one in enumerate(reversed(entries)):
            one = {**dict(reversed(one.items())),
                   "fields": dict(reversed(one["fields"].items())), "pass": number}
            text = json.dumps([one], indent=3)
            self.write(f"tables/{number}.json", re.sub(r"\b(\d+)\.0\b", r"\1e0", text))
        self.write("tables/unused.json", json.dumps([entry("X", "y", {"z": 1}, runs=[5, 6])]))
        self.assertEqual(self.origin(geometry=self.folder / "tables")["fingerprint"], wanted)

    def test_the_fingerprint_changes_with_the_tables_of_the_run(self):
        changed = [self.fingerprint(*ANCHOR),
                   self.fingerprint(*ANCHOR, anchor_reach(60.000000000000007)),
                   self.fingerprint(*ANCHOR, entry("SOLID", "ncd_anchor", {
                       "half_z": 60.0, "r_max": 40.0, "r_min": 0.0})),
                   self.fingerprint(*ANCHOR, entry("GEO", "more", {}))]
        self.assertEqual(len(set(changed)), len(changed))
        other = entry("SOLID", "ncd_anchor", {"half_z": 61.0, "r_max": 40.0}, runs=[5, None])
        self.assertEqual(self.fingerprint(*ANCHOR, other, run=4), changed[0])
        self.assertNotEqual(self.fingerprint(*ANCHOR, other, run=5), changed[0])

    def test_it_stands_beside_regular_files_only(self):
        before = set(os.listdir(self.folder))
        with open(self.folder / "opened.csv", "wb") as out:
            for name in ("-", "/dev/stdout", "/dev/null", f"/dev/fd/{out.fileno()}"):
                self.run_on(self.input(), "-o", name, pass_fds=[out.fileno()])
        self.run_on(self.input())
        found = set(os.listdir(self.folder)) - before
        self.assertEqual([name for name in found if name.endswith(".json")], ["tables.json"])
        self.assertFalse(os.path.exists("/dev/null.json"))

    def test_a_name_that_would_be_too_long_is_left_out(self):
        for length, has_sidecar in ((250, True), (251, False), (255, False)):
            out = "x" * length
            self.run_on(self.input(), "-o", out)
            self.assertEqual(self.read(out), self.wanted())
            self.assertEqual(out + ".json" in os.listdir(self.folder), has_sidecar)

    def test_it_replaces_no_input(self):
        rows = self.input(name="rows.csv.json")
        geometry = self.tables(*OPTICS, *ANCHOR, name="t.csv.json")
        before = rows.read_bytes(), geometry.read_bytes()
        for name in ("rows.csv", "./rows.csv", "t.csv"):
            result = self.run_on(rows, "-o", name, geometry=geometry, status=2)
            self.assertRegex(result.err, rf"{name}\.json.*: is both read and written")
        self.assertEqual((rows.read_bytes(), geometry.read_bytes()), before)
        self.assertFalse((self.folder / "rows.csv").exists())

    def assert_left_alone(self, *options, status, **more):
        self.write("out.csv", "as it was")
        sidecar = self.write(NAME, "as it was, too")
        result = self.run_on(self.input(), "-o", "out.csv", *options, status=status, **more)
        self.assertEqual(self.read("out.csv"), b"as it was")
        self.assertEqual(sidecar.read_bytes(), b"as it was, too")
        return result

    def test_a_full_disk_keeps_the_old_pair(self):
        size = len(self.wanted())
        result = self.assert_left_alone(status=1, preexec_fn=self.limited(size))
        self.assertRegex(result.err, r"out\.csv\.json: (?i:.*file too large)")
        result = self.assert_left_alone(status=1, preexec_fn=self.limited(size - 1))
        self.assertRegex(result.err, r"out\.csv: (?i:.*file too large)")

    def test_bad_input_and_an_interrupt_keep_the_old_pair(self):
        bad = self.write("bad.csv", self.text() + "short\n")
        self.write("out.csv", "as it was")
        self.write(NAME, "as it was, too")
        self.run_on(bad, "-o", "out.csv", status=2)
        process = self.start_writing()
        process.send_signal(signal.SIGINT)
        self.assert_ends(process, 128 + signal.SIGINT)
        self.assertEqual(self.read("out.csv"), b"as it was")
        self.assertEqual(self.read(NAME), b"as it was, too")

    def test_one_that_cannot_be_written_leaves_no_verdicts(self):
        (self.folder / NAME).mkdir()
        result = self.run_on(self.input(), "-o", "out.csv", status=1)
        self.assertIn(NAME + ": cannot be written", result.err)
        self.assertFalse((self.folder / "out.csv").exists())


class CheckSidecars(Sidecars, CheckDriver):
    MORE = {}


class ScanSidecars(Sidecars, ScanDriver):
    MORE = {"wavelength": 400}

    def test_it_has_the_wavelength(self):
        self.assertEqual(self.origin("--wavelength", 380.5)["wavelength"], 380.5)

    def test_it_says_how_positions_were_smeared(self):
        for options, wanted in (
                (["--smear", 0.1], {"sigma": 0.1, "samples": 100, "seed": 1}),
                (["--smear", 0, "--samples", 3, "--seed", -7],
                 {"sigma": 0, "samples": 3, "seed": -7})):
            self.assertEqual(self.origin(*options)["smearing"], wanted)

    def test_no_other_output_can_have_its_name(self):
        for option in ("--paths", "--per-pmt", "--per-event"):
            result = self.run_on(self.input(), "-o", "out.csv", option, NAME, status=2)
            self.assertIn("out.csv.json: is used for two outputs", result.err)
            self.assertFalse((self.folder / NAME).exists())


if __name__ == "__main__":
    unittest.main(verbosity=2)
