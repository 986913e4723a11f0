import { mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { afterAll, beforeAll, expect, test } from 'vitest';
import { addressOf, Browser } from './chromium.ts';
import { DETECTOR, EVENTS, writePage, writePositions, zarnShadow } from './command.ts';
import { drawn, openDisplay, ready, textOf } from './display.ts';
import { expectQuiet } from './expectQuiet.ts';

const folder = mkdtempSync(join(tmpdir(), 'zarn-states-'));
const file = join(folder, 'page.html');
const browser = new Browser();

beforeAll(() => {
  writePage(file, '--at', '0,0,3000');
});

afterAll(async () => {
  await browser.close();
  rmSync(folder, { recursive: true, force: true });
});

test('a page opens from disk without complaints and without requests', async () => {
  const page = await openDisplay(browser, addressOf(file));
  expect(await textOf(page, '.rail')).toContain('39.4 %');
  expect(await page.locator('.strip').count()).toBe(0);
  expectQuiet(page);
});

test('without WebGL the map takes the place of the 3D view', async () => {
  const page = await openDisplay(browser, addressOf(file, 'pmt=4512'), {
    width: 1440,
    height: 900,
    hasWebGL: false,
  });
  expect(await page.locator('body').innerText()).toContain(
    'The 3D view is not available. This browser offers no WebGL 2.',
  );
  expect(await page.locator('.scene').count()).toBe(0);
  const map = await page.locator('.map-picture').boundingBox();
  expect(map?.width).toBeGreaterThan(600);
  expect(await textOf(page, '.side .card-verdict')).toBe('Blocked by hold-down ropes');
  expect(
    await page.getByRole('switch', { name: 'Near half of the PMTs' }).count(),
  ).toBe(0);
});

test('a lost WebGL context is told, and "Try again" brings the view back', async () => {
  const page = await openDisplay(browser, addressOf(file));
  await page.evaluate(() => {
    const canvas = document.querySelector<HTMLCanvasElement>('.scene canvas');
    canvas?.getContext('webgl2')?.getExtension('WEBGL_lose_context')?.loseContext();
  });
  const again = page.getByRole('button', { name: 'Try again' });
  await again.waitFor();
  expect(await page.evaluate(() => globalThis.shadowDisplay!.scene)).toBeNull();
  await again.click();
  await page.locator('.scene').waitFor();
  await drawn(page);
  expect(
    await page.evaluate(() => globalThis.shadowDisplay!.scene?.marks().length),
  ).toBeGreaterThan(1000);
});

test('without script the page has the counts as a table', async () => {
  const page = await browser.open({ javaScriptEnabled: false });
  await page.goto(addressOf(file));
  const words = await page.locator('body').innerText();
  expect(words).toContain('Hold-down ropes');
  expect(words).toContain('1671');
});

test('damaged data are told instead of shown', async () => {
  const text = readFileSync(file, 'utf8');
  const at = text.indexOf('id="zarn-verdicts"') + 40;
  const damaged = join(folder, 'damaged.html');
  writeFileSync(damaged, `${text.slice(0, at)}AAAA${text.slice(at + 4)}`);
  const page = await browser.open();
  await page.goto(addressOf(damaged));
  await page.waitForFunction(
    () => document.documentElement.dataset.state === 'damaged',
  );
  expect(await page.locator('body').innerText()).toContain(
    'The data in this page cannot be read. Write the page again.',
  );
});

test('names of PMTs and events are text, whatever they hold', async () => {
  const hostile = [
    '<img src=x onerror="globalThis.broken = true">',
    '</script><script>globalThis.broken = true</script>',
    '"\'&amp;<b>bold</b>`${1}`',
    '\u202Eright to left\u202C',
    'שלום <!-- zarn-data -->',
    'x'.repeat(10_000),
    '<!--<script>',
  ];
  const at = (i: number) => [8500 * Math.cos(i), 8500 * Math.sin(i), 100 * i];
  const pmts = writePositions(
    join(folder, 'pmts.csv'),
    'pmt',
    hostile.map((name, i) => ({ name, at: at(i) })),
  );
  const events = writePositions(
    join(folder, 'events.csv'),
    'event',
    hostile.map((name, i) => ({ name, at: [100 * i, 0, 0] })),
  );
  const named = join(folder, 'hostile.html');
  zarnShadow(
    ...['display', '--geometry', DETECTOR, '--pmts', pmts, '--events', events],
    ...['-o', named, '--title', hostile[1] ?? ''],
  );
  const page = await openDisplay(browser, addressOf(named));
  for (let i = 0; i < hostile.length; ++i) {
    await page.evaluate((pmt) => {
      const { model } = globalThis.shadowDisplay!;
      model.change({ event: pmt });
      model.select({ pmt, reflected: false });
    }, i);
    await drawn(page);
    const name = await page.locator('.side .card-title').first().textContent();
    expect(name).toContain(hostile[i]);
    const overflow = await page.evaluate(
      () => document.documentElement.scrollWidth - window.innerWidth,
    );
    expect(overflow).toBeLessThanOrEqual(0);
  }
  // What a link says of them opens them again.
  await page.waitForFunction(() => location.hash.includes('--%3Cscript'));
  await page.reload();
  await ready(page);
  expect(
    await page.evaluate(() => globalThis.shadowDisplay!.model.state.selected?.pmt),
  ).toBe(hostile.length - 1);
  expect(await page.evaluate(() => 'broken' in globalThis)).toBe(false);
  expect(await page.locator('img, b').count()).toBe(0);
  expectQuiet(page);
});

test('reflected light is a second row of its PMT', async () => {
  const reflected = join(folder, 'reflected.html');
  writePage(reflected, '--at', '6500,0,0', '--reflections');
  const page = await openDisplay(browser, addressOf(reflected));
  const rows = await page.evaluate(
    () =>
      globalThis.shadowDisplay!.model.rows() as { pmt: number; reflected: boolean }[],
  );
  const at = rows.findIndex((row) => row.reflected);
  expect(at).toBeGreaterThan(0);
  expect(rows[at - 1]?.pmt).toBe(rows[at]?.pmt);
});

test('events may be without any light path', async () => {
  const none = join(folder, 'none.html');
  const events = writePositions(join(folder, 'nan.csv'), 'event', [
    { name: 'nowhere', at: [Number.NaN, 0, 0] },
  ]);
  writePage(none, '--events', events);
  const page = await openDisplay(browser, addressOf(none));
  expect(await textOf(page, '.rail')).toContain('–');
  expectQuiet(page);
});

test('a page of all events of a source scan has its shares', async () => {
  const all = join(folder, 'all.html');
  writePage(all, '--events', EVENTS);
  const page = await openDisplay(browser, addressOf(all, 'events=all'));
  expect(await page.getByRole('columnheader', { name: /Share/ }).count()).toBe(1);
});
