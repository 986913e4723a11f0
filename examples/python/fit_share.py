# %% [markdown]
# # Fit the shadowed share
#
# How does the shadowed share of all directions depend on the height of a source on the
# axis? At each height we count light paths to random points of the sphere of PMTs; their
# number gives each share a binomial error, and new points at each height keep these
# errors independent. A polynomial in z is then fitted with scipy.
#
# Run from the root of the repository: `python examples/python/fit_share.py [FOLDER]`.

# %%
import matplotlib.pyplot as plt
import numpy as np
import pandas as pd
import style
import zarn
from scipy.optimize import curve_fit
from style import Array

PMT_RADIUS = 8300.0  # mm
POINTS = 40_000  # at each height

calc = zarn.Calculator("data/reference-detector")
heights = np.arange(-4500.0, 4501.0, 500.0)

# %% [markdown]
# ## Count

# %%
generator = np.random.default_rng(seed=1)


def random_points() -> Array:
    """Points on the sphere of PMTs, mm: (POINTS, 3)."""
    points = generator.normal(size=(POINTS, 3))
    points *= PMT_RADIUS / np.linalg.norm(points, axis=1, keepdims=True)
    return points


counts = [calc.scan([0, 0, z], random_points()).counts() for z in heights]
percent = 100 * np.array([c.fraction for c in counts])
percent_error = 100 * np.array([c.fraction_error for c in counts])

# %% [markdown]
# ## Fit
#
# The errors are those of counting, so `absolute_sigma` keeps their size, and chi-square
# tells whether the polynomial is good enough.

# %%


def share(z: Array, centre: float, slope: float, curvature: float, cubic: float) -> Array:
    """The shadowed share, percent, at a height in m."""
    return centre + slope * z + curvature * z**2 + cubic * z**3


metres = heights / 1000
fitted, covariance = curve_fit(
    share, metres, percent, sigma=percent_error, absolute_sigma=True
)
errors = np.sqrt(np.diag(covariance))
units = {"centre": "%", "slope": "%/m", "curvature": "%/m2", "cubic": "%/m3"}
for (name, unit), value, error in zip(units.items(), fitted, errors):
    print(f"{name:<9} = {value:7.4f} +- {error:.4f} {unit}")
chi_square = np.sum(((percent - share(metres, *fitted)) / percent_error) ** 2)
print(f"chi-square {chi_square:.1f} for {len(heights) - len(fitted)} degrees of freedom")

# %% [markdown]
# ## Compare
#
# What hardware hides of the 8,000 PMTs has no error of counting. But they are few, and the
# same at every height: together they deviate from the sphere as a whole.

# %%
pmts = pd.read_csv("data/pmts.csv")
axis = np.zeros((len(heights), 3))
axis[:, 2] = heights
of_pmts = 100 * calc.scan(axis, pmts).per_event().fraction
print(f"largest distance of the PMTs from the curve: "
      f"{np.abs(of_pmts - share(metres, *fitted)).max():.2f} %")

# %%
figure, (axes, pulls) = plt.subplots(
    2, sharex=True, figsize=(8, 6), height_ratios=(3, 1), layout="constrained"
)
fine = np.linspace(-4.7, 4.7, 200)
powers = np.vander(fine, 4, increasing=True)
band = np.sqrt(np.einsum("ij,jk,ik->i", powers, covariance, powers))
curve = share(fine, *fitted)
axes.fill_between(
    fine, curve - band, curve + band, color=style.CLEAR, lw=0, label="error of the fit"
)
axes.plot(fine, curve, color=style.ACCENT, label="fit, cubic in z")
axes.errorbar(
    metres, percent, percent_error, fmt="o", ms=4, color=style.INK,
    label=f"{POINTS:,} random points at each height",
)
axes.plot(metres, of_pmts, "x", color=style.NO_PATH, label="the 8,000 PMTs")
axes.set_title("Shadowed share of the light of a source on the axis")
axes.set_ylabel("Shadowed light paths (%)")
axes.legend(loc="upper left")
axes.grid(axis="y")
pulls.axhline(0, color=style.ACCENT)
pulls.errorbar(
    metres, (percent - share(metres, *fitted)) / percent_error, 1, fmt="o", ms=4, color=style.INK
)
pulls.set_ylabel("Pull")
pulls.set_ylim(-3.5, 3.5)
pulls.set_xlabel("Height z of the source (m)")
figure.savefig(style.output_folder() / "fit-share.png", dpi=150)
