"""The page and the chart that script/benchmark writes of what it measured."""

import math
import statistics

TYPES = {
    "mixed": "mixed",
    "inner": "Scint/InnerAV->AV->Water",
    "av-inner": "AV->Scint/InnerAV->AV->Water",
    "av": "AV->Water",
    "water-inner": "Water->AV->Scint/InnerAV->AV->Water",
    "water": "Water",
    "reflection": "Water->Reflection->Water",
}


def number(value):
    """Three figures, with separators: 78,900, 51.2, 0.74."""
    if value == 0 or not math.isfinite(value):
        return "0" if value == 0 else "-"
    digits = 2 - math.floor(math.log10(abs(value)))
    return f"{round(value, digits):,.{max(0, digits)}f}"


def percent(share):
    return f"{100 * share:.1f} %"


def table(header, rows):
    """A table whose columns stand right but for the first."""
    lines = ["| " + " | ".join(header) + " |",
             "|---" + "|--:" * (len(header) - 1) + "|"]
    return "\n".join(lines + ["| " + " | ".join(row) + " |" for row in rows])


class Page:
    """Writes tables and sentences from figures."""

    def __init__(self, figures, machine, repetitions):
        self.figures = figures
        self.machine = machine
        self.repetitions = repetitions

    def ns(self, name):
        return self.figures[name].median

    def cell(self, name):
        return number(self.ns(name)) if name in self.figures else "-"

    def times(self, slow, fast):
        return number(self.ns(slow) / self.ns(fast))

    def counter(self, name, counter):
        return self.figures[name].counters[counter]

    def paths(self, name):
        return f"{self.counter(name, 'paths'):,.0f}"

    def text(self):
        parts = [self.summary(), self.conditions(), self.layers(), self.single_calls(),
                 self.batches(), self.memory(), self.hit_shares(), self.sizes(), self.peers(),
                 self.set_up(), self.csv()]
        return "\n\n".join(parts) + "\n"

    def summary(self):
        rows = [[name, self.cell(f"near/plain/{key}"),
                 self.cell(f"near/map/{key}"), self.times(f"near/plain/{key}", f"near/map/{key}"),
                 self.cell(f"near/batch/{key}"),
                 self.times(f"near/plain/{key}", f"near/batch/{key}")]
                for key, name in TYPES.items()]
        return f"""# Performance

Written by `script/benchmark`; edits are lost in its next run.

How long a verdict takes, in nanoseconds a light path on one core, and how many times
faster that is than the plain formulas (`tests/reference/`), timed in the same run.
All verdicts were compared before anything was timed.

{table(["Type", "Plain", "Single call", "times", "Batch", "times"], rows)}

A single call is `FindShadowing` of one path, a batch one of {self.paths("near/batch/mixed")} paths in
columns. Mixed: 59 % start inside the vessel, 30 % stay in the water, 8 % cross the vessel
from the water, 1 % are of each other type. Only figures of one run compare: another
machine, or this one at another hour, has others.

![Time of a verdict, layer by layer](performance.svg)"""

    def conditions(self):
        spreads = sorted(f.spread for f in self.figures.values())
        rows = "\n".join(f"| {what} | {value} |" for what, value in self.machine)
        return f"""## The machine and the paths

| | |
|---|---|
{rows}

Every figure is the median of {self.repetitions} repetitions. Their coefficient of variation
(standard deviation over mean) is {percent(statistics.median(spreads))} in the middle of all figures,
{percent(spreads[int(0.9 * (len(spreads) - 1))])} or less for nine in ten and {percent(spreads[-1])} at most.

The light paths are those that the light path calculator finds in the reference
detector (`data/reference-detector`, light of 400 nm): from events that fill the inside,
the acrylic wall or the water evenly to its 8,000 PMTs, picked at random with a fixed
seed, and sorted by the type that comes out. `Water->AV->Water` is missing because no
ray takes that way: the wall bends all of them on to the inside. Tolerances are 150 mm
but where others are named; {percent(self.counter("near/plain/mixed", "shadowed"))} of the mixed paths are then shadowed. "In the cache"
are {self.paths("near/plain/mixed")} paths, asked again and again; "out of it" a million. The plain
formulas judge every path in the cache and every 64th of those out of it."""

    def layers(self):
        columns = ("plain", "off", "algebra", "tables", "map")
        rows = [[name, *[self.cell(f"near/{layer}/{key}") for layer in columns]]
                for key, name in TYPES.items()]
        gains = [self.times(f"near/{a}/mixed", f"near/{b}/mixed")
                 for a, b in zip(columns, columns[1:])]
        return f"""## Layer by layer

Nanoseconds of a single call, each layer with those before it:

{table(["Type", "Plain", "All off", "+ algebra", "+ tables", "+ map"], rows)}

With all layers off, every angle is taken as the formulas have it, but what does not
depend on the path is computed once a run, and trees of balls find the few surface points
and anchors near a crossing: for mixed paths that makes {gains[0]} times. Algebra compares
dot products and square roots where the formulas take cosines, arc cosines and tangents
({gains[1]} times). Azimuth tables say which of the vertical ropes can be near ({gains[2]}
times). The shadow map answers most crossing points with one look ({gains[3]} times).
Every layer hands what it is not sure of to the next slower one, the last to the formula
itself: so the verdicts stay the same."""

    def single_calls(self):
        rows = [[name, self.cell(f"near/map/{key}"), self.cell(f"near/dependent/{key}"),
                 self.cell(f"near/flags/{key}"), self.cell(f"far/single/{key}")]
                for key, name in TYPES.items()]
        return f"""## One path a call

{table(["Type", "Independent", "Dependent", "With flags", "Out of the cache"], rows)}

Independent: the processor may begin the next path before it has the verdict on the
last. Dependent: which path comes next hangs on the verdict, as in a search; what a
program sees lies between the two. With flags: `CheckForShadowing`, which also keeps
its result and looks up the name of the type, and the copy of the path into the
`LightPathCalculator` beforehand. Out of the cache: independent calls on a million
records of 328 bytes."""

    def kernels(self):
        """The batch kernels that this machine has, from narrow to wide."""
        return [kernel for kernel in ("baseline", "AVX2", "AVX-512")
                if f"near/columns/{kernel}/1/mixed" in self.figures]

    def batches(self):
        kernels = self.kernels()
        rows = []
        for place, where in (("near", "in"), ("far", "out")):
            for layout in ("columns", "records"):
                for key in ("mixed", "inner", "water"):
                    begin = f"{place}/{layout}"
                    rows.append([f"{layout}, {where}, {TYPES[key]}",
                                 *[self.cell(f"{begin}/{k}/1/{key}") for k in kernels],
                                 self.cell(f"{begin}/chosen/1/{key}"),
                                 self.cell(f"{begin}/chosen/2/{key}"),
                                 self.times(f"near/plain/{key}", f"{begin}/chosen/2/{key}")])
        types = [[name, self.cell(f"near/map/{key}"), self.cell(f"near/batch/{key}"),
                  self.times(f"near/map/{key}", f"near/batch/{key}")]
                 for key, name in TYPES.items()]
        return f"""## Batches

Nanoseconds a path: records or columns, {self.paths("near/batch/mixed")} paths in the cache or a million out
of it, of all types or of one, by kernel on one thread, with the kernel that the
calculator picks by itself on one and on two, and how many times faster than the plain
formulas two threads are:

{table(["Paths", *kernels, "picked, 1 thread", "2 threads", "times"], rows)}

A batch puts several paths at once through a filter in single precision. Where that
knows the ropes but not the map's cell, the cell's few points are asked, as by the
single call; what else is open goes through the single call itself. A few thousand paths stay on one
thread, for sharing them out would take longer than the verdicts.

Against single calls, in the cache, one thread:

{table(["Type", "Single call", "Batch of columns", "times"], types)}"""

    def memory(self):
        bandwidth = {t: self.counter(f"read/{t}", "bytes_per_second") / 1e9 for t in (1, 2)}
        rows = []
        for layout in ("columns", "records"):
            for key in ("mixed", "inner", "water"):
                for threads in (1, 2):
                    name = f"far/{layout}/chosen/{threads}/{key}"
                    size = self.counter(name, "column_bytes") if layout == "columns" else 328
                    rate = size / self.ns(name)
                    rows.append([f"{layout}, {TYPES[key]}, {threads} thread{'s' * (threads > 1)}",
                                 number(size), self.cell(name), number(rate),
                                 percent(rate / bandwidth[threads])])
        return f"""## Bytes and memory

A path of one crossing needs 52 bytes of the columns: its type, a point and a
direction. All 24 columns and the type are 196 bytes, a record is 328. Of a million
mixed paths in columns the cache lines that hold a number that a verdict reads come to
{number(self.counter("far/columns/chosen/1/mixed", "column_bytes"))} bytes a path. Reading the columns of the mixed million and doing nothing else
takes in {number(bandwidth[1])} GB/s on one thread and {number(bandwidth[2])} GB/s on two; beside that:

{table(["Paths", "Bytes a path", "ns a path", "GB/s", "of reading alone"], rows)}

Where the last column comes near 100 %, memory is the limit and no kernel can help. Of
records a path reads only a part, but their cache lines mostly come along."""

    def hit_shares(self):
        tolerances = [-10, 0, 50, 150, 400]
        rows = [[f"{t} mm", percent(self.counter(f"tolerance/{t}/plain", "shadowed")),
                 *[self.cell(f"tolerance/{t}/{way}") for way in ("plain", "single", "batch")],
                 self.times(f"tolerance/{t}/plain", f"tolerance/{t}/single"),
                 self.times(f"tolerance/{t}/plain", f"tolerance/{t}/batch")]
                for t in tolerances]
        single = [self.ns(f"tolerance/{t}/single") for t in tolerances]
        return f"""## How much is shadowed

Mixed paths in the cache at several tolerances:

{table(["Tolerance", "Shadowed", "Plain", "Single call", "Batch", "times, single",
        "times, batch"], rows)}

The plain formulas stop at the first surface point that is within reach and at the first
component that blocks a path, but most of their time goes into points that are not. The
layers find clear paths and blocked ones alike ({number(min(single))} to {number(max(single))} ns a single call here); what
costs them is the border of a shadow, where they are not sure."""

    def sizes(self):
        rows = {}
        for kind in ("ropes", "anchors"):
            counts = sorted({int(n.split("/")[1]) for n in self.figures
                             if n.startswith(f"{kind}/")})
            rows[kind] = [[f"{count:,}",
                           percent(self.counter(f"{kind}/{count}/single", "shadowed")),
                           *[self.cell(f"{kind}/{count}/{way}")
                             for way in ("plain", "single", "batch", "many")],
                           self.times(f"{kind}/{count}/plain", f"{kind}/{count}/single"),
                           self.paths(f"{kind}/{count}/plain")]
                          for count in counts]
        some, many = self.paths("ropes/10/single"), self.paths("ropes/10/many")
        header = ["Shadowed", "Plain", "Single call", "Batch", f"Single call, {many} paths",
                  "times, single", "paths judged plainly"]
        growth = [number(self.ns(f"ropes/480/{way}") / self.ns(f"ropes/5/{way}"))
                  for way in ("single", "batch", "many")]
        return f"""## More hardware

Geometries with hold-down ropes alone, copies of the reference detector's, each of about
2,100 surface points and two straight legs, and with anchors alone, spread evenly over the
outer sphere. The tolerance shrinks as the number grows, so that the share of shadowed
paths stays. {some} mixed paths, which with all that they touch stay in the second cache, and
{many}, which do not; the plain formulas are asked for fewer of them where they are slow.

{table(["Ropes", *header], rows["ropes"])}

{table(["Anchors", *header], rows["anchors"])}

The plain formulas go through all of it for every path. The layers look at what is near:
their cost grows with the length of the borders of the shadows, and with what no longer
fits the cache. From 5 ropes to 480, from ten thousand surface points to a million, a
single call takes {growth[0]} times as long, a path of a batch {growth[1]} times, and a single call
among {many} paths {growth[2]} times. In a batch the growth is larger since next to nothing is left
of its time but the borders."""

    def peers(self):
        ways = {
            "plain": ("plain loop over all surface points", "double"),
            "kd-tree-radius": ("nanoflann kd-tree, all points within reach", "double"),
            "kd-tree-first": ("nanoflann kd-tree, up to the first", "double"),
            "point-query": ("Embree point query, up to the first", "single"),
            "outward-ray": ("Embree occlusion of a ray outwards by spheres", "single"),
            "tree": ("our tree of balls", "double"),
            "map": ("our shadow map, then the tree", "double"),
        }
        rows = [[label, precision, self.cell(f"scan/{way}"),
                 self.times("scan/plain", f"scan/{way}"),
                 f"{self.counter(f'scan/{way}', 'differences'):.0f}"]
                for way, (label, precision) in ways.items()]
        differences = sum(self.counter(f"scan/{way}", "differences")
                          for way in ("point-query", "outward-ray"))
        said = ("none here" if differences == 0 else f"{differences:.0f} here")
        return f"""## Other libraries on the surface scan

The dearest of the formulas asks whether a crossing point lies within reach of any of
the 20,960 surface points of the hold-down ropes. The same question to other indices,
for the crossings of {self.paths("scan/plain")} paths from inside the vessel that are above the ropes'
ends ({percent(self.counter("scan/plain", "shadowed"))} of them within reach), one by one:

{table(["Way", "Precision", "ns a point", "times", "other verdicts"], rows)}

Embree computes in single precision, so it may answer otherwise within about a
thousandth of a millimetre of the limit ({said}); the others must agree, or
nothing is timed. A ray straight outwards from a point of the vessel sphere meets the
sphere around a surface point just where it starts inside it, which makes the ray
tracer answer the same question.

As a yardstick of what a general ray tracer takes: Embree needs {self.cell("segment/ray")} ns to tell whether the
last stretch of such a path, from the vessel to the PMT, meets the ropes (spheres and
tubes) or the anchors (spheres), all widened by the tolerance. Those verdicts are not
the formulas', which look at single points of a path and follow the straight ropes by
azimuth: {percent(self.counter("segment/ray", "shadowed"))} of these paths are met."""

    def set_up(self):
        begin = self.ns("setup/begin-of-run") / 1e6
        layers = self.ns("setup/layers") / 1e6
        many = [(self.ns(f"parts/1000/{tolerance}") / 1e6,
                 self.counter(f"parts/1000/{tolerance}", "bytes") / 2**20)
                for tolerance in (0, 150)]
        return f"""## Setting up a run

`BeginOfRun` on the reference detector takes {number(begin)} ms from tables in memory, the
making of its layers {number(layers)} ms. That is the time of {number(layers * 1e6 / self.ns("near/map/mixed"))} single calls
with layers, or of {number(layers * 1e6 / self.ns("near/plain/mixed"))} paths by the plain formulas.

With 1,000 hold-down ropes, support ropes, plates and anchors, which have two million
surface points, layers take {number(many[0][0])} ms and {number(many[0][1])} MiB at a tolerance of 0 mm, where
nearly every point stands at the border of a shadow, and {number(many[1][0])} ms and {number(many[1][1])} MiB at
150 mm."""

    def csv(self):
        threads = sorted(int(n.split("/")[2]) for n in self.figures if n.startswith("csv/check"))
        rows = []
        for t in threads:
            check, floor = self.figures[f"csv/check/{t}"], self.figures[f"csv/floor/{t}"]
            rows.append([f"{t} thread{'s' * (t > 1)}", number(1e3 / check.median),
                         number(check.median), number(floor.median),
                         number(check.median / floor.median),
                         number(1e3 * check.counters["start"])])
        return f"""## The command

`zarn-shadow check` on {self.counter("csv/check/1", "rows"):,} rows, the example paths again and again (24 numbers a
row, {self.counter("csv/check/1", "bytes") / 1e6:,.0f} MB),
verdicts written to a file, beyond what it takes on a file without rows (start-up). The
floor is a program that maps the file into memory and turns the text of every number
into a double (`std::from_chars`), and nothing else:

{table(["", "million rows a second", "ns a row", "floor, ns a row", "times the floor",
        "start-up, ms"], rows)}"""


def chart(page):
    """Bars of the time for mixed paths, on a logarithmic scale."""
    bars = [("plain formulas", "near/plain/mixed"), ("layers, all off", "near/off/mixed"),
            ("+ algebra", "near/algebra/mixed"),
            ("+ tables", "near/tables/mixed"), ("+ map", "near/map/mixed"),
            ("batch, 1 thread", "near/batch/mixed"),
            ("a million, 2 threads", "far/columns/chosen/2/mixed")]
    left, width, step = 150, 460, 30
    most = math.ceil(math.log10(max(page.ns(name) for _, name in bars)))
    least = math.floor(math.log10(min(page.ns(name) for _, name in bars)))
    bottom = 36 + step * len(bars)

    def x(ns):
        return left + width * (math.log10(ns) - least) / (most - least)

    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 700 {bottom + 40}" '
             'font-family="sans-serif" font-size="13">',
             "<title>Time of a verdict, layer by layer</title>",
             '<rect width="100%" height="100%" fill="white"/>',
             '<text x="8" y="20" font-weight="bold">'
             "Nanoseconds a light path (mixed types), and times faster than plain</text>"]
    for power in range(least, most + 1):
        at = x(10 ** power)
        parts.append(f'<line x1="{at:.1f}" y1="32" x2="{at:.1f}" y2="{bottom}" stroke="#ccc"/>')
        parts.append(f'<text x="{at:.1f}" y="{bottom + 18}" text-anchor="middle" '
                     f'fill="#555">{10 ** power:,} ns</text>')
    for i, (label, name) in enumerate(bars):
        y = 36 + step * i
        end = x(page.ns(name))
        times = f", {page.times('near/plain/mixed', name)} x" if i > 0 else ""
        inside = end > left + width - 130
        halo = "" if inside else 'stroke="white" stroke-width="4" paint-order="stroke" '
        parts.append(f'<text x="{left - 8}" y="{y + 16}" text-anchor="end">{label}</text>')
        parts.append(f'<rect x="{left}" y="{y}" width="{end - left:.1f}" height="{step - 8}" '
                     f'fill="{"#888" if i == 0 else "#2a6fb0"}"/>')
        parts.append(f'<text x="{end + (-6 if inside else 6):.1f}" y="{y + 16}" '
                     f'text-anchor="{"end" if inside else "start"}" '
                     f'{halo}fill="{"white" if inside else "black"}">'
                     f"{page.cell(name)} ns{times}</text>")
    return "\n".join([*parts, "</svg>", ""])
