#!/usr/bin/env python3
"""Draw the pictures of verdicts.md: what each component's test does.

    docs/draw-verdicts.py ZARN-SHADOW [FOLDER]

reads the hardware from the tables of the reference detector and the verdicts from
the command, each with that component alone, and writes one drawing a component
beside this script, or to FOLDER.
"""

import csv
import io
import json
import math
import pathlib
import shutil
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True  # the source folder stays clean

from drawing import Drawing

HERE = pathlib.Path(__file__).resolve().parent
DETECTOR = HERE.parent / "data" / "reference-detector"
TOLERANCE = 150.0  # mm, the default
CAVITY = 8500.0    # mm, the sphere on which ropes end

# What a component needs besides vessel.json.
FILES = {
    "AVHDRope": ["hold_down_ropes"],
    "SupportRope": ["support_ropes", "belly_plates"],
    "BellyPlate": ["belly_plates"],
    "NCDAnchor": ["ncd_anchors"],
    "AVPipe": ["av_pipes"],
    "NeckBoss": ["neck_boss"],
}
PATH_COLUMNS = ["type"] + [f"{vector}_{axis}"
                           for vector in ("start", "end", "initial", "final",
                                          "av1", "av2", "av3", "av4") for axis in "xyz"]


def tables():
    """The entries of the reference detector, by table and index."""
    entries = [entry for file in DETECTOR.glob("*.json") for entry in json.loads(file.read_text())]
    return {(entry["table"], entry["index"]): entry["fields"] for entry in entries}


TABLES = tables()
INNER = TABLES["SOLID", "acrylic_vessel_inner"]["r_sphere"]
OUTER = TABLES["SOLID", "acrylic_vessel_outer"]["r_sphere"]
NECK = TABLES["SOLID", "acrylic_vessel_outer"]["r_neck"]


def points_of(table, index, fields="xyz"):
    entry = TABLES[table, index]
    return list(zip(*(entry[field] for field in fields)))


class Judge:
    """Asks the command which light that leaves the vessel a component blocks."""

    def __init__(self, command, component):
        self.command, self.component = command, component

    def blocked(self, paths, tolerance=TOLERANCE):
        """For each (point on the vessel, direction of travel) whether it is blocked."""
        rows = io.StringIO()
        writer = csv.DictWriter(rows, PATH_COLUMNS, restval="", lineterminator="\n")
        writer.writeheader()
        for (x, y, z), (dx, dy, dz) in paths:
            writer.writerow({"type": "AV->Water", "av1_x": x, "av1_y": y, "av1_z": z,
                             "final_x": dx, "final_y": dy, "final_z": dz})
        with tempfile.TemporaryDirectory() as folder:
            for name in ("vessel", *FILES[self.component]):
                shutil.copy(DETECTOR / f"{name}.json", folder)
            result = subprocess.run(
                [self.command, "check", "-", "--geometry", folder, "--tolerance", str(tolerance)],
                input=rows.getvalue(), capture_output=True, text=True, check=True)
        return [row["by"] == self.component for row in csv.DictReader(result.stdout.splitlines())]

    def grid(self, columns, rows, point, tolerance=TOLERANCE):
        """The same of light straight out of every point(column, row), in rows; no
        light where the point is None."""
        places = [[point(i, j) for i in range(columns)] for j in range(rows)]
        answers = iter(self.blocked([(p, outwards(p)) for row in places for p in row if p],
                                    tolerance))
        return [[p is not None and next(answers) for p in row] for row in places]


def outwards(point):
    length = math.hypot(*point)
    return tuple(c / length for c in point)


def on_vessel(azimuth, z):
    """The point of the outer sphere at an azimuth, rad, and a height, mm."""
    across = math.sqrt(OUTER * OUTER - z * z)
    return across * math.cos(azimuth), across * math.sin(azimuth), z


def key(drawing, x, y, colour, words, opacity=None):
    """A line of a legend."""
    drawing.rect(x, y - 10, 14, 11, fill=colour, opacity=opacity)
    drawing.text(x + 20, y, words, size=12)


# Ropes


def turned(point, angle):
    c, s = math.cos(angle), math.sin(angle)
    return c * point[0] - s * point[1], s * point[0] + c * point[1], point[2]


def hold_down_rope():
    """The six points of one rope, and the angles by which it is turned, rad."""
    rope = TABLES["GEO", "hold_down_ropes"]
    return (points_of("SOLID", rope["solid_definition"], ("rope_x", "rope_y", "rope_z")),
            [math.radians(roll) for roll in TABLES["GEO_LOCATIONS", rope["locations"]]["roll"]])


def legs():
    """The azimuths, rad, and the distance from the axis of the hold-down legs."""
    template, rolls = hold_down_rope()
    ends = [turned(template[4], roll) for roll in rolls]
    ends += [turned(template[1], math.pi + roll) for roll in rolls]
    return sorted(math.atan2(y, x) for x, y, _ in ends), math.hypot(*template[1])


def rope_lines():
    """The hold-down ropes on the vessel as seen from above: of each its straight
    stretches, and the two arcs that lead on to its own points, turned by half a turn."""
    template, rolls = hold_down_rope()
    for roll in rolls:
        p1, p2, p3, p4 = (turned(p, roll)[:2] for p in template[1:5])
        # Half way between the ends, put 250 mm beside the neck. The ends' heights, a
        # few mm, are next to nothing here.
        middle = tuple((a + b) / 2 for a, b in zip(p1, p4))
        middle = tuple(c * (NECK + 250) / math.hypot(*middle) for c in middle)
        yield p1, p2, middle, p3, p4
        for begin, end in ((p2, p3), (p3, p2)):
            first = math.atan2(begin[1], begin[0])
            sweep = math.remainder(math.atan2(-end[1], -end[0]) - first, 2 * math.pi)
            yield [turned((math.hypot(*begin), 0, 0), first + sweep * k / 10)[:2]
                   for k in range(11)]


def draw_hold_down_ropes(judge):
    drawing = Drawing(660, 312, "Hold-down ropes: which light they block")
    # From above.
    size, cells = 1, 240
    scale = (2 * OUTER) / (size * cells)  # mm a pixel
    left, top = 16, 44

    def point(i, j):
        x, y = ((2 * k + 1 - cells) * size * scale / 2 for k in (i, j))
        z2 = OUTER * OUTER - x * x - y * y
        return (x, -y, math.sqrt(z2)) if z2 > 25 * 25 else None

    def pixel(x, y):
        return left + size * cells / 2 + x / scale, top + size * cells / 2 - y / scale

    drawing.text(left, 22, "Above the leg tops: from above", bold=True)
    drawing.circle(*pixel(0, 0), OUTER / scale, fill="panel", stroke="vessel")
    drawing.cells(left, top, size, judge.grid(cells, cells, point), fill="AVHDRope", opacity=0.4)
    for line in rope_lines():
        drawing.line(*(pixel(*p) for p in line), stroke="AVHDRope", pen=0.9)
    drawing.circle(*pixel(0, 0), NECK / scale, fill="page", stroke="vessel")
    drawing.text(*pixel(0, -180), "neck", size=12, anchor="middle")
    key(drawing, left, 304, "AVHDRope", f"blocked at {TOLERANCE:g} mm", opacity=0.4)
    drawing.line((left + 150, 299), (left + 164, 299), stroke="AVHDRope", pen=1.2)
    drawing.text(left + 170, 304, "rope", size=12)
    # Below.
    azimuths, distance = legs()
    plan = Plan(drawing, 290, 44, 350, "AVHDRope", distance)
    drawing.text(290, 22, "Below the leg tops: a slice, from above", bold=True)
    middle = sum([a for a in azimuths if a > 0][:2]) / 2
    plan.show(judge, middle, azimuths, TABLES["SOLID", "hold_down_rope"]["r_rope"], -1000.0)
    return drawing


class Plan:
    """A part of a rope cylinder seen from above, the axis far below."""

    SCALE = 0.29  # pixels a mm
    LOWEST = 5600.0

    def __init__(self, drawing, left, top, width, component, cylinder):
        self.drawing, self.left, self.top, self.width = drawing, left, top, width
        self.component, self.cylinder = component, cylinder
        self.height = 190

    def pixel(self, across, out):
        return (self.left + self.width / 2 + self.SCALE * across,
                self.top + self.height - self.SCALE * (out - self.LOWEST))

    def polar(self, radius, angle):
        return self.pixel(radius * math.sin(angle), radius * math.cos(angle))

    def arc(self, radius, **paint):
        most = (self.width / 2) / self.SCALE / radius
        self.drawing.line(*(self.polar(radius, most * k / 20) for k in range(-20, 21)), **paint)

    def show(self, judge, azimuth, ropes, rope_radius, z):
        """Light that leaves the vessel at a height, all of it slanted the same way."""
        drawing = self.drawing
        drawing.rect(self.left, self.top, self.width, self.height, fill="panel")
        start = math.sqrt(OUTER * OUTER - z * z)
        reach = (TOLERANCE + rope_radius) / self.cylinder  # rad
        near = [rope - azimuth for rope in ropes if abs(rope - azimuth) < 0.09]
        for rope in near:
            edges = [self.polar(self.cylinder, rope + reach * k / 10) for k in range(-10, 11)]
            drawing.line(*edges, stroke=self.component, pen=9, opacity=0.35)
        slant = 0.5
        rays = [(angle, angle + slant) for angle in (k * 0.0062 for k in range(-17, 18))]
        asked = [((start * math.cos(azimuth + a), start * math.sin(azimuth + a), z),
                  (math.cos(azimuth + d), math.sin(azimuth + d), 0.0)) for a, d in rays]
        for (angle, direction), blocked in zip(rays, judge.blocked(asked)):
            # As far as the cylinder where it is blocked, on beyond it where not.
            along = start * math.cos(direction - angle)
            way = -along + math.sqrt(along * along + self.cylinder ** 2 - start ** 2)
            if not blocked:
                way += 130
            begin = (start * math.sin(angle), start * math.cos(angle))
            end = (begin[0] + way * math.sin(direction), begin[1] + way * math.cos(direction))
            if not all(abs(p[0]) < self.width / 2 / self.SCALE for p in (begin, end)):
                continue
            drawing.line(self.pixel(*begin), self.pixel(*end),
                         stroke=self.component if blocked else "clear", pen=1.4)
        self.arc(self.cylinder, stroke="secondText", dash="4 3")
        self.arc(start, stroke="vessel", pen=2)
        for rope in near:
            drawing.circle(*self.polar(self.cylinder, rope), self.SCALE * rope_radius + 1,
                           fill="text")
        x, y = self.pixel(0, start)
        drawing.text(x, y + 26, f"vessel at z = {z:g} mm".replace("-", "\u2212"), size=12,
                     anchor="middle")
        edge = self.polar(self.cylinder, near[-1] + reach)
        top = self.top + 18
        at = self.polar(self.cylinder, near[-1])
        drawing.line((at[0], top + 4), at, stroke="text", pen=0.8)
        drawing.line((edge[0], top + 4), edge, stroke="text", pen=0.8)
        drawing.text((at[0] + edge[0]) / 2, top, f"{TOLERANCE:g} + {rope_radius:g} mm", size=12,
                     anchor="middle")
        y = self.top + self.height + 20
        key(drawing, self.left, y, self.component, "light that is blocked")
        key(drawing, self.left + 165, y, "clear", "light that passes")
        drawing.line((self.left, y + 16), (self.left + 14, y + 16), stroke="secondText",
                     dash="4 3")
        drawing.text(self.left + 20, y + 20, "rope cylinder", size=12)
        drawing.circle(self.left + 172, y + 16, 4, fill="text")
        drawing.text(self.left + 185, y + 20, "rope", size=12)


def draw_support_ropes(judge):
    drawing = Drawing(660, 300, "Support ropes: which light they block")
    drawing.text(16, 22, "A slice, from above", bold=True)
    anchors = points_of("GEO_LOCATIONS", TABLES["GEO", "hold_up_ropes"]["locations"])
    half = TABLES["SOLID", "belly_plate_vintar"]["octahedron_half_height"]
    spread = (2 / 3) * half / OUTER
    ropes = [math.atan2(y, x) + side * spread for x, y, _ in anchors for side in (1, -1)]
    cylinder = math.hypot(*anchors[0])
    radius = TABLES["SOLID", "hold_up_rope"]["r_rope"]
    Plan(drawing, 16, 44, 400, "SupportRope", cylinder).show(
        judge, 0.0, ropes, radius, 1000.0)
    # From the side.
    foot = anchors[0][2]
    top = math.sqrt(CAVITY * CAVITY - math.hypot(*anchors[0][:2]) ** 2)
    scale = 0.028
    left, zero = 452, 226

    def pixel(x, z):
        return left + scale * x, zero - scale * z

    drawing.text(left, 22, "From the side", bold=True)
    drawing.rect(left, 44, 192, 190, fill="panel")
    drawing.line(*(pixel(OUTER * math.sin(a), OUTER * math.cos(a))
                   for a in (math.pi * k / 60 for k in range(0, 31))), stroke="vessel", pen=2)
    drawing.line(pixel(cylinder, foot), pixel(cylinder, top), stroke="SupportRope", pen=3)
    z = 2500.0
    start = math.sqrt(OUTER * OUTER - z * z)
    drawing.arrow(pixel(start, z), pixel(cylinder + 600, z + 0.6 * (cylinder + 600 - start)))
    drawing.circle(*pixel(start, z), 3, fill="text")
    drawing.text(left + 8, pixel(0, z)[1] - 12, "leaves the vessel", size=12)
    drawing.text(left + 8, pixel(0, z)[1] + 3, f"above z = {foot:g} mm", size=12)
    drawing.line(pixel(0, foot), pixel(6800, foot), stroke="secondText", pen=0.8, dash="2 3")
    drawing.text(left, 254, f"ropes: z from {foot:,.0f} to {top:,.0f} mm", size=12)
    return drawing


# Plates, anchors, pipes, boss


def draw_belly_plates(judge):
    drawing = Drawing(500, 220, "Belly plates: which light they block")
    scale, columns, rows, size = 12.5, 120, 80, 2  # mm a pixel
    left, top = 16, 44
    middle = (left + columns * size / 2, top + rows * size / 2)

    def point(i, j):
        across, up = ((2 * k + 1 - n) * size * scale / 2 for k, n in ((i, columns), (j, rows)))
        return on_vessel(across / OUTER, -up)

    half = TABLES["SOLID", "belly_plate_vintar"]["octahedron_half_height"]
    drawing.text(left, 22, "One plate from outside, the vessel unrolled", bold=True)
    drawing.rect(left, top, columns * size, rows * size, fill="panel")
    drawing.cells(left, top, size, judge.grid(columns, rows, point), fill="BellyPlate",
                  opacity=0.4)
    drawing.cells(left, top, size, judge.grid(columns, rows, point, 0.0), fill="BellyPlate")
    drawing.line((left, middle[1]), (left + columns * size, middle[1]), stroke="vessel", pen=0.8,
                 dash="2 3")
    x = left + columns * size + 14
    for reach, words in ((half, f"half-height: {half:g} mm"),
                         (half + TOLERANCE, f"and the tolerance: {half + TOLERANCE:g} mm")):
        y = middle[1] - reach / scale
        drawing.line((middle[0], y), (x - 4, y), stroke="text", pen=0.8)
        drawing.text(x, y + (11 if reach == half else -1), words, size=12)
    drawing.text(x, middle[1] + 4, "z = 0", size=12)
    y = top + rows * size - 24
    key(drawing, x, y, "BellyPlate", "blocked at 0 mm")
    key(drawing, x, y + 20, "BellyPlate", f"blocked at {TOLERANCE:g} mm, not at 0", opacity=0.4)
    return drawing


def draw_ncd_anchors(judge):
    inner_av = TABLES["GEO", "inner_av"]
    reach = TABLES["SOLID", inner_av["ncd_anchor_definition"]]["half_z"]
    anchor = points_of("GEO_LOCATIONS", inner_av["ncd_anchor_locations"])[0]
    up = outwards(anchor)
    aside = outwards((-anchor[1], anchor[0], 0.0))
    drawing = Drawing(660, 276, "NCD anchors: which light they block")
    scale = 0.42  # pixels a mm
    for left, tolerance in ((16, 0.0), (346, TOLERANCE)):
        width, zero = 298, 136

        def pixel(angle, radius):
            return (left + width / 2 + scale * radius * math.sin(angle),
                    zero - scale * (radius * math.cos(angle) - INNER))

        drawing.text(left, 22, f"Tolerance {tolerance:g} mm", bold=True)
        drawing.rect(left, 34, width, 204, fill="panel")
        angles = [k * 340 / OUTER / 20 for k in range(-20, 21)]
        wall = ([pixel(a, OUTER) for a in angles] + [pixel(a, INNER) for a in reversed(angles)])
        drawing.polygon(*wall, fill="vessel", opacity=0.3)
        for radius in (INNER, OUTER):
            drawing.line(*(pixel(a, radius) for a in angles), stroke="vessel", pen=1.4)
        centre = pixel(0.0, math.hypot(*anchor))
        drawing.circle(*centre, scale * (reach + tolerance), fill="NCDAnchor", opacity=0.35)
        drawing.circle(*centre, scale * reach, stroke="NCDAnchor", pen=1.6)
        drawing.circle(*centre, 2.5, fill="text")
        crossings = [k * 0.0052 for k in range(-11, 12)]
        places = [tuple(OUTER * (math.cos(a) * u + math.sin(a) * s) for u, s in zip(up, aside))
                  for a in crossings]
        answers = judge.blocked([(p, outwards(p)) for p in places], tolerance)
        for angle, blocked in zip(crossings, answers):
            colour = "NCDAnchor" if blocked else "clear"
            x, y = pixel(angle, OUTER)
            drawing.line((x, y), (x + 22 * math.sin(angle), y - 22), stroke=colour, pen=1.4)
            drawing.circle(x, y, 3, fill=colour)
        words = (f"{reach:g} + {tolerance:g} mm" if tolerance else f"half_z: {reach:g} mm")
        x = centre[0] + scale * (reach + tolerance)
        drawing.line(centre, (x, centre[1]), stroke="text", pen=0.9)
        drawing.text(centre[0] + 4, centre[1] + 14 if tolerance else centre[1] + 42, words, size=12)
    key(drawing, 16, 262, "NCDAnchor", "light that is blocked where it leaves the vessel")
    key(drawing, 346, 262, "clear", "light that passes")
    return drawing


def draw_av_pipes(judge):
    drawing = Drawing(660, 260, "AV pipes: which light they block")
    left, top, size, columns, rows = 70, 44, 2, 160, 90
    first, last = 70.0, 110.0  # degrees of azimuth

    def point(i, j):
        azimuth = first + (last - first) * (i + 0.5) / columns
        polar = math.radians(180.0 * (j + 0.5) / rows)
        return on_vessel(math.radians(azimuth), OUTER * math.cos(polar))

    def pixel(azimuth, polar):
        return (left + columns * size * (azimuth - first) / (last - first),
                top + rows * size * polar / 180)

    answers = judge.grid(columns, rows, point)
    if answers != judge.grid(columns, rows, point, 0.0):
        sys.exit("draw-verdicts: the pipes read the tolerance")
    drawing.text(16, 22, "The vessel unrolled: azimuth across, polar angle down", bold=True)
    drawing.rect(left, top, columns * size, rows * size, fill="panel")
    drawing.cells(left, top, size, answers, fill="AVPipe", opacity=0.45)
    for (table, index) in TABLES:
        if not index.startswith("av_pipe-"):
            continue
        line = [(math.degrees(math.atan2(y, x)), math.degrees(math.acos(z / math.hypot(x, y, z))))
                for x, y, z in points_of(table, index)]
        drawing.line(*(pixel(a, p) for a, p in line), stroke="text", pen=1)
    for polar in (0, 30, 120, 180):
        x, y = pixel(first, polar)
        drawing.line((x - 5, y), (x, y), stroke="text", pen=0.8)
        drawing.text(x - 9, y + 4, f"{polar}\u00b0", size=12, anchor="end")
    for azimuth in (75, 80, 85, 90, 95, 100, 105):
        x, y = pixel(azimuth, 180)
        drawing.line((x, y), (x, y + 5), stroke="text", pen=0.8)
        drawing.text(x, y + 18, f"{azimuth}\u00b0", size=12, anchor="middle")
    x = left + columns * size + 16
    key(drawing, x, top + 20, "AVPipe", "blocked at any tolerance,", opacity=0.45)
    drawing.text(x + 20, top + 36, "wherever the pipes are", size=12)
    drawing.line((x, top + 60), (x + 14, top + 60), stroke="text", pen=1)
    drawing.text(x + 20, top + 64, "centre lines of the pipes", size=12)
    drawing.text(x + 20, top + 80, "in the tables", size=12)
    return drawing


def draw_neck_boss(judge):
    boss = TABLES["SOLID", "neck_boss"]
    base = TABLES["GEO", "av"]["neck_boss_z"] - (boss["half_height1"] + boss["half_height2"])
    limit = math.acos(base / INNER)
    drawing = Drawing(660, 246, "Neck boss: which light it blocks")
    scale, left, zero = 0.17, 230, 230  # zero: z = 5300

    def pixel(x, z):
        return left + scale * x, zero - scale * (z - 5300)

    drawing.text(16, 22, "A section through the axis", bold=True)
    drawing.rect(16, 34, 428, 196, fill="panel")
    angles = [0.21 * k / 30 for k in range(-30, 31)]
    for radius in (INNER, OUTER):
        for side in (-1, 1):
            drawing.line(*(pixel(radius * math.sin(a), radius * math.cos(a)) for a in angles
                           if side * radius * math.sin(a) > NECK), stroke="vessel", pen=1.6)
    for side in (-1, 1):
        drawing.line(pixel(side * NECK, math.sqrt(INNER ** 2 - NECK ** 2)),
                     pixel(side * NECK, 6440), stroke="vessel", pen=1.6)
        drawing.line(pixel(0, 5300), pixel(0, 6400), stroke="secondText", pen=0.8, dash="6 3 1 3")
        edge = [(radius * math.sin(limit) * side, radius * math.cos(limit))
                for radius in (5310 / math.cos(limit), 6250)]
        drawing.line(*(pixel(*p) for p in edge), stroke="NeckBoss", pen=1.2, dash="5 3")
        collar = [(NECK, base), (INNER * math.sin(limit), base),
                  (NECK + 60, base + 2 * (boss["half_height1"] + boss["half_height2"])),
                  (NECK, base + 2 * (boss["half_height1"] + boss["half_height2"]))]
        drawing.polygon(*(pixel(side * x, z) for x, z in collar), fill="NeckBoss", opacity=0.6)
    drawing.line(pixel(-INNER * math.sin(limit), base), pixel(INNER * math.sin(limit), base),
                 stroke="text", pen=0.8, dash="2 3")
    crossings = [0.2 * k / 20 for k in range(-20, 21)]
    places = [(OUTER * math.sin(a), 0.0, OUTER * math.cos(a)) for a in crossings]
    paths = [(p, outwards(p)) for p in places]
    answers = judge.blocked(paths)
    if answers != judge.blocked(paths, 0.0):
        sys.exit("draw-verdicts: the neck boss reads the tolerance")
    for angle, blocked in zip(crossings, answers):
        x, y = pixel(OUTER * math.sin(angle), OUTER * math.cos(angle))
        colour = "NeckBoss" if blocked else "clear"
        drawing.line((x, y), (x + 20 * math.sin(angle), y - 20 * math.cos(angle)), stroke=colour,
                     pen=1.4)
        drawing.circle(x, y, 2.6, fill=colour)
    x = 460
    drawing.text(x, 60, f"base of the boss: z = {base:,.0f} mm", size=12)
    drawing.text(x, 78, f"It meets the inner sphere", size=12)
    drawing.text(x, 94, f"at a polar angle of {math.degrees(limit):.2f}\u00b0.", size=12)
    key(drawing, x, 124, "NeckBoss", "blocked, at any tolerance")
    key(drawing, x, 144, "clear", "passes")
    drawing.text(pixel(0, 5400)[0] + 6, pixel(0, 5400)[1], "axis", size=12)
    return drawing


DRAWINGS = {
    "AVHDRope": ("hold-down-ropes", draw_hold_down_ropes),
    "SupportRope": ("support-ropes", draw_support_ropes),
    "BellyPlate": ("belly-plates", draw_belly_plates),
    "NCDAnchor": ("ncd-anchors", draw_ncd_anchors),
    "AVPipe": ("av-pipes", draw_av_pipes),
    "NeckBoss": ("neck-boss", draw_neck_boss),
}


def main():
    folder = pathlib.Path(sys.argv[2]) if len(sys.argv) > 2 else HERE
    for component, (name, draw) in DRAWINGS.items():
        drawing = draw(Judge(sys.argv[1], component))
        (folder / f"verdicts-{name}.svg").write_text(drawing.svg())


if __name__ == "__main__":
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    main()
