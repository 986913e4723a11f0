/** Of a label from its mark, and from the edges of the view, CSS pixels. */
const MARGIN = 4;
/** Longer texts are cut: a label is a line. */
const LONGEST_TEXT = 200;

/** CSS pixels from the view's top left. */
export interface Box {
  left: number;
  top: number;
  width: number;
  height: number;
}

/** Where a label belongs: a mark, and how far it keeps from it. */
export interface Anchor {
  x: number;
  y: number;
  /** Of the mark. */
  radius: number;
  /** Beside the mark if there is room, else below it. */
  isBeside: boolean;
}

/** A label over the picture. Its text is always text, never markup. */
export class Label {
  private readonly element = document.createElement('div');
  private readonly size = { width: 0, height: 0 };
  /** Where it is; null while it is hidden. */
  box: Box | null = null;

  constructor(parent: HTMLElement) {
    this.element.className = 'scene-label';
    this.element.hidden = true;
    // Names may be written from right to left.
    this.element.dir = 'auto';
    parent.append(this.element);
  }

  get text(): string {
    return this.element.textContent;
  }

  hide(): void {
    this.element.hidden = true;
    this.box = null;
  }

  /** Show @p text near @p anchor, inside the view and away from @p others. */
  show(text: string, anchor: Anchor, view: Box, others: readonly Box[]): void {
    const shortened =
      text.length > LONGEST_TEXT ? `${text.slice(0, LONGEST_TEXT)}…` : text;
    if (this.element.hidden || this.text !== shortened) {
      this.element.hidden = false;
      this.element.textContent = shortened;
      this.size.width = this.element.offsetWidth;
      this.size.height = this.element.offsetHeight;
    }
    const { left, top } = placeBox(this.size, anchor, view, others);
    this.box = { left, top, ...this.size };
    this.element.style.transform = `translate(${Math.round(left)}px, ${Math.round(top)}px)`;
  }
}

/** The first place around the anchor that is in the view and free. */
export function placeBox(
  size: { width: number; height: number },
  anchor: Anchor,
  view: Box,
  others: readonly Box[],
): { left: number; top: number } {
  const { x, y, radius } = anchor;
  const gap = radius + MARGIN;
  const [right, left] = [x + gap, x - gap - size.width];
  const [below, above, middle] = [y + gap, y - gap - size.height, y - size.height / 2];
  const beside = [
    { left: right, top: middle },
    { left, top: middle },
  ];
  const corners = [
    { left: right - 4, top: below - 4 },
    { left: right - 4, top: above + 4 },
    { left: left + 4, top: below - 4 },
    { left: left + 4, top: above + 4 },
  ];
  const places = anchor.isBeside ? [...beside, ...corners] : [...corners, ...beside];
  const isInside = (place: { left: number; top: number }): boolean =>
    place.left >= view.left + MARGIN &&
    place.top >= view.top + MARGIN &&
    place.left + size.width <= view.left + view.width - MARGIN &&
    place.top + size.height <= view.top + view.height - MARGIN;
  const isFree = (place: { left: number; top: number }): boolean =>
    others.every(
      (other) =>
        place.left > other.left + other.width ||
        place.left + size.width < other.left ||
        place.top > other.top + other.height ||
        place.top + size.height < other.top,
    );
  const best =
    places.find((place) => isInside(place) && isFree(place)) ??
    places.find(isInside) ??
    places[0];
  const clamp = (value: number, low: number, high: number): number =>
    Math.max(Math.min(value, high), low);
  return {
    left: clamp(best?.left ?? 0, MARGIN, view.width - size.width - MARGIN),
    top: clamp(best?.top ?? 0, MARGIN, view.height - size.height - MARGIN),
  };
}
