#!/usr/bin/env python3
"""Write the example light paths, data/example-paths.csv.

Rays are traced forward from a random start through three concentric media
(scintillator, acrylic, water) with Snell's law until they reach the sphere
of the PMT faces. The neck is not traced: paths that start in it outside the
vessel, or end in it, are dropped; otherwise the spheres are complete.

The text of the file is read back and every row is checked before the file is
written; a row that fails a check ends the script with an error and no file.

Only + - * / and square roots are used, which every machine rounds in the same
way, so one seed always gives the same file, byte for byte.

Lengths are in mm, in detector coordinates: centre of the vessel at the
origin, neck along +z.
"""

import argparse
import csv
import io
import math
import os
import pathlib
import random
import sys
import tempfile

SEED = 5860  # any number; it only must not change

# Refractive indices for visible light. The acrylic is close to the
# scintillator, so the wall is almost invisible from inside.
N_SCINTILLATOR = 1.50
N_ACRYLIC = 1.49
N_WATER = 1.33

# As in data/reference-detector.
INNER_RADIUS = 5800.0
OUTER_RADIUS = 5860.0
NECK_RADIUS = 700.0
PMT_RADIUS = 8300.0

SOURCE_RADIUS = 500.0  # a calibration source near the centre
SOURCE_SHARE = 0.8  # the other inner starts are anywhere in the vessel
# Minimum distance of starts from every surface, so that the first segment
# keeps a length after rounding.
START_MARGIN = 1.0

SCINTILLATOR = "Scint/InnerAV->AV->Water"
WALL_INWARD = "AV->Scint/InnerAV->AV->Water"
WALL_OUTWARD = "AV->Water"
THROUGH = "Water->AV->Scint/InnerAV->AV->Water"
WALL_ONLY = "Water->AV->Water"
WATER = "Water"
REFLECTED = "Water->Reflection->Water"

# Most light starts inside; 1 % for each of the four rare types covers every
# branch a few hundred times.
COUNTS = {
    SCINTILLATOR: 14000,
    WALL_INWARD: 240,
    WALL_OUTWARD: 240,
    THROUGH: 1880,
    WALL_ONLY: 240,
    WATER: 7160,
    REFLECTED: 240,
}

POSITION_DECIMALS = 4
DIRECTION_DECIMALS = 9

# Limits of the checks, from the rounding in the file. The error of a rounded
# position is up to sqrt(3) * 0.5e-4 = 0.87e-4 mm.
SURFACE_LIMIT = 1e-4
# Both ends of a segment can have this error.
LINE_LIMIT = 2e-4
# A rounded direction is up to 0.87e-9 too long or short.
UNIT_LIMIT = 1e-9
# Inner segments get their direction from two rounded points at least 60 mm
# apart (the wall): 2 * 0.87e-4 / 60 = 2.9e-6, on each side of a surface, times
# an index of up to 1.5: 8.7e-6. The normal adds less than 1e-7.
SNELL_LIMIT = 1e-5

POINTS = ("av1", "av2", "av3", "av4")
HEADER = ["type"] + [f"{name}_{axis}"
                     for name in ("start", "end", "initial", "final") + POINTS
                     for axis in "xyz"]


# Vectors are tuples of three floats.

def dot(a, b):
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]


def length(a):
    return math.sqrt(dot(a, a))


def along(a, t, d):
    return (a[0] + t * d[0], a[1] + t * d[1], a[2] + t * d[2])


def minus(a, b):
    return along(a, -1.0, b)


def scaled(a, s):
    return (a[0] * s, a[1] * s, a[2] * s)


def cross(a, b):
    return (a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2],
            a[0] * b[1] - a[1] * b[0])


def unit(a):
    return scaled(a, 1.0 / length(a))


def in_neck(p):
    return p[2] > 0.0 and p[0] * p[0] + p[1] * p[1] < NECK_RADIUS**2


# Rays.

def crossings(p, d, radius):
    """Both t at which p + t d hits the sphere, or None."""
    b = dot(p, d)
    root = b * b - dot(p, p) + radius * radius
    if root <= 0.0:
        return None
    root = math.sqrt(root)
    return -b - root, -b + root


def leave(p, d, radius):
    """Where a ray from inside the sphere reaches it."""
    return along(p, crossings(p, d, radius)[1], d)


def enter(p, d, radius):
    """Where a ray from outside first hits the sphere, or None."""
    t = crossings(p, d, radius)
    return along(p, t[0], d) if t and t[0] > 0.0 else None


def refract(p, d, before, after):
    """Direction after a sphere's surface at p, or None if all is reflected."""
    normal = unit(p)
    cosine = dot(d, normal)
    ratio = before / after
    root = 1.0 - ratio * ratio * (1.0 - cosine * cosine)
    if root <= 0.0:
        return None
    turned = math.sqrt(root) if cosine > 0.0 else -math.sqrt(root)
    return unit(along(scaled(d, ratio), turned - ratio * cosine, normal))


def reflect(p, d):
    normal = unit(p)
    return unit(along(d, -2.0 * dot(d, normal), normal))


# Random starts and directions.

def in_ball(rng, radius):
    while True:
        p = tuple(rng.uniform(-1.0, 1.0) for _ in range(3))
        if dot(p, p) <= 1.0:
            return scaled(p, radius)


def in_shell(rng, inner, outer):
    while True:
        p = in_ball(rng, outer - START_MARGIN)
        if length(p) > inner + START_MARGIN:
            return p


def any_direction(rng):
    while True:
        p = in_ball(rng, 1.0)
        if dot(p, p) > 1e-4:  # closer to 0, rounding affects the direction
            return unit(p)


def start_outside(rng, inner, outer):
    """A start in the wall or the water, but not in the neck."""
    while True:
        p = in_shell(rng, inner, outer)
        if not in_neck(p):
            return p


def start_in_wall(rng):
    return start_outside(rng, INNER_RADIUS, OUTER_RADIUS)


def start_in_water(rng):
    return start_outside(rng, OUTER_RADIUS, PMT_RADIUS)


# One attempt at a path of each type: (start, AV points, initial, final), or
# None if this ray is of another type.

def out_through_wall(start, points, initial, d):
    """Continue a ray from inside the vessel to the water."""
    points = points + [leave(points[-1] if points else start, d, INNER_RADIUS)]
    d = refract(points[-1], d, N_SCINTILLATOR, N_ACRYLIC)
    if d is None:
        return None
    points.append(leave(points[-1], d, OUTER_RADIUS))
    d = refract(points[-1], d, N_ACRYLIC, N_WATER)
    return d and (start, points, initial, d)


def try_scintillator(rng):
    if rng.random() < SOURCE_SHARE:
        start = in_ball(rng, SOURCE_RADIUS)
    else:
        start = in_ball(rng, INNER_RADIUS - START_MARGIN)
    d = any_direction(rng)
    return out_through_wall(start, [], d, d)


def try_wall_inward(rng):
    start, initial = start_in_wall(rng), any_direction(rng)
    inner = enter(start, initial, INNER_RADIUS)
    d = inner and refract(inner, initial, N_ACRYLIC, N_SCINTILLATOR)
    return d and out_through_wall(start, [inner], initial, d)


def try_wall_outward(rng):
    start, d = start_in_wall(rng), any_direction(rng)
    if enter(start, d, INNER_RADIUS):
        return None
    outer = leave(start, d, OUTER_RADIUS)
    final = refract(outer, d, N_ACRYLIC, N_WATER)
    return final and (start, [outer], d, final)


def try_through(rng):
    start, initial = start_in_water(rng), any_direction(rng)
    outer = enter(start, initial, OUTER_RADIUS)
    d = outer and refract(outer, initial, N_WATER, N_ACRYLIC)
    inner = d and enter(outer, d, INNER_RADIUS)
    d = inner and refract(inner, d, N_ACRYLIC, N_SCINTILLATOR)
    return d and out_through_wall(start, [outer, inner], initial, d)


def try_wall_only(rng):
    # With these indices every ray from the water that enters the wall is bent
    # into the inside, so paths of this type are straight chords through the
    # wall only: the limit of a wall with the index of water.
    start, d = start_in_water(rng), any_direction(rng)
    outer = enter(start, d, OUTER_RADIUS)
    if outer is None or enter(start, d, INNER_RADIUS):
        return None
    return start, [outer, leave(start, d, OUTER_RADIUS)], d, d


def try_water(rng):
    start, d = start_in_water(rng), any_direction(rng)
    return None if enter(start, d, OUTER_RADIUS) else (start, [], d, d)


def try_reflected(rng):
    start, d = start_in_water(rng), any_direction(rng)
    outer = enter(start, d, OUTER_RADIUS)
    return outer and (start, [outer], d, reflect(outer, d))


TRIES = {
    SCINTILLATOR: try_scintillator,
    WALL_INWARD: try_wall_inward,
    WALL_OUTWARD: try_wall_outward,
    THROUGH: try_through,
    WALL_ONLY: try_wall_only,
    WATER: try_water,
    REFLECTED: try_reflected,
}


def make_path(rng, kind):
    while True:
        found = TRIES[kind](rng)
        if not found:
            continue
        start, points, initial, final = found
        end = leave(points[-1] if points else start, final, PMT_RADIUS)
        if not in_neck(end):  # there is no PMT in the neck
            return kind, start, end, initial, final, points


# The file.

def cells(vector, decimals):
    texts = []
    for value in vector:
        text = f"{value:.{decimals}f}".rstrip("0").rstrip(".")
        texts.append("0" if text == "-0" else text)
    return texts


def row_of(path):
    kind, start, end, initial, final, points = path
    row = [kind]
    for position in (start, end):
        row += cells(position, POSITION_DECIMALS)
    for direction in (initial, final):
        row += cells(direction, DIRECTION_DECIMALS)
    for position in points:
        row += cells(position, POSITION_DECIMALS)
    return row + [""] * (len(HEADER) - len(row))


def file_text(paths):
    out = io.StringIO()
    writer = csv.writer(out, lineterminator="\n")
    writer.writerow(HEADER)
    writer.writerows(row_of(path) for path in paths)
    return out.getvalue()


# The checks. They use only the text of the file.

# For each type, the media of its segments and the radii of its AV points.
MEDIA = {
    SCINTILLATOR: (N_SCINTILLATOR, N_ACRYLIC, N_WATER),
    WALL_INWARD: (N_ACRYLIC, N_SCINTILLATOR, N_ACRYLIC, N_WATER),
    WALL_OUTWARD: (N_ACRYLIC, N_WATER),
    THROUGH: (N_WATER, N_ACRYLIC, N_SCINTILLATOR, N_ACRYLIC, N_WATER),
    WALL_ONLY: (N_WATER, N_WATER, N_WATER),
    WATER: (N_WATER,),
    REFLECTED: (N_WATER, N_WATER),
}
SURFACES = {
    SCINTILLATOR: (INNER_RADIUS, OUTER_RADIUS),
    WALL_INWARD: (INNER_RADIUS, INNER_RADIUS, OUTER_RADIUS),
    WALL_OUTWARD: (OUTER_RADIUS,),
    THROUGH: (OUTER_RADIUS, INNER_RADIUS, INNER_RADIUS, OUTER_RADIUS),
    WALL_ONLY: (OUTER_RADIUS, OUTER_RADIUS),
    WATER: (),
    REFLECTED: (OUTER_RADIUS,),
}
WATER_START = (OUTER_RADIUS, PMT_RADIUS)
START_BETWEEN = {
    SCINTILLATOR: (0.0, INNER_RADIUS),
    WALL_INWARD: (INNER_RADIUS, OUTER_RADIUS),
    WALL_OUTWARD: (INNER_RADIUS, OUTER_RADIUS),
    THROUGH: WATER_START,
    WALL_ONLY: WATER_START,
    WATER: WATER_START,
    REFLECTED: WATER_START,
}


def require(holds, what):
    if not holds:
        raise ValueError(what)


def nearest_to_centre(a, b):
    """Smallest distance from the origin to the segment from a to b."""
    d = minus(b, a)
    t = min(1.0, max(0.0, -dot(a, d) / dot(d, d)))
    return length(along(a, t, d))


def check_row(row):
    require(len(row) == len(HEADER), "wrong number of cells")
    kind = row[0]
    start, end, initial, final, *points = (
        tuple(float(cell or 0.0) for cell in row[n:n + 3])
        for n in range(1, len(HEADER), 3))
    surfaces = SURFACES[kind]
    used = len(surfaces)
    require(not any(row[13 + 3 * used:]), "an unused point is set")
    points = points[:used]

    low, high = START_BETWEEN[kind]
    require(low <= length(start) < high, "start in the wrong medium")
    require(abs(length(end) - PMT_RADIUS) < SURFACE_LIMIT,
            "end off the PMT sphere")
    require(not in_neck(end), "end in the neck")
    require(low == 0.0 or not in_neck(start), "start in the neck")
    for point, radius in zip(points, surfaces):
        require(abs(length(point) - radius) < SURFACE_LIMIT,
                "AV point off its surface")
    for direction in (initial, final):
        require(abs(length(direction) - 1.0) < UNIT_LIMIT,
                "direction not of unit length")

    # One direction per segment: the given ones for the first and last, the
    # others from their ends.
    corners = [start, *points, end]
    segments = list(zip(corners, corners[1:]))
    ways = [unit(minus(b, a)) for a, b in segments]
    ways[0] = initial
    ways[-1] = final
    if used == 0 or kind == WALL_ONLY:
        require(initial == final, "a straight path turns")
    for (a, b), way in zip(segments, ways):
        step = minus(b, a)
        require(dot(step, way) > 0.0, "points out of order")
        require(length(cross(step, way)) < LINE_LIMIT,
                "a point beside its segment")

    # Every segment stays in its medium.
    media = MEDIA[kind]
    for (a, b), medium in zip(segments, media):
        nearest = nearest_to_centre(a, b)
        farthest = max(length(a), length(b))
        if medium == N_SCINTILLATOR:
            require(farthest < INNER_RADIUS + SURFACE_LIMIT,
                    "an inner segment leaves the vessel")
        elif medium == N_ACRYLIC or (kind == WALL_ONLY and a in points
                                     and b in points):
            require(nearest > INNER_RADIUS - SURFACE_LIMIT
                    and farthest < OUTER_RADIUS + SURFACE_LIMIT,
                    "a wall segment leaves the wall")
        else:
            require(nearest > OUTER_RADIUS - SURFACE_LIMIT,
                    "a water segment cuts the vessel")

    # Snell's law as vectors: index times (normal x direction) is the same on
    # both sides; so both rays and the normal are in one plane. A reflection
    # obeys it too, with the radial component reversed.
    for n, point in enumerate(points):
        normal = unit(point)
        jump = minus(scaled(cross(normal, ways[n]), media[n]),
                     scaled(cross(normal, ways[n + 1]), media[n + 1]))
        require(length(jump) < SNELL_LIMIT, "Snell's law broken")
        if kind == REFLECTED:
            require(abs(dot(normal, ways[n]) + dot(normal, ways[n + 1]))
                    < SNELL_LIMIT and dot(normal, ways[n]) < 0.0,
                    "not a mirror image")
    return kind


def check(text):
    rows = csv.reader(io.StringIO(text))
    require(next(rows) == HEADER, "wrong header")
    counts = dict.fromkeys(COUNTS, 0)
    for line, row in enumerate(rows, start=2):
        try:
            counts[check_row(row)] += 1
        except (ValueError, KeyError) as error:
            raise ValueError(f"line {line}: {error}: {row}") from error
    require(counts == COUNTS, f"wrong mix: {counts}")


def write_file(path, text):
    """Replace the file in one step, so that readers never see a part of it."""
    handle, temporary = tempfile.mkstemp(prefix=f".{path.name}.",
                                         dir=path.parent)
    try:
        with os.fdopen(handle, "w", encoding="utf-8", newline="\n") as out:
            out.write(text)
            out.flush()
            os.fsync(out.fileno())
        os.chmod(temporary, 0o644)  # mkstemp creates it private
        os.replace(temporary, path)
    except BaseException:
        os.unlink(temporary)
        raise


def main():
    parser = argparse.ArgumentParser(
        description="Write the example light paths: a fixed random mix of "
                    "rays traced through vessel and water, checked before "
                    "they are written.")
    parser.add_argument("--output", metavar="FILE", type=pathlib.Path,
                        default=pathlib.Path(__file__).resolve().parent
                        / "example-paths.csv",
                        help="file to write (default: example-paths.csv "
                             "in the folder of this script)")
    output = parser.parse_args().output

    rng = random.Random(SEED)
    kinds = [kind for kind, count in COUNTS.items() for _ in range(count)]
    rng.shuffle(kinds)
    text = file_text([make_path(rng, kind) for kind in kinds])
    try:
        check(text)
        write_file(output, text)
    except (OSError, ValueError) as error:
        sys.exit(f"make-example-paths.py: {error}")


if __name__ == "__main__":
    main()
