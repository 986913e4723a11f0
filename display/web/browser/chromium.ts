import { mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { pathToFileURL } from 'node:url';
import { chromium, type BrowserContext, type Page } from 'playwright-core';

/** What a test may choose of its window. */
export interface Window {
  width?: number;
  height?: number;
  scale?: number;
  colorScheme?: 'light' | 'dark';
  reducedMotion?: 'reduce' | 'no-preference';
  hasTouch?: boolean;
  javaScriptEnabled?: boolean;
  /** Whether the browser offers WebGL; it draws in software. */
  hasWebGL?: boolean;
}

const FLAGS = [
  '--no-sandbox',
  '--disable-quic',
  '--no-first-run',
  '--disable-background-networking',
  '--disable-component-update',
  '--disable-sync',
];
const WEBGL = ['--use-angle=swiftshader', '--enable-unsafe-swiftshader'];
const NO_WEBGL = ['--disable-gpu', '--disable-3d-apis'];

/** Real Chromium with a new profile; opens pages from disk. */
export class Browser {
  private readonly contexts: BrowserContext[] = [];
  private readonly profiles: string[] = [];

  /** A window of its own, closed by `close`. */
  async open(window: Window = {}): Promise<Page> {
    const profile = mkdtempSync(join(tmpdir(), 'zarn-chromium-'));
    this.profiles.push(profile);
    const context = await chromium.launchPersistentContext(profile, {
      executablePath: process.env.ZARN_CHROMIUM ?? '/usr/bin/chromium',
      args: [...FLAGS, ...(window.hasWebGL === false ? NO_WEBGL : WEBGL)],
      viewport: { width: window.width ?? 1280, height: window.height ?? 720 },
      deviceScaleFactor: window.scale ?? 1,
      colorScheme: window.colorScheme ?? 'light',
      reducedMotion: window.reducedMotion ?? 'reduce',
      hasTouch: window.hasTouch ?? false,
      javaScriptEnabled: window.javaScriptEnabled ?? true,
      permissions: ['clipboard-read', 'clipboard-write'],
    });
    this.contexts.push(context);
    return context.pages()[0] ?? (await context.newPage());
  }

  async close(): Promise<void> {
    for (const context of this.contexts) await context.close();
    for (const profile of this.profiles) {
      rmSync(profile, { recursive: true, force: true });
    }
  }
}

/** Whatever a page complains about or asks of a network, as it happens. */
export function watch(page: Page): string[] {
  const seen: string[] = [];
  page.on('console', (message) => {
    if (['error', 'warning'].includes(message.type())) seen.push(message.text());
  });
  page.on('pageerror', (error) => seen.push(String(error)));
  page.on('request', (request) => {
    if (!/^(file|data|blob):/.test(request.url())) seen.push(request.url());
  });
  return seen;
}

export function addressOf(file: string, hash = ''): string {
  return pathToFileURL(file).href + (hash === '' ? '' : `#${hash}`);
}
