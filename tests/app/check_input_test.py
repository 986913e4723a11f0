#!/usr/bin/env python3
"""The format of the light paths that `zarn-shadow check` reads."""

import os
import pty
import sys
import threading
import unittest

sys.dont_write_bytecode = True  # the source folder stays clean

from command_support import (
    ANCHOR, COLUMNS, COORDINATES, HEADER, PIPES, PROGRAM, REFERENCE, TIMEOUT, VECTORS)
from check_support import CheckTest, FAR_FROM_ANCHOR, NEAR_ANCHOR, TYPES, path, row_with, table


class Input(CheckTest):
    def test_counts_rows_from_zero_in_the_order_of_the_input(self):
        rows = [NEAR_ANCHOR, FAR_FROM_ANCHOR, FAR_FROM_ANCHOR, NEAR_ANCHOR]
        result = self.check(self.paths(*rows))
        self.assertEqual(result.out, b"row,shadowed,by\n0,1,NCDAnchor\n1,0,\n2,0,\n"
                                     b"3,1,NCDAnchor\n")

    def test_finds_columns_by_name_in_any_order(self):
        columns = list(reversed(COLUMNS))
        cells = {"type": "AV->Water", "av1_z": "-5800"}
        text = ",".join(columns) + "\n" + ",".join(cells.get(c, "") for c in columns) + "\n"
        self.assertEqual(self.check_text(text).verdicts(), ["NCDAnchor"])

    def test_ignores_unknown_columns_with_any_content(self):
        columns = ["note", *COLUMNS[:7], "", *COLUMNS[7:], "", "Type", "start_X"]
        cells = {"type": "AV->Water", "av1_z": "-5800", "note": '"say ""no"", or\nyes"',
                 "Type": "nonsense", "start_X": "far", "": "1;5"}
        text = ",".join(columns) + "\n" + ",".join(cells.get(c, "") for c in columns) + "\n"
        self.assertEqual(self.check_text(text).verdicts(), ["NCDAnchor"])

    def test_accepts_quotes_around_any_cell(self):
        text = (",".join(f'"{c}"' for c in COLUMNS) + "\n"
                + ",".join(f'"{cell}"' for cell in NEAR_ANCHOR.split(",")) + "\n")
        self.assertEqual(self.check_text(text).verdicts(), ["NCDAnchor"])

    def test_reads_standard_input_for_a_dash(self):
        result = self.check("-", stdin=table(NEAR_ANCHOR, FAR_FROM_ANCHOR).encode())
        self.assertEqual(result.verdicts(), ["NCDAnchor", ""])
        result = self.check("-", stdin=table(NEAR_ANCHOR, "short").encode(), status=2)
        self.assertRegex(result.err, r"(?i)standard input.*line 3")

    def test_reads_a_named_pipe(self):
        pipe = self.folder / "pipe"
        os.mkfifo(pipe)
        thread = threading.Thread(target=lambda: pipe.write_text(table(NEAR_ANCHOR)))
        thread.start()
        self.assertEqual(self.check(pipe).verdicts(), ["NCDAnchor"])
        thread.join(TIMEOUT)

    def test_reads_a_pipe_that_delivers_one_byte_at_a_time(self):
        process = self.start(self.command("-", self.tables(*ANCHOR)))
        for byte in table(NEAR_ANCHOR, FAR_FROM_ANCHOR, end="\r\n").encode():
            os.write(process.stdin.fileno(), bytes([byte]))
        out, _ = process.communicate(timeout=TIMEOUT)
        self.assertEqual(out, b"row,shadowed,by\n0,1,NCDAnchor\n1,0,\n")

    def test_one_end_of_file_on_a_terminal_ends_the_input(self):
        master, slave = pty.openpty()
        self.addCleanup(os.close, master)
        process = self.start(self.command("-", self.tables(*ANCHOR)), stdin=slave)
        os.close(slave)
        os.write(master, table(NEAR_ANCHOR).encode() + b"\x04")
        self.assert_ends(process, 0, timeout=20)
        self.assertEqual(process.stdout.read(), b"row,shadowed,by\n0,1,NCDAnchor\n")

    def test_accepts_crlf_and_a_byte_order_mark(self):
        plain = self.check_text(table(NEAR_ANCHOR, FAR_FROM_ANCHOR)).out
        crlf = table(NEAR_ANCHOR, FAR_FROM_ANCHOR, end="\r\n")
        self.assertEqual(self.check_text(crlf).out, plain)
        self.assertEqual(self.check_text("\ufeff" + crlf).out, plain)
        self.assertEqual(self.check_text("\ufeff" + crlf.replace("type", '"type"', 1)).out,
                         plain)
        self.assertEqual(self.check_text(crlf.replace("\r", "", 1)).out, plain)

    def test_skips_only_a_complete_byte_order_mark(self):
        for start in (b"\xef", b"\xef\xbb", b"\xbb\xbf", b"\xef\xbb\xbf\xef\xbb\xbf",
                      b"\xff\xfe"):
            with self.subTest(start=start):
                self.refuse(start + table(NEAR_ANCHOR).encode(), r"line 1\b", r"\btype\b")

    def test_the_last_line_needs_no_line_end(self):
        for end in ("", "\n", "\r\n", "\n\n\n", "\r\n\r\n", "\r"):
            with self.subTest(end=end):
                text = HEADER + "\n" + NEAR_ANCHOR + end
                self.assertEqual(self.check_text(text).verdicts(), ["NCDAnchor"])
        quoted = NEAR_ANCHOR.rpartition(",")[0] + ',"0"'
        for end in ("", "\n", "\r\n", "\r"):
            with self.subTest(quoted=end):
                text = HEADER + "\n" + quoted + end
                self.assertEqual(self.check_text(text).verdicts(), ["NCDAnchor"])

    def test_skips_blank_lines_and_does_not_count_them(self):
        text = ("\n\r\n" + HEADER + "\n\n\r\n\n" + NEAR_ANCHOR + "\n\n" + FAR_FROM_ANCHOR
                + "\r\n\r\n" + NEAR_ANCHOR + "\n\n")
        self.assertEqual(self.check_text(text).verdicts(), ["NCDAnchor", "", "NCDAnchor"])

    def test_a_header_without_rows_gives_a_header_without_rows(self):
        for text in (HEADER, HEADER + "\n", HEADER + "\r\n\r\n", "\ufeff" + HEADER):
            result = self.check_text(text)
            self.assertEqual(result.out, b"row,shadowed,by\n")
            self.assertEqual(result.counts()["paths"][0], "0")
            self.assertNotIn("nan", result.err)

    def test_an_empty_file_is_refused(self):
        for text in ("", "\n", "\r\n\n", "\ufeff", "\ufeff\n"):
            with self.subTest(text=text):
                self.refuse(text, "header")

    def test_an_empty_cell_is_zero(self):
        for empty in ("", '""'):
            cells = [{"type": "AV->Water", "av1_z": "-5800"}.get(c, empty) for c in COLUMNS]
            text = HEADER + "\n" + ",".join(cells) + "\n"
            self.assertEqual(self.check_text(text).verdicts(), ["NCDAnchor"])

    def test_all_missing_columns_are_named(self):
        for missing in (["type"], ["start_x"], ["av4_z"], ["type", "final_y", "av2_x"]):
            with self.subTest(missing=missing):
                header = ",".join(c for c in COLUMNS if c not in missing)
                result = self.refuse(header + "\n", r"line 1\b", *missing)
                self.assertNotIn("end_x", result.err)

    def test_column_names_are_neither_trimmed_nor_case_folded(self):
        for wrong in (HEADER.replace("type", " type"), HEADER.replace("type", "Type"),
                      HEADER.replace("end_x", "end_x "), HEADER.replace(",", ";"),
                      HEADER.replace(",", "\t"), HEADER.replace(",", ", ")):
            with self.subTest(header=wrong[:20]):
                self.refuse(wrong + "\n" + NEAR_ANCHOR + "\n", r"line 1\b")

    def test_a_column_that_appears_twice_is_an_error(self):
        for name in ("type", "start_x", "note"):
            with self.subTest(name=name):
                extra = f",{name},{name}" if name == "note" else f",{name}"
                self.refuse(HEADER + extra + "\n", r"line 1\b", name, "twice")

    def test_the_header_may_follow_blank_lines_and_its_line_is_reported(self):
        self.refuse("\n\n" + HEADER.replace("type", "kind") + "\n", r"line 3\b", r"\btype\b")

    def test_a_row_with_too_few_or_too_many_cells_is_an_error(self):
        self.refuse(table(NEAR_ANCHOR, "Water" + "," * 23), r"line 3\b", r"row 1\b",
                    "av4_z", r"\b24\b", r"\b25\b")
        self.refuse(table(NEAR_ANCHOR, "Water" + "," * 25), r"line 3\b", r"row 1\b",
                    r"\b26\b", r"\b25\b", "column")
        self.refuse(table("Water"), r"line 2\b", r"row 0\b", "start_x")
        self.refuse(table('""'), r"line 2\b")
        self.refuse(table(" "), r"line 2\b")

    def test_an_error_in_a_cell_names_file_line_row_and_column(self):
        for column in COORDINATES:
            with self.subTest(column=column):
                self.refuse(table(NEAR_ANCHOR, "", FAR_FROM_ANCHOR, row_with(column, "abc")),
                            r"line 5\b", r"row 2\b", rf"\b{column}\b", "abc")

    def test_line_breaks_in_quotes_count_as_lines(self):
        note = path('a\nname\r\nof "three" lines')
        self.refuse(table(note, row_with("end_y", "abc")), r"line 5\b", r"row 1\b",
                    r"\bend_y\b")
        header = HEADER + ',"a\nnote"'
        self.refuse(header + "\n" + NEAR_ANCHOR + ",\n" + row_with("end_y", "abc") + ",\n",
                    r"line 4\b", r"row 1\b", r"\bend_y\b")

    def test_wrong_quotes_are_an_error(self):
        rest = "," * 24
        for text, column in (('"Water' + rest, "type"), ('Wa"ter' + rest, "type"),
                             ('"Water"x' + rest, "type"), ('"Water" ' + rest, "type"),
                             ('Water, "1"' + "," * 23, "start_x"),
                             ('Water,"1""' + "," * 23, "start_x"),
                             ('Water,1"' + "," * 23, "start_x")):
            with self.subTest(text=text):
                self.refuse(table(NEAR_ANCHOR, text, NEAR_ANCHOR), r"line 3\b", r"row 1\b",
                            rf"\b{column}\b", "quote")

    def test_a_carriage_return_ends_a_line_only_with_a_newline_or_the_file(self):
        self.refuse(table(NEAR_ANCHOR + "\r", end="\r\n"), r"line 2\b", r"\bav4_z\b")
        self.refuse(table(row_with("end_y", "1\r2")), r"line 2\b", r"\bend_y\b")
        self.refuse(table(row_with("end_y", "\r")), r"line 2\b", r"\bend_y\b")
        self.refuse(table('"Water"\r' + "," * 24), r"line 2\b", r"\btype\b")
        self.refuse(table(NEAR_ANCHOR, NEAR_ANCHOR, end="\r"), r"line 1\b")
        self.refuse("\r" + table(NEAR_ANCHOR), r"line 1\b")
        result = self.check_text(table("Wa\rter" + "," * 24, "\r" + NEAR_ANCHOR))
        self.assertRegex(result.err, r"unknown type name: 2\b")

    def test_nul_bytes_in_a_number_are_an_error_that_names_the_place(self):
        for cell in ("\0", "1\0", "\x001", "1\x002"):
            with self.subTest(cell=cell):
                self.refuse(table(row_with("end_y", cell)), r"line 2\b", r"row 0\b",
                            r"\bend_y\b", "not a number")
        self.refuse(b"\0" * 300_000, "paths.csv")

    def test_a_bad_cell_cannot_control_the_terminal(self):
        result = self.refuse(table(row_with("end_y", "\x1b[2J\x1b]0;x\x07")), r"\bend_y\b")
        self.assertNotIn(b"\x1b", result.bytes_err)
        self.assertNotIn(b"\x07", result.bytes_err)

    def test_a_very_long_cell_is_shortened_in_the_message(self):
        result = self.refuse(table(row_with("end_y", "9" * 500_000 + "x")), r"line 2\b",
                             r"\bend_y\b", "not a number")
        self.assertLess(len(result.err), 2000)

    def test_a_missing_quote_does_not_read_the_whole_file_into_memory(self):
        text = table('"Water' + "," * 24) + (NEAR_ANCHOR + "\n") * 100_000
        self.refuse(text, r"line 2\b", r"row 0\b", r"\btype\b", "quote")

    def test_a_file_that_is_not_a_table_is_refused(self):
        self.refuse(bytes(range(256)) * 4096, "paths.csv")
        self.check("/dev/zero", status=2)
        self.check(PROGRAM, status=2)
        self.check(self.folder, status=2)

    def test_a_missing_file_is_bad_input(self):
        result = self.check("nowhere.csv", "-o", "out.csv", status=2)
        self.assertIn("nowhere.csv", result.err)
        self.assertFalse((self.folder / "out.csv").exists())

    def test_rows_may_span_read_buffers(self):
        rows, wanted = [], []
        for i in range(12_000):
            near = i * 7919 % 3 == 0
            vectors = {"av1": (0.0, 0.0, -5800.0) if near else (0.0, 0.0, 5860.0)}
            for extra in range(i % 7):
                vectors[VECTORS[extra]] = vectors.get(VECTORS[extra], (i / 7, -i / 3, 1e-3 * i))
            vectors["av1"] = (0.0, 0.0, -5800.0) if near else (0.0, 0.0, 5860.0)
            text = path("AV->Water", **vectors)
            rows.append('"AV->Water"' + text[len("AV->Water"):] if i % 5 == 0 else text)
            wanted.append("NCDAnchor" if near else "")
        for end in ("\n", "\r\n"):
            text = table(*rows, end=end)
            self.assertGreater(len(text), 1 << 20)
            self.assertEqual(self.check_text(text).verdicts(), wanted)

    def test_the_place_of_a_late_error_is_right(self):
        rows = [NEAR_ANCHOR, path("two\nlines"), ""] * 20_000
        self.refuse(table(*rows, row_with("av2_y", "abc"), NEAR_ANCHOR),
                    rf"line {4 * 20_000 + 2}\b", rf"row {2 * 20_000}\b", r"\bav2_y\b")

    def test_without_an_output_file_a_bad_row_still_gives_status_2(self):
        rows = [NEAR_ANCHOR] * 30_000
        result = self.check(self.paths(*rows, "short"), status=2)
        self.assertRegex(result.err, r"line 30002\b")
        self.assertTrue(result.out == b"" or result.out.startswith(b"row,shadowed,by\n"))


class Numbers(CheckTest):
    def z_of_av1(self, cell, *options, **more):
        text = table(NEAR_ANCHOR.replace("-5800.0", cell))
        return self.check_text(text, *options, **more).verdicts()

    def test_reads_decimals_and_exponents_with_either_sign(self):
        for cell in ("-5800", "-5.8e3", "-58E2", "-5800.", "-580000e-2", "-5800.000e+0",
                     "-05800", "-0.0058e6", "-" + "0" * 3000 + "5800", "-5800." + "0" * 3000,
                     "-58" + "0" * 400 + "e-398"):
            with self.subTest(cell=cell[:40]):
                self.assertEqual(self.z_of_av1(cell), ["NCDAnchor"])
        for cell in ("+5800", "5800", "+5.8e+3", ".5", "+.5", "-.5e0", "0", "-0", "+0"):
            with self.subTest(cell=cell):
                self.assertEqual(self.z_of_av1(cell), [""])

    def test_refuses_cells_that_are_not_entirely_a_number(self):
        for cell in ("+-1", "-+1", "++1", "--1", "+", "-", ".", "e5", "1e", "1e+", "0x10",
                     "0X1p3", "1_000", "1'000", '"1,5"', "1 ", " 1", "\t1", "1\t", " ", "1 2",
                     "1.2.3", "1f", "1d5", "1e5.5", "1mm", "one", "NaNs", "infinit", "nan(",
                     "nan(x y)", "1\xa0", "\u0661", "\u22121", "\uff11", "#N/A", "NULL"):
            with self.subTest(cell=cell):
                self.refuse(table(row_with("av1_z", cell)), r"line 2\b", r"row 0\b",
                            r"\bav1_z\b", "not a number")

    def test_refuses_too_large_numbers(self):
        for cell in ("1e400", "-1e400", "+1e309", "1.7976931348623159e308", "9" * 400,
                     "1e99999999999999999999"):
            with self.subTest(cell=cell[:30]):
                self.refuse(table(row_with("av1_z", cell)), r"line 2\b", r"\bav1_z\b",
                            "too large")

    def test_rounds_too_small_numbers_to_the_nearest_double(self):
        # Seen in the azimuth: any y > 0 is at 90 degrees, in the band of the pipes.
        def rows(*cells):
            return self.verdicts(PIPES, [path("AV->Water", av1=("0", y, "0")) for y in cells])
        self.assertEqual(rows("4.9e-324", "+4.9e-324", "3e-324", "2.5e-324", "1e-320",
                              "2.2250738585072011e-308"), ["AVPipe"] * 6)
        self.assertEqual(rows("2e-324", "1e-400", "-1e-400", "1e-99999999999999999999",
                              "0." + "0" * 5000 + "1", "-4.9e-324"), [""] * 6)

    def test_accepts_nan_and_infinity_in_any_spelling(self):
        for cell in ("nan", "NaN", "NAN", "-nan", "+nan", "inf", "Inf", "INF", "-inf", "+inf",
                     "infinity", "-Infinity"):
            with self.subTest(cell=cell):
                self.assertEqual(self.z_of_av1(cell), [""])

    def test_does_not_crash_on_a_nan_with_a_payload(self):
        for cell in ("nan(x)", "nan()", "nan(0x1)"):
            result = self.run_command(
                self.command(self.write("paths.csv", table(row_with("av1_z", cell))),
                             self.tables(*ANCHOR)), status=0)
            self.assertEqual(result.verdicts(), [""])

    def test_unusual_numbers_do_not_crash(self):
        values = ("nan", "-nan", "inf", "-inf", "1e308", "-1e308", "1.7976931348623157e308",
                  "4.9e-324", "-4.9e-324", "0", "-0", "1e-160", "1e160")
        rows = []
        for name in (*TYPES, "odd", "LightPath Uninitialised", ""):
            for value in values:
                rows.append(name + ("," + value) * 24)
                for column in range(24):
                    cells = ["1"] * 24
                    cells[column] = value
                    rows.append(name + "," + ",".join(cells))
                for vector in range(8):
                    cells = ["5900", "1", "-3"] * 8
                    cells[3 * vector:3 * vector + 3] = [value] * 3
                    rows.append(name + "," + ",".join(cells))
        for tolerance in ("150", "0", "-150", "1e308", "-1e308"):
            with self.subTest(tolerance=tolerance):
                result = self.check(self.paths(*rows), "--tolerance", tolerance,
                                    geometry=REFERENCE)
                self.assertEqual(len(result.verdicts()), len(rows))

    def test_numbers_are_read_and_written_the_same_in_every_locale(self):
        rows = [path("AV->Water", av1=(0.0, 0.0, z)) for z in (-5590.5, -5589.5)]
        for locale in ("de_DE", "de_DE.UTF-8", "fr_FR.UTF-8", "nowhere"):
            with self.subTest(locale=locale):
                env = {**os.environ, "LC_ALL": locale, "LANG": locale, "LC_NUMERIC": locale}
                result = self.check(self.paths(*rows), "--tolerance", "150.0", env=env)
                self.assertEqual(result.verdicts(), ["NCDAnchor", ""])
                self.assertEqual(result.counts()["shadowed"], ("1", "50.000"))
                self.check_text(table(row_with("av1_z", '"1,5"')), env=env, status=2)


if __name__ == "__main__":
    unittest.main(verbosity=2)
