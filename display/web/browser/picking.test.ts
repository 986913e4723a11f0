import { mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import type { Page } from 'playwright-core';
import { afterAll, beforeAll, expect, test } from 'vitest';
import { addressOf, Browser } from './chromium.ts';
import { EVENTS, scan, writePage } from './command.ts';
import { marksOf, openDisplay, textOf } from './display.ts';

const folder = mkdtempSync(join(tmpdir(), 'zarn-picking-'));
const browser = new Browser();
let page: Page;
let verdicts: Map<string, Map<string, string>>;

beforeAll(async () => {
  const file = writePage(join(folder, 'page.html'), '--events', EVENTS);
  verdicts = scan(join(folder, 'scan.csv'), '--events', EVENTS);
  page = await openDisplay(browser, addressOf(file));
});

afterAll(async () => {
  await browser.close();
  rmSync(folder, { recursive: true, force: true });
});

/** What the card says of each verdict of a scan. */
const SENTENCES: Record<string, string> = {
  '': 'Clear',
  AVHDRope: 'Blocked by hold-down ropes',
  SupportRope: 'Blocked by support ropes',
  BellyPlate: 'Blocked by belly plates',
  NCDAnchor: 'Blocked by NCD anchors',
  AVPipe: 'Blocked by AV pipes',
  NeckBoss: 'Blocked by neck boss',
  'no path': 'No path: total reflection',
};

for (const view of ['scene', 'map'] as const) {
  test(`a click in the ${view} gives the verdict that scan gives`, async () => {
    for (const event of ['z=3000', 'z=5500', 'x=7000 z=0']) {
      await page.evaluate((name) => {
        location.hash = `event=${encodeURIComponent(name)}`;
      }, event);
      const marks = await marksOf(page, view);
      // Every so many, so that all parts of the view are picked.
      const some = marks.filter((_, i) => i % Math.ceil(marks.length / 67) === 0);
      for (const mark of some) {
        await page.mouse.click(mark.x, mark.y);
        const name = await textOf(page, '.side .card-title');
        const verdict = verdicts.get(event)?.get(name.replace('PMT ', ''));
        expect(await textOf(page, '.side .card-verdict')).toBe(
          SENTENCES[verdict ?? 'missing'],
        );
      }
    }
  });
}
