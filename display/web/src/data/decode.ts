import { BLOCKS, Verdict } from './page';
import type { Light, LightDetails, Page, PageText } from './page';
import { readPageText } from './readPageText';
import { DamagedPage } from './damagedPage';
import { unpack } from './unpack';

/** The text of the element with this id; null if there is none. */
export type ReadText = (id: string) => string | null;

type BlockName = keyof typeof BLOCKS;
type Block<Name extends BlockName> = InstanceType<(typeof BLOCKS)[Name]>;

/**
 * Read and check the data of a page.
 *
 * @throws DamagedPage if anything is missing, cut or out of its range
 */
export function decodePage(document: Document): Promise<Page> {
  return decodeTexts((id) => document.getElementById(id)?.textContent ?? null);
}

/** As decodePage, from the texts of the elements. */
export async function decodeTexts(read: ReadText): Promise<Page> {
  const text = readPageText(read('zarn-page'));
  const pmts = text.pmtNames.length;
  const events = text.eventNames.length;
  const [pmtPositions, eventPositions, direct, reflected] = await Promise.all([
    readBlock(read, 'pmt-positions', 3 * pmts),
    readBlock(read, 'event-positions', 3 * events),
    readLight(read, text, ''),
    text.hasReflections ? readLight(read, text, 'reflected-') : null,
  ]);
  return { text, pmtPositions, eventPositions, direct, reflected };
}

async function readBlock<Name extends BlockName>(
  read: ReadText,
  name: Name,
  length: number,
): Promise<Block<Name>> {
  const packed = read(`zarn-${name}`);
  if (packed === null) throw new DamagedPage(`${name} is missing`);
  const type = BLOCKS[name];
  const bytes = await unpack(name, packed, length * type.BYTES_PER_ELEMENT);
  // Numbers are little-endian, as on every machine that runs a browser.
  return new type(bytes.buffer) as Block<Name>;
}

async function readLight(
  read: ReadText,
  text: PageText,
  prefix: '' | 'reflected-',
): Promise<Light> {
  const pairs = text.pmtNames.length * text.eventNames.length;
  const [verdicts, paths] = await Promise.all([
    readBlock(read, `${prefix}verdicts`, pairs),
    text.content === 'paths' ? readDetails(read, text, prefix, pairs) : null,
  ]);
  const largest = prefix === '' ? Verdict.PositionNotFinite : Verdict.NoReflectedPath;
  checkLargest(`${prefix}verdicts`, verdicts, largest);
  return { verdicts, paths };
}

async function readDetails(
  read: ReadText,
  text: PageText,
  prefix: '' | 'reflected-',
  pairs: number,
): Promise<LightDetails> {
  const [angles, items, limits, limitBy] = await Promise.all([
    readBlock(read, `${prefix}angles`, pairs),
    readBlock(read, `${prefix}items`, pairs),
    readBlock(read, `${prefix}limits`, pairs),
    readBlock(read, `${prefix}limit-by`, pairs),
  ]);
  checkLargest(`${prefix}items`, items, text.itemNames.length - 1);
  checkLargest(`${prefix}limit-by`, limitBy, Verdict.NeckBoss);
  return { angles, items, limits, limitBy };
}

function checkLargest(
  name: string,
  numbers: Uint8Array | Uint16Array,
  largest: number,
): void {
  for (let i = 0; i < numbers.length; ++i) {
    const number = numbers[i] ?? 0;
    if (number > largest) {
      throw new DamagedPage(`${name}: number ${i} is ${number}, above ${largest}`);
    }
  }
}
