"""Ray tracing with vectors, independent of the program's formulas."""

import cmath
import collections
import math

from command_support import INNER_RADIUS, OUTER_RADIUS

FROM_INSIDE = "Scint/InnerAV->AV->Water"
WALL_INSIDE = "AV->Scint/InnerAV->AV->Water"
FROM_WALL = "AV->Water"
THROUGH_INSIDE = "Water->AV->Scint/InnerAV->AV->Water"
THROUGH_WALL = "Water->AV->Water"
WATER = "Water"
REFLECTION = "Water->Reflection->Water"

# The media along a path: the inside, the wall and the water are 0, 1 and 2.
MEDIA_OF = {FROM_INSIDE: (0, 1, 2), WALL_INSIDE: (1, 0, 1, 2), FROM_WALL: (1, 2),
            THROUGH_INSIDE: (2, 1, 0, 1, 2), THROUGH_WALL: (2, 1, 2), WATER: (2,),
            REFLECTION: (2, 2)}


Ray = collections.namedtuple("Ray", "media swept optical points")


def medium_at(radius):
    return 0 if radius < INNER_RADIUS else 1 if radius < OUTER_RADIUS else 2


def follow(indices, start_radius, angle, end_radius):
    """Follow a ray in a plane through the vessel out to a radius.

    It starts at (start_radius, 0) at an angle to the outward radius. None if it is
    totally reflected or, from the water, misses the vessel.
    """
    position, direction = complex(start_radius), cmath.rect(1, angle)
    here = medium_at(start_radius)
    media, swept, optical, points = [here], 0.0, 0.0, [position]
    while here is not None:
        along = (position * direction.conjugate()).real
        beyond = along * along - abs(position) ** 2  # plus radius squared: >= 0 if it hits
        inner, outer = ((0, INNER_RADIUS), (INNER_RADIUS, OUTER_RADIUS),
                        (OUTER_RADIUS, end_radius))[here]
        goes_inward = along < 0 and here > 0 and beyond + inner * inner > 0
        if here == 2 and len(media) == 1 and not goes_inward:
            return None
        if goes_inward:
            step, there = -along - math.sqrt(beyond + inner * inner), here - 1
        else:
            step, there = -along + math.sqrt(beyond + outer * outer), here + 1
        arrival = position + step * direction
        swept += cmath.phase(arrival / position)
        optical += indices[here] * step
        points.append(arrival)
        position, here = arrival, there if there < 3 else None
        if here is None:
            break
        radial = position / abs(position)
        local = direction / radial
        sine = indices[media[-1]] * local.imag / indices[here]
        if abs(sine) > 1:
            return None
        cosine = math.copysign(math.sqrt(1 - sine * sine), local.real)
        direction = radial * complex(cosine, sine)
        media.append(here)
    return Ray(tuple(media), swept, optical, points)


def dot(a, b):
    return sum(x * y for x, y in zip(a, b))


def minus(a, b):
    return tuple(x - y for x, y in zip(a, b))


def times(factor, a):
    return tuple(factor * x for x in a)


def length(a):
    return math.hypot(*a)


def unit(a):
    return times(1 / length(a), a)


def cross(a, b):
    return (a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0])


def nearest_to_centre(a, b):
    """Smallest distance from the centre to the segment between two points."""
    way = minus(b, a)
    part = 0.0 if a == b else min(1.0, max(0.0, -dot(a, way) / dot(way, way)))
    return length(tuple(x + part * y for x, y in zip(a, way)))


def rays_between(indices, event, pmt, steps=1500):
    """Rays from an event to a PMT, found from @p steps launch angles: a ray that
    exists only for a narrow range of angles may be missed."""
    start, end = length(event), length(pmt)
    between = math.atan2(length(cross(event, pmt)), dot(event, pmt))
    found, last = [], None
    for i in range(1, steps):
        angle = math.pi * i / steps
        ray = follow(indices, start, angle, end)
        if last and ray and last[1].media == ray.media:
            for target in (between, 2 * math.pi - between):
                if (last[1].swept > target) != (ray.swept > target):
                    found.append(narrow(indices, start, end, target, last, (angle, ray)))
        last = (angle, ray) if ray else None
    return [ray for ray in found if ray]


def narrow(indices, start, end, target, low, high):
    for _ in range(60):
        middle = (low[0] + high[0]) / 2
        ray = follow(indices, start, middle, end)
        if ray is None or ray.media != low[1].media:
            return None
        if (ray.swept > target) == (low[1].swept > target):
            low = (middle, ray)
        else:
            high = (middle, ray)
    return low[1]
