import { formatCount } from '../../model/format';
import type { Model } from '../../model/model';
import { foldName } from '../../model/names';
import { element, setText } from '../dom';
import { createEventList, type EventChoice } from '../eventList';
import { drawIcon } from '../icons';
import { makePopover } from '../popover';
import { describeChosenEvent } from './facts';

const LIST_WIDTH = 320;

/** The name that the chooser shows. */
function nameEvent(model: Model): string {
  const { eventNames } = model.page.text;
  const { event } = model.state;
  if (event === 'all') return `All ${formatCount(eventNames.length)} events`;
  return eventNames[event] ?? '';
}

/** The events whose names hold a text, with "all" before them if it is empty. */
function findEvents(names: readonly string[], text: string): EventChoice[] {
  const wanted = foldName(text.trim());
  const found: EventChoice[] = [];
  if (wanted === '' && names.length > 1) found.push('all');
  names.forEach((name, at) => {
    if (foldName(name).includes(wanted)) found.push(at);
  });
  return found;
}

/** Make the control that chooses an event: one back, a list to search, one on. */
export function createEventChooser(model: Model): HTMLElement {
  const names = model.page.text.eventNames;
  const isSingle = names.length === 1;

  const previous = element(
    'button',
    { type: 'button', class: 'step', 'aria-label': 'Previous event', title: '[' },
    drawIcon('previous'),
  );
  const next = element(
    'button',
    { type: 'button', class: 'step', 'aria-label': 'Next event', title: ']' },
    drawIcon('next'),
  );
  const name = element('bdi', { class: 'event-name' });
  const place = element('span', { class: 'event-place' });
  const open = element(
    'button',
    { type: 'button', class: 'event-button', 'aria-haspopup': 'dialog' },
    element('span', { class: 'visually-hidden' }, 'Event: '),
    element('span', { class: 'event-line' }, name, drawIcon('down')),
    place,
  );
  const filter = element('input', {
    type: 'text',
    class: 'field',
    role: 'combobox',
    placeholder: 'Filter the events',
    'aria-label': 'Filter the events',
    'aria-expanded': 'true',
    'aria-autocomplete': 'list',
    autocomplete: 'off',
    spellcheck: 'false',
  });
  const none = element('p', { class: 'none' });
  const panel = element('div', { role: 'dialog', 'aria-label': 'Choose an event' });
  const list = createEventList(model, filter, (event) => {
    panel.hidePopover();
    model.change({ event });
  });
  filter.setAttribute('aria-controls', list.element.id);
  panel.append(filter, list.element, none);

  const chooser = element(
    'div',
    { class: 'event-chooser', role: 'group', 'aria-label': 'Event' },
    previous,
    open,
    next,
    panel,
  );
  const fillList = (): void => {
    const found = findEvents(names, filter.value);
    list.setEvents(
      found,
      filter.value === '' ? model.state.event : (found[0] ?? 'all'),
    );
    setText(none, found.length === 0 ? 'No event has this name.' : '');
  };
  makePopover(chooser, panel, LIST_WIDTH, () => {
    filter.value = '';
    filter.focus();
    fillList();
  });
  open.popoverTargetElement = panel;
  filter.addEventListener('input', fillList);
  previous.addEventListener('click', () => {
    model.step(-1);
  });
  next.addEventListener('click', () => {
    model.step(1);
  });

  const update = (): void => {
    const { event } = model.state;
    setText(name, nameEvent(model));
    setText(place, describeChosenEvent(model));
    open.disabled = isSingle;
    previous.disabled = isSingle || event === 'all';
    next.disabled = isSingle || event === names.length - 1;
  };
  model.subscribe((changed) => {
    if (changed.has('event')) update();
  });
  update();
  return chooser;
}
