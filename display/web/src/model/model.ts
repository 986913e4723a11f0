import type { LightPath } from '../data/lightPath';
import { Verdict } from '../data/page';
import type { Page } from '../data/page';

/**
 * The eight layers: 0 to 5 the components in the order of testing, 6 clear, 7 no
 * path.
 */
export const LAYERS = 8;
export const CLEAR_LAYER = 6;
export const NO_PATH_LAYER = 7;

/** The layer of a verdict. */
export function layerOfVerdict(verdict: Verdict): number {
  if (verdict === Verdict.Clear) return CLEAR_LAYER;
  return verdict < Verdict.TotalReflection ? verdict - 1 : NO_PATH_LAYER;
}

export type Column = 'pmt' | 'verdict' | 'length' | 'time' | 'angle' | 'share';
export type Switch = 'vessel' | 'hardware' | 'nearHalf' | 'lightPaths';
export type Theme = 'system' | 'light' | 'dark';
/** The largest of the views, and on a phone the only one. */
export type MainView = '3d' | 'map' | 'table';

/** A row of the table: a PMT, and whether it is of its reflected light. */
export interface Choice {
  readonly pmt: number;
  readonly reflected: boolean;
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

/** Of a light path, without its points; NaN without a path. */
export interface PathNumbers {
  /** mm */
  length: number;
  /** ns */
  time: number;
  /** degrees */
  angle: number;
}

/** What blocks a light path and from which tolerance; see LightDetails. */
export interface Blocking {
  /** Empty if no single item is known. */
  item: string;
  /** mm */
  limit: number;
  limitBy: Verdict;
}

/** What the search finds, whatever layers are shown. */
export interface Found {
  /** How many PMTs. */
  pmts: number;
  /** Numbers of the events whose name has the text, first one that is equal to it. */
  events: readonly number[];
  /** Terms without a meaning for what is shown, so not used: "path>9". */
  unused: readonly string[];
}

/** Everything that views ask and that keys and controls change. */
export interface Model {
  readonly page: Page;
  readonly state: State;
  /** Call @p listener after each change, with the names of what changed. */
  subscribe(listener: (changed: ReadonlySet<keyof State>) => void): void;
  /**
   * Change what is chosen. What depends on it follows: a reflected row that the new
   * event does not have becomes the direct one, and the table gets its usual order
   * when it changes between one event and all.
   */
  change(part: Partial<State>): void;

  // Of the chosen event, or of all. Arrays are the model's own: not to be changed.

  counts(): Counts;
  /** NoReflectedPath for a row that there is not. Not for "all": PositionNotFinite. */
  verdictOf(choice: Choice): Verdict;
  layerOf(choice: Choice): number;
  /**
   * By PMT, over all events: the part of its light paths that the shown components
   * hide; NaN if there are none.
   */
  shares(): Float64Array;
  /** The light path of a row; null for "all", and where there is none. */
  pathOf(choice: Choice): LightPath | null;
  /** As pathOf, faster for many rows. */
  numbersOf(choice: Choice): PathNumbers;
  /** Null for "all", without a light path, and where the page keeps no paths. */
  blockingOf(choice: Choice): Blocking | null;
  /** By PMT: 1 where layer and search show its direct light. For "all": the search. */
  shown(): Uint8Array;
  /**
   * The rows of the table that match layers and search, sorted: direct light, and
   * reflected light where it has a path. Rows without a value are last in both
   * directions; equal ones are in natural order of names. A PMT whose name is the
   * searched text is first.
   */
  rows(): readonly Choice[];
  /** What the search finds. */
  found(): Found;
  /** By event: the counts. Computed once. */
  countsOfEvents(): readonly Counts[];
  /** Over all events: the counts of a PMT. */
  countsOfPMT(pmt: number): Counts;

  // Common changes.

  select(choice: Choice | null): void;
  hover(choice: Choice | null): void;
  /** Only this layer, or all again if it is the only one already. */
  isolate(layer: number): void;
  showAll(): void;
  /** The next event or the one before, stopping at the ends. "all" is before them. */
  step(by: 1 | -1): void;
  /** Take what the search finds first: a row, or without any an event. */
  takeFound(): void;
}
