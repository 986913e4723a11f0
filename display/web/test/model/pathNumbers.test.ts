import { describe, expect, it } from 'vitest';
import { PathNumbersCache } from '../../src/model/pathNumbers';
import { makePage } from '../support/makePage';

const EVENTS = 30;

const page = makePage({
  pmts: [
    [0, 0, 8300],
    [0, 8300, 0],
  ],
  events: Array.from({ length: EVENTS }, (_, i) => [0, 0, 100 * i] as const),
  verdicts: Array.from({ length: 2 * EVENTS }, (_, i) => (i % 2 === 0 ? 0 : 7)),
  details: { angles: new Float32Array(2 * EVENTS) },
});

describe('PathNumbersCache', () => {
  it('gives the numbers of each event', () => {
    const numbers = new PathNumbersCache(page);
    for (let event = 0; event < EVENTS; ++event) {
      const { length, angle } = numbers.of(event, false);
      expect(length[0]).toBeCloseTo(8300 - 100 * event, 6);
      expect(length[1]).toBeNaN();
      expect(angle[0]).toBe(0);
    }
  });

  it('computes them once while they are kept', () => {
    const numbers = new PathNumbersCache(page);
    const first = numbers.of(0, false);
    expect(numbers.of(0, false)).toBe(first);
    expect(numbers.of(0, true)).not.toBe(first);
  });

  it('forgets the oldest when there are many', () => {
    const numbers = new PathNumbersCache(page);
    const first = numbers.of(0, false);
    for (let event = 1; event < EVENTS; ++event) numbers.of(event, false);
    expect(numbers.of(0, false)).not.toBe(first);
    expect(numbers.of(0, false)).toEqual(first);
  });
});
