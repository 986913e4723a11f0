"""Columns of ROOT's data frames: those of the calculator."""

import gc
import shutil

import numpy as np
import pytest
import zarn
from support import REFERENCE, as_columns, run_python

ROOT = pytest.importorskip("ROOT")

import zarn.rdf  # noqa: E402


def frame_of(columns):
    return ROOT.RDF.FromNumpy({name: np.ascontiguousarray(v) for name, v in columns.items()})


def pairs_of(events, pmts):
    """The columns of each event with each PMT."""
    at = np.repeat(events, len(pmts), axis=0), np.tile(pmts, (len(events), 1))
    return {f"{name}_{axis}": positions[:, i]
            for name, positions in zip(("event", "pmt"), at) for i, axis in enumerate("xyz")}


@pytest.fixture(scope="module")
def file(tmp_path_factory, all_types):
    """A file of light paths, with names of events."""
    path = tmp_path_factory.mktemp("rdf") / "paths.root"
    events = np.arange(len(all_types["type"]), dtype=np.int64)
    frame_of({**all_types, "event": events}).Snapshot("paths", str(path))
    return path


@pytest.mark.parametrize("imports", [
    "import zarn.rdf, ROOT",
    "import zarn, ROOT, zarn.rdf",
    "import ROOT, zarn.rdf",
])
def test_imports_may_have_any_order(imports):
    done = run_python(
        f"import sys, warnings; warnings.simplefilter('ignore'); {imports}\n"
        "calc = zarn.Calculator(sys.argv[1])\n"
        "frame = ROOT.RDataFrame(1)\n"
        "for name, value in zip(('event', 'pmt'), (3000.0, 8300.0)):\n"
        "    for axis in 'xyz':\n"
        "        number = str(value * (axis == ('z' if name == 'event' else 'y')))\n"
        "        frame = frame.Define(f'{name}_{axis}', f'double({number})')\n"
        "frame = zarn.rdf.define_scan(frame, calc)\n"
        "(code,) = frame.AsNumpy(['code'])['code']\n"
        "print(zarn.Verdict(code).label)\n", REFERENCE)
    assert done.stdout == "AVPipe\n"


def test_verdicts_are_those_of_check(calc, all_types):
    frame = zarn.rdf.define_shadowing(frame_of(all_types), calc)
    codes = frame.AsNumpy(["code"])["code"]
    assert codes.dtype == np.int32
    assert np.array_equal(codes, calc.check(all_types))
    assert set(codes) == set(range(7))


def test_light_paths_are_those_of_the_calculator(calc, events, pmts):
    pairs = frame_of(pairs_of(events, pmts))
    paths = calc.light_paths(events, pmts, wavelength=500.0, reflections=True)
    for number, reflection in enumerate((False, True)):
        wanted = paths[..., number].reshape(-1)
        frame = zarn.rdf.define_light_path(pairs, calc, wavelength=500.0, reflection=reflection)
        found = frame.AsNumpy(list(wanted.dtype.names))
        for name in wanted.dtype.names:
            assert np.array_equal(found[name], wanted[name]), name
        judged = zarn.rdf.define_shadowing(frame, calc).AsNumpy(["code"])["code"]
        assert np.array_equal(judged, calc.check(as_columns(wanted)))


def test_verdicts_on_pairs_are_those_of_a_scan(calc, events, pmts):
    pairs = frame_of(pairs_of(events, pmts))
    result = calc.scan(events, pmts, wavelength=500.0, reflections=True)
    frame = zarn.rdf.define_scan(pairs, calc, wavelength=500.0)
    frame = zarn.rdf.define_scan(frame, calc, code="back", wavelength=500.0, reflection=True)
    found = frame.AsNumpy(["code", "back"])
    assert np.array_equal(found["code"], result.codes.reshape(-1))
    assert np.array_equal(found["back"], result.reflected_codes.reshape(-1))


def test_columns_can_have_other_names(calc, all_types):
    renamed = {name.replace("start", "vertex"): column for name, column in all_types.items()}
    frame = zarn.rdf.define_shadowing(frame_of(renamed), calc, {"start": "vertex"}, code="by")
    assert np.array_equal(frame.AsNumpy(["by"])["by"], calc.check(all_types))
    pairs = frame_of({"here_x": [0.0], "here_y": [0.0], "here_z": [3000.0],
                      "pmt_x": [8300.0], "pmt_y": [0.0], "pmt_z": [0.0]})
    columns = {"event": "here"}
    light = zarn.rdf.define_light_path(pairs, calc, columns).AsNumpy(["time"])
    assert light["time"].round(3) == [46.105]
    assert zarn.rdf.define_scan(pairs, calc, columns).AsNumpy(["code"])["code"] == [0]


def test_a_file_is_read_and_judged(calc, all_types, file):
    found = zarn.rdf.from_paths(file, calc).AsNumpy()
    assert set(found) == {"row", "event", "code", *all_types}
    for name, column in all_types.items():
        assert np.array_equal(found[name], column), name
    assert np.array_equal(found["row"], np.arange(len(found["row"])))
    assert np.array_equal(found["event"], found["row"])
    assert np.array_equal(found["code"], calc.check(all_types))
    assert "code" not in zarn.rdf.from_paths(f"{file}:paths").GetColumnNames()


def test_columns_of_a_file_can_have_other_names(calc, all_types, file):
    turned = {f"start_{a}": f"end_{a}" for a in "xyz"} | {f"end_{a}": f"start_{a}" for a in "xyz"}
    found = zarn.rdf.from_paths(file, calc, turned, code="by").AsNumpy(["start_x", "by"])
    assert np.array_equal(found["start_x"], all_types["end_x"])
    other = {name: all_types[turned.get(name, name)] for name in all_types}
    assert np.array_equal(found["by"], calc.check(other))


def test_a_declared_function_judges_in_expressions(calc, all_types):
    zarn.rdf.declare("judge", calc)
    frame = frame_of({**all_types, "other_x": all_types["end_x"].astype(np.float32)})
    ROOT.gInterpreter.Declare("std::string name_of(int type) {"
                              "  return ZARN::DU::kLightPathTypeNames[type]; }")
    frame = frame.Define("name", "name_of(type)")
    frame = frame.Define("other_y", "end_y").Define("other_z", "end_z")
    frame = frame.Define("code", zarn.rdf.expression("judge"))
    frame = frame.Define("by", zarn.rdf.expression("judge", {"type": "name"}))
    frame = frame.Define("near", zarn.rdf.expression("judge", {"end": "other"}))
    found = frame.AsNumpy(["code", "by", "near"])
    expected = calc.check(all_types)
    assert np.array_equal(found["code"], expected)
    assert np.array_equal(found["by"], expected)
    rounded = {**all_types, "end_x": all_types["end_x"].astype(np.float32).astype(np.float64)}
    assert np.array_equal(found["near"], calc.check(rounded))
    for name in ("judge", "no name"):
        with pytest.raises(ValueError, match=f"'{name}' cannot be declared"):
            zarn.rdf.declare(name, calc)


def test_frames_outlive_the_calculator(all_types, file):
    calc = zarn.Calculator(REFERENCE)
    expected = calc.check(all_types)
    frames = [zarn.rdf.define_shadowing(frame_of(all_types), calc),
              zarn.rdf.from_paths(file, calc)]
    del calc
    gc.collect()
    for frame in frames:
        assert np.array_equal(frame.AsNumpy(["code"])["code"], expected)


def test_wrong_columns_are_told_before_the_loop(calc, all_types, file):
    def refuses(call, *arguments, **settings):
        with pytest.raises(ValueError) as error:
            call(*arguments, **settings)
        return str(error.value)

    frame = frame_of({name: v for name, v in all_types.items() if name != "av2_y"})
    assert refuses(zarn.rdf.define_shadowing, frame, calc) == (
        "DefineShadowing: there is no column av2_y")
    whole = frame_of({**all_types, "end_x": all_types["type"]})
    assert refuses(zarn.rdf.define_shadowing, whole, calc, {"type": "start_x"}) == (
        "DefineShadowing: the column start_x is of type double, expected an integer or "
        "std::string; the columns end_x, end_y, end_z are of type int, double, double, "
        "expected all float or all double")
    assert refuses(zarn.rdf.define_shadowing, frame, calc, code="type") == (
        "DefineShadowing: there is no column av2_y; the column type exists already")
    assert refuses(zarn.rdf.define_light_path, frame, calc).startswith(
        "DefineLightPath: there is no column event_x, event_y, event_z, pmt_x")
    assert refuses(zarn.rdf.define_scan, frame, calc, {"start": "x"}) == (
        "columns: there is no column 'start' to be named")
    assert refuses(zarn.rdf.define_scan, frame, calc, {"code": "x"}) == (
        "columns: there is no column 'code' to be named")
    assert refuses(zarn.rdf.from_paths, file, calc, {"strat_x": "start_x"}) == (
        "FromPaths: light paths have no column strat_x to be named")
    assert refuses(zarn.rdf.from_paths, file, calc, code="event") == (
        "FromPaths: the column event exists already")


def test_errors_are_those_of_the_package(tmp_path, calc, file, events, pmts):
    with pytest.raises(zarn.Error, match="paths.root: .*missing columns: x"):
        zarn.rdf.from_paths(file, calc, {"start_x": "x"})
    with pytest.raises(ValueError, match="wavelength"):
        zarn.rdf.define_scan(frame_of(pairs_of(events, pmts)), calc, wavelength=-1.0)
    tables = shutil.copytree(REFERENCE, tmp_path / "tables")
    (tables / "optics.json").unlink()
    with pytest.raises(zarn.DBNotFoundError, match="OPTICS"):
        zarn.rdf.define_light_path(frame_of(pairs_of(events, pmts)), zarn.Calculator(tables))


def test_a_damaged_file_is_told_in_the_loop(tmp_path, calc, file):
    frame = zarn.rdf.from_paths(shutil.copy(file, tmp_path / "damaged.root"), calc)
    with open(tmp_path / "damaged.root", "r+b") as damaged:
        damaged.seek(file.stat().st_size // 2)
        damaged.write(b"\xff" * 20_000)
    with pytest.raises(Exception, match="damaged.root: tree \"paths\".*entry"):
        frame.Sum("code").GetValue()
