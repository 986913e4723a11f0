import { describe, expect, it } from 'vitest';
import type { Page } from '../../src/data/page';
import { createModel } from '../../src/model/createModel';
import type { Choice, Model } from '../../src/model/model';
import { makeDetails, makePage } from '../support/makePage';

type Point = readonly [number, number, number];

const PMTS: Point[] = [
  [8300, 0, 0],
  [0, 8400, 0],
  [0, 0, 8500],
  [0, 0, -8600],
];

/** Two events at the centre and two in the water, of which only one has reflections. */
function samplePage(): Page {
  const pairs = 4 * PMTS.length;
  const angles = new Float32Array(pairs).fill(0);
  return makePage({
    pmts: PMTS,
    events: [
      [0, 0, 0],
      [0, 0, 1e-200],
      [0, 0, 7000],
      [0, 0, 7000],
    ],
    verdicts: [0, 1, 5, 0, 1, 1, 7, 2, 0, 0, 0, 7, 10, 10, 10, 10],
    details: { angles },
    text: {
      pmtNames: ['PMT 10', 'PMT 9', 'PMT 2', 'Tube 2'],
      eventNames: ['centre', 'again', 'in the water', 'lost'],
    },
    reflected: {
      verdicts: Uint8Array.of(
        11,
        11,
        11,
        11,
        11,
        11,
        11,
        11,
        5,
        11,
        0,
        11,
        11,
        11,
        11,
        11,
      ),
      paths: makeDetails(pairs, { angles: new Float32Array(pairs).fill(3) }),
    },
  });
}

function list(rows: readonly Choice[]): string[] {
  return rows.map(({ pmt, reflected }) => `${pmt}${reflected ? 'r' : ''}`);
}

function rowsOf(model: Model, query: string): string[] {
  model.change({ query });
  return list(model.rows());
}

describe('a model', () => {
  it('opens with the first event and everything shown', () => {
    const model = createModel(samplePage());
    expect(model.state.event).toBe(0);
    expect(model.state.layers).toEqual(new Array(8).fill(true));
    expect(Array.from(model.shown())).toEqual([1, 1, 1, 1]);
    const switches = {
      vessel: true,
      hardware: true,
      nearHalf: false,
      lightPaths: false,
    };
    expect(model.state.switches).toEqual(switches);
    expect(model.state.has3D && model.state.hasShortcuts).toBe(true);
  });

  it('opens with all events if there are more than 200', () => {
    const events = Array.from({ length: 201 }, (): Point => [0, 0, 0]);
    const many = createModel(makePage({ pmts: PMTS, events }));
    expect(many.state.event).toBe('all');
    expect(many.state.sort).toEqual({ column: 'share', descending: true });
    const fewer = createModel(makePage({ pmts: PMTS, events: events.slice(1) }));
    expect(fewer.state.event).toBe(0);
  });

  it('of a page without events has nothing to show', () => {
    const model = createModel(makePage({ pmts: PMTS }));
    expect(model.state.event).toBe('all');
    expect(model.counts().all).toBe(0);
    expect(Array.from(model.shares())).toEqual([NaN, NaN, NaN, NaN]);
    expect(model.rows().length).toBe(4);
    model.step(1);
    expect(model.state.event).toBe('all');
  });

  it('of a page without PMTs has no rows', () => {
    const model = createModel(makePage({ events: [[0, 0, 0]] }));
    expect(model.rows()).toEqual([]);
    expect(model.counts().all).toBe(0);
    expect(model.found().pmts).toBe(0);
  });

  it('of one PMT has one row', () => {
    const page = makePage({ pmts: [[8300, 0, 0]], events: [[0, 0, 0]], verdicts: [6] });
    const model = createModel(page);
    expect(list(model.rows())).toEqual(['0']);
    expect(model.layerOf({ pmt: 0, reflected: false })).toBe(5);
  });

  it('refuses an event that there is not', () => {
    const model = createModel(samplePage());
    expect(() => {
      model.change({ event: 4 });
    }).toThrow(RangeError);
    expect(model.state.event).toBe(0);
  });
});

describe('counts', () => {
  it('are those of the event, whatever is shown', () => {
    const model = createModel(samplePage());
    const counts = {
      layers: [1, 0, 0, 0, 1, 0, 2, 0],
      shadowed: 2,
      withPath: 4,
      all: 4,
    };
    expect(model.counts()).toEqual(counts);
    model.isolate(4);
    model.change({ query: 'nothing' });
    expect(model.counts()).toEqual(counts);
  });

  it('are of all events, of each and of a PMT', () => {
    const model = createModel(samplePage());
    model.change({ event: 'all' });
    expect(model.counts().all).toBe(16);
    expect(model.countsOfEvents().map(({ shadowed }) => shadowed)).toEqual([
      2, 3, 0, 0,
    ]);
    expect(model.countsOfPMT(1)).toEqual({
      layers: [2, 0, 0, 0, 0, 0, 1, 1],
      shadowed: 2,
      withPath: 3,
      all: 4,
    });
  });
});

describe('layers', () => {
  it('can be isolated, and all again', () => {
    const model = createModel(samplePage());
    model.isolate(0);
    expect(Array.from(model.shown())).toEqual([0, 1, 0, 0]);
    expect(list(model.rows())).toEqual(['1']);
    model.isolate(4);
    expect(Array.from(model.shown())).toEqual([0, 0, 1, 0]);
    model.isolate(4);
    expect(Array.from(model.shown())).toEqual([1, 1, 1, 1]);
    model.isolate(6);
    model.showAll();
    expect(model.state.layers).toEqual(new Array(8).fill(true));
  });

  it('do not hide PMTs of all events but restrict their shares', () => {
    const model = createModel(samplePage());
    model.change({ event: 'all' });
    expect(Array.from(model.shares())).toEqual([1 / 3, 2 / 3, 1 / 2, 1 / 2]);
    model.isolate(1);
    expect(Array.from(model.shown())).toEqual([1, 1, 1, 1]);
    expect(Array.from(model.shares())).toEqual([0, 0, 0, 1 / 2]);
    expect(list(model.rows())[0]).toBe('3');
  });
});

describe('events', () => {
  it('follow each other to the ends', () => {
    const model = createModel(samplePage());
    model.step(-1);
    expect(model.state.event).toBe(0);
    for (let i = 0; i < 5; ++i) model.step(1);
    expect(model.state.event).toBe(3);
    model.change({ event: 'all' });
    model.step(-1);
    expect(model.state.event).toBe('all');
    model.step(1);
    expect(model.state.event).toBe(0);
  });

  it('keep the chosen PMT, of direct light where there is no reflected', () => {
    const model = createModel(samplePage());
    model.change({ event: 2, selected: { pmt: 0, reflected: true } });
    expect(model.state.selected).toEqual({ pmt: 0, reflected: true });
    model.change({ event: 1 });
    expect(model.state.selected).toEqual({ pmt: 0, reflected: false });
  });

  it('keep the order of the table, but not from one to all', () => {
    const model = createModel(samplePage());
    model.change({ sort: { column: 'time', descending: true } });
    model.change({ event: 1 });
    expect(model.state.sort.column).toBe('time');
    model.change({ event: 'all' });
    expect(model.state.sort).toEqual({ column: 'share', descending: true });
    model.change({ event: 0 });
    expect(model.state.sort).toEqual({ column: 'pmt', descending: false });
  });
});

describe('a row', () => {
  it('has its verdict, layer and path', () => {
    const model = createModel(samplePage());
    const choice = { pmt: 2, reflected: false };
    expect(model.verdictOf(choice)).toBe(5);
    expect(model.layerOf(choice)).toBe(4);
    expect(model.pathOf(choice)?.length).toBe(8500);
    expect(model.numbersOf(choice)).toEqual({
      length: 8500,
      time: model.pathOf(choice)?.time,
      angle: 0,
    });
  });

  it('of reflected light has its own', () => {
    const model = createModel(samplePage());
    model.change({ event: 2 });
    expect(model.verdictOf({ pmt: 0, reflected: true })).toBe(5);
    expect(model.pathOf({ pmt: 2, reflected: true })?.length).toBeCloseTo(3780, 6);
    expect(model.verdictOf({ pmt: 1, reflected: true })).toBe(11);
  });

  it('without a path has nothing that blocks it', () => {
    const model = createModel(samplePage());
    model.change({ event: 1 });
    expect(model.verdictOf({ pmt: 2, reflected: false })).toBe(7);
    expect(model.blockingOf({ pmt: 2, reflected: false })).toBeNull();
    expect(model.blockingOf({ pmt: 1, reflected: false })).not.toBeNull();
  });

  it('of all events has no path', () => {
    const model = createModel(samplePage());
    model.change({ event: 'all' });
    const choice = { pmt: 0, reflected: false };
    expect(model.pathOf(choice)).toBeNull();
    expect(model.numbersOf(choice).length).toBeNaN();
    expect(model.blockingOf(choice)).toBeNull();
  });

  it('of a page without reflections has no reflected light', () => {
    const model = createModel(makePage({ pmts: PMTS, events: [[0, 0, 0]] }));
    expect(model.layerOf({ pmt: 0, reflected: true })).toBe(7);
    expect(model.pathOf({ pmt: 0, reflected: true })).toBeNull();
  });
});

describe('rows', () => {
  const sorted = (
    column: Model['state']['sort']['column'],
    descending: boolean,
    event: number | 'all' = 0,
  ): string[] => {
    const model = createModel(samplePage());
    model.change({ event });
    model.change({ sort: { column, descending } });
    return list(model.rows());
  };

  it('are in natural order of names', () => {
    expect(sorted('pmt', false)).toEqual(['2', '1', '0', '3']);
    expect(sorted('pmt', true)).toEqual(['3', '0', '1', '2']);
  });

  it('can be sorted by verdict, equal ones by name', () => {
    expect(sorted('verdict', false)).toEqual(['1', '2', '0', '3']);
    expect(sorted('verdict', true)).toEqual(['0', '3', '2', '1']);
  });

  it('can be sorted by length', () => {
    expect(sorted('length', false)).toEqual(['0', '1', '2', '3']);
    expect(sorted('length', true)).toEqual(['3', '2', '1', '0']);
  });

  it('can be sorted by share', () => {
    expect(sorted('share', true, 'all')).toEqual(['1', '2', '3', '0']);
  });

  it('without a value are last in both directions', () => {
    expect(sorted('length', false, 1).at(-1)).toBe('2');
    expect(sorted('length', true, 1).at(-1)).toBe('2');
  });

  it('of reflected light follow those of direct light', () => {
    expect(sorted('pmt', false, 2)).toEqual(['2', '2r', '1', '0', '0r', '3']);
    expect(sorted('pmt', true, 2)).toEqual(['3', '0', '0r', '1', '2', '2r']);
  });

  it('of reflected light are sorted by their own numbers', () => {
    expect(sorted('length', false, 2).slice(0, 2)).toEqual(['2', '2r']);
    expect(sorted('verdict', false, 2)).toEqual(['0r', '2', '2r', '1', '0', '3']);
  });

  it('of reflected light can be shown alone', () => {
    const model = createModel(samplePage());
    model.change({ event: 2 });
    model.isolate(4);
    expect(list(model.rows())).toEqual(['0r']);
    expect(Array.from(model.shown())).toEqual([0, 0, 0, 0]);
  });

  it('stay the same list until something changes them', () => {
    const model = createModel(samplePage());
    const rows = model.rows();
    model.hover({ pmt: 1, reflected: false });
    expect(model.rows()).toBe(rows);
    model.change({ query: 'tube' });
    expect(model.rows()).not.toBe(rows);
  });
});

describe('the search', () => {
  it('finds parts of names in any case', () => {
    const model = createModel(samplePage());
    expect(rowsOf(model, 'pmt')).toEqual(['2', '1', '0']);
    expect(model.found().pmts).toBe(3);
    expect(Array.from(model.shown())).toEqual([1, 1, 1, 0]);
    expect(rowsOf(model, 'TUBE')).toEqual(['3']);
  });

  it('puts a PMT with exactly this name first', () => {
    const page = makePage({
      pmts: [...PMTS],
      events: [[0, 0, 0]],
      text: { pmtNames: ['1', '12', '21', '2'] },
    });
    const model = createModel(page);
    expect(rowsOf(model, '2')).toEqual(['3', '1', '2']);
    model.change({ sort: { column: 'pmt', descending: true } });
    expect(list(model.rows())).toEqual(['3', '2', '1']);
  });

  it('finds nothing without an error', () => {
    const model = createModel(samplePage());
    expect(rowsOf(model, '(?:<[')).toEqual([]);
    expect(model.found()).toEqual({ pmts: 0, events: [], unused: [] });
  });

  it('finds verdicts and numbers, joined by and', () => {
    const model = createModel(samplePage());
    expect(rowsOf(model, 'by:clear')).toEqual(['0', '3']);
    expect(rowsOf(model, 'by:rope by:pipe')).toEqual([]);
    expect(rowsOf(model, 'path>8.35')).toEqual(['2', '1', '3']);
    expect(rowsOf(model, 'path>8.35 path<=8.5')).toEqual(['2', '1']);
    expect(rowsOf(model, 'z<0')).toEqual(['3']);
    expect(rowsOf(model, 'x>0 by:clear')).toEqual(['0']);
    expect(rowsOf(model, 'angle>0')).toEqual([]);
    expect(rowsOf(model, 'time>0')).toEqual(['2', '1', '0', '3']);
    expect(rowsOf(model, 'share>60')).toEqual(['1']);
  });

  it('finds reflected light by its name, verdict and path', () => {
    const model = createModel(samplePage());
    model.change({ event: 2 });
    expect(rowsOf(model, 'pmt 2')).toEqual(['2', '2r']);
    expect(rowsOf(model, 'by:pipe')).toEqual(['0r']);
    expect(model.found().pmts).toBe(1);
    expect(rowsOf(model, 'path>3 path<4')).toEqual(['2r']);
  });

  it('finds what any event has among all events', () => {
    const model = createModel(samplePage());
    model.change({ event: 'all', sort: { column: 'pmt', descending: false } });
    expect(model.state.sort.column).toBe('pmt');
    expect(rowsOf(model, 'by:pipe')).toEqual(['2']);
    expect(rowsOf(model, 'path>9')).toEqual(['2', '1', '0', '3']);
    expect(model.found().unused).toEqual(['path>9']);
  });

  it('tells which terms a page without light paths cannot use', () => {
    const page = makePage({
      pmts: PMTS,
      events: [[0, 0, 0]],
      text: { content: 'verdicts' },
    });
    const model = createModel(page);
    expect(rowsOf(model, 'time<40 by:clear').length).toBe(4);
    expect(model.found().unused).toEqual(['time<40']);
  });

  it('of a text that only events have leaves the PMTs', () => {
    const model = createModel(samplePage());
    expect(rowsOf(model, 'water').length).toBe(4);
    expect(model.found().events).toEqual([2]);
    model.takeFound();
    expect(model.state.event).toBe(2);
    expect(model.state.query).toBe('');
  });

  it('takes the row it finds first', () => {
    const model = createModel(samplePage());
    model.change({ query: 'pmt' });
    model.takeFound();
    expect(model.state.selected).toEqual({ pmt: 2, reflected: false });
  });

  it('takes a row, not an event, of a text that both have', () => {
    const page = makePage({
      pmts: PMTS,
      events: [
        [0, 0, 0],
        [0, 0, 0],
      ],
    });
    const model = createModel(page);
    model.change({ query: '1' });
    expect(model.found().events).toEqual([1]);
    model.takeFound();
    expect(model.state.selected).toEqual({ pmt: 1, reflected: false });
    expect(model.state.event).toBe(0);
  });

  it('takes nothing for no text', () => {
    const model = createModel(samplePage());
    model.takeFound();
    expect(model.state.selected).toBeNull();
  });

  it('puts the event with exactly this name first', () => {
    const page = makePage({
      pmts: [[8300, 0, 0]],
      events: [
        [0, 0, 0],
        [0, 0, 0],
      ],
      text: { eventNames: ['z=30', 'z=3'] },
    });
    const model = createModel(page);
    model.change({ query: 'z=3' });
    expect(model.found().events).toEqual([1, 0]);
  });

  it('takes a whole name as text, whatever it looks like', () => {
    const page = makePage({
      pmts: PMTS,
      events: [[0, 0, 0]],
      text: { pmtNames: ['by:clear', 'z<0', '<b>"\u202E', '3'] },
    });
    const model = createModel(page);
    expect(rowsOf(model, 'z<0')).toEqual(['1']);
    expect(rowsOf(model, 'by:clear')).toEqual(['0']);
    expect(rowsOf(model, '<b>"\u202E')).toEqual(['2']);
    expect(rowsOf(model, 'z<1').length).toBe(3);
  });

  it('passes over positions that are not finite', () => {
    const page = makePage({
      pmts: [
        [NaN, NaN, NaN],
        [1, 1, -Infinity],
      ],
      events: [[0, 0, 0]],
      verdicts: [10, 10],
    });
    const model = createModel(page);
    expect(rowsOf(model, 'z<0')).toEqual(['1']);
    expect(rowsOf(model, 'path>0')).toEqual([]);
  });
});
