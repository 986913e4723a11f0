"""Clusters, and scans for them."""

import distributed
import numpy as np
import pytest
import zarn
from processes import Processes
from support import DATA, REFERENCE


@pytest.fixture(scope="session")
def calc():
    return zarn.Calculator(REFERENCE)


@pytest.fixture(scope="session")
def pmts():
    return np.loadtxt(DATA / "pmts.csv", delimiter=",", skiprows=1, usecols=(1, 2, 3))


@pytest.fixture(scope="session")
def events():
    """As many as make a scan that takes some seconds."""
    numbers = np.random.default_rng(7)
    positions = numbers.uniform(-4000, 4000, (4000, 3))
    positions[17, 1] = np.nan
    return positions


@pytest.fixture(scope="session")
def codes(calc, events, pmts):
    """What one process says of all of them."""
    return calc.scan(events, pmts).codes


@pytest.fixture(scope="session")
def inside():
    """A client of workers in this process, which start at once."""
    with distributed.LocalCluster(
        n_workers=1, threads_per_worker=2, processes=False, dashboard_address=None,
    ) as cluster, distributed.Client(cluster) as client:
        yield client


@pytest.fixture(scope="session")
def processes(tmp_path_factory):
    """A scheduler and two workers."""
    found = Processes(tmp_path_factory.mktemp("cluster"))
    found.add_workers(2, "--nanny")
    yield found
    found.close()


@pytest.fixture
def client(processes):
    with processes.client() as found:
        yield found
