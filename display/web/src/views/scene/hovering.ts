/** How long the pointer rests on a mark before it counts, ms. */
const REST = 100;

/** Turns what the pointer is over into what it rests on. */
export class Hovering {
  private over: number | null = null;
  private timer: ReturnType<typeof setTimeout> | undefined;

  /** @param report is called with the mark, or with null when it is left */
  constructor(private readonly report: (pmt: number | null) => void) {}

  move(pmt: number | null): void {
    if (pmt === this.over) return;
    this.over = pmt;
    clearTimeout(this.timer);
    if (pmt === null) {
      this.report(null);
      return;
    }
    this.timer = setTimeout(() => {
      this.report(pmt);
    }, REST);
  }

  stop(): void {
    clearTimeout(this.timer);
    this.over = null;
  }
}
