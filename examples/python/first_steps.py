# %% [markdown]
# # First steps
#
# A calculator knows one detector: it reads the geometry tables of a run, and tells which
# hardware blocks a light path. Lengths are in mm, angles in rad, times in ns.
#
# Run from the root of the repository: `python examples/python/first_steps.py [FOLDER]`.

# %%
import matplotlib.pyplot as plt
import numpy as np
import pandas as pd
import style
import zarn
import zarn.draw
from zarn import Verdict

calc = zarn.Calculator("data/reference-detector", run=0, tolerance=150.0)
print(calc)

# %% [markdown]
# ## Check light paths that you have
#
# `check` reads a table of light paths: here a data frame, read from a CSV file. It gives
# a number for each path, and `Verdict` names the numbers.

# %%
paths = pd.read_csv("data/example-paths.csv")
codes = calc.check(paths)
print(f"{len(codes):,} paths, {np.mean(codes != Verdict.CLEAR):.1%} shadowed")
print("the first of them:", Verdict(codes[0]).label)

# %% [markdown]
# ## Scan an event
#
# `scan` computes the light from events to PMTs, refracted at the vessel, and judges it.

# %%
pmts = pd.read_csv("data/pmts.csv")[["x", "y", "z"]].to_numpy()
event = np.array([0.0, 0.0, 3000.0])
result = calc.scan(event, pmts)
print(result)

# %% [markdown]
# ## Ask why
#
# `explain` tells how each component judges one path: the quantity that decides, and its
# limit.

# %%
hidden = int(np.flatnonzero(result.codes[0] == Verdict.NCD_ANCHOR)[0])
explanation = calc.explain(event=event, pmt=pmts[hidden])
print(f"PMT {hidden}:")
print(explanation)

# %% [markdown]
# ## Choose a tolerance
#
# The tolerance is a margin around ropes, plates and anchors. `critical_tolerance` gives the
# smallest one at which a component blocks a path; its minimum over the components is where
# the path becomes shadowed. So one pass answers for all tolerances.

# %%
light = calc.light_paths(event, pmts)
critical = calc.critical_tolerance(light).min(axis=-1)
for tolerance in (0, 50, 150, 300):
    print(f"{tolerance:3} mm: {np.mean(critical <= tolerance):.1%} shadowed")
print(f"80 % of the paths are clear up to {np.quantile(critical, 0.2):.1f} mm")

# %% [markdown]
# ## Look at the hardware
#
# The points that the calculator uses are NumPy arrays, which cannot be written to.

# %%
points = calc.hold_down_ropes.surface_points
print(f"{len(points):,} points on hold-down ropes of {calc.hold_down_ropes.radius:g} mm radius")
print(f"from z = {points[:, 2].min():.0f} mm to z = {points[:, 2].max():.0f} mm")

# %% [markdown]
# ## Draw it

# %%
zarn.draw.map(result)
plt.savefig(style.output_folder() / "first-steps.png", dpi=150)
