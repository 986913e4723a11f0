import { formatCount, formatPercent, nameLayer } from '../../model/format';
import { type Model, NO_PATH_LAYER } from '../../model/model';
import { element } from '../dom';
import { createMark } from '../mark';

/** Show from how many of all events a PMT is hidden, and by what. */
export function drawShareBlock(model: Model, pmt: number): HTMLElement {
  const { layers, shadowed, withPath, all } = model.countsOfPMT(pmt);
  const sentence =
    withPath === 0
      ? 'No event has a light path to it.'
      : `Hidden from ${formatPercent(shadowed / withPath)} of the events`;
  const rows = layers.flatMap((count, layer) => {
    if (count === 0) return [];
    const of = layer === NO_PATH_LAYER ? all : withPath;
    return [
      element(
        'tr',
        {},
        element('th', { scope: 'row' }, createMark(layer), nameLayer(layer)),
        element('td', {}, formatCount(count)),
        element('td', {}, formatPercent(count / of)),
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
      `${formatCount(shadowed)} of ${formatCount(withPath)} events with a light path`,
    ),
    element('table', { class: 'card-counts' }, element('tbody', {}, ...rows)),
  );
}
