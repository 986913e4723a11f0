"""Reads the ROOT files that the command writes, and writes some for it to read, with a
Python that has ROOT."""

import functools
import json
import os
import pathlib
import subprocess
import sys
import unittest

SCRIPT = """
import json, sys
import ROOT
reader = ROOT.RNTupleReader.Open(sys.argv[1], sys.argv[2])
entry = reader.CreateEntry()
fields = [str(field.GetFieldName()) for field in reader.GetDescriptor().GetTopLevelFields()]
rows = []
for number in range(reader.GetNEntries()):
    reader.LoadEntry(number, entry)
    values = [entry[field] for field in fields]
    rows.append([v if isinstance(v, (int, float)) else str(v) for v in values])
print(json.dumps({"fields": fields, "rows": rows,
                  "description": str(reader.GetDescriptor().GetDescription())}))
"""


WRITER = """
import csv, json, sys
import numpy
import ROOT
for job in json.load(sys.stdin):
    header, *rows = csv.reader(open(job["csv"], newline=""))
    numbers, texts = {}, {}
    for name, cells in zip(header, zip(*rows)):
        if name in job["texts"]:
            texts[name] = ROOT.std.vector["std::string"](cells)
        else:
            numbers[name] = numpy.array([float(cell or 0) for cell in cells]).astype(
                job["integers"].get(name, job["coordinates"]))
    frame = ROOT.RDF.FromNumpy(numbers)
    for name, cells in texts.items():
        frame = frame.Define(name, f"(*reinterpret_cast<std::vector<std::string>*>("
                                   f"{ROOT.addressof(cells)}))[rdfentry_]")
    options = ROOT.RDF.RSnapshotOptions()
    options.fMode = job["mode"]
    options.fOutputFormat = getattr(ROOT.RDF.ESnapshotOutputFormat, "k" + job["format"])
    frame.Snapshot(job["tree"], job["file"], header, options)
"""


@functools.lru_cache()
def python_with_root():
    """The first Python that has ROOT, or None. script/setup installs ROOT into .venv."""
    venv = pathlib.Path(os.environ["ZARN_SOURCE_DIR"], ".venv", "bin", "python")
    for python in (venv, pathlib.Path(sys.executable)):
        if python.exists() and subprocess.run([python, "-W", "ignore", "-c", "import ROOT"],
                                              capture_output=True).returncode == 0:
            return python
    return None


class NTuple:
    """The content of an RNTuple; numbers are int or float, all else is text."""

    def __init__(self, name, file):
        if python_with_root() is None:
            raise unittest.SkipTest("no Python with ROOT")
        done = subprocess.run([python_with_root(), "-W", "ignore", "-c", SCRIPT, name, str(file)],
                              capture_output=True, text=True, check=True)
        content = json.loads(done.stdout.splitlines()[-1])
        self.fields = content["fields"]
        self.rows = content["rows"]
        self.origin = json.loads(content["description"])

    def column(self, field):
        return [row[self.fields.index(field)] for row in self.rows]


def root_job(table, file, form="TTree", tree="paths", coordinates="float64", texts=("type",),
             mode="RECREATE", **integers):
    """A ROOT file to write from a CSV file: columns of text, columns of integers of a
    given kind, and of coordinates."""
    return {"csv": str(table), "file": str(file), "format": form, "tree": tree,
            "coordinates": coordinates, "texts": texts, "mode": mode, "integers": integers}


def write_root(*jobs):
    """Write ROOT files, all in one process: ROOT takes a second to start."""
    if python_with_root() is None:
        raise unittest.SkipTest("no Python with ROOT")
    done = subprocess.run([python_with_root(), "-W", "ignore", "-c", WRITER],
                          input=json.dumps(jobs), capture_output=True, text=True)
    if done.returncode != 0:
        raise RuntimeError(done.stderr[-3000:])
