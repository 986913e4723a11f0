import type { Model } from '../../model/model';
import { element } from '../dom';
import { drawIcon } from '../icons';
import type { Shortcut } from './shortcuts';

/** The dialog that lists the keys and can switch them off. */
export interface KeysDialog {
  element: HTMLDialogElement;
  open: () => void;
}

/** Make the dialog; @p list is asked when it opens first. */
export function createKeysDialog(
  model: Model,
  list: () => readonly Shortcut[],
): KeysDialog {
  const close = element(
    'button',
    { type: 'button', class: 'control keys-close', 'aria-label': 'Close' },
    drawIcon('close'),
  );
  const rows = element('dl', { class: 'keys-list' });
  const check = element('input', { type: 'checkbox', class: 'layer-check' });
  const toggle = element(
    'label',
    { class: 'keys-toggle' },
    check,
    'Keys of one character act on the page',
  );
  const dialog = element(
    'dialog',
    { class: 'keys', 'aria-labelledby': 'keys-heading' },
    element(
      'div',
      { class: 'keys-head' },
      element('h2', { class: 'keys-title', id: 'keys-heading' }, 'Keys'),
      close,
    ),
    rows,
    toggle,
  );
  close.addEventListener('click', () => {
    dialog.close();
  });
  dialog.addEventListener('click', (event) => {
    // The dialog itself is hit only where its ground shows.
    if (event.target === dialog) dialog.close();
  });
  check.addEventListener('change', () => {
    model.change({ hasShortcuts: check.checked });
  });
  const update = (): void => {
    check.checked = model.state.hasShortcuts;
    document.documentElement.classList.toggle(
      'without-shortcuts',
      !model.state.hasShortcuts,
    );
  };
  model.subscribe((changed) => {
    if (changed.has('hasShortcuts')) update();
  });
  update();
  return {
    element: dialog,
    open() {
      if (rows.childElementCount === 0) {
        rows.append(
          ...list().map(({ labels, does }) =>
            element(
              'div',
              { class: 'keys-row' },
              element('dt', {}, ...labels.map((label) => element('kbd', {}, label))),
              element('dd', {}, does),
            ),
          ),
        );
      }
      if (!dialog.open) dialog.showModal();
    },
  };
}
