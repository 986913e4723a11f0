import { describe, expect, it } from 'vitest';
import { readQuery } from '../../src/model/query';

/** The layers of the first term. */
function layersOf(query: string): number[] {
  const [term] = readQuery(query);
  if (term?.kind !== 'layers') return [];
  return term.layers.flatMap((is, layer) => (is ? [layer] : []));
}

describe('readQuery', () => {
  it('finds nothing in nothing', () => {
    expect(readQuery('')).toEqual([]);
    expect(readQuery(' \t ')).toEqual([]);
  });

  it('takes words of text next to each other as one name', () => {
    expect(readQuery(' In  the wall ')).toEqual([
      { kind: 'text', text: 'in  the wall' },
    ]);
  });

  it('separates text by other terms', () => {
    expect(readQuery('a b z<0 c').map(({ kind }) => kind)).toEqual([
      'text',
      'compare',
      'text',
    ]);
  });

  it.each([
    ['path>9', 'path', true, false, 9],
    ['time<40', 'time', false, false, 40],
    ['angle>=30.5', 'angle', true, true, 30.5],
    ['Z<-1000', 'z', false, false, -1000],
    ['x<=−2', 'x', false, true, -2],
    ['share>50', 'share', true, false, 50],
  ])('reads %s', (word, quantity, isAbove, orEqual, limit) => {
    expect(readQuery(word)).toEqual([
      { kind: 'compare', quantity, isAbove, orEqual, limit, word },
    ]);
  });

  it.each(['path>', 'z<-', 'y>=', 'z<.', 'by:'])(
    'lets %s, which is not complete yet, restrict nothing',
    (query) => {
      expect(readQuery(query)).toEqual([]);
    },
  );

  it.each([
    'path=9',
    'q>3',
    'path>9m',
    'path>1.2.3',
    'by:nothing',
    'path >',
    '>9',
    'by',
  ])('takes %s as text', (query) => {
    expect(readQuery(query)).toEqual([{ kind: 'text', text: query }]);
  });

  it.each([
    ['by:pipe', [4]],
    ['by:AVPipe', [4]],
    ['BY:Rope', [0, 1]],
    ['by:hold-down', [0]],
    ['by:down', [0]],
    ['by:ncd', [3]],
    ['by:boss', [5]],
    ['by:clear', [6]],
    ['by:none', [7]],
    ['by:no', [7]],
    ['by:n', [3, 5, 7]],
  ])('knows the layers of %s', (query, layers) => {
    expect(layersOf(query)).toEqual(layers);
  });
});
