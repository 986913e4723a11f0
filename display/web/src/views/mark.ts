import palette from '../../../palette.json';
import { CLEAR_LAYER, NO_PATH_LAYER } from '../model/model';
import { svgElement } from './dom';

type Outline = readonly (readonly number[])[];

/** By component, around the origin in units of a shape's size, y down. */
const OUTLINES: readonly Outline[] = Object.values(palette.components).map(
  ({ shape }) => palette.shapes[shape as keyof typeof palette.shapes],
);

// Diameters in units of a shape's size, as on the maps that the program draws.
const CLEAR_DOT = palette.sizes.clear / palette.sizes.shape;
const NO_PATH_RING = 0.78;

/** Of a mark beside words, CSS pixels at the usual size of text. */
const MARK_SIZE = 12;
const MARK_BOX = 14;
const OUTLINE_WIDTH = 1.3;

/** The custom property that holds the colour of a layer. */
export function colourProperty(layer: number): string {
  if (layer === CLEAR_LAYER) return '--clear';
  if (layer === NO_PATH_LAYER) return '--no-path';
  return `--component-${layer + 1}`;
}

/** The steps in which shares of events are drawn. */
export const SHARE_STEPS = 5;

/** The step of a share of events, from 0: a fifth begins the second. */
export function stepOfShare(share: number): number {
  return Math.min(SHARE_STEPS - 1, Math.floor(share * SHARE_STEPS));
}

/** The custom property that holds the colour of a step of shares. */
export function shareProperty(step: number): string {
  return `--share-${step + 1}`;
}

/** The width of the line of the ring of "no path"; other marks are filled. */
export function ringWidth(size: number): number {
  return Math.min(1.4, Math.max(0.6, 0.16 * size));
}

/** Add the mark of a layer to a path: to be filled, but for "no path" stroked. */
export function addMark(
  path: CanvasPath,
  layer: number,
  x: number,
  y: number,
  size: number,
): void {
  const outline = OUTLINES[layer];
  if (outline === undefined) {
    const diameter = layer === NO_PATH_LAYER ? NO_PATH_RING : CLEAR_DOT;
    addDot(path, x, y, diameter * size);
    return;
  }
  outline.forEach(([right = 0, down = 0], corner) => {
    if (corner === 0) path.moveTo(x + right * size, y + down * size);
    else path.lineTo(x + right * size, y + down * size);
  });
  path.closePath();
}

/** Add a circle to a path. */
export function addDot(path: CanvasPath, x: number, y: number, diameter: number): void {
  path.moveTo(x + 0.5 * diameter, y);
  path.arc(x, y, 0.5 * diameter, 0, 2 * Math.PI);
}

function outlineText(outline: Outline): string {
  const corners = outline.map(
    ([right = 0, down = 0]) => `${right * MARK_SIZE} ${down * MARK_SIZE}`,
  );
  return `M${corners.join('L')}Z`;
}

function circleText(diameter: number): string {
  const r = 0.5 * diameter;
  return `M${-r} 0A${r} ${r} 0 1 1 ${r} 0A${r} ${r} 0 1 1 ${-r} 0Z`;
}

const PATH_TEXTS: readonly string[] = [
  ...OUTLINES.map(outlineText),
  circleText(CLEAR_DOT * MARK_SIZE),
  circleText(NO_PATH_RING * MARK_SIZE),
];

/** Make the mark of a layer for use beside words. It is hidden from screen readers. */
export function createMark(layer: number): SVGSVGElement {
  const half = MARK_BOX / 2;
  const mark = svgElement(
    'svg',
    {
      class: 'mark',
      'aria-hidden': 'true',
      // In proportion to text.
      width: `${MARK_BOX / 16}rem`,
      height: `${MARK_BOX / 16}rem`,
      viewBox: `${-half} ${-half} ${MARK_BOX} ${MARK_BOX}`,
    },
    svgElement('path'),
  );
  changeMark(mark, layer);
  return mark;
}

/**
 * Make a mark that of another layer.
 *
 * @param isOutline  of a component that is not loaded
 */
export function changeMark(
  mark: SVGSVGElement,
  layer: number,
  isOutline = false,
): void {
  const path = mark.firstElementChild;
  if (!(path instanceof SVGPathElement)) return;
  path.setAttribute('d', PATH_TEXTS[layer] ?? '');
  const colour = `var(${colourProperty(layer)})`;
  const isStroked = isOutline || layer === NO_PATH_LAYER;
  path.style.fill = isStroked ? 'none' : colour;
  path.style.stroke = isStroked ? colour : 'none';
  path.style.strokeWidth = String(isOutline ? OUTLINE_WIDTH : ringWidth(MARK_SIZE));
}
