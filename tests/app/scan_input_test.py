#!/usr/bin/env python3
"""The format of the events and PMTs that `zarn-shadow scan` reads."""

import itertools
import os
import pathlib
import sys
import threading
import time
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import ANCHOR, PROGRAM, TIMEOUT
from light_support import FROM_INSIDE
from scan_support import (
    BOTTOM, CENTRE, OPTICS, PATH_HEADER, Row, ScanTest, TOP, VERDICT_HEADER, paths_of, positions,
    records, rows_of)


class Input(ScanTest):
    EVENT = positions("event", [CENTRE])
    PMT = positions("pmt", [TOP])

    def scan_text(self, events, pmts, *options, **more):
        return self.scan(self.write("events.csv", events), self.write("pmts.csv", pmts),
                         *options, **more)

    def test_finds_columns_by_name_in_any_order_and_ignores_others(self):
        plain = self.scan({"a": (0.0, 0.0, 7000.0)}, {"b": BOTTOM, "c": TOP}).out
        events = 'z,note,event,"x","",y,Event,event_x\n7000,"say ""no"",\nor yes",a,0,,0,x,y\n'
        pmts = "y,x,z,pmt,event,\n0,0,-8300,b,1,2\n0,0,8300,c,,\n"
        self.assertEqual(self.scan_text(events, pmts).out, plain)

    def test_the_tables_may_have_the_columns_of_both(self):
        both = "event,pmt,x,y,z\na,b,0,0,8300\n"
        self.assertEqual(self.scan_text(both, both).out.decode(),
                         VERDICT_HEADER + "\na,b,,,no path\n")

    def test_ids_with_any_content_are_kept(self):
        names = ["plain", "two words", " blanks ", "a,b", 'say "x"', '"', '""', "two\nlines",
                 "two\r\nlines", "a\rb", "\n", "", "\u00e9t\u00e9 \u4e2d\U0001f600", "=1+1", "-7",
                 "007", "1e5", "nan", "#", ";", "'", "\t", "\\n", "no path", "x" * 100_000]
        events = {name: CENTRE for name in names}
        pmts = {name: TOP for name in names}
        result = self.scan(events, pmts, "-o", "-", "--per-pmt", "pmts-out.csv", "--per-event",
                           "events-out.csv", "--paths", "paths.csv")
        wanted = list(itertools.product(names, names))
        self.assertEqual([(row.event, row.pmt) for row in rows_of(result.out)], wanted)
        self.assertEqual([(p.event, p.pmt) for p in paths_of(self.read("paths.csv"))], wanted)
        for file in ("pmts-out.csv", "events-out.csv"):
            self.assertEqual([cells[0] for cells in records(self.read(file))[1:]], names)

    def test_ids_are_quoted_only_if_needed(self):
        events = 'event,x,y,z\n"plain",0,0,0\n"a,b",0,0,0\n"say ""x""",0,0,0\n'
        events += '"a\rb",0,0,0\n"a\nb",0,0,0\n" c ",0,0,0\n"",0,0,0\n'
        wanted = ["plain", '"a,b"', '"say ""x"""', '"a\rb"', '"a\nb"', " c ", ""]
        result = self.scan_text(events, self.PMT)
        self.assertEqual(result.out.decode(), VERDICT_HEADER + "\n" + "".join(
            f"{name},p0,{FROM_INSIDE},0,\n" for name in wanted))

    def test_ids_may_be_bytes_that_are_not_utf8(self):
        events = b"event,x,y,z\n\xff\xfe\x80,0,0,0\nnul\0nul,0,0,0\n"
        result = self.scan_text(events, self.PMT)
        self.assertEqual(result.out, VERDICT_HEADER.encode() + b"\n"
                         + b"".join(name + b",p0," + FROM_INSIDE.encode() + b",0,\n"
                                    for name in (b"\xff\xfe\x80", b"nul\0nul")))

    def test_ids_may_repeat(self):
        pmts = "pmt,x,y,z\nsame,0,0,8300\nsame,0,0,-8300\n"
        events = "event,x,y,z\n1,0,0,0\n1,0,0,7000\n"
        result = self.scan_text(events, pmts, "-o", "-", "--per-pmt", "pmts-out.csv",
                                "--per-event", "events-out.csv")
        self.assertEqual([row[:2] for row in rows_of(result.out)], [("1", "same")] * 4)
        self.assertEqual(self.read("pmts-out.csv"), b"pmt,paths,shadowed,fraction,by\n"
                         b"same,2,0,0,\nsame,2,2,1,NCDAnchor\n")
        self.assertEqual(self.read("events-out.csv"), b"event,paths,shadowed,fraction,by\n"
                         b"1,2,1,0.5,NCDAnchor\n1,2,1,0.5,NCDAnchor\n")

    def test_accepts_crlf_and_a_byte_order_mark(self):
        plain = self.scan([CENTRE, TOP], [TOP, BOTTOM]).out
        for mark, end in (("", "\r\n"), ("\ufeff", "\n"), ("\ufeff", "\r\n")):
            events = mark + positions("event", [CENTRE, TOP], end)
            pmts = mark + positions("pmt", [TOP, BOTTOM], end)
            self.assertEqual(self.scan_text(events, pmts).out, plain)
            self.assertEqual(self.scan_text(events[:-len(end)], pmts[:-len(end)]).out, plain)
            blank = events.replace(end, 2 * end)
            self.assertEqual(self.scan_text(blank, end + pmts.replace(end, 3 * end)).out
                             if not mark else plain, plain)

    def test_reads_numbers_like_check(self):
        for z in ("8300", "+8300", "8.3e3", "83E+2", "8300.", "08300", "0.83e4",
                  "8300." + "0" * 3000, "83" + "0" * 400 + "e-398"):
            with self.subTest(z=z[:20]):
                self.assertEqual(rows_of(self.scan_text(
                    f"event,x,y,z\n1,-0,+0,1e-400\n", f"pmt,x,y,z\n1,.0,0.,{z}\n").out)[0].type,
                    FROM_INSIDE)

    def test_an_error_in_a_cell_names_file_line_row_and_column(self):
        for column, axis in enumerate("xyz", start=1):
            for cell in ("abc", "", '""', " ", "1 ", " 1", "0x10", "1_0", '"1,5"', "1e400", "+-1",
                         "1\0"):
                with self.subTest(column=axis, cell=cell):
                    cells = ["id", "0", "0", "0"]
                    cells[column] = cell
                    bad = ",".join(cells) + "\n"
                    place = rf"line 4 \(row 1\), column {axis}\b"
                    self.refuse(self.EVENT + "\n" + bad, self.PMT, rf"events\.csv: {place}")
                    self.refuse(self.EVENT, self.PMT + "\n" + bad, rf"pmts\.csv: {place}")

    def test_the_cell_is_reported(self):
        result = self.refuse(self.EVENT + "id,0,abc,0\n", self.PMT)
        self.assertIn('events.csv: line 3 (row 1), column y: "abc" is not a number\n', result.err)
        result = self.refuse(self.EVENT + "id,0,\x1b[2J,0\n", self.PMT, r"column y")
        self.assertNotIn("\x1b", result.err)
        self.refuse(self.EVENT + "id,0,1e999,0\n", self.PMT, "too large")

    def test_a_row_with_too_few_or_too_many_cells_is_an_error(self):
        for row, column in (("id,1,2", "z"), ("id", "x"), ("id,1,2,3,4", "z"), ('""', "x")):
            with self.subTest(row=row):
                self.refuse(self.EVENT + row + "\n", self.PMT,
                            rf"events\.csv: line 3 \(row 1\), column {column}\b")
                self.refuse(self.EVENT, self.PMT + row + "\n",
                            rf"pmts\.csv: line 3 \(row 1\), column {column}\b")

    def test_wrong_quotes_are_an_error(self):
        for row in ('"id,1,2,3', '"id"x,1,2,3', 'i"d,1,2,3'):
            with self.subTest(row=row):
                self.refuse(self.EVENT + row + "\n", self.PMT, r"events\.csv: line 3 .*quote")
                self.refuse(self.EVENT, self.PMT + row + "\n", r"pmts\.csv: line 3 .*quote")

    def test_all_missing_columns_are_named(self):
        for kind, other in (("event", "pmt"), ("pmt", "event")):
            for header, missing in ((f"{kind},y", "x, z"), ("x,y,z", kind), (other, f"{kind}, x"),
                                    (f" {kind},x,y,z", kind), (f"{kind};x;y;z", f"{kind}, x, y, z"),
                                    (f"{kind.upper()},X,y,z", f"{kind}, x")):
                with self.subTest(kind=kind, header=header):
                    texts = {"event": self.EVENT, "pmt": self.PMT} | {kind: header + "\n"}
                    result = self.refuse(texts["event"], texts["pmt"])
                    self.assertRegex(result.err, rf"{kind}s\.csv: line 1 \(the header\): "
                                                 rf"missing columns: {missing}")
        result = self.refuse("event,y\n", self.PMT)
        self.assertIn("events.csv: line 1 (the header): missing columns: x, z\n", result.err)

    def test_a_column_that_appears_twice_is_an_error(self):
        self.refuse("event,x,y,z,x\n1,2,3,4,5\n", self.PMT, r"events\.csv: line 1\b.*x.*twice")
        self.refuse(self.EVENT, "pmt,x,y,z,pmt\n1,2,3,4,5\n", r"pmts\.csv: line 1\b.*pmt.*twice")

    def test_an_empty_file_is_refused_and_a_missing_one_named(self):
        for text in ("", "\n", "\ufeff"):
            self.refuse(text, self.PMT, r"events\.csv.*header")
            self.refuse(self.EVENT, text, r"pmts\.csv.*header")
        nowhere = self.folder / "nowhere.csv"
        self.refuse(nowhere, self.PMT, r"nowhere\.csv")
        self.refuse(self.EVENT, nowhere, r"nowhere\.csv")
        self.refuse(self.folder, self.PMT)
        self.refuse(self.EVENT, self.folder)
        self.refuse(pathlib.Path("/dev/zero"), self.PMT, "/dev/zero")

    def test_a_header_without_rows_gives_a_header_without_rows(self):
        head, pmt_head = "event,x,y,z\n", "pmt,x,y,z\n"
        files = ["-o", "-", "--paths", "paths.csv", "--per-pmt", "pmts-out.csv", "--per-event",
                 "events-out.csv"]
        sums = b",paths,shadowed,fraction,by\n"
        for events, pmts, per_event, per_pmt in (
                (head, self.PMT, b"", b"p0,0,0,,\n"), (self.EVENT, pmt_head, b"e0,0,0,,\n", b""),
                (head, pmt_head, b"", b""), (head[:-1], "\ufeff" + pmt_head, b"", b"")):
            result = self.scan_text(events, pmts, *files)
            self.assertEqual(result.out.decode(), VERDICT_HEADER + "\n")
            self.assertEqual(self.read("paths.csv").decode(), PATH_HEADER + "\n")
            self.assertEqual(self.read("events-out.csv"), b"event" + sums + per_event)
            self.assertEqual(self.read("pmts-out.csv"), b"pmt" + sums + per_pmt)
            counts = result.counts()
            for label in ("pairs", "no path", "paths", "shadowed"):
                self.assertEqual(counts[label][0], "0", label)
            self.assertNotIn("nan", result.err)

    def test_a_late_error_is_reported_with_its_place(self):
        events = self.EVENT + "id,0,0,0\n" * 5000 + '"two\nlines",0,0,0\nid,0,0,\n'
        for threads in (1, 7):
            self.refuse(events, self.PMT, r"events\.csv: line 5005 \(row 5002\), column z",
                        options=["--threads", threads])
        result = self.scan(self.write("e.csv", events), self.write("p.csv", self.PMT), status=2)
        self.assertTrue(result.out == b"" or result.out.startswith(VERDICT_HEADER.encode()))

    def test_reads_standard_input_for_a_dash_in_either_option(self):
        wanted = self.scan([CENTRE, TOP], [TOP, BOTTOM]).out
        events, pmts = positions("event", [CENTRE, TOP]), positions("pmt", [TOP, BOTTOM])
        self.assertEqual(self.scan("-", [TOP, BOTTOM], stdin=events.encode()).out, wanted)
        self.assertEqual(self.scan([CENTRE, TOP], "-", stdin=pmts.encode()).out, wanted)
        for arguments in (("-", [TOP]), ([CENTRE], "-")):
            result = self.scan(*arguments, stdin=b"event,pmt,x,y,z\n1,2,3,4\n", status=2)
            self.assertRegex(result.err, r"(?i)standard input: line 2 \(row 0\), column z")
        both = b"event,pmt,x,y,z\n1,2,3,4,5\n"
        result = self.scan("-", "-", stdin=both, status=2)
        self.assertRegex(result.err, "(?i)standard input.*twice")

    def test_files_can_be_pipes(self):
        wanted = self.scan([CENTRE, TOP], [TOP, BOTTOM]).out
        threads = []
        for name, text in (("events", positions("event", [CENTRE, TOP])),
                           ("pmts", positions("pmt", [TOP, BOTTOM]))):
            pipe = self.folder / name
            os.mkfifo(pipe)
            threads.append(threading.Thread(target=pipe.write_text, args=(text,)))
            threads[-1].start()
        result = self.scan(self.folder / "events", self.folder / "pmts")
        self.assertEqual(result.out, wanted)
        for thread in threads:
            thread.join(TIMEOUT)

    def test_events_can_arrive_slowly(self):
        pmts = self.pmts([TOP, BOTTOM])
        for threads in (1, 7):
            process = self.start(self.scan_command("-", pmts, self.tables(*OPTICS, *ANCHOR),
                                                   "--threads", threads))
            for byte in positions("event", [CENTRE, TOP], "\r\n").encode():
                os.write(process.stdin.fileno(), bytes([byte]))
            self.wait_until_it_sleeps(process)
            out, _ = process.communicate(timeout=TIMEOUT)
            self.assertEqual(out, self.scan([CENTRE, TOP], pmts).out)

    def test_waiting_for_events_uses_no_processor_time(self):
        process = self.start(self.scan_command("-", self.pmts([TOP]), self.tables(*OPTICS),
                                               "--threads", 7))
        self.feed(process, "event,x,y,z\n1,0,0,0\n")
        self.wait_until_it_sleeps(process)

        def ticks():
            fields = pathlib.Path(f"/proc/{process.pid}/stat").read_text().rpartition(")")[2]
            return sum(map(int, fields.split()[11:13]))
        before = ticks()
        time.sleep(0.5)
        self.assertLess(ticks() - before, 0.1 * os.sysconf("SC_CLK_TCK"))

    def test_bad_tables_and_pmts_are_reported_before_events_are_read(self):
        pmts, bad = self.pmts([TOP]), self.write("bad.csv", self.PMT + "id,0,0,x\n")
        geometry = self.tables(*OPTICS)
        for arguments, wanted in (((pmts, "nowhere.json"), "nowhere.json"),
                                  ((bad, geometry), "bad.csv"),
                                  ((pmts, self.tables(name="bare.json")), "bare.json")):
            process = self.start(self.scan_command("-", *arguments))
            self.assertIn(wanted, self.assert_ends(process, 2, timeout=60))

    def test_numbers_are_read_and_written_the_same_in_every_locale(self):
        wanted, _ = self.paths([(1.5, 2.25, 3.125)], [TOP])
        text = self.read("paths.csv")
        for locale in ("de_DE", "de_DE.UTF-8", "nowhere"):
            env = {**os.environ, "LC_ALL": locale, "LANG": locale}
            found, _ = self.paths([(1.5, 2.25, 3.125)], [TOP], env=env)
            self.assertEqual((found, self.read("paths.csv")), (wanted, text))


class At(ScanTest):
    def at(self, text, *options, **more):
        more.setdefault("status", 0)
        pmts = self.pmts([TOP, BOTTOM])
        option = [text] if text.startswith("--at") else ["--at", text]
        return self.run_command([PROGRAM, "scan", "--geometry", self.tables(*OPTICS, *ANCHOR),
                                 *option, "--pmts", pmts, *options], **more)

    def test_one_position_is_like_a_file_with_the_event_0(self):
        for text, point in (("0,0,0", CENTRE), ("0, 0, 3000", (0.0, 0.0, 3000.0)),
                            ("-100,+2e2,-.5", (-100.0, 200.0, -0.5)),
                            ("  1 ,2 , -3 ", (1.0, 2.0, -3.0)),
                            ("--at=-1,-2,7000", (-1.0, -2.0, 7000.0)),
                            ("1e400,0,0", None), ("0,0,8300", TOP)):
            with self.subTest(text=text):
                if point is None:
                    self.at(text, status=2)
                    continue
                options = ["--paths", "paths.csv", "--per-event", "sums.csv"]
                out = self.at(text, *options).out
                files = self.read("paths.csv"), self.read("sums.csv")
                self.assertEqual(self.scan({"0": point}, [TOP, BOTTOM], *options).out, out)
                self.assertEqual((self.read("paths.csv"), self.read("sums.csv")), files)

    def test_anything_but_three_numbers_is_bad_usage(self):
        for text in ("", "1", "1,2", "1,2,", "1,,3", ",,", "1,2,3,", "1,2,3,4", "a,b,c",
                     "1;2;3", "1 2 3", "1,2 3,4", "1,\t2,3", "1, ,3", "0x1,2,3", "1,2,3mm",
                     '"1",2,3', "1,2,3\n", "1.2.3,4,5", "(1,2,3)"):
            with self.subTest(text=text):
                result = self.at("--at=" + text, "-o", "out.csv", status=2)
                self.assertIn("--at", result.err)
                self.assertEqual(result.out, b"")
                self.assertFalse((self.folder / "out.csv").exists())

    def test_cannot_be_combined_with_events(self):
        events, pmts, geometry = self.events([CENTRE]), self.pmts([TOP]), self.tables(*OPTICS)
        for some in ([], ["--events", events, "--at", "0,0,0"], ["--at", "0,0,0", "--at", "1,1,1"],
                     ["--events", events, "--events", events]):
            result = self.run_command([PROGRAM, "scan", "--geometry", geometry, "--pmts", pmts,
                                       "-o", "out.csv", *some], status=2)
            self.assertRegex(result.err, "--at|--events")
            self.assertFalse((self.folder / "out.csv").exists())

    def test_pmts_can_be_read_from_standard_input(self):
        result = self.run_command([PROGRAM, "scan", "--geometry", self.tables(*OPTICS), "--at",
                                   "0,0,0", "--pmts", "-"],
                                  stdin=positions("pmt", [TOP]).encode())
        self.assertEqual(rows_of(result.out), [Row("0", "p0", FROM_INSIDE, "0", "")])


if __name__ == "__main__":
    unittest.main(verbosity=2)
