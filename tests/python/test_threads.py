"""Several threads at one calculator, and beside it."""

import concurrent.futures
import threading
import time

import numpy as np
import pytest
import zarn
from support import REFERENCE, as_columns


def at_once(calls):
    """Call all of them at the same time; their results."""
    barrier = threading.Barrier(len(calls))

    def run(call):
        barrier.wait()
        return call()

    with concurrent.futures.ThreadPoolExecutor(len(calls)) as pool:
        return [f.result() for f in [pool.submit(run, call) for call in calls]]


def test_threads_at_one_calculator_get_the_same(calc, events, pmts, paths):
    fresh = zarn.Calculator(REFERENCE)  # makes its layers while they work
    columns = as_columns(paths)
    some = paths[:4]
    calls = [
        lambda: fresh.check(paths),
        lambda: fresh.check(columns, threads=2).reshape(paths.shape),
        lambda: fresh.light_paths(events, pmts).tobytes(),
        lambda: fresh.scan(events, pmts, threads=2).codes,
        lambda: fresh.scan(events, pmts, smear=10.0, samples=3).smeared,
        lambda: fresh.critical_tolerance(some),
        lambda: str(fresh.explain(paths[0, 0, 0])),
        lambda: fresh.with_tolerance(33.0).check(some),
    ]
    wanted = [
        calc.check(paths), calc.check(paths), calc.light_paths(events, pmts).tobytes(),
        calc.scan(events, pmts).codes, calc.scan(events, pmts, smear=10.0, samples=3).smeared,
        calc.critical_tolerance(some), str(calc.explain(paths[0, 0, 0])),
        calc.with_tolerance(33.0).check(some),
    ]
    for _ in range(3):
        for found, expected in zip(at_once(2 * calls), 2 * wanted):
            assert np.array_equal(found, expected)


def test_calculators_are_made_by_several_threads_at_once(calc, paths):
    codes = calc.check(paths)
    for found in at_once([lambda: zarn.Calculator(REFERENCE).check(paths)] * 4):
        assert np.array_equal(found, codes)


@pytest.mark.parametrize("work", ["check", "light_paths", "scan", "critical"])
def test_another_thread_of_python_works_at_the_same_time(calc, pmts, paths, work):
    many = {n: np.broadcast_to(paths[n][0, 0, 0], 2_000_000) for n in paths.dtype.names[:25]}
    some = {name: column[:100_000] for name, column in many.items()}
    events = np.random.default_rng(2).uniform(-3000, 3000, (2000, 3))
    call = {
        "check": lambda: calc.check(many),
        "light_paths": lambda: calc.light_paths(events[:200], pmts),
        "scan": lambda: calc.scan(events, pmts, threads=1),
        "critical": lambda: calc.critical_tolerance(some),
    }[work]
    is_done = False
    longest = 0.0

    def measure_the_longest_pause():
        nonlocal longest
        last = time.perf_counter()
        while not is_done:
            now = time.perf_counter()
            longest = max(longest, now - last)
            last = now

    for _ in range(3):  # the machine may be busy
        is_done, longest = False, 0.0
        thread = threading.Thread(target=measure_the_longest_pause)
        thread.start()
        start = time.perf_counter()
        call()
        taken = time.perf_counter() - start
        is_done = True
        thread.join()
        if longest < taken / 2:
            return
    pytest.fail(f"paused for {longest} s of {taken} s")
