import '../../style/table.css';
import type { Choice, Model, State } from '../../model/model';
import { element } from '../dom';
import { listColumns, type Cell } from './columns';
import { createHeadings, tellFound, tellNoneFound } from './heading';
import { VirtualRows } from './virtualRows';

/** The table of the PMTs. */
export interface TableView {
  readonly element: HTMLElement;
}

/** A row that can show any PMT. */
interface Row {
  element: HTMLElement;
  cells: Cell[];
}

const CHANGES_ROWS: readonly (keyof State)[] = ['event', 'layers', 'query', 'sort'];

/** The least room for names, in characters: that of the heading. */
const SHORTEST_NAME = 4;

/** Whether two choices are the same row. */
function isSame(one: Choice | null, other: Choice | null | undefined): boolean {
  if (one === null || other === null || other === undefined) return false;
  return one.pmt === other.pmt && one.reflected === other.reflected;
}

/** How many rows a key moves down; null: it is no such key. */
function stepOf(key: string, page: number): number | null {
  if (key === 'ArrowDown') return 1;
  if (key === 'ArrowUp') return -1;
  if (key === 'PageDown') return page;
  if (key === 'PageUp') return -page;
  if (key === 'End') return Infinity;
  if (key === 'Home') return -Infinity;
  return null;
}

class Table implements TableView {
  readonly element: HTMLElement;
  private readonly headings;
  private readonly found = element('p', { class: 'table-found' });
  private readonly none = element('div', { class: 'table-empty' });
  private readonly body = element('div', { role: 'rowgroup', class: 'table-body' });
  private readonly grid: HTMLElement;
  private readonly virtual: VirtualRows<Row>;
  private rows: readonly Choice[] = [];
  /** The row that keys move; null before the first key. */
  private active: number | null = null;
  private columnsOf: 'all' | 'one' | null = null;

  constructor(private readonly model: Model) {
    this.headings = createHeadings(model);
    const head = element('div', { role: 'rowgroup', class: 'table-head' });
    head.append(this.headings.element);
    this.grid = element('div', {
      role: 'grid',
      class: 'table-grid',
      tabindex: 0,
      'aria-label': 'PMTs',
    });
    this.grid.append(head, this.body);
    const hint = element('span', { class: 'table-hint' }, ' · Enter selects');
    const title = element('h2', { class: 'table-title' }, 'PMTs');
    const counts = element('div', { class: 'table-counts' }, this.found, hint);
    const probe = element('div', { class: 'table-probe', 'aria-hidden': 'true' });
    this.element = element(
      'section',
      { class: 'table' },
      element('div', { class: 'table-top' }, title, counts),
      this.grid,
      this.none,
      probe,
    );
    this.setNameWidth();
    this.virtual = new VirtualRows<Row>(this.grid, head, this.body, probe, {
      make: () => this.makeRow(),
      fill: (row, index) => {
        this.fillRow(row, index);
      },
    });
    this.listen();
    this.updateRows();
    // An address can have selected it before.
    this.revealSelected();
    model.subscribe((changed) => {
      this.follow(changed);
    });
  }

  /** Scroll to the selected row; false if there is none. */
  private revealSelected(): boolean {
    const selected = this.findSelected();
    if (selected < 0) return false;
    this.virtual.reveal(selected);
    this.active = selected;
    this.tellActive();
    return true;
  }

  private follow(changed: ReadonlySet<keyof State>): void {
    const changesRows = CHANGES_ROWS.some((name) => changed.has(name));
    if (changesRows) this.updateRows();
    else if (changed.has('selected') || changed.has('hovered')) this.virtual.refill();
    if (changed.has('sort')) this.headings.showSort();
    if (!changesRows && !changed.has('selected')) return;
    if (this.revealSelected()) return;
    if (CHANGES_ROWS.some((name) => name !== 'event' && changed.has(name))) {
      this.virtual.scrollToTop();
    }
    this.tellActive();
  }

  private findSelected(): number {
    const { selected } = this.model.state;
    return selected === null ? -1 : this.rows.findIndex((row) => isSame(row, selected));
  }

  /** Read the rows again, and the columns where they have changed. */
  private updateRows(): void {
    const { model } = this;
    this.rows = model.rows();
    this.active = null;
    const columnsOf = model.state.event === 'all' ? 'all' : 'one';
    if (this.columnsOf !== columnsOf) {
      this.columnsOf = columnsOf;
      this.element.dataset.columns =
        columnsOf === 'one' ? model.page.text.content : 'shares';
      this.headings.setColumns(listColumns(model));
      this.virtual.rebuild();
    }
    this.virtual.setCount(this.rows.length);
    this.grid.ariaRowCount = String(this.rows.length + 1);
    const hasReflections = this.rows.some((row) => row.reflected);
    this.element.classList.toggle('has-reflections', hasReflections);
    const pmts = new Set(this.rows.map((row) => row.pmt));
    const isFiltered = pmts.size < model.page.text.pmtNames.length;
    this.element.classList.toggle('is-filtered', isFiltered);
    this.found.replaceChildren(...tellFound(model, pmts.size));
    this.none.replaceChildren(...(pmts.size === 0 ? [tellNoneFound(model)] : []));
  }

  private makeRow(): Row {
    const cells = listColumns(this.model).map((column) => column.makeCell());
    const row = element('div', { role: 'row', class: 'table-row' });
    row.append(...cells.map((cell) => cell.element));
    return { element: row, cells };
  }

  private fillRow(row: Row, index: number): void {
    const choice = this.rows[index];
    if (choice === undefined) return;
    for (const cell of row.cells) cell.fill(choice);
    const { selected, hovered } = this.model.state;
    const node = row.element;
    node.id = `table-row-${index}`;
    node.dataset.index = String(index);
    node.ariaRowIndex = String(index + 2);
    node.ariaSelected = String(isSame(choice, selected));
    node.classList.toggle('is-hovered', isSame(choice, hovered));
    node.classList.toggle('is-active', index === this.active);
  }

  private setNameWidth(): void {
    const { pmtNames } = this.model.page.text;
    const longest = pmtNames.reduce((most, name) => Math.max(most, name.length), 0);
    const width = Math.max(SHORTEST_NAME, longest);
    this.element.style.setProperty('--name-characters', String(width));
    // Numbers are compared by their last digits, other names by their first letters.
    const areNumbers = pmtNames.every((name) => /^\d+$/.test(name));
    this.element.classList.toggle('has-numbers-as-names', areNumbers);
  }

  private listen(): void {
    this.body.addEventListener('pointermove', (event) => {
      if (event.pointerType === 'touch') return;
      const choice = this.rows[this.indexAt(event.target)];
      if (choice !== undefined && !isSame(choice, this.model.state.hovered)) {
        this.model.hover(choice);
      }
    });
    this.body.addEventListener('pointerleave', (event) => {
      if (event.pointerType !== 'touch') this.model.hover(null);
    });
    this.body.addEventListener('click', (event) => {
      const choice = this.rows[this.indexAt(event.target)];
      if (choice !== undefined) this.model.select(choice);
    });
    this.grid.addEventListener('keydown', (event) => {
      if (event.target === this.grid) this.useKey(event);
    });
    this.grid.addEventListener('blur', () => {
      this.model.hover(null);
    });
  }

  /** The index of the row in which an element lies; -1 if in none. */
  private indexAt(target: EventTarget | null): number {
    if (!(target instanceof Element)) return -1;
    const row = target.closest<HTMLElement>('.table-row');
    return Number(row?.dataset.index ?? -1);
  }

  private useKey(event: KeyboardEvent): void {
    if (event.ctrlKey || event.metaKey || event.altKey || this.rows.length === 0)
      return;
    const step = stepOf(event.key, this.virtual.rowsOfPage());
    if (step !== null) {
      event.preventDefault();
      this.activate(step);
    } else if (event.key === 'Enter' && this.active !== null) {
      event.preventDefault();
      this.model.select(this.rows[this.active] ?? null);
    }
  }

  private activate(step: number): void {
    const last = this.rows.length - 1;
    const isFirst = this.active === null && Number.isFinite(step);
    const next = isFirst ? this.virtual.firstInView() : (this.active ?? 0) + step;
    this.active = Math.max(0, Math.min(last, next));
    this.virtual.reveal(this.active);
    this.model.hover(this.rows[this.active] ?? null);
    this.virtual.refill();
    this.tellActive();
  }

  /** Tell screen readers which row the keys have reached. */
  private tellActive(): void {
    if (this.active === null) this.grid.removeAttribute('aria-activedescendant');
    else this.grid.setAttribute('aria-activedescendant', `table-row-${this.active}`);
  }
}

/** Create the table in @p container, whose height it takes. */
export function createTable(container: HTMLElement, model: Model): TableView {
  const table = new Table(model);
  container.append(table.element);
  return table;
}
