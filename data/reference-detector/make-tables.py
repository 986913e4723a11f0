#!/usr/bin/env python3
"""Write the geometry tables of the reference detector.

One JSON file per component, one for the PMTs and one for the optics go next
to this script, or into the folder named by --output. The reference detector
is invented: its parts have plausible places and sizes, but it does not
describe any real detector.

Lengths are in mm, in detector coordinates: centre of the vessel at the
origin, neck along +z. Azimuths and rope rolls are in degrees, wavelengths in
nm.
"""

import argparse
import json
import math
import os
import pathlib
import sys
import tempfile

# Vessel.
INNER_RADIUS = 5800.0  # about 800 m3 of target liquid
WALL = 60.0  # acrylic that can carry this load from its equator
OUTER_RADIUS = INNER_RADIUS + WALL
NECK_RADIUS = 700.0  # wide enough for a person and the source equipment

# Cavity and PMTs.
CAVITY_RADIUS = 8500.0  # where ropes end; also a constant of the rope tests
PMT_RADIUS = 8300.0  # leaves 200 mm behind the PMT faces for their frame
PMT_COUNT = 8000  # one per 0.11 m2; 20 cm bulbs cover 29 % of it
PMT_FACE_RADIUS = 100.0  # keeps whole bulbs, not just centres, out of the neck

# The equator is divided into ten sectors. Each has a belly plate in the
# middle, with a support rope near each side of the plate. The hold-down legs
# come down in pairs, one leg from each of two ropes, 9 degrees after each
# plate: beyond the edge of the plate (5.85 degrees) and well before the middle
# between two plates, where the pipes are at +y.
SECTOR_COUNT = 10
SECTOR = 360.0 / SECTOR_COUNT

# Hold-down ropes.
HOLD_DOWN_ROPE_RADIUS = 12.0  # a 24 mm rope, holds the buoyancy of the target
HOLD_DOWN_LEG_RADIUS = 5880.0  # rope radius and 8 mm of sleeve from the wall
HOLD_DOWN_END_Z = 5.0  # just above the z = 0 that the angle tests compare with
HOLD_DOWN_PAIR_AZIMUTH = 9.0  # middle of the template's first pair
HOLD_DOWN_PAIR_GAP = 2.0  # 205 mm from leg to leg: space for two fittings
# A rope comes down again four sectors later, as the second leg of that pair.
# With five sectors it would pass over the neck; with four, its middle is
# beside the neck.
HOLD_DOWN_SECTORS = 4
# Here the rope turns away from its meridian, so that it passes 950 mm from the
# axis: clear of the neck and outside the foot of the neck boss (898 mm).
HOLD_DOWN_TURN_RADIUS = 3000.0
# The segments are projected vertically on to the outer sphere. A turning point
# outside that sphere could be projected to its lower half, so stay 10 mm
# inside.
HOLD_DOWN_TURN_MAG = OUTER_RADIUS - 10.0

# Support ropes.
SUPPORT_ROPE_RADIUS = 15.0  # a 30 mm rope: twenty carry the vessel's weight
SUPPORT_CYLINDER = 5920.0  # clears the wall (5860) and the hold-down ropes
SUPPORT_ANCHOR_Z = 5.0  # just above z = 0, for the same comparison
# Rope length from the plate to the cavity ceiling (6094 mm), minus 4 mm for a
# fitting.
SUPPORT_ROPE_LENGTH = 6090.0

# Belly plates.
PLATE_HALF_HEIGHT = 600.0  # distributes the load of two ropes over 1.2 m
PLATE_RADIUS = 5860.0  # the plates are set into the outer face of the wall

# NCD anchors: they pull straight up, so seen from above they are in straight
# rows.
ANCHOR_PITCH = 900.0
ANCHOR_RIM = 5000.0  # beyond this the wall is too steep for a vertical pull
ANCHOR_HALF_Z = 60.0  # a fist-sized block bonded to the inner surface
ANCHOR_RADIUS = 40.0

# AV pipes: all at the +y side, half way between the plates at 72 and 108
# degrees, side by side in x.
PIPE_STANDOFF = 100.0  # centre line from the wall; passes over the ropes
PIPE_PITCH = 70.0  # more than two radii, so that pipes never touch
PIPE_RADIUS = 25.0
LAB_PIPE_RADIUS = 33.0  # the two liquid pipes carry the larger flow
PIPE_NECK_Y = 820.0  # down along the neck, 60 mm clear of its 60 mm wall
PIPE_TOP_Z = 7800.0  # where the pipes enter, below the PMT sphere
PIPE_STEP = 10.0  # degrees per straight piece; the chord sags by 23 mm
# Pipe index -> (x in units of the pitch, radius, polar angle of its open end).
# The ends are at different depths; the outer pipes end early enough to stay
# within 5 degrees of azimuth 90 beyond polar angle 120.
PIPES = {
    "av_pipe-1": (-3, PIPE_RADIUS, 150.0),
    "av_pipe-2": (-2, PIPE_RADIUS, 155.0),
    "av_pipe-3": (-1, PIPE_RADIUS, 165.0),
    "av_pipe-4": (0, PIPE_RADIUS, 175.0),
    "av_pipe-labs": (1, LAB_PIPE_RADIUS, 165.0),
    "av_pipe-6": (2, PIPE_RADIUS, 130.0),
    "av_pipe-labr": (3, LAB_PIPE_RADIUS, 45.0),
}

# Neck boss: a collar with two steps. Its foot is at z = 5850 - (70 + 50) =
# 5730 and reaches the inner sphere at a polar angle of 8.91 degrees (898 mm
# from the axis): a collar 200 mm wide around the neck.
NECK_BOSS_Z = 5850.0
NECK_BOSS_HALF_HEIGHT_1 = 70.0
NECK_BOSS_HALF_HEIGHT_2 = 50.0

# Optics: published fits of common materials, as functions of the wavelength in
# micrometres. README.md lists their sources and ranges.
WAVELENGTHS = range(300, 701, 5)  # nm; the range of scintillators and PMTs
# The fits of toluene and acrylic give indices relative to air, whose index at
# these wavelengths is 1.00028 within 2e-5.
AIR_INDEX = 1.00028
WATER_TEMPERATURE = 283.15  # 10 degrees; cold PMTs have less noise
WATER_DENSITY = 999.7  # kg/m3 at that temperature

LENGTH_DECIMALS = 3  # 1 um; finer than any survey
DIRECTION_DECIMALS = 9
INDEX_DECIMALS = 6  # finer than the accuracy of the fits
LINE_WIDTH = 100


def entry(table, index, **fields):
    return {"table": table, "index": index, "fields": fields}


def tidy(value, decimals=LENGTH_DECIMALS):
    return round(value, decimals) + 0.0  # + 0.0 turns -0.0 into 0.0


def columns(points, decimals=LENGTH_DECIMALS):
    """Split (x, y, z) points into three rounded lists."""
    return [[tidy(p[axis], decimals) for p in points] for axis in range(3)]


def at_azimuth(radius, degrees, z):
    phi = math.radians(degrees)
    return (radius * math.cos(phi), radius * math.sin(phi), z)


def vessel():
    return [
        entry("SOLID", "acrylic_vessel_inner", r_sphere=INNER_RADIUS),
        entry("SOLID", "acrylic_vessel_outer", r_sphere=OUTER_RADIUS,
              r_neck=NECK_RADIUS),
        # A later entry replaces this one completely, so it has the names for
        # both anchors and plates.
        entry("GEO", "inner_av", ncd_anchor_definition="ncd_anchor",
              ncd_anchor_locations="ncd_anchors",
              belly_plate_locations="belly_plates"),
    ]


def hold_down_ropes():
    first = HOLD_DOWN_PAIR_AZIMUTH - 0.5 * HOLD_DOWN_PAIR_GAP
    last = first + HOLD_DOWN_SECTORS * SECTOR + HOLD_DOWN_PAIR_GAP
    foot_z = -math.sqrt(CAVITY_RADIUS**2 - HOLD_DOWN_LEG_RADIUS**2)
    turn_z = math.sqrt(HOLD_DOWN_TURN_MAG**2 - HOLD_DOWN_TURN_RADIUS**2)
    rope_x, rope_y, rope_z = columns([
        at_azimuth(HOLD_DOWN_LEG_RADIUS, first, foot_z),
        at_azimuth(HOLD_DOWN_LEG_RADIUS, first, HOLD_DOWN_END_Z),
        at_azimuth(HOLD_DOWN_TURN_RADIUS, first, turn_z),
        at_azimuth(HOLD_DOWN_TURN_RADIUS, last, turn_z),
        at_azimuth(HOLD_DOWN_LEG_RADIUS, last, HOLD_DOWN_END_Z),
        at_azimuth(HOLD_DOWN_LEG_RADIUS, last, foot_z),
    ])
    return [
        entry("GEO", "hold_down_ropes", solid_definition="hold_down_rope",
              locations="hold_down_rope_rolls"),
        entry("SOLID", "hold_down_rope", r_rope=HOLD_DOWN_ROPE_RADIUS,
              rope_x=rope_x, rope_y=rope_y, rope_z=rope_z),
        # Ten equal steps: symmetric under half a turn, as the test of the legs
        # assumes.
        entry("GEO_LOCATIONS", "hold_down_rope_rolls",
              roll=[SECTOR * k for k in range(SECTOR_COUNT)]),
    ]


def support_ropes():
    x, y, z = columns([at_azimuth(SUPPORT_CYLINDER, SECTOR * k,
                                  SUPPORT_ANCHOR_Z)
                       for k in range(SECTOR_COUNT)])
    return [
        entry("GEO", "hold_up_ropes", solid_definition="hold_up_rope",
              locations="hold_up_rope_anchors"),
        entry("SOLID", "hold_up_rope", r_rope=SUPPORT_ROPE_RADIUS,
              z_rope=SUPPORT_ROPE_LENGTH),
        entry("GEO_LOCATIONS", "hold_up_rope_anchors", x=x, y=y, z=z),
    ]


def belly_plates():
    x, y, z = columns([at_azimuth(PLATE_RADIUS, SECTOR * k, 0.0)
                       for k in range(SECTOR_COUNT)])
    return [
        entry("SOLID", "belly_plate_vintar",
              octahedron_half_height=PLATE_HALF_HEIGHT),
        entry("GEO_LOCATIONS", "belly_plates", x=x, y=y, z=z),
    ]


def ncd_anchors():
    half = math.ceil(ANCHOR_RIM / ANCHOR_PITCH)
    # Shifted by half a pitch from the axis, where the deepest pipe ends.
    places = [(k + 0.5) * ANCHOR_PITCH for k in range(-half, half)]
    points = [(x, y, -math.sqrt(INNER_RADIUS**2 - x * x - y * y))
              for y in places for x in places
              if x * x + y * y < ANCHOR_RIM**2]
    x, y, z = columns(points)
    return [
        entry("SOLID", "ncd_anchor", half_z=ANCHOR_HALF_Z,
              r_max=ANCHOR_RADIUS),
        entry("GEO_LOCATIONS", "ncd_anchors", x=x, y=y, z=z),
    ]


def pipe_corners(x, end_polar):
    """Corners of one centre line: down the neck, then along the wall."""
    run = OUTER_RADIUS + PIPE_STANDOFF
    rho = math.sqrt(PIPE_NECK_Y**2 + x * x)
    corners = [(x, PIPE_NECK_Y, PIPE_TOP_Z),
               (x, PIPE_NECK_Y, math.sqrt(run * run - rho * rho))]
    polar = PIPE_STEP * math.ceil(math.degrees(math.asin(rho / run))
                                  / PIPE_STEP)
    while True:
        polar = min(polar, end_polar)
        theta = math.radians(polar)
        rho = run * math.sin(theta)
        corners.append((x, math.sqrt(rho * rho - x * x),
                        run * math.cos(theta)))
        if polar == end_polar:
            return corners
        polar += PIPE_STEP


def av_pipes():
    entries = []
    for index, (place, radius, end_polar) in PIPES.items():
        x, y, z = columns(pipe_corners(place * PIPE_PITCH, end_polar))
        entries.append(entry("SOLID", index, r_max=radius, x=x, y=y, z=z))
    return entries


def neck_boss():
    return [
        entry("GEO", "av", neck_boss_z=NECK_BOSS_Z),
        entry("SOLID", "neck_boss", half_height1=NECK_BOSS_HALF_HEIGHT_1,
              half_height2=NECK_BOSS_HALF_HEIGHT_2),
    ]


def pmts():
    # Equal steps in z have equal areas; turning by the golden angle after each
    # step keeps neighbours at even distances. The steps begin below the neck,
    # not at the pole.
    golden = math.pi * (3.0 - math.sqrt(5.0))
    top = math.sqrt(1.0 - ((NECK_RADIUS + PMT_FACE_RADIUS) / PMT_RADIUS)**2)
    outward = []
    for i in range(PMT_COUNT):
        z = top - (i + 0.5) / PMT_COUNT * (top + 1.0)
        rho = math.sqrt(1.0 - z * z)
        outward.append((rho * math.cos(golden * i),
                        rho * math.sin(golden * i), z))
    x, y, z = columns([[PMT_RADIUS * c for c in u] for u in outward])
    dx, dy, dz = columns([[-c for c in u] for u in outward],
                         DIRECTION_DECIMALS)
    return [entry("PMT", "positions", x=x, y=y, z=z, direction_x=dx,
                  direction_y=dy, direction_z=dz)]


def toluene_index(um):
    square = um * um
    return AIR_INDEX * (1.474775 + 0.00699031 / square
                        + 0.00021776 / (square * square))


def acrylic_index(um):
    square = um * um
    return AIR_INDEX * math.sqrt(1.0 + 1.1819 * square / (square - 0.011313))


def water_index(um):
    # Temperature, density and wavelength relative to their reference values.
    theta = WATER_TEMPERATURE / 273.15
    delta = WATER_DENSITY / 1000.0
    square = (um / 0.589) * (um / 0.589)
    refraction = delta * (
        0.244257733 + 9.74634476e-3 * delta - 3.73234996e-3 * theta
        + 2.68678472e-4 * square * theta + 1.58920570e-3 / square
        + 2.45934259e-3 / (square - 0.229202 * 0.229202)
        + 0.900704920 / (square - 5.432937 * 5.432937)
        - 1.66626219e-2 * delta * delta)
    return math.sqrt((2.0 * refraction + 1.0) / (1.0 - refraction))


def optics():
    # Only arithmetic and square roots, which every machine rounds in the same
    # way.
    wavelengths = [float(nm) for nm in WAVELENGTHS]
    return [entry("OPTICS", index, wavelength=wavelengths,
                  refractive_index=[round(formula(nm / 1000.0), INDEX_DECIMALS)
                                    for nm in WAVELENGTHS])
            for index, formula in (("inner_av", toluene_index),
                                   ("acrylic", acrylic_index),
                                   ("water", water_index))]


FILES = {
    "vessel.json": vessel,
    "hold_down_ropes.json": hold_down_ropes,
    "support_ropes.json": support_ropes,
    "belly_plates.json": belly_plates,
    "ncd_anchors.json": ncd_anchors,
    "av_pipes.json": av_pipes,
    "neck_boss.json": neck_boss,
    "pmts.json": pmts,
    "optics.json": optics,
}


def array_text(values, indent):
    """An array on one line if it fits, else on full lines."""
    words = [json.dumps(v, allow_nan=False) for v in values]
    line = "[" + ", ".join(words) + "]"
    if len(line) + indent <= LINE_WIDTH:
        return line
    pad = " " * (indent + 2)
    lines = [pad]
    for n, word in enumerate(words):
        word += "," if n + 1 < len(words) else ""
        if len(lines[-1]) + len(word) + 1 > LINE_WIDTH:
            lines.append(pad)
        lines[-1] += word if lines[-1] == pad else " " + word
    return "[\n" + "\n".join(lines) + "\n" + " " * indent + "]"


def file_text(entries):
    texts = []
    for e in entries:
        fields = []
        for name, value in e["fields"].items():
            text = (array_text(value, 6) if isinstance(value, list)
                    else json.dumps(value, allow_nan=False))
            fields.append(f"      {json.dumps(name)}: {text}")
        texts.append(
            "  {\n"
            f'    "table": {json.dumps(e["table"])},\n'
            f'    "index": {json.dumps(e["index"])},\n'
            '    "fields": {\n' + ",\n".join(fields) + "\n    }\n  }")
    return "[\n" + ",\n".join(texts) + "\n]\n"


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
        description="Write the geometry tables of the reference detector, "
                    "one JSON file per component, PMTs and optics.")
    parser.add_argument("--output", metavar="DIR", type=pathlib.Path,
                        default=pathlib.Path(__file__).resolve().parent,
                        help="folder to write to, created if missing "
                             "(default: the folder of this script)")
    folder = parser.parse_args().output
    try:
        folder.mkdir(parents=True, exist_ok=True)
        for name, component in FILES.items():
            write_file(folder / name, file_text(component()))
    except OSError as error:
        sys.exit(f"make-tables.py: {error}")


if __name__ == "__main__":
    main()
