import { mkdtempSync, rmSync, statSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { afterAll, expect, test } from 'vitest';
import { addressOf, Browser } from './chromium.ts';
import { EVENTS, writePage, writePositions } from './command.ts';
import { drawn, openDisplay } from './display.ts';

const MIB = 1024 * 1024;
const folder = mkdtempSync(join(tmpdir(), 'zarn-budget-'));
const browser = new Browser();
const report: string[] = [];

afterAll(async () => {
  await browser.close();
  rmSync(folder, { recursive: true, force: true });
  const text = `${report.join('\n')}\n`;
  process.stdout.write(text);
  if (process.env.ZARN_REPORT !== undefined)
    writeFileSync(process.env.ZARN_REPORT, text);
});

function tell(what: string, value: number, unit: string): number {
  report.push(`${what}: ${value.toFixed(2)} ${unit}`);
  return value;
}

/** Seconds from opening a page until both views have drawn. */
async function timeToDraw(file: string): Promise<number> {
  const begin = performance.now();
  const page = await openDisplay(browser, addressOf(file));
  const seconds = (performance.now() - begin) / 1000;
  await page.context().close();
  return seconds;
}

test('a page without data takes at most 0.75 MB', () => {
  const template = process.env.ZARN_PAGE ?? 'dist/index.html';
  expect(tell('page without data', statSync(template).size / 1e6, 'MB')).toBeLessThan(
    0.75,
  );
});

test('50 events and 8,000 PMTs take at most 20 MB', async () => {
  const file = writePage(join(folder, 'scan.html'), '--events', EVENTS);
  expect(tell('50 events', statSync(file).size / MIB, 'MiB')).toBeLessThan(20e6 / MIB);
  tell('50 events, until drawn in software', await timeToDraw(file), 's');
});

test('nothing is drawn while nothing changes', async () => {
  const file = writePage(join(folder, 'one.html'), '--at', '0,0,3000');
  const page = await openDisplay(browser, addressOf(file));
  const frames = () =>
    page.evaluate(() => {
      const { scene, map } = globalThis.shadowDisplay!;
      return [scene?.countDrawn(), map.countDrawn()];
    });
  await page.waitForTimeout(500);
  const before = await frames();
  await page.waitForTimeout(1500);
  expect(await frames()).toEqual(before);
});

test('2,000 events can be used', async () => {
  const rows = Array.from({ length: 2000 }, (_, i) => {
    // Even in the vessel: a spiral of points at growing radii.
    const radius = 5900 * Math.cbrt((i + 0.5) / 2000);
    const z = 1 - 2 * ((i * 0.618034) % 1);
    const r = Math.sqrt(1 - z * z);
    const azimuth = i * 2.399963;
    return {
      name: String(i),
      at: [r * Math.cos(azimuth), r * Math.sin(azimuth), z].map((c) => c * radius),
    };
  });
  const events = writePositions(join(folder, 'many.csv'), 'event', rows);
  const file = writePage(join(folder, 'many.html'), '--events', events);
  expect(tell('2,000 events', statSync(file).size / MIB, 'MiB')).toBeLessThan(
    20e6 / MIB,
  );
  const begin = performance.now();
  const page = await openDisplay(browser, addressOf(file, 'events=all'));
  tell(
    '2,000 events, until drawn in software',
    (performance.now() - begin) / 1000,
    's',
  );
  const step = await page.evaluate(async () => {
    const { model } = globalThis.shadowDisplay!;
    const begun = performance.now();
    model.change({ event: 1000 });
    await new Promise((resolve) => requestAnimationFrame(resolve));
    return performance.now() - begun;
  });
  tell('2,000 events, another event', step, 'ms');
  await drawn(page);
  expect(await page.evaluate(() => globalThis.shadowDisplay!.model.state.event)).toBe(
    1000,
  );
});
