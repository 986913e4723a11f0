# %% [markdown]
# # A calibration source scan
#
# A light source visits 50 positions in the detector. Which PMTs does the hardware hide
# from it, and at how many of the positions?
#
# Run from the root of the repository: `python examples/python/source_scan.py [FOLDER]`.

# %%
import matplotlib.pyplot as plt
import pandas as pd
import style
import zarn
import zarn.draw

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
zarn.draw.map(result, title="How often the PMTs are hidden from the source")
plt.savefig(style.output_folder() / "source-scan.png", dpi=150)
