import type { Vec3 } from '../../data/page';

/**
 * A place on the map: an ellipse around the origin, x from -2 to 2 (to the right) and
 * y from -1 (straight down) to 1 (straight up).
 */
export interface MapPoint {
  x: number;
  y: number;
}

/**
 * Solve psi - sin(psi) = k for psi from 0 to pi. The difference vanishes like
 * psi^3 / 6 at a pole, where it is computed from its series.
 */
function solveParallel(k: number): number {
  // From above: the function is convex, so that Newton's steps go down to the root
  // and never beyond it.
  let psi = Math.min(Math.PI, 1.25 * Math.cbrt(6 * k));
  for (let step = 0; step < 60 && psi > 0; ++step) {
    const square = psi * psi;
    const value =
      psi < 0.1
        ? ((psi * square) / 6) * (1 - (square / 20) * (1 - square / 42))
        : psi - Math.sin(psi);
    const half = Math.sin(0.5 * psi);
    const next = psi - (value - k) / (2 * half * half);
    if (!(next < psi)) break;
    psi = next;
  }
  return psi;
}

/**
 * Place a direction on the map: equal solid angles become equal areas, parallels
 * straight lines. Azimuth 0 is in the middle and azimuth grows to the left, as seen
 * from inside.
 *
 * @param direction  of any length
 * @returns null if it has no direction: it is zero or not finite
 *
 * Source: J. P. Snyder, Map Projections: A Working Manual (1987), section 31, scaled
 * by the square root of 2; as `display/Mollweide.cpp`.
 */
export function projectDirection([x, y, z]: Vec3): MapPoint | null {
  const length = Math.hypot(x, y, z);
  if (!(length > 0 && Number.isFinite(length))) return null;
  const up = Math.abs(z) / length;
  const across = Math.hypot(x, y) / length;
  // 1 - up, without its cancellation near a pole.
  const psi = solveParallel((Math.PI * across * across) / (1 + up));
  const azimuth = Math.atan2(y, x);
  return {
    x: (-2 / Math.PI) * azimuth * Math.sin(0.5 * psi),
    y: (z < 0 ? -1 : 1) * Math.cos(0.5 * psi),
  };
}

/** The point at an azimuth and latitude in degrees; +-180 are the map's two sides. */
export function pointAt(azimuth: number, latitude: number): MapPoint {
  const angle = (latitude / 180) * Math.PI;
  const y = projectDirection([Math.cos(angle), 0, Math.sin(angle)])?.y ?? 0;
  return { x: (-azimuth / 90) * Math.sqrt(Math.max(0, 1 - y * y)), y };
}

const POINTS_OF_CAP = 360;
const POINTS_OF_MERIDIAN = 72;

/** The line of an azimuth in degrees, from the bottom up. */
export function traceMeridian(azimuth: number): MapPoint[] {
  return Array.from({ length: POINTS_OF_MERIDIAN + 1 }, (_, i) => {
    const angle = Math.PI * (i / POINTS_OF_MERIDIAN - 0.5);
    return { x: (-azimuth / 90) * Math.cos(angle), y: Math.sin(angle) };
  });
}

/**
 * Trace the edge of a cap of the sphere on the map.
 *
 * @param centre  direction of the cap's centre, of any length but zero
 * @param cosine  of the angle between the centre and the edge
 * @returns lines that end where the edge leaves the map on one side; the next goes on
 *          at the other side
 */
export function traceCap(centre: Vec3, cosine: number): MapPoint[][] {
  const [right, up, axis] = makeFrame(centre);
  const sine = Math.sqrt(Math.max(0, 1 - cosine * cosine));
  const lines: MapPoint[][] = [];
  let line: MapPoint[] = [];
  let before: MapPoint | null = null;
  for (let i = 0; i <= POINTS_OF_CAP; ++i) {
    const angle = (2 * Math.PI * i) / POINTS_OF_CAP;
    const c = sine * Math.cos(angle);
    const s = sine * Math.sin(angle);
    const point = projectDirection([
      cosine * axis[0] + c * right[0] + s * up[0],
      cosine * axis[1] + c * right[1] + s * up[1],
      cosine * axis[2] + c * right[2] + s * up[2],
    ]);
    if (point === null) continue;
    if (before !== null && leavesMap(before, point)) {
      line.push(sideNear(before, point));
      lines.push(line);
      line = [sideNear(point, before)];
    }
    line.push(point);
    before = point;
  }
  lines.push(line);
  return lines;
}

/** Three unit vectors at right angles, the last along @p axis. */
function makeFrame(axis: Vec3): [Vec3, Vec3, Vec3] {
  const length = Math.hypot(...axis);
  const [x, y, z] = axis.map((part) => part / length) as [number, number, number];
  const across = Math.hypot(x, y);
  const right: Vec3 = across > 1e-9 ? [-y / across, x / across, 0] : [1, 0, 0];
  const up: Vec3 = [
    y * right[2] - z * right[1],
    z * right[0] - x * right[2],
    x * right[1] - y * right[0],
  ];
  return [right, up, [x, y, z]];
}

/** Whether a short way between two points goes over the sides of the map. */
function leavesMap(from: MapPoint, to: MapPoint): boolean {
  return from.x * to.x < 0 && Math.abs(to.x - from.x) > halfWidth(from) + halfWidth(to);
}

/** The side on which @p from lies, between the heights of two points. */
function sideNear(from: MapPoint, to: MapPoint): MapPoint {
  const y = 0.5 * (from.y + to.y);
  return { x: Math.sign(from.x) * 2 * Math.sqrt(Math.max(0, 1 - y * y)), y };
}

function halfWidth(point: MapPoint): number {
  return Math.sqrt(Math.max(0, 1 - point.y * point.y));
}
