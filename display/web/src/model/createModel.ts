import { tracePath } from '../data/lightPath';
import type { LightPath } from '../data/lightPath';
import { Verdict } from '../data/page';
import type { Page } from '../data/page';
import { computeShares, countLayers, tally } from './counts';
import type { Tally } from './counts';
import { LAYERS, layerOfVerdict } from './model';
import type {
  Blocking,
  Choice,
  Counts,
  Found,
  Model,
  PathNumbers,
  State,
} from './model';
import { PathNumbersCache } from './pathNumbers';
import { Rows } from './rows';
import { Search } from './search';
import type { Matches } from './search';
import { firstState, settle } from './state';
import { Store } from './store';

/** Make the model of a page. */
export function createModel(page: Page): Model {
  return new PageModel(page);
}

/** The last answer, kept for as long as what it was made from stays the same. */
class Kept<Answer> {
  private key: readonly unknown[] = [];
  private answer: { is: Answer } | null = null;

  of(key: readonly unknown[], compute: () => Answer): Answer {
    const isKept = this.answer && key.every((part, i) => part === this.key[i]);
    if (!isKept || !this.answer) {
      this.answer = { is: compute() };
      this.key = key;
    }
    return this.answer.is;
  }
}

class PageModel implements Model {
  private readonly store: Store;
  private readonly numbers: PathNumbersCache;
  private readonly table: Rows;
  private readonly search: Search;
  private counted: Tally | null = null;
  private readonly keptShares = new Kept<Float64Array>();
  private readonly keptMatches = new Kept<Matches>();
  private readonly keptOrder = new Kept<Choice[]>();
  private readonly keptRows = new Kept<Choice[]>();
  private readonly keptShown = new Kept<Uint8Array>();

  constructor(readonly page: Page) {
    this.numbers = new PathNumbersCache(page);
    this.table = new Rows(page, this.numbers, () => this.shares());
    this.search = new Search({
      page,
      numbers: this.numbers,
      countsByPMT: () => this.tally().pmts,
      shares: () => this.shares(),
    });
    this.store = new Store(firstState(page), (next, previous) =>
      settle(page, next, previous),
    );
  }

  get state(): State {
    return this.store.state;
  }

  subscribe(listener: (changed: ReadonlySet<keyof State>) => void): void {
    this.store.subscribe(listener);
  }

  change(part: Partial<State>): void {
    this.store.change(part);
  }

  counts(): Counts {
    const { event } = this.state;
    const { all, events } = this.tally();
    return event === 'all' ? all : (events[event] ?? all);
  }

  verdictOf(choice: Choice): Verdict {
    const { event } = this.state;
    if (event === 'all') return Verdict.PositionNotFinite;
    return this.table.verdict(event, choice);
  }

  layerOf(choice: Choice): number {
    return layerOfVerdict(this.verdictOf(choice));
  }

  shares(): Float64Array {
    const { layers } = this.state;
    return this.keptShares.of([layers], () => computeShares(this.tally().pmts, layers));
  }

  pathOf({ pmt, reflected }: Choice): LightPath | null {
    const { event } = this.state;
    return event === 'all' ? null : tracePath(this.page, event, pmt, reflected);
  }

  numbersOf({ pmt, reflected }: Choice): PathNumbers {
    const { event } = this.state;
    if (event === 'all') return { length: NaN, time: NaN, angle: NaN };
    const columns = this.numbers.of(event, reflected);
    return {
      length: columns.length[pmt] ?? NaN,
      time: columns.time[pmt] ?? NaN,
      angle: columns.angle[pmt] ?? NaN,
    };
  }

  blockingOf(choice: Choice): Blocking | null {
    const { event } = this.state;
    const { page } = this;
    const paths = (choice.reflected ? page.reflected : page.direct)?.paths;
    if (event === 'all' || !paths) return null;
    if (this.verdictOf(choice) >= Verdict.TotalReflection) return null;
    const pair = event * page.text.pmtNames.length + choice.pmt;
    return {
      item: page.text.itemNames[paths.items[pair] ?? 0] ?? '',
      limit: paths.limits[pair] ?? NaN,
      limitBy: paths.limitBy[pair] ?? Verdict.Clear,
    };
  }

  shown(): Uint8Array {
    const { event, layers } = this.state;
    const matches = this.matches();
    return this.keptShown.of([matches, event, layers], () =>
      matches.direct.map((is, pmt) => {
        const isShown =
          event === 'all' || layers[this.layerOf({ pmt, reflected: false })];
        return is === 1 && isShown === true ? 1 : 0;
      }),
    );
  }

  rows(): readonly Choice[] {
    const { event, layers, sort } = this.state;
    const byShare = sort.column === 'share' ? this.shares() : null;
    const order = this.keptOrder.of(
      [event, sort.column, sort.descending, byShare],
      () => this.table.order(event, sort),
    );
    const matches = this.matches();
    return this.keptRows.of([order, matches, layers], () =>
      this.table.select(order, this.state, matches),
    );
  }

  found(): Found {
    const { direct, reflected, events, unused } = this.matches();
    const { event } = this.state;
    let pmts = 0;
    for (let pmt = 0; pmt < direct.length; ++pmt) {
      const isFound =
        direct[pmt] === 1 ||
        (reflected[pmt] === 1 && this.table.exists(event, { pmt, reflected: true }));
      if (isFound) ++pmts;
    }
    return { pmts, events, unused };
  }

  countsOfEvents(): readonly Counts[] {
    return this.tally().events;
  }

  countsOfPMT(pmt: number): Counts {
    const start = pmt * LAYERS;
    return countLayers(Array.from(this.tally().pmts.subarray(start, start + LAYERS)));
  }

  select(choice: Choice | null): void {
    this.change({ selected: choice });
  }

  hover(choice: Choice | null): void {
    this.change({ hovered: choice });
  }

  isolate(layer: number): void {
    const isOnly = this.state.layers.every((is, i) => is === (i === layer));
    this.change({ layers: this.state.layers.map((_, i) => isOnly || i === layer) });
  }

  showAll(): void {
    this.change({ layers: this.state.layers.map(() => true) });
  }

  step(by: 1 | -1): void {
    const { event } = this.state;
    const next = (event === 'all' ? -1 : event) + by;
    if (next >= 0 && next < this.page.text.eventNames.length)
      this.change({ event: next });
  }

  takeFound(): void {
    const { events, isOfEvents } = this.matches();
    const [event] = events;
    const [row] = this.rows();
    if (isOfEvents && event !== undefined) this.change({ event, query: '' });
    else if (row && this.state.query.trim() !== '') this.select(row);
  }

  private tally(): Tally {
    return (this.counted ??= tally(this.page));
  }

  private matches(): Matches {
    // Shares are of the components that are shown.
    const { query, event, layers } = this.state;
    return this.keptMatches.of([query, event, layers], () =>
      this.search.find(query, event),
    );
  }
}
