import { describe, expect, it } from 'vitest';
import type { Page } from '../../src/data/page';
import { readAddress, writeAddress } from '../../src/model/address';
import { createModel } from '../../src/model/createModel';
import type { State } from '../../src/model/model';
import { firstState } from '../../src/model/state';
import { makeDetails, makePage } from '../support/makePage';

const HOSTILE = '#&=%+ <b>"\u202E"</b> é\n';
const ALL = new Array<boolean>(8).fill(true);

function pageOf(pmtNames: string[], eventNames: string[]): Page {
  const pairs = pmtNames.length * eventNames.length;
  return makePage({
    pmts: pmtNames.map(() => [8300, 0, 0]),
    events: eventNames.map(() => [0, 0, 0]),
    text: { pmtNames, eventNames },
    reflected: {
      // Of the third event and the second PMT alone.
      verdicts: new Uint8Array(pairs).fill(11).fill(0, 9, 10),
      paths: makeDetails(pairs),
    },
  });
}

const page = pageOf(['1', '2', HOSTILE, '2'], ['z=3000', HOSTILE, 'all', 'z=3000']);

function stateOf(part: Partial<State>): State {
  return { ...firstState(page), ...part };
}

describe('an address', () => {
  it('names the event, the PMT and what is shown', () => {
    const layers = ALL.map((_, layer) => layer === 4);
    const state = stateOf({
      event: 2,
      selected: { pmt: 0, reflected: false },
      layers,
      theme: 'dark',
    });
    expect(writeAddress(page, state)).toBe('event=all&pmt=1&only=AVPipe&theme=dark');
  });

  const states: [string, Partial<State>][] = [
    ['one event', { event: 2 }],
    ['all events', { event: 'all' }],
    ['names that need encoding', { event: 1, selected: { pmt: 2, reflected: false } }],
    ['the first of equal names', { event: 0, selected: { pmt: 1, reflected: false } }],
    ['the second of equal names', { event: 3, selected: { pmt: 3, reflected: false } }],
    ['reflected light', { event: 2, selected: { pmt: 1, reflected: true } }],
    ['one layer', { layers: ALL.map((_, layer) => layer === 7) }],
    ['several layers', { layers: ALL.map((_, layer) => layer % 2 === 0) }],
    ['no layer', { layers: ALL.map(() => false) }],
    ['a search', { query: 'by:pipe & path>9 "é"' }],
    ['a theme and a view', { theme: 'light', mainView: 'table' }],
  ];

  it.each(states)('comes back the same with %s', (_, part) => {
    const state = stateOf(part);
    const read = readAddress(page, `#${writeAddress(page, state)}`);
    expect(read.problems).toEqual([]);
    expect({ ...firstState(page), ...read.state }).toEqual(state);
  });

  it('says nothing if it is empty', () => {
    expect(readAddress(page, '')).toEqual({ state: {}, problems: [] });
    expect(readAddress(page, '#')).toEqual({ state: {}, problems: [] });
  });

  it.each([
    ['event=lost', 'There is no event lost.'],
    ['pmt=lost', 'There is no PMT lost.'],
    ['only=lost', 'There is no layer lost.'],
    ['theme=blue', 'There is no theme blue.'],
    ['view=4d', 'There is no view 4d.'],
  ])('with %s is reported', (hash, problem) => {
    expect(readAddress(page, hash)).toEqual({ state: {}, problems: [problem] });
  });

  it('keeps what it knows beside what it does not', () => {
    const read = readAddress(page, '#event=all&pmt=lost&only=lost,clear&other=1');
    expect(read.problems.length).toBe(2);
    expect(read.state.event).toBe(2);
    expect(read.state.layers).toEqual(ALL.map((_, layer) => layer === 6));
  });

  it('takes the name where its number belongs to another', () => {
    const { state } = readAddress(
      page,
      'event=z=3000&event-number=2&pmt=2&pmt-number=x',
    );
    expect(state.event).toBe(0);
    expect(state.selected).toEqual({ pmt: 1, reflected: false });
  });

  it('of reflected light that there is not shows the direct light', () => {
    const read = readAddress(page, 'event=z=3000&pmt=2&light=reflected');
    expect(read.state.selected).toEqual({ pmt: 1, reflected: false });
    expect(read.problems).toEqual(['There is no reflected light to this PMT.']);
  });

  it('of reflected light of all events shows the direct light', () => {
    const read = readAddress(page, 'events=all&pmt=2&light=reflected');
    expect(read.state).toEqual({
      event: 'all',
      selected: { pmt: 1, reflected: false },
    });
  });

  it('shortens long names that it does not know', () => {
    const { problems } = readAddress(page, `pmt=${'x'.repeat(10_000)}`);
    expect(problems[0]?.length).toBeLessThan(100);
  });

  it('reads what is encoded wrongly', () => {
    expect(readAddress(page, '#event=%E0%A4%A&pmt=%').problems.length).toBe(2);
  });

  it('can be given to the model', () => {
    const model = createModel(page);
    model.change(readAddress(page, 'event=all&pmt=1&only=NeckBoss').state);
    expect(model.state.event).toBe(2);
    expect(model.state.selected).toEqual({ pmt: 0, reflected: false });
  });
});
