import { NO_PATH_LAYER, CLEAR_LAYER, type Model, type Switch } from '../../model/model';
import { toggleTheme } from '../header/header';

/** What keys do to the views, which the model does not know. */
export interface ViewActions {
  focusSearch: () => void;
  openKeys: () => void;
  zoom: (by: 1 | -1) => void;
  showFirstView: () => void;
  lookAlongPath: () => void;
}

/** A key, or keys that do the like. */
export interface Shortcut {
  /** As the browser names them; empty where a view acts on its own. */
  keys: readonly string[];
  /** As they are shown. */
  labels: readonly string[];
  does: string;
  run(key: string): void;
}

/** All keys of the page, in the order in which they are listed. */
export function listShortcuts(model: Model, actions: ViewActions): Shortcut[] {
  const flip = (name: Switch) => () => {
    const { switches } = model.state;
    model.change({ switches: { ...switches, [name]: !switches[name] } });
  };
  const only = (labels: readonly string[], layers: string, from: number): Shortcut => ({
    keys: labels,
    labels:
      labels.length > 2 ? [`${labels[0] ?? ''} … ${labels.at(-1) ?? ''}`] : labels,
    does: layers,
    run(key) {
      model.isolate(from + labels.indexOf(key));
    },
  });
  const handled = (labels: readonly string[], does: string): Shortcut => ({
    keys: [],
    labels,
    does,
    run: () => undefined,
  });
  const key = (keys: readonly string[], does: string, run: () => void): Shortcut => ({
    keys: keys.flatMap((one) => [one, one.toLowerCase()]),
    labels: keys,
    does,
    run,
  });
  return [
    key(['/'], 'Search', actions.focusSearch),
    key(['['], 'Previous event', () => {
      model.step(-1);
    }),
    key([']'], 'Next event', () => {
      model.step(1);
    }),
    handled(['↑', '↓', '←', '→'], 'By focus: turn the view, next PMT, row, event'),
    handled(['Enter'], 'Select'),
    {
      ...key(['Escape'], 'Let go', () => {
        model.select(null);
      }),
      labels: ['Esc'],
    },
    only(['1', '2', '3', '4', '5', '6'], 'Only this component; again: all', 0),
    only(['7'], 'Only clear', CLEAR_LAYER),
    only(['8'], 'Only no path', NO_PATH_LAYER),
    key(['0'], 'Show all', () => {
      model.showAll();
    }),
    {
      ...key(['+'], 'Zoom in', () => {
        actions.zoom(1);
      }),
      keys: ['+', '='],
    },
    {
      ...key(['-'], 'Zoom out', () => {
        actions.zoom(-1);
      }),
      labels: ['−'],
    },
    key(['Home'], 'First view', actions.showFirstView),
    key(['M'], 'Swap map and 3D', () => {
      if (!model.state.has3D) return;
      model.change({ mainView: model.state.mainView === 'map' ? '3d' : 'map' });
    }),
    key(['V'], 'Vessel and neck', flip('vessel')),
    key(['H'], 'Hardware', flip('hardware')),
    key(['N'], 'Near half of the PMTs', flip('nearHalf')),
    key(['P'], 'Look along the path', actions.lookAlongPath),
    key(['T'], 'Light or dark theme', () => {
      toggleTheme(model);
    }),
    key(['?'], 'Keys', actions.openKeys),
  ];
}

const TYPING =
  'input:not([type="checkbox"]), textarea, select, [contenteditable], [role="listbox"]';

function isTyping(target: EventTarget | null): boolean {
  return target instanceof Element && target.closest(TYPING) !== null;
}

/** Whether something lies over the page that has keys of its own. */
function isCovered(): boolean {
  return document.querySelector('dialog[open], :popover-open') !== null;
}

/**
 * Act on the keys. Those that also type a character can be switched off; the views act
 * first, on what concerns only them.
 */
export function listenToKeys(model: Model, shortcuts: readonly Shortcut[]): void {
  document.addEventListener('keydown', (event) => {
    if (event.defaultPrevented || event.ctrlKey || event.metaKey || event.altKey)
      return;
    if (isTyping(event.target) || isCovered()) return;
    if (event.key.length === 1 && !model.state.hasShortcuts) return;
    const shortcut = shortcuts.find(({ keys }) => keys.includes(event.key));
    if (shortcut === undefined) return;
    event.preventDefault();
    shortcut.run(event.key);
  });
}
