import { formatCount, nameLayer } from '../../model/format';
import type { Column, Model } from '../../model/model';
import { element, setText } from '../dom';
import { isolateName, makeButton } from '../text';
import type { TableColumn } from './columns';

/** Say how many PMTs are found, and by what: "314 of 8,000 · AV pipes". */
export function tellFound(model: Model, found: number): (Node | string)[] {
  const all = model.page.text.pmtNames.length;
  const { layers, query } = model.state;
  const shown = layers.flatMap((isShown, layer) => (isShown ? [layer] : []));
  const [only] = shown;
  const words: (Node | string)[] = [
    found === all ? formatCount(all) : `${formatCount(found)} of ${formatCount(all)}`,
  ];
  if (shown.length === 1 && only !== undefined) words.push(` · ${nameLayer(only)}`);
  if (query !== '') words.push(' · ', isolateName(query));
  return words;
}

/** Say that no PMT is found, with what finds all again. */
export function tellNoneFound(model: Model): HTMLElement {
  const { query } = model.state;
  if (query === '') {
    const all = makeButton('table-reset', 'Show all.', () => {
      model.showAll();
    });
    return element('p', { class: 'table-none' }, 'No PMT has what is shown. ', all);
  }
  const text = element('em', {}, isolateName(query));
  const clear = makeButton('table-reset', 'Clear the search.', () => {
    model.change({ query: '' });
  });
  return element('p', { class: 'table-none' }, 'No PMT matches ', text, '. ', clear);
}

/** The row of headings. */
export interface HeadingRow {
  element: HTMLElement;
  /** Show the columns that the table has now. */
  setColumns(columns: readonly TableColumn[]): void;
  /** Show by which column the rows are sorted. */
  showSort(): void;
}

/** Numbers that are interesting where they are large. */
const DESCENDS_FIRST: readonly Column[] = ['share'];

function sortBy(model: Model, column: Column): void {
  const { sort } = model.state;
  const descending =
    sort.column === column ? !sort.descending : DESCENDS_FIRST.includes(column);
  model.change({ sort: { column, descending } });
}

/** Create the row of headings, which sort the table. */
export function createHeadings(model: Model): HeadingRow {
  const row = element('div', {
    role: 'row',
    class: 'table-row table-headings',
    'aria-rowindex': 1,
  });
  const shown: { cell: HTMLElement; arrow: HTMLElement; sort: Column }[] = [];
  const showSort = (): void => {
    const { column, descending } = model.state.sort;
    for (const { cell, arrow, sort } of shown) {
      const isSorted = sort === column;
      if (isSorted) cell.ariaSort = descending ? 'descending' : 'ascending';
      else cell.removeAttribute('aria-sort');
      setText(arrow, isSorted ? (descending ? '↓' : '↑') : '');
    }
  };
  return {
    element: row,
    setColumns(columns) {
      shown.length = 0;
      const cells = columns.map(({ sort, label, className }) => {
        const cell = element('div', { role: 'columnheader', class: className });
        if (sort === null) {
          cell.append(label);
          return cell;
        }
        const arrow = element('span', { class: 'table-arrow', 'aria-hidden': 'true' });
        const button = makeButton('table-sort', label, () => {
          sortBy(model, sort);
        });
        button.append(arrow);
        cell.append(button);
        shown.push({ cell, arrow, sort });
        return cell;
      });
      row.replaceChildren(...cells);
      showSort();
    },
    showSort,
  };
}
