import { element } from '../dom';

/** Show the frame of the page at once; what it holds is not read yet. */
export function showFrame(root: HTMLElement): HTMLElement {
  const stage = element('section', { class: 'stage' });
  root.replaceChildren(
    element(
      'header',
      { class: 'header' },
      element('h1', { class: 'title' }, document.title),
    ),
    element(
      'main',
      { class: 'main' },
      element('div', { class: 'rail' }),
      stage,
      element('div', { class: 'side' }),
    ),
  );
  return stage;
}

/** Say that the data cannot be read, and why. */
export function showFailure(root: HTMLElement, reason: string): void {
  root.replaceChildren(
    element(
      'main',
      { class: 'failure', role: 'alert' },
      element('h1', {}, 'The data in this page cannot be read. Write the page again.'),
      element('p', {}, reason),
    ),
  );
}
