import { describe, expect, it } from 'vitest';
import { tracePath } from '../../src/data/lightPath';
import type { LightPath } from '../../src/data/lightPath';
import type { Page, PageText, StoredPath, Vec3 } from '../../src/data/page';
import { makeDetails, makePage } from '../support/makePage';

const SAME: Partial<PageText> = { refractiveIndices: [1.4, 1.4, 1.4] };
const PMT: Vec3 = [0, 0, 8300];

function pageOf(
  event: Vec3,
  pmt: Vec3,
  angle: number,
  text: Partial<PageText> = {},
  verdict = 0,
): Page {
  return makePage({
    events: [event],
    pmts: [pmt],
    verdicts: [verdict],
    details: { angles: Float32Array.of(angle) },
    text,
  });
}

function trace(
  event: Vec3,
  pmt: Vec3,
  angle: number,
  text: Partial<PageText> = {},
): LightPath {
  const path = tracePath(pageOf(event, pmt, angle, text), 0, 0, false);
  if (!path) throw new Error('no path');
  return path;
}

function expectPoints(path: LightPath, points: Vec3[]): void {
  expect(path.points.length).toBe(points.length);
  for (const [i, point] of points.entries()) {
    for (const axis of [0, 1, 2] as const) {
      // An angle in single precision gives a few hundredths of a mm.
      expect(Math.abs((path.points[i]?.[axis] ?? NaN) - point[axis])).toBeLessThan(
        0.02,
      );
    }
  }
}

/** The angle at @p event of the straight line to @p pmt. */
function straightAngle(event: Vec3, pmt: Vec3): number {
  const way = pmt.map((part, i) => part - (event[i] ?? 0));
  const along = way.reduce((sum, part, i) => sum + part * (event[i] ?? 0), 0);
  return Math.acos(along / (Math.hypot(...way) * Math.hypot(...event)));
}

describe('a light path', () => {
  it('from the centre is straight', () => {
    const path = trace([0, 0, 0], [0, 8300, 0], 0);
    expectPoints(path, [
      [0, 0, 0],
      [0, 5800, 0],
      [0, 5860, 0],
      [0, 8300, 0],
    ]);
    expect(path.media).toEqual([0, 1, 2]);
    expect(path.lengths).toEqual([5800, 60, 2440]);
    expect(path.length).toBe(8300);
    expect(path.time).toBeCloseTo(
      (1.6 * 5800 + 1.55 * 60 + 1.4 * 2440) / 299.792458,
      10,
    );
    expect(path.angle).toBe(0);
  });

  it('on the line through the centre goes through it', () => {
    const path = trace([0, 0, -3000], PMT, Math.PI);
    expectPoints(path, [
      [0, 0, -3000],
      [0, 0, 5800],
      [0, 0, 5860],
      [0, 0, 8300],
    ]);
    expect(path.lengths[0]).toBe(8800);
  });

  it('out of the wall can go through the liquid', () => {
    const path = trace([0, 0, -5830], PMT, Math.PI);
    expectPoints(path, [
      [0, 0, -5830],
      [0, 0, -5800],
      [0, 0, 5800],
      [0, 0, 5860],
      [0, 0, 8300],
    ]);
    expect(path.media).toEqual([1, 0, 1, 2]);
  });

  it('out of the wall can miss the liquid', () => {
    const path = trace([0, 5830, 0], [0, 8300, 0], 0);
    expectPoints(path, [
      [0, 5830, 0],
      [0, 5860, 0],
      [0, 8300, 0],
    ]);
    expect(path.media).toEqual([1, 2]);
  });

  it('out of the wall can go inwards and turn before the liquid', () => {
    const event: Vec3 = [0, 0, 5830];
    const pmt: Vec3 = [8000, 0, 5825];
    const path = trace(event, pmt, straightAngle(event, pmt), SAME);
    expect(path.media).toEqual([1, 2]);
    expect(path.length).toBeCloseTo(Math.hypot(8000, 5), 3);
  });

  it('from the water through the vessel crosses it twice', () => {
    const path = trace([0, 0, -7000], PMT, Math.PI);
    expectPoints(path, [
      [0, 0, -7000],
      [0, 0, -5860],
      [0, 0, -5800],
      [0, 0, 5800],
      [0, 0, 5860],
      [0, 0, 8300],
    ]);
    expect(path.media).toEqual([2, 1, 0, 1, 2]);
  });

  it('from the water can go through the wall alone', () => {
    const event: Vec3 = [-7000, 0, 5820];
    const pmt: Vec3 = [6000, 0, 5820];
    const path = trace(event, pmt, straightAngle(event, pmt), SAME);
    const half = Math.sqrt(5860 ** 2 - 5820 ** 2);
    expectPoints(path, [event, [-half, 0, 5820], [half, 0, 5820], pmt]);
    expect(path.media).toEqual([2, 1, 2]);
  });

  it('in the water is straight where the vessel is not in the way', () => {
    const pmt: Vec3 = [0, 6000, 6000];
    const path = trace([0, 7000, 0], pmt, 2);
    expectPoints(path, [[0, 7000, 0], pmt]);
    expect(path.media).toEqual([2]);
    expect(path.time).toBeCloseTo((1.4 * Math.hypot(1000, 6000)) / 299.792458, 10);
  });

  it('in the water ends at a PMT before the vessel, and meets it from behind', () => {
    const path = trace([0, 0, 9000], PMT, Math.PI);
    expectPoints(path, [[0, 0, 9000], PMT]);
    expect(path.angle).toBe(180);
  });

  it.each<[string, Vec3]>([
    ['away from', [100, 0, 8300]],
    ['towards', [100, 0, 6200]],
  ])('in the water is straight %s the vessel if it does not come there', (_, pmt) => {
    // The line through both meets the vessel, but not between them.
    const path = trace([0, 0, 7000], pmt, 1);
    expect(path.media).toEqual([2]);
  });

  it('that touches the vessel stays in the water', () => {
    const path = trace([0, -7000, 5860], [0, 7000, 5860], 2.2);
    expect(path.media).toEqual([2]);
  });

  it('is straight through equal media', () => {
    const event: Vec3 = [1200, -800, 450];
    const pmt: Vec3 = [-3000, 6000, 4500];
    const path = trace(event, pmt, straightAngle(event, pmt), SAME);
    const way = pmt.map((part, i) => part - (event[i] ?? 0));
    expect(path.length).toBeCloseTo(Math.hypot(...way), 4);
    const incidence =
      Math.acos(
        way.reduce((sum, part, i) => sum + part * (pmt[i] ?? 0), 0) /
          (Math.hypot(...way) * Math.hypot(...pmt)),
      ) *
      (180 / Math.PI);
    expect(path.angle).toBeCloseTo(incidence, 4);
  });

  it('is refracted by the law of Snell', () => {
    // Launched sideways 3 m from the centre, into the plane of y and z.
    const event: Vec3 = [0, 0, 3000];
    const path = trace(event, [0, 8300, 0], Math.PI / 2, {
      refractiveIndices: [1.5, 1.3, 1.2],
    });
    const points = path.points;
    expect(points[1]?.[2]).toBeCloseTo(3000, 3);
    expect(points[1]?.[1]).toBeCloseTo(Math.sqrt(5800 ** 2 - 3000 ** 2), 3);
    // The invariant gives the direction in the wall.
    const [from, to] = [points[1] ?? event, points[2] ?? event];
    const way = [to[1] - from[1], to[2] - from[2]] as const;
    const lever = Math.abs(from[1] * way[1] - from[2] * way[0]) / Math.hypot(...way);
    expect(1.3 * lever).toBeCloseTo(1.5 * 3000, 2);
    expect(Math.hypot(...to)).toBeCloseTo(5860, 6);
  });

  it('with a negative angle turns around the centre the longer way', () => {
    const event: Vec3 = [0, 0, 3000];
    const near = trace(event, [0, 8300, 0], 1);
    const far = trace(event, [0, 8300, 0], -1);
    expect(near.points[1]?.[1]).toBeGreaterThan(0);
    expect(far.points[1]?.[1]).toBeCloseTo(-(near.points[1]?.[1] ?? NaN), 6);
    expect(far.points[1]?.[2]).toBeCloseTo(near.points[1]?.[2] ?? NaN, 6);
  });

  it('that rounding carries past total reflection grazes the surface', () => {
    // 1.5 * 5800 * sin(a) = 1.35 * 5860 at the outer surface.
    const limit = Math.asin((1.35 * 5860) / (1.5 * 5800));
    const path = trace([0, 0, 5800 - 1e-6], [0, 8300, 0], limit + 1e-7);
    expect(path.points.flat().every(Number.isFinite)).toBe(true);
    expect(path.length).toBeGreaterThan(0);
  });
});

describe('a reflected light path', () => {
  const reflectedPage = (event: Vec3, pmt: Vec3, angle: number): Page =>
    makePage({
      events: [event],
      pmts: [pmt],
      verdicts: [0],
      reflected: {
        verdicts: Uint8Array.of(0),
        paths: makeDetails(1, { angles: Float32Array.of(angle) }),
      },
    });

  it('is mirrored at the outer surface', () => {
    const event: Vec3 = [-2000, 0, 7000];
    const pmt: Vec3 = [2000, 0, 7000];
    const mirror: Vec3 = [0, 0, 5860];
    const angle = straightAngle(event, mirror);
    const path = tracePath(reflectedPage(event, pmt, angle), 0, 0, true);
    if (!path) throw new Error('no path');
    expectPoints(path, [event, mirror, pmt]);
    expect(path.media).toEqual([2, 2]);
    expect(path.lengths).toEqual([0, 0, path.length]);
    expect(path.length).toBeCloseTo(2 * Math.hypot(2000, 1140), 3);
  });

  it('comes straight back on a line', () => {
    const path = tracePath(reflectedPage([0, 0, 7000], PMT, Math.PI), 0, 0, true);
    if (!path) throw new Error('no path');
    expectPoints(path, [[0, 0, 7000], [0, 0, 5860], PMT]);
    expect(path.angle).toBe(0);
  });

  it('is not that of direct light', () => {
    const page = reflectedPage([0, 0, 7000], PMT, Math.PI);
    expect(tracePath(page, 0, 0, false)).toBeNull();
  });
});

describe('without a light path', () => {
  it.each([7, 8, 9, 10, 11])('verdict %i has none', (verdict) => {
    const page = pageOf([0, 0, 0], PMT, 1, {}, verdict);
    expect(tracePath(page, 0, 0, false)).toBeNull();
  });

  it('there is none for an angle that is no number', () => {
    expect(tracePath(pageOf([0, 0, 0], PMT, NaN), 0, 0, false)).toBeNull();
    expect(tracePath(pageOf([0, 0, 0], PMT, Infinity), 0, 0, false)).toBeNull();
  });

  it('there is none on a page that keeps verdicts only', () => {
    const page = pageOf([0, 0, 0], PMT, 0, { content: 'verdicts' });
    expect(tracePath(page, 0, 0, false)).toBeNull();
  });

  it('there is none on a page without reflections', () => {
    expect(tracePath(pageOf([0, 0, 7000], PMT, 3), 0, 0, true)).toBeNull();
  });

  it('there is none of a pair that is not on the page', () => {
    expect(tracePath(pageOf([0, 0, 0], PMT, 0), 3, 0, false)).toBeNull();
  });
});

describe('a stored path', () => {
  const stored: StoredPath = {
    event: 1,
    pmt: 1,
    reflected: false,
    media: [1, 2],
    points: [0, 0, 5830, 0, 0, 5860, 0, 0, 8300],
  };
  const page = makePage({
    events: [
      [0, 0, 5830],
      [0, 0, 5830],
    ],
    pmts: [[0, 8300, 0], PMT],
    details: { angles: Float32Array.of(0, 0, 0, 3) },
    text: { storedPaths: [stored] },
  });

  it('goes before its angle', () => {
    const path = tracePath(page, 1, 1, false);
    expect(path?.media).toEqual([1, 2]);
    expect(path?.points).toEqual([
      [0, 0, 5830],
      [0, 0, 5860],
      [0, 0, 8300],
    ]);
    expect(path?.lengths).toEqual([0, 30, 2440]);
    expect(path?.time).toBeCloseTo((1.55 * 30 + 1.4 * 2440) / 299.792458, 10);
    expect(path?.angle).toBe(0);
  });

  it('is of its event and its light alone', () => {
    expect(tracePath(page, 1, 0, false)?.points.at(-1)).toEqual([0, 8300, 0]);
    expect(tracePath(page, 0, 1, false)?.length).toBeCloseTo(2470, 6);
    const other = makePage({
      events: [[0, 0, 0]],
      pmts: [PMT],
      details: { angles: Float32Array.of(0) },
      text: { storedPaths: [{ ...stored, event: 0, pmt: 0, reflected: true }] },
    });
    expect(tracePath(other, 0, 0, false)?.media).toEqual([0, 1, 2]);
  });
});
