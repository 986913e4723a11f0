import type { Vec3 } from './page';

/** Number @p i of a row of points, x, y, z of each in turn. */
export function pointAt(points: ArrayLike<number>, i: number): Vec3 {
  const at = 3 * i;
  return [points[at] ?? NaN, points[at + 1] ?? NaN, points[at + 2] ?? NaN];
}

export function dot(a: Vec3, b: Vec3): number {
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

export function cross(a: Vec3, b: Vec3): Vec3 {
  return [
    a[1] * b[2] - a[2] * b[1],
    a[2] * b[0] - a[0] * b[2],
    a[0] * b[1] - a[1] * b[0],
  ];
}

export function subtract(a: Vec3, b: Vec3): Vec3 {
  return [a[0] - b[0], a[1] - b[1], a[2] - b[2]];
}

export function scale(a: Vec3, factor: number): Vec3 {
  return [a[0] * factor, a[1] * factor, a[2] * factor];
}

/** The program squares and adds in the same way, so both round alike. */
export function lengthOf(a: Vec3): number {
  return Math.sqrt(dot(a, a));
}
