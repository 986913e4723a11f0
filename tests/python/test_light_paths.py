"""Light paths from events to PMTs."""

import numpy as np
import pandas as pd
import pyarrow as pa
import pytest
import zarn
from support import COLUMNS, DATA, NAMES, REFERENCE, command, rows_of, write_positions

EVENT, PMT = [[1.0, 2.0, 3000.0]], [[8300.0, 0.0, 0.0]]


@pytest.fixture(scope="module")
def of_the_command(events, pmts, tmp_path_factory):
    """What the command writes of the same pairs: its rows, and its light paths."""
    folder = tmp_path_factory.mktemp("scan")
    rows = command(
        "scan", "--geometry", REFERENCE, "--paths", folder / "paths.csv",
        "--events", write_positions(folder / "events.csv", "event", events[:-1]),
        "--pmts", write_positions(folder / "pmts.csv", "pmt", pmts),
        "--columns", "time,length_inner,length_av,length_water,optical_length,angle",
    )
    return rows, rows_of((folder / "paths.csv").read_text())


def test_light_paths_are_those_of_the_command(paths, of_the_command):
    direct = paths[:-1, :, 0].reshape(-1)
    by_command = of_the_command[1]
    with_path = direct[direct["type"] > 0]
    assert [row["type"] for row in by_command] == NAMES[with_path["type"]].tolist()
    for name in COLUMNS[1:]:
        wanted = [float(row[name] or 0) for row in by_command]
        written = np.array([row[name] != "" for row in by_command])
        assert np.array_equal(with_path[name][written], np.array(wanted)[written]), name


@pytest.mark.parametrize(
    "name", ["time", "length_inner", "length_av", "length_water", "optical_length", "angle"])
def test_lengths_and_times_are_those_of_the_command(paths, of_the_command, name):
    direct = paths[:-1, :, 0].reshape(-1)
    for path, row in zip(direct, of_the_command[0], strict=True):
        if row["type"]:
            assert path[name] == float(row[name])


def test_lengths_add_up(paths):
    some = paths[paths["type"] > 0]
    total = some["length_inner"] + some["length_av"] + some["length_water"]
    ends = [np.stack([some[f"{end}_{axis}"] for axis in "xyz"]) for end in ("start", "end")]
    assert (total > 0.999999 * np.linalg.norm(ends[0] - ends[1], axis=0)).all()
    assert (some["optical_length"] > total).all()
    # Light travels at the group velocity, below that of the refractive index.
    assert (some["time"] > some["optical_length"] / 299.792458).all()


def test_the_shape_is_events_by_pmts(calc, events, pmts):
    direct = calc.light_paths(events, pmts)
    assert direct.dtype == zarn.LIGHT_PATH
    assert direct.shape == (len(events), len(pmts))
    both = calc.light_paths(events, pmts, reflections=True)
    assert both.shape == (len(events), len(pmts), 2)
    for name in zarn.LIGHT_PATH.names:
        assert np.array_equal(both[..., 0][name], direct[name])
    assert set(both[..., 1]["type"].flat) >= {0, 7}
    assert calc.light_paths(EVENT, np.empty((0, 3))).shape == (1, 0)
    assert calc.light_paths(np.empty((0, 3)), PMT).shape == (0, 1)


def test_there_is_no_path_from_a_position_that_is_not_finite(paths):
    assert (paths[-1]["type"] == 0).all()


def test_one_position_needs_no_second_bracket(calc):
    assert calc.light_paths(EVENT[0], PMT[0]).tobytes() == calc.light_paths(EVENT, PMT).tobytes()


def test_the_wavelength_changes_the_path(calc):
    times = [calc.light_paths(EVENT, PMT, wavelength=w)["time"][0, 0] for w in (350.0, 500.0)]
    assert times[0] > times[1]


@pytest.mark.parametrize("wavelength", [0.0, -400.0, np.nan, np.inf])
def test_a_wrong_wavelength_is_refused(calc, wavelength):
    with pytest.raises(ValueError, match="[Ww]avelength"):
        calc.light_paths(EVENT, PMT, wavelength=wavelength)


# ---- positions


POSITIONS = {
    "list": lambda p: p.tolist(),
    "integers": lambda p: p.astype(np.int64),
    "strided": lambda p: np.repeat(p, 2, axis=0)[::2],
    "columns first": np.asfortranarray,
    "single precision": lambda p: p.astype(np.float32),
    "dict": lambda p: dict(zip("xyz", p.T)),
    "records": lambda p: np.array([tuple(row) for row in p], [(a, "f8") for a in "xyz"]),
    "pandas": lambda p: pd.DataFrame({"pmt": range(len(p)), **dict(zip("zyx", p.T[::-1]))}),
    "pandas types of its own": lambda p: pd.DataFrame(dict(zip("xyz", p.T))).astype("Float64"),
    "pyarrow": lambda p: pa.table({"pmt": range(len(p)), **dict(zip("xyz", p.T))}),
}


@pytest.mark.parametrize("kind", POSITIONS)
def test_positions_of_any_kind_give_the_same_paths(calc, kind):
    pmts = np.loadtxt(DATA / "pmts.csv", delimiter=",", skiprows=1, usecols=(1, 2, 3))
    pmts = np.round(pmts[::800])  # exact in all types
    wanted = calc.light_paths(EVENT, pmts)
    assert calc.light_paths(EVENT, POSITIONS[kind](pmts)).tobytes() == wanted.tobytes()


@pytest.mark.parametrize(
    "positions",
    [5.0, [], [[1.0, 2.0]], [1.0, 2.0], np.zeros((2, 4)), np.zeros((1, 1, 3)), {"x": [1.0]},
     {"x": [1.0], "y": [1.0], "z": [1.0, 2.0]}, [[1.0, 2.0, 3.0], [4.0]],
     np.ma.masked_array([[1.0, 2.0, 3.0]], [[0, 0, 1]]),
     pa.table({"x": [1.0], "y": [1.0], "z": [None]}),
     pd.DataFrame({"x": [1.0], "y": [1.0], "z": pd.array([None], dtype="Float64")})],
    ids=str,
)
def test_positions_of_a_wrong_shape_or_with_missing_values_are_refused(calc, positions):
    for call in (calc.light_paths, calc.scan):
        with pytest.raises(ValueError, match="^pmts"):
            call(EVENT, positions)
        with pytest.raises(ValueError, match="^events"):
            call(positions, PMT)


@pytest.mark.parametrize("positions", [None, "0,0,0", [["1", "2", "3"]], [[1j, 0, 0]], [[None] * 3]],
                         ids=str)
def test_positions_that_are_no_numbers_are_refused(calc, positions):
    with pytest.raises(TypeError, match="^pmts: expected numbers, got"):
        calc.light_paths(EVENT, positions)
