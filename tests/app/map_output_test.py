#!/usr/bin/env python3
"""The files that `zarn-shadow map` writes."""

import json
import os
import signal
import struct
import sys
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import PROGRAM
from map_support import EVENT, FORMATS, MapTest, SMALL, at, words_of
from scan_support import CENTRE, OPTICS, PMT_RADIUS, TOP, random_events, random_pmts


class Pictures(MapTest):
    def picture(self, name, *options):
        self.map(*options, "-o", name)
        return self.read(name)

    def setUp(self):
        super().setUp()
        self.some = at(CENTRE), "--pmts", self.pmts(random_pmts(100, 720))

    def test_the_end_of_the_name_chooses_the_format(self):
        for options in (self.some, (at(CENTRE), "--radius", PMT_RADIUS, *SMALL)):
            for suffix, begin in FORMATS.items():
                found = self.picture("map" + suffix, *options)
                self.assertEqual(found[:len(begin)], begin)
                self.assertEqual(self.picture("map" + suffix, *options), found)

    def test_without_a_name_standard_output_gets_svg(self):
        wanted = self.picture("map.svg", *self.some)
        for options in ((), ("-o", "-"), ("-o", "/dev/stdout")):
            self.assertEqual(self.map(*self.some, *options).out, wanted)

    def test_a_pipe_gets_svg(self):
        reader, writer = os.pipe()
        self.addCleanup(os.close, reader)
        wanted = self.picture("map.svg", at(CENTRE), "--pmts", self.pmts([TOP]), "--no-panel")
        process = self.start([PROGRAM, "map", "--geometry", "tables.json", at(CENTRE), "--pmts",
                              "pmts.csv", "--no-panel", "-o", f"/dev/fd/{writer}"],
                             pass_fds=[writer])
        os.close(writer)
        found = b""
        while text := os.read(reader, 65536):
            found += text
        self.assert_ends(process, 0)
        self.assertEqual(found, wanted)

    def test_the_size_is_that_of_the_picture(self):
        png = self.picture("map.png", *self.some, "--size", "600x450")
        width, height = struct.unpack(">II", png[16:24])
        self.assertEqual(width / height, 600 / 450)
        svg = self.picture("map.svg", *self.some, "--size", "600x450").decode()
        self.assertRegex(svg, r'width="600(px)?"')
        self.assertRegex(svg, r'height="450(px)?"')

    def test_title_theme_panel_and_tolerances_change_the_picture(self):
        usual = self.picture("map.svg", *self.some)
        self.assertNotEqual(self.picture("dark.svg", *self.some, "--theme", "dark"), usual)
        self.assertEqual(self.picture("map.svg", *self.some, "--theme", "light"), usual)
        self.assertNotEqual(self.picture("map.svg", *self.some, "--no-panel"), usual)
        for tolerances in ("0,150", "0:300:50", "300,0,150"):
            self.assertNotEqual(self.picture("map.svg", *self.some, "--tolerances", tolerances),
                                usual)
        self.assertEqual(self.picture("map.svg", *self.some, "--tolerances", "300,0,150"),
                         self.picture("map.svg", *self.some, "--tolerances", "0:300:150"))
        title = 'Ropes & <plates> "run"'
        svg = self.picture("map.svg", *self.some, "--title", title)
        self.assertIn(title, words_of(svg))

    def test_the_words_tell_run_tolerance_wavelength_and_tables(self):
        words = " ".join(words_of(self.picture("map.svg", *self.some, "--run", 7, "--tolerance",
                                               40, "--wavelength", 500)))
        for part in ("run 7", "40 mm", "500 nm", "tables"):
            self.assertIn(part, words)

    def test_the_folder_of_the_command_has_its_name(self):
        folder = self.folder / "survey"
        folder.mkdir()
        self.tables(*OPTICS, name="survey/tables.json")
        options = at(CENTRE), "--pmts", self.pmts([TOP])
        wanted = self.map(*options, geometry=folder).out
        self.assertIn("survey", " ".join(words_of(wanted)))
        for geometry in (".", "./", "../survey", "../survey/../survey/."):
            self.assertEqual(self.map(at(CENTRE), "--pmts", "../pmts.csv", geometry=geometry,
                                      cwd=folder).out, wanted)

    def test_beside_the_data_stands_how_they_were_made(self):
        self.map(*self.some, "--data", "data.csv", "--run", 7, "--tolerance", 40, "-o", "map.svg")
        origin = json.loads(self.read("data.csv.json"))
        self.assertEqual((origin["program"], origin["run"], origin["tolerance"],
                          origin["wavelength"]), ("zarn-shadow", 7, 40, 400))
        self.assertFalse((self.folder / "map.svg.json").exists())
        # On a comparison, those of the columns shadowed and by.
        other = self.tables(*OPTICS, name="other.json")
        self.map(*self.some, "--data", "data.csv", "--run", 7, "--compare", other,
                 "--compare-run", 8)
        found = json.loads(self.read("data.csv.json"))
        self.map(*self.some, "--data", "data.csv", "--run", 8, geometry=other)
        self.assertEqual(found, json.loads(self.read("data.csv.json")))
        self.assertNotEqual(found["fingerprint"], origin["fingerprint"])
        out = self.map(*self.some, "--data", "-", "-o", "map.svg").out
        self.assertEqual(out.split(b"\n")[0], b"pmt,x,y,z,azimuth,polar_angle,shadowed,by")
        self.assertNotIn("-.json", os.listdir(self.folder))


class Failures(MapTest):
    def setUp(self):
        super().setUp()
        self.some = at(CENTRE), "--pmts", self.pmts(random_pmts(100, 721)), "--no-panel"

    def test_a_full_disk_leaves_no_partial_file(self):
        for suffix in FORMATS:
            for size in (1, 1000, 5000):
                old = self.write("old" + suffix, "as it was")
                for name in (old, "new" + suffix):
                    result = self.map(*self.some, "-o", name, status=1,
                                      preexec_fn=self.limited(size))
                    self.assertRegex(result.err, f"{suffix}: .*[Ff]ile too large")
                self.assertEqual(old.read_bytes(), b"as it was")
                self.assertFalse((self.folder / ("new" + suffix)).exists())
                self.assert_no_temporaries()

    def test_a_full_disk_for_one_file_leaves_all_unchanged(self):
        old = self.write("old.svg", "as it was")
        for options in (("-o", old, "--data", "/dev/full"), ("-o", "/dev/full", "--data", "d.csv")):
            result = self.map(*self.some, *options, status=1)
            self.assertRegex(result.err, "/dev/full: .*(?i:no space)")
            self.assertEqual(old.read_bytes(), b"as it was")
            self.assertFalse((self.folder / "d.csv").exists())
            self.assertFalse((self.folder / "d.csv.json").exists())
        with open("/dev/full", "wb") as full:
            result = self.map(*self.some, status=1, stdout=full)
        self.assertRegex(result.err, "(?i)standard output.*no space")

    def test_one_file_for_two_purposes_is_refused(self):
        events = self.events([CENTRE])
        picture = self.write("pmts.svg", self.pmts([TOP]).read_bytes())
        for options, wanted in (
                (("-o", picture, "--pmts", picture, at(CENTRE)), "both read and written"),
                (("--data", events, "--events", events, "--pmts", "pmts.csv"),
                 "both read and written"),
                (("--data", "pmts.csv", at(CENTRE), "--pmts", "pmts.csv"),
                 "both read and written"),
                (("--data", "-", at(CENTRE), "--pmts", "pmts.csv"), "used for two outputs"),
                (("-o", "a.svg", "--data", "a.svg", at(CENTRE), "--pmts", "pmts.csv"),
                 "used for two outputs"),
                (("--events", "-", "--pmts", "-"), "standard input is used twice"),
                (("--events", events, "--pmts", events), "used for two inputs")):
            self.assertIn(wanted, self.refused(*options))
        other = self.tables(name="other.json")
        os.rename(other, self.folder / "other.svg")
        self.assertIn("both read and written", self.refused(
            *self.some[:-1], "--compare", "other.svg", "-o", "other.svg"))

    def test_an_interrupt_ends_the_work_and_leaves_old_files_unchanged(self):
        old = self.write("old.svg", "as it was")
        # For minutes of work.
        self.write("events.csv", "event,x,y,z\n" + 200_000 * "e,0,0,3000\n")
        self.pmts(random_pmts(300, 723))
        arguments = [PROGRAM, "map", "--geometry", self.reference_tables(), "-o", old, "--data",
                     "data.csv"]
        for number in (signal.SIGINT, signal.SIGTERM):
            process = self.start([*arguments, "--events", "events.csv", "--pmts", "pmts.csv"])
            self.wait_for(self.temporaries, "a temporary file")
            process.send_signal(number)
            self.assertIn("interrupted", self.assert_ends(process, 128 + number, timeout=30))
            self.assertEqual(old.read_bytes(), b"as it was")
            self.assertFalse((self.folder / "data.csv").exists())
            self.assert_no_temporaries()

    def test_long_work_shows_its_progress(self):
        # Well over a second on one thread, after which the bar appears.
        slower = 4 if {"ASAN_OPTIONS", "TSAN_OPTIONS"} & set(os.environ) else 1
        self.events(random_events(3000 // slower, 724))
        self.pmts(random_pmts(300, 725))
        _, shown = self.run_on_terminal(
            [PROGRAM, "map", "--geometry", self.reference_tables(), "--events", "events.csv",
             "--pmts", "pmts.csv", "-o", "map.svg", "--threads", "1"])
        self.assertRegex(shown, r"\[#*\.*\] \d+ %  [\d,]+ paths, ")
        self.assertIn("paths/second", shown)

    def test_a_closed_pipe_ends_silently(self):
        reader, writer = os.pipe()
        os.close(reader)
        self.addCleanup(os.close, writer)
        result = self.map(*self.some, status=128 + signal.SIGPIPE, stdout=writer)
        self.assertNotIn("zarn-shadow:", result.err)


class Events(MapTest):
    def test_standard_input_can_hold_events_or_pmts(self):
        pmts = self.pmts(random_pmts(30, 726))
        wanted = self.data(at(EVENT), "--pmts", pmts)[0]
        self.assertEqual(self.data(at(EVENT), "--pmts", "-", stdin=pmts.read_bytes())[0], wanted)
        events = self.events({"x": EVENT}).read_bytes()
        self.assertEqual(self.data("--events", "-", "--pmts", pmts, stdin=events)[0], wanted)

    def test_columns_can_have_other_names(self):
        wanted = self.data(at(TOP), "--pmts", self.pmts([(0, 8300, 0)]))[0]
        pmts = self.write("ids.csv", "id,a,y,z\np0,0.0,8300.0,0.0\n")
        self.assertEqual(self.data(at(TOP), "--pmts", pmts, "--input-columns",
                                   "pmt=id,pmt_x=a")[0], wanted)


if __name__ == "__main__":
    unittest.main(verbosity=2)
