"""Ctrl-C ends a long call soon."""

import json

import pytest
from support import REFERENCE, run_python

# The call would take many seconds; the signal comes while it is at work.
CHILD = """
import json, os, signal, sys, threading, time
import numpy as np
import zarn

signal.signal(signal.SIGINT, signal.default_int_handler)
calc = zarn.Calculator(sys.argv[1])
numbers = np.random.default_rng(1)
pmts = numbers.normal(size=(8000, 3))
pmts *= 8300 / np.linalg.norm(pmts, axis=1)[:, np.newaxis]
events = numbers.uniform(-3000, 3000, (20_000, 3))
path = calc.light_paths(events[0], pmts[0])[0]
# One element that is read as often as is wanted.
many = {name: np.broadcast_to(path[name], 100_000_000) for name in path.dtype.names[:25]}
some = {name: column[:3_000_000] for name, column in many.items()}
calls = {
    "check": lambda: calc.check(many),
    "check on threads": lambda: calc.check(many, threads=2),
    "check on very many threads": lambda: calc.check(many, threads=1024),
    "critical tolerance": lambda: calc.critical_tolerance(some),
    "light paths": lambda: calc.light_paths(events[:400], pmts),
    "light paths of one event": lambda: calc.light_paths(events[0], np.tile(pmts, (300, 1))),
    "light paths of one PMT": lambda: calc.light_paths(np.tile(events, (200, 1)), pmts[0]),
    "scan": lambda: calc.scan(events, pmts, threads=1),
    "scan on threads": lambda: calc.scan(events, pmts, threads=4),
    "scan with reflections": lambda: calc.scan(events, pmts, reflections=True),
    "scan with smear": lambda: calc.scan(events[:100], pmts, smear=50.0, samples=10_000),
    "scan at tolerances": lambda: calc.scan(events, pmts, tolerances=range(0, 300, 10)),
    "scan in chunks": lambda: calc.scan(events, pmts, on_chunk=lambda chunk: None),
    "scan with progress": lambda: calc.scan(events, pmts, progress=True),
}
def measure(call):
    def interrupt():
        time.sleep(0.2)
        sent.append(time.perf_counter())
        os.kill(os.getpid(), signal.SIGINT)

    sent = []
    thread = threading.Thread(target=interrupt)
    thread.start()
    try:
        call()
    except KeyboardInterrupt:
        return time.perf_counter() - sent[0]
    finally:
        thread.join()

def measure_until_short(call):
    for _ in range(3):  # the machine may be busy
        seconds = measure(call)
        if seconds < 0.2:
            break
    return seconds

print(json.dumps({name: measure_until_short(call) for name, call in calls.items()}))
# The calculator can be used again.
assert calc.scan(events[:2], pmts).codes.shape == (2, 8000)
"""


@pytest.fixture(scope="module")
def seconds():
    """How long each call still took after the signal."""
    return json.loads(run_python(CHILD, REFERENCE).stdout)


@pytest.mark.parametrize("call", [
    "check", "check on threads", "critical tolerance", "light paths",
    "light paths of one event", "light paths of one PMT", "scan", "scan on threads",
    "scan with reflections", "scan with smear", "scan at tolerances", "scan in chunks",
    "scan with progress"])
def test_an_interrupt_ends_a_call_within_0_2_seconds(seconds, call):
    assert seconds[call] < 0.2
