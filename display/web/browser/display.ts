import type { Page } from 'playwright-core';
import type { Mark } from '../src/views/shell/inspection.ts';
import { type Browser, watch, type Window } from './chromium.ts';

/** Open a page and wait until it has drawn. It must not complain at any time. */
export async function openDisplay(
  browser: Browser,
  address: string,
  window: Window = {},
): Promise<Page> {
  const page = await browser.open(window);
  complaints.set(page, watch(page));
  await page.goto(address);
  await ready(page);
  return page;
}

const complaints = new WeakMap<Page, string[]>();

/** What the page has complained about, or asked of a network, so far. */
export function complaintsOf(page: Page): string[] {
  return complaints.get(page) ?? [];
}

/** Wait until the page has its data and all views have drawn. */
export async function ready(page: Page): Promise<void> {
  await page.waitForFunction(() => document.documentElement.dataset.state === 'ready');
  await drawn(page);
}

/** Wait until what changed has been drawn. */
export async function drawn(page: Page): Promise<void> {
  await page.evaluate(
    () =>
      new Promise<void>((resolve) => {
        requestAnimationFrame(() =>
          requestAnimationFrame(() => {
            resolve();
          }),
        );
      }),
  );
}

/** Where a view has drawn the PMTs that can be picked, in CSS pixels of the page. */
export async function marksOf(page: Page, view: 'scene' | 'map'): Promise<Mark[]> {
  await drawn(page);
  return page.evaluate((name) => globalThis.shadowDisplay?.[name]?.marks() ?? [], view);
}

export async function textOf(page: Page, selector: string): Promise<string> {
  return (await page.locator(selector).first().innerText()).trim();
}

/** The number of pixels of each colour (`#rrggbb`) in a part of the page. */
export async function coloursOf(
  page: Page,
  selector: string,
): Promise<Map<string, number>> {
  const png = await page.locator(selector).first().screenshot();
  const counts = await page.evaluate(async (base64) => {
    const image = new Image();
    image.src = `data:image/png;base64,${base64}`;
    await image.decode();
    const canvas = new OffscreenCanvas(image.width, image.height);
    const context = canvas.getContext('2d');
    if (context === null) throw new Error('no canvas');
    context.drawImage(image, 0, 0);
    const { data } = context.getImageData(0, 0, image.width, image.height);
    const found = new Map<number, number>();
    for (let i = 0; i < data.length; i += 4) {
      const [r = 0, g = 0, b = 0] = data.subarray(i, i + 3);
      const colour = (r << 16) | (g << 8) | b;
      found.set(colour, (found.get(colour) ?? 0) + 1);
    }
    return [...found];
  }, png.toString('base64'));
  return new Map(counts.map(([c, n]) => [`#${c.toString(16).padStart(6, '0')}`, n]));
}

/** What each view shows, as text that differs where a pixel differs. */
export async function picturesOf(page: Page): Promise<{ scene: string; map: string }> {
  await drawn(page);
  const png = await page.screenshot();
  return page.evaluate(async (base64) => {
    const image = new Image();
    image.src = `data:image/png;base64,${base64}`;
    await image.decode();
    const read = (selector: string): string => {
      const box = document.querySelector(selector)!.getBoundingClientRect();
      const canvas = new OffscreenCanvas(box.width, box.height);
      const context = canvas.getContext('2d')!;
      context.drawImage(image, -box.left, -box.top);
      const { data } = context.getImageData(0, 0, canvas.width, canvas.height);
      let hash = 0;
      for (const value of data) hash = (Math.imul(hash, 31) + value) | 0;
      return String(hash);
    };
    return { scene: read('.scene'), map: read('.map-picture') };
  }, png.toString('base64'));
}

/** Whether the 3D view looks different after @p act. */
export async function changesScene(
  page: Page,
  act: () => Promise<void>,
): Promise<boolean> {
  const before = await picturesOf(page);
  await act();
  return (await picturesOf(page)).scene !== before.scene;
}
