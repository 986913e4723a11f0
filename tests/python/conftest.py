"""The reference detector and its light paths, for all tests."""

import csv
import itertools
import os
import sys
import tracemalloc

import numpy as np
import pytest
import zarn
from support import COLUMNS, DATA, NAMES, REFERENCE, SOURCE, as_columns, column, command

TYPES = {name: number for number, name in enumerate(NAMES)}


@pytest.fixture(scope="session")
def calc():
    return zarn.Calculator(REFERENCE)


@pytest.fixture(scope="session")
def pmts():
    """Every twentieth PMT."""
    numbers = np.loadtxt(DATA / "pmts.csv", delimiter=",", skiprows=1, usecols=(1, 2, 3))
    return numbers[::20].copy()


@pytest.fixture(scope="session")
def events():
    """Positions inside the vessel, in its wall and in the water, and one that is none."""
    numbers = np.random.default_rng(5)
    directions = numbers.normal(size=(24, 3))
    directions /= np.linalg.norm(directions, axis=1)[:, np.newaxis]
    radii = np.tile([3000.0, 5700.0, 5830.0, 7000.0], 6)
    positions = directions * radii[:, np.newaxis]
    positions[-1, 1] = np.nan
    return positions


@pytest.fixture(scope="session")
def paths(calc, events, pmts):
    """Light paths, direct and reflected: (events, PMTs, 2)."""
    return calc.light_paths(events, pmts, reflections=True)


@pytest.fixture(scope="session")
def all_types(paths, example_paths):
    """Columns of light paths of every type and with every verdict."""
    computed = as_columns(paths)
    examples = {**example_paths, "type": np.array([TYPES[n] for n in example_paths["type"]])}
    return {n: np.concatenate([v, examples[n].astype(v.dtype)]) for n, v in computed.items()}


@pytest.fixture(scope="session")
def example_paths():
    """The columns of data/example-paths.csv."""
    with open(DATA / "example-paths.csv", newline="") as file:
        rows = list(csv.DictReader(file))
    columns = {name: np.array([float(row[name] or 0) for row in rows]) for name in COLUMNS[1:]}
    return {"type": np.array([row["type"] for row in rows]), **columns}


@pytest.fixture(scope="session")
def example_rows():
    """What the command says of data/example-paths.csv."""
    return command(
        "check", DATA / "example-paths.csv", "--geometry", REFERENCE,
        "--columns", "code,critical_tolerance,critical_by",
    )


@pytest.fixture(scope="session")
def example_codes(example_rows):
    return column(example_rows, "code", int)


@pytest.fixture
def allocated():
    """Call a function and return the most memory that NumPy and Python held for it, bytes."""

    def measure(call):
        tracemalloc.start()
        try:
            call()
            return tracemalloc.get_traced_memory()[1]
        finally:
            tracemalloc.stop()

    return measure


@pytest.fixture(scope="session")
def make_postgresql():
    """Make a new database of a PostgreSQL server, and return its name as a source."""
    if "ZARN_WITHOUT_SERVER" in os.environ:
        pytest.skip("starts a PostgreSQL server")
    sys.path.insert(0, str(SOURCE / "tests" / "sql"))
    from postgresql import Server

    numbers = itertools.count()
    with Server() as server:
        yield lambda: f"postgresql:{server.make_database(f'tables_{next(numbers)}')}"
