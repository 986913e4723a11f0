import { formatCount, formatPercent } from '../model/format';
import type { Model, State } from '../model/model';
import { element } from './dom';

/** An event, or all of them. */
export type EventChoice = State['event'];

/** A list of events of any length: only the rows in sight exist. */
export interface EventList {
  element: HTMLElement;
  /** Show these events, with the one that is active. */
  setEvents(events: readonly EventChoice[], active: EventChoice): void;
}

const SPARE_ROWS = 4;
const KEY_PAGE = 8;
let lists = 0;

/**
 * Make a list of events to choose from.
 *
 * @param driver  what has the focus: the list is operated by its keys
 * @param choose  called with the chosen event
 */
export function createEventList(
  model: Model,
  driver: HTMLElement | null,
  choose: (event: EventChoice) => void,
): EventList {
  lists += 1;
  const prefix = `events-${lists}`;
  const rowHeight = matchMedia('(pointer: coarse)').matches ? 44 : 32;
  const spacer = element('div', { role: 'presentation', class: 'event-list-rows' });
  const list = element(
    'div',
    { role: 'listbox', id: prefix, class: 'event-list', 'aria-label': 'Events' },
    spacer,
  );
  const focusHolder = driver ?? list;
  if (driver === null) list.tabIndex = 0;

  let events: readonly EventChoice[] = [];
  let active = 0;

  const percentOf = (event: EventChoice): string => {
    if (event === 'all') return '';
    const counts = model.countsOfEvents()[event];
    return counts === undefined ? '' : formatPercent(counts.shadowed / counts.withPath);
  };

  const makeRow = (event: EventChoice, at: number): HTMLElement => {
    const name =
      event === 'all'
        ? `All ${formatCount(model.page.text.eventNames.length)} events`
        : (model.page.text.eventNames[event] ?? '');
    const row = element(
      'div',
      {
        role: 'option',
        id: `${prefix}-${at}`,
        class: 'event-row',
        'aria-selected': String(event === model.state.event),
        'aria-setsize': events.length,
        'aria-posinset': at + 1,
      },
      element('span', { class: 'event-row-name', dir: 'auto' }, name),
      element('span', { class: 'event-row-share' }, percentOf(event)),
    );
    row.style.top = `${at * rowHeight}px`;
    row.style.height = `${rowHeight}px`;
    row.classList.toggle('active', at === active);
    row.addEventListener('click', () => {
      choose(event);
    });
    return row;
  };

  const draw = (): void => {
    const first = Math.max(0, Math.floor(list.scrollTop / rowHeight) - SPARE_ROWS);
    const inSight = Math.ceil(list.clientHeight / rowHeight) + 2 * SPARE_ROWS;
    spacer.replaceChildren(
      ...events
        .slice(first, first + inSight)
        .map((event, at) => makeRow(event, first + at)),
    );
    if (events.length > 0) {
      focusHolder.setAttribute('aria-activedescendant', `${prefix}-${active}`);
    } else {
      focusHolder.removeAttribute('aria-activedescendant');
    }
  };

  const goTo = (at: number): void => {
    active = Math.max(0, Math.min(events.length - 1, at));
    const top = active * rowHeight;
    if (top < list.scrollTop) list.scrollTop = top;
    const lowest = top + rowHeight - list.clientHeight;
    if (lowest > list.scrollTop) list.scrollTop = lowest;
    draw();
  };

  list.addEventListener('scroll', draw, { passive: true });

  const moves: Readonly<Record<string, () => number>> = {
    ArrowDown: () => active + 1,
    ArrowUp: () => active - 1,
    PageDown: () => active + KEY_PAGE,
    PageUp: () => active - KEY_PAGE,
  };
  focusHolder.addEventListener('keydown', (event) => {
    const move = moves[event.key];
    if (move !== undefined) goTo(move());
    else if (event.key === 'Enter') {
      const chosen = events[active];
      if (chosen !== undefined) choose(chosen);
    } else return;
    event.preventDefault();
  });

  return {
    element: list,
    setEvents(newEvents, newActive) {
      events = newEvents;
      // First, as the list is as high as its rows until it has no more room.
      spacer.style.height = `${events.length * rowHeight}px`;
      list.scrollTop = 0;
      goTo(Math.max(0, events.indexOf(newActive)));
    },
  };
}
