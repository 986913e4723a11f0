import { describe, expect, it } from 'vitest';
import { captionEvents } from '../../src/views/strip/captions';
import { makePage } from '../support/makePage';

/** The words under events at these positions. */
function captionsOf(...positions: [number, number, number][]): string[] {
  return captionEvents(makePage({ events: positions })).map(
    ({ words, more }) => words + more,
  );
}

describe('captions of the strip', () => {
  it('tell where neighbouring events are, and the order of those on the axis', () => {
    expect(
      captionsOf([0, 0, 5000], [0, 0, 0], [3000, 0, 0], [0, 2000, 10], [7000, 0, 0]),
    ).toEqual([
      'on the axis, top to bottom',
      'off the axis, inside the vessel',
      'in the water',
    ]);
  });

  it('are the first and the last name where places alternate', () => {
    expect(captionsOf([0, 0, 1], [900, 0, 0], [0, 0, 2], [900, 0, 0])).toEqual([
      '0',
      '3',
    ]);
  });
});
