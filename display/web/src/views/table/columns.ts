import { formatNumber, formatPercent, nameLayer } from '../../model/format';
import type { Choice, Column, Model } from '../../model/model';
import { element, setText, svgElement } from '../dom';
import { changeMark, createMark } from '../mark';
import { setName } from '../text';

/** A cell that can show any row. */
export interface Cell {
  element: HTMLElement;
  fill(choice: Choice): void;
}

/** A column of the table. */
export interface TableColumn {
  /** Null: it cannot be sorted by this. */
  sort: Column | null;
  label: string;
  /** For the widths and the side on which it is set. */
  className: string;
  makeCell(): Cell;
}

/** Light that goes down to a surface and up again. */
function drawReflection(): SVGSVGElement {
  return svgElement(
    'svg',
    {
      class: 'table-reflection',
      viewBox: '0 0 12 12',
      role: 'img',
      'aria-label': 'reflected light',
    },
    svgElement('path', { d: 'M1.5 2 6 8.5 10.5 2M1 11h10' }),
  );
}

function makeNameCell(model: Model): Cell {
  const name = element('bdi', { class: 'table-name-text' });
  const reflection = drawReflection();
  const cell = element('div', { role: 'rowheader', class: 'table-name' }, name);
  return {
    element: cell,
    fill({ pmt, reflected }) {
      setName(name, model.page.text.pmtNames[pmt] ?? '');
      if (reflected) cell.append(reflection);
      else reflection.remove();
    },
  };
}

function makeVerdictCell(model: Model): Cell {
  const mark = createMark(0);
  const words = element('span', { class: 'table-words' });
  const cell = element(
    'div',
    { role: 'gridcell', class: 'table-verdict' },
    mark,
    words,
  );
  return {
    element: cell,
    fill(choice) {
      const layer = model.layerOf(choice);
      changeMark(mark, layer);
      setName(words, nameLayer(layer));
    },
  };
}

function makeTextCell(className: string, tell: (choice: Choice) => string): Cell {
  const cell = element('div', { role: 'gridcell', class: className });
  return {
    element: cell,
    fill(choice) {
      setText(cell, tell(choice));
    },
  };
}

function makeBarCell(model: Model): Cell {
  const bar = element('div', { class: 'table-bar' });
  const cell = element('div', { role: 'gridcell', class: 'table-bars' }, bar);
  return {
    element: cell,
    fill({ pmt }) {
      const share = model.shares()[pmt] ?? NaN;
      bar.hidden = Number.isNaN(share);
      if (bar.hidden) return;
      bar.style.width = `${100 * share}%`;
    },
  };
}

/** The columns that the table has now. */
export function listColumns(model: Model): TableColumn[] {
  const column = (
    sort: Column | null,
    label: string,
    className: string,
    makeCell: () => Cell,
  ): TableColumn => ({ sort, label, className, makeCell });
  const number = (
    sort: Column,
    label: string,
    tell: (choice: Choice) => string,
  ): TableColumn =>
    column(sort, label, 'table-number', () => makeTextCell('table-number', tell));
  const name = column('pmt', 'PMT', 'table-name', () => makeNameCell(model));
  if (model.state.event === 'all') {
    return [
      name,
      column(null, 'Events hidden from it', 'table-bars', () => makeBarCell(model)),
      number('share', 'Share', ({ pmt }) => formatPercent(model.shares()[pmt] ?? NaN)),
    ];
  }
  const verdict = column('verdict', 'Verdict', 'table-verdict', () =>
    makeVerdictCell(model),
  );
  if (model.page.text.content === 'verdicts') return [name, verdict];
  return [
    name,
    verdict,
    number('length', 'Path, m', (choice) =>
      formatNumber(model.numbersOf(choice).length / 1000, 2),
    ),
    number('time', 'Time, ns', (choice) =>
      formatNumber(model.numbersOf(choice).time, 1),
    ),
    number('angle', 'Angle, °', (choice) =>
      formatNumber(model.numbersOf(choice).angle, 1),
    ),
  ];
}
