import { CLEAR_LAYER, type Counts } from '../../model/model';

/** A bar of the strip: one event, or a group of them. */
export interface Bar {
  events: number[];
  /** By component: the part of the light paths that it blocks. */
  shares: number[];
  /** Their sum; 0 where there are no light paths. */
  shadowed: number;
}

/** Above so many events they are drawn as groups. */
export const MOST_BARS = 200;
const GROUPS = 100;

function makeBar(events: number[], counts: readonly Counts[]): Bar {
  const blocked = new Array<number>(CLEAR_LAYER).fill(0);
  let paths = 0;
  for (const event of events) {
    const of = counts[event];
    if (of === undefined) continue;
    paths += of.withPath;
    for (let layer = 0; layer < CLEAR_LAYER; layer += 1) {
      blocked[layer] = (blocked[layer] ?? 0) + (of.layers[layer] ?? 0);
    }
  }
  const shares = blocked.map((number) => (paths === 0 ? 0 : number / paths));
  return { events, shares, shadowed: shares.reduce((sum, share) => sum + share, 0) };
}

function shadowedShare(counts: Counts | undefined): number {
  return counts === undefined || counts.withPath === 0
    ? 0
    : counts.shadowed / counts.withPath;
}

/**
 * Make the bars of a strip: one for each event, in order, or groups of about equal
 * size from the least to the most shadowed if there are many.
 */
export function makeBars(counts: readonly Counts[]): Bar[] {
  const events = counts.map((_, event) => event);
  if (events.length <= MOST_BARS)
    return events.map((event) => makeBar([event], counts));
  const sorted = events.sort(
    (a, b) => shadowedShare(counts[a]) - shadowedShare(counts[b]) || a - b,
  );
  return Array.from({ length: GROUPS }, (_, group) => {
    const first = Math.round((group * sorted.length) / GROUPS);
    const end = Math.round(((group + 1) * sorted.length) / GROUPS);
    return makeBar(sorted.slice(first, end), counts);
  });
}

const AXIS_ENDS = [0.02, 0.1, 0.2, 0.4, 0.6, 0.8, 1];

/** The end of the axis above all bars. */
export function axisEnd(bars: readonly Bar[]): number {
  const most = bars.reduce((highest, bar) => Math.max(highest, bar.shadowed), 0);
  return AXIS_ENDS.find((end) => end >= most) ?? 1;
}
