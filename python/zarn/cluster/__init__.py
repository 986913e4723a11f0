"""Scans of any size on a Dask cluster.

A campaign is a scan in a folder: parts of whole events, each a Parquet file. It can be
stopped anywhere: the next run makes the parts that are missing.

    client = distributed.Client(...)
    counts = zarn.cluster.scan(client, calc, events, pmts, out="verdicts")
    zarn.cluster.merge("verdicts", "verdicts.parquet")

The folder must be on a file system that the client and all workers share.
"""

from ._errors import CampaignError, ClusterError
from ._merge import merge
from ._scan import scan

__all__ = ["CampaignError", "ClusterError", "merge", "scan"]
