#!/usr/bin/env python3
"""Where `zarn-shadow check` and `scan` write, and what remains after a failure."""

import os
import signal
import stat
import sys
import threading
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import TIMEOUT
from both_support import BothTest, CheckDriver, ScanDriver


class Output(BothTest):
    def test_standard_output_is_empty_with_an_output_file(self):
        for option in (["-o", "out.csv"], ["-oout.csv"], ["--output", "out.csv"],
                       ["--output=out.csv"]):
            (self.folder / "out.csv").unlink(missing_ok=True)
            self.assertEqual(self.run_on(self.input(), *option).out, b"")
            self.assertEqual(self.read("out.csv"), self.wanted())

    def test_an_existing_file_is_replaced_completely(self):
        out = self.write("out.csv", "x" * 10_000)
        self.run_on(self.input(), "-o", out)
        self.assertEqual(out.read_bytes(), self.wanted())

    def test_a_new_file_has_the_permissions_of_the_umask(self):
        for mask, wanted in ((0o022, 0o644), (0o027, 0o640), (0o077, 0o600)):
            out = self.folder / f"{mask:o}.csv"
            self.run_on(self.input(), "-o", out, preexec_fn=lambda m=mask: os.umask(m))
            self.assertEqual(stat.S_IMODE(out.stat().st_mode), wanted)

    def test_an_existing_file_keeps_its_permissions(self):
        for mode in (0o600, 0o640, 0o664, 0o755):
            out = self.write("out.csv", "old")
            out.chmod(mode)
            self.run_on(self.input(), "-o", out)
            self.assertEqual(stat.S_IMODE(out.stat().st_mode), mode)

    def test_a_symbolic_link_is_kept_and_its_target_replaced(self):
        real = self.write("elsewhere/real.csv", "old")
        (self.folder / "out.csv").symlink_to("elsewhere/real.csv")
        self.run_on(self.input(), "-o", self.folder / "out.csv")
        self.assertTrue((self.folder / "out.csv").is_symlink())
        self.assertEqual(real.read_bytes(), self.wanted())

    def test_a_symbolic_link_to_a_missing_file_is_kept(self):
        (self.folder / "elsewhere").mkdir()
        for target in ("real.csv", "elsewhere/real.csv", self.folder / "elsewhere/third.csv"):
            link = self.folder / "out.csv"
            link.unlink(missing_ok=True)
            link.symlink_to(target)
            self.run_on(self.input(), "-o", link)
            self.assertTrue(link.is_symlink())
            self.assertEqual((self.folder / target).read_bytes(), self.wanted())

    def test_writes_to_devices_and_pipes_in_place(self):
        result = self.run_on(self.input(), "-o", "/dev/null")
        self.assertEqual(result.counts()[self.COUNTED][0], "1")
        self.assertTrue(stat.S_ISCHR(os.stat("/dev/null").st_mode))
        self.assertEqual(self.run_on(self.input(), "-o", "/dev/stdout").out, self.wanted())
        pipe = self.folder / "pipe"
        os.mkfifo(pipe)
        read = []
        thread = threading.Thread(target=lambda: read.append(pipe.read_bytes()))
        thread.start()
        self.run_on(self.input(), "-o", pipe)
        thread.join(TIMEOUT)
        self.assertEqual(read, [self.wanted()])
        self.assertTrue(stat.S_ISFIFO(pipe.stat().st_mode))

    def test_an_open_descriptor_is_written_at_its_position(self):
        (self.folder / "link").symlink_to("/dev/stdout")
        for name in ("-", "/dev/stdout", "/dev/fd/1", "/proc/self/fd/1", "link",
                     "/dev/../dev/stdout"):
            with self.subTest(name=name), open(self.folder / "all.txt", "wb") as out:
                out.write(b"before\n")
                out.flush()
                self.run_on(self.input(), "-o", name, stdout=out)
                out.write(b"behind\n")
                out.close()
                self.assertEqual(self.read("all.txt"), b"before\n" + self.wanted() + b"behind\n")
        for name in ("/dev/fd/{}", "/proc/self/fd/{}"):
            with self.subTest(name=name), open(self.folder / "all.txt", "wb") as out:
                out.write(b"before\n")
                out.flush()
                self.run_on(self.input(), "-o", name.format(out.fileno()),
                            pass_fds=[out.fileno()])
                out.write(b"behind\n")
                out.close()
                self.assertEqual(self.read("all.txt"), b"before\n" + self.wanted() + b"behind\n")
        result = self.run_on(self.input(), "-o", "/dev/fd/99", status=1)
        self.assertIn("/dev/fd/99: cannot be written", result.err)

    def test_an_output_that_cannot_be_written_gives_status_1(self):
        file = self.write("file", "x")
        (self.folder / "loop").symlink_to("loop")
        for out in ("missing/out.csv", file / "out.csv", self.folder, "/proc/out.csv",
                    "missing/", "loop/out.csv", "x" * 256):
            with self.subTest(out=out):
                result = self.run_on(self.input(), "-o", out, status=1)
                self.assertIn(str(out), result.err)
                self.assertNotIn("paths/second", result.err)
        self.assertEqual(file.read_text(), "x")

    def test_a_folder_without_write_permission_gives_status_1(self):
        folder = self.folder / "closed"
        folder.mkdir()
        folder.chmod(0o500)
        self.addCleanup(folder.chmod, 0o700)
        # Permissions do not apply to root, who can write to the folder.
        status = 0 if os.access(folder, os.W_OK) else 1
        self.run_on(self.input(), "-o", folder / "out.csv", status=status)
        self.assertEqual((folder / "out.csv").exists(), status == 0)

    def test_an_empty_name_for_the_output_is_refused(self):
        self.assertEqual(self.run_on(self.input(), "-o", "", status=(1, 2)).out, b"")

    def test_the_longest_possible_file_name_works(self):
        for length in (200, 230, 255):
            with self.subTest(length=length):
                out = self.folder / ("x" * (length - 4) + ".csv")
                self.run_on(self.input(), "-o", out)
                self.assertEqual(out.read_bytes(), self.wanted())

    def test_unusual_file_names_work(self):
        for name in ("with blank.csv", "new\nline.csv", "\u00e9t\u00e9.csv", "*.csv", "a'b\".csv",
                     "%s%n.csv", "out", ".hidden"):
            with self.subTest(name=name):
                self.run_on(self.input(name="in " + name), "-o", name)
                self.assertEqual(self.read(name), self.wanted())

    def test_a_full_disk_leaves_no_partial_file(self):
        rows = self.input(self.MANY)
        for size in (1, 10, 65_536, 100_000, 300_000):
            with self.subTest(size=size):
                result = self.run_on(rows, "-o", "new.csv", status=1,
                                     preexec_fn=self.limited(size))
                self.assertIn("new.csv", result.err)
                self.assertRegex(result.err, r"(?i)file too large")
                self.assertFalse((self.folder / "new.csv").exists())
                old = self.write("old.csv", "as it was")
                self.run_on(rows, "-o", old, status=1, preexec_fn=self.limited(size))
                self.assertEqual(old.read_bytes(), b"as it was")
                self.assert_no_temporaries()

    def test_a_full_disk_is_noticed_for_a_short_output(self):
        self.run_on(self.input(), "-o", "new.csv", status=1, preexec_fn=self.limited(20))
        self.assertFalse((self.folder / "new.csv").exists())

    def test_a_full_disk_behind_standard_output_gives_status_1(self):
        for rows in (self.input(), self.input(self.MANY)):
            with open("/dev/full", "wb") as full:
                result = self.run_on(rows, status=1, stdout=full)
            self.assertRegex(result.err, "(?i)standard output.*no space")
            result = self.run_on(rows, "-o", "/dev/full", status=1)
            self.assertRegex(result.err, "/dev/full.*(?i:no space)")
        with open(self.folder / "redirected.csv", "wb") as out:
            self.run_on(self.input(self.MANY), status=1, stdout=out,
                        preexec_fn=self.limited(100_000))

    def test_a_reader_that_closes_the_pipe_ends_the_run_silently(self):
        rows = self.input(self.MANY)
        for threads in (1, 7):
            for option in ([], ["-o", "/dev/stdout"]):
                process = self.start(self.arguments(rows, "--threads", threads, *option))
                self.assertEqual(process.stdout.readline(), self.OUTPUT_HEAD)
                process.stdout.close()
                err = self.assert_ends(process, 128 + signal.SIGPIPE)
                self.assertNotIn("zarn-shadow:", err)
                self.assertNotIn("paths/second", err)

    def test_a_closed_pipe_other_than_standard_output_gives_status_1(self):
        pipe = self.folder / "pipe"
        os.mkfifo(pipe)
        process = self.start(self.arguments(self.input(self.MANY), "-o", pipe))
        with open(pipe, "rb") as reader:
            self.assertEqual(reader.readline(), self.OUTPUT_HEAD)
        self.assertRegex(self.assert_ends(process, 1), "(?i)pipe: .*broken pipe")

    def test_a_closed_standard_output_gives_status_1(self):
        def close():
            os.close(1)
        self.run_on(self.input(), status=1, stdout=None, preexec_fn=close)
        self.run_on(self.input(), "-o", "out.csv", stdout=None, preexec_fn=close)
        self.assertEqual(self.read("out.csv"), self.wanted())

    def test_a_closed_standard_error_does_not_change_the_verdicts(self):
        with open("/dev/full", "wb") as full:
            self.assertEqual(self.run_on(self.input(), stderr=full).out, self.wanted())

    def test_two_runs_can_write_the_same_file_at_the_same_time(self):
        slow = self.start_writing()
        self.run_on(self.input(), "-o", "out.csv")
        self.assertEqual(self.read("out.csv"), self.wanted())
        self.assertEqual(len(self.temporaries()), 2, "the other run's files were removed")
        slow.stdin.close()
        self.assert_ends(slow, 0)
        self.assertEqual(self.read("out.csv"), self.wanted(2))

    def test_the_output_file_appears_only_when_it_is_complete(self):
        process = self.start_writing()
        self.assertFalse((self.folder / "out.csv").exists())
        self.assertEqual(self.temporaries()[0].parent, self.folder)
        process.stdin.close()
        self.assert_ends(process, 0)
        self.assertTrue((self.folder / "out.csv").exists())

    def test_a_killed_run_keeps_the_old_file(self):
        old = self.write("out.csv", "as it was")
        process = self.start_writing()
        process.kill()
        process.wait()
        self.assertEqual(old.read_bytes(), b"as it was")
        self.run_on(self.input(), "-o", old)
        self.assertEqual(old.read_bytes(), self.wanted())
        for left in self.temporaries():
            left.unlink()


class CheckOutput(Output, CheckDriver):
    pass


class ScanOutput(Output, ScanDriver):
    def test_standard_output_takes_one_output_under_any_name(self):
        for name in ("-", "/dev/stdout", "/dev/fd/1"):
            for options in (["--paths", name], ["-o", "/dev/stdout", "--paths", name]):
                result = self.run_on(self.input(), *options, status=2)
                self.assertIn("standard output: is used for two outputs", result.err)


if __name__ == "__main__":
    unittest.main(verbosity=2)
