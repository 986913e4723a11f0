import type { Page } from 'playwright-core';
import { expect } from 'vitest';
import { complaintsOf } from './display.ts';

/** The page has neither complained nor asked a network for anything. */
export function expectQuiet(page: Page): void {
  expect(complaintsOf(page)).toEqual([]);
}
