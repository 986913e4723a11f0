import type { Page } from '../data/page';
import { LAYERS, layerOfVerdict } from './model';
import type { State } from './model';
import { foldNames } from './names';
import type { PathColumns, PathNumbersCache } from './pathNumbers';
import { readQuery } from './query';
import type { Term } from './query';

type Compare = Extract<Term, { kind: 'compare' }>;

/** What a search finds among the rows of an event, or of all. */
export interface Matches {
  /** By PMT: 1 where its direct light matches. */
  direct: Uint8Array;
  /** The same of reflected light. */
  reflected: Uint8Array;
  /** The PMT whose name is the searched text; null if none is. */
  exactPMT: number | null;
  events: number[];
  /** Whether a text of the search is in names of events only. */
  isOfEvents: boolean;
  unused: string[];
}

/** What the search needs to know about all events; computed when it is asked. */
export interface SearchSources {
  page: Page;
  numbers: PathNumbersCache;
  /** By PMT and layer, over all events. */
  countsByPMT(): Uint32Array;
  shares(): Float64Array;
}

/** Searches names, verdicts and numbers. */
export class Search {
  private readonly pmtNames: readonly string[];
  private readonly eventNames: readonly string[];

  constructor(private readonly sources: SearchSources) {
    this.pmtNames = foldNames(sources.page.text.pmtNames);
    this.eventNames = foldNames(sources.page.text.eventNames);
  }

  /** Find what matches all terms of @p query in @p event. */
  find(query: string, event: State['event']): Matches {
    const pmts = this.pmtNames.length;
    const matches: Matches = {
      direct: new Uint8Array(pmts).fill(1),
      reflected: new Uint8Array(pmts).fill(1),
      exactPMT: null,
      events: [],
      isOfEvents: false,
      unused: [],
    };
    for (const term of this.readTerms(query)) {
      if (term.kind === 'text') this.matchText(term.text, matches);
      else if (term.kind === 'layers') this.matchLayers(term.layers, event, matches);
      else this.matchNumber(term, event, matches);
    }
    return matches;
  }

  /** A query that is a name is text, whatever it looks like: "z<0", "by:clear". */
  private readTerms(query: string): Term[] {
    const [text = ''] = foldNames([query.trim()]);
    const isName =
      text !== '' && (this.pmtNames.includes(text) || this.eventNames.includes(text));
    return isName ? [{ kind: 'text', text }] : readQuery(query);
  }

  private matchText(text: string, matches: Matches): void {
    const exact = this.pmtNames.indexOf(text);
    if (exact >= 0) matches.exactPMT = exact;
    const has = this.pmtNames.map((name) => name.includes(text));
    const events = this.eventNames.flatMap((name, i) =>
      name.includes(text) ? [i] : [],
    );
    events.sort(
      (a, b) =>
        Number(this.eventNames[b] === text) - Number(this.eventNames[a] === text),
    );
    matches.events = events;
    // A text that only events have chooses an event and leaves the PMTs.
    if (events.length > 0 && !has.includes(true)) {
      matches.isOfEvents = true;
      return;
    }
    restrict(matches.direct, (pmt) => has[pmt] === true);
    restrict(matches.reflected, (pmt) => has[pmt] === true);
  }

  private matchLayers(
    layers: readonly boolean[],
    event: State['event'],
    matches: Matches,
  ): void {
    if (event === 'all') {
      const counts = this.sources.countsByPMT();
      restrict(matches.direct, (pmt) =>
        layers.some((is, layer) => is && (counts[pmt * LAYERS + layer] ?? 0) > 0),
      );
      return;
    }
    const { page } = this.sources;
    const start = event * this.pmtNames.length;
    for (const [mask, light] of [
      [matches.direct, page.direct],
      [matches.reflected, page.reflected],
    ] as const) {
      if (!light) continue;
      restrict(
        mask,
        (pmt) => layers[layerOfVerdict(light.verdicts[start + pmt] ?? 0)] === true,
      );
    }
  }

  private matchNumber(term: Compare, event: State['event'], matches: Matches): void {
    const values = this.valuesOf(term, event);
    if (!values) {
      matches.unused.push(term.word);
      return;
    }
    restrict(matches.direct, (pmt) => holds(term, values.direct(pmt)));
    restrict(matches.reflected, (pmt) => holds(term, values.reflected(pmt)));
  }

  /** By PMT, in the unit of the search; null if the page cannot tell. */
  private valuesOf(
    { quantity }: Compare,
    event: State['event'],
  ): Record<'direct' | 'reflected', (pmt: number) => number> | null {
    const { page, numbers } = this.sources;
    const both = (
      value: (pmt: number) => number,
    ): Record<'direct' | 'reflected', (pmt: number) => number> => ({
      direct: value,
      reflected: value,
    });
    if (quantity === 'x' || quantity === 'y' || quantity === 'z') {
      const axis = 'xyz'.indexOf(quantity);
      return both((pmt) => page.pmtPositions[3 * pmt + axis] ?? NaN);
    }
    if (quantity === 'share') {
      const shares = this.sources.shares();
      return both((pmt) => 100 * (shares[pmt] ?? NaN));
    }
    if (event === 'all' || page.text.content === 'verdicts') return null;
    const column = quantity === 'path' ? 'length' : quantity;
    const unit = quantity === 'path' ? 1000 : 1;
    const read =
      (columns: PathColumns) =>
      (pmt: number): number =>
        (columns[column][pmt] ?? NaN) / unit;
    return {
      direct: read(numbers.of(event, false)),
      reflected: page.reflected ? read(numbers.of(event, true)) : () => NaN,
    };
  }
}

function restrict(mask: Uint8Array, matches: (pmt: number) => boolean): void {
  for (let pmt = 0; pmt < mask.length; ++pmt) {
    if (mask[pmt] === 1 && !matches(pmt)) mask[pmt] = 0;
  }
}

/** NaN is neither above nor below. */
function holds({ isAbove, orEqual, limit }: Compare, value: number): boolean {
  if (orEqual && value === limit) return true;
  return isAbove ? value > limit : value < limit;
}
