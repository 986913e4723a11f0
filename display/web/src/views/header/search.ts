import { formatCount } from '../../model/format';
import type { Model } from '../../model/model';
import { element, setText } from '../dom';
import { drawIcon } from '../icons';
import { createFoundEvents } from './foundEvents';

/** The field that searches PMTs and events. */
export interface Search {
  element: HTMLElement;
  /** Put the cursor into the field. */
  focus(): void;
}

/** Waits this long after a key, ms: typing stays fluent over many PMTs. */
const DELAY = 80;

/**
 * Make the search.
 *
 * @param onLeave  called when the user is done with it
 */
export function createSearch(model: Model, onLeave: () => void): Search {
  const field = element('input', {
    type: 'search',
    class: 'field',
    placeholder: 'Find a PMT or event',
    'aria-label': 'Find a PMT or event',
    'aria-describedby': 'search-help',
    autocomplete: 'off',
    autocapitalize: 'off',
    spellcheck: 'false',
    enterkeyhint: 'search',
  });
  const found = element('span', { class: 'search-found' });
  const hint = element('kbd', { class: 'search-hint', 'aria-hidden': 'true' }, '/');
  const leave = element(
    'button',
    { type: 'button', class: 'search-leave', 'aria-label': 'Close the search' },
    drawIcon('close'),
  );
  const help = element(
    'span',
    { id: 'search-help', class: 'visually-hidden' },
    'Names as they are, or by:pipe, path>9, z<0.',
  );
  const events = createFoundEvents(model, () => {
    onLeave();
    field.blur();
  });
  const search = element(
    'search',
    { class: 'search' },
    field,
    found,
    hint,
    leave,
    help,
    events.element,
  );

  let timer = 0;
  const send = (): void => {
    clearTimeout(timer);
    if (field.value !== model.state.query) model.change({ query: field.value });
  };
  field.addEventListener('input', () => {
    clearTimeout(timer);
    timer = window.setTimeout(send, DELAY);
  });
  field.addEventListener('keydown', (event) => {
    if (event.key === 'Enter') {
      send();
      if (field.value !== '') model.takeFound();
    } else if (event.key === 'Escape') {
      if (field.value === '') {
        onLeave();
        field.blur();
      }
      field.value = '';
      send();
    } else return;
    event.preventDefault();
    event.stopPropagation();
  });
  leave.addEventListener('click', () => {
    field.value = '';
    send();
    onLeave();
  });

  const update = (): void => {
    const { query } = model.state;
    if (document.activeElement !== field || query === '') field.value = query;
    setText(found, query === '' ? '' : formatCount(model.found().pmts));
    events.update();
    search.classList.toggle('filled', query !== '');
  };
  model.subscribe((changed) => {
    if (changed.has('query') || changed.has('event')) update();
  });
  update();
  return {
    element: search,
    focus() {
      field.focus();
      field.select();
    },
  };
}
