import { Verdict } from '../data/page';
import type { Page } from '../data/page';
import { layerOfVerdict } from './model';
import type { Choice, Column, State } from './model';
import { rankNames } from './names';
import type { PathNumbersCache } from './pathNumbers';
import type { Matches } from './search';

/** Puts the rows of the table in order. */
export class Rows {
  private readonly page: Page;
  private readonly numbers: PathNumbersCache;
  private readonly shares: () => Float64Array;
  /** All rows that there can be: of a PMT the direct light, then the reflected. */
  private readonly choices: readonly Choice[];
  /** By PMT: its place in natural order of names. Made when first needed. */
  private ranks: Uint32Array | null = null;

  constructor(page: Page, numbers: PathNumbersCache, shares: () => Float64Array) {
    this.page = page;
    this.numbers = numbers;
    this.shares = shares;
    this.choices = page.text.pmtNames.flatMap((_, pmt) => [
      { pmt, reflected: false },
      { pmt, reflected: true },
    ]);
  }

  /** All rows of an event, sorted. */
  order(event: State['event'], { column, descending }: State['sort']): Choice[] {
    const ranks = (this.ranks ??= rankNames(this.page.text.pmtNames));
    const rows = this.choices.filter((choice) => this.exists(event, choice));
    const keys = new Float64Array(this.choices.length);
    for (const choice of rows) keys[keyOf(choice)] = this.value(event, choice, column);
    const sign = descending ? -1 : 1;
    return rows.sort((a, b) => {
      const ranked = (ranks[a.pmt] ?? 0) - (ranks[b.pmt] ?? 0);
      const last = Number(a.reflected) - Number(b.reflected);
      if (column === 'pmt') return sign * ranked || last;
      const first = keys[keyOf(a)] ?? NaN;
      const second = keys[keyOf(b)] ?? NaN;
      const isEqual = first === second || (Number.isNaN(first) && Number.isNaN(second));
      if (isEqual) return ranked || last;
      if (Number.isNaN(first)) return 1;
      if (Number.isNaN(second)) return -1;
      return sign * (first - second);
    });
  }

  /** Those of @p ordered that match layers and search. */
  select(ordered: readonly Choice[], state: State, matches: Matches): Choice[] {
    const { event, layers } = state;
    const rows = ordered.filter((choice) => {
      const { pmt, reflected } = choice;
      const matched = reflected ? matches.reflected[pmt] : matches.direct[pmt];
      if (matched !== 1) return false;
      if (event === 'all') return true;
      return layers[layerOfVerdict(this.verdict(event, choice))] === true;
    });
    const { exactPMT } = matches;
    if (exactPMT === null) return rows;
    // Array.prototype.sort is stable.
    return rows.sort((a, b) => Number(b.pmt === exactPMT) - Number(a.pmt === exactPMT));
  }

  /** NoReflectedPath where there is none, or the page does not tell. */
  verdict(event: number, { pmt, reflected }: Choice): Verdict {
    const light = reflected ? this.page.reflected : this.page.direct;
    const pair = event * this.page.text.pmtNames.length + pmt;
    return light?.verdicts[pair] ?? Verdict.NoReflectedPath;
  }

  /** Whether there is such a row: reflected light only where it has a path. */
  exists(event: State['event'], choice: Choice): boolean {
    if (!choice.reflected) return true;
    return event !== 'all' && this.verdict(event, choice) < Verdict.TotalReflection;
  }

  private value(event: State['event'], choice: Choice, column: Column): number {
    if (column === 'pmt') return 0;
    if (column === 'share') return this.shares()[choice.pmt] ?? NaN;
    if (event === 'all') return NaN;
    if (column === 'verdict') return layerOfVerdict(this.verdict(event, choice));
    return this.numbers.of(event, choice.reflected)[column][choice.pmt] ?? NaN;
  }
}

function keyOf({ pmt, reflected }: Choice): number {
  return 2 * pmt + Number(reflected);
}
