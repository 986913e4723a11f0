import { describe, expect, it } from 'vitest';
import type { State } from '../../src/model/model';
import { firstState } from '../../src/model/state';
import { Store } from '../../src/model/store';
import { makePage } from '../support/makePage';

function makeStore(): { store: Store; told: string[][] } {
  const store = new Store(firstState(makePage({ events: [[0, 0, 0]] })), () => ({}));
  const told: string[][] = [];
  store.subscribe((changed) => told.push([...changed].sort()));
  return { store, told };
}

describe('Store', () => {
  it('tells what changed', () => {
    const { store, told } = makeStore();
    store.change({ query: 'a', mainView: 'map' });
    expect(told).toEqual([['mainView', 'query']]);
    expect(store.state.query).toBe('a');
  });

  it('does not tell of what stays the same', () => {
    const { store, told } = makeStore();
    store.change({ selected: { pmt: 1, reflected: false } });
    const same: Partial<State> = {
      selected: { pmt: 1, reflected: false },
      hovered: null,
      layers: [...store.state.layers],
      sort: { ...store.state.sort },
      switches: { ...store.state.switches },
    };
    store.change(same);
    expect(told).toEqual([['selected']]);
  });

  it('tells the reflected row from the direct one', () => {
    const { store, told } = makeStore();
    store.change({ selected: { pmt: 1, reflected: false } });
    store.change({ selected: { pmt: 1, reflected: true } });
    store.change({ selected: null });
    expect(told.length).toBe(3);
  });

  it('tells all listeners of changes that a listener makes', () => {
    const { store, told } = makeStore();
    store.subscribe((changed) => {
      if (changed.has('query')) store.change({ selected: null, mainView: 'table' });
    });
    const later: string[][] = [];
    store.subscribe((changed) => later.push([...changed]));
    store.change({ query: 'a' });
    expect(told).toEqual([['query'], ['mainView']]);
    expect(later).toEqual([['query'], ['mainView']]);
  });

  it('tells further changes after a listener has failed', () => {
    const { store, told } = makeStore();
    let fails = true;
    store.subscribe(() => {
      if (fails) throw new Error('drawing failed');
    });
    expect(() => {
      store.change({ query: 'a' });
    }).toThrow('drawing failed');
    fails = false;
    store.change({ query: 'b' });
    expect(told).toEqual([['query'], ['query']]);
  });
});
