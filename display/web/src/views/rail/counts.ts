import { formatCompact, formatCount, formatPercent } from '../../model/format';
import { CLEAR_LAYER, LAYERS, type Model } from '../../model/model';
import { element, setText } from '../dom';
import { createLayerRow, isolatedLayer } from './layerRow';

/** The sentence under the number. */
function describeCounts(model: Model): [start: string, path: string, end: string] {
  const { shadowed, withPath } = model.counts();
  if (model.state.event === 'all') {
    return [`of ${formatCompact(withPath)} light paths`, '', ' shadowed'];
  }
  return [
    `${formatCount(shadowed)} of ${formatCount(withPath)} PMTs`,
    ' with a path',
    ' shadowed',
  ];
}

/** Make the counts of the chosen event: the number, and a row for each layer. */
export function createCounts(model: Model): HTMLElement {
  const number = element('strong', { class: 'number' });
  const start = element('span');
  const path = element('span', { class: 'phone-words' });
  const end = element('span');
  const rows = Array.from({ length: LAYERS }, (_, layer) =>
    createLayerRow(model, layer),
  );
  const showAll = element(
    'button',
    { type: 'button', class: 'link show-all' },
    'Show all (0)',
  );
  const hint = element('span', { class: 'hint' }, 'click isolates, 1–6');
  showAll.addEventListener('click', () => {
    model.showAll();
  });
  const heading = element('h2', { class: 'heading', id: 'counts-heading' });
  heading.append('Blocked first by');
  const counts = element(
    'section',
    { class: 'counts', 'aria-label': 'Counts' },
    element(
      'p',
      { class: 'total' },
      number,
      ' ',
      element('span', { class: 'total-words' }, start, path, end),
    ),
    element('div', { class: 'heading-line' }, heading, hint, showAll),
    element(
      'ul',
      { class: 'layers', 'aria-labelledby': 'counts-heading' },
      ...rows.slice(0, CLEAR_LAYER).map((row) => row.element),
    ),
    element(
      'ul',
      { class: 'layers others', 'aria-label': 'Not blocked' },
      ...rows.slice(CLEAR_LAYER).map((row) => row.element),
    ),
  );

  const update = (): void => {
    const { shadowed, withPath } = model.counts();
    setText(number, formatPercent(shadowed / withPath));
    const words = describeCounts(model);
    [start, path, end].forEach((node, at) => {
      setText(node, words[at] ?? '');
    });
    const isIsolated = isolatedLayer(model.state.layers) !== null;
    const isAll = model.state.layers.every(Boolean);
    counts.classList.toggle('has-isolated', isIsolated);
    hint.hidden = !isAll;
    showAll.hidden = isAll;
    for (const row of rows) row.update();
  };
  model.subscribe((changed) => {
    if (changed.has('event') || changed.has('layers')) update();
  });
  update();
  return counts;
}
