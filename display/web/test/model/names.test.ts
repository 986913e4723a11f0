import { describe, expect, it } from 'vitest';
import { foldName, rankNames } from '../../src/model/names';

describe('rankNames', () => {
  it('puts PMT 2 before PMT 10', () => {
    expect(Array.from(rankNames(['PMT 10', 'PMT 9', 'PMT 2']))).toEqual([2, 1, 0]);
  });

  it('keeps equal names in the order given', () => {
    expect(Array.from(rankNames(['b', 'a', 'b', 'a']))).toEqual([2, 0, 3, 1]);
  });

  it('ranks names of any kind', () => {
    const names = ['', '\u202E', '<b>', 'x'.repeat(10_000), '-5', '3'];
    expect(Array.from(rankNames(names)).sort()).toEqual([0, 1, 2, 3, 4, 5]);
  });
});

describe('foldName', () => {
  it('makes forms of one letter equal', () => {
    expect(foldName('E\u0301')).toBe(foldName('\u00E9'));
  });
});
