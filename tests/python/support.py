"""Helpers for the tests of the Python package.

ZARN_SHADOW is the command, ZARN_DATA_DIR the folder with the reference detector,
ZARN_SOURCE_DIR the root of the repository.
"""

import csv
import io
import json
import os
import pathlib
import subprocess
import sys

import numpy as np
import zarn

SOURCE = pathlib.Path(os.environ["ZARN_SOURCE_DIR"])
DATA = pathlib.Path(os.environ["ZARN_DATA_DIR"])
REFERENCE = DATA / "reference-detector"
MINIMAL = SOURCE / "examples" / "minimal-detector"

COLUMNS = zarn.LIGHT_PATH.names[:25]
#: Of the types of light paths, by their numbers.
NAMES = np.array([
    "Light Path Uninitialised",
    "Scint/InnerAV->AV->Water",
    "AV->Scint/InnerAV->AV->Water",
    "AV->Water",
    "Water->AV->Scint/InnerAV->AV->Water",
    "Water->AV->Water",
    "Water",
    "Water->Reflection->Water",
])
TIMEOUT = 120  # s; only a hang reaches it


def rows_of(text):
    return list(csv.DictReader(io.StringIO(text)))


def command_text(*arguments):
    """What the command zarn-shadow writes to standard output."""
    done = subprocess.run(
        [os.environ["ZARN_SHADOW"], *map(str, arguments)],
        capture_output=True, text=True, timeout=TIMEOUT, check=False,
    )
    assert done.returncode == 0, done.stderr
    return done.stdout


def command(*arguments):
    """The rows that the command zarn-shadow writes to standard output."""
    return rows_of(command_text(*arguments))


def command_json(*arguments):
    """The exit status of the command, and the JSON that it writes to standard output."""
    done = subprocess.run(
        [os.environ["ZARN_SHADOW"], *map(str, arguments)],
        capture_output=True, text=True, timeout=TIMEOUT, check=False,
    )
    return done.returncode, json.loads(done.stdout)


def import_tables(source, database, *options):
    """Import tables into a database, with the command."""
    command_text("tables", "import", source, database, "--author", "tests",
                 "--reason", "a test", *options)


def column(rows, name, kind=float):
    return np.array([kind(row[name]) for row in rows])


def run_python(code, *arguments):
    """Run a script in a Python of its own."""
    done = subprocess.run(
        [sys.executable, "-c", code, *map(str, arguments)],
        capture_output=True, text=True, timeout=TIMEOUT, check=False,
    )
    assert done.returncode == 0, done.stderr
    return done


def write_positions(file, kind, positions):
    """A CSV table as the command reads it; the coordinates are exact."""
    lines = [f"{kind},x,y,z"]
    lines += [f"{i},{x!r},{y!r},{z!r}" for i, (x, y, z) in enumerate(positions.tolist())]
    file.write_text("\n".join(lines) + "\n")
    return file


def as_columns(paths):
    """A structured array as a dictionary of dense arrays."""
    paths = paths.reshape(-1)
    return {name: np.ascontiguousarray(paths[name]) for name in COLUMNS}


def tables_of(folder):
    """The entries of geometry tables by table and index."""
    entries = {}
    for file in sorted(folder.glob("*.json")):
        for entry in json.loads(file.read_text()):
            entries[entry["table"], entry["index"]] = entry["fields"]
    return entries


def xyz(fields, prefix=""):
    return np.stack([fields[prefix + axis] for axis in "xyz"], axis=-1)
