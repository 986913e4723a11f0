import { deflateSync } from 'node:zlib';
import type { Light, Page } from '../../src/data/page';

/** As the program packs numbers. */
export function pack(numbers: ArrayBufferView): string {
  const { buffer, byteOffset, byteLength } = numbers;
  return deflateSync(
    new Uint8Array(buffer as ArrayBuffer, byteOffset, byteLength),
  ).toString('base64');
}

/** The texts of the elements that hold @p page, by id. */
export function writeTexts(page: Page): Map<string, string> {
  const texts = new Map([
    ['zarn-page', JSON.stringify(page.text)],
    ['zarn-pmt-positions', pack(page.pmtPositions)],
    ['zarn-event-positions', pack(page.eventPositions)],
  ]);
  const add = (light: Light | null, prefix: string): void => {
    if (!light) return;
    texts.set(`zarn-${prefix}verdicts`, pack(light.verdicts));
    if (!light.paths) return;
    texts.set(`zarn-${prefix}angles`, pack(light.paths.angles));
    texts.set(`zarn-${prefix}items`, pack(light.paths.items));
    texts.set(`zarn-${prefix}limits`, pack(light.paths.limits));
    texts.set(`zarn-${prefix}limit-by`, pack(light.paths.limitBy));
  };
  add(page.direct, '');
  add(page.reflected, 'reflected-');
  return texts;
}
