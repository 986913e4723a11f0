import { tracePath } from '../data/lightPath';
import type { Page } from '../data/page';

/** By PMT, of one event; NaN without a light path. */
export interface PathColumns {
  /** mm */
  length: Float64Array;
  /** ns */
  time: Float64Array;
  /** degrees */
  angle: Float64Array;
}

function compute(page: Page, event: number, reflected: boolean): PathColumns {
  const pmts = page.text.pmtNames.length;
  const column = (): Float64Array => new Float64Array(pmts).fill(NaN);
  const columns = { length: column(), time: column(), angle: column() };
  for (let pmt = 0; pmt < pmts; ++pmt) {
    const path = tracePath(page, event, pmt, reflected);
    if (!path) continue;
    columns.length[pmt] = path.length;
    columns.time[pmt] = path.time;
    columns.angle[pmt] = path.angle;
  }
  return columns;
}

/** So many are kept: 4 MB for 8,000 PMTs. */
const KEPT = 20;

/** The numbers of the light paths of events, each computed once while it is kept. */
export class PathNumbersCache {
  private readonly kept = new Map<string, PathColumns>();

  constructor(private readonly page: Page) {}

  of(event: number, reflected: boolean): PathColumns {
    const key = `${event} ${reflected}`;
    let columns = this.kept.get(key);
    if (!columns) {
      columns = compute(this.page, event, reflected);
      // Maps keep the order of insertion: the first is the oldest.
      const [oldest] = this.kept.keys();
      if (this.kept.size >= KEPT && oldest !== undefined) this.kept.delete(oldest);
      this.kept.set(key, columns);
    }
    return columns;
  }
}
