"""The page and the chart that script/benchmark writes from its figures."""

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

# Events, or PMTs, of the rows; at least how many times as fast as the plain loop a row
# must be with each kernel; and the largest share of exact paths.
ROWS = {
    "standard": ("the source scan", {"AVX-512": 40, "AVX2": 28}, 0.001),
    "inside": ("within 5,000 mm", {"AVX-512": 40, "AVX2": 28}, 0.001),
    "near-wall": ("inside, near the wall", {"AVX-512": 40, "AVX2": 28}, 0.001),
    "wall": ("in the wall", {"AVX-512": 40, "AVX2": 28}, 0.001),
    "water": ("in the water", {"AVX-512": 16, "AVX2": 12}, 0.012),
    "rings": ("inside, PMTs on rings", {"AVX-512": 15, "AVX2": 10}, 0.001),
    "distances": ("inside, PMTs at any distances", {}, None),
    "reflection": ("in the water, reflected", {}, None),
}
KERNELS = ("baseline", "AVX2", "AVX-512")


def number(value):
    """Three significant digits, with separators: 78,900, 51.2, 0.74."""
    if value == 0 or not math.isfinite(value):
        return "0" if value == 0 else "-"
    digits = 2 - math.floor(math.log10(abs(value)))
    return f"{round(value, digits):,.{max(0, digits)}f}"


def percent(share):
    return f"{100 * share:.1f} %"


def table(header, rows):
    """A table; all columns except the first are right-aligned."""
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
                 self.batches(), self.rows(), self.memory(), self.hit_shares(), self.sizes(), self.peers(),
                 self.set_up(), self.csv(), self.root(), self.frames(), self.python()]
        return "\n\n".join(parts) + "\n"

    def summary(self):
        rows = [[name, self.cell(f"near/plain/{key}"),
                 self.cell(f"near/map/{key}"), self.times(f"near/plain/{key}", f"near/map/{key}"),
                 self.cell(f"near/batch/{key}"),
                 self.times(f"near/plain/{key}", f"near/batch/{key}")]
                for key, name in TYPES.items()]
        return f"""# Performance

Written by `script/benchmark`; its next run overwrites edits.

The time of a verdict in nanoseconds per light path on one core, and the speed-up over the
plain formulas (`tests/reference/`), measured in the same run. All verdicts were compared
before the measurements.

{table(["Type", "Plain, ns", "Single call, ns", "speed-up", "Batch, ns", "speed-up"], rows)}

A single call is `FindShadowing` of one path, a batch that of {self.paths("near/batch/mixed")} paths in
columns. Mixed: 59 % start inside the vessel, 30 % stay in the water, 8 % cross the vessel
from the water, 1 % are of each other type. Compare only figures of one run: they depend
on the machine and its load.

![Time of a verdict, layer by layer](performance.svg)"""

    def conditions(self):
        spreads = sorted(f.spread for f in self.figures.values())
        rows = "\n".join(f"| {what} | {value} |" for what, value in self.machine)
        return f"""## The machine and the paths

| | |
|---|---|
{rows}

Every figure is the median of {self.repetitions} repetitions. The coefficient of variation (standard
deviation over mean) of the repetitions has a median of {percent(statistics.median(spreads))} over all figures; it is
{percent(spreads[int(0.9 * (len(spreads) - 1))])} or less for 90 % of the figures, and {percent(spreads[-1])} at most.

The light paths are computed by the light path calculator in the reference detector
(`data/reference-detector`, light of 400 nm). They lead from events uniformly distributed
in the inside, the acrylic wall or the water to its 8,000 PMTs, chosen at random with a
fixed seed, and are sorted by type. There are no `Water->AV->Water` paths, because the
wall bends all such rays into the inside. Tolerances are 150 mm unless stated otherwise;
{percent(self.counter("near/plain/mixed", "shadowed"))} of the mixed paths are then shadowed. "In cache" means {self.paths("near/plain/mixed")} paths, judged
repeatedly; "out of cache" a million paths. The plain formulas judge every path in cache
and every 64th path out of cache."""

    def layers(self):
        columns = ("plain", "off", "algebra", "tables", "map")
        rows = [[name, *[self.cell(f"near/{layer}/{key}") for layer in columns]]
                for key, name in TYPES.items()]
        gains = [self.times(f"near/{a}/mixed", f"near/{b}/mixed")
                 for a, b in zip(columns, columns[1:])]
        return f"""## Layer by layer

Nanoseconds per single call. Each column adds one layer to the previous ones:

{table(["Type", "Plain", "All off", "+ algebra", "+ tables", "+ map"], rows)}

With all layers off, angles are computed as in the formulas. But values that do not depend
on the path are computed once per run, and trees of balls find the few surface points and
anchors near a crossing: a {gains[0]}x speed-up for mixed paths. Algebra compares dot products
and square roots where the formulas use cosines, arc cosines and tangents ({gains[1]}x). Azimuth
tables find the vertical ropes that can be near ({gains[2]}x). The shadow map decides most
crossing points with one lookup ({gains[3]}x). Every layer passes the cases that it cannot prove
to the next, slower layer, and the last one to the formula. So the verdicts are the same."""

    def single_calls(self):
        rows = [[name, self.cell(f"near/map/{key}"), self.cell(f"near/dependent/{key}"),
                 self.cell(f"near/flags/{key}"), self.cell(f"far/single/{key}")]
                for key, name in TYPES.items()]
        return f"""## One path per call

{table(["Type", "Independent", "Dependent", "With flags", "Out of cache"], rows)}

Nanoseconds per call. Independent: the processor can start the next path before it has
the previous verdict. Dependent: the next path depends on the verdict, as in a search;
real programs are between the two. With flags: `CheckForShadowing`, which also sets the
flags and looks up the name of the type, including the copy of the path into the
`LightPathCalculator`. Out of cache: independent calls on a million records of 328
bytes.

`FindCriticalTolerances` of a mixed path takes {self.cell("critical-tolerances/nearest")} ns: it finds the nearest
items, {self.times("critical-tolerances/all-items", "critical-tolerances/nearest")} times as fast as from all items."""

    def kernels(self):
        """The batch kernels that this machine has, from narrow to wide."""
        return [kernel for kernel in KERNELS
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

Nanoseconds per path, for records or columns, {self.paths("near/batch/mixed")} paths in cache or a million
out of cache, of all types or of one type: each kernel on one thread, the kernel that the
calculator chooses on one and two threads, and the speed-up of two threads over the plain
formulas:

{table(["Paths", *kernels, "chosen, 1 thread", "2 threads", "speed-up"], rows)}

A batch tests several paths at once with a filter in single precision. If only the map
cell remains undecided, the points of the cell are tested as in the single call; all other
undecided paths use the single call. A few thousand paths stay on one thread, because
distributing them would take longer than the verdicts.

Compared with single calls, in cache, one thread, nanoseconds per path:

{table(["Type", "Single call", "Batch of columns", "speed-up"], types)}"""

    def rows(self):
        def ratio(key, kernel):
            if f"rows/{key}/{kernel}" not in self.figures:
                return "not measured"
            return self.times(f"rows/{key}/plain", f"rows/{key}/{kernel}")

        def least(value):
            return "-" if value is None else str(value)

        rows = []
        for key, (name, limits, share) in ROWS.items():
            kernel = [k for k in KERNELS if f"rows/{key}/{k}" in self.figures][-1]
            row = [name, self.cell(f"rows/{key}/plain"), self.cell(f"rows/{key}/{kernel}"),
                   ratio(key, "baseline")]
            for k in ("AVX2", "AVX-512"):
                row += [ratio(key, k), least(limits.get(k))]
            row += [f"{100 * self.counter(f'rows/{key}/{kernel}', 'exact'):.2f} %",
                    "-" if share is None else f"{100 * share:.1f} %"]
            rows.append(row)
        micros = [number(self.ns(f"rows/table/{where}") / 1e3)
                  for where in ("inside", "near-wall", "wall", "water")]
        return f"""## One event and all PMTs

`FindVerdicts` judges the light from one event to 8,000 PMTs and computes hardly any path
exactly. On one core, layers built, 50 events each:

{table(["Events", "Plain loop, ns", "Row, ns", "baseline", "AVX2", "at least", "AVX-512",
        "at least", "exact paths", "at most"], rows)}

Nanoseconds are per pair, for a row with the widest kernel. The other columns are speed-ups
over the plain loop, `CalcByPosition` (or `CalcReflectionByPosition`) and `FindShadowing`
for each pair, by kernel, beside what is required. Exact paths: the share of pairs that are
left to the plain loop. On the source scan, `FindVerdicts` itself takes
{self.cell("rows/standard/chosen")} ns per pair: {number(1e3 / self.ns("rows/standard/chosen"))} million pairs a second. The rings are 13,
250 mm apart, from 7 to 10 m, in any order.

The table of an event's rays takes {micros[0]} microseconds for an event inside, {micros[1]} near the
wall, {micros[2]} in the wall and {micros[3]} in the water.

A scan that counts at 30 tolerances (`scan --tolerances`) takes {self.cell("rows/standard/30-tolerances")} ns per pair
of the source scan: {self.times("rows/standard/30-tolerances", "rows/standard/plain")} times the plain loop for one tolerance."""

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

A path with one crossing uses 52 bytes of the columns: its type, a point and a direction.
All 24 columns and the type have 196 bytes, a record has 328. For a million mixed paths in
columns, the cache lines that a verdict reads have {number(self.counter("far/columns/chosen/1/mixed", "column_bytes"))} bytes per path on average.
Only reading the columns of the million mixed paths reaches {number(bandwidth[1])} GB/s on one thread
and {number(bandwidth[2])} GB/s on two. In comparison:

{table(["Paths", "Bytes per path", "ns per path", "GB/s", "of reading only"], rows)}

Where the last column is close to 100 %, memory is the limit and no kernel can be faster.
A path uses only a part of a record, but most of its cache lines are read."""

    def hit_shares(self):
        tolerances = [-10, 0, 50, 150, 400]
        rows = [[f"{t} mm", percent(self.counter(f"tolerance/{t}/plain", "shadowed")),
                 *[self.cell(f"tolerance/{t}/{way}") for way in ("plain", "single", "batch")],
                 self.times(f"tolerance/{t}/plain", f"tolerance/{t}/single"),
                 self.times(f"tolerance/{t}/plain", f"tolerance/{t}/batch")]
                for t in tolerances]
        single = [self.ns(f"tolerance/{t}/single") for t in tolerances]
        return f"""## Dependence on the shadowed share

Mixed paths in cache at several tolerances, nanoseconds per path:

{table(["Tolerance", "Shadowed", "Plain", "Single call", "Batch", "speed-up, single",
        "speed-up, batch"], rows)}

The plain formulas stop at the first surface point within reach and at the first component
that blocks a path, but most of their time goes into points that are not in reach. The
layers decide clear and blocked paths equally fast ({number(min(single))} to {number(max(single))} ns per single call
here). Most expensive are paths at the border of a shadow, which they cannot decide."""

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
                  "speed-up, single", "paths judged by plain"]
        growth = [number(self.ns(f"ropes/480/{way}") / self.ns(f"ropes/5/{way}"))
                  for way in ("single", "batch", "many")]
        return f"""## More hardware

Nanoseconds per path in geometries with only hold-down ropes (copies of those of the
reference detector, each with about 2,100 surface points and two straight legs) and with
only anchors (uniformly distributed on the outer sphere). The tolerance decreases with the
number, so that the share of shadowed paths stays about the same. {some} mixed paths with
their data fit the second-level cache, {many} do not. The plain formulas judge fewer paths
where they are slow.

{table(["Ropes", *header], rows["ropes"])}

{table(["Anchors", *header], rows["anchors"])}

The plain formulas test all hardware for every path. The layers test only hardware nearby:
their cost grows with the length of the shadow borders and with cache misses. From 5 to 480
ropes, or ten thousand to a million surface points, the time of a single call grows
{growth[0]}x, of a path in a batch {growth[1]}x, and of a single call among {many} paths {growth[2]}x. It grows
more in a batch, because there nearly all of the time is spent at the borders."""

    def peers(self):
        ways = {
            "plain": ("plain loop over all surface points", "double"),
            "kd-tree-radius": ("nanoflann kd-tree, all points within reach", "double"),
            "kd-tree-first": ("nanoflann kd-tree, up to the first", "double"),
            "point-query": ("Embree point query, up to the first", "single"),
            "outward-ray": ("Embree occlusion of an outward ray by spheres", "single"),
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

The most expensive formula tests whether a crossing point is within reach of any of the
20,960 surface points of the hold-down ropes. The same test with other spatial indices, one
by one for the crossings of {self.paths("scan/plain")} paths from inside the vessel that are above the
ropes' ends ({percent(self.counter("scan/plain", "shadowed"))} of them within reach):

{table(["Method", "Precision", "ns per point", "speed-up", "different verdicts"], rows)}

Embree uses single precision, so its answer may differ within about 0.001 mm of the limit
({said}). All others must agree before anything is measured. An outward ray from a
point on the vessel sphere hits the sphere around a surface point exactly if it starts
inside it, so the ray tracer can do the same test.

For comparison with a general ray tracer: Embree needs {self.cell("segment/ray")} ns to test whether the last
segment of such a path, from the vessel to the PMT, hits the ropes (spheres and tubes) or
the anchors (spheres), all widened by the tolerance. These verdicts differ from those of
the formulas, which test single points of a path and find the straight ropes by azimuth:
{percent(self.counter("segment/ray", "shadowed"))} of these paths are blocked."""

    def set_up(self):
        begin = self.ns("setup/begin-of-run") / 1e6
        layers = self.ns("setup/layers") / 1e6
        many = [(self.ns(f"parts/1000/{tolerance}") / 1e6,
                 self.counter(f"parts/1000/{tolerance}", "bytes") / 2**20)
                for tolerance in (0, 150)]
        return f"""## Setting up a run

For the reference detector, `BeginOfRun` takes {number(begin)} ms from tables in memory, and making
the layers takes {number(layers)} ms. That is the time of {number(layers * 1e6 / self.ns("near/map/mixed"))} single calls with layers, or
of {number(layers * 1e6 / self.ns("near/plain/mixed"))} paths with the plain formulas.

With 1,000 each of hold-down ropes, support ropes, plates and anchors (two million surface
points), layers take {number(many[0][0])} ms and {number(many[0][1])} MiB at a tolerance of 0 mm, where nearly every
point is at the border of a shadow, and {number(many[1][0])} ms and {number(many[1][1])} MiB at 150 mm."""

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

`zarn-shadow check` on {self.counter("csv/check/1", "rows"):,} rows, copies of the example paths (24 numbers per row,
{self.counter("csv/check/1", "bytes") / 1e6:,.0f} MB), with verdicts written to a file. The time for a file without rows
(start-up) is subtracted. The lower limit ("floor") is a program that only maps the file
into memory and converts the text of every number to a double (`std::from_chars`):

{table(["", "million rows/s", "ns per row", "floor, ns per row", "ratio to floor",
        "start-up, ms"], rows)}"""

    def root(self):
        rows = [[name, number(self.ns(f"root/read/{file}")), number(self.ns(f"root/check/{file}")),
                 self.times(f"root/check/{file}", f"root/read/{file}"),
                 number(self.ns(f"root/check-on-two/{file}")),
                 self.times(f"root/check-on-two/{file}", f"root/read/{file}")]
                for file, name in (("tree-doubles", "TTree of doubles (zlib)"),
                                   ("tree-floats", "TTree of floats (zlib)"),
                                   ("ntuple-doubles", "RNTuple of doubles (zstd)"),
                                   ("ntuple-floats", "RNTuple of floats (zstd)"))]
        return f"""## ROOT files

`check` on {self.paths("root/check/tree-doubles")} paths in ROOT files, 25 columns each, beside only reading these columns
in bulk, basket by basket or page by page: ns per path on one thread, and of `check` on
two threads, of which one reads. `check` also judges the paths and writes CSV.

{table(["", "reading", "check", "ratio", "on two threads", "ratio"], rows)}

The ratio should be 1.5 at most. Floats of an RNTuple are read in so little time that
judging alone takes half as long."""

    def frames(self):
        rows = [[name, *[self.cell(f"frames/{key}/{way}")
                         for way in ("bulk", "read", "column", "source-read", "source")],
                 self.times(f"frames/{key}/column", f"frames/{key}/source")]
                for key, name in (("ttree", "TTree"), ("rntuple", "RNTuple"))]
        return f"""## Data frames

Nanoseconds per path of a file of {self.paths("frames/ttree/bulk")} paths with 25 columns, on one thread. In
bulk: reading alone, without a frame. ROOT's own frame of the file reads the same columns,
or `DefineShadowing` adds the verdicts to it. `FromPaths` is the bulk reader as a frame: all
columns are read, or only the verdicts, which it finds in batches. The last column is the
speed-up of verdicts by `FromPaths` over those by `DefineShadowing`:

{table(["", "in bulk", "frame, reading", "frame, verdicts", "`FromPaths`, reading",
        "`FromPaths`, verdicts", "speed-up"], rows)}"""

    def python(self):
        rows = [[name, number(self.ns(f"python/{work}/library")),
                 number(self.ns(f"python/{work}/package")),
                 self.times(f"python/{work}/package", f"python/{work}/library")]
                for work, name in (("dense columns", "`check`, a million paths in dense columns"),
                                   ("structured array", "`check`, the same in a structured array"),
                                   ("scan", "`scan`, 2,000 events and 8,000 PMTs"))]
        return f"""## Python

The package on one thread beside the library: the same work on the same arrays, in turns in
one process; ns per path or pair. The library judges the paths in dense columns, and counts
nothing in a scan.

{table(["", "library, ns", "package, ns", "ratio"], rows)}"""


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
             "Nanoseconds per light path (mixed types), and speed-up over plain</text>"]
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
