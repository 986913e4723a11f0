"""Reads the ROOT files that the command writes, and writes some for it to read, with a
Python that has ROOT."""

import atexit
import functools
import json
import os
import pathlib
import subprocess
import sys
import unittest

# Answers a line of JSON with another one, until its input ends. ROOT prints on standard
# output, too: answers have their own copy of it.
SERVER = """
import csv, json, os, sys, traceback
answers = os.fdopen(os.dup(1), "w")
os.dup2(2, 1)
import numpy
import ROOT

def read(name, file):
    reader = ROOT.RNTupleReader.Open(name, file)
    entry = reader.CreateEntry()
    fields = [str(field.GetFieldName()) for field in reader.GetDescriptor().GetTopLevelFields()]
    rows = []
    for number in range(reader.GetNEntries()):
        reader.LoadEntry(number, entry)
        values = [entry[field] for field in fields]
        rows.append([v if isinstance(v, (int, float)) else str(v) for v in values])
    return {"fields": fields, "rows": rows,
            "description": str(reader.GetDescriptor().GetDescription())}

def write(jobs):
    for job in jobs:
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

print("ready", file=answers, flush=True)
for line in sys.stdin:
    name, *arguments = json.loads(line)
    try:
        answer = {"result": {"read": read, "write": write}[name](*arguments)}
    except Exception:
        answer = {"error": traceback.format_exc()}
    print(json.dumps(answer), file=answers, flush=True)
"""


@functools.lru_cache()
def server():
    """A Python that has ROOT, or None. script/setup installs ROOT into .venv. It serves
    all cases of a test program, because ROOT takes a second to start."""
    venv = pathlib.Path(os.environ["ZARN_SOURCE_DIR"], ".venv", "bin", "python")
    for python in (venv, pathlib.Path(sys.executable)):
        if python.exists():
            process = subprocess.Popen([python, "-W", "ignore", "-c", SERVER], text=True,
                                       stdin=subprocess.PIPE, stdout=subprocess.PIPE)
            atexit.register(process.communicate)
            if process.stdout.readline() == "ready\n":
                return process
    return None


def ask_root(name, *arguments):
    if server() is None:
        raise unittest.SkipTest("no Python with ROOT")
    print(json.dumps([name, *arguments]), file=server().stdin, flush=True)
    answer = json.loads(server().stdout.readline())
    if "error" in answer:
        raise RuntimeError(answer["error"])
    return answer["result"]


class NTuple:
    """The content of an RNTuple; numbers are int or float, all else is text."""

    def __init__(self, name, file):
        content = ask_root("read", name, str(file))
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
    """Write ROOT files."""
    ask_root("write", jobs)
