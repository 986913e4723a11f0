import { CLEAR_LAYER, NO_PATH_LAYER, type Model } from '../../model/model';
import type { Colours } from '../canvas';
import { addDot, addMark, ringWidth, stepOfShare } from '../mark';
import { placePoint, type MapLayout } from './layout';
import { pointAt, traceMeridian, type MapPoint } from './mollweide';

const PARALLELS = [-60, -30, 0, 30, 60];
const MERIDIANS = [-120, -60, 0, 60, 120];

/** From the bottom up: the rare lie on top. */
const DRAWING_ORDER = [CLEAR_LAYER, NO_PATH_LAYER, 0, 1, 2, 3, 4, 5];

/** A fill of a path takes longer than in proportion to the marks in it. */
const MARKS_OF_PATH = 200;

// Diameters in units of a shape's size.
const SHARE_DOT = 0.88;
const HIDDEN_DOT = 0.36;

/** Add a line through points of the map to a path. */
export function addLine(
  path: CanvasPath,
  layout: MapLayout,
  points: readonly MapPoint[],
): void {
  points.forEach((point, i) => {
    const [x, y] = placePoint(layout, point);
    if (i === 0) path.moveTo(x, y);
    else path.lineTo(x, y);
  });
}

/** Draw the ellipse and the graticule in it. */
export function drawGraticule(
  context: CanvasRenderingContext2D,
  layout: MapLayout,
  colours: Colours,
): void {
  context.beginPath();
  for (const latitude of PARALLELS) {
    addLine(context, layout, [pointAt(180, latitude), pointAt(-180, latitude)]);
  }
  for (const azimuth of MERIDIANS) addLine(context, layout, traceMeridian(azimuth));
  context.strokeStyle = colours.hairline;
  context.lineWidth = 1;
  context.stroke();
  context.beginPath();
  context.ellipse(
    layout.x,
    layout.y,
    layout.radius,
    layout.radius / 2,
    0,
    0,
    2 * Math.PI,
  );
  context.strokeStyle = colours.noPath;
  context.stroke();
}

/** Write the latitudes beside the parallels. */
export function drawLatitudes(
  context: CanvasRenderingContext2D,
  layout: MapLayout,
  colours: Colours,
  font: string,
): void {
  context.font = `12px ${font}`;
  context.fillStyle = colours.secondText;
  context.textAlign = 'right';
  context.textBaseline = 'middle';
  // There is no room beside the equator.
  for (const latitude of PARALLELS.filter((parallel) => parallel !== 0)) {
    const [x, y] = placePoint(layout, pointAt(180, latitude));
    const minus = latitude < 0 ? '−' : '';
    context.fillText(`${minus}${Math.abs(latitude)}°`, x - 6, y);
  }
}

/** Collects places on the canvas by look. */
class Places {
  private readonly places = new Map<number, number[]>();

  add(look: number, x: number, y: number): void {
    const places = this.places.get(look);
    if (places === undefined) this.places.set(look, [x, y]);
    else places.push(x, y);
  }

  /** Call @p draw with paths that hold a look's marks, some at a time. */
  draw(
    look: number,
    add: (path: Path2D, x: number, y: number) => void,
    draw: (path: Path2D) => void,
  ): void {
    const places = this.places.get(look) ?? [];
    for (let begin = 0; begin < places.length; begin += 2 * MARKS_OF_PATH) {
      const path = new Path2D();
      const end = Math.min(places.length, begin + 2 * MARKS_OF_PATH);
      for (let i = begin; i < end; i += 2) {
        add(path, places[i] ?? 0, places[i + 1] ?? 0);
      }
      draw(path);
    }
  }
}

/** Looks beside the layers: not shown, and the steps of shares. */
const HIDDEN = -1;
const FIRST_SHARE = 100;

function collectPlaces(model: Model, points: Float64Array, layout: MapLayout): Places {
  const places = new Places();
  const shown = model.shown();
  const shares = model.state.event === 'all' ? model.shares() : null;
  const lookOf = (pmt: number): number => {
    if (shown[pmt] !== 1) return HIDDEN;
    if (shares === null) return model.layerOf({ pmt, reflected: false });
    const share = shares[pmt] ?? NaN;
    return Number.isNaN(share) ? NO_PATH_LAYER : FIRST_SHARE + stepOfShare(share);
  };
  for (let pmt = 0; pmt < points.length / 2; ++pmt) {
    const point = { x: points[2 * pmt] ?? NaN, y: points[2 * pmt + 1] ?? NaN };
    if (Number.isNaN(point.x)) continue;
    places.add(lookOf(pmt), ...placePoint(layout, point));
  }
  return places;
}

/**
 * Draw the PMTs: their verdicts, or with all events the shares of events hidden from
 * them. Those that layers and search leave out become dots.
 */
export function drawPMTs(
  context: CanvasRenderingContext2D,
  model: Model,
  points: Float64Array,
  layout: MapLayout,
  colours: Colours,
): void {
  const places = collectPlaces(model, points, layout);
  const size = layout.markSize;
  const drawDots = (look: number, diameter: number, colour: string): void => {
    context.fillStyle = colour;
    places.draw(
      look,
      (path, x, y) => {
        addDot(path, x, y, diameter * size);
      },
      (path) => {
        context.fill(path);
      },
    );
  };
  drawDots(HIDDEN, HIDDEN_DOT, colours.clear);
  context.lineWidth = ringWidth(size);
  for (const layer of DRAWING_ORDER) {
    const colour = colours.layers[layer] ?? '';
    context.fillStyle = colour;
    context.strokeStyle = colour;
    places.draw(
      layer,
      (path, x, y) => {
        addMark(path, layer, x, y, size);
      },
      (path) => {
        if (layer === NO_PATH_LAYER) context.stroke(path);
        else context.fill(path);
      },
    );
  }
  colours.shares.forEach((colour, step) => {
    drawDots(FIRST_SHARE + step, SHARE_DOT, colour);
  });
}
