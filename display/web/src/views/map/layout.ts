import palette from '../../../../palette.json';
import type { Page } from '../../data/page';
import { projectDirection, type MapPoint } from './mollweide';

/** Where the map lies on its canvas, CSS pixels. */
export interface MapLayout {
  width: number;
  height: number;
  /** The middle of the ellipse. */
  x: number;
  y: number;
  /** Half its width; its half height is half as much. */
  radius: number;
  /** Of the shapes of components. */
  markSize: number;
  hasLabels: boolean;
}

/** Room for rings around marks at the edge, and beside it for labels of parallels. */
const MARGIN = 10;
const SIDE_MARGIN = 4;
const LABEL_MARGIN = 24;

/** Too small for words. */
const LEAST_WIDTH_WITH_LABELS = 480;

/** Fit the map for a number of PMTs into a canvas. */
export function layOutMap(
  width: number,
  height: number,
  pmts: number,
  isLarge: boolean,
): MapLayout {
  const hasLabels = isLarge && width >= LEAST_WIDTH_WITH_LABELS;
  const margin = isLarge ? (hasLabels ? LABEL_MARGIN : SIDE_MARGIN) : MARGIN;
  const radius = Math.max(1, Math.min(width / 2 - margin, height - 2 * MARGIN));
  const areaOfPMT = (Math.PI * radius * radius) / 2 / Math.max(1, pmts);
  const { shape, largest } = palette.sizes;
  return {
    width,
    height,
    x: width / 2,
    y: height / 2,
    radius,
    markSize: Math.min(shape * Math.sqrt(areaOfPMT), largest),
    hasLabels,
  };
}

/** Place a point of the map on the canvas. */
export function placePoint(layout: MapLayout, point: MapPoint): [number, number] {
  const half = layout.radius / 2;
  return [layout.x + half * point.x, layout.y - half * point.y];
}

/** The x and y on the map of each PMT in turn; NaN for one at the centre. */
export function projectPMTs(page: Page): Float64Array {
  const positions = page.pmtPositions;
  const points = new Float64Array((positions.length / 3) * 2);
  for (let pmt = 0; pmt < points.length / 2; ++pmt) {
    const point = projectDirection([
      positions[3 * pmt] ?? NaN,
      positions[3 * pmt + 1] ?? NaN,
      positions[3 * pmt + 2] ?? NaN,
    ]);
    points[2 * pmt] = point?.x ?? NaN;
    points[2 * pmt + 1] = point?.y ?? NaN;
  }
  return points;
}
