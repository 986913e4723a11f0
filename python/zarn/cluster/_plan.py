"""How the work is divided, from what a sample costs."""

from __future__ import annotations

import math
import time
from dataclasses import dataclass, replace

import numpy as np
import pyarrow as pa

from .. import Calculator
from ._campaign import Campaign, Positions
from ._part import encode_part

#: Long enough that the scheduler's work for a task does not matter, short enough that
#: little is lost with a worker.
_SECONDS_OF_PART = 15.0
#: A worker holds the content of a part, and its reader does.
_BYTES_OF_PART = 64 << 20
#: So that all workers have work until the end.
_PARTS_OF_THREAD = 4
_SECONDS_OF_SAMPLE = 0.5


@dataclass(frozen=True)
class Plan:
    """What a campaign takes, as far as a sample tells."""

    campaign: Campaign
    """Divided into parts."""
    size: float
    """Bytes of all parts."""
    seconds: float
    """Processor time on this machine."""


def make_plan(
    calculator: Calculator, campaign: Campaign, events: Positions, pmts: Positions, threads: int
) -> Plan:
    """Judge a few events, and divide a campaign into parts.

    Args:
        campaign: its events_per_part is used unless it is 0.
        threads: of all workers.
    """
    if len(events) == 0:
        return Plan(replace(campaign, events_per_part=1), 0.0, 0.0)
    seconds, size = _cost_of_event(calculator, campaign, events, pmts)
    if campaign.events_per_part == 0:
        share = math.ceil(len(events) / (_PARTS_OF_THREAD * max(1, threads)))
        most = min(_SECONDS_OF_PART / seconds, _BYTES_OF_PART / size, share)
        campaign = replace(campaign, events_per_part=max(1, math.floor(most)))
    return Plan(campaign, size * len(events), seconds * len(events))


def _cost_of_event(
    calculator: Calculator, campaign: Campaign, events: Positions, pmts: Positions
) -> tuple[float, float]:
    """Seconds and bytes for an event, from some that are spread over all of them."""
    number = 1
    while True:
        picked = np.linspace(0, len(events), number, endpoint=False, dtype=np.int64)
        some = Positions(events.names.take(pa.array(picked)), events.xyz[picked])
        begin = time.process_time()
        content, _ = encode_part(calculator, campaign, pmts, 0, some)
        seconds = time.process_time() - begin
        # The first rounds also build the layers of the calculator.
        if seconds > _SECONDS_OF_SAMPLE or number >= len(events):
            return seconds / number, len(content) / number
        number = min(4 * number, len(events))
