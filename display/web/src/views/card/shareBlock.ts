import type { Page } from '../../data/page';
import { formatCount, formatShare, nameLayer } from '../../model/format';
import { layerOfVerdict } from '../../model/counts';
import { CLEAR_LAYER, LAYERS, type Model, NO_PATH_LAYER } from '../../model/model';
import { element } from '../dom';
import { createMark } from '../mark';

/** By layer: the number of events for which a PMT has such a verdict. */
export function countEventsOfPMT(page: Page, pmt: number): number[] {
  const counts = new Array<number>(LAYERS).fill(0);
  const pmts = page.text.pmtNames.length;
  for (let event = 0; event < page.text.eventNames.length; ++event) {
    const layer = layerOfVerdict(page.direct.verdicts[event * pmts + pmt] ?? 0);
    counts[layer] = (counts[layer] ?? 0) + 1;
  }
  return counts;
}

/** Show from how many of all events a PMT is hidden, and by what. */
export function drawShareBlock(model: Model, pmt: number): HTMLElement {
  const counts = countEventsOfPMT(model.page, pmt);
  const all = counts.reduce((sum, count) => sum + count, 0);
  const withPath = all - (counts[NO_PATH_LAYER] ?? 0);
  const hidden = withPath - (counts[CLEAR_LAYER] ?? 0);
  const sentence =
    withPath === 0
      ? 'No event has a light path to it.'
      : `Hidden from ${formatShare(hidden, withPath)} of the events`;
  const rows = counts.flatMap((count, layer) => {
    if (count === 0) return [];
    const of = layer === NO_PATH_LAYER ? all : withPath;
    return [
      element(
        'tr',
        {},
        element('th', { scope: 'row' }, createMark(layer), nameLayer(layer)),
        element('td', {}, formatCount(count)),
        element('td', {}, formatShare(count, of)),
      ),
    ];
  });
  return element(
    'div',
    { class: 'card-shares' },
    element('p', { class: 'card-verdict' }, sentence),
    element(
      'p',
      { class: 'card-note' },
      `${formatCount(hidden)} of ${formatCount(withPath)} events with a light path`,
    ),
    element('table', { class: 'card-counts' }, element('tbody', {}, ...rows)),
  );
}
