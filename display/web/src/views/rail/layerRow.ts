import {
  formatCompact,
  formatCount,
  formatPercent,
  nameLayer,
} from '../../model/format';
import { CLEAR_LAYER, NO_PATH_LAYER, type Counts, type Model } from '../../model/model';
import { element, setText } from '../dom';
import { changeMark, createMark } from '../mark';

/** A row of the rail: shows, hides and isolates one layer, and counts it. */
export interface LayerRow {
  element: HTMLElement;
  update(): void;
}

/** Why a component has no counts; empty if it has. */
function missingReason(model: Model, layer: number): string {
  const hardware = model.page.text.hardware[layer];
  if (hardware === undefined || hardware.state === 'on') return '';
  return hardware.state === 'off' ? 'not loaded' : hardware.state;
}

/** The part of the bars' length that stands for all light paths, at most. */
const WIDEST_SHARE = 0.52;

/** What the longest possible bar stands for: all bars share the scale. */
function barScale(counts: Counts): number {
  const most = Math.max(...counts.layers.slice(0, CLEAR_LAYER));
  return Math.max(WIDEST_SHARE, most / Math.max(1, counts.withPath));
}

/** The layers that are shown, if it is a single one. */
export function isolatedLayer(layers: readonly boolean[]): number | null {
  const first = layers.indexOf(true);
  return first >= 0 && !layers.includes(true, first + 1) ? first : null;
}

/** Make the row of a layer. */
export function createLayerRow(model: Model, layer: number): LayerRow {
  const name = nameLayer(layer);
  const reason = missingReason(model, layer);
  const isMissing = reason !== '';
  const isComponent = layer < CLEAR_LAYER;

  const check = element('input', {
    type: 'checkbox',
    class: 'layer-check',
    'aria-label': `Show ${name}`,
    disabled: isMissing,
  });
  const mark = createMark(layer);
  changeMark(mark, layer, isMissing);
  const count = element('span', { class: 'layer-count' });
  const percent = element('span', { class: 'layer-percent' });
  const label = element('span', { class: 'layer-name' }, name);
  const button = element(
    'button',
    {
      type: 'button',
      class: 'layer-button',
      title: isMissing ? '' : `Only ${name} (${layer + 1})`,
      disabled: isMissing,
    },
    mark,
    label,
    ...(isMissing
      ? [element('span', { class: 'layer-reason' }, reason)]
      : [count, percent]),
  );
  const bar = element('span', { class: 'layer-bar', 'aria-hidden': 'true' });
  bar.style.setProperty('--bar', `var(--component-${layer + 1})`);
  if (isComponent && !isMissing) button.append(bar);
  const row = element('li', { class: 'layer' }, check, button);
  if (isMissing) row.classList.add('missing');

  check.addEventListener('change', () => {
    model.change({
      layers: model.state.layers.map((isShown, at) =>
        at === layer ? check.checked : isShown,
      ),
    });
  });
  button.addEventListener('click', () => {
    model.isolate(layer);
  });

  return {
    element: row,
    update() {
      const { layers } = model.state;
      const isIsolated = isolatedLayer(layers) === layer;
      check.checked = !isMissing && layers[layer] === true;
      button.setAttribute('aria-pressed', String(isIsolated));
      row.classList.toggle('isolated', isIsolated);
      row.classList.toggle('off', layers[layer] !== true);
      if (isMissing) return;
      const counts = model.counts();
      const number = counts.layers[layer] ?? 0;
      const of = layer === NO_PATH_LAYER ? counts.all : counts.withPath;
      setText(
        count,
        model.state.event === 'all' ? formatCompact(number) : formatCount(number),
      );
      setText(percent, formatPercent(number / of));
      const share = counts.withPath === 0 ? 0 : number / counts.withPath;
      bar.style.width = `${(100 * share) / barScale(counts)}%`;
      bar.classList.toggle('empty', number === 0);
    },
  };
}
