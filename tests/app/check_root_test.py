#!/usr/bin/env python3
"""Light paths in ROOT files as input of `zarn-shadow check` and `explain`."""

import csv
import pathlib
import struct
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import ANCHOR, COLUMNS, DATA, HEADER, PROGRAM, REFERENCE, line
from check_support import CheckTest, NEAR_ANCHOR, TYPES, path, table
from root_support import root_job, write_root

EXAMPLES = DATA / "example-paths.csv"
NAMED = HEADER + ",event,pmt\n"
NUMBERS = ("Light Path Uninitialised", *TYPES[:7])  # of the types


def number_of(name):
    return str(NUMBERS.index(name)) if name in NUMBERS else name.removeprefix("odd ")


def as_float(cell):
    return repr(struct.unpack("f", struct.pack("f", float(cell or 0)))[0])


class RootInput(CheckTest):
    """Files are written once for all tests."""

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="zarn-test-")
        cls.addClassCleanup(folder.cleanup)
        cls.files = pathlib.Path(folder.name)
        header, *rows = csv.reader(EXAMPLES.read_text().splitlines())
        numbered = cls.put("numbered.csv", header,
                           [[number_of(row[0]), *row[1:]] for row in rows])
        cls.put("floats.csv", header, [[row[0], *map(as_float, row[1:])] for row in rows])
        named_header, *named_rows = csv.reader(cls.named().splitlines())
        named = cls.put("named.csv", named_header, named_rows)
        named_numbers = cls.put("named-numbers.csv", named_header,
                                [[number_of(row[0]), *row[1:]] for row in named_rows])
        cls.put("mapped.csv", ["kind", *[c.replace("start_", "s.") for c in header[1:]]],
                rows[:100])
        write_root(
            root_job(EXAMPLES, cls.files / "tree.root"),
            root_job(numbered, cls.files / "ntuple.root", "RNTuple", texts=(), type="int32"),
            root_job(EXAMPLES, cls.files / "tree-floats.root", coordinates="float32"),
            root_job(EXAMPLES, cls.files / "ntuple-floats.root", "RNTuple",
                     coordinates="float32"),
            root_job(named, cls.files / "named.root", tree="texts", texts=("type", "pmt"),
                     event="int64"),
            root_job(named_numbers, cls.files / "named.root", tree="numbers", mode="UPDATE",
                     texts=("pmt",), type="uint8", event="uint16"))

    @classmethod
    def put(cls, name, header, rows):
        file = cls.files / name
        file.write_text("".join(line(row) + "\n" for row in (header, *rows)))
        return file

    @staticmethod
    def named():
        """Paths with names, some of unknown types."""
        rows = [NEAR_ANCHOR + ',7,"p, 1"', path("odd 8") + ",8,", path("Water") + ",9,x",
                path("odd 200") + ",65535,y"]
        return NAMED + "".join(row + "\n" for row in rows)

    def run_check(self, name, *options, geometry=REFERENCE, **more):
        return self.check(name if isinstance(name, pathlib.Path) else self.files / name,
                          *options, geometry=geometry, **more)

    def test_verdicts_are_those_of_the_csv(self):
        wanted = self.run_check(EXAMPLES).out
        self.assertGreater(wanted.count(b"\n"), 20_000)
        self.assertEqual(self.run_check("tree.root", "--threads", 1).out, wanted)
        self.assertEqual(self.run_check("ntuple.root", "--threads", 7).out, wanted)
        wanted = self.run_check("floats.csv").out
        self.assertEqual(self.run_check("tree-floats.root", "--threads", 7).out, wanted)
        self.assertEqual(self.run_check("ntuple-floats.root", "--threads", 1).out, wanted)

    def test_names_unknown_types_and_counts_are_those_of_the_csv(self):
        geometry = self.tables(*ANCHOR)
        wanted = self.run_check("named.csv", "--columns", "code", geometry=geometry)
        self.assertIn(b'0,7,"p, 1",1,NCDAnchor,4\n', wanted.out)
        texts = self.run_check("named.root:texts", "--columns", "code", geometry=geometry)
        self.assertEqual(texts.out, wanted.out)
        self.assertEqual(self.without_rate(texts.err), self.without_rate(wanted.err))
        numbers = self.run_check("named.root:numbers", "--columns", "code", geometry=geometry)
        self.assertEqual(numbers.out, wanted.out)
        self.assertIn('unknown type name: 2, the first "8"\n', numbers.err)

    @staticmethod
    def without_rate(text):
        return [words for words in text.splitlines() if "second" not in words]

    def test_an_unknown_type_is_refused_with_its_entry(self):
        for tree, name in (("texts", "odd 8"), ("numbers", "8")):
            result = self.run_check(f"named.root:{tree}", "--known-types", "-o", "out.csv",
                                    geometry=self.tables(*ANCHOR), status=2)
            self.assertIn(f'named.root: tree "{tree}", column type, entry 1: "{name}" is not the '
                          "name of a path type", result.err)
            self.assertFalse((self.folder / "out.csv").exists())

    def test_a_name_that_is_no_integer_is_refused_with_its_entry(self):
        rows = [path("Water") + f",{i},{i}" for i in range(3000)]
        rows[2900] = path("Water") + ",2900,late"
        late = self.write("late.csv", NAMED + "".join(row + "\n" for row in rows))
        write_root(root_job(late, self.folder / "late.root", texts=("type", "pmt"),
                            event="int32"))
        result = self.run_check(self.folder / "late.root", "-o", "out.root", status=2)
        self.assertIn('late.root: tree "paths", column pmt, entry 2900: "late" is not a whole '
                      "number, as those before it are\n", result.err)

    def test_columns_can_have_other_names(self):
        columns = "type=kind,start_x=s.x,start_y=s.y, start_z = s.z"
        wanted = self.run_check(EXAMPLES).out.splitlines()[:101]
        found = self.run_check("mapped.csv", "--input-columns", columns)
        self.assertEqual(found.out.splitlines(), wanted)
        result = self.run_check("mapped.csv", "--input-columns", columns.replace("kind", "kid"),
                                status=2)
        self.assertRegex(result.err, r"mapped.csv: line 1 \(the header\): missing columns: kid; "
                                     r"did you mean kind\?\n$")
        self.assertEqual(
            self.run_check("tree.root", "--input-columns", "final_x=final_y,start_x=final_x",
                           "--threads", 2).out,
            self.swapped("final_x", "final_y", "start_x", "final_x"))

    def swapped(self, *pairs):
        """The verdicts on the examples with columns in place of others."""
        header, *rows = csv.reader(EXAMPLES.read_text().splitlines())
        of = dict(zip(pairs[::2], pairs[1::2]))
        places = [header.index(of.get(column, column)) for column in header]
        file = self.write("swapped.csv", "".join(
            line(row) + "\n" for row in (header, *([r[i] for i in places] for r in rows))))
        return self.run_check(file).out

    def test_wrong_names_of_columns_are_refused(self):
        for value, reason in (
                ("strat_x=a", 'there is no column "strat_x"; did you mean start_x?'),
                ("start_x=a,end_x=b,start_x=c", 'the column "start_x" is given more than once'),
                ("start_x", '"start_x" is not of the form start_x=NAME'),
                ("start_x=", '"start_x=" is not of the form start_x=NAME'),
                ("x=a", 'there is no column "x"; use type, start_x')):
            result = self.run_check("tree.root", "--input-columns", value, status=2)
            self.assertIn("--input-columns: " + reason, result.err)

    def test_missing_and_ambiguous_trees_are_refused(self):
        for name, reason in (
                ("named.root", "named.root: which tree\\? Name one as in .*named.root:texts; there "
                               "are texts, numbers"),
                ("named.root:paths", 'named.root: there is no tree "paths"; there are texts, '
                                     "numbers"),
                ("tree.root:path", 'tree.root: there is no tree "path"; there is paths'),
                ("missing.root:a", "missing.root:a: cannot be read: No such file"),
                ("numbered.csv:a", "numbered.csv:a: cannot be read: No such file")):
            self.assertRegex(self.run_check(name, status=2).err, reason)

    def test_content_decides_and_not_the_name(self):
        (self.folder / "tree.csv").write_bytes((self.files / "named.root").read_bytes())
        geometry = self.tables(*ANCHOR)
        wanted = self.run_check("named.csv", geometry=geometry).out
        self.assertEqual(self.run_check(self.folder / "tree.csv:texts", geometry=geometry).out,
                         wanted)
        text = self.write("paths.root", self.named())
        self.assertEqual(self.run_check(text, geometry=geometry).out, wanted)
        odd = self.write("a:b.csv", self.named())
        self.assertEqual(self.run_check(odd, geometry=geometry).out, wanted)

    def test_damaged_files_are_refused(self):
        for name in ("tree.root", "ntuple.root"):
            content = bytearray((self.files / name).read_bytes())
            cut = self.write("cut.root", bytes(content[:len(content) // 2]))
            result = self.run_check(cut, "-o", "out.csv", status=2)
            self.assertRegex(result.err, r"cut.root: the ROOT file is damaged or cut short\n$")
            content[len(content) // 2] ^= 0x10
            flipped = self.write("flipped.root", bytes(content))
            result = self.run_check(flipped, "-o", "out.csv", status=2)
            self.assertRegex(result.err, r'flipped.root: tree "paths", column \w+, entry \d+: '
                                         r"cannot be read: .*\n$")
            self.assertFalse((self.folder / "out.csv").exists())

    def test_a_missing_column_is_refused(self):
        small = self.write("small.csv", "type,start_x\nWater,1\n")
        write_root(root_job(small, self.folder / "small.root", "RNTuple"))
        result = self.run_check(self.folder / "small.root", status=2)
        missing = ", ".join(c for c in COLUMNS if c not in ("type", "start_x"))
        self.assertRegex(result.err, f'small.root: tree "paths": missing columns: {missing}\n$')

    def test_the_input_is_not_replaced(self):
        copy = self.folder / "copy.root"
        copy.write_bytes((self.files / "tree.root").read_bytes())
        for name in ("copy.root", "copy.root:paths"):
            result = self.run_check(self.folder / name, "-o", copy, status=2)
            self.assertIn("is both read and written", result.err)
        self.assertEqual(copy.read_bytes(), (self.files / "tree.root").read_bytes())

    def test_paths_of_scan_give_the_same_verdicts(self):
        geometry = ["--geometry", REFERENCE]
        scan = [PROGRAM, "scan", "--at", "1000,2000,3000", "--pmts", DATA / "pmts.csv", *geometry,
                "--reflections"]
        self.run_command([*scan, "--paths", "p.csv"])
        self.run_command([*scan, "--paths", "p.root"])
        wanted = self.run_check(self.folder / "p.csv").out
        self.assertEqual(self.run_check(self.folder / "p.root").out, wanted)
        explain = [PROGRAM, "explain", "--row", 2100, *geometry]
        self.assertEqual(self.run_command([*explain, "p.root:paths"]).out,
                         self.run_command([*explain, "p.csv"]).out)
        result = self.run_command([PROGRAM, "explain", "--row", 1_000_000, *geometry, "p.root"],
                                  status=2)
        self.assertRegex(result.err, r'p.root: tree "paths": there is no row 1000000; the number '
                                     r"of rows is \d+\n")


if __name__ == "__main__":
    unittest.main(verbosity=2)
