#!/usr/bin/env python3
"""Measure a campaign on this machine: what its steps cost, and 1 and 2 worker processes.

Writes the figures as JSON; cluster_plan.py makes tables of them. The counts of both
campaigns are compared with those of a scan in this process.

PYTHONPATH=build/release/python .venv/bin/python benchmarks/cluster_benchmark.py \\
    docs/scale.json [--seconds 60]
"""

import argparse
import json
import multiprocessing
import os
import pathlib
import pickle
import platform
import resource
import statistics
import tempfile
import time
from concurrent.futures import ProcessPoolExecutor

import numpy as np
import pyarrow.parquet as pq
import zarn
import zarn.cluster
from distributed import Client, LocalCluster
from zarn.cluster._part import PartFile, encode_part, part_name, write_part
from zarn.cluster._plan import make_plan
from zarn.cluster._scan import describe

DATA = pathlib.Path(__file__).resolve().parent.parent / "data"
REPETITIONS = 5
EMPTY_TASKS = 3000


def median_of(work):
    """The median wall-clock time of some calls, s."""
    times = []
    for _ in range(REPETITIONS):
        begin = time.perf_counter()
        work()
        times.append(time.perf_counter() - begin)
    return statistics.median(times)


def events_in_the_vessel(number):
    """Positions that are evenly distributed inside the vessel."""
    numbers = np.random.default_rng(1)
    directions = numbers.normal(size=(number, 3))
    directions /= np.linalg.norm(directions, axis=1)[:, np.newaxis]
    return directions * (5800 * numbers.uniform(size=(number, 1)) ** (1 / 3))


def steps(calc, pmts, folder):
    """Seconds a pair of the steps of a part in one process, and bytes a pair."""
    events = events_in_the_vessel(1500)
    campaign, of_events, of_pmts = describe(calc, events, pmts, events_per_part=len(events))
    pairs = campaign.pairs
    at_once = 131
    scan = median_of(lambda: [calc.scan(events[i:i + at_once], pmts, threads=1)
                              for i in range(0, len(events), at_once)])
    content, _ = encode_part(calc, campaign, of_pmts, 0, of_events)
    encode = median_of(lambda: encode_part(calc, campaign, of_pmts, 0, of_events))
    file = folder / part_name(0)
    write = median_of(lambda: write_part(file, content))
    check = median_of(lambda: PartFile(folder, campaign, 0))
    metadata = pq.read_metadata(file)
    groups = [metadata.row_group(i) for i in range(metadata.num_row_groups)]
    return {
        "seconds_judged": scan / pairs,
        "seconds_encoded": (encode - scan) / pairs,
        "seconds_written": write / pairs,
        "seconds_checked": check / pairs,
        "bytes": {c: sum(g.column(i).total_compressed_size for g in groups) / pairs
                  for i, c in enumerate(("event", "pmt", "code"))},
    }


def campaign_on(workers, calc, events, pmts, folder):
    """A campaign on some worker processes, and the same again with all parts there."""
    begin = time.perf_counter()
    with LocalCluster(n_workers=workers, threads_per_worker=1,
                      dashboard_address="127.0.0.1:0") as cluster, Client(cluster) as client:
        client.wait_for_workers(workers)
        start = time.perf_counter() - begin
        before = os.times()
        begin = time.perf_counter()
        counts = zarn.cluster.scan(client, calc, events, pmts, out=folder)
        seconds = time.perf_counter() - begin
        memory = max(client.run(
            lambda: resource.getrusage(resource.RUSAGE_SELF).ru_maxrss * 1024).values())
        own = sum(os.times()[:2]) - sum(before[:2])
        begin = time.perf_counter()
        again = zarn.cluster.scan(client, calc, events, pmts, out=folder)
        resumed = time.perf_counter() - begin
    assert again.numbers.tolist() == counts.numbers.tolist()
    return counts, {
        "workers": workers, "seconds": seconds, "seconds_to_start": start,
        "seconds_to_check_all": resumed, "bytes_of_worker": memory,
        "client_and_scheduler_core_seconds": own,
        "parts": len(list(folder.glob("part-*"))),
        "bytes": sum(file.stat().st_size for file in folder.glob("part-*")),
    }


def scheduler_cost():
    """Tasks a second that do nothing."""
    with LocalCluster(n_workers=2, threads_per_worker=1, dashboard_address="127.0.0.1:0",
                      ) as cluster, Client(cluster) as client:
        client.gather(client.map(abs, range(100)))
        begin = time.perf_counter()
        client.gather(client.map(abs, range(EMPTY_TASKS), pure=False))
        return EMPTY_TASKS / (time.perf_counter() - begin)


def bytes_of_a_task(calc, pmts):
    """Of the message, for each event; and of the message without events."""
    sizes = []
    for number in (1, 1001):
        campaign, events, _ = describe(
            calc, events_in_the_vessel(number), pmts, events_per_part=number)
        sizes.append(len(pickle.dumps(("/folder", campaign, 0, events.some(0, number)))))
    return {"each": sizes[0], "of_an_event": (sizes[1] - sizes[0]) / 1000}


def in_a_process(work, *arguments):
    """Seconds of some work, and the most memory of the process that did it."""
    with ProcessPoolExecutor(1, multiprocessing.get_context("spawn")) as pool:
        return pool.submit(measure, work, *arguments).result()


def measure(work, *arguments):
    begin = time.perf_counter()
    work(*arguments)
    seconds = time.perf_counter() - begin
    return seconds, resource.getrusage(resource.RUSAGE_SELF).ru_maxrss * 1024


def merges(calc, pmts, folder):
    """What merges cost for a pair, and their memory."""
    events = events_in_the_vessel(4000)
    with LocalCluster(processes=False, n_workers=1, threads_per_worker=1,
                      dashboard_address=None) as cluster, Client(cluster) as client:
        zarn.cluster.scan(client, calc, events, pmts, out=folder / "small", progress=False)
    pairs = len(events) * len(pmts)
    found = {}
    for kind in ("parquet", "root"):
        file = folder / f"small.{kind}"
        seconds, memory = in_a_process(zarn.cluster.merge, folder / "small", file)
        found[kind] = {"seconds": seconds / pairs, "bytes": file.stat().st_size / pairs,
                       "memory": memory}
    return found


def read_events(file):
    zarn._core.read_positions(os.fsencode(file), "event")


def reading_of_events(folder):
    """Seconds and bytes of memory for each event of a CSV file."""
    figures = []
    file = folder / "events.csv"
    for number in (1, 500_001):
        rows = enumerate(events_in_the_vessel(number).tolist())
        file.write_text("event,x,y,z\n" + "".join(f"{i},{x},{y},{z}\n" for i, (x, y, z) in rows))
        figures.append(in_a_process(read_events, file))
    seconds, memory = np.subtract(figures[1], figures[0]) / 500_000
    return {"seconds": seconds, "memory": memory}


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("output", type=pathlib.Path)
    parser.add_argument("--seconds", type=float, default=60, help="of the shortest campaign")
    arguments = parser.parse_args()
    calc = zarn.Calculator(DATA / "reference-detector")
    pmts = np.loadtxt(DATA / "pmts.csv", delimiter=",", skiprows=1, usecols=(1, 2, 3))
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        found = {"processor": processor(), "cores": os.cpu_count(), "load": os.getloadavg()[0],
                 "reading": reading_of_events(folder), "steps": steps(calc, pmts, folder),
                 "tasks_a_second": scheduler_cost(), "task": bytes_of_a_task(calc, pmts)}
        sample = make_plan(calc, *describe(calc, events_in_the_vessel(2000), pmts), 2)
        number = 1 + int(1.2 * 2 * arguments.seconds / (sample.seconds / 2000))
        events = events_in_the_vessel(number)
        found["events"], found["pmts"] = number, len(pmts)
        wanted = np.zeros(len(zarn.Verdict), np.int64)
        calc.scan(events, pmts,
                  on_chunk=lambda chunk: wanted.__iadd__(chunk.counts().numbers))
        found["campaigns"] = []
        for workers in (1, 2):
            out = folder / f"out-{workers}"
            counts, figures = campaign_on(workers, calc, events, pmts, out)
            assert counts.numbers.tolist() == wanted.tolist()
            found["campaigns"].append(figures)
        found["merge"] = merges(calc, pmts, folder)
    arguments.output.write_text(json.dumps(found, indent=1) + "\n")


def processor():
    for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("model name"):
            return line.partition(":")[2].strip()
    return platform.processor()


if __name__ == "__main__":
    main()
