import type { Vec3 } from '../../data/page';
import { type Choice, type Model, NO_PATH_LAYER } from '../../model/model';
import type { Colours } from '../canvas';
import { addDot, addMark, ringWidth, stepOfShare } from '../mark';
import { addLine } from './drawMarks';
import { placePoint, type MapLayout } from './layout';
import { projectDirection, traceCap } from './mollweide';

/** The cap of the sphere around the camera whose PMTs the 3D view leaves out. */
export interface LeftOut {
  direction: Vec3;
  /** Of the angle between the direction and the cap's edge. */
  cosine: number;
}

const GROUND_WIDTH = 5;
const SELECTED_RADIUS = 8;
const HOVERED_RADIUS = 7;
const EVENT_RADIUS = 6;

/** The size of the mark in a ring of a radius. */
const MARK_IN_RING = 1.1;

/** Draw the edge of the part that the 3D view leaves out. */
export function drawEdge(
  context: CanvasRenderingContext2D,
  layout: MapLayout,
  colours: Colours,
  leftOut: LeftOut,
): void {
  context.beginPath();
  for (const line of traceCap(leftOut.direction, leftOut.cosine)) {
    addLine(context, layout, line);
  }
  context.strokeStyle = colours.ground;
  context.lineWidth = 4;
  context.stroke();
  context.strokeStyle = colours.text;
  context.lineWidth = 1.5;
  context.setLineDash([5, 4]);
  context.stroke();
  context.setLineDash([]);
}

function drawRing(
  context: CanvasRenderingContext2D,
  colours: Colours,
  place: [number, number],
  radius: number,
  width: number,
): void {
  context.beginPath();
  context.arc(...place, radius, 0, 2 * Math.PI);
  context.fillStyle = colours.ground;
  context.fill();
  context.strokeStyle = colours.ground;
  context.lineWidth = GROUND_WIDTH;
  context.stroke();
  context.strokeStyle = colours.selection;
  context.lineWidth = width;
  context.stroke();
}

/** Mark the chosen event, if it is a single one off the centre. */
export function drawEvent(
  context: CanvasRenderingContext2D,
  model: Model,
  layout: MapLayout,
  colours: Colours,
  font: string,
): void {
  const event = model.state.event;
  if (event === 'all') return;
  const positions = model.page.eventPositions;
  const point = projectDirection([
    positions[3 * event] ?? NaN,
    positions[3 * event + 1] ?? NaN,
    positions[3 * event + 2] ?? NaN,
  ]);
  if (point === null) return;
  const place = placePoint(layout, point);
  drawRing(context, colours, place, EVENT_RADIUS, 2);
  context.beginPath();
  addDot(context, ...place, 4);
  context.fillStyle = colours.text;
  context.fill();
  if (!layout.hasLabels) return;
  const isLeft = place[0] > layout.x + 0.8 * layout.radius;
  const gap = isLeft ? -EVENT_RADIUS - 5 : EVENT_RADIUS + 5;
  context.font = `bold 12px ${font}`;
  context.textAlign = isLeft ? 'right' : 'left';
  context.textBaseline = 'middle';
  context.strokeStyle = colours.ground;
  context.lineWidth = 4;
  context.lineJoin = 'round';
  context.strokeText('event', place[0] + gap, place[1]);
  context.fillStyle = colours.text;
  context.fillText('event', place[0] + gap, place[1]);
}

/** Draw a ring around a PMT and its mark, larger, in it. */
export function drawChoice(
  context: CanvasRenderingContext2D,
  model: Model,
  choice: Choice,
  place: [number, number],
  colours: Colours,
  isSelected: boolean,
): void {
  const radius = isSelected ? SELECTED_RADIUS : HOVERED_RADIUS;
  drawRing(context, colours, place, radius, isSelected ? 2 : 1.5);
  const size = MARK_IN_RING * radius;
  const share =
    model.state.event === 'all' ? (model.shares()[choice.pmt] ?? NaN) : null;
  context.beginPath();
  if (share !== null && !Number.isNaN(share)) {
    addDot(context, ...place, size);
    context.fillStyle = colours.shares[stepOfShare(share)] ?? '';
    context.fill();
    return;
  }
  const layer = share === null ? model.layerOf(choice) : NO_PATH_LAYER;
  addMark(context, layer, ...place, size);
  context.fillStyle = colours.layers[layer] ?? '';
  context.strokeStyle = colours.noPath;
  context.lineWidth = ringWidth(size);
  if (layer === NO_PATH_LAYER) context.stroke();
  else context.fill();
}
