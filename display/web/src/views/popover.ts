const GAP = 4;
const MARGIN = 8;

/** Place a panel of fixed position under its button, inside the window. */
function placeUnder(anchor: Element, panel: HTMLElement, width: number): void {
  const box = anchor.getBoundingClientRect();
  const used = Math.min(width, innerWidth - 2 * MARGIN);
  const left = Math.max(MARGIN, Math.min(box.left, innerWidth - used - MARGIN));
  const below = innerHeight - box.bottom - GAP - MARGIN;
  const above = box.top - GAP - MARGIN;
  const isBelow = below >= Math.min(240, above);
  panel.style.width = `${used}px`;
  panel.style.left = `${left}px`;
  panel.style.top = isBelow ? `${box.bottom + GAP}px` : 'auto';
  panel.style.bottom = isBelow ? 'auto' : `${innerHeight - box.top + GAP}px`;
  panel.style.maxHeight = `${Math.min(420, isBelow ? below : above)}px`;
}

/**
 * Make a panel that opens under an element and closes with Escape or a click beside
 * it.
 *
 * @param anchor   what it opens under
 * @param width    CSS pixels; less where the window is narrower
 * @param onOpen   called after it has opened
 */
export function makePopover(
  anchor: Element,
  panel: HTMLElement,
  width: number,
  onOpen: () => void,
): void {
  panel.popover = 'auto';
  panel.classList.add('popover');
  panel.addEventListener('beforetoggle', (event) => {
    if (event.newState === 'open') placeUnder(anchor, panel, width);
  });
  panel.addEventListener('toggle', (event) => {
    if (event.newState === 'open') onOpen();
  });
}
