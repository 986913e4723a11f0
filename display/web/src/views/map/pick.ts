import { placePoint, type MapLayout } from './layout';

/** The PMTs that can be picked, on the canvas. */
export interface Targets {
  /** By PMT: x and y on the map, as `projectPMTs`. */
  points: Float64Array;
  /** By PMT: 1 where it can be picked. */
  shown: Uint8Array;
  layout: MapLayout;
}

function placeOf({ points, layout }: Targets, pmt: number): [number, number] {
  return placePoint(layout, {
    x: points[2 * pmt] ?? NaN,
    y: points[2 * pmt + 1] ?? NaN,
  });
}

/** The PMT with the smallest cost; null if none has a finite one. */
function findLeast(
  targets: Targets,
  costOf: (x: number, y: number, pmt: number) => number,
): number | null {
  let best: number | null = null;
  let least = Infinity;
  for (let pmt = 0; pmt < targets.shown.length; ++pmt) {
    if (targets.shown[pmt] !== 1) continue;
    const cost = costOf(...placeOf(targets, pmt), pmt);
    if (cost < least) {
      least = cost;
      best = pmt;
    }
  }
  return best;
}

/** The PMT nearest to a place on the canvas; null if all are farther than @p within. */
export function findNearest(
  targets: Targets,
  x: number,
  y: number,
  within: number,
): number | null {
  return findLeast(targets, (toX, toY) => {
    const distance = Math.hypot(toX - x, toY - y);
    return distance <= within ? distance : Infinity;
  });
}

/**
 * The next PMT from another in a direction on the canvas, at most 45 degrees off it.
 *
 * @returns null if there is none
 */
export function findNext(
  targets: Targets,
  from: number,
  right: number,
  down: number,
): number | null {
  const [x, y] = placeOf(targets, from);
  return findLeast(targets, (toX, toY, pmt) => {
    if (pmt === from) return Infinity;
    const along = (toX - x) * right + (toY - y) * down;
    const across = Math.abs((toX - x) * down - (toY - y) * right);
    // Near the direction counts more than near the PMT, so that a row of PMTs is
    // followed where it bends.
    return along > 0 && across <= along ? along + 2 * across : Infinity;
  });
}
