import type { Model } from '../../model/model';
import { watchColours } from '../canvas';
import { element, setText } from '../dom';
import { drawIcon, type Icon } from '../icons';
import { makePopover } from '../popover';
import { resolveTheme } from '../theme';
import { createEventChooser } from './eventChooser';
import { describeEvent, describeSettings } from './facts';
import { createSearch } from './search';

/** What the buttons of the header do elsewhere on the page. */
export interface HeaderActions {
  openKeys: () => void;
  toggleSide: () => void;
  savePicture: () => void;
}

/** The header: what is shown, and how to find something else. */
export interface Header {
  element: HTMLElement;
  focusSearch: () => void;
  /** Tell whether the drawer is open. */
  setSideOpen: (isOpen: boolean) => void;
}

const MENU_WIDTH = 260;
const DEFAULT_TITLE = 'Shadow display';

function iconButton(icon: Icon, label: string, className: string): HTMLButtonElement {
  return element(
    'button',
    {
      type: 'button',
      class: `control ${className}`,
      'aria-label': label,
      title: label,
    },
    drawIcon(icon),
  );
}

function menuButton(icon: Icon, label: string): HTMLButtonElement {
  return element(
    'button',
    { type: 'button', class: 'menu-item' },
    drawIcon(icon),
    element('span', {}, label),
  );
}

/** Change between the light and the dark theme. */
export function toggleTheme(model: Model): void {
  const isDark = resolveTheme(model.state.theme) === 'dark';
  model.change({ theme: isDark ? 'light' : 'dark' });
}

/** On a phone: what has no room in the header. */
function createMenu(
  model: Model,
  actions: HeaderActions,
  facts: HTMLElement,
): { button: HTMLButtonElement; panel: HTMLElement; theme: HTMLElement } {
  const button = iconButton('more', 'More', 'phone-only');
  const theme = menuButton('moon', '');
  const picture = menuButton('picture', 'Save as PNG');
  const keys = menuButton('keys', 'Keys');
  const panel = element('div', { class: 'menu' }, facts, theme, picture, keys);
  const acts: [HTMLElement, () => void][] = [
    [
      theme,
      () => {
        toggleTheme(model);
      },
    ],
    [picture, actions.savePicture],
    [keys, actions.openKeys],
  ];
  for (const [item, act] of acts) {
    item.addEventListener('click', () => {
      panel.hidePopover();
      act();
    });
  }
  makePopover(button, panel, MENU_WIDTH, () => {
    theme.focus();
  });
  button.popoverTargetElement = panel;
  return { button, panel, theme };
}

/** Make the header. */
export function createHeader(model: Model, actions: HeaderActions): Header {
  const title = model.page.text.title === '' ? DEFAULT_TITLE : model.page.text.title;
  const heading = element('h1', { class: 'title', dir: 'auto', title }, title);
  const line = (): HTMLElement =>
    element(
      'p',
      { class: 'facts' },
      element('span', { class: 'facts-event' }),
      element('span', {}, describeSettings(model)),
    );
  const facts = line();
  const menuFacts = line();
  menuFacts.prepend(element('strong', { dir: 'auto' }, title));

  const search = createSearch(model, () => {
    header.classList.remove('searching');
  });
  const openSearch = iconButton('search', 'Find a PMT or event', 'phone-only');
  const focusSearch = (): void => {
    header.classList.add('searching');
    search.focus();
  };
  openSearch.addEventListener('click', focusSearch);

  const side = iconButton('side', 'Map and table', 'drawer-only');
  side.setAttribute('aria-controls', 'side');
  side.addEventListener('click', actions.toggleSide);
  const theme = iconButton('moon', '', 'wide-only');
  theme.addEventListener('click', () => {
    toggleTheme(model);
  });
  const keys = iconButton('keys', 'Keys', 'wide-only');
  keys.addEventListener('click', actions.openKeys);
  const menu = createMenu(model, actions, menuFacts);

  const header = element(
    'header',
    { class: 'header' },
    heading,
    createEventChooser(model),
    facts,
    search.element,
    side,
    theme,
    keys,
    openSearch,
    menu.button,
    menu.panel,
  );

  const update = (): void => {
    const event = describeEvent(model);
    for (const node of header.querySelectorAll('.facts-event')) setText(node, event);
    const isDark = resolveTheme(model.state.theme) === 'dark';
    const label = isDark ? 'Light theme' : 'Dark theme';
    const icon: Icon = isDark ? 'sun' : 'moon';
    theme.replaceChildren(drawIcon(icon));
    theme.setAttribute('aria-label', label);
    theme.title = label;
    menu.theme.replaceChildren(drawIcon(icon), element('span', {}, label));
  };
  model.subscribe((changed) => {
    if (changed.has('event')) update();
  });
  // The theme can change with the system's, too.
  watchColours(update);
  update();
  return {
    element: header,
    focusSearch,
    setSideOpen(isOpen) {
      side.setAttribute('aria-expanded', String(isOpen));
    },
  };
}
