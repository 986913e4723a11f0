#!/usr/bin/env python3
"""`zarn-shadow tables check` tells what is wrong with tables; the commands that judge light
paths say what is off."""

import json
import sys
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import DATA, PROGRAM, REFERENCE, CommandTest

EXAMPLE = DATA.parent / "examples" / "minimal-detector"


class TablesCheckTest(CommandTest):
    def setUp(self):
        super().setUp()
        self.detector = self.folder / "detector"
        self.detector.mkdir()
        for file in EXAMPLE.iterdir():
            (self.detector / file.name).write_text(file.read_text())

    def replace(self, name, old, new):
        file = self.detector / name
        text = file.read_text()
        self.assertIn(old, text)
        file.write_text(text.replace(old, new))

    def check_tables(self, *options, status=0, source="detector"):
        result = self.run_command([PROGRAM, "tables", "check", source, *options],
                                  status=status)
        self.assertEqual(result.err, "")
        return result.out.decode()

    def findings(self, *options, **more):
        return json.loads(self.check_tables("--json", *options, **more))


class Findings(TablesCheckTest):
    TYPO = ("error: detector/hold_down_ropes.json:4:3: SOLID/hold_down_rope: there is no field "
            "r_rope; found r_rop: a typo?\n")

    def misspell(self):
        self.replace("hold_down_ropes.json", "r_rope", "r_rop")

    def test_a_sound_detector_has_none(self):
        self.assertEqual(self.check_tables(), "no problem found in 25 entries\n")
        self.assertEqual(self.findings("--strict"), [])

    def test_the_reference_detector_has_notes_only(self):
        found = self.findings("--strict", "--pmts", DATA / "pmts.csv", source=REFERENCE)
        self.assertEqual({finding["severity"] for finding in found}, {"note"})

    def test_an_error_is_named_with_its_place_and_status_3(self):
        self.misspell()
        self.assertEqual(self.check_tables(status=3), self.TYPO + "1 error in 25 entries\n")

    def test_a_warning_has_status_3_only_if_asked_for(self):
        self.replace("hold_down_ropes.json", "[0, 180]", "[0, 3.14159]")
        wanted = ("warning: detector/hold_down_ropes.json:9:69: GEO_LOCATIONS/hold_down_rolls "
                  "roll: the rolls look like rad: [0, 3.14159]; rolls are in degrees\n"
                  "1 warning in 25 entries\n")
        self.assertEqual(self.check_tables(), wanted)
        self.assertEqual(self.check_tables("--strict", status=3), wanted)

    def test_a_note_does_not_count(self):
        self.replace("neck_boss.json", '"half_height1"', '"colour": "red", "half_height1"')
        self.assertEqual(self.check_tables("--strict"),
                         "note: detector/neck_boss.json:3:55: SOLID/neck_boss colour: nothing "
                         'reads this field: "red"; remove it\n1 note in 25 entries\n')

    def test_they_are_counted_by_severity(self):
        self.misspell()
        self.replace("ncd_anchors.json", "-2400, -2400, -2400, -2400", "-2400, -2400, 0, 0")
        self.replace("neck_boss.json", '"half_height1"', '"a": 1, "b": 2, "half_height1"')
        self.assertTrue(self.check_tables(status=3).endswith(
            "\n1 error, 1 warning and 2 notes in 25 entries\n"))

    def test_json_has_all_parts(self):
        self.misspell()
        self.assertEqual(self.findings(status=3), [{
            "severity": "error", "component": "AVHDRope", "table": "SOLID",
            "index": "hold_down_rope", "field": "",
            "place": "detector/hold_down_ropes.json:4:3",
            "problem": "there is no field r_rope", "value": "",
            "remedy": "found r_rop: a typo?"}])
        self.replace("hold_down_ropes.json", "r_rop", "r_rope")
        self.replace("vessel.json", "3000", "3100")
        self.assertIsNone(self.findings(status=3)[0]["component"])

    def test_the_run_is_chosen(self):
        self.write("detector/later.json", json.dumps([
            {"table": "GEO", "index": "av", "runs": [1000, None], "pass": 1, "fields": {}}]))
        self.check_tables("--run", "999")
        self.assertIn("detector/later.json:1:2: GEO/av: there is no field neck_boss_z",
                      self.check_tables("--run", "1000", status=3))

    def test_local_tables_are_laid_over(self):
        local = self.write("local.json", json.dumps([
            {"table": "SOLID", "index": "support_rope", "fields": {"r_rope": -1, "z_rope": 1e3}}]))
        self.assertIn("local.json:1:57: SOLID/support_rope r_rope: the length is negative: -1",
                      self.check_tables("--override", local))

    def test_pmts_are_compared_with_the_vessel(self):
        self.check_tables("--strict", "--pmts", EXAMPLE / "pmts.csv")
        pmts = self.write("pmts.csv", "pmt,x,y,z\na,0,0,-100\nb,5000,0,0\nc,5000,0,0\n")
        self.assertEqual(
            self.check_tables("--strict", "--pmts", pmts, status=3).replace(
                f"{self.folder}/", ""),
            "warning: pmts.csv: PMT/c: the PMT has the position of b: (5000, 0, 0); write each "
            "PMT once\n"
            "warning: pmts.csv: PMT/a: the PMT is inside the vessel of 3050 mm: (0, 0, -100); "
            "PMTs are in the water around the vessel: are its radii right?\n"
            "2 warnings in 25 entries\n")

    def test_text_of_files_cannot_control_the_terminal(self):
        self.replace("neck_boss.json", '"half_height1"', '"\\u001b[31m": 1, "half_height1"')
        self.assertNotIn("\x1b", self.check_tables())

    def test_what_cannot_be_read_has_status_2(self):
        for arguments, wanted in (
                (["nowhere.json"], "nowhere.json: cannot be read"),
                (["detector", "--pmts", "nowhere.csv"], "nowhere.csv"),
                (["detector", "--run", "x"], "--run"),
                (["detector", "--strickt"], "did you mean --strict?"),
                ([], "tables check needs SOURCE")):
            with self.subTest(arguments=arguments):
                result = self.run_command([PROGRAM, "tables", "check", *arguments], status=2)
                self.assertIn(wanted, result.err)
                self.assertEqual(result.out, b"")
        self.replace("vessel.json", "3000", "true")
        self.assertIn("vessel.json:2: $[0].fields.r_sphere: expected a number",
                      self.run_command([PROGRAM, "tables", "check", "detector"],
                                       status=2).err)


class OtherCommands(TablesCheckTest):
    """They point to the check, in one line for each component."""

    def lines(self, *options):
        """What scan, explain and map say beside the fixed messages."""
        pmts = ("--pmts", EXAMPLE / "pmts.csv")
        geometry = ("--geometry", "detector")
        said = []
        for arguments in (["scan", "--at", "0,0,0", *pmts, "-o", "out.csv"],
                          ["explain", "--at", "0,0,0", "--to", "5000,0,0"],
                          ["map", "--at", "0,0,0", *pmts, "-o", "out.svg"]):
            result = self.run_command([PROGRAM, *arguments, *geometry, *options])
            said.append([line for line in result.err.splitlines()
                         if line.startswith("detector: ")])
        self.assertEqual(said[0], said[1])
        self.assertEqual(said[0], said[2])
        return said[0]

    def test_they_say_nothing_of_a_sound_detector(self):
        self.assertEqual(self.lines(), [])

    def test_they_name_what_is_off_and_the_command_that_tells_more(self):
        self.replace("hold_down_ropes.json", "r_rope", "r_rop")
        self.assertEqual(self.lines(), [
            "detector: AVHDRope is off: table SOLID, index hold_down_rope: there is no field "
            "r_rope; zarn-shadow tables check detector tells more"])

    def test_they_name_what_has_nothing_to_test(self):
        for field in "xyz":
            self.replace("belly_plates.json", f'"{field}": [', f'"{field}": [], "old_{field}": [')
        (self.detector / "neck_boss.json").unlink()
        local = self.write("my tables.json", "[]")
        self.assertEqual(self.lines("--run", "7", "--override", local), [
            "detector: BellyPlate has nothing to test: table GEO_LOCATIONS, index plates: there "
            "are no positions",
            "detector: NeckBoss is off: table GEO, index av: there is no entry for run 7, so no "
            "field neck_boss_z; zarn-shadow tables check detector --run 7 --override "
            f"'{local}' tells more"])


if __name__ == "__main__":
    unittest.main(verbosity=2)
