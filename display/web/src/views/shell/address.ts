import { readAddress, writeAddress } from '../../model/address';
import type { Model, State } from '../../model/model';

/** What an address does not say is as on a page that opens. */
const FIRST: Partial<State> = { selected: null, query: '', theme: 'system' };

/** Waits for the last of several changes, ms: browsers limit how often it changes. */
const DELAY = 200;

/**
 * Take the state from the address of the page, and keep the address that of the
 * state.
 *
 * @param onProblems  told what the address names that the page does not have
 */
export function followAddress(
  model: Model,
  onProblems: (problems: readonly string[]) => void,
): void {
  let written = location.hash;
  let timer = 0;

  const read = (): void => {
    const { state, problems } = readAddress(model.page, location.hash);
    model.change(state);
    onProblems(problems);
  };
  const write = (): void => {
    written = `#${writeAddress(model.page, model.state)}`;
    if (written !== location.hash) history.replaceState(null, '', written);
  };

  read();
  window.addEventListener('hashchange', () => {
    if (location.hash === written) return;
    const { layers } = model.state;
    model.change({ ...FIRST, layers: layers.map(() => true) });
    read();
  });
  model.subscribe((changed) => {
    if (changed.size === 1 && changed.has('hovered')) return;
    clearTimeout(timer);
    timer = window.setTimeout(write, DELAY);
  });
}
