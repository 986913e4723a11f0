import { element } from '../dom';
import { drawIcon } from '../icons';

/** A message about what the address asked for and the page does not have. */
export interface Problems {
  element: HTMLElement;
  /** Show these, or nothing. */
  show: (problems: readonly string[]) => void;
}

/** Make the message; it can be closed. */
export function createProblems(): Problems {
  const words = element('span');
  const close = element(
    'button',
    { type: 'button', class: 'notice-close', 'aria-label': 'Close' },
    drawIcon('close'),
  );
  const notice = element('div', { class: 'notice problems' });
  notice.append(words, close);
  notice.hidden = true;
  close.addEventListener('click', () => {
    notice.hidden = true;
  });
  return {
    element: notice,
    show(problems) {
      notice.hidden = problems.length === 0;
      words.textContent = problems.join(' ');
    },
  };
}
