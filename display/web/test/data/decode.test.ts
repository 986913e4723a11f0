import { deflateSync } from 'node:zlib';
import { describe, expect, it } from 'vitest';
import { DamagedPage } from '../../src/data/damagedPage';
import { decodePage, decodeTexts } from '../../src/data/decode';
import type { Page, PageText } from '../../src/data/page';
import { makeDetails, makePage } from '../support/makePage';
import { pack, writeTexts } from '../support/pageTexts';

const HOSTILE = '</script><img src=x onerror="alert(1)">\u202Egnp\u0000"\'\\';

function samplePage(text: Partial<PageText> = {}): Page {
  return makePage({
    pmts: [
      [8300, 0, 0],
      [0, 8300, NaN],
    ],
    events: [
      [0, 0, 0],
      [0, 1e300, -Infinity],
      [1, 2, 3],
    ],
    verdicts: [0, 1, 6, 7, 10, 9],
    details: {
      angles: Float32Array.of(0.5, -3, 1, NaN, NaN, NaN),
      items: Uint16Array.of(0, 1, 0, 0, 0, 0),
      limits: Float32Array.of(Infinity, 83.25, -Infinity, NaN, NaN, NaN),
      limitBy: Uint8Array.of(0, 1, 6, 0, 0, 0),
    },
    reflected: {
      verdicts: Uint8Array.of(11, 11, 11, 11, 0, 3),
      paths: makeDetails(6),
    },
    text: { pmtNames: ['a', HOSTILE], itemNames: ['', 'rope 0'], ...text },
  });
}

function decode(texts: Map<string, string>): Promise<Page> {
  return decodeTexts((id) => texts.get(id) ?? null);
}

/** The page with one element changed, or without it. */
function decodeWith(
  id: string,
  text: string | null,
  page = samplePage(),
): Promise<Page> {
  const texts = writeTexts(page);
  if (text === null) texts.delete(id);
  else texts.set(id, text);
  return decode(texts);
}

describe('decodeTexts', () => {
  it('gives back what was written', async () => {
    const page = samplePage();
    expect(await decode(writeTexts(page))).toEqual(page);
  });

  it('gives names as they are', async () => {
    const { text } = await decode(writeTexts(samplePage()));
    expect(text.pmtNames[1]).toBe(HOSTILE);
  });

  it('reads a page without events', async () => {
    const page = makePage({ pmts: [[1, 2, 3]] });
    expect(await decode(writeTexts(page))).toEqual(page);
  });

  it('reads a page without PMTs', async () => {
    const page = makePage({ events: [[1, 2, 3]] });
    expect(await decode(writeTexts(page))).toEqual(page);
  });

  it('reads a page of verdicts without light paths', async () => {
    const page = makePage({
      pmts: [[8300, 0, 0]],
      events: [[0, 0, 0]],
      text: { content: 'verdicts' },
    });
    const read = await decode(writeTexts(page));
    expect(read.direct.paths).toBeNull();
    expect(read.reflected).toBeNull();
  });

  it('passes over blanks and line ends in a block', async () => {
    const page = samplePage();
    const block = pack(page.direct.verdicts);
    const split = ` ${block.slice(0, 5)}\r\n${block.slice(5)}\n`;
    const read = await decodeWith('zarn-verdicts', split);
    expect(read.direct.verdicts).toEqual(page.direct.verdicts);
  });

  it('reads blocks of many pieces', async () => {
    // Noise does not get smaller: 2.4 MB of base64.
    let seed = 1;
    const random = (): number => (seed = (seed * 16807) % 2147483647);
    const pmts = Array.from(
      { length: 75_000 },
      () => [random(), random() / 7, random() / 9] as const,
    );
    const page = makePage({ pmts });
    const read = await decode(writeTexts(page));
    expect(read.pmtPositions).toEqual(page.pmtPositions);
  });
});

describe('a block of many pieces', () => {
  it('is told when it is too long by one number', async () => {
    const page = makePage({
      pmts: new Array<[number, number, number]>(50_000).fill([1, 2, 3]),
    });
    const texts = writeTexts(page);
    texts.set('zarn-pmt-positions', pack(new Float64Array(150_001)));
    await expect(decode(texts)).rejects.toThrow(
      'pmt-positions is too long: not 1200000 bytes',
    );
  });
});

describe('decodePage', () => {
  it('reads the elements of a document', async () => {
    const page = samplePage();
    const texts = writeTexts(page);
    const document = {
      getElementById: (id: string) => ({ textContent: texts.get(id) ?? null }),
    };
    expect(await decodePage(document as unknown as Document)).toEqual(page);
  });

  it('tells of an element that is missing', async () => {
    const document = { getElementById: () => null };
    await expect(decodePage(document as unknown as Document)).rejects.toThrow(
      'the element zarn-page is missing',
    );
  });
});

describe('a damaged page', () => {
  const blockOf = (numbers: ArrayBufferView): string => pack(numbers);
  const verdicts = blockOf(samplePage().direct.verdicts);
  const cases: [string, string, string | null, string][] = [
    ['a block is missing', 'zarn-angles', null, 'angles is missing'],
    [
      'a reflected block is missing',
      'zarn-reflected-items',
      null,
      'reflected-items is',
    ],
    ['a block is empty', 'zarn-angles', '', 'angles cannot be unpacked'],
    ['a block is not base64', 'zarn-items', '!!!!', 'items cannot be unpacked'],
    ['base64 is cut', 'zarn-items', verdicts.slice(0, -3), 'items cannot be unpacked'],
    ['base64 is not deflate', 'zarn-limits', 'AAAA', 'limits cannot be unpacked'],
    [
      'deflate is cut',
      'zarn-verdicts',
      Buffer.from(verdicts, 'base64').subarray(0, 8).toString('base64'),
      'verdicts cannot be unpacked',
    ],
    [
      'numbers are missing',
      'zarn-verdicts',
      blockOf(Uint8Array.of(0, 1, 6, 7, 10)),
      'verdicts is cut: 5 of 6 bytes',
    ],
    [
      'a number is cut',
      'zarn-angles',
      blockOf(new Uint8Array(23)),
      'angles is cut: 23 of 24 bytes',
    ],
    [
      'there are too many numbers',
      'zarn-verdicts',
      blockOf(new Uint8Array(7)),
      'verdicts is too long: not 6 bytes',
    ],
    [
      'a block would fill the memory',
      'zarn-verdicts',
      deflateSync(new Uint8Array(1 << 26)).toString('base64'),
      'verdicts is too long: not 6 bytes',
    ],
    [
      'a verdict is unknown',
      'zarn-verdicts',
      blockOf(Uint8Array.of(0, 1, 12, 7, 10, 9)),
      'verdicts: number 2 is 12, above 10',
    ],
    [
      'direct light has a verdict of reflected light',
      'zarn-verdicts',
      blockOf(Uint8Array.of(0, 1, 11, 7, 10, 9)),
      'verdicts: number 2 is 11, above 10',
    ],
    [
      'an item is unknown',
      'zarn-items',
      blockOf(Uint16Array.of(0, 0, 0, 0, 0, 2)),
      'items: number 5 is 2, above 1',
    ],
    [
      'a limit is by no component',
      'zarn-limit-by',
      blockOf(Uint8Array.of(7, 0, 0, 0, 0, 0)),
      'limit-by: number 0 is 7, above 6',
    ],
    ['the JSON is cut', 'zarn-page', '{"format":1', 'zarn-page is not JSON'],
    ['the JSON is no object', 'zarn-page', '[1]', 'zarn-page is not an object'],
    ['the JSON is null', 'zarn-page', 'null', 'zarn-page is not an object'],
  ];

  it.each(cases)('is told when %s', async (_, id, text, reason) => {
    const decoded = decodeWith(id, text);
    await expect(decoded).rejects.toBeInstanceOf(DamagedPage);
    await expect(decoded).rejects.toThrow(reason);
  });

  const stored = {
    event: 2,
    pmt: 1,
    reflected: false,
    media: [2],
    points: [0, 0, 0, 1, 1, 1],
  };
  const parts: [string, object, string][] = [
    ['format', { format: 2 }, 'format is not 1, the format that this page reads'],
    ['a missing field', { run: undefined }, 'run is not a number'],
    ['a number', { tolerance: '150' }, 'tolerance is not a number'],
    ['a flag', { hasReflections: 0 }, 'hasReflections is not true or false'],
    ['the content', { content: 'all' }, 'content is not paths or verdicts'],
    ['a name', { eventNames: ['a', 'b', 3] }, 'eventNames[2] is not a text'],
    ['the list of names', { eventNames: 'abc' }, 'eventNames is not a list'],
    ['the number of names', { eventNames: ['a', 'b'] }, 'event-positions is too long'],
    ['the first item', { itemNames: ['rope 0', ''] }, 'itemNames[0] is not empty'],
    ['the number of media', { groupIndices: [1, 1] }, 'groupIndices is not 3 long'],
    [
      'an index',
      { refractiveIndices: [1, 0, 1] },
      'refractiveIndices[1] is not a number',
    ],
    ['the hardware', { hardware: [] }, 'hardware is not 6 long'],
    [
      'the vessel',
      { vessel: { innerRadius: 2, outerRadius: 1, neckRadius: 0, neckTop: 0 } },
      'vessel is not a sphere in a sphere',
    ],
    [
      'the event of a stored path',
      { storedPaths: [{ ...stored, event: 3 }] },
      'storedPaths[0].event is not a whole number below 3',
    ],
    [
      'a medium of a stored path',
      { storedPaths: [{ ...stored, media: [1.5] }] },
      'storedPaths[0].media[0] is not a whole number below 3',
    ],
    [
      'the points of a stored path',
      { storedPaths: [stored, { ...stored, media: [2, 2] }] },
      'storedPaths[1] is not a path with one point more than media',
    ],
    [
      'a coordinate of a stored path',
      { storedPaths: [{ ...stored, points: [0, 0, 0, 1, 1] }] },
      'storedPaths[0].points is not x, y and z of points',
    ],
  ];

  it.each(parts)('is told by %s', async (_, part, reason) => {
    const decoded = decode(writeTexts(samplePage(part)));
    await expect(decoded).rejects.toBeInstanceOf(DamagedPage);
    await expect(decoded).rejects.toThrow(reason);
  });

  it.each([
    ['state', { state: 'broken' }, 'state is not on or off or nothing to test'],
    [
      'tubes',
      { tubes: [{ name: '', radius: 1, points: [1] }] },
      'tubes[0].points is not',
    ],
    [
      'patches',
      { patches: [{ name: 1, points: [] }] },
      'patches[0].name is not a text',
    ],
    [
      'spots',
      { spots: [{ name: '', radius: 1, at: [1, 2] }] },
      'spots[0].at is not 3 long',
    ],
    [
      'rings',
      { rings: [{ name: '', radius: null, z: 1 }] },
      'rings[0].radius is not a',
    ],
  ])('is told by the %s of the hardware', async (_, part, reason) => {
    const { text } = samplePage();
    const hardware = text.hardware.map((each, i) =>
      i === 4 ? { ...each, ...part } : each,
    );
    const page = samplePage({ hardware: hardware as PageText['hardware'] });
    await expect(decode(writeTexts(page))).rejects.toThrow(`hardware[4].${reason}`);
  });
});
