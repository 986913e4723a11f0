import { describe, expect, test } from 'vitest';
import type { Vec3 } from '../../src/data/page';
import { placeBox } from '../../src/views/scene/labels';
import { pickMark, projectMarks } from '../../src/views/scene/picker';
import { blendPoses, firstPose, poseAlong, zoomPose } from '../../src/views/scene/pose';
import { Projector } from '../../src/views/scene/projector';

const RADIUS = 8300;
const first = new Projector(firstPose(RADIUS), 696, 728);

/** On the sphere, away from the eye and towards it. */
const far = first.back.map((part) => -RADIUS * part) as unknown as Vec3;
const near = first.back.map((part) => RADIUS * part) as unknown as Vec3;

describe('the pose', () => {
  test('shows the whole sphere of PMTs at first', () => {
    const { x, y } = first.project([0, 0, 0]);
    const distance = Math.hypot(...first.eye);
    const radius = (first.focal * RADIUS) / Math.sqrt(distance ** 2 - RADIUS ** 2);
    expect(x - radius).toBeGreaterThan(12);
    expect(y - radius).toBeGreaterThan(12);
    expect(radius).toBeGreaterThan(0.4 * 696);
  });

  test('has z up and azimuth growing towards the right of far PMTs', () => {
    expect(first.project([0, 0, 3000]).y).toBeLessThan(first.project([0, 0, 0]).y);
    expect(first.up[2]).toBeGreaterThan(0);
  });

  test('keeps the place under the pointer when it zooms in', () => {
    const pose = zoomPose(firstPose(RADIUS), 2, [0.4, -0.3]);
    const half = 348;
    const place = [348 + 0.4 * half, 364 - 0.3 * half] as const;
    const before = first.project([0, 0, 0]);
    const after = new Projector(pose, 696, 728).project([0, 0, 0]);
    expect(after.x - place[0]).toBeCloseTo(2 * (before.x - place[0]), 6);
    expect(after.y - place[1]).toBeCloseTo(2 * (before.y - place[1]), 6);
  });

  test('is the first again after zooming in and out elsewhere', () => {
    const zoomed = zoomPose(firstPose(RADIUS), 3, [0.5, 0.5]);
    const back = zoomPose(zoomed, 1 / 3, [-0.5, 0.2]);
    expect(back.zoom).toBeCloseTo(1, 12);
    expect(back.offset[0]).toBeCloseTo(firstPose(RADIUS).offset[0], 6);
    expect(back.offset[1]).toBeCloseTo(firstPose(RADIUS).offset[1], 6);
  });

  test('looks from an event to a PMT in the middle of the picture', () => {
    const to: Vec3 = [-7460, 3474, -1080];
    const along = new Projector(poseAlong([0, 0, 3000], to), 696, 728);
    const { x, y, depth } = along.project(to);
    expect([x, y]).toEqual([expect.closeTo(348, 6), expect.closeTo(364, 6)]);
    expect(depth).toBeCloseTo(Math.hypot(7460, 3474, 4080), 6);
  });

  test('turns the shorter way around', () => {
    const from = { ...firstPose(RADIUS), azimuth: 3 };
    const to = { ...firstPose(RADIUS), azimuth: -3 };
    expect(blendPoses(from, to, 0.5).azimuth).toBeCloseTo(Math.PI, 12);
    expect(blendPoses(from, to, 1).distance).toBe(to.distance);
  });
});

describe('picking', () => {
  const positions = new Float64Array([...far, ...near, NaN, 0, 0]);
  const all = new Uint8Array([1, 1, 1]);

  test('leaves out the near half, what is hidden and what has no position', () => {
    expect([...projectMarks(first, positions, all, false).isDrawn]).toEqual([1, 0, 0]);
    expect([...projectMarks(first, positions, all, true).isDrawn]).toEqual([1, 1, 0]);
    const none = new Uint8Array(3);
    expect([...projectMarks(first, positions, none, true).isDrawn]).toEqual([0, 0, 0]);
  });

  test('takes the nearest mark within reach', () => {
    const marks = {
      x: new Float32Array([100, 110, 104]),
      y: new Float32Array([50, 50, 50]),
      isDrawn: new Uint8Array([1, 1, 0]),
    };
    expect(pickMark(marks, 104, 50, 12)).toBe(0);
    expect(pickMark(marks, 108, 50, 12)).toBe(1);
    expect(pickMark(marks, 100, 62, 12)).toBe(0);
    expect(pickMark(marks, 100, 62.1, 12)).toBeNull();
  });
});

describe('a label', () => {
  const size = { width: 120, height: 24 };
  const view = { left: 0, top: 0, width: 400, height: 300 };
  const isBeside = false;

  test('stays in the view wherever its mark is', () => {
    for (let x = 0; x <= 400; x += 20) {
      for (let y = 0; y <= 300; y += 20) {
        const { left, top } = placeBox(size, { x, y, radius: 10, isBeside }, view, []);
        expect(left).toBeGreaterThanOrEqual(4);
        expect(top).toBeGreaterThanOrEqual(4);
        expect(left + size.width).toBeLessThanOrEqual(396);
        expect(top + size.height).toBeLessThanOrEqual(296);
      }
    }
  });

  test('makes way for another', () => {
    const anchor = { x: 200, y: 150, radius: 10, isBeside };
    const alone = placeBox(size, anchor, view, []);
    const other = { ...alone, ...size };
    const moved = placeBox(size, anchor, view, [other]);
    expect(moved.top + size.height).toBeLessThan(other.top);
  });
});
