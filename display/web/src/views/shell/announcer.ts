import {
  describeChoice,
  formatCount,
  formatPercent,
  nameLayer,
} from '../../model/format';
import type { Model, State } from '../../model/model';
import { element, setText } from '../dom';
import { isolatedLayer } from '../rail/layerRow';

/** Waits for the last of several changes, ms: only what stays is told. */
const DELAY = 250;

/** What a change is told as; empty: nothing. */
function describeChange(model: Model, changed: ReadonlySet<keyof State>): string {
  const { selected, event, layers, query, has3D } = model.state;
  if (changed.has('has3D')) {
    return has3D ? 'The 3D view is back' : 'The 3D view is not available';
  }
  if (changed.has('selected')) {
    return selected === null ? 'Nothing selected' : describeChoice(model, selected);
  }
  if (changed.has('query')) {
    if (query === '') return 'Search cleared';
    const { pmts } = model.found();
    return pmts === 0 ? 'No PMT found' : `${formatCount(pmts)} PMTs found`;
  }
  if (changed.has('event')) {
    const { shadowed, withPath } = model.counts();
    const { eventNames } = model.page.text;
    const name = event === 'all' ? 'All events' : `Event ${eventNames[event] ?? ''}`;
    return `${name}, ${formatPercent(shadowed / withPath)} shadowed`;
  }
  if (changed.has('layers')) {
    const only = isolatedLayer(layers);
    if (only !== null) return `Only ${nameLayer(only)}`;
    return layers.every(Boolean) ? 'All shown' : '';
  }
  return '';
}

/** Tell choices to screen readers: the only live region of the page. */
export function createAnnouncer(model: Model): HTMLElement {
  const region = element('div', { role: 'status', class: 'visually-hidden' });
  let timer = 0;
  model.subscribe((changed) => {
    const words = describeChange(model, changed);
    if (words === '') return;
    clearTimeout(timer);
    timer = window.setTimeout(() => {
      setText(region, words);
    }, DELAY);
  });
  return region;
}
