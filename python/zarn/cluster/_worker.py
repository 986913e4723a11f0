"""What a worker does for a campaign."""

from __future__ import annotations

import threading
from dataclasses import dataclass
from pathlib import Path

from distributed import get_worker

from .. import Calculator, Error, __version__
from ._campaign import Campaign, Positions, read_campaign
from ._errors import CampaignError
from ._part import Damaged, PartFile, encode_part, part_name, write_part


@dataclass(frozen=True)
class Done:
    """What a worker tells of a part."""

    part: int
    counts: list[int]
    """Light paths by verdict."""
    is_new: bool
    """False for a part that was there and fits."""
    damage: str
    """Why a part that was there was made anew; empty if none was."""


@dataclass(frozen=True)
class _Loaded:
    """What a worker process loads once."""

    folder: str
    campaign: Campaign
    calculator: Calculator
    pmts: Positions


_loading = threading.Lock()
_loaded: _Loaded | None = None


def make_part(folder: str, campaign: Campaign, part: int, events: Positions) -> Done:
    """Make a part unless it exists and fits: the task that a worker is sent.

    Raises:
        CampaignError: this worker, or what it sees in the folder, does not fit the
            campaign. The text names the worker.
        OSError: the part cannot be written.
    """
    try:
        loaded = _load(folder, campaign)
        damage = ""
        try:
            there = PartFile(Path(folder), campaign, part)
            return Done(part, there.counts, False, damage)
        except FileNotFoundError:
            pass
        except Damaged as error:
            damage = str(error)
    except Error as error:
        raise CampaignError(f"worker {get_worker().address}: {error}") from error
    content, counts = encode_part(loaded.calculator, campaign, loaded.pmts, part, events)
    write_part(Path(folder) / part_name(part), content)
    return Done(part, counts, True, damage)


def _load(folder: str, campaign: Campaign) -> _Loaded:
    """The calculator and the PMTs; this process keeps those of the last campaign."""
    global _loaded
    if campaign.version != __version__:
        raise CampaignError(f"has zarn {__version__}, expected {campaign.version}")
    with _loading:
        if _loaded is None or (_loaded.folder, _loaded.campaign) != (folder, campaign):
            # Also tells whether this machine sees the folder that the client sees.
            campaign.require_same(read_campaign(Path(folder)), folder)
            calculator = campaign.calculator(Path(folder))
            _loaded = _Loaded(folder, campaign, calculator, campaign.pmt_positions(Path(folder)))
        return _loaded
