import { formatCount, formatPercent } from '../../model/format';
import type { Model } from '../../model/model';
import { element, setText } from '../dom';

/** The events that the search has found, under its field. */
export interface FoundEvents {
  element: HTMLElement;
  update(): void;
}

/** More are found sooner by another letter. */
const MOST_EVENTS = 6;

/**
 * Make the list.
 *
 * @param onChoose  called after an event was chosen
 */
export function createFoundEvents(model: Model, onChoose: () => void): FoundEvents {
  const list = element('ul', { class: 'found-list', 'aria-label': 'Events found' });
  const note = element('p', { class: 'found-note' });
  const panel = element('div', { class: 'found-events' }, list, note);

  const makeItem = (event: number): HTMLElement => {
    const counts = model.countsOfEvents()[event];
    const share = counts ? formatPercent(counts.shadowed / counts.withPath) : '';
    const button = element(
      'button',
      { type: 'button', class: 'found-event' },
      element('span', { class: 'visually-hidden' }, 'Event '),
      element(
        'bdi',
        { class: 'event-row-name' },
        model.page.text.eventNames[event] ?? '',
      ),
      element('span', { class: 'event-row-share' }, share),
    );
    button.addEventListener('click', () => {
      model.change({ event, query: '' });
      onChoose();
    });
    return element('li', {}, button);
  };

  return {
    element: panel,
    update() {
      const { events, unused } = model.found();
      const isSearching = model.state.query !== '';
      const shown = isSearching ? events.slice(0, MOST_EVENTS) : [];
      list.replaceChildren(...shown.map(makeItem));
      const more = isSearching ? events.length - shown.length : 0;
      const notes = [
        more > 0 ? `and ${formatCount(more)} events more` : '',
        unused.length > 0 ? `Not used here: ${unused.join(', ')}` : '',
      ];
      setText(note, notes.filter((words) => words !== '').join('. '));
      panel.hidden = shown.length === 0 && note.textContent === '';
    },
  };
}
