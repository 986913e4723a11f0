import { describe, expect, it } from 'vitest';
import { computeShares, countLayers, tally } from '../../src/model/counts';
import { layerOfVerdict } from '../../src/model/model';
import { makePage } from '../support/makePage';

const ALL = new Array<boolean>(8).fill(true);

const page = makePage({
  pmts: [
    [1, 0, 0],
    [2, 0, 0],
    [3, 0, 0],
  ],
  events: [
    [0, 0, 0],
    [0, 0, 1],
  ],
  verdicts: [0, 1, 7, 5, 1, 10],
});

describe('layerOfVerdict', () => {
  it('gives each verdict its layer', () => {
    const layers = Array.from({ length: 12 }, (_, verdict) => layerOfVerdict(verdict));
    expect(layers).toEqual([6, 0, 1, 2, 3, 4, 5, 7, 7, 7, 7, 7]);
  });
});

describe('tally', () => {
  it('counts by event', () => {
    const { events } = tally(page);
    expect(events).toEqual([
      { layers: [1, 0, 0, 0, 0, 0, 1, 1], shadowed: 1, withPath: 2, all: 3 },
      { layers: [1, 0, 0, 0, 1, 0, 0, 1], shadowed: 2, withPath: 2, all: 3 },
    ]);
  });

  it('counts over all events', () => {
    expect(tally(page).all).toEqual({
      layers: [2, 0, 0, 0, 1, 0, 1, 2],
      shadowed: 3,
      withPath: 4,
      all: 6,
    });
  });

  it('counts nothing on an empty page', () => {
    expect(tally(makePage({})).all).toEqual(countLayers(new Array<number>(8).fill(0)));
    expect(tally(makePage({ pmts: [[1, 2, 3]] })).events).toEqual([]);
  });
});

describe('computeShares', () => {
  const { pmts } = tally(page);

  it('takes shares of the events with a light path', () => {
    expect(Array.from(computeShares(pmts, ALL))).toEqual([0.5, 1, NaN]);
  });

  it('counts what the shown components hide', () => {
    const pipes = ALL.map((_, layer) => layer === 4);
    expect(Array.from(computeShares(pmts, pipes))).toEqual([0.5, 0, NaN]);
  });
});
