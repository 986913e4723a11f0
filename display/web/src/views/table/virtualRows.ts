/** Rows beyond the edges, so that scrolling shows no gap before they are made. */
const EXTRA_ROWS = 8;

/** More are on no screen, but in a place without a height of its own, as in print. */
const MOST_ROWS = 200;

/** What a list of rows is made of. */
export interface RowSource<Row extends { element: HTMLElement }> {
  make(): Row;
  fill(row: Row, index: number): void;
}

/**
 * Rows of equal height in a scrolling element, of which only those in view exist.
 *
 * The body's height is that of all rows; @p header covers the top of the view.
 */
export class VirtualRows<Row extends { element: HTMLElement }> {
  private count = 0;
  private height = 1;
  private rows = new Map<number, Row>();
  private spare: Row[] = [];
  private isWaiting = false;
  /** The row that stays in view when sizes change, until the user scrolls. */
  private revealed: number | null = null;

  /** @param probe  an element as high as a row */
  constructor(
    private readonly scroller: HTMLElement,
    private readonly header: HTMLElement,
    private readonly body: HTMLElement,
    probe: HTMLElement,
    private readonly source: RowSource<Row>,
  ) {
    scroller.addEventListener(
      'scroll',
      () => {
        this.showSoon();
      },
      { passive: true },
    );
    for (const type of ['wheel', 'pointerdown', 'keydown']) {
      scroller.addEventListener(type, () => (this.revealed = null), { passive: true });
    }
    const observer = new ResizeObserver(() => {
      this.measure(probe);
    });
    observer.observe(scroller);
    observer.observe(probe);
  }

  private measure(probe: HTMLElement): void {
    // Nothing has a size while the table is not shown.
    if (probe.offsetHeight === 0) return;
    const top = this.scroller.scrollTop / this.height;
    if (this.height !== probe.offsetHeight) {
      this.height = probe.offsetHeight;
      this.body.style.height = `${this.count * this.height}px`;
      this.scroller.scrollTop = top * this.height;
    }
    this.show(true);
    if (this.revealed !== null) this.reveal(this.revealed);
  }

  /** Change the number of rows and fill all in view again. */
  setCount(count: number): void {
    this.count = count;
    this.body.style.height = `${count * this.height}px`;
    this.show(true);
  }

  /** Fill the rows in view again. */
  refill(): void {
    for (const [index, row] of this.rows) this.source.fill(row, index);
  }

  /** Make all rows anew: they have other cells. */
  rebuild(): void {
    for (const row of this.rows.values()) row.element.remove();
    this.rows.clear();
    this.spare = [];
    this.show(true);
  }

  /** How many rows fit in the view, at least 1. */
  rowsOfPage(): number {
    return Math.max(1, Math.floor(this.roomForRows() / this.height));
  }

  /** The first row that is in view as a whole. */
  firstInView(): number {
    return Math.min(this.count - 1, Math.ceil(this.scroller.scrollTop / this.height));
  }

  /** Scroll as little as a row needs to be in view; to the middle if it is far. */
  reveal(index: number): void {
    this.revealed = index;
    const top = index * this.height;
    const view = this.scroller.scrollTop;
    const room = this.roomForRows();
    if (top >= view && top + this.height <= view + room) return;
    const isNear = top > view - 2 * this.height && top < view + room + this.height;
    // Whole rows at the top.
    const above = Math.floor((room / this.height - 1) / 2);
    if (!isNear) this.scroller.scrollTop = top - above * this.height;
    else if (top < view) this.scroller.scrollTop = top;
    else this.scroller.scrollTop = top + this.height - room;
    this.show(false);
  }

  scrollToTop(): void {
    this.revealed = null;
    this.scroller.scrollTop = 0;
  }

  private roomForRows(): number {
    return Math.max(0, this.scroller.clientHeight - this.header.offsetHeight);
  }

  private showSoon(): void {
    if (this.isWaiting) return;
    this.isWaiting = true;
    requestAnimationFrame(() => {
      this.isWaiting = false;
      this.show(false);
    });
  }

  /** Make the rows in view, from those that have left it. */
  private show(fillsAll: boolean): void {
    const first = Math.floor(this.scroller.scrollTop / this.height) - EXTRA_ROWS;
    const room = Math.min(
      MOST_ROWS,
      Math.ceil(this.scroller.clientHeight / this.height),
    );
    const begin = Math.max(0, first);
    const end = Math.min(this.count, first + room + 2 * EXTRA_ROWS);
    for (const [index, row] of this.rows) {
      if (index >= begin && index < end) continue;
      this.rows.delete(index);
      this.spare.push(row);
    }
    for (let index = begin; index < end; ++index) {
      let row = this.rows.get(index);
      if (row === undefined || fillsAll) {
        row ??= this.spare.pop() ?? this.source.make();
        this.rows.set(index, row);
        row.element.style.transform = `translateY(${index * this.height}px)`;
        this.source.fill(row, index);
      }
    }
    for (const row of this.spare) row.element.remove();
    this.order(begin, end);
  }

  /** Screen readers read in the order of elements. */
  private order(begin: number, end: number): void {
    let next = this.body.firstElementChild;
    for (let index = begin; index < end; ++index) {
      const element = this.rows.get(index)?.element;
      if (element === undefined) continue;
      if (element === next) next = next.nextElementSibling;
      else this.body.insertBefore(element, next);
    }
  }
}
