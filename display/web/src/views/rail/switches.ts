import { formatCount } from '../../model/format';
import type { Model, Switch } from '../../model/model';
import { element, setText } from '../dom';

/** More light paths than this hide what they cross. */
export const MOST_LIGHT_PATHS = 1000;

const NAMES: Readonly<Record<Switch, string>> = {
  vessel: 'Vessel and neck',
  hardware: 'Hardware',
  nearHalf: 'Near half of the PMTs',
  lightPaths: 'Light paths of all shown PMTs',
};

/** Why the light paths of all shown PMTs cannot be drawn; empty if they can. */
function lightPathsReason(model: Model): string {
  if (model.page.text.content === 'verdicts') return 'This page has no light paths.';
  if (model.state.event === 'all') return 'Choose one event first.';
  const shown = model.shown().reduce((sum, isShown) => sum + isShown, 0);
  if (shown <= MOST_LIGHT_PATHS) return '';
  const most = formatCount(MOST_LIGHT_PATHS);
  return `For ${most} PMTs at most; ${formatCount(shown)} are shown.`;
}

interface Row {
  element: HTMLElement;
  update(): void;
}

function createSwitch(model: Model, name: Switch): Row {
  const reason = element('span', { class: 'switch-reason', id: `reason-${name}` });
  const button = element(
    'button',
    { type: 'button', class: 'switch', role: 'switch', 'aria-describedby': reason.id },
    element('span', {}, NAMES[name]),
    element('span', { class: 'switch-track', 'aria-hidden': 'true' }),
  );
  const isPossible = (): boolean =>
    name !== 'lightPaths' || lightPathsReason(model) === '';
  button.addEventListener('click', () => {
    if (!isPossible()) return;
    const { switches } = model.state;
    model.change({ switches: { ...switches, [name]: !switches[name] } });
  });
  return {
    element: element('div', { class: 'switch-row' }, button, reason),
    update() {
      const can = isPossible();
      button.setAttribute('aria-checked', String(can && model.state.switches[name]));
      // Not "disabled": the focus must reach the reason.
      button.setAttribute('aria-disabled', String(!can));
      if (name === 'lightPaths') setText(reason, lightPathsReason(model));
    },
  };
}

/** Make the switches of what the 3D view shows. */
export function createSwitches(model: Model): HTMLElement {
  const names: Switch[] = ['vessel', 'hardware', 'nearHalf', 'lightPaths'];
  const rows = names.map((name) => createSwitch(model, name));
  const switches = element(
    'section',
    { class: 'switches', 'aria-labelledby': 'switches-heading' },
    element('h2', { class: 'heading', id: 'switches-heading' }, 'Show'),
    ...rows.map((row) => row.element),
  );
  const update = (): void => {
    switches.hidden = !model.state.has3D;
    for (const row of rows) row.update();
  };
  model.subscribe((changed) => {
    if (changed.has('selected') && changed.size === 1) return;
    if (changed.has('hovered') && changed.size === 1) return;
    update();
  });
  update();
  return switches;
}
