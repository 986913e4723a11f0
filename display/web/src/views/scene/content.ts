import type { Page, Vec3 } from '../../data/page';
import { lengthOf, pointAt } from '../../data/vectors';
import { type Choice, CLEAR_LAYER, type Model, NO_PATH_LAYER } from '../../model/model';
import { stepOfShare } from '../mark';
import { MOST_LIGHT_PATHS } from '../rail/switches';
import type { Annotations, RingedMark } from './annotations';
import { FADED_KIND, FIRST_SHARE_KIND, type SceneColours } from './sceneColours';
import { labelChoice } from './sceneWords';
import { isFinitePoint } from './vectors';

/** By PMT: how it is drawn. */
export function listKinds(model: Model): Uint8Array {
  const shown = model.shown();
  const kinds = new Uint8Array(shown.length);
  const shares = model.state.event === 'all' ? model.shares() : null;
  for (let pmt = 0; pmt < kinds.length; ++pmt) {
    if (!shown[pmt]) kinds[pmt] = FADED_KIND;
    else if (shares) kinds[pmt] = kindOfShare(shares[pmt] ?? Number.NaN);
    else kinds[pmt] = model.layerOf({ pmt, reflected: false });
  }
  return kinds;
}

function kindOfShare(share: number): number {
  return Number.isNaN(share) ? NO_PATH_LAYER : FIRST_SHARE_KIND + stepOfShare(share);
}

/** What is drawn over the detector, in the model's state. */
export function listAnnotations(model: Model, colours: SceneColours): Annotations {
  const { event, selected, hovered } = model.state;
  const place = event === 'all' ? null : pointAt(model.page.eventPositions, event);
  const isSame =
    selected?.pmt === hovered?.pmt && selected?.reflected === hovered?.reflected;
  return {
    event: place && isFinitePoint(place) ? place : null,
    path: (selected && model.pathOf(selected)?.points) ?? [],
    selected: ringMark(model, selected, colours),
    hovered: isSame ? null : ringMark(model, hovered, colours),
  };
}

function ringMark(
  model: Model,
  choice: Choice | null,
  colours: SceneColours,
): RingedMark | null {
  if (!choice) return null;
  const at = pointAt(model.page.pmtPositions, choice.pmt);
  if (!isFinitePoint(at)) return null;
  const text = labelChoice(model, choice);
  const isShare = model.state.event === 'all';
  const share = isShare ? (model.shares()[choice.pmt] ?? Number.NaN) : Number.NaN;
  if (!Number.isNaN(share)) {
    const colour = colours.shares[stepOfShare(share)] ?? '';
    return { at, text, layer: CLEAR_LAYER, colour };
  }
  const layer = isShare ? NO_PATH_LAYER : model.layerOf(choice);
  return { at, text, layer, colour: colours.layers[layer] ?? '' };
}

/** The light paths of all shown PMTs; none if they are too many. */
export function listLightPaths(model: Model): (readonly Vec3[])[] {
  const shown = model.shown();
  const pmts = [...shown.keys()].filter((pmt) => shown[pmt]);
  if (pmts.length > MOST_LIGHT_PATHS) return [];
  return pmts.flatMap((pmt) => {
    const points = model.pathOf({ pmt, reflected: false })?.points;
    return points ? [points] : [];
  });
}

/** The largest distance of a PMT from the centre; of the vessel if there is none. */
export function measureRadius(page: Page): number {
  let radius = page.text.vessel.outerRadius;
  for (let pmt = 0; 3 * pmt < page.pmtPositions.length; ++pmt) {
    const distance = lengthOf(pointAt(page.pmtPositions, pmt));
    if (Number.isFinite(distance) && distance > radius) radius = distance;
  }
  return radius;
}
