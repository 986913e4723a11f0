"""The command zarn-shadow-cluster: arguments, messages, and the exit status."""

from __future__ import annotations

import argparse
import contextlib
import logging
import os
import signal
import sys
from collections.abc import Iterator
from multiprocessing import resource_tracker
from pathlib import Path
from typing import Any

import numpy as np
import numpy.typing as npt
from distributed import Client, LocalCluster

from .. import Calculator, Error, __version__, _core
from .._source import is_database
from ._campaign import has_campaign, read_campaign
from ._errors import ClusterError
from ._merge import merge
from ._part import part_name
from ._plan import make_plan
from ._progress import duration
from ._scan import describe, fit_to, scan

_NAME = "zarn-shadow-cluster"
_FAILED, _BAD_INPUT, _INTERRUPTED = 1, 2, 130
_STATUS = (
    "Exit status: 0 success; 1 output cannot be written, or the cluster failed; "
    "2 bad usage or input; 130 interrupted."
)


def main(arguments: list[str] | None = None) -> int:
    """Run the command, and return its exit status."""
    try:
        options = _parser().parse_args(arguments)
        options.do(options)
    except KeyboardInterrupt:
        return _complain("interrupted", _INTERRUPTED)
    except ClusterError as error:
        return _complain(error, _FAILED)
    except (Error, ImportError, ValueError) as error:
        return _complain(error, _BAD_INPUT)
    except OSError as error:
        return _complain(error, _FAILED)
    return 0


def _complain(text: object, status: int) -> int:
    print(f"{_NAME}: {text}", file=sys.stderr)
    return status


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(
        prog=_NAME, description="Scans of any size on a Dask cluster.", epilog=_STATUS,
        allow_abbrev=False,
    )
    parser.add_argument("--version", action="version", version=f"{_NAME} {__version__}")
    commands = parser.add_subparsers(required=True, metavar="scan|merge")
    _add_scan(commands)
    _add_merge(commands)
    return parser


def _add_scan(commands: Any) -> None:
    parser = commands.add_parser(
        "scan", epilog=_STATUS, allow_abbrev=False,
        help="judge the light from each event to each PMT on a cluster",
        description="Judges the light from each event to each PMT. The verdicts go to Parquet "
        "files of some events each. Those that are in DIR already are kept, so that the same "
        "command goes on with a scan that was stopped.",
    )
    for name in ("events", "pmts"):
        parser.add_argument(
            f"--{name}", required=True, metavar="F",
            help=f"file of {name}, as zarn-shadow scan reads it")
    parser.add_argument(
        "--geometry", required=True, metavar="T",
        help="geometry tables in mm: a JSON file, a directory of *.json files, sqlite:FILE or "
        "postgresql:CONNECTION")
    parser.add_argument(
        "--override", metavar="T", help="JSON tables laid over those of --geometry")
    parser.add_argument(
        "--as-of", metavar="TIME",
        help="read what stood then in a database, as 2026-01-31 or 2026-01-31T12:00:00Z "
        "(default: now; of a scan that goes on, what it began with)")
    parser.add_argument(
        "--output", required=True, metavar="DIR",
        help="folder for the parts, on a file system that all workers share")
    cluster = parser.add_mutually_exclusive_group(required=True)
    cluster.add_argument("--scheduler", metavar="ADDRESS", help="of a Dask cluster that runs")
    cluster.add_argument(
        "--local", type=_workers, metavar="N", help="start N workers on this machine")
    parser.add_argument(
        "--run", type=int, default=0, metavar="N",
        help="run number for which the tables are read (default: 0)")
    parser.add_argument(
        "--tolerance", type=float, default=150.0, metavar="MM",
        help="margin in mm around ropes, belly plates and NCD anchors (default: 150)")
    parser.add_argument(
        "--wavelength", type=float, default=400.0, metavar="NM",
        help="wavelength of the light in nm (default: 400)")
    parser.add_argument(
        "--reflections", action="store_true",
        help="also judge the light reflected at the vessel")
    parser.add_argument(
        "--dry-run", action="store_true",
        help="tell parts, bytes and time from a sample; write nothing")
    parser.set_defaults(do=_scan)


def _add_merge(commands: Any) -> None:
    parser = commands.add_parser(
        "merge", epilog=_STATUS, allow_abbrev=False, help="write all parts to one file",
        description="Writes the verdicts of all parts to one file, in the order of the events.")
    parser.add_argument("folder", metavar="DIR", help="folder of the parts")
    parser.add_argument(
        "file", metavar="FILE", help="an RNTuple if its name ends in .root, else Parquet")
    parser.set_defaults(do=lambda options: merge(options.folder, options.file))


def _workers(text: str) -> int:
    try:
        number = int(text)
    except ValueError:
        raise argparse.ArgumentTypeError(f"{text!r} is not a whole number") from None
    if number < 1:
        raise argparse.ArgumentTypeError(f"{number} is less than 1")
    return number


def _scan(options: argparse.Namespace) -> None:
    _core.require_distinct_files([os.fsencode(options.events), os.fsencode(options.pmts)])
    event_names, events = _read(options.events, "event")
    pmt_names, pmts = _read(options.pmts, "pmt")
    calculator = Calculator(
        options.geometry, options.run, options.tolerance, overrides=options.override,
        as_of=_begun_as_of(options) if options.as_of is None else options.as_of)
    what: dict[str, Any] = {
        "wavelength": options.wavelength,
        "reflections": options.reflections,
        "event_names": event_names,
        "pmt_names": pmt_names,
    }
    if options.dry_run:
        _tell_plan(options, calculator, events, pmts, what)
        return
    with _cluster(options) as client:
        counts = scan(client, calculator, events, pmts, out=options.output, **what)
    print(*counts.lines(), sep="\n", file=sys.stderr)


def _begun_as_of(options: argparse.Namespace) -> str | None:
    """The time of the tables of a scan that goes on: imports since then are not in it."""
    folder = Path(options.output)
    if not is_database(options.geometry) or not has_campaign(folder):
        return None
    return read_campaign(folder).as_of


def _read(path: str, column: str) -> tuple[npt.NDArray[Any], npt.NDArray[np.float64]]:
    """Names and positions in a file."""
    names, xyz = _core.read_positions(os.fsencode(path), column)
    if isinstance(names, list):
        try:
            names = np.array([name.decode() for name in names], dtype=object)
        except UnicodeDecodeError as error:
            raise ValueError(f"{path}: {column}: a name is not UTF-8: {error.object!r}") from error
    return names, xyz


@contextlib.contextmanager
def _cluster(options: argparse.Namespace) -> Iterator[Client]:
    """A client of the cluster that was asked for."""
    # What goes wrong is told in this command's words, without Dask's.
    for name in ("distributed", "distributed.client"):
        logging.getLogger(name).setLevel(logging.CRITICAL)
    with contextlib.ExitStack() as stack:
        if options.local is None:
            try:
                client = stack.enter_context(Client(options.scheduler))
            except (OSError, ValueError) as error:
                raise Error(f"--scheduler: {options.scheduler}: {error}") from error
        else:
            os.environ.setdefault("DASK_LOGGING__DISTRIBUTED", "critical")  # of the workers
            resource_tracker.ensure_running()  # would unblock Ctrl-C again
            with _no_interrupt():
                # Processes of one thread need not share an interpreter's lock.
                cluster = stack.enter_context(LocalCluster(
                    n_workers=options.local, threads_per_worker=1,
                    dashboard_address="127.0.0.1:0"))
                client = stack.enter_context(Client(cluster))
        yield client


@contextlib.contextmanager
def _no_interrupt() -> Iterator[None]:
    """Put Ctrl-C off to the end: a cluster that is half there cannot be closed.

    Threads that are started meanwhile, and the workers that these start at any time,
    never see it: this process ends them in good order.
    """
    signal.pthread_sigmask(signal.SIG_BLOCK, {signal.SIGINT})
    try:
        yield
    finally:
        signal.pthread_sigmask(signal.SIG_UNBLOCK, {signal.SIGINT})


def _tell_plan(
    options: argparse.Namespace, calculator: Calculator, events: npt.NDArray[np.float64],
    pmts: npt.NDArray[np.float64], what: dict[str, Any],
) -> None:
    """Print what a scan would take."""
    campaign, of_events, of_pmts = describe(calculator, events, pmts, **what)
    folder = Path(options.output)
    if has_campaign(folder):
        campaign = fit_to(folder, campaign)
    workers = options.local
    if workers is None:
        with _cluster(options) as client:
            workers = sum(client.nthreads().values())
    plan = make_plan(calculator, campaign, of_events, of_pmts, workers)
    campaign = plan.campaign
    there = sum((folder / part_name(part)).exists() for part in range(campaign.parts))
    left = plan.seconds * (1 - there / max(1, campaign.parts))
    for name, value in (
        ("events", f"{campaign.events:,}"),
        ("PMTs", f"{campaign.pmts:,}"),
        ("pairs", f"{campaign.pairs:,}"),
        ("parts", f"{campaign.parts:,} of {campaign.events_per_part:,} events"),
        ("parts there", f"{there:,}"),
        ("bytes", f"{plan.size:,.0f}"),
        ("core time", f"{duration(plan.seconds)}"),
        ("time left", f"{duration(left / max(1, workers))} with {workers:,} workers"),
    ):
        print(f"{name:<14}{value}")
