"""Workers, disks and schedulers that fail in the middle of a campaign."""

import re
import resource
import threading

import numpy as np
import pyarrow.parquet as pq
import pytest
import zarn
import zarn.cluster
from processes import Processes, kill_a_worker, wait_until

PER_PART = 100
PARTS = 40


def parts(folder):
    return sorted(folder.glob("part-*"))


def codes_in(folder):
    return pq.read_table(folder, columns=["code"])["code"].to_numpy()


class Campaign(threading.Thread):
    """A campaign that runs while a test does harm."""

    def __init__(self, client, calc, events, pmts, out):
        super().__init__(daemon=True)
        self._call = lambda: zarn.cluster.scan(
            client, calc, events, pmts, out=out, events_per_part=PER_PART)
        self._out = out
        self.error = None
        self.start()

    def run(self):
        try:
            self.counts = self._call()
        except Exception as error:
            self.error = error

    def wait_for(self, number):
        """Wait until it has made this number of parts, and require that it goes on."""
        wait_until(lambda: len(parts(self._out)) >= number or not self.is_alive())
        assert self.is_alive() and len(parts(self._out)) < PARTS

    def end(self):
        self.join(60)
        assert not self.is_alive()
        return self.error


@pytest.fixture
def start(calc, events, pmts, tmp_path):
    def begin(client):
        return Campaign(client, calc, events, pmts, tmp_path / "out")

    return begin


@pytest.fixture
def out(tmp_path):
    return tmp_path / "out"


def assert_is_complete(out, codes):
    assert len(parts(out)) == PARTS
    assert np.array_equal(codes_in(out), codes.reshape(-1))
    assert [f.name for f in out.iterdir() if f.name[0] == "."] == []


def test_workers_that_are_killed_twice_change_nothing(start, client, out, codes):
    campaign = start(client)
    for number in (3, 12):
        campaign.wait_for(number)
        kill_a_worker(client)
    assert campaign.end() is None
    assert_is_complete(out, codes)
    assert campaign.counts.numbers.tolist() == np.bincount(
        codes.reshape(-1), minlength=len(zarn.Verdict)).tolist()


def test_a_worker_that_comes_after_both_were_killed_goes_on(start, processes, client, out, codes):
    campaign = start(client)
    campaign.wait_for(3)
    processes.lose_workers()
    campaign.wait_for(3)
    processes.add_workers(1)
    assert campaign.end() is None
    assert_is_complete(out, codes)
    processes.add_workers(1)


def test_a_full_disk_is_an_error_and_the_next_run_completes(start, client, out, codes):
    def limit(size):
        """Limit the size of files, to simulate a full disk."""
        hard = resource.getrlimit(resource.RLIMIT_FSIZE)[1]
        resource.setrlimit(resource.RLIMIT_FSIZE, (size, hard))

    campaign = start(client)
    campaign.wait_for(3)
    client.run(limit, 1000)
    error = campaign.end()
    client.run(limit, resource.RLIM_INFINITY)
    assert type(error) is OSError
    assert str(error).startswith(f"{out}/part-000000")
    assert str(error).endswith(": cannot be written: File too large")
    there = {file.name: file.read_bytes() for file in parts(out)}
    assert 3 <= len(there) < PARTS
    assert start(client).end() is None
    assert_is_complete(out, codes)
    for name, content in there.items():
        assert (out / name).read_bytes() == content


def test_a_scheduler_that_dies_is_an_error_and_the_next_run_goes_on(
        start, client, out, codes, tmp_path):
    doomed = Processes(tmp_path)
    doomed.add_workers(1)
    try:
        with doomed.client() as its_client:
            campaign = start(its_client)
            campaign.wait_for(3)
            doomed.kill_scheduler()
            error = campaign.end()
    finally:
        doomed.close()
    assert isinstance(error, zarn.cluster.ClusterError)
    assert str(error).startswith("the scheduler is gone")
    assert start(client).end() is None
    assert_is_complete(out, codes)


def test_a_worker_with_another_version_is_refused_by_name(start, client, out):
    def set_version(version):
        zarn.__version__ = version

    odd = next(iter(client.nthreads()))
    client.run(set_version, "0.0.1", workers=[odd])
    error = start(client).end()
    client.run(set_version, zarn.__version__, workers=[odd])
    assert isinstance(error, zarn.cluster.CampaignError)
    assert str(error) == f"worker {odd}: has zarn 0.0.1, expected {zarn.__version__}"
    assert not out.exists()


def test_a_worker_with_another_version_that_comes_later_is_refused(
        start, client, processes, tmp_path):
    preload = tmp_path / "set_version.py"
    preload.write_text("import zarn\nzarn.__version__ = '0.0.1'\n")
    campaign = start(client)
    campaign.wait_for(3)
    processes.lose_workers()
    processes.add_workers(1, "--no-nanny", f"--preload={preload}")
    (odd,) = client.nthreads()
    error = campaign.end()
    processes.lose_workers()
    processes.add_workers(1)
    assert isinstance(error, zarn.cluster.CampaignError)
    assert str(error) == f"worker {odd}: has zarn 0.0.1, expected {zarn.__version__}"


def test_a_worker_with_other_tables_is_refused_by_name(
        start, inside, client, calc, out, codes):
    assert start(inside).end() is None
    tables = out / "_tables.json"
    right = tables.read_text()
    tables.write_text(right.replace("12.0", "13.0"))
    parts(out)[5].unlink()
    error = start(client).end()
    assert isinstance(error, zarn.cluster.CampaignError)
    assert re.match(
        rf"worker tcp://127.0.0.1:\d+: {tables}: tables with the fingerprint \w{{64}}, "
        rf"expected {calc.fingerprint}$", str(error))
    tables.write_text(right)
    assert start(client).end() is None
    assert_is_complete(out, codes)
