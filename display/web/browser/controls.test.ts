import { mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import type { Page } from 'playwright-core';
import { afterAll, afterEach, beforeAll, beforeEach, expect, test } from 'vitest';
import palette from '../../palette.json' with { type: 'json' };
import type { Model } from '../src/model/model.ts';
import { addressOf, Browser } from './chromium.ts';
import { EVENTS, writePage } from './command.ts';
import {
  changesScene,
  coloursOf,
  drawn,
  marksOf,
  openDisplay,
  picturesOf,
  textOf,
} from './display.ts';
import { expectQuiet } from './expectQuiet.ts';

const LAYERS = [
  ...Object.values(palette.components).map(({ name }) => name),
  palette.clear,
  palette.noPath,
];
const START = 'event=z%3D3000&theme=light';

const folder = mkdtempSync(join(tmpdir(), 'zarn-controls-'));
const file = join(folder, 'page.html');
const browser = new Browser();
let page: Page;

beforeAll(async () => {
  writePage(file, '--events', EVENTS);
  page = await openDisplay(browser, addressOf(file, START));
});

beforeEach(async () => {
  await page.evaluate((hash) => {
    const { model } = globalThis.shadowDisplay!;
    model.showAll();
    model.select(null);
    location.hash = hash;
    (document.activeElement as HTMLElement | null)?.blur();
  }, START);
  await drawn(page);
});

afterEach(() => {
  expectQuiet(page);
});

afterAll(async () => {
  await browser.close();
  rmSync(folder, { recursive: true, force: true });
});

function state(): Promise<Model['state']> {
  return page.evaluate(() => globalThis.shadowDisplay!.model.state);
}

/** The part of a view that is in a colour. */
async function pixelsOf(selector: string): Promise<(colour: string) => number> {
  const colours = await coloursOf(page, selector);
  return (colour) => colours.get(colour) ?? 0;
}

test('both views draw as many marks of each colour as there are verdicts', async () => {
  const { layers } = await page.evaluate(() =>
    globalThis.shadowDisplay!.model.counts(),
  );
  for (const view of ['.scene', '.map-picture']) {
    const pixels = await pixelsOf(view);
    const ink = Object.values(palette.components).map(({ light }) => pixels(light));
    expect(pixels(palette.themes.light.view)).toBeGreaterThan(10_000);
    // The more verdicts of a component, the more ink; anti-aliasing and hardware in
    // the same colour blur the rest.
    expect(Math.max(...ink)).toBe(ink[0]);
    ink.forEach((n, layer) => {
      const expected = layers[layer] ?? 0;
      expect(n, LAYERS[layer]).toBeGreaterThan(expected / 8);
    });
  }
});

for (const [layer, name] of LAYERS.entries()) {
  test(`the checkbox of ${name} and its key change both views`, async () => {
    // From the top of the vessel, every layer has a PMT.
    await page.evaluate(() => {
      globalThis.shadowDisplay!.model.change({ event: 0 });
    });
    const all = await picturesOf(page);
    await page.getByRole('checkbox', { name: `Show ${name}` }).click();
    const without = await picturesOf(page);
    expect((await state()).layers.map((shown) => !shown).indexOf(true)).toBe(layer);
    await page.keyboard.press(String(layer + 1));
    const only = await picturesOf(page);
    expect((await state()).layers.filter(Boolean)).toHaveLength(1);
    expect((await state()).layers[layer]).toBe(true);
    for (const view of ['scene', 'map'] as const) {
      expect(without[view]).not.toBe(all[view]);
      expect(only[view]).not.toBe(all[view]);
      expect(only[view]).not.toBe(without[view]);
    }
    await page.keyboard.press('0');
    expect(await picturesOf(page)).toEqual(all);
  });
}

test('an isolated component has its colour alone in the picture', async () => {
  await page.getByRole('button', { name: /^AV pipes/ }).click();
  await drawn(page);
  const pixels = await pixelsOf('.map-picture');
  expect(pixels(palette.components.AVPipe.light)).toBeGreaterThan(300);
  expect(pixels(palette.components.AVHDRope.light)).toBe(0);
  expect(await textOf(page, '.table-found')).toBe('314 of 8,000 · AV pipes');
  await page.getByRole('button', { name: 'Show all (0)' }).click();
  expect((await state()).layers.every(Boolean)).toBe(true);
});

test('counts never change with what is shown', async () => {
  const counts = await page.locator('.rail .layer').allInnerTexts();
  await page.keyboard.press('3');
  await drawn(page);
  expect(await page.locator('.rail .layer').allInnerTexts()).toEqual(counts);
});

test('the search filters table and views, and says how many it found', async () => {
  const found = async (text: string): Promise<number> => {
    await page.keyboard.press('/');
    await page.keyboard.press('Control+A');
    await page.keyboard.type(text);
    await page.waitForFunction(
      (query) => globalThis.shadowDisplay!.model.state.query === query,
      text,
    );
    await drawn(page);
    return page.evaluate(() => globalThis.shadowDisplay!.model.rows().length);
  };
  const views = () => Promise.all([marksOf(page, 'scene'), marksOf(page, 'map')]);
  const [allScene, allMap] = await views();
  expect(await found('by:pipe')).toBe(314);
  const [scene, map] = await views();
  expect(map).toHaveLength(314);
  expect(scene.length).toBeGreaterThan(0);
  expect(scene.length).toBeLessThan(allScene.length);
  expect(map.length).toBeLessThan(allMap.length);
  expect(await found('by:pipe z<0 path>9')).toBeLessThan(314);
  expect(await found('no such PMT')).toBe(0);
  expect(await page.getByText('No PMT matches').innerText()).toContain('no such PMT');
  await page.getByRole('button', { name: /Clear the search/ }).click();
  expect(await page.evaluate(() => globalThis.shadowDisplay!.model.rows().length)).toBe(
    8000,
  );
});

test('a click on a heading sorts the table, another turns the order', async () => {
  const first = () => textOf(page, '[role="row"][aria-rowindex="2"]');
  const heading = page.getByRole('columnheader', { name: /Path/ });
  await heading.getByRole('button').click();
  await drawn(page);
  expect(await heading.getAttribute('aria-sort')).toBe('ascending');
  const shortest = await first();
  await heading.getByRole('button').click();
  await drawn(page);
  expect(await heading.getAttribute('aria-sort')).toBe('descending');
  const metres = (row: string) => Number(/\d+\.\d\d/.exec(row)?.[0]);
  expect(metres(await first())).toBeGreaterThan(metres(shortest) + 5);
  await page.getByRole('columnheader', { name: /PMT/ }).getByRole('button').click();
});

test('a link opens the view that it tells', async () => {
  const hash = 'event=z%3D-1500&pmt=4512&only=BellyPlate&theme=dark';
  const other = await openDisplay(browser, addressOf(file, hash));
  const seen = await other.evaluate(() => globalThis.shadowDisplay!.model.state);
  expect(seen.theme).toBe('dark');
  expect(seen.layers.indexOf(true)).toBe(2);
  expect(await textOf(other, '.side .card-title')).toBe('PMT 4512');
  expect(await other.evaluate(() => location.hash)).toContain('pmt=4512');
  await other.context().close();
});

test('the keys of events step through them and stop at the ends', async () => {
  await page.keyboard.press(']');
  expect((await state()).event).toBe(6);
  await page.keyboard.press('[');
  await page.keyboard.press('[');
  expect((await state()).event).toBe(4);
  for (let i = 0; i < 6; ++i) await page.keyboard.press('[');
  expect((await state()).event).toBe(0);
  await page.getByRole('button', { name: 'Next event' }).click();
  expect((await state()).event).toBe(1);
});

test('every key of a switch changes the picture, and changes it back', async () => {
  for (const [key, name] of [
    ['v', 'vessel'],
    ['h', 'hardware'],
    ['n', 'nearHalf'],
  ] as const) {
    const press = () => page.keyboard.press(key);
    const before = (await state()).switches[name];
    expect(await changesScene(page, press), key).toBe(true);
    expect((await state()).switches[name]).toBe(!before);
    await press();
    expect((await state()).switches[name]).toBe(before);
  }
});

test('keys turn, zoom and reset the view, and look along a path', async () => {
  await page.locator('.scene').focus();
  for (const key of ['ArrowLeft', 'ArrowUp', '+', '-', '-', 'Home']) {
    const press = () => page.keyboard.press(key);
    expect(await changesScene(page, press), key).toBe(true);
  }
  const [mark] = await marksOf(page, 'scene');
  if (mark === undefined) throw new Error('no marks');
  await page.mouse.click(mark.x, mark.y);
  const look = () => page.keyboard.press('p');
  expect(await changesScene(page, look)).toBe(true);
  await page.keyboard.press('Home');
  await page.keyboard.press('Escape');
  expect((await state()).selected).toBeNull();
});

test('the map is walked by arrows; Enter chooses and Esc lets go', async () => {
  await page.locator('.map-picture').focus();
  await page.keyboard.press('ArrowRight');
  await page.keyboard.press('ArrowDown');
  await page.keyboard.press('Enter');
  expect((await state()).selected).not.toBeNull();
  await page.keyboard.press('Escape');
  expect((await state()).selected).toBeNull();
});

test('M swaps map and 3D view, T the theme, ? lists the keys', async () => {
  await page.keyboard.press('m');
  expect((await state()).mainView).toBe('map');
  await page.keyboard.press('m');
  expect((await state()).mainView).toBe('3d');
  const swap = () => page.keyboard.press('t');
  expect(await changesScene(page, swap)).toBe(true);
  expect(await page.evaluate(() => document.documentElement.dataset.theme)).toBe(
    'dark',
  );
  await page.keyboard.press('t');
  await page.keyboard.press('?');
  expect(await page.getByRole('dialog').innerText()).toContain('Look along the path');
  await page.keyboard.press('Escape');
});

test('keys of one character can be switched off', async () => {
  await page.keyboard.press('?');
  const keys = page.getByRole('dialog').getByRole('checkbox');
  await keys.click();
  await page.keyboard.press('Escape');
  await page.keyboard.press('3');
  expect((await state()).layers.every(Boolean)).toBe(true);
  await page.getByRole('button', { name: 'Keys' }).click();
  await keys.click();
  await page.keyboard.press('Escape');
});

test('a choice is told to screen readers', async () => {
  await page.evaluate((hash) => {
    location.hash = `${hash}&pmt=4512`;
  }, START);
  await page
    .getByText('PMT 4512, blocked by hold-down ropes, 9.19 metres')
    .waitFor({ state: 'attached' });
});

test('the view is saved as a PNG', async () => {
  const download = page.waitForEvent('download');
  await page.getByRole('button', { name: 'Save as PNG' }).first().click();
  const saved = await download;
  expect(saved.suggestedFilename()).toMatch(/\.png$/);
});
