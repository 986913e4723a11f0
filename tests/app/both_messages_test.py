#!/usr/bin/env python3
"""What `zarn-shadow check` and `scan` show during the work and at the end."""

import os
import re
import signal
import subprocess
import sys
import time
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import ANCHOR, HOLD_DOWN_ROPES, PLATE, SUPPORT_ROPES, TIMEOUT, entry
from scan_support import OPTICS
from both_support import BothTest, CheckDriver, ScanDriver


class Messages(BothTest):
    def test_numbers_in_the_table_have_thousands_separators(self):
        counts = self.run_on(self.input(12_345)).counts()
        self.assertEqual(counts[self.COUNTED][0], "12,345")
        self.assertEqual(counts["NCDAnchor"], ("12,345", "100.000"))

    def test_a_component_loaded_without_parts_has_nothing_to_test(self):
        # Arrays of unequal lengths give no points; an empty list of rolls gives no ropes.
        unequal = {"x": [0.0, 0.0], "y": [0.0, 0.0], "z": [-5800.0]}
        for component, entries in (
                ("NCDAnchor", [*ANCHOR[:2], entry("GEO_LOCATIONS", "ncd_anchors", unequal)]),
                ("BellyPlate", [*PLATE[:2], entry("GEO_LOCATIONS", "belly_plates", unequal)]),
                ("SupportRope", [*SUPPORT_ROPES[:3],
                                 entry("GEO_LOCATIONS", "hold_up_anchors", unequal)]),
                ("AVHDRope", [*HOLD_DOWN_ROPES[:2],
                              entry("GEO_LOCATIONS", "hold_down_rolls", {"roll": []})])):
            with self.subTest(component=component):
                counts = self.run_on(self.input(),
                                     geometry=self.tables(*OPTICS, *entries)).counts()
                self.assertEqual(counts[component], ("nothing to test", None))
                self.assertEqual(counts["AVPipe"], ("not loaded", None))

    def test_missing_fields_of_a_component_that_is_off_are_reported(self):
        misspelt = entry("SOLID", "ncd_anchor", {"half_z": 60.0, "rmax": 40.0})
        geometry = self.tables(*OPTICS, ANCHOR[0], misspelt, ANCHOR[2])
        messages = self.run_on(self.input(), geometry=geometry).err
        self.assertIn(f"\n{geometry}: NCDAnchor is off: "
                      "table SOLID, index ncd_anchor: there is no field r_max\n", messages)
        messages = self.run_on(self.input(), geometry=self.tables(*OPTICS, *ANCHOR)).err
        self.assertNotIn("NCDAnchor is off", messages)

    def test_a_loaded_component_that_blocks_nothing_counts_zero(self):
        geometry = self.tables(*OPTICS, *PLATE)
        counts = self.run_on(self.input(), geometry=geometry).counts()
        self.assertEqual(counts["BellyPlate"], ("0", "0.000"))


class Threads(BothTest):
    def test_more_threads_than_rows_work(self):
        for count in (0, 1):
            for threads in (1, 64, 1024):
                self.assertEqual(self.run_on(self.input(count), "--threads", threads).out,
                                 self.wanted(count))

    def test_threads_share_the_work(self):
        process = self.start(self.arguments("-", "--threads", 4, "-o", "/dev/null"))
        self.feed_endlessly(process, self.INPUT_HEAD[:-1],
                            "".join(self.row(i) for i in range(1000)).encode())
        tasks = f"/proc/{process.pid}/task"
        self.wait_for(lambda: len(os.listdir(tasks)) >= 4, "four threads")


class Progress(BothTest):
    def on_terminal(self, rows, read_after, feed=None):
        out, shown = self.run_on_terminal(self.arguments(rows), read_after, feed)
        self.assertTrue(out.startswith(self.OUTPUT_HEAD))
        return shown

    def test_a_terminal_shows_a_bar_after_one_second(self):
        shown = self.on_terminal(self.input(2 * self.MANY), 1.5)
        self.assertRegex(shown, r"\[#*\.*\] +\d+ %")
        self.assertRegex(shown, r"[\d,]+ paths, [\d,]+ a second, [^\r]*\bleft")
        shares = [int(share) for share in re.findall(r"\] +(\d+) %", shown)]
        self.assertEqual(shares, sorted(shares))
        self.assertLessEqual(shares[-1], 100)

    def test_the_bar_fits_the_terminal_and_is_removed_before_the_table(self):
        shown = self.on_terminal(self.input(2 * self.MANY), 1.5)
        before, _, after = shown.rpartition("\r\x1b[K")
        self.assertIn(" a second", before)
        self.assertTrue(after.startswith(self.COUNTED + " "), after[:100])
        self.assertNotIn("\x1b", after)
        for bar in re.findall(r"\x1b\[K([^\r\n\x1b]*)", shown):
            self.assertLess(len(bar), 80, bar)

    def test_the_bar_shows_only_a_count_if_the_total_is_unknown(self):
        def feed(process):
            process.stdin.write(self.text(200).encode())
            process.stdin.flush()
            time.sleep(1.5)
            process.stdin.write("".join(self.row(i) for i in range(100)).encode())
            process.stdin.close()
        shown = self.on_terminal("-", 0, feed)
        self.assertRegex(shown, r"[\d,]+ paths, [\d,]+ a second")
        self.assertNotRegex(shown, r"\[#*\.*\]|\bleft\b")

    def test_no_bar_is_shown_for_short_work_or_without_a_terminal(self):
        shown = self.on_terminal(self.input(), 0)
        self.assertIn(self.COUNTED + " ", shown)
        self.assertNotRegex(shown, "\x1b| a second")
        process = self.start(self.arguments(self.input(2 * self.MANY)))
        time.sleep(1.5)
        process.stdout.read()
        self.assertNotRegex(self.assert_ends(process, 0), "[\x1b\r]|a second")

    def test_an_interrupt_removes_the_bar(self):
        master, slave = os.openpty()
        self.addCleanup(os.close, master)
        process = self.start(self.arguments("-"), stderr=slave, stdout=subprocess.DEVNULL)
        os.close(slave)
        self.feed_endlessly(process, self.INPUT_HEAD[:-1],
                            "".join(self.row(i) for i in range(5000)).encode())
        shown = b""
        while b" a second" not in shown:
            shown += os.read(master, 65536)
        process.send_signal(signal.SIGINT)
        self.assertEqual(process.wait(TIMEOUT), 130)
        try:
            while data := os.read(master, 65536):
                shown += data
        except OSError:  # the other end is closed
            pass
        self.assertRegex(shown.rpartition(b"\r\x1b[K")[2].decode(), r"^zarn-shadow: [^\x1b]*$")


class CheckMessages(Messages, CheckDriver):
    pass


class ScanMessages(Messages, ScanDriver):
    pass


class CheckThreads(Threads, CheckDriver):
    pass


class ScanThreads(Threads, ScanDriver):
    pass


class CheckProgress(Progress, CheckDriver):
    pass


class ScanProgress(Progress, ScanDriver):
    pass


if __name__ == "__main__":
    unittest.main(verbosity=2)
