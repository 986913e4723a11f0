import { describe, expect, it } from 'vitest';
import type { Counts } from '../../src/model/model';
import { axisEnd, makeBars, MOST_BARS } from '../../src/views/strip/bars';

/** Counts of an event: so many of 100 light paths are blocked by the first component. */
function countsOf(blocked: number, withPath = 100): Counts {
  const layers = [blocked, 0, 0, 0, 0, 0, withPath - blocked, 100 - withPath];
  return { layers, shadowed: blocked, withPath, all: 100 };
}

describe('bars of the strip', () => {
  it('are one for each event, in order', () => {
    const bars = makeBars([countsOf(30), countsOf(10)]);
    expect(bars.map((bar) => bar.events)).toEqual([[0], [1]]);
    expect(bars.map((bar) => bar.shadowed)).toEqual([0.3, 0.1]);
  });

  it('are shares of the light paths, and nothing where there are none', () => {
    const [half, none] = makeBars([countsOf(20, 40), countsOf(0, 0)]);
    expect(half?.shares).toEqual([0.5, 0, 0, 0, 0, 0]);
    expect(none?.shadowed).toBe(0);
  });

  it('are groups from the least to the most shadowed if there are many', () => {
    const events = Array.from({ length: MOST_BARS + 50 }, (_, at) =>
      countsOf((7 * at) % 100),
    );
    const bars = makeBars(events);
    expect(bars).toHaveLength(100);
    expect(bars.flatMap((bar) => bar.events).sort((a, b) => a - b)).toEqual(
      events.map((_, at) => at),
    );
    const shares = bars.map((bar) => bar.shadowed);
    expect(shares).toEqual([...shares].sort((a, b) => a - b));
  });

  it('stand on an axis that ends above the highest', () => {
    expect(axisEnd(makeBars([countsOf(51)]))).toBe(0.6);
    expect(axisEnd(makeBars([countsOf(0)]))).toBe(0.02);
    expect(axisEnd(makeBars([countsOf(100)]))).toBe(1);
  });
});
