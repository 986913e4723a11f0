"""Compare the Python package with the library that it calls.

The same work on the same arrays in one process, in turns; prints all times in
nanoseconds per path or pair as JSON. The codes are compared, too.

python_benchmark.py FLOOR DATA [--quick]
"""

import argparse
import ctypes
import json
import pathlib
import time

import numpy as np
import zarn

Doubles = np.ctypeslib.ndpointer(np.float64, flags="C")
Codes = np.ctypeslib.ndpointer(np.uint8, flags="C")


def seconds_of(work):
    begin = time.perf_counter()
    work()
    return time.perf_counter() - begin


def positions_in(file):
    return np.loadtxt(file, delimiter=",", skiprows=1, usecols=(1, 2, 3))


def compare(repetitions, count, floor, package, codes_of_floor, codes_of_package):
    """The times of both, in turns."""
    times = {"library": [], "package": []}
    for _ in range(repetitions):
        times["library"].append(floor())
        times["package"].append(seconds_of(package))
    assert (codes_of_floor == codes_of_package()).all()
    return {name: [1e9 * seconds / count for seconds in of] for name, of in times.items()}


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("floor")
    parser.add_argument("data", type=pathlib.Path)
    parser.add_argument("--quick", action="store_true")
    arguments = parser.parse_args()
    repetitions, rows = (2, 10_000) if arguments.quick else (15, 1_000_000)

    library = ctypes.CDLL(arguments.floor)
    library.zarn_check.restype = library.zarn_scan.restype = ctypes.c_double
    library.zarn_scan.argtypes = (ctypes.c_char_p, Doubles, ctypes.c_size_t, Doubles,
                                  ctypes.c_size_t, Codes)
    source = str(arguments.data / "reference-detector")
    calc = zarn.Calculator(source)
    events = positions_in(arguments.data / "source-scan.csv")
    pmts = positions_in(arguments.data / "pmts.csv")

    paths = calc.light_paths(events, pmts[: rows // len(events) + 1]).reshape(-1)
    paths = np.resize(paths[paths["type"] != 0], rows)
    names = [name for name in paths.dtype.names if name[-2:] in ("_x", "_y", "_z")]
    columns = {name: np.ascontiguousarray(paths[name]) for name in ["type", *names]}
    pointers = (ctypes.c_void_p * len(names))(*(columns[n].ctypes.data for n in names))
    expected, found = np.zeros((2, rows), np.uint8)

    def check_by_library():
        return library.zarn_check(
            source.encode(), ctypes.c_void_p(columns["type"].ctypes.data), pointers,
            ctypes.c_size_t(rows), ctypes.c_void_p(expected.ctypes.data))

    results = {"dense columns": compare(
        repetitions, rows, check_by_library, lambda: calc.check(columns, out=found),
        expected, lambda: found)}
    results["structured array"] = compare(
        repetitions, rows, check_by_library, lambda: calc.check(paths, out=found),
        expected, lambda: found)

    many = np.resize(events, (len(events) * (1 if arguments.quick else 40), 3))
    if arguments.quick:
        pmts = pmts[:100]
    expected_codes = np.zeros((len(many), len(pmts)), np.uint8)
    scanned = []
    results["scan"] = compare(
        repetitions, expected_codes.size,
        lambda: library.zarn_scan(source.encode(), many, len(many), pmts, len(pmts),
                                  expected_codes),
        lambda: scanned.append(calc.scan(many, pmts, threads=1)),
        expected_codes, lambda: scanned[-1].codes)
    print(json.dumps(results, indent=2))


if __name__ == "__main__":
    main()
