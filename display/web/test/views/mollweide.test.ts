import { describe, expect, test } from 'vitest';
import type { Vec3 } from '../../src/data/page';
import { pointAt, projectDirection, traceCap } from '../../src/views/map/mollweide';

/** The direction of an azimuth and latitude in degrees. */
function directionOf(azimuth: number, latitude: number): Vec3 {
  const [a, l] = [(azimuth * Math.PI) / 180, (latitude * Math.PI) / 180];
  return [Math.cos(l) * Math.cos(a), Math.cos(l) * Math.sin(a), Math.sin(l)];
}

/** The z of the direction at a height on the map, from the written equation. */
function heightToZ(y: number): number {
  const theta = Math.asin(y);
  return (2 * theta + Math.sin(2 * theta)) / Math.PI;
}

describe('projectDirection', () => {
  test('puts azimuth 0 in the middle and lets azimuth grow to the left', () => {
    expect(projectDirection([5, 0, 0])?.x).toBeCloseTo(0, 14);
    expect(projectDirection([5, 0, 0])?.y).toBeCloseTo(0, 14);
    expect(projectDirection([0, 1, 0])?.x).toBeCloseTo(-1, 14);
    expect(projectDirection([0, -1, 0])?.x).toBeCloseTo(1, 14);
  });

  test('puts the poles at the top and the bottom', () => {
    expect(projectDirection([0, 0, 7])).toEqual({ x: -0, y: 1 });
    expect(projectDirection([0, 0, -7])).toEqual({ x: -0, y: -1 });
  });

  test('meets the equation of equal areas at every latitude', () => {
    for (let latitude = -89.99; latitude < 90; latitude += 0.37) {
      const direction = directionOf(33, latitude);
      const y = projectDirection(direction)?.y ?? NaN;
      expect(heightToZ(y)).toBeCloseTo(direction[2], 13);
    }
  });

  test('gives no point to what has no direction', () => {
    expect(projectDirection([0, 0, 0])).toBeNull();
    expect(projectDirection([NaN, 0, 1])).toBeNull();
    expect(projectDirection([Infinity, 0, 1])).toBeNull();
  });

  test('agrees with the points of the graticule', () => {
    const there = pointAt(-120, 40);
    const same = projectDirection(directionOf(-120, 40));
    expect(same?.x).toBeCloseTo(there.x, 12);
    expect(same?.y).toBeCloseTo(there.y, 12);
  });
});

describe('traceCap', () => {
  test('is one closed line for a cap in the middle of the map', () => {
    const [line, ...others] = traceCap([3, 0, 0], Math.cos(0.3));
    expect(others).toHaveLength(0);
    expect(line?.at(-1)?.x).toBeCloseTo(line?.[0]?.x ?? NaN, 12);
    expect(Math.min(...(line ?? []).map(({ x }) => x))).toBeCloseTo(-0.6 / Math.PI, 4);
  });

  test('goes on at the other side where it leaves the map', () => {
    const lines = traceCap([-1, 0, 0], Math.cos(0.3));
    expect(lines).toHaveLength(3);
    const sides = lines.slice(1).map((line) => line[0]);
    for (const side of sides) {
      const halfWidth = Math.sqrt(1 - (side?.y ?? NaN) ** 2);
      expect(Math.abs(side?.x ?? NaN)).toBeCloseTo(2 * halfWidth, 12);
    }
    expect(Math.sign(sides[0]?.x ?? NaN)).toBe(-Math.sign(sides[1]?.x ?? NaN));
  });

  test('is a parallel around a pole', () => {
    const z = 0.5;
    for (const line of traceCap([0, 0, 2], z)) {
      for (const { y } of line) expect(heightToZ(y)).toBeCloseTo(z, 10);
    }
  });
});
