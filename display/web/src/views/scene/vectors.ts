import type { Vec3 } from '../../data/page';

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

export function norm(a: Vec3): number {
  return Math.hypot(a[0], a[1], a[2]);
}

/** a + s b */
export function addScaled(a: Vec3, b: Vec3, s: number): Vec3 {
  return [a[0] + s * b[0], a[1] + s * b[1], a[2] + s * b[2]];
}

/** The point of number @p i in x, y, z of each point in turn. */
export function pointAt(numbers: ArrayLike<number>, i: number): Vec3 {
  return [
    numbers[3 * i] ?? Number.NaN,
    numbers[3 * i + 1] ?? Number.NaN,
    numbers[3 * i + 2] ?? Number.NaN,
  ];
}

export function isFinitePoint(a: Vec3): boolean {
  return a.every(Number.isFinite);
}
