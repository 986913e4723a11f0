import type { Vec3 } from '../../data/page';

/** a + s b */
export function addScaled(a: Vec3, b: Vec3, s: number): Vec3 {
  return [a[0] + s * b[0], a[1] + s * b[1], a[2] + s * b[2]];
}

export function isFinitePoint(a: Vec3): boolean {
  return a.every(Number.isFinite);
}
