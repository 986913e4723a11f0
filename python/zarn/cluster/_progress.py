"""How far a campaign is, on standard error."""

from __future__ import annotations

import math
import time
from types import TracebackType
from typing import TextIO

from ._campaign import Campaign
from ._part import part_name
from ._worker import Done

#: Seconds between two lines where nobody watches: in the log of a batch job.
_SECONDS_OF_LINE = 10.0


class Progress:
    """Shows parts done, rate, and time left: a line that changes on a terminal, a line
    now and then elsewhere."""

    def __init__(self, campaign: Campaign, dashboard: str, stream: TextIO | None) -> None:
        self._campaign = campaign
        self._stream = stream
        self._is_terminal = stream is not None and stream.isatty()
        self._begin = time.monotonic()
        self._shown = self._begin
        self._made = self._kept = 0  # parts
        self._pairs_made = self._pairs_done = 0
        if dashboard:
            self._say(f"dashboard: {dashboard}")

    def __enter__(self) -> Progress:
        return self

    def __exit__(
        self, kind: type[BaseException] | None, error: BaseException | None,
        trace: TracebackType | None,
    ) -> None:
        self._say(f"{self._text()} in {duration(time.monotonic() - self._begin)}")
        if kind is None:
            self._say(f"parts made: {self._made:,}; there before: {self._kept:,}")

    def add(self, done: Done) -> None:
        """A part is there."""
        _, events = self._campaign.range(done.part)
        pairs = events * self._campaign.pmts
        self._pairs_done += pairs
        if done.is_new:
            self._made += 1
            self._pairs_made += pairs
        else:
            self._kept += 1
        if done.damage:
            self._say(f"{part_name(done.part)}: {done.damage}: made anew")

    def tick(self, threads: int) -> None:
        """Show how far it is, if it is time to.

        Args:
            threads: of all workers.
        """
        now = time.monotonic()
        if not self._is_terminal and now < self._shown + _SECONDS_OF_LINE:
            return
        self._shown = now
        left = self._campaign.pairs - self._pairs_done
        rate = self._rate()
        when = f", {duration(left / rate)} left" if rate else ""
        who = "" if threads else ", waiting for workers"
        if self._is_terminal and self._stream:
            self._stream.write(f"\r\033[K{self._text()}{when}{who}")
            self._stream.flush()
        else:
            self._say(self._text() + when + who)

    def _rate(self) -> float:
        """Pairs a second; parts that were there are not counted."""
        return self._pairs_made / (time.monotonic() - self._begin)

    def _text(self) -> str:
        done = self._made + self._kept
        return f"{done:,} of {self._campaign.parts:,} parts, {self._rate():,.0f} pairs a second"

    def _say(self, text: str) -> None:
        if self._stream:
            clear = "\r\033[K" if self._is_terminal else ""
            print(clear + text, file=self._stream, flush=True)


def duration(seconds: float) -> str:
    """A duration in a unit that suits its length."""
    if seconds < 120:
        return f"{math.ceil(seconds)} s"
    if seconds < 2 * 3600:
        return f"{seconds / 60:.0f} min"
    return f"{seconds / 3600:,.0f} h"
