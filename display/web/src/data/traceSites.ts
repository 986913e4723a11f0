import type { Medium, PageText, Vec3 } from './page';
import { cross, dot, lengthOf, scale, subtract } from './vectors';

/** Points of a light path and the medium of each segment between them. */
export interface Sites {
  points: Vec3[];
  media: Medium[];
}

/** Errors of sums of products of coordinates, as the program has them. */
const ROUNDING = 4 * Number.EPSILON;

/**
 * Up to this sine of the angle between them, event, PMT and centre are on one line:
 * `kInLine` of the program's own trace, display/PathTrace.hpp.
 */
const IN_LINE = 1e-12;

/** So close to the centre, mm, the direction of the event does not matter. */
const AT_CENTRE = 1e-100;

/**
 * The plane of event, PMT and centre, in which the path lies: `out` is the
 * direction of the event, `across` perpendicular to it on the side of the PMT.
 */
interface Plane {
  out: Vec3;
  across: Vec3;
  /** Event, PMT and centre are on one line, or the event is at the centre. */
  isLine: boolean;
  isOnOneSide: boolean;
}

function planeOf(event: Vec3, pmt: Vec3): Plane {
  const eventRadius = lengthOf(event);
  const toPMT = scale(pmt, 1 / lengthOf(pmt));
  const none: Vec3 = [0, 0, 0];
  if (eventRadius < AT_CENTRE) {
    return { out: toPMT, across: none, isLine: true, isOnOneSide: true };
  }
  const out = scale(event, 1 / eventRadius);
  const normal = cross(out, toPMT);
  const isOnOneSide = dot(out, toPMT) > 0;
  if (lengthOf(normal) <= IN_LINE) {
    // The path is along the line through the PMT, as the program has it.
    const line = isOnOneSide ? toPMT : scale(toPMT, -1);
    return { out: line, across: none, isLine: true, isOnOneSide };
  }
  // Perpendicular to the event's direction even if the normal is inexact.
  const across = cross(normal, out);
  return {
    out,
    across: scale(across, 1 / lengthOf(across)),
    isLine: false,
    isOnOneSide,
  };
}

/** Whether the line between points in the water goes through the vessel. */
function crosses(from: Vec3, to: Vec3, radius: number): boolean {
  const way = subtract(to, from);
  const toNearest = -dot(from, way);
  const squared = dot(way, way);
  if (toNearest <= 0 || toNearest >= squared) return false;
  const normal = cross(from, way);
  return dot(normal, normal) < (1 - ROUNDING) * radius * radius * squared;
}

/**
 * Light on its way through concentric media. Its position is an angle around the
 * centre, its direction the angle to the outward radius; both are kept as cosine
 * and sine. Index times radius times the sine of the direction never changes.
 */
class Ray {
  readonly points: Vec3[];
  readonly media: Medium[] = [];
  private readonly plane: Plane;
  private readonly indices: readonly number[];
  private readonly invariant: number;
  private position: [number, number] = [1, 0];
  private direction: [number, number];

  constructor(
    text: PageText,
    plane: Plane,
    start: Vec3,
    medium: Medium,
    direction: [number, number],
  ) {
    this.plane = plane;
    this.indices = text.refractiveIndices;
    this.points = [start];
    this.direction = direction;
    this.invariant = (this.indices[medium] ?? NaN) * lengthOf(start) * direction[1];
  }

  /** Whether the straight way in @p medium comes as near to the centre. */
  comesTo(radius: number, medium: Medium): boolean {
    return this.direction[0] < 0 && this.sineAt(radius, medium) < 1;
  }

  /** Go through @p medium to a surface, and into the medium @p next. */
  goTo(radius: number, medium: Medium, sense: 1 | -1, next: Medium): void {
    const [cosine, sine] = this.directionAt(radius, medium, sense);
    const [oldCosine, oldSine] = this.direction;
    // On a straight way the radius turns by the angle that the direction loses
    // to it.
    const turnCosine = oldCosine * cosine + oldSine * sine;
    const turnSine = oldSine * cosine - oldCosine * sine;
    const [along, across] = this.position;
    this.position = [
      along * turnCosine - across * turnSine,
      across * turnCosine + along * turnSine,
    ];
    this.direction = this.directionAt(radius, next, sense);
    this.media.push(medium);
    this.points.push(this.pointAt(radius));
  }

  mirror(): void {
    this.direction = [-this.direction[0], this.direction[1]];
  }

  /** The last segment, which ends at the PMT whatever was rounded before. */
  endAt(pmt: Vec3): Sites {
    this.media.push(2);
    this.points.push(pmt);
    return { points: this.points, media: this.media };
  }

  private sineAt(radius: number, medium: Medium): number {
    return this.invariant / ((this.indices[medium] ?? NaN) * radius);
  }

  private directionAt(radius: number, medium: Medium, sense: 1 | -1): [number, number] {
    // Rounding of the angle can carry a grazing ray past 1.
    const sine = Math.min(1, this.sineAt(radius, medium));
    return [sense * Math.sqrt((1 - sine) * (1 + sine)), sine];
  }

  private pointAt(radius: number): Vec3 {
    const { out, across } = this.plane;
    const a = radius * this.position[0];
    const b = radius * this.position[1];
    return [
      a * out[0] + b * across[0],
      a * out[1] + b * across[1],
      a * out[2] + b * across[2],
    ];
  }
}

function mediumAt(text: PageText, radius: number): Medium {
  const { innerRadius, outerRadius } = text.vessel;
  if (radius < innerRadius) return 0;
  return radius < outerRadius ? 1 : 2;
}

/**
 * Trace light from its angle at the event.
 *
 * @param angle      to the outward radius, rad; negative: away from the PMT
 * @param reflected  mirrored at the outer surface; the event is in the water
 */
export function traceSites(
  text: PageText,
  event: Vec3,
  pmt: Vec3,
  angle: number,
  reflected: boolean,
): Sites {
  const { innerRadius, outerRadius } = text.vessel;
  const medium = mediumAt(text, lengthOf(event));
  const plane = planeOf(event, pmt);
  const isStraight =
    medium === 2 &&
    !reflected &&
    (plane.isLine ? plane.isOnOneSide : !crosses(event, pmt, outerRadius));
  if (isStraight) return { points: [event, pmt], media: [2] };
  const ray = new Ray(
    text,
    angle < 0 ? { ...plane, across: scale(plane.across, -1) } : plane,
    event,
    medium,
    plane.isLine
      ? [plane.isOnOneSide && !reflected ? 1 : -1, 0]
      : [Math.cos(angle), Math.sin(Math.abs(angle))],
  );
  if (medium === 2) ray.goTo(outerRadius, 2, -1, reflected ? 2 : 1);
  if (reflected) {
    ray.mirror();
    return ray.endAt(pmt);
  }
  const isInLiquid = medium === 0;
  if (!isInLiquid && ray.comesTo(innerRadius, 1)) ray.goTo(innerRadius, 1, -1, 0);
  if (isInLiquid || ray.media.at(-1) === 1) ray.goTo(innerRadius, 0, 1, 1);
  ray.goTo(outerRadius, 1, 1, 2);
  return ray.endAt(pmt);
}
