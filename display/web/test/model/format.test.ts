import { describe, expect, it } from 'vitest';
import { Verdict } from '../../src/data/page';
import { createModel } from '../../src/model/createModel';
import {
  describeChoice,
  describeLimit,
  explainNoPath,
  formatAngle,
  formatCompact,
  formatCount,
  formatMetres,
  formatMillimetres,
  formatNumber,
  formatPercent,
  formatPosition,
  formatTime,
  nameLayer,
  nameVerdict,
  tellItem,
  tellLimit,
  tellVerdict,
} from '../../src/model/format';
import { makePage } from '../support/makePage';

describe('numbers', () => {
  it.each([
    [0, '0'],
    [999, '999'],
    [1000, '1,000'],
    [3154, '3,154'],
    [16_000_000, '16,000,000'],
  ])('count %d is %s', (count, words) => {
    expect(formatCount(count)).toBe(words);
  });

  it.each([
    [0, '0'],
    [46_123, '46,123'],
    [100_000, '100,000'],
    [100_001, '100 k'],
    [561_400, '561 k'],
    [999_499, '999 k'],
    [999_500, '1.0 M'],
    [2_712_000, '2.7 M'],
    [14_940_000, '14.9 M'],
    [99_999_999, '100.0 M'],
    [123_456_789, '123 M'],
  ])('count %d of many events is %s', (count, words) => {
    expect(formatCompact(count)).toBe(words);
  });

  it.each([
    [3154 / 8000, '39.4 %'],
    [0.123, '12.3 %'],
    [0, '0.0 %'],
    [1, '100.0 %'],
    [1 / 8000, '< 0.1 %'],
    [4 / 8000, '0.1 %'],
    [7999 / 8000, '> 99.9 %'],
    [7995 / 8000, '99.9 %'],
    [NaN, '–'],
  ])('share %d is %s', (share, words) => {
    expect(formatPercent(share)).toBe(words);
  });

  // What the program writes for 49, 51, 1 and 3 of 400, which end in half a digit.
  it.each([
    [49, '12.2 %'],
    [51, '12.8 %'],
    [1, '0.2 %'],
    [3, '0.8 %'],
    [399, '99.8 %'],
  ])('share %d of 400 goes to the even digit: %s', (count, words) => {
    expect(formatPercent(count / 400)).toBe(words);
  });

  it('shares round as in the program, which divides last', () => {
    expect(formatPercent(36 / 8000)).toBe('0.5 %');
  });

  it('have units, a fixed number of digits and a true minus sign', () => {
    expect(formatMetres(9190.4)).toBe('9.19 m');
    expect(formatMillimetres(67.6)).toBe('68 mm');
    expect(formatTime(48.06)).toBe('48.1 ns');
    expect(formatAngle(21.84)).toBe('21.8°');
    expect(formatPosition([-7459.6, 3474.2, -1080])).toBe('−7460, 3474, −1080');
  });

  it('have no sign at zero', () => {
    expect(formatPosition([-0, -0.4, 0.4])).toBe('0, 0, 0');
    expect(formatNumber(-0.04, 1)).toBe('0.0');
  });

  it('are told when there are none', () => {
    expect(formatPosition([NaN, Infinity, -Infinity])).toBe('–, ∞, −∞');
  });
});

describe('verdicts', () => {
  it.each([
    [Verdict.Clear, 'Clear', 'Clear'],
    [Verdict.HoldDownRope, 'Hold-down ropes', 'Blocked by hold-down ropes'],
    [Verdict.NCDAnchor, 'NCD anchors', 'Blocked by NCD anchors'],
    [Verdict.AVPipe, 'AV pipes', 'Blocked by AV pipes'],
    [Verdict.NeckBoss, 'Neck boss', 'Blocked by neck boss'],
    [Verdict.TotalReflection, 'No path', 'No path: total reflection'],
    [Verdict.PMTNotInWater, 'No path', 'No path: not in the water'],
    [Verdict.EventAtPMT, 'No path', 'No path: event at the PMT'],
    [Verdict.PositionNotFinite, 'No path', 'No path: position not finite'],
    [Verdict.NoReflectedPath, 'No path', 'No reflected path'],
  ])('%i is %s: %s', (verdict, name, sentence) => {
    expect(nameVerdict(verdict)).toBe(name);
    expect(tellVerdict(verdict)).toBe(sentence);
    expect(explainNoPath(verdict) !== '').toBe(name === 'No path');
  });

  it('have layers with names', () => {
    expect([0, 5, 6, 7].map(nameLayer)).toEqual([
      'Hold-down ropes',
      'Neck boss',
      'Clear',
      'No path',
    ]);
  });
});

describe('the limit', () => {
  it.each([
    [1, 83.21, 1, 'Blocked at tolerances from 83.2 mm; set: 150 mm'],
    [1, 0, 1, 'Blocked even at 0 mm; set: 150 mm'],
    [2, -3.5, 2, 'Blocked even at 0 mm; set: 150 mm'],
    [2, -Infinity, 2, 'Blocked at every tolerance'],
    [5, -Infinity, 5, 'Blocked at every tolerance: AV pipes do not use it'],
    [6, -Infinity, 6, 'Blocked at every tolerance: neck boss does not use it'],
    [0, 212.4, 2, 'Blocked by support ropes from 212.4 mm'],
    [0, Infinity, 0, 'Not blocked at any tolerance'],
    [0, NaN, 0, ''],
    [7, NaN, 0, ''],
  ])('of verdict %i, %d mm by %i: %s', (verdict, limit, limitBy, words) => {
    expect(describeLimit(verdict, limit, limitBy, 150)).toBe(words);
  });
});

describe('a row', () => {
  const page = makePage({
    pmts: [
      [8300, 0, 0],
      [0, 0, 0],
    ],
    events: [
      [0, 0, 0],
      [0, 0, 0],
    ],
    verdicts: [1, 8, 0, 8],
    details: {
      angles: Float32Array.of(0, NaN, 0, NaN),
      items: Uint16Array.of(1, 0, 0, 0),
      limits: Float32Array.of(83.2, NaN, Infinity, NaN),
      limitBy: Uint8Array.of(1, 0, 0, 0),
    },
    text: { itemNames: ['', 'rope 7, leg P1'] },
  });
  const first = { pmt: 0, reflected: false };
  const second = { pmt: 1, reflected: false };

  it('is told with its verdict and length', () => {
    const model = createModel(page);
    expect(describeChoice(model, first)).toBe(
      'PMT 0, blocked by hold-down ropes, 8.30 metres',
    );
    expect(describeChoice(model, second)).toBe('PMT 1, no path: not in the water');
  });

  it('of all events is told with its share', () => {
    const model = createModel(page);
    model.change({ event: 'all' });
    expect(describeChoice(model, first)).toBe(
      'PMT 0, hidden from 50.0 % of the events',
    );
    expect(describeChoice(model, second)).toBe('PMT 1, no light path from any event');
  });

  it('tells what blocks and from which tolerance', () => {
    const model = createModel(page);
    expect(tellItem(model, first)).toBe('rope 7, leg P1');
    expect(tellLimit(model, first)).toBe(
      'Blocked at tolerances from 83.2 mm; set: 150 mm',
    );
    expect(tellItem(model, second)).toBe('');
    expect(tellLimit(model, second)).toBe('');
    model.change({ event: 1 });
    expect(tellItem(model, first)).toBe('');
    expect(tellLimit(model, first)).toBe('Not blocked at any tolerance');
    model.change({ event: 'all' });
    expect(tellLimit(model, first)).toBe('');
  });
});
