# %% [markdown]
# # A calibration source scan
#
# A light source visits 50 positions in the detector. Which PMTs does the hardware hide
# from it, and at how many of the positions?
#
# Run from the root of the repository: `python examples/python/source_scan.py [FOLDER]`.

# %%
import numpy as np
import pandas as pd
import style
import zarn

calc = zarn.Calculator("data/reference-detector")
source = pd.read_csv("data/source-scan.csv", index_col="event")
pmts = pd.read_csv("data/pmts.csv", index_col="pmt")
result = calc.scan(source, pmts)
print(result)

# %% [markdown]
# ## Positions
#
# The share of the light paths that is shadowed, for each position. Where total reflection
# hides PMTs there are fewer paths.

# %%
of_position = result.per_event().to_pandas().set_index(source.index)
print(of_position.sort_values("fraction")[["paths", "shadowed", "fraction"]].iloc[[0, 1, -2, -1]])

# %% [markdown]
# ## PMTs
#
# The same for each PMT: a fit that compares PMTs can correct for it, or leave out the
# worst ones.

# %%
of_pmt = result.per_pmt().to_pandas().set_index(pmts.index)
print(of_pmt.sort_values("shadowed", ascending=False)[["paths", "shadowed", "fraction"]].head())
print(f"{(of_pmt.fraction > 0.5).sum():,} PMTs are shadowed from more than half of the positions,")
print(f"{(of_pmt.shadowed == 0).sum():,} from none")

# %%
total = result.counts()
figure, axes = style.sky_map(
    "Share of source positions that are hidden from each PMT",
    f"{total.shadowed:,} of {total.paths:,} light paths shadowed "
    f"({100 * total.fraction:.1f} %)  ·  run {calc.run}  ·  "
    f"tolerance {calc.tolerance:g} mm  ·  400 nm  ·  reference detector",
)
longitude, latitude = style.on_map(result.pmts)
marks = axes.scatter(
    longitude, latitude, s=style.mark_size(result.pmts), c=of_pmt.fraction, lw=0,
    cmap=style.SHARES, norm=style.SHARE_STEPS,
)
steps = figure.colorbar(
    marks, cax=figure.add_axes((0.32, 0.085, 0.4, 0.022)), orientation="horizontal",
    format=lambda share, _: f"{100 * share:.0f} %",
)
steps.set_label("Shadowed of the positions with a light path to the PMT")
figure.savefig(style.output_folder() / "source-scan.png", dpi=150)
