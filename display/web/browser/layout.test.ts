import { mkdtempSync, readFileSync, rmSync } from 'node:fs';
import { createRequire } from 'node:module';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import type { Page } from 'playwright-core';
import { afterAll, beforeAll, expect, test } from 'vitest';
import { addressOf, Browser, type Window } from './chromium.ts';
import { EVENTS, writePage } from './command.ts';
import { drawn, marksOf, openDisplay, textOf } from './display.ts';
import { expectQuiet } from './expectQuiet.ts';

const AXE = readFileSync(
  createRequire(import.meta.url).resolve('axe-core/axe.min.js'),
  'utf8',
);
const folder = mkdtempSync(join(tmpdir(), 'zarn-layout-'));
const file = join(folder, 'page.html');
const browser = new Browser();

beforeAll(() => {
  writePage(file, '--events', EVENTS);
});

afterAll(async () => {
  await browser.close();
  rmSync(folder, { recursive: true, force: true });
});

const WINDOWS: Record<string, Window> = {
  desk: { width: 1440, height: 900 },
  drawer: { width: 1000, height: 800 },
  phone: { width: 390, height: 844, hasTouch: true },
  'zoom of 400 %': { width: 360, height: 225 },
  narrowest: { width: 320, height: 600 },
};

/** Everything that axe complains about. */
async function violationsOf(page: Page): Promise<string[]> {
  await page.evaluate(AXE);
  return page.evaluate(async () => {
    const { axe } = globalThis as unknown as {
      axe: {
        run(): Promise<{
          violations: { id: string; nodes: { html: string }[] }[];
        }>;
      };
    };
    const { violations } = await axe.run();
    return violations.map(({ id, nodes }) => `${id}: ${nodes[0]?.html ?? ''}`);
  });
}

for (const [name, window] of Object.entries(WINDOWS)) {
  test(`accessible without sideways scrolling: ${name}`, async () => {
    const start = 'event=z%3D3000&theme=light';
    const page = await openDisplay(browser, addressOf(file, start), window);
    for (const [theme, selected] of [
      ['light', null],
      ['dark', null],
      ['dark', 4512],
      ['light', 4512],
    ] as const) {
      await page.evaluate(
        (hash) => {
          location.hash = hash;
        },
        `event=z%3D3000&theme=${theme}${selected === null ? '' : `&pmt=${selected}`}`,
      );
      await drawn(page);
      const shown = await page.evaluate(() => [
        document.documentElement.dataset.theme,
        globalThis.shadowDisplay!.model.state.selected?.pmt ?? null,
      ]);
      expect(shown).toEqual([theme, selected]);
      expect(await violationsOf(page), theme).toEqual([]);
      const overflow = await page.evaluate(
        () => document.documentElement.scrollWidth - globalThis.innerWidth,
      );
      expect(overflow, theme).toBeLessThanOrEqual(0);
    }
    expectQuiet(page);
    await page.context().close();
  });
}

test('on a phone tabs choose the view, and a touch opens the sheet', async () => {
  const page = await openDisplay(browser, addressOf(file, 'event=z%3D3000'), {
    ...WINDOWS.phone,
  });
  for (const name of ['Map', 'Table', '3D']) {
    await page.getByRole('tab', { name }).click();
    await drawn(page);
    expect(await page.getByRole('tab', { name }).getAttribute('aria-selected')).toBe(
      'true',
    );
  }
  const marks = await marksOf(page, 'scene');
  const mark = marks[Math.floor(marks.length / 2)];
  if (mark === undefined) throw new Error('no marks');
  await page.touchscreen.tap(mark.x, mark.y);
  await drawn(page);
  expect(await textOf(page, '.sheet .card-title')).toMatch(/^PMT \d+$/);
  await page.locator('.sheet').getByRole('button', { name: 'Close' }).click();
  expect(
    await page.evaluate(() => globalThis.shadowDisplay!.model.state.selected),
  ).toBeNull();
});

test('the theme of the system is taken until the button chooses', async () => {
  const page = await openDisplay(browser, addressOf(file), { colorScheme: 'dark' });
  const theme = () => page.evaluate(() => document.documentElement.dataset.theme);
  expect(await theme()).toBe('dark');
  await page.emulateMedia({ colorScheme: 'light' });
  await expect.poll(theme).toBe('light');
  await page.getByRole('button', { name: 'Dark theme' }).click();
  await expect.poll(theme).toBe('dark');
});
