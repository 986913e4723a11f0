import '../../style/sheet.css';
import type { Model } from '../../model/model';
import { element } from '../dom';
import type { CardView } from './card';

/** A sheet from below with the card of the selected PMT. */
export interface Sheet {
  readonly element: HTMLElement;
}

/** How far down a drag closes the sheet, as a part of its height, or CSS pixels. */
const CLOSING_PART = 0.35;
const CLOSING_DISTANCE = 90;

/** How fast a drag closes it, CSS pixels in a millisecond. */
const CLOSING_SPEED = 0.6;

/** A drag of the sheet. */
interface Drag {
  pointer: number;
  from: number;
  /** The last place and time, and how fast it went then. */
  y: number;
  time: number;
  speed: number;
}

/** Let the sheet be dragged down by its grip: closes it, or it goes back. */
function makeDraggable(grip: HTMLElement, sheet: HTMLElement, close: () => void): void {
  let drag: Drag | null = null;
  const end = (event: PointerEvent, mayClose: boolean): void => {
    if (drag?.pointer !== event.pointerId) return;
    const distance = Math.max(0, event.clientY - drag.from);
    const enough = Math.min(CLOSING_DISTANCE, CLOSING_PART * sheet.offsetHeight);
    const isFast = drag.speed > CLOSING_SPEED;
    drag = null;
    sheet.classList.remove('is-dragged');
    sheet.style.removeProperty('--drag');
    if (mayClose && (distance > enough || (isFast && distance > 0))) close();
  };
  grip.addEventListener('pointerdown', (event) => {
    if (!event.isPrimary || event.button !== 0) return;
    const { pointerId, clientY, timeStamp } = event;
    drag = { pointer: pointerId, from: clientY, y: clientY, time: timeStamp, speed: 0 };
    grip.setPointerCapture(pointerId);
    sheet.classList.add('is-dragged');
  });
  grip.addEventListener('pointermove', (event) => {
    if (drag?.pointer !== event.pointerId) return;
    const time = event.timeStamp - drag.time;
    if (time > 0) drag.speed = (event.clientY - drag.y) / time;
    drag.y = event.clientY;
    drag.time = event.timeStamp;
    sheet.style.setProperty('--drag', `${Math.max(0, event.clientY - drag.from)}px`);
  });
  grip.addEventListener('pointerup', (event) => {
    end(event, true);
  });
  grip.addEventListener('pointercancel', (event) => {
    end(event, false);
  });
}

/**
 * Put a card into a sheet in @p container that comes from below when a PMT is
 * selected. Dragging it down, or the card's close button, lets the PMT go.
 *
 * @param card  one for the sheet alone
 */
export function createSheet(
  container: HTMLElement,
  card: CardView,
  model: Model,
): Sheet {
  const grip = element('div', { class: 'sheet-grip' });
  const content = element('div', { class: 'sheet-content' }, card.element);
  const sheet = element('div', { class: 'sheet' }, grip, content);
  makeDraggable(grip, sheet, () => {
    model.select(null);
  });
  const update = (): void => {
    sheet.classList.toggle('is-open', model.state.selected !== null);
    // What is below the screen gets no focus.
    sheet.inert = model.state.selected === null;
  };
  model.subscribe((changed) => {
    if (changed.has('selected')) update();
  });
  update();
  container.append(sheet);
  return { element: sheet };
}
