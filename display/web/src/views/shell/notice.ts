import type { Model } from '../../model/model';
import { element, setText } from '../dom';

const NO_WEBGL = 'This browser offers no WebGL 2.';
const LOST = 'The browser has taken its graphics back.';
const SAME = 'The map, the table and the search show the same verdicts.';

/**
 * Make the message in place of the 3D view.
 *
 * @param retry  tries to draw in 3D again; null where it has never been possible
 */
export function createNotice(model: Model, retry: (() => void) | null): HTMLElement {
  const reason = element('span');
  const button = element('button', { type: 'button', class: 'action' }, 'Try again');
  button.hidden = retry === null;
  button.addEventListener('click', () => {
    retry?.();
  });
  const notice = element(
    'div',
    { class: 'notice' },
    element('strong', {}, 'The 3D view is not available.'),
    ' ',
    reason,
    ' ',
    element('div', { class: 'notice-action' }, button),
  );
  const update = (): void => {
    notice.hidden = model.state.has3D;
    setText(reason, `${retry === null ? NO_WEBGL : LOST} ${SAME}`);
  };
  model.subscribe((changed) => {
    if (changed.has('has3D')) update();
  });
  update();
  return notice;
}
