# %% [markdown]
# # ROOT's data frames on a cluster
#
# Light paths in several ROOT files are judged by ROOT's distributed data frame, on two
# worker processes of a local Dask cluster; `Client("tcp://...")` takes any other.
#
# Run from the root of the repository: `python examples/python/distributed_frame.py [FOLDER]`.

# %%
import pathlib

import numpy as np
import pandas as pd
import ROOT
import style
import zarn
import zarn.rdf
from distributed import Client, LocalCluster
from zarn import Verdict

TABLES = str(pathlib.Path("data/reference-detector").resolve())
FILES = 4


# %% [markdown]
# ## Files of light paths
#
# Those of two positions of a calibration source each.

# %%
def write_files(calc: zarn.Calculator, folder: pathlib.Path) -> list[str]:
    source = pd.read_csv("data/source-scan.csv")[["x", "y", "z"]].to_numpy()
    pmts = pd.read_csv("data/pmts.csv")[["x", "y", "z"]].to_numpy()
    names = [str(folder / f"paths-{number}.root") for number in range(FILES)]
    for name, positions in zip(names, np.split(source[: 2 * FILES], FILES)):
        paths = pd.DataFrame(calc.light_paths(positions, pmts).reshape(-1))
        ROOT.RDF.FromPandas(paths[paths.type > 0]).Snapshot("paths", name)
    return names


# %% [markdown]
# ## Verdicts
#
# A distributed frame takes expressions. `prepare` runs before every task: the first one in
# a process makes the function `judge` known there.

# %%
def prepare(tables: str) -> None:
    if not hasattr(ROOT, "judge"):
        zarn.rdf.declare("judge", zarn.Calculator(tables))


def count_verdicts(client: Client, files: list[str]) -> dict[str, int]:
    ROOT.RDF.Distributed.initialize(prepare, TABLES)
    frame = ROOT.RDataFrame("paths", files, executor=client)
    frame = frame.Define("code", zarn.rdf.expression("judge"))
    codes = frame.Histo1D(("codes", "", len(Verdict), 0, len(Verdict)), "code")
    return {verdict.label: int(codes.GetBinContent(verdict + 1)) for verdict in Verdict
            if verdict.has_path}


# %% [markdown]
# Threads as workers crash ROOT: one thread in each process. A worker process reads this
# file, too, and must not start a cluster of its own.

# %%
if __name__ == "__main__":
    files = write_files(zarn.Calculator(TABLES), style.output_folder())
    with LocalCluster(n_workers=2, threads_per_worker=1, processes=True,
                      dashboard_address="127.0.0.1:0") as cluster:
        with Client(cluster) as client:
            for label, paths in count_verdicts(client, files).items():
                print(f"{label:<12}{paths:>8,}")
