#!/usr/bin/env python3
"""What docs/tables.md says of the geometry tables is true, and its minimal detector
is the one in examples/."""

import json
import math
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

SOURCE = pathlib.Path(os.environ["ZARN_SOURCE_DIR"])
ZARN_SHADOW = pathlib.Path(os.environ["ZARN_SHADOW"])
TABLES_SCHEMA = os.environ["ZARN_TABLES_SCHEMA"]
EXAMPLE = SOURCE / "examples" / "minimal-detector"
PAGE = (SOURCE / "docs" / "tables.md").read_text()

VESSEL = ("vessel.json", "optics.json")
COMPONENTS = ("AVHDRope", "SupportRope", "BellyPlate", "NCDAnchor", "AVPipe", "NeckBoss")


def detector(*names):
    """The entries of some files of the minimal detector, or of all."""
    return [entry for file in sorted(EXAMPLE.glob("*.json")) if not names or file.name in names
            for entry in json.loads(file.read_text())]


def places(entries):
    return [(entry["table"], entry["index"], field)
            for entry in entries for field in entry["fields"]]


def fields_at(entries, table, index):
    return next(entry["fields"] for entry in entries
                if (entry["table"], entry["index"]) == (table, index))


def in_backticks(cell):
    return re.findall(r"`([^`]+)`", cell)


def rows(text):
    """The cells of all rows of tables."""
    return [[cell.strip() for cell in line.strip("|").split("|")]
            for line in text.splitlines() if line.startswith("| ")]


class Row:
    """One row of a table of fields."""

    def __init__(self, part, cells):
        self.part = part  # the component, or the title of the section
        self.table, *self.indices = in_backticks(cells[0])
        self.fields = in_backticks(cells[1])
        # "unequal or empty: not loaded"; nothing where the fields are no arrays.
        *self.wrong_lengths, self.outcome = re.split(r", | or |: ", "".join(cells[5:]))

        self.types = cells[2]
        self.unit = cells[3]
        self.is_for_drawings = "for drawings only" in cells[4]

    def places(self):
        return [(self.table, index, field) for index in self.indices for field in self.fields]


def known_fields():
    """The list of fields that the program has."""
    return json.loads(subprocess.run([TABLES_SCHEMA, "--fields"], check=True,
                                     capture_output=True, text=True).stdout)


def rows_of_fields():
    found = []
    for section in re.split(r"^## ", PAGE, flags=re.MULTILINE)[1:]:
        part = section.split("\n")[0].split(": ")[-1]
        found += [Row(part, cells) for cells in rows(section)
                  if re.match(r"`[A-Z_]+` `", cells[0])]
    return found


class Result:
    def __init__(self, done):
        self.status = done.returncode
        self.said = done.stdout + done.stderr

    def label(self, component):
        """What stands beside a component in the table at the end."""
        return re.search(rf"^  {component} +(not loaded|nothing to test|\d+)\b", self.said,
                         re.MULTILINE)[1]


def scan(entries, pmts=(EXAMPLE / "pmts.csv").read_text()):
    with tempfile.TemporaryDirectory() as folder:
        tables = pathlib.Path(folder) / "tables.json"
        tables.write_text(json.dumps(entries))
        return Result(subprocess.run(
            [ZARN_SHADOW, "scan", "--at", "0,0,0", "--pmts", "-", "--geometry", tables],
            input=pmts, capture_output=True, text=True))


def quoted_files():
    """The blocks of files; each is named by the paragraph before it."""
    found = {}
    for block in re.finditer(r"^```(json|csv)\n(.*?)^```$", PAGE, re.MULTILINE | re.DOTALL):
        before = PAGE[:block.start()].rstrip("\n").rpartition("\n\n")[2]
        found[re.search(rf"`([\w/-]+\.{block[1]})`", before)[1]] = block[2]
    return found


def shown_commands(language):
    """The blocks of commands, each with what it prints; a command may have a text of its
    own, up to END."""
    command = r"\w*\$ (?:[^\n]*\\\n)*[^\n]*<<END\n.*?^END\n|\w*\$ (?:[^\n]*\\\n)*[^\n]*\n"
    return [re.fullmatch(f"((?:{command})+)(.*)", block, re.MULTILINE | re.DOTALL).groups()
            for block in re.findall(rf"^```{language}\n(.*?)^```$", PAGE, re.M | re.DOTALL)]


class Shell:
    """Runs the commands of the page one after another in a folder.

    The time of an import differs from the one on the page: each that is printed stands for
    the one at its place there, also in the commands that follow.
    """

    TIME = r"\d{4}-\d\d-\d\dT[\d:.]+Z"

    def __init__(self, folder):
        self.folder = folder
        self.times = {}  # on the page: here
        (folder / "examples").symlink_to(SOURCE / "examples")
        self.path = f"{ZARN_SHADOW.parent}:{os.environ['PATH']}"

    def run(self, commands, wanted, environment={}):
        """What commands print, with the times of the page."""
        for name, text in quoted_files().items():
            file = self.folder / name
            if "/" in name and (file.parent.exists() or file.parent.name == "survey"):
                file.parent.mkdir(exist_ok=True)
                file.write_text(text)
        for shown, here in self.times.items():
            commands = commands.replace(shown, here)
        said = subprocess.run(["bash", "-ec", commands], cwd=self.folder, text=True,
                              env={**os.environ, "PATH": self.path, **environment},
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT).stdout
        said = re.sub(r"^(seconds|paths/second) .*\n", "", said, flags=re.M)
        self.times |= zip(re.findall(self.TIME, wanted), re.findall(self.TIME, said))
        for shown, here in self.times.items():
            said = said.replace(here, shown)
        return said


class TablesPage(unittest.TestCase):
    maxDiff = None

    def test_the_minimal_detector_is_quoted_file_by_file(self):
        shown = {name: text for name, text in quoted_files().items() if "/" not in name}
        self.assertEqual(shown, {file.name: file.read_text() for file in EXAMPLE.iterdir()})

    def test_the_commands_shown_print_what_is_shown(self):
        with tempfile.TemporaryDirectory() as folder:
            shell = Shell(pathlib.Path(folder))
            for commands, wanted in shown_commands("text"):
                self.assertEqual(shell.run(re.sub(r"^\$ ", "", commands, flags=re.M), wanted),
                                 wanted, commands)

    @unittest.skipIf("ZARN_WITHOUT_SERVER" in os.environ, "starts a PostgreSQL server")
    def test_the_commands_shown_for_a_server_do_what_is_said(self):
        sys.path.insert(0, str(SOURCE / "tests" / "sql"))
        from postgresql import Server

        blocks = shown_commands("console")
        self.assertGreater(len(blocks), 3)
        with tempfile.TemporaryDirectory() as folder, Server() as server:
            shell = Shell(pathlib.Path(folder))
            (service,) = re.findall(r"^```ini\n(.*?)^```$", PAGE, re.MULTILINE | re.DOTALL)
            users = {"server": {"PGUSER": "postgres", "PGHOST": str(server.folder)}}
            for user in ("carla", "anna", "ben"):
                file = pathlib.Path(folder) / f"{user}.conf"
                file.write_text(service.replace("db.lab", str(server.folder))
                                .replace("carla", user))
                users[user] = {"PGSERVICEFILE": str(file)}
            for commands, wanted in blocks:
                # The server lets everybody in: a password would be read from a terminal.
                commands = commands.replace(" --pwprompt", "")
                said = ""
                for user, command in re.findall(r"^(\w+)\$ ((?:.(?!^\w+\$ ))*.)", commands,
                                                re.MULTILINE | re.DOTALL):
                    said += shell.run(command, wanted, users[user])
                self.assertEqual(said, wanted, commands)

    def test_each_file_switches_on_what_is_said(self):
        named = {in_backticks(cells[0])[0]: (cells[1], in_backticks(cells[2]))
                 for cells in rows(PAGE) if re.fullmatch(r"`\w+\.json`", cells[0])}
        self.assertEqual(sorted(named), sorted(file.name for file in EXAMPLE.glob("*.json")))
        for name, (component, others) in named.items():
            if component not in COMPONENTS:
                continue
            with self.subTest(file=name):
                result = scan(detector(*VESSEL, name, *others))
                self.assertRegex(result.label(component), r"^\d+$")
                if others:
                    result = scan(detector(*VESSEL, name))
                    self.assertEqual(result.label(component), "not loaded")

    def test_the_fields_listed_are_those_of_the_minimal_detector(self):
        listed = {place for row in rows_of_fields() for place in row.places()}
        optional = {("OPTICS", medium, "wavelength") for medium in ("inner_av", "acrylic")}
        self.assertEqual(listed - optional, set(places(detector())))

    def test_the_fields_listed_are_those_that_the_program_knows(self):
        page = set()
        for row in rows_of_fields():
            for place in row.places():
                page.add((row.part, *place, "array" in row.types, "string" in row.types,
                          row.unit.replace("none", ""), row.is_for_drawings))
        known = set()
        names = {(entry["index"], field): value for entry in detector()
                 if entry["table"] == "GEO" for field, value in entry["fields"].items()}
        for field in known_fields():
            if field["use"] == "other":
                continue
            index = field["index"]
            if field["named_by"]:
                index = names[index, field["named_by"]]
            known.add((field["part"], field["table"], index, field["field"],
                       "array" in field["type"], field["type"] == "a string", field["unit"],
                       field["use"] == "drawings"))
        self.assertEqual(page, known)

    def assert_names_what_is_wrong(self, entries, place, reason):
        table, index, _ = place
        readers = [row.part for row in rows_of_fields()
                   if place in row.places() and row.part in COMPONENTS]
        with self.subTest(place=place, reason=reason):
            result = scan(entries)
            self.assertEqual(result.status, 0 if readers else 2, result.said)
            self.assertIn(f"table {table}, index {index}: {reason}", result.said)
            self.assertEqual(re.findall(r"tables\.json: (\w+) is off: ", result.said), readers)
            self.assertEqual(re.findall(r"^  (\w+) +not loaded", result.said, re.M), readers)

    def test_a_field_that_is_missing_or_of_another_type_is_named(self):
        for place in places(detector()):
            table, index, field = place
            missing, of_another_type = detector(), detector()
            old = fields_at(missing, table, index).pop(field)
            fields_at(of_another_type, table, index)[field] = 1 if isinstance(old, str) else "text"
            self.assert_names_what_is_wrong(missing, place, f"there is no field {field}")
            self.assert_names_what_is_wrong(of_another_type, place, f"the field {field} is not a")

    def test_a_wrong_length_has_the_outcome_that_is_said(self):
        tried = 0
        for row in rows_of_fields():
            for wrong in row.wrong_lengths:
                entries = detector()
                fields = fields_at(entries, row.table, row.indices[-1])
                for field in row.fields:
                    last = {"unequal": -1 if field == row.fields[0] else None,
                            "empty": 0, "fewer than six": 5}[wrong]
                    fields[field] = fields[field][:last]
                with self.subTest(part=row.part, fields=row.fields, wrong=wrong):
                    result = scan(entries)
                    found = "status 2" if result.status == 2 else result.label(row.part)
                    self.assertEqual(found, row.outcome, result.said)
                tried += 1
        self.assertEqual(tried, 14)

    def test_the_band_of_the_pipes_is_the_one_shown(self):
        bands = [tuple(float(number) for number in re.findall(r"\d+", cells[1]))
                 for cells in rows(PAGE) if re.fullmatch(r"\d+ to \d+", cells[1])]
        pmts = ["pmt,x,y,z"]
        # Just inside each of the limits 30 and 120 between the bands.
        for (low, high), polars in zip(bands, ((1.0, 29.9), (30.1, 119.9), (120.1, 179.0)),
                                       strict=True):
            for polar in polars:
                for azimuth, is_shadowed in ((low - 0.1, 0), (low + 0.1, 1), (high - 0.1, 1),
                                             (high + 0.1, 0)):
                    theta, phi = math.radians(polar), math.radians(azimuth)
                    pmts.append(f"{is_shadowed},{5000 * math.sin(theta) * math.cos(phi)},"
                                f"{5000 * math.sin(theta) * math.sin(phi)},"
                                f"{5000 * math.cos(theta)}")
        result = scan(detector(*VESSEL, "av_pipes.json"), "\n".join(pmts) + "\n")
        found = re.findall(r"^0,(\d),\S+,(\d),", result.said, re.MULTILINE)
        self.assertEqual(len(found), 24)
        for wanted, shadowed in found:
            self.assertEqual(wanted, shadowed, result.said)


if __name__ == "__main__":
    unittest.main(verbosity=2)
