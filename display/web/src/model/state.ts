import { Verdict } from '../data/page';
import type { Page } from '../data/page';
import { LAYERS } from './model';
import type { Choice, State } from './model';

/** Above so many events a page opens with the shares over all of them. */
const MOST_SINGLE_EVENTS = 200;

const BY_NAME: State['sort'] = { column: 'pmt', descending: false };
const BY_SHARE: State['sort'] = { column: 'share', descending: true };

/** The state in which a page opens. */
export function firstState(page: Page): State {
  const events = page.text.eventNames.length;
  const isOfAll = events === 0 || events > MOST_SINGLE_EVENTS;
  return {
    event: isOfAll ? 'all' : 0,
    selected: null,
    hovered: null,
    layers: new Array<boolean>(LAYERS).fill(true),
    query: '',
    sort: isOfAll ? BY_SHARE : BY_NAME,
    switches: { vessel: true, hardware: true, nearHalf: false, lightPaths: false },
    theme: 'system',
    mainView: '3d',
    hasShortcuts: true,
    has3D: true,
  };
}

/** What must change with the event. */
export function settle(page: Page, next: State, previous: State): Partial<State> {
  const { event } = next;
  if (event !== 'all' && !(event in page.text.eventNames)) {
    throw new RangeError(`There is no event ${event}.`);
  }
  if (event === previous.event) return {};
  const isOfAll = event === 'all';
  const isOtherTable = isOfAll !== (previous.event === 'all');
  const isSorted = next.sort !== previous.sort;
  return {
    selected: fit(page, event, next.selected),
    hovered: fit(page, event, next.hovered),
    sort: !isOtherTable || isSorted ? next.sort : isOfAll ? BY_SHARE : BY_NAME,
  };
}

/** The direct light of a PMT where the event has no reflected light to it. */
function fit(page: Page, event: State['event'], choice: Choice | null): Choice | null {
  if (!choice?.reflected) return choice;
  const pair = event === 'all' ? -1 : event * page.text.pmtNames.length + choice.pmt;
  const verdict = page.reflected?.verdicts[pair] ?? Verdict.NoReflectedPath;
  return verdict < Verdict.TotalReflection ? choice : { ...choice, reflected: false };
}
