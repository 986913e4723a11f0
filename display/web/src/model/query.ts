import palette from '../../../palette.json';
import { foldName } from './names';

/** What can be compared with a number. */
export const QUANTITIES = ['path', 'time', 'angle', 'share', 'x', 'y', 'z'] as const;
export type Quantity = (typeof QUANTITIES)[number];

/** A part of a search; all of them must hold. */
export type Term =
  | { kind: 'text'; text: string }
  | { kind: 'layers'; layers: readonly boolean[] }
  | {
      kind: 'compare';
      quantity: Quantity;
      isAbove: boolean;
      orEqual: boolean;
      /** In the units that the page shows: m, ns, degrees, percent, mm. */
      limit: number;
      word: string;
    };

const COMPARE = /^(path|time|angle|share|x|y|z)(<|>)(=?)([-+−]?[\d.]*)$/i;
const BY = /^by:(.*)$/i;

/** By layer, the words by which the search knows it. */
const layerWords: readonly string[][] = [
  ...Object.entries(palette.components).map(([key, { name }]) => [key, name]),
  [palette.clear],
  [palette.noPath, 'none'],
].map((names) =>
  names.flatMap((name) => [name, ...name.split(/[ -]/)]).map((name) => foldName(name)),
);

function readBy(start: string): readonly boolean[] {
  const folded = foldName(start);
  return layerWords.map((words) => words.some((word) => word.startsWith(folded)));
}

/** The term that a word is; null: text, undefined: not complete yet. */
function readWord(word: string): Term | null | undefined {
  const by = BY.exec(word);
  if (by) {
    const layers = readBy(by[1] ?? '');
    if (layers.every((is) => is)) return undefined;
    return layers.some((is) => is) ? { kind: 'layers', layers } : null;
  }
  const compare = COMPARE.exec(word);
  if (!compare) return null;
  const [, quantity = '', sign, equal, digits = ''] = compare;
  const number = digits.replace('−', '-');
  const limit = Number(number);
  if (number === '' || /^[-+.]+$/.test(number)) return undefined;
  if (Number.isNaN(limit)) return null;
  return {
    kind: 'compare',
    quantity: quantity.toLowerCase() as Quantity,
    isAbove: sign === '>',
    orEqual: equal === '=',
    limit,
    word,
  };
}

/**
 * The terms of a search: `by:pipe`, `path>9`, and text for everything else. Words of
 * text next to each other are one text, because names may have spaces. A term that is
 * not complete yet, `path>`, does not restrict anything.
 */
export function readQuery(query: string): Term[] {
  const terms: Term[] = [];
  let text = '';
  const endText = (): void => {
    if (text.trim() !== '') terms.push({ kind: 'text', text: foldName(text.trim()) });
    text = '';
  };
  // Spaces between words of a name stay as they are.
  for (const part of query.split(/(\s+)/)) {
    const term = part.trim() === '' ? null : readWord(part);
    if (term === null) {
      text += part;
      continue;
    }
    endText();
    if (term) terms.push(term);
  }
  endText();
  return terms;
}
