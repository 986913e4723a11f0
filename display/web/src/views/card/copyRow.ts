import type { Choice, Model } from '../../model/model';
import { nameVerdict } from '../../model/format';
import { element } from '../dom';
import { makeButton } from '../text';

/** A name must not end the cell of a table into which it is pasted. */
function cleanName(name: string): string {
  return name.replaceAll(/[\t\r\n]+/g, ' ');
}

/**
 * A row as spreadsheets take it: cells between tabs. Event, PMT, kind of light,
 * verdict, path in m, time in ns, angle in degrees, position in mm; all numbers with
 * a plain minus sign.
 */
export function writeRow(model: Model, choice: Choice): string {
  const { page, state } = model;
  const { pmt, reflected } = choice;
  const event =
    state.event === 'all' ? 'all' : (page.text.eventNames[state.event] ?? '');
  const path = model.pathOf(choice);
  const position = page.pmtPositions.slice(3 * pmt, 3 * pmt + 3);
  return [
    cleanName(event),
    cleanName(page.text.pmtNames[pmt] ?? ''),
    reflected ? 'reflected' : 'direct',
    nameVerdict(model.verdictOf(choice)),
    path === null ? '' : (path.length / 1000).toFixed(4),
    path === null ? '' : path.time.toFixed(3),
    path === null ? '' : path.angle.toFixed(2),
    ...Array.from(position, (part) => part.toFixed(1)),
  ].join('\t');
}

const TOLD_FOR = 2000;

/** Copy text; false where the browser does not let a page do it. */
async function copyText(text: string): Promise<boolean> {
  try {
    // Not there in pages that the browser does not trust.
    await navigator.clipboard.writeText(text);
    return true;
  } catch {
    return false;
  }
}

/**
 * A button that copies a text, and what it tells of that. Where the browser refuses,
 * the text is shown selected, to be copied by hand.
 */
export class CopyButton {
  readonly button: HTMLButtonElement;
  readonly told = element('span', { role: 'status', class: 'card-told' });
  readonly byHand = element('input', {
    class: 'card-by-hand',
    readonly: true,
    hidden: true,
    'aria-label': 'Row to copy',
  });
  private timer = 0;

  constructor(label: string, textOf: () => string) {
    this.button = makeButton('card-button', label, () => {
      void this.copy(textOf());
    });
  }

  /** Forget what was told of another row. */
  reset(): void {
    clearTimeout(this.timer);
    this.told.textContent = '';
    this.byHand.hidden = true;
  }

  private async copy(text: string): Promise<void> {
    this.reset();
    if (await copyText(text)) {
      this.told.textContent = 'Copied';
      this.timer = window.setTimeout(() => {
        this.reset();
      }, TOLD_FOR);
      return;
    }
    this.told.textContent = 'Copy it from here:';
    this.byHand.hidden = false;
    this.byHand.value = text;
    this.byHand.select();
  }
}
