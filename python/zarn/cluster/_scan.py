"""A campaign: its parts are made by the workers of a cluster."""

from __future__ import annotations

import contextlib
import math
import operator
import os
import queue
import sys
import time
from collections.abc import Callable
from dataclasses import replace
from itertools import islice
from pathlib import Path

import numpy as np
import numpy.typing as npt
import pyarrow as pa
from distributed import Client, Future, KilledWorker
from distributed.client import FutureCancelledError
from distributed.comm import CommClosedError

from .. import Calculator, Counts, Verdict, __version__
from .._columns import positions
from ._campaign import Campaign, Positions, has_campaign, read_campaign, write_campaign
from ._errors import CampaignError, ClusterError
from ._part import part_name
from ._plan import make_plan
from ._progress import Progress
from ._worker import Done, make_part

#: Tasks that the scheduler has at a time, at least; it holds the events of each.
_TASKS_AT_ONCE = 32
_GONE = "the scheduler is gone, or has cancelled the tasks; the parts that are there are kept"


def scan(
    client: Client,
    calculator: Calculator,
    events: npt.ArrayLike,
    pmts: npt.ArrayLike,
    *,
    out: str | os.PathLike[str],
    wavelength: float = 400.0,
    reflections: bool = False,
    event_names: npt.ArrayLike | None = None,
    pmt_names: npt.ArrayLike | None = None,
    events_per_part: int | None = None,
    progress: bool = True,
) -> Counts:
    """Judge the light from each event to each PMT on a cluster.

    Parts that are in the folder, and fit, are kept: the same call goes on with a scan.

    Args:
        client: of a Dask cluster, whose workers have this version of the package.
        calculator: its tables go to the workers by content.
        events, pmts: positions, mm: arrays (n, 3), or data frames with x, y, z.
        out: folder for the parts, which the client and all workers share.
        wavelength: nm.
        reflections: also judge the light that is reflected at the vessel.
        event_names, pmt_names: integers or strings; None for 0, 1, ...
        events_per_part: None for what takes about 15 s, at most 64 MiB.
        progress: tell on standard error how far it is.

    Returns:
        The counts of all light paths, as ScanResult.counts.

    Raises:
        CampaignError: the folder, a part in it, or a worker does not fit this scan.
        ClusterError: the scheduler is gone, or a task failed.
        OSError: a part cannot be written.
    """
    campaign, of_events, of_pmts = describe(
        calculator, events, pmts, wavelength=wavelength, reflections=reflections,
        event_names=event_names, pmt_names=pmt_names, events_per_part=events_per_part,
    )
    folder = Path(out).absolute()
    _require_version(client)
    if has_campaign(folder):
        campaign = fit_to(folder, campaign)
    else:
        campaign = make_plan(calculator, campaign, of_events, of_pmts, _threads(client)).campaign
        write_campaign(folder, campaign, calculator.tables, of_pmts)

    numbers = np.zeros(len(Verdict), np.int64)
    with Progress(campaign, client.dashboard_link, sys.stderr if progress else None) as bar:

        def take(done: Done) -> None:
            numbers.__iadd__(done.counts)
            bar.add(done)

        _make_parts(client, folder, campaign, of_events, take, bar.tick)
    _remove_leftovers(folder)
    return Counts(numbers)


def describe(
    calculator: Calculator,
    events: npt.ArrayLike,
    pmts: npt.ArrayLike,
    *,
    wavelength: float = 400.0,
    reflections: bool = False,
    event_names: npt.ArrayLike | None = None,
    pmt_names: npt.ArrayLike | None = None,
    events_per_part: int | None = None,
) -> tuple[Campaign, Positions, Positions]:
    """The campaign that the arguments of scan ask for; its events_per_part is 0 if that
    is still to be decided. Also the events and the PMTs."""
    of_events = _named(events, event_names, "events")
    of_pmts = _named(pmts, pmt_names, "pmts")
    campaign = Campaign(
        version=__version__,
        fingerprint=calculator.fingerprint,
        run=calculator.run,
        tolerance=calculator.tolerance,
        wavelength=float(wavelength),
        reflections=bool(reflections),
        events=len(of_events),
        events_sha256=of_events.sha256(),
        pmts=len(of_pmts),
        pmts_sha256=of_pmts.sha256(),
        events_per_part=0 if events_per_part is None else operator.index(events_per_part),
        as_of=calculator.as_of,
    )
    if campaign.events_per_part < 0 or events_per_part == 0:
        raise ValueError(f"events_per_part: expected at least 1, got {events_per_part}")
    return campaign, of_events, of_pmts


def _named(values: npt.ArrayLike, names: npt.ArrayLike | None, what: str) -> Positions:
    xyz = positions(values, what)
    if names is None:
        return Positions(pa.array(np.arange(len(xyz))), xyz)
    array = np.asarray(names)
    if array.shape != (len(xyz),):
        raise ValueError(f"names of {what}: expected {len(xyz)}, got the shape {array.shape}")
    kind = pa.int64() if array.dtype.kind in "iu" else pa.string()
    return Positions(pa.array(array, kind), xyz)


def fit_to(folder: Path, campaign: Campaign) -> Campaign:
    """The campaign of a folder, which must be the same; the folder decides its division
    into parts, unless that was asked for."""
    there = read_campaign(folder)
    if campaign.events_per_part == 0:
        campaign = replace(campaign, events_per_part=there.events_per_part)
    campaign.require_same(there, folder)
    return there


def _require_version(client: Client) -> None:
    """Raise CampaignError if a worker has another version of the package.

    Tasks check this, too, for workers that come later. But a version that does not know
    the task cannot, and so this must not need the package on the worker either.
    """
    ask = "__import__('zarn').__version__"
    for address, version in client.run(eval, ask, on_error="return").items():
        if isinstance(version, (ImportError, AttributeError)):
            raise CampaignError(f"worker {address}: has no zarn: {version}")
        if isinstance(version, Exception):  # the worker has died: others do its tasks
            continue
        if version != __version__:
            raise CampaignError(f"worker {address}: has zarn {version}, expected {__version__}")


def _threads(client: Client) -> int:
    """The number of tasks that the workers can do at a time."""
    return sum(client.nthreads().values())


def _make_parts(
    client: Client,
    folder: Path,
    campaign: Campaign,
    events: Positions,
    on_done: Callable[[Done], None],
    on_tick: Callable[[int], None],
) -> None:
    """Let the workers make or check every part, a bounded number of them at a time.

    Args:
        on_done: called when a part is there.
        on_tick: called about every second with the number of threads of the workers.
    """
    finished: queue.SimpleQueue[Future] = queue.SimpleQueue()
    waiting = iter(range(campaign.parts))
    running: dict[Future, int] = {}
    threads, asked = 0, -math.inf
    try:
        while True:
            if client.status != "running":
                raise ClusterError(_GONE)
            if time.monotonic() > asked + 1:
                with contextlib.suppress(OSError):  # the scheduler may be gone by now
                    threads, asked = _threads(client), time.monotonic()
                    on_tick(threads)
            room = max(_TASKS_AT_ONCE, 2 * threads) - len(running)
            for part in islice(waiting, max(0, room)):
                some = events.some(*campaign.range(part))
                future = client.submit(make_part, str(folder), campaign, part, some, pure=False)
                future.add_done_callback(finished.put)
                running[future] = part
            if not running:
                return
            with contextlib.suppress(queue.Empty):
                future = finished.get(timeout=1)
                on_done(_result_of(future, part_name(running.pop(future))))
                future.release()
    finally:
        if running and client.status == "running":
            client.cancel(list(running))


def _result_of(future: Future, name: str) -> Done:
    """What a worker told of a part; raises what kept it from making the part."""
    try:
        done: Done = future.result()
        return done
    except CampaignError:
        raise
    except (FutureCancelledError, CommClosedError) as error:
        raise ClusterError(_GONE) from error
    except KilledWorker as error:
        raise ClusterError(f"{name}: too many workers died while they made it") from error
    except Exception as error:
        if type(error) is OSError:  # the part cannot be written
            raise
        raise ClusterError(f"{name}: {type(error).__name__}: {error}") from error


def _remove_leftovers(folder: Path) -> None:
    """Remove unfinished files of workers that were killed: every part exists."""
    for file in folder.glob(".part-*"):
        file.unlink(missing_ok=True)
