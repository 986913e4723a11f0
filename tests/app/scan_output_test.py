#!/usr/bin/env python3
"""The output files of `zarn-shadow scan`."""

import itertools
import json
import os
import random
import signal
import stat
import struct
import sys
import time
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import ANCHOR, VESSEL
from light_support import FROM_INSIDE
from scan_support import (
    BOTTOM, CENTRE, OPTICS, ScanTest, TOP, VERDICT_HEADER, positions, random_events,
    random_pmts)


class OutputTest(ScanTest):
    FILES = {"-o": "verdicts.csv", "--paths": "paths.csv", "--per-pmt": "per-pmt.csv",
             "--per-event": "per-event.csv"}

    def everything(self, changed=()):
        """Options that write all outputs; @p changed replaces some file names."""
        return [word for pair in {**self.FILES, **dict(changed)}.items() for word in pair]

    def prepare(self):
        """Write the inputs, and an existing file for every output."""
        for name in (*self.FILES.values(), "verdicts.root"):
            self.write(name, "as it was")
        return (self.events([CENTRE, TOP]), self.pmts([TOP, BOTTOM]),
                self.tables(*OPTICS, *ANCHOR))

    def assert_all_left_alone(self, *options, status, wanted=(), **more):
        """The run fails and changes no file."""
        events, pmts, geometry = self.prepare()
        before = self.snapshot()
        result = self.scan(events, pmts, *options, geometry=geometry, status=status, **more)
        self.assertEqual(self.snapshot(), before)
        self.assertNotIn("paths/second", result.err)
        for part in wanted:
            self.assertIn(part, result.err)
        return result

    def many(self):
        """Inputs for 14,000 verdicts of some 35 bytes each."""
        return self.events([CENTRE] * 700, "many.csv"), self.pmts([TOP, BOTTOM] * 10)


class Output(OutputTest):
    def test_only_verdicts_go_to_standard_output(self):
        self.prepare()
        result = self.scan([CENTRE], [TOP], *self.everything())
        self.assertEqual(result.out, b"")
        wanted = self.read("verdicts.csv")
        for options in ([], ["-o", "-"], ["--output=-"], ["--paths", "p.csv"]):
            self.assertEqual(self.scan([CENTRE], [TOP], *options).out, wanted)
        self.assertEqual(wanted.decode(), VERDICT_HEADER + f"\ne0,p0,{FROM_INSIDE},0,\n")
        self.assertEqual(set(self.snapshot()),
                         {str(self.folder / name) for name in (
                             *self.FILES.values(), "verdicts.csv.json", "verdicts.root", "p.csv",
                             "events.csv", "pmts.csv", "tables.json")})

    def test_existing_files_are_replaced_and_keep_their_permissions(self):
        for i, name in enumerate(self.FILES.values()):
            self.write(name, "x" * 100_000).chmod((0o600, 0o640, 0o664, 0o755)[i])
        events, pmts, geometry = (self.events([CENTRE]), self.pmts([TOP]), self.tables(*OPTICS))
        self.scan(events, pmts, *self.everything(), geometry=geometry)
        for i, name in enumerate(self.FILES.values()):
            self.assertNotIn(b"xx", self.read(name))
            self.assertEqual(stat.S_IMODE((self.folder / name).stat().st_mode),
                             (0o600, 0o640, 0o664, 0o755)[i])

    def test_a_symbolic_link_is_kept_and_its_target_replaced(self):
        real = self.write("elsewhere/real.csv", "old")
        (self.folder / "link.csv").symlink_to("elsewhere/real.csv")
        self.scan([CENTRE], [TOP], "--per-pmt", self.folder / "link.csv")
        self.assertTrue((self.folder / "link.csv").is_symlink())
        self.assertIn(b"p0,1,0,0,", real.read_bytes())

    def test_a_file_can_be_used_for_one_output_only(self):
        (self.folder / "sub").mkdir()
        (self.folder / "link.csv").symlink_to("new.csv")
        (self.folder / "folder").symlink_to(".")
        options = list(self.FILES)
        for a, b in itertools.permutations(options, 2):
            for one, other in (("new.csv", "new.csv"), ("paths.csv", "./paths.csv")):
                with self.subTest(a=a, b=b, name=other):
                    self.assert_all_left_alone(a, one, b, other, status=2, wanted=[one])
        for other in ("./new.csv", "sub/../new.csv", self.folder / "new.csv", "link.csv",
                      "folder/new.csv"):
            with self.subTest(name=other):
                self.assert_all_left_alone("-o", "new.csv", "--paths", other, status=2)
                self.assert_all_left_alone("-o", other, "--paths", "new.csv", status=2)
        self.assert_all_left_alone("-o", "x.root", "--paths", "x.root", status=2)

    def test_an_output_cannot_be_an_input(self):
        (self.folder / "link.csv").symlink_to("events.csv")
        for option in self.FILES:
            for name in ("events.csv", "pmts.csv", "tables.json", "./events.csv", "link.csv",
                         self.folder / "pmts.csv"):
                with self.subTest(option=option, name=name):
                    self.assert_all_left_alone(option, name, status=2, wanted=[str(name)])
        folder = self.write("tables/all.json", json.dumps([*VESSEL, *OPTICS])).parent
        before = self.snapshot()
        self.scan(self.folder / "events.csv", self.folder / "pmts.csv", "-o", "tables/all.json",
                  geometry=folder, status=2)
        self.assertEqual(self.snapshot(), before)

    def test_only_one_output_can_go_to_standard_output(self):
        for a, b in itertools.combinations(self.FILES, 2):
            result = self.assert_all_left_alone(a, "-", b, "-", status=2)
            self.assertEqual(result.out, b"")
        # Without -o and counts the verdicts go to standard output.
        result = self.assert_all_left_alone("--paths", "-", status=2)
        self.assertEqual(result.out, b"")

    def test_an_output_that_cannot_be_written_leaves_the_others_unchanged(self):
        self.write("file", "x")
        for option in self.FILES:
            for name in ("missing/out.csv", "file/out.csv", str(self.folder), "/proc/out.csv",
                         "x" * 256):
                with self.subTest(option=option, name=name[:20]):
                    self.assert_all_left_alone(*self.everything({option: name}), status=1,
                                               wanted=[name])
        for name in ("missing/out.root", "file/out.root", "/proc/out.root", "x" * 256 + ".root"):
            with self.subTest(name=name[:20]):
                self.assert_all_left_alone(*self.everything({"-o": name}), status=1,
                                           wanted=[name])
        folder = self.folder / "folder.root"
        folder.mkdir()
        self.assert_all_left_alone("-o", folder, status=1, wanted=["folder.root"])

    def test_a_file_without_write_permission_gives_status_1(self):
        if os.geteuid() == 0:
            self.skipTest("permissions do not apply to root")
        for name in (*self.FILES.values(), "verdicts.root"):
            with self.subTest(name=name):
                self.prepare()
                (self.folder / name).chmod(0o400)
                option = {n: o for o, n in self.FILES.items()}.get(name, "-o")
                result = self.scan([CENTRE], [TOP], option, name, status=1)
                self.assertIn(name, result.err)
                self.assertEqual(self.read(name), b"as it was")
                (self.folder / name).chmod(0o600)

    def test_a_full_disk_changes_nothing(self):
        for inputs in (self.prepare()[:2], self.many()):
            geometry = self.tables(*OPTICS)
            self.prepare()
            self.scan(*inputs, *self.everything(), geometry=geometry)
            sizes = sorted((len(self.read(name)), name) for name in self.FILES.values())
            self.assertEqual(sizes[-1][1], "paths.csv")
            self.prepare()
            before = self.snapshot()
            for size in (1, *(size - 1 for size, _ in sizes)):
                with self.subTest(size=size):
                    result = self.scan(*inputs, *self.everything(), geometry=geometry, status=1,
                                       preexec_fn=self.limited(size))
                    self.assertEqual(self.snapshot(), before)
                    self.assertRegex(result.err, r"\w\.csv: (?i:.*file too large)")
                    self.assertNotIn("paths/second", result.err)
            self.assertIn("paths.csv", result.err)  # at the last limit only this file is too large

    def test_one_full_output_leaves_the_others_unchanged(self):
        for option in self.FILES:
            with self.subTest(option=option):
                self.assert_all_left_alone(*self.everything({option: "/dev/full"}), status=1,
                                           wanted=["/dev/full"])
        with open("/dev/full", "wb") as full:
            for option in self.FILES:
                self.assert_all_left_alone(*self.everything({option: "-"}), status=1, stdout=full)

    def test_files_appear_only_at_the_end(self):
        self.prepare()
        before = {str(self.folder / name) for name in (
            *self.FILES.values(), "verdicts.csv.json", "verdicts.root", "events.csv", "pmts.csv",
            "tables.json")}
        process = self.start(self.scan_command("-", self.pmts([TOP]),
                                               self.tables(*OPTICS, *ANCHOR), *self.everything()))
        self.feed(process, positions("event", [CENTRE]))
        self.wait_for(self.temporaries, "temporary files")
        self.wait_until_it_sleeps(process)
        for name in self.FILES.values():
            self.assertEqual(self.read(name), b"as it was")
        for file in self.temporaries():
            self.assertEqual(file.parent, self.folder)
        process.stdin.close()
        self.assert_ends(process, 0)
        self.assertEqual(set(self.snapshot()), before)
        self.assertNotIn(b"as it was", [self.read(name) for name in self.FILES.values()])

    def test_closed_standard_streams_damage_no_file(self):
        for verdicts in ("verdicts.csv", "verdicts.root"):
            events, pmts, geometry = self.prepare()
            options = self.everything({"-o": verdicts})
            self.scan(events, pmts, *options, geometry=geometry)
            wanted = [self.read(name) for name in list(self.FILES.values())[1:]]
            self.prepare()
            self.run_command(self.scan_command(events, pmts, geometry, *options),
                             stdout=None, stderr=None,
                             preexec_fn=lambda: [os.close(i) for i in (0, 1, 2)])
            self.assertEqual([self.read(name) for name in list(self.FILES.values())[1:]], wanted)
            self.assertNotEqual(self.read(verdicts), b"as it was")


class RootOutput(OutputTest):
    """Checks of the ROOT file that need no ROOT."""

    def assert_whole(self, name):
        """The file is closed: its header has its length."""
        content = self.read(name)
        self.assertEqual(content[:4], b"root")
        version, = struct.unpack(">i", content[4:8])
        end, = struct.unpack(">q", content[12:20]) if version >= 1_000_000 else \
            struct.unpack(">i", content[12:16])
        self.assertEqual(end, len(content))

    def test_a_name_that_ends_in_root_gives_a_root_file(self):
        for name in ("verdicts.root", "a.csv.root", "sub/x.root"):
            (self.folder / "sub").mkdir(exist_ok=True)
            before = set(self.snapshot())
            result = self.scan([CENTRE, TOP], [TOP, BOTTOM], "-o", name)
            self.assert_whole(name)
            self.assertEqual(result.out, b"")
            self.assertEqual(result.counts()["paths"][0], "3")
            self.assertLessEqual(set(self.snapshot()) - before, {str(self.folder / name)} | {
                str(self.folder / x) for x in ("events.csv", "pmts.csv", "tables.json")})
        for name in ("root", "root.csv", "xroot"):
            self.scan([CENTRE], [TOP], "-o", name)
            self.assertTrue(self.read(name).startswith(VERDICT_HEADER.encode()))

    def test_an_existing_file_is_replaced_and_keeps_its_permissions(self):
        self.write("verdicts.root", "x" * 1_000_000).chmod(0o640)
        self.scan([CENTRE], [TOP], "-o", "verdicts.root")
        self.assert_whole("verdicts.root")
        self.assertEqual(stat.S_IMODE((self.folder / "verdicts.root").stat().st_mode), 0o640)
        real = self.write("elsewhere/real.root", "old")
        (self.folder / "link.root").symlink_to("elsewhere/real.root")
        self.scan([CENTRE], [TOP], "-o", "link.root")
        self.assertTrue((self.folder / "link.root").is_symlink())
        self.assert_whole(real)

    def test_a_new_file_has_the_permissions_of_the_umask(self):
        for mask, wanted in ((0o022, 0o644), (0o077, 0o600)):
            self.scan([CENTRE], [TOP], "-o", f"{mask:o}.root",
                      preexec_fn=lambda m=mask: os.umask(m))
            self.assertEqual(stat.S_IMODE((self.folder / f"{mask:o}.root").stat().st_mode), wanted)

    def test_devices_and_pipes_are_not_replaced(self):
        pipe = self.folder / "pipe.root"
        os.mkfifo(pipe)
        self.scan([CENTRE], [TOP], "-o", pipe, status=(1, 2))
        self.assertTrue(stat.S_ISFIFO(pipe.stat().st_mode))

    def test_a_later_event_that_is_no_integer_is_refused(self):
        self.write("verdicts.root", "as it was")
        pmts, geometry = self.pmts([TOP]), self.tables(*OPTICS)
        for name in ("z=1", "007", "", "1.0"):
            text = positions("event", {str(i): CENTRE for i in range(9000)})
            events = self.write("events.csv", text + f"{name},0,0,0\n")
            before = self.snapshot()
            for threads in (1, 3):
                result = self.scan(events, pmts, "-o", "verdicts.root", "--threads", threads,
                                   geometry=geometry, status=2)
                self.assertIn(f'events.csv: line 9002 (row 9000), column event: "{name}" is not '
                              "an integer", result.err)
                self.assertEqual(self.snapshot(), before)
            self.scan(events, pmts, "-o", "out.csv", geometry=geometry)  # CSV stores any name

    def test_events_that_are_no_integers_at_first_may_have_any_name(self):
        events = {"a": CENTRE, **{str(i): CENTRE for i in range(9000)}}
        self.scan(events, [TOP], "-o", "verdicts.root")
        self.assert_whole("verdicts.root")

    def test_no_rows_give_a_valid_file(self):
        self.scan([], [TOP], "-o", "verdicts.root")
        self.assert_whole("verdicts.root")

    def test_the_other_outputs_do_not_depend_on_it(self):
        events, pmts = random_events(9, 130), random_pmts(9, 131)
        self.scan(events, pmts, *self.everything())
        wanted = [self.read(name) for name in list(self.FILES.values())[1:]]
        for threads in (1, 7):
            self.scan(events, pmts, *self.everything({"-o": "verdicts.root"}), "--threads",
                      threads)
            self.assertEqual([self.read(name) for name in list(self.FILES.values())[1:]], wanted)

    def test_a_full_disk_changes_nothing(self):
        numbers = random.Random(140)
        events = self.events({numbers.randbytes(30).hex(): CENTRE for _ in range(2000)})
        pmts = self.pmts([TOP, BOTTOM] * 2)
        geometry = self.tables(*OPTICS)
        self.scan(events, pmts, "-o", "verdicts.root", geometry=geometry)
        size = len(self.read("verdicts.root"))
        self.write("verdicts.root", "as it was")
        for limit in (1, 200, size // 2, size - 500):  # the size includes file names
            with self.subTest(limit=limit):
                before = self.snapshot()
                for name in ("verdicts.root", "new.root"):
                    result = self.scan(events, pmts, "-o", name, geometry=geometry, status=1,
                                       preexec_fn=self.limited(limit))
                    # One line for the user, without internals of the library.
                    self.assertRegex(result.err, rf"\nzarn-shadow: {name}: .*\n\Z")
                    self.assertNotIn("ROOT::", result.err)
                    self.assertNotIn("paths/second", result.err)
                    self.assertEqual(self.snapshot(), before)

    def test_bad_events_change_nothing(self):
        events = self.write("events.csv", positions("event", [CENTRE] * 2000) + "id,0,0,x\n")
        self.write("verdicts.root", "as it was")
        pmts, geometry = self.pmts([TOP]), self.tables(*OPTICS)
        before = self.snapshot()
        for name in ("verdicts.root", "new.root"):
            for threads in (1, 7):
                self.scan(events, pmts, "-o", name, "--threads", threads, geometry=geometry,
                          status=2)
                self.assertEqual(self.snapshot(), before)


class Signals(OutputTest):
    ROWS = b"".join(b"%06d,%d,0,0\n" % (i, i) for i in range(5000))
    KINDS = list(itertools.product(("verdicts.csv", "verdicts.root"), (1, 7)))  # and threads

    def start_scan(self, verdicts, threads, **more):
        """A run that waits for events, and the content of the folder before it."""
        _, pmts, geometry = self.prepare()
        before = self.snapshot()
        process = self.start(self.scan_command("-", pmts, geometry, *self.everything(
            {"-o": verdicts}), "--threads", threads), **more)
        return process, before

    def assert_stopped(self, process, before, number):
        process.send_signal(number)
        err = self.assert_ends(process, 128 + number, timeout=30)
        self.assertNotIn("paths/second", err)
        self.assertEqual(self.snapshot(), before)

    def test_a_signal_while_waiting_for_events_changes_nothing(self):
        for kind in self.KINDS:
            with self.subTest(kind=kind):
                for number in (signal.SIGINT, signal.SIGTERM):
                    process, before = self.start_scan(*kind)
                    self.feed(process, positions("event", [CENTRE, TOP]))
                    self.wait_for(self.temporaries, "temporary files")
                    self.wait_until_it_sleeps(process)
                    self.assert_stopped(process, before, number)

    def test_a_signal_before_the_first_event_changes_nothing(self):
        for kind in self.KINDS:
            with self.subTest(kind=kind):
                process, before = self.start_scan(*kind)
                self.wait_until_it_sleeps(process)
                self.assert_stopped(process, before, signal.SIGINT)

    def test_a_signal_stops_an_endless_input(self):
        for kind in self.KINDS:
            with self.subTest(kind=kind):
                process, before = self.start_scan(*kind)
                self.feed_endlessly(process, "event,x,y,z", self.ROWS)
                self.wait_for(lambda: any(p.stat().st_size > 0 for p in self.temporaries()),
                              "some output")
                self.assert_stopped(process, before, signal.SIGINT)

    def test_a_signal_stops_the_work_on_one_event_with_many_pmts(self):
        # Only verdicts, so that writing another file cannot notice the signal.
        pmts = self.pmts(random_pmts(100, 150) * 600)
        geometry = self.reference_tables()
        for verdicts, threads in self.KINDS:
            with self.subTest(verdicts=verdicts, threads=threads):
                self.write(verdicts, "as it was")
                before = self.snapshot()
                process = self.start(self.scan_command("-", pmts, geometry, "-o", verdicts,
                                                       "--threads", threads))
                self.feed_endlessly(process, "event,x,y,z", self.ROWS)
                self.wait_for(self.temporaries, "a temporary file")
                time.sleep(0.2)
                self.assert_stopped(process, before, signal.SIGINT)

    def test_a_hang_up_removes_temporary_files(self):
        process, before = self.start_scan("verdicts.root", 2)
        self.feed(process, positions("event", [CENTRE]))
        self.wait_until_it_sleeps(process)
        self.assert_stopped(process, before, signal.SIGHUP)


if __name__ == "__main__":
    unittest.main(verbosity=2)
