#!/usr/bin/env python3
"""The output of `zarn-shadow check` does not depend on the number of threads."""

import os
import pty
import re
import subprocess
import sys
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import (
    ANCHOR, HEADER, HOLD_DOWN_ROPES, Result, SUPPORT_ROPES, VECTORS, measures_memory)
from check_support import WRONG_TYPE, CheckTest, NEAR_ANCHOR, path, row_with, table


class Threads(CheckTest):
    """The file is read in blocks of 256 KiB, which threads judge."""
    BLOCK = 256 * 1024

    def results(self, result):
        """Status, output and messages of a run, without times."""
        err = re.sub(r"(?m)^(seconds|paths/second) .*$", r"\1", result.err)
        return [result.status], result.out, err

    def assert_same(self, found, wanted):
        """Like assertEqual, which would take hours to list the differences of long
        texts and lists."""
        if found == wanted:
            return
        at = next((i for i, (a, b) in enumerate(zip(found, wanted)) if a != b),
                  min(len(found), len(wanted)))
        part = slice(max(0, at - 100), at + 100)
        self.fail(f"at {at}:\n{found[part]}\n-- instead of\n{wanted[part]}")

    def assert_threads_do_not_matter(self, text, *options, status=0, **more):
        paths = self.write("paths.csv", text)
        one = self.check(paths, "--threads", 1, *options, status=status, **more)
        for threads in (["--threads", 2], ["--threads", 3], ["--threads", 7], []):
            with self.subTest(threads=threads):
                found = self.check(paths, *threads, *options, status=status, **more)
                for part, expected in zip(self.results(found), self.results(one)):
                    self.assert_same(part, expected)
        self.check(paths, "--threads", 3, "-o", "out.csv", *options, status=status, **more)
        if status == 0:
            self.assert_same((self.folder / "out.csv").read_bytes(), one.out)
        with open(paths, "rb") as file:
            piped = self.check("-", "--threads", 3, *options, status=status, **more,
                               stdin=file.read())
        self.assert_same(piped.out, one.out)
        return one

    def many_rows(self, count, odd_every=None):
        """Rows of many lengths, and the expected verdict of each. Unknown types
        contain the row's number. Line breaks in quotes, blank lines and both kinds
        of line ends are spread among the rows."""
        rows, wanted = [], []
        for i in range(count):
            if odd_every and i % odd_every == 0:
                rows.append(path(f"odd {i}") + "\n")
                wanted.append("")
                continue
            near = i * 7919 % 3 == 0
            points = {"av1": (0.0, 0.0, -5800.0 if near else -5000.0)}
            for extra in range(i % 7):
                if VECTORS[extra] != "av1":
                    points[VECTORS[extra]] = (i / 7, -i / 3, 1e-3 * i)
            note = '"two\nlines, ""quoted"""' if i % 5 == 0 else str(i)
            end = ("\n", "\r\n", "\n\n", "\r\n\n")[i % 4]
            rows.append(path("AV->Water", **points) + "," + note + end)
            wanted.append("NCDAnchor" if near else "")
        return rows, wanted

    def text_of(self, rows):
        return HEADER + ",note\n" + "".join(rows)

    def many_odd_rows(self, count, every):
        rows, wanted = self.many_rows(count, every)
        for i in range(0, count, every):
            rows[i] = rows[i].replace("\n", ",\n")
        return rows, wanted

    def test_verdicts_are_the_same(self):
        rows, wanted = self.many_rows(20_000)
        text = self.text_of(rows)
        self.assertGreater(len(text), 6 * self.BLOCK)
        self.assert_same(self.assert_threads_do_not_matter(text).verdicts(), wanted)

    def test_a_block_can_end_anywhere_in_a_row(self):
        rows = [path("AV->Water", av1=(0.0, 0.0, -5800.0), end=(1.5, 2.5, 3.5)) + ',"a\n""b"\r\n',
                path("Water") + ",\r\n"]
        unit = "".join(rows)
        for before in range(len(unit) + 1):
            filler = path("Water") + "," + "f" * (self.BLOCK - before - len(HEADER) - 35) + "\n"
            text = self.text_of([filler, unit])
            found = self.check(self.write("paths.csv", text), "--threads", 2).verdicts()
            self.assertEqual(found, ["", "NCDAnchor", ""], before)

    def test_warnings_about_unknown_types_are_in_the_order_of_the_rows(self):
        rows, wanted = self.many_odd_rows(20_000, 37)
        result = self.assert_threads_do_not_matter(
            self.text_of(rows), geometry=self.tables(*SUPPORT_ROPES, *ANCHOR))
        self.assert_same(result.verdicts(), wanted)
        printed = re.findall(re.escape(WRONG_TYPE) + r"odd (\d+)$", result.err, re.MULTILINE)
        self.assert_same(printed, [str(i) for i in range(0, 20_000, 37)])
        last = result.err.rstrip("\n").split("\n")[-1]
        self.assertRegex(last, rf'unknown type name: {len(printed)}\b.*"odd 0"')

    def test_the_unknown_type_of_the_first_row_is_named(self):
        rows, _ = self.many_rows(20_000)
        for i in (11_000, 15_000, 19_999):
            rows[i] = path(f"odd {i}") + ",\n"
        result = self.assert_threads_do_not_matter(self.text_of(rows))
        self.assertIn('unknown type name: 3, the first "odd 11000"\n', result.err)

    def test_diagnostics_are_in_the_order_of_the_rows(self):
        # A path that does not cross the ropes' cylinder gives a diagnostic with its
        # distance from the axis.
        rows, wanted = [], []
        for i in range(9000):
            if i % 37 == 0:
                rows.append(path("Light Path Uninitialised"))
                wanted.append("is uninitialised")
            else:
                rows.append(path("AV->Water", av1=(10_000.0 + i, 0.0, -100.0),
                                 final=(0.0, 1.0, 0.0)))
                wanted.append(f"Mag(): {10_000 + i} ")
        text = table(*rows)
        self.assertGreater(len(text), 2 * self.BLOCK)
        result = self.assert_threads_do_not_matter(text, "--debug",
                                                   geometry=self.tables(*HOLD_DOWN_ROPES))
        printed = re.findall(r"is uninitialised|Mag\(\): 1\d+ ", result.err)
        self.assert_same(printed, wanted)
        self.assert_same(self.check_text(text, geometry=self.tables(*HOLD_DOWN_ROPES)).out,
                         result.out)

    def test_the_error_of_the_first_bad_row_is_reported(self):
        rows, wanted = self.many_rows(20_000)
        rows[11_000] = row_with("end_y", "abc") + ",\n"
        rows[11_001] = "short\n"
        rows[12_500] = row_with("end_y", "def") + ",\n"
        rows[19_000] = "\"never closed" + rows[19_000]
        result = self.assert_threads_do_not_matter(self.text_of(rows), status=2)
        lines = self.text_of(rows[:11_000]).count("\n")
        self.assertRegex(result.err, rf'paths.csv: line {lines + 1} \(row 11000\), '
                                     r'column end_y: "abc" is not a number\n')
        found = result.out.decode().splitlines()[1:]
        self.assertGreater(len(found), 6000)
        self.assert_same(found, [f"{i},{1 if by else 0},{by}"
                                 for i, by in enumerate(wanted[:len(found)])])
        self.refuse(self.text_of(rows), rf"line {lines + 1}\b")

    def test_full_buffers_before_an_error_are_written(self):
        # Whole lines are kept in a buffer of 64 KiB until the next one does not fit.
        waiting, row = b"row,shadowed,by\n", 0
        while len(waiting) + len(text := b"%d,1,NCDAnchor\n" % row) <= 64 << 10:
            waiting += text
            row += 1
        for rows_before, wanted in ((row, b""), (row + 1, waiting)):
            paths = self.paths(*[NEAR_ANCHOR] * rows_before, "short")
            for threads in (1, 3):
                result = self.check(paths, "--threads", threads, status=2)
                self.assert_same(result.out, wanted)

    def test_wrong_quotes_in_a_late_block_are_reported_with_their_line(self):
        for wrong, reason in (('"never closed', "the closing quote is missing"),
                              ('a "quote" within', "quote in an unquoted cell"),
                              ('"text"behind', "text after the closing quote")):
            rows, _ = self.many_rows(12_000)
            rows[11_500] = path("Water") + "," + wrong + "\n"
            lines = self.text_of(rows[:11_500]).count("\n")
            with self.subTest(wrong=wrong):
                result = self.assert_threads_do_not_matter(self.text_of(rows[:11_501]), status=2)
                self.assertIn(f"line {lines + 1} (row 11500), column note: ", result.err)
                self.assertIn(reason, result.err)

    def test_a_file_truncated_during_the_run_ends_there(self):
        rows = [NEAR_ANCHOR] * 200_000
        for cut, status in ((0, 0), (5, 2)):
            with self.subTest(cut=cut):
                paths = self.write("paths.csv", table(*rows))
                process = self.start(self.command(paths, self.tables(*ANCHOR), "--threads", 2))
                self.wait_until_it_sleeps(process)  # its output is not read
                os.truncate(paths, len(table(*rows[:150_000])) - cut)
                out = process.stdout.read()
                self.assert_ends(process, status)
                if status == 0:
                    self.assert_same(Result(0, out, b"").verdicts(), ["NCDAnchor"] * 150_000)

    def test_rows_before_a_read_error_are_judged_first(self):
        for threads in (1, 3):
            for row, wanted in ((path("odd"), [WRONG_TYPE + "odd", "Input/output error"]),
                                ("short", ["line 2"])):
                with self.subTest(row=row, threads=threads):
                    # One end of a terminal fails when the other is closed.
                    master, slave = pty.openpty()
                    os.write(slave, table(row).encode())
                    os.close(slave)
                    process = self.start(self.command("-", self.tables(*SUPPORT_ROPES),
                                                      "--threads", threads), stdin=master)
                    os.close(master)
                    err = self.assert_ends(process, 2, timeout=20)
                    self.assertEqual(re.findall("|".join((*wanted, "Input/output")), err), wanted)

    def test_a_row_is_judged_as_soon_as_it_arrives(self):
        for threads in (1, 3):
            with self.subTest(threads=threads):
                process = self.start(self.command("-", self.tables(*SUPPORT_ROPES), "--threads",
                                                  threads))
                self.feed(process, table(path("first"), path("second")))
                printed = []
                while len(printed) < 2:
                    text = process.stderr.readline().decode()
                    self.assertNotEqual(text, "")
                    printed += re.findall(WRONG_TYPE + "(.*)\n", text)
                self.assertEqual(printed, ["first", "second"])
                self.feed(process, "short\n")  # and the pipe stays open
                err = self.assert_ends(process, 2, timeout=20)
                self.assertRegex(err, r"standard input: line 4 \(row 2\)")

    def test_a_file_is_not_read_ahead_of_an_output_that_nobody_reads(self):
        paths = self.paths(*[NEAR_ANCHOR] * 200_000)
        for threads in (1, 7):
            with open(paths, "rb") as file:
                process = self.start(self.command("-", self.tables(*ANCHOR), "--threads",
                                                  threads), stdin=file)
                self.wait_until_it_sleeps(process)
                self.assertLess(os.lseek(file.fileno(), 0, os.SEEK_CUR),
                                (4 + 2 * threads) * self.BLOCK)
                process.kill()

    @measures_memory
    def test_memory_does_not_grow_with_the_number_of_paths(self):
        rows, _ = self.many_odd_rows(4000, 37)
        for threads in (1, 7):
            peaks = []
            for times in (10, 60):
                process = self.start(self.command("-", self.tables(*ANCHOR), "-o", "out.csv",
                                                  "--threads", threads),
                                     stderr=subprocess.DEVNULL)
                self.feed(process, self.text_of(rows * times))
                self.wait_until_it_sleeps(process)
                peaks.append(self.peak(process))
                process.stdin.close()
                self.assert_ends(process, 0)
            self.assertLess(peaks[1] - peaks[0], self.SLACK_KB)


if __name__ == "__main__":
    unittest.main(verbosity=2)
