import { describe, expect, test } from 'vitest';
import { layOutMap, placePoint } from '../../src/views/map/layout';
import { findNearest, findNext, type Targets } from '../../src/views/map/pick';

const layout = layOutMap(420, 220, 8000, false);

/** PMTs at places on the map. */
function targetsAt(...points: [number, number][]): Targets {
  return {
    points: Float64Array.from(points.flat()),
    shown: new Uint8Array(points.length).fill(1),
    layout,
  };
}

describe('layOutMap', () => {
  test('fits the ellipse in with room for rings', () => {
    expect(layout.radius).toBe(200);
    expect(placePoint(layout, { x: -2, y: 0 })).toEqual([10, 110]);
    expect(placePoint(layout, { x: 0, y: 1 })).toEqual([210, 10]);
  });

  test('sizes marks by the area of a PMT, and large ones by a limit', () => {
    const areaOfPMT = (Math.PI * 200 * 100) / 8000;
    expect(layout.markSize).toBeCloseTo(0.93 * Math.sqrt(areaOfPMT), 12);
    expect(layOutMap(420, 220, 10, false).markSize).toBe(14);
  });

  test('has words only where it is large', () => {
    expect(layOutMap(900, 700, 8000, true).hasLabels).toBe(true);
    expect(layOutMap(390, 200, 8000, true).hasLabels).toBe(false);
    expect(layOutMap(900, 700, 8000, false).hasLabels).toBe(false);
  });
});

describe('findNearest', () => {
  const targets = targetsAt([0, 0], [0.1, 0], [1, 0.5]);

  test('finds the nearest within the distance', () => {
    expect(findNearest(targets, 214, 110, 12)).toBe(0);
    expect(findNearest(targets, 216, 110, 12)).toBe(1);
    expect(findNearest(targets, 210, 122, 12)).toBe(0);
    expect(findNearest(targets, 210, 123, 12)).toBeNull();
  });

  test('does not find what is not shown', () => {
    const shown = Uint8Array.from([0, 1, 1]);
    expect(findNearest({ ...targets, shown }, 211, 110, 12)).toBe(1);
  });

  test('does not find a PMT without a direction', () => {
    expect(findNearest(targetsAt([NaN, NaN]), 210, 110, Infinity)).toBeNull();
  });
});

describe('findNext', () => {
  // A row that rises to the right, and one PMT above.
  const targets = targetsAt([0, 0], [0.2, 0.02], [0.4, 0.04], [0, 0.3], [-0.1, 0.11]);

  test('follows a row', () => {
    expect(findNext(targets, 0, 1, 0)).toBe(1);
    expect(findNext(targets, 1, 1, 0)).toBe(2);
    expect(findNext(targets, 2, -1, 0)).toBe(1);
  });

  test('goes up by the screen, and not to what lies aside', () => {
    expect(findNext(targets, 0, 0, -1)).toBe(3);
  });

  test('does not turn aside by more than 45 degrees', () => {
    expect(findNext(targetsAt([0, 0], [0.1, 0.2]), 0, 1, 0)).toBeNull();
    expect(findNext(targetsAt([0, 0], [0.2, 0.1]), 0, 1, 0)).toBe(1);
  });

  test('stays where there is nothing more', () => {
    expect(findNext(targets, 2, 1, 0)).toBeNull();
  });
});
