import { DamagedPage } from './damagedPage';
import { COMPONENTS } from './page';
import type { PageText } from './page';

/** The format that this page reads. */
const FORMAT = 1;

/** How a value is checked: throws DamagedPage, which names @p path. */
type Check = (value: unknown, path: string) => void;

function must(isRight: boolean, path: string, what: string): void {
  if (!isRight) throw new DamagedPage(`${path} is not ${what}`);
}

const isNumber = (value: unknown): value is number =>
  typeof value === 'number' && Number.isFinite(value);

const text: Check = (value, path) => {
  must(typeof value === 'string', path, 'a text');
};
const flag: Check = (value, path) => {
  must(typeof value === 'boolean', path, 'true or false');
};
const number: Check = (value, path) => {
  must(isNumber(value), path, 'a number');
};
const positive: Check = (value, path) => {
  must(isNumber(value) && value > 0, path, 'a number above 0');
};
const below =
  (end: () => number): Check =>
  (value, path) => {
    must(
      isNumber(value) && Number.isInteger(value) && value >= 0 && value < end(),
      path,
      `a whole number below ${end()}`,
    );
  };
const oneOf =
  (...allowed: string[]): Check =>
  (value, path) => {
    must(allowed.includes(value as string), path, allowed.join(' or '));
  };
const list =
  (item: Check, length?: number): Check =>
  (value, path) => {
    if (!Array.isArray(value)) throw new DamagedPage(`${path} is not a list`);
    must(length === undefined || value.length === length, path, `${length} long`);
    value.forEach((each, i) => {
      item(each, `${path}[${i}]`);
    });
  };
const points: Check = (value, path) => {
  list(number)(value, path);
  must((value as number[]).length % 3 === 0, path, 'x, y and z of points');
};
const record =
  (fields: Record<string, Check>): Check =>
  (value, path) => {
    if (typeof value !== 'object' || value === null || Array.isArray(value)) {
      throw new DamagedPage(`${path} is not an object`);
    }
    for (const [name, check] of Object.entries(fields)) {
      check((value as Record<string, unknown>)[name], `${path}.${name}`);
    }
  };

const hardware = record({
  state: oneOf('on', 'off', 'nothing to test'),
  tubes: list(record({ name: text, radius: number, points })),
  patches: list(record({ name: text, points })),
  spots: list(record({ name: text, radius: number, at: list(number, 3) })),
  rings: list(record({ name: text, radius: number, z: number })),
});

const page = record({
  version: text,
  title: text,
  detector: text,
  fingerprint: text,
  run: number,
  tolerance: number,
  wavelength: number,
  vessel: record({
    innerRadius: positive,
    outerRadius: positive,
    neckRadius: number,
    neckTop: number,
  }),
  refractiveIndices: list(positive, 3),
  groupIndices: list(positive, 3),
  hardware: list(hardware, COMPONENTS.length),
  pmtNames: list(text),
  eventNames: list(text),
  itemNames: list(text),
  content: oneOf('paths', 'verdicts'),
  hasReflections: flag,
});

/**
 * The JSON text of a page, with the types that PageText says.
 *
 * @param json  null if the element is missing
 * @throws DamagedPage
 */
export function readPageText(json: string | null): PageText {
  if (json === null) throw new DamagedPage('the element zarn-page is missing');
  let value: unknown;
  try {
    value = JSON.parse(json);
  } catch {
    throw new DamagedPage('zarn-page is not JSON');
  }
  record({
    format: (format, path) => {
      must(format === FORMAT, path, `${FORMAT}, the format that this page reads`);
    },
  })(value, 'zarn-page');
  page(value, 'zarn-page');
  const read = value as PageText;
  const { vessel, itemNames } = read;
  must(vessel.outerRadius > vessel.innerRadius, 'vessel', 'a sphere in a sphere');
  must(itemNames[0] === '', 'itemNames[0]', 'empty');
  checkStoredPaths(read);
  return read;
}

function checkStoredPaths(read: PageText): void {
  const stored = record({
    event: below(() => read.eventNames.length),
    pmt: below(() => read.pmtNames.length),
    reflected: flag,
    media: list(below(() => 3)),
    points,
  });
  list(stored)(read.storedPaths, 'storedPaths');
  for (const [i, path] of read.storedPaths.entries()) {
    must(
      path.media.length > 0 && path.points.length === 3 * (path.media.length + 1),
      `storedPaths[${i}]`,
      'a path with one point more than media',
    );
  }
}
