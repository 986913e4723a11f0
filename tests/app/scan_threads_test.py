#!/usr/bin/env python3
"""Threads and memory of `zarn-shadow scan`."""

import itertools
import subprocess
import sys
import threading
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import ANCHOR, TIMEOUT, measures_memory
from scan_support import (
    BOTTOM, CENTRE, OPTICS, ScanTest, TOP, random_events, random_pmts, records, rows_of)


class Threads(ScanTest):
    OUTPUTS = ("verdicts.csv", "paths.csv", "per-pmt.csv", "per-event.csv")

    def outputs(self, events, pmts, *options, **more):
        arguments = itertools.chain(*zip(("-o", "--paths", "--per-pmt", "--per-event"),
                                         self.OUTPUTS))
        result = self.scan(events, pmts, *arguments, *options, **more)
        messages = [text for text in result.err.splitlines() if "second" not in text]
        return [self.read(name) for name in self.OUTPUTS], messages

    def assert_threads_do_not_matter(self, events, pmts, *options, **more):
        wanted = self.outputs(events, pmts, *options, "--threads", 1, **more)
        for threads in (["--threads", 2], ["--threads", 7], []):
            with self.subTest(threads=threads):
                found = self.outputs(events, pmts, *options, *threads, **more)
                for name, a, b in zip(self.OUTPUTS, wanted[0], found[0]):
                    self.assertTrue(a == b, name)
                self.assertEqual(found[1], wanted[1])
        return wanted[0]

    def test_outputs_are_the_same_with_any_number_of_threads(self):
        events = random_events(45, 100) + [("nan", "0", "0"), TOP] * 10
        pmts = random_pmts(20, 101) + [TOP, CENTRE]
        geometry = self.reference_tables()
        self.assert_threads_do_not_matter(events, pmts, "--reflections", geometry=geometry)

    def test_many_cheap_events_stay_in_order(self):
        # Pairs without a path take far less time than others.
        events = {f"{i}": ("nan", "0", "0") if i % 97 else (i / 10, 0.0, 0.0)
                  for i in range(20_000)}
        out = self.assert_threads_do_not_matter(self.events(events), [TOP],
                                                geometry=self.tables(*OPTICS))[0]
        self.assertEqual([row.event for row in rows_of(out)], list(events))

    def test_rows_too_long_to_keep_are_written_alike(self):
        # 40,000 PMTs, with and without light paths and reflections.
        pmts = self.pmts(random_pmts(4000, 110) * 10)
        out = self.assert_threads_do_not_matter([TOP, (0.0, 7000.0, 0.0)], pmts, "--reflections",
                                                "--columns", "time,code", geometry=self.tables(
                                                    *OPTICS, *ANCHOR))[0]
        parts = {}  # the same positions again and again
        for event, pmt, *cells in records(out)[1:]:
            parts.setdefault((event, int(pmt[1:]) // 4000), []).append(cells)
        self.assertEqual(len(parts), 20)
        for (event, _), cells in parts.items():
            self.assertEqual(cells, parts[event, 0])
        self.scan([TOP], pmts, "-o", "out.root")

    def test_many_pmts_of_one_event_stay_in_order(self):
        pmts = {f"{i}": ("nan", "0", "0") if i % 97 else (i / 10, 0.0, 8000.0)
                for i in range(20_000)}
        out = self.assert_threads_do_not_matter([CENTRE], self.pmts(pmts),
                                                geometry=self.tables(*OPTICS))[0]
        self.assertEqual([row.pmt for row in rows_of(out)], list(pmts))


class Memory(ScanTest):
    def peak_of(self, events, pmts, *options):
        """The peak memory of a run, kB, after all its events were processed."""
        geometry = self.tables(*OPTICS)
        process = self.start(self.scan_command("-", pmts, geometry, "-o", "-",
                                               "--per-event", "sums.csv", *options),
                             stdout=subprocess.DEVNULL)
        process.stdin.write(events)
        process.stdin.flush()
        self.wait_until_it_sleeps(process)
        peak = self.peak(process)
        process.stdin.close()
        self.assert_ends(process, 0)
        return peak

    def events_text(self, count):
        lines = [f"event number {i},{i % 5000},0,0\n" for i in range(count)]
        return ("event,x,y,z\n" + "".join(lines)).encode()

    @measures_memory
    def test_memory_does_not_grow_with_the_number_of_events(self):
        pmts = self.pmts([TOP, BOTTOM])
        for threads in (1, 7):
            short, long = (self.peak_of(self.events_text(count), pmts, "--paths", "/dev/null",
                                        "--threads", threads)
                           for count in (10_000, 120_000))
            self.assertLess(long - short, self.SLACK_KB)

    @measures_memory
    def test_memory_does_not_grow_with_the_number_of_events_for_many_pmts(self):
        pmts = self.pmts(random_pmts(2000, 120))
        short, long = (self.peak_of(self.events_text(count), pmts) for count in (20, 150))
        self.assertLess(long - short, self.SLACK_KB)

    def test_events_are_not_read_ahead_of_an_output_that_nobody_reads(self):
        pmts = self.pmts([TOP])
        for threads in (1, 7):
            process = self.start(self.scan_command("-", pmts, self.tables(*OPTICS), "--threads",
                                                   threads))
            fed = 0

            def feed():
                nonlocal fed
                rows = b"".join(b"%06d,0,0,0\n" % i for i in range(1000))
                try:
                    process.stdin.write(b"event,x,y,z\n")
                    while True:
                        process.stdin.write(rows)
                        fed += len(rows)
                except (BrokenPipeError, ValueError):
                    pass
            thread = threading.Thread(target=feed, daemon=True)
            thread.start()
            self.wait_until_it_sleeps(process)
            self.assertLess(fed, 8 << 20)
            process.kill()
            thread.join(TIMEOUT)


if __name__ == "__main__":
    unittest.main(verbosity=2)
