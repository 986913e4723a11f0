import type { MainView, Model } from '../../model/model';
import { element } from '../dom';

const TABS: readonly [MainView, string][] = [
  ['3d', '3D'],
  ['map', 'Map'],
  ['table', 'Table'],
];

/** Make the tabs that choose the one view a phone shows. */
export function createTabs(model: Model): HTMLElement {
  const buttons = TABS.map(([view, name]) => {
    const button = element(
      'button',
      { type: 'button', role: 'tab', class: 'tab', 'aria-controls': 'stage-view' },
      name,
    );
    button.addEventListener('click', () => {
      model.change({ mainView: view });
    });
    return button;
  });
  const tabs = element(
    'div',
    { role: 'tablist', class: 'tabs', 'aria-label': 'View' },
    ...buttons,
  );
  const shownTabs = (): HTMLElement[] => buttons.filter((button) => !button.hidden);
  tabs.addEventListener('keydown', (event) => {
    const step = { ArrowRight: 1, ArrowLeft: -1 }[event.key];
    if (step === undefined) return;
    const shown = shownTabs();
    const from = shown.findIndex((tab) => tab === document.activeElement);
    const to = shown[(from + step + shown.length) % shown.length];
    to?.focus();
    to?.click();
    event.preventDefault();
    event.stopPropagation();
  });
  const update = (): void => {
    const { mainView, has3D } = model.state;
    const chosen = mainView === '3d' && !has3D ? 'map' : mainView;
    TABS.forEach(([view], at) => {
      const button = buttons[at];
      if (button === undefined) return;
      button.hidden = view === '3d' && !has3D;
      button.setAttribute('aria-selected', String(view === chosen));
      button.tabIndex = view === chosen ? 0 : -1;
    });
  };
  model.subscribe((changed) => {
    if (changed.has('mainView') || changed.has('has3D')) update();
  });
  update();
  return tabs;
}
