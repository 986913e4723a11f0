#!/usr/bin/env python3
"""The columns that `zarn-shadow check` can have, and its ROOT output."""

import csv
import io
import json
import sys
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import HEADER, line
from check_support import CheckTest, FAR_FROM_ANCHOR, NEAR_ANCHOR, path
from root_support import NTuple


def named(names, paths, header="event,pmt"):
    """A table of paths with columns of names before the others."""
    rows = [line(cells) + "," + text for cells, text in zip(names, paths, strict=True)]
    return "\n".join([f"{header},{HEADER}", *rows]) + "\n"


class Names(CheckTest):
    NAMES = [("z=1", "7"), ("a,b", 'the "other"'), ("", " 8 "), ("new\nline", "\u00e4")]
    PATHS = [NEAR_ANCHOR, FAR_FROM_ANCHOR] * 2

    def records(self, text, *options):
        out = self.check_text(text, *options).out.decode()
        return list(csv.reader(io.StringIO(out, newline=""), strict=True))

    def test_names_are_copied_after_the_row(self):
        header, *rows = self.records(named(self.NAMES, self.PATHS))
        self.assertEqual(header, ["row", "event", "pmt", "shadowed", "by"])
        verdicts = [["1", "NCDAnchor"], ["0", ""]] * 2
        self.assertEqual(rows, [[str(i), *names, *verdict] for i, (names, verdict)
                                in enumerate(zip(self.NAMES, verdicts))])

    def test_a_column_alone_and_in_any_place_is_copied(self):
        for column in ("event", "pmt"):
            header, row = self.records(f"{HEADER},{column}\n{NEAR_ANCHOR},x\n")
            self.assertEqual(header, ["row", column, "shadowed", "by"])
            self.assertEqual(row, ["0", "x", "1", "NCDAnchor"])
        header, row = self.records(named([("p", "e")], [NEAR_ANCHOR], header="pmt,event"))
        self.assertEqual(header, ["row", "event", "pmt", "shadowed", "by"])
        self.assertEqual(row, ["0", "e", "p", "1", "NCDAnchor"])

    def test_other_columns_are_not_copied(self):
        header, row = self.records(f"Event,pmts,{HEADER}\nx,y,{NEAR_ANCHOR}\n")
        self.assertEqual(header, ["row", "shadowed", "by"])
        self.assertEqual(row, ["0", "1", "NCDAnchor"])

    def test_names_stay_with_their_paths_on_any_number_of_threads(self):
        names = [(f"e{i // 100}", str(i)) for i in range(20_000)]
        text = named(names, [NEAR_ANCHOR if i % 3 else "odd" + "," * 24 for i in range(20_000)])
        one = self.records(text, "--threads", 1)
        self.assertEqual([tuple(row[1:3]) for row in one[1:]], names)
        self.assertEqual(self.records(text, "--threads", 7), one)


class Columns(CheckTest):
    def test_the_code_is_the_number_of_the_verdict(self):
        paths = self.paths(NEAR_ANCHOR, FAR_FROM_ANCHOR, path("odd"))
        wanted = b"row,shadowed,by,code\n0,1,NCDAnchor,4\n1,0,,0\n2,0,,0\n"
        for columns in ("code", " code "):
            self.assertEqual(self.check(paths, "--columns", columns).out, wanted)
        self.check(paths, "--columns", "code", "-o", "out.root")
        found = NTuple("verdicts", self.folder / "out.root")
        self.assertEqual(found.fields, ["row", "shadowed", "by", "code"])
        self.assertEqual(found.column("code"), [4, 0, 0])

    def test_details_are_those_of_the_path(self):
        # The anchor reaches 60 mm, and 141.4 mm from this point.
        paths = self.paths(NEAR_ANCHOR, path("AV->Water", av1=(0.0, 100.0, -5700.0)),
                           FAR_FROM_ANCHOR, path("odd"))
        columns = ("--columns", "item,critical_tolerance,critical_by,code")
        result = self.check(paths, *columns)
        header, *rows = csv.reader(io.StringIO(result.out.decode()), strict=True)
        self.assertEqual(header[3:], ["item", "critical_tolerance", "critical_by", "code"])
        self.assertEqual([row[3] for row in rows], ["anchor 0", "anchor 0", "", ""])
        self.assertEqual([row[5] for row in rows], ["NCDAnchor"] * 4)
        # The first double above is where the limit, 60 plus this, is above the distance.
        for row, wanted in zip(rows, (-60, 20000**0.5 - 60, 11660 - 60)):
            self.assertAlmostEqual(float(row[4]), wanted, delta=1e-9)
        self.assertEqual([row[6] for row in rows], ["4", "4", "0", "0"])
        self.assertEqual(self.check(paths, *columns, "--threads", 3).out, result.out)
        # With --debug every path can write messages and is judged alone.
        self.assertEqual(self.check(paths, *columns, "--debug").out, result.out)
        self.check(paths, *columns, "-o", "out.root")
        found = NTuple("verdicts", self.folder / "out.root")
        self.assertEqual(found.fields, header)
        self.assertEqual([[str(v) for v in row[3:]] for row in found.rows],
                         [[row[3], str(float(row[4])), *row[5:]] for row in rows])

    def test_every_path_of_many_has_its_own_details(self):
        paths = self.paths(*[FAR_FROM_ANCHOR, NEAR_ANCHOR, FAR_FROM_ANCHOR] * 50)
        found = self.check(paths, "--columns", "item").out.decode().splitlines()[1:]
        wanted = ["0,,", "1,NCDAnchor,anchor 0", "0,,"] * 50
        self.assertEqual(found, [f"{i},{cells}" for i, cells in enumerate(wanted)])

    def test_a_column_that_is_not_known_or_given_twice_is_refused(self):
        for columns, message in (("cod", '"cod"; did you mean code?'), ("", '""'),
                                 ("code,", '""'), ("code;", '"code;"; did you mean code?'),
                                 ("code, code", '"code" is given more than once')):
            result = self.check(self.paths(NEAR_ANCHOR), "--columns", columns, status=2)
            self.assertIn("--columns: ", result.err)
            self.assertIn(message, result.err)
            self.assertIn("check --help", result.err)


class RootOutput(CheckTest):
    def ntuple(self, text, *options):
        result = self.check_text(text, "-o", "out.root", *options)
        self.assertEqual(result.out, b"")
        return NTuple("verdicts", self.folder / "out.root")

    def test_the_rows_are_those_of_the_csv(self):
        found = self.ntuple(named([("z=1", "7"), ("a,b", "-8")], [NEAR_ANCHOR, FAR_FROM_ANCHOR]))
        self.assertEqual(found.fields, ["row", "event", "pmt", "shadowed", "by"])
        self.assertEqual(found.rows, [[0, "z=1", 7, 1, "NCDAnchor"], [1, "a,b", -8, 0, ""]])
        found = self.ntuple("\n".join([HEADER, *[NEAR_ANCHOR] * 3, ""]))
        self.assertEqual(found.fields, ["row", "shadowed", "by"])
        self.assertEqual(found.rows, [[i, 1, "NCDAnchor"] for i in range(3)])

    def test_it_says_how_the_verdicts_were_made(self):
        found = self.ntuple(named([], []), "--run", 7, "--tolerance", 99.5)
        self.check_text(named([], []), "-o", "out.csv", "--run", 7, "--tolerance", 99.5)
        self.assertEqual(found.origin, json.loads((self.folder / "out.csv.json").read_text()))
        self.assertEqual(found.origin["tolerance"], 99.5)
        self.assertFalse((self.folder / "out.root.json").exists())

    def test_a_table_without_rows_gives_an_rntuple_without_rows(self):
        found = self.ntuple(named([], []))
        self.assertEqual(found.fields, ["row", "event", "pmt", "shadowed", "by"])
        self.assertEqual(found.rows, [])

    def test_many_rows_are_in_order_on_any_number_of_threads(self):
        text = named([(i // 10, f"p{i}") for i in range(10_000)], [NEAR_ANCHOR] * 10_000)
        for threads in (1, 7):
            found = self.ntuple(text, "--threads", threads)
            self.assertEqual(found.column("row"), list(range(10_000)))
            self.assertEqual(found.column("event"), [i // 10 for i in range(10_000)])
            self.assertEqual(found.column("pmt"), [f"p{i}" for i in range(10_000)])

    def test_names_that_would_lose_digits_stay_text(self):
        for names in (("007", "7.0"), ("", "9223372036854775808")):
            found = self.ntuple(named([names], [NEAR_ANCHOR]))
            self.assertEqual(tuple(found.rows[0][1:3]), names)
        found = self.ntuple(named([("-9223372036854775808", "9223372036854775807")],
                                  [NEAR_ANCHOR]))
        self.assertEqual(found.rows[0][1:3], [-2**63, 2**63 - 1])

    def test_a_later_name_that_is_no_integer_is_refused_with_its_row(self):
        names = [(str(i), "x") for i in range(20_000)]
        names[15_000] = ("later", "x")
        text = named(names, [NEAR_ANCHOR] * 20_000)
        for threads in (1, 7):
            old = self.write("old.root", "as it was")
            result = self.check_text(text, "-o", old, "--threads", threads, status=2)
            self.assertIn('paths.csv: line 15002 (row 15000), column event: "later" is not a '
                          'whole number, as those before it are', result.err)
            self.assertEqual(old.read_bytes(), b"as it was")
        self.check_text(text, "-o", "out.csv")

    def test_bad_input_and_a_full_disk_keep_the_old_file(self):
        old = self.write("old.root", "as it was")
        self.check_text(named([("1", "2")], [NEAR_ANCHOR]) + "short\n", "-o", old, status=2)
        result = self.check_text(named([("1", "2")], [NEAR_ANCHOR]), "-o", old, status=1,
                                 preexec_fn=self.limited(500))
        self.assertRegex(result.err, r"\nzarn-shadow: .*old\.root: .*\n\Z")
        self.assertEqual(old.read_bytes(), b"as it was")

    def test_a_device_is_refused(self):
        (self.folder / "null.root").symlink_to("/dev/null")
        result = self.check_text(named([], []), "-o", "null.root", status=1)
        self.assertIn("null.root: cannot be written: ROOT output requires a regular file",
                      result.err)


if __name__ == "__main__":
    unittest.main(verbosity=2)
