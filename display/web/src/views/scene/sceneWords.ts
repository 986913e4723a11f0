import { formatCount, formatPercent, nameInside, nameLayer } from '../../model/format';
import { CLEAR_LAYER, type Choice, type Model } from '../../model/model';

function nameLayerInside(layer: number): string {
  return layer < CLEAR_LAYER ? nameInside(layer + 1) : nameLayer(layer).toLowerCase();
}

function tellShare(share: number): string {
  return Number.isNaN(share) ? 'no path' : `${formatPercent(share)} of events`;
}

/** What a label says of a PMT: "PMT 4512 · hold-down ropes". */
export function labelChoice(model: Model, choice: Choice): string {
  const name = model.page.text.pmtNames[choice.pmt] ?? '';
  if (model.state.event === 'all') {
    return `PMT ${name} · ${tellShare(model.shares()[choice.pmt] ?? Number.NaN)}`;
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
  return `3D view, ${what}: ${formatCount(shadowed)} of ${formatCount(withPath)} ${of} shadowed`;
}

/** What stands below the picture. */
export function captionScene(hasNearHalf: boolean): string {
  const turn = matchMedia('(pointer: coarse)').matches
    ? 'Drag to turn, pinch to zoom.'
    : 'Drag to turn, wheel to zoom.';
  return hasNearHalf ? turn : `${turn} The near half of the PMTs is left out.`;
}
