import { pointAt } from '../../data/vectors';
import type { Projector } from './projector';
import { NEAREST } from './projector';

/** Where the PMTs are in the picture. */
export interface ProjectedMarks {
  /** By PMT, CSS pixels from the view's top left. */
  x: Float32Array;
  y: Float32Array;
  /** By PMT: 1 if it is drawn and may be picked. */
  isDrawn: Uint8Array;
}

/**
 * @param shown     by PMT: 1 where layers and search show it
 * @param hasNear   whether the half that shows its back is drawn, too
 */
export function projectMarks(
  projector: Projector,
  positions: Float64Array,
  shown: Uint8Array,
  hasNear: boolean,
): ProjectedMarks {
  const count = positions.length / 3;
  const marks = {
    x: new Float32Array(count),
    y: new Float32Array(count),
    isDrawn: new Uint8Array(count),
  };
  for (let pmt = 0; pmt < count; ++pmt) {
    const place = pointAt(positions, pmt);
    const { x, y, depth } = projector.project(place);
    marks.x[pmt] = x;
    marks.y[pmt] = y;
    const isSeen =
      depth > NEAREST &&
      x >= 0 &&
      y >= 0 &&
      x <= projector.width &&
      y <= projector.height;
    if (isSeen && shown[pmt] && (hasNear || projector.showsFace(place))) {
      marks.isDrawn[pmt] = 1;
    }
  }
  return marks;
}

/** The drawn PMT nearest to a point within @p reach, CSS pixels; else null. */
export function pickMark(
  marks: ProjectedMarks,
  x: number,
  y: number,
  reach: number,
): number | null {
  let best = null;
  let smallest = reach * reach;
  for (let pmt = 0; pmt < marks.x.length; ++pmt) {
    if (!marks.isDrawn[pmt]) continue;
    const dx = (marks.x[pmt] ?? 0) - x;
    const dy = (marks.y[pmt] ?? 0) - y;
    const square = dx * dx + dy * dy;
    if (square <= smallest) [best, smallest] = [pmt, square];
  }
  return best;
}
