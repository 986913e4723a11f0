import palette from '../../../palette.json';
import { Verdict } from '../data/page';
import type { Page } from '../data/page';
import { LAYERS } from './model';
import type { Choice, MainView, State, Theme } from './model';

/** By layer, its name in an address. */
const LAYER_NAMES: readonly string[] = [
  ...Object.keys(palette.components),
  'clear',
  'no-path',
];

const THEMES: readonly Theme[] = ['light', 'dark'];
const MAIN_VIEWS: readonly MainView[] = ['3d', 'map', 'table'];

/** What an address says. */
export interface Address {
  state: Partial<State>;
  /** What the page does not have, in words. */
  problems: string[];
}

/**
 * Write what can be sent as the part of an address after its #:
 * `event=z=3000&pmt=4512&only=AVPipe`. Names are encoded; one that is there several
 * times has its number, counted from 1, in `event-number` or `pmt-number`.
 */
export function writeAddress(page: Page, state: State): string {
  const address = new URLSearchParams();
  const { event, selected } = state;
  if (event === 'all') address.set('events', 'all');
  else writeName(address, 'event', page.text.eventNames, event);
  if (selected) {
    writeName(address, 'pmt', page.text.pmtNames, selected.pmt);
    if (selected.reflected) address.set('light', 'reflected');
  }
  if (state.layers.includes(false)) {
    const shown = LAYER_NAMES.filter((_, layer) => state.layers[layer]);
    address.set('only', shown.join(','));
  }
  if (state.query !== '') address.set('find', state.query);
  if (state.theme !== 'system') address.set('theme', state.theme);
  if (state.mainView !== '3d') address.set('view', state.mainView);
  return address.toString();
}

function writeName(
  address: URLSearchParams,
  key: 'event' | 'pmt',
  names: readonly string[],
  number: number,
): void {
  const name = names[number] ?? '';
  address.set(key, name);
  if (names.indexOf(name) !== names.lastIndexOf(name)) {
    address.set(`${key}-number`, String(number + 1));
  }
}

/**
 * Read an address. What it does not say is not in the state, so that it can be given
 * to Model.change as it is.
 *
 * @param hash  with or without its #
 */
export function readAddress(page: Page, hash: string): Address {
  const address = new URLSearchParams(hash.replace(/^#/, ''));
  const problems: string[] = [];
  const state: Partial<State> = {};
  const event =
    address.get('events') === 'all'
      ? 'all'
      : readName(address, 'event', 'event', page.text.eventNames, problems);
  if (event !== null) state.event = event;
  const pmt = readName(address, 'pmt', 'PMT', page.text.pmtNames, problems);
  if (pmt !== null) {
    const isReflected = address.get('light') === 'reflected';
    state.selected = chooseLight(
      page,
      event,
      { pmt, reflected: isReflected },
      problems,
    );
  }
  const layers = readLayers(address.get('only'), problems);
  if (layers) state.layers = layers;
  const query = address.get('find');
  if (query !== null) state.query = query;
  const theme = readWord(address, 'theme', THEMES, problems);
  if (theme !== null) state.theme = theme;
  const mainView = readWord(address, 'view', MAIN_VIEWS, problems);
  if (mainView !== null) state.mainView = mainView;
  return { state, problems };
}

/** The number of what is named; null if nothing is. */
function readName(
  address: URLSearchParams,
  key: 'event' | 'pmt',
  kind: string,
  names: readonly string[],
  problems: string[],
): number | null {
  const name = address.get(key);
  if (name === null) return null;
  const number = Number(address.get(`${key}-number`)) - 1;
  if (names[number] === name) return number;
  const first = names.indexOf(name);
  if (first >= 0) return first;
  problems.push(`There is no ${kind} ${shorten(name)}.`);
  return null;
}

const LONGEST = 60;

/** For messages: names may have thousands of characters. */
function shorten(name: string): string {
  const characters = Array.from(name);
  if (characters.length <= LONGEST) return name;
  return `${characters.slice(0, LONGEST).join('')}…`;
}

function chooseLight(
  page: Page,
  event: State['event'] | null,
  choice: Choice,
  problems: string[],
): Choice {
  if (!choice.reflected) return choice;
  const pair =
    typeof event === 'number' ? event * page.text.pmtNames.length + choice.pmt : -1;
  const verdict = page.reflected?.verdicts[pair] ?? Verdict.NoReflectedPath;
  if (verdict < Verdict.TotalReflection) return choice;
  problems.push('There is no reflected light to this PMT.');
  return { ...choice, reflected: false };
}

function readLayers(only: string | null, problems: string[]): boolean[] | null {
  if (only === null) return null;
  const layers = new Array<boolean>(LAYERS).fill(false);
  if (only === '') return layers;
  let isKnown = false;
  for (const name of only.split(',')) {
    const layer = LAYER_NAMES.indexOf(name);
    if (layer < 0) problems.push(`There is no layer ${shorten(name)}.`);
    else layers[layer] = isKnown = true;
  }
  return isKnown ? layers : null;
}

function readWord<Word extends string>(
  address: URLSearchParams,
  key: string,
  words: readonly Word[],
  problems: string[],
): Word | null {
  const value = address.get(key);
  if (value === null) return null;
  const word = words.find((each) => each === value);
  if (word !== undefined) return word;
  problems.push(`There is no ${key} ${shorten(value)}.`);
  return null;
}
