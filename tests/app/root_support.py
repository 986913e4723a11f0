"""Reads the ROOT files that the command writes, with a Python that has ROOT."""

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
