#!/usr/bin/env python3
"""How `zarn-shadow check` and `scan` react to signals."""

import os
import signal
import sys
import time
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from both_support import BothTest, CheckDriver, ScanDriver


class Signals(BothTest):
    def rows_of_bytes(self):
        return "".join(self.row(i) for i in range(1000)).encode()

    def assert_left_alone(self, process, number, **more):
        """It ends with the signal's status, prints no table and leaves no file."""
        process.send_signal(number)
        err = self.assert_ends(process, 128 + number, **more)
        self.assertNotIn("paths/second", err)
        self.assert_no_temporaries()

    def test_a_signal_while_reading_a_slow_pipe_changes_nothing(self):
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            old = self.write("out.csv", "as it was")
            self.assert_left_alone(self.start_writing(), number)
            self.assertEqual(old.read_bytes(), b"as it was")

    def test_an_interrupt_leaves_no_new_file(self):
        self.assert_left_alone(self.start_writing(), signal.SIGINT)
        self.assertFalse((self.folder / "out.csv").exists())

    def test_an_interrupt_within_a_long_file_changes_nothing(self):
        old = self.write("out.csv", "as it was")
        rows = self.write("rows.csv", self.INPUT_HEAD.encode() + self.rows_of_bytes() * 1000)
        process = self.start(self.arguments(rows, "-o", old))
        self.wait_for(lambda: any(p.stat().st_size > 0 for p in self.temporaries()),
                      "some output")
        self.assert_left_alone(process, signal.SIGINT)
        self.assertEqual(old.read_bytes(), b"as it was")

    def test_an_interrupt_stops_an_endless_input(self):
        process = self.start(self.arguments("-", "-o", "out.csv"))
        self.feed_endlessly(process, self.INPUT_HEAD[:-1], self.rows_of_bytes())
        self.wait_for(lambda: any(p.stat().st_size > 0 for p in self.temporaries()),
                      "some output")
        self.assert_left_alone(process, signal.SIGINT)
        self.assertFalse((self.folder / "out.csv").exists())

    def test_a_signal_stops_a_run_whose_output_nobody_reads(self):
        for threads, number in ((1, signal.SIGINT), (7, signal.SIGTERM)):
            process = self.start(self.arguments("-", "--threads", threads))
            self.feed_endlessly(process, self.INPUT_HEAD[:-1], self.rows_of_bytes())
            self.wait_until_it_sleeps(process)
            self.assert_left_alone(process, number)

    def test_an_interrupt_stops_all_threads(self):
        process = self.start_writing(count=60_000, threads=7)  # several threads are at work
        self.assert_left_alone(process, signal.SIGINT, timeout=20)
        self.assertFalse((self.folder / "out.csv").exists())

    def test_an_interrupt_stops_the_wait_for_the_other_end_of_a_pipe(self):
        pipe = self.folder / "pipe"
        os.mkfifo(pipe)
        for what, arguments in (("rows", self.arguments(pipe)),
                                ("output", self.arguments(self.input(), "-o", pipe)),
                                ("geometry", self.arguments(self.input(), geometry=pipe))):
            with self.subTest(what=what):
                process = self.start(arguments)
                self.wait_until_it_sleeps(process)
                self.assert_left_alone(process, signal.SIGINT, timeout=20)

    def test_an_interrupt_stops_reading_geometry_from_a_slow_pipe(self):
        pipe = self.folder / "pipe"
        os.mkfifo(pipe)
        process = self.start(self.arguments(self.input(), geometry=pipe))
        with open(pipe, "wb", buffering=0) as writer:
            writer.write(b"[")
            self.wait_until_it_sleeps(process)
            self.assert_left_alone(process, signal.SIGINT, timeout=20)

    def test_signals_that_the_caller_ignores_stay_ignored(self):
        # nohup ignores a hang-up, and a shell the interrupts of a background job.
        for number in (signal.SIGHUP, signal.SIGINT):
            (self.folder / "out.csv").unlink(missing_ok=True)
            process = self.start_writing(
                preexec_fn=lambda n=number: signal.signal(n, signal.SIG_IGN))
            process.send_signal(number)
            time.sleep(0.2)
            try:
                process.stdin.close()
            except BrokenPipeError:
                pass
            self.assert_ends(process, 0)
            self.assertEqual(self.read("out.csv"), self.wanted(2))


class CheckSignals(Signals, CheckDriver):
    pass


class ScanSignals(Signals, ScanDriver):
    pass


if __name__ == "__main__":
    unittest.main(verbosity=2)
