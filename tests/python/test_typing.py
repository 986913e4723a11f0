"""Type hints, and the examples in doc strings."""

import doctest
import importlib
import importlib.util
import pathlib
import pkgutil
import sys

import pytest
import zarn
from support import SOURCE

PACKAGE = pathlib.Path(zarn.__file__).parent
# Without those whose libraries are not installed.
NEEDS = {"rdf": "ROOT", "draw": "matplotlib"}
MODULES = [m.name for m in pkgutil.iter_modules(zarn.__path__) if m.name not in ("_core", "_sql")
           and importlib.util.find_spec(NEEDS.get(m.name, "zarn"))]

USER = """
import datetime
import pathlib
import numpy as np
import numpy.typing as npt
import zarn
import zarn.draw
import zarn.rdf

calc = zarn.Calculator("data/reference-detector", run=0, tolerance=150.0)
codes: npt.NDArray[np.uint8] = calc.check({"type": ["Water"]})
paths = calc.light_paths([[0.0, 0.0, 3000.0]], np.zeros((2, 3)), reflections=True)
result: zarn.ScanResult = calc.scan(np.zeros((1, 3)), [[8300.0, 0.0, 0.0]], smear=10.0)
share: npt.NDArray[np.float64] = result.per_pmt().fraction
by: zarn.Verdict = zarn.Verdict(codes[0])
points: npt.NDArray[np.float64] = calc.hold_down_ropes.surface_points
text: str = by.label + str(calc.explain(event=[0, 0, 0], pmt=[8300, 0, 0]).to_dict()["by"])
frame = zarn.rdf.from_paths("paths.root:paths", calc, {"start_x": "vertex.x"}, code="by")
frame = zarn.rdf.define_shadowing(frame, calc, code="again")
tolerances: npt.NDArray[np.float64] = calc.critical_tolerance(paths, zarn.Verdict.AV_PIPE)
old = zarn.Calculator("sqlite:tables.db", 7, overrides=pathlib.Path("a.json"), as_of="2026-01-31")
time: str | None = old.as_of
findings: tuple[zarn.TableFinding, ...] = zarn.check_tables("tables.db", pmts=np.zeros((1, 3)))
remedies: list[str] = [f.remedy for f in findings if f.severity is zarn.Severity.ERROR]
zarn.check_tables("tables.db", as_of=datetime.date(2026, 1, 31)).raise_for_errors(strict=True)
zarn.draw.map(result, theme="dark").set_rasterized(True)
places: npt.NDArray[np.float64] = zarn.draw.project([[0, 0, 1]])
"""
WRONG = {
    "calc.check(paths, threads='2')": "arg-type",
    "calc.scan([[0.0, 0.0, 0.0]], [[1.0, 0.0, 0.0]], refections=True)": "call-arg",
    "calc.tolerance = 3.0": "misc",
    "text = result.codes": "assignment",
    "zarn.rdf.define_scan(frame, calc, reflection='no')": "arg-type",
    "zarn.draw.map(result, view='center')": "arg-type",
    "zarn.Calculator('tables', as_of=20260131)": "arg-type",
    "findings[0].severity = zarn.Severity.NOTE": "misc",
}


@pytest.fixture
def mypy(tmp_path, monkeypatch):
    api = pytest.importorskip("mypy.api")
    monkeypatch.setenv("MYPYPATH", str(PACKAGE.parent))
    config = SOURCE / "tests" / "python" / "mypy.ini"

    def run(*arguments):
        out, err, _ = api.run(
            ["--config-file", str(config), "--cache-dir", str(tmp_path), *map(str, arguments)])
        assert err == ""
        return out.splitlines()

    return run


def test_types_are_right_in_the_package_and_in_what_uses_it(mypy, tmp_path):
    (tmp_path / "user.py").write_text(USER)
    (tmp_path / "wrong.py").write_text(USER + "\n".join(WRONG))
    *errors, _ = mypy(PACKAGE, tmp_path / "user.py", tmp_path / "wrong.py")
    assert [line for line in errors if "wrong.py" not in line and ": error:" in line] == []
    found = [line for line in errors if "wrong.py" in line and ": error:" in line]
    assert [line.rpartition("[")[2].rstrip("]") for line in found] == list(WRONG.values())


@pytest.mark.parametrize("name", ["zarn", *(f"zarn.{module}" for module in MODULES)])
def test_the_examples_in_doc_strings_are_right(name, monkeypatch):
    monkeypatch.chdir(SOURCE)
    assert doctest.testmod(importlib.import_module(name)).failed == 0


def test_there_are_examples_in_doc_strings():
    finder = doctest.DocTestFinder()
    examples = [e for name in MODULES for t in finder.find(sys.modules[f"zarn.{name}"])
                for e in t.examples]
    assert len(examples) >= 5
