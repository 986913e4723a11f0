import type { LightPath } from '../data/lightPath';
import type { Page, Verdict } from '../data/page';

/**
 * The eight layers: 0 to 5 the components in the order of testing, 6 clear, 7 no
 * path.
 */
export const LAYERS = 8;
export const CLEAR_LAYER = 6;
export const NO_PATH_LAYER = 7;

export type Column = 'pmt' | 'verdict' | 'length' | 'time' | 'angle' | 'share';
export type Switch = 'vessel' | 'hardware' | 'nearHalf' | 'lightPaths';
export type Theme = 'system' | 'light' | 'dark';
/** The largest of the views, and on a phone the only one. */
export type MainView = '3d' | 'map' | 'table';

/** A row of the table: a PMT, and whether it is of its reflected light. */
export interface Choice {
  pmt: number;
  reflected: boolean;
}

/** What the user has chosen. Views read it and never change it. */
export interface State {
  /** Number of an event, or "all" for the shares over all events. */
  event: number | 'all';
  selected: Choice | null;
  hovered: Choice | null;
  /** By layer: whether its PMTs and hardware are shown. */
  layers: readonly boolean[];
  /** The text of the search. */
  query: string;
  sort: { column: Column; descending: boolean };
  switches: Readonly<Record<Switch, boolean>>;
  theme: Theme;
  mainView: MainView;
  hasShortcuts: boolean;
  /** False without WebGL 2, and while a context is lost. */
  has3D: boolean;
}

export interface Counts {
  /** By layer. */
  layers: number[];
  shadowed: number;
  withPath: number;
  all: number;
}

/** Everything that views ask and that keys and controls change. */
export interface Model {
  readonly page: Page;
  readonly state: State;
  /** Call @p listener after each change, with the names of what changed. */
  subscribe(listener: (changed: ReadonlySet<keyof State>) => void): void;
  change(part: Partial<State>): void;

  // Of the chosen event, or of all.

  counts(): Counts;
  /** Of direct light, by PMT; for "all" undefined. */
  verdictOf(choice: Choice): Verdict;
  layerOf(choice: Choice): number;
  /** By PMT: the part of events with a light path that are hidden; NaN if none. */
  shares(): Float64Array;
  /** The light path of a row; null for "all", and where there is none. */
  pathOf(choice: Choice): LightPath | null;
  /** By PMT: 1 where layer and search show its direct light. */
  shown(): Uint8Array;
  /** The rows of the table that match layers and search, sorted. */
  rows(): Choice[];
  /** By event: the counts. Computed once. */
  countsOfEvents(): Counts[];

  // Common changes.

  select(choice: Choice | null): void;
  hover(choice: Choice | null): void;
  /** Only this layer, or all again if it is the only one already. */
  isolate(layer: number): void;
  showAll(): void;
  /** The next event or the one before, stopping at the ends. */
  step(by: 1 | -1): void;
}
