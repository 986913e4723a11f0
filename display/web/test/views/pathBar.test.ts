import { expect, test } from 'vitest';
import type { LightPath } from '../../src/data/lightPath';
import { listSegments, tellSegment } from '../../src/views/card/pathBar';

const path: LightPath = {
  points: [
    [0, 0, 0],
    [0, 0, 6000],
    [0, 0, 6060],
    [0, 0, 7000],
    [0, 0, 8400],
  ],
  media: [0, 1, 2, 2],
  lengths: [6000, 60, 2340],
  length: 8400,
  time: 44,
  angle: 0,
};

test('A path is cut where the medium changes, not where it bends', () => {
  expect(listSegments(path)).toEqual([
    { medium: 0, length: 6000 },
    { medium: 1, length: 60 },
    { medium: 2, length: 2340 },
  ]);
});

test('Media come again in the order in which the light meets them', () => {
  const through = { ...path, media: [2, 1, 0, 1] as LightPath['media'] };
  expect(listSegments(through).map(({ medium }) => medium)).toEqual([2, 1, 0, 1]);
});

test('Lengths are in metres, but of the wall in millimetres', () => {
  expect(listSegments(path).map(tellSegment)).toEqual([
    'Liquid 6.00 m',
    'Wall 60 mm',
    'Water 2.34 m',
  ]);
});
