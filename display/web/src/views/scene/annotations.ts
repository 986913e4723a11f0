import type { Vec3 } from '../../data/page';
import { dot } from '../../data/vectors';
import { NO_PATH_LAYER } from '../../model/model';
import { addMark, ringWidth } from '../mark';
import { NEAREST, type Projector } from './projector';
import type { SceneColours } from './sceneColours';
import { addScaled } from './vectors';

/** A PMT that is marked with a ring. */
export interface RingedMark {
  at: Vec3;
  /** What its label says. */
  text: string;
  layer: number;
  /** Of the mark, where it is not the layer's. */
  colour: string;
}

/** What is drawn over the detector. */
export interface Annotations {
  event: Vec3 | null;
  /** The points of the light path from the event to the PMT; empty: none. */
  path: readonly Vec3[];
  selected: RingedMark | null;
  hovered: RingedMark | null;
}

const HALO = 5;
const PATH_WIDTH = 2;
export const RING_RADIUS = 10;
const HOVERED_RADIUS = 8.5;
/** Across the selected mark, CSS pixels. */
const SELECTED_SIZE = 11.5;
export const EVENT_RADIUS = 6;
const AXIS_LENGTH = 25;
const LETTER_GAP = 9;
/** On a phone the axes would lie on the picture. */
const LEAST_WIDTH_WITH_AXES = 480;
/** Of the axes' origin from the right and the bottom. */
const AXES_PLACE = [54, 44] as const;

/** Draw path, event, rings and axes on an empty canvas, in CSS pixels. */
export function drawAnnotations(
  pen: CanvasRenderingContext2D,
  projector: Projector,
  what: Annotations,
  colours: SceneColours,
): void {
  drawAxes(pen, projector, colours);
  drawPath(pen, projector, what.path, colours);
  if (what.event) drawEvent(pen, projector, what.event, colours);
  if (what.hovered) drawHovered(pen, projector, what.hovered, colours);
  if (what.selected) drawSelected(pen, projector, what.selected, colours);
}

/** The part of a piece that lies before the eye, or null. */
function clipPiece(projector: Projector, a: Vec3, b: Vec3): [Vec3, Vec3] | null {
  const depthOf = (p: Vec3): number =>
    -dot(addScaled(p, projector.eye, -1), projector.back) - NEAREST;
  const [da, db] = [depthOf(a), depthOf(b)];
  if (da <= 0 && db <= 0) return null;
  const cut = (): Vec3 => addScaled(a, addScaled(b, a, -1), da / (da - db));
  return [da > 0 ? a : cut(), db > 0 ? b : cut()];
}

function drawPath(
  pen: CanvasRenderingContext2D,
  projector: Projector,
  path: readonly Vec3[],
  colours: SceneColours,
): void {
  if (path.length < 2) return;
  pen.beginPath();
  for (let i = 1; i < path.length; ++i) {
    const [from, to] = [path[i - 1], path[i]];
    const piece = from && to && clipPiece(projector, from, to);
    if (!piece) continue;
    const [a, b] = [projector.project(piece[0]), projector.project(piece[1])];
    // One line through all points, so that its corners are joined.
    if (i === 1 || piece[0] !== from) pen.moveTo(a.x, a.y);
    pen.lineTo(b.x, b.y);
  }
  pen.lineJoin = pen.lineCap = 'round';
  strokeTwice(pen, PATH_WIDTH, HALO, colours);
  for (const point of path.slice(1, -1)) {
    const { x, y, depth } = projector.project(point);
    if (depth <= NEAREST) continue;
    fillCircle(pen, x, y, 3, colours.selection);
  }
}

function drawEvent(
  pen: CanvasRenderingContext2D,
  projector: Projector,
  event: Vec3,
  colours: SceneColours,
): void {
  const { x, y, depth } = projector.project(event);
  if (depth <= NEAREST) return;
  fillCircle(pen, x, y, EVENT_RADIUS + 2.2, colours.ground);
  strokeCircle(pen, x, y, EVENT_RADIUS, 1.8, colours.selection);
  fillCircle(pen, x, y, 2.2, colours.selection);
}

function drawSelected(
  pen: CanvasRenderingContext2D,
  projector: Projector,
  mark: RingedMark,
  colours: SceneColours,
): void {
  const { x, y, depth } = projector.project(mark.at);
  if (depth <= NEAREST) return;
  fillCircle(pen, x, y, RING_RADIUS + 2.5, colours.ground);
  strokeCircle(pen, x, y, RING_RADIUS, 2.2, colours.selection);
  drawMark(pen, x, y, SELECTED_SIZE, mark);
}

function drawHovered(
  pen: CanvasRenderingContext2D,
  projector: Projector,
  mark: RingedMark,
  colours: SceneColours,
): void {
  const { x, y, depth } = projector.project(mark.at);
  if (depth <= NEAREST) return;
  strokeCircle(pen, x, y, HOVERED_RADIUS, 4, colours.ground);
  strokeCircle(pen, x, y, HOVERED_RADIUS, 1.6, colours.selection);
}

function drawAxes(
  pen: CanvasRenderingContext2D,
  projector: Projector,
  colours: SceneColours,
): void {
  if (projector.width < LEAST_WIDTH_WITH_AXES) return;
  const [x, y] = [projector.width - AXES_PLACE[0], projector.height - AXES_PLACE[1]];
  pen.lineCap = pen.lineJoin = 'round';
  pen.font = '13px system-ui, "Segoe UI", Roboto, "Helvetica Neue", sans-serif';
  pen.textAlign = 'center';
  pen.textBaseline = 'middle';
  // All halos first: none may cover a line.
  for (const isHalo of [true, false]) {
    pen.strokeStyle = pen.fillStyle = isHalo ? colours.ground : colours.secondText;
    pen.lineWidth = isHalo ? HALO : 1.2;
    ['x', 'y', 'z'].forEach((name, axis) => {
      const right = projector.right[axis] ?? 0;
      const up = projector.up[axis] ?? 0;
      pen.beginPath();
      pen.moveTo(x, y);
      pen.lineTo(x + AXIS_LENGTH * right, y - AXIS_LENGTH * up);
      pen.stroke();
      const length = Math.hypot(right, up);
      // An axis that points to the eye has no room for its letter.
      if (length < 0.12) return;
      const reach = AXIS_LENGTH + LETTER_GAP / length;
      const [letterX, letterY] = [x + reach * right, y - reach * up];
      if (isHalo) pen.strokeText(name, letterX, letterY);
      else pen.fillText(name, letterX, letterY);
    });
  }
}

function drawMark(
  pen: CanvasRenderingContext2D,
  x: number,
  y: number,
  size: number,
  mark: RingedMark,
): void {
  pen.beginPath();
  addMark(pen, mark.layer, x, y, size);
  pen.fillStyle = pen.strokeStyle = mark.colour;
  if (mark.layer === NO_PATH_LAYER) {
    pen.lineWidth = ringWidth(size);
    pen.stroke();
  } else {
    pen.fill();
  }
}

function strokeTwice(
  pen: CanvasRenderingContext2D,
  width: number,
  halo: number,
  colours: SceneColours,
): void {
  pen.strokeStyle = colours.ground;
  pen.lineWidth = halo;
  pen.stroke();
  pen.strokeStyle = colours.selection;
  pen.lineWidth = width;
  pen.stroke();
}

function strokeCircle(
  pen: CanvasRenderingContext2D,
  x: number,
  y: number,
  radius: number,
  width: number,
  colour: string,
): void {
  pen.beginPath();
  pen.arc(x, y, radius, 0, 2 * Math.PI);
  pen.strokeStyle = colour;
  pen.lineWidth = width;
  pen.stroke();
}

function fillCircle(
  pen: CanvasRenderingContext2D,
  x: number,
  y: number,
  radius: number,
  colour: string,
): void {
  pen.beginPath();
  pen.arc(x, y, radius, 0, 2 * Math.PI);
  pen.fillStyle = colour;
  pen.fill();
}
