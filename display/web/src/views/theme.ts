import palette from '../../../palette.json';
import type { Model, Theme } from '../model/model';

/** A theme that says its colours; "system" stands for one of them. */
export type ColourTheme = Exclude<Theme, 'system'>;

const darkSystem = matchMedia('(prefers-color-scheme: dark)');
const moreContrast = matchMedia('(prefers-contrast: more)');

/** The theme whose colours hold for a choice. */
export function resolveTheme(theme: Theme): ColourTheme {
  if (theme !== 'system') return theme;
  return darkSystem.matches ? 'dark' : 'light';
}

function setColours(theme: ColourTheme): void {
  const colours = palette.themes[theme];
  const clear = moreContrast.matches ? colours.noPath : colours.clear;
  const hairline = moreContrast.matches ? colours.controlEdge : colours.hairline;
  const properties: [string, string][] = [
    ['--page', colours.page],
    ['--panel', colours.panel],
    ['--view', colours.view],
    ['--text', colours.text],
    ['--second-text', colours.secondText],
    ['--hairline', hairline],
    ['--control-edge', colours.controlEdge],
    ['--accent', colours.accent],
    ['--accent-ground', colours.accentGround],
    ['--clear', clear],
    ['--clear-area', colours.clearArea],
    ['--no-path', colours.noPath],
    ['--selection', colours.selection],
    ['--vessel', colours.vessel],
  ];
  Object.values(palette.components).forEach((component, at) => {
    properties.push([`--component-${at + 1}`, component[theme]]);
  });
  colours.share.forEach((colour, at) => {
    properties.push([`--share-${at + 1}`, colour]);
  });
  const root = document.documentElement;
  for (const [name, value] of properties) root.style.setProperty(name, value);
  root.style.colorScheme = theme;
  // Last: the views read their colours when this changes.
  root.dataset.theme = theme;
}

/** Set the system's colours, before any data is read. */
export function startTheme(): void {
  setColours(resolveTheme('system'));
}

/** Keep the page in the colours that the user, the system and its contrast ask for. */
export function followTheme(model: Model): void {
  const update = (): void => {
    setColours(resolveTheme(model.state.theme));
  };
  darkSystem.addEventListener('change', update);
  moreContrast.addEventListener('change', update);
  model.subscribe((changed) => {
    if (changed.has('theme')) update();
  });
  update();
}
