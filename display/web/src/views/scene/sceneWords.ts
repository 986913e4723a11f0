import palette from '../../../../palette.json';
import { CLEAR_LAYER, type Choice, type Model, NO_PATH_LAYER } from '../../model/model';

/** The name of a layer inside a sentence: "hold-down ropes". */
export function nameLayerInside(layer: number): string {
  if (layer === CLEAR_LAYER) return palette.clear.toLowerCase();
  if (layer === NO_PATH_LAYER) return palette.noPath.toLowerCase();
  const name = Object.values(palette.components)[layer]?.name ?? '';
  // "AV pipes" keeps its capitals.
  return /^[A-Z][a-z]/.test(name) ? name.charAt(0).toLowerCase() + name.slice(1) : name;
}

function percent(share: number): string {
  return Number.isNaN(share) ? 'no path' : `${(100 * share).toFixed(1)} % of events`;
}

/** What a label says of a PMT: "PMT 4512 · hold-down ropes". */
export function labelChoice(model: Model, choice: Choice): string {
  const name = model.page.text.pmtNames[choice.pmt] ?? '';
  if (model.state.event === 'all') {
    return `PMT ${name} · ${percent(model.shares()[choice.pmt] ?? Number.NaN)}`;
  }
  const light = choice.reflected ? ', reflected light' : '';
  return `PMT ${name}${light} · ${nameLayerInside(model.layerOf(choice))}`;
}

/** The name of the view: the event and its counts. */
export function nameScene(model: Model): string {
  const { event } = model.state;
  const { shadowed, withPath } = model.counts();
  const what =
    event === 'all' ? 'all events' : `event ${model.page.text.eventNames[event] ?? ''}`;
  const of = event === 'all' ? 'light paths' : 'PMTs with a light path';
  const counts = [shadowed, withPath].map((count) => count.toLocaleString('en-US'));
  return `3D view, ${what}: ${counts[0] ?? ''} of ${counts[1] ?? ''} ${of} shadowed`;
}

/** What stands below the picture. */
export function captionScene(hasNearHalf: boolean): string {
  const turn = matchMedia('(pointer: coarse)').matches
    ? 'Drag to turn, pinch to zoom.'
    : 'Drag to turn, wheel to zoom.';
  return hasNearHalf ? turn : `${turn} The near half of the PMTs is left out.`;
}
