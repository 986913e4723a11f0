"""What can go wrong with a campaign, besides files that cannot be written."""

from __future__ import annotations

from .. import Error


class CampaignError(Error):
    """Something does not fit the campaign: its folder, a part, tables, or a worker."""


class ClusterError(Error):
    """The cluster could not finish the work: its scheduler is gone, or a task failed."""


for _error in (CampaignError, ClusterError):
    _error.__module__ = "zarn.cluster"
