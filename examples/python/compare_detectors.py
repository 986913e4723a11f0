# %% [markdown]
# # Two detectors, side by side
#
# Suppose that a survey finds the hold-down ropes turned by 3 degrees around the vertical
# axis. Which PMTs see less of a calibration source than we thought, and which see more?
#
# Each calculator has tables of its own, so two detectors can be used together.
#
# Run from the root of the repository: `python examples/python/compare_detectors.py [FOLDER]`.

# %%
import json
import shutil
import tempfile
from pathlib import Path

import numpy as np
import pandas as pd
import style
import zarn

TURN = 3.0  # degrees

# %% [markdown]
# ## The surveyed detector
#
# A copy of the tables, in which the angles of the ropes differ.

# %%
designed = zarn.Calculator("data/reference-detector")
with tempfile.TemporaryDirectory() as folder:
    tables = Path(shutil.copytree(designed.source, Path(folder) / "surveyed"))
    file = tables / "hold_down_ropes.json"
    entries = json.loads(file.read_text())
    for entry in entries:
        if entry["index"] == "hold_down_rope_rolls":
            entry["fields"]["roll"] = [roll + TURN for roll in entry["fields"]["roll"]]
    file.write_text(json.dumps(entries))
    surveyed = zarn.Calculator(tables)
print("same tables:", designed.fingerprint == surveyed.fingerprint)

# %% [markdown]
# ## The same scan in both

# %%
source = pd.read_csv("data/source-scan.csv")
pmts = pd.read_csv("data/pmts.csv")
before = designed.scan(source, pmts)
after = surveyed.scan(source, pmts)
for name, result in (("designed", before), ("surveyed", after)):
    counts = result.counts()
    print(f"{name}: {counts.shadowed:,} of {counts.paths:,} light paths shadowed, "
          f"{counts.of(zarn.Verdict.AVHD_ROPE):,} by hold-down ropes")

# %% [markdown]
# ## PMT by PMT
#
# The sum hardly changes, but what a single PMT sees does.

# %%
change = after.per_pmt().fraction - before.per_pmt().fraction
table = pd.DataFrame({
    "before": before.per_pmt().fraction, "after": after.per_pmt().fraction, "change": change,
}).rename_axis("pmt").sort_values("change", kind="stable")
print(table.iloc[[0, 1, 2, -3, -2, -1]].round(3))
loses, gains = change > 0.1, change < -0.1
print(f"{gains.sum():,} PMTs see more than a tenth of the positions more, {loses.sum():,} less")

# %%
figure, axes = style.sky_map(
    f"What changes if the hold-down ropes are turned by {TURN:g} degrees",
    f"50 source positions  ·  run 0  ·  tolerance {designed.tolerance:g} mm  ·  400 nm  ·  "
    "reference detector",
)
longitude, latitude = style.on_map(before.pmts)
size = style.mark_size(before.pmts)
same = ~(loses | gains)
axes.scatter(
    longitude[same], latitude[same], s=style.mark_size(before.pmts, 0.3), c=style.CLEAR, lw=0,
    label=f"changes by a tenth at most  {same.sum():,}",
)
axes.scatter(
    longitude[loses], latitude[loses], s=size, c=style.INK, marker="v", lw=0,
    label=f"grows: less light  {loses.sum():,}",
)
axes.scatter(
    longitude[gains], latitude[gains], s=size, c="white", marker="^", ec=style.ACCENT, lw=0.8,
    label=f"shrinks: more light  {gains.sum():,}",
)
figure.legend(
    loc="lower center", ncols=3, bbox_to_anchor=(0.52, 0.02), markerscale=1.8,
    title="Share of the source positions that are hidden from each PMT",
)
figure.savefig(style.output_folder() / "compare-detectors.png", dpi=150)
